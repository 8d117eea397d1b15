#pragma once
// What one export writes: codec, size, rate, bitrates, channels, range and
// motion blur, and how that turns into FFmpeg's encoder and muxer settings.
// Plain values, free to copy to any thread.
//
// The namespace is orvane::export_ since `export` is a C++ keyword.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/frame_rate.hpp"
#include "core/geometry.hpp"
#include "core/ov_time.hpp"

namespace orvane::export_ {

// In menu order. vp9Alpha is this platform's compressed format with alpha.
enum class ExportCodec { h264, proRes4444, hevcWithAlpha, vp9Alpha };

inline constexpr ExportCodec allExportCodecs[] = {ExportCodec::h264, ExportCodec::proRes4444,
                                                  ExportCodec::hevcWithAlpha, ExportCodec::vp9Alpha};

std::string_view rawValue(ExportCodec codec);
std::optional<ExportCodec> exportCodecFromRaw(std::string_view raw);
std::string_view displayName(ExportCodec codec);
std::string_view description(ExportCodec codec);
bool preservesAlpha(ExportCodec codec);
// None when the installed FFmpeg can encode this codec; otherwise one
// sentence that says why not (e.g. libx265 without an alpha layer).
std::optional<std::string> unavailableReason(ExportCodec codec);

enum class ExportMediaChannels { videoAndAudio, videoOnly, audioOnly };

inline constexpr ExportMediaChannels allExportMediaChannels[] = {
    ExportMediaChannels::videoAndAudio, ExportMediaChannels::videoOnly, ExportMediaChannels::audioOnly};

std::string_view rawValue(ExportMediaChannels channels);
std::optional<ExportMediaChannels> exportMediaChannelsFromRaw(std::string_view raw);
std::string_view displayName(ExportMediaChannels channels);
std::string_view description(ExportMediaChannels channels);

// FFmpeg's encoder for the picture: which encoder, the frames it takes, and
// its private options (name, value) in the order they are set.
struct VideoEncoderSettings {
  std::string encoderName;   // "libx264", "prores_ks", "libx265", "libvpx-vp9"
  std::string pixelFormat;   // "yuv420p", "yuva444p10le", "yuva420p", ...
  int width = 0;
  int height = 0;
  std::int64_t averageBitRate = 0;  // bits per second; 0 for codecs that take none
  int expectedFrameRate = 0;        // rounded fps
  int maxKeyFrameInterval = 0;      // rounded fps × 2; 0 for intra-only codecs
  bool allowFrameReordering = true;
  std::string profile;              // "high", "4444", ... empty for the default
  std::string codecTag;             // "hvc1" for HEVC in MOV, else empty
  std::vector<std::pair<std::string, std::string>> options;
  friend bool operator==(const VideoEncoderSettings&, const VideoEncoderSettings&) = default;
};

struct AudioEncoderSettings {
  std::string encoderName = "aac";
  int channels = 2;
  int sampleRate = 48000;
  std::int64_t bitRate = 192000;
  friend bool operator==(const AudioEncoderSettings&, const AudioEncoderSettings&) = default;
};

// The container: FFmpeg's muxer name and its options.
struct ContainerSettings {
  std::string muxerName;  // "mp4", "mov", "ipod" (M4A), "webm"
  std::vector<std::pair<std::string, std::string>> options;  // e.g. movflags=+faststart
  friend bool operator==(const ContainerSettings&, const ContainerSettings&) = default;
};

struct ExportSettings {
  ExportCodec codec = ExportCodec::h264;
  core::OVSize size{1920, 1080};
  core::FrameRate frameRate = core::FrameRate::fps30;
  double videoBitrateMbps = 16;
  ExportMediaChannels channels = ExportMediaChannels::videoAndAudio;
  double audioBitrateKbps = 192;
  double audioSampleRate = 48000;
  int audioChannels = 2;
  core::OVTimeRange range;
  bool enableMotionBlur = false;
  double motionBlurShutterAngle = 180;

  bool includeVideo() const { return channels != ExportMediaChannels::audioOnly; }
  bool includeAudio() const { return channels != ExportMediaChannels::videoOnly; }
  // "mp4", "mov", "webm" or "m4a".
  std::string_view fileExtension() const;
  // The MIME type of the file: "video/mp4", "video/quicktime", "video/webm", "audio/mp4".
  std::string_view contentType() const;
  // Each side halved, rounded half away from zero, doubled; at least 2.
  int pixelWidth() const;
  int pixelHeight() const;
  std::int64_t estimatedByteCount() const;

  VideoEncoderSettings videoOutputSettings() const;
  AudioEncoderSettings audioOutputSettings() const;
  ContainerSettings containerSettings() const;

  friend bool operator==(const ExportSettings&, const ExportSettings&) = default;
};

}  // namespace orvane::export_
