#pragma once
// One pixel of the image engine: red, green, blue and alpha as 32-bit floats,
// with the colour premultiplied by alpha. Values are not clamped: the working
// space is floating point, and only the 8-bit output clamps. Plain value.

#include "core/geometry.hpp"

namespace orvane::render {

struct alignas(16) Rgba {
  float r = 0;
  float g = 0;
  float b = 0;
  float a = 0;

  friend constexpr bool operator==(const Rgba&, const Rgba&) = default;
};

// A model colour (straight alpha) as a premultiplied pixel.
constexpr Rgba premultiplied(const core::OVColor& c) {
  const auto a = static_cast<float>(c.alpha);
  return {static_cast<float>(c.red) * a, static_cast<float>(c.green) * a, static_cast<float>(c.blue) * a, a};
}

// A pixel back as straight colour; a transparent pixel is transparent black.
constexpr core::OVColor unpremultiplied(const Rgba& p) {
  if (p.a == 0) return core::OVColor::clear;
  return {p.r / p.a, p.g / p.a, p.b / p.a, p.a};
}

}  // namespace orvane::render
