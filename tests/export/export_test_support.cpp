#include "tests/export/export_test_support.hpp"

#include <cctype>
#include <cmath>
#include <fstream>
#include <iterator>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include "render/rgba8.hpp"

namespace orvane::export_::testing {

namespace {

struct StreamDecoder {
  AVCodecContext* codec = nullptr;
  ~StreamDecoder() { avcodec_free_context(&codec); }
};

bool openDecoder(StreamDecoder& decoder, const AVStream& stream, const char* name) {
  const AVCodec* codec = name ? avcodec_find_decoder_by_name(name) : avcodec_find_decoder(stream.codecpar->codec_id);
  if (codec == nullptr) return false;
  decoder.codec = avcodec_alloc_context3(codec);
  avcodec_parameters_to_context(decoder.codec, stream.codecpar);
  decoder.codec->pkt_timebase = stream.time_base;
  return avcodec_open2(decoder.codec, codec, nullptr) >= 0;
}

// A frame's time in seconds on its stream's clock.
double seconds(std::int64_t timestamp, const StreamDecoder& decoder) {
  return timestamp == AV_NOPTS_VALUE ? 0 : double(timestamp) * av_q2d(decoder.codec->pkt_timebase);
}

std::vector<std::uint8_t> toRgba(const AVFrame& frame) {
  std::vector<std::uint8_t> out(static_cast<std::size_t>(frame.width) * frame.height * 4);
  SwsContext* scaler = sws_getContext(frame.width, frame.height, static_cast<AVPixelFormat>(frame.format), frame.width,
                                      frame.height, AV_PIX_FMT_RGBA, SWS_BICUBIC | SWS_ACCURATE_RND, nullptr, nullptr,
                                      nullptr);
  const int matrix = frame.colorspace == AVCOL_SPC_BT709 ? SWS_CS_ITU709 : SWS_CS_DEFAULT;
  sws_setColorspaceDetails(scaler, sws_getCoefficients(matrix), frame.color_range == AVCOL_RANGE_JPEG ? 1 : 0,
                           sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, 1 << 16, 1 << 16);
  std::uint8_t* planes[4] = {out.data()};
  int strides[4] = {frame.width * 4};
  sws_scale(scaler, frame.data, frame.linesize, 0, frame.height, planes, strides);
  sws_freeContext(scaler);
  return out;
}

}  // namespace

std::optional<DecodedFile> decodeFile(const std::filesystem::path& path, const std::set<int>& keepFrames,
                                      const char* videoDecoder) {
  AVFormatContext* format = nullptr;
  if (avformat_open_input(&format, path.string().c_str(), nullptr, nullptr) < 0) return std::nullopt;
  avformat_find_stream_info(format, nullptr);
  DecodedFile file;
  file.formatName = format->iformat->name;
  file.seconds = format->duration > 0 ? format->duration / double(AV_TIME_BASE) : 0;

  StreamDecoder video, audio;
  int videoIndex = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  int audioIndex = av_find_best_stream(format, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
  if (videoIndex >= 0) {
    const AVStream& stream = *format->streams[videoIndex];
    DecodedVideo& v = file.video.emplace();
    v.codec = avcodec_get_name(stream.codecpar->codec_id);
    v.width = stream.codecpar->width;
    v.height = stream.codecpar->height;
    if (stream.duration > 0) v.seconds = stream.duration * av_q2d(stream.time_base);
    const AVDictionaryEntry* tag = nullptr;
    while ((tag = av_dict_get(stream.metadata, "", tag, AV_DICT_IGNORE_SUFFIX))) {
      std::string key = tag->key;
      for (char& ch : key) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
      v.tags[key] = tag->value;
    }
    if (!openDecoder(video, stream, videoDecoder)) videoIndex = -1;
  }
  if (audioIndex >= 0) {
    const AVStream& stream = *format->streams[audioIndex];
    DecodedAudio& a = file.audio.emplace();
    a.codec = avcodec_get_name(stream.codecpar->codec_id);
    a.channels = stream.codecpar->ch_layout.nb_channels;
    a.sampleRate = stream.codecpar->sample_rate;
    if (!openDecoder(audio, stream, nullptr)) audioIndex = -1;
  }

  std::vector<float> firstChannel;
  AVPacket* packet = av_packet_alloc();
  AVFrame* frame = av_frame_alloc();
  const auto drain = [&](StreamDecoder& decoder, bool isVideo) {
    while (avcodec_receive_frame(decoder.codec, frame) >= 0) {
      if (isVideo) {
        DecodedVideo& v = *file.video;
        v.pixelFormat = av_get_pix_fmt_name(static_cast<AVPixelFormat>(frame->format));
        if (v.frameCount == 0) v.firstFrameSeconds = seconds(frame->best_effort_timestamp, decoder);
        if (keepFrames.contains(v.frameCount)) v.pictures[v.frameCount] = toRgba(*frame);
        ++v.frameCount;
      } else {
        DecodedAudio& a = *file.audio;
        a.samples += frame->nb_samples;
        const bool planar = av_sample_fmt_is_planar(static_cast<AVSampleFormat>(frame->format));
        const auto* samples = reinterpret_cast<const float*>(frame->data[0]);
        for (int i = 0; i < frame->nb_samples; ++i) {
          const float sample = samples[planar ? i : i * a.channels];
          if (!a.firstSoundSeconds && std::fabs(sample) > 0.05f)
            a.firstSoundSeconds = seconds(frame->best_effort_timestamp, decoder) + double(i) / a.sampleRate;
          firstChannel.push_back(sample);
        }
      }
      av_frame_unref(frame);
    }
  };
  while (av_read_frame(format, packet) >= 0) {
    if (packet->stream_index == videoIndex) {
      avcodec_send_packet(video.codec, packet);
      drain(video, true);
    } else if (packet->stream_index == audioIndex) {
      avcodec_send_packet(audio.codec, packet);
      drain(audio, false);
    }
    av_packet_unref(packet);
  }
  if (videoIndex >= 0) {
    avcodec_send_packet(video.codec, nullptr);
    drain(video, true);
  }
  if (audioIndex >= 0) {
    avcodec_send_packet(audio.codec, nullptr);
    drain(audio, false);
  }
  if (file.audio && !firstChannel.empty()) {
    const std::size_t from = firstChannel.size() / 4, to = 3 * firstChannel.size() / 4;
    double sum = 0;
    for (std::size_t i = from; i < to; ++i) sum += double(firstChannel[i]) * firstChannel[i];
    file.audio->rms = std::sqrt(sum / double(std::max<std::size_t>(1, to - from)));
  }
  av_frame_free(&frame);
  av_packet_free(&packet);
  avformat_close_input(&format);
  return file;
}

std::vector<std::uint8_t> rgbaOf(const render::Image& picture, int width, int height, bool straight) {
  const render::Rgba8Format format{straight ? render::AlphaForm::straight : render::AlphaForm::premultiplied,
                                   render::ChannelOrder::rgba};
  auto bytes = render::toRgba8(picture, {0, 0, width, height}, format);
  return bytes ? *bytes : std::vector<std::uint8_t>{};
}

double psnr(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b, bool premultiply) {
  if (a.size() != b.size() || a.empty()) return 0;
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); i += 4) {
    for (std::size_t c = 0; c < 3; ++c) {
      double x = a[i + c], y = b[i + c];
      if (premultiply) {
        x = x * a[i + 3] / 255.0;
        y = y * b[i + 3] / 255.0;
      }
      sum += (x - y) * (x - y);
    }
  }
  const double mse = sum / (3.0 * double(a.size() / 4));
  if (mse <= 0) return 100;
  return 10 * std::log10(255.0 * 255.0 / mse);
}

bool movieHeaderFirst(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  const auto moov = bytes.find("moov"), mdat = bytes.find("mdat");
  return moov != std::string::npos && mdat != std::string::npos && moov < mdat;
}

}  // namespace orvane::export_::testing
