#include "core/uuid.hpp"

#include <random>

namespace orvane::core {

namespace {

std::mt19937_64& generator() {
  thread_local std::mt19937_64 engine = [] {
    std::random_device device;
    std::seed_seq seed{device(), device(), device(), device(), device(), device()};
    return std::mt19937_64(seed);
  }();
  return engine;
}

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

constexpr bool isDashPosition(std::size_t i) { return i == 8 || i == 13 || i == 18 || i == 23; }

}  // namespace

Uuid Uuid::make() {
  auto& engine = generator();
  Uuid u{engine(), engine()};
  u.high = (u.high & ~0xF000ULL) | 0x4000ULL;                // version 4
  u.low = (u.low & 0x3FFFFFFFFFFFFFFFULL) | (1ULL << 63);  // RFC 4122 variant
  return u;
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
  if (text.size() != 36) return std::nullopt;
  Uuid u;
  int nibbles = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (isDashPosition(i)) {
      if (text[i] != '-') return std::nullopt;
      continue;
    }
    const int d = hexDigit(text[i]);
    if (d < 0) return std::nullopt;
    std::uint64_t& half = nibbles < 16 ? u.high : u.low;
    half = (half << 4) | static_cast<std::uint64_t>(d);
    ++nibbles;
  }
  return u;
}

std::string Uuid::text() const {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string out(36, '-');
  int nibble = 0;
  for (std::size_t i = 0; i < out.size(); ++i) {
    if (isDashPosition(i)) continue;
    const std::uint64_t half = nibble < 16 ? high : low;
    const int shift = 60 - 4 * (nibble % 16);
    out[i] = kDigits[(half >> shift) & 0xF];
    ++nibble;
  }
  return out;
}

}  // namespace orvane::core
