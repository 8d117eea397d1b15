#include "audio/audio_mix_tap.hpp"

#include <algorithm>

namespace orvane::audio {
namespace {

// Scratch for planar blocks, in frames; enough for any device's block.
constexpr int kMinScratchFrames = 4096;
constexpr int kMaxScratchFrames = 1 << 16;

}  // namespace

AudioMixTap::AudioMixTap(const AudioEffectSnapshot& snapshot) { dsp_.update(snapshot); }

void AudioMixTap::prepare(const media::AudioTapFormat& format, int maximumFrames) {
  dsp_.prepare(format.sampleRate, format.channelCount);
  const int frames = std::clamp(maximumFrames, kMinScratchFrames, kMaxScratchFrames);
  scratch_.assign(static_cast<std::size_t>(frames) * static_cast<std::size_t>(dsp_.channelCount()), 0.0f);
}

void AudioMixTap::process(float* interleaved, int frameCount) {
  if (interleaved == nullptr || frameCount < 1) return;
  dsp_.process(interleaved, frameCount);
}

void AudioMixTap::processPlanar(float* const* channels, int channelCount, int frameCount) {
  if (channels == nullptr || frameCount < 1 || channelCount != dsp_.channelCount() || scratch_.empty()) return;
  for (int c = 0; c < channelCount; ++c) {
    if (channels[c] == nullptr) return;
  }
  const int capacity = static_cast<int>(scratch_.size()) / channelCount;
  for (int start = 0; start < frameCount; start += capacity) {
    const int frames = std::min(capacity, frameCount - start);
    for (int f = 0; f < frames; ++f) {
      for (int c = 0; c < channelCount; ++c) scratch_[static_cast<std::size_t>(f * channelCount + c)] = channels[c][start + f];
    }
    dsp_.process(scratch_.data(), frames);
    for (int f = 0; f < frames; ++f) {
      for (int c = 0; c < channelCount; ++c) channels[c][start + f] = scratch_[static_cast<std::size_t>(f * channelCount + c)];
    }
  }
}

media::AudioTapMaker makeEffectTap() {
  return [](const core::Layer& layer) -> std::shared_ptr<media::AudioTrackTap> {
    if (!layer.audio.needsProcessingTap()) return nullptr;
    return std::make_shared<AudioMixTap>(effectSnapshot(layer.audio));
  };
}

}  // namespace orvane::audio
