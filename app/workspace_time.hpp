#pragma once
// Frame arithmetic of the workspace that must not trip over a composition
// read from a damaged file: a frame rate of zero stops the program at its
// first use, so every view asks first. Pure functions; any thread.

#include <optional>

#include "core/composition.hpp"

namespace orvane::app {

inline bool hasValidFrameRate(const core::Composition& composition) {
  return composition.frameRate.numerator > 0 && composition.frameRate.denominator > 0;
}

// The playhead on its frame; none when the rate is not valid.
inline std::optional<core::OVTime> playheadFrameTime(const core::Composition& composition) {
  if (!hasValidFrameRate(composition)) return std::nullopt;
  return composition.frameRate.snapped(composition.playheadTime);
}

}  // namespace orvane::app
