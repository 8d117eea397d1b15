#include "assistant/ai_number_text.hpp"

#include <charconv>
#include <cmath>
#include <cstdint>

namespace orvane::assistant {

std::string decimalText(double v) {
  if (std::isnan(v)) return "nan";
  if (std::isinf(v)) return v < 0 ? "-inf" : "inf";
  // Plain digits in the everyday range; an exponent for the very small and
  // the very large (past 2^54), as the model's training text prints them.
  const double magnitude = std::fabs(v);
  const bool exponential = magnitude != 0 && (magnitude < 1e-4 || magnitude > 0x1.0p54);
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, v,
                                    exponential ? std::chars_format::scientific : std::chars_format::fixed);
  std::string text(buffer, result.ptr);
  if (!exponential && text.find('.') == std::string::npos) text += ".0";
  return text;
}

std::string integerText(double v) {
  if (std::isnan(v)) return "0";
  constexpr double kLimit = 9223372036854775807.0;
  if (v >= kLimit) return std::to_string(INT64_MAX);
  if (v <= -kLimit) return std::to_string(INT64_MIN);
  return std::to_string(static_cast<std::int64_t>(v));
}

}  // namespace orvane::assistant
