#pragma once
// Small helpers shared by the image engine tests.

#include <gtest/gtest.h>

#include <functional>

#include "render/image.hpp"

namespace orvane::render::testing_support {

// A picture of rect whose pixel (x, y) is value(x, y).
inline Image makeImage(const PixelRect& rect, const std::function<Rgba(int, int)>& value) {
  auto canvas = Canvas::make(rect);
  EXPECT_TRUE(canvas.has_value());
  if (!canvas) return {};
  for (int y = rect.y; y < rect.maxY(); ++y) {
    for (int x = rect.x; x < rect.maxX(); ++x) canvas->row(y)[x - rect.x] = value(x, y);
  }
  return std::move(*canvas).image();
}

inline Image solid(const PixelRect& rect, Rgba colour) {
  return makeImage(rect, [colour](int, int) { return colour; });
}

// Opaque, and different at every pixel, so that a pixel read from the wrong
// place shows.
inline Rgba positionColour(int x, int y) {
  return {static_cast<float>(x) / 64.0f, static_cast<float>(y) / 64.0f, 0.5f, 1.0f};
}

inline void expectPixelNear(const Rgba& actual, const Rgba& expected, float tolerance, const char* what = "") {
  EXPECT_NEAR(actual.r, expected.r, tolerance) << what;
  EXPECT_NEAR(actual.g, expected.g, tolerance) << what;
  EXPECT_NEAR(actual.b, expected.b, tolerance) << what;
  EXPECT_NEAR(actual.a, expected.a, tolerance) << what;
}

}  // namespace orvane::render::testing_support
