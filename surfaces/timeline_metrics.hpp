#pragma once
// The mapping between time and x on the timeline and the graph editor:
// positions, widths, ruler ticks, zoom limits and time snapping. A plain
// value built afresh from a window's zoom and the composition whenever a
// view needs it; it holds no view state and is safe on any thread.

#include <optional>
#include <span>

#include "core/frame_rate.hpp"
#include "core/ov_time.hpp"

namespace orvane::surfaces {

// The heights a timeline row can take.
enum class TimelineRowHeight { compact, normal, tall };

// The row's height in points: 24, 34 or 52.
double points(TimelineRowHeight height);

struct TimelineLayout {
  // The height of one expanded property row under a layer.
  static constexpr double propertyRowHeight = 22;
};

struct TimelineMetrics {
  static constexpr double minimumZoom = 2;       // pixels per second
  static constexpr double maximumZoom = 3000;    // pixels per second
  static constexpr double trailingPadding = 240; // points after the end
  static constexpr double defaultSnapThreshold = 7;  // points
  // The narrowest a bar is drawn, so that a very short clip stays visible.
  static constexpr double minimumBarWidth = 2;

  struct SnapTarget {
    enum class Kind { start, end, playhead, marker, workArea, layerEdge };
    core::OVTime time;
    Kind kind = Kind::start;

    friend bool operator==(const SnapTarget&, const SnapTarget&) = default;
  };

  struct SnapResult {
    core::OVTime time;
    std::optional<SnapTarget> target;

    friend bool operator==(const SnapResult&, const SnapResult&) = default;
  };

  double pixelsPerSecond = 90;
  core::OVTime duration;
  core::FrameRate frameRate;
  double minimumWidth = 320;

  // The width of everything the timeline scrolls over.
  double contentWidth() const;
  double xFor(const core::OVTime& t) const;
  // Never before zero; on the frame grid.
  core::OVTime timeForX(double x) const;
  // At least minimumBarWidth.
  double widthFor(const core::OVTime& d) const;
  // Not snapped: a delta of a drag.
  core::OVTime timeDeltaForWidth(double w) const;
  // In points, whatever the order.
  double distanceFrom(const core::OVTime& a, const core::OVTime& b) const;

  // time on the frame grid, pulled to the nearest target within
  // thresholdPoints; equally near targets go to the one listed first.
  // Disabled, only the frame grid applies.
  SnapResult snap(const core::OVTime& time, std::span<const SnapTarget> targets, bool enabled = true,
                  double thresholdPoints = defaultSnapThreshold) const;

  // --- Ruler ---
  // Seconds between labelled ticks: the first candidate at least 74 points wide.
  double majorTickInterval() const;
  // Unlabelled ticks per major interval (the count of spaces between them).
  int minorTicksPerMajor() const;
  // One frame is at least 6 points wide.
  bool showsFrameDetail() const;

  // --- Zoom ---
  static double clampZoom(double z);
  // The zoom that fits duration into width after the trailing padding.
  static double zoomToFit(const core::OVTime& duration, double width);
};

}  // namespace orvane::surfaces
