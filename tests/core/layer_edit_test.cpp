// Editing a layer in time: moves, trims, fades and cuts.

#include "core/layer.hpp"

#include <gtest/gtest.h>

#include "tests/core/test_support.hpp"

#include <utility>

namespace orvane::core {
namespace {

using testing_support::secs;

Layer clip(double start, double duration, double sourceStart = 0, double fadeIn = 0, double fadeOut = 0) {
  Layer layer("Clip", LayerContent::video(Uuid::make()), OVTimeRange(secs(start), secs(duration)));
  layer.sourceStart = secs(sourceStart);
  layer.fadeIn = secs(fadeIn);
  layer.fadeOut = secs(fadeOut);
  return layer;
}

TEST(LayerEditTest, MovesStopAtTheFloorAndKeyframesFollowOnlyTheActualMove) {
  struct Case { double start; bool absolute; double amount, floor, expectedStart; };
  const Case cases[] = {{2, false, 1.5, 0, 3.5}, {2, true, 1, 0, 1},   {2, false, -5, 0, 0},
                        {2, true, -3, 1, 1},     {0, false, -1, 0, 0}, {0, true, 0.5, 3, 3}};
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "start " << c.start << (c.absolute ? " to " : " by ") << c.amount
                                    << " floor " << c.floor);
    Layer layer = clip(c.start, 4);
    layer.transform.opacity.upsertKeyframe(PropertyValue::double_(0), secs(c.start + 1));
    layer.audio.volume.upsertKeyframe(PropertyValue::double_(50), secs(c.start + 3));
    layer.markers = {Marker{.time = secs(1), .name = "Beat"}};
    const Layer before = layer;
    c.absolute ? layer.moveTo(secs(c.amount), secs(c.floor)) : layer.moveBy(secs(c.amount), secs(c.floor));
    EXPECT_EQ(layer.timeRange, OVTimeRange(secs(c.expectedStart), secs(4)));
    EXPECT_EQ(layer.transform.opacity.keyframes()[0].time, secs(c.expectedStart + 1));
    EXPECT_EQ(layer.audio.volume.keyframes()[0].time, secs(c.expectedStart + 3));
    EXPECT_EQ(layer.markers[0].time, secs(1));  // markers stay on the layer's own clock
    if (c.expectedStart == c.start) {
      EXPECT_EQ(layer, before);
    }
  }
}

TEST(LayerEditTest, TrimStartMovesTheSourceAndStopsAtItsHeadTheMinimumAndTimeZero) {
  struct Case { double start, duration, sourceStart, target, minimum, expectedStart, expectedDuration, expectedSrc; };
  const Case cases[] = {
      {10, 5, 2, 12, 0.1, 12, 3, 4},  // the source moves with the start
      {10, 5, 2, 7, 0.1, 8, 7, 0},    // back only as far as the source head
      {10, 5, 2, 20, 1, 14, 1, 6},    // the minimum duration stays
      {1, 5, 10, -5, 1, 0, 6, 9},     // time zero stops it first
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "trim start of " << c.start << "+" << c.duration << " to " << c.target);
    Layer layer = clip(c.start, c.duration, c.sourceStart);
    layer.trimStartTo(secs(c.target), secs(c.minimum));
    EXPECT_EQ(layer.timeRange, OVTimeRange(secs(c.expectedStart), secs(c.expectedDuration)));
    EXPECT_EQ(layer.sourceStart, secs(c.expectedSrc));
    if (c.expectedSrc == 0) {
      EXPECT_EQ(layer.sourceStart.value, 0);  // exactly, no rounding residue
    }
  }
}

