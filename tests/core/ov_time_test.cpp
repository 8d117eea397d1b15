// OVTime and OVTimeRange: conversion rounding half away from zero, arithmetic
// and comparison at the larger timescale, hashing, and half-open ranges.
// Expected values are worked out by hand in the comments.

#include "core/ov_time.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <unordered_set>

namespace orvane::core {
namespace {

// Field by field: `==` converts, so it cannot tell 1/2 from 300000/600000.
void expectExactly(const OVTime& t, std::int64_t value, std::int32_t timescale) {
  EXPECT_EQ(t.value, value) << t.description();
  EXPECT_EQ(t.timescale, timescale) << t.description();
}

// 2^53 + 1 does not survive a trip through a double.
constexpr std::int64_t kBeyondDouble = (std::int64_t{1} << 53) + 1;

TEST(OVTimeTest, DefaultIsZeroAndDescriptionShowsTicksAndSeconds) {
  expectExactly(OVTime(), 0, 600000);
  expectExactly(OVTime::zero, 0, 600000);
  EXPECT_EQ(OVTime(300000, 600000).description(), "300000/600000 (0.500s)");
  EXPECT_EQ(OVTime(2, 3).description(), "2/3 (0.667s)");
  EXPECT_EQ(OVTime(-1001, 30000).description(), "-1001/30000 (-0.033s)");
}

TEST(OVTimeTest, FromSecondsRoundsHalfAwayFromZero) {
  expectExactly(OVTime::fromSeconds(0.5), 300000, 600000);
  struct Row { double seconds; std::int32_t timescale; std::int64_t value; };
  const Row rows[] = {
      {2.5, 1, 3},     {-2.5, 1, -3},  // not to even
      {0.25, 2, 1},    {-0.25, 2, -1},  // ±0.5 ticks
      {0.2, 2, 0},     {0.3, 2, 1},     // 0.4 and 0.6 ticks
      {1001.0 / 30000.0, 30000, 1001},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.seconds);
    expectExactly(OVTime::fromSeconds(r.seconds, r.timescale), r.value, r.timescale);
  }
}

TEST(OVTimeTest, ConversionMultipliesFirstAndRoundsHalfAwayFromZero) {
  struct Row { OVTime from; std::int32_t to; std::int64_t value; };
  const Row rows[] = {
      {OVTime(1001, 30000), 600000, 20020}, {OVTime(20020, 600000), 30000, 1001},
      {OVTime(10000, 600000), 30, 1},       {OVTime(-10000, 600000), 30, -1},  // ±0.5 -> ±1
      {OVTime(9999, 600000), 30, 0},        {OVTime(1, 30000), 24000, 1},  // 0.49995, 0.8
      // 91 × 51 / 42 = 110.5 exactly; dividing first lands a hair below in
      // doubles and would give 110. Likewise 117 × 111 / 54 = 240.5.
      {OVTime(91, 42), 51, 111},
      {OVTime(117, 54), 111, 241},
      {OVTime(-117, 54), 111, -241},
      // The same timescale is the identity, even beyond double precision.
      {OVTime(kBeyondDouble, 600000), 600000, kBeyondDouble},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.from.description());
    expectExactly(r.from.convertedTo(r.to), r.value, r.to);
  }
}

TEST(OVTimeTest, MixedTimescaleSumsRoundEachOperandFirst) {
  struct Row { OVTime a, b; std::int64_t sum, difference; std::int32_t timescale; };
  const Row rows[] = {
      {OVTime(5, 30), OVTime(-8, 30), -3, 13, 30},
      {OVTime(kBeyondDouble, 7), OVTime(kBeyondDouble, 7), 2 * kBeyondDouble, 0, 7},
      // 1001/30000 is 20020/600000; the result is at the larger timescale.
      {OVTime(1001, 30000), OVTime(1, 600000), 20021, 20019, 600000},
      {OVTime(1, 600000), OVTime(1001, 30000), 20021, -20019, 600000},
      // 1/24 s is 1.25 -> 1 tick of 1/30: 2/30, not 9/120 of a common multiple.
      {OVTime(1, 30), OVTime(1, 24), 2, 0, 30},
      // 1/400000 s is 1.5 -> 2 ticks of 1/600000. Exact arithmetic would give
      // 1.5 - 2 = -0.5 -> -1 for the difference and -2 + 1.5 -> -1 for the sum.
      {OVTime(1, 400000), OVTime(2, 600000), 4, 0, 600000},
      {OVTime(-2, 600000), OVTime(1, 400000), 0, -4, 600000},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.a.description() + " and " + r.b.description());
    expectExactly(r.a + r.b, r.sum, r.timescale);
    expectExactly(r.a - r.b, r.difference, r.timescale);
  }
}

