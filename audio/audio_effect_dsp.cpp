#include "audio/audio_effect_dsp.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace orvane::audio {
namespace {

// Beyond any real device; keeps a corrupt format from asking for gigabytes.
constexpr double kMaxSampleRate = 768000;
constexpr int kMaxChannels = 64;

std::int64_t positiveModulo(std::int64_t value, std::int64_t modulus) {
  const std::int64_t r = value % modulus;
  return r < 0 ? r + modulus : r;
}

double wrapped(double position, double frames) {
  while (position < 0) position += frames;
  while (position >= frames) position -= frames;
  return position;
}

// The two ring frames around a position and the weight of the second.
struct RingPoint {
  std::int64_t i;
  std::int64_t j;
  float frac;
};

RingPoint ringPoint(double position, std::int64_t ringFrames) {
  const double p = wrapped(position, static_cast<double>(ringFrames));
  const std::int64_t i = static_cast<std::int64_t>(p) % ringFrames;
  return {i, (i + 1) % ringFrames, static_cast<float>(p - std::floor(p))};
}

inline float lerpRing(const float* ring, const RingPoint& at, int channels, int channel) {
  const float a = ring[at.i * channels + channel];
  const float b = ring[at.j * channels + channel];
  return a + (b - a) * at.frac;
}

}  // namespace

void AudioEffectDSP::update(const AudioEffectSnapshot& s) {
  const std::uint32_t seq = published_.sequence.load(std::memory_order_relaxed);
  published_.sequence.store(seq + 1, std::memory_order_relaxed);
  std::atomic_thread_fence(std::memory_order_release);
  const double values[6] = {s.echoMix, s.echoDelayMs, s.echoFeedback, s.reverbMix, s.reverbDecay, s.pitchRatio};
  for (int i = 0; i < 6; ++i) published_.fields[i].store(values[i], std::memory_order_relaxed);
  published_.pitchMode.store(static_cast<int>(s.pitchMode), std::memory_order_relaxed);
  published_.sequence.store(seq + 2, std::memory_order_release);
}

AudioEffectSnapshot AudioEffectDSP::readPublished(const AudioEffectSnapshot& fallback) const {
  const std::uint32_t before = published_.sequence.load(std::memory_order_acquire);
  if (before & 1U) return fallback;
  double v[6];
  for (int i = 0; i < 6; ++i) v[i] = published_.fields[i].load(std::memory_order_relaxed);
  const int mode = published_.pitchMode.load(std::memory_order_relaxed);
  std::atomic_thread_fence(std::memory_order_acquire);
  if (published_.sequence.load(std::memory_order_relaxed) != before) return fallback;
  return {v[0], v[1], v[2], v[3], v[4], v[5], static_cast<core::AudioPitchMode>(mode)};
}

AudioEffectSnapshot AudioEffectDSP::snapshot() const {
  // Off the mixing thread a torn read is simply tried again.
  for (;;) {
    const std::uint32_t before = published_.sequence.load(std::memory_order_acquire);
    if (before & 1U) continue;
    const AudioEffectSnapshot s = readPublished(AudioEffectSnapshot::bypass);
    if (published_.sequence.load(std::memory_order_acquire) == before) return s;
  }
}

void AudioEffectDSP::prepare(double sampleRate, int channelCount) {
  sampleRate_ = sampleRate >= 8000 ? std::min(sampleRate, kMaxSampleRate) : 8000;
  channelCount_ = std::clamp(channelCount, 1, kMaxChannels);
  resetBuffers();
}

