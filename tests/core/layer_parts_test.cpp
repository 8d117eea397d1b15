// Crop, masks, effects and audio properties of a layer.

#include "core/layer_parts.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace orvane::core {
namespace {

using Edge = LayerCrop::Edge;

OVTime secs(double s) { return OVTime::fromSeconds(s); }

// -------------------------------------------------------------------- crop

TEST(LayerCropTest, EdgesReadAndWriteTheirProperty) {
  LayerCrop crop;
  EXPECT_EQ(&crop[Edge::left], &crop.left);
  EXPECT_EQ(&crop[Edge::top], &crop.top);
  EXPECT_EQ(&crop[Edge::right], &crop.right);
  EXPECT_EQ(&crop[Edge::bottom], &crop.bottom);
  const LayerCrop& view = crop;
  EXPECT_EQ(&view[Edge::bottom], &crop.bottom);
  crop[Edge::top] = AnimatedProperty::double_(12);
  EXPECT_EQ(crop.top.doubleValueAt(secs(0)), 12);
  EXPECT_NE(crop, LayerCrop::zero);
}

TEST(LayerCropTest, ActiveWhenSomeEdgeCutsAtTheTime) {
  EXPECT_FALSE(LayerCrop::zero.isActiveAt(secs(0)));
  for (Edge edge : allCases<Edge>()) {
    LayerCrop crop;
    crop[edge] = AnimatedProperty::double_(0.5);
    EXPECT_TRUE(crop.isActiveAt(secs(0))) << rawValue(edge);
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

// ------------------------------------------------------------------- masks

TEST(LayerMaskTest, DefaultMaskIsAnEmptyClosedPathWithoutFeather) {
  const LayerMask mask;
  EXPECT_EQ(mask.name, "Mask");
  EXPECT_TRUE(mask.isEnabled);
  EXPECT_FALSE(mask.inverted);
  EXPECT_EQ(mask.pathValueAt(secs(1)), MaskPath{});
  EXPECT_EQ(mask.featherValueAt(secs(1)), 0);
  EXPECT_NE(LayerMask{}.id, mask.id);
}

TEST(LayerMaskTest, PathValueIsThePathOrAnEmptyClosedOne) {
  LayerMask mask;
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

TEST(LayerMaskTest, EqualMasksHashAlike) {
  LayerMask a;
  LayerMask b = a;
  EXPECT_EQ(hashValue(a), hashValue(b));
  b.inverted = true;
  EXPECT_NE(hashValue(a), hashValue(b));
}

// ----------------------------------------------------------------- effects

TEST(EffectInstanceTest, AnimatedWhenAnyParameterHasKeyframes) {
  EffectInstance effect{.effectID = "blur"};
  EXPECT_FALSE(effect.isAnimated());
  effect.parameters["radius"] = AnimatedProperty::double_(4);
  effect.parameters["angle"] = AnimatedProperty::double_(0);
  EXPECT_FALSE(effect.isAnimated());
  effect.parameters["angle"].addKeyframeAt(secs(1));
  EXPECT_TRUE(effect.isAnimated());
}

TEST(EffectInstanceTest, HashSeesTheParameters) {
  EffectInstance a{.effectID = "blur", .parameters = {{"radius", AnimatedProperty::double_(4)}}};
  EffectInstance b = a;
  EXPECT_EQ(hashValue(a), hashValue(b));
  b.parameters["radius"] = AnimatedProperty::double_(5);
  EXPECT_NE(hashValue(a), hashValue(b));
}

// ------------------------------------------------------------------- audio

TEST(AudioPropertiesTest, PitchRatioCombinesSemitonesAndCents) {
  AudioProperties audio;
  EXPECT_DOUBLE_EQ(audio.pitchRatio(), 1);
  audio.pitchSemitones = 12;
  EXPECT_DOUBLE_EQ(audio.pitchRatio(), 2);
  audio.pitchSemitones = -12;
  EXPECT_DOUBLE_EQ(audio.pitchRatio(), 0.5);
  audio.pitchSemitones = 6;
  audio.pitchCents = 100;  // one more semitone
  EXPECT_DOUBLE_EQ(audio.pitchRatio(), std::pow(2.0, 7.0 / 12));
}

TEST(AudioPropertiesTest, TinyShiftsDoNotCountAsPitchShift) {
  AudioProperties audio;
  EXPECT_FALSE(audio.hasPitchShift());
  audio.pitchSemitones = 0.01;
  EXPECT_FALSE(audio.hasPitchShift());
  audio.pitchSemitones = -0.02;
  EXPECT_TRUE(audio.hasPitchShift());
  audio.pitchSemitones = 0;
  audio.pitchCents = 0.5;
  EXPECT_FALSE(audio.hasPitchShift());
  audio.pitchCents = -0.6;
  EXPECT_TRUE(audio.hasPitchShift());
}

TEST(AudioPropertiesTest, ProcessingTapIsNeededForEchoReverbOrPitch) {
  AudioProperties audio;
  EXPECT_FALSE(audio.needsProcessingTap());
  audio.echoMix = 0.5;
  audio.reverbMix = 0.5;
  EXPECT_FALSE(audio.needsProcessingTap());
  audio.echoMix = 0.6;
  EXPECT_TRUE(audio.needsProcessingTap());
  audio.echoMix = 0;
  audio.reverbMix = 20;
  EXPECT_TRUE(audio.needsProcessingTap());
  audio.reverbMix = 0;
  audio.pitchSemitones = 3;
  EXPECT_TRUE(audio.needsProcessingTap());
}

TEST(AudioPropertiesTest, AnimatedWhenVolumeOrPanHasKeyframes) {
  AudioProperties audio;
  EXPECT_FALSE(audio.isAnimated());
  audio.pan.addKeyframeAt(secs(1));
  EXPECT_TRUE(audio.isAnimated());
  AudioProperties louder;
  louder.volume.addKeyframeAt(secs(1));
  EXPECT_TRUE(louder.isAnimated());
}

TEST(AudioPropertiesTest, PitchModesExplainThemselves) {
  EXPECT_EQ(helpText(AudioPitchMode::keepDuration),
            "Shifts pitch and keeps the clip length (like a pitch plugin).");
  EXPECT_EQ(helpText(AudioPitchMode::linked), "");
  EXPECT_EQ(displayName(AudioPitchMode::linked), "Pitch + Speed");
  EXPECT_EQ(AudioProperties{}.pitchMode, AudioPitchMode::keepDuration);
}

TEST(AudioPropertiesTest, HashSeesEveryField) {
  const AudioProperties base;
  AudioProperties muted = base, gained = base, moded = base;
  muted.isMuted = true;
  gained.normalizeGain = 1.5;
  moded.pitchMode = AudioPitchMode::linked;
  EXPECT_EQ(hashValue(AudioProperties{}), hashValue(base));
  for (const AudioProperties* changed : {&muted, &gained, &moded})
    EXPECT_NE(hashValue(*changed), hashValue(base));
}

}  // namespace
}  // namespace orvane::core
