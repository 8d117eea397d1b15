#pragma once
// The frozen, normalised form of a layer's audio effect settings that the
// effect DSP reads: fractions instead of percentages, a playback ratio
// instead of semitones and cents. A plain value; the assembler compares
// snapshots to tell whether a track's processing changed.

#include <cstddef>

#include "core/layer_parts.hpp"

namespace orvane::audio {

struct AudioEffectSnapshot {
  double echoMix = 0;         // 0 to 1
  double echoDelayMs = 180;   // milliseconds
  double echoFeedback = 0.35; // 0 to 0.95
  double reverbMix = 0;       // 0 to 1
  double reverbDecay = 0.5;   // 0 to 1
  double pitchRatio = 1;      // playback ratio, 1 unchanged
  core::AudioPitchMode pitchMode = core::AudioPitchMode::keepDuration;

  // Every effect off: the DSP leaves samples bit for bit as they are.
  static const AudioEffectSnapshot bypass;

  friend bool operator==(const AudioEffectSnapshot&, const AudioEffectSnapshot&) = default;
};

inline constexpr AudioEffectSnapshot AudioEffectSnapshot::bypass{};

std::size_t hashValue(const AudioEffectSnapshot& s);

// The snapshot of a layer's audio settings.
AudioEffectSnapshot effectSnapshot(const core::AudioProperties& audio);

}  // namespace orvane::audio
