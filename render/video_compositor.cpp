#include "render/video_compositor.hpp"

#include <pthread.h>

#include "render/frame_compositor.hpp"

namespace orvane::render {

std::string_view message(CompositorError error) {
  switch (error) {
    case CompositorError::missingInstruction:
      return "The render instruction was missing or of an unexpected type.";
    case CompositorError::noPixelBuffer:
      return "The renderer could not allocate an output frame.";
    case CompositorError::compositorReleased:
      return "The renderer was torn down while a frame was in flight.";
  }
  return "";
}

namespace {

void finishWith(CompositionRequest& request, CompositionResult result) {
  if (request.finish) request.finish(std::move(result));
}

CompositionResult failure(CompositorError error) {
  return {CompositionResult::Kind::failed, std::nullopt, error};
}

}  // namespace

VideoCompositor::VideoCompositor() : thread_([this] { run(); }) {}

VideoCompositor::~VideoCompositor() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  thread_.join();
}

void VideoCompositor::renderContextChanged(const CompositorRenderContext& context) {
  std::lock_guard lock(mutex_);
  context_ = context;
}

void VideoCompositor::startRequest(CompositionRequest request) {
  {
    std::lock_guard lock(mutex_);
    if (!stopping_) {
      queue_.push_back({std::move(request)});
      wake_.notify_one();
      return;
    }
  }
  finishWith(request, failure(CompositorError::compositorReleased));
}

void VideoCompositor::cancelAllPendingRequests() {
  std::lock_guard lock(mutex_);
  isCancelled_ = true;
  queue_.push_back({std::nullopt});
  wake_.notify_one();
}

void VideoCompositor::run() {
  pthread_setname_np(pthread_self(), "orvane-compose");
  for (;;) {
    Task task;
    bool cancelled = false;
    {
      std::unique_lock lock(mutex_);
      wake_.wait(lock, [&] { return stopping_ || !queue_.empty(); });
      if (stopping_) break;
      task = std::move(queue_.front());
      queue_.pop_front();
      if (!task.request) {
        isCancelled_ = false;
        continue;
      }
      cancelled = isCancelled_;
    }
    if (cancelled) {
      finishWith(*task.request, {CompositionResult::Kind::cancelled, std::nullopt, std::nullopt});
    } else {
      render(*task.request);
    }
  }
  // Torn down: whatever is still queued will never render.
  std::deque<Task> left;
  {
    std::lock_guard lock(mutex_);
    left.swap(queue_);
  }
  for (Task& task : left) {
    if (task.request) finishWith(*task.request, failure(CompositorError::compositorReleased));
  }
}

void VideoCompositor::render(CompositionRequest& request) {
  if (!request.instruction) return finishWith(request, failure(CompositorError::missingInstruction));
  std::optional<VideoFrameBuffer> buffer = request.newPixelBuffer ? request.newPixelBuffer() : std::nullopt;
  // A buffer too small for its rows fails the write below, with the same error.
  if (!buffer || buffer->width <= 0 || buffer->height <= 0) {
    return finishWith(request, failure(CompositorError::noPixelBuffer));
  }
  const RenderPlan& plan = request.instruction->plan;
  SourceFrames frames;
  if (request.sourceFrame) {
    for (std::int32_t track : plan.allVideoTrackIDs()) {
      if (std::optional<Image> frame = request.sourceFrame(track)) frames.insert_or_assign(track, std::move(*frame));
    }
  }
  Rgba8Format format;
  {
    std::lock_guard lock(mutex_);
    format = context_.format;
  }
  const Image picture = FrameCompositor::composeFrame(plan, request.compositionTime, frames);
  const auto written = writeRgba8(picture, {0, 0, buffer->width, buffer->height}, buffer->bytes,
                                  buffer->bytesPerRow, format);
  if (!written) return finishWith(request, failure(CompositorError::noPixelBuffer));
  finishWith(request, {CompositionResult::Kind::composed, std::move(buffer), std::nullopt});
}

}  // namespace orvane::render
