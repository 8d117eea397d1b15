#include "audio/audio_effect_snapshot.hpp"

#include <algorithm>

#include "core/hashing.hpp"

namespace orvane::audio {

std::size_t hashValue(const AudioEffectSnapshot& s) {
  using core::hashCombine;
  using core::hashValue;
  std::size_t seed = hashValue(s.echoMix);
  hashCombine(seed, hashValue(s.echoDelayMs));
  hashCombine(seed, hashValue(s.echoFeedback));
  hashCombine(seed, hashValue(s.reverbMix));
  hashCombine(seed, hashValue(s.reverbDecay));
  hashCombine(seed, hashValue(s.pitchRatio));
  hashCombine(seed, hashValue(s.pitchMode));
  return seed;
}

AudioEffectSnapshot effectSnapshot(const core::AudioProperties& audio) {
  AudioEffectSnapshot s;
  s.echoMix = audio.echoMix / 100;
  s.echoDelayMs = audio.echoDelayMs;
  s.echoFeedback = std::clamp(audio.echoFeedback / 100, 0.0, 0.95);
  s.reverbMix = audio.reverbMix / 100;
  s.reverbDecay = audio.reverbDecay / 100;
  s.pitchRatio = audio.pitchRatio();
  s.pitchMode = audio.pitchMode;
  return s;
}

}  // namespace orvane::audio
