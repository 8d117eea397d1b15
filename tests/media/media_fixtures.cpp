#include "tests/media/media_fixtures.hpp"

#include "media/media_import_service.hpp"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/display.h>
#include <libavutil/opt.h>
}

#include <QByteArray>
#include <QBuffer>
#include <QImage>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>

namespace orvane::media::testing {

namespace {

struct Output {
  AVFormatContext* format = nullptr;
  ~Output() {
    if (format && !(format->oformat->flags & AVFMT_NOFILE)) avio_closep(&format->pb);
    avformat_free_context(format);
  }
};
struct CodecDeleter {
  void operator()(AVCodecContext* c) const { avcodec_free_context(&c); }
};
struct FrameDeleter {
  void operator()(AVFrame* f) const { av_frame_free(&f); }
};
struct PacketDeleter {
  void operator()(AVPacket* p) const { av_packet_free(&p); }
};
using Codec = std::unique_ptr<AVCodecContext, CodecDeleter>;
using Frame = std::unique_ptr<AVFrame, FrameDeleter>;
using Packet = std::unique_ptr<AVPacket, PacketDeleter>;

// Sends frame (none: the end) and writes every packet the encoder gives.
bool encode(AVFormatContext* format, AVCodecContext* codec, AVStream* stream, const AVFrame* frame) {
  if (avcodec_send_frame(codec, frame) < 0) return false;
  Packet packet(av_packet_alloc());
  for (;;) {
    const int got = avcodec_receive_packet(codec, packet.get());
    if (got == AVERROR(EAGAIN) || got == AVERROR_EOF) return true;
    if (got < 0) return false;
    av_packet_rescale_ts(packet.get(), codec->time_base, stream->time_base);
    packet->stream_index = stream->index;
    if (av_interleaved_write_frame(format, packet.get()) < 0) return false;
  }
}

std::string openOutput(Output& out, const std::filesystem::path& path) {
  if (avformat_alloc_output_context2(&out.format, nullptr, nullptr, path.c_str()) < 0 || !out.format) {
    return "no muxer for " + path.string();
  }
  return {};
}

std::string startWriting(Output& out, const std::filesystem::path& path) {
  if (!(out.format->oformat->flags & AVFMT_NOFILE) && avio_open(&out.format->pb, path.c_str(), AVIO_FLAG_WRITE) < 0) {
    return "cannot create " + path.string();
  }
  if (avformat_write_header(out.format, nullptr) < 0) return "header refused for " + path.string();
  return {};
}

struct Yuv {
  int y, u, v;
};

Yuv toYuv(const core::OVColor& c, bool bt709, bool fullRange) {
  const double kr = bt709 ? 0.2126 : 0.299, kb = bt709 ? 0.0722 : 0.114, kg = 1 - kr - kb;
  const double y = kr * c.red + kg * c.green + kb * c.blue;
  const double cb = (c.blue - y) / (2 * (1 - kb)), cr = (c.red - y) / (2 * (1 - kr));
  if (fullRange) {
    return {int(std::lround(255 * y)), int(std::lround(128 + 255 * cb)), int(std::lround(128 + 255 * cr))};
  }
  return {int(std::lround(16 + 219 * y)), int(std::lround(128 + 224 * cb)), int(std::lround(128 + 224 * cr))};
}

void fillPicture(AVFrame* frame, const VideoClipSpec& spec, int number) {
  const int w = spec.width, h = spec.height;
  if (spec.fill) {
    const Yuv c = toYuv(*spec.fill, spec.bt709, spec.fullRange);
    for (int y = 0; y < h; ++y) std::fill_n(frame->data[0] + y * frame->linesize[0], w, c.y);
    for (int y = 0; y < h / 2; ++y) {
      std::fill_n(frame->data[1] + y * frame->linesize[1], w / 2, c.u);
      std::fill_n(frame->data[2] + y * frame->linesize[2], w / 2, c.v);
    }
    return;
  }
  const int blockW = w / 5, blockH = h / 2;
  for (int y = 0; y < h; ++y) {
    std::uint8_t* row = frame->data[0] + y * frame->linesize[0];
    for (int x = 0; x < w; ++x) {
      const int bit = (y * 2 / h) * 5 + (x * 5 / w);
      const int bx = x % blockW, by = y % blockH;
      const bool inner = bx > blockW / 6 && bx < blockW * 5 / 6 && by > blockH / 6 && by < blockH * 5 / 6;
      if (!spec.busyPicture || inner) {
        row[x] = (number >> bit) & 1 ? 235 : 16;
      } else {
        const unsigned hash = (x * 73856093u) ^ (y * 19349663u) ^ (number * 83492791u);
        row[x] = static_cast<std::uint8_t>(16 + (x + y + 4 * number) % 200 + (hash >> 28));
      }
    }
  }
  for (int p = 1; p < 3; ++p) {
    for (int y = 0; y < h / 2; ++y) std::fill_n(frame->data[p] + y * frame->linesize[p], w / 2, 128);
  }
}

Codec openVideoEncoder(const VideoClipSpec& spec, bool variable, bool globalHeader) {
  const AVCodec* codec = avcodec_find_encoder_by_name(spec.codec == VideoCodec::h264 ? "libx264" : "libx265");
  if (!codec) return {};
  Codec c(avcodec_alloc_context3(codec));
  c->width = spec.width;
  c->height = spec.height;
  c->pix_fmt = AV_PIX_FMT_YUV420P;
  c->framerate = {spec.rate.numerator, spec.rate.denominator};
  c->time_base = variable ? AVRational{1, 90000} : AVRational{spec.rate.denominator, spec.rate.numerator};
  if (spec.keyFrameInterval > 0) {
    c->gop_size = spec.keyFrameInterval;
    c->keyint_min = spec.keyFrameInterval;
  }
  if (spec.tagColour) {
    c->colorspace = spec.bt709 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
    c->color_primaries = spec.bt709 ? AVCOL_PRI_BT709 : AVCOL_PRI_SMPTE170M;
    c->color_trc = spec.bt709 ? AVCOL_TRC_BT709 : AVCOL_TRC_SMPTE170M;
    c->color_range = spec.fullRange ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
  }
  if (globalHeader) c->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  av_opt_set(c->priv_data, "preset", spec.preset.c_str(), 0);
  if (spec.fill) av_opt_set(c->priv_data, "crf", "8", 0);
  if (spec.codec == VideoCodec::hevc) av_opt_set(c->priv_data, "x265-params", "log-level=error", 0);
  c->thread_count = 1;  // many small test clips are written at once on few cores
  if (avcodec_open2(c.get(), codec, nullptr) < 0) return {};
  return c;
}

Codec openAudioEncoder(AudioCodec kind, int sampleRate, int channels, bool globalHeader) {
  const char* name = kind == AudioCodec::pcm16 ? "pcm_s16le" : kind == AudioCodec::mp3 ? "libmp3lame" : "aac";
  const AVCodec* codec = avcodec_find_encoder_by_name(name);
  if (!codec) return {};
  Codec c(avcodec_alloc_context3(codec));
  c->sample_rate = sampleRate;
  c->sample_fmt = kind == AudioCodec::pcm16 ? AV_SAMPLE_FMT_S16 : AV_SAMPLE_FMT_FLTP;
  av_channel_layout_default(&c->ch_layout, channels);
  c->time_base = {1, sampleRate};
  if (kind != AudioCodec::pcm16) c->bit_rate = 128000;
  if (globalHeader) c->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  if (avcodec_open2(c.get(), codec, nullptr) < 0) return {};
  return c;
}

// Writes seconds of the tone through an opened audio encoder.
bool encodeTone(AVFormatContext* format, AVCodecContext* c, AVStream* stream, double seconds, double frequency) {
  const int channels = c->ch_layout.nb_channels;
  const int perFrame = c->frame_size > 0 ? c->frame_size : 1024;
  const std::int64_t total = std::llround(seconds * c->sample_rate);
  Frame frame(av_frame_alloc());
  for (std::int64_t at = 0; at < total; at += perFrame) {
    frame->nb_samples = static_cast<int>(std::min<std::int64_t>(perFrame, total - at));
    frame->format = c->sample_fmt;
    frame->sample_rate = c->sample_rate;
    av_channel_layout_copy(&frame->ch_layout, &c->ch_layout);
    if (av_frame_get_buffer(frame.get(), 0) < 0) return false;
    for (int i = 0; i < frame->nb_samples; ++i) {
      const double t = static_cast<double>(at + i) / c->sample_rate;
      for (int ch = 0; ch < channels; ++ch) {
        const float v = static_cast<float>(0.5 * std::sin(2 * M_PI * frequency * (ch == 1 ? 2 : 1) * t));
        if (c->sample_fmt == AV_SAMPLE_FMT_S16) {
          reinterpret_cast<std::int16_t*>(frame->data[0])[i * channels + ch] = static_cast<std::int16_t>(v * 32767);
        } else {
          reinterpret_cast<float*>(frame->extended_data[ch])[i] = v;
        }
      }
    }
    frame->pts = at;
    if (!encode(format, c, stream, frame.get())) return false;
    av_frame_unref(frame.get());
  }
  return encode(format, c, stream, nullptr);
}

}  // namespace

TempFolder::TempFolder() {
  av_log_set_level(AV_LOG_QUIET);  // the encoders' statistics are noise here
  std::string pattern = (std::filesystem::temp_directory_path() / "orvane-media-XXXXXX").string();
  if (char* made = mkdtemp(pattern.data())) path_ = made;
}

TempFolder::~TempFolder() {
  std::error_code ignored;
  if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
}

std::string writeVideoClip(const std::filesystem::path& path, const VideoClipSpec& spec) {
  Output out;
  if (auto failed = openOutput(out, path); !failed.empty()) return failed;
  const bool variable = !spec.frameTimes.empty();
  const bool globalHeader = out.format->oformat->flags & AVFMT_GLOBALHEADER;
  Codec video = openVideoEncoder(spec, variable, globalHeader);
  if (!video) return "video encoder unavailable";
  AVStream* stream = avformat_new_stream(out.format, nullptr);
  avcodec_parameters_from_context(stream->codecpar, video.get());
  stream->time_base = video->time_base;
  stream->avg_frame_rate = video->framerate;
  if (spec.clockwiseRotation) {
    auto* matrix = reinterpret_cast<std::int32_t*>(
        av_stream_new_side_data(stream, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(std::int32_t)));
    // FFmpeg's getter reads this back negated: -90, which players (and our
    // decoder) take as a quarter turn clockwise.
    av_display_rotation_set(matrix, *spec.clockwiseRotation);
  }
  Codec audio;
  AVStream* audioStream = nullptr;
  if (spec.withAudio) {
    audio = openAudioEncoder(AudioCodec::aac, 48000, 2, globalHeader);
    if (!audio) return "audio encoder unavailable";
    audioStream = avformat_new_stream(out.format, nullptr);
    avcodec_parameters_from_context(audioStream->codecpar, audio.get());
    audioStream->time_base = audio->time_base;
  }
  if (auto failed = startWriting(out, path); !failed.empty()) return failed;
  Frame frame(av_frame_alloc());
  frame->format = AV_PIX_FMT_YUV420P;
  frame->width = spec.width;
  frame->height = spec.height;
  if (av_frame_get_buffer(frame.get(), 0) < 0) return "no memory";
  const int count = variable ? static_cast<int>(spec.frameTimes.size()) : spec.frameCount;
  for (int n = 0; n < count; ++n) {
    if (av_frame_make_writable(frame.get()) < 0) return "no memory";
    fillPicture(frame.get(), spec, n);
    frame->pts = variable ? std::llround(spec.frameTimes[n] * 90000) : n;
    if (!encode(out.format, video.get(), stream, frame.get())) return "video encoding failed";
  }
  if (!encode(out.format, video.get(), stream, nullptr)) return "video encoding failed";
  if (audio) {
    const double seconds = variable ? spec.frameTimes.back() : count * spec.rate.frameDuration().seconds();
    if (!encodeTone(out.format, audio.get(), audioStream, seconds, 440)) return "audio encoding failed";
  }
  if (av_write_trailer(out.format) < 0) return "trailer refused";
  return {};
}

std::optional<int> readFrameNumber(const render::Image& picture) {
  const render::PixelRect e = picture.extent();
  if (e.width < 5 || e.height < 2) return std::nullopt;
  int number = 0;
  for (int bit = 0; bit < 10; ++bit) {
    const int col = bit % 5, row = bit / 5;
    const int x = e.x + (2 * col + 1) * e.width / 10;
    const int yFromTop = (2 * row + 1) * e.height / 4;
    const render::Rgba p = picture.pixelAt(x, e.y + e.height - 1 - yFromTop);
    const float level = (p.r + p.g + p.b) / 3;
    if (level > 0.75f) {
      number |= 1 << bit;
    } else if (level > 0.25f) {
      return std::nullopt;
    }
  }
  return number;
}

std::string writeTone(const std::filesystem::path& path, const ToneSpec& spec) {
  Output out;
  if (auto failed = openOutput(out, path); !failed.empty()) return failed;
  Codec c = openAudioEncoder(spec.codec, spec.sampleRate, spec.channels,
                             out.format->oformat->flags & AVFMT_GLOBALHEADER);
  if (!c) return "audio encoder unavailable";
  AVStream* stream = avformat_new_stream(out.format, nullptr);
  avcodec_parameters_from_context(stream->codecpar, c.get());
  stream->time_base = c->time_base;
  if (auto failed = startWriting(out, path); !failed.empty()) return failed;
  if (!encodeTone(out.format, c.get(), stream, spec.seconds, spec.frequency)) return "audio encoding failed";
  if (av_write_trailer(out.format) < 0) return "trailer refused";
  return {};
}

std::string writeStill(const std::filesystem::path& path, int width, int height, core::OVColor colour) {
  QImage image(width, height, QImage::Format_RGB32);
  image.fill(QColor::fromRgbF(colour.red, colour.green, colour.blue));
  return image.save(QString::fromStdString(path.string())) ? std::string{} : "cannot write " + path.string();
}

std::string writeJpegWithOrientation(const std::filesystem::path& path, int width, int height, int orientation) {
  QImage image(width, height, QImage::Format_RGB32);
  image.fill(Qt::gray);
  QByteArray jpeg;
  QBuffer buffer(&jpeg);
  buffer.open(QIODevice::WriteOnly);
  if (!image.save(&buffer, "JPEG")) return "JPEG encoding failed";
  // An APP1 segment right after the start marker: "Exif", a big-endian TIFF
  // header and one IFD entry, Orientation (0x0112), a SHORT.
  const unsigned char exif[] = {0xFF, 0xE1, 0x00, 0x22, 'E', 'x', 'i', 'f', 0, 0, 'M', 'M', 0, 42, 0, 0, 0, 8,
                                0, 1, 0x01, 0x12, 0, 3, 0, 0, 0, 1, 0, static_cast<unsigned char>(orientation), 0, 0,
                                0, 0, 0, 0};
  jpeg.insert(2, reinterpret_cast<const char*>(exif), sizeof exif);
  return writeBytes(path, jpeg.toStdString());
}

std::string writeSvg(const std::filesystem::path& path, double width, double height) {
  const std::string w = std::to_string(width), h = std::to_string(height);
  return writeBytes(path, "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + w + "\" height=\"" + h +
                              "\" viewBox=\"0 0 " + w + " " + h + "\"><rect width=\"" + w + "\" height=\"" + h +
                              "\" fill=\"#3366cc\"/></svg>\n");
}

std::string writePdf(const std::filesystem::path& path, double widthPoints, double heightPoints) {
  QPdfWriter writer(QString::fromStdString(path.string()));
  writer.setPageSize(QPageSize(QSizeF(widthPoints, heightPoints), QPageSize::Point));
  writer.setPageMargins(QMarginsF(0, 0, 0, 0));
  QPainter painter(&writer);
  if (!painter.isActive()) return "cannot write " + path.string();
  painter.fillRect(QRectF(0, 0, 100, 100), Qt::red);
  painter.end();
  return {};
}

std::string writeSubtitlesOnly(const std::filesystem::path& path) {
  Output out;
  if (auto failed = openOutput(out, path); !failed.empty()) return failed;
  AVStream* stream = avformat_new_stream(out.format, nullptr);
  stream->codecpar->codec_type = AVMEDIA_TYPE_SUBTITLE;
  stream->codecpar->codec_id = AV_CODEC_ID_SUBRIP;
  stream->time_base = {1, 1000};
  if (auto failed = startWriting(out, path); !failed.empty()) return failed;
  Packet packet(av_packet_alloc());
  static const char text[] = "Hello";
  if (av_new_packet(packet.get(), sizeof text - 1) < 0) return "no memory";
  std::memcpy(packet->data, text, sizeof text - 1);
  packet->pts = packet->dts = 0;
  packet->duration = 1000;
  packet->stream_index = stream->index;
  if (av_interleaved_write_frame(out.format, packet.get()) < 0) return "packet refused";
  if (av_write_trailer(out.format) < 0) return "trailer refused";
  return {};
}

std::string writeBytes(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return file ? std::string{} : "cannot write " + path.string();
}

core::MediaAsset importedAsset(const std::filesystem::path& path) {
  auto asset = MediaImportService::importAsset(path);
  if (asset) return std::move(*asset);
  core::MediaAsset empty;
  empty.name = path.filename().string();
  empty.path = path.string();
  return empty;
}

}  // namespace orvane::media::testing
