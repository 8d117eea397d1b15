#include "export/export_queue.hpp"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <filesystem>

#include "export/export_preset.hpp"
#include "render/gui_runtime.hpp"
#include "tests/media/main_queue.hpp"
#include "tests/media/media_fixtures.hpp"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

namespace orvane::export_ {
namespace {

using core::OVTime;
using core::OVTimeRange;
using namespace std::chrono_literals;

ExportJob jobOf(ExportJobState state, double seconds = 10) {
  ExportJob job;
  job.compositionName = "Intro";
  job.settings.frameRate = core::FrameRate::fps30;
  job.settings.range = OVTimeRange(OVTime::fromSeconds(3), OVTime::fromSeconds(seconds));
  job.state = std::move(state);
  return job;
}

TEST(ExportJobTest, StateNamesProgressAndFinish) {
  const ExportJobState states[] = {ExportJobState::rendering(0.4), ExportJobState::failed("No disk."),
                                   ExportJobState::waiting(), ExportJobState::completed(),
                                   ExportJobState::cancelled()};
  const char* names[] = {"Rendering", "Failed", "Waiting", "Completed", "Cancelled"};
  const double progress[] = {0.4, 0, 0, 1, 0};
  const bool finished[] = {false, true, false, true, true};
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(states[i].displayName(), names[i]);
    EXPECT_EQ(states[i].progress(), progress[i]) << names[i];
    EXPECT_EQ(states[i].isFinished(), finished[i]) << names[i];
  }
}

TEST(ExportJobTest, CurrentFrameTruncatesTheRangesFramesDone) {
  EXPECT_EQ(jobOf(ExportJobState::rendering(0.5)).currentFrame(), 150);
  EXPECT_EQ(jobOf(ExportJobState::rendering(0.3339)).currentFrame(), 100);
  EXPECT_EQ(jobOf(ExportJobState::completed()).currentFrame(), 300);
  EXPECT_EQ(jobOf(ExportJobState::failed("x")).currentFrame(), 0);
}

TEST(ExportJobTest, RemainingTimeOnlyPastOnePercentWithAStart) {
  const core::Timestamp start = core::Timestamp(1'700'000'000'000ms);
  const core::Timestamp now = start + 4s;
  ExportJob job = jobOf(ExportJobState::rendering(0.01));
  job.startedAt = start;
  EXPECT_EQ(job.estimatedTimeRemaining(now), std::nullopt);
  job.state = ExportJobState::rendering(0.0101);
  ASSERT_TRUE(job.estimatedTimeRemaining(now));
  EXPECT_NEAR(*job.estimatedTimeRemaining(now), 4 / 0.0101 - 4, 1e-6);
  job.state = ExportJobState::rendering(0.25);
  EXPECT_NEAR(*job.estimatedTimeRemaining(now), 12, 1e-9);
  job.startedAt.reset();
  EXPECT_EQ(job.estimatedTimeRemaining(now), std::nullopt);
  job.startedAt = start;
  job.state = ExportJobState::completed();
  EXPECT_EQ(job.estimatedTimeRemaining(now), std::nullopt);
}

TEST(ExportJobTest, NoticesForCompletedAndFailedOnly) {
  EXPECT_EQ(noticeFor(jobOf(ExportJobState::completed())), (ExportNotice{"Export complete", "Intro", false}));
  EXPECT_EQ(noticeFor(jobOf(ExportJobState::failed("The composition has nothing to export."))),
            (ExportNotice{"Export failed", "Intro — The composition has nothing to export.", true}));
  EXPECT_EQ(noticeFor(jobOf(ExportJobState::cancelled())), std::nullopt);
  EXPECT_EQ(noticeFor(jobOf(ExportJobState::rendering(0.5))), std::nullopt);
}


// --- The queue, with real exports of tiny compositions ---

// The RGBA of the middle pixel of the file's first picture; none when the
// file cannot be decoded.
std::optional<std::array<int, 4>> firstFrameMiddle(const std::filesystem::path& path) {
  AVFormatContext* format = nullptr;
  if (avformat_open_input(&format, path.c_str(), nullptr, nullptr) < 0) return std::nullopt;
  std::optional<std::array<int, 4>> rgba;
  const AVCodec* codec = nullptr;
  const int index = avformat_find_stream_info(format, nullptr) < 0
                        ? -1
                        : av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
  AVCodecContext* decoder = index < 0 ? nullptr : avcodec_alloc_context3(codec);
  AVFrame* frame = av_frame_alloc();
  AVPacket* packet = av_packet_alloc();
  if (decoder && avcodec_parameters_to_context(decoder, format->streams[index]->codecpar) >= 0 &&
      avcodec_open2(decoder, codec, nullptr) == 0) {
    bool got = false;
    while (!got && av_read_frame(format, packet) >= 0) {
      if (packet->stream_index == index && avcodec_send_packet(decoder, packet) == 0) {
        got = avcodec_receive_frame(decoder, frame) == 0;
      }
      av_packet_unref(packet);
    }
    if (!got && avcodec_send_packet(decoder, nullptr) == 0) got = avcodec_receive_frame(decoder, frame) == 0;
    if (got && frame->format == AV_PIX_FMT_YUV420P) {
      // Converts the 2 × 2 block at the middle (one chroma sample).
      const int cx = (frame->width / 2) & ~1, cy = (frame->height / 2) & ~1;
      const std::uint8_t* middle[4] = {frame->data[0] + cy * frame->linesize[0] + cx,
                                       frame->data[1] + cy / 2 * frame->linesize[1] + cx / 2,
                                       frame->data[2] + cy / 2 * frame->linesize[2] + cx / 2, nullptr};
      SwsContext* sws = sws_getContext(2, 2, AV_PIX_FMT_YUV420P, 2, 2, AV_PIX_FMT_RGBA, SWS_POINT, nullptr, nullptr,
                                       nullptr);
      std::uint8_t block[16];
      std::uint8_t* blockPlanes[4] = {block, nullptr, nullptr, nullptr};
      const int blockStrides[4] = {8, 0, 0, 0};
      sws_scale(sws, middle, frame->linesize, 0, 2, blockPlanes, blockStrides);
      sws_freeContext(sws);
      rgba = std::array<int, 4>{block[0], block[1], block[2], block[3]};
    }
  }
  av_packet_free(&packet);
  av_frame_free(&frame);
  avcodec_free_context(&decoder);
  avformat_close_input(&format);
  return rgba;
}

class RecordingNotifier final : public ExportCompletionNotifier {
 public:
  void announce(const ExportJob& job) override { announced.push_back(job); }
  std::vector<ExportJob> announced;
};

// A clock that moves on a second at every look, so that times order events.
ExportClock steppingClock() {
  auto now = std::make_shared<core::Timestamp>(1'700'000'000'000ms);
  return [now] { return *now += 1s; };
}

class ExportQueueTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { ASSERT_TRUE(render::ensureGuiRuntime()); }

