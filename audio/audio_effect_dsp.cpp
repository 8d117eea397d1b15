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
      processLinkedPitch(buffer, frameCount, ratio);
    } else {
      switch (channelCount_) {
        case 1: processKeepDurationPitch<1>(buffer, frameCount, ratio); break;
        case 2: processKeepDurationPitch<2>(buffer, frameCount, ratio); break;
        default: processKeepDurationPitch<0>(buffer, frameCount, ratio); break;
      }
    }
  }
  switch (channelCount_) {
    case 1: processEchoAndReverb<1>(buffer, frameCount); break;
    case 2: processEchoAndReverb<2>(buffer, frameCount); break;
    default: processEchoAndReverb<0>(buffer, frameCount); break;
  }
}

namespace {

// One comb or allpass of the reverb, held in locals for one block so that
// the per-sample work stays in registers; written back at the block's end.
struct ReverbLane {
  float* buffer;
  std::int64_t index;
  std::int64_t frames;
};

// The comb's output; the input and its feedback go in. The index moves on
// at every call.
inline float comb(ReverbLane& lane, int channels, int channel, float sample, float decay) {
  float& slot = lane.buffer[lane.index * channels + channel];
  const float y = slot;
  slot = sample + y * decay;
  lane.index = lane.index + 1 == lane.frames ? 0 : lane.index + 1;
  return y;
}

inline float allpass(ReverbLane& lane, int channels, int channel, float wet) {
  float& slot = lane.buffer[lane.index * channels + channel];
  const float y = slot;
  slot = wet + y * 0.5f;
  lane.index = lane.index + 1 == lane.frames ? 0 : lane.index + 1;
  return y - wet;
}

// A Schroeder reverb: four parallel combs, then two allpasses in series.
// The indices are shared by the channels and move at every call, so with
// two channels the delays run at twice the frame rate and the channels
// interleave in the buffers. That is the intended sound. Written out lane
// by lane: as loops over arrays the lanes would live in memory.
struct Reverb {
  ReverbLane c0, c1, c2, c3, a0, a1;

  float step(float sample, int channels, int channel, float decay) {
    float sum = comb(c0, channels, channel, sample, decay);
    sum += comb(c1, channels, channel, sample, decay);
    sum += comb(c2, channels, channel, sample, decay);
    sum += comb(c3, channels, channel, sample, decay);
    const float wet = allpass(a0, channels, channel, sum / 4.0f);
    return allpass(a1, channels, channel, wet);
  }
};

}  // namespace

template <int kChannels>
void AudioEffectDSP::processEchoAndReverb(float* buffer, int frameCount) {
  const int ch = kChannels > 0 ? kChannels : channelCount_;
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
  std::int64_t echoWrite = echoWrite_;
  std::int64_t echoRead = echoOn ? (echoWrite + echoFrames - delayFrames) % echoFrames : 0;

  const auto lane = [&](std::vector<float>& buffer, std::int64_t index, std::int64_t frames) {
    return ReverbLane{buffer.data(), index, frames};
  };
  Reverb reverb{lane(combBuffers_[0], combIndices_[0], combFrames_[0]),
                lane(combBuffers_[1], combIndices_[1], combFrames_[1]),
                lane(combBuffers_[2], combIndices_[2], combFrames_[2]),
                lane(combBuffers_[3], combIndices_[3], combFrames_[3]),
                lane(allpassBuffers_[0], allpassIndices_[0], allpassFrames_[0]),
                lane(allpassBuffers_[1], allpassIndices_[1], allpassFrames_[1])};

  for (int f = 0; f < frameCount; ++f) {
    float* frame = buffer + static_cast<std::ptrdiff_t>(f) * ch;
    for (int c = 0; c < ch; ++c) {
      float out = frame[c];
      if (echoOn) {
        const float delayed = echo[echoRead * ch + c];
        echo[echoWrite * ch + c] = out + delayed * feedback;
        out = out * echoDry + delayed * echoMix;
      }
      if (reverbOn) {
        const float wet = reverb.step(out, ch, c, decay);
        out = out * reverbDry + wet * reverbMix;
      }
      frame[c] = out;
    }
    // While the echo is off its buffer stands still.
    if (echoOn) {
      echoWrite = echoWrite + 1 == echoFrames ? 0 : echoWrite + 1;
      echoRead = echoRead + 1 == echoFrames ? 0 : echoRead + 1;
    }
  }

  echoWrite_ = echoWrite;
  const ReverbLane* lanes[6] = {&reverb.c0, &reverb.c1, &reverb.c2, &reverb.c3, &reverb.a0, &reverb.a1};
  for (int i = 0; i < 4; ++i) combIndices_[i] = lanes[i]->index;
  for (int i = 0; i < 2; ++i) allpassIndices_[i] = lanes[4 + i]->index;
}

void AudioEffectDSP::processLinkedPitch(float* buffer, int frameCount, double ratio) {
  const int ch = channelCount_;
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