TEST(LayerEditTest, TrimEndFollowsTheTargetWithinTheSourceAndMinimum) {
  struct Case { double duration, sourceStart, target, maximumSource, expectedDuration; };  // maximum < 0: none
  const Case cases[] = {
      {5, 0, 17, -1, 7},  {5, 0, 11, -1, 1},     {5, 0, 5, -1, 0.5},  // down to the minimum
      {2, 2, 20, 6, 4},   {2, 2, 12, 100, 2},    // the source ends at 6 s; well inside it
      {2, 2, 20, 2.2, 0.5},                      // the minimum wins over the source
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "trim end to " << c.target << " source up to " << c.maximumSource);
    Layer layer = clip(10, c.duration, c.sourceStart);
    layer.trimEndTo(secs(c.target), secs(0.5),
                    c.maximumSource < 0 ? std::nullopt : std::optional(secs(c.maximumSource)));
    EXPECT_EQ(layer.timeRange, OVTimeRange(secs(10), secs(c.expectedDuration)));
    EXPECT_EQ(layer.sourceStart, secs(c.sourceStart));
  }
}

TEST(LayerEditTest, TrimsShrinkFadesButLeaveKeyframesOnTheCompositionClock) {
  Layer layer = clip(10, 5, 2, 2, 2);
  layer.transform.position.upsertKeyframe(PropertyValue::point(1, 2), secs(11));
  layer.trimStartTo(secs(12), secs(0.1));  // 3 s left for 4 s of fades
  EXPECT_EQ(layer.fadeIn, secs(1.5));
  EXPECT_EQ(layer.fadeOut, secs(1.5));
  layer.trimEndTo(secs(13), secs(0.1));
  EXPECT_EQ(layer.fadeIn, secs(0.5));
  EXPECT_EQ(layer.fadeOut, secs(0.5));
  EXPECT_EQ(layer.transform.position.keyframes()[0].time, secs(11));
}

TEST(LayerEditTest, FadeRampsMultiplyAndAreZeroOutsideTheLayerAndAtItsEnd) {
  const Layer ramps = clip(10, 10, 0, 2, 4), overlapping = clip(0, 4, 0, 3, 3), plain = clip(10, 5);
  const struct { const Layer* layer; double t, expected; } cases[] = {
      {&ramps, 9.5, 0},       {&ramps, 10, 0},        {&ramps, 11, 0.5},    {&ramps, 12, 1},
      {&ramps, 16, 1},        {&ramps, 17, 0.75},     {&ramps, 19, 0.25},   {&ramps, 20, 0},
      {&ramps, 21, 0},        {&overlapping, 1, 1.0 / 3},                   // 1/3 into the fade-in
      {&overlapping, 2, 4.0 / 9},                     // 2/3 in times 2/3 out
      {&plain, 10, 1},        {&plain, 15, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "at " << c.t);
    EXPECT_DOUBLE_EQ(c.layer->fadeMultiplierAt(secs(c.t)), c.expected);
  }
  const OVTime tick(1, OVTime::defaultTimescale);
  EXPECT_GT(ramps.fadeMultiplierAt(secs(20) - tick), 0);
  EXPECT_LT(ramps.fadeMultiplierAt(secs(20) - tick), 1e-5);
  EXPECT_EQ(plain.fadeMultiplierAt(secs(15) - tick), 1);
}

TEST(LayerEditTest, ClampFadesKeepsTheirProportionAndLeavesFadesThatFit) {
  struct Case { double duration, fadeIn, fadeOut, expectedIn, expectedOut; };
  const Case cases[] = {{2, 3, 1, 1.5, 0.5}, {4, 6, 0, 4, 0}, {4, 4, 4, 2, 2}, {0, 1, 1, 0, 0}};
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.fadeIn << " + " << c.fadeOut << " in " << c.duration);
    Layer layer = clip(0, c.duration, 0, c.fadeIn, c.fadeOut);
    layer.clampFadesToDuration();
    EXPECT_EQ(layer.fadeIn, secs(c.expectedIn));
    EXPECT_EQ(layer.fadeOut, secs(c.expectedOut));
  }
  Layer full = clip(3, 4, 0, 4, 4);  // full-length fades on both sides end at half each
  full.clampFadesToDuration();
  EXPECT_DOUBLE_EQ(full.fadeMultiplierAt(secs(4)), 0.5);
  EXPECT_DOUBLE_EQ(full.fadeMultiplierAt(secs(5)), 1);
  EXPECT_EQ(full.fadeIn.timescale, OVTime::defaultTimescale);

  Layer fitting = clip(0, 4);
  fitting.fadeIn = OVTime(30, 30);  // one second at a frame timescale
  fitting.fadeOut = OVTime(90, 30);
  fitting.clampFadesToDuration();
  EXPECT_EQ(fitting.fadeIn.value, 30);
  EXPECT_EQ(fitting.fadeIn.timescale, 30);
  EXPECT_EQ(fitting.fadeOut.value, 90);
}

