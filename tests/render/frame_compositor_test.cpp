// The frame compositor on compositions of footage layers whose frames the
// tests hand in, so that every pixel's expected value is known exactly.

#include "render/frame_compositor.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/render/render_test_support.hpp"

namespace orvane::render {
namespace {

using core::Composition;
using core::Layer;
using core::LayerContent;
using core::OVTime;
using core::OVTimeRange;
using testing_support::expectPixelNear;
using testing_support::solid;

constexpr Rgba kRed{1, 0, 0, 1};
constexpr Rgba kGreen{0, 1, 0, 1};
constexpr Rgba kBlack{0, 0, 0, 1};

OVTime secs(double s) { return OVTime::fromSeconds(s); }

Composition composition(double width, double height) {
  Composition c;
  c.name = "Test";
  c.size = {width, height};
  c.backgroundColor = core::OVColor::black;
  c.duration = secs(10);
  return c;
}

// Builds a plan whose layers are footage: each layer shows a frame of one
// colour (or one given picture) on a track of its own.
struct Footage {
  RenderPlan plan;
  SourceFrames frames;
  std::int32_t nextTrack = 1;

  explicit Footage(Composition c) { plan.composition = std::move(c); }

  Layer layer(const Image& frame, const std::string& name = "clip") {
    Layer l(name, LayerContent::video(core::Uuid::make()), OVTimeRange(OVTime::zero, secs(10)));
    l.transform = core::LayerTransform::centeredIn(plan.composition.size);
    plan.videoTrackIDs[l.id] = nextTrack;
    frames[nextTrack++] = frame;
    return l;
  }
  Layer layer(int width, int height, Rgba colour) { return layer(solid({0, 0, width, height}, colour)); }

