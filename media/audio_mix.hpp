#pragma once
// How the audio tracks of a timed composition are mixed: per track a volume
// curve (one constant, or linear ramps), a pan, and an optional processing
// tap that sees the track's samples before they are panned and summed to
// stereo. Built by the assembler, read by the reader's mixdown; plain values
// apart from the taps, which the mixing thread alone drives.

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "core/animated_property.hpp"
#include "core/ov_time.hpp"
#include "media/audio_tap.hpp"

namespace orvane::media {

struct VolumeRamp {
  float startVolume = 1;
  float endVolume = 1;
  core::OVTimeRange timeRange;  // composition time

  friend bool operator==(const VolumeRamp&, const VolumeRamp&) = default;
};

// Left and right gains of a pan position.
struct PanGains {
  float left = 1;
  float right = 1;
};

// Equal power from -100 (left) to 100 (right), scaled so that the centre
// leaves both channels as they are: left² + right² is 2 everywhere.
// Out-of-range and non-finite positions count as their nearest end or 0.
PanGains panGains(double pan);

struct AudioMixInputParameters {
  std::int32_t trackID = 0;
  // Volume from a moment on until the first ramp; 1 when never set.
  float initialVolume = 1;
  std::vector<VolumeRamp> ramps;  // in time order, never overlapping
  // The layer's pan, percent, on its own composition's clock; that clock
  // reads composition time + layerTimeOffset.
  core::AnimatedProperty pan = core::AnimatedProperty::double_(0);
  core::OVTime layerTimeOffset;
  // Runs on the track's samples before the mixdown; none for most tracks.
  std::shared_ptr<AudioTrackTap> audioTapProcessor;

  void setVolume(float volume) { initialVolume = volume; }
  // Appended; ramps must come in time order.
  void setVolumeRamp(float startVolume, float endVolume, const core::OVTimeRange& range);

  // The volume at composition time t: the ramp's line inside a ramp, the
  // end of the last ramp after it, initialVolume before any.
  float volumeAt(const core::OVTime& t) const;
  // frameCount volumes from t on, one per frame at sampleRate, into out.
  void volumesInto(const core::OVTime& t, double sampleRate, std::span<float> out) const;
  PanGains panGainsAt(const core::OVTime& t) const;
};

struct AudioMix {
  std::vector<AudioMixInputParameters> inputParameters;

  const AudioMixInputParameters* parametersFor(std::int32_t trackID) const;
};

// Adds frames of interleaved stereo `track`, times the per-frame volumes and
// the pan, into interleaved stereo `mix`. Sizes: mix and track 2 × volumes.
void addPannedTrack(std::span<float> mix, std::span<const float> track, std::span<const float> volumes,
                    PanGains pan);

}  // namespace orvane::media
