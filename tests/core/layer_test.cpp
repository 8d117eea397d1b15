// Layer queries, hashing, and the walk over every animated property.

#include "core/layer.hpp"

#include <gtest/gtest.h>

#include "tests/core/test_support.hpp"

#include <functional>
#include <utility>
#include <vector>

#include "core/project.hpp"

namespace orvane::core {
namespace {

using testing_support::secs;

Layer layerWith(LayerContent content) { return Layer("Layer", std::move(content), OVTimeRange(secs(0), secs(5))); }

TEST(LayerTest, KindDecidesLabelAudioContributionAndCompositionStructure) {
  // Audio as is, without source audio, and muted; whether edits rebuild the media composition; the new label.
  const Uuid id = Uuid::make();
  using L = LayerLabelColor;
  const struct { LayerContent content; bool plain, withoutSourceAudio, muted, structure; L label; } cases[] = {
      {LayerContent::video(id), true, false, false, true, L::blue},  // only video listens to usesSourceAudio
      {LayerContent::audio(id), true, true, false, true, L::green},
      {LayerContent::precomposition(id), true, true, false, true, L::blue},
      {LayerContent::image(id), false, false, false, true, L::purple},
      {LayerContent::text({}), false, false, false, false, L::yellow},
      {LayerContent::shape({}), false, false, false, false, L::teal},
      {LayerContent::solid({OVColor::white, {10, 10}}), false, false, false, false, L::orange},
      {LayerContent::adjustment({10, 10}), false, false, false, false, L::red}};
  for (const auto& c : cases) {
    SCOPED_TRACE(rawValue(c.content.kind()));
    Layer layer = layerWith(c.content);
    EXPECT_EQ(layer.labelColor, c.label);
    EXPECT_EQ(layer.contributesAudio(), c.plain);
    EXPECT_EQ(layer.affectsCompositionStructure(), c.structure);
    layer.usesSourceAudio = false;
    EXPECT_EQ(layer.contributesAudio(), c.withoutSourceAudio);
    layer.usesSourceAudio = true;
    layer.audio.isMuted = true;
    EXPECT_EQ(layer.contributesAudio(), c.muted);
  }
  EXPECT_EQ(Layer{}.labelColor, LayerLabelColor::none);  // only new layers get the suggestion
}

TEST(LayerTest, ActivityAndSourceTimeFollowTheTimeRange) {
  Layer layer("Clip", LayerContent::video(Uuid::make()), OVTimeRange(secs(10), secs(5)));
  layer.sourceStart = secs(2);
  EXPECT_FALSE(layer.isActiveAt(secs(9.99)));
  EXPECT_TRUE(layer.isActiveAt(secs(10)));
  EXPECT_FALSE(layer.isActiveAt(secs(15)));
  EXPECT_EQ(layer.sourceTimeForComposition(secs(12.5)), secs(4.5));
  layer.isEnabled = false;
  EXPECT_FALSE(layer.isActiveAt(secs(12)));
}

TEST(LayerTest, DisplayNameOfANestedCompositionIsThatCompositionsName) {
  Composition inner;
  inner.name = "Titles";
  const OVProject project("P", {inner});
  const OVTimeRange range(secs(0), secs(1));
  EXPECT_EQ(Layer("Precomp layer", LayerContent::precomposition(inner.id), range).displayNameIn(project), "Titles");
  EXPECT_EQ(Layer("Lost", LayerContent::precomposition(Uuid::make()), range).displayNameIn(project), "Lost");
  EXPECT_EQ(Layer("Beach", LayerContent::video(inner.id), range).displayNameIn(project), "Beach");
}

TEST(LayerTest, HashSeesEveryKindOfFieldAndIgnoresStorage) {
  Layer base = layerWith(LayerContent::video(Uuid::make()));
  base.masks = {LayerMask{}};
  base.effects = {EffectInstance{.effectID = "blur", .parameters = {{"radius", AnimatedProperty::double_(4)}}}};
  Layer copy = base;
  copy.masks.mutate();  // same elements, separate storage
  copy.effects.mutate();
  ASSERT_FALSE(copy.masks.sharesStorageWith(base.masks));
  EXPECT_EQ(copy, base);
  EXPECT_EQ(hashValue(copy), hashValue(base));

  const std::vector<std::function<void(Layer&)>> changes = {
      [](Layer& l) { l.name = "Other"; },          [](Layer& l) { l.timeRange.duration = secs(3); },
      [](Layer& l) { l.sourceStart = secs(1); },   [](Layer& l) { l.isSolo = true; },
      [](Layer& l) { l.fadeOut = secs(1); },       [](Layer& l) { l.blendMode = OVBlendMode::screen; },
      [](Layer& l) { l.masks = {LayerMask{}}; },   [](Layer& l) { l.transform.flipVertically = true; },
      [](Layer& l) { l.markers = {Marker{}}; },    [](Layer& l) { l.crop.top = AnimatedProperty::double_(3); },
      [](Layer& l) { l.trackID = Uuid::make(); },  [](Layer& l) { l.audio.pitchMode = AudioPitchMode::linked; },
      [](Layer& l) { l.crossfadeOut = true; },     [](Layer& l) { l.parentLayerID = Uuid::make(); },
      [](Layer& l) { l.effects = {}; },            [](Layer& l) { l.labelColor = LayerLabelColor::teal; },
      [](Layer& l) { l.textReveal = AnimatedProperty::double_(40); },
  };
  for (std::size_t i = 0; i < changes.size(); ++i) {
    Layer changed = base;
    changes[i](changed);
    EXPECT_NE(changed, base) << "change " << i;
    EXPECT_NE(hashValue(changed), hashValue(base)) << "change " << i;
  }
}

// Two masks and two effects, the first with parameters "b" and "a" (visited in key order, "a" first).
Layer richLayer() {
  Layer layer("Rich", LayerContent::text({}), OVTimeRange(secs(1), secs(10)));
  const AnimatedProperty zero = AnimatedProperty::double_(0);
  layer.masks = {LayerMask{}, LayerMask{}};
  layer.effects = {EffectInstance{.effectID = "blur", .parameters = {{"b", zero}, {"a", zero}}},
                   EffectInstance{.effectID = "glow", .parameters = {{"x", zero}}}};
  return layer;
}

// 6 channels + 4 edges + 4 mask properties + 3 effect parameters + volume, pan and text reveal.
constexpr int kPropertyCount = 20;

double base(const AnimatedProperty& p) { return p.baseValue.doubleValue().value_or(-1); }

void expectEveryKeyframeAt(const Layer& layer, const OVTime& t) {
  int visited = 0;
  layer.forEachAnimatedProperty([&](const AnimatedProperty& p) {
    SCOPED_TRACE(testing::Message() << "property " << visited++);
    ASSERT_EQ(p.keyframes().size(), 1u);
    EXPECT_EQ(p.keyframes()[0].time, t);
  });
  EXPECT_EQ(visited, kPropertyCount);
}

TEST(LayerAnimatedPropertiesTest, VisitsTransformCropMasksEffectsAudioThenTextReveal) {
  Layer layer = richLayer();
  int index = 0;
  layer.forEachAnimatedProperty([&](AnimatedProperty& p) { p.baseValue = PropertyValue::double_(index++); });
  const LayerTransform& t = layer.transform;
  const std::vector<const AnimatedProperty*> expected = {
      &t.position,          &t.scale,           &t.rotation,        &t.anchorPoint,      &t.opacity,
      &t.skew,              &layer.crop.left,   &layer.crop.top,    &layer.crop.right,   &layer.crop.bottom,
      &layer.masks[0].path, &layer.masks[0].feather,                &layer.masks[1].path, &layer.masks[1].feather,
      &layer.effects[0].parameters.at("a"), &layer.effects[0].parameters.at("b"),
      &layer.effects[1].parameters.at("x"), &layer.audio.volume,    &layer.audio.pan,    &layer.textReveal};
  for (int i = 0; i < kPropertyCount; ++i) EXPECT_EQ(base(*expected[i]), i) << "property " << i;

  std::vector<double> seen;  // the read-only walk takes the same order
  std::as_const(layer).forEachAnimatedProperty([&](const AnimatedProperty& p) { seen.push_back(base(p)); });
  ASSERT_EQ(seen.size(), static_cast<std::size_t>(kPropertyCount));
  for (int i = 0; i < kPropertyCount; ++i) EXPECT_EQ(seen[i], i);
}

TEST(LayerAnimatedPropertiesTest, EachVisitedPropertyWritesBackIntoTheCopyOnlyAndEmptyListsStayShared) {
  const Layer original = richLayer();
  const PropertyValue marker = PropertyValue::text("changed");
  for (int target = 0; target < kPropertyCount; ++target) {
    Layer changed = original;
    int index = 0;
    changed.forEachAnimatedProperty([&](AnimatedProperty& p) {
      if (index++ == target) p.baseValue = marker;
    });
    EXPECT_NE(changed, original) << "property " << target;
  }
  int untouched = 0;
  original.forEachAnimatedProperty([&](const AnimatedProperty& p) { untouched += p.baseValue != marker; });
  EXPECT_EQ(untouched, kPropertyCount);

  const Layer plain = layerWith(LayerContent::video(Uuid::make()));  // empty lists stay shared
  Layer walked = plain;
  walked.forEachAnimatedProperty([](AnimatedProperty&) {});
  EXPECT_TRUE(walked.masks.sharesStorageWith(plain.masks));
  EXPECT_TRUE(walked.effects.sharesStorageWith(plain.effects));
}

TEST(LayerAnimatedPropertiesTest, ShiftAndAlignMoveEveryPropertysKeyframes) {
  Layer layer = richLayer();
  layer.forEachAnimatedProperty([](AnimatedProperty& p) { p.addKeyframeAt(secs(2)); });
  const Layer before = layer;
  layer.shiftKeyframesBy(OVTime::zero);
  EXPECT_EQ(layer, before);
  EXPECT_TRUE(layer.masks.sharesStorageWith(before.masks));

  layer.shiftKeyframesBy(secs(1.5));
  expectEveryKeyframeAt(layer, secs(3.5));
  EXPECT_EQ(layer.timeRange.start, secs(1));

  layer.shiftKeyframesBy(secs(-2.49));  // 1.01 s snaps to the frame at 1 s
  layer.alignKeyframesTo(FrameRate::fps30);
  expectEveryKeyframeAt(layer, secs(1));
}

}  // namespace
}  // namespace orvane::core
