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

// The position is in [0, ringFrames) once wrapped, so its integer part
// needs no modulo.
RingPoint ringPoint(double position, std::int64_t ringFrames) {
  const double p = wrapped(position, static_cast<double>(ringFrames));
  // Not negative, so truncation is the floor (and needs no library call).
  std::int64_t i = static_cast<std::int64_t>(p);
  const auto frac = static_cast<float>(p - static_cast<double>(i));
  if (i >= ringFrames) i -= ringFrames;
  return {i, i + 1 == ringFrames ? 0 : i + 1, frac};
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
      switch (channelCount_) {
        case 1: processLinkedPitch<1>(buffer, frameCount, ratio); break;
        case 2: processLinkedPitch<2>(buffer, frameCount, ratio); break;
        default: processLinkedPitch<0>(buffer, frameCount, ratio); break;
      }
    } else {
      switch (channelCount_) {
        case 1: processKeepDurationPitch<1>(buffer, frameCount, ratio); break;
        case 2: processKeepDurationPitch<2>(buffer, frameCount, ratio); break;
        default: processKeepDurationPitch<0>(buffer, frameCount, ratio); break;
      }
    }
  }
  // The echo's buffer takes the samples before the reverb, so the two run
  // one after the other over the block. While a mix is at or under 0.001
  // its effect costs nothing and its buffers stand still.
  const auto echoMix = static_cast<float>(std::clamp(snapshot_.echoMix, 0.0, 1.0));
  const auto reverbMix = static_cast<float>(std::clamp(snapshot_.reverbMix, 0.0, 1.0));
  if (echoMix > 0.001f && echoBuffer_.size() >= static_cast<std::size_t>(channelCount_)) {
    switch (channelCount_) {
      case 1: processEcho<1>(buffer, frameCount, echoMix); break;
      case 2: processEcho<2>(buffer, frameCount, echoMix); break;
      default: processEcho<0>(buffer, frameCount, echoMix); break;
    }
  }
  if (reverbMix > 0.001f && !combBuffers_[0].empty()) {
    switch (channelCount_) {
      case 1: processReverbPass<1>(buffer, frameCount, reverbMix); break;
      case 2: processReverbPass<2>(buffer, frameCount, reverbMix); break;
      default: processReverbPass<0>(buffer, frameCount, reverbMix); break;
    }
  }
}

namespace {

// A Schroeder reverb: four parallel combs, then two allpasses in series,
// each a buffer of frames × channels with its own index. The indices are
// shared by the channels and move at every call, so with two channels the
// delays run at twice the frame rate and the channels interleave in the
// buffers. That is the intended sound.
//
// Calls go in runs that end where the first index wraps: within a run each
// lane's slot is its run start plus the call's step times channels plus
// the channel, with no wrap to check. Lanes are written out one by one, so
// that they stay in registers.
template <int kChannels>
struct ReverbRun {
  float* c0;
  float* c1;
  float* c2;
  float* c3;
  float* a0;
  float* a1;

  [[gnu::always_inline]] static float comb(float* lane, std::int64_t at, float sample, float decay) {
    const float y = lane[at];
    lane[at] = sample + y * decay;
    return y;
  }
  [[gnu::always_inline]] static float allpass(float* lane, std::int64_t at, float wet) {
    const float y = lane[at];
    lane[at] = wet + y * 0.5f;
    return y - wet;
  }
  [[gnu::always_inline]] float step(std::int64_t at, float sample, float decay) const {
    float sum = comb(c0, at, sample, decay);
    sum += comb(c1, at, sample, decay);
    sum += comb(c2, at, sample, decay);
    sum += comb(c3, at, sample, decay);
    return allpass(a1, at, allpass(a0, at, sum / 4.0f));
  }
};

}  // namespace

template <int kChannels>
void AudioEffectDSP::processEcho(float* buffer, int frameCount, float mix) {
  const int ch = kChannels > 0 ? kChannels : channelCount_;
  const std::int64_t echoFrames = static_cast<std::int64_t>(echoBuffer_.size()) / ch;
  const float dry = 1 - mix;
  // Written so that a non-finite delay lands on one frame, and a delay past
  // the buffer on its whole length.
  double delay = sampleRate_ * snapshot_.echoDelayMs / 1000;
  if (!(delay >= 1)) delay = 1;
  const std::int64_t delayFrames = std::min(static_cast<std::int64_t>(std::min(delay, 1e15)), echoFrames);
  const auto feedback = static_cast<float>(snapshot_.echoFeedback);
  float* echo = echoBuffer_.data();
  std::int64_t write = echoWrite_;
  std::int64_t read = (write + echoFrames - delayFrames) % echoFrames;

  for (int f = 0; f < frameCount; ++f) {
    float* frame = buffer + static_cast<std::ptrdiff_t>(f) * ch;
    float* written = echo + write * ch;
    const float* delayedFrame = echo + read * ch;
    for (int c = 0; c < ch; ++c) {
      const float in = frame[c];
      const float delayed = delayedFrame[c];
      written[c] = in + delayed * feedback;
      frame[c] = in * dry + delayed * mix;
    }
    write = write + 1 == echoFrames ? 0 : write + 1;
    read = read + 1 == echoFrames ? 0 : read + 1;
  }
  echoWrite_ = write;
}

