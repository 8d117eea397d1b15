#include "core/timestamp.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <random>
#include <string>

namespace orvane::core {
namespace {

using std::chrono::milliseconds;

Timestamp at(std::int64_t millisSinceEpoch) { return Timestamp{milliseconds{millisSinceEpoch}}; }

// Milliseconds since 1970 of a parsed text, or a marker that it failed.
std::int64_t millisOf(const char* text) {
  const auto t = parseISO8601(text);
  return t ? t->time_since_epoch().count() : INT64_MIN;
}

TEST(TimestampTest, ReadsWholeSecondsAndWritesMilliseconds) {
  const auto t = parseISO8601("2026-01-02T03:04:05Z");
  ASSERT_TRUE(t.has_value());
  EXPECT_EQ(t->time_since_epoch().count(), 1767323045000);
  EXPECT_EQ(formatISO8601(*t), "2026-01-02T03:04:05.000Z");
}

TEST(TimestampTest, WritesKnownInstantsInUtc) {
  EXPECT_EQ(formatISO8601(at(0)), "1970-01-01T00:00:00.000Z");
  EXPECT_EQ(formatISO8601(at(1700000000123)), "2023-11-14T22:13:20.123Z");
  EXPECT_EQ(formatISO8601(at(1767323045678)), "2026-01-02T03:04:05.678Z");
  EXPECT_EQ(formatISO8601(at(951825600007)), "2000-02-29T12:00:00.007Z");
  EXPECT_EQ(formatISO8601(at(253402300799999)), "9999-12-31T23:59:59.999Z");
  EXPECT_EQ(formatISO8601(at(-62167219200000)), "0000-01-01T00:00:00.000Z");
}

TEST(TimestampTest, WritesInstantsBeforeTheEpochCountingBackwards) {
  EXPECT_EQ(formatISO8601(at(-1)), "1969-12-31T23:59:59.999Z");
  EXPECT_EQ(formatISO8601(at(-1000)), "1969-12-31T23:59:59.000Z");
  EXPECT_EQ(formatISO8601(at(-86400000)), "1969-12-31T00:00:00.000Z");
  EXPECT_EQ(formatISO8601(at(-62135596800000)), "0001-01-01T00:00:00.000Z");
}

TEST(TimestampTest, WritesYearsBeyondFourDigitsInExpandedForm) {
  EXPECT_EQ(formatISO8601(at(253402300800000)), "+10000-01-01T00:00:00.000Z");
  EXPECT_EQ(formatISO8601(at(-62167219200001)), "-0001-12-31T23:59:59.999Z");
  // The ends of the range still give a date rather than garbage.
  const std::string latest = formatISO8601(Timestamp::max());
  EXPECT_EQ(latest.front(), '+');
  EXPECT_EQ(latest.substr(latest.size() - 5), ".807Z");
  const std::string earliest = formatISO8601(Timestamp::min());
  EXPECT_EQ(earliest.front(), '-');
  EXPECT_EQ(earliest.substr(earliest.size() - 5), ".192Z");
}

TEST(TimestampTest, ReadsFractionsToTheMillisecondAndCutsTheRest) {
  EXPECT_EQ(millisOf("2026-01-02T03:04:05.678Z"), 1767323045678);
  EXPECT_EQ(millisOf("2026-01-02T03:04:05.6Z"), 1767323045600);
  EXPECT_EQ(millisOf("2026-01-02T03:04:05.06Z"), 1767323045060);
  EXPECT_EQ(millisOf("2026-01-02T03:04:05.000Z"), 1767323045000);
  EXPECT_EQ(millisOf("2026-01-02T03:04:05.6789999Z"), 1767323045678);
  EXPECT_EQ(millisOf("2026-01-02T03:04:05.999999999999999999999Z"), 1767323045999);
  EXPECT_EQ(millisOf("2026-01-02T03:04:05.0009Z"), 1767323045000);
  // Before the epoch the fraction still moves forward in time.
  EXPECT_EQ(millisOf("1969-12-31T23:59:59.25Z"), -750);
}

TEST(TimestampTest, TakesNumericOffsetsAwayToGiveUtc) {
  const std::int64_t utc = millisOf("2026-01-02T01:04:05Z");
  EXPECT_EQ(millisOf("2026-01-02T03:04:05+02:00"), utc);
  EXPECT_EQ(millisOf("2026-01-01T20:34:05-04:30"), utc);
  EXPECT_EQ(millisOf("2026-01-02T01:04:05+00:00"), utc);
  EXPECT_EQ(millisOf("2026-01-02T01:04:05-00:00"), utc);
  EXPECT_EQ(millisOf("2026-01-02T14:49:05.5+13:45"), utc + 500);
  // Offsets carry the instant across day, month and year boundaries.
  EXPECT_EQ(formatISO8601(*parseISO8601("2025-12-31T23:30:00-01:00")), "2026-01-01T00:30:00.000Z");
  EXPECT_EQ(formatISO8601(*parseISO8601("2024-03-01T00:15:00+00:30")), "2024-02-29T23:45:00.000Z");
  EXPECT_EQ(formatISO8601(*parseISO8601("0000-01-01T00:00:00+23:59")), "-0001-12-31T00:01:00.000Z");
}

TEST(TimestampTest, AcceptsLowerCaseSeparatorsAndLeapSeconds) {
  EXPECT_EQ(millisOf("2026-01-02t03:04:05z"), 1767323045000);
  EXPECT_EQ(formatISO8601(*parseISO8601("2016-12-31T23:59:60Z")), "2017-01-01T00:00:00.000Z");
  EXPECT_EQ(formatISO8601(*parseISO8601("2016-12-31T23:59:60.5Z")), "2017-01-01T00:00:00.500Z");
}

TEST(TimestampTest, KnowsMonthLengthsAndLeapYears) {
  EXPECT_NE(millisOf("2024-02-29T00:00:00Z"), INT64_MIN);
  EXPECT_NE(millisOf("2000-02-29T00:00:00Z"), INT64_MIN);  // divisible by 400
  EXPECT_EQ(millisOf("2023-02-29T00:00:00Z"), INT64_MIN);
  EXPECT_EQ(millisOf("1900-02-29T00:00:00Z"), INT64_MIN);  // divisible by 100 only
  EXPECT_EQ(millisOf("2026-02-30T00:00:00Z"), INT64_MIN);
  EXPECT_NE(millisOf("2026-01-31T00:00:00Z"), INT64_MIN);
  EXPECT_EQ(millisOf("2026-04-31T00:00:00Z"), INT64_MIN);
  EXPECT_EQ(millisOf("2026-06-31T00:00:00Z"), INT64_MIN);
  EXPECT_EQ(millisOf("2026-09-31T00:00:00Z"), INT64_MIN);
  EXPECT_EQ(millisOf("2026-11-31T00:00:00Z"), INT64_MIN);
  EXPECT_NE(millisOf("2026-12-31T00:00:00Z"), INT64_MIN);
}

TEST(TimestampTest, RejectsFieldsOutOfRange) {
  const char* const outOfRange[] = {
      "2026-00-10T00:00:00Z", "2026-13-01T00:00:00Z", "2026-01-00T00:00:00Z",
      "2026-01-32T00:00:00Z", "2026-01-02T24:00:00Z", "2026-01-02T03:60:00Z",
      "2026-01-02T03:04:61Z", "2026-01-02T03:04:99Z", "2026-01-02T03:04:05+24:00",
      "2026-01-02T03:04:05+05:60", "2026-01-02T03:04:05-99:00",
  };
  for (const char* text : outOfRange) {
    EXPECT_FALSE(parseISO8601(text).has_value()) << text;
  }
}

TEST(TimestampTest, RejectsTextThatIsNotAnInternetDateTime) {
  const char* const malformed[] = {
      "",
      "2026-01-02",                       // date only
      "2026-01-02T03:04:05",              // zone missing
      "2026-01-02T03:04Z",                // seconds missing
      "2026-01-02T03:04:05.Z",            // fraction without digits
      "2026-01-02T03:04:05,678Z",         // comma as decimal sign
      "2026-01-02T03:04:05ZZ",            // trailing garbage
      "2026-01-02T03:04:05Z ",            // trailing space
      " 2026-01-02T03:04:05Z",            // leading space
      "2026-01-02 03:04:05Z",             // space for T
      "2026-01-02X03:04:05Z",             // other separator
      "2026-1-02T03:04:05Z",              // one-digit month
      "26-01-02T03:04:05Z",               // two-digit year
      "+2026-01-02T03:04:05Z",            // signed year
      "20260102T030405Z",                 // basic format
      "2026-01-02T03:04:05+0200",         // offset without colon
      "2026-01-02T03:04:05+02",           // offset without minutes
      "2026-01-02T03:04:05+02:00:00",     // offset with seconds
      "2026-01-02T03:04:05UTC",           // zone name
      "2026-01-02T3:04:05Z",              // one-digit hour
      "2026-01-02T03:04:05.678",          // fraction, zone missing
      "2026-0a-02T03:04:05Z",             // letter in a number
      "2026-01-02T03:04:05.6789a",        // letter after the fraction
  };
  for (const char* text : malformed) {
    EXPECT_FALSE(parseISO8601(text).has_value()) << '"' << text << '"';
  }
}

TEST(TimestampTest, WrittenTextReadsBackToTheSameInstant) {
  std::mt19937_64 engine(2026);
  // Every millisecond of the years 0000 to 9999 can be written and read back.
  std::uniform_int_distribution<std::int64_t> millis(-62167219200000, 253402300799999);
  for (int i = 0; i < 5000; ++i) {
    const Timestamp t = at(millis(engine));
    const std::string text = formatISO8601(t);
    ASSERT_EQ(text.size(), 24u) << text;
    EXPECT_EQ(parseISO8601(text), t) << text;
  }
}

TEST(TimestampTest, NowIsTheSystemClockToTheMillisecond) {
  const auto before = std::chrono::system_clock::now();
  const Timestamp now = nowTimestamp();
  const auto after = std::chrono::system_clock::now();
  EXPECT_LE(std::chrono::floor<milliseconds>(before), now);
  EXPECT_LE(now, after);
  EXPECT_EQ(parseISO8601(formatISO8601(now)), now);
}

}  // namespace
}  // namespace orvane::core
