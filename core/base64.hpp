#pragma once
// Binary data carried inside text, such as bytes embedded in JSON documents:
// Base64 of RFC 4648 with the standard alphabet ("A-Z a-z 0-9 + /") and '='
// padding. Pure functions; any thread.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::core {

using Bytes = std::vector<std::uint8_t>;

// Four characters for every three bytes, the last group padded with '='.
std::string base64Encode(const Bytes& bytes);

// The bytes of padded Base64 text. Text whose length is not a multiple of
// four, with a character outside the alphabet (white space included), or
// with '=' anywhere but as the last one or two characters yields no value.
// Unused low bits of the last character are ignored, as most encoders'
// output is read that way.
std::optional<Bytes> base64Decode(std::string_view text);

}  // namespace orvane::core
