#include "core/timecode.hpp"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <vector>

#include "core/numeric.hpp"

namespace orvane::core {

namespace {

std::string_view trimBlanks(std::string_view s) {
  // Blanks and tabs only: vertical tab and form feed break lines, so like
  // newlines they are not trimmed.
  constexpr std::string_view kBlanks = " \t";
  const auto first = s.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  const auto last = s.find_last_not_of(kBlanks);
  return s.substr(first, last - first + 1);
}

std::optional<std::int64_t> parseInt64(std::string_view s) {
  // One leading sign, like the platform parser: "+5" reads 5, "+-5" nothing.
  if (!s.empty() && s.front() == '+') {
    s.remove_prefix(1);
    if (!s.empty() && s.front() == '-') return std::nullopt;
  }
  std::int64_t v = 0;
  const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
  if (ec != std::errc() || end != s.data() + s.size() || s.empty()) return std::nullopt;
  return v;
}

}  // namespace

std::int64_t Timecode::nominalFPS() const { return roundedInt64(frameRate.fps()); }

std::string Timecode::stringFor(const OVTime& t) const {
  const std::int64_t total = std::max<std::int64_t>(0, frameRate.frameIndexAt(t));
  const std::int64_t fps = std::max<std::int64_t>(1, nominalFPS());
  const std::int64_t frames = total % fps;
  const std::int64_t allSeconds = total / fps;
  char buffer[96];
  std::snprintf(buffer, sizeof buffer, "%02lld:%02lld:%02lld:%02lld",
                static_cast<long long>(allSeconds / 3600),
                static_cast<long long>((allSeconds / 60) % 60),
                static_cast<long long>(allSeconds % 60), static_cast<long long>(frames));
  return buffer;
}

std::string Timecode::shortStringFor(const OVTime& t) const {
  std::string s = stringFor(t);
  if (s.starts_with("00:")) s.erase(0, 3);
  return s;
}

std::optional<OVTime> Timecode::timeFrom(std::string_view text) const {
  std::vector<std::int64_t> fields;
  std::size_t pos = 0;
  while (pos <= text.size()) {
    const std::size_t colon = std::min(text.find(':', pos), text.size());
    const std::string_view piece = text.substr(pos, colon - pos);
    pos = colon + 1;
    if (piece.empty()) continue;
    const auto value = parseInt64(trimBlanks(piece));
    if (!value) return std::nullopt;
    fields.push_back(*value);
  }
  if (fields.size() < 2 || fields.size() > 4) return std::nullopt;
  fields.insert(fields.begin(), 4 - fields.size(), 0);
  const std::int64_t fps = std::max<std::int64_t>(1, nominalFPS());
  if (fields[3] >= fps) return std::nullopt;
  // Typed text is user input: an overflow means no value, not a stop.
  std::int64_t total = 0;
  const bool overflow = __builtin_mul_overflow(fields[0], 60, &total) ||
                        __builtin_add_overflow(total, fields[1], &total) ||
                        __builtin_mul_overflow(total, 60, &total) ||
                        __builtin_add_overflow(total, fields[2], &total) ||
                        __builtin_mul_overflow(total, fps, &total) ||
                        __builtin_add_overflow(total, fields[3], &total);
  std::int64_t ticks = 0;
  if (overflow || __builtin_mul_overflow(total, frameRate.denominator, &ticks)) return std::nullopt;
  return frameRate.timeForFrame(total);
}

}  // namespace orvane::core
