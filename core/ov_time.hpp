#pragma once
// Rational time: a signed 64-bit count of ticks over a positive 32-bit
// timescale, so that NTSC frame boundaries (1001/30000 s) are held exactly.
// Arithmetic and comparison work at the larger of two timescales, converting
// through 64-bit floats with rounding half away from zero. Plain values, safe
// on any thread.

#include <compare>
#include <cstdint>
#include <optional>
#include <string>

#include "core/hashing.hpp"

namespace orvane::core {

struct OVTime {
  static constexpr std::int32_t defaultTimescale = 600000;
  static const OVTime zero;

  std::int64_t value = 0;
  std::int32_t timescale = defaultTimescale;

  // Zero at the default timescale.
  constexpr OVTime() = default;
  // A timescale of zero or below stops the program ("timescale must be positive").
  OVTime(std::int64_t value, std::int32_t timescale);
  // seconds × timescale, rounded half away from zero.
  static OVTime fromSeconds(double seconds, std::int32_t timescale = defaultTimescale);

  double seconds() const { return static_cast<double>(value) / static_cast<double>(timescale); }
  bool isZero() const { return value == 0; }
  bool isPositive() const { return value > 0; }

  // The same time at another timescale (rounded); unchanged when equal.
  OVTime convertedTo(std::int32_t target) const;
  // The larger of the two timescales: deliberately not a common multiple.
  static std::int32_t commonTimescale(const OVTime& a, const OVTime& b) {
    return a.timescale > b.timescale ? a.timescale : b.timescale;
  }
  // min if t < min; else max if t > max; else t. min wins when bounds cross.
  static OVTime clamp(const OVTime& t, const OVTime& min, const OVTime& max);

  // "300000/600000 (0.500s)".
  std::string description() const;

  friend OVTime operator+(const OVTime& a, const OVTime& b);
  friend OVTime operator-(const OVTime& a, const OVTime& b);
  friend OVTime operator*(const OVTime& t, double factor);
  friend bool operator==(const OVTime& a, const OVTime& b);
  friend std::strong_ordering operator<=>(const OVTime& a, const OVTime& b);
  OVTime& operator+=(const OVTime& o) { return *this = *this + o; }
  OVTime& operator-=(const OVTime& o) { return *this = *this - o; }
};

inline constexpr OVTime OVTime::zero{};

// Equal times hash alike: the value is hashed at the default timescale.
std::size_t hashValue(const OVTime& t);

// A half-open span of time [start, start + duration).
struct OVTimeRange {
  static const OVTimeRange zero;

  OVTime start;
  OVTime duration;

  constexpr OVTimeRange() = default;
  OVTimeRange(OVTime start, OVTime duration) : start(start), duration(duration) {}
  static OVTimeRange fromStartEnd(const OVTime& start, const OVTime& end) {
    return {start, end - start};
  }

  OVTime end() const { return start + duration; }
  // A duration that is not positive is empty, negative ones included.
  bool isEmpty() const { return !duration.isPositive(); }
  bool contains(const OVTime& t) const { return t >= start && t < end(); }
  // Ranges that merely touch do not intersect.
  bool intersects(const OVTimeRange& other) const {
    return other.start < end() && start < other.end();
  }
  std::optional<OVTimeRange> intersection(const OVTimeRange& other) const;
  OVTime offsetOf(const OVTime& t) const { return t - start; }
  OVTimeRange shiftedBy(const OVTime& delta) const { return {start + delta, duration}; }

  friend bool operator==(const OVTimeRange&, const OVTimeRange&) = default;
};

inline constexpr OVTimeRange OVTimeRange::zero{};

inline std::size_t hashValue(const OVTimeRange& r) { return hashAll(r.start, r.duration); }

}  // namespace orvane::core

template <>
struct std::hash<orvane::core::OVTime> {
  std::size_t operator()(const orvane::core::OVTime& t) const { return orvane::core::hashValue(t); }
};
