#include "core/ov_time.hpp"

#include <cstdio>

#include "core/fatal.hpp"
#include "core/numeric.hpp"

namespace orvane::core {

namespace {

// The tick count of t at the target timescale: (value × target) ÷ timescale
// in 64-bit floats, in that order, rounded half away from zero.
std::int64_t ticksAt(const OVTime& t, std::int32_t target) {
  if (target == t.timescale) return t.value;
  // Up to a whole multiple of the timescale (600000 over 30, say) the product
  // is an integer; below 2^53 the float path below is exact, so the integer
  // one gives the same ticks without the float division and rounding.
  if (target > t.timescale && target % t.timescale == 0) {
    const std::int64_t factor = target / t.timescale;
    constexpr std::int64_t kExactLimit = std::int64_t{1} << 53;
    if (t.value < kExactLimit / factor && t.value > -kExactLimit / factor) return t.value * factor;
  }
  const double scaled =
      static_cast<double>(t.value) * static_cast<double>(target) / static_cast<double>(t.timescale);
  return roundedInt64(scaled);
}

}  // namespace

OVTime::OVTime(std::int64_t value, std::int32_t timescale) : value(value), timescale(timescale) {
  if (timescale <= 0) fatalError(kTimescaleMustBePositive);
}

OVTime OVTime::fromSeconds(double seconds, std::int32_t timescale) {
  if (timescale <= 0) fatalError(kTimescaleMustBePositive);
  return OVTime(roundedInt64(seconds * static_cast<double>(timescale)), timescale);
}

OVTime OVTime::convertedTo(std::int32_t target) const {
  if (target <= 0) fatalError(kTimescaleMustBePositive);
  if (target == timescale) return *this;
  return OVTime(ticksAt(*this, target), target);
}

OVTime OVTime::clamp(const OVTime& t, const OVTime& min, const OVTime& max) {
  if (t < min) return min;
  if (t > max) return max;
  return t;
}

std::string OVTime::description() const {
  char buffer[96];
  std::snprintf(buffer, sizeof buffer, "%lld/%d (%.3fs)", static_cast<long long>(value), timescale,
                seconds());
  return buffer;
}

OVTime operator+(const OVTime& a, const OVTime& b) {
  const std::int32_t ts = OVTime::commonTimescale(a, b);
  return OVTime(checkedAdd(ticksAt(a, ts), ticksAt(b, ts)), ts);
}

OVTime operator-(const OVTime& a, const OVTime& b) {
  const std::int32_t ts = OVTime::commonTimescale(a, b);
  return OVTime(checkedSub(ticksAt(a, ts), ticksAt(b, ts)), ts);
}

OVTime operator*(const OVTime& t, double factor) {
  return OVTime(roundedInt64(static_cast<double>(t.value) * factor), t.timescale);
}

bool operator==(const OVTime& a, const OVTime& b) {
  if (a.timescale == b.timescale) return a.value == b.value;
  const std::int32_t ts = OVTime::commonTimescale(a, b);
  return ticksAt(a, ts) == ticksAt(b, ts);
}

std::strong_ordering operator<=>(const OVTime& a, const OVTime& b) {
  if (a.timescale == b.timescale) return a.value <=> b.value;
  const std::int32_t ts = OVTime::commonTimescale(a, b);
  return ticksAt(a, ts) <=> ticksAt(b, ts);
}

std::size_t hashValue(const OVTime& t) {
  // Hashing never stops the program: a time too large for the default
  // timescale (only absurd values read from a file) hashes its float form.
  const double scaled = static_cast<double>(t.value) * OVTime::defaultTimescale / t.timescale;
  const double rounded = roundHalfAway(scaled);
  if (rounded >= 9223372036854775808.0 || rounded < -9223372036854775808.0) return hashValue(rounded);
  return std::hash<std::int64_t>{}(ticksAt(t, OVTime::defaultTimescale));
}

std::optional<OVTimeRange> OVTimeRange::intersection(const OVTimeRange& other) const {
  const OVTime s = start > other.start ? start : other.start;
  const OVTime endA = end();
  const OVTime endB = other.end();
  const OVTime e = endA < endB ? endA : endB;
  if (s < e) return OVTimeRange::fromStartEnd(s, e);
  return std::nullopt;
}

}  // namespace orvane::core
