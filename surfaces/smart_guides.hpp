#pragma once
// Snapping of a dragged layer to the canvas and to the other layers, by
// edges, centres and equal spacing, and the guides that show why it
// snapped. Pure functions over boxes in composition units (y up): no
// document, no view. The stage calls resolve on every drag tick, applies the
// offset and hands the alignments and spacings to the guide overlay.
// Stateless; any thread.

#include <array>
#include <optional>
#include <vector>

#include "core/geometry.hpp"
#include "core/uuid.hpp"

namespace orvane::surfaces {

struct SmartGuides {
  // Pull of a guide in view points; the caller divides it by the stage scale
  // and passes the result as the tolerance.
  static constexpr double threshold = 8;

  struct Box {
    double minX = 0;
    double maxX = 0;
    double minY = 0;
    double maxY = 0;

    static Box from(const core::OVRect& r) { return {r.x, r.maxX(), r.y, r.maxY()}; }
    double midX() const { return (minX + maxX) * 0.5; }
    double midY() const { return (minY + maxY) * 0.5; }
    // Lower left, lower right, upper right, upper left.
    std::array<core::OVPoint, 4> corners() const {
      return {{{minX, minY}, {maxX, minY}, {maxX, maxY}, {minX, maxY}}};
    }
    Box offsetBy(double dx, double dy) const { return {minX + dx, maxX + dx, minY + dy, maxY + dy}; }
    // The two overlap on the y axis (touching is not overlapping).
    bool sharesRow(const Box& other) const { return minY < other.maxY && other.minY < maxY; }
    // The two overlap on the x axis.
    bool sharesColumn(const Box& other) const { return minX < other.maxX && other.minX < maxX; }

    friend bool operator==(const Box&, const Box&) = default;
  };

  // vertical: guides stand at an x value and the box moves along x;
  // horizontal: guides at a y value, moving along y.
  enum class Axis { vertical, horizontal };
  static Axis crossAxis(Axis a) { return a == Axis::vertical ? Axis::horizontal : Axis::vertical; }

  // The box's extent on an axis, and its low, middle and high values.
  static double low(const Box& b, Axis a) { return a == Axis::vertical ? b.minX : b.minY; }
  static double high(const Box& b, Axis a) { return a == Axis::vertical ? b.maxX : b.maxY; }
  static std::array<double, 3> values(const Box& b, Axis a) {
    return {low(b, a), (low(b, a) + high(b, a)) * 0.5, high(b, a)};
  }

  struct Range {
    double lowerBound = 0;
    double upperBound = 0;
    double length() const { return upperBound - lowerBound; }
    friend bool operator==(const Range&, const Range&) = default;
  };

  // A line at value on axis, drawn from `from` to `to` on the cross axis.
  struct Alignment {
    core::Uuid id = core::Uuid::make();
    Axis axis = Axis::vertical;
    double value = 0;
    double from = 0;
    double to = 0;
  };

  // Equal gaps on axis, marked at `cross` on the cross axis.
  struct Spacing {
    core::Uuid id = core::Uuid::make();
    Axis axis = Axis::vertical;
    std::vector<Range> gaps;
    double cross = 0;
  };

  struct Result {
    core::OVPoint offset;
    std::vector<Alignment> alignments;
    std::vector<Spacing> spacings;

    bool isEmpty() const { return alignments.empty() && spacings.empty(); }
  };

  // The offset that snaps moving (x and y independently) and the guides of
  // the box at its snapped place. The canvas spans (0, 0) to canvas.
  static Result resolve(const Box& moving, const std::vector<Box>& others, const core::OVSize& canvas,
                        double tolerance);

  // --- The steps of resolve ---
  // The nearest alignment within tolerance, else the nearest equal-spacing
  // candidate, else 0.
  static double offset(Axis axis, const Box& moving, const std::vector<Box>& others, const Box& frame,
                       double tolerance);
  static std::optional<double> spacingOffset(Axis axis, const Box& moving, const std::vector<Box>& others,
                                             double tolerance);
  static std::vector<Alignment> alignments(Axis axis, const Box& moved, const std::vector<Box>& others,
                                           const Box& frame);
  static std::vector<Spacing> spacings(Axis axis, const Box& moved, const std::vector<Box>& others);
  // The others that overlap moving on the cross axis: those it could line
  // up with along axis.
  static std::vector<Box> neighbours(const Box& moving, const std::vector<Box>& others, Axis axis);
  // Drops each alignment within 0.5 of an earlier one on the same axis.
  static std::vector<Alignment> dedupe(std::vector<Alignment> alignments);
};

}  // namespace orvane::surfaces