TEST(LayerEditTest, SetFadeKeepsWithinTheRoomLeftByTheOtherFade) {
  struct Case { double fadeIn, fadeOut; bool setsIn; double value, expected; };
  const Case cases[] = {{0, 2, true, 4, 3},   {0, 2, true, 1, 1},     {0, 2, true, -1, 0},
                        {3, 0, false, 5, 2},  {3, 0, false, 0.5, 0.5},
                        {0, 6, true, 1, 0}};  // a fade-out longer than the layer leaves no room
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << (c.setsIn ? "in " : "out ") << c.value << " beside " << c.fadeIn << "/"
                                    << c.fadeOut);
    Layer layer = clip(0, 5, 0, c.fadeIn, c.fadeOut);
    c.setsIn ? layer.setFadeIn(secs(c.value)) : layer.setFadeOut(secs(c.value));
    EXPECT_EQ(c.setsIn ? layer.fadeIn : layer.fadeOut, secs(c.expected));
  }
}

// 10 s to 16 s, source from 2 s, opacity 0 at 12 s rising to 100 at 14 s.
Layer splittable() {
  Layer layer = clip(10, 6, 2, 1, 1.5);
  layer.transform.opacity.upsertKeyframe(PropertyValue::double_(0), secs(12));
  layer.transform.opacity.upsertKeyframe(PropertyValue::double_(100), secs(14));
  return layer;
}

TEST(LayerEditTest, SplitHasNoValueWithinTheMinimumOfEitherEnd) {
  const Layer layer = splittable();
  const std::pair<double, bool> cases[] = {{9, false},  {10, false}, {10.5, false}, {11, false},  {11.01, true},
                                           {14.99, true}, {15, false}, {16, false},   {17, false}};
  for (const auto& [t, legal] : cases) EXPECT_EQ(layer.splitAt(secs(t), secs(1)).has_value(), legal) << t;
}

TEST(LayerEditTest, SplitKeepsTheIdInTheHeadAndContinuesTheSourceInAFreshTail) {
  const Layer layer = splittable();
  const auto parts = layer.splitAt(secs(13), secs(0.5));
  ASSERT_TRUE(parts);
  const auto& [head, tail] = *parts;
  EXPECT_EQ(head.id, layer.id);
  EXPECT_EQ(head.timeRange, OVTimeRange(secs(10), secs(3)));
  EXPECT_EQ(head.sourceStart, secs(2));
  EXPECT_EQ(head.fadeIn, secs(1));
  EXPECT_EQ(head.fadeOut, OVTime::zero);
  EXPECT_NE(tail.id, layer.id);
  EXPECT_FALSE(tail.id.isNil());
  EXPECT_EQ(tail.timeRange, OVTimeRange(secs(13), secs(3)));
  EXPECT_EQ(tail.sourceStart, secs(5));
  EXPECT_EQ(tail.fadeIn, OVTime::zero);
  EXPECT_EQ(tail.fadeOut, secs(1.5));
  // Keyframes stay on the composition clock, so both halves keep them all.
  EXPECT_EQ(head.transform, layer.transform);
  EXPECT_EQ(tail.transform, layer.transform);

  Layer longFades = layer;  // each part shrinks the fades that no longer fit it
  longFades.fadeIn = secs(5);
  const auto shrunk = longFades.splitAt(secs(12), secs(0.5));
  ASSERT_TRUE(shrunk);
  EXPECT_EQ(shrunk->first.fadeIn, secs(2));
  EXPECT_EQ(shrunk->second.fadeOut, secs(1.5));
}

}  // namespace
}  // namespace orvane::core
