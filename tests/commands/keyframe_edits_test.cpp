#include "Commands/keyframe_edits.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <unordered_set>

#include "core/effect_catalog.hpp"
#include "tests/commands/commands_test_support.hpp"

namespace orvane::commands {
namespace {

using namespace testing_support;
using Channel = LayerTransform::Channel;

// One solid whose position moves from (100, 100) at 0 s to (500, 100) at
// 2 s in a straight line, with a directional blur; 30 fps.
struct KeyframeEditsTest : ::testing::Test {
  Layer layer = [] {
    Layer l = clip("Solid", 0, 5);
    l.transform.position.upsertKeyframe(PropertyValue::point(100, 100), secs(0));
    l.transform.position.upsertKeyframe(PropertyValue::point(500, 100), secs(2));
    std::unordered_set<Uuid> ids;
    for (const Keyframe& k : l.transform.position.keyframes()) ids.insert(k.id);
    l.transform.position.applySpatialInterpolation(ids, SpatialInterpolation::linear);
    l.effects = {EffectCatalog::descriptorFor("blur.directional")->makeInstance()};
    return l;
  }();
  ProjectDocument doc{projectWith({layer})};
  UndoStack undo;
  PropertyAddress position = PropertyAddress::transform(layer.id, Channel::position);
  PropertyAddress opacity = PropertyAddress::transform(layer.id, Channel::opacity);
  std::vector<KeyframeRef> keys = keyframeRefs(doc, position);

