// The effect catalog as data: order, ids, ranges, defaults and the presets
// that point into it.

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "core/effect_catalog.hpp"

namespace orvane::core {
namespace {

using P = EffectParameterDescriptor;

std::vector<std::string> idsOf(const std::vector<const EffectDescriptor*>& descriptors) {
  std::vector<std::string> ids;
  for (const auto* d : descriptors) ids.push_back(d->id);
  return ids;
}

TEST(EffectCatalogTest, NineteenEffectsInOrderFoundByID) {
  std::vector<const EffectDescriptor*> all;
  for (const auto& d : EffectCatalog::all()) all.push_back(&d);
  EXPECT_EQ(idsOf(all), (std::vector<std::string>{
                            "blur.gaussian", "blur.directional", "sharpen", "color.brightness", "color.contrast",
                            "color.exposure", "color.saturation", "color.hue", "color.temperature",
                            "color.blackAndWhite", "stylize.minimax", "stylize.dropShadow", "stylize.cartoon",
                            "stylize.mosaic", "stylize.findEdges", "stylize.posterize", "stylize.glow",
                            "key.chroma", "key.luma"}));
  EXPECT_EQ(EffectCatalog::index().size(), 19u);
  for (const auto* d : all) EXPECT_EQ(EffectCatalog::descriptorFor(d->id), d);
  EXPECT_EQ(EffectCatalog::descriptorFor("blur.box"), nullptr);
  EXPECT_EQ(idsOf(EffectCatalog::descriptorsIn(EffectCategory::blur)),
            (std::vector<std::string>{"blur.gaussian", "blur.directional", "sharpen"}));
  EXPECT_EQ(EffectCatalog::descriptorsIn(EffectCategory::color).size(), 6u);
  EXPECT_EQ(EffectCatalog::descriptorsIn(EffectCategory::stylize).size(), 8u);
}

TEST(EffectCatalogTest, ParametersAreUniqueAndDefaultsFitTheirEditors) {
  using Kind = P::EditorKind;
  for (const auto& d : EffectCatalog::all()) {
    std::set<std::string> seen;
    for (const auto& p : d.parameters) {
      SCOPED_TRACE(d.id + "/" + p.id);
      EXPECT_TRUE(seen.insert(p.id).second);
      const auto kind = p.defaultValue.kind();
      if (p.editor.kind == Kind::slider) {
        ASSERT_EQ(kind, PropertyValue::Kind::double_);
        EXPECT_LT(p.editor.minimum, p.editor.maximum);
        EXPECT_GE(*p.defaultValue.doubleValue(), p.editor.minimum);
        EXPECT_LE(*p.defaultValue.doubleValue(), p.editor.maximum);
      } else {
        EXPECT_FALSE(p.scalesWithResolution);
        const auto expected = p.editor.kind == Kind::angle    ? PropertyValue::Kind::double_
                              : p.editor.kind == Kind::toggle ? PropertyValue::Kind::bool_
                                                              : PropertyValue::Kind::color;
        EXPECT_EQ(kind, expected);
      }
    }
  }
}

TEST(EffectCatalogTest, RowsAsListed) {
  const EffectDescriptor* shadow = EffectCatalog::descriptorFor("stylize.dropShadow");
  EXPECT_EQ(shadow->name, "Drop Shadow");
  EXPECT_EQ(shadow->category, EffectCategory::stylize);
  EXPECT_EQ(shadow->parameters, (std::vector<P>{P::slider("opacity", "Opacity", 0, 1, 0.65),
                                                P::slider("distance", "Distance", 0, 200, 12, true),
                                                P::angle("direction", "Direction", -135),
                                                P::slider("softness", "Softness", 0, 100, 8, true),
                                                P::color("color", "Color", OVColor{0, 0, 0, 1})}));
  const auto spread = [](const char* id) { return EffectCatalog::descriptorFor(id)->parameter("spread"); };
  EXPECT_EQ(*spread("stylize.glow"), EffectCatalog::spreadParameter(true));
  EXPECT_EQ(spread("blur.gaussian")->defaultValue, PropertyValue::bool_(false));
  EXPECT_EQ(EffectCatalog::descriptorFor("key.chroma")->parameters[0].defaultValue,
            PropertyValue::color(OVColor{0.1, 0.8, 0.2, 1}));
}

TEST(EffectCatalogTest, PresetsNameOnlyKnownParametersWithTheirKinds) {
  for (const auto& d : EffectCatalog::all()) {
    EXPECT_EQ(d.presets, EffectPresets::presetsFor(d.id));
    EXPECT_EQ(d.presets.empty(), d.id == "color.hue") << d.id;
    for (const auto& preset : d.presets) {
      EXPECT_FALSE(preset.values.empty());
      for (const auto& [id, value] : preset.values) {
        const P* p = d.parameter(id);
        ASSERT_NE(p, nullptr) << d.id << " " << preset.name << " " << id;
        EXPECT_EQ(value.kind(), p->defaultValue.kind()) << d.id << " " << preset.name << " " << id;
      }
    }
  }
  EXPECT_TRUE(EffectPresets::presetsFor("no.such.effect").empty());
  const auto exposure = EffectPresets::presetsFor("color.exposure");
  EXPECT_EQ(exposure.at(0), (EffectPreset{"\u2212" "1 EV", {{"ev", PropertyValue::double_(-1)}}}));
  EXPECT_EQ(EffectPresets::presetsFor("stylize.dropShadow").at(3),
            (EffectPreset{"Glow Under", {{"distance", PropertyValue::double_(0)},
                                         {"softness", PropertyValue::double_(30)},
                                         {"opacity", PropertyValue::double_(0.7)}}}));
}

TEST(EffectCatalogTest, InstancesStartEmptyAndDefaultsCoverEveryParameter) {
  const EffectDescriptor* d = EffectCatalog::descriptorFor("key.luma");
  const EffectInstance a = d->makeInstance(), b = d->makeInstance();
  EXPECT_NE(a.id, b.id);
  EXPECT_EQ(a.effectID, "key.luma");
  EXPECT_TRUE(a.isEnabled && a.parameters.empty());
  const auto defaults = d->makeDefaultParameters();
  EXPECT_EQ(defaults.size(), 3u);
  EXPECT_EQ(defaults.at("keyOutDarker"), AnimatedProperty::bool_(true));
}

}  // namespace
}  // namespace orvane::core
