#include "media/audio_mix.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace orvane::media {

PanGains panGains(double pan) {
  const double position = std::isfinite(pan) ? std::clamp(pan / 100.0, -1.0, 1.0) : 0.0;
  const double angle = (position + 1.0) * std::numbers::pi / 4.0;
  return {static_cast<float>(std::numbers::sqrt2 * std::cos(angle)),
          static_cast<float>(std::numbers::sqrt2 * std::sin(angle))};
}

void AudioMixInputParameters::setVolumeRamp(float startVolume, float endVolume, const core::OVTimeRange& range) {
  ramps.push_back({startVolume, endVolume, range});
}

float AudioMixInputParameters::volumeAt(const core::OVTime& t) const {
  float volume = initialVolume;
  for (const VolumeRamp& ramp : ramps) {
    if (t < ramp.timeRange.start) break;
    if (t >= ramp.timeRange.end()) {
      volume = ramp.endVolume;
      continue;
    }
    const double length = ramp.timeRange.duration.seconds();
    const double share = length > 0 ? (t - ramp.timeRange.start).seconds() / length : 1.0;
    return ramp.startVolume + static_cast<float>(share) * (ramp.endVolume - ramp.startVolume);
  }
  return volume;
}

void AudioMixInputParameters::volumesInto(const core::OVTime& t, double sampleRate, std::span<float> out) const {
  if (out.empty()) return;
  if (ramps.empty()) {
    std::ranges::fill(out, initialVolume);
    return;
  }
  // Per frame the line of the ramp in force; ramps last 0.1 s, so the ramp
  // search runs a few times per block rather than once per sample.
  const double start = t.seconds();
  std::size_t i = 0;
  while (i < out.size()) {
    const core::OVTime at = core::OVTime::fromSeconds(start + static_cast<double>(i) / sampleRate);
    const auto ramp = std::ranges::find_if(ramps, [&](const VolumeRamp& r) { return r.timeRange.contains(at); });
    if (ramp == ramps.end()) {
      out[i++] = volumeAt(at);
      continue;
    }
    const double rampStart = ramp->timeRange.start.seconds();
    const double rampLength = ramp->timeRange.duration.seconds();
    const double rampEnd = rampStart + rampLength;
    const float span = ramp->endVolume - ramp->startVolume;
    const std::size_t first = i;
    for (; i < out.size(); ++i) {
      const double seconds = start + static_cast<double>(i) / sampleRate;
      if (seconds >= rampEnd) break;
      const double share = std::clamp((seconds - rampStart) / rampLength, 0.0, 1.0);
      out[i] = ramp->startVolume + static_cast<float>(share) * span;
    }
    if (i == first) out[i++] = ramp->endVolume;  // rounding put this frame on the ramp's end
  }
}

PanGains AudioMixInputParameters::panGainsAt(const core::OVTime& t) const {
  return panGains(pan.doubleValueAt(t + layerTimeOffset, 0));
}

const AudioMixInputParameters* AudioMix::parametersFor(std::int32_t trackID) const {
  const auto found = std::ranges::find(inputParameters, trackID, &AudioMixInputParameters::trackID);
  return found == inputParameters.end() ? nullptr : &*found;
}

void addPannedTrack(std::span<float> mix, std::span<const float> track, std::span<const float> volumes,
                    PanGains pan) {
  const std::size_t frames = std::min({volumes.size(), mix.size() / 2, track.size() / 2});
  for (std::size_t i = 0; i < frames; ++i) {
    mix[2 * i] += track[2 * i] * volumes[i] * pan.left;
    mix[2 * i + 1] += track[2 * i + 1] * volumes[i] * pan.right;
  }
}

}  // namespace orvane::media
