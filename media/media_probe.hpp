#pragma once
// What a time-based media file holds, read with FFmpeg without decoding it:
// its duration, and the facts of its first video and first audio stream
// that the program records at import. Stateless; any thread.

#include <cstdint>
#include <expected>
#include <filesystem>
#include <optional>

#include "core/frame_rate.hpp"
#include "core/geometry.hpp"
#include "core/ov_time.hpp"
#include "media/media_error.hpp"
#include "render/render_plan.hpp"

namespace orvane::media {

struct VideoTrackFacts {
  render::FootageGeometry geometry;      // the stored picture and its rotation
  core::OVSize displaySize;              // after rotation, width and height positive
  std::optional<core::FrameRate> nominalFrameRate;  // none when the file has no rate above 0

  friend bool operator==(const VideoTrackFacts&, const VideoTrackFacts&) = default;
};

struct AudioTrackFacts {
  std::int64_t channelCount = 0;
  double sampleRate = 0;

  friend bool operator==(const AudioTrackFacts&, const AudioTrackFacts&) = default;
};

struct MediaProbe {
  core::OVTime duration;
  std::optional<VideoTrackFacts> video;  // the first video stream with a decoder (cover art is none)
  std::optional<AudioTrackFacts> audio;  // the first audio stream with a decoder

  friend bool operator==(const MediaProbe&, const MediaProbe&) = default;
};

// The file's facts. missingFile when nothing is readable at path,
// unreadable when FFmpeg cannot open it; a file with neither kind of stream
// is still a probe (the caller decides what that means).
std::expected<MediaProbe, MediaError> probeMediaFile(const std::filesystem::path& path);

}  // namespace orvane::media
