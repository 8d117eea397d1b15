#pragma once
// Wall-clock instants as the program stores and shows them: creation and
// modification dates in project files, autosave manifests and logs. A
// Timestamp is a UTC time point with millisecond precision, written as an
// RFC 3339 (ISO 8601) date-time such as "2026-01-02T03:04:05.678Z".
// Plain values; every function here may be called from any thread.

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace orvane::core {

using Timestamp = std::chrono::sys_time<std::chrono::milliseconds>;

// The present moment from the system clock, truncated to whole milliseconds.
Timestamp nowTimestamp();

// "YYYY-MM-DDThh:mm:ss.fffZ": UTC, always three fraction digits. Years outside
// 0000-9999 take ISO 8601's expanded form with a sign ("+12345-...",
// "-0001-..."), which parseISO8601 does not read back.
std::string formatISO8601(Timestamp t);

// Reads an RFC 3339 date-time: "YYYY-MM-DDThh:mm:ss", optional fraction of
// any number of digits (kept to the millisecond, the rest cut off), then "Z"
// or a "+hh:mm"/"-hh:mm" offset, which is taken away to give UTC. "T" and
// "Z" may be lower case. A leap second (":60") counts as the first second of
// the next minute, as POSIX time has no room for it. Anything else, such as a
// day the month does not have, a missing zone or trailing text, yields no
// value.
std::optional<Timestamp> parseISO8601(std::string_view text);

}  // namespace orvane::core
