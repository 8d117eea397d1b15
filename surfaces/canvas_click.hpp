#pragma once
// The last click the stage acted on. One physical click reaches the stage
// twice, through its gesture recogniser and through the event monitor that
// sees clicks on empty canvas; a click close to the last handled one in
// both time and place is that same click and is dropped. Plain value, kept
// by the stage; main thread.

#include <chrono>
#include <optional>

#include "core/geometry.hpp"

namespace orvane::surfaces {

struct CanvasClick {
  using TimePoint = std::chrono::steady_clock::time_point;

  // A click counts as new this long after the last handled one ...
  static constexpr double minimumIntervalSeconds = 0.3;
  // ... or this many view points away from it.
  static constexpr double minimumDistance = 3;

  std::optional<core::OVPoint> location;  // none before the first click
  TimePoint time;

  // Whether a click at `at`, `now`, is a new one; if it is, it becomes the
  // last handled click.
  bool shouldHandle(const core::OVPoint& at, TimePoint now);
};

}  // namespace orvane::surfaces
