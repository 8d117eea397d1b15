// AnimatedProperty edits: writing values and keys, removing, moving,
// shifting and aligning keys, spatial modes and the automatic tangents that
// the edits keep up to date, and the independence of copies.

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <optional>
#include <vector>

#include "core/animated_property.hpp"
#include "core/frame_rate.hpp"
#include "core/keyframe.hpp"

namespace orvane::core {
namespace {

using M = InterpolationMode;
using S = SpatialInterpolation;
using V = PropertyValue;
using Edit = std::function<void(AnimatedProperty&)>;

OVTime sec(double s) { return OVTime::fromSeconds(s); }

Keyframe numberKey(double t, double v, M mode = M::linear, std::optional<BezierHandles> handles = std::nullopt) {
  return Keyframe(sec(t), V::double_(v), mode, handles);
}

Keyframe pointKey(double t, OVPoint p, S spatial, SpatialHandles tangents = {}) {
  return Keyframe(sec(t), V::point(p), M::linear, std::nullopt, spatial, tangents);
}

// Linear number keys; the constructor takes keys as setKeyframes does.
AnimatedProperty numbers(double base, std::initializer_list<std::pair<double, double>> timesAndValues) {
  std::vector<Keyframe> keys;
  for (const auto& [t, v] : timesAndValues) keys.push_back(numberKey(t, v));
  return AnimatedProperty(V::double_(base), keys);
}

AnimatedProperty points(std::vector<Keyframe> keys) { return AnimatedProperty(V::point(0, 0), std::move(keys)); }

std::vector<OVTime> timesOf(const AnimatedProperty& p) {
  std::vector<OVTime> times;
  for (const auto& k : p.keyframes()) times.push_back(k.time);
  return times;
}

std::vector<OVTime> secs(std::initializer_list<double> values) {
  std::vector<OVTime> times;
  for (double v : values) times.push_back(sec(v));
  return times;
}

std::vector<Uuid> idsOf(const AnimatedProperty& p) {
  std::vector<Uuid> ids;
  for (const auto& k : p.keyframes()) ids.push_back(k.id);
  return ids;
}

// A deep copy of the keys, sharing nothing with the property.
std::vector<Keyframe> snapshot(const AnimatedProperty& p) { return p.keyframes().items(); }

// The edit leaves every key exactly as it was.
void expectNoChange(AnimatedProperty p, const Edit& edit) {
  const auto before = snapshot(p);
  edit(p);
  EXPECT_EQ(p.keyframes().items(), before);
}

void expectNear(const OVPoint& actual, const OVPoint& expected, const char* what) {
  EXPECT_NEAR(actual.x, expected.x, 1e-9) << what << " (" << actual.x << ", " << actual.y << ")";
  EXPECT_NEAR(actual.y, expected.y, 1e-9) << what << " (" << actual.x << ", " << actual.y << ")";
}

// Each key's {inTangent, outTangent}, in time order.
void expectTangents(const AnimatedProperty& p, const std::vector<SpatialHandles>& expected) {
  ASSERT_EQ(p.keyframes().size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    SCOPED_TRACE(::testing::Message() << "key " << i);
    expectNear(p.keyframes()[i].spatialHandles.inTangent, expected[i].inTangent, "inTangent");
    expectNear(p.keyframes()[i].spatialHandles.outTangent, expected[i].outTangent, "outTangent");
  }
}

// Three point keys (0, 0) at 0 s, (3, 4) at 1 s and (6, 0) at 2 s, all auto,
// written one at a time out of time order, and their tangents.
AnimatedProperty autoPath() {
  AnimatedProperty p = AnimatedProperty::point(0, 0);
  p.upsertKeyframe(V::point(0, 0), sec(0));
  p.upsertKeyframe(V::point(6, 0), sec(2));
  p.upsertKeyframe(V::point(3, 4), sec(1));
  return p;
}
const std::vector<SpatialHandles> autoPathTangents = {
    {{0, 0}, {1, 4.0 / 3}}, {{-5.0 / 3, 0}, {5.0 / 3, 0}}, {{-1, 4.0 / 3}, {0, 0}}};

// --- setValue and upsertKeyframe ---

TEST(AnimatedPropertyEditTest, SetValueOnAConstantPropertyChangesTheBaseOrWritesTheFirstKey) {
  auto constant = AnimatedProperty::double_(1);
  constant.setValue(V::double_(5), sec(2), false);
  EXPECT_EQ(constant, AnimatedProperty::double_(5));

  auto p = AnimatedProperty::point(0, 0);
  p.setValue(V::point(10, 20), sec(1), true);
  ASSERT_EQ(p.keyframes().size(), 1u);
  const Keyframe& k = p.keyframes()[0];
  EXPECT_EQ(k, Keyframe(sec(1), V::point(10, 20), M::linear, std::nullopt, S::autoBezier, {}, k.id));
  EXPECT_EQ(p.baseValue, V::point(10, 20));
}

TEST(AnimatedPropertyEditTest, SetValueOnAnAnimatedPropertyWritesKeysAndLeavesTheBase) {
  auto p = numbers(7, {{0, 0}, {2, 10}});
  const auto before = idsOf(p);
  p.setValue(V::double_(20), sec(1), false);
  const auto ids = idsOf(p);
  ASSERT_EQ(ids.size(), 3u);
  EXPECT_EQ(timesOf(p), secs({0, 1, 2}));
  EXPECT_EQ((std::vector<Uuid>{ids[0], ids[2]}), before);
  EXPECT_FALSE(ids[1].isNil());
  EXPECT_NE(ids[1], before[0]);
  EXPECT_NE(ids[1], before[1]);
  EXPECT_EQ(p.valueAt(sec(1)), V::double_(20));

  p.setValue(V::double_(99), sec(2), true);
  EXPECT_EQ(idsOf(p), ids);
  EXPECT_EQ(p.keyframes()[2].value, V::double_(99));
  EXPECT_EQ(p.baseValue, V::double_(7));
}

TEST(AnimatedPropertyEditTest, UpsertAtAnExistingTimeKeepsIdModeAndSpatialFieldsUnlessGiven) {
  const SpatialHandles tangents{{1, 1}, {2, 2}};
  auto p = points({Keyframe(sec(0), V::point(0, 0), M::easeIn, BezierHandles::glide, S::bezier, tangents),
                   pointKey(1, {9, 9}, S::bezier)});
  const Uuid id = p.keyframes()[0].id;
  p.upsertKeyframe(V::point(5, 5), sec(0));
  EXPECT_EQ(p.keyframes()[0],
            Keyframe(sec(0), V::point(5, 5), M::easeIn, BezierHandles::glide, S::bezier, tangents, id));
  p.upsertKeyframe(V::point(6, 6), sec(0), M::hold);
  EXPECT_EQ(p.keyframes()[0].mode, M::hold);
  EXPECT_EQ(p.keyframes()[0].handles, BezierHandles::glide);
  p.upsertKeyframe(V::point(7, 7), sec(0), M::bezier, BezierHandles::overshoot);
  EXPECT_EQ(p.keyframes()[0].handles, BezierHandles::overshoot);
  EXPECT_EQ(timesOf(p), secs({0, 1}));
}

TEST(AnimatedPropertyEditTest, UpsertedKeyInheritsPaceFromTheKeyBeforeUnlessGiven) {
  const AnimatedProperty base(V::double_(0),
                              {numberKey(1, 0, M::easeIn), numberKey(3, 10, M::bezier, BezierHandles::decelerate)});
  struct Case {
    double t;
    std::optional<M> mode;
    std::optional<BezierHandles> handles;
    M expectedMode;
    std::optional<BezierHandles> expectedHandles;
  };
  const auto none = std::nullopt;
  const Case cases[] = {{2, none, none, M::easeIn, none},
                        {4, none, none, M::bezier, BezierHandles::decelerate},
                        {0, none, none, M::linear, none},  // a new first key
                        {4, M::hold, none, M::hold, BezierHandles::decelerate},
                        {4, none, BezierHandles::glide, M::bezier, BezierHandles::glide}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.t);
    auto p = base;
    p.upsertKeyframe(V::double_(5), sec(c.t), c.mode, c.handles);
    const Keyframe* k = p.keyframeAt(sec(c.t));
    ASSERT_NE(k, nullptr);
    EXPECT_EQ(k->mode, c.expectedMode);
    EXPECT_EQ(k->handles, c.expectedHandles);
  }
}

TEST(AnimatedPropertyEditTest, UpsertedPointKeysGetAutoTangentsAfterSorting) {
  const auto p = autoPath();
  EXPECT_EQ(timesOf(p), secs({0, 1, 2}));
  for (const auto& k : p.keyframes()) EXPECT_EQ(k.spatialMode, S::autoBezier);
  expectTangents(p, autoPathTangents);
}

TEST(AnimatedPropertyEditTest, ChangingAPointRecomputesItsNeighboursAutoTangents) {
  const Edit edits[] = {
      [](AnimatedProperty& p) { p.upsertKeyframe(V::point(3, -4), sec(1)); },
      [](AnimatedProperty& p) {
        p.updateKeyframe(p.keyframes()[1].id, [](Keyframe& k) { k.value = V::point(3, -4); });
      },
  };
  for (const auto& edit : edits) {
    auto p = autoPath();
    edit(p);
    expectTangents(p, {{{0, 0}, {1, -4.0 / 3}}, {{-5.0 / 3, 0}, {5.0 / 3, 0}}, {{-1, -4.0 / 3}, {0, 0}}});
  }
}

// --- addKeyframeAt ---

TEST(AnimatedPropertyEditTest, AddKeyframeLeavesTheCurveUnchangedAtItsTime) {
  auto p = AnimatedProperty(V::double_(0), {numberKey(0, 0, M::easeIn), numberKey(1, 10)});
  p.addKeyframeAt(sec(0.5));
  ASSERT_EQ(p.keyframes().size(), 3u);
  const Keyframe& k = p.keyframes()[1];
  EXPECT_EQ(k.time, sec(0.5));
  EXPECT_NEAR(k.value.doubleValue().value_or(-1), 8.75, 1e-9);  // 10 × (1 − ⅛)
  EXPECT_EQ(k.mode, M::easeIn);

  // Half way along A = (0, 0), B = (1, 4/3), C = (4/3, 4), D = (3, 4).
  auto path = autoPath();
  path.addKeyframeAt(sec(0.5));
  const Keyframe* onPath = path.keyframeAt(sec(0.5));
  ASSERT_NE(onPath, nullptr);
  EXPECT_EQ(onPath->spatialMode, S::autoBezier);
  expectNear(onPath->value.pointValue().value_or(OVPoint{-1, -1}), {1.25, 2.5}, "value");
}

TEST(AnimatedPropertyEditTest, AddKeyframeHoldsTheBaseOfAConstantAndKeepsAKeyAlreadyThere) {
  auto constant = AnimatedProperty::double_(4);
  constant.addKeyframeAt(sec(1));
  ASSERT_EQ(constant.keyframes().size(), 1u);
  EXPECT_EQ(constant.keyframes()[0].time, sec(1));
  EXPECT_EQ(constant.keyframes()[0].value, V::double_(4));

  expectNoChange(AnimatedProperty(V::double_(0), {numberKey(0, 0), numberKey(1, 10, M::hold)}),
                 [](AnimatedProperty& p) { p.addKeyframeAt(sec(1)); });
}

// --- Removing ---

TEST(AnimatedPropertyEditTest, RemoveKeyframeByIdOrTimeRemovesEveryMatchAndNothingElse) {
  const Uuid shared = Uuid::make();
  const auto sharing = [&](double t) {
    return Keyframe(sec(t), V::double_(t), M::linear, std::nullopt, std::nullopt, {}, shared);
  };
  AnimatedProperty p(V::double_(0), {sharing(0), numberKey(1, 1), sharing(2)});
  p.removeKeyframe(shared);
  EXPECT_EQ(timesOf(p), secs({1}));
  expectNoChange(p, [](AnimatedProperty& q) { q.removeKeyframe(Uuid::make()); });

  auto q = numbers(0, {{0, 0}, {1, 10}, {1, 11}, {2, 20}});
  q.removeKeyframeAt(OVTime(2, 2));  // one second on another clock
  EXPECT_EQ(timesOf(q), secs({0, 2}));
  expectNoChange(q, [](AnimatedProperty& r) { r.removeKeyframeAt(sec(1.5)); });
}

TEST(AnimatedPropertyEditTest, RemovingKeysLeavesNeighbourAutoTangentsAsTheyWere) {
  const Edit removals[] = {[](AnimatedProperty& p) { p.removeKeyframe(p.keyframes()[1].id); },
                           [](AnimatedProperty& p) { p.removeKeyframeAt(sec(1)); }};
  for (const auto& remove : removals) {
    auto p = autoPath();
    remove(p);
    expectTangents(p, {autoPathTangents[0], autoPathTangents[2]});
  }
}

TEST(AnimatedPropertyEditTest, RemoveAllKeyframesFreezesTheValueAtTheGivenTimeOnly) {
  auto frozen = numbers(99, {{0, 0}, {2, 10}});
  frozen.removeAllKeyframes(sec(0.5));
  EXPECT_FALSE(frozen.isAnimated());
  EXPECT_NEAR(frozen.baseValue.doubleValue().value_or(-1), 2.5, 1e-9);
  auto cleared = numbers(99, {{0, 0}, {2, 10}});
  cleared.removeAllKeyframes();
  EXPECT_EQ(cleared, AnimatedProperty::double_(99));
  auto constant = AnimatedProperty::choice("slow");
  constant.removeAllKeyframes(sec(1));
  EXPECT_EQ(constant, AnimatedProperty::choice("slow"));
}

// --- updateKeyframe and moveKeyframe ---

TEST(AnimatedPropertyEditTest, UpdateKeyframeChangesItInPlaceThenSorts) {
  auto p = numbers(0, {{0, 0}, {1, 10}, {2, 20}});
  const auto ids = idsOf(p);
  p.updateKeyframe(ids[0], [](Keyframe& k) {
    k.time = sec(1.5);
    k.value = V::double_(50);
  });
  EXPECT_EQ(idsOf(p), (std::vector<Uuid>{ids[1], ids[0], ids[2]}));
  EXPECT_EQ(timesOf(p), secs({1, 1.5, 2}));
  EXPECT_EQ(p.keyframes()[1].value, V::double_(50));

  bool called = false;
  expectNoChange(p, [&](AnimatedProperty& q) { q.updateKeyframe(Uuid::make(), [&](Keyframe&) { called = true; }); });
  EXPECT_FALSE(called);
}

TEST(AnimatedPropertyEditTest, AMovedKeyWinsACollisionAndTheRestAreResorted) {
  // Keys a, b, c at 0, 1 and 2 s; which key moves where, and the ids after.
  struct Case {
    const char* what;
    int moved;  // -1: an id the property does not have
    double to;
    std::vector<int> expected;
  };
  const Case cases[] = {{"onto another key", 0, 2, {1, 0}},
                        {"unknown id still clears the target", -1, 1, {0, 2}},
                        {"onto its own time", 1, 1, {0, 1, 2}},
                        {"to a free time", 2, 0.5, {0, 2, 1}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    auto p = numbers(0, {{0, 0}, {1, 10}, {2, 20}});
    const auto ids = idsOf(p);
    p.moveKeyframe(c.moved < 0 ? Uuid::make() : ids[c.moved], sec(c.to));
    std::vector<Uuid> expected;
    for (int i : c.expected) expected.push_back(ids[i]);
    EXPECT_EQ(idsOf(p), expected);
    if (c.moved < 0) continue;
    const Keyframe* k = p.keyframe(ids[c.moved]);
    ASSERT_NE(k, nullptr);
    EXPECT_EQ(k->time, sec(c.to));
    EXPECT_EQ(k->value, V::double_(10 * c.moved));
  }

  auto p = numbers(0, {{0, 0}, {1, 10}, {1, 11}});
  const Uuid moved = p.keyframes()[0].id;
  p.moveKeyframe(moved, sec(1));
  EXPECT_EQ(idsOf(p), (std::vector<Uuid>{moved}));
  EXPECT_EQ(timesOf(p), secs({1}));
}

TEST(AnimatedPropertyEditTest, MoveRecomputesAutoTangentsInTheNewOrder) {
  auto p = autoPath();
  p.moveKeyframe(p.keyframes()[2].id, sec(0.5));
  // Now (0, 0), (6, 0), (3, 4).
  ASSERT_EQ(timesOf(p), secs({0, 0.5, 1}));
  expectTangents(p, {{{0, 0}, {2, 0}}, {{-1.2, -1.6}, {1, 4.0 / 3}}, {{1, -4.0 / 3}, {0, 0}}});
}

// --- shiftKeyframesBy and alignKeyframesTo ---

TEST(AnimatedPropertyEditTest, ShiftMovesEveryKeyByTheDelta) {
  auto p = AnimatedProperty(V::double_(0), {numberKey(0, 0), numberKey(1, 10, M::hold), numberKey(2, 20)});
  const auto ids = idsOf(p);
  p.shiftKeyframesBy(sec(0.5));
  EXPECT_EQ(timesOf(p), secs({0.5, 1.5, 2.5}));
  EXPECT_EQ(idsOf(p), ids);
  EXPECT_EQ(p.keyframes()[1].mode, M::hold);
  EXPECT_NEAR(p.doubleValueAt(sec(0.75)), 2.5, 1e-9);
  p.shiftKeyframesBy(sec(-1.5));
  EXPECT_EQ(timesOf(p), secs({-1, 0, 1}));
}

TEST(AnimatedPropertyEditTest, ShiftLeavesTangentsAloneAndByZeroChangesNothing) {
  const SpatialHandles stale{{7, 7}, {-7, 7}};
  auto p = points({pointKey(0, {0, 0}, S::autoBezier, stale), pointKey(1, {9, 0}, S::autoBezier, stale)});
  p.shiftKeyframesBy(sec(1));
  EXPECT_EQ(timesOf(p), secs({1, 2}));
  EXPECT_EQ(p.keyframes()[0].spatialHandles, stale);
  EXPECT_EQ(p.keyframes()[1].spatialHandles, stale);
  expectNoChange(p, [](AnimatedProperty& q) { q.shiftKeyframesBy(OVTime::zero); });
  auto empty = AnimatedProperty::double_(3);
  empty.shiftKeyframesBy(sec(2));
  EXPECT_EQ(empty, AnimatedProperty::double_(3));
}

TEST(AnimatedPropertyEditTest, AlignSnapsEachKeyToTheFrameAtOrBeforeItKeepingKeysThatMeet) {
  auto p = numbers(0, {{0.049, 0}, {0.51, 1}, {0.52, 2}, {1, 3}});
  const auto ids = idsOf(p);
  p.alignKeyframesTo(FrameRate(30, 1));
  EXPECT_EQ(timesOf(p), (std::vector<OVTime>{OVTime(1, 30), OVTime(15, 30), OVTime(15, 30), OVTime(30, 30)}));
  EXPECT_EQ(idsOf(p), ids);
}

TEST(AnimatedPropertyEditTest, AlignAndSortRecomputeAutoTangentsButSetKeyframesTakesThemAsGiven) {
  auto p = AnimatedProperty::point(0, 0);
  p.setKeyframes({pointKey(1, {9, 3}, S::autoBezier), pointKey(0, {0, 0}, S::autoBezier, {{7, 7}, {7, 7}})});
  EXPECT_EQ(timesOf(p), secs({0, 1}));
  EXPECT_EQ(p.keyframes()[0].spatialHandles, (SpatialHandles{{7, 7}, {7, 7}}));
  EXPECT_EQ(p.keyframes()[1].spatialHandles, SpatialHandles::zero);
  const Edit edits[] = {[](AnimatedProperty& q) { q.sort(); },
                        [](AnimatedProperty& q) { q.alignKeyframesTo(FrameRate(30, 1)); }};
  for (const auto& edit : edits) {
    auto q = p;
    edit(q);
    expectTangents(q, {{{0, 0}, {3, 1}}, {{-3, -1}, {0, 0}}});
  }
}

TEST(AnimatedPropertyEditTest, SetKeyframesSortsByTimeAndAnEmptyListMakesTheBaseCount) {
  const auto k0 = numberKey(0, 0), k1 = numberKey(1, 10), k2 = numberKey(2, 20);
  auto p = AnimatedProperty::double_(5);
  p.setKeyframes({k2, k0, k1});
  EXPECT_EQ(idsOf(p), (std::vector<Uuid>{k0.id, k1.id, k2.id}));
  p.setKeyframes({});
  EXPECT_FALSE(p.isAnimated());
  EXPECT_EQ(p.valueAt(sec(0.5)), V::double_(5));
}

// --- Spatial interpolation and auto tangents ---

class AnimatedPropertySpatialTest : public ::testing::Test {
 protected:
  // Three user-shaped keys (0, 0), (3, 4), (6, 0), one second apart.
  const SpatialHandles custom{{-2, 5}, {4, -1}};
  AnimatedProperty p = points({pointKey(0, {0, 0}, S::bezier, custom), pointKey(1, {3, 4}, S::bezier, custom),
                               pointKey(2, {6, 0}, S::bezier, custom)});
  const Uuid first = p.keyframes()[0].id, middle = p.keyframes()[1].id, last = p.keyframes()[2].id;
};

TEST_F(AnimatedPropertySpatialTest, ApplyingLinearOrAutoBezierChangesOnlyTheChosenKeys) {
  p.applySpatialInterpolation({middle}, S::linear);
  EXPECT_EQ(p.keyframes()[0].spatialMode, S::bezier);
  EXPECT_EQ(p.keyframes()[1].spatialMode, S::linear);
  expectTangents(p, {custom, SpatialHandles::zero, custom});
  p.applySpatialInterpolation({first, last}, S::autoBezier);
  EXPECT_EQ(p.keyframes()[0].spatialMode, S::autoBezier);
  EXPECT_EQ(p.keyframes()[2].spatialMode, S::autoBezier);
  expectTangents(p, {autoPathTangents[0], SpatialHandles::zero, autoPathTangents[2]});
}

TEST_F(AnimatedPropertySpatialTest, ApplyingBezierKeepsTheCurrentHandlesAsUserData) {
  p.applySpatialInterpolation({first, middle, last}, S::autoBezier);
  p.applySpatialInterpolation({middle}, S::bezier);
  EXPECT_EQ(p.keyframes()[1].spatialMode, S::bezier);
  expectTangents(p, autoPathTangents);
  // Moving a neighbour now leaves the middle key's handles alone.
  p.upsertKeyframe(V::point(0, 8), sec(0));
  expectTangents(p, {{{0, 0}, {1, -4.0 / 3}}, autoPathTangents[1], {{-1, 4.0 / 3}, {0, 0}}});
}

TEST_F(AnimatedPropertySpatialTest, ApplyingToNoOrUnknownKeysChangesNothing) {
  expectNoChange(p, [](AnimatedProperty& q) { q.applySpatialInterpolation({Uuid::make()}, S::linear); });
  // With no ids, stale auto tangents stay stale: nothing is recomputed either.
  expectNoChange(points({pointKey(0, {0, 0}, S::autoBezier, custom), pointKey(1, {9, 3}, S::autoBezier, custom)}),
                 [](AnimatedProperty& q) { q.applySpatialInterpolation({}, S::linear); });
}

TEST(AnimatedPropertyEditTest, AutoTangentsUseEveryPointButChangeOnlyAutoKeys) {
  const SpatialHandles user{{1, 1}, {2, 2}}, stale{{9, 9}, {9, 9}};
  auto p = points({pointKey(0, {0, 0}, S::autoBezier), pointKey(1, {3, 4}, S::bezier, user),
                   pointKey(2, {6, 0}, S::linear, user), pointKey(3, {9, 3}, S::autoBezier)});
  p.recomputeAutoSpatialTangents();
  expectTangents(p, {{{0, 0}, {1, 4.0 / 3}}, user, user, {{-1, -1}, {0, 0}}});

  // A neighbour without a point counts as absent, and keeps its own handles.
  auto q = points({pointKey(0, {0, 0}, S::autoBezier, stale),
                   Keyframe(sec(1), V::double_(5), M::linear, std::nullopt, S::autoBezier, stale),
                   pointKey(2, {9, 3}, S::autoBezier, stale)});
  q.recomputeAutoSpatialTangents();
  expectTangents(q, {SpatialHandles::zero, stale, SpatialHandles::zero});
}

// --- Copies and equality ---

TEST(AnimatedPropertyEditTest, EditingACopyAndTheOriginalLeaveEachOtherUnchanged) {
  auto original = autoPath();
  const auto keysBefore = snapshot(original);
  auto copy = original;
  EXPECT_EQ(copy, original);
  copy.upsertKeyframe(V::point(1, 1), sec(0));
  copy.upsertKeyframe(V::point(8, 8), sec(3));
  copy.moveKeyframe(copy.keyframes()[1].id, sec(2));
  copy.shiftKeyframesBy(sec(1));
  copy.baseValue = V::point(-1, -1);
  EXPECT_EQ(original.keyframes().items(), keysBefore);
  EXPECT_EQ(original.baseValue, V::point(0, 0));

  const auto copyBefore = snapshot(copy);
  original.removeAllKeyframes(sec(1));
  original.upsertKeyframe(V::point(2, 2), sec(4));
  EXPECT_EQ(copy.keyframes().items(), copyBefore);
  EXPECT_EQ(copy.baseValue, V::point(-1, -1));
}

TEST(AnimatedPropertyEditTest, EqualPropertiesCompareAndHashEqual) {
  const std::vector<Keyframe> keys{numberKey(0, 0), numberKey(1, 10)};
  const AnimatedProperty a(V::double_(1), keys);
  EXPECT_EQ(a, AnimatedProperty(V::double_(1), keys));
  EXPECT_EQ(hashValue(a), hashValue(AnimatedProperty(V::double_(1), keys)));
  EXPECT_NE(a, AnimatedProperty(V::double_(2), keys));
  EXPECT_NE(a, AnimatedProperty(V::double_(1), {keys[0]}));
}

}  // namespace
}  // namespace orvane::core
