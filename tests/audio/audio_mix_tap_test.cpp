#include "audio/audio_mix_tap.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

namespace orvane::audio {
namespace {

std::vector<float> ramp(std::size_t n) {
  std::vector<float> v(n);
  for (std::size_t i = 0; i < n; ++i) v[i] = static_cast<float>((i * 37) % 101) / 50.0f - 1;
  return v;
}

AudioEffectSnapshot everything() {
  AudioEffectSnapshot s;
  s.echoMix = 0.4;
  s.echoDelayMs = 20;
  s.reverbMix = 0.3;
  s.pitchRatio = 1.5;
  return s;
}

TEST(AudioMixTapTest, PlanarBuffersSoundLikeInterleavedOnes) {
  const int frames = 5000;  // longer than the scratch list: goes in pieces
  const std::vector<float> source = ramp(frames * 2);

  AudioMixTap interleavedTap(everything());
  interleavedTap.prepare({44100, 2}, 512);
  std::vector<float> interleaved = source;
  interleavedTap.process(interleaved.data(), frames);

  AudioMixTap planarTap(everything());
  planarTap.prepare({44100, 2}, 512);
  std::vector<float> left(frames), right(frames);
  for (int f = 0; f < frames; ++f) {
    left[f] = source[f * 2];
    right[f] = source[f * 2 + 1];
  }
  float* channels[2] = {left.data(), right.data()};
  planarTap.processPlanar(channels, 2, frames);

  for (int f = 0; f < frames; ++f) {
    ASSERT_EQ(left[f], interleaved[f * 2]) << f;
    ASSERT_EQ(right[f], interleaved[f * 2 + 1]) << f;
  }
  EXPECT_NE(interleaved, source);
}

TEST(AudioMixTapTest, PrepareStartsTheTailsFromSilence) {
  AudioEffectSnapshot s;
  s.echoMix = 1;
  s.echoDelayMs = 10;
  AudioMixTap tap(s);
  EXPECT_EQ(tap.snapshot(), s);
  tap.prepare({8000, 1}, 256);
  std::vector<float> loud(40, 1.0f);
  tap.process(loud.data(), 40);
  tap.prepare({8000, 1}, 256);
  std::vector<float> quiet(200, 0.0f);
  tap.process(quiet.data(), 200);
  EXPECT_EQ(quiet, std::vector<float>(200, 0.0f));

  tap.setSnapshot(AudioEffectSnapshot::bypass);
  EXPECT_EQ(tap.dsp().snapshot(), AudioEffectSnapshot::bypass);
  // Empty and odd blocks are left alone.
  tap.process(nullptr, 10);
  tap.process(quiet.data(), 0);
  tap.processPlanar(nullptr, 1, 10);
}

TEST(AudioMixTapTest, EffectTapsOnlyForLayersThatNeedProcessing) {
  const media::AudioTapMaker maker = makeEffectTap();

  core::Layer plain;
  EXPECT_EQ(maker(plain), nullptr);
  plain.audio.echoMix = 0.5;  // at the threshold, still plain
  EXPECT_EQ(maker(plain), nullptr);

  core::Layer echo;
  echo.audio.echoMix = 60;
  echo.audio.echoFeedback = 50;
  core::Layer pitched;
  pitched.audio.pitchCents = 1;
  const auto echoTap = std::dynamic_pointer_cast<AudioMixTap>(maker(echo));
  const auto pitchTap = std::dynamic_pointer_cast<AudioMixTap>(maker(pitched));
  ASSERT_NE(echoTap, nullptr);
  ASSERT_NE(pitchTap, nullptr);
  EXPECT_NE(echoTap, pitchTap);
  EXPECT_EQ(echoTap->snapshot(), effectSnapshot(echo.audio));
  EXPECT_EQ(pitchTap->snapshot(), effectSnapshot(pitched.audio));
}

}  // namespace
}  // namespace orvane::audio