  AnimatedProperty property(const PropertyAddress& a) const { return *propertyAt(doc, a); }
  Keyframe key(std::size_t i) const { return *keyframe(doc, keys[i]); }
};

TEST_F(KeyframeEditsTest, EveryOperationIsOneNamedStep) {
  using V = PropertyValue;
  using M = InterpolationMode;
  const auto radius = PropertyAddress::effectParameter(layer.id, layer.effects[0].id, "radius");
  const Uuid k0 = keys[0].id, k1 = keys[1].id;
  auto& d = doc;
  UndoStack* u = &undo;
  expectEachUndoableFromOneStart(doc, undo, {
      {"Set Opacity", [&] { setPropertyValue(d, V::double_(50), opacity, secs(1), false, false, u); }},
      {"Set Length", [&] { setPropertyValue(d, V::double_(5), radius, secs(1), true, false, u); }},
      {"Add Keyframe", [&] { addKeyframe(d, position, secs(1), u); }},
      {"Delete Keyframe", [&] { removeKeyframe(d, position, secs(2), u); }},
      {"Delete Keyframe", [&] { removeKeyframes(d, {keys[0]}, u); }},
      {"Delete Keyframes", [&] { removeKeyframes(d, keys, u); }},
      {"Enable Animation", [&] { setAnimated(d, true, opacity, secs(1), u); }},
      {"Remove Animation", [&] { setAnimated(d, false, position, secs(1), u); }},
      {"Move Keyframe", [&] { moveKeyframe(d, position, k1, secs(3), false, u); }},
      {"Move Keyframe", [&] { moveKeyframes(d, {{keys[1], secs(3)}}, false, u); }},
      {"Move Keyframes", [&] { moveKeyframes(d, {{keys[0], secs(1)}, {keys[1], secs(3)}}, false, u); }},
      {"Set Position", [&] { setKeyframeValue(d, V::point(1, 2), position, k0, false, u); }},
      {"Set Position", [&] { setKeyframeComponent(d, 7, GraphComponent::y, position, k0, false, u); }},
      {"Set Interpolation", [&] { setKeyframeInterpolation(d, position, k0, M::hold, u); }},
      {"Adjust Easing", [&] { setKeyframeHandles(d, position, k0, BezierHandles::glide, false, u); }},
      {"Set Easing", [&] { setInterpolation(d, M::easeIn, std::nullopt, keys, u); }},
      {"Set Easing", [&] { applyEasing(d, EasingPreset::easyEase, keys, u); }},
      {"Set Spatial Interpolation", [&] { setSpatialInterpolation(d, SpatialInterpolation::bezier, position, k0, u); }},
      {"Set Spatial Interpolation", [&] { setSpatialInterpolation(d, SpatialInterpolation::autoBezier, keys, u); }},
      {"Adjust Motion Path", [&] { setSpatialHandles(d, position, k0, {{1, 1}, {2, 2}}, false, u); }},
      {"Nudge", [&] { modifyProperty(d, opacity, "Nudge", u, [](auto& p) { p.baseValue = V::double_(3); }); }},
  });
}

TEST_F(KeyframeEditsTest, BadInputLeavesNoTrace) {
  const Uuid unknown = Uuid::make();
  expectNoEdit(doc, undo, [&] {
    toggleKeyframe(doc, PropertyAddress::maskPath(layer.id, unknown), secs(1), &undo);
    setPropertyValue(doc, PropertyValue::double_(1), PropertyAddress::audioPan(unknown), secs(1), false, false, &undo);
    setKeyframeComponent(doc, 3, GraphComponent::scalar, position, keys[0].id, false, &undo);  // point has no scalar
    setKeyframeValue(doc, PropertyValue::point(0, 0), position, unknown, false, &undo);
    setAnimated(doc, true, position, secs(1), &undo);  // already animated
    removeKeyframes(doc, {}, &undo);
    moveKeyframes(doc, {}, false, &undo);
    // A no-op body on an unstored parameter stores nothing.
    modifyProperty(doc, PropertyAddress::effectParameter(layer.id, layer.effects[0].id, "radius"), "X", &undo,
                   [](AnimatedProperty&) {});
  });
}

TEST_F(KeyframeEditsTest, TimesSnapToFrames) {
  addKeyframe(doc, opacity, secs(1.004), &undo);
  ASSERT_EQ(property(opacity).keyframes().size(), 1u);
  EXPECT_EQ(property(opacity).keyframes()[0].time, FrameRate::fps30.timeForFrame(30));
  EXPECT_TRUE(hasKeyframe(doc, opacity, secs(1.01)));
  EXPECT_EQ(keyframeRefAt(doc, opacity, secs(1.01)), (KeyframeRef{opacity, property(opacity).keyframes()[0].id}));
  expectNoEdit(doc, undo, [&] { addKeyframe(doc, opacity, secs(1.01), &undo); });

  moveKeyframes(doc, {{keys[1], secs(3.02)}}, false, &undo);
  EXPECT_EQ(key(1).time, FrameRate::fps30.timeForFrame(90));
}

TEST_F(KeyframeEditsTest, ToggleTwiceRestoresWithTwoSteps) {
  const AnimatedProperty before = property(position);
  toggleKeyframe(doc, position, secs(1), &undo);
  EXPECT_EQ(undo.undoActionName(), "Add Keyframe");
  EXPECT_EQ(property(position).keyframes().size(), 3u);
  toggleKeyframe(doc, position, secs(1), &undo);
  EXPECT_EQ(undo.undoActionName(), "Delete Keyframe");
  EXPECT_EQ(undo.undoCount(), 2u);
  EXPECT_EQ(property(position), before);
}

TEST_F(KeyframeEditsTest, RemovingAnimationFreezesTheValueAtTheTime) {
  setAnimated(doc, false, position, secs(1), &undo);
  EXPECT_FALSE(property(position).isAnimated());
  EXPECT_EQ(property(position).baseValue, PropertyValue::point(300, 100));
}

TEST_F(KeyframeEditsTest, EasyEaseThenLinearKeepsHandles) {
  setKeyframeInterpolation(doc, position, keys[0].id, InterpolationMode::hold, &undo);
  EXPECT_FALSE(key(0).handles);
  applyEasing(doc, EasingPreset::easyEase, {keys[0]}, &undo);
  EXPECT_EQ(key(0).mode, InterpolationMode::bezier);
  EXPECT_EQ(key(0).handles, BezierHandles::smooth);
  applyEasing(doc, EasingPreset::linear, {keys[0]}, &undo);
  EXPECT_EQ(key(0).mode, InterpolationMode::linear);
  EXPECT_EQ(key(0).handles, BezierHandles::smooth);
  // Back to bezier restores the stored handles rather than smooth ones.
  setKeyframeHandles(doc, position, keys[0].id, BezierHandles::glide, false, &undo);
  setInterpolation(doc, InterpolationMode::bezier, std::nullopt, {keys[0]}, &undo);
  EXPECT_EQ(key(0).handles, BezierHandles::glide);
}

TEST_F(KeyframeEditsTest, QueriesOverTheKeys) {
  EXPECT_EQ(keyframeTimeBefore(doc, position, secs(1)), secs(0));
  EXPECT_EQ(keyframeTimeAfter(doc, position, secs(1)), secs(2));
  EXPECT_FALSE(keyframeTimeAfter(doc, position, secs(2)));
  EXPECT_EQ(sharedInterpolation(doc, keys), InterpolationMode::linear);
  setKeyframeInterpolation(doc, position, keys[1].id, InterpolationMode::bezier, &undo);
  EXPECT_FALSE(sharedInterpolation(doc, keys));
  EXPECT_EQ(sharedInterpolation(doc, {keys[1]}), InterpolationMode::bezier);
  EXPECT_FALSE(sharedInterpolation(doc, {}));
}

TEST_F(KeyframeEditsTest, InteractiveEditsLeaveTheStepToTheInteraction) {
  doc.beginInteraction();
  setSpatialHandles(doc, position, keys[0].id, {{0, 0}, {40, 0}}, true, &undo);
  moveKeyframe(doc, position, keys[1].id, secs(4), true, &undo);
  EXPECT_EQ(undo.undoCount(), 0u);
  EXPECT_EQ(key(1).time, secs(4));
  doc.endInteraction("Move Keyframe", &undo);
  EXPECT_EQ(undo.undoCount(), 1u);
}

TEST(ReplacingComponentTest, EachPairing) {
  using V = PropertyValue;
  using G = GraphComponent;
  const struct {
    V value;
    G component;
    double number;
    std::optional<V> expected;
  } cases[] = {
      {V::double_(1), G::scalar, 2.25, V::double_(2.25)},
      {V::integer(1), G::scalar, 2.5, V::integer(3)},
      {V::integer(1), G::scalar, -2.5, V::integer(-3)},
      {V::integer(1), G::scalar, 2.49, V::integer(2)},
      {V::point(1, 2), G::x, 9, V::point(9, 2)},
      {V::point(1, 2), G::y, 9, V::point(1, 9)},
      {V::size(1, 2), G::x, 9, V::size(9, 2)},
      {V::size(1, 2), G::y, 9, V::size(1, 9)},
      {V::point(1, 2), G::scalar, 9, std::nullopt},
      {V::double_(1), G::x, 9, std::nullopt},
      {V::bool_(true), G::scalar, 0, std::nullopt},
  };
  for (const auto& c : cases) EXPECT_EQ(replacingComponent(c.value, c.component, c.number), c.expected);
}

}  // namespace
}  // namespace orvane::commands
