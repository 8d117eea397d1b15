#pragma once
// Rounding and checked integer arithmetic shared by the whole model. Rounding
// to an integer is to nearest with halves away from zero throughout.

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "core/fatal.hpp"

namespace orvane::core {

// Nearest integer value, halves away from zero (2.5 -> 3, -2.5 -> -3).
inline double roundHalfAway(double v) { return std::round(v); }

// A float as a signed 64-bit integer; a value that is not finite or falls
// outside the range is a programmer error.
inline std::int64_t checkedInt64(double v) {
  // 2^63 is exactly representable; anything at or above it does not fit.
  constexpr double kLimit = 9223372036854775808.0;
  if (!std::isfinite(v) || v >= kLimit || v < -kLimit) fatalError(kNumberNotRepresentable);
  return static_cast<std::int64_t>(v);
}

inline std::int32_t checkedInt32(double v) {
  if (!std::isfinite(v) || v > static_cast<double>(std::numeric_limits<std::int32_t>::max()) ||
      v < static_cast<double>(std::numeric_limits<std::int32_t>::min())) {
    fatalError(kNumberNotRepresentable32);
  }
  return static_cast<std::int32_t>(v);
}

// roundHalfAway then checkedInt64.
inline std::int64_t roundedInt64(double v) { return checkedInt64(roundHalfAway(v)); }

inline std::int64_t checkedAdd(std::int64_t a, std::int64_t b) {
  std::int64_t r;
  if (__builtin_add_overflow(a, b, &r)) fatalError(kIntegerOverflow);
  return r;
}

inline std::int64_t checkedSub(std::int64_t a, std::int64_t b) {
  std::int64_t r;
  if (__builtin_sub_overflow(a, b, &r)) fatalError(kIntegerOverflow);
  return r;
}

inline std::int64_t checkedMul(std::int64_t a, std::int64_t b) {
  std::int64_t r;
  if (__builtin_mul_overflow(a, b, &r)) fatalError(kIntegerOverflow);
  return r;
}

// Text of a number for people: whole numbers without a decimal point
// ("1920"), others in their shortest exact form ("44100.5").
inline std::string numberText(double v) {
  if (std::isfinite(v) && v == std::trunc(v) && std::fabs(v) < 1e15) {
    return std::to_string(static_cast<std::int64_t>(v));
  }
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, v);
  return std::string(buffer, result.ptr);
}

}  // namespace orvane::core
