// The effect DSP's block loops (echo and reverb as two passes, reverb lanes
// held in registers and run between index wraps, specialised mono and
// stereo loops, a table for the grain crossfade) against a plain per-sample
// transcription of the effect chain: the output must match bit for bit.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>
#include <vector>

#include "audio/audio_effect_dsp.hpp"

namespace orvane::audio {
namespace {

// The effect chain one sample at a time, written for reading, not speed.
class ReferenceDSP {
 public:
  ReferenceDSP(const AudioEffectSnapshot& s, double rate, int channels) : s_(s) {
    sampleRate_ = std::max(rate, 8000.0);
    channels_ = std::max(channels, 1);
    const long ch = channels_;
    const long echoFrames = static_cast<long>(sampleRate_ * 2.0);
    echo_.assign(static_cast<std::size_t>(std::max(echoFrames * ch + ch, ch)), 0.0f);
    for (const double ms : AudioEffectDSP::combDelaysMs) {
      combs_.emplace_back(static_cast<std::size_t>(std::max(1L, static_cast<long>(sampleRate_ * ms / 1000)) * ch), 0.0f);
      combIdx_.push_back(0);
    }
    for (const double ms : AudioEffectDSP::allpassDelaysMs) {
      allpasses_.emplace_back(static_cast<std::size_t>(std::max(1L, static_cast<long>(sampleRate_ * ms / 1000)) * ch),
                              0.0f);
      allpassIdx_.push_back(0);
    }
    grainSize_ = std::max(256L, static_cast<long>(sampleRate_ * 0.04));
    const long ringFrames = std::max(grainSize_ * 8, static_cast<long>(sampleRate_ * 0.5));
    ring_.assign(static_cast<std::size_t>(ringFrames * ch), 0.0f);
    grainBPos_ = static_cast<double>(grainSize_ / 2);
  }

  void update(const AudioEffectSnapshot& s) { s_ = s; }

  void process(float* buffer, long frameCount) {
    const long ch = channels_;
    const double ratio = std::clamp(s_.pitchRatio, 0.25, 4.0);
    if (std::abs(ratio - 1) > 0.002) {
      if (s_.pitchMode == core::AudioPitchMode::linked) {
        linkedPitch(buffer, frameCount, ratio);
      } else {
        keepDurationPitch(buffer, frameCount, ratio);
      }
    }
    const float echoMix = static_cast<float>(std::clamp(s_.echoMix, 0.0, 1.0));
    const float reverbMix = static_cast<float>(std::clamp(s_.reverbMix, 0.0, 1.0));
    const float echoDry = 1 - echoMix;
    const float reverbDry = 1 - reverbMix;
    const long delayFrames = std::max(1L, static_cast<long>(sampleRate_ * s_.echoDelayMs / 1000));
    const float feedback = static_cast<float>(s_.echoFeedback);
    const float decay = static_cast<float>(0.55 + 0.4 * s_.reverbDecay);
    const long echoFrames = static_cast<long>(echo_.size()) / ch;
    for (long f = 0; f < frameCount; ++f) {
      for (long c = 0; c < ch; ++c) {
        float out = buffer[f * ch + c];
        if (echoMix > 0.001f) {
          const long read = ((echoWrite_ + echoFrames - delayFrames) % echoFrames) * ch + c;
          const float delayed = echo_[static_cast<std::size_t>(read)];
          echo_[static_cast<std::size_t>(echoWrite_ * ch + c)] = out + delayed * feedback;
          out = out * echoDry + delayed * echoMix;
        }
        if (reverbMix > 0.001f) {
          const float wet = reverb(out, c, decay);
          out = out * reverbDry + wet * reverbMix;
        }
        buffer[f * ch + c] = out;
      }
      if (echoMix > 0.001f) echoWrite_ = (echoWrite_ + 1) % echoFrames;
    }
  }

 private:
  float reverb(float sample, long channel, float decay) {
    const long ch = channels_;
    float sum = 0;
    for (std::size_t i = 0; i < combs_.size(); ++i) {
      float& slot = combs_[i][static_cast<std::size_t>(combIdx_[i] * ch + channel)];
      const float y = slot;
      slot = sample + y * decay;
      sum += y;
    }
    for (std::size_t i = 0; i < combs_.size(); ++i) {
      combIdx_[i] = (combIdx_[i] + 1) % (static_cast<long>(combs_[i].size()) / ch);
    }
    float wet = sum / static_cast<float>(combs_.size());
    for (std::size_t i = 0; i < allpasses_.size(); ++i) {
      float& slot = allpasses_[i][static_cast<std::size_t>(allpassIdx_[i] * ch + channel)];
      const float y = slot;
      const float out = y - wet;
      slot = wet + y * 0.5f;
      allpassIdx_[i] = (allpassIdx_[i] + 1) % (static_cast<long>(allpasses_[i].size()) / ch);
      wet = out;
    }
    return wet;
  }

