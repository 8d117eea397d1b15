// AnimatedProperty evaluation and look-up, and the keyframe's own defaults:
// the road from keys and a time to a value.

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "core/animated_property.hpp"
#include "core/keyframe.hpp"

namespace orvane::core {
namespace {

using M = InterpolationMode;
using S = SpatialInterpolation;

OVTime sec(double s) { return OVTime::fromSeconds(s); }

Keyframe key(double t, PropertyValue v, M mode = M::linear,
             std::optional<BezierHandles> handles = std::nullopt) {
  return Keyframe(sec(t), std::move(v), mode, handles);
}

Keyframe numberKey(double t, double v, M mode = M::linear,
                   std::optional<BezierHandles> handles = std::nullopt) {
  return key(t, PropertyValue::double_(v), mode, handles);
}

Keyframe pointKey(double t, OVPoint p, S spatial, SpatialHandles tangents = SpatialHandles::zero,
                  M mode = M::linear) {
  return Keyframe(sec(t), PropertyValue::point(p), mode, std::nullopt, spatial, tangents);
}

// Keys given in time order, so the result does not depend on whether the
// constructor sorts.
AnimatedProperty property(PropertyValue base, std::vector<Keyframe> keys) {
  return AnimatedProperty(std::move(base), std::move(keys));
}

double numberAt(const AnimatedProperty& p, double t) {
  const auto v = p.valueAt(sec(t));
  EXPECT_EQ(v.kind(), PropertyValue::Kind::double_) << "at " << t;
  return v.doubleValue().value_or(-12345);
}

void expectPointNear(const OVPoint& actual, const OVPoint& expected, double tolerance = 1e-9) {
  EXPECT_NEAR(actual.x, expected.x, tolerance) << "point (" << actual.x << ", " << actual.y << ")";
  EXPECT_NEAR(actual.y, expected.y, tolerance) << "point (" << actual.x << ", " << actual.y << ")";
}

OVPoint pointAt(const AnimatedProperty& p, double t) {
  const auto v = p.valueAt(sec(t));
  EXPECT_EQ(v.kind(), PropertyValue::Kind::point) << "at " << t;
  return v.pointValue().value_or(OVPoint{-12345, -12345});
}

// --- Keyframe construction ---

TEST(KeyframeTest, ConstructionDefaults) {
  const Keyframe k(sec(1), PropertyValue::double_(3));
  EXPECT_EQ(k.time, sec(1));
  EXPECT_EQ(k.value, PropertyValue::double_(3));
  EXPECT_EQ(k.mode, M::linear);
  EXPECT_FALSE(k.handles.has_value());
  EXPECT_EQ(k.spatialHandles, SpatialHandles::zero);
  EXPECT_FALSE(k.id.isNil());
}

TEST(KeyframeTest, EachNewKeyframeGetsAFreshId) {
  const Keyframe a(sec(1), PropertyValue::double_(3));
  const Keyframe b(sec(1), PropertyValue::double_(3));
  EXPECT_NE(a.id, b.id);
  EXPECT_NE(a, b);
}

TEST(KeyframeTest, GivenIdIsKept) {
  const Uuid id = Uuid::make();
  const Keyframe k(sec(0), PropertyValue::double_(0), M::hold, std::nullopt, std::nullopt,
                   SpatialHandles::zero, id);
  EXPECT_EQ(k.id, id);
  EXPECT_EQ(k.mode, M::hold);
}

TEST(KeyframeTest, SpatialModeDefaultsToAutoBezierForPointsOnly) {
  EXPECT_EQ(Keyframe(sec(0), PropertyValue::point(1, 2)).spatialMode, S::autoBezier);
  EXPECT_EQ(Keyframe(sec(0), PropertyValue::double_(1)).spatialMode, S::linear);
  EXPECT_EQ(Keyframe(sec(0), PropertyValue::size(1, 2)).spatialMode, S::linear);
  EXPECT_EQ(Keyframe(sec(0), PropertyValue::color(OVColor::white)).spatialMode, S::linear);
  EXPECT_EQ(Keyframe(sec(0), PropertyValue::integer(4)).spatialMode, S::linear);
  EXPECT_EQ(Keyframe(sec(0), PropertyValue::text("t")).spatialMode, S::linear);
  EXPECT_EQ(Keyframe(sec(0), PropertyValue::maskPath(MaskPath{})).spatialMode, S::linear);
}

TEST(KeyframeTest, GivenSpatialModeWins) {
  EXPECT_EQ(Keyframe(sec(0), PropertyValue::point(1, 2), M::linear, std::nullopt, S::linear).spatialMode,
            S::linear);
  EXPECT_EQ(Keyframe(sec(0), PropertyValue::double_(1), M::linear, std::nullopt, S::bezier).spatialMode,
            S::bezier);
  const SpatialHandles tangents{{1, 2}, {3, 4}};
  const Keyframe k(sec(0), PropertyValue::point(0, 0), M::bezier, BezierHandles::glide, S::bezier, tangents);
  EXPECT_EQ(k.spatialHandles, tangents);
  EXPECT_EQ(k.handles, BezierHandles::glide);
}

// --- Short constructors ---

TEST(AnimatedPropertyTest, ShortConstructorsHaveABaseValueAndNoKeys) {
  EXPECT_EQ(AnimatedProperty::double_(2.5).baseValue, PropertyValue::double_(2.5));
  EXPECT_EQ(AnimatedProperty::point(1, 2).baseValue, PropertyValue::point(1, 2));
  EXPECT_EQ(AnimatedProperty::size(3, 4).baseValue, PropertyValue::size(3, 4));
  EXPECT_EQ(AnimatedProperty::color(OVColor::red_).baseValue, PropertyValue::color(OVColor::red_));
  EXPECT_EQ(AnimatedProperty::bool_(true).baseValue, PropertyValue::bool_(true));
  EXPECT_EQ(AnimatedProperty::choice("fast").baseValue, PropertyValue::choice("fast"));
  EXPECT_FALSE(AnimatedProperty::double_(2.5).isAnimated());
  EXPECT_TRUE(AnimatedProperty::double_(2.5).keyframes().empty());
}

// --- Evaluation: outside and at the keys ---

TEST(AnimatedPropertyTest, WithoutKeysTheBaseValueHoldsAtAnyTime) {
  const auto p = AnimatedProperty::double_(42);
  for (double t : {-5.0, 0.0, 1.0, 1000.0}) EXPECT_EQ(p.valueAt(sec(t)), PropertyValue::double_(42)) << t;
}

TEST(AnimatedPropertyTest, OneKeyGivesItsValueAtAnyTime) {
  const auto p = property(PropertyValue::double_(1), {numberKey(2, 7, M::easeIn)});
  EXPECT_TRUE(p.isAnimated());
  for (double t : {-1.0, 0.0, 1.999, 2.0, 3.0, 100.0}) EXPECT_EQ(numberAt(p, t), 7.0) << t;
}

TEST(AnimatedPropertyTest, ValueHoldsBeforeTheFirstKeyAndAfterTheLast) {
  const auto p = property(PropertyValue::double_(999), {numberKey(1, 10), numberKey(3, 30)});
  EXPECT_EQ(numberAt(p, -4), 10.0);
  EXPECT_EQ(numberAt(p, 0), 10.0);
  EXPECT_EQ(numberAt(p, 1), 10.0);
  EXPECT_EQ(numberAt(p, 3), 30.0);
  EXPECT_EQ(numberAt(p, 10), 30.0);
}

TEST(AnimatedPropertyTest, LinearSegmentIsProportionalToTime) {
  const auto p = property(PropertyValue::double_(999), {numberKey(1, 10), numberKey(3, 30)});
  EXPECT_NEAR(numberAt(p, 1.5), 15, 1e-9);
  EXPECT_NEAR(numberAt(p, 2), 20, 1e-9);
  EXPECT_NEAR(numberAt(p, 2.75), 27.5, 1e-9);
}

TEST(AnimatedPropertyTest, FindsTheSegmentAmongManyKeys) {
  const auto p = property(PropertyValue::double_(0),
                          {numberKey(0, 0), numberKey(1, 10), numberKey(3, 20), numberKey(4, -20)});
  EXPECT_NEAR(numberAt(p, 0.5), 5, 1e-9);
  EXPECT_NEAR(numberAt(p, 1), 10, 1e-9);
  EXPECT_NEAR(numberAt(p, 2), 15, 1e-9);
  EXPECT_NEAR(numberAt(p, 3), 20, 1e-9);
  EXPECT_NEAR(numberAt(p, 3.5), 0, 1e-9);
}

TEST(AnimatedPropertyTest, ProgressIsMeasuredInSecondsAcrossTimescales) {
  // Keys at frames 1 and 3 of a 30 fps clock; times asked on other clocks.
  AnimatedProperty q(PropertyValue::double_(0),
                     {Keyframe(OVTime(1, 30), PropertyValue::double_(0)),
                      Keyframe(OVTime(3, 30), PropertyValue::double_(10))});
  EXPECT_NEAR(q.valueAt(OVTime(2, 30)).doubleValue().value_or(-1), 5, 1e-9);
  EXPECT_NEAR(q.valueAt(OVTime(40000, 600000)).doubleValue().value_or(-1), 5, 1e-9);
  EXPECT_NEAR(q.valueAt(OVTime(1, 15)).doubleValue().value_or(-1), 5, 1e-9);
  EXPECT_NEAR(q.valueAt(OVTime(5, 60)).doubleValue().value_or(-1), 7.5, 1e-9);
}

// --- Evaluation: pace ---

TEST(AnimatedPropertyTest, PaceComesFromTheLeadingKeyOnly) {
  const auto p = property(PropertyValue::double_(0), {numberKey(0, 0, M::easeOut), numberKey(2, 8, M::hold),
                                                      numberKey(4, 0, M::easeIn)});
  // First segment eases out (c³) whatever the next key says: 8 × 0.125.
  EXPECT_NEAR(numberAt(p, 1), 1, 1e-9);
  // Second segment holds, by the second key's mode.
  EXPECT_EQ(numberAt(p, 3), 8.0);
  EXPECT_EQ(numberAt(p, 3.999), 8.0);
  EXPECT_EQ(numberAt(p, 4), 0.0);
}

TEST(AnimatedPropertyTest, EaseInDeceleratesIntoTheTargetKey) {
  const auto p = property(PropertyValue::double_(0), {numberKey(0, 0, M::easeIn), numberKey(1, 100)});
  EXPECT_NEAR(numberAt(p, 0.5), 87.5, 1e-9);
  EXPECT_NEAR(numberAt(p, 0.25), 57.8125, 1e-9);
}

TEST(AnimatedPropertyTest, EaseInOutIsSlowAtBothEnds) {
  const auto p = property(PropertyValue::double_(0), {numberKey(0, 0, M::easeInOut), numberKey(1, 100)});
  EXPECT_NEAR(numberAt(p, 0.25), 6.25, 1e-9);
  EXPECT_NEAR(numberAt(p, 0.5), 50, 1e-9);
  EXPECT_NEAR(numberAt(p, 0.75), 93.75, 1e-9);
}

TEST(AnimatedPropertyTest, HoldKeepsValueUntilNextKey) {
  const auto p = property(PropertyValue::double_(0),
                          {numberKey(0, 0, M::hold), numberKey(1, 10), numberKey(2, 20, M::hold)});
  EXPECT_EQ(numberAt(p, 0.5), 0.0);
  EXPECT_EQ(numberAt(p, 0.999), 0.0);
  EXPECT_EQ(numberAt(p, 1), 10.0);
  EXPECT_NEAR(numberAt(p, 1.5), 15, 1e-9);
  EXPECT_EQ(numberAt(p, 5), 20.0);
}

TEST(AnimatedPropertyTest, HoldOnTheLastSegmentJumpsOnlyAtTheLastKey) {
  const auto p = property(PropertyValue::double_(0), {numberKey(0, 0, M::hold), numberKey(1, 10)});
  EXPECT_EQ(numberAt(p, 0.999), 0.0);
  EXPECT_EQ(numberAt(p, 1), 10.0);
}

TEST(AnimatedPropertyTest, BezierWithoutHandlesBehavesAsSmooth) {
  // Reference values of the smooth timing curve, computed to full precision.
  const auto p = property(PropertyValue::double_(0),
                          {numberKey(0, 0, M::bezier, std::nullopt), numberKey(1, 100)});
  EXPECT_NEAR(numberAt(p, 0.1), 2.8391844822446805, 1e-3);
  EXPECT_NEAR(numberAt(p, 0.25), 15.730466942039725, 1e-3);
  EXPECT_NEAR(numberAt(p, 0.5), 50, 1e-3);
  EXPECT_NEAR(numberAt(p, 0.75), 84.26953305796028, 1e-3);

  const auto withSmooth = property(PropertyValue::double_(0),
                                   {numberKey(0, 0, M::bezier, BezierHandles::smooth), numberKey(1, 100)});
  for (double t : {0.1, 0.25, 0.6, 0.9}) EXPECT_NEAR(numberAt(p, t), numberAt(withSmooth, t), 1e-9) << t;
}

TEST(AnimatedPropertyTest, BezierHandlesOfTheLeadingKeyShapeTheSegment) {
  const auto p = property(PropertyValue::double_(0), {numberKey(0, 0, M::bezier, BezierHandles::linear),
                                                      numberKey(1, 100, M::bezier, BezierHandles::decelerate)});
  // The linear preset's curve is y = x.
  for (double t : {0.1, 0.3, 0.7}) EXPECT_NEAR(numberAt(p, t), 100 * t, 1e-3) << t;
}

TEST(AnimatedPropertyTest, OvershootOnNumbersStopsAtTheTargetValue) {
  // At 0.42336 of the segment the overshoot curve is at 1.02816; past 1 a
  // number takes the target value itself.
  const auto p = property(PropertyValue::double_(0),
                          {numberKey(0, 0, M::bezier, BezierHandles::overshoot), numberKey(1, 100)});
  EXPECT_EQ(numberAt(p, 0.42336), 100.0);
  // Anticipation below 0 keeps the leading value.
  const auto q = property(PropertyValue::double_(0),
                          {numberKey(0, 20, M::bezier, BezierHandles::anticipate), numberKey(1, 100)});
  EXPECT_EQ(numberAt(q, 0.272), 20.0);
}

TEST(AnimatedPropertyTest, OvershootOnAStraightPointPathGoesPastTheTarget) {
  const auto p = property(PropertyValue::point(0, 0),
                          {Keyframe(sec(0), PropertyValue::point(0, 0), M::bezier, BezierHandles::overshoot,
                                    S::linear),
                           pointKey(1, {100, 50}, S::linear)});
  expectPointNear(pointAt(p, 0.42336), {102.816, 51.408}, 2e-3);

  const auto q = property(PropertyValue::point(0, 0),
                          {Keyframe(sec(0), PropertyValue::point(0, 0), M::bezier, BezierHandles::anticipate,
                                    S::linear),
                           pointKey(1, {100, 0}, S::linear)});
  expectPointNear(pointAt(q, 0.272), {-15.52, 0}, 2e-3);
}

// --- Evaluation: keys at equal times ---

TEST(AnimatedPropertyTest, AtTiedKeysTheLaterOneLeadsTheNextSegment) {
  const auto p = property(PropertyValue::double_(0),
                          {numberKey(0, 0), numberKey(1, 10), numberKey(1, 20), numberKey(2, 30)});
  EXPECT_NEAR(numberAt(p, 0.5), 5, 1e-9);
  EXPECT_NEAR(numberAt(p, 0.9), 9, 1e-9);
  EXPECT_NEAR(numberAt(p, 1), 20, 1e-9);
  EXPECT_NEAR(numberAt(p, 1.5), 25, 1e-9);
  EXPECT_EQ(numberAt(p, 2), 30.0);
}

TEST(AnimatedPropertyTest, TiedLastKeysGiveTheLaterValue) {
  const auto p = property(PropertyValue::double_(0), {numberKey(0, 0), numberKey(2, 10), numberKey(2, 20)});
  EXPECT_NEAR(numberAt(p, 1), 5, 1e-9);
  EXPECT_EQ(numberAt(p, 2), 20.0);
  EXPECT_EQ(numberAt(p, 5), 20.0);
}

TEST(AnimatedPropertyTest, TiedFirstKeysGiveTheFirstValueUpToTheirTime) {
  const auto p = property(PropertyValue::double_(0), {numberKey(1, 10), numberKey(1, 20), numberKey(3, 40)});
  EXPECT_EQ(numberAt(p, 0), 10.0);
  EXPECT_EQ(numberAt(p, 1), 10.0);
  EXPECT_NEAR(numberAt(p, 2), 30, 1e-9);
}

// --- Evaluation: points ---

TEST(AnimatedPropertyTest, LinearPointPairMovesStraightAtTheEasedPace) {
  // Tangents stored on linear keys play no part.
  const auto p = property(PropertyValue::point(0, 0),
                          {pointKey(0, {0, 0}, S::linear, {{5, 5}, {100, 100}}, M::easeOut),
                           pointKey(1, {10, 20}, S::linear, {{-50, 0}, {7, 7}})});
  expectPointNear(pointAt(p, 0.5), {1.25, 2.5});  // eased 0.125
  const auto q = property(PropertyValue::point(0, 0), {pointKey(0, {0, 0}, S::linear, {{5, 5}, {100, 100}}),
                                                       pointKey(1, {30, 30}, S::linear, {{0, -10}, {0, 0}})});
  expectPointNear(pointAt(q, 0.25), {7.5, 7.5});
  expectPointNear(pointAt(q, 0.5), {15, 15});
}

TEST(AnimatedPropertyTest, BezierPointPairFollowsTheCubicThroughBothTangents) {
  const auto p = property(PropertyValue::point(0, 0), {pointKey(0, {0, 0}, S::bezier, {{99, 99}, {10, 0}}),
                                                       pointKey(1, {30, 30}, S::bezier, {{0, -10}, {99, 99}})});
  expectPointNear(pointAt(p, 0.5), {18.75, 11.25});
  expectPointNear(pointAt(p, 0.25), {8.90625, 3.28125});
  EXPECT_EQ(pointAt(p, 0), (OVPoint{0, 0}));
  EXPECT_EQ(pointAt(p, 1), (OVPoint{30, 30}));
}

TEST(AnimatedPropertyTest, OnlyTheEndKeyLinearStillTakesTheCubicWithZeroInTangent) {
  // B = (10, 0), C = D = (30, 30): the end key's stored tangent is ignored.
  const auto p = property(PropertyValue::point(0, 0), {pointKey(0, {0, 0}, S::bezier, {{0, 0}, {10, 0}}),
                                                       pointKey(1, {30, 30}, S::linear, {{0, -10}, {0, 0}})});
  expectPointNear(pointAt(p, 0.5), {18.75, 15});

  // Zero out-tangent too: still the cubic's pace, 10/64 of the way at a quarter.
  const auto q = property(PropertyValue::point(0, 0), {pointKey(0, {0, 0}, S::bezier),
                                                       pointKey(1, {30, 30}, S::linear, {{0, -10}, {0, 0}})});
  expectPointNear(pointAt(q, 0.25), {4.6875, 4.6875});
}

TEST(AnimatedPropertyTest, OnlyTheStartKeyLinearTakesTheCubicWithZeroOutTangent) {
  // B = A = (0, 0), C = (30, 20).
  const auto p = property(PropertyValue::point(0, 0), {pointKey(0, {0, 0}, S::linear, {{0, 0}, {10, 0}}),
                                                       pointKey(1, {30, 30}, S::bezier, {{0, -10}, {0, 0}})});
  expectPointNear(pointAt(p, 0.5), {15, 11.25});
}

TEST(AnimatedPropertyTest, AutoBezierKeysUseTheirStoredTangents) {
  AnimatedProperty p(PropertyValue::point(0, 0));
  p.setKeyframes({pointKey(0, {0, 0}, S::autoBezier, {{0, 0}, {10, 0}}),
                  pointKey(1, {30, 30}, S::autoBezier, {{0, -10}, {0, 0}})});
  expectPointNear(pointAt(p, 0.5), {18.75, 11.25});
}

TEST(AnimatedPropertyTest, CurvedPathIsFollowedByTheEasedParameter) {
  // Ease out gives 0.125 at half time; the cubic at 0.125 is
  // (343A + 147B + 21C + D) / 512 with B = (10, 0), C = (30, 20).
  const auto p = property(PropertyValue::point(0, 0),
                          {pointKey(0, {0, 0}, S::bezier, {{0, 0}, {10, 0}}, M::easeOut),
                           pointKey(1, {30, 30}, S::bezier, {{0, -10}, {0, 0}})});
  expectPointNear(pointAt(p, 0.5), {4.16015625, 0.87890625});
}

TEST(AnimatedPropertyTest, PointAndOtherCaseFlipAtHalfWay) {
  const auto p = property(PropertyValue::point(0, 0),
                          {key(0, PropertyValue::point(4, 4)), key(1, PropertyValue::double_(5))});
  EXPECT_EQ(p.valueAt(sec(0.4)), PropertyValue::point(4, 4));
  EXPECT_EQ(p.valueAt(sec(0.5)), PropertyValue::double_(5));
}

// --- Evaluation: other cases ---

TEST(AnimatedPropertyTest, ColoursBlendChannelByChannel) {
  const auto p = property(PropertyValue::color(OVColor::white), {key(0, PropertyValue::color(OVColor{0, 0, 0, 1})),
                                                                 key(1, PropertyValue::color(OVColor{1, 0.5, 0, 0}))});
  const auto c = p.colorValueAt(sec(0.25));
  EXPECT_NEAR(c.red, 0.25, 1e-12);
  EXPECT_NEAR(c.green, 0.125, 1e-12);
  EXPECT_NEAR(c.blue, 0, 1e-12);
  EXPECT_NEAR(c.alpha, 0.75, 1e-12);
}

TEST(AnimatedPropertyTest, IntegersRoundAndChoicesFlip) {
  const auto ints = property(PropertyValue::integer(0),
                             {key(0, PropertyValue::integer(0)), key(1, PropertyValue::integer(3))});
  EXPECT_EQ(ints.valueAt(sec(0.5)), PropertyValue::integer(2));  // 1.5
  EXPECT_EQ(ints.valueAt(sec(0.1)), PropertyValue::integer(0));  // 0.3

  const auto choices = property(PropertyValue::choice("a"),
                                {key(0, PropertyValue::choice("a")), key(1, PropertyValue::choice("b"))});
  EXPECT_EQ(choices.valueAt(sec(0.49)), PropertyValue::choice("a"));
  EXPECT_EQ(choices.valueAt(sec(0.5)), PropertyValue::choice("b"));

  const auto switches = property(PropertyValue::bool_(false),
                                 {key(0, PropertyValue::bool_(false)), key(2, PropertyValue::bool_(true))});
  EXPECT_FALSE(switches.boolValueAt(sec(0.99)));
  EXPECT_TRUE(switches.boolValueAt(sec(1)));
}

// --- Typed evaluation with defaults ---

TEST(AnimatedPropertyTest, TypedReadsFallBackWhenTheValueDoesNotFit) {
  const auto p = AnimatedProperty::point(3, 4);
  EXPECT_EQ(p.doubleValueAt(sec(0)), 0.0);
  EXPECT_EQ(p.doubleValueAt(sec(0), -1), -1.0);
  EXPECT_EQ(p.sizeValueAt(sec(0)), OVSize::zero);
  EXPECT_EQ(p.sizeValueAt(sec(0), OVSize{7, 8}), (OVSize{7, 8}));
  EXPECT_EQ(p.colorValueAt(sec(0)), OVColor::white);
  EXPECT_EQ(p.colorValueAt(sec(0), OVColor::red_), OVColor::red_);
  EXPECT_FALSE(p.boolValueAt(sec(0)));
  EXPECT_TRUE(p.boolValueAt(sec(0), true));

  const auto n = AnimatedProperty::double_(2);
  EXPECT_EQ(n.pointValueAt(sec(0)), OVPoint::zero);
  EXPECT_EQ(n.pointValueAt(sec(0), OVPoint{1, 1}), (OVPoint{1, 1}));
  EXPECT_EQ(AnimatedProperty::choice("x").doubleValueAt(sec(0), 5), 5.0);
}

TEST(AnimatedPropertyTest, TypedReadsConvertLikeTheAccessors) {
  EXPECT_EQ(AnimatedProperty::point(3, 4).pointValueAt(sec(1)), (OVPoint{3, 4}));
  EXPECT_EQ(AnimatedProperty::size(3, 4).sizeValueAt(sec(1)), (OVSize{3, 4}));
  EXPECT_EQ(AnimatedProperty::color(OVColor::black).colorValueAt(sec(1)), OVColor::black);
  EXPECT_EQ(AnimatedProperty::bool_(true).doubleValueAt(sec(1), -1), 1.0);
  EXPECT_EQ(AnimatedProperty(PropertyValue::integer(6)).doubleValueAt(sec(1), -1), 6.0);
  EXPECT_TRUE(AnimatedProperty::double_(0.5).boolValueAt(sec(1)));
  EXPECT_FALSE(AnimatedProperty::double_(0).boolValueAt(sec(1), true));

  const auto ramp = property(PropertyValue::double_(0), {numberKey(0, 0), numberKey(1, 1)});
  EXPECT_FALSE(ramp.boolValueAt(sec(0), true));
  EXPECT_TRUE(ramp.boolValueAt(sec(0.5)));
  EXPECT_NEAR(ramp.doubleValueAt(sec(0.5)), 0.5, 1e-12);
}

// --- Look-up ---

class AnimatedPropertyLookupTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::vector<Keyframe> keys;
    for (int i = 0; i < 4; ++i) ids[i] = Uuid::make();
    const double times[] = {1, 2, 2, 3};
    for (int i = 0; i < 4; ++i) {
      keys.push_back(Keyframe(sec(times[i]), PropertyValue::double_(i), M::linear, std::nullopt,
                              std::nullopt, SpatialHandles::zero, ids[i]));
    }
    p = AnimatedProperty(PropertyValue::double_(0), keys);
  }

