#pragma once
// Points, sizes and colours of the model: 64-bit float components. Colours
// are sRGB, non-premultiplied and unclamped. Plain values.

#include <cmath>
#include <optional>
#include <string>
#include <string_view>

#include "core/hashing.hpp"

namespace orvane::core {

struct OVPoint {
  double x = 0;
  double y = 0;

  static const OVPoint zero;

  double length() const { return std::sqrt(x * x + y * y); }
  OVPoint scaledBy(double factor) const { return {x * factor, y * factor}; }

  friend OVPoint operator+(const OVPoint& a, const OVPoint& b) { return {a.x + b.x, a.y + b.y}; }
  friend OVPoint operator-(const OVPoint& a, const OVPoint& b) { return {a.x - b.x, a.y - b.y}; }
  friend OVPoint operator*(const OVPoint& p, double f) { return {p.x * f, p.y * f}; }
  friend bool operator==(const OVPoint&, const OVPoint&) = default;
};
inline constexpr OVPoint OVPoint::zero{};
inline std::size_t hashValue(const OVPoint& p) { return hashAll(p.x, p.y); }

struct OVSize {
  double width = 0;
  double height = 0;

  static const OVSize zero;

  // width / height, or 0 when the height is 0.
  double aspectRatio() const { return height == 0 ? 0 : width / height; }

  friend bool operator==(const OVSize&, const OVSize&) = default;
};
inline constexpr OVSize OVSize::zero{};
inline std::size_t hashValue(const OVSize& s) { return hashAll(s.width, s.height); }

// An axis-aligned rectangle: origin (x, y) at its lower left in the y-up
// space, then its size.
struct OVRect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;

  double maxX() const { return x + width; }
  double maxY() const { return y + height; }
  bool isEmpty() const { return !(width > 0 && height > 0); }

  friend bool operator==(const OVRect&, const OVRect&) = default;
};

struct OVColor {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;

  static const OVColor black, white, clear, red_;

  // "#RRGGBB" or "RRGGBB" (surrounding whitespace ignored); 3 and 8 digit
  // forms and anything else yield no value. Alpha is 1.
  static std::optional<OVColor> fromHex(std::string_view text);
  // "RRGGBB" in upper case, each channel × 255 rounded, no alpha, no clamp.
  std::string hexString() const;
  OVColor withAlpha(double a) const { return {red, green, blue, a}; }

  friend bool operator==(const OVColor&, const OVColor&) = default;
};
inline constexpr OVColor OVColor::black{0, 0, 0, 1};
inline constexpr OVColor OVColor::white{1, 1, 1, 1};
inline constexpr OVColor OVColor::clear{0, 0, 0, 0};
// `red` names both a channel and a constant; the constant takes the underscore.
inline constexpr OVColor OVColor::red_{1, 0, 0, 1};
inline std::size_t hashValue(const OVColor& c) { return hashAll(c.red, c.green, c.blue, c.alpha); }

}  // namespace orvane::core
