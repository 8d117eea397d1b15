// Layer transforms: evaluation at a time and the placement matrices, checked
// by mapping concrete points.

#include "core/layer_parts.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace orvane::core {
namespace {

using Channel = LayerTransform::Channel;

OVTime secs(double s) { return OVTime::fromSeconds(s); }

// position, rotation (degrees), scale (percent) and anchor in one go.
LayerTransform placed(OVPoint position, double rotation = 0, OVPoint scale = {100, 100},
                      OVPoint anchor = {0, 0}) {
  LayerTransform t;
  t.position = AnimatedProperty::point(position.x, position.y);
  t.rotation = AnimatedProperty::double_(rotation);
  t.scale = AnimatedProperty::point(scale.x, scale.y);
  t.anchorPoint = AnimatedProperty::point(anchor.x, anchor.y);
  return t;
}

void expectPoint(const OVPoint& actual, double x, double y) {
  EXPECT_NEAR(actual.x, x, 1e-9);
  EXPECT_NEAR(actual.y, y, 1e-9);
}

OVPoint map(const LayerTransform& t, OVPoint p, OVSize size = {100, 40}) {
  return t.affineTransformAt(secs(0), size).apply(p);
}

TEST(LayerTransformTest, CenteredInPutsThePositionAtTheMiddle) {
  const LayerTransform t = LayerTransform::centeredIn({1920, 1080});
  EXPECT_EQ(t.position.pointValueAt(secs(0)), (OVPoint{960, 540}));
  LayerTransform expected;
  expected.position = t.position;
  EXPECT_EQ(t, expected);
}

TEST(LayerTransformTest, DefaultTransformPutsTheLayerCentreAtTheOrigin) {
  const LayerTransform t;
  EXPECT_EQ(t.pivotTransformAt(secs(3)), Affine2D::identity());
  expectPoint(map(t, {50, 20}), 0, 0);
  expectPoint(map(t, {0, 0}), -50, -20);
}

TEST(LayerTransformTest, TranslationMovesEveryPointByThePosition) {
  const LayerTransform t = placed({100, 50});
  expectPoint(map(t, {0, 0}), 100, 50);
  expectPoint(map(t, {10, 20}), 110, 70);
}

TEST(LayerTransformTest, AnchorLandsOnThePosition) {
  const LayerTransform t = placed({300, 200}, 0, {100, 100}, {0.5, 0.5});
  expectPoint(map(t, {50, 20}), 300, 200);
  expectPoint(map(t, {0, 0}), 250, 180);
  const LayerTransform corner = placed({300, 200}, 0, {100, 100}, {1, 0});
  expectPoint(map(corner, {100, 0}), 300, 200);
}

TEST(LayerTransformTest, RotationTurnsCounterClockwiseAboutTheAnchor) {
  const LayerTransform t = placed({100, 100}, 90);
  expectPoint(map(t, {10, 0}), 100, 110);
  expectPoint(map(t, {0, 10}), 90, 100);
  const LayerTransform centred = placed({300, 200}, 90, {100, 100}, {0.5, 0.5});
  expectPoint(map(centred, {50, 20}), 300, 200);
  expectPoint(map(centred, {100, 20}), 300, 250);
}

TEST(LayerTransformTest, ScaleAppliesBeforeRotation) {
  const LayerTransform t = placed({0, 0}, 90, {200, 50});
  // (10, 0) scales to (20, 0), then turns to (0, 20).
  expectPoint(map(t, {10, 0}), 0, 20);
  expectPoint(map(t, {0, 10}), -5, 0);
}

TEST(LayerTransformTest, SkewShearsAlongXAfterScaleAndBeforeRotation) {
  LayerTransform t = placed({0, 0}, 0, {200, 100});
  t.skew = AnimatedProperty::double_(45);
  // (0, 10) scales to (0, 10) and shears to (10, 10).
  expectPoint(map(t, {0, 10}), 10, 10);
  expectPoint(map(t, {10, 0}), 20, 0);

  t.rotation = AnimatedProperty::double_(90);
  t.position = AnimatedProperty::point(5, 5);
  // Sheared (10, 10) turns to (-10, 10), then moves by the position.
  expectPoint(map(t, {0, 10}), -5, 15);
}

TEST(LayerTransformTest, FlipsMirrorAroundTheAnchor) {
  LayerTransform t = placed({300, 200}, 0, {100, 100}, {0.5, 0.5});
  t.flipHorizontally = true;
  EXPECT_DOUBLE_EQ(t.pivotTransformAt(secs(0)).a, -1);
  EXPECT_DOUBLE_EQ(t.pivotTransformAt(secs(0)).d, 1);
  expectPoint(map(t, {50, 20}), 300, 200);
  expectPoint(map(t, {0, 0}), 350, 180);

  t.flipHorizontally = false;
  t.flipVertically = true;
  EXPECT_DOUBLE_EQ(t.pivotTransformAt(secs(0)).d, -1);
  expectPoint(map(t, {50, 20}), 300, 200);
  expectPoint(map(t, {0, 0}), 250, 220);

  LayerTransform scaled = placed({0, 0}, 0, {50, 200});
  scaled.flipHorizontally = scaled.flipVertically = true;
  expectPoint(map(scaled, {10, 10}), -5, -20);
}

TEST(LayerTransformTest, PivotCarriesNoAnchorOffset) {
  const LayerTransform centred = placed({40, 30}, 30, {150, 80}, {0.5, 0.5});
  const LayerTransform corner = placed({40, 30}, 30, {150, 80}, {0, 1});
  EXPECT_EQ(centred.pivotTransformAt(secs(0)), corner.pivotTransformAt(secs(0)));
  expectPoint(centred.pivotTransformAt(secs(0)).apply({0, 0}), 40, 30);
}

TEST(LayerTransformTest, HalfTurnWithoutSkewIsAPlainRotation) {
  const Affine2D m = placed({0, 0}, 180).pivotTransformAt(secs(0));
  EXPECT_NEAR(m.a, -1, 1e-12);
  EXPECT_NEAR(m.b, 0, 1e-12);
  EXPECT_NEAR(m.c, 0, 1e-12);
  EXPECT_NEAR(m.d, -1, 1e-12);
}

TEST(LayerTransformTest, RightAngleSkewGivesAHugeFiniteShear) {
  LayerTransform t;
  t.skew = AnimatedProperty::double_(90);
  const Affine2D m = t.pivotTransformAt(secs(0));
  EXPECT_TRUE(std::isfinite(m.c));
  EXPECT_GT(std::abs(m.c), 1e15);
  const OVPoint p = m.apply({0, 1});
  EXPECT_TRUE(std::isfinite(p.x));
  EXPECT_DOUBLE_EQ(p.y, 1);
}

TEST(LayerTransformTest, ResolvedEvaluatesKeyframesAtTheTime) {
  LayerTransform t;
  t.opacity.upsertKeyframe(PropertyValue::double_(0), secs(0));
  t.opacity.upsertKeyframe(PropertyValue::double_(100), secs(2));
  t.position.upsertKeyframe(PropertyValue::point(0, 0), secs(0));
  t.position.upsertKeyframe(PropertyValue::point(200, 100), secs(2));
  t.rotation.upsertKeyframe(PropertyValue::double_(90), secs(1));
  t.flipVertically = true;

  const LayerTransform::Resolved r = t.resolvedAt(secs(1));
  EXPECT_DOUBLE_EQ(r.opacity, 50);
  EXPECT_NEAR(r.position.x, 100, 1e-9);
  EXPECT_NEAR(r.position.y, 50, 1e-9);
  EXPECT_EQ(r.rotationDegrees, 90);
  EXPECT_EQ(r.scale, (OVPoint{100, 100}));
  EXPECT_TRUE(r.flipVertically);
  EXPECT_FALSE(r.flipHorizontally);
  expectPoint(t.pivotTransformAt(secs(2)).apply({0, 0}), 200, 100);
}

TEST(LayerTransformTest, ResolvedFallsBackToDefaultsForValuesOfTheWrongKind) {
  LayerTransform t;
  t.position.baseValue = PropertyValue::double_(7);
  t.scale.baseValue = PropertyValue::text("big");
  t.rotation.baseValue = PropertyValue::point(1, 1);
  t.anchorPoint.baseValue = PropertyValue::double_(1);
  t.opacity.baseValue = PropertyValue::size(1, 1);
  t.skew.baseValue = PropertyValue::choice("x");
  EXPECT_EQ(t.resolvedAt(secs(0)), LayerTransform::Resolved{});
}

TEST(LayerTransformTest, ChannelsReadAndWriteTheirProperty) {
  LayerTransform t;
  EXPECT_EQ(&t[Channel::position], &t.position);
  EXPECT_EQ(&t[Channel::scale], &t.scale);
  EXPECT_EQ(&t[Channel::rotation], &t.rotation);
  EXPECT_EQ(&t[Channel::anchorPoint], &t.anchorPoint);
  EXPECT_EQ(&t[Channel::opacity], &t.opacity);
  EXPECT_EQ(&t[Channel::skew], &t.skew);
  const LayerTransform& view = t;
  EXPECT_EQ(&view[Channel::skew], &t.skew);
  t[Channel::opacity] = AnimatedProperty::double_(25);
  EXPECT_EQ(t.resolvedAt(secs(0)).opacity, 25);
}

TEST(LayerTransformTest, AnyAnimatedChannelAnimatesTheTransform) {
  EXPECT_FALSE(LayerTransform{}.isAnimated());
  LayerTransform flipped;
  flipped.flipHorizontally = true;
  EXPECT_FALSE(flipped.isAnimated());
  for (Channel channel : allCases<Channel>()) {
    LayerTransform t;
    t[channel].addKeyframeAt(secs(1));
    EXPECT_TRUE(t.isAnimated()) << rawValue(channel);
  }
}

TEST(LayerTransformTest, EqualTransformsHashAlike) {
  const LayerTransform a = placed({1, 2}, 3);
  LayerTransform b = placed({1, 2}, 3);
  EXPECT_EQ(hashValue(a), hashValue(b));
  b.flipVertically = true;
  EXPECT_NE(hashValue(a), hashValue(b));
}

}  // namespace
}  // namespace orvane::core
