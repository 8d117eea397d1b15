// Layer queries, moves, trims and hashing.

#include "core/layer.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "core/project.hpp"

namespace orvane::core {
namespace {

OVTime secs(double s) { return OVTime::fromSeconds(s); }

Layer videoLayer(double start, double duration, double sourceStart = 0) {
  Layer layer("Clip", LayerContent::video(Uuid::make()), OVTimeRange(secs(start), secs(duration)));
  layer.sourceStart = secs(sourceStart);
  return layer;
}

Layer layerOfKind(LayerKind kind) {
  const OVTimeRange range(secs(0), secs(5));
  switch (kind) {
    case LayerKind::video: return Layer("V", LayerContent::video(Uuid::make()), range);
    case LayerKind::audio: return Layer("A", LayerContent::audio(Uuid::make()), range);
    case LayerKind::image: return Layer("I", LayerContent::image(Uuid::make()), range);
    case LayerKind::text: return Layer("T", LayerContent::text({}), range);
    case LayerKind::shape: return Layer("S", LayerContent::shape({}), range);
    case LayerKind::solid: return Layer("So", LayerContent::solid({OVColor::white, {10, 10}}), range);
    case LayerKind::adjustment: return Layer("Ad", LayerContent::adjustment({10, 10}), range);
    case LayerKind::precomposition: return Layer("P", LayerContent::precomposition(Uuid::make()), range);
  }
  return {};
}

// ------------------------------------------------------------------ queries

TEST(LayerTest, NewLayerTakesTheSuggestedLabelColourOfItsKind) {
  EXPECT_EQ(layerOfKind(LayerKind::video).labelColor, LayerLabelColor::blue);
  EXPECT_EQ(layerOfKind(LayerKind::audio).labelColor, LayerLabelColor::green);
  EXPECT_EQ(layerOfKind(LayerKind::text).labelColor, LayerLabelColor::yellow);
  EXPECT_EQ(layerOfKind(LayerKind::adjustment).labelColor, LayerLabelColor::red);
  const Layer plain;
  EXPECT_EQ(plain.labelColor, LayerLabelColor::none);
  EXPECT_TRUE(plain.isEnabled);
  EXPECT_TRUE(plain.usesSourceAudio);
  EXPECT_EQ(plain.textReveal.doubleValueAt(secs(0)), 100);
}

TEST(LayerTest, ContributesAudioFollowsKindMuteAndSourceAudio) {
  Layer video = layerOfKind(LayerKind::video);
  EXPECT_TRUE(video.contributesAudio());
  video.usesSourceAudio = false;
  EXPECT_FALSE(video.contributesAudio());

  Layer audio = layerOfKind(LayerKind::audio);
  audio.usesSourceAudio = false;  // only video layers listen to this switch
  EXPECT_TRUE(audio.contributesAudio());

  Layer nested = layerOfKind(LayerKind::precomposition);
  nested.usesSourceAudio = false;
  EXPECT_TRUE(nested.contributesAudio());

  for (LayerKind kind : {LayerKind::video, LayerKind::audio, LayerKind::precomposition}) {
    Layer muted = layerOfKind(kind);
    muted.audio.isMuted = true;
    EXPECT_FALSE(muted.contributesAudio()) << rawValue(kind);
  }
  for (LayerKind kind : {LayerKind::image, LayerKind::text, LayerKind::shape, LayerKind::solid,
                         LayerKind::adjustment}) {
    EXPECT_FALSE(layerOfKind(kind).contributesAudio()) << rawValue(kind);
  }
}

TEST(LayerTest, OnlyFootageAndNestedCompositionsAffectStructure) {
  for (LayerKind kind : allCases<LayerKind>()) {
    const bool expected = kind == LayerKind::video || kind == LayerKind::audio ||
                          kind == LayerKind::image || kind == LayerKind::precomposition;
    EXPECT_EQ(layerOfKind(kind).affectsCompositionStructure(), expected) << rawValue(kind);
  }
}

TEST(LayerTest, ActivityAndSourceTimeFollowTheTimeRange) {
  Layer layer = videoLayer(10, 5, 2);
  EXPECT_FALSE(layer.isActiveAt(secs(9.99)));
  EXPECT_TRUE(layer.isActiveAt(secs(10)));
  EXPECT_FALSE(layer.isActiveAt(secs(15)));
  EXPECT_EQ(layer.sourceTimeForComposition(secs(12.5)), secs(4.5));
  layer.isEnabled = false;
  EXPECT_FALSE(layer.isActiveAt(secs(12)));
}

TEST(LayerTest, DisplayNameOfANestedCompositionIsThatCompositionsName) {
  Composition inner;
  inner.name = "Titles";
  OVProject project("P", {inner});

  Layer nested("Precomp layer", LayerContent::precomposition(inner.id), OVTimeRange(secs(0), secs(1)));
  EXPECT_EQ(nested.displayNameIn(project), "Titles");

  Layer orphan("Lost", LayerContent::precomposition(Uuid::make()), OVTimeRange(secs(0), secs(1)));
  EXPECT_EQ(orphan.displayNameIn(project), "Lost");

  Layer footage = videoLayer(0, 1);
  footage.name = "Beach";
  EXPECT_EQ(footage.displayNameIn(project), "Beach");
}

// -------------------------------------------------------------------- moves

TEST(LayerTest, MoveByShiftsStartAndKeyframesButNotMarkers) {
  Layer layer = videoLayer(2, 4);
  layer.transform.opacity.upsertKeyframe(PropertyValue::double_(0), secs(3));
  layer.markers = {Marker{.time = secs(1), .name = "Beat"}};

  layer.moveBy(secs(1.5));
  EXPECT_EQ(layer.timeRange.start, secs(3.5));
  EXPECT_EQ(layer.timeRange.duration, secs(4));
  EXPECT_EQ(layer.transform.opacity.keyframes()[0].time, secs(4.5));
  EXPECT_EQ(layer.markers[0].time, secs(1));

  layer.moveTo(secs(1));
  EXPECT_EQ(layer.timeRange.start, secs(1));
  EXPECT_EQ(layer.transform.opacity.keyframes()[0].time, secs(2));
}

TEST(LayerTest, MoveStopsAtTheFloorAndKeyframesShiftOnlyByTheActualMove) {
  Layer layer = videoLayer(2, 4);
  layer.audio.volume.upsertKeyframe(PropertyValue::double_(50), secs(5));

  layer.moveBy(secs(-5));
  EXPECT_EQ(layer.timeRange.start, secs(0));
  EXPECT_EQ(layer.audio.volume.keyframes()[0].time, secs(3));

  layer.moveTo(secs(-3), secs(1));
  EXPECT_EQ(layer.timeRange.start, secs(1));
  EXPECT_EQ(layer.audio.volume.keyframes()[0].time, secs(4));
}

TEST(LayerTest, MoveAgainstTheFloorChangesNothing) {
  Layer layer = videoLayer(0, 4);
  layer.transform.rotation.upsertKeyframe(PropertyValue::double_(90), secs(1));
  const Layer before = layer;
  layer.moveBy(secs(-1));
  EXPECT_EQ(layer, before);
  layer.moveTo(secs(0.5), secs(3));  // the floor lies after the target
  EXPECT_EQ(layer.timeRange.start, secs(3));
  EXPECT_EQ(layer.transform.rotation.keyframes()[0].time, secs(4));
}

// -------------------------------------------------------------------- trims

TEST(LayerTest, TrimStartStopsAtTheHeadOfTheSource) {
  Layer layer = videoLayer(10, 5, 2);
  layer.trimStartTo(secs(7), secs(0.1));
  EXPECT_EQ(layer.timeRange.start, secs(8));
  EXPECT_EQ(layer.timeRange.duration, secs(7));
  EXPECT_EQ(layer.sourceStart, OVTime::zero);
  EXPECT_EQ(layer.sourceStart.value, 0);
}

TEST(LayerTest, TrimStartMovesTheSourceWithTheStart) {
  Layer layer = videoLayer(10, 5, 2);
  layer.trimStartTo(secs(12), secs(0.1));
  EXPECT_EQ(layer.timeRange.start, secs(12));
  EXPECT_EQ(layer.timeRange.duration, secs(3));
  EXPECT_EQ(layer.sourceStart, secs(4));
  EXPECT_EQ(layer.timeRange.end(), secs(15));
}

TEST(LayerTest, TrimStartKeepsTheMinimumDurationAndTimeZero) {
  Layer late = videoLayer(10, 5, 2);
  late.trimStartTo(secs(20), secs(1));
  EXPECT_EQ(late.timeRange.start, secs(14));
  EXPECT_EQ(late.timeRange.duration, secs(1));
  EXPECT_EQ(late.sourceStart, secs(6));

  Layer early = videoLayer(1, 5, 10);
  early.trimStartTo(secs(-5), secs(1));
  EXPECT_EQ(early.timeRange.start, secs(0));
  EXPECT_EQ(early.timeRange.duration, secs(6));
  EXPECT_EQ(early.sourceStart, secs(9));
}

TEST(LayerTest, TrimEndFollowsTheTargetDownToTheMinimumDuration) {
  Layer layer = videoLayer(10, 5);
  layer.trimEndTo(secs(17), secs(0.5));
  EXPECT_EQ(layer.timeRange.duration, secs(7));
  layer.trimEndTo(secs(11), secs(0.5));
  EXPECT_EQ(layer.timeRange.duration, secs(1));
  layer.trimEndTo(secs(5), secs(0.5));
  EXPECT_EQ(layer.timeRange.duration, secs(0.5));
  EXPECT_EQ(layer.timeRange.start, secs(10));
}

TEST(LayerTest, TrimEndStopsAtTheEndOfTheSource) {
  Layer layer = videoLayer(10, 2, 2);
  layer.trimEndTo(secs(20), secs(0.5), secs(6));
  EXPECT_EQ(layer.timeRange.duration, secs(4));  // source 2 s to 6 s

  layer.trimEndTo(secs(12), secs(0.5), secs(100));
  EXPECT_EQ(layer.timeRange.duration, secs(2));  // well inside the source

  layer.trimEndTo(secs(20), secs(0.5), secs(2.2));
  EXPECT_EQ(layer.timeRange.duration, secs(0.5));  // the minimum wins over the source
}

TEST(LayerTest, TrimsLeaveKeyframesOnTheCompositionClock) {
  Layer layer = videoLayer(10, 5, 2);
  layer.transform.position.upsertKeyframe(PropertyValue::point(1, 2), secs(11));
  layer.trimStartTo(secs(12), secs(0.1));
  layer.trimEndTo(secs(13), secs(0.1));
  EXPECT_EQ(layer.transform.position.keyframes()[0].time, secs(11));
}

TEST(LayerTest, TrimsShrinkFadesThatNoLongerFit) {
  Layer layer = videoLayer(10, 5, 2);
  layer.fadeIn = secs(2);
  layer.fadeOut = secs(2);
  layer.trimStartTo(secs(12), secs(0.1));  // 3 s left for 4 s of fades
  EXPECT_EQ(layer.fadeIn, secs(1.5));
  EXPECT_EQ(layer.fadeOut, secs(1.5));
  layer.trimEndTo(secs(13), secs(0.1));
  EXPECT_EQ(layer.fadeIn, secs(0.5));
  EXPECT_EQ(layer.fadeOut, secs(0.5));
}

// --------------------------------------------------------------------- hash

TEST(LayerTest, EqualLayersHashAlike) {
  Layer layer = videoLayer(1, 4, 0.5);
  layer.masks = {LayerMask{}};
  layer.effects = {EffectInstance{.effectID = "blur", .parameters = {{"radius", AnimatedProperty::double_(4)}}}};
  Layer copy = layer;
  copy.masks.mutate();  // same elements, separate storage
  copy.effects.mutate();
  ASSERT_FALSE(copy.masks.sharesStorageWith(layer.masks));
  EXPECT_EQ(copy, layer);
  EXPECT_EQ(hashValue(copy), hashValue(layer));
}

TEST(LayerTest, HashSeesEveryKindOfField) {
  const Layer base = videoLayer(1, 4, 0.5);
  const std::vector<std::function<void(Layer&)>> changes = {
      [](Layer& l) { l.name = "Other"; },
      [](Layer& l) { l.timeRange.duration = secs(3); },
      [](Layer& l) { l.sourceStart = secs(1); },
      [](Layer& l) { l.isSolo = true; },
      [](Layer& l) { l.fadeOut = secs(1); },
      [](Layer& l) { l.blendMode = OVBlendMode::screen; },
      [](Layer& l) { l.transform.flipVertically = true; },
      [](Layer& l) { l.crop.top = AnimatedProperty::double_(3); },
      [](Layer& l) { l.masks = {LayerMask{}}; },
      [](Layer& l) { l.audio.pitchMode = AudioPitchMode::linked; },
      [](Layer& l) { l.parentLayerID = Uuid::make(); },
      [](Layer& l) { l.labelColor = LayerLabelColor::teal; },
      [](Layer& l) { l.markers = {Marker{}}; },
      [](Layer& l) { l.trackID = Uuid::make(); },
      [](Layer& l) { l.textReveal = AnimatedProperty::double_(40); },
      [](Layer& l) { l.crossfadeOut = true; },
  };
  for (std::size_t i = 0; i < changes.size(); ++i) {
    Layer changed = base;
    changes[i](changed);
    EXPECT_NE(changed, base) << "change " << i;
    EXPECT_NE(hashValue(changed), hashValue(base)) << "change " << i;
  }
}

}  // namespace
}  // namespace orvane::core
