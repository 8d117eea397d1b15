// Fade ramps of a layer and the rules that keep fades within its duration.

#include "core/layer.hpp"

#include <gtest/gtest.h>

namespace orvane::core {
namespace {

OVTime secs(double s) { return OVTime::fromSeconds(s); }

Layer clip(double start, double duration, double fadeIn = 0, double fadeOut = 0) {
  Layer layer("Clip", LayerContent::video(Uuid::make()), OVTimeRange(secs(start), secs(duration)));
  layer.fadeIn = secs(fadeIn);
  layer.fadeOut = secs(fadeOut);
  return layer;
}

TEST(LayerFadeTest, FadeMultiplierRampsLinearlyInAndOut) {
  const Layer layer = clip(10, 10, 2, 4);
  EXPECT_DOUBLE_EQ(layer.fadeMultiplierAt(secs(10)), 0);
  EXPECT_DOUBLE_EQ(layer.fadeMultiplierAt(secs(11)), 0.5);
  EXPECT_DOUBLE_EQ(layer.fadeMultiplierAt(secs(12)), 1);
  EXPECT_DOUBLE_EQ(layer.fadeMultiplierAt(secs(16)), 1);
  EXPECT_DOUBLE_EQ(layer.fadeMultiplierAt(secs(17)), 0.75);
  EXPECT_DOUBLE_EQ(layer.fadeMultiplierAt(secs(19)), 0.25);
}

TEST(LayerFadeTest, OverlappingRampsMultiply) {
  const Layer layer = clip(0, 4, 3, 3);
  // One third of the way into the fade-out and two thirds into the fade-in.
  EXPECT_DOUBLE_EQ(layer.fadeMultiplierAt(secs(2)), (2.0 / 3) * (2.0 / 3));
  EXPECT_DOUBLE_EQ(layer.fadeMultiplierAt(secs(1)), (1.0 / 3) * 1);
}

TEST(LayerFadeTest, FadeMultiplierIsZeroOutsideTheLayerAndAtItsEnd) {
  const Layer faded = clip(10, 5, 0, 1);
  const OVTime lastInstant = faded.timeRange.end() - OVTime(1, OVTime::defaultTimescale);
  EXPECT_EQ(faded.fadeMultiplierAt(secs(9.5)), 0);
  EXPECT_EQ(faded.fadeMultiplierAt(secs(15)), 0);
  EXPECT_EQ(faded.fadeMultiplierAt(secs(16)), 0);
  EXPECT_GT(faded.fadeMultiplierAt(lastInstant), 0);
  EXPECT_LT(faded.fadeMultiplierAt(lastInstant), 1e-5);

  const Layer plain = clip(10, 5);
  EXPECT_EQ(plain.fadeMultiplierAt(lastInstant), 1);
  EXPECT_EQ(plain.fadeMultiplierAt(secs(10)), 1);
  EXPECT_EQ(plain.fadeMultiplierAt(secs(15)), 0);
}

TEST(LayerFadeTest, FullDurationFadesOnBothSidesEndAtHalfEach) {
  Layer layer = clip(3, 4, 4, 4);
  layer.clampFadesToDuration();
  EXPECT_EQ(layer.fadeIn, secs(2));
  EXPECT_EQ(layer.fadeOut, secs(2));
  EXPECT_DOUBLE_EQ(layer.fadeMultiplierAt(secs(5)), 1);
  EXPECT_DOUBLE_EQ(layer.fadeMultiplierAt(secs(4)), 0.5);
}

TEST(LayerFadeTest, ClampFadesKeepsTheirProportion) {
  Layer layer = clip(0, 2, 3, 1);
  layer.clampFadesToDuration();
  EXPECT_EQ(layer.fadeIn, secs(1.5));
  EXPECT_EQ(layer.fadeOut, secs(0.5));
  EXPECT_EQ(layer.fadeIn.timescale, OVTime::defaultTimescale);

  Layer single = clip(0, 4, 6, 0);
  single.clampFadesToDuration();
  EXPECT_EQ(single.fadeIn, secs(4));
  EXPECT_EQ(single.fadeOut, OVTime::zero);
}

TEST(LayerFadeTest, ClampFadesLeavesFadesThatFitUntouched) {
  Layer layer = clip(0, 4);
  layer.fadeIn = OVTime(30, 30);  // one second at a frame timescale
  layer.fadeOut = OVTime(90, 30);
  layer.clampFadesToDuration();
  EXPECT_EQ(layer.fadeIn.value, 30);
  EXPECT_EQ(layer.fadeIn.timescale, 30);
  EXPECT_EQ(layer.fadeOut.value, 90);
}

TEST(LayerFadeTest, ClampFadesOfAnEmptyLayerZeroesThem) {
  Layer layer = clip(0, 0, 1, 1);
  layer.clampFadesToDuration();
  EXPECT_EQ(layer.fadeIn, OVTime::zero);
  EXPECT_EQ(layer.fadeOut, OVTime::zero);
}

TEST(LayerFadeTest, SetFadeInKeepsWithinTheRoomLeftByTheFadeOut) {
  Layer layer = clip(0, 5, 0, 2);
  layer.setFadeIn(secs(4));
  EXPECT_EQ(layer.fadeIn, secs(3));
  layer.setFadeIn(secs(1));
  EXPECT_EQ(layer.fadeIn, secs(1));
  layer.setFadeIn(secs(-1));
  EXPECT_EQ(layer.fadeIn, OVTime::zero);
}

TEST(LayerFadeTest, SetFadeOutKeepsWithinTheRoomLeftByTheFadeIn) {
  Layer layer = clip(0, 5, 3, 0);
  layer.setFadeOut(secs(5));
  EXPECT_EQ(layer.fadeOut, secs(2));
  layer.setFadeOut(secs(0.5));
  EXPECT_EQ(layer.fadeOut, secs(0.5));

  Layer crowded = clip(0, 5, 0, 6);  // a fade-out longer than the layer
  crowded.setFadeIn(secs(1));
  EXPECT_EQ(crowded.fadeIn, OVTime::zero);
}

}  // namespace
}  // namespace orvane::core
