#pragma once
// A 128-bit universally unique identifier. Fresh ones are random (version 4);
// the text form is upper-case 8-4-4-4-12 hexadecimal. A plain value; `make`
// may be called from any thread.

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace orvane::core {

struct Uuid {
  std::uint64_t high = 0;
  std::uint64_t low = 0;

  // A fresh random identifier.
  static Uuid make();
  // Reads the 8-4-4-4-12 form in either case; anything else yields no value.
  static std::optional<Uuid> parse(std::string_view text);

  bool isNil() const { return high == 0 && low == 0; }
  std::string text() const;

  friend bool operator==(const Uuid&, const Uuid&) = default;
  friend auto operator<=>(const Uuid&, const Uuid&) = default;
};

inline std::size_t hashValue(const Uuid& u) {
  return std::hash<std::uint64_t>{}(u.high ^ (u.low * 0x9e3779b97f4a7c15ULL));
}

}  // namespace orvane::core

template <>
struct std::hash<orvane::core::Uuid> {
  std::size_t operator()(const orvane::core::Uuid& u) const { return orvane::core::hashValue(u); }
};
