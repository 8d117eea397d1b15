#include "core/log.hpp"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>

namespace orvane::core {
namespace {

std::mutex& sinkMutex() {
  static std::mutex m;
  return m;
}

LogSink& currentSink() {
  static LogSink sink;
  return sink;
}

bool debugEnabled() {
  static const bool enabled = [] {
    const char* v = std::getenv("ORVANE_LOG");
    return v != nullptr && std::strcmp(v, "debug") == 0;
  }();
  return enabled;
}

}  // namespace

void logLine(LogLevel level, std::string_view category, std::string_view text) {
  std::lock_guard lock(sinkMutex());
  if (currentSink()) {
    currentSink()(level, category, text);
    return;
  }
  if (level == LogLevel::debug && !debugEnabled()) return;
  std::string line = "orvane[" + std::string(category) + "]: " + std::string(text) + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
}

LogSink setLogSink(LogSink sink) {
  std::lock_guard lock(sinkMutex());
  LogSink previous = std::move(currentSink());
  currentSink() = std::move(sink);
  return previous;
}

}  // namespace orvane::core
