// The stage's sprite scene: when it stands in for a frame, and when a
// sprite is drawn again.

#include "render/stage_scene.hpp"

#include <gtest/gtest.h>

#include "core/effect_catalog.hpp"
#include "render/frame_compositor.hpp"

namespace orvane::render {
namespace {

using core::Layer;
using core::LayerContent;
using core::OVTime;
using core::OVTimeRange;

OVTime secs(double s) { return OVTime::fromSeconds(s); }

Layer shapeLayer(const std::string& name) {
  core::ShapeContent shape;
  shape.size = {20, 10};
  Layer layer(name, LayerContent::shape(shape), OVTimeRange(OVTime::zero, secs(10)));
  layer.transform = core::LayerTransform::centeredIn({100, 100});
  return layer;
}

RenderPlan planOf(std::vector<Layer> layers) {
  RenderPlan plan;
  plan.composition.size = {100, 100};
  plan.composition.duration = secs(10);
  plan.composition.layers = core::PersistentList<Layer>(layers);
  return plan;
}

core::EffectInstance blur(double radius) {
  core::EffectInstance effect = core::EffectCatalog::descriptorFor("blur.gaussian")->makeInstance();
  effect.parameters["radius"] = core::AnimatedProperty::double_(radius);
  return effect;
}

TEST(StageSceneTest, MovingALayerReusesItsSprite) {
  StageSceneBuilder builder;
  Layer layer = shapeLayer("box");
  RenderPlan plan = planOf({layer});
  ASSERT_TRUE(builder.scene(plan, secs(1)));
  EXPECT_EQ(builder.rasterisedCount(), 1u);
  for (int tick = 0; tick < 5; ++tick) {
    plan.composition.update(layer.id, [&](Layer& l) {
      l.transform.position = core::AnimatedProperty::point(10.0 * tick, 40);
      l.transform.rotation = core::AnimatedProperty::double_(tick * 5.0);
      l.transform.opacity = core::AnimatedProperty::double_(100 - tick * 10.0);
    });
    const auto scene = builder.scene(plan, secs(1));
    ASSERT_TRUE(scene);
    ASSERT_EQ(scene->sprites.size(), 1u);
    EXPECT_DOUBLE_EQ(scene->sprites[0].opacity, (100 - tick * 10.0) / 100);
  }
  EXPECT_EQ(builder.rasterisedCount(), 1u);
}

TEST(StageSceneTest, EditingContentRedrawsOnlyThatSprite) {
  StageSceneBuilder builder;
  const Layer a = shapeLayer("a");
  const Layer b = shapeLayer("b");
  RenderPlan plan = planOf({a, b});
  ASSERT_TRUE(builder.scene(plan, secs(1)));
  EXPECT_EQ(builder.rasterisedCount(), 2u);
  plan.composition.update(a.id, [](Layer& l) {
    core::ShapeContent shape = *l.content.shapeContent();
    shape.fillColor = {0, 0, 1, 1};
    l.content = LayerContent::shape(shape);
  });
  const auto scene = builder.scene(plan, secs(1));
  ASSERT_TRUE(scene);
  EXPECT_EQ(builder.rasterisedCount(), 3u);
  // Back to front: the last layer of the list first.
  ASSERT_EQ(scene->sprites.size(), 2u);
  EXPECT_EQ(scene->sprites[0].id, b.id);
  EXPECT_EQ(scene->sprites[1].id, a.id);
}

TEST(StageSceneTest, OnlyAnAnimatedEffectMakesTimeRedraw) {
  StageSceneBuilder builder;
  Layer still = shapeLayer("still");
  still.effects = {blur(3)};
  Layer animated = shapeLayer("animated");
  core::EffectInstance moving = blur(0);
  moving.parameters["radius"].upsertKeyframe(core::PropertyValue::double_(0), secs(0));
  moving.parameters["radius"].upsertKeyframe(core::PropertyValue::double_(8), secs(2));
  animated.effects = {moving};
  RenderPlan plan = planOf({still, animated});
  ASSERT_TRUE(builder.scene(plan, secs(0.5)));
  EXPECT_EQ(builder.rasterisedCount(), 2u);
  ASSERT_TRUE(builder.scene(plan, secs(1)));
  ASSERT_TRUE(builder.scene(plan, secs(1.5)));
  EXPECT_EQ(builder.rasterisedCount(), 4u);
}

TEST(StageSceneTest, ABlurredSpriteKeepsItsPlaceByItsOrigin) {
  StageSceneBuilder builder;
  Layer layer = shapeLayer("glow");
  core::EffectInstance spreading = blur(2);
  spreading.parameters["spread"] = core::AnimatedProperty::bool_(true);
  layer.effects = {spreading};
  const auto scene = builder.scene(planOf({layer}), secs(1));
  ASSERT_TRUE(scene);
  ASSERT_EQ(scene->sprites.size(), 1u);
  // The blur spreads past the 20 × 10 box on every side.
  EXPECT_LT(scene->sprites[0].imageOrigin.x, 0);
  EXPECT_LT(scene->sprites[0].imageOrigin.y, 0);
  EXPECT_GT(scene->sprites[0].image.extent().width, 20);
}

TEST(StageSceneTest, FootageMotionBlurAndActiveAdjustmentsNeedARenderedFrame) {
  const Layer box = shapeLayer("box");
  RenderPlan plan = planOf({box});
  EXPECT_TRUE(StageSceneBuilder::canRepresent(plan.composition, plan, secs(1)));

  RenderPlan footage = plan;
  footage.videoTrackIDs[core::Uuid::make()] = 1;
  EXPECT_FALSE(StageSceneBuilder::canRepresent(footage.composition, footage, secs(1)));

  RenderPlan blurred = plan;
  blurred.composition.motionBlurEnabled = true;
  blurred.composition.motionBlurShutterAngle = 180;
  EXPECT_FALSE(StageSceneBuilder::canRepresent(blurred.composition, blurred, secs(1)));
  blurred.composition.motionBlurShutterAngle = 1;
  EXPECT_TRUE(StageSceneBuilder::canRepresent(blurred.composition, blurred, secs(1)));

  Layer adjustment("adjust", LayerContent::adjustment({100, 100}), OVTimeRange(secs(2), secs(1)));
  RenderPlan adjusted = planOf({adjustment, box});
  EXPECT_TRUE(StageSceneBuilder::canRepresent(adjusted.composition, adjusted, secs(1)));
  EXPECT_FALSE(StageSceneBuilder::canRepresent(adjusted.composition, adjusted, secs(2)));
  StageSceneBuilder builder;
  EXPECT_FALSE(builder.scene(adjusted, secs(2)));
}

TEST(StageSceneTest, SpritesCarryTheStageNamesOfBlendFilters) {
  EXPECT_EQ(stageFilterName("CIMultiplyBlendMode"), "multiplyBlendMode");
  EXPECT_EQ(stageFilterName(core::blendFilterName(core::OVBlendMode::add)), "additionCompositing");
  EXPECT_EQ(stageFilterName(core::blendFilterName(core::OVBlendMode::normal)), std::nullopt);

  StageSceneBuilder builder;
  Layer layer = shapeLayer("screen");
  layer.blendMode = core::OVBlendMode::screen;
  const auto scene = builder.scene(planOf({layer}), secs(1));
  ASSERT_TRUE(scene);
  EXPECT_EQ(scene->sprites[0].compositingFilter, "screenBlendMode");
  EXPECT_EQ(scene->backgroundColor, core::OVColor::black);
}

TEST(StageSceneTest, TheUserCanTurnTheSceneOff) {
  core::MemorySettingsStore settings;
  EXPECT_TRUE(StageSceneBuilder::isEnabled(settings));
  settings.setValue(StageSceneBuilder::preferenceKey, false);
  EXPECT_FALSE(StageSceneBuilder::isEnabled(settings));
  settings.setValue(StageSceneBuilder::preferenceKey, true);
  EXPECT_TRUE(StageSceneBuilder::isEnabled(settings));
  // A value of another type is not a choice the user made.
  settings.setValue(StageSceneBuilder::preferenceKey, std::string("no"));
  EXPECT_TRUE(StageSceneBuilder::isEnabled(settings));
}

TEST(StageSceneTest, LayersThatLeaveTheSceneLeaveTheCache) {
  StageSceneBuilder builder;
  const Layer a = shapeLayer("a");
  const Layer b = shapeLayer("b");
  RenderPlan plan = planOf({a, b});
  ASSERT_TRUE(builder.scene(plan, secs(1)));
  plan.composition.layers = {a};
  ASSERT_TRUE(builder.scene(plan, secs(1)));
  plan.composition.layers = {a, b};
  ASSERT_TRUE(builder.scene(plan, secs(1)));
  EXPECT_EQ(builder.rasterisedCount(), 3u);  // b was dropped and drawn again
}

}  // namespace
}  // namespace orvane::render