  Uuid idOf(const Keyframe* k) const { return k ? k->id : Uuid{}; }

  Uuid ids[4];
  AnimatedProperty p;
};

TEST_F(AnimatedPropertyLookupTest, KeyframeAtFindsTheFirstAtThatTime) {
  EXPECT_EQ(idOf(p.keyframeAt(sec(1))), ids[0]);
  EXPECT_EQ(idOf(p.keyframeAt(sec(2))), ids[1]);
  EXPECT_EQ(idOf(p.keyframeAt(sec(3))), ids[3]);
  EXPECT_EQ(p.keyframeAt(sec(1.5)), nullptr);
  EXPECT_EQ(p.keyframeAt(sec(0)), nullptr);
}

TEST_F(AnimatedPropertyLookupTest, KeyframeAtComparesTimesAcrossTimescales) {
  EXPECT_EQ(idOf(p.keyframeAt(OVTime(4, 2))), ids[1]);
  EXPECT_EQ(idOf(p.keyframeAt(OVTime(90, 30))), ids[3]);
  EXPECT_TRUE(p.hasKeyframeAt(OVTime(60, 60)));
  EXPECT_FALSE(p.hasKeyframeAt(OVTime(61, 60)));
}

TEST_F(AnimatedPropertyLookupTest, KeyframeBeforeFindsTheLastEarlierKey) {
  EXPECT_EQ(p.keyframeBefore(sec(1)), nullptr);
  EXPECT_EQ(p.keyframeBefore(sec(0)), nullptr);
  EXPECT_EQ(idOf(p.keyframeBefore(sec(2))), ids[0]);
  EXPECT_EQ(idOf(p.keyframeBefore(sec(2.5))), ids[2]);
  EXPECT_EQ(idOf(p.keyframeBefore(sec(3))), ids[2]);
  EXPECT_EQ(idOf(p.keyframeBefore(sec(10))), ids[3]);
}

