// Timecode: non-drop-frame "HH:MM:SS:FF" at the nominal (rounded) rate, the
// short form, and parsing typed text back into a frame-aligned time.

#include "core/timecode.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

namespace orvane::core {
namespace {

const Timecode kTC30{FrameRate::fps30};
const Timecode kTC25{FrameRate::fps25};
const Timecode kTC2997{FrameRate::fps29_97};
const Timecode kTC23976{FrameRate::fps23_976};

// The time of frame `frames` at `fps` frames per second, built by hand at
// the rate's own timescale.
OVTime frameTime(std::int64_t frames, std::int32_t fps) { return OVTime(frames, fps); }

void expectParsed(const Timecode& tc, const std::string& text, std::int64_t value,
                  std::int32_t timescale) {
  const std::optional<OVTime> t = tc.timeFrom(text);
  ASSERT_TRUE(t.has_value()) << '"' << text << '"';
  EXPECT_EQ(t->value, value) << '"' << text << '"';
  EXPECT_EQ(t->timescale, timescale) << '"' << text << '"';
}

void expectRejected(const Timecode& tc, const std::string& text) {
  const std::optional<OVTime> t = tc.timeFrom(text);
  EXPECT_FALSE(t.has_value()) << '"' << text << "\" gave " << t->description();
}

TEST(TimecodeTest, NominalFPSRoundsHalfAwayFromZero) {
  EXPECT_EQ(kTC23976.nominalFPS(), 24);
  EXPECT_EQ(kTC2997.nominalFPS(), 30);
  EXPECT_EQ(Timecode{FrameRate::fps59_94}.nominalFPS(), 60);
  EXPECT_EQ(kTC25.nominalFPS(), 25);
  EXPECT_EQ(Timecode{FrameRate(25, 2)}.nominalFPS(), 13);  // 12.5
  EXPECT_EQ(Timecode{FrameRate(1, 2)}.nominalFPS(), 1);    // 0.5
  EXPECT_EQ(Timecode{FrameRate(1, 3)}.nominalFPS(), 0);    // 0.333
}

TEST(TimecodeTest, StringShowsHoursMinutesSecondsFrames) {
  EXPECT_EQ(kTC30.stringFor(OVTime::zero), "00:00:00:00");
  EXPECT_EQ(kTC30.stringFor(frameTime(29, 30)), "00:00:00:29");
  EXPECT_EQ(kTC30.stringFor(frameTime(30, 30)), "00:00:01:00");
  // 1 h 2 min 3 s 4 frames = 3723 s × 30 + 4 = 111694 frames.
  EXPECT_EQ(kTC30.stringFor(frameTime(111694, 30)), "01:02:03:04");
  // 59 min 59 s 29 frames, then one frame more rolls every field.
  EXPECT_EQ(kTC30.stringFor(frameTime(3599 * 30 + 29, 30)), "00:59:59:29");
  EXPECT_EQ(kTC30.stringFor(frameTime(3600 * 30, 30)), "01:00:00:00");
  EXPECT_EQ(kTC25.stringFor(frameTime(24, 25)), "00:00:00:24");
  EXPECT_EQ(kTC25.stringFor(OVTime(90, 1)), "00:01:30:00");
  // A time between frames shows the frame at or before it.
  EXPECT_EQ(kTC30.stringFor(OVTime::fromSeconds(0.999)), "00:00:00:29");
  EXPECT_EQ(kTC25.stringFor(OVTime(39, 1000)), "00:00:00:00");  // 0.975 frames
}

TEST(TimecodeTest, HoursNeverWrap) {
  EXPECT_EQ(kTC30.stringFor(OVTime(24 * 3600, 1)), "24:00:00:00");
  EXPECT_EQ(kTC30.stringFor(OVTime(100 * 3600, 1)), "100:00:00:00");
  EXPECT_EQ(kTC25.stringFor(OVTime(1000 * 3600 + 61, 1)), "1000:01:01:00");
}

TEST(TimecodeTest, NegativeTimesShowAsZero) {
  EXPECT_EQ(kTC30.stringFor(OVTime(-5, 1)), "00:00:00:00");
  EXPECT_EQ(kTC30.stringFor(OVTime(-1, 600000)), "00:00:00:00");
  EXPECT_EQ(kTC2997.shortStringFor(OVTime(-3600, 1)), "00:00:00");
}

TEST(TimecodeTest, NTSCRatesCountNominalFramesWithoutDropFrame) {
  // 1 s of clock time at 29.97 is 29.97 frames: frame 29.
  EXPECT_EQ(kTC2997.stringFor(OVTime(1, 1)), "00:00:00:29");
  // One clock minute is 1798.2 frames: 1798 = 59 s and 28 frames.
  EXPECT_EQ(kTC2997.stringFor(OVTime(60, 1)), "00:00:59:28");
  // Frame 1800 reads one minute although it starts 60.06 s in.
  EXPECT_EQ(kTC2997.stringFor(OVTime(1800 * 1001, 30000)), "00:01:00:00");
  // Frame 17982 (a drop-frame display would skip numbers by then).
  EXPECT_EQ(kTC2997.stringFor(FrameRate::fps29_97.timeForFrame(17982)), "00:09:59:12");
  EXPECT_EQ(kTC23976.stringFor(FrameRate::fps23_976.timeForFrame(24)), "00:00:01:00");
  EXPECT_EQ(Timecode{FrameRate::fps59_94}.stringFor(FrameRate::fps59_94.timeForFrame(61)),
            "00:00:01:01");
}

TEST(TimecodeTest, RatesBelowOneHalfCountOneFramePerSecond) {
  // 0.333 fps has a nominal rate of 0, used as 1: 9 s is frame 3.
  const Timecode slow{FrameRate(1, 3)};
  EXPECT_EQ(slow.stringFor(OVTime(9, 1)), "00:00:03:00");
  EXPECT_EQ(slow.stringFor(OVTime(8, 1)), "00:00:02:00");
  // "1:00" is 1 s and 0 frames: frame 1, which starts 3 s in.
  expectParsed(slow, "1:00", 3, 1);
  expectRejected(slow, "0:1");  // frames field reaches the rate of 1
}

TEST(TimecodeTest, ShortStringDropsOneLeadingZeroHour) {
  EXPECT_EQ(kTC30.shortStringFor(frameTime(1 * 60 * 30 + 2 * 30 + 3, 30)), "01:02:03");
  EXPECT_EQ(kTC30.shortStringFor(frameTime(2 * 30 + 3, 30)), "00:02:03");
  EXPECT_EQ(kTC30.shortStringFor(OVTime::zero), "00:00:00");
  EXPECT_EQ(kTC30.shortStringFor(frameTime(111694, 30)), "01:02:03:04");
  EXPECT_EQ(kTC30.shortStringFor(OVTime(100 * 3600, 1)), "100:00:00:00");
}

TEST(TimecodeTest, ParsesTwoToFourFieldsRightAligned) {
  // Two fields are seconds and frames.
  expectParsed(kTC30, "12:05", 12 * 30 + 5, 30);
  expectParsed(kTC30, "0:29", 29, 30);
  // Three fields add minutes, four add hours.
  expectParsed(kTC30, "1:02:03", (1 * 60 + 2) * 30 + 3, 30);
  expectParsed(kTC30, "1:02:03:04", 111694, 30);
  expectParsed(kTC30, "00:00:00:00", 0, 30);
  expectParsed(kTC25, "00:01:30:00", 90 * 25, 25);
  // The result is frame-aligned at the rate's own timescale.
  expectParsed(kTC2997, "1:00", 30 * 1001, 30000);
  expectParsed(kTC2997, "00:01:00:00", 1800 * 1001, 30000);
  expectParsed(kTC23976, "1:23", (24 + 23) * 1001, 24000);
}

TEST(TimecodeTest, EmptyPiecesAreDropped) {
  // "::5:1" has two pieces: 5 s and 1 frame.
  expectParsed(kTC30, "::5:1", 151, 30);
  expectParsed(kTC30, "5:1:", 151, 30);
  expectParsed(kTC30, "5::1", 151, 30);
  expectParsed(kTC30, "1::2::3::4", 111694, 30);
}

TEST(TimecodeTest, RejectsTheWrongNumberOfPieces) {
  expectRejected(kTC30, "");
  expectRejected(kTC30, "5");
  expectRejected(kTC30, ":5:");
  expectRejected(kTC30, ":::");
  expectRejected(kTC30, "1:2:3:4:5");
  expectRejected(kTC30, "0:0:0:0:0");
}

TEST(TimecodeTest, RejectsPiecesThatAreNotIntegers) {
  expectRejected(kTC30, "a:1");
  expectRejected(kTC30, "1:b");
  expectRejected(kTC30, "1.5:2");
  expectRejected(kTC30, "1:2x");
  expectRejected(kTC30, "0x1:2");
  expectRejected(kTC30, "1: :2");     // a blank piece is not dropped, and is not a number
  expectRejected(kTC30, "1 2:3");     // inner blanks are not trimmed
  expectRejected(kTC30, "-:1");
  expectRejected(kTC30, "+:1");
  expectRejected(kTC30, "+-5:1");     // one sign at most
  expectRejected(kTC30, "-+5:1");
  expectRejected(kTC30, "--5:1");
  expectRejected(kTC30, "99999999999999999999:1");  // beyond 64 bits
  expectRejected(kTC30, "00:00:01;02");  // no drop-frame separator
}

TEST(TimecodeTest, TrimsBlanksAndTabsButNotNewlines) {
  expectParsed(kTC30, " 1 :\t2\t", 32, 30);
  expectParsed(kTC30, "  0 : 0 : 1 : 2  ", 32, 30);
  expectRejected(kTC30, "1\n:2");
  expectRejected(kTC30, "1:2\n");
  expectRejected(kTC30, "1:2\r");
  expectRejected(kTC30, "\n1:2");
  // Vertical tab and form feed break lines too; they are not blanks.
  expectRejected(kTC30, "1\v:2");
  expectRejected(kTC30, "1:\f2");
}

TEST(TimecodeTest, SignsAreAcceptedOnEachPiece) {
  expectParsed(kTC30, "+5:+1", 151, 30);
  // Only the upper bound of the frames field is checked.
  expectParsed(kTC30, "1:-2", 28, 30);
  expectParsed(kTC30, "-1:00", -30, 30);
  expectParsed(kTC2997, "-1:00", -30 * 1001, 30000);
}

TEST(TimecodeTest, FramesFieldMustStayBelowTheNominalRate) {
  expectRejected(kTC30, "0:30");
  expectRejected(kTC30, "1:02:03:30");
  expectRejected(kTC30, "0:300");
  expectParsed(kTC30, "0:29", 29, 30);
  expectRejected(kTC25, "0:25");
  expectParsed(kTC25, "0:24", 24, 25);
  // 29.97 counts 30 nominal frames per second.
  expectRejected(kTC2997, "0:30");
  expectParsed(kTC2997, "0:29", 29 * 1001, 30000);
  expectRejected(kTC23976, "0:24");
  expectParsed(kTC23976, "0:23", 23 * 1001, 24000);
}

TEST(TimecodeTest, MinutesAndSecondsMayExceedTheirRange) {
  expectParsed(kTC30, "0:90:00", 90 * 30, 30);         // 90 s
  expectParsed(kTC30, "0:61:00:00", 61 * 60 * 30, 30);  // 61 min
  expectParsed(kTC30, "1:0:75:0", (3600 + 75) * 30, 30);
}

TEST(TimecodeTest, OverflowingTextGivesNoValue) {
  expectRejected(kTC30, "99999999999999:00:00:00");       // hours × 108000 overflows
  expectRejected(kTC30, "9223372036854775807:0");         // seconds × 30 overflows
  expectRejected(kTC30, "0:0:9223372036854775807:0");
  // The frame count fits, but × 1001 for the tick count does not.
  // 4e14 s is 1.2e16 frames, and 1.2e16 × 1001 ticks exceed 2^63.
  expectRejected(kTC2997, "0:0:400000000000000:0");
  // At 30 fps the same frame count is the tick count, which fits.
  expectParsed(kTC30, "0:0:400000000000000:0", 12000000000000000, 30);
}

TEST(TimecodeTest, StringAndParseRoundTripAtEveryStandardRate) {
  for (const FrameRate& rate : FrameRate::standardRates) {
    SCOPED_TRACE(rate.displayName());
    const Timecode tc{rate};
    for (std::int64_t n : {std::int64_t{0}, std::int64_t{1}, std::int64_t{23}, std::int64_t{29},
                           std::int64_t{59}, std::int64_t{1799}, std::int64_t{1800},
                           std::int64_t{17982}, std::int64_t{107892}, std::int64_t{215999},
                           std::int64_t{5184000}, std::int64_t{99999999}}) {
      const OVTime t = rate.timeForFrame(n);
      const std::string text = tc.stringFor(t);
      const std::optional<OVTime> back = tc.timeFrom(text);
      ASSERT_TRUE(back.has_value()) << text;
      EXPECT_EQ(back->value, t.value) << text;
      EXPECT_EQ(back->timescale, t.timescale) << text;
      const std::optional<OVTime> fromShort = tc.timeFrom(tc.shortStringFor(t));
      ASSERT_TRUE(fromShort.has_value()) << tc.shortStringFor(t);
      EXPECT_EQ(fromShort->value, t.value) << tc.shortStringFor(t);
    }
  }
}

}  // namespace
}  // namespace orvane::core