void AudioEffectDSP::resetBuffers() {
  const std::int64_t ch = channelCount_;
  const auto framesFor = [&](double ms) {
    return std::max<std::int64_t>(1, static_cast<std::int64_t>(sampleRate_ * ms / 1000));
  };

  const auto echoFrames = static_cast<std::int64_t>(sampleRate_ * 2.0);
  echoBuffer_.assign(static_cast<std::size_t>(std::max(echoFrames * ch + ch, ch)), 0.0f);
  echoWrite_ = 0;

  for (int i = 0; i < 4; ++i) {
    combFrames_[i] = framesFor(combDelaysMs[i]);
    combBuffers_[i].assign(static_cast<std::size_t>(combFrames_[i] * ch), 0.0f);
    combIndices_[i] = 0;
  }
  for (int i = 0; i < 2; ++i) {
    allpassFrames_[i] = framesFor(allpassDelaysMs[i]);
    allpassBuffers_[i].assign(static_cast<std::size_t>(allpassFrames_[i] * ch), 0.0f);
    allpassIndices_[i] = 0;
  }

  grainSize_ = std::max(256, static_cast<int>(sampleRate_ * 0.04));
  const std::int64_t ringFrames =
      std::max<std::int64_t>(std::int64_t{grainSize_} * 8, static_cast<std::int64_t>(sampleRate_ * 0.5));
  pitchRing_.assign(static_cast<std::size_t>(ringFrames * ch), 0.0f);
  pitchWrite_ = 0;

  linkedReadPos_ = 0;
  grainAPos_ = 0;
  grainBPos_ = static_cast<double>(grainSize_ / 2);
  grainFade_ = 0;

  // The raised-cosine weight of grain A at each position, as the per-frame
  // float computation would give it.
  grainWindow_.resize(static_cast<std::size_t>(grainSize_));
  for (int k = 0; k < grainSize_; ++k) {
    const float phase = static_cast<float>(k) / static_cast<float>(grainSize_);
    grainWindow_[static_cast<std::size_t>(k)] = 0.5f - 0.5f * std::cos(std::numbers::pi_v<float> * phase);
  }
}

void AudioEffectDSP::process(float* buffer, int frameCount) {
  if (buffer == nullptr || frameCount < 1) return;
  snapshot_ = readPublished(snapshot_);

  const double ratio = std::clamp(snapshot_.pitchRatio, 0.25, 4.0);
  if (std::abs(ratio - 1) > 0.002) {
    if (snapshot_.pitchMode == core::AudioPitchMode::linked) {
      processLinkedPitch(buffer, frameCount, ratio);
    } else {
      processKeepDurationPitch(buffer, frameCount, ratio);
    }
  }
  processEchoAndReverb(buffer, frameCount);
}

void AudioEffectDSP::processEchoAndReverb(float* buffer, int frameCount) {
  const int ch = channelCount_;
  const auto echoMix = static_cast<float>(std::clamp(snapshot_.echoMix, 0.0, 1.0));
  const auto reverbMix = static_cast<float>(std::clamp(snapshot_.reverbMix, 0.0, 1.0));
  const std::int64_t echoFrames = static_cast<std::int64_t>(echoBuffer_.size()) / ch;
  const bool echoOn = echoMix > 0.001f && echoFrames > 0;
  const bool reverbOn = reverbMix > 0.001f && !combBuffers_[0].empty();
  if (!echoOn && !reverbOn) return;

  const float echoDry = 1 - echoMix;
  const float reverbDry = 1 - reverbMix;
  // Written so that a non-finite delay lands on one frame, and a delay past
  // the buffer on its whole length.
  double delay = sampleRate_ * snapshot_.echoDelayMs / 1000;
  if (!(delay >= 1)) delay = 1;
  const std::int64_t delayFrames = std::min(static_cast<std::int64_t>(std::min(delay, 1e15)), echoFrames);
  const auto feedback = static_cast<float>(snapshot_.echoFeedback);
  const auto decay = static_cast<float>(0.55 + 0.4 * snapshot_.reverbDecay);
  float* echo = echoBuffer_.data();

  for (int f = 0; f < frameCount; ++f) {
    float* frame = buffer + static_cast<std::ptrdiff_t>(f) * ch;
    const std::int64_t readBase = echoOn ? ((echoWrite_ + echoFrames - delayFrames) % echoFrames) * ch : 0;
    const std::int64_t writeBase = echoWrite_ * ch;
    for (int c = 0; c < ch; ++c) {
      float out = frame[c];
      if (echoOn) {
        const float delayed = echo[readBase + c];
        echo[writeBase + c] = out + delayed * feedback;
        out = out * echoDry + delayed * echoMix;
      }
      if (reverbOn) {
        const float wet = processReverb(out, c, decay);
        out = out * reverbDry + wet * reverbMix;
      }
      frame[c] = out;
    }
    if (echoOn) echoWrite_ = echoWrite_ + 1 == echoFrames ? 0 : echoWrite_ + 1;
  }
}

