#pragma once
// The echo, reverb and pitch shift of one audio track, as plain arithmetic
// over interleaved 32-bit float samples, carrying its state from one block
// to the next: a feedback echo of up to two seconds, a Schroeder reverb of
// four combs and two allpasses, and a pitch stage that either resamples
// (pitch and speed together) or crossfades two grains (pitch alone).
//
// Threads: prepare and process belong to the mixing thread. update comes
// from one other thread (the main thread) at any time; the new snapshot is published without a
// lock and taken up at the start of the next block. Everything is allocated
// in prepare/resetBuffers; process allocates nothing.
//
// Until the first prepare all buffers are empty, and process leaves every
// sample as it came.

#include <atomic>
#include <cstdint>
#include <vector>

#include "audio/audio_effect_snapshot.hpp"

namespace orvane::audio {

class AudioEffectDSP {
 public:
  static constexpr double combDelaysMs[4] = {29.7, 37.1, 41.1, 43.7};
  static constexpr double allpassDelaysMs[2] = {5.0, 1.7};

  AudioEffectDSP() = default;
  explicit AudioEffectDSP(const AudioEffectSnapshot& snapshot) { update(snapshot); }
  AudioEffectDSP(const AudioEffectDSP&) = delete;
  AudioEffectDSP& operator=(const AudioEffectDSP&) = delete;

  // Replaces the snapshot as a whole; the buffers and tails stay.
  void update(const AudioEffectSnapshot& snapshot);
  // The latest snapshot given to update.
  AudioEffectSnapshot snapshot() const;

  // Sets the format (at least 8000 Hz and one channel) and clears all state.
  void prepare(double sampleRate, int channelCount);
  void resetBuffers();

  // Works in place on frameCount frames of channelCount() interleaved samples.
  void process(float* buffer, int frameCount);

  // --- State, for inspection ---
  double sampleRate() const { return sampleRate_; }
  int channelCount() const { return channelCount_; }
  std::size_t echoBufferSize() const { return echoBuffer_.size(); }
  std::size_t combBufferSize(int i) const { return combBuffers_[i].size(); }
  std::size_t allpassBufferSize(int i) const { return allpassBuffers_[i].size(); }
  std::size_t pitchRingSize() const { return pitchRing_.size(); }
  int grainSize() const { return grainSize_; }
  std::int64_t pitchWrite() const { return pitchWrite_; }
  double linkedReadPos() const { return linkedReadPos_; }
  double grainAPos() const { return grainAPos_; }
  double grainBPos() const { return grainBPos_; }

 private:
  // A snapshot behind a sequence counter: the writer makes the counter odd,
  // stores the fields, makes it even again; a reader that sees it change
  // keeps the snapshot it had, so the mixing thread never waits.
  struct PublishedSnapshot {
    std::atomic<std::uint32_t> sequence{0};
    std::atomic<double> fields[6] = {0, 180, 0.35, 0, 0.5, 1};
    std::atomic<int> pitchMode{0};
  };

  AudioEffectSnapshot readPublished(const AudioEffectSnapshot& fallback) const;
  // kChannels is the channel count known at compile time (mono and stereo,
  // the common cases), or 0 to take channelCount_.
  template <int kChannels>
  void processEcho(float* buffer, int frameCount, float mix);
  template <int kChannels>
  void processReverbPass(float* buffer, int frameCount, float mix);
  template <int kChannels>
  void processLinkedPitch(float* buffer, int frameCount, double ratio);
  template <int kChannels>
  void processKeepDurationPitch(float* buffer, int frameCount, double ratio);

  PublishedSnapshot published_;
  AudioEffectSnapshot snapshot_;  // the block's snapshot; mixing thread only
  double sampleRate_ = 48000;
  int channelCount_ = 2;
  std::vector<float> echoBuffer_;
  std::int64_t echoWrite_ = 0;
  std::vector<float> combBuffers_[4];
  std::int64_t combIndices_[4] = {};
  std::int64_t combFrames_[4] = {};
  std::vector<float> allpassBuffers_[2];
  std::int64_t allpassIndices_[2] = {};
  std::int64_t allpassFrames_[2] = {};
  std::vector<float> pitchRing_;
  std::int64_t pitchWrite_ = 0;
  double linkedReadPos_ = 0;
  double grainAPos_ = 0;
  double grainBPos_ = 0;
  int grainSize_ = 1024;
  int grainFade_ = 0;
  std::vector<float> grainWindow_;  // the crossfade weight at each grain position
};

}  // namespace orvane::audio