  Image compose(const OVTime& t = OVTime::zero) const { return FrameCompositor::composeFrame(plan, t, frames); }
};

TEST(FrameCompositorTest, EmptyCompositionShowsItsBackgroundOrNothing) {
  Composition c = composition(4, 3);
  c.backgroundColor = {0.2, 0.4, 0.6, 1};
  const Image opaque = Footage(c).compose();
  EXPECT_EQ(opaque.extent(), (PixelRect{0, 0, 4, 3}));
  expectPixelNear(opaque.pixelAt(3, 2), {0.2f, 0.4f, 0.6f, 1}, 1e-6f);

  c.isTransparent = true;
  const Image clear = Footage(c).compose();
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 4; ++x) EXPECT_EQ(clear.pixelAt(x, y), Rgba{}) << x << "," << y;
}

TEST(FrameCompositorTest, TheFirstLayerOfTheListIsPaintedOnTop) {
  Footage f(composition(8, 8));
  const Layer small = f.layer(4, 4, kGreen);
  const Layer large = f.layer(8, 8, kRed);
  f.plan.composition.layers = {small, large};
  Image image = f.compose();
  EXPECT_EQ(image.pixelAt(4, 4), kGreen);
  EXPECT_EQ(image.pixelAt(0, 0), kRed);

  f.plan.composition.layers = {large, small};
  image = f.compose();
  EXPECT_EQ(image.pixelAt(4, 4), kRed);
}

TEST(FrameCompositorTest, ALayerIsDrawnFromItsStartUpToButNotAtItsEnd) {
  Footage f(composition(2, 2));
  Layer early = f.layer(2, 2, kRed);
  early.timeRange = OVTimeRange(OVTime::zero, secs(5));
  Layer late = f.layer(2, 2, kGreen);
  late.timeRange = OVTimeRange(secs(5), secs(5));
  f.plan.composition.layers = {early, late};
  EXPECT_EQ(f.compose(secs(4.9)).pixelAt(0, 0), kRed);
  EXPECT_EQ(f.compose(secs(5)).pixelAt(0, 0), kGreen);

  // Disabled and audio layers are not drawn at all.
  f.plan.composition.layers = {early};
  f.plan.composition.update(early.id, [](Layer& l) { l.isEnabled = false; });
  EXPECT_EQ(f.compose(secs(1)).pixelAt(0, 0), kBlack);
}

TEST(FrameCompositorTest, OpacityFadesTheLayerUnlessItIsAllButOpaque) {
  Footage f(composition(2, 2));
  Layer layer = f.layer(2, 2, kRed);
  const auto drawnAt = [&](double opacity) {
    layer.transform.opacity = core::AnimatedProperty::double_(opacity);
    f.plan.composition.layers = {layer};
    return f.compose().pixelAt(1, 1);
  };
  expectPixelNear(drawnAt(50), {0.5f, 0, 0, 1}, 1e-6f);
  expectPixelNear(drawnAt(99.8), {0.998f, 0, 0, 1}, 1e-6f);
  EXPECT_EQ(drawnAt(99.95), kRed);  // 0.9995: no fade at all
  EXPECT_EQ(drawnAt(0), kBlack);
}

TEST(FrameCompositorTest, OpacityAndFadesCascadeFromParents) {
  Composition c = composition(2, 2);
  Layer grandparent("g", LayerContent::solid({}), OVTimeRange(OVTime::zero, secs(10)));
  Layer parent("p", LayerContent::solid({}), OVTimeRange(OVTime::zero, secs(10)));
  Layer child("c", LayerContent::solid({}), OVTimeRange(OVTime::zero, secs(10)));
  grandparent.transform.opacity = core::AnimatedProperty::double_(50);
  parent.transform.opacity = core::AnimatedProperty::double_(50);
  parent.parentLayerID = grandparent.id;
  child.parentLayerID = parent.id;
  c.layers = {child, parent, grandparent};
  EXPECT_DOUBLE_EQ(FrameCompositor::effectiveOpacity(child, c, secs(1)), 0.25);

  // The grandparent fading in over 2 s is at half way at 1 s.
  c.update(grandparent.id, [](Layer& l) { l.fadeIn = secs(2); });
  EXPECT_DOUBLE_EQ(FrameCompositor::effectiveOpacity(child, c, secs(1)), 0.125);
  // Outside its own range a layer's fade multiplier is 0.
  EXPECT_DOUBLE_EQ(FrameCompositor::effectiveOpacity(child, c, secs(11)), 0);
}

TEST(FrameCompositorTest, PlacementFollowsParentsThenTheOutputScale) {
  Composition c = composition(100, 100);
  Layer parent("p", LayerContent::solid({}), OVTimeRange(OVTime::zero, secs(10)));
  parent.transform.position = core::AnimatedProperty::point(10, 20);
  Layer child("c", LayerContent::solid({}), OVTimeRange(OVTime::zero, secs(10)));
  child.transform.position = core::AnimatedProperty::point(5, 5);
  child.transform.anchorPoint = core::AnimatedProperty::point(0, 0);
  child.parentLayerID = parent.id;
  c.layers = {child, parent};
  const core::Affine2D m = FrameCompositor::placementTransform(child, c, OVTime::zero, {4, 4}, 0.5);
  const core::OVPoint origin = m.apply({0, 0});
  EXPECT_DOUBLE_EQ(origin.x, (10 + 5) * 0.5);
  EXPECT_DOUBLE_EQ(origin.y, (20 + 5) * 0.5);
  const core::OVPoint corner = m.apply({4, 4});
  EXPECT_DOUBLE_EQ(corner.x - origin.x, 2);
}

TEST(FrameCompositorTest, RenderSizeRoundsHalvesAwayAndNeverGoesBelowTwo) {
  RenderPlan plan;
  plan.composition.size = {1919.5, 1080};
  EXPECT_EQ(plan.renderSize(), (PixelSize{1920, 1080}));
  plan.composition.size = {1282, 720};
  plan.renderScale = 0.5;
  EXPECT_EQ(plan.renderSize(), (PixelSize{641, 360}));
  plan.composition.size = {3, 3};
  plan.renderScale = 0.25;
  EXPECT_EQ(plan.renderSize(), (PixelSize{2, 2}));
  plan.composition.size = {0, std::nan("")};
  EXPECT_EQ(plan.renderSize(), (PixelSize{2, 2}));
}

TEST(FrameCompositorTest, HalfScaleRendersAQuarterOfThePixelsWithTheSameLayout) {
  Footage f(composition(8, 8));
  f.plan.composition.layers = {f.layer(4, 4, kGreen)};
  f.plan.renderScale = 0.5;
  const Image image = f.compose();
  EXPECT_EQ(image.extent(), (PixelRect{0, 0, 4, 4}));
  EXPECT_EQ(image.pixelAt(2, 2), kGreen);
  EXPECT_EQ(image.pixelAt(0, 0), kBlack);
}

TEST(FrameCompositorTest, FootageIsTurnedUprightByItsTrackGeometry) {
  // A 4 × 2 frame, red on its left half, shown rotated a quarter turn.
  const Image frame = testing_support::makeImage({0, 0, 4, 2}, [](int x, int) { return x < 2 ? kRed : kGreen; });
  FootageGeometry geometry{{4, 2}, core::Affine2D::makeRotation(M_PI / 2)};
  EXPECT_NEAR(geometry.displaySize().width, 2, 1e-9);
  EXPECT_NEAR(geometry.displaySize().height, 4, 1e-9);
  const core::OVPoint moved = geometry.uprightTransform().apply({0, 0});
  EXPECT_NEAR(moved.x, 2, 1e-9);
  EXPECT_NEAR(moved.y, 0, 1e-9);

  Footage f(composition(2, 4));
  const Layer clip = f.layer(frame);
  f.plan.footageGeometry[clip.id] = geometry;
  f.plan.composition.layers = {clip};
  const Image image = f.compose();
  expectPixelNear(image.pixelAt(1, 0), kRed, 1e-5f);
  expectPixelNear(image.pixelAt(0, 3), kGreen, 1e-5f);
}

TEST(FrameCompositorTest, AMissingFrameLeavesTheLayerOutForThatFrame) {
  Footage f(composition(2, 2));
  const Layer clip = f.layer(2, 2, kRed);
  f.plan.composition.layers = {clip};
  f.frames.clear();
  EXPECT_EQ(f.compose().pixelAt(0, 0), kBlack);
}

TEST(FrameCompositorTest, CropRemovesPixelsWithoutMovingTheRest) {
  Footage f(composition(10, 10));
  Layer clip = f.layer(10, 10, kRed);
  clip.crop.left = core::AnimatedProperty::double_(3);
  clip.crop.top = core::AnimatedProperty::double_(2);
  f.plan.composition.layers = {clip};
  const Image image = f.compose();
  EXPECT_EQ(image.pixelAt(2, 5), kBlack);
  EXPECT_EQ(image.pixelAt(3, 5), kRed);
  EXPECT_EQ(image.pixelAt(5, 7), kRed);
  EXPECT_EQ(image.pixelAt(5, 8), kBlack);  // the top two rows are cut

  // Half a unit on every edge is no crop at all.
  for (auto edge : core::allCases<core::LayerCrop::Edge>()) clip.crop[edge] = core::AnimatedProperty::double_(0.5);
  f.plan.composition.layers = {clip};
  EXPECT_EQ(f.compose().pixelAt(0, 9), kRed);
}

TEST(FrameCompositorTest, SoloShowsOnlySoloedLayersAndSilencesAdjustments) {
  Footage f(composition(4, 4));
  Layer soloed = f.layer(2, 2, kGreen);
  soloed.isSolo = true;
  const Layer other = f.layer(4, 4, kRed);
  Layer adjustment("adjust", LayerContent::adjustment({4, 4}), OVTimeRange(OVTime::zero, secs(10)));
  adjustment.transform = core::LayerTransform::centeredIn({4, 4});
  core::EffectInstance exposure = core::EffectCatalog::descriptorFor("color.exposure")->makeInstance();
  exposure.parameters["ev"] = core::AnimatedProperty::double_(-1);
  adjustment.effects = {exposure};
  f.plan.composition.layers = {adjustment, soloed, other};
  const Image image = f.compose();
  EXPECT_EQ(image.pixelAt(2, 2), kGreen);  // no exposure change: the adjustment is not soloed
  EXPECT_EQ(image.pixelAt(0, 0), kBlack);  // the unsoloed red layer is hidden
}

TEST(FrameCompositorTest, AnAdjustmentLayerFiltersTheBoundingBoxOfItsPlacedRectangle) {
  Composition c = composition(20, 20);
  c.backgroundColor = {0.25, 0.25, 0.25, 1};
  Layer adjustment("adjust", LayerContent::adjustment({10, 10}), OVTimeRange(OVTime::zero, secs(10)));
  adjustment.transform = core::LayerTransform::centeredIn({20, 20});
  adjustment.transform.rotation = core::AnimatedProperty::double_(45);
  core::EffectInstance exposure = core::EffectCatalog::descriptorFor("color.exposure")->makeInstance();
  exposure.parameters["ev"] = core::AnimatedProperty::double_(1);
  adjustment.effects = {exposure};
  c.layers = {adjustment};
  const Image image = Footage(c).compose();
  // The rotated square reaches 10 ± 7.07 on both axes; its corners stay
  // outside the square yet inside the box, and are brightened too.
  expectPixelNear(image.pixelAt(3, 3), {0.5f, 0.5f, 0.5f, 1}, 1e-5f);
  expectPixelNear(image.pixelAt(10, 10), {0.5f, 0.5f, 0.5f, 1}, 1e-5f);
  expectPixelNear(image.pixelAt(1, 1), {0.25f, 0.25f, 0.25f, 1}, 1e-6f);
  expectPixelNear(image.pixelAt(18, 10), {0.25f, 0.25f, 0.25f, 1}, 1e-6f);
}

TEST(FrameCompositorTest, AnAdjustmentWithoutWorkingEffectsLeavesThePictureAsItIs) {
  Layer adjustment("adjust", LayerContent::adjustment({4, 4}), OVTimeRange(OVTime::zero, secs(10)));
  const Image beneath = solid({0, 0, 4, 4}, {0.3f, 0.2f, 0.1f, 1});
  const EffectRenderContext context{{4, 4}, OVTime::zero, 1};
  const Image untouched = FrameCompositor::applyAdjustment(adjustment, beneath, context, {0, 0, 4, 4});
  EXPECT_TRUE(untouched.sharesStorageWith(beneath));

  core::EffectInstance off = core::EffectCatalog::descriptorFor("color.exposure")->makeInstance();
  off.parameters["ev"] = core::AnimatedProperty::double_(2);
  off.isEnabled = false;
  adjustment.effects = {off};
  const Image passed = FrameCompositor::applyAdjustment(adjustment, beneath, context, {0, 0, 4, 4});
  for (int y = 0; y < 4; ++y)
    for (int x = 0; x < 4; ++x) EXPECT_EQ(passed.pixelAt(x, y), beneath.pixelAt(x, y));
}

TEST(FrameCompositorTest, NestingStopsAfterEightLevels) {
  // A composition that holds itself: each level adds a faint red frame and
  // then, additively, the level inside it.
  Composition c = composition(2, 2);
  c.isTransparent = true;
  Footage f(c);
  const Layer faint = f.layer(2, 2, {0.05f, 0, 0, 0.05f});
  Layer self("self", LayerContent::precomposition(c.id), OVTimeRange(OVTime::zero, secs(10)));
  self.transform = core::LayerTransform::centeredIn({2, 2});
  self.blendMode = core::OVBlendMode::add;
  f.plan.composition.layers = {self, faint};
  f.plan.compositionsByID[c.id] = f.plan.composition;
  const Image image = f.compose();
  // The top level and eight nested ones; the ninth is absent.
  EXPECT_NEAR(image.pixelAt(0, 0).r, 9 * 0.05f, 1e-5f);
}

TEST(FrameCompositorTest, MotionBlurSamplesEightMomentsCentredOnTheFrame) {
  Composition c = composition(2, 2);
  c.frameRate = core::FrameRate::fps25;
  c.motionBlurEnabled = true;
  c.motionBlurShutterAngle = 360;
  const auto times = FrameCompositor::motionBlurSampleTimes(c, secs(1));
  const double offsets[] = {-0.0175, -0.0125, -0.0075, -0.0025, 0.0025, 0.0075, 0.0125, 0.0175};
  for (std::size_t i = 0; i < times.size(); ++i) EXPECT_NEAR(times[i].seconds(), 1 + offsets[i], 1e-9) << i;
  // Near the start the early samples clamp to 0 and keep their weight.
  const auto clamped = FrameCompositor::motionBlurSampleTimes(c, OVTime::zero);
  EXPECT_EQ(clamped[0], OVTime::zero);
  EXPECT_EQ(clamped[3], OVTime::zero);
  EXPECT_NEAR(clamped[7].seconds(), 0.0175, 1e-9);
}

TEST(FrameCompositorTest, MotionBlurAveragesTheSamplesAndAShutterOfOneDegreeIsSharp) {
  Composition c = composition(2, 2);
  c.frameRate = core::FrameRate::fps25;
  c.motionBlurEnabled = true;
  c.motionBlurShutterAngle = 360;
  Footage f(c);
  Layer clip = f.layer(2, 2, kRed);
  clip.timeRange = OVTimeRange(secs(1), secs(1));  // half the samples at 1 s see it
  f.plan.composition.layers = {clip};
  expectPixelNear(f.compose(secs(1)).pixelAt(0, 0), {0.5f, 0, 0, 1}, 1e-5f);

  f.plan.composition.motionBlurShutterAngle = 1;
  EXPECT_EQ(f.compose(secs(1)).pixelAt(0, 0), kRed);
}

TEST(FrameCompositorTest, ComposesIntoAnEightBitBufferOfTheRenderSize) {
  Footage f(composition(3, 2));
  f.plan.composition.layers = {f.layer(3, 2, kRed)};
  std::vector<std::uint8_t> bytes(3 * 2 * 4);
  ASSERT_TRUE(FrameCompositor::composeFrameInto(f.plan, OVTime::zero, f.frames, bytes, 12,
                                                {AlphaForm::straight, ChannelOrder::bgra}));
  EXPECT_EQ(bytes[0], 0);    // blue
  EXPECT_EQ(bytes[2], 255);  // red
  EXPECT_EQ(bytes[3], 255);  // alpha
  std::vector<std::uint8_t> tooSmall(8);
  EXPECT_FALSE(FrameCompositor::composeFrameInto(f.plan, OVTime::zero, f.frames, tooSmall, 12));
}

}  // namespace
}  // namespace orvane::render