TEST_F(AnimatedPropertyLookupTest, KeyframeAfterFindsTheFirstLaterKey) {
  EXPECT_EQ(idOf(p.keyframeAfter(sec(0))), ids[0]);
  EXPECT_EQ(idOf(p.keyframeAfter(sec(1))), ids[1]);
  EXPECT_EQ(idOf(p.keyframeAfter(sec(1.5))), ids[1]);
  EXPECT_EQ(idOf(p.keyframeAfter(sec(2))), ids[3]);
  EXPECT_EQ(p.keyframeAfter(sec(3)), nullptr);
}

TEST_F(AnimatedPropertyLookupTest, KeyframeByIdFindsItOrNothing) {
  for (int i = 0; i < 4; ++i) {
    ASSERT_NE(p.keyframe(ids[i]), nullptr);
    EXPECT_EQ(p.keyframe(ids[i])->value, PropertyValue::double_(i));
  }
  EXPECT_EQ(p.keyframe(Uuid::make()), nullptr);
}

TEST(AnimatedPropertyTest, LookUpsOnAPropertyWithoutKeysFindNothing) {
  const auto p = AnimatedProperty::double_(1);
  EXPECT_EQ(p.keyframeAt(sec(0)), nullptr);
  EXPECT_FALSE(p.hasKeyframeAt(sec(0)));
  EXPECT_EQ(p.keyframeBefore(sec(5)), nullptr);
  EXPECT_EQ(p.keyframeAfter(sec(-5)), nullptr);
}

}  // namespace
}  // namespace orvane::core
