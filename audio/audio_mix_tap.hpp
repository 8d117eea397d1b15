#pragma once
// The per-track tap through which a layer's echo, reverb and pitch run in
// the audio mix, in the preview and in the export alike. AudioMixTap owns
// one AudioEffectDSP and answers the mix's tap calls with it;
// AudioTapRetention keeps the taps of one assembled composition alive as
// long as the mix that uses them; makeEffectTap is the maker the assembler
// is given.
//
// Threads: prepare and process come from the mixing thread; snapshot and
// setSnapshot from any other (the DSP publishes snapshots without a lock).
// AudioTapRetention belongs to the thread that assembles.

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

class AudioTapRetention {
 public:
  void add(std::shared_ptr<AudioMixTap> tap);
  void removeAll() { taps_.clear(); }
  const std::vector<std::shared_ptr<AudioMixTap>>& taps() const { return taps_; }

 private:
  std::vector<std::shared_ptr<AudioMixTap>> taps_;
};

// The tap maker for the mix: a layer whose audio settings call for
// processing (AudioProperties::needsProcessingTap) gets an AudioMixTap with
// its snapshot, added to retention when one is given; any other layer gets
// none and is mixed untouched.
media::AudioTapMaker makeEffectTap(std::shared_ptr<AudioTapRetention> retention = nullptr);

}  // namespace orvane::audio