  // 64 × 48 with a solid over the whole picture, 30 fps.
  static core::Composition solidComposition(core::OVColor colour, double seconds) {
    core::Composition composition;
    composition.name = "Solid";
    composition.size = {64, 48};
    composition.duration = OVTime::fromSeconds(seconds);
    core::Layer solid("Fill", core::LayerContent::solid({colour, {64, 48}}),
                      OVTimeRange(OVTime::zero, OVTime::fromSeconds(seconds)));
    solid.transform.position = core::AnimatedProperty::point(32, 24);
    composition.layers = {solid};
    return composition;
  }

  static ExportSettings silentSettings(const core::Composition& composition) {
    return ExportPreset::withID("video.silent")->settingsFor(composition);
  }

  bool pumpUntilIdle() {
    return main.drainUntil([&] {
      return !queue.isRunning() && std::ranges::all_of(queue.jobs(), [](const ExportJob& job) {
        return job.state.isFinished();
      });
    });
  }

  media::testing::TempFolder folder;
  media::testing::MainQueue main;
  RecordingNotifier notifier;
  ExportQueue queue{main.poster(), notifier, steppingClock()};
};

TEST_F(ExportQueueTest, RunsJobsInOrderAlsoAfterAFailure) {
  const core::Composition composition = solidComposition({1, 0, 0, 1}, 0.2);
  const core::OVProject project("Queue", {composition});
  ExportSettings empty = silentSettings(composition);
  empty.range.duration = OVTime::zero;
  const core::Uuid first = queue.enqueue(composition, project, empty, folder / "first.mp4");
  const core::Uuid second = queue.enqueue(composition, project, silentSettings(composition), folder / "second.mp4");
  ASSERT_EQ(queue.jobs().size(), 2u);
  EXPECT_TRUE(queue.isRunning());
  EXPECT_EQ(queue.job(first)->state.kind, ExportJobState::Kind::rendering);
  EXPECT_EQ(queue.job(second)->state, ExportJobState::waiting());
  EXPECT_EQ(queue.job(first)->compositionName, "Solid");

  ASSERT_TRUE(pumpUntilIdle());
  const ExportJob& failed = *queue.job(first);
  const ExportJob& completed = *queue.job(second);
  EXPECT_EQ(failed.state, ExportJobState::failed("The composition has nothing to export."));
  EXPECT_EQ(completed.state, ExportJobState::completed());
  ASSERT_TRUE(failed.finishedAt && completed.startedAt && completed.finishedAt);
  EXPECT_LT(*failed.finishedAt, *completed.startedAt);
  EXPECT_FALSE(std::filesystem::exists(folder / "first.mp4"));
  EXPECT_TRUE(std::filesystem::exists(folder / "second.mp4"));
  ASSERT_EQ(notifier.announced.size(), 2u);
  EXPECT_EQ(notifier.announced[0].id, first);
  EXPECT_EQ(notifier.announced[1].id, second);
  ASSERT_TRUE(queue.latestFinishedJob());
  EXPECT_EQ(queue.latestFinishedJob()->id, second);

  queue.removeFinishedJobs();
  EXPECT_TRUE(queue.jobs().empty());
}

