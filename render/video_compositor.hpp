#pragma once
// The compositor the media engine drives during playback and export: it
// takes one request per output frame (the instruction with its frozen plan,
// the composition time, the decoded source frames by track, a way to get an
// output buffer) and answers each on its own serial render thread with the
// composed frame, an error, or "cancelled".
//
// Cancelling marks every request queued so far as cancelled and queues a
// reset behind them, so requests made afterwards render; it does not wait.
// Destroying the compositor answers the requests still queued with
// compositorReleased. startRequest, cancelAllPendingRequests and
// renderContextChanged may be called from any thread; the request's
// callbacks run on the render thread. The lock guards only the cancel flag,
// the context and the queue, never a render.

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>
#include <vector>

#include "core/ov_time.hpp"
#include "render/image.hpp"
#include "render/render_plan.hpp"
#include "render/rgba8.hpp"

namespace orvane::render {

enum class CompositorError { missingInstruction, noPixelBuffer, compositorReleased };

// The sentence for people.
std::string_view message(CompositorError error);

// What the frames of one time range are made from. One instruction spans a
// whole composition; its plan never changes (a new plan is a new
// instruction). Every frame differs, so none may be reused, and no track
// passes through untouched.
struct CompositionInstruction {
  RenderPlan plan;
  core::OVTimeRange timeRange;

  static constexpr bool enablePostProcessing = false;
  static constexpr bool containsTweening = true;
  static constexpr std::int32_t passthroughTrackID = 0;
  std::vector<std::int32_t> requiredSourceTrackIDs() const { return plan.allVideoTrackIDs(); }
};

// An 8-bit output frame, rows from the top, bytesPerRow apart.
struct VideoFrameBuffer {
  int width = 0;
  int height = 0;
  std::size_t bytesPerRow = 0;
  std::vector<std::uint8_t> bytes;
};

// How the engine wants frames written; BGRA with straight alpha, as the
// encoders and the video surface take them, unless it says otherwise.
struct CompositorRenderContext {
  Rgba8Format format{AlphaForm::straight, ChannelOrder::bgra};
};

struct CompositionResult {
  enum class Kind { composed, failed, cancelled };
  Kind kind = Kind::cancelled;
  std::optional<VideoFrameBuffer> frame;  // composed
  std::optional<CompositorError> error;   // failed
};

struct CompositionRequest {
  // Null when the engine had none of ours for this time.
  std::shared_ptr<const CompositionInstruction> instruction;
  core::OVTime compositionTime;
  // The decoded frame of a track; none when it has none at this time.
  std::function<std::optional<Image>(std::int32_t trackID)> sourceFrame;
  // A buffer to render into; none when the engine cannot give one.
  std::function<std::optional<VideoFrameBuffer>()> newPixelBuffer;
  // Called exactly once, on the render thread.
  std::function<void(CompositionResult)> finish;
};

class VideoCompositor {
 public:
  VideoCompositor();
  ~VideoCompositor();
  VideoCompositor(const VideoCompositor&) = delete;
  VideoCompositor& operator=(const VideoCompositor&) = delete;

  void renderContextChanged(const CompositorRenderContext& context);
  void startRequest(CompositionRequest request);
  void cancelAllPendingRequests();

 private:
  struct Task {
    std::optional<CompositionRequest> request;  // none: the reset after a cancel
  };

  void run();
  void render(CompositionRequest& request);

  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<Task> queue_;             // guarded by mutex_
  bool isCancelled_ = false;           // guarded by mutex_
  bool stopping_ = false;              // guarded by mutex_
  CompositorRenderContext context_;    // guarded by mutex_
  std::thread thread_;
};

}  // namespace orvane::render