  long ringFrames() const { return static_cast<long>(ring_.size()) / channels_; }

  void linkedPitch(float* buffer, long frameCount, double ratio) {
    const long ch = channels_;
    const long rf = ringFrames();
    if (rf <= 4) return;
    for (long f = 0; f < frameCount; ++f) {
      for (long c = 0; c < ch; ++c) ring_[static_cast<std::size_t>(pitchWrite_ * ch + c)] = buffer[f * ch + c];
      pitchWrite_ = (pitchWrite_ + 1) % rf;
    }
    if (linkedReadPos_ == 0) linkedReadPos_ = static_cast<double>((pitchWrite_ - frameCount + rf) % rf);
    for (long f = 0; f < frameCount; ++f) {
      const long i = static_cast<long>(std::floor(linkedReadPos_)) % rf;
      const long j = (i + 1) % rf;
      const float frac = static_cast<float>(linkedReadPos_ - std::floor(linkedReadPos_));
      for (long c = 0; c < ch; ++c) {
        const float a = ring_[static_cast<std::size_t>(i * ch + c)];
        const float b = ring_[static_cast<std::size_t>(j * ch + c)];
        buffer[f * ch + c] = a + (b - a) * frac;
      }
      linkedReadPos_ += ratio;
      if (linkedReadPos_ >= static_cast<double>(rf)) linkedReadPos_ -= static_cast<double>(rf);
    }
  }

  float interpolated(double at, long channel, long rf) const {
    while (at < 0) at += static_cast<double>(rf);
    while (at >= static_cast<double>(rf)) at -= static_cast<double>(rf);
    const long i = static_cast<long>(std::floor(at)) % rf;
    const long j = (i + 1) % rf;
    const float frac = static_cast<float>(at - std::floor(at));
    const float a = ring_[static_cast<std::size_t>(i * channels_ + channel)];
    const float b = ring_[static_cast<std::size_t>(j * channels_ + channel)];
    return a + (b - a) * frac;
  }

  void keepDurationPitch(float* buffer, long frameCount, double ratio) {
    const long ch = channels_;
    const long rf = ringFrames();
    if (grainSize_ * 2 >= rf) return;
    for (long f = 0; f < frameCount; ++f) {
      for (long c = 0; c < ch; ++c) ring_[static_cast<std::size_t>(pitchWrite_ * ch + c)] = buffer[f * ch + c];
      const float phase = static_cast<float>(grainFade_) / static_cast<float>(grainSize_);
      const float w = 0.5f - 0.5f * std::cos(std::numbers::pi_v<float> * phase);
      for (long c = 0; c < ch; ++c) {
        buffer[f * ch + c] = interpolated(grainAPos_, c, rf) * w + interpolated(grainBPos_, c, rf) * (1 - w);
      }
      pitchWrite_ = (pitchWrite_ + 1) % rf;
      grainAPos_ += ratio;
      grainBPos_ += ratio;
      grainFade_ += 1;
      if (grainFade_ >= grainSize_) {
        grainFade_ = 0;
        const double restart = static_cast<double>((pitchWrite_ - grainSize_ + rf) % rf);
        if (w < 1 - w) {
          grainAPos_ = restart;
        } else {
          grainBPos_ = restart;
        }
      }
      for (double* p : {&grainAPos_, &grainBPos_}) {
        while (*p < 0) *p += static_cast<double>(rf);
        while (*p >= static_cast<double>(rf)) *p -= static_cast<double>(rf);
      }
    }
  }

