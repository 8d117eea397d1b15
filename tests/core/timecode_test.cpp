// Timecode: non-drop-frame "HH:MM:SS:FF" at the nominal (rounded) rate, the
// short form, and parsing typed text back into a frame-aligned time.

#include "core/timecode.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

namespace orvane::core {
namespace {

const FrameRate kSlow(1, 3);  // 0.333 fps: nominal 0, counted as 1

TEST(TimecodeTest, StringShowsTheFrameAtOrBeforeTheTime) {
  struct Row { FrameRate rate; OVTime t; const char* text; };
  const Row rows[] = {
      {FrameRate::fps30, OVTime(111694, 30), "01:02:03:04"},     // 3723 s × 30 + 4
      {FrameRate::fps30, OVTime(3600 * 30, 30), "01:00:00:00"},  // exactly one hour
      {FrameRate::fps30, OVTime(999, 1000), "00:00:00:29"},      // 29.97 frames
      {FrameRate::fps30, OVTime(-5, 1), "00:00:00:00"},          // negative: zero
      // Hours never wrap.
      {FrameRate::fps30, OVTime(100 * 3600, 1), "100:00:00:00"},
      {FrameRate::fps25, OVTime(1000 * 3600 + 61, 1), "1000:01:01:00"},
      // 29.97 counts 30 nominal frames a second, without dropping numbers:
      // 1 s is frame 29, 60 s is frame 1798 (59 s 28 frames), frame 1800
      // reads one minute although it starts 60.06 s in.
      {FrameRate::fps29_97, OVTime(1, 1), "00:00:00:29"},
      {FrameRate::fps29_97, OVTime(60, 1), "00:00:59:28"},
      {FrameRate::fps29_97, OVTime(1800 * 1001, 30000), "00:01:00:00"},
      {FrameRate::fps29_97, OVTime(17982 * 1001, 30000), "00:09:59:12"},
      {FrameRate::fps59_94, OVTime(61 * 1001, 60000), "00:00:01:01"},
      {kSlow, OVTime(9, 1), "00:00:03:00"},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.rate.displayName() + " at " + r.t.description());
    EXPECT_EQ(Timecode{r.rate}.stringFor(r.t), r.text);
  }
}

TEST(TimecodeTest, ShortStringDropsOneLeadingZeroHour) {
  const Timecode tc{FrameRate::fps30};
  EXPECT_EQ(tc.shortStringFor(OVTime(1863, 30)), "01:02:03");  // 62 s × 30 + 3
  EXPECT_EQ(tc.shortStringFor(OVTime(111694, 30)), "01:02:03:04");
  EXPECT_EQ(Timecode{FrameRate::fps29_97}.shortStringFor(OVTime(-3600, 1)), "00:00:00");
}

TEST(TimecodeTest, ParsesTwoToFourPiecesRightAligned) {
  // Expected ticks at the rate's own timescale (its numerator).
  struct Row { FrameRate rate; const char* text; std::int64_t ticks; };
  const Row rows[] = {
      {FrameRate::fps30, "12:05", 12 * 30 + 5},
      {FrameRate::fps30, "1:02:03", 62 * 30 + 3},
      {FrameRate::fps30, "1:02:03:04", 111694},
      {FrameRate::fps29_97, "1:00", 30 * 1001},
      {FrameRate::fps23_976, "1:23", 47 * 1001},
      {kSlow, "1:00", 3},  // frame 1 starts 3 s in
      // Empty pieces are dropped.
      {FrameRate::fps30, "::5:1", 151}, {FrameRate::fps30, "5::1", 151},
      {FrameRate::fps30, "1::2::3::4", 111694},
      // Blanks and tabs around pieces are trimmed.
      {FrameRate::fps30, " 1 :\t2\t", 32},
      // Signs, fields beyond their range and the frames bound's edge.
      {FrameRate::fps30, "+5:+1", 151}, {FrameRate::fps30, "1:-2", 28},
      {FrameRate::fps29_97, "-1:00", -30 * 1001},
      {FrameRate::fps30, "0:90:00", 90 * 30},
      {FrameRate::fps30, "0:61:00:00", 61 * 60 * 30},
      {FrameRate::fps30, "0:29", 29},
      {FrameRate::fps29_97, "0:29", 29 * 1001},  // nominally 30 fps
      {FrameRate(25, 2), "0:12", 24},            // 12.5 fps is nominally 13
      // 1.2e16 frames fit as ticks at 30 fps (but not × 1001 at 29.97, below).
      {FrameRate::fps30, "0:0:400000000000000:0", 12000000000000000},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.text);
    const std::optional<OVTime> t = Timecode{r.rate}.timeFrom(r.text);
    ASSERT_TRUE(t.has_value());
    EXPECT_EQ(t->value, r.ticks);
    EXPECT_EQ(t->timescale, r.rate.numerator);
  }
}

TEST(TimecodeTest, RejectsMalformedOutOfBoundAndOverflowingText) {
  struct Row { FrameRate rate; const char* text; };
  const Row rows[] = {
      // Piece counts.
      {FrameRate::fps30, ""}, {FrameRate::fps30, "5"}, {FrameRate::fps30, ":5:"},
      {FrameRate::fps30, "1:2:3:4:5"},
      // Pieces that are not integers; a blank piece is not dropped.
      {FrameRate::fps30, "a:1"}, {FrameRate::fps30, "1.5:2"}, {FrameRate::fps30, "1:2x"},
      {FrameRate::fps30, "1: :2"}, {FrameRate::fps30, "1 2:3"}, {FrameRate::fps30, "-:1"},
      {FrameRate::fps30, "+-5:1"}, {FrameRate::fps30, "00:00:01;02"},
      // Line breaks are not trimmed.
      {FrameRate::fps30, "1\n:2"}, {FrameRate::fps30, "1:2\r"}, {FrameRate::fps30, "1\v:2"},
      // The frames piece must stay below the nominal rate.
      {FrameRate::fps30, "0:30"}, {FrameRate::fps25, "0:25"}, {FrameRate::fps29_97, "0:30"},
      {FrameRate::fps23_976, "0:24"}, {FrameRate(25, 2), "0:13"}, {kSlow, "0:1"},
      // Overflow of the piece, of hours × 108000, of seconds × 30, of frames × 1001.
      {FrameRate::fps30, "99999999999999999999:1"},
      {FrameRate::fps30, "99999999999999:00:00:00"},
      {FrameRate::fps30, "9223372036854775807:0"},
      {FrameRate::fps29_97, "0:0:400000000000000:0"},
  };
  for (const Row& r : rows) {
    const std::optional<OVTime> t = Timecode{r.rate}.timeFrom(r.text);
    EXPECT_FALSE(t.has_value()) << '"' << r.text << "\" gave " << t->description();
  }
}

TEST(TimecodeTest, StringAndShortStringParseBackAtEveryStandardRate) {
  for (const FrameRate& rate : FrameRate::standardRates) {
    SCOPED_TRACE(rate.displayName());
    const Timecode tc{rate};
    for (std::int64_t n : {0, 1, 29, 1799, 1800, 17982, 215999, 99999999}) {
      const OVTime t = rate.timeForFrame(n);
      for (const std::string& text : {tc.stringFor(t), tc.shortStringFor(t)}) {
        const std::optional<OVTime> back = tc.timeFrom(text);
        ASSERT_TRUE(back.has_value()) << text;
        EXPECT_EQ(back->value, t.value) << text;
        EXPECT_EQ(back->timescale, t.timescale) << text;
      }
    }
  }
}

}  // namespace
}  // namespace orvane::core
