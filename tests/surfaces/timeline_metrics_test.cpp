#include "surfaces/timeline_metrics.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace orvane::surfaces {
namespace {

using core::FrameRate;
using core::OVTime;
using Kind = TimelineMetrics::SnapTarget::Kind;
using Target = TimelineMetrics::SnapTarget;

OVTime secs(double s) { return OVTime::fromSeconds(s); }

TimelineMetrics at(double pixelsPerSecond, double durationSeconds = 10, FrameRate rate = FrameRate::fps30) {
  TimelineMetrics m;
  m.pixelsPerSecond = pixelsPerSecond;
  m.duration = secs(durationSeconds);
  m.frameRate = rate;
  return m;
}

TEST(TimelineMetricsTest, TimeAndPosition) {
  const TimelineMetrics m = at(100);
  EXPECT_DOUBLE_EQ(m.xFor(secs(2.5)), 250);
  EXPECT_EQ(m.timeForX(250), secs(2.5));
  EXPECT_EQ(m.timeForX(251), secs(2.5)) << "on the frame grid: 2.51 s lies in the frame of 2.5 s";
  EXPECT_EQ(m.timeForX(-40), OVTime::zero);
  EXPECT_EQ(m.timeForX(std::numeric_limits<double>::quiet_NaN()), OVTime::zero);
  EXPECT_GT(m.timeForX(1e300), secs(1e6)) << "absurd positions stay representable";
  EXPECT_DOUBLE_EQ(m.timeDeltaForWidth(-25).seconds(), -0.25) << "deltas are not snapped nor floored";
  EXPECT_DOUBLE_EQ(m.distanceFrom(secs(3), secs(1)), 200);
  EXPECT_DOUBLE_EQ(m.widthFor(secs(1)), 100);
  EXPECT_DOUBLE_EQ(m.widthFor(secs(0.001)), TimelineMetrics::minimumBarWidth);

  TimelineMetrics zero = at(0);
  EXPECT_EQ(zero.timeForX(1), secs(10000)) << "a zoom of zero divides by the floor of 0.0001";
}

TEST(TimelineMetricsTest, ContentWidthPadsAndHasAFloor) {
  EXPECT_DOUBLE_EQ(at(100).contentWidth(), 1000 + 240);
  EXPECT_DOUBLE_EQ(at(2, 10).contentWidth(), 320);
}

TEST(TimelineMetricsTest, Zoom) {
  EXPECT_EQ(TimelineMetrics::clampZoom(1), 2);
  EXPECT_EQ(TimelineMetrics::clampZoom(5000), 3000);
  EXPECT_EQ(TimelineMetrics::clampZoom(std::numeric_limits<double>::quiet_NaN()), 2);
  EXPECT_EQ(TimelineMetrics::zoomToFit(secs(10), 1240), 100);
  EXPECT_EQ(TimelineMetrics::zoomToFit(secs(10), 240), 90) << "no room after the padding";
  EXPECT_EQ(TimelineMetrics::zoomToFit(OVTime::zero, 1000), 90);
  EXPECT_EQ(TimelineMetrics::zoomToFit(secs(1e6), 1000), 2);
  EXPECT_EQ(TimelineMetrics::zoomToFit(secs(0.01), 1000), 3000);
}

TEST(TimelineMetricsTest, RowHeights) {
  EXPECT_EQ(points(TimelineRowHeight::compact), 24);
  EXPECT_EQ(points(TimelineRowHeight::normal), 34);
  EXPECT_EQ(points(TimelineRowHeight::tall), 52);
  EXPECT_EQ(TimelineLayout::propertyRowHeight, 22);
}

TEST(TimelineSnapTest, SevenPointsReachFurtherWhenZoomedOut) {
  const TimelineMetrics m = at(2, 100);
  const std::vector<Target> near{{secs(13.5), Kind::marker}};
  const auto r = m.snap(secs(10), near);
  ASSERT_TRUE(r.target);
  EXPECT_EQ(r.time, secs(13.5));
  EXPECT_EQ(r.target->kind, Kind::marker);

  const std::vector<Target> far{{secs(13.6), Kind::marker}};
  EXPECT_FALSE(m.snap(secs(10), far).target);
  EXPECT_EQ(m.snap(secs(10), far).time, secs(10));
}

TEST(TimelineSnapTest, ThresholdIsInclusive) {
  // At 56 points per second, 0.125 s is exactly 7 points.
  const TimelineMetrics m = at(56);
  const std::vector<Target> exact{{OVTime(75000, 600000), Kind::layerEdge}};
  const auto snapped = m.snap(OVTime::zero, exact);
  ASSERT_TRUE(snapped.target);
  EXPECT_EQ(snapped.time, secs(0.1)) << "the target's time on the frame grid";

  const std::vector<Target> beyond{{OVTime(75107, 600000), Kind::layerEdge}};  // 7.01 points
  EXPECT_FALSE(m.snap(OVTime::zero, beyond).target);
}

TEST(TimelineSnapTest, TiesGoToTheFirstListedAndNearerWins) {
  const TimelineMetrics m = at(100);
  const std::vector<Target> tie{{secs(2.0625), Kind::layerEdge}, {secs(1.9375), Kind::playhead}};
  EXPECT_EQ(m.snap(secs(2), tie).target->kind, Kind::layerEdge);
  const std::vector<Target> reversed{{secs(1.9375), Kind::playhead}, {secs(2.0625), Kind::layerEdge}};
  EXPECT_EQ(m.snap(secs(2), reversed).target->kind, Kind::playhead);

  const std::vector<Target> nearerLater{{secs(2.05), Kind::start}, {secs(2.02), Kind::marker}};
  EXPECT_EQ(m.snap(secs(2), nearerLater).target->kind, Kind::marker);
}

TEST(TimelineSnapTest, DisabledSnapsOnlyToFrames) {
  const TimelineMetrics m = at(100);
  const std::vector<Target> targets{{secs(2.02), Kind::playhead}};
  const auto r = m.snap(secs(2.01), targets, false);
  EXPECT_FALSE(r.target);
  EXPECT_EQ(r.time, secs(2)) << "2.01 s lies in the frame that starts at 2 s";
  EXPECT_EQ(m.snap(secs(2.01), {}, true).time, secs(2));
}

TEST(TimelineRulerTicksTest, MajorIntervalIsTheFirstWideEnough) {
  EXPECT_DOUBLE_EQ(at(90).majorTickInterval(), 1);
  EXPECT_DOUBLE_EQ(at(3000).majorTickInterval(), 1.0 / 30);
  EXPECT_DOUBLE_EQ(at(1500).majorTickInterval(), 2.0 / 30);
  EXPECT_DOUBLE_EQ(at(2).majorTickInterval(), 60);
  EXPECT_DOUBLE_EQ(at(0.001).majorTickInterval(), 3600) << "none wide enough: the last";
  EXPECT_DOUBLE_EQ(at(3000, 10, FrameRate::unchecked(1, 10)).majorTickInterval(), 1)
      << "a frame is never taken longer than a second";
}

TEST(TimelineRulerTicksTest, FrameDetailAndMinorTicks) {
  EXPECT_TRUE(at(180).showsFrameDetail());
  EXPECT_FALSE(at(179).showsFrameDetail());
  // 0.5 s majors at 180 points per second hold 15 frames.
  EXPECT_DOUBLE_EQ(at(180).majorTickInterval(), 0.5);
  EXPECT_EQ(at(180).minorTicksPerMajor(), 15);
  // One-frame majors: a single frame is no subdivision; the fixed one applies.
  EXPECT_EQ(at(3000).minorTicksPerMajor(), 5);
  EXPECT_GE(at(90).minorTicksPerMajor(), 2);
  EXPECT_EQ(at(2).minorTicksPerMajor(), 4);
}

}  // namespace
}  // namespace orvane::surfaces
