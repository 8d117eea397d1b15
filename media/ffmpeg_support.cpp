#include "media/ffmpeg_support.hpp"

extern "C" {
#include <libavutil/display.h>
}

#include <cmath>
#include <limits>
#include <cstdlib>
#include <mutex>

#include "document/media_access.hpp"

namespace orvane::media::ffmpeg {

namespace {

// Packets the codec may refuse in a row before the stream counts as broken.
constexpr int kMaxRefusedPackets = 64;

int interruptWhenLate(void* opaque) {
  const auto* deadline = static_cast<const Deadline*>(opaque);
  return std::chrono::steady_clock::now() > deadline->until ? 1 : 0;
}

// A rotation in whole quarter turns is kept exact, so that the upright
// picture lands on whole pixels.
core::Affine2D rotationBy(double degrees) {
  const double quarter = std::round(degrees / 90.0);
  if (std::abs(degrees - quarter * 90.0) < 0.01) {
    switch ((static_cast<int>(quarter) % 4 + 4) % 4) {
      case 0: return core::Affine2D::identity();
      case 1: return {0, 1, -1, 0, 0, 0};
      case 2: return {-1, 0, 0, -1, 0, 0};
      default: return {0, -1, 1, 0, 0, 0};
    }
  }
  return core::Affine2D::makeRotation(degrees * M_PI / 180.0);
}

}  // namespace

std::expected<OpenedFile, MediaError> openFile(const std::filesystem::path& path) {
  // FFmpeg's complaints about damaged files go to stderr otherwise; the
  // program reports the file in its own words. ORVANE_FFMPEG_LOG keeps them.
  static std::once_flag quiet;
  std::call_once(quiet, [] {
    if (!std::getenv("ORVANE_FFMPEG_LOG")) av_log_set_level(AV_LOG_FATAL);
  });
  if (!document::isReadableFile(path)) return std::unexpected(MediaError::missingFile);
  OpenedFile file;
  file.deadline = std::make_unique<Deadline>();
  file.deadline->extend();
  AVFormatContext* raw = avformat_alloc_context();
  if (!raw) return std::unexpected(MediaError::outOfMemory);
  raw->interrupt_callback.callback = interruptWhenLate;
  raw->interrupt_callback.opaque = file.deadline.get();
  if (avformat_open_input(&raw, path.c_str(), nullptr, nullptr) < 0) {
    return std::unexpected(MediaError::unreadable);  // FFmpeg freed the context
  }
  file.format.reset(raw);
  if (avformat_find_stream_info(raw, nullptr) < 0) return std::unexpected(MediaError::unreadable);
  return file;
}

int firstUsableStream(const AVFormatContext& format, AVMediaType type) {
  for (unsigned i = 0; i < format.nb_streams; ++i) {
    const AVStream* s = format.streams[i];
    if (s->codecpar->codec_type != type) continue;
    if (s->disposition & AV_DISPOSITION_ATTACHED_PIC) continue;
    if (!avcodec_find_decoder(s->codecpar->codec_id)) continue;
    if (type == AVMEDIA_TYPE_VIDEO && (s->codecpar->width <= 0 || s->codecpar->height <= 0)) continue;
    if (type == AVMEDIA_TYPE_AUDIO && (s->codecpar->sample_rate <= 0 || s->codecpar->ch_layout.nb_channels <= 0)) {
      continue;
    }
    return static_cast<int>(i);
  }
  return -1;
}

CodecPtr openDecoder(const AVStream& stream, bool threaded) {
  const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
  if (!codec) return {};
  CodecPtr context(avcodec_alloc_context3(codec));
  if (!context || avcodec_parameters_to_context(context.get(), stream.codecpar) < 0) return {};
  context->pkt_timebase = stream.time_base;
  if (threaded) {
    context->thread_count = 0;  // one per core
    context->thread_type = FF_THREAD_FRAME | FF_THREAD_SLICE;
  }
  if (avcodec_open2(context.get(), codec, nullptr) < 0) return {};
  return context;
}

render::FootageGeometry geometryOf(const AVStream& stream) {
  const AVCodecParameters& par = *stream.codecpar;
  double width = par.width, height = par.height;
  AVRational sar = stream.sample_aspect_ratio.num > 0 ? stream.sample_aspect_ratio : par.sample_aspect_ratio;
  if (sar.num > 0 && sar.den > 0 && sar.num != sar.den) width = std::round(width * av_q2d(sar));
  render::FootageGeometry geometry{{width, height}, core::Affine2D::identity()};
  std::size_t size = 0;
  const std::uint8_t* data = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
  if (!data || size < 9 * sizeof(std::int32_t)) return geometry;
  const auto* matrix = reinterpret_cast<const std::int32_t*>(data);
  const double degrees = av_display_rotation_get(matrix);
  if (!std::isfinite(degrees)) return geometry;
  // A negative determinant means the picture is also mirrored left to right.
  const double det = static_cast<double>(matrix[0]) * matrix[4] - static_cast<double>(matrix[1]) * matrix[3];
  core::Affine2D transform = rotationBy(degrees);
  if (det < 0) transform = core::Affine2D::concatenating(core::Affine2D::makeScale(-1, 1), transform);
  geometry.preferredTransform = transform;
  return geometry;
}

std::optional<core::FrameRate> nominalFrameRate(const AVStream& stream) {
  for (AVRational r : {stream.avg_frame_rate, stream.r_frame_rate}) {
    if (r.num > 0 && r.den > 0) {
      const double fps = av_q2d(r);
      if (std::isfinite(fps) && fps > 0 && fps < 10000) return core::FrameRate::fromFPS(fps);
    }
  }
  return std::nullopt;
}

core::OVTime fileDuration(const AVFormatContext& format) {
  if (format.duration == AV_NOPTS_VALUE || format.duration <= 0) return core::OVTime::zero;
  return toTime(format.duration, AVRational{1, AV_TIME_BASE});
}

core::OVTime durationOf(const AVFormatContext& format, const AVStream& stream) {
  if (stream.duration != AV_NOPTS_VALUE && stream.duration > 0) return toTime(stream.duration, stream.time_base);
  return fileDuration(format);
}

std::int64_t streamOrigin(const AVStream& stream) {
  return stream.start_time == AV_NOPTS_VALUE ? 0 : stream.start_time;
}

core::OVTime toTime(std::int64_t ticks, AVRational timeBase) {
  // Exact when the time base's denominator fits a timescale; else rescaled
  // to the default timescale.
  if (timeBase.num == 1 && timeBase.den > 0) return core::OVTime(ticks, timeBase.den);
  const std::int64_t value =
      av_rescale_q_rnd(ticks, timeBase, AVRational{1, core::OVTime::defaultTimescale},
                       static_cast<AVRounding>(AV_ROUND_NEAR_INF | AV_ROUND_PASS_MINMAX));
  return core::OVTime(value, core::OVTime::defaultTimescale);
}

std::int64_t toTicks(const core::OVTime& t, AVRational timeBase) {
  return av_rescale_q_rnd(t.value, AVRational{1, t.timescale}, timeBase,
                          static_cast<AVRounding>(AV_ROUND_DOWN | AV_ROUND_PASS_MINMAX));
}

bool receiveFrame(AVFormatContext& format, AVCodecContext& codec, int streamIndex, AVPacket& packet,
                  AVFrame& frame, bool& flushed) {
  int refused = 0;
  for (;;) {
    const int received = avcodec_receive_frame(&codec, &frame);
    if (received == 0) return true;
    if (received == AVERROR_EOF) return false;
    if (received != AVERROR(EAGAIN)) {
      if (++refused > kMaxRefusedPackets) return false;
      continue;
    }
    if (flushed) return false;
    if (av_read_frame(&format, &packet) < 0) {
      avcodec_send_packet(&codec, nullptr);
      flushed = true;
      continue;
    }
    if (packet.stream_index == streamIndex) {
      const int sent = avcodec_send_packet(&codec, &packet);
      if (sent < 0 && sent != AVERROR(EAGAIN) && ++refused > kMaxRefusedPackets) {
        av_packet_unref(&packet);
        return false;
      }
      if (sent == 0) refused = 0;
    }
    av_packet_unref(&packet);
  }
}

}  // namespace orvane::media::ffmpeg
