#pragma once
// The per-track tap through which a layer's echo, reverb and pitch run in
// the audio mix, in the preview and in the export alike. AudioMixTap owns
// one AudioEffectDSP and answers the mix's tap calls with it;
// makeEffectTap is the maker the assembler is given (the assembled
// composition keeps the taps it made alive, in its media::AudioTapRetention).
//
// Threads: prepare and process come from the mixing thread; snapshot and
// setSnapshot from any other (the DSP publishes snapshots without a lock).

#include <memory>
#include <vector>

#include "audio/audio_effect_dsp.hpp"
#include "media/audio_tap.hpp"

namespace orvane::audio {

class AudioMixTap final : public media::AudioTrackTap {
 public:
  explicit AudioMixTap(const AudioEffectSnapshot& snapshot = AudioEffectSnapshot::bypass);

  AudioEffectDSP& dsp() { return dsp_; }
  AudioEffectSnapshot snapshot() const { return dsp_.snapshot(); }
  void setSnapshot(const AudioEffectSnapshot& snapshot) { dsp_.update(snapshot); }

  // Clears the effect tails: each preparation starts from silence.
  void prepare(const media::AudioTapFormat& format, int maximumFrames) override;
  void process(float* interleaved, int frameCount) override;
  // One buffer per channel: interleaved through a scratch list made in
  // prepare, processed, and copied back. Longer blocks go in pieces.
  void processPlanar(float* const* channels, int channelCount, int frameCount);

 private:
  AudioEffectDSP dsp_;
  std::vector<float> scratch_;  // mixing thread only
};

// The tap maker for the mix: a layer whose audio settings call for
// processing (AudioProperties::needsProcessingTap) gets an AudioMixTap with
// its snapshot; any other layer gets none and is mixed untouched.
media::AudioTapMaker makeEffectTap();

}  // namespace orvane::audio
