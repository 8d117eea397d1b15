// Each effect at a representative setting over the test card, against a
// golden picture. The region is the card with a margin, so that what spreads
// past the card (blur, shadow, glow) is seen too. Results are drawn over an
// opaque checkerboard: alpha shows, and nearly transparent pixels (whose
// straight colour is noise) don't count.

#include <gtest/gtest.h>

#include "render/image_ops.hpp"
#include "tests/render/effects_test_support.hpp"
#include "tests/render/golden.hpp"

namespace orvane::render {
namespace {

using namespace testing_support;

struct GoldenCase {
  const char* golden;
  const char* effect;
  std::map<std::string, core::PropertyValue> values;
};

void PrintTo(const GoldenCase& c, std::ostream* os) { *os << c.golden; }

class EffectGoldenTest : public ::testing::TestWithParam<GoldenCase> {};

constexpr PixelRect kRegion{-24, -24, 240, 176};

Image overCheckerboard(const Image& picture) {
  const Image board = makeImage(kRegion, [](int x, int y) {
    const float v = ((x + 64) / 8 + (y + 64) / 8) % 2 == 0 ? 0.35f : 0.55f;
    return Rgba{v, v, v, 1};
  });
  auto over = compositedOver(picture, board);
  EXPECT_TRUE(over.has_value());
  return over ? crop(*over, kRegion) : Image{};
}

TEST_P(EffectGoldenTest, MatchesGolden) {
  const GoldenCase& c = GetParam();
  const Image out = runEffect(c.effect, testCard(), c.values);
  EXPECT_TRUE(matchesGolden(overCheckerboard(out), kRegion, c.golden));
}

INSTANTIATE_TEST_SUITE_P(
    Catalog, EffectGoldenTest,
    ::testing::Values(
        GoldenCase{"effect_blur_gaussian", "blur.gaussian", {{"radius", num(4)}}},
        GoldenCase{"effect_blur_gaussian_spread", "blur.gaussian", {{"radius", num(5)}, {"spread", flag(true)}}},
        GoldenCase{"effect_blur_directional", "blur.directional", {{"radius", num(24)}, {"angle", num(30)}}},
        GoldenCase{"effect_sharpen", "sharpen", {{"amount", num(1.5)}}},
        GoldenCase{"effect_brightness", "color.brightness", {{"amount", num(0.25)}}},
        GoldenCase{"effect_contrast", "color.contrast", {{"amount", num(1.8)}}},
        GoldenCase{"effect_saturation", "color.saturation", {{"amount", num(0.4)}}},
        GoldenCase{"effect_exposure", "color.exposure", {{"ev", num(1)}}},
        GoldenCase{"effect_hue", "color.hue", {{"angle", num(120)}}},
        GoldenCase{"effect_temperature_warm", "color.temperature", {{"temperature", num(3200)}}},
        GoldenCase{"effect_temperature_teal", "color.temperature", {{"temperature", num(10500)}, {"tint", num(-60)}}},
        GoldenCase{"effect_tint_magenta", "color.temperature", {{"tint", num(90)}}},
        GoldenCase{"effect_black_and_white", "color.blackAndWhite", {}},
        GoldenCase{"effect_minimax_maximum", "stylize.minimax", {{"radius", num(3)}}},
        GoldenCase{"effect_minimax_minimum", "stylize.minimax", {{"radius", num(3)}, {"maximum", flag(false)}}},
        GoldenCase{"effect_drop_shadow", "stylize.dropShadow", {}},
        GoldenCase{"effect_cartoon", "stylize.cartoon", {}},
        GoldenCase{"effect_mosaic", "stylize.mosaic", {{"scale", num(12)}}},
        GoldenCase{"effect_find_edges", "stylize.findEdges", {}},
        GoldenCase{"effect_find_edges_inverted", "stylize.findEdges", {{"invert", flag(true)}}},
        GoldenCase{"effect_posterize", "stylize.posterize", {{"levels", num(3)}}},
        GoldenCase{"effect_glow", "stylize.glow", {{"radius", num(8)}, {"intensity", num(0.8)}}},
        GoldenCase{"effect_chroma_key", "key.chroma", {}},
        GoldenCase{"effect_luma_key", "key.luma", {{"threshold", num(0.4)}}}),
    [](const ::testing::TestParamInfo<GoldenCase>& info) { return std::string(info.param.golden); });

}  // namespace
}  // namespace orvane::render
