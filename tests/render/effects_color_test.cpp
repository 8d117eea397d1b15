// The pointwise effects: colour controls, exposure, hue, temperature and
// tint, posterize and the keys, on known colours.

#include <gtest/gtest.h>

#include <cmath>

#include "render/effects/effect_filters.hpp"
#include "render/effects/white_point.hpp"
#include "tests/render/effects_test_support.hpp"

namespace orvane::render {
namespace {

using namespace testing_support;

// One pixel at the origin, premultiplied from a straight colour.
Image pixel(float r, float g, float b, float a = 1) { return solid({0, 0, 1, 1}, {r * a, g * a, b * a, a}); }

Rgba only(const Image& image) { return image.pixelAt(0, 0); }

TEST(ColorEffectsTest, ExposureScalesColourByPowersOfTwo) {
  expectPixelNear(only(runEffect("color.exposure", pixel(0.4f, 0.2f, 0.1f, 0.5f), {{"ev", num(1)}})),
                  {0.4f, 0.2f, 0.1f, 0.5f}, 0);
  expectPixelNear(only(runEffect("color.exposure", pixel(0.4f, 0.2f, 0.1f, 0.5f), {{"ev", num(-2)}})),
                  {0.05f, 0.025f, 0.0125f, 0.5f}, 0);
}

TEST(ColorEffectsTest, ColorControlsMixSaturationThenAddBrightnessThenStretchContrast) {
  // Straight (0.6, 0.4, 0.2) at half alpha; its Rec. 709 luma is 0.42808.
  auto out = colorControls(pixel(0.6f, 0.4f, 0.2f, 0.5f), 0.1, 1.5, 0.5);
  ASSERT_TRUE(out.has_value());
  expectPixelNear(only(*out), {0.33553f, 0.26053f, 0.18553f, 0.5f}, 1e-5f);
  // Black & white is saturation 1 − amount: all the way, the luma grey.
  expectPixelNear(only(runEffect("color.blackAndWhite", pixel(0.6f, 0.4f, 0.2f))), {0.42808f, 0.42808f, 0.42808f, 1},
                  1e-5f);
  expectPixelNear(only(runEffect("color.blackAndWhite", pixel(0.6f, 0.4f, 0.2f), {{"amount", num(0.5)}})),
                  {0.51404f, 0.41404f, 0.31404f, 1}, 1e-5f);
  expectPixelNear(only(runEffect("color.contrast", pixel(0.6f, 0.4f, 0.2f), {{"amount", num(2)}})),
                  {0.7f, 0.3f, -0.1f, 1}, 1e-6f);
  expectPixelNear(only(runEffect("color.brightness", pixel(0.6f, 0.4f, 0.2f), {{"amount", num(-0.5)}})),
                  {0.1f, -0.1f, -0.3f, 1}, 1e-6f);
  // Transparent stays transparent, whatever the brightness.
  expectPixelNear(only(runEffect("color.brightness", solid({0, 0, 1, 1}, {}), {{"amount", num(0.5)}})), {}, 0);
}

TEST(ColorEffectsTest, HueTurnsAlongTheColourWheelKeepingLuma) {
  const auto luma601 = [](Rgba p) { return 0.299f * p.r + 0.587f * p.g + 0.114f * p.b; };
  const Rgba red = only(pixel(1, 0, 0));
  const Rgba turned = only(runEffect("color.hue", pixel(1, 0, 0), {{"angle", num(120)}}));
  EXPECT_GT(turned.g, 0.3f);
  EXPECT_GT(turned.g, turned.r + 0.3f);
  EXPECT_GT(turned.g, turned.b + 0.3f);
  EXPECT_NEAR(luma601(turned), luma601(red), 1e-5f);
  // A sixth of a turn takes red towards yellow: green rises, blue doesn't.
  const Rgba orange = only(runEffect("color.hue", pixel(1, 0, 0), {{"angle", num(40)}}));
  EXPECT_GT(orange.g, orange.b + 0.1f);
  // A full turn, or three thirds, come back; premultiplied colour turns alike.
  expectPixelNear(only(runEffect("color.hue", pixel(0.7f, 0.2f, 0.4f), {{"angle", num(360)}})),
                  only(pixel(0.7f, 0.2f, 0.4f)), 1e-5f);
  Image thrice = pixel(0.7f, 0.2f, 0.4f, 0.5f);
  for (int i = 0; i < 3; ++i) thrice = runEffect("color.hue", thrice, {{"angle", num(-120)}});
  expectPixelNear(only(thrice), only(pixel(0.7f, 0.2f, 0.4f, 0.5f)), 1e-5f);
}

TEST(ColorEffectsTest, WhitePointsFollowThePlanckianLocusAndTintOffIt) {
  const core::OVPoint d65ish = whitePointChromaticity(6500, 0);
  EXPECT_NEAR(d65ish.x, 0.3135, 0.001);
  EXPECT_NEAR(d65ish.y, 0.3236, 0.001);
  const core::OVPoint warm = whitePointChromaticity(2000, 0);
  EXPECT_NEAR(warm.x, 0.5267, 0.001);
  EXPECT_NEAR(warm.y, 0.4133, 0.001);
  // Positive tint moves away from green: lower y.
  EXPECT_LT(whitePointChromaticity(6500, 50).y, d65ish.y - 0.005);
  EXPECT_GT(whitePointChromaticity(6500, -50).y, d65ish.y + 0.005);
  for (float c : {0.0f, 0.001f, 0.02f, 0.2f, 0.5f, 0.9f, 1.0f, 1.5f, -0.3f}) {
    const double exact = std::fabs(c) <= 0.04045 ? std::fabs(c) / 12.92 : std::pow((std::fabs(c) + 0.055) / 1.055, 2.4);
    EXPECT_NEAR(srgbToLinear(c), std::copysign(exact, c), 2e-5) << c;
    EXPECT_NEAR(linearToSrgb(srgbToLinear(c)), c, 5e-5) << c;
  }
}

TEST(ColorEffectsTest, LowerTemperatureWarmsHigherCoolsTintGoesMagentaOrGreen) {
  const Image grey = pixel(0.5f, 0.5f, 0.5f);
  const Rgba warm = only(runEffect("color.temperature", grey, {{"temperature", num(3200)}}));
  EXPECT_GT(warm.r, warm.g + 0.03f);
  EXPECT_GT(warm.g, warm.b + 0.05f);
  const Rgba cool = only(runEffect("color.temperature", grey, {{"temperature", num(9000)}}));
  EXPECT_GT(cool.b, cool.r + 0.05f);
  const Rgba magenta = only(runEffect("color.temperature", grey, {{"tint", num(90)}}));
  EXPECT_LT(magenta.g, magenta.r - 0.03f);
  EXPECT_LT(magenta.g, magenta.b - 0.03f);
  const Rgba green = only(runEffect("color.temperature", grey, {{"tint", num(-60)}}));
  EXPECT_GT(green.g, green.r + 0.03f);
  // Going there and back is the identity; alpha is kept.
  auto there = temperatureAndTint(pixel(0.8f, 0.3f, 0.6f, 0.5f), {6500, 0}, {4000, 30});
  auto back = temperatureAndTint(*there, {4000, 30}, {6500, 0});
  expectPixelNear(only(*back), only(pixel(0.8f, 0.3f, 0.6f, 0.5f)), 2e-4f);
  EXPECT_EQ(only(*there).a, 0.5f);
}

TEST(ColorEffectsTest, PosterizeRoundsEachChannelToEvenLevels) {
  const auto poster = [](float r, float g, float b, double levels) {
    return only(runEffect("stylize.posterize", pixel(r, g, b, 0.5f), {{"levels", num(levels)}}));
  };
  expectPixelNear(poster(0.3f, 0.6f, 0.5f, 2), {0, 0.5f, 0.5f, 0.5f}, 1e-7f);
  expectPixelNear(poster(0.5f, 0.2f, 1.4f, 4), {2.0f / 3 * 0.5f, 1.0f / 3 * 0.5f, 0.5f, 0.5f}, 1e-6f);
  expectPixelNear(poster(0.5f, -0.2f, 0.79f, 6), {0.3f, 0, 0.4f, 0.5f}, 1e-6f);
  // Levels are whole: 3.6 is 4, and fewer than 2 are 2.
  expectPixelNear(poster(0.5f, 0.2f, 0.9f, 3.6), poster(0.5f, 0.2f, 0.9f, 4), 0);
  expectPixelNear(poster(0.3f, 0.6f, 0.5f, 0), poster(0.3f, 0.6f, 0.5f, 2), 0);
}

TEST(KeyEffectsTest, ChromaKeyMatteFollowsDistanceToTheKeyColour) {
  const auto key = [](Image image, std::map<std::string, core::PropertyValue> values = {}) {
    return only(runEffect("key.chroma", image, values));
  };
  // Defaults: key (0.1, 0.8, 0.2), similarity 0.3, softness 0.1.
  expectPixelNear(key(pixel(0.1f, 0.8f, 0.2f)), {0, 0, 0, 0}, 0);
  expectPixelNear(key(pixel(0.9f, 0.1f, 0.3f)), only(pixel(0.9f, 0.1f, 0.3f)), 0);
  // Distance 0.35, halfway through the soft band: smoothstep gives 0.5.
  expectPixelNear(key(pixel(0.1f, 0.8f, 0.55f)), {0.05f, 0.4f, 0.275f, 0.5f}, 1e-5f);
  // Distance 0.325: a quarter of the band, 0.15625 of the matte.
  expectPixelNear(key(pixel(0.1f, 0.8f, 0.525f)), only(pixel(0.1f, 0.8f, 0.525f, 0.15625f)), 1e-5f);
  expectPixelNear(key(pixel(0.1f, 0.8f, 0.55f), {{"invert", flag(true)}}), {0.05f, 0.4f, 0.275f, 0.5f}, 1e-5f);
  expectPixelNear(key(pixel(0.1f, 0.8f, 0.2f), {{"invert", flag(true)}}), only(pixel(0.1f, 0.8f, 0.2f)), 0);
  // The key colour's alpha plays no part.
  expectPixelNear(key(pixel(0.1f, 0.8f, 0.55f), {{"keyColor", rgb(0.1, 0.8, 0.2, 0)}}), {0.05f, 0.4f, 0.275f, 0.5f},
                  1e-5f);
  // The program sees straight colour: the key colour at half alpha is keyed
  // out, and the source alpha scales the matte.
  expectPixelNear(key(pixel(0.1f, 0.8f, 0.2f, 0.5f)), {0, 0, 0, 0}, 0);
  expectPixelNear(key(pixel(0.1f, 0.8f, 0.55f, 0.5f)), {0.025f, 0.2f, 0.1375f, 0.25f}, 1e-5f);
  // Softness 0 is 0.001: halfway through that band is half the matte.
  expectPixelNear(key(pixel(0.3005f, 0, 0), {{"keyColor", rgb(0, 0, 0)}, {"softness", num(0)}}),
                  only(pixel(0.3005f, 0, 0, 0.5f)), 2e-3f);
}

TEST(KeyEffectsTest, LumaKeyMatteFollowsRec709Luma) {
  const auto key = [](float grey, std::map<std::string, core::PropertyValue> values = {}) {
    return only(runEffect("key.luma", pixel(grey, grey, grey), values));
  };
  // Defaults: threshold 0.5, softness 0.1, darker keyed out.
  EXPECT_NEAR(key(0.5f).a, 0.5f, 1e-5f);
  EXPECT_NEAR(key(0.45f).a, 0.15625f, 1e-5f);
  EXPECT_EQ(key(0.3f).a, 0.0f);
  EXPECT_EQ(key(0.7f).a, 1.0f);
  EXPECT_EQ(key(0.3f, {{"keyOutDarker", flag(false)}}).a, 1.0f);
  EXPECT_NEAR(key(0.45f, {{"keyOutDarker", flag(false)}}).a, 0.84375f, 1e-5f);
  expectPixelNear(key(0.45f), {0.45f * 0.15625f, 0.45f * 0.15625f, 0.45f * 0.15625f, 0.15625f}, 1e-5f);
  // Pure green's luma is 0.7152; softness 0 acts as 0.001, so 0.7152 ± 0.001
  // bounds the band.
  const auto green = [](double threshold) {
    return only(runEffect("key.luma", pixel(0, 1, 0), {{"threshold", num(threshold)}, {"softness", num(0)}})).a;
  };
  EXPECT_EQ(green(0.7165), 0.0f);
  EXPECT_NEAR(green(0.7152), 0.5f, 1e-3f);
  EXPECT_EQ(green(0.7139), 1.0f);
}

}  // namespace
}  // namespace orvane::render
