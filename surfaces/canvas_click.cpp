#include "surfaces/canvas_click.hpp"

#include <cmath>

namespace orvane::surfaces {

bool CanvasClick::shouldHandle(const core::OVPoint& at, TimePoint now) {
  if (location) {
    const std::chrono::duration<double> elapsed = now - time;
    const bool later = elapsed.count() >= minimumIntervalSeconds;
    // A NaN distance is not "far": such a click is dropped rather than
    // acted on twice.
    const bool elsewhere = std::hypot(at.x - location->x, at.y - location->y) > minimumDistance;
    if (!later && !elsewhere) return false;
  }
  location = at;
  time = now;
  return true;
}

}  // namespace orvane::surfaces
