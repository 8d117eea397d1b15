// The effects that look at neighbours: blurs and their box, sharpen,
// minimax, mosaic, edges, cartoon, drop shadow and glow.

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "render/effects/effect_filters.hpp"
#include "render/effects/gaussian_blur.hpp"
#include "tests/render/effects_test_support.hpp"

namespace orvane::render {
namespace {

using namespace testing_support;

constexpr Rgba kWhite{1, 1, 1, 1}, kBlack{0, 0, 0, 1};

// A white dot at (cx, cy) on an opaque black square of side n.
Image dot(int n, int cx, int cy) {
  return makeImage({0, 0, n, n}, [=](int x, int y) { return x == cx && y == cy ? kWhite : kBlack; });
}

TEST(BlurEffectsTest, GaussianRunsFromJustAboveOneHundredthOfAPixel) {
  const Image card = testCard();
  const Image faint = runEffect("blur.gaussian", card, {{"radius", num(0.02)}});
  EXPECT_FALSE(faint.sharesStorageWith(card));
  EXPECT_EQ(faint.extent(), card.extent());
  const Image blurred = runEffect("blur.gaussian", dot(21, 10, 10), {{"radius", num(2)}});
  EXPECT_LT(blurred.pixelAt(10, 10).r, 0.1f);
  EXPECT_GT(blurred.pixelAt(12, 10).r, 0.01f);
}

TEST(BlurEffectsTest, SpreadDecidesBetweenAHardBoxAndAFadingGrownOne) {
  const Image red = solid({10, 20, 30, 20}, {1, 0, 0, 1});
  const Image boxed = runEffect("blur.gaussian", red, {{"radius", num(3)}});
  ASSERT_EQ(boxed.extent(), red.extent());
  for (const auto& [x, y] : {std::pair{10, 20}, {39, 39}, {25, 20}}) expectPixelNear(boxed.pixelAt(x, y), {1, 0, 0, 1}, 1e-5f);

  const Image spread = runEffect("blur.gaussian", red, {{"radius", num(3)}, {"spread", flag(true)}});
  EXPECT_EQ(spread.extent(), (PixelRect{1, 11, 48, 38}));
  EXPECT_NEAR(spread.pixelAt(10, 30).a, 0.5f, 0.1f);
  EXPECT_LT(spread.pixelAt(10, 20).a, 0.4f);
  EXPECT_GT(spread.pixelAt(5, 30).a, 0.0f);
  expectPixelNear(spread.pixelAt(25, 30), {1, 0, 0, 1}, 1e-4f);
}

TEST(BlurEffectsTest, DirectionalAveragesAlongTheLineOnly) {
  // A box of five pixels: each gets a fifth of the dot.
  const Image across = runEffect("blur.directional", dot(21, 10, 10), {{"radius", num(5)}});
  for (int x = 8; x <= 12; ++x) expectPixelNear(across.pixelAt(x, 10), {0.2f, 0.2f, 0.2f, 1}, 1e-6f);
  expectPixelNear(across.pixelAt(13, 10), kBlack, 0);
  expectPixelNear(across.pixelAt(10, 11), kBlack, 0);
  const Image up = runEffect("blur.directional", dot(21, 10, 10), {{"radius", num(5)}, {"angle", num(90)}});
  expectPixelNear(up.pixelAt(10, 12), {0.2f, 0.2f, 0.2f, 1}, 1e-6f);
  expectPixelNear(up.pixelAt(12, 10), kBlack, 1e-6f);
  // At 45° the dot spreads along the rising diagonal, not the other one.
  const Image diagonal = runEffect("blur.directional", dot(21, 10, 10), {{"radius", num(8)}, {"angle", num(45)}});
  EXPECT_GT(diagonal.pixelAt(12, 12).r, 0.05f);
  EXPECT_EQ(diagonal.pixelAt(12, 8).r, 0.0f);
  // Exactly along an axis the box runs as a running sum; just off it, as
  // taps: the two agree.
  const Image card = testCard();
  for (const auto& [exact, near] : {std::pair{0.0, 1e-6}, {90.0, 90.0 + 1e-6}, {180.0, 180 - 1e-6}}) {
    for (double length : {3.0, 7.5, 40.0}) {
      EXPECT_TRUE(samePicture(runEffect("blur.directional", card, {{"radius", num(length)}, {"angle", num(exact)}}),
                              runEffect("blur.directional", card, {{"radius", num(length)}, {"angle", num(near)}}), 1e-5f))
          << exact << "° × " << length;
    }
  }
  // Spread grows the box by the length and fades the edge.
  const Image spread = runEffect("blur.directional", solid({0, 0, 10, 10}, kWhite), {{"radius", num(6)}, {"spread", flag(true)}});
  EXPECT_EQ(spread.extent(), (PixelRect{-6, -6, 22, 22}));
  EXPECT_NEAR(spread.pixelAt(0, 5).a, 3.5f / 6, 1e-5f);
}

TEST(SharpenEffectTest, SteepensLumaStepsAndLeavesFlatsAndChroma) {
  const Image flat = solid({0, 0, 16, 16}, {0.3f, 0.5f, 0.2f, 1});
  EXPECT_TRUE(samePicture(runEffect("sharpen", flat, {{"amount", num(1)}}), flat, 1e-6f));
  const Image step = makeImage({0, 0, 16, 16}, [](int x, int) { return x < 8 ? Rgba{0.2f, 0.3f, 0.1f, 1} : Rgba{0.6f, 0.7f, 0.5f, 1}; });
  const Image sharp = runEffect("sharpen", step, {{"amount", num(1)}});
  const Rgba dark = sharp.pixelAt(7, 8), light = sharp.pixelAt(8, 8);
  EXPECT_LT(dark.g, 0.3f - 0.02f);
  EXPECT_GT(light.g, 0.7f + 0.02f);
  // The same amount added to every channel.
  EXPECT_NEAR(light.r - 0.6f, light.g - 0.7f, 1e-6f);
  EXPECT_NEAR(light.b - 0.5f, light.g - 0.7f, 1e-6f);
  EXPECT_EQ(light.a, 1.0f);
}

TEST(MinimaxEffectTest, GrowsAndShrinksByOddSquaresOnTheEdgeExtendedPicture) {
  // Radius 2: a side of 4, rounded up to an odd 5.
  const Image grown = runEffect("stylize.minimax", dot(21, 10, 10), {{"radius", num(2)}});
  for (int y = 6; y <= 14; ++y)
    for (int x = 6; x <= 14; ++x)
      EXPECT_EQ(grown.pixelAt(x, y), (std::abs(x - 10) <= 2 && std::abs(y - 10) <= 2 ? kWhite : kBlack)) << x << "," << y;
  const Image hole = makeImage({0, 0, 21, 21}, [](int x, int y) { return x == 3 && y == 3 ? kBlack : kWhite; });
  const Image shrunk = runEffect("stylize.minimax", hole, {{"radius", num(2)}, {"maximum", flag(false)}});
  EXPECT_EQ(shrunk.pixelAt(1, 1), kBlack);
  EXPECT_EQ(shrunk.pixelAt(0, 0), kWhite);  // outside the window
  // Edges repeat outward, so the border of a white picture stays white.
  EXPECT_EQ(shrunk.pixelAt(20, 20), kWhite);
  EXPECT_EQ(shrunk.extent(), hole.extent());
}

TEST(MinimaxEffectTest, MatchesABruteForceRectangleExtreme) {
  std::mt19937 random(7);
  std::uniform_real_distribution<float> unit(0, 1);
  const Image noise = makeImage({3, -2, 37, 23}, [&](int, int) {
    const float a = unit(random);
    return Rgba{unit(random) * a, unit(random) * a, unit(random) * a, a};
  });
  for (const auto& [w, h, maximum] : {std::tuple{3.0, 7.0, true}, {9.0, 1.0, false}, {5.5, 4.0, true}, {80.0, 3.0, false}}) {
    auto out = morphologyRectangle(noise, w, h, maximum);
    ASSERT_TRUE(out.has_value());
    const int hx = static_cast<int>(w) / 2, hy = static_cast<int>(h) / 2;
    const PixelRect e = noise.extent();
    for (int y = e.y; y < e.maxY(); ++y) {
      for (int x = e.x; x < e.maxX(); ++x) {
        Rgba best = noise.pixelAt(x, y);
        for (int j = -hy; j <= hy; ++j) {
          for (int i = -hx; i <= hx; ++i) {
            const Rgba p = noise.pixelAt(std::clamp(x + i, e.x, e.maxX() - 1), std::clamp(y + j, e.y, e.maxY() - 1));
            const auto pick = [&](float a, float b) { return maximum ? std::max(a, b) : std::min(a, b); };
            best = {pick(best.r, p.r), pick(best.g, p.g), pick(best.b, p.b), pick(best.a, p.a)};
          }
        }
        ASSERT_EQ(out->pixelAt(x, y), best) << w << "×" << h << " at " << x << "," << y;
      }
    }
  }
}

TEST(MosaicEffectTest, CellsAreAnchoredAtTheCentreAndTakeTheirAverage) {
  // 12 wide, centre 6: with blocks of 4 the cell edges fall on 2, 6 and 10.
  const Image picture = makeImage({0, 0, 12, 12}, positionColour);
  const Image blocks = runEffect("stylize.mosaic", picture, {{"scale", num(4)}});
  ASSERT_EQ(blocks.extent(), picture.extent());
  expectPixelNear(blocks.pixelAt(2, 3), {3.5f / 64, 3.5f / 64, 0.5f, 1}, 1e-6f);
  EXPECT_EQ(blocks.pixelAt(5, 5), blocks.pixelAt(2, 2));
  expectPixelNear(blocks.pixelAt(0, 11), {0.5f / 64, 10.5f / 64, 0.5f, 1}, 1e-6f);  // a corner cell of 2 × 2
  EXPECT_NE(blocks.pixelAt(6, 6), blocks.pixelAt(5, 5));
}

TEST(FindEdgesEffectTest, EdgeStrengthTimesIntensityOnOpaqueBlack) {
  const Image step = makeImage({0, 0, 12, 12}, [](int x, int) { return x < 6 ? kBlack : kWhite; });
  const Image found = runEffect("stylize.findEdges", step, {{"intensity", num(0.5)}});
  expectPixelNear(found.pixelAt(1, 6), kBlack, 0);
  expectPixelNear(found.pixelAt(11, 0), kBlack, 0);  // the repeated edge makes no edge
  expectPixelNear(found.pixelAt(5, 6), {0.5f, 0.5f, 0.5f, 1}, 1e-6f);
  expectPixelNear(found.pixelAt(6, 6), {0.5f, 0.5f, 0.5f, 1}, 1e-6f);
  const Image inverted = runEffect("stylize.findEdges", step, {{"intensity", num(0.5)}, {"invert", flag(true)}});
  expectPixelNear(inverted.pixelAt(1, 6), kWhite, 0);
  expectPixelNear(inverted.pixelAt(5, 6), {0.5f, 0.5f, 0.5f, 1}, 1e-6f);
  // Around a shape on transparency the outline shows outside it too.
  const Image square = makeImage({0, 0, 12, 12}, [](int x, int y) {
    return x >= 4 && x < 8 && y >= 4 && y < 8 ? kWhite : Rgba{};
  });
  const Image outline = runEffect("stylize.findEdges", square);
  EXPECT_GT(outline.pixelAt(3, 5).a, 0.9f);
  EXPECT_EQ(outline.pixelAt(0, 0).a, 0.0f);
}

TEST(CartoonEffectTest, FlattensValueToQuartersAndDissolvesByAmount) {
  const Image flat = solid({0, 0, 16, 16}, {0.6f * 0.8f, 0.3f * 0.8f, 0.15f * 0.8f, 0.8f});
  // Value 0.6 rounds to 0.5, hue and saturation kept; alpha kept; no ink.
  const Image comic = runEffect("stylize.cartoon", flat);
  expectPixelNear(comic.pixelAt(8, 8), {0.5f * 0.8f, 0.25f * 0.8f, 0.125f * 0.8f, 0.8f}, 1e-5f);
  const Image card = testCard();
  const Image full = runEffect("stylize.cartoon", card), half = runEffect("stylize.cartoon", card, {{"amount", num(0.3)}});
  for (const auto& [x, y] : {std::pair{10, 10}, {60, 70}, {150, 64}, {100, 100}}) {
    const Rgba f = full.pixelAt(x, y), c = card.pixelAt(x, y);
    expectPixelNear(half.pixelAt(x, y), {0.3f * f.r + 0.7f * c.r, 0.3f * f.g + 0.7f * c.g, 0.3f * f.b + 0.7f * c.b, 0.3f * f.a + 0.7f * c.a}, 1e-5f);
  }
  // Ink: the edge of the disc darkens.
  EXPECT_LT(full.pixelAt(168, 84).g, 0.5f * full.pixelAt(168, 84).a);
}

TEST(DropShadowEffectTest, SilhouetteAtOpacityMovedInYUpSpace) {
  const Image square = solid({10, 10, 4, 4}, kWhite);
  // Direction 0 moves right by the distance; the colour's alpha is not read.
  const Image shadowed = runEffect("stylize.dropShadow", square, {{"opacity", num(0.5)}, {"distance", num(8)}, {"direction", num(0)}, {"softness", num(0)}, {"color", rgb(1, 0, 0, 0)}});
  EXPECT_EQ(shadowed.extent(), (PixelRect{10, 10, 12, 4}));
  expectPixelNear(shadowed.pixelAt(20, 12), {0.25f, 0, 0, 0.5f}, 1e-6f);
  expectPixelNear(shadowed.pixelAt(11, 12), kWhite, 0);
  expectPixelNear(shadowed.pixelAt(15, 12), {}, 0);
  // The default direction, −135°, throws it down and to the left.
  const Image below = runEffect("stylize.dropShadow", square, {{"softness", num(0)}, {"distance", num(std::hypot(3, 3))}});
  EXPECT_NEAR(below.pixelAt(7, 7).a, 0.65f, 1e-4f);
  EXPECT_NEAR(below.pixelAt(16, 16).a, 0.0f, 1e-6f);
  // Softness blurs it past the box by three softnesses and no further.
  const Image soft = runEffect("stylize.dropShadow", square, {{"softness", num(2)}, {"distance", num(0)}});
  EXPECT_EQ(soft.extent(), (PixelRect{4, 4, 16, 16}));
  EXPECT_GT(soft.pixelAt(8, 12).a, 0.05f);
}

TEST(GlowEffectTest, AddsTheCappedBlurAndGrowsOnlyWhenSpread) {
  const Image grey = solid({0, 0, 20, 20}, {0.4f, 0.4f, 0.4f, 1});
  const Image boxed = runEffect("stylize.glow", grey, {{"radius", num(3)}, {"intensity", num(0.5)}, {"spread", flag(false)}});
  ASSERT_EQ(boxed.extent(), grey.extent());
  expectPixelNear(boxed.pixelAt(0, 0), {0.6f, 0.6f, 0.6f, 1}, 1e-5f);
  const Image spread = runEffect("stylize.glow", grey, {{"radius", num(3)}});
  EXPECT_EQ(spread.extent(), (PixelRect{-9, -9, 38, 38}));
  EXPECT_GT(spread.pixelAt(-2, 10).a, 0.05f);
  const Image card = testCard();
  EXPECT_TRUE(samePicture(runEffect("stylize.glow", card, {{"intensity", num(1.5)}}),
                          runEffect("stylize.glow", card, {{"intensity", num(1)}})));
  EXPECT_FALSE(samePicture(runEffect("stylize.glow", card, {{"intensity", num(0.9)}}),
                           runEffect("stylize.glow", card, {{"intensity", num(1)}}), 1e-3f));
}

}  // namespace
}  // namespace orvane::render
