// The parts of a layer: content, transform (checked by mapping concrete
// points), crop, masks, effects, audio and style.

#include "core/layer_parts.hpp"

#include <gtest/gtest.h>

#include "tests/core/test_support.hpp"

#include <cmath>
#include <functional>
#include <optional>
#include <utility>

#include "core/layer_content.hpp"
#include "core/layer_style.hpp"

namespace orvane::core {
namespace {

using testing_support::expectHashSees;
using testing_support::secs;

using Channel = LayerTransform::Channel;
using Edge = LayerCrop::Edge;

TEST(LayerContentTest, EachKindCarriesItsIdsCapabilitiesAndSize) {
  const Uuid id = Uuid::make();
  TextContent boxed;
  boxed.boxSize = OVSize{300, 120};
  using K = LayerKind;
  struct Case {
    LayerContent content;
    LayerKind kind;
    bool footage, nested, visual, audio;
    std::optional<OVSize> intrinsicSize;
  };
  const Case cases[] = {
      {LayerContent::video(id), K::video, true, false, true, true, std::nullopt},
      {LayerContent::audio(id), K::audio, true, false, false, true, std::nullopt},
      {LayerContent::image(id), K::image, true, false, true, false, std::nullopt},
      {LayerContent::text({}), K::text, false, false, true, false, std::nullopt},
      {LayerContent::text(boxed), K::text, false, false, true, false, OVSize{300, 120}},
      {LayerContent::shape({}), K::shape, false, false, true, false, OVSize{400, 400}},
      {LayerContent::solid({OVColor::red_, {64, 32}}), K::solid, false, false, true, false, OVSize{64, 32}},
      {LayerContent::adjustment({1280, 720}), K::adjustment, false, false, true, false, OVSize{1280, 720}},
      {LayerContent::precomposition(id), K::precomposition, false, true, true, true, std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(rawValue(c.kind));
    EXPECT_EQ(c.content.kind(), c.kind);
    EXPECT_EQ(c.content.assetID(), c.footage ? std::optional(id) : std::nullopt);
    EXPECT_EQ(c.content.compositionID(), c.nested ? std::optional(id) : std::nullopt);
    EXPECT_EQ(c.content.isVisual(), c.visual);
    EXPECT_EQ(c.content.canProduceAudio(), c.audio);
    EXPECT_EQ(c.content.intrinsicSize(), c.intrinsicSize);
    EXPECT_EQ(c.content.textContent() != nullptr, c.kind == K::text);
    EXPECT_EQ(c.content.shapeContent() != nullptr, c.kind == K::shape);
    EXPECT_EQ(c.content.solidContent() != nullptr, c.kind == K::solid);
    EXPECT_EQ(c.content.adjustmentSize(), c.kind == K::adjustment ? c.intrinsicSize : std::nullopt);
  }
  EXPECT_EQ(LayerContent{}.kind(), LayerKind::adjustment);
  EXPECT_EQ(LayerContent{}.adjustmentSize(), OVSize::zero);
}

TEST(LayerContentTest, TextDecorationsShowOnlyWhenVisible) {
  TextContent text;
  EXPECT_FALSE(text.hasBackground());
  EXPECT_FALSE(text.hasStroke());
  text.strokeWidth = 2;
  EXPECT_TRUE(text.hasStroke());
  text.strokeColor = OVColor::black.withAlpha(0);
  EXPECT_FALSE(text.hasStroke());
  text.backgroundColor = OVColor::white.withAlpha(0.1);
  EXPECT_TRUE(text.hasBackground());
}

TEST(LayerPartsTest, HashesSeeEveryKindOfField) {
  const Uuid id = Uuid::make();
  expectHashSees<LayerContent>(LayerContent::video(id), [&](LayerContent& c) { c = LayerContent::image(id); });
  expectHashSees<TextContent>({}, [](TextContent& t) { t.alignment = TextContent::Alignment::right; });
  expectHashSees<TextContent>({}, [](TextContent& t) { t.boxSize = OVSize{10, 10}; });
  expectHashSees<ShapeContent>({}, [](ShapeContent& s) { s.type = ShapeContent::ShapeType::star; });
  expectHashSees<ShapeContent>({}, [](ShapeContent& s) { s.sideCount = 6; });
  expectHashSees<LayerTransform>({}, [](LayerTransform& t) { t.flipVertically = true; });
  expectHashSees<LayerMask>({}, [](LayerMask& m) { m.inverted = true; });
  expectHashSees<EffectInstance>({.effectID = "blur", .parameters = {{"radius", AnimatedProperty::double_(4)}}},
                                 [](EffectInstance& e) { e.parameters["radius"] = AnimatedProperty::double_(5); });
  expectHashSees<AudioProperties>({}, [](AudioProperties& a) { a.isMuted = true; });
  expectHashSees<AudioProperties>({}, [](AudioProperties& a) { a.normalizeGain = 1.5; });
  expectHashSees<AudioProperties>({}, [](AudioProperties& a) { a.pitchMode = AudioPitchMode::linked; });
}

LayerTransform placed(OVPoint position, double rotation = 0, OVPoint scale = {100, 100}, OVPoint anchor = {0, 0},
                      double skew = 0, bool flipH = false, bool flipV = false) {
  LayerTransform t;
  t.position = AnimatedProperty::point(position.x, position.y);
  t.rotation = AnimatedProperty::double_(rotation);
  t.scale = AnimatedProperty::point(scale.x, scale.y);
  t.anchorPoint = AnimatedProperty::point(anchor.x, anchor.y);
  t.skew = AnimatedProperty::double_(skew);
  t.flipHorizontally = flipH;
  t.flipVertically = flipV;
  return t;
}

void expectPoint(const OVPoint& actual, double x, double y, double tolerance = 1e-9) {
  EXPECT_NEAR(actual.x, x, tolerance);
  EXPECT_NEAR(actual.y, y, tolerance);
}

TEST(LayerTransformTest, PlacementMapsPointsOfA100By40Layer) {
  const OVPoint centre{0.5, 0.5};
  const struct { const char* what; LayerTransform t; OVPoint in, out; } cases[] = {
      {"default: the layer centre lands on the origin", LayerTransform{}, {50, 20}, {0, 0}},
      {"translation", placed({100, 50}), {10, 20}, {110, 70}},
      {"anchor offset", placed({300, 200}, 0, {100, 100}, centre), {0, 0}, {250, 180}},
      {"a corner anchor lands on the position", placed({300, 200}, 0, {100, 100}, {1, 0}), {100, 0}, {300, 200}},
      {"rotation turns x towards y", placed({100, 100}, 90), {10, 0}, {100, 110}},
      {"rotation about the anchor", placed({300, 200}, 90, {100, 100}, centre), {100, 20}, {300, 250}},
      {"scale, then rotation", placed({0, 0}, 90, {200, 50}), {10, 10}, {-5, 20}},
      {"skew shears x by y after scale", placed({0, 0}, 0, {200, 100}, {0, 0}, 45), {10, 10}, {30, 10}},
      {"skew, then rotation", placed({5, 5}, 90, {200, 100}, {0, 0}, 45), {0, 10}, {-5, 15}},
      {"horizontal flip keeps the anchor", placed({300, 200}, 0, {100, 100}, centre, 0, true), {50, 20}, {300, 200}},
      {"horizontal flip", placed({300, 200}, 0, {100, 100}, centre, 0, true), {0, 0}, {350, 180}},
      {"vertical flip", placed({300, 200}, 0, {100, 100}, centre, 0, false, true), {0, 0}, {250, 220}},
      {"both flips with scale", placed({0, 0}, 0, {50, 200}, {0, 0}, 0, true, true), {10, 10}, {-5, -20}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    expectPoint(c.t.affineTransformAt(secs(0), {100, 40}).apply(c.in), c.out.x, c.out.y);
  }
}

TEST(LayerTransformTest, PivotCarriesNoAnchorOffset) {
  EXPECT_EQ(LayerTransform{}.pivotTransformAt(secs(3)), Affine2D::identity());
  const LayerTransform centred = placed({40, 30}, 30, {150, 80}, {0.5, 0.5});
  const LayerTransform corner = placed({40, 30}, 30, {150, 80}, {0, 1});
  EXPECT_EQ(centred.pivotTransformAt(secs(0)), corner.pivotTransformAt(secs(0)));
  expectPoint(centred.pivotTransformAt(secs(0)).apply({0, 0}), 40, 30);
  // A half turn without skew is a plain rotation, free of shear residue.
  const Affine2D half = placed({0, 0}, 180).pivotTransformAt(secs(0));
  expectPoint(half.apply({1, 0}), -1, 0, 1e-12);
  expectPoint(half.apply({0, 1}), 0, -1, 1e-12);
}

TEST(LayerTransformTest, RightAngleSkewGivesAHugeFiniteShear) {
  const Affine2D m = placed({0, 0}, 0, {100, 100}, {0, 0}, 90).pivotTransformAt(secs(0));
  EXPECT_TRUE(std::isfinite(m.c));
  EXPECT_GT(std::abs(m.c), 1e15);
  const OVPoint p = m.apply({0, 1});
  EXPECT_TRUE(std::isfinite(p.x));
  EXPECT_DOUBLE_EQ(p.y, 1);
}

TEST(LayerTransformTest, CenteredInPutsOnlyThePositionAtTheMiddle) {
  const LayerTransform t = LayerTransform::centeredIn({1920, 1080});
  EXPECT_EQ(t.position.pointValueAt(secs(0)), (OVPoint{960, 540}));
  LayerTransform expected;
  expected.position = t.position;
  EXPECT_EQ(t, expected);
}

TEST(LayerTransformTest, ResolvedEvaluatesKeyframesAndFallsBackForWrongKinds) {
  LayerTransform t;
  t.opacity.upsertKeyframe(PropertyValue::double_(0), secs(0));
  t.opacity.upsertKeyframe(PropertyValue::double_(100), secs(2));
  t.position.upsertKeyframe(PropertyValue::point(0, 0), secs(0));
  t.position.upsertKeyframe(PropertyValue::point(200, 100), secs(2));
  t.rotation.upsertKeyframe(PropertyValue::double_(90), secs(1));
  t.flipVertically = true;
  const LayerTransform::Resolved r = t.resolvedAt(secs(1));
  EXPECT_DOUBLE_EQ(r.opacity, 50);
  expectPoint(r.position, 100, 50);
  EXPECT_EQ(r.rotationDegrees, 90);
  EXPECT_EQ(r.scale, (OVPoint{100, 100}));
  EXPECT_TRUE(r.flipVertically);
  EXPECT_FALSE(r.flipHorizontally);
  expectPoint(t.pivotTransformAt(secs(2)).apply({0, 0}), 200, 100);

  LayerTransform wrong;
  wrong.position.baseValue = PropertyValue::double_(7);
  wrong.scale.baseValue = PropertyValue::text("big");
  wrong.rotation.baseValue = PropertyValue::point(1, 1);
  wrong.anchorPoint.baseValue = PropertyValue::double_(1);
  wrong.opacity.baseValue = PropertyValue::size(1, 1);
  wrong.skew.baseValue = PropertyValue::choice("x");
  EXPECT_EQ(wrong.resolvedAt(secs(0)), LayerTransform::Resolved{});
}

TEST(LayerTransformTest, ChannelsReachTheirPropertyAndAnyKeyframedOneAnimates) {
  LayerTransform t;
  const std::pair<Channel, AnimatedProperty*> channels[] = {
      {Channel::position, &t.position},       {Channel::scale, &t.scale},     {Channel::rotation, &t.rotation},
      {Channel::anchorPoint, &t.anchorPoint}, {Channel::opacity, &t.opacity}, {Channel::skew, &t.skew}};
  for (const auto& [channel, property] : channels) {
    EXPECT_EQ(&t[channel], property) << rawValue(channel);
    EXPECT_EQ(&std::as_const(t)[channel], property) << rawValue(channel);
    LayerTransform keyed;
    keyed[channel].addKeyframeAt(secs(1));
    EXPECT_TRUE(keyed.isAnimated()) << rawValue(channel);
  }
  t.flipHorizontally = true;
  EXPECT_FALSE(t.isAnimated());
}

TEST(LayerCropTest, EdgesReachTheirPropertyAndCutPastHalfAUnit) {
  LayerCrop crop;
  const std::pair<Edge, AnimatedProperty*> edges[] = {
      {Edge::left, &crop.left}, {Edge::top, &crop.top}, {Edge::right, &crop.right}, {Edge::bottom, &crop.bottom}};
  EXPECT_FALSE(LayerCrop::zero.isActiveAt(secs(0)));
  for (const auto& [edge, property] : edges) {
    EXPECT_EQ(&crop[edge], property) << rawValue(edge);
    EXPECT_EQ(&std::as_const(crop)[edge], property) << rawValue(edge);
    LayerCrop cut;
    cut[edge] = AnimatedProperty::double_(0.5);
    EXPECT_FALSE(cut.isActiveAt(secs(0))) << rawValue(edge);
    cut[edge] = AnimatedProperty::double_(0.6);
    EXPECT_TRUE(cut.isActiveAt(secs(0))) << rawValue(edge);
    EXPECT_NE(cut, LayerCrop::zero);
  }
  LayerCrop negative;
  negative.right = AnimatedProperty::double_(-5);
  EXPECT_FALSE(negative.isActiveAt(secs(0)));
  LayerCrop animated;
  animated.left.upsertKeyframe(PropertyValue::double_(0), secs(0));
  animated.left.upsertKeyframe(PropertyValue::double_(10), secs(2));
  EXPECT_FALSE(animated.isActiveAt(secs(0)));
  EXPECT_TRUE(animated.isActiveAt(secs(1)));
}

TEST(LayerCropTest, SourceRectKeepsWhatTheEdgesLeaveMeasuringTopFromTheUpperEdge) {
  const OVSize size{100, 50};
  LayerCrop crop;
  crop.left = AnimatedProperty::double_(10);
  crop.top = AnimatedProperty::double_(5);
  crop.right = AnimatedProperty::double_(20);
  crop.bottom = AnimatedProperty::double_(15);
  EXPECT_EQ(crop.sourceRectAt(secs(0), size), (OVRect{10, 15, 70, 30}));

  // Negative edges count as 0.
  LayerCrop negative;
  negative.top = AnimatedProperty::double_(-8);
  EXPECT_EQ(negative.sourceRectAt(secs(0), size), (OVRect{0, 0, 100, 50}));

  // Edges that pass each other leave a strip of one unit at the left / bottom
  // of what was asked; a left edge past the layer puts it outside.
  LayerCrop crossed;
  crossed.left = AnimatedProperty::double_(150);
  crossed.top = AnimatedProperty::double_(40);
  crossed.bottom = AnimatedProperty::double_(40);
  EXPECT_EQ(crossed.sourceRectAt(secs(0), size), (OVRect{150, 9, 1, 1}));
}

TEST(LayerMaskTest, PathValueIsThePathOrAnEmptyClosedOne) {
  LayerMask mask;
  EXPECT_EQ(mask.pathValueAt(secs(1)), MaskPath{});
  EXPECT_EQ(mask.featherValueAt(secs(1)), 0);
  EXPECT_NE(LayerMask{}.id, mask.id);

  MaskPath open;
  open.closed = false;
  open.vertices = {MaskVertex{.point = {1, 2}}, MaskVertex{.point = {3, 4}}};
  mask.path = AnimatedProperty(PropertyValue::maskPath(open));
  EXPECT_EQ(mask.pathValueAt(secs(0)), open);
  mask.path = AnimatedProperty::double_(3);
  const MaskPath fallback = mask.pathValueAt(secs(0));
  EXPECT_TRUE(fallback.closed);
  EXPECT_TRUE(fallback.vertices.empty());
}

TEST(AudioPropertiesTest, PitchRatioCombinesSemitonesAndCents) {
  const std::pair<AudioProperties, double> cases[] = {
      {{}, 1}, {{.pitchSemitones = 12}, 2}, {{.pitchSemitones = -12}, 0.5},
      {{.pitchSemitones = 6, .pitchCents = 100}, std::pow(2.0, 7.0 / 12)}};  // 100 cents are one semitone
  for (const auto& [audio, ratio] : cases) EXPECT_DOUBLE_EQ(audio.pitchRatio(), ratio) << audio.pitchSemitones;
}

TEST(AudioPropertiesTest, PitchShiftAndProcessingTapNeedMoreThanTinyAmounts) {
  const struct { AudioProperties audio; bool pitchShift, tap; } cases[] = {
      {{}, false, false},
      {{.pitchSemitones = 0.01}, false, false},
      {{.pitchSemitones = -0.02}, true, true},
      {{.pitchCents = 0.5}, false, false},
      {{.pitchCents = -0.6}, true, true},
      {{.pitchSemitones = 3}, true, true},
      {{.echoMix = 0.5, .reverbMix = 0.5}, false, false},
      {{.echoMix = 0.6, .reverbMix = 0.5}, false, true},
      {{.reverbMix = 20}, false, true},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(cases[i].audio.hasPitchShift(), cases[i].pitchShift) << "case " << i;
    EXPECT_EQ(cases[i].audio.needsProcessingTap(), cases[i].tap) << "case " << i;
  }
}

TEST(LayerPartsTest, AnimatedWhenAnyPropertyHasKeyframes) {
  for (AnimatedProperty AudioProperties::*property : {&AudioProperties::volume, &AudioProperties::pan}) {
    AudioProperties audio;
    EXPECT_FALSE(audio.isAnimated());
    (audio.*property).addKeyframeAt(secs(1));
    EXPECT_TRUE(audio.isAnimated());
  }
  EffectInstance effect{.effectID = "blur"};
  EXPECT_FALSE(effect.isAnimated());
  effect.parameters["radius"] = AnimatedProperty::double_(4);
  effect.parameters["angle"] = AnimatedProperty::double_(0);
  EXPECT_FALSE(effect.isAnimated());
  effect.parameters["angle"].addKeyframeAt(secs(1));
  EXPECT_TRUE(effect.isAnimated());
}

}  // namespace
}  // namespace orvane::core
