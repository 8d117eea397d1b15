// Compositing of known colour pairs against values worked out here from the
// published formulas of the blend filters (the PDF blend modes):
//   colour = s·(1 − αd) + d·(1 − αs) + αs·αd·B(Cb, Cs)   (s, d premultiplied;
//   alpha  = αs + αd − αs·αd                              Cs, Cb straight)

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "render/draw_layer.hpp"
#include "render/image_ops.hpp"
#include "tests/render/render_test_support.hpp"

namespace orvane::render {
namespace {

using core::OVBlendMode;
using testing_support::expectPixelNear;
using testing_support::solid;

struct Straight {
  float r, g, b, a;
  Rgba premultiplied() const { return {r * a, g * a, b * a, a}; }
};

using BlendFunction = std::function<float(float cb, float cs)>;

Rgba expectedBlend(const BlendFunction& B, Straight s, Straight d) {
  const auto channel = [&](float cs, float cb) {
    return cs * s.a * (1 - d.a) + cb * d.a * (1 - s.a) + s.a * d.a * B(cb, cs);
  };
  return {channel(s.r, d.r), channel(s.g, d.g), channel(s.b, d.b), s.a + d.a - s.a * d.a};
}

float hardLight(float cb, float cs) {
  // Cs ≤ 0.5: Multiply(Cb, 2·Cs); otherwise Screen(Cb, 2·Cs − 1).
  if (cs <= 0.5f) return cb * 2 * cs;
  const float s = 2 * cs - 1;
  return cb + s - cb * s;
}

Rgba blendOnePixel(Straight top, Straight bottom, OVBlendMode mode) {
  const PixelRect one{0, 0, 1, 1};
  auto result = blended(solid(one, top.premultiplied()), solid(one, bottom.premultiplied()), mode);
  EXPECT_TRUE(result.has_value());
  return result ? result->pixelAt(0, 0) : Rgba{};
}

// Colour pairs chosen to take both branches of each conditional formula
// (Cs and Cb on either side of 0.5, Cb on either side of 0.25).
const Straight kSources[] = {{0.8f, 0.3f, 0.6f, 0.75f}, {0.4f, 0.7f, 0.1f, 1.0f}};
const Straight kBackdrops[] = {{0.2f, 0.9f, 0.5f, 0.5f}, {0.6f, 0.2f, 0.95f, 1.0f}};

TEST(BlendModeTest, SeparableModesFollowTheirFormulas) {
  const struct {
    OVBlendMode mode;
    BlendFunction B;
  } cases[] = {
      {OVBlendMode::multiply, [](float cb, float cs) { return cb * cs; }},
      {OVBlendMode::screen, [](float cb, float cs) { return cb + cs - cb * cs; }},
      // Overlay(Cb, Cs) = HardLight(Cs, Cb).
      {OVBlendMode::overlay, [](float cb, float cs) { return hardLight(cs, cb); }},
      // Cs ≤ 0.5: Cb − (1 − 2·Cs)·Cb·(1 − Cb); otherwise Cb + (2·Cs − 1)·(D(Cb) − Cb)
      // with D(Cb) = ((16·Cb − 12)·Cb + 4)·Cb for Cb ≤ 0.25, else √Cb.
      {OVBlendMode::softLight,
       [](float cb, float cs) {
         if (cs <= 0.5f) return cb - (1 - 2 * cs) * cb * (1 - cb);
         const float d = cb <= 0.25f ? ((16 * cb - 12) * cb + 4) * cb : std::sqrt(cb);
         return cb + (2 * cs - 1) * (d - cb);
       }},
      {OVBlendMode::hardLight, hardLight},
      {OVBlendMode::darken, [](float cb, float cs) { return std::min(cb, cs); }},
      {OVBlendMode::lighten, [](float cb, float cs) { return std::max(cb, cs); }},
      {OVBlendMode::difference, [](float cb, float cs) { return std::fabs(cb - cs); }},
      // Normal: B(Cb, Cs) = Cs, which is source-over.
      {OVBlendMode::normal, [](float, float cs) { return cs; }},
  };
  for (const auto& c : cases) {
    for (const Straight& s : kSources) {
      for (const Straight& d : kBackdrops) {
        expectPixelNear(blendOnePixel(s, d, c.mode), expectedBlend(c.B, s, d), 1e-6f,
                        std::string(core::rawValue(c.mode)).c_str());
      }
    }
  }
}

TEST(BlendModeTest, AddSumsAllComponentsClamped) {
  // 0.8·0.75 + 0.2·0.5 = 0.7; 0.3·0.75 + 0.9·0.5 = 0.675; 0.6·0.75 + 0.5·0.5 = 0.7; 0.75 + 0.5 → 1.
  expectPixelNear(blendOnePixel(kSources[0], kBackdrops[0], OVBlendMode::add), {0.7f, 0.675f, 0.7f, 1.0f}, 1e-6f);
}

TEST(BlendModeTest, TransparentSourceLeavesBackdrop) {
  const PixelRect rect{0, 0, 2, 1};
  const Rgba backdrop = kBackdrops[0].premultiplied();
  for (const OVBlendMode mode : core::allCases<OVBlendMode>()) {
    const std::string_view raw = core::rawValue(mode);
    auto result = blended(solid({0, 0, 1, 1}, {}), solid(rect, backdrop), mode);
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(result->pixelAt(0, 0), backdrop) << raw;
    EXPECT_EQ(result->pixelAt(1, 0), backdrop) << raw;
  }
}

TEST(CompositeTest, SourceOverAndUnionExtent) {
  const Rgba top{0.2f, 0.1f, 0, 0.4f}, bottom{0, 0.5f, 0.5f, 1};
  auto result = compositedOver(solid({0, 0, 2, 2}, top), solid({1, 1, 2, 2}, bottom));
  ASSERT_TRUE(result.has_value());
  EXPECT_EQ(result->extent(), (PixelRect{0, 0, 3, 3}));
  // top + bottom × (1 − 0.4)
  expectPixelNear(result->pixelAt(1, 1), {0.2f, 0.1f + 0.3f, 0.3f, 1.0f}, 1e-6f);
  EXPECT_EQ(result->pixelAt(0, 0), top);
  EXPECT_EQ(result->pixelAt(2, 2), bottom);
  EXPECT_EQ(result->pixelAt(2, 0), Rgba{});
  // Over the empty image the top comes back unchanged.
  const Image image = solid({0, 0, 2, 2}, top);
  EXPECT_TRUE(compositedOver(image, Image{})->sharesStorageWith(image));
}

TEST(OpacityTest, ScalesAllComponentsAlikeEverywhere) {
  const Rgba p{0.3f, 0.2f, 0.1f, 0.5f};
  auto faded = applyOpacity(solid({0, 0, 1, 1}, p), 0.4);
  ASSERT_TRUE(faded.has_value());
  expectPixelNear(faded->pixelAt(0, 0), {0.12f, 0.08f, 0.04f, 0.2f}, 1e-7f);
  // The layer pass applies the same opacity.
  auto canvas = Canvas::make({0, 0, 1, 1});
  drawLayer(*canvas, canvas->rect(), solid({0, 0, 1, 1}, p), core::Affine2D::identity(), 0.4, OVBlendMode::normal);
  EXPECT_EQ(canvas->row(0)[0], faded->pixelAt(0, 0));
  // An opacity of 1 is the picture itself; out-of-range values are clamped.
  const Image image = solid({0, 0, 1, 1}, p);
  EXPECT_TRUE(applyOpacity(image, 1.0)->sharesStorageWith(image));
  EXPECT_EQ(applyOpacity(image, -3)->pixelAt(0, 0), Rgba{});
}

TEST(ColorMatrixTest, WorksOnStraightColourAndPremultipliesTheResult) {
  ColorMatrix m;
  m.r = {0, 1, 0, 0};  // red from green
  m.g = {1, 0, 0, 0};  // green from red
  m.a = {0, 0, 0, 0.5f};
  m.bias = {0, 0, 0.1f, 0};
  // Straight (0.2, 0.4, 0.6) at alpha 0.5 → straight (0.4, 0.2, 0.7) at alpha 0.25.
  auto out = colorMatrix(solid({0, 0, 1, 1}, {0.1f, 0.2f, 0.3f, 0.5f}), m);
  ASSERT_TRUE(out.has_value());
  expectPixelNear(out->pixelAt(0, 0), {0.1f, 0.05f, 0.175f, 0.25f}, 1e-6f);
  // Alpha is clamped to 1; a transparent pixel counts as transparent black.
  m.bias = {0.5f, 0, 0, 2};
  expectPixelNear(applyColorMatrix(m, {}), {0.5f, 0, 0, 1}, 1e-7f);
  // On a constant colour it stays infinite.
  auto constant = colorMatrix(Image::constant({0.1f, 0.2f, 0.3f, 0.5f}), ColorMatrix{});
  EXPECT_TRUE(constant->isInfinite());
  expectPixelNear(constant->pixelAt(7, -7), {0.1f, 0.2f, 0.3f, 0.5f}, 1e-7f);
}

}  // namespace
}  // namespace orvane::render
