#pragma once
// Shared by the effect tests: a colourful test card, and running one effect
// by id with some of its values.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>

#include "core/effect_catalog.hpp"
#include "render/effects/effect_stack.hpp"
#include "tests/render/render_test_support.hpp"

namespace orvane::render::testing_support {

// 192 × 128 at the origin. The left 144 columns are opaque: eight colour
// bars on top (white, yellow, cyan, green, magenta, red, blue, black), a
// grey ramp below them, and at the bottom a red-to-blue gradient holding a
// square of the chroma key's default green. The right 48 columns are
// transparent but for an orange disc with a soft edge.
inline constexpr PixelRect kCardRect{0, 0, 192, 128};

inline Rgba testCardPixel(int x, int y) {
  if (x >= 144) {
    const double d = std::hypot(x + 0.5 - 168, y + 0.5 - 64);
    const auto a = static_cast<float>(std::clamp(20.5 - d, 0.0, 1.0) * 0.9 + std::clamp(22.5 - d, 0.0, 2.0) * 0.05);
    return {1.0f * a, 0.5f * a, 0.1f * a, a};
  }
  if (y >= 85) {
    static constexpr Rgba bars[8] = {{1, 1, 1, 1}, {1, 1, 0, 1}, {0, 1, 1, 1}, {0, 1, 0, 1},
                                     {1, 0, 1, 1}, {1, 0, 0, 1}, {0, 0, 1, 1}, {0, 0, 0, 1}};
    return bars[x / 18];
  }
  if (y >= 64) {
    const float v = static_cast<float>(x) / 143.0f;
    return {v, v, v, 1};
  }
  if (x >= 96 && x < 128 && y >= 12 && y < 44) return {0.1f, 0.8f, 0.2f, 1};
  return {static_cast<float>(x) / 143.0f, 0.3f, static_cast<float>(y) / 63.0f, 1};
}

inline const Image& testCard() {
  static const Image card = makeImage(kCardRect, testCardPixel);
  return card;
}

// A number, flag or colour value, as the catalog stores them.
inline core::PropertyValue num(double v) { return core::PropertyValue::double_(v); }
inline core::PropertyValue flag(bool v) { return core::PropertyValue::bool_(v); }
inline core::PropertyValue rgb(double r, double g, double b, double a = 1) {
  return core::PropertyValue::color({r, g, b, a});
}

// The effect's kernel over image with values over its defaults.
inline Image runEffect(const std::string& id, const Image& image,
                       const std::map<std::string, core::PropertyValue>& values = {}, double renderScale = 1) {
  const core::EffectDescriptor* descriptor = core::EffectCatalog::descriptorFor(id);
  const EffectKernel kernel = effectKernel(id);
  EXPECT_TRUE(descriptor != nullptr && kernel != nullptr) << id;
  if (descriptor == nullptr || kernel == nullptr) return image;
  EffectValues all;
  for (const auto& p : descriptor->parameters) all.emplace(p.id, p.defaultValue);
  for (const auto& [id_, v] : values) all.insert_or_assign(id_, v);
  EffectRenderContext context;
  context.compositionSize = {1920, 1080};
  context.renderScale = renderScale;
  return kernel(image, all, context, WorkerPool::shared());
}

// Whether two pictures have the same extent and every pixel within tolerance.
inline ::testing::AssertionResult samePicture(const Image& a, const Image& b, float tolerance = 0) {
  if (a.extent() != b.extent()) return ::testing::AssertionFailure() << "extents differ";
  const PixelRect e = a.extent();
  for (int y = e.y; y < e.maxY(); ++y) {
    for (int x = e.x; x < e.maxX(); ++x) {
      const Rgba p = a.pixelAt(x, y), q = b.pixelAt(x, y);
      if (std::fabs(p.r - q.r) > tolerance || std::fabs(p.g - q.g) > tolerance || std::fabs(p.b - q.b) > tolerance ||
          std::fabs(p.a - q.a) > tolerance) {
        return ::testing::AssertionFailure() << "pixel (" << x << ", " << y << ") differs: (" << p.r << ", " << p.g
                                             << ", " << p.b << ", " << p.a << ") against (" << q.r << ", " << q.g
                                             << ", " << q.b << ", " << q.a << ")";
      }
    }
  }
  return ::testing::AssertionSuccess();
}

}  // namespace orvane::render::testing_support
