// FrameRate: the named rates, construction from a float, and the frame
// arithmetic (floor with a tiny bias for indices, rounding for counts).

#include "core/frame_rate.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace orvane::core {
namespace {

void expectExactly(const OVTime& t, std::int64_t value, std::int32_t timescale) {
  EXPECT_EQ(t.value, value) << t.description();
  EXPECT_EQ(t.timescale, timescale) << t.description();
}

void expectRate(const FrameRate& r, std::int32_t numerator, std::int32_t denominator) {
  EXPECT_EQ(r.numerator, numerator);
  EXPECT_EQ(r.denominator, denominator);
}

TEST(FrameRateTest, StandardRatesAreTheEightNamedRatesInOrder) {
  struct Row {
    FrameRate named;
    std::int32_t numerator;
    std::int32_t denominator;
    std::string displayName;
  };
  const std::vector<Row> table = {
      {FrameRate::fps23_976, 24000, 1001, "23.976 fps"}, {FrameRate::fps24, 24, 1, "24 fps"},
      {FrameRate::fps25, 25, 1, "25 fps"},               {FrameRate::fps29_97, 30000, 1001, "29.970 fps"},
      {FrameRate::fps30, 30, 1, "30 fps"},               {FrameRate::fps50, 50, 1, "50 fps"},
      {FrameRate::fps59_94, 60000, 1001, "59.940 fps"}, {FrameRate::fps60, 60, 1, "60 fps"},
  };
  ASSERT_EQ(FrameRate::standardRates.size(), table.size());
  for (std::size_t i = 0; i < table.size(); ++i) {
    SCOPED_TRACE(table[i].displayName);
    expectRate(table[i].named, table[i].numerator, table[i].denominator);
    expectRate(FrameRate::standardRates[i], table[i].numerator, table[i].denominator);
    EXPECT_EQ(FrameRate::standardRates[i].displayName(), table[i].displayName);
  }
}

TEST(FrameRateTest, ConstructionKeepsNumeratorAndDenominator) {
  expectRate(FrameRate(24000, 1001), 24000, 1001);
  expectRate(FrameRate(12, 1), 12, 1);
  expectRate(FrameRate(), 30, 1);
  EXPECT_EQ(FrameRate(30000, 1001), FrameRate::fps29_97);
  EXPECT_NE(FrameRate(30, 1), FrameRate::fps29_97);
  EXPECT_EQ(hashValue(FrameRate(30000, 1001)), hashValue(FrameRate::fps29_97));
}

TEST(FrameRateTest, FromFPSPicksTheFirstStandardRateWithinFiveThousandths) {
  EXPECT_EQ(FrameRate::fromFPS(29.97), FrameRate::fps29_97);
  EXPECT_EQ(FrameRate::fromFPS(29.97001), FrameRate::fps29_97);
  EXPECT_EQ(FrameRate::fromFPS(29.973), FrameRate::fps29_97);  // 0.003 away
  EXPECT_EQ(FrameRate::fromFPS(23.976), FrameRate::fps23_976);
  EXPECT_EQ(FrameRate::fromFPS(23.98), FrameRate::fps23_976);  // 0.004 away
  EXPECT_EQ(FrameRate::fromFPS(59.94), FrameRate::fps59_94);
  EXPECT_EQ(FrameRate::fromFPS(24.0), FrameRate::fps24);
  EXPECT_EQ(FrameRate::fromFPS(25.0), FrameRate::fps25);
  EXPECT_EQ(FrameRate::fromFPS(30.004), FrameRate::fps30);
  EXPECT_EQ(FrameRate::fromFPS(49.996), FrameRate::fps50);
  EXPECT_EQ(FrameRate::fromFPS(60.0), FrameRate::fps60);
}

TEST(FrameRateTest, FromFPSOtherwiseUsesThousandths) {
  const FrameRate r29 = FrameRate::fromFPS(29.0);
  expectRate(r29, 29000, 1000);
  EXPECT_EQ(r29.displayName(), "29.000 fps");
  expectRate(FrameRate::fromFPS(30.006), 30006, 1000);  // 0.006 away from 30
  expectRate(FrameRate::fromFPS(23.97), 23970, 1000);   // 0.006 away from 23.976
  expectRate(FrameRate::fromFPS(12.5), 12500, 1000);
  expectRate(FrameRate::fromFPS(120.0), 120000, 1000);
  // fps × 1000 = 1000000.5 exactly rounds away from zero.
  expectRate(FrameRate::fromFPS(1000.0005), 1000001, 1000);
  // 0.0015 × 1000 = 1.5 -> 2, the smallest positive results.
  expectRate(FrameRate::fromFPS(0.0015), 2, 1000);
  expectRate(FrameRate::fromFPS(0.001), 1, 1000);
}

TEST(FrameRateTest, FPSAndFrameDuration) {
  EXPECT_EQ(FrameRate::fps25.fps(), 25.0);
  EXPECT_EQ(FrameRate(25, 2).fps(), 12.5);
  EXPECT_DOUBLE_EQ(FrameRate::fps29_97.fps(), 29.97002997002997);
  EXPECT_DOUBLE_EQ(FrameRate::fps23_976.fps(), 23.976023976023978);

  expectExactly(FrameRate::fps29_97.frameDuration(), 1001, 30000);
  expectExactly(FrameRate::fps25.frameDuration(), 1, 25);
  expectExactly(FrameRate(25, 2).frameDuration(), 2, 25);
  EXPECT_EQ(FrameRate::fps30.frameDuration(), OVTime(20000, 600000));

  EXPECT_EQ(FrameRate::fps29_97.preferredTimescale(), 30000);
  EXPECT_EQ(FrameRate::fps30.preferredTimescale(), 30);
  EXPECT_EQ(FrameRate::fps59_94.preferredTimescale(), 60000);
}

TEST(FrameRateTest, DisplayNameShowsWholeRatesWithoutDecimals) {
  EXPECT_EQ(FrameRate(48, 1).displayName(), "48 fps");
  EXPECT_EQ(FrameRate(1, 1).displayName(), "1 fps");
  // Any denominator but 1 prints three decimals, even for a whole rate.
  EXPECT_EQ(FrameRate(50, 2).displayName(), "25.000 fps");
  EXPECT_EQ(FrameRate(12500, 1000).displayName(), "12.500 fps");
  EXPECT_EQ(FrameRate(1, 3).displayName(), "0.333 fps");
}

TEST(FrameRateTest, TimeForFrameIsCanonicalAtTheRatesTimescale) {
  expectExactly(FrameRate::fps29_97.timeForFrame(3), 3003, 30000);
  expectExactly(FrameRate::fps29_97.timeForFrame(0), 0, 30000);
  expectExactly(FrameRate::fps29_97.timeForFrame(-2), -2002, 30000);
  expectExactly(FrameRate::fps30.timeForFrame(45), 45, 30);
  expectExactly(FrameRate::fps23_976.timeForFrame(24), 24024, 24000);
  expectExactly(FrameRate(25, 2).timeForFrame(5), 10, 25);
  // Large frame numbers stay exact in integers.
  expectExactly(FrameRate::fps59_94.timeForFrame(1'000'000'000'000), 1'001'000'000'000'000, 60000);
}

TEST(FrameRateTest, FrameIndexFloorsTheFrameNumber) {
  const FrameRate r = FrameRate::fps30;
  EXPECT_EQ(r.frameIndexAt(OVTime::zero), 0);
  EXPECT_EQ(r.frameIndexAt(OVTime::fromSeconds(0.999)), 29);
  EXPECT_EQ(r.frameIndexAt(OVTime(1, 1)), 30);
  EXPECT_EQ(r.frameIndexAt(OVTime(1, 30)), 1);
  EXPECT_EQ(r.frameIndexAt(OVTime(19999, 600000)), 0);  // just before frame 1
  EXPECT_EQ(r.frameIndexAt(OVTime(20000, 600000)), 1);
  EXPECT_EQ(r.frameIndexAt(OVTime(39999, 600000)), 1);
  // 1 s at 29.97 is 29.97 frames: frame 29.
  EXPECT_EQ(FrameRate::fps29_97.frameIndexAt(OVTime(1, 1)), 29);
  // Frame 30 at 29.97 starts at 30030/30000 s.
  EXPECT_EQ(FrameRate::fps29_97.frameIndexAt(OVTime(30029, 30000)), 29);
  EXPECT_EQ(FrameRate::fps29_97.frameIndexAt(OVTime(30030, 30000)), 30);
}

TEST(FrameRateTest, FrameIndexOfNegativeTimesIsNegative) {
  const FrameRate r = FrameRate::fps30;
  EXPECT_EQ(r.frameIndexAt(OVTime(-1, 30)), -1);
  EXPECT_EQ(r.frameIndexAt(OVTime::fromSeconds(-0.5)), -15);
  // -0.3 frames floors to -1, not toward zero.
  EXPECT_EQ(r.frameIndexAt(OVTime::fromSeconds(-0.01)), -1);
  EXPECT_EQ(r.frameIndexAt(OVTime(-2, 1)), -60);
}

TEST(FrameRateTest, FrameIndexBiasAbsorbsTinyShortfalls) {
  const FrameRate r = FrameRate::fps30;
  // 1e-9 s before 1 s is 3e-8 frames short of frame 30: the bias of 1e-6
  // frames lifts it to frame 30.
  EXPECT_EQ(r.frameIndexAt(OVTime(999999999, 1000000000)), 30);
  // 1e-7 s before is 3e-6 frames short: more than the bias, so frame 29.
  EXPECT_EQ(r.frameIndexAt(OVTime(9999999, 10000000)), 29);
}

TEST(FrameRateTest, FrameIndexRoundTripsTimeForFrameAtEveryStandardRate) {
  for (const FrameRate& rate : FrameRate::standardRates) {
    SCOPED_TRACE(rate.displayName());
    for (std::int64_t n = -3000; n <= 200000; ++n) {
      const std::int64_t back = rate.frameIndexAt(rate.timeForFrame(n));
      if (back != n) {
        ADD_FAILURE() << "frame " << n << " came back as " << back;
        break;
      }
    }
    // Ten hours and more into a timeline.
    for (std::int64_t n : {std::int64_t{863136}, std::int64_t{2157840}, std::int64_t{10000003},
                           std::int64_t{123456789}}) {
      EXPECT_EQ(rate.frameIndexAt(rate.timeForFrame(n)), n);
    }
  }
}

TEST(FrameRateTest, SnappedGoesToTheFrameAtOrBefore) {
  const FrameRate r = FrameRate::fps30;
  expectExactly(r.snapped(OVTime::fromSeconds(0.999)), 29, 30);
  expectExactly(r.snapped(OVTime(20000, 600000)), 1, 30);  // on a frame: itself
  expectExactly(r.snapped(OVTime(39999, 600000)), 1, 30);  // never to the nearest
  expectExactly(r.snapped(OVTime::fromSeconds(-0.01)), -1, 30);
  expectExactly(FrameRate::fps29_97.snapped(OVTime(1, 1)), 29029, 30000);
  // A frame-aligned time at another timescale snaps to itself.
  expectExactly(FrameRate::fps25.snapped(OVTime(24000, 600000)), 1, 25);
}

TEST(FrameRateTest, FrameCountRoundsToNearest) {
  const FrameRate r = FrameRate::fps30;
  // 0.999 s is 29.97 frames: the count is 30, where the index floors to 29.
  EXPECT_EQ(r.frameCountFor(OVTime::fromSeconds(0.999)), 30);
  EXPECT_EQ(r.frameCountFor(OVTime::fromSeconds(0.98)), 29);  // 29.4
  EXPECT_EQ(r.frameCountFor(OVTime::zero), 0);
  EXPECT_EQ(FrameRate::fps29_97.frameCountFor(OVTime(1, 1)), 30);        // 29.97
  EXPECT_EQ(FrameRate::fps23_976.frameCountFor(OVTime(10, 1)), 240);    // 239.76
  EXPECT_EQ(FrameRate::fps29_97.frameCountFor(OVTime(3003, 30000)), 3);  // exactly 3
  // Halves go away from zero: 0.5 s at 25 fps is 12.5 frames.
  EXPECT_EQ(FrameRate::fps25.frameCountFor(OVTime(1, 2)), 13);
  EXPECT_EQ(FrameRate::fps25.frameCountFor(OVTime(-1, 2)), -13);
  EXPECT_EQ(FrameRate::fps30.frameCountFor(OVTime(-1, 1)), -30);
}

}  // namespace
}  // namespace orvane::core
