// Walking every animated property of a layer: order, write-back, and the
// keyframe edits built on the walk.

#include "core/layer.hpp"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace orvane::core {
namespace {

OVTime secs(double s) { return OVTime::fromSeconds(s); }

// Two masks and two effects, the first with keys "b" and "a" (visited in map
// order, "a" first): 6 channels + 4 edges + 4 mask properties + 3 effect
// parameters + volume, pan and text reveal.
constexpr int kPropertyCount = 20;

Layer richLayer() {
  Layer layer("Rich", LayerContent::text({}), OVTimeRange(secs(1), secs(10)));
  layer.masks = {LayerMask{}, LayerMask{}};
  EffectInstance first{.effectID = "blur"};
  first.parameters["b"] = AnimatedProperty::double_(0);
  first.parameters["a"] = AnimatedProperty::double_(0);
  EffectInstance second{.effectID = "glow"};
  second.parameters["x"] = AnimatedProperty::double_(0);
  layer.effects = {first, second};
  return layer;
}

// Gives each visited property its visiting index as base value.
void numberProperties(Layer& layer) {
  int index = 0;
  layer.forEachAnimatedProperty([&](AnimatedProperty& p) { p.baseValue = PropertyValue::double_(index++); });
}

double base(const AnimatedProperty& p) { return p.baseValue.doubleValue().value_or(-1); }

TEST(LayerAnimatedPropertiesTest, VisitsTransformCropMasksEffectsAudioThenTextReveal) {
  Layer layer = richLayer();
  numberProperties(layer);
  const LayerTransform& t = layer.transform;
  EXPECT_EQ(base(t.position), 0);
  EXPECT_EQ(base(t.scale), 1);
  EXPECT_EQ(base(t.rotation), 2);
  EXPECT_EQ(base(t.anchorPoint), 3);
  EXPECT_EQ(base(t.opacity), 4);
  EXPECT_EQ(base(t.skew), 5);
  EXPECT_EQ(base(layer.crop.left), 6);
  EXPECT_EQ(base(layer.crop.top), 7);
  EXPECT_EQ(base(layer.crop.right), 8);
  EXPECT_EQ(base(layer.crop.bottom), 9);
  EXPECT_EQ(base(layer.masks[0].path), 10);
  EXPECT_EQ(base(layer.masks[0].feather), 11);
  EXPECT_EQ(base(layer.masks[1].path), 12);
  EXPECT_EQ(base(layer.masks[1].feather), 13);
  EXPECT_EQ(base(layer.effects[0].parameters.at("a")), 14);
  EXPECT_EQ(base(layer.effects[0].parameters.at("b")), 15);
  EXPECT_EQ(base(layer.effects[1].parameters.at("x")), 16);
  EXPECT_EQ(base(layer.audio.volume), 17);
  EXPECT_EQ(base(layer.audio.pan), 18);
  EXPECT_EQ(base(layer.textReveal), 19);
}

TEST(LayerAnimatedPropertiesTest, ReadOnlyWalkVisitsTheSameOrder) {
  Layer layer = richLayer();
  numberProperties(layer);
  std::vector<double> seen;
  std::as_const(layer).forEachAnimatedProperty([&](const AnimatedProperty& p) { seen.push_back(base(p)); });
  ASSERT_EQ(seen.size(), static_cast<std::size_t>(kPropertyCount));
  for (int i = 0; i < kPropertyCount; ++i) EXPECT_EQ(seen[i], i);
}

TEST(LayerAnimatedPropertiesTest, EachVisitedPropertyWritesBackIntoTheLayer) {
  const Layer original = richLayer();
  for (int target = 0; target < kPropertyCount; ++target) {
    Layer changed = original;
    int index = 0;
    changed.forEachAnimatedProperty([&](AnimatedProperty& p) {
      if (index++ == target) p.baseValue = PropertyValue::text("changed");
    });
    EXPECT_NE(changed, original) << "property " << target;
  }
}

TEST(LayerAnimatedPropertiesTest, WritingThroughACopyLeavesTheOriginalAlone) {
  const Layer original = richLayer();
  Layer copy = original;
  numberProperties(copy);
  EXPECT_EQ(original.transform, LayerTransform{});
  EXPECT_EQ(original.masks[0].path.baseValue.kind(), PropertyValue::Kind::maskPath);
  EXPECT_EQ(base(original.effects[0].parameters.at("a")), 0);
  EXPECT_EQ(base(copy.effects[0].parameters.at("a")), 14);
}

TEST(LayerAnimatedPropertiesTest, EmptyMaskAndEffectListsStayShared) {
  const Layer original("Plain", LayerContent::video(Uuid::make()), OVTimeRange(secs(0), secs(2)));
  Layer copy = original;
  copy.forEachAnimatedProperty([](AnimatedProperty&) {});
  EXPECT_TRUE(copy.masks.sharesStorageWith(original.masks));
  EXPECT_TRUE(copy.effects.sharesStorageWith(original.effects));
  EXPECT_TRUE(copy.masks.empty());
}

TEST(LayerAnimatedPropertiesTest, ShiftKeyframesMovesEveryAnimatedProperty) {
  Layer layer = richLayer();
  layer.forEachAnimatedProperty([](AnimatedProperty& p) { p.addKeyframeAt(secs(2)); });
  const OVTime start = layer.timeRange.start;
  layer.shiftKeyframesBy(secs(1.5));
  int visited = 0;
  std::as_const(layer).forEachAnimatedProperty([&](const AnimatedProperty& p) {
    ++visited;
    ASSERT_EQ(p.keyframes().size(), 1u);
    EXPECT_EQ(p.keyframes()[0].time, secs(3.5)) << "property " << visited - 1;
  });
  EXPECT_EQ(visited, kPropertyCount);
  EXPECT_EQ(layer.timeRange.start, start);
}

TEST(LayerAnimatedPropertiesTest, ShiftByZeroChangesNothing) {
  Layer layer = richLayer();
  layer.audio.pan.addKeyframeAt(secs(2));
  const Layer before = layer;
  layer.shiftKeyframesBy(OVTime::zero);
  EXPECT_EQ(layer, before);
  EXPECT_TRUE(layer.masks.sharesStorageWith(before.masks));
}

TEST(LayerAnimatedPropertiesTest, AlignKeyframesSnapsEveryPropertyToFrames) {
  Layer layer = richLayer();
  layer.forEachAnimatedProperty([](AnimatedProperty& p) { p.addKeyframeAt(secs(1.01)); });
  layer.alignKeyframesTo(FrameRate::fps30);
  int visited = 0;
  std::as_const(layer).forEachAnimatedProperty([&](const AnimatedProperty& p) {
    ++visited;
    ASSERT_EQ(p.keyframes().size(), 1u);
    EXPECT_EQ(p.keyframes()[0].time, secs(1)) << "property " << visited - 1;
  });
  EXPECT_EQ(visited, kPropertyCount);
}

}  // namespace
}  // namespace orvane::core