namespace orvane::render {
namespace {

// Sizes and values from a damaged or hostile file: each layer is left out
// or drawn within bounds, and the frame still comes out.
TEST(FrameCompositorHostileInputTest, AbsurdSizesLeaveLayersOutRatherThanExhaustMemory) {
  Composition c = composition(64, 48);
  const OVTimeRange range(OVTime::zero, secs(10));
  Layer hugeSolid("solid", LayerContent::solid({{1, 0, 0, 1}, {1e12, 1e12}}), range);
  core::ShapeContent shape;
  shape.size = {1e9, 5};
  Layer hugeShape("shape", LayerContent::shape(shape), range);
  core::TextContent text;
  text.string = "Huge";
  text.fontSize = 1e7;
  Layer hugeText("text", LayerContent::text(text), range);
  Layer masked("masked", LayerContent::solid({{0, 1, 0, 1}, {1e8, 1e8}}), range);
  core::LayerMask mask;
  mask.path = core::AnimatedProperty(core::PropertyValue::maskPath(core::MaskPath::ellipseIn({1e8, 1e8})));
  mask.feather = core::AnimatedProperty::double_(50);
  masked.masks = {mask};
  Layer nanPlaced("nan", LayerContent::solid({{0, 0, 1, 1}, {10, 10}}), range);
  nanPlaced.transform.position = core::AnimatedProperty::point(std::nan(""), 5);
  nanPlaced.transform.scale = core::AnimatedProperty::point(1e300, -1e300);
  for (Layer* l : {&hugeSolid, &hugeShape, &hugeText, &masked}) {
    l->transform = core::LayerTransform::centeredIn(c.size);
  }
  c.layers = {nanPlaced, masked, hugeText, hugeShape, hugeSolid};
  RenderPlan plan;
  plan.composition = c;
  const Image image = FrameCompositor::composeFrame(plan, secs(1), {});
  EXPECT_EQ(image.extent(), (PixelRect{0, 0, 64, 48}));
  std::vector<std::uint8_t> bytes(64 * 48 * 4);
  EXPECT_TRUE(FrameCompositor::composeFrameInto(plan, secs(1), {}, bytes, 64 * 4));
}

TEST(FrameCompositorHostileInputTest, ACompositionOfNoSizeRendersTwoByTwo) {
  RenderPlan plan;
  plan.composition = composition(0, -5);
  const Image image = FrameCompositor::composeFrame(plan, OVTime::zero, {});
  EXPECT_EQ(image.extent(), (PixelRect{0, 0, 2, 2}));
}

}  // namespace
}  // namespace orvane::render

