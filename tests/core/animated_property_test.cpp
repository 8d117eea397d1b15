// AnimatedProperty evaluation and look-up, and the keyframe's own defaults:
// the road from keys and a time to a value.

#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>
#include <utility>
#include <vector>

#include "core/animated_property.hpp"
#include "core/keyframe.hpp"

namespace orvane::core {
namespace {

using M = InterpolationMode;
using S = SpatialInterpolation;
using V = PropertyValue;

OVTime sec(double s) { return OVTime::fromSeconds(s); }

Keyframe key(double t, PropertyValue v, M mode = M::linear, std::optional<BezierHandles> handles = std::nullopt) {
  return Keyframe(sec(t), std::move(v), mode, handles);
}

Keyframe pointKey(double t, OVPoint p, S spatial, SpatialHandles tangents = {}, M mode = M::linear,
                  std::optional<BezierHandles> handles = std::nullopt) {
  return Keyframe(sec(t), V::point(p), mode, handles, spatial, tangents);
}

// A number property with base 999, which no key below uses.
AnimatedProperty numbers(std::initializer_list<std::pair<double, double>> timesAndValues, M mode = M::linear,
                         std::optional<BezierHandles> handles = std::nullopt) {
  std::vector<Keyframe> keys;
  for (const auto& [t, v] : timesAndValues) keys.push_back(key(t, V::double_(v), mode, handles));
  return AnimatedProperty(V::double_(999), keys);
}

// Each {time, value} pair: the property is a number of that value then.
void expectNumbers(const AnimatedProperty& p, std::initializer_list<std::pair<double, double>> expected,
                   double tolerance = 1e-9) {
  for (const auto& [t, v] : expected) {
    const auto value = p.valueAt(sec(t));
    EXPECT_EQ(value.kind(), PropertyValue::Kind::double_) << "at " << t;
    EXPECT_NEAR(value.doubleValue().value_or(-12345), v, tolerance) << "at " << t;
  }
}

void expectPointAt(const AnimatedProperty& p, double t, const OVPoint& expected, double tolerance = 1e-9) {
  const OVPoint actual = p.valueAt(sec(t)).pointValue().value_or(OVPoint{-12345, -12345});
  EXPECT_NEAR(actual.x, expected.x, tolerance) << "at " << t << ": (" << actual.x << ", " << actual.y << ")";
  EXPECT_NEAR(actual.y, expected.y, tolerance) << "at " << t << ": (" << actual.x << ", " << actual.y << ")";
}

// --- Keyframe construction ---

TEST(KeyframeTest, NewKeysGetFreshIdsAndPointsOnlyAnAutoBezierPathUnlessGiven) {
  const Keyframe k(sec(1), V::double_(3));
  EXPECT_FALSE(k.id.isNil());
  EXPECT_NE(k.id, Keyframe(sec(1), V::double_(3)).id);
  const Uuid id = Uuid::make();
  EXPECT_EQ(Keyframe(sec(0), V::double_(0), M::hold, std::nullopt, std::nullopt, {}, id).id, id);

  EXPECT_EQ(Keyframe(sec(0), V::point(1, 2)).spatialMode, S::autoBezier);
  for (const auto& v : {V::double_(1), V::size(1, 2), V::color(OVColor::white), V::integer(4), V::text("t"),
                        V::maskPath(MaskPath{})}) {
    EXPECT_EQ(Keyframe(sec(0), v).spatialMode, S::linear) << rawValue(v.kind());
  }
  EXPECT_EQ(Keyframe(sec(0), V::point(1, 2), M::linear, std::nullopt, S::linear).spatialMode, S::linear);
  EXPECT_EQ(Keyframe(sec(0), V::double_(1), M::linear, std::nullopt, S::bezier).spatialMode, S::bezier);
}

// --- Evaluation: numbers ---

TEST(AnimatedPropertyTest, WithoutKeysTheBaseAndWithOneKeyItsValueHoldsAtAnyTime) {
  for (double t : {-5.0, 0.0, 1000.0}) EXPECT_EQ(AnimatedProperty::double_(42).valueAt(sec(t)), V::double_(42)) << t;
  expectNumbers(numbers({{2, 7}}, M::easeIn), {{-1, 7}, {1.999, 7}, {2, 7}, {100, 7}});
}

TEST(AnimatedPropertyTest, LinearKeysHoldOutsideAndInterpolateInTheirSegment) {
  const auto p = numbers({{0, 0}, {1, 10}, {3, 20}, {4, -20}});
  expectNumbers(p, {{-4, 0}, {0, 0}, {0.5, 5}, {1, 10}, {2, 15}, {2.75, 18.75}, {3.5, 0}, {4, -20}, {10, -20}});
}

TEST(AnimatedPropertyTest, ProgressIsMeasuredInSecondsAcrossTimescales) {
  const AnimatedProperty p(V::double_(0),
                           {Keyframe(OVTime(1, 30), V::double_(0)), Keyframe(OVTime(3, 30), V::double_(10))});
  EXPECT_NEAR(p.doubleValueAt(OVTime(40000, 600000), -1), 5, 1e-9);
  EXPECT_NEAR(p.doubleValueAt(OVTime(1, 15), -1), 5, 1e-9);
  EXPECT_NEAR(p.doubleValueAt(OVTime(5, 60), -1), 7.5, 1e-9);
}

TEST(AnimatedPropertyTest, PaceComesFromTheLeadingKeyOnly) {
  // Half way, easeOut gives ⅛ out of the first key whatever the next says, and
  // easeIn 1 − ⅛ into the last.
  const AnimatedProperty p(V::double_(0), {key(0, V::double_(0), M::easeOut), key(2, V::double_(8), M::easeIn),
                                           key(4, V::double_(108))});
  expectNumbers(p, {{1, 1}, {3, 95.5}});
}

TEST(AnimatedPropertyTest, HoldKeepsValueUntilNextKey) {
  const AnimatedProperty p(V::double_(0), {key(0, V::double_(0), M::hold), key(1, V::double_(10)),
                                           key(2, V::double_(20), M::hold), key(3, V::double_(30))});
  expectNumbers(p, {{0.5, 0}, {0.999, 0}, {1, 10}, {1.5, 15}, {2.999, 20}, {3, 30}, {5, 30}});
}

TEST(AnimatedPropertyTest, BezierTakesTheLeadingKeysHandlesOrSmoothWithoutThem) {
  // Values of the smooth timing curve, computed to full precision.
  expectNumbers(numbers({{0, 0}, {1, 100}}, M::bezier),
                {{0.1, 2.8391844822446805}, {0.25, 15.730466942039725}, {0.5, 50}, {0.75, 84.26953305796028}}, 1e-3);
  // The linear preset's curve is y = x; the trailing key's handles play no part.
  const AnimatedProperty p(V::double_(0), {key(0, V::double_(0), M::bezier, BezierHandles::linear),
                                           key(1, V::double_(100), M::bezier, BezierHandles::decelerate)});
  expectNumbers(p, {{0.1, 10}, {0.3, 30}, {0.7, 70}}, 1e-3);
}

TEST(AnimatedPropertyTest, OvershootStopsAtTheEndsForNumbersButNotOnAStraightPointPath) {
  // At 0.42336 of the segment the overshoot curve is at 1.02816; at 0.272 the
  // anticipate curve is at −0.1552.
  expectNumbers(numbers({{0, 0}, {1, 100}}, M::bezier, BezierHandles::overshoot), {{0.42336, 100}});
  expectNumbers(numbers({{0, 20}, {1, 100}}, M::bezier, BezierHandles::anticipate), {{0.272, 20}});
  const auto straight = [](BezierHandles h, OVPoint end) {
    return AnimatedProperty(V::point(0, 0),
                            {pointKey(0, {0, 0}, S::linear, {}, M::bezier, h), pointKey(1, end, S::linear)});
  };
  expectPointAt(straight(BezierHandles::overshoot, {100, 50}), 0.42336, {102.816, 51.408}, 2e-3);
  expectPointAt(straight(BezierHandles::anticipate, {100, 0}), 0.272, {-15.52, 0}, 2e-3);
}

TEST(AnimatedPropertyTest, AtTiedKeysTheLaterLeadsOnwardAndTheFirstHoldsBefore) {
  expectNumbers(numbers({{0, 0}, {1, 10}, {1, 20}, {2, 30}}), {{0.9, 9}, {1, 20}, {1.5, 25}, {2, 30}});
  expectNumbers(numbers({{0, 0}, {2, 10}, {2, 20}}), {{1, 5}, {2, 20}, {5, 20}});
  expectNumbers(numbers({{1, 10}, {1, 20}, {3, 40}}), {{0, 10}, {1, 10}, {2, 30}});
}

// --- Evaluation: point paths ---

TEST(AnimatedPropertyTest, PointPathsMixTheSpatialModesOfBothKeys) {
  // From (0, 0) at 0 s to (30, 30) at 1 s. A linear key contributes a zero
  // tangent whatever it stores; when both are linear the path is straight.
  struct Case {
    const char* what;
    S startMode;
    SpatialHandles start;
    M pace;
    S endMode;
    SpatialHandles end;
    double t;
    OVPoint expected;
  };
  const SpatialHandles noise{{5, 5}, {100, 100}};
  const SpatialHandles out{{99, 99}, {10, 0}};  // B = (10, 0)
  const SpatialHandles in{{0, -10}, {99, 99}};  // C = (30, 20)
  const Case cases[] = {
      {"straight at the eased pace", S::linear, noise, M::easeOut, S::linear, noise, 0.5, {3.75, 3.75}},
      {"straight", S::linear, noise, M::linear, S::linear, noise, 0.25, {7.5, 7.5}},
      {"both bezier, start", S::bezier, out, M::linear, S::bezier, in, 0, {0, 0}},
      {"both bezier, half", S::bezier, out, M::linear, S::bezier, in, 0.5, {18.75, 11.25}},
      {"both bezier, quarter", S::bezier, out, M::linear, S::bezier, in, 0.25, {8.90625, 3.28125}},
      {"both bezier, end", S::bezier, out, M::linear, S::bezier, in, 1, {30, 30}},
      {"stored auto tangents", S::autoBezier, out, M::linear, S::autoBezier, in, 0.5, {18.75, 11.25}},
      {"end linear: C = D", S::bezier, out, M::linear, S::linear, in, 0.5, {18.75, 15}},
      {"end linear, zero out", S::bezier, {}, M::linear, S::linear, in, 0.25, {4.6875, 4.6875}},
      {"start linear: B = A", S::linear, out, M::linear, S::bezier, in, 0.5, {15, 11.25}},
      // Eased 0.125: (343A + 147B + 21C + D) / 512.
      {"curve at the eased pace", S::bezier, out, M::easeOut, S::bezier, in, 0.5, {4.16015625, 0.87890625}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    expectPointAt(AnimatedProperty(V::point(0, 0), {pointKey(0, {0, 0}, c.startMode, c.start, c.pace),
                                                    pointKey(1, {30, 30}, c.endMode, c.end)}),
                  c.t, c.expected);
  }
}

// --- Evaluation: other cases and typed reads ---

TEST(AnimatedPropertyTest, OtherCasesBlendAsTheirValuesDoAndAPointMeetingANumberFlips) {
  const auto pair = [](V a, V b) { return AnimatedProperty(a, {key(0, a), key(1, b)}); };
  EXPECT_EQ(pair(V::color({0, 0, 0, 1}), V::color({1, 0.5, 0, 0})).colorValueAt(sec(0.25)),
            (OVColor{0.25, 0.125, 0, 0.75}));
  EXPECT_EQ(pair(V::integer(0), V::integer(3)).valueAt(sec(0.5)), V::integer(2));  // 1.5
  EXPECT_EQ(pair(V::point(4, 4), V::double_(5)).valueAt(sec(0.4)), V::point(4, 4));
  EXPECT_EQ(pair(V::point(4, 4), V::double_(5)).valueAt(sec(0.5)), V::double_(5));
}

TEST(AnimatedPropertyTest, TypedReadsConvertOrFallBack) {
  const auto p = AnimatedProperty::point(3, 4);
  EXPECT_EQ(p.pointValueAt(sec(1)), (OVPoint{3, 4}));
  EXPECT_EQ(p.doubleValueAt(sec(0)), 0.0);
  EXPECT_EQ(p.sizeValueAt(sec(0), OVSize{7, 8}), (OVSize{7, 8}));
  EXPECT_EQ(p.colorValueAt(sec(0)), OVColor::white);
  EXPECT_TRUE(p.boolValueAt(sec(0), true));
  EXPECT_EQ(AnimatedProperty::double_(2).pointValueAt(sec(0), {1, 1}), (OVPoint{1, 1}));
  EXPECT_EQ(AnimatedProperty(V::integer(6)).doubleValueAt(sec(1), -1), 6.0);
  EXPECT_TRUE(numbers({{0, 0}, {1, 1}}).boolValueAt(sec(0.5)));
  EXPECT_FALSE(numbers({{0, 0}, {1, 1}}).boolValueAt(sec(0), true));
}

// --- Look-up ---

TEST(AnimatedPropertyTest, LookUpsFindTheFirstAtATimeTheNearestBeforeAndAfterAndById) {
  const Uuid ids[] = {Uuid::make(), Uuid::make(), Uuid::make(), Uuid::make()};
  const double times[] = {1, 2, 2, 3};
  std::vector<Keyframe> keys;
  for (int i = 0; i < 4; ++i) {
    keys.emplace_back(sec(times[i]), V::integer(i), M::linear, std::nullopt, std::nullopt, SpatialHandles{}, ids[i]);
  }
  const AnimatedProperty p(V::integer(0), keys);
  const auto idOf = [](const Keyframe* k) { return k ? k->id : Uuid{}; };

  EXPECT_EQ(idOf(p.keyframeAt(sec(1))), ids[0]);
  EXPECT_EQ(idOf(p.keyframeAt(OVTime(4, 2))), ids[1]);  // the first of two, on another clock
  EXPECT_EQ(p.keyframeAt(sec(1.5)), nullptr);
  EXPECT_TRUE(p.hasKeyframeAt(OVTime(90, 30)));
  EXPECT_FALSE(p.hasKeyframeAt(OVTime(61, 60)));
  EXPECT_EQ(p.keyframeBefore(sec(1)), nullptr);
  EXPECT_EQ(idOf(p.keyframeBefore(sec(2))), ids[0]);
  EXPECT_EQ(idOf(p.keyframeBefore(sec(3))), ids[2]);
  EXPECT_EQ(idOf(p.keyframeBefore(sec(10))), ids[3]);
  EXPECT_EQ(idOf(p.keyframeAfter(sec(0))), ids[0]);
  EXPECT_EQ(idOf(p.keyframeAfter(sec(1))), ids[1]);
  EXPECT_EQ(idOf(p.keyframeAfter(sec(2))), ids[3]);
  EXPECT_EQ(p.keyframeAfter(sec(3)), nullptr);
  for (int i = 0; i < 4; ++i) {
    ASSERT_NE(p.keyframe(ids[i]), nullptr);
    EXPECT_EQ(p.keyframe(ids[i])->value, V::integer(i));
  }
  EXPECT_EQ(p.keyframe(Uuid::make()), nullptr);

  const auto constant = AnimatedProperty::double_(1);
  EXPECT_EQ(constant.keyframeAt(sec(0)), nullptr);
  EXPECT_EQ(constant.keyframeBefore(sec(5)), nullptr);
  EXPECT_EQ(constant.keyframeAfter(sec(-5)), nullptr);
}

}  // namespace
}  // namespace orvane::core
