// Timestamps as ISO 8601 text: writing in UTC with milliseconds (expanded
// years outside 0000-9999), reading with or without a fraction and with
// offsets, and rejecting everything else.

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

TEST(TimestampTest, WritesUtcWithMillisecondsAndExpandedYears) {
  struct Row { std::int64_t millis; const char* text; };
  const Row rows[] = {
      {0, "1970-01-01T00:00:00.000Z"},    {1700000000123, "2023-11-14T22:13:20.123Z"},
      {-1, "1969-12-31T23:59:59.999Z"},   {951825600007, "2000-02-29T12:00:00.007Z"},
      {-62135596800000, "0001-01-01T00:00:00.000Z"},
      {-62167219200000, "0000-01-01T00:00:00.000Z"},
      {253402300799999, "9999-12-31T23:59:59.999Z"},
      // Outside 0000-9999: expanded form with a sign.
      {253402300800000, "+10000-01-01T00:00:00.000Z"},
      {-62167219200001, "-0001-12-31T23:59:59.999Z"},
  };
  for (const Row& r : rows) EXPECT_EQ(formatISO8601(at(r.millis)), r.text) << r.millis;
  // The ends of the range still give a date rather than garbage.
  const std::string latest = formatISO8601(Timestamp::max());
  EXPECT_TRUE(latest.starts_with('+') && latest.ends_with(".807Z")) << latest;
  const std::string earliest = formatISO8601(Timestamp::min());
  EXPECT_TRUE(earliest.starts_with('-') && earliest.ends_with(".192Z")) << earliest;
}

TEST(TimestampTest, ReadsFractionsOffsetsLeapDaysAndLeapSeconds) {
  struct Row { const char* text; std::int64_t millis; };
  const Row rows[] = {
      {"2026-01-02T03:04:05Z", 1767323045000},
      {"2026-01-02t03:04:05z", 1767323045000},
      // Fractions are kept to the millisecond and the rest is cut off.
      {"2026-01-02T03:04:05.678Z", 1767323045678},
      {"2026-01-02T03:04:05.6Z", 1767323045600},
      {"2026-01-02T03:04:05.06Z", 1767323045060},
      {"2026-01-02T03:04:05.6789999Z", 1767323045678},
      {"2026-01-02T03:04:05.999999999999999999999Z", 1767323045999},
      {"1969-12-31T23:59:59.25Z", -750},
      // Offsets are taken away: all of these are 2026-01-02T01:04:05Z.
      {"2026-01-02T03:04:05+02:00", 1767315845000},
      {"2026-01-01T20:34:05-04:30", 1767315845000},
      {"2026-01-02T01:04:05-00:00", 1767315845000},
      {"2026-01-02T14:49:05.5+13:45", 1767315845500},
      // Across year and leap-day boundaries.
      {"2025-12-31T23:30:00-01:00", 1767227400000},   // 2026-01-01T00:30Z
      {"2024-03-01T00:15:00+00:30", 1709250300000},   // 2024-02-29T23:45Z
      {"0000-01-01T00:00:00+23:59", -62167305540000},  // -0001-12-31T00:01Z
      {"2000-02-29T00:00:00Z", 951782400000},          // divisible by 400
      // A leap second is the first second of the next minute.
      {"2016-12-31T23:59:60Z", 1483228800000},
      {"2016-12-31T23:59:60.5Z", 1483228800500},
  };
  for (const Row& r : rows) {
    const auto t = parseISO8601(r.text);
    ASSERT_TRUE(t.has_value()) << r.text;
    EXPECT_EQ(t->time_since_epoch().count(), r.millis) << r.text;
  }
}

TEST(TimestampTest, RejectsImpossibleDatesAndOtherText) {
  const char* const rejected[] = {
      // Days the month lacks (1900 and 2023 are not leap years), fields out of range.
      "2023-02-29T00:00:00Z", "1900-02-29T00:00:00Z", "2026-04-31T00:00:00Z",
      "2026-00-10T00:00:00Z", "2026-13-01T00:00:00Z", "2026-01-00T00:00:00Z",
      "2026-01-02T24:00:00Z", "2026-01-02T03:60:00Z", "2026-01-02T03:04:61Z",
      "2026-01-02T03:04:05+24:00", "2026-01-02T03:04:05+05:60",
      // Missing parts: all, time, zone, seconds, fraction digits.
      "", "2026-01-02", "2026-01-02T03:04:05", "2026-01-02T03:04:05.678",
      "2026-01-02T03:04Z", "2026-01-02T03:04:05.Z",
      // Other shapes: comma, blanks, one digit, signed year, basic format, zones.
      "2026-01-02T03:04:05,678Z", "2026-01-02T03:04:05Z ", " 2026-01-02T03:04:05Z",
      "2026-01-02 03:04:05Z", "2026-1-02T03:04:05Z", "2026-01-02T3:04:05Z",
      "+2026-01-02T03:04:05Z", "20260102T030405Z", "2026-01-02T03:04:05+0200",
      "2026-01-02T03:04:05+02", "2026-01-02T03:04:05+02:00:00", "2026-01-02T03:04:05UTC",
      "2026-0a-02T03:04:05Z",
  };
  for (const char* text : rejected) EXPECT_FALSE(parseISO8601(text).has_value()) << '"' << text << '"';
}

TEST(TimestampTest, WrittenTextReadsBackToTheSameInstant) {
  std::mt19937_64 engine(2026);
  // Any millisecond of the years 0000 to 9999.
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
  EXPECT_LE(std::chrono::floor<milliseconds>(before), now);
  EXPECT_LE(now, std::chrono::system_clock::now());
}

}  // namespace
}  // namespace orvane::core
