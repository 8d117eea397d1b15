// FrameRate: the standard rates, matching a float rate, and the frame
// arithmetic (floor with a tiny bias for indices, rounding for counts).

#include "core/frame_rate.hpp"

#include <gtest/gtest.h>

#include <cstdint>

namespace orvane::core {
namespace {

void expectExactly(const OVTime& t, std::int64_t value, std::int32_t timescale) {
  EXPECT_EQ(t.value, value) << t.description();
  EXPECT_EQ(t.timescale, timescale) << t.description();
}

TEST(FrameRateTest, DisplayNameShowsDecimalsUnlessTheDenominatorIsOne) {
  const char* const standardNames[] = {"23.976 fps", "24 fps", "25 fps", "29.970 fps",
                                       "30 fps",     "50 fps", "59.940 fps", "60 fps"};
  for (std::size_t i = 0; i < FrameRate::standardRates.size(); ++i)
    EXPECT_EQ(FrameRate::standardRates[i].displayName(), standardNames[i]);
  EXPECT_EQ(FrameRate(50, 2).displayName(), "25.000 fps");
  EXPECT_EQ(FrameRate(1, 3).displayName(), "0.333 fps");
}

TEST(FrameRateTest, FromFPSMatchesAStandardRateWithinFiveThousandthsElseThousandths) {
  struct Row { double fps; std::int32_t numerator, denominator; };
  const Row rows[] = {
      {29.97, 30000, 1001}, {29.973, 30000, 1001}, {23.98, 24000, 1001}, {59.94, 60000, 1001},
      {30.004, 30, 1},      {49.996, 50, 1},       {24.0, 24, 1},
      {29.0, 29000, 1000},  {30.006, 30006, 1000},  // 0.006 away from 30
      {23.97, 23970, 1000},                         // 0.006 away from 23.976
      {1000.0005, 1000001, 1000},                   // 1000000.5 rounds away from zero
      {0.0015, 2, 1000},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.fps);
    const FrameRate rate = FrameRate::fromFPS(r.fps);
    EXPECT_EQ(rate.numerator, r.numerator);
    EXPECT_EQ(rate.denominator, r.denominator);
  }
  EXPECT_EQ(FrameRate::fromFPS(29.0).displayName(), "29.000 fps");
}

TEST(FrameRateTest, TimeForFrameIsExactAtTheRatesOwnTimescale) {
  expectExactly(FrameRate::fps29_97.timeForFrame(3), 3003, 30000);
  expectExactly(FrameRate::fps29_97.timeForFrame(-2), -2002, 30000);
  expectExactly(FrameRate::fps30.timeForFrame(45), 45, 30);
  expectExactly(FrameRate(25, 2).timeForFrame(5), 10, 25);
  expectExactly(FrameRate::fps59_94.timeForFrame(1'000'000'000'000), 1'001'000'000'000'000, 60000);
}

TEST(FrameRateTest, FrameIndexFloorsWithATinyBias) {
  struct Row { FrameRate rate; OVTime t; std::int64_t index; };
  const Row rows[] = {
      {FrameRate::fps30, OVTime(999, 1000), 29},        // 29.97 frames
      {FrameRate::fps30, OVTime(19999, 600000), 0},     // a tick before frame 1
      {FrameRate::fps30, OVTime(20000, 600000), 1},
      {FrameRate::fps29_97, OVTime(1, 1), 29},          // 29.97 frames
      {FrameRate::fps29_97, OVTime(30029, 30000), 29},  // frame 30 starts at 30030
      {FrameRate::fps29_97, OVTime(30030, 30000), 30},
      {FrameRate::fps30, OVTime(-1, 30), -1},
      {FrameRate::fps30, OVTime(-1, 100), -1},  // -0.3 frames floors, not toward zero
      {FrameRate::fps30, OVTime(-1, 2), -15},
      // 1e-9 s short of 1 s is 3e-8 frames short: the 1e-6 bias lifts it.
      {FrameRate::fps30, OVTime(999999999, 1000000000), 30},
      // 1e-7 s short is 3e-6 frames, more than the bias.
      {FrameRate::fps30, OVTime(9999999, 10000000), 29},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.rate.displayName() + " at " + r.t.description());
    EXPECT_EQ(r.rate.frameIndexAt(r.t), r.index);
  }
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
    for (std::int64_t n : {863136, 2157840, 10000003, 123456789})  // ten hours and more
      EXPECT_EQ(rate.frameIndexAt(rate.timeForFrame(n)), n);
  }
}

TEST(FrameRateTest, SnappedFloorsWhileFrameCountRoundsToNearest) {
  // 0.999 s at 30 fps is 29.97 frames: snapped to frame 29, counted as 30.
  expectExactly(FrameRate::fps30.snapped(OVTime(999, 1000)), 29, 30);
  EXPECT_EQ(FrameRate::fps30.frameCountFor(OVTime(999, 1000)), 30);
  expectExactly(FrameRate::fps30.snapped(OVTime(39999, 600000)), 1, 30);  // never the nearest
  expectExactly(FrameRate::fps30.snapped(OVTime(-1, 100)), -1, 30);
  expectExactly(FrameRate::fps29_97.snapped(OVTime(1, 1)), 29029, 30000);
  expectExactly(FrameRate::fps25.snapped(OVTime(24000, 600000)), 1, 25);  // on a frame: itself

  EXPECT_EQ(FrameRate::fps30.frameCountFor(OVTime(98, 100)), 29);     // 29.4
  EXPECT_EQ(FrameRate::fps23_976.frameCountFor(OVTime(10, 1)), 240);  // 239.76
  EXPECT_EQ(FrameRate::fps25.frameCountFor(OVTime(1, 2)), 13);        // 12.5, away from zero
  EXPECT_EQ(FrameRate::fps25.frameCountFor(OVTime(-1, 2)), -13);
}

}  // namespace
}  // namespace orvane::core
