#pragma once
// The FFmpeg edge of the media library: owners of FFmpeg's objects, opening
// a file with a deadline so that a damaged file can't hang its reader, and
// the conversions between stream timestamps and OVTime. Internal to media/.
// Each object belongs to the one thread using it.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/avutil.h>
}

#include <chrono>
#include <expected>
#include <filesystem>
#include <memory>
#include <optional>

#include "core/frame_rate.hpp"
#include "core/ov_time.hpp"
#include "media/media_error.hpp"
#include "render/render_plan.hpp"

namespace orvane::media::ffmpeg {

struct FormatCloser {
  void operator()(AVFormatContext* c) const { avformat_close_input(&c); }
};
struct CodecCloser {
  void operator()(AVCodecContext* c) const { avcodec_free_context(&c); }
};
struct FrameCloser {
  void operator()(AVFrame* f) const { av_frame_free(&f); }
};
struct PacketCloser {
  void operator()(AVPacket* p) const { av_packet_free(&p); }
};
using FormatPtr = std::unique_ptr<AVFormatContext, FormatCloser>;
using CodecPtr = std::unique_ptr<AVCodecContext, CodecCloser>;
using FramePtr = std::unique_ptr<AVFrame, FrameCloser>;
using PacketPtr = std::unique_ptr<AVPacket, PacketCloser>;

// Bounds every blocking call of one open file: past the deadline FFmpeg's
// I/O gives up, so a reader fails instead of hanging. The deadline is moved
// on before each operation.
struct Deadline {
  // How long one open, seek or read may take before it counts as hung.
  static constexpr std::chrono::seconds operationLimit{10};
  std::chrono::steady_clock::time_point until;
  void extend() { until = std::chrono::steady_clock::now() + operationLimit; }
};

// An opened container with its stream facts read.
struct OpenedFile {
  FormatPtr format;
  std::unique_ptr<Deadline> deadline;  // the format context points at it
};

// Opens path and reads its stream info. missingFile when it can't be read
// at all, unreadable when FFmpeg can't make sense of it.
std::expected<OpenedFile, MediaError> openFile(const std::filesystem::path& path);

// The first stream of the type with a decoder here, attached pictures (cover
// art) excluded; -1 when none.
int firstUsableStream(const AVFormatContext& format, AVMediaType type);

// A decoder for the stream, opened with frame and slice threads on every
// core; none when the codec is unavailable or refuses.
CodecPtr openDecoder(const AVStream& stream, bool threaded);

// Decodes the stream's next frame into frame, feeding the codec the file's
// packets of that stream as it asks for them. When the file runs out the
// codec is told so and drains; flushed records that, and whoever seeks
// clears it. False at the end of the stream, or when the codec refused too
// many packets in a row to count as readable. packet is scratch.
bool receiveFrame(AVFormatContext& format, AVCodecContext& codec, int streamIndex, AVPacket& packet,
                  AVFrame& frame, bool& flushed);

// The stream's geometry: the stored picture with its sample aspect applied,
// and the display matrix's rotation (and flip) as a y-up transform.
render::FootageGeometry geometryOf(const AVStream& stream);
// The nominal rate: the average rate, else the real base rate; none when
// neither is above 0.
std::optional<core::FrameRate> nominalFrameRate(const AVStream& stream);
// The stream's duration, else the file's; zero when neither is known.
core::OVTime durationOf(const AVFormatContext& format, const AVStream& stream);
core::OVTime fileDuration(const AVFormatContext& format);

// Where the stream's time starts (its start time, else 0), in its ticks.
std::int64_t streamOrigin(const AVStream& stream);
// A tick count of the stream's time base from its origin, as OVTime.
core::OVTime toTime(std::int64_t ticks, AVRational timeBase);
// An OVTime as ticks of the time base, rounded down.
std::int64_t toTicks(const core::OVTime& t, AVRational timeBase);

}  // namespace orvane::media::ffmpeg
