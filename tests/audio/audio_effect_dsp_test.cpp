#include "audio/audio_effect_dsp.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include "audio/audio_effect_snapshot.hpp"

namespace orvane::audio {
namespace {

std::vector<float> noise(std::size_t n, unsigned seed = 7) {
  std::vector<float> v(n);
  for (auto& x : v) {
    seed = seed * 1664525U + 1013904223U;
    x = static_cast<float>(seed >> 8) / static_cast<float>(1U << 24) * 2 - 1;
  }
  return v;
}

bool sameBits(const std::vector<float>& a, const std::vector<float>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

// Runs samples through a fresh DSP in blocks of blockFrames.
std::vector<float> processed(const AudioEffectSnapshot& s, std::vector<float> samples, double rate, int channels,
                             int blockFrames = 512) {
  AudioEffectDSP dsp(s);
  dsp.prepare(rate, channels);
  const int total = static_cast<int>(samples.size()) / channels;
  for (int start = 0; start < total; start += blockFrames) {
    dsp.process(samples.data() + static_cast<std::size_t>(start) * channels, std::min(blockFrames, total - start));
  }
  return samples;
}

TEST(AudioEffectSnapshotTest, FromAudioPropertiesScalesAndClamps) {
  core::AudioProperties a;
  EXPECT_EQ(effectSnapshot(a), AudioEffectSnapshot::bypass);

  a.echoMix = 50;
  a.echoDelayMs = 250;
  a.echoFeedback = 120;
  a.reverbMix = 25;
  a.reverbDecay = 80;
  a.pitchSemitones = 12;
  a.pitchCents = -100;
  a.pitchMode = core::AudioPitchMode::linked;
  const AudioEffectSnapshot s = effectSnapshot(a);
  EXPECT_DOUBLE_EQ(s.echoMix, 0.5);
  EXPECT_DOUBLE_EQ(s.echoDelayMs, 250);
  EXPECT_DOUBLE_EQ(s.echoFeedback, 0.95);
  EXPECT_DOUBLE_EQ(s.reverbMix, 0.25);
  EXPECT_DOUBLE_EQ(s.reverbDecay, 0.8);
  EXPECT_DOUBLE_EQ(s.pitchRatio, std::pow(2.0, 11.0 / 12));
  EXPECT_EQ(s.pitchMode, core::AudioPitchMode::linked);
  EXPECT_NE(s, AudioEffectSnapshot::bypass);
  AudioEffectSnapshot copy = s;
  EXPECT_EQ(hashValue(copy), hashValue(s));
  copy.pitchMode = core::AudioPitchMode::keepDuration;
  EXPECT_NE(copy, s);

  a.echoFeedback = -10;
  EXPECT_DOUBLE_EQ(effectSnapshot(a).echoFeedback, 0);
}

TEST(AudioEffectDSPTest, PrepareKeepsFormatSaneAndSizesBuffers) {
  AudioEffectDSP dsp;
  dsp.prepare(0, 0);
  EXPECT_EQ(dsp.sampleRate(), 8000);
  EXPECT_EQ(dsp.channelCount(), 1);
  EXPECT_EQ(dsp.echoBufferSize(), 16001u);  // two seconds and one frame
  EXPECT_EQ(dsp.combBufferSize(0), 237u);   // 29.7 ms
  EXPECT_EQ(dsp.allpassBufferSize(1), 13u); // 1.7 ms
  EXPECT_EQ(dsp.grainSize(), 320);
  EXPECT_EQ(dsp.pitchRingSize(), 4000u);    // half a second: more than 8 grains
  EXPECT_EQ(dsp.grainBPos(), 160);

  dsp.prepare(std::nan(""), -3);
  EXPECT_EQ(dsp.sampleRate(), 8000);
  EXPECT_EQ(dsp.channelCount(), 1);

  dsp.prepare(48000, 2);
  EXPECT_EQ(dsp.echoBufferSize(), 96001u * 2);
  EXPECT_EQ(dsp.combBufferSize(3), 2097u * 2);  // 43.7 ms
  EXPECT_EQ(dsp.grainSize(), 1920);
  EXPECT_EQ(dsp.pitchRingSize(), 24000u * 2);
}

TEST(AudioEffectDSPTest, BypassLeavesSamplesBitForBit) {
  const std::vector<float> input = noise(48000 * 2);
  EXPECT_TRUE(sameBits(processed(AudioEffectSnapshot::bypass, input, 48000, 2), input));

  // Mixes at the threshold and a ratio within 0.002 of 1 cost nothing either.
  AudioEffectSnapshot nearly = AudioEffectSnapshot::bypass;
  nearly.echoMix = 0.001;
  nearly.reverbMix = 0.0009;
  nearly.pitchRatio = 1.0015;
  EXPECT_TRUE(sameBits(processed(nearly, input, 44100, 2), input));
}

TEST(AudioEffectDSPTest, FullEchoGivesSilenceThenTheDelayedInputAndItsRepeats) {
  AudioEffectSnapshot s = AudioEffectSnapshot::bypass;
  s.echoMix = 1;
  s.echoDelayMs = 100;
  s.echoFeedback = 0.5;
  std::vector<float> input(8000 * 2, 0.0f);  // mono, 8 kHz: the delay is 800 frames
  input[0] = 1;
  input[10] = -0.5f;
  const std::vector<float> out = processed(s, input, 8000, 1, 300);
  for (int i = 0; i < 800; ++i) ASSERT_EQ(out[static_cast<std::size_t>(i)], 0.0f) << i;
  EXPECT_EQ(out[800], 1.0f);
  EXPECT_EQ(out[810], -0.5f);
  EXPECT_EQ(out[1600], 0.5f);
  EXPECT_EQ(out[1610], -0.25f);
  EXPECT_EQ(out[2400], 0.25f);
  EXPECT_EQ(out[801], 0.0f);
  EXPECT_EQ(out[1599], 0.0f);
}

TEST(AudioEffectDSPTest, EchoBufferStandsStillWhileTheMixIsOff) {
  AudioEffectSnapshot on = AudioEffectSnapshot::bypass;
  on.echoMix = 1;
  on.echoDelayMs = 100;
  on.echoFeedback = 0;
  AudioEffectDSP dsp(on);
  dsp.prepare(8000, 1);
  std::vector<float> block(400, 0.0f);
  block[0] = 1;
  dsp.process(block.data(), 400);  // the impulse is 400 frames into its delay

  dsp.update(AudioEffectSnapshot::bypass);
  std::vector<float> passing = noise(1000);
  const std::vector<float> before = passing;
  dsp.process(passing.data(), 1000);
  EXPECT_TRUE(sameBits(passing, before));

  dsp.update(on);
  std::vector<float> silence(800, 0.0f);
  dsp.process(silence.data(), 800);
  for (int i = 0; i < 800; ++i) EXPECT_EQ(silence[static_cast<std::size_t>(i)], i == 400 ? 1.0f : 0.0f) << i;
}

TEST(AudioEffectDSPTest, ReverbIndicesAreSharedByTheChannels) {
  AudioEffectSnapshot s = AudioEffectSnapshot::bypass;
  s.reverbMix = 1;
  s.reverbDecay = 0;
  // At 8 kHz the shortest combs hold 237 (odd) and 296 (even) frames. Mono
  // hears the 237-frame comb first. With two channels the indices move twice
  // a frame: an even comb comes back after half its length (148 frames), an
  // odd one after its whole length, as each slot is then met by one channel
  // only every second round.
  std::vector<float> mono(600, 0.0f);
  mono[0] = 1;
  mono = processed(s, mono, 8000, 1);
  std::vector<float> stereo(1200, 0.0f);
  stereo[0] = 1;  // left only
  stereo = processed(s, stereo, 8000, 2);

  const auto firstSound = [](const std::vector<float>& v, int channels, int channel) {
    for (std::size_t f = 0; f * channels < v.size(); ++f) {
      if (v[f * channels + channel] != 0) return static_cast<int>(f);
    }
    return -1;
  };
  EXPECT_EQ(firstSound(mono, 1, 0), 237);
  EXPECT_EQ(mono[237], 0.25f);
  EXPECT_EQ(firstSound(stereo, 2, 0), 148);
  EXPECT_EQ(stereo[148 * 2], 0.25f);
  EXPECT_EQ(firstSound(stereo, 2, 1), -1);  // the channels never cross
}

TEST(AudioEffectDSPTest, PitchRatioIsClampedToTwoOctaves) {
  const std::vector<float> input = noise(8000 * 2);
  for (auto mode : {core::AudioPitchMode::keepDuration, core::AudioPitchMode::linked}) {
    AudioEffectSnapshot s = AudioEffectSnapshot::bypass;
    s.pitchMode = mode;
    const auto run = [&](double ratio) {
      s.pitchRatio = ratio;
      return processed(s, input, 8000, 2, 256);
    };
    const std::vector<float> quarter = run(0.25);
    EXPECT_FALSE(sameBits(quarter, input));
    EXPECT_TRUE(sameBits(run(0.1), quarter));
    const std::vector<float> four = run(4);
    EXPECT_FALSE(sameBits(four, quarter));
    EXPECT_TRUE(sameBits(run(8), four));
    EXPECT_TRUE(sameBits(run(std::numeric_limits<double>::infinity()), four));
  }
}

TEST(AudioEffectDSPTest, RingTooSmallForTheGrainsLeavesTheBuffer) {
  // Before the first prepare the ring is empty: no room for two grains.
  for (auto mode : {core::AudioPitchMode::keepDuration, core::AudioPitchMode::linked}) {
    AudioEffectSnapshot s = AudioEffectSnapshot::bypass;
    s.pitchRatio = 2;
    s.pitchMode = mode;
    s.echoMix = 0.5;
    s.reverbMix = 0.5;
    AudioEffectDSP dsp(s);
    std::vector<float> samples = noise(1024);
    const std::vector<float> before = samples;
    dsp.process(samples.data(), 512);
    EXPECT_TRUE(sameBits(samples, before));
  }
}

TEST(AudioEffectDSPTest, LinkedReadPositionIsReseededWheneverItIsZero) {
  AudioEffectSnapshot s = AudioEffectSnapshot::bypass;
  s.pitchRatio = 2;
  s.pitchMode = core::AudioPitchMode::linked;
  AudioEffectDSP dsp(s);
  dsp.prepare(8000, 1);  // a ring of 4000 frames

  std::vector<float> block = noise(1000, 1);
  dsp.process(block.data(), 1000);
  EXPECT_EQ(dsp.linkedReadPos(), 2000);  // seeded at the block's start, 0
  block = noise(1000, 2);
  dsp.process(block.data(), 1000);
  EXPECT_EQ(dsp.linkedReadPos(), 0);  // wrapped onto exactly 0

  const std::vector<float> third = noise(500, 3);
  block = third;
  dsp.process(block.data(), 500);
  // Seeded again at this block's first frame (ring frame 2000), read at twice the speed.
  EXPECT_EQ(dsp.linkedReadPos(), 3000);
  for (int k = 0; k < 250; ++k) ASSERT_EQ(block[static_cast<std::size_t>(k)], third[static_cast<std::size_t>(2 * k)]) << k;
  for (int k = 250; k < 500; ++k) ASSERT_EQ(block[static_cast<std::size_t>(k)], 0.0f) << k;  // never written
}

TEST(AudioEffectDSPTest, AbsurdSettingsStayWithinTheBuffers) {
  const double nan = std::nan("");
  const double inf = std::numeric_limits<double>::infinity();
  for (const double delay : {nan, inf, -5.0, 1e300, 5000.0}) {
    for (const double ratio : {nan, -inf, 0.0}) {
      AudioEffectSnapshot s;
      s.echoMix = 1;
      s.echoDelayMs = delay;
      s.echoFeedback = 0.5;
      s.reverbMix = nan;
      s.pitchRatio = ratio;
      std::vector<float> samples = noise(3 * 700);
      AudioEffectDSP dsp(s);
      dsp.prepare(1e12, 3);  // an absurd rate is held to one a device could have
      EXPECT_LE(dsp.sampleRate(), 768000);
      dsp.process(samples.data(), 700);
      dsp.process(samples.data(), 700);
      for (const float x : samples) ASSERT_TRUE(std::isfinite(x));
    }
  }
  // A delay past the two seconds of the buffer echoes after all of them.
  AudioEffectSnapshot longEcho;
  longEcho.echoMix = 1;
  longEcho.echoDelayMs = 5000;
  longEcho.echoFeedback = 0;
  std::vector<float> impulse(8000 * 3, 0.0f);
  impulse[0] = 1;
  const std::vector<float> out = processed(longEcho, impulse, 8000, 1, 1000);
  EXPECT_EQ(std::find(out.begin(), out.end(), 1.0f) - out.begin(), 16001);
}

TEST(AudioEffectDSPTest, KeepDurationShiftsPitchOfATone) {
  // A 200 Hz tone an octave up: count zero crossings after the first grains.
  const int rate = 8000;
  std::vector<float> tone(static_cast<std::size_t>(rate));
  for (int i = 0; i < rate; ++i) tone[static_cast<std::size_t>(i)] = std::sin(2 * std::numbers::pi * 200 * i / rate);
  AudioEffectSnapshot s = AudioEffectSnapshot::bypass;
  s.pitchRatio = 2;
  const std::vector<float> out = processed(s, tone, rate, 1);
  int crossings = 0;
  for (int i = 4001; i < rate; ++i) {
    if ((out[static_cast<std::size_t>(i - 1)] < 0) != (out[static_cast<std::size_t>(i)] < 0)) ++crossings;
  }
  // 400 Hz over half a second is 400 crossings; grain seams add a few.
  EXPECT_NEAR(crossings, 400, 40);
}

}  // namespace
}  // namespace orvane::audio
