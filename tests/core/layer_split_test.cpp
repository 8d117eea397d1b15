// Cutting a layer in two.

#include "core/layer.hpp"

#include <gtest/gtest.h>

namespace orvane::core {
namespace {

OVTime secs(double s) { return OVTime::fromSeconds(s); }

Layer clip() {
  Layer layer("Clip", LayerContent::video(Uuid::make()), OVTimeRange(secs(10), secs(6)));
  layer.sourceStart = secs(2);
  layer.fadeIn = secs(1);
  layer.fadeOut = secs(1.5);
  layer.transform.opacity.upsertKeyframe(PropertyValue::double_(0), secs(12));
  layer.transform.opacity.upsertKeyframe(PropertyValue::double_(100), secs(14));
  return layer;
}

TEST(LayerSplitTest, CutWithinMinimumDurationOfEitherEndHasNoValue) {
  const Layer layer = clip();
  const OVTime minimum = secs(1);
  EXPECT_FALSE(layer.splitAt(secs(9), minimum));
  EXPECT_FALSE(layer.splitAt(secs(10), minimum));
  EXPECT_FALSE(layer.splitAt(secs(10.5), minimum));
  EXPECT_FALSE(layer.splitAt(secs(11), minimum));
  EXPECT_FALSE(layer.splitAt(secs(15), minimum));
  EXPECT_FALSE(layer.splitAt(secs(16), minimum));
  EXPECT_FALSE(layer.splitAt(secs(17), minimum));
  EXPECT_TRUE(layer.splitAt(secs(11.01), minimum));
  EXPECT_TRUE(layer.splitAt(secs(14.99), minimum));
}

TEST(LayerSplitTest, HeadKeepsTheIdAndEndsAtTheCut) {
  const Layer layer = clip();
  const auto parts = layer.splitAt(secs(13), secs(0.5));
  ASSERT_TRUE(parts);
  const Layer& head = parts->first;
  EXPECT_EQ(head.id, layer.id);
  EXPECT_EQ(head.timeRange, OVTimeRange(secs(10), secs(3)));
  EXPECT_EQ(head.sourceStart, secs(2));
  EXPECT_EQ(head.fadeIn, secs(1));
  EXPECT_EQ(head.fadeOut, OVTime::zero);
  EXPECT_EQ(head.name, layer.name);
  EXPECT_EQ(head.transform, layer.transform);
}

TEST(LayerSplitTest, TailGetsAFreshIdAndContinuesTheSource) {
  const Layer layer = clip();
  const auto parts = layer.splitAt(secs(13), secs(0.5));
  ASSERT_TRUE(parts);
  const Layer& tail = parts->second;
  EXPECT_NE(tail.id, layer.id);
  EXPECT_FALSE(tail.id.isNil());
  EXPECT_EQ(tail.timeRange, OVTimeRange(secs(13), secs(3)));
  EXPECT_EQ(tail.sourceStart, secs(5));
  EXPECT_EQ(tail.fadeIn, OVTime::zero);
  EXPECT_EQ(tail.fadeOut, secs(1.5));
  // Keyframes stay on the composition clock, so both halves keep them all.
  EXPECT_EQ(tail.transform, layer.transform);
  EXPECT_EQ(tail.transform.opacity.doubleValueAt(secs(13)), 50);
}

TEST(LayerSplitTest, EachPartShrinksFadesThatNoLongerFit) {
  Layer layer = clip();
  layer.fadeIn = secs(5);
  layer.fadeOut = secs(1);
  const auto parts = layer.splitAt(secs(12), secs(0.5));
  ASSERT_TRUE(parts);
  EXPECT_EQ(parts->first.fadeIn, secs(2));
  EXPECT_EQ(parts->first.fadeOut, OVTime::zero);
  EXPECT_EQ(parts->second.fadeIn, OVTime::zero);
  EXPECT_EQ(parts->second.fadeOut, secs(1));
}

}  // namespace
}  // namespace orvane::core
