#pragma once
// Programmer errors: a broken precondition stops the program at once with a
// fixed message on stderr. Any thread may call these.

#include <cstdint>
#include <string_view>

namespace orvane::core {

// Fixed messages of the preconditions that the model checks.
inline constexpr std::string_view kTimescaleMustBePositive = "timescale must be positive";
inline constexpr std::string_view kFrameRateMustBePositive = "frame rate must be positive";
inline constexpr std::string_view kNumberNotRepresentable =
    "number is not finite or out of range for a 64-bit integer";
inline constexpr std::string_view kNumberNotRepresentable32 =
    "number is not finite or out of range for a 32-bit integer";
inline constexpr std::string_view kIntegerOverflow = "integer overflow";

// Prints "Fatal error: <message>" to stderr and aborts.
[[noreturn]] void fatalError(std::string_view message);

}  // namespace orvane::core