// The indices are shared by the channels and move at every call, so with
// two channels the delays run at twice the frame rate and the channels
// interleave in the buffers. That is the intended sound.
float AudioEffectDSP::processReverb(float sample, int channel, float decay) {
  const int ch = channelCount_;
  float sum = 0;
  for (int i = 0; i < 4; ++i) {
    float& slot = combBuffers_[i][static_cast<std::size_t>(combIndices_[i] * ch + channel)];
    const float y = slot;
    slot = sample + y * decay;
    sum += y;
  }
  for (int i = 0; i < 4; ++i) combIndices_[i] = combIndices_[i] + 1 == combFrames_[i] ? 0 : combIndices_[i] + 1;

  float wet = sum / 4.0f;
  for (int i = 0; i < 2; ++i) {
    float& slot = allpassBuffers_[i][static_cast<std::size_t>(allpassIndices_[i] * ch + channel)];
    const float y = slot;
    const float out = y - wet;
    slot = wet + y * 0.5f;
    allpassIndices_[i] = allpassIndices_[i] + 1 == allpassFrames_[i] ? 0 : allpassIndices_[i] + 1;
    wet = out;
  }
  return wet;
}

void AudioEffectDSP::processLinkedPitch(float* buffer, int frameCount, double ratio) {
  const int ch = channelCount_;
  const std::int64_t ringFrames = static_cast<std::int64_t>(pitchRing_.size()) / ch;
  if (ringFrames <= 4) return;
  float* ring = pitchRing_.data();

  for (int f = 0; f < frameCount; ++f) {
    std::copy_n(buffer + static_cast<std::ptrdiff_t>(f) * ch, ch, ring + pitchWrite_ * ch);
    pitchWrite_ = pitchWrite_ + 1 == ringFrames ? 0 : pitchWrite_ + 1;
  }
  if (linkedReadPos_ == 0) {
    linkedReadPos_ = static_cast<double>(positiveModulo(pitchWrite_ - frameCount + ringFrames, ringFrames));
  }

  const auto frames = static_cast<double>(ringFrames);
  for (int f = 0; f < frameCount; ++f) {
    const std::int64_t i = static_cast<std::int64_t>(linkedReadPos_) % ringFrames;
    const RingPoint at{i, (i + 1) % ringFrames, static_cast<float>(linkedReadPos_ - std::floor(linkedReadPos_))};
    float* frame = buffer + static_cast<std::ptrdiff_t>(f) * ch;
    for (int c = 0; c < ch; ++c) frame[c] = lerpRing(ring, at, ch, c);
    linkedReadPos_ += ratio;
    if (linkedReadPos_ >= frames) linkedReadPos_ -= frames;
  }
}

void AudioEffectDSP::processKeepDurationPitch(float* buffer, int frameCount, double ratio) {
  const int ch = channelCount_;
  const std::int64_t ringFrames = static_cast<std::int64_t>(pitchRing_.size()) / ch;
  if (std::int64_t{grainSize_} * 2 >= ringFrames) return;
  float* ring = pitchRing_.data();
  const auto frames = static_cast<double>(ringFrames);

  for (int f = 0; f < frameCount; ++f) {
    float* frame = buffer + static_cast<std::ptrdiff_t>(f) * ch;
    std::copy_n(frame, ch, ring + pitchWrite_ * ch);

    const float w = grainWindow_[static_cast<std::size_t>(grainFade_)];
    const RingPoint a = ringPoint(grainAPos_, ringFrames);
    const RingPoint b = ringPoint(grainBPos_, ringFrames);
    for (int c = 0; c < ch; ++c) frame[c] = lerpRing(ring, a, ch, c) * w + lerpRing(ring, b, ch, c) * (1 - w);

    pitchWrite_ = pitchWrite_ + 1 == ringFrames ? 0 : pitchWrite_ + 1;
    grainAPos_ += ratio;
    grainBPos_ += ratio;
    if (++grainFade_ >= grainSize_) {
      grainFade_ = 0;
      const auto restart = static_cast<double>((pitchWrite_ - grainSize_ + ringFrames) % ringFrames);
      // w is near 1 here, so in practice grain B restarts each time.
      if (w < 1 - w) {
        grainAPos_ = restart;
      } else {
        grainBPos_ = restart;
      }
    }
    grainAPos_ = wrapped(grainAPos_, frames);
    grainBPos_ = wrapped(grainBPos_, frames);
  }
}

}  // namespace orvane::audio
