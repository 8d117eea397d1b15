#include "export/export_queue.hpp"

#include <gtest/gtest.h>

#include <chrono>

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

}  // namespace
}  // namespace orvane::export_
