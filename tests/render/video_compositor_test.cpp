// The compositor object as the media engine drives it: one request per
// frame on its serial render thread, the three errors, and cancellation.

#include "render/video_compositor.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <mutex>
#include <vector>

#include "tests/render/render_test_support.hpp"

namespace orvane::render {
namespace {

using core::OVTime;
using Kind = CompositionResult::Kind;

// A 2 × 2 composition with one red footage layer on track 7.
std::shared_ptr<const CompositionInstruction> redInstruction() {
  auto instruction = std::make_shared<CompositionInstruction>();
  instruction->plan.composition.size = {2, 2};
  instruction->plan.composition.duration = OVTime(10, 1);
  core::Layer clip("clip", core::LayerContent::video(core::Uuid::make()),
                   core::OVTimeRange(OVTime::zero, OVTime(10, 1)));
  clip.transform = core::LayerTransform::centeredIn({2, 2});
  instruction->plan.composition.layers = {clip};
  instruction->plan.videoTrackIDs[clip.id] = 7;
  return instruction;
}

VideoFrameBuffer buffer() { return {2, 2, 8, std::vector<std::uint8_t>(16)}; }

// Collects what each request was answered, in the order of answers.
struct Answers {
  std::mutex mutex;
  std::vector<std::pair<int, CompositionResult>> results;
  std::promise<void> allDone;
  std::size_t expected = 0;

  std::function<void(CompositionResult)> finisher(int tag) {
    return [this, tag](CompositionResult result) {
      std::lock_guard lock(mutex);
      results.emplace_back(tag, std::move(result));
      if (results.size() == expected) allDone.set_value();
    };
  }
  void wait() { allDone.get_future().wait_for(std::chrono::seconds(20)); }
};

// A request whose buffer comes only once `released` is ready; `started`
// tells that the render thread has taken it.
struct Gate {
  std::promise<void> started;
  std::promise<void> release;
  std::shared_future<void> released = release.get_future().share();
};

CompositionRequest request(std::shared_ptr<const CompositionInstruction> instruction, Answers& answers, int tag) {
  CompositionRequest r;
  r.instruction = std::move(instruction);
  r.compositionTime = OVTime(1, 1);
  r.sourceFrame = [](std::int32_t track) -> std::optional<Image> {
    if (track != 7) return std::nullopt;
    return testing_support::solid({0, 0, 2, 2}, {1, 0, 0, 1});
  };
  r.newPixelBuffer = [] { return buffer(); };
  r.finish = answers.finisher(tag);
  return r;
}

// A request that holds the render thread, once taken, until gate opens.
CompositionRequest gatedRequest(Gate& gate, Answers& answers, int tag) {
  CompositionRequest blocking = request(redInstruction(), answers, tag);
  blocking.newPixelBuffer = [&gate] {
    gate.started.set_value();
    gate.released.wait();
    return std::optional<VideoFrameBuffer>(buffer());
  };
  return blocking;
}

TEST(VideoCompositorTest, ComposesFramesIntoTheEnginesBuffersInBgra) {
  Answers answers;
  answers.expected = 1;
  VideoCompositor compositor;
  compositor.startRequest(request(redInstruction(), answers, 1));
  answers.wait();
  ASSERT_EQ(answers.results.size(), 1u);
  const CompositionResult& result = answers.results[0].second;
  ASSERT_EQ(result.kind, Kind::composed);
  ASSERT_TRUE(result.frame);
  EXPECT_EQ(result.frame->bytes[0], 0);    // blue
  EXPECT_EQ(result.frame->bytes[2], 255);  // red
  EXPECT_EQ(result.frame->bytes[3], 255);
}

TEST(VideoCompositorTest, EachFailureCarriesItsSentence) {
  Answers answers;
  answers.expected = 3;
  VideoCompositor compositor;
  compositor.startRequest(request(nullptr, answers, 1));
  CompositionRequest noBuffer = request(redInstruction(), answers, 2);
  noBuffer.newPixelBuffer = [] { return std::optional<VideoFrameBuffer>(); };
  compositor.startRequest(std::move(noBuffer));
  CompositionRequest shortBuffer = request(redInstruction(), answers, 3);
  shortBuffer.newPixelBuffer = [] { return std::optional<VideoFrameBuffer>({2, 2, 8, std::vector<std::uint8_t>(9)}); };
  compositor.startRequest(std::move(shortBuffer));
  answers.wait();
  ASSERT_EQ(answers.results.size(), 3u);
  EXPECT_EQ(answers.results[0].second.error, CompositorError::missingInstruction);
  EXPECT_EQ(answers.results[1].second.error, CompositorError::noPixelBuffer);
  EXPECT_EQ(answers.results[2].second.error, CompositorError::noPixelBuffer);
  EXPECT_EQ(message(CompositorError::missingInstruction),
            "The render instruction was missing or of an unexpected type.");
  EXPECT_EQ(message(CompositorError::noPixelBuffer), "The renderer could not allocate an output frame.");
  EXPECT_EQ(message(CompositorError::compositorReleased),
            "The renderer was torn down while a frame was in flight.");
}

TEST(VideoCompositorTest, CancelEndsWhatIsQueuedAndLaterRequestsRender) {
  Answers answers;
  answers.expected = 4;
  VideoCompositor compositor;
  // The first request holds the render thread until the others are queued.
  Gate gate;
  compositor.startRequest(gatedRequest(gate, answers, 1));
  gate.started.get_future().wait();
  compositor.startRequest(request(redInstruction(), answers, 2));
  compositor.startRequest(request(redInstruction(), answers, 3));
  compositor.cancelAllPendingRequests();
  compositor.startRequest(request(redInstruction(), answers, 4));
  gate.release.set_value();
  answers.wait();
  ASSERT_EQ(answers.results.size(), 4u);
  EXPECT_EQ(answers.results[0].second.kind, Kind::composed);  // already rendering
  EXPECT_EQ(answers.results[1].second.kind, Kind::cancelled);
  EXPECT_EQ(answers.results[2].second.kind, Kind::cancelled);
  EXPECT_EQ(answers.results[3].first, 4);
  EXPECT_EQ(answers.results[3].second.kind, Kind::composed);
}

TEST(VideoCompositorTest, TearingDownAnswersWhatIsStillQueued) {
  Answers answers;
  answers.expected = 3;
  Gate gate;
  std::thread releaser;
  {
    VideoCompositor compositor;
    compositor.startRequest(gatedRequest(gate, answers, 1));
    gate.started.get_future().wait();
    compositor.startRequest(request(redInstruction(), answers, 2));
    compositor.startRequest(request(redInstruction(), answers, 3));
    // The frame in hand finishes while the compositor is being torn down.
    releaser = std::thread([&gate] {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      gate.release.set_value();
    });
  }
  releaser.join();
  answers.wait();
  ASSERT_EQ(answers.results.size(), 3u);
  EXPECT_EQ(answers.results[0].second.kind, Kind::composed);
  EXPECT_EQ(answers.results[1].second.error, CompositorError::compositorReleased);
  EXPECT_EQ(answers.results[2].second.error, CompositorError::compositorReleased);
}

}  // namespace
}  // namespace orvane::render
