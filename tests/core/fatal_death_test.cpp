// Programmer errors in the time types stop the program with fixed words on
// stderr. Each case runs in a child process (the "threadsafe" style re-runs
// the program, so it is safe however many threads the test binary has).

#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <cstdint>
#include <limits>

#include "core/fatal.hpp"
#include "core/frame_rate.hpp"
#include "core/numeric.hpp"
#include "core/ov_time.hpp"

namespace orvane::core {
namespace {

constexpr std::int64_t kMax64 = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin64 = std::numeric_limits<std::int64_t>::min();
constexpr const char* kBadRate = "frame rate must be positive";
constexpr const char* kOutOfRange64 = "number is not finite or out of range for a 64-bit integer";

class FatalDeathTest : public ::testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(FatalDeathTest, MessageIsPrefixedAndTheProgramAborts) {
  EXPECT_EXIT(fatalError("some words"), ::testing::KilledBySignal(SIGABRT),
              "Fatal error: some words");
}

TEST_F(FatalDeathTest, NonPositiveTimescaleStops) {
  EXPECT_DEATH(OVTime(1, 0), "Fatal error: timescale must be positive");
  EXPECT_DEATH(OVTime(0, -600000), "timescale must be positive");
  EXPECT_DEATH(OVTime::fromSeconds(1.0, -30), "timescale must be positive");
  EXPECT_DEATH(OVTime(1, 30).convertedTo(0), "timescale must be positive");
}

TEST_F(FatalDeathTest, NonPositiveFrameRateStopsAtConstructionOrFirstUse) {
  EXPECT_DEATH(FrameRate(0, 1), "Fatal error: frame rate must be positive");
  EXPECT_DEATH(FrameRate(30, -1), kBadRate);
  EXPECT_DEATH(FrameRate::fromFPS(-25.0), kBadRate);
  EXPECT_DEATH(FrameRate::fromFPS(0.0004), kBadRate);  // × 1000 rounds to 0
  EXPECT_DEATH((void)FrameRate::unchecked(30, 0).fps(), kBadRate);
  EXPECT_DEATH((void)FrameRate::unchecked(-24, 1).frameIndexAt(OVTime(1, 1)), kBadRate);
  EXPECT_DEATH((void)FrameRate::unchecked(30, 0).timeForFrame(3), kBadRate);
  EXPECT_DEATH((void)FrameRate::unchecked(0, 1).frameCountFor(OVTime(1, 1)), kBadRate);
}

TEST_F(FatalDeathTest, IntegerOverflowInArithmeticStops) {
  EXPECT_DEATH(OVTime(kMax64, 600000) + OVTime(1, 600000), "Fatal error: integer overflow");
  EXPECT_DEATH(OVTime(kMin64, 600000) - OVTime(1, 600000), "integer overflow");
  EXPECT_DEATH(OVTime(kMin64, 1) + OVTime(-1, 1), "integer overflow");
  EXPECT_DEATH(OVTime(0, 1) - OVTime(kMin64, 1), "integer overflow");
  EXPECT_DEATH(FrameRate::fps29_97.timeForFrame(kMax64 / 1000), "integer overflow");
}

TEST_F(FatalDeathTest, NonFiniteOrHugeNumbersStop) {
  EXPECT_DEATH(OVTime::fromSeconds(NAN), kOutOfRange64);
  EXPECT_DEATH(OVTime::fromSeconds(-INFINITY), kOutOfRange64);
  // 2^63 ticks do not fit, even though the float is exact.
  EXPECT_DEATH(OVTime::fromSeconds(9223372036854775808.0, 1), kOutOfRange64);
  EXPECT_DEATH(OVTime(1, 1) * NAN, kOutOfRange64);
  EXPECT_DEATH(OVTime(kMax64, 1) * 2.0, kOutOfRange64);
  // Converting to a finer timescale through floats can leave the range.
  EXPECT_DEATH(OVTime(kMax64 / 2, 1).convertedTo(600000), kOutOfRange64);
  EXPECT_DEATH(OVTime(kMax64 / 2, 1) + OVTime(0, 600000), kOutOfRange64);
  EXPECT_DEATH(FrameRate::fromFPS(NAN), "not finite or out of range for a 32-bit integer");
  EXPECT_DEATH(FrameRate::fromFPS(3e6), "out of range for a 32-bit integer");
}

TEST(FatalLimitsTest, ExtremesThatStillFitDoNotStop) {
  EXPECT_EQ(checkedInt64(-9223372036854775808.0), kMin64);
  EXPECT_EQ((OVTime(kMax64 - 1, 600000) + OVTime(1, 600000)).value, kMax64);
  EXPECT_EQ((OVTime(kMin64 + 1, 600000) - OVTime(1, 600000)).value, kMin64);
  EXPECT_EQ(checkedInt32(-2147483648.0), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(FrameRate::fromFPS(2147483.647).numerator, 2147483647);
}

}  // namespace
}  // namespace orvane::core