template <int kChannels>
void AudioEffectDSP::processReverbPass(float* buffer, int frameCount, float mix) {
  const int ch = kChannels > 0 ? kChannels : channelCount_;
  const float dry = 1 - mix;
  const auto decay = static_cast<float>(0.55 + 0.4 * snapshot_.reverbDecay);
  std::int64_t* indices[6] = {&combIndices_[0], &combIndices_[1], &combIndices_[2],
                              &combIndices_[3], &allpassIndices_[0], &allpassIndices_[1]};
  const std::int64_t frames[6] = {combFrames_[0], combFrames_[1], combFrames_[2],
                                  combFrames_[3], allpassFrames_[0], allpassFrames_[1]};
  const std::int64_t total = static_cast<std::int64_t>(frameCount) * ch;

  for (std::int64_t n = 0; n < total;) {
    std::int64_t run = total - n;
    for (int i = 0; i < 6; ++i) run = std::min(run, frames[i] - *indices[i]);
    const auto start = [&](int i, std::vector<float>& lane) { return lane.data() + *indices[i] * ch; };
    const ReverbRun<kChannels> r{start(0, combBuffers_[0]),    start(1, combBuffers_[1]),
                                 start(2, combBuffers_[2]),    start(3, combBuffers_[3]),
                                 start(4, allpassBuffers_[0]), start(5, allpassBuffers_[1])};
    // Runs start on any channel: a call's channel is its place in the block.
    for (std::int64_t k = 0; k < run; ++k) {
      const std::int64_t sample = n + k;
      const std::int64_t at = k * ch + (ch == 1 ? 0 : sample % ch);
      const float in = buffer[sample];
      buffer[sample] = in * dry + r.step(at, in, decay) * mix;
    }
    for (int i = 0; i < 6; ++i) {
      *indices[i] += run;
      if (*indices[i] == frames[i]) *indices[i] = 0;
    }
    n += run;
  }
}

template <int kChannels>
void AudioEffectDSP::processLinkedPitch(float* buffer, int frameCount, double ratio) {
  const int ch = kChannels > 0 ? kChannels : channelCount_;
  const std::int64_t ringFrames = static_cast<std::int64_t>(pitchRing_.size()) / ch;
  if (ringFrames <= 4) return;
  float* ring = pitchRing_.data();

  for (int f = 0; f < frameCount; ++f) {
    const float* frame = buffer + static_cast<std::ptrdiff_t>(f) * ch;
    float* slot = ring + pitchWrite_ * ch;
    for (int c = 0; c < ch; ++c) slot[c] = frame[c];
    pitchWrite_ = pitchWrite_ + 1 == ringFrames ? 0 : pitchWrite_ + 1;
  }
  if (linkedReadPos_ == 0) {
    linkedReadPos_ = static_cast<double>(positiveModulo(pitchWrite_ - frameCount + ringFrames, ringFrames));
  }

  const auto frames = static_cast<double>(ringFrames);
  for (int f = 0; f < frameCount; ++f) {
    const RingPoint at = ringPoint(linkedReadPos_, ringFrames);
    float* frame = buffer + static_cast<std::ptrdiff_t>(f) * ch;
    for (int c = 0; c < ch; ++c) frame[c] = lerpRing(ring, at, ch, c);
    linkedReadPos_ += ratio;
    if (linkedReadPos_ >= frames) linkedReadPos_ -= frames;
  }
}

template <int kChannels>
void AudioEffectDSP::processKeepDurationPitch(float* buffer, int frameCount, double ratio) {
  const int ch = kChannels > 0 ? kChannels : channelCount_;
  const std::int64_t ringFrames = static_cast<std::int64_t>(pitchRing_.size()) / ch;
  if (std::int64_t{grainSize_} * 2 >= ringFrames) return;
  float* ring = pitchRing_.data();
  const auto frames = static_cast<double>(ringFrames);

  for (int f = 0; f < frameCount; ++f) {
    float* frame = buffer + static_cast<std::ptrdiff_t>(f) * ch;
    float* slot = ring + pitchWrite_ * ch;
    for (int c = 0; c < ch; ++c) slot[c] = frame[c];

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