  AudioEffectSnapshot s_;
  double sampleRate_;
  long channels_;
  std::vector<float> echo_;
  long echoWrite_ = 0;
  std::vector<std::vector<float>> combs_;
  std::vector<long> combIdx_;
  std::vector<std::vector<float>> allpasses_;
  std::vector<long> allpassIdx_;
  std::vector<float> ring_;
  long pitchWrite_ = 0;
  double linkedReadPos_ = 0;
  double grainAPos_ = 0;
  double grainBPos_ = 0;
  long grainSize_ = 1024;
  long grainFade_ = 0;
};

std::vector<float> noise(std::size_t n, unsigned seed) {
  std::vector<float> v(n);
  for (auto& x : v) {
    seed = seed * 1664525U + 1013904223U;
    x = static_cast<float>(seed >> 8) / static_cast<float>(1U << 24) * 2 - 1;
  }
  return v;
}

// Feeds the same noise to both in blocks of the given odd sizes (cycled)
// and returns the index of the first sample whose bits differ, or -1.
long firstDifference(const AudioEffectSnapshot& s, double rate, int channels, long frames,
                     const std::vector<long>& blocks, const AudioEffectSnapshot* later = nullptr) {
  AudioEffectDSP dsp(s);
  dsp.prepare(rate, channels);
  ReferenceDSP reference(s, rate, channels);
  std::vector<float> fast = noise(static_cast<std::size_t>(frames * channels), 11U + static_cast<unsigned>(channels));
  std::vector<float> slow = fast;
  long start = 0;
  for (std::size_t b = 0; start < frames; ++b) {
    if (later != nullptr && b == 3) {
      dsp.update(*later);
      reference.update(*later);
    }
    const long count = std::min(blocks[b % blocks.size()], frames - start);
    dsp.process(fast.data() + start * channels, static_cast<int>(count));
    reference.process(slow.data() + start * channels, count);
    start += count;
  }
  for (std::size_t i = 0; i < fast.size(); ++i) {
    if (std::memcmp(&fast[i], &slow[i], sizeof(float)) != 0) return static_cast<long>(i);
  }
  return -1;
}

AudioEffectSnapshot everything(double ratio, core::AudioPitchMode mode) {
  AudioEffectSnapshot s;
  s.echoMix = 0.43;
  s.echoDelayMs = 23.3;
  s.echoFeedback = 0.6;
  s.reverbMix = 0.37;
  s.reverbDecay = 0.71;
  s.pitchRatio = ratio;
  s.pitchMode = mode;
  return s;
}

TEST(AudioEffectReferenceTest, BlockLoopsMatchThePerSampleChainBitForBit) {
  const std::vector<long> blocks = {1, 7, 333, 127, 1001, 3, 4097, 511};
  // Past the two-second echo buffer at 8000 Hz, so the echo index wraps too.
  for (const int channels : {1, 2, 3}) {
    for (const auto mode : {core::AudioPitchMode::keepDuration, core::AudioPitchMode::linked}) {
      for (const double ratio : {1.37, 0.61, 1.0}) {
        const AudioEffectSnapshot s = everything(ratio, mode);
        EXPECT_EQ(firstDifference(s, 8000, channels, 17000, blocks), -1)
            << channels << " channels, ratio " << ratio << ", mode " << static_cast<int>(mode);
      }
    }
    EXPECT_EQ(firstDifference(everything(1.9, core::AudioPitchMode::keepDuration), 44100, channels, 9000, blocks), -1)
        << channels << " channels at 44100 Hz";
  }
}

TEST(AudioEffectReferenceTest, EffectsSwitchedBetweenBlocksMatchBitForBit) {
  const std::vector<long> blocks = {97, 13, 255};
  for (const int channels : {1, 2, 3}) {
    // Echo alone, then reverb alone: the echo's buffer stands still while off.
    AudioEffectSnapshot echoOnly = everything(1, core::AudioPitchMode::keepDuration);
    echoOnly.reverbMix = 0;
    AudioEffectSnapshot reverbOnly = everything(0.8, core::AudioPitchMode::linked);
    reverbOnly.echoMix = 0.0005;
    EXPECT_EQ(firstDifference(echoOnly, 8000, channels, 3000, blocks, &reverbOnly), -1) << channels;
    EXPECT_EQ(firstDifference(reverbOnly, 8000, channels, 3000, blocks, &echoOnly), -1) << channels;
    // Full wet, no dry at all, and a delay of under a frame.
    AudioEffectSnapshot full = everything(2.5, core::AudioPitchMode::keepDuration);
    full.echoMix = 1;
    full.reverbMix = 1;
    full.echoDelayMs = 0.01;
    full.reverbDecay = 1;
    EXPECT_EQ(firstDifference(full, 22050, channels, 3000, blocks), -1) << channels;
  }
}

}  // namespace
}  // namespace orvane::audio