namespace orvane::render {
namespace {

// The 8-bit output draws in bands, the picture path draws whole: both must
// give the same frame, over many bands, with a backdrop solid, rotation, a
// strong downscale (a reduced level), fades and blend modes.
TEST(FrameCompositorBandsTest, BandedOutputEqualsThePicturePath) {
  Footage f(composition(64, 70));
  const Image detail = testing_support::makeImage({0, 0, 96, 80}, testing_support::positionColour);
  Layer backdrop("backdrop", LayerContent::solid({{0.1, 0.2, 0.3, 1}, {64, 70}}), OVTimeRange(OVTime::zero, secs(10)));
  backdrop.transform = core::LayerTransform::centeredIn({64, 70});
  Layer turned = f.layer(detail);
  turned.transform.rotation = core::AnimatedProperty::double_(20);
  turned.transform.opacity = core::AnimatedProperty::double_(70);
  Layer shrunk = f.layer(detail);
  shrunk.transform.scale = core::AnimatedProperty::point(20, 30);
  shrunk.blendMode = core::OVBlendMode::screen;
  Layer added = f.layer(18, 9, {0.2f, 0.1f, 0, 0.5f});
  added.blendMode = core::OVBlendMode::add;
  // Beneath the backdrop, hidden in both paths.
  const Layer hidden = f.layer(64, 70, kRed);
  f.plan.composition.layers = {added, shrunk, turned, backdrop, hidden};

  const Rgba8Format format{AlphaForm::straight, ChannelOrder::bgra};
  std::vector<std::uint8_t> banded(64 * 70 * 4);
  ASSERT_TRUE(FrameCompositor::composeFrameInto(f.plan, secs(1), f.frames, banded, 64 * 4, format));
  const auto whole = toRgba8(FrameCompositor::composeFrame(f.plan, secs(1), f.frames), {0, 0, 64, 70}, format);
  ASSERT_TRUE(whole);
  EXPECT_EQ(banded, *whole);
  // A corner only the backdrop reaches shows the backdrop (BGRA).
  EXPECT_EQ(banded[0], toByte(0.3f));
  EXPECT_EQ(banded[2], toByte(0.1f));
}

}  // namespace
}  // namespace orvane::render
