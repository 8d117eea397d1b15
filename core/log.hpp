#pragma once
// The program's one diagnostic log. Lines go to stderr as
// "orvane[category]: text". Debug lines (the interaction trace and the like)
// are written only when the environment variable ORVANE_LOG is "debug", so a
// command-line run stays quiet. Tests may route lines elsewhere with
// setLogSink. Any thread may log; lines are written whole.

#include <functional>
#include <string_view>

namespace orvane::core {

enum class LogLevel { debug, info, error };

void logLine(LogLevel level, std::string_view category, std::string_view text);

inline void logDebug(std::string_view category, std::string_view text) {
  logLine(LogLevel::debug, category, text);
}
inline void logError(std::string_view category, std::string_view text) {
  logLine(LogLevel::error, category, text);
}

// Replaces where lines go (every level, debug included); an empty function
// restores stderr. Returns the previous sink.
using LogSink = std::function<void(LogLevel, std::string_view category, std::string_view text)>;
LogSink setLogSink(LogSink sink);

}  // namespace orvane::core
