// The rules under stamping: progress to time, value resolution and the
// keyframes a behavior makes.

#include <cmath>
#include <limits>

#include "behaviors_test_support.hpp"

namespace orvane::behaviors {
namespace {

using namespace testing_support;

Behavior timed(BehaviorTiming timing) {
  Behavior b;
  b.timing = timing;
  return b;
}

TEST(BehaviorTimingTest, LeadingRunsFromTheLayerStart) {
  const Layer layer = clip("a", 2, 10);
  const Behavior b = timed(BehaviorTiming::leading(0.5));
  EXPECT_EQ(b.timeForProgress(0, layer), secs(2));
  EXPECT_EQ(b.timeForProgress(1, layer), secs(2.5));
  EXPECT_NEAR(b.timeForProgress(0.5, layer).seconds(), 2.25, 1e-9);
}

TEST(BehaviorTimingTest, TrailingEndsAtTheLayerEnd) {
  const Layer layer = clip("a", 2, 10);
  const Behavior b = timed(BehaviorTiming::trailing(1));
  EXPECT_EQ(b.timeForProgress(0, layer), secs(11));
  EXPECT_EQ(b.timeForProgress(1, layer), secs(12));
}

TEST(BehaviorTimingTest, FullLayerSpansTheClip) {
  const Layer layer = clip("a", 1, 4);
  const Behavior b = timed(BehaviorTiming::fullLayer());
  EXPECT_EQ(b.timeForProgress(0, layer), secs(1));
  EXPECT_EQ(b.timeForProgress(0.25, layer), secs(2));
  EXPECT_EQ(b.timeForProgress(1, layer), secs(5));
}

TEST(BehaviorTimingTest, ARunLongerThanItsClipIsCompressedIntoIt) {
  const Layer shortClip = clip("a", 1, 0.3);
  EXPECT_EQ(timed(BehaviorTiming::leading(0.7)).timeForProgress(1, shortClip), secs(1.3));
  EXPECT_EQ(timed(BehaviorTiming::trailing(0.7)).timeForProgress(0, shortClip), secs(1));
  EXPECT_EQ(timed(BehaviorTiming::trailing(0.7)).timeForProgress(1, shortClip), secs(1.3));
}

TEST(BehaviorTimingTest, ProgressAndSpansAreHeldToTheirLimits) {
  const Layer layer = clip("a", 2, 10);
  const Behavior b = timed(BehaviorTiming::leading(0.5));
  EXPECT_EQ(b.timeForProgress(-3, layer), secs(2));
  EXPECT_EQ(b.timeForProgress(7, layer), secs(2.5));
  EXPECT_EQ(b.timeForProgress(std::numeric_limits<double>::quiet_NaN(), layer), secs(2));
  EXPECT_EQ(b.timeForProgress(std::numeric_limits<double>::infinity(), layer), secs(2.5));

  // A zero or absurd span is one thirtieth of a second, or the whole clip.
  EXPECT_NEAR(timed(BehaviorTiming::leading(0)).timeForProgress(1, layer).seconds(), 2 + 1.0 / 30, 1e-6);
  EXPECT_NEAR(timed(BehaviorTiming::leading(std::nan(""))).timeForProgress(1, layer).seconds(), 2 + 1.0 / 30, 1e-6);
  EXPECT_EQ(timed(BehaviorTiming::leading(1e300)).timeForProgress(1, layer), secs(12));
  // A layer of no length still gets a thirtieth of a second.
  EXPECT_NEAR(timed(BehaviorTiming::fullLayer()).timeForProgress(1, clip("z", 3, 0)).seconds(), 3 + 1.0 / 30, 1e-6);
}

TEST(BehaviorValueTest, AbsoluteKeepsTheValue) {
  EXPECT_EQ(resolve(PropertyValue::double_(5), BehaviorValueMode::absolute, PropertyValue::double_(7)),
            PropertyValue::double_(5));
}

TEST(BehaviorValueTest, OffsetAddsLikeCases) {
  using V = PropertyValue;
  const auto offset = BehaviorValueMode::offset;
  EXPECT_EQ(resolve(V::double_(5), offset, V::double_(7)), V::double_(12));
  EXPECT_EQ(resolve(V::point(0, -140), offset, V::point(100, 100)), V::point(100, -40));
  EXPECT_EQ(resolve(V::size(10, 20), offset, V::size(1, 2)), V::size(11, 22));
  EXPECT_EQ(resolve(V::integer(3), offset, V::integer(-5)), V::integer(-2));
}

TEST(BehaviorValueTest, OffsetOfUnlikeOrUnaddableCasesIsTheValue) {
  using V = PropertyValue;
  const auto offset = BehaviorValueMode::offset;
  EXPECT_EQ(resolve(V::double_(5), offset, V::integer(2)), V::double_(5));
  EXPECT_EQ(resolve(V::point(1, 2), offset, V::double_(9)), V::point(1, 2));
  EXPECT_EQ(resolve(V::color(OVColor::white), offset, V::color(OVColor::black)), V::color(OVColor::white));
  EXPECT_EQ(resolve(V::bool_(true), offset, V::bool_(true)), V::bool_(true));
}

TEST(BehaviorKeyframesTest, SnapToFramesWithFreshIdsAndSmoothBezierByDefault) {
  Behavior b = timed(BehaviorTiming::leading(1));
  const Layer layer = clip("a", 2, 10);
  const std::vector<BehaviorKey> keys = {
      {0, PropertyValue::double_(1), InterpolationMode::bezier, std::nullopt},
      {0.51, PropertyValue::double_(2), InterpolationMode::bezier, BezierHandles::glide},
      {1, PropertyValue::double_(3), InterpolationMode::hold, std::nullopt},
  };
  const auto frames = makeKeyframes(keys, b, layer, BehaviorValueMode::offset, PropertyValue::double_(10),
                                    FrameRate::fps25);
  ASSERT_EQ(frames.size(), 3u);
  // 2.51 s lies in frame 62 at 25 fps (2.48 … 2.52).
  EXPECT_EQ(frames[0].time, FrameRate::fps25.timeForFrame(50));
  EXPECT_EQ(frames[1].time, FrameRate::fps25.timeForFrame(62));
  EXPECT_EQ(frames[2].time, FrameRate::fps25.timeForFrame(75));
  EXPECT_EQ(frames[0].value, PropertyValue::double_(11));
  EXPECT_EQ(frames[2].value, PropertyValue::double_(13));
  EXPECT_EQ(frames[0].handles, BezierHandles::smooth);
  EXPECT_EQ(frames[1].handles, BezierHandles::glide);
  EXPECT_EQ(frames[2].mode, InterpolationMode::hold);
  EXPECT_FALSE(frames[2].handles.has_value());
  EXPECT_NE(frames[0].id, frames[1].id);
  EXPECT_NE(frames[1].id, frames[2].id);
}

TEST(BehaviorKeyframesTest, KeysCloserThanAFrameShareOne) {
  Behavior b = timed(BehaviorTiming::leading(0.1));
  const std::vector<BehaviorKey> keys = {{0, PropertyValue::double_(0)}, {0.2, PropertyValue::double_(1)}};
  const auto frames = makeKeyframes(keys, b, clip("a", 1, 5), BehaviorValueMode::absolute, PropertyValue(),
                                    FrameRate::fps30);
  ASSERT_EQ(frames.size(), 2u);
  EXPECT_EQ(frames[0].time, frames[1].time);
}

TEST(BehaviorKindTest, VisualKindsAreAllButAudio) {
  EXPECT_EQ(Behavior::allKinds().size(), 8u);
  EXPECT_EQ(Behavior::visualKinds().size(), 7u);
  EXPECT_FALSE(Behavior::visualKinds().contains(LayerKind::audio));
  Behavior b;
  EXPECT_FALSE(b.applies(LayerKind::audio));
  EXPECT_TRUE(b.applies(LayerKind::precomposition));
  b.applicableKinds.clear();
  EXPECT_TRUE(b.applies(LayerKind::audio));
}

TEST(BehaviorCategoryTest, DisplayNamesInPanelOrder) {
  std::vector<std::string> names;
  for (BehaviorCategory c : allBehaviorCategories()) names.emplace_back(displayName(c));
  EXPECT_EQ(names, (std::vector<std::string>{"Entrance", "Exit", "Emphasis", "Motion", "Opacity", "Scale",
                                             "Rotation", "Crop", "Effects", "Audio", "Text"}));
}

}  // namespace
}  // namespace orvane::behaviors
