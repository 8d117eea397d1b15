// The effect stack: resolving parameters, chaining instances, reading values;
// every kernel's neutral test and robustness; the preset thumbnails.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "render/effects/effect_preset_renderer.hpp"
#include "render/effects/effect_stack.hpp"
#include "render/image_ops.hpp"
#include "tests/render/effects_test_support.hpp"

namespace orvane::render {
namespace {

using core::AnimatedProperty;
using core::EffectCatalog;
using core::EffectInstance;
using core::OVTime;
using core::PropertyValue;
using namespace testing_support;

EffectInstance instance(const std::string& id, std::map<std::string, AnimatedProperty> parameters = {},
                        bool enabled = true) {
  EffectInstance e;
  e.effectID = id;
  e.isEnabled = enabled;
  e.parameters = std::move(parameters);
  return e;
}

EffectRenderContext contextAt(double renderScale = 1, OVTime t = {}) {
  EffectRenderContext c;
  c.compositionSize = {640, 360};
  c.time = t;
  c.renderScale = renderScale;
  return c;
}

const Image& smallPicture() {
  static const Image picture = makeImage({0, 0, 8, 6}, [](int x, int y) {
    return Rgba{0.1f * x * 0.5f, 0.15f * y * 0.5f, 0.2f, 0.5f};
  });
  return picture;
}

TEST(EffectStackTest, ChainsEnabledKnownEffectsInListOrder) {
  const Image picture = smallPicture();
  EXPECT_TRUE(EffectStack::apply({}, picture, contextAt()).sharesStorageWith(picture));

  // Brightness then exposure differs from exposure then brightness.
  const EffectInstance brighter = instance("color.brightness", {{"amount", AnimatedProperty::double_(0.1)}});
  const EffectInstance doubled = instance("color.exposure", {{"ev", AnimatedProperty::double_(1)}});
  const Image ordered = EffectStack::apply({brighter, doubled}, picture, contextAt());
  const Image byHand = runEffect("color.exposure", runEffect("color.brightness", picture, {{"amount", num(0.1)}}),
                                 {{"ev", num(1)}});
  EXPECT_TRUE(samePicture(ordered, byHand));
  EXPECT_FALSE(samePicture(ordered, EffectStack::apply({doubled, brighter}, picture, contextAt()), 1e-4f));

  // The same effect twice runs twice; disabled and unknown ones are passed over.
  const Image twice = EffectStack::apply({doubled, doubled}, picture, contextAt());
  EXPECT_TRUE(samePicture(twice, runEffect("color.exposure", picture, {{"ev", num(2)}}), 1e-6f));
  EffectInstance off = instance("color.exposure", {{"ev", AnimatedProperty::double_(3)}}, false);
  const Image skipped = EffectStack::apply({off, instance("effect.fromTheFuture"), doubled}, picture, contextAt());
  EXPECT_TRUE(samePicture(skipped, runEffect("color.exposure", picture, {{"ev", num(1)}})));
  EXPECT_TRUE(EffectStack::apply({off, instance("effect.fromTheFuture")}, picture, contextAt())
                  .sharesStorageWith(picture));
}

TEST(EffectStackTest, ResolvesStoredParametersAtTheTimeAndDefaultsTheRest) {
  const core::EffectDescriptor& shadow = *EffectCatalog::descriptorFor("stylize.dropShadow");
  AnimatedProperty distance = AnimatedProperty::double_(0);
  distance.upsertKeyframe(PropertyValue::double_(10), OVTime(0, 600));
  distance.upsertKeyframe(PropertyValue::double_(30), OVTime(600, 600));
  const EffectInstance e = instance("stylize.dropShadow", {{"distance", distance},
                                                           {"opacity", AnimatedProperty::double_(0.2)},
                                                           {"notAParameter", AnimatedProperty::double_(5)}});
  const EffectValues values = EffectStack::resolvedValues(e, shadow, OVTime(300, 600));
  EXPECT_EQ(values.size(), shadow.parameters.size());
  EXPECT_FALSE(values.contains("notAParameter"));
  EXPECT_EQ(values.at("distance"), PropertyValue::double_(20));
  EXPECT_EQ(values.at("opacity"), PropertyValue::double_(0.2));
  EXPECT_EQ(values.at("direction"), PropertyValue::double_(-135));
  EXPECT_EQ(values.at("color"), PropertyValue::color(core::OVColor{0, 0, 0, 1}));

  // The stack reads the values at the context's time.
  const Image picture = smallPicture();
  const Image early = EffectStack::apply({e}, picture, contextAt(1, OVTime(0, 600)));
  EXPECT_TRUE(samePicture(early, runEffect("stylize.dropShadow", picture, {{"distance", num(10)}, {"opacity", num(0.2)}})));
}

TEST(EffectStackTest, AnimationCountsOnlyOnEnabledInstances) {
  AnimatedProperty moving = AnimatedProperty::double_(0);
  moving.upsertKeyframe(PropertyValue::double_(1), OVTime(0, 600));
  EXPECT_FALSE(EffectStack::containsAnimation({}));
  EXPECT_FALSE(EffectStack::containsAnimation({instance("sharpen", {{"amount", AnimatedProperty::double_(1)}})}));
  EXPECT_FALSE(EffectStack::containsAnimation({instance("sharpen", {{"amount", moving}}, false)}));
  EXPECT_TRUE(EffectStack::containsAnimation({instance("sharpen"), instance("sharpen", {{"amount", moving}})}));
}

TEST(EffectStackTest, ReadersFallBackOnAbsentMismatchedOrNonFiniteValues) {
  const EffectValues values{{"n", num(2.5)},
                            {"i", PropertyValue::integer(3)},
                            {"nan", num(std::numeric_limits<double>::quiet_NaN())},
                            {"inf", num(std::numeric_limits<double>::infinity())},
                            {"b", flag(true)},
                            {"c", rgb(0.2, 0.4, 0.6, 0.5)},
                            {"t", PropertyValue::text("x")}};
  EXPECT_EQ(EffectStack::double_(values, "n", 7), 2.5);
  EXPECT_EQ(EffectStack::double_(values, "i", 7), 3);
  EXPECT_EQ(EffectStack::double_(values, "missing", 7), 7);
  EXPECT_EQ(EffectStack::double_(values, "nan", 7), 7);
  EXPECT_EQ(EffectStack::double_(values, "inf", 7), 7);
  EXPECT_EQ(EffectStack::double_(values, "c", 7), 7);
  EXPECT_EQ(EffectStack::scaledDouble(values, "n", 7, contextAt(0.5)), 1.25);
  EXPECT_EQ(EffectStack::scaledDouble(values, "t", 7, contextAt(0.5)), 3.5);
  EXPECT_TRUE(EffectStack::bool_(values, "b", false));
  EXPECT_FALSE(EffectStack::bool_(values, "c", false));
  EXPECT_EQ(EffectStack::color(values, "c", core::OVColor::white), (core::OVColor{0.2, 0.4, 0.6, 0.5}));
  EXPECT_EQ(EffectStack::color(values, "n", core::OVColor::white), core::OVColor::white);
}

TEST(EffectKernelTest, EveryCatalogEffectHasAKernelThatSurvivesBadInput) {
  EXPECT_EQ(effectKernel("nope"), nullptr);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  const Image card = testCard();
  for (const core::EffectDescriptor& d : EffectCatalog::all()) {
    SCOPED_TRACE(d.id);
    ASSERT_NE(effectKernel(d.id), nullptr);
    EXPECT_TRUE(runEffect(d.id, Image{}).isEmpty());
    // A constant colour has no bounds; the kernels that need them pass it on.
    EXPECT_FALSE(runEffect(d.id, Image::constant({0.5f, 0.25f, 0.125f, 1})).isEmpty());
    for (double bad : {nan, inf, -inf, 1e12, -1e12}) {
      std::map<std::string, PropertyValue> values;
      for (const auto& p : d.parameters) values.emplace(p.id, p.defaultValue.kind() == PropertyValue::Kind::color
                                                                  ? rgb(bad, bad, bad, bad)
                                                                  : num(bad));
      EXPECT_FALSE(runEffect(d.id, card, values).isEmpty());
      EXPECT_FALSE(runEffect(d.id, card, {}, bad).isEmpty());
    }
    // A parameter of the wrong kind acts as its default.
    std::map<std::string, PropertyValue> wrong;
    for (const auto& p : d.parameters) wrong.emplace(p.id, PropertyValue::text("?"));
    EXPECT_TRUE(samePicture(runEffect(d.id, card, wrong), runEffect(d.id, card)));
  }
}

TEST(EffectKernelTest, EffectsAtRestReturnTheirInputItself) {
  const Image card = testCard();
  const std::pair<const char*, std::map<std::string, PropertyValue>> atRest[] = {
      {"blur.gaussian", {{"radius", num(0.01)}}},
      {"blur.directional", {{"radius", num(0.02)}}},
      {"sharpen", {{"amount", num(0.001)}}},
      {"color.brightness", {}},
      {"color.contrast", {{"amount", num(1.00005)}}},
      {"color.saturation", {}},
      {"color.exposure", {{"ev", num(-0.001)}}},
      {"color.hue", {{"angle", num(0.0009)}}},
      {"color.temperature", {{"temperature", num(6500.5)}, {"tint", num(0.4)}}},
      {"color.blackAndWhite", {{"amount", num(0.001)}}},
      {"stylize.minimax", {{"radius", num(0.01)}}},
      {"stylize.dropShadow", {{"opacity", num(0.001)}}},
      {"stylize.cartoon", {{"amount", num(0)}}},
      {"stylize.mosaic", {{"scale", num(1)}}},
      {"stylize.findEdges", {{"intensity", num(0.001)}}},
      {"stylize.glow", {{"intensity", num(0.0005)}}},
  };
  for (const auto& [id, values] : atRest) {
    const double scale = std::string(id) == "blur.directional" ? 0.5 : 1;
    EXPECT_TRUE(runEffect(id, card, values, scale).sharesStorageWith(card)) << id;
  }
  // Only after scaling: a block of 2 at half scale is 1, at rest.
  EXPECT_TRUE(runEffect("stylize.mosaic", card, {{"scale", num(2)}}, 0.5).sharesStorageWith(card));
  EXPECT_FALSE(runEffect("stylize.mosaic", card, {{"scale", num(2.04)}}).sharesStorageWith(card));
  EXPECT_FALSE(runEffect("stylize.glow", card, {{"radius", num(0.02)}}, 1).sharesStorageWith(card));
  EXPECT_TRUE(runEffect("stylize.glow", card, {{"radius", num(0.02)}}, 0.5).sharesStorageWith(card));
  // Posterize always runs.
  EXPECT_FALSE(runEffect("stylize.posterize", card).sharesStorageWith(card));
}

TEST(EffectPresetRendererTest, MergesPresetValuesOverDefaults) {
  const core::EffectDescriptor& glow = *EffectCatalog::descriptorFor("stylize.glow");
  const EffectValues merged =
      EffectPresetRenderer::mergedValues(glow, {{"radius", num(60)}, {"intensity", num(1.6)}, {"bogus", num(1)}});
  EXPECT_EQ(merged.size(), 3u);
  EXPECT_EQ(merged.at("radius"), num(60));
  EXPECT_EQ(merged.at("intensity"), num(1.6));
  EXPECT_EQ(merged.at("spread"), flag(true));
}

TEST(EffectPresetRendererTest, ThumbnailIsTheEffectOverABackdropAtThumbnailScale) {
  const core::EffectDescriptor& mosaic = *EffectCatalog::descriptorFor("stylize.mosaic");
  const Image source = testCard();  // 192 × 128: the thumbnail is 160 × 107
  const Image plain = EffectPresetRenderer::render(source, mosaic, {{"scale", num(1)}}, 192);
  ASSERT_EQ(plain.extent(), (PixelRect{0, 0, 160, 107}));
  // Opaque everywhere; the backdrop shows where the card is transparent.
  const Rgba backdrop = premultiplied(EffectPresetRenderer::kBackdrop);
  expectPixelNear(plain.pixelAt(159, 0), backdrop, 1e-6f, "transparent corner");
  expectPixelNear(plain.pixelAt(10, 100), {1, 1, 1, 1}, 1e-5f, "white bar");

  // A block of 12 on a 1920-wide layer is 1 at 160 wide: at rest.
  EXPECT_TRUE(samePicture(EffectPresetRenderer::render(source, mosaic, {{"scale", num(12)}}, 1920), plain));
  // On a 192-wide layer it is 10 pixels: cells show.
  const Image blocky = EffectPresetRenderer::render(source, mosaic, {{"scale", num(12)}}, 192);
  EXPECT_EQ(blocky.pixelAt(2, 60), blocky.pixelAt(6, 60));
  EXPECT_NE(plain.pixelAt(2, 60), plain.pixelAt(6, 60));

  EXPECT_TRUE(EffectPresetRenderer::render(Image{}, mosaic, {}, 100).isEmpty());
  EXPECT_TRUE(EffectPresetRenderer::render(Image::constant({1, 0, 0, 1}), mosaic, {}, 100).isEmpty());
  const Image tall = EffectPresetRenderer::render(solid({5, 7, 2, 400}, {1, 0, 0, 1}), mosaic, {}, 0);
  EXPECT_EQ(tall.extent(), (PixelRect{0, 0, 160, EffectPresetRenderer::kThumbnailMaxHeight}));
}

}  // namespace
}  // namespace orvane::render
