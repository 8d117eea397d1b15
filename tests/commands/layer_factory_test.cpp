#include "Commands/layer_factory.hpp"

#include <gtest/gtest.h>

#include "tests/commands/commands_test_support.hpp"

namespace orvane::commands {
namespace {

using namespace testing_support;

Composition tenSeconds() { return *projectWith({}).activeComposition(); }

struct DurationCase {
  const char* what;
  MediaAsset asset;
  double start, sourceStart;
  std::optional<double> sourceDuration;
  double expected;
};

TEST(LayerFactoryTest, DurationFollowsSourceRoomAndStills) {
  const double nearEnd = 10 - 1.0 / 60;  // less than a frame of room
  const DurationCase cases[] = {
      {"short video", videoAsset("v", 4), 0, 0, {}, 4},
      {"long video cut to room", videoAsset("v", 12), 0, 0, {}, 10},
      {"room under a frame keeps the length", videoAsset("v", 12), nearEnd, 0, {}, 12},
      {"source duration limited to what is left", videoAsset("v", 12), 0, 3, 20, 9},
      {"source duration", audioAsset("a", 12), 0, 3, 2, 2},
      {"nothing left gives the still length", videoAsset("v", 12), 0, 12, {}, 5},
      {"still cut to room", imageAsset("i"), 8, 0, {}, 2},
      {"still near the end runs past it", imageAsset("i"), nearEnd, 0, {}, 5},
  };
  const Composition c = tenSeconds();
  for (const auto& tc : cases) {
    std::optional<OVTime> sd;
    if (tc.sourceDuration) sd = secs(*tc.sourceDuration);
    const Layer l = LayerFactory::layerFor(tc.asset, c, secs(tc.start), secs(tc.sourceStart), sd);
    EXPECT_NEAR(l.timeRange.duration.seconds(), tc.expected, 1e-6) << tc.what;
    EXPECT_EQ(l.name, tc.asset.name) << tc.what;
  }
}

TEST(LayerFactoryTest, MediaLayersClampSourceStartAndFitWithoutEnlarging) {
  const Composition c = tenSeconds();
  const Layer big = LayerFactory::layerFor(videoAsset("v", 5, {3840, 2160}), c, secs(1), secs(-2));
  EXPECT_EQ(big.sourceStart, OVTime::zero);
  EXPECT_EQ(big.transform.scale.pointValueAt(OVTime::zero), (OVPoint{50, 50}));
  EXPECT_EQ(big.transform.position.pointValueAt(OVTime::zero), (OVPoint{960, 540}));
  const Layer still = LayerFactory::layerFor(imageAsset("i", {800, 600}), c, secs(0), secs(3));
  EXPECT_EQ(still.sourceStart, OVTime::zero);
  EXPECT_EQ(still.transform.scale.pointValueAt(OVTime::zero), (OVPoint{100, 100}));
  const Layer sound = LayerFactory::layerFor(audioAsset("a", 5), c, secs(0), secs(9));
  EXPECT_EQ(sound.sourceStart, secs(5));
  EXPECT_TRUE(sound.transform == LayerTransform{});
  EXPECT_EQ(std::vector({big.kind(), still.kind(), sound.kind()}),
            std::vector({LayerKind::video, LayerKind::image, LayerKind::audio}));
}

TEST(LayerFactoryTest, GeneratedLayersRunToTheEndWithUniqueNames) {
  Composition c = tenSeconds();
  c.layers.push_back(clip("Text", 0, 1));
  const Layer text = LayerFactory::textLayer(c, secs(4));
  EXPECT_EQ(text.name, "Text 2");
  EXPECT_EQ(text.timeRange, OVTimeRange(secs(4), secs(6)));
  EXPECT_DOUBLE_EQ(text.content.textContent()->fontSize, 1080 * 0.08);

  const Layer star = LayerFactory::shapeLayer(ShapeContent::ShapeType::star, c, secs(0));
  EXPECT_EQ(star.name, "Star");
  EXPECT_EQ(star.content.shapeContent()->size, (OVSize{432, 432}));
  EXPECT_EQ(LayerFactory::solidLayer(OVColor::red_, c, secs(0)).content.solidContent()->size, c.size);
  EXPECT_EQ(LayerFactory::adjustmentLayer(c, secs(0)).content.adjustmentSize(), c.size);
  // Less than a frame before the end: one frame long.
  EXPECT_EQ(LayerFactory::durationToEnd(c, secs(10)), c.minimumLayerDuration());
}

TEST(LayerFactoryTest, PrecompositionAndAudioTwin) {
  const Composition host = tenSeconds();
  Composition nested = host;
  nested.name = "Intro";
  nested.size = {3840, 2160};
  nested.duration = secs(4);
  Layer pre = LayerFactory::precompositionLayer(nested.id, nested, host, secs(1));
  EXPECT_EQ(pre.name, "Intro");
  EXPECT_EQ(pre.timeRange.duration, secs(4));
  EXPECT_EQ(pre.transform.scale.pointValueAt(OVTime::zero).x, 50);
  nested.duration = secs(30);
  EXPECT_EQ(LayerFactory::precompositionLayer(nested.id, nested, host, secs(1)).timeRange.duration, secs(9));

  Layer source = clip("Clip", 2, 3);
  source.sourceStart = secs(1);
  source.audio.echoMix = 40;
  const Uuid asset = Uuid::make();
  const Layer twin = LayerFactory::detachedAudioLayer(source, asset);
  EXPECT_EQ(twin.name, "Clip Audio");
  EXPECT_EQ(twin.content, LayerContent::audio(asset));
  EXPECT_EQ(std::pair(twin.timeRange, twin.sourceStart), std::pair(source.timeRange, source.sourceStart));
  EXPECT_TRUE(twin.audio == source.audio);
}

}  // namespace
}  // namespace orvane::commands
