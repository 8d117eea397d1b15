#include "surfaces/timeline_metrics.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace orvane::surfaces {

using core::OVTime;

namespace {

// Pointer arithmetic may hand us anything; OVTime wants finite seconds in a
// range its ticks can hold. A billion seconds is past any timeline.
constexpr double kLargestSeconds = 1e9;

OVTime timeFromSeconds(double seconds) {
  if (std::isnan(seconds)) return OVTime::zero;
  return OVTime::fromSeconds(std::clamp(seconds, -kLargestSeconds, kLargestSeconds));
}

// A zoom of zero would divide by zero.
double safeZoom(double pixelsPerSecond) {
  return std::isfinite(pixelsPerSecond) ? std::max(pixelsPerSecond, 0.0001) : 0.0001;
}

constexpr double kMajorTickMinimumWidth = 74;
constexpr double kFrameDetailMinimumWidth = 6;

}  // namespace

double points(TimelineRowHeight height) {
  switch (height) {
    case TimelineRowHeight::compact: return 24;
    case TimelineRowHeight::normal: return 34;
    case TimelineRowHeight::tall: return 52;
  }
  return 34;
}

double TimelineMetrics::contentWidth() const {
  return std::max(duration.seconds() * pixelsPerSecond + trailingPadding, minimumWidth);
}

double TimelineMetrics::xFor(const OVTime& t) const { return t.seconds() * pixelsPerSecond; }

OVTime TimelineMetrics::timeForX(double x) const {
  const double limited = x > 0 ? x : 0;  // NaN counts as the left edge
  return frameRate.snapped(timeFromSeconds(limited / safeZoom(pixelsPerSecond)));
}

double TimelineMetrics::widthFor(const OVTime& d) const {
  return std::max(d.seconds() * pixelsPerSecond, minimumBarWidth);
}

OVTime TimelineMetrics::timeDeltaForWidth(double w) const { return timeFromSeconds(w / safeZoom(pixelsPerSecond)); }

double TimelineMetrics::distanceFrom(const OVTime& a, const OVTime& b) const {
  return std::abs(xFor(a) - xFor(b));
}

TimelineMetrics::SnapResult TimelineMetrics::snap(const OVTime& time, std::span<const SnapTarget> targets,
                                                  bool enabled, double thresholdPoints) const {
  const OVTime frame = frameRate.snapped(time);
  if (!enabled) return {frame, std::nullopt};
  const SnapTarget* best = nullptr;
  double bestDistance = 0;
  for (const SnapTarget& target : targets) {
    const double d = distanceFrom(frame, target.time);
    if (!(d <= thresholdPoints)) continue;
    // Strictly nearer only: on a tie the earlier target keeps its place.
    if (best == nullptr || d < bestDistance) {
      best = &target;
      bestDistance = d;
    }
  }
  if (best == nullptr) return {frame, std::nullopt};
  return {frameRate.snapped(best->time), *best};
}

double TimelineMetrics::majorTickInterval() const {
  const double f = 1.0 / std::max(frameRate.fps(), 1.0);
  const std::array<double, 18> candidates{f,   2 * f, 5 * f, 10 * f, 0.5, 1,    2,    5,    10,
                                          15,  30,    60,    120,    300, 600, 900, 1800, 3600};
  for (double interval : candidates) {
    if (interval * pixelsPerSecond >= kMajorTickMinimumWidth) return interval;
  }
  return candidates.back();
}

bool TimelineMetrics::showsFrameDetail() const {
  return pixelsPerSecond / std::max(frameRate.fps(), 1.0) >= kFrameDetailMinimumWidth;
}

int TimelineMetrics::minorTicksPerMajor() const {
  const double major = majorTickInterval();
  if (showsFrameDetail()) {
    const double frames = std::round(major * std::max(frameRate.fps(), 1.0));
    if (frames >= 2 && frames <= 60) return static_cast<int>(frames);
  }
  // Outside frame detail: steps that read as halves, quarters, fifths or
  // sixths of the interval, whichever divides it into round numbers.
  if (major <= 0.5) return 5;
  if (major == 15 || major == 900) return 3;
  if (major == 30 || major == 1800) return 6;
  if (major == 5 || major == 10 || major == 300 || major == 600) return 5;
  return 4;
}

double TimelineMetrics::clampZoom(double z) {
  if (std::isnan(z)) return minimumZoom;
  return std::min(std::max(z, minimumZoom), maximumZoom);
}

double TimelineMetrics::zoomToFit(const OVTime& duration, double width) {
  if (!duration.isPositive() || !(width > trailingPadding)) return 90;
  return clampZoom((width - trailingPadding) / duration.seconds());
}

}  // namespace orvane::surfaces
