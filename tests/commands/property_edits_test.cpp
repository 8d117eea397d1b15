#include "Commands/property_edits.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "Commands/property_address.hpp"
#include "tests/commands/commands_test_support.hpp"

namespace orvane::commands {
namespace {

using namespace testing_support;

const EffectDescriptor& catalogEffect(std::string_view id) { return *EffectCatalog::descriptorFor(id); }

// A text, a solid with a blur, a sharpen and a mask, an audio clip and a shape.
struct PropertyEditsTest : ::testing::Test {
  Layer text = clip("Title", 0, 5, LayerContent::text({}));
  Layer solid = [] {
    Layer l = clip("Solid", 0, 5);
    l.effects = {catalogEffect("blur.gaussian").makeInstance(), catalogEffect("sharpen").makeInstance()};
    l.masks = {LayerMask{}};
    l.transform.scale = AnimatedProperty::point(50, 50);
    l.crop.left = AnimatedProperty::double_(10);
    return l;
  }();
  Layer audio = clip("Music", 0, 5, LayerContent::audio(Uuid::make()));
  Layer shape = clip("Shape", 0, 5, LayerContent::shape({}));
  ProjectDocument doc{projectWith({text, solid, audio, shape})};
  UndoStack undo;

  const Layer& layer(const Layer& l) const { return *doc.activeComposition()->layer(l.id); }
  Uuid blurID() const { return solid.effects[0].id; }
  Uuid maskID() const { return solid.masks[0].id; }
};

TEST_F(PropertyEditsTest, EveryOperationIsOneNamedStep) {
  const TextMeasure measure = [](const TextContent&, std::optional<double>) { return OVSize{300, 120}; };
  const EffectPreset heavy{"Heavy", {{"radius", PropertyValue::double_(60)}}};
  const Uuid s = solid.id, blur = blurID(), mask = maskID();
  auto& d = doc;
  UndoStack* u = &undo;
  expectEachUndoableFromOneStart(doc, undo, {
      {"Add Gaussian Blur", [&] { addEffect(d, catalogEffect("blur.gaussian"), {text.id}, u); }},
      {"Delete Effect", [&] { removeEffect(d, blur, s, u); }},
      {"Toggle Effect", [&] { toggleEffect(d, blur, s, u); }},
      {"Reorder Effects", [&] { moveEffect(d, blur, s, 99, u); }},
      {"Reset Effect", [&] { resetEffect(d, blur, s, u); }},
      {"Paste Effects", [&] { copyEffects(d, s, {text.id}, u); }},
      {"Apply Heavy Preset", [&] { applyEffectPreset(d, heavy, s, blur, secs(0), u); }},
      {"Add Mask", [&] { addMask(d, MaskShapePreset::ellipse, text.id, measure, u); }},
      {"Delete Mask", [&] { removeMask(d, mask, s, u); }},
      {"Toggle Mask", [&] { setMaskEnabled(d, false, mask, s, u); }},
      {"Invert Mask", [&] { setMaskInverted(d, true, mask, s, u); }},
      {"Set Mask Path", [&] { setMaskPath(d, MaskPath::rectangleIn({10, 10}), mask, s, secs(1), false, false, u); }},
      {"Flip Layer", [&] { setFlip(d, true, std::nullopt, s, u); }},
      {"Reset Transform", [&] { resetTransform(d, s, u); }},
      {"Reset Crop", [&] { resetCrop(d, s, u); }},
      {"Set Blend Mode", [&] { setBlendMode(d, OVBlendMode::screen, {s, text.id}, u); }},
      {"Edit Text", [&] { setTextContent(d, {.string = "Hello"}, text.id, false, u); }},
      {"Edit Shape", [&] { setShapeContent(d, {.sideCount = 7}, shape.id, false, u); }},
      {"Edit Solid", [&] { setSolidContent(d, {OVColor::red_, {8, 8}}, s, false, u); }},
  });
}

TEST_F(PropertyEditsTest, BadInputLeavesNoTrace) {
  const TextMeasure measure = [](const TextContent&, std::optional<double>) { return OVSize{300, 120}; };
  expectNoEdit(doc, undo, [&] {
    EXPECT_FALSE(addMask(doc, MaskShapePreset::rectangle, audio.id, measure, &undo));  // no bounds
    EXPECT_FALSE(addMask(doc, MaskShapePreset::rectangle, Uuid::make(), measure, &undo));
    copyEffects(doc, solid.id, {solid.id}, &undo);  // onto itself
    copyEffects(doc, text.id, {solid.id}, &undo);   // nothing to copy
    moveEffect(doc, blurID(), solid.id, -5, &undo);  // already first
    toggleEffect(doc, Uuid::make(), solid.id, &undo);
    setTextContent(doc, {}, solid.id, false, &undo);  // a solid stays a solid
    setFlip(doc, std::nullopt, false, solid.id, &undo);
  });
}

TEST_F(PropertyEditsTest, EffectOnThreeLayersIsOneStepWithThreeIDs) {
  addEffect(doc, catalogEffect("sharpen"), {text.id, solid.id, audio.id}, &undo);
  EXPECT_EQ(undo.undoCount(), 1u);
  std::set<Uuid> ids;
  for (const Layer* l : {&layer(text), &layer(solid), &layer(audio)}) {
    EXPECT_EQ(l->effects.back().effectID, "sharpen");
    ids.insert(l->effects.back().id);
  }
  EXPECT_EQ(ids.size(), 3u);
}

TEST_F(PropertyEditsTest, PastedEffectsGetFreshIDsAfterExistingOnes) {
  addEffect(doc, catalogEffect("color.contrast"), {text.id}, &undo);
  copyEffects(doc, solid.id, {text.id, solid.id}, &undo);
  const auto& effects = layer(text).effects;
  ASSERT_EQ(effects.size(), 3u);
  EXPECT_EQ(effects[0].effectID, "color.contrast");
  EXPECT_EQ(effects[1].effectID, "blur.gaussian");
  EXPECT_NE(effects[1].id, blurID());
  EXPECT_EQ(layer(solid).effects.size(), 2u);
}

TEST_F(PropertyEditsTest, PresetWritesBaseValuesOfKnownParametersOnly) {
  applyEffectPreset(doc, {"Dreamy", {{"radius", PropertyValue::double_(30)}, {"bogus", PropertyValue::double_(1)}}},
                    solid.id, blurID(), secs(1), &undo);
  const auto& parameters = layer(solid).effects[0].parameters;
  EXPECT_EQ(parameters.size(), 1u);
  EXPECT_EQ(parameters.at("radius"), AnimatedProperty::double_(30));
  resetEffect(doc, blurID(), solid.id, &undo);
  EXPECT_EQ(layer(solid).effects[0].parameters, catalogEffect("blur.gaussian").makeDefaultParameters());
}

TEST_F(PropertyEditsTest, MasksFollowTheNaturalBounds) {
  const TextMeasure measure = [](const TextContent&, std::optional<double>) { return OVSize{300, 120}; };
  const auto first = addMask(doc, MaskShapePreset::rectangle, text.id, measure, &undo);
  const auto second = addMask(doc, MaskShapePreset::ellipse, solid.id, measure, &undo);
  ASSERT_TRUE(first && second);
  const LayerMask& onText = layer(text).masks.back();
  EXPECT_EQ(onText.id, *first);
  EXPECT_EQ(onText.name, "Mask 1");
  EXPECT_EQ(onText.path.baseValue, PropertyValue::maskPath(MaskPath::rectangleIn({300, 120})));
  const LayerMask& onSolid = layer(solid).masks.back();
  EXPECT_EQ(onSolid.name, "Mask 2");
  EXPECT_EQ(onSolid.path.baseValue, PropertyValue::maskPath(MaskPath::ellipseIn({100, 100})));
  EXPECT_TRUE(onSolid.isEnabled && !onSolid.inverted);
}

TEST_F(PropertyEditsTest, ResetTransformCentresAtFullSizeForOversizedSources) {
  const MediaAsset big = videoAsset("Big", 5, {3840, 2160});
  Layer footage = clip("Big", 0, 5, LayerContent::video(big.id));
  footage.transform.scale = AnimatedProperty::point(50, 50);
  footage.transform.flipVertically = true;
  doc.performWithoutUndo([&](OVProject& p) {
    p.addAsset(big);
    p.updateActiveComposition([&](Composition& c) { c.insert(footage); });
  });
  resetTransform(doc, footage.id, &undo);
  EXPECT_EQ(layer(footage).transform, LayerTransform::centeredIn({1920, 1080}));
  EXPECT_EQ(layer(footage).transform.scale, AnimatedProperty::point(100, 100));
}

TEST_F(PropertyEditsTest, FlipWritesOnlyTheGivenFlags) {
  setFlip(doc, std::nullopt, true, solid.id, &undo);
  setFlip(doc, true, std::nullopt, solid.id, &undo);
  EXPECT_TRUE(layer(solid).transform.flipHorizontally && layer(solid).transform.flipVertically);
  EXPECT_EQ(layer(solid).transform.scale, solid.transform.scale);
}

}  // namespace
}  // namespace orvane::commands
