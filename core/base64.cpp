#include "core/base64.hpp"

#include <array>

namespace orvane::core {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr int kNotInAlphabet = -1;

constexpr std::array<int, 256> makeDecodeTable() {
  std::array<int, 256> table{};
  for (auto& entry : table) entry = kNotInAlphabet;
  for (std::size_t i = 0; i < kAlphabet.size(); ++i) {
    table[static_cast<unsigned char>(kAlphabet[i])] = static_cast<int>(i);
  }
  return table;
}

constexpr std::array<int, 256> kDecodeTable = makeDecodeTable();

}  // namespace

std::string base64Encode(const Bytes& bytes) {
  std::string out;
  out.reserve((bytes.size() + 2) / 3 * 4);
  std::size_t i = 0;
  for (; i + 3 <= bytes.size(); i += 3) {
    const std::uint32_t group = (std::uint32_t{bytes[i]} << 16) |
                                (std::uint32_t{bytes[i + 1]} << 8) | bytes[i + 2];
    out += kAlphabet[group >> 18];
    out += kAlphabet[(group >> 12) & 0x3F];
    out += kAlphabet[(group >> 6) & 0x3F];
    out += kAlphabet[group & 0x3F];
  }
  const std::size_t rest = bytes.size() - i;
  if (rest == 1) {
    const std::uint32_t group = std::uint32_t{bytes[i]} << 16;
    out += kAlphabet[group >> 18];
    out += kAlphabet[(group >> 12) & 0x3F];
    out += "==";
  } else if (rest == 2) {
    const std::uint32_t group = (std::uint32_t{bytes[i]} << 16) | (std::uint32_t{bytes[i + 1]} << 8);
    out += kAlphabet[group >> 18];
    out += kAlphabet[(group >> 12) & 0x3F];
    out += kAlphabet[(group >> 6) & 0x3F];
    out += '=';
  }
  return out;
}

std::optional<Bytes> base64Decode(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  std::size_t padding = 0;
  if (!text.empty() && text.back() == '=') padding = text[text.size() - 2] == '=' ? 2 : 1;

  Bytes out;
  out.reserve(text.size() / 4 * 3);
  for (std::size_t start = 0; start < text.size(); start += 4) {
    const bool lastGroup = start + 4 == text.size();
    const std::size_t dataChars = lastGroup ? 4 - padding : 4;
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 4; ++k) {
      int value = 0;  // padding characters stand for zero bits
      if (k < dataChars) {
        value = kDecodeTable[static_cast<unsigned char>(text[start + k])];
        if (value == kNotInAlphabet) return std::nullopt;  // also a '=' before the padding
      }
      group = (group << 6) | static_cast<std::uint32_t>(value);
    }
    out.push_back(static_cast<std::uint8_t>(group >> 16));
    if (dataChars > 2) out.push_back(static_cast<std::uint8_t>(group >> 8));
    if (dataChars > 3) out.push_back(static_cast<std::uint8_t>(group));
  }
  return out;
}

}  // namespace orvane::core