TEST_F(ExportQueueTest, EditsAfterEnqueueDoNotReachTheOutput) {
  core::Composition composition = solidComposition({1, 0, 0, 1}, 0.2);
  core::OVProject project("Queue", {composition});
  queue.enqueue(composition, project, silentSettings(composition), folder / "red.mp4");
  const auto blue = [](core::Composition& c) {
    c.layers = solidComposition({0, 0, 1, 1}, 0.2).layers;
    c.backgroundColor = {0, 0, 1, 1};
  };
  blue(composition);
  project.updateComposition(composition.id, blue);
  ASSERT_TRUE(pumpUntilIdle());
  ASSERT_EQ(queue.jobs()[0].state, ExportJobState::completed());
  const auto middle = firstFrameMiddle(folder / "red.mp4");
  ASSERT_TRUE(middle);
  EXPECT_GT((*middle)[0], 200);
  EXPECT_LT((*middle)[2], 60);
}

TEST_F(ExportQueueTest, CancellingMidWayLeavesNoFileAndNoNotice) {
  const core::Composition composition = solidComposition({0, 1, 0, 1}, 20);
  const core::OVProject project("Queue", {composition});
  const core::Uuid id = queue.enqueue(composition, project, silentSettings(composition), folder / "long.mp4");
  double progressSeen = 0;
  queue.addObserver([&] {
    const ExportJob* job = queue.job(id);
    if (job && job->state.kind == ExportJobState::Kind::rendering && job->state.fraction > 0 && progressSeen == 0) {
      progressSeen = job->state.fraction;
      EXPECT_NEAR(static_cast<double>(job->currentFrame()), 20 * 30 * job->state.fraction, 1);
      queue.cancelActive();
    }
  });
  ASSERT_TRUE(pumpUntilIdle());
  EXPECT_GT(progressSeen, 0);
  EXPECT_LT(progressSeen, 1);
  EXPECT_EQ(queue.job(id)->state, ExportJobState::cancelled());
  EXPECT_FALSE(std::filesystem::exists(folder / "long.mp4"));
  ASSERT_EQ(notifier.announced.size(), 1u);
  EXPECT_EQ(noticeFor(notifier.announced[0]), std::nullopt);
}

TEST_F(ExportQueueTest, RemovingTheRunningJobCancelsItAndTheNextRuns) {
  const core::Composition composition = solidComposition({0, 1, 0, 1}, 20);
  const core::OVProject project("Queue", {composition});
  const core::Uuid running = queue.enqueue(composition, project, silentSettings(composition), folder / "gone.mp4");
  const core::Composition shortOne = solidComposition({1, 1, 1, 1}, 0.2);
  const core::Uuid next = queue.enqueue(shortOne, project, silentSettings(shortOne), folder / "next.mp4");
  queue.addObserver([&] {
    const ExportJob* job = queue.job(running);
    if (job && job->state.fraction > 0) queue.removeJob(running);
  });
  ASSERT_TRUE(pumpUntilIdle());
  ASSERT_EQ(queue.jobs().size(), 1u);
  EXPECT_EQ(queue.jobs()[0].id, next);
  EXPECT_EQ(queue.jobs()[0].state, ExportJobState::completed());
  EXPECT_FALSE(std::filesystem::exists(folder / "gone.mp4"));
  ASSERT_EQ(notifier.announced.size(), 1u);
  EXPECT_EQ(notifier.announced[0].id, next);
}

TEST_F(ExportQueueTest, GoingAwayMidExportCancelsItQuietly) {
  const core::Composition composition = solidComposition({0, 1, 0, 1}, 20);
  {
    RecordingNotifier quiet;
    ExportQueue shortLived(main.poster(), quiet, steppingClock());
    shortLived.enqueue(composition, core::OVProject("Queue", {composition}), silentSettings(composition),
                       folder / "abandoned.mp4");
  }
  // What the export thread posted after the queue went must do nothing.
  queue.enqueue(solidComposition({1, 1, 1, 1}, 0.1), core::OVProject(), silentSettings(solidComposition({}, 0.1)),
                folder / "after.mp4");
  ASSERT_TRUE(pumpUntilIdle());
  EXPECT_FALSE(std::filesystem::exists(folder / "abandoned.mp4"));
  EXPECT_TRUE(std::filesystem::exists(folder / "after.mp4"));
}

}  // namespace
}  // namespace orvane::export_