TEST(OVTimeTest, ScalingRoundsHalfAwayFromZeroAndKeepsTheTimescale) {
  expectExactly(OVTime(3, 30) * 0.5, 2, 30);      // 1.5 -> 2
  expectExactly(OVTime(-3, 30) * 0.5, -2, 30);    // -1.5 -> -2
  expectExactly(OVTime(5, 30) * 0.5, 3, 30);      // 2.5 -> 3, not to even
  expectExactly(OVTime(1001, 30000) * 0.04, 40, 30000);  // 40.04 -> 40
}

TEST(OVTimeTest, ComparisonConvertsToTheLargerTimescale) {
  // 0/30 becomes 0/600000, one tick below 1/600000, whichever comes first.
  EXPECT_NE(OVTime(1, 600000), OVTime(0, 30));
  EXPECT_NE(OVTime(0, 30), OVTime(1, 600000));
  EXPECT_LT(OVTime(0, 30), OVTime(1, 600000));
  EXPECT_GT(OVTime(1, 600000), OVTime(0, 30));
  EXPECT_EQ(OVTime(1, 2), OVTime(300000, 600000));
  EXPECT_EQ(OVTime(300000, 600000), OVTime(1, 2));
  // Different times that round to the same tick are equal, not ordered.
  EXPECT_EQ(OVTime(1, 400000), OVTime(2, 600000));
  EXPECT_FALSE(OVTime(1, 400000) < OVTime(2, 600000));
  EXPECT_FALSE(OVTime(2, 600000) < OVTime(1, 400000));
  EXPECT_EQ(OVTime(1, 24), OVTime(1, 30));  // 1.25 -> 1 tick of 1/30
  EXPECT_LT(OVTime(1001, 30000), OVTime(20021, 600000));
  EXPECT_GT(OVTime(1001, 30000), OVTime(20019, 600000));
  EXPECT_LT(OVTime(-1001, 30000), OVTime(-20019, 600000));
}

TEST(OVTimeTest, LargeFrameTimesStayExactUpToTwoToThe53Ticks) {
  // Frame n at 30 fps is n × 20000 ticks at 600000. While that count stays
  // below 2^53 it is exact, and so are comparisons, sums and hashes with it.
  constexpr std::int64_t kLimit = (std::int64_t{1} << 53) / 20000;  // 450359962737
  for (const std::int64_t frame : {kLimit - 1, -(kLimit - 1), std::int64_t{123456789}}) {
    SCOPED_TRACE(frame);
    const OVTime atRate(frame, 30);
    const OVTime atDefault(frame * 20000, 600000);
    EXPECT_EQ(atRate, atDefault);
    EXPECT_EQ(hashValue(atRate), hashValue(atDefault));
    EXPECT_LT(atRate, OVTime(frame * 20000 + 1, 600000));
    EXPECT_GT(atRate, OVTime(frame * 20000 - 1, 600000));
    EXPECT_EQ((atRate + OVTime(1, 600000)).value, frame * 20000 + 1);
  }
}

TEST(OVTimeTest, EqualTimesAndRangesHashAlike) {
  EXPECT_EQ(hashValue(OVTime(1, 2)), hashValue(OVTime(300000, 600000)));
  EXPECT_NE(hashValue(OVTime(1, 2)), hashValue(OVTime(1, 3)));
  const std::unordered_set<OVTime> set = {OVTime(1, 2), OVTime(300000, 600000), OVTime(15, 30),
                                          OVTime(1, 3)};
  EXPECT_EQ(set.size(), 2u);
  EXPECT_EQ(set.count(OVTime(12, 24)), 1u);
  const OVTimeRange a(OVTime(1, 2), OVTime(1001, 30000));
  const OVTimeRange b(OVTime(300000, 600000), OVTime(20020, 600000));
  EXPECT_EQ(a, b);
  EXPECT_EQ(hashValue(a), hashValue(b));
  EXPECT_NE(a, OVTimeRange(OVTime(1, 2), OVTime(1002, 30000)));
  // Same end, different split between start and duration.
  EXPECT_NE(OVTimeRange(OVTime(0, 30), OVTime(60, 30)),
            OVTimeRange(OVTime(30, 30), OVTime(30, 30)));
}

