// AnimatedProperty edits: writing values and keys, removing, moving,
// shifting and aligning keys, spatial modes and the automatic tangents that
// the edits keep up to date, and the independence of copies.

#include <gtest/gtest.h>

#include <optional>
#include <unordered_set>
#include <vector>

#include "core/animated_property.hpp"
#include "core/frame_rate.hpp"
#include "core/keyframe.hpp"

namespace orvane::core {
namespace {

using M = InterpolationMode;
using S = SpatialInterpolation;

OVTime sec(double s) { return OVTime::fromSeconds(s); }

Keyframe numberKey(double t, double v, M mode = M::linear,
                   std::optional<BezierHandles> handles = std::nullopt) {
  return Keyframe(sec(t), PropertyValue::double_(v), mode, handles);
}

Keyframe pointKey(double t, OVPoint p, S spatial, SpatialHandles tangents = SpatialHandles::zero) {
  return Keyframe(sec(t), PropertyValue::point(p), M::linear, std::nullopt, spatial, tangents);
}

AnimatedProperty withKeys(PropertyValue base, std::vector<Keyframe> keys) {
  AnimatedProperty p(std::move(base));
  p.setKeyframes(std::move(keys));
  return p;
}

std::vector<OVTime> timesOf(const AnimatedProperty& p) {
  std::vector<OVTime> times;
  for (const auto& k : p.keyframes()) times.push_back(k.time);
  return times;
}

std::vector<Uuid> idsOf(const AnimatedProperty& p) {
  std::vector<Uuid> ids;
  for (const auto& k : p.keyframes()) ids.push_back(k.id);
  return ids;
}

std::vector<OVTime> secs(std::initializer_list<double> values) {
  std::vector<OVTime> times;
  for (double v : values) times.push_back(sec(v));
  return times;
}

// A deep copy of the keys, sharing nothing with the property.
std::vector<Keyframe> snapshot(const AnimatedProperty& p) { return p.keyframes().items(); }

void expectPointNear(const OVPoint& actual, const OVPoint& expected, double tolerance = 1e-9) {
  EXPECT_NEAR(actual.x, expected.x, tolerance) << "point (" << actual.x << ", " << actual.y << ")";
  EXPECT_NEAR(actual.y, expected.y, tolerance) << "point (" << actual.x << ", " << actual.y << ")";
}

void expectTangents(const Keyframe& k, const OVPoint& in, const OVPoint& out) {
  SCOPED_TRACE(::testing::Message() << "key at " << k.time.seconds() << " s");
  {
    SCOPED_TRACE("inTangent");
    expectPointNear(k.spatialHandles.inTangent, in);
  }
  {
    SCOPED_TRACE("outTangent");
    expectPointNear(k.spatialHandles.outTangent, out);
  }
}

// Three point keys (0, 0) at 0 s, (3, 4) at 1 s and (6, 0) at 2 s, all auto,
// written one at a time out of time order.
AnimatedProperty autoPath() {
  AnimatedProperty p = AnimatedProperty::point(0, 0);
  p.upsertKeyframe(PropertyValue::point(0, 0), sec(0));
  p.upsertKeyframe(PropertyValue::point(6, 0), sec(2));
  p.upsertKeyframe(PropertyValue::point(3, 4), sec(1));
  return p;
}

// --- setValue ---

TEST(AnimatedPropertyEditTest, SetValueOnAConstantPropertyWithoutAnimationChangesTheBase) {
  auto p = AnimatedProperty::double_(1);
  p.setValue(PropertyValue::double_(5), sec(2), false);
  EXPECT_FALSE(p.isAnimated());
  EXPECT_EQ(p.baseValue, PropertyValue::double_(5));
  EXPECT_EQ(p.valueAt(sec(0)), PropertyValue::double_(5));
}

TEST(AnimatedPropertyEditTest, SetValueWithAnimationWritesTheFirstKeyAndTheBase) {
  auto p = AnimatedProperty::double_(1);
  p.setValue(PropertyValue::double_(5), sec(2), true);
  ASSERT_EQ(p.keyframes().size(), 1u);
  EXPECT_EQ(p.keyframes()[0].time, sec(2));
  EXPECT_EQ(p.keyframes()[0].value, PropertyValue::double_(5));
  EXPECT_EQ(p.keyframes()[0].mode, M::linear);
  EXPECT_FALSE(p.keyframes()[0].handles.has_value());
  EXPECT_EQ(p.keyframes()[0].spatialMode, S::linear);
  EXPECT_EQ(p.baseValue, PropertyValue::double_(5));
}

TEST(AnimatedPropertyEditTest, SetValueWithAnimationOnAPointMakesAnAutoBezierKey) {
  auto p = AnimatedProperty::point(0, 0);
  p.setValue(PropertyValue::point(10, 20), sec(1), true);
  ASSERT_EQ(p.keyframes().size(), 1u);
  EXPECT_EQ(p.keyframes()[0].spatialMode, S::autoBezier);
  EXPECT_EQ(p.keyframes()[0].spatialHandles, SpatialHandles::zero);
  EXPECT_EQ(p.baseValue, PropertyValue::point(10, 20));
}

TEST(AnimatedPropertyEditTest, SetValueOnAnAnimatedPropertyWritesAKeyEvenWithoutAnimation) {
  auto p = withKeys(PropertyValue::double_(7), {numberKey(0, 0), numberKey(2, 10)});
  p.setValue(PropertyValue::double_(20), sec(1), false);
  EXPECT_EQ(timesOf(p), secs({0, 1, 2}));
  EXPECT_EQ(p.keyframes()[1].value, PropertyValue::double_(20));
  EXPECT_EQ(p.baseValue, PropertyValue::double_(7));
  EXPECT_EQ(p.valueAt(sec(1)), PropertyValue::double_(20));
}

TEST(AnimatedPropertyEditTest, SetValueAtAnExistingKeyReplacesItsValue) {
  auto p = withKeys(PropertyValue::double_(7), {numberKey(0, 0), numberKey(2, 10)});
  const auto ids = idsOf(p);
  p.setValue(PropertyValue::double_(99), sec(2), true);
  EXPECT_EQ(idsOf(p), ids);
  EXPECT_EQ(p.keyframes()[1].value, PropertyValue::double_(99));
  EXPECT_EQ(p.baseValue, PropertyValue::double_(7));
}

// --- upsertKeyframe ---

TEST(AnimatedPropertyEditTest, UpsertAtAnExistingTimeKeepsIdModeAndSpatialFields) {
  const SpatialHandles tangents{{1, 1}, {2, 2}};
  auto p = withKeys(PropertyValue::point(0, 0),
                    {Keyframe(sec(0), PropertyValue::point(0, 0), M::easeIn, BezierHandles::glide, S::bezier,
                              tangents),
                     pointKey(1, {9, 9}, S::bezier)});
  const Uuid id = p.keyframes()[0].id;
  p.upsertKeyframe(PropertyValue::point(5, 5), sec(0));
  ASSERT_EQ(p.keyframes().size(), 2u);
  const Keyframe& k = p.keyframes()[0];
  EXPECT_EQ(k.id, id);
  EXPECT_EQ(k.value, PropertyValue::point(5, 5));
  EXPECT_EQ(k.mode, M::easeIn);
  EXPECT_EQ(k.handles, BezierHandles::glide);
  EXPECT_EQ(k.spatialMode, S::bezier);
  EXPECT_EQ(k.spatialHandles, tangents);
}

TEST(AnimatedPropertyEditTest, UpsertAtAnExistingTimeTakesAGivenModeAndHandles) {
  auto p = withKeys(PropertyValue::double_(0), {numberKey(0, 0, M::easeIn, BezierHandles::glide), numberKey(1, 1)});
  p.upsertKeyframe(PropertyValue::double_(3), sec(0), M::hold);
  EXPECT_EQ(p.keyframes()[0].mode, M::hold);
  EXPECT_EQ(p.keyframes()[0].handles, BezierHandles::glide);
  p.upsertKeyframe(PropertyValue::double_(4), sec(0), M::bezier, BezierHandles::overshoot);
  EXPECT_EQ(p.keyframes()[0].mode, M::bezier);
  EXPECT_EQ(p.keyframes()[0].handles, BezierHandles::overshoot);
  EXPECT_EQ(p.keyframes()[0].value, PropertyValue::double_(4));
  EXPECT_EQ(p.keyframes().size(), 2u);
}

TEST(AnimatedPropertyEditTest, UpsertedKeyInheritsPaceFromTheKeyBefore) {
  const auto base = withKeys(PropertyValue::double_(0),
                             {numberKey(0, 0, M::easeIn), numberKey(2, 10, M::bezier, BezierHandles::decelerate)});
  {
    auto p = base;
    p.upsertKeyframe(PropertyValue::double_(5), sec(1));
    ASSERT_NE(p.keyframeAt(sec(1)), nullptr);
    EXPECT_EQ(p.keyframeAt(sec(1))->mode, M::easeIn);
    EXPECT_FALSE(p.keyframeAt(sec(1))->handles.has_value());
  }
  {
    auto p = base;
    p.upsertKeyframe(PropertyValue::double_(5), sec(3));
    ASSERT_NE(p.keyframeAt(sec(3)), nullptr);
    EXPECT_EQ(p.keyframeAt(sec(3))->mode, M::bezier);
    EXPECT_EQ(p.keyframeAt(sec(3))->handles, BezierHandles::decelerate);
  }
}

TEST(AnimatedPropertyEditTest, UpsertedFirstKeyIsLinearWhateverFollows) {
  auto p = withKeys(PropertyValue::double_(0), {numberKey(2, 10, M::bezier, BezierHandles::decelerate)});
  p.upsertKeyframe(PropertyValue::double_(5), sec(1));
  ASSERT_NE(p.keyframeAt(sec(1)), nullptr);
  EXPECT_EQ(p.keyframeAt(sec(1))->mode, M::linear);
  EXPECT_FALSE(p.keyframeAt(sec(1))->handles.has_value());
}

TEST(AnimatedPropertyEditTest, UpsertedKeyTakesGivenModeOrHandlesSeparately) {
  const auto base = withKeys(PropertyValue::double_(0), {numberKey(0, 0, M::bezier, BezierHandles::decelerate)});
  {
    // A mode alone: the handles still come from the key before.
    auto p = base;
    p.upsertKeyframe(PropertyValue::double_(5), sec(1), M::hold);
    ASSERT_NE(p.keyframeAt(sec(1)), nullptr);
    EXPECT_EQ(p.keyframeAt(sec(1))->mode, M::hold);
    EXPECT_EQ(p.keyframeAt(sec(1))->handles, BezierHandles::decelerate);
  }
  {
    // Handles alone: the mode still comes from the key before.
    auto p = base;
    p.upsertKeyframe(PropertyValue::double_(5), sec(1), std::nullopt, BezierHandles::glide);
    ASSERT_NE(p.keyframeAt(sec(1)), nullptr);
    EXPECT_EQ(p.keyframeAt(sec(1))->mode, M::bezier);
    EXPECT_EQ(p.keyframeAt(sec(1))->handles, BezierHandles::glide);
  }
}

TEST(AnimatedPropertyEditTest, UpsertedKeyIsSortedInWithAFreshId) {
  auto p = withKeys(PropertyValue::double_(0), {numberKey(0, 0), numberKey(2, 10)});
  const auto before = idsOf(p);
  p.upsertKeyframe(PropertyValue::double_(5), sec(1));
  EXPECT_EQ(timesOf(p), secs({0, 1, 2}));
  const Keyframe& k = p.keyframes()[1];
  EXPECT_FALSE(k.id.isNil());
  EXPECT_NE(k.id, before[0]);
  EXPECT_NE(k.id, before[1]);
  EXPECT_EQ(k.spatialMode, S::linear);
  EXPECT_EQ(k.spatialHandles, SpatialHandles::zero);
  EXPECT_EQ(p.keyframes()[0].id, before[0]);
  EXPECT_EQ(p.keyframes()[2].id, before[1]);
  EXPECT_EQ(p.baseValue, PropertyValue::double_(0));
}

TEST(AnimatedPropertyEditTest, UpsertedPointKeysGetAutoTangentsAfterSorting) {
  const auto p = autoPath();
  EXPECT_EQ(timesOf(p), secs({0, 1, 2}));
  for (const auto& k : p.keyframes()) EXPECT_EQ(k.spatialMode, S::autoBezier);
  expectTangents(p.keyframes()[0], {0, 0}, {1, 4.0 / 3});
  expectTangents(p.keyframes()[1], {-5.0 / 3, 0}, {5.0 / 3, 0});
  expectTangents(p.keyframes()[2], {-1, 4.0 / 3}, {0, 0});
}

TEST(AnimatedPropertyEditTest, UpsertingAnExistingPointKeyRecomputesItsNeighbours) {
  auto p = autoPath();
  p.upsertKeyframe(PropertyValue::point(3, -4), sec(1));
  expectTangents(p.keyframes()[0], {0, 0}, {1, -4.0 / 3});
  expectTangents(p.keyframes()[1], {-5.0 / 3, 0}, {5.0 / 3, 0});
  expectTangents(p.keyframes()[2], {-1, -4.0 / 3}, {0, 0});
}

// --- addKeyframeAt ---

TEST(AnimatedPropertyEditTest, AddKeyframeLeavesTheCurveUnchangedAtItsTime) {
  auto p = withKeys(PropertyValue::double_(0), {numberKey(0, 0, M::easeIn), numberKey(1, 10)});
  const double before = p.doubleValueAt(sec(0.5));
  ASSERT_NEAR(before, 8.75, 1e-9);
  p.addKeyframeAt(sec(0.5));
  ASSERT_EQ(p.keyframes().size(), 3u);
  ASSERT_NE(p.keyframeAt(sec(0.5)), nullptr);
  EXPECT_NEAR(p.keyframeAt(sec(0.5))->value.doubleValue().value_or(-1), 8.75, 1e-9);
  EXPECT_EQ(p.keyframeAt(sec(0.5))->mode, M::easeIn);
  EXPECT_NEAR(p.doubleValueAt(sec(0.5)), before, 1e-9);
}

TEST(AnimatedPropertyEditTest, AddKeyframeOnALinearRampKeepsTheWholeRamp) {
  auto p = withKeys(PropertyValue::double_(0), {numberKey(0, 0), numberKey(2, 10)});
  p.addKeyframeAt(sec(0.5));
  for (double t : {0.25, 0.5, 1.0, 1.5}) EXPECT_NEAR(p.doubleValueAt(sec(t)), 5 * t, 1e-9) << t;
}

TEST(AnimatedPropertyEditTest, AddKeyframeOnAConstantPropertyHoldsTheBaseValue) {
  auto p = AnimatedProperty::double_(4);
  p.addKeyframeAt(sec(1));
  ASSERT_EQ(p.keyframes().size(), 1u);
  EXPECT_EQ(p.keyframes()[0].value, PropertyValue::double_(4));
  EXPECT_EQ(p.keyframes()[0].time, sec(1));
  EXPECT_EQ(p.baseValue, PropertyValue::double_(4));
  EXPECT_TRUE(p.isAnimated());
}

TEST(AnimatedPropertyEditTest, AddKeyframeWhereOneExistsKeepsIt) {
  auto p = withKeys(PropertyValue::double_(0), {numberKey(0, 0), numberKey(1, 10, M::hold)});
  const auto before = snapshot(p);
  p.addKeyframeAt(sec(1));
  EXPECT_EQ(p.keyframes().items(), before);
}

TEST(AnimatedPropertyEditTest, AddKeyframeOnAPointPathMakesAnAutoKeyOnTheCurve) {
  auto p = autoPath();
  const OVPoint before = p.pointValueAt(sec(0.5));
  p.addKeyframeAt(sec(0.5));
  ASSERT_NE(p.keyframeAt(sec(0.5)), nullptr);
  EXPECT_EQ(p.keyframeAt(sec(0.5))->spatialMode, S::autoBezier);
  expectPointNear(p.keyframeAt(sec(0.5))->value.pointValue().value_or(OVPoint{-1, -1}), before);
}

// --- removeKeyframe ---

TEST(AnimatedPropertyEditTest, RemoveKeyframeByIdRemovesOnlyThatKey) {
  auto p = withKeys(PropertyValue::double_(0), {numberKey(0, 0), numberKey(1, 10), numberKey(2, 20)});
  const auto ids = idsOf(p);
  p.removeKeyframe(ids[1]);
  EXPECT_EQ(idsOf(p), (std::vector<Uuid>{ids[0], ids[2]}));
  const auto before = snapshot(p);
  p.removeKeyframe(Uuid::make());
  EXPECT_EQ(p.keyframes().items(), before);
}

TEST(AnimatedPropertyEditTest, RemoveKeyframeByIdRemovesEveryMatch) {
  const Uuid shared = Uuid::make();
  auto p = withKeys(PropertyValue::double_(0),
                    {Keyframe(sec(0), PropertyValue::double_(0), M::linear, std::nullopt, std::nullopt,
                              SpatialHandles::zero, shared),
                     numberKey(1, 1),
                     Keyframe(sec(2), PropertyValue::double_(2), M::linear, std::nullopt, std::nullopt,
                              SpatialHandles::zero, shared)});
  p.removeKeyframe(shared);
  EXPECT_EQ(timesOf(p), secs({1}));
}

TEST(AnimatedPropertyEditTest, RemoveKeyframeAtRemovesEveryKeyAtThatTime) {
  auto p = withKeys(PropertyValue::double_(0),
                    {numberKey(0, 0), numberKey(1, 10), numberKey(1, 11), numberKey(2, 20)});
  p.removeKeyframeAt(OVTime(2, 2));  // one second on another clock
  EXPECT_EQ(timesOf(p), secs({0, 2}));
  const auto before = snapshot(p);
  p.removeKeyframeAt(sec(1.5));
  EXPECT_EQ(p.keyframes().items(), before);
}

TEST(AnimatedPropertyEditTest, RemovingKeysLeavesNeighbourAutoTangentsAsTheyWere) {
  {
    auto p = autoPath();
    p.removeKeyframe(p.keyframes()[1].id);
    ASSERT_EQ(p.keyframes().size(), 2u);
    expectTangents(p.keyframes()[0], {0, 0}, {1, 4.0 / 3});
    expectTangents(p.keyframes()[1], {-1, 4.0 / 3}, {0, 0});
  }
  {
    auto p = autoPath();
    p.removeKeyframeAt(sec(1));
    ASSERT_EQ(p.keyframes().size(), 2u);
    expectTangents(p.keyframes()[0], {0, 0}, {1, 4.0 / 3});
    expectTangents(p.keyframes()[1], {-1, 4.0 / 3}, {0, 0});
  }
}

// --- removeAllKeyframes ---

TEST(AnimatedPropertyEditTest, RemoveAllKeyframesFreezesTheValueAtTheGivenTime) {
  auto p = withKeys(PropertyValue::double_(99), {numberKey(0, 0), numberKey(2, 10)});
  p.removeAllKeyframes(sec(0.5));
  EXPECT_FALSE(p.isAnimated());
  ASSERT_TRUE(p.baseValue.doubleValue().has_value());
  EXPECT_NEAR(*p.baseValue.doubleValue(), 2.5, 1e-9);
  EXPECT_NEAR(p.doubleValueAt(sec(7)), 2.5, 1e-9);
}

TEST(AnimatedPropertyEditTest, RemoveAllKeyframesWithoutATimeKeepsTheBase) {
  auto p = withKeys(PropertyValue::double_(99), {numberKey(0, 0), numberKey(2, 10)});
  p.removeAllKeyframes();
  EXPECT_FALSE(p.isAnimated());
  EXPECT_EQ(p.baseValue, PropertyValue::double_(99));
}

TEST(AnimatedPropertyEditTest, RemoveAllKeyframesOnAConstantPropertyKeepsTheBase) {
  auto p = AnimatedProperty::choice("slow");
  p.removeAllKeyframes(sec(1));
  EXPECT_EQ(p.baseValue, PropertyValue::choice("slow"));
  EXPECT_FALSE(p.isAnimated());
}

// --- updateKeyframe ---

TEST(AnimatedPropertyEditTest, UpdateKeyframeChangesItInPlaceThenSorts) {
  auto p = withKeys(PropertyValue::double_(0), {numberKey(0, 0), numberKey(1, 10), numberKey(2, 20)});
  const auto ids = idsOf(p);
  p.updateKeyframe(ids[0], [](Keyframe& k) {
    k.time = sec(1.5);
    k.value = PropertyValue::double_(50);
  });
  EXPECT_EQ(idsOf(p), (std::vector<Uuid>{ids[1], ids[0], ids[2]}));
  EXPECT_EQ(timesOf(p), secs({1, 1.5, 2}));
  EXPECT_EQ(p.keyframes()[1].value, PropertyValue::double_(50));
}

TEST(AnimatedPropertyEditTest, UpdateKeyframeWithAnUnknownIdDoesNothing) {
  auto p = withKeys(PropertyValue::double_(0), {numberKey(0, 0), numberKey(1, 10)});
  const auto before = snapshot(p);
  bool called = false;
  p.updateKeyframe(Uuid::make(), [&](Keyframe& k) {
    called = true;
    k.value = PropertyValue::double_(-1);
  });
  EXPECT_FALSE(called);
  EXPECT_EQ(p.keyframes().items(), before);
}

TEST(AnimatedPropertyEditTest, UpdateKeyframeRecomputesAutoTangents) {
  auto p = autoPath();
  p.updateKeyframe(p.keyframes()[1].id, [](Keyframe& k) { k.value = PropertyValue::point(3, -4); });
  expectTangents(p.keyframes()[0], {0, 0}, {1, -4.0 / 3});
  expectTangents(p.keyframes()[2], {-1, -4.0 / 3}, {0, 0});
}

// --- moveKeyframe ---

class AnimatedPropertyMoveTest : public ::testing::Test {
 protected:
  void SetUp() override {
    p = withKeys(PropertyValue::double_(0), {numberKey(0, 0), numberKey(1, 10), numberKey(2, 20)});
    const auto ids = idsOf(p);
    a = ids[0];
    b = ids[1];
    c = ids[2];
  }
  AnimatedProperty p;
  Uuid a, b, c;
};

TEST_F(AnimatedPropertyMoveTest, AMovedKeyWinsACollision) {
  p.moveKeyframe(a, sec(2));
  EXPECT_EQ(idsOf(p), (std::vector<Uuid>{b, a}));
  EXPECT_EQ(timesOf(p), secs({1, 2}));
  EXPECT_EQ(p.keyframes()[1].value, PropertyValue::double_(0));
}

TEST_F(AnimatedPropertyMoveTest, MovingAnUnknownIdStillClearsTheTarget) {
  p.moveKeyframe(Uuid::make(), sec(1));
  EXPECT_EQ(idsOf(p), (std::vector<Uuid>{a, c}));
}

TEST_F(AnimatedPropertyMoveTest, MovingToAFreeTimeResorts) {
  p.moveKeyframe(c, sec(0.5));
  EXPECT_EQ(idsOf(p), (std::vector<Uuid>{a, c, b}));
  EXPECT_EQ(timesOf(p), secs({0, 0.5, 1}));
}

TEST_F(AnimatedPropertyMoveTest, MovingAKeyOntoItsOwnTimeKeepsIt) {
  const auto before = snapshot(p);
  p.moveKeyframe(b, sec(1));
  EXPECT_EQ(p.keyframes().items(), before);
}

TEST(AnimatedPropertyEditTest, MoveRemovesEveryOtherKeyAtTheTarget) {
  auto p = withKeys(PropertyValue::double_(0), {numberKey(0, 0), numberKey(1, 10), numberKey(1, 11)});
  const Uuid moved = p.keyframes()[0].id;
  p.moveKeyframe(moved, sec(1));
  ASSERT_EQ(p.keyframes().size(), 1u);
  EXPECT_EQ(p.keyframes()[0].id, moved);
  EXPECT_EQ(p.keyframes()[0].time, sec(1));
}

TEST(AnimatedPropertyEditTest, MoveRecomputesAutoTangentsInTheNewOrder) {
  auto p = autoPath();
  p.moveKeyframe(p.keyframes()[2].id, sec(0.5));
  // Now (0, 0), (6, 0), (3, 4).
  ASSERT_EQ(timesOf(p), secs({0, 0.5, 1}));
  expectTangents(p.keyframes()[0], {0, 0}, {2, 0});
  expectTangents(p.keyframes()[1], {-1.2, -1.6}, {1, 4.0 / 3});
  expectTangents(p.keyframes()[2], {1, -4.0 / 3}, {0, 0});
}

// --- shiftKeyframesBy ---

TEST(AnimatedPropertyEditTest, ShiftMovesEveryKeyByTheDelta) {
  auto p = withKeys(PropertyValue::double_(0), {numberKey(0, 0), numberKey(1, 10, M::hold), numberKey(2, 20)});
  const auto ids = idsOf(p);
  const double before = p.doubleValueAt(sec(0.25));
  p.shiftKeyframesBy(sec(0.5));
  EXPECT_EQ(timesOf(p), secs({0.5, 1.5, 2.5}));
  EXPECT_EQ(idsOf(p), ids);
  EXPECT_EQ(p.keyframes()[1].mode, M::hold);
  EXPECT_NEAR(p.doubleValueAt(sec(0.75)), before, 1e-9);
  p.shiftKeyframesBy(sec(-1.5));
  EXPECT_EQ(timesOf(p), secs({-1, 0, 1}));
}

TEST(AnimatedPropertyEditTest, ShiftByZeroOrOfNoKeysDoesNothing) {
  auto p = withKeys(PropertyValue::double_(0), {numberKey(0, 0), numberKey(1, 10)});
  const auto before = snapshot(p);
  p.shiftKeyframesBy(OVTime::zero);
  EXPECT_EQ(p.keyframes().items(), before);
  auto empty = AnimatedProperty::double_(3);
  const auto copy = empty;
  empty.shiftKeyframesBy(sec(2));
  EXPECT_EQ(empty, copy);
  EXPECT_TRUE(empty.keyframes().empty());
}

TEST(AnimatedPropertyEditTest, ShiftLeavesTangentsAlone) {
  const SpatialHandles stale{{7, 7}, {-7, 7}};
  auto p = withKeys(PropertyValue::point(0, 0),
                    {pointKey(0, {0, 0}, S::autoBezier, stale), pointKey(1, {9, 0}, S::autoBezier, stale)});
  p.shiftKeyframesBy(sec(1));
  EXPECT_EQ(timesOf(p), secs({1, 2}));
  EXPECT_EQ(p.keyframes()[0].spatialHandles, stale);
  EXPECT_EQ(p.keyframes()[1].spatialHandles, stale);
}

// --- alignKeyframesTo ---

TEST(AnimatedPropertyEditTest, AlignSnapsEachKeyToTheFrameAtOrBeforeIt) {
  auto p = withKeys(PropertyValue::double_(0), {numberKey(0.049, 0), numberKey(0.51, 1), numberKey(1, 2)});
  p.alignKeyframesTo(FrameRate(30, 1));
  EXPECT_EQ(timesOf(p), (std::vector<OVTime>{OVTime(1, 30), OVTime(15, 30), OVTime(30, 30)}));
}

TEST(AnimatedPropertyEditTest, AlignKeepsBothKeysThatLandOnOneFrame) {
  auto p = withKeys(PropertyValue::double_(0), {numberKey(0.51, 1), numberKey(0.52, 2)});
  const auto ids = idsOf(p);
  p.alignKeyframesTo(FrameRate(30, 1));
  ASSERT_EQ(p.keyframes().size(), 2u);
  EXPECT_EQ(p.keyframes()[0].time, OVTime(15, 30));
  EXPECT_EQ(p.keyframes()[1].time, OVTime(15, 30));
  EXPECT_NE(p.keyframe(ids[0]), nullptr);
  EXPECT_NE(p.keyframe(ids[1]), nullptr);
}

TEST(AnimatedPropertyEditTest, AlignRecomputesAutoTangents) {
  auto p = withKeys(PropertyValue::point(0, 0),
                    {pointKey(0, {0, 0}, S::autoBezier, {{7, 7}, {7, 7}}), pointKey(1, {9, 3}, S::autoBezier)});
  p.alignKeyframesTo(FrameRate(30, 1));
  expectTangents(p.keyframes()[0], {0, 0}, {3, 1});
  expectTangents(p.keyframes()[1], {-3, -1}, {0, 0});
}

// --- setKeyframes and sort ---

TEST(AnimatedPropertyEditTest, SetKeyframesSortsByTime) {
  const auto k2 = numberKey(2, 20);
  const auto k0 = numberKey(0, 0);
  const auto k1 = numberKey(1, 10);
  auto p = AnimatedProperty::double_(0);
  p.setKeyframes({k2, k0, k1});
  EXPECT_EQ(idsOf(p), (std::vector<Uuid>{k0.id, k1.id, k2.id}));
  EXPECT_EQ(p.baseValue, PropertyValue::double_(0));
}

TEST(AnimatedPropertyEditTest, SetKeyframesTakesAutoTangentsAsGiven) {
  auto p = withKeys(PropertyValue::point(0, 0), {pointKey(1, {9, 3}, S::autoBezier), pointKey(0, {0, 0}, S::autoBezier)});
  EXPECT_EQ(timesOf(p), secs({0, 1}));
  EXPECT_EQ(p.keyframes()[0].spatialHandles, SpatialHandles::zero);
  EXPECT_EQ(p.keyframes()[1].spatialHandles, SpatialHandles::zero);
}

TEST(AnimatedPropertyEditTest, SetKeyframesWithAnEmptyListMakesTheBaseValueCount) {
  auto p = withKeys(PropertyValue::double_(5), {numberKey(0, 0), numberKey(1, 1)});
  p.setKeyframes({});
  EXPECT_FALSE(p.isAnimated());
  EXPECT_EQ(p.valueAt(sec(0.5)), PropertyValue::double_(5));
}

TEST(AnimatedPropertyEditTest, SortRecomputesAutoTangents) {
  auto p = withKeys(PropertyValue::point(0, 0),
                    {pointKey(0, {0, 0}, S::autoBezier), pointKey(1, {9, 3}, S::autoBezier)});
  p.sort();
  expectTangents(p.keyframes()[0], {0, 0}, {3, 1});
  expectTangents(p.keyframes()[1], {-3, -1}, {0, 0});
}

// --- Spatial interpolation and auto tangents ---

class AnimatedPropertySpatialTest : public ::testing::Test {
 protected:
  // Three user-shaped keys: (0, 0), (3, 4), (6, 0), one second apart.
  void SetUp() override {
    p = withKeys(PropertyValue::point(0, 0), {pointKey(0, {0, 0}, S::bezier, custom),
                                              pointKey(1, {3, 4}, S::bezier, custom),
                                              pointKey(2, {6, 0}, S::bezier, custom)});
    const auto ids = idsOf(p);
    first = ids[0];
    middle = ids[1];
    last = ids[2];
  }
  const SpatialHandles custom{{-2, 5}, {4, -1}};
  AnimatedProperty p;
  Uuid first, middle, last;
};

TEST_F(AnimatedPropertySpatialTest, ApplyingLinearZeroesTheChosenKeysHandles) {
  p.applySpatialInterpolation({middle}, S::linear);
  EXPECT_EQ(p.keyframes()[1].spatialMode, S::linear);
  EXPECT_EQ(p.keyframes()[1].spatialHandles, SpatialHandles::zero);
  EXPECT_EQ(p.keyframes()[0].spatialMode, S::bezier);
  EXPECT_EQ(p.keyframes()[0].spatialHandles, custom);
  EXPECT_EQ(p.keyframes()[2].spatialHandles, custom);
}

TEST_F(AnimatedPropertySpatialTest, ApplyingAutoBezierComputesTangentsFromNeighbours) {
  p.applySpatialInterpolation({first, last}, S::autoBezier);
  EXPECT_EQ(p.keyframes()[0].spatialMode, S::autoBezier);
  EXPECT_EQ(p.keyframes()[2].spatialMode, S::autoBezier);
  expectTangents(p.keyframes()[0], {0, 0}, {1, 4.0 / 3});
  expectTangents(p.keyframes()[2], {-1, 4.0 / 3}, {0, 0});
  EXPECT_EQ(p.keyframes()[1].spatialMode, S::bezier);
  EXPECT_EQ(p.keyframes()[1].spatialHandles, custom);
}

TEST_F(AnimatedPropertySpatialTest, ApplyingBezierKeepsTheCurrentHandles) {
  p.applySpatialInterpolation({first, middle, last}, S::autoBezier);
  const SpatialHandles automatic = p.keyframes()[1].spatialHandles;
  expectTangents(p.keyframes()[1], {-5.0 / 3, 0}, {5.0 / 3, 0});
  p.applySpatialInterpolation({middle}, S::bezier);
  EXPECT_EQ(p.keyframes()[1].spatialMode, S::bezier);
  EXPECT_EQ(p.keyframes()[1].spatialHandles, automatic);
  // From now on the middle key's handles are user data: moving a neighbour
  // does not touch them.
  p.upsertKeyframe(PropertyValue::point(0, 8), sec(0));
  EXPECT_EQ(p.keyframes()[1].spatialHandles, automatic);
  expectTangents(p.keyframes()[0], {0, 0}, {1, -4.0 / 3});
}

TEST_F(AnimatedPropertySpatialTest, ApplyingToNoKeysDoesNothing) {
  // Stale auto tangents stay stale: nothing is recomputed either.
  auto q = withKeys(PropertyValue::point(0, 0),
                    {pointKey(0, {0, 0}, S::autoBezier, custom), pointKey(1, {9, 3}, S::autoBezier, custom)});
  const auto before = snapshot(q);
  q.applySpatialInterpolation({}, S::linear);
  EXPECT_EQ(q.keyframes().items(), before);
}

TEST_F(AnimatedPropertySpatialTest, UnknownIdsAreIgnored) {
  const auto before = snapshot(p);
  p.applySpatialInterpolation({Uuid::make()}, S::linear);
  EXPECT_EQ(p.keyframes().items(), before);
}

TEST(AnimatedPropertyEditTest, AutoTangentsUseEveryPointButChangeOnlyAutoKeys) {
  const SpatialHandles user{{1, 1}, {2, 2}};
  auto p = withKeys(PropertyValue::point(0, 0),
                    {pointKey(0, {0, 0}, S::autoBezier), pointKey(1, {3, 4}, S::bezier, user),
                     pointKey(2, {6, 0}, S::linear, user), pointKey(3, {9, 3}, S::autoBezier)});
  p.recomputeAutoSpatialTangents();
  expectTangents(p.keyframes()[0], {0, 0}, {1, 4.0 / 3});
  EXPECT_EQ(p.keyframes()[1].spatialHandles, user);
  EXPECT_EQ(p.keyframes()[2].spatialHandles, user);
  expectTangents(p.keyframes()[3], {-1, -1}, {0, 0});
}

TEST(AnimatedPropertyEditTest, AutoTangentsTreatANeighbourWithoutAPointAsAbsent) {
  const SpatialHandles stale{{9, 9}, {9, 9}};
  auto p = withKeys(PropertyValue::point(0, 0),
                    {pointKey(0, {0, 0}, S::autoBezier, stale),
                     Keyframe(sec(1), PropertyValue::double_(5), M::linear, std::nullopt, S::autoBezier, stale),
                     pointKey(2, {9, 3}, S::autoBezier, stale)});
  p.recomputeAutoSpatialTangents();
  EXPECT_EQ(p.keyframes()[0].spatialHandles, SpatialHandles::zero);
  EXPECT_EQ(p.keyframes()[1].spatialHandles, stale);  // no point of its own
  EXPECT_EQ(p.keyframes()[2].spatialHandles, SpatialHandles::zero);
}

// --- Copies ---

TEST(AnimatedPropertyEditTest, EditingACopyLeavesTheOriginalUnchanged) {
  const auto original = autoPath();
  const auto keysBefore = snapshot(original);
  const auto baseBefore = original.baseValue;

  auto copy = original;
  EXPECT_EQ(copy, original);
  copy.upsertKeyframe(PropertyValue::point(1, 1), sec(0));
  copy.upsertKeyframe(PropertyValue::point(8, 8), sec(3));
  copy.moveKeyframe(copy.keyframes()[1].id, sec(2));
  copy.shiftKeyframesBy(sec(1));
  copy.setValue(PropertyValue::point(5, 5), sec(0), true);
  copy.baseValue = PropertyValue::point(-1, -1);

  EXPECT_EQ(original.keyframes().items(), keysBefore);
  EXPECT_EQ(original.baseValue, baseBefore);
  EXPECT_NE(copy, original);
}

TEST(AnimatedPropertyEditTest, EditingTheOriginalLeavesACopyUnchanged) {
  auto original = autoPath();
  const auto copy = original;
  const auto keysBefore = snapshot(copy);
  original.removeAllKeyframes(sec(1));
  original.upsertKeyframe(PropertyValue::point(2, 2), sec(4));
  EXPECT_EQ(copy.keyframes().items(), keysBefore);
  EXPECT_EQ(copy.keyframes().size(), 3u);
  EXPECT_EQ(copy.baseValue, PropertyValue::point(0, 0));
}

TEST(AnimatedPropertyEditTest, EqualPropertiesCompareEqual) {
  const auto keys = std::vector<Keyframe>{numberKey(0, 0), numberKey(1, 10)};
  const auto a = withKeys(PropertyValue::double_(1), keys);
  const auto b = withKeys(PropertyValue::double_(1), keys);
  EXPECT_EQ(a, b);
  EXPECT_EQ(hashValue(a), hashValue(b));
  EXPECT_NE(a, withKeys(PropertyValue::double_(2), keys));
  EXPECT_NE(a, withKeys(PropertyValue::double_(1), {keys[0]}));
}

}  // namespace
}  // namespace orvane::core
