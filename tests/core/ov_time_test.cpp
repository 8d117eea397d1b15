// OVTime and OVTimeRange: rational time, conversion with rounding half away
// from zero, arithmetic and comparison at the larger timescale, hashing, and
// half-open ranges. Expected values are worked out by hand in the comments.

#include "core/ov_time.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <unordered_set>
#include <vector>

namespace orvane::core {
namespace {

// Field-by-field check: `==` on OVTime converts, so it cannot tell 1/2 from
// 300000/600000; this can.
void expectExactly(const OVTime& t, std::int64_t value, std::int32_t timescale) {
  EXPECT_EQ(t.value, value) << t.description();
  EXPECT_EQ(t.timescale, timescale) << t.description();
}

// ---------------------------------------------------------------- OVTime

TEST(OVTimeTest, DefaultAndZeroAreZeroTicksAtTheDefaultTimescale) {
  EXPECT_EQ(OVTime::defaultTimescale, 600000);
  // The default timescale holds the frames of the integral rates exactly.
  for (int fps : {24, 25, 30, 50, 60}) EXPECT_EQ(OVTime::defaultTimescale % fps, 0) << fps;
  expectExactly(OVTime(), 0, 600000);
  expectExactly(OVTime::zero, 0, 600000);
  EXPECT_TRUE(OVTime::zero.isZero());
}

TEST(OVTimeTest, ConstructionKeepsValueAndTimescale) {
  expectExactly(OVTime(1001, 30000), 1001, 30000);
  expectExactly(OVTime(-7, 1), -7, 1);
  expectExactly(OVTime(std::numeric_limits<std::int64_t>::max(), 600000),
                std::numeric_limits<std::int64_t>::max(), 600000);
  expectExactly(OVTime(5, std::numeric_limits<std::int32_t>::max()), 5,
                std::numeric_limits<std::int32_t>::max());
}

TEST(OVTimeTest, FromSecondsRoundsHalfAwayFromZero) {
  expectExactly(OVTime::fromSeconds(0.5), 300000, 600000);
  expectExactly(OVTime::fromSeconds(-2.0), -1200000, 600000);
  expectExactly(OVTime::fromSeconds(0.0), 0, 600000);
  // Exact halves: 1.5 -> 2, 2.5 -> 3 (not to even), and the mirror images.
  expectExactly(OVTime::fromSeconds(1.5, 1), 2, 1);
  expectExactly(OVTime::fromSeconds(2.5, 1), 3, 1);
  expectExactly(OVTime::fromSeconds(-1.5, 1), -2, 1);
  expectExactly(OVTime::fromSeconds(-2.5, 1), -3, 1);
  expectExactly(OVTime::fromSeconds(0.25, 2), 1, 2);    // 0.5 ticks
  expectExactly(OVTime::fromSeconds(-0.25, 2), -1, 2);  // -0.5 ticks
  expectExactly(OVTime::fromSeconds(0.2, 2), 0, 2);     // 0.4 ticks
  expectExactly(OVTime::fromSeconds(0.3, 2), 1, 2);     // 0.6 ticks
  // An NTSC frame boundary at its own timescale.
  expectExactly(OVTime::fromSeconds(1001.0 / 30000.0, 30000), 1001, 30000);
}

TEST(OVTimeTest, SecondsIsValueOverTimescale) {
  EXPECT_EQ(OVTime(3, 4).seconds(), 0.75);
  EXPECT_EQ(OVTime(-3, 4).seconds(), -0.75);
  EXPECT_EQ(OVTime(300000, 600000).seconds(), 0.5);
  EXPECT_EQ(OVTime::zero.seconds(), 0.0);
  EXPECT_DOUBLE_EQ(OVTime(1001, 30000).seconds(), 0.033366666666666667);
}

TEST(OVTimeTest, ZeroAndPositiveFlags) {
  EXPECT_TRUE(OVTime(0, 30).isZero());
  EXPECT_FALSE(OVTime(0, 30).isPositive());
  EXPECT_FALSE(OVTime(1, 30).isZero());
  EXPECT_TRUE(OVTime(1, 30).isPositive());
  // A negative time is neither zero nor positive.
  EXPECT_FALSE(OVTime(-1, 30).isZero());
  EXPECT_FALSE(OVTime(-1, 30).isPositive());
}

TEST(OVTimeTest, ConversionToTheSameTimescaleIsTheIdentity) {
  // 2^53 + 1 does not survive a trip through a double, so only an identity
  // path keeps it.
  const std::int64_t big = (std::int64_t{1} << 53) + 1;
  expectExactly(OVTime(big, 600000).convertedTo(600000), big, 600000);
  expectExactly(OVTime(-big, 7).convertedTo(7), -big, 7);
}

TEST(OVTimeTest, ConversionRoundsHalfAwayFromZero) {
  // 1001 ticks of 1/30000 s are 20020 ticks of 1/600000 s exactly.
  expectExactly(OVTime(1001, 30000).convertedTo(600000), 20020, 600000);
  expectExactly(OVTime(20020, 600000).convertedTo(30000), 1001, 30000);
  // 10000 × 30 / 600000 = 0.5 -> 1; and -0.5 -> -1.
  expectExactly(OVTime(10000, 600000).convertedTo(30), 1, 30);
  expectExactly(OVTime(-10000, 600000).convertedTo(30), -1, 30);
  // 9999 × 30 / 600000 = 0.49995 -> 0: conversion loses ticks.
  expectExactly(OVTime(9999, 600000).convertedTo(30), 0, 30);
  expectExactly(OVTime(1, 600000).convertedTo(30), 0, 30);
  // 1 × 24000 / 30000 = 0.8 -> 1.
  expectExactly(OVTime(1, 30000).convertedTo(24000), 1, 24000);
  // 7 × 3 / 2 = 10.5 -> 11.
  expectExactly(OVTime(7, 2).convertedTo(3), 11, 3);
}

TEST(OVTimeTest, ConversionMultipliesBeforeDividing) {
  // 91 × 51 = 4641 and 4641 / 42 = 110.5 exactly, so the product first gives
  // 111. Dividing first (91 / 42 × 51, or 91 × (51 / 42)) lands a hair below
  // 110.5 in doubles and would round to 110.
  expectExactly(OVTime(91, 42).convertedTo(51), 111, 51);
  // 117 × 111 / 54 = 240.5 exactly -> 241; the other orders give 240.
  expectExactly(OVTime(117, 54).convertedTo(111), 241, 111);
  expectExactly(OVTime(-117, 54).convertedTo(111), -241, 111);
}

TEST(OVTimeTest, CommonTimescaleIsTheLargerNotAMultiple) {
  EXPECT_EQ(OVTime::commonTimescale(OVTime(1, 30), OVTime(1, 24)), 30);
  EXPECT_EQ(OVTime::commonTimescale(OVTime(1, 24), OVTime(1, 30)), 30);
  EXPECT_EQ(OVTime::commonTimescale(OVTime(1, 30000), OVTime(1, 600000)), 600000);
  EXPECT_EQ(OVTime::commonTimescale(OVTime(5, 25), OVTime(-9, 25)), 25);
}

TEST(OVTimeTest, SumAtEqualTimescalesIsExact) {
  expectExactly(OVTime(1001, 30000) + OVTime(1001, 30000), 2002, 30000);
  const std::int64_t big = (std::int64_t{1} << 53) + 1;
  expectExactly(OVTime(big, 600000) + OVTime(big, 600000), 2 * big, 600000);
  expectExactly(OVTime(5, 30) + OVTime(-8, 30), -3, 30);
}

TEST(OVTimeTest, SumAtMixedTimescalesRoundsEachOperandFirst) {
  // 1001/30000 is 20020/600000; the result is at the larger timescale.
  expectExactly(OVTime(1001, 30000) + OVTime(1, 600000), 20021, 600000);
  expectExactly(OVTime(1, 600000) + OVTime(1001, 30000), 20021, 600000);
  // At the common timescale 30, 1/24 s is 1.25 ticks -> 1: the sum is 2/30,
  // not 9/120 as a common multiple would give.
  expectExactly(OVTime(1, 30) + OVTime(1, 24), 2, 30);
  // 1/400000 s is 1.5 ticks of 1/600000 -> 2, then 2 + (-2) = 0. Adding
  // exactly first would give -0.5 -> -1.
  expectExactly(OVTime(1, 400000) + OVTime(-2, 600000), 0, 600000);
  expectExactly(OVTime(-2, 600000) + OVTime(1, 400000), 0, 600000);
}

TEST(OVTimeTest, DifferenceAtMixedTimescalesRoundsEachOperandFirst) {
  expectExactly(OVTime(2002, 30000) - OVTime(1001, 30000), 1001, 30000);
  expectExactly(OVTime(1, 30) - OVTime(1, 24), 0, 30);   // 1 - round(1.25)
  expectExactly(OVTime(0, 30) - OVTime(1, 24), -1, 30);  // 0 - round(1.25)
  // round(1.5) - 2 = 0, where an exact difference would give -0.5 -> -1.
  expectExactly(OVTime(1, 400000) - OVTime(2, 600000), 0, 600000);
  expectExactly(OVTime(20020, 600000) - OVTime(1001, 30000), 0, 600000);
}

TEST(OVTimeTest, CompoundAssignmentMatchesTheOperators) {
  OVTime t(1001, 30000);
  t += OVTime(1001, 30000);
  expectExactly(t, 2002, 30000);
  t += OVTime(1, 600000);
  expectExactly(t, 40041, 600000);
  t -= OVTime(41, 600000);
  expectExactly(t, 40000, 600000);
}

TEST(OVTimeTest, ScalingRoundsAndKeepsTheTimescale) {
  expectExactly(OVTime(3, 30) * 0.5, 2, 30);    // 1.5 -> 2
  expectExactly(OVTime(-3, 30) * 0.5, -2, 30);  // -1.5 -> -2
  expectExactly(OVTime(5, 30) * 0.5, 3, 30);    // 2.5 -> 3, not to even
  expectExactly(OVTime(10, 600000) * 2.25, 23, 600000);  // 22.5 -> 23
  expectExactly(OVTime(10, 600000) * 0.04, 0, 600000);   // 0.4 -> 0
  expectExactly(OVTime(10, 25) * -1.0, -10, 25);
  expectExactly(OVTime(10, 25) * 0.0, 0, 25);
  expectExactly(OVTime(1001, 30000) * 3.0, 3003, 30000);
}

TEST(OVTimeTest, ComparisonConvertsToTheLargerTimescaleWithRounding) {
  // 0/30 converts to 0/600000, which is less than 1/600000.
  EXPECT_FALSE(OVTime(1, 600000) == OVTime(0, 30));
  EXPECT_TRUE(OVTime(1, 600000) != OVTime(0, 30));
  EXPECT_TRUE(OVTime(0, 30) < OVTime(1, 600000));
  EXPECT_TRUE(OVTime(1, 600000) > OVTime(0, 30));
  // After conversion to 30 the tick is lost and the two are equal.
  EXPECT_TRUE(OVTime(1, 600000).convertedTo(30) == OVTime(0, 30));

  // Equal values at different timescales.
  EXPECT_TRUE(OVTime(1, 2) == OVTime(300000, 600000));
  EXPECT_TRUE(OVTime(300000, 600000) == OVTime(1, 2));
  EXPECT_TRUE(OVTime(1001, 30000) == OVTime(20020, 600000));

  // Different times that round to the same tick are equal: 1/400000 s is
  // 1.5 -> 2 ticks of 1/600000; and 1/24 s is 1.25 -> 1 tick of 1/30.
  EXPECT_TRUE(OVTime(1, 400000) == OVTime(2, 600000));
  EXPECT_FALSE(OVTime(1, 400000) < OVTime(2, 600000));
  EXPECT_FALSE(OVTime(2, 600000) < OVTime(1, 400000));
  EXPECT_TRUE(OVTime(1, 24) == OVTime(1, 30));
  EXPECT_TRUE(OVTime(1, 24) <= OVTime(1, 30));
  EXPECT_TRUE(OVTime(1, 24) >= OVTime(1, 30));
}

TEST(OVTimeTest, OrderingFollowsTheTimeLine) {
  EXPECT_TRUE(OVTime(1, 30) < OVTime(2, 30));
  EXPECT_FALSE(OVTime(2, 30) < OVTime(1, 30));
  EXPECT_FALSE(OVTime(2, 30) < OVTime(2, 30));
  EXPECT_TRUE(OVTime(-1, 600000) < OVTime::zero);
  EXPECT_TRUE(OVTime(1001, 30000) < OVTime(20021, 600000));
  EXPECT_TRUE(OVTime(1001, 30000) > OVTime(20019, 600000));
  EXPECT_TRUE(OVTime(1001, 30000) <= OVTime(20020, 600000));
  EXPECT_TRUE(OVTime(1001, 30000) >= OVTime(20020, 600000));
  EXPECT_TRUE(OVTime(-1001, 30000) < OVTime(-20019, 600000));

  std::vector<OVTime> times = {OVTime(2, 1),       OVTime(-1, 30), OVTime(1001, 30000),
                               OVTime(300000, 600000), OVTime(0, 7)};
  std::sort(times.begin(), times.end());
  expectExactly(times[0], -1, 30);
  expectExactly(times[1], 0, 7);
  expectExactly(times[2], 1001, 30000);
  expectExactly(times[3], 300000, 600000);
  expectExactly(times[4], 2, 1);
}

TEST(OVTimeTest, EqualTimesHashAlike) {
  EXPECT_EQ(hashValue(OVTime(1, 2)), hashValue(OVTime(300000, 600000)));
  EXPECT_EQ(hashValue(OVTime(1001, 30000)), hashValue(OVTime(20020, 600000)));
  EXPECT_EQ(hashValue(OVTime(1, 400000)), hashValue(OVTime(2, 600000)));
  EXPECT_EQ(std::hash<OVTime>{}(OVTime(3, 1)), std::hash<OVTime>{}(OVTime(1800000, 600000)));
  EXPECT_NE(hashValue(OVTime(1, 2)), hashValue(OVTime(1, 3)));

  std::unordered_set<OVTime> set = {OVTime(1, 2), OVTime(300000, 600000), OVTime(15, 30),
                                    OVTime(1, 3)};
  EXPECT_EQ(set.size(), 2u);
  EXPECT_EQ(set.count(OVTime(12, 24)), 1u);
}

TEST(OVTimeTest, ClampReturnsTheBoundOrTheTimeUnconverted) {
  const OVTime lo(0, 600000);
  const OVTime hi(600000, 600000);
  // Inside: t itself, at its own timescale.
  expectExactly(OVTime::clamp(OVTime(1, 2), lo, hi), 1, 2);
  // Below and above: the bound itself.
  expectExactly(OVTime::clamp(OVTime(-1, 30), lo, hi), 0, 600000);
  expectExactly(OVTime::clamp(OVTime(31, 30), lo, hi), 600000, 600000);
  // On a bound: still t, not the bound.
  expectExactly(OVTime::clamp(OVTime(0, 30), lo, hi), 0, 30);
  expectExactly(OVTime::clamp(OVTime(1, 1), lo, hi), 1, 1);
  // Crossed bounds: the test against min comes first, so min wins for any t
  // below it, including one between the bounds that is also above max.
  const OVTime crossedMin(10, 30);
  const OVTime crossedMax(5, 30);
  expectExactly(OVTime::clamp(OVTime(7, 30), crossedMin, crossedMax), 10, 30);
  expectExactly(OVTime::clamp(OVTime(1, 30), crossedMin, crossedMax), 10, 30);
  // Above both: not below min, above max, so max.
  expectExactly(OVTime::clamp(OVTime(20, 30), crossedMin, crossedMax), 5, 30);
}

TEST(OVTimeTest, DescriptionShowsTicksTimescaleAndSeconds) {
  EXPECT_EQ(OVTime(300000, 600000).description(), "300000/600000 (0.500s)");
  EXPECT_EQ(OVTime::zero.description(), "0/600000 (0.000s)");
  EXPECT_EQ(OVTime(2, 3).description(), "2/3 (0.667s)");
  EXPECT_EQ(OVTime(-1001, 30000).description(), "-1001/30000 (-0.033s)");
  EXPECT_EQ(OVTime(360000, 1).description(), "360000/1 (360000.000s)");
}

// ----------------------------------------------------------- OVTimeRange

TEST(OVTimeRangeTest, ZeroRangeHasZeroStartAndDuration) {
  expectExactly(OVTimeRange::zero.start, 0, 600000);
  expectExactly(OVTimeRange::zero.duration, 0, 600000);
  EXPECT_EQ(OVTimeRange(), OVTimeRange::zero);
  EXPECT_TRUE(OVTimeRange::zero.isEmpty());
}

TEST(OVTimeRangeTest, BuildsFromStartAndDurationOrStartAndEnd) {
  const OVTimeRange a(OVTime(30, 30), OVTime(60, 30));
  expectExactly(a.start, 30, 30);
  expectExactly(a.duration, 60, 30);
  expectExactly(a.end(), 90, 30);

  const OVTimeRange b = OVTimeRange::fromStartEnd(OVTime(1, 30), OVTime(90, 30));
  expectExactly(b.start, 1, 30);
  expectExactly(b.duration, 89, 30);
  expectExactly(b.end(), 90, 30);

  // Mixed timescales: the duration is end - start at the larger timescale.
  const OVTimeRange c = OVTimeRange::fromStartEnd(OVTime(1001, 30000), OVTime(600000, 600000));
  expectExactly(c.duration, 579980, 600000);

  // An end before the start gives a negative duration.
  const OVTimeRange d = OVTimeRange::fromStartEnd(OVTime(10, 30), OVTime(4, 30));
  expectExactly(d.duration, -6, 30);
}

TEST(OVTimeRangeTest, EmptyWhenDurationIsNotPositive) {
  EXPECT_FALSE(OVTimeRange(OVTime(0, 30), OVTime(1, 30)).isEmpty());
  EXPECT_TRUE(OVTimeRange(OVTime(5, 30), OVTime(0, 30)).isEmpty());
  const OVTimeRange negative(OVTime(10, 30), OVTime(-3, 30));
  EXPECT_TRUE(negative.isEmpty());
  // The end of a negative range lies before its start.
  EXPECT_TRUE(negative.end() < negative.start);
  expectExactly(negative.end(), 7, 30);
}

TEST(OVTimeRangeTest, ContainsIsHalfOpen) {
  const OVTimeRange r(OVTime(30, 30), OVTime(60, 30));  // [1 s, 3 s)
  EXPECT_TRUE(r.contains(OVTime(30, 30)));
  EXPECT_TRUE(r.contains(OVTime(2, 1)));
  EXPECT_TRUE(r.contains(OVTime(89, 30)));
  EXPECT_FALSE(r.contains(OVTime(90, 30)));
  EXPECT_FALSE(r.contains(OVTime(29, 30)));
  EXPECT_FALSE(r.contains(OVTime(-1, 30)));
  // Other timescales: 3 s less one tick of 1/600000 is inside, 3 s is not.
  EXPECT_TRUE(r.contains(OVTime(1799999, 600000)));
  EXPECT_FALSE(r.contains(OVTime(1800000, 600000)));
  EXPECT_TRUE(r.contains(OVTime(600000, 600000)));
  EXPECT_FALSE(r.contains(OVTime(599999, 600000)));
}

TEST(OVTimeRangeTest, EmptyRangesContainNothing) {
  const OVTimeRange zeroLength(OVTime(5, 30), OVTime(0, 30));
  EXPECT_FALSE(zeroLength.contains(OVTime(5, 30)));
  EXPECT_FALSE(zeroLength.contains(OVTime(4, 30)));
  EXPECT_FALSE(OVTimeRange::zero.contains(OVTime::zero));
  const OVTimeRange negative(OVTime(10, 30), OVTime(-3, 30));
  for (int f = 0; f < 15; ++f) EXPECT_FALSE(negative.contains(OVTime(f, 30))) << f;
}

TEST(OVTimeRangeTest, TouchingRangesDoNotIntersect) {
  const OVTimeRange a(OVTime(0, 30), OVTime(30, 30));   // [0, 1 s)
  const OVTimeRange b(OVTime(30, 30), OVTime(30, 30));  // [1 s, 2 s)
  EXPECT_FALSE(a.intersects(b));
  EXPECT_FALSE(b.intersects(a));
  EXPECT_FALSE(a.intersection(b).has_value());
  EXPECT_FALSE(b.intersection(a).has_value());
  // Same boundary at another timescale.
  const OVTimeRange c(OVTime(600000, 600000), OVTime(1, 1));
  EXPECT_FALSE(a.intersects(c));
  EXPECT_FALSE(a.intersection(c).has_value());
}

TEST(OVTimeRangeTest, OverlappingRangesIntersect) {
  const OVTimeRange a(OVTime(0, 30), OVTime(90, 30));   // [0, 3 s)
  const OVTimeRange b(OVTime(30, 30), OVTime(120, 30));  // [1 s, 5 s)
  EXPECT_TRUE(a.intersects(b));
  EXPECT_TRUE(b.intersects(a));
  const auto ab = a.intersection(b);
  ASSERT_TRUE(ab.has_value());
  expectExactly(ab->start, 30, 30);
  expectExactly(ab->duration, 60, 30);
  const auto ba = b.intersection(a);
  ASSERT_TRUE(ba.has_value());
  EXPECT_EQ(*ab, *ba);

  // One inside the other: the inner range.
  const OVTimeRange inner(OVTime(40, 30), OVTime(5, 30));
  ASSERT_TRUE(a.intersection(inner).has_value());
  expectExactly(a.intersection(inner)->start, 40, 30);
  expectExactly(a.intersection(inner)->duration, 5, 30);

  // Overlap by one tick at the finer timescale.
  const OVTimeRange late(OVTime(1799999, 600000), OVTime(1, 1));
  ASSERT_TRUE(a.intersects(late));
  const auto tick = a.intersection(late);
  ASSERT_TRUE(tick.has_value());
  expectExactly(tick->start, 1799999, 600000);
  expectExactly(tick->duration, 1, 600000);
}

TEST(OVTimeRangeTest, DisjointAndEmptyRangesHaveNoIntersection) {
  const OVTimeRange a(OVTime(0, 30), OVTime(30, 30));
  const OVTimeRange far(OVTime(100, 30), OVTime(30, 30));
  EXPECT_FALSE(a.intersects(far));
  EXPECT_FALSE(a.intersection(far).has_value());
  EXPECT_FALSE(far.intersection(a).has_value());
  // A zero-length range in the middle of another overlaps its span by the
  // rule start < other.end and other.start < end, yet has no intersection.
  const OVTimeRange point(OVTime(10, 30), OVTime(0, 30));
  EXPECT_TRUE(a.intersects(point));
  EXPECT_FALSE(a.intersection(point).has_value());
}

TEST(OVTimeRangeTest, OffsetIsMeasuredFromTheStart) {
  const OVTimeRange r(OVTime(30, 30), OVTime(60, 30));
  expectExactly(r.offsetOf(OVTime(45, 30)), 15, 30);
  expectExactly(r.offsetOf(OVTime(30, 30)), 0, 30);
  expectExactly(r.offsetOf(OVTime(0, 30)), -30, 30);
  // At the larger timescale: 1.5 s - 1 s = 0.5 s.
  expectExactly(r.offsetOf(OVTime(900000, 600000)), 300000, 600000);
}

TEST(OVTimeRangeTest, ShiftKeepsTheDuration) {
  const OVTimeRange r(OVTime(30, 30), OVTime(60, 30));
  const OVTimeRange later = r.shiftedBy(OVTime(15, 30));
  expectExactly(later.start, 45, 30);
  expectExactly(later.duration, 60, 30);
  expectExactly(later.end(), 105, 30);
  const OVTimeRange earlier = r.shiftedBy(OVTime(-45, 30));
  expectExactly(earlier.start, -15, 30);
  expectExactly(earlier.duration, 60, 30);
  const OVTimeRange ntsc = r.shiftedBy(OVTime(1001, 30000));
  expectExactly(ntsc.start, 31001, 30000);  // 30/30 is 30000/30000
  expectExactly(ntsc.duration, 60, 30);
}

TEST(OVTimeRangeTest, EqualityAndHashUseTimeEquality) {
  const OVTimeRange a(OVTime(1, 2), OVTime(1001, 30000));
  const OVTimeRange b(OVTime(300000, 600000), OVTime(20020, 600000));
  EXPECT_EQ(a, b);
  EXPECT_EQ(hashValue(a), hashValue(b));
  EXPECT_NE(a, OVTimeRange(OVTime(1, 2), OVTime(1002, 30000)));
  EXPECT_NE(a, OVTimeRange(OVTime(2, 2), OVTime(1001, 30000)));
  // Same end, different split between start and duration.
  EXPECT_NE(OVTimeRange(OVTime(0, 30), OVTime(60, 30)),
            OVTimeRange(OVTime(30, 30), OVTime(30, 30)));
}

}  // namespace
}  // namespace orvane::core