TEST(OVTimeTest, ClampReturnsTheBoundOrTheTimeUnconverted) {
  const OVTime lo(0, 600000), hi(600000, 600000);
  expectExactly(OVTime::clamp(OVTime(1, 2), lo, hi), 1, 2);
  expectExactly(OVTime::clamp(OVTime(0, 30), lo, hi), 0, 30);  // on a bound: t itself
  expectExactly(OVTime::clamp(OVTime(-1, 30), lo, hi), 0, 600000);
  expectExactly(OVTime::clamp(OVTime(31, 30), lo, hi), 600000, 600000);
  // Crossed bounds [10, 5]: min wins for anything below it, max above both.
  expectExactly(OVTime::clamp(OVTime(7, 30), OVTime(10, 30), OVTime(5, 30)), 10, 30);
  expectExactly(OVTime::clamp(OVTime(20, 30), OVTime(10, 30), OVTime(5, 30)), 5, 30);
}

TEST(OVTimeRangeTest, EndOffsetAndShiftWorkAtTheLargerTimescale) {
  // 1 s - 1001/30000 s = 600000 - 20020 ticks of 1/600000.
  const OVTimeRange r = OVTimeRange::fromStartEnd(OVTime(1001, 30000), OVTime(600000, 600000));
  expectExactly(r.duration, 579980, 600000);
  expectExactly(r.end(), 600000, 600000);
  expectExactly(r.offsetOf(OVTime(0, 30)), -1001, 30000);
  const OVTimeRange shifted = r.shiftedBy(OVTime(1, 30));
  expectExactly(shifted.start, 2001, 30000);  // 1/30 s is 1000/30000
  expectExactly(shifted.duration, 579980, 600000);
}

TEST(OVTimeRangeTest, ContainsIsHalfOpenAndEmptyRangesContainNothing) {
  const OVTimeRange r(OVTime(30, 30), OVTime(60, 30));  // [1 s, 3 s)
  EXPECT_FALSE(r.isEmpty());
  EXPECT_TRUE(r.contains(OVTime(30, 30)));
  EXPECT_FALSE(r.contains(OVTime(599999, 600000)));
  EXPECT_TRUE(r.contains(OVTime(1799999, 600000)));
  EXPECT_FALSE(r.contains(OVTime(90, 30)));
  const OVTimeRange zeroLength(OVTime(5, 30), OVTime(0, 30));
  EXPECT_TRUE(zeroLength.isEmpty());
  EXPECT_FALSE(zeroLength.contains(OVTime(5, 30)));
  const OVTimeRange negative = OVTimeRange::fromStartEnd(OVTime(10, 30), OVTime(7, 30));
  expectExactly(negative.duration, -3, 30);
  EXPECT_TRUE(negative.isEmpty());
  for (int f = 0; f < 15; ++f) EXPECT_FALSE(negative.contains(OVTime(f, 30))) << f;
}

TEST(OVTimeRangeTest, TouchingRangesDoNotIntersect) {
  const OVTimeRange a(OVTime(0, 30), OVTime(30, 30));  // [0, 1 s)
  for (const OVTimeRange& b : {OVTimeRange(OVTime(30, 30), OVTime(30, 30)),
                               OVTimeRange(OVTime(600000, 600000), OVTime(1, 1)),
                               OVTimeRange(OVTime(100, 30), OVTime(30, 30))}) {
    EXPECT_FALSE(a.intersects(b) || b.intersects(a));
    EXPECT_FALSE(a.intersection(b).has_value() || b.intersection(a).has_value());
  }
  // A zero-length range inside another meets the intersects rule, yet has no
  // intersection.
  const OVTimeRange point(OVTime(10, 30), OVTime(0, 30));
  EXPECT_TRUE(a.intersects(point));
  EXPECT_FALSE(a.intersection(point).has_value());
}

TEST(OVTimeRangeTest, OverlappingRangesIntersectInTheCommonPart) {
  const OVTimeRange a(OVTime(0, 30), OVTime(90, 30));  // [0, 3 s)
  const OVTimeRange common(OVTime(30, 30), OVTime(60, 30));
  EXPECT_EQ(a.intersection(OVTimeRange(OVTime(30, 30), OVTime(120, 30))), common);
  EXPECT_EQ(OVTimeRange(OVTime(30, 30), OVTime(120, 30)).intersection(a), common);
  const OVTimeRange inner(OVTime(40, 30), OVTime(5, 30));
  EXPECT_EQ(a.intersection(inner), inner);
  // One tick of overlap at the finer timescale.
  const auto tick = a.intersection(OVTimeRange(OVTime(1799999, 600000), OVTime(1, 1)));
  ASSERT_TRUE(tick.has_value());
  expectExactly(tick->start, 1799999, 600000);
  expectExactly(tick->duration, 1, 600000);
}

}  // namespace
}  // namespace orvane::core
