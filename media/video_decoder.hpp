#pragma once
// Frames of one video stream of one file, by presentation time, as the
// renderer's pictures.
//
// `frameAt(t)` returns the frame on screen at t: the last frame whose
// presentation time (FFmpeg's best-effort timestamp, counted from the
// stream's start) is at or before t, so asking at FrameRate::timeForFrame(n)
// gives frame n at any rate, variable frame rates included. Times before the
// first frame give the first frame, times past the end the last one.
// Moving forward by about a frame (playback, export) decodes on without
// seeking; a jump seeks to the key frame before t and decodes forward to it.
// Codecs run frame and slice threads (one per core).
//
// Pictures come upright-agnostic: the stored picture at its coded display
// size (sample aspect applied), y-up, premultiplied (opaque) RGBA floats,
// with the extent at the origin; `geometry()` says how the file rotates it
// for display (render::FootageGeometry, as RenderPlan keeps it). Colours go
// through the stream's matrix and range: BT.709 when the file says so or
// for HD and larger, BT.601 for SD; limited or full range.
//
// A decoder is used by one thread at a time; it may move between threads.
// Decoders are made by MediaAssetCache, which keeps released ones for the
// next user of the same file, or directly by `open` for a private one.

#include <cstdint>
#include <expected>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/frame_rate.hpp"
#include "core/geometry.hpp"
#include "core/ov_time.hpp"
#include "media/media_error.hpp"
#include "render/image.hpp"
#include "render/render_plan.hpp"

namespace orvane::media {

// What the file says about its video stream.
struct VideoStreamInfo {
  int codedWidth = 0;        // the stored picture, in pixels
  int codedHeight = 0;
  render::FootageGeometry geometry;  // naturalSize: the picture with its sample aspect applied
  std::optional<core::FrameRate> nominalFrameRate;
  core::OVTime duration;     // of the stream, or the file when the stream has none
  std::string codecName;     // "h264", "hevc", ...
};

// A decoded frame converted to the renderer's picture.
struct VideoFrame {
  render::Image image;       // extent (0, 0, naturalSize) in whole pixels
  core::OVTime time;         // presentation time from the stream's start
  core::OVTime duration;     // until the next frame (or its nominal length)
};

// A decoded frame as 8-bit BGRA bytes (opaque; rows from the top down),
// for previews and thumbnails that go to Qt rather than the renderer.
struct VideoFrameBgra {
  std::vector<std::uint8_t> pixels;  // width × height × 4, tightly packed
  int width = 0;
  int height = 0;
  core::OVTime time;
};

class VideoDecoder {
 public:
  // Opens the first video stream of the file (cover art is no video).
  static std::expected<std::unique_ptr<VideoDecoder>, MediaError> open(const std::filesystem::path& path);

  ~VideoDecoder();
  VideoDecoder(const VideoDecoder&) = delete;
  VideoDecoder& operator=(const VideoDecoder&) = delete;

  const std::filesystem::path& path() const;
  const VideoStreamInfo& info() const;
  const render::FootageGeometry& geometry() const { return info().geometry; }

  // The frame on screen at t, as a picture of naturalSize.
  std::expected<VideoFrame, MediaError> frameAt(const core::OVTime& t);
  // The same frame scaled to fit within maxWidth × maxHeight (aspect kept,
  // never enlarged), as BGRA bytes. Scaling happens in the conversion, so a
  // small preview costs little.
  std::expected<VideoFrameBgra, MediaError> bgraFrameAt(const core::OVTime& t, int maxWidth, int maxHeight);

  // Diagnostics for tests and benchmarks: seeks and frames decoded so far.
  std::int64_t seekCount() const;
  std::int64_t decodedFrameCount() const;

  struct State;  // FFmpeg objects; defined in the source

 private:
  explicit VideoDecoder(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};

}  // namespace orvane::media
