#include "core/geometry.hpp"

#include <charconv>
#include <cstdint>
#include <cstdio>

#include "core/numeric.hpp"

namespace orvane::core {

std::optional<OVColor> OVColor::fromHex(std::string_view text) {
  constexpr std::string_view kWhitespace = " \t\n\r\v\f";
  const auto first = text.find_first_not_of(kWhitespace);
  if (first == std::string_view::npos) return std::nullopt;
  text = text.substr(first, text.find_last_not_of(kWhitespace) - first + 1);
  if (text.starts_with('#')) text.remove_prefix(1);
  if (text.size() != 6) return std::nullopt;
  std::uint32_t rgb = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), rgb, 16);
  if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return OVColor{((rgb >> 16) & 0xFF) / 255.0, ((rgb >> 8) & 0xFF) / 255.0, (rgb & 0xFF) / 255.0, 1};
}

std::string OVColor::hexString() const {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%02llX%02llX%02llX",
                static_cast<unsigned long long>(roundedInt64(red * 255)),
                static_cast<unsigned long long>(roundedInt64(green * 255)),
                static_cast<unsigned long long>(roundedInt64(blue * 255)));
  return buffer;
}

}  // namespace orvane::core
