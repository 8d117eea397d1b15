#pragma once
// The pace of a keyframe segment: interpolation modes, Bézier timing handles
// on the unit square, and the easing functions with their cubic solver. Pure.

#include <array>
#include <optional>

#include "core/enum_text.hpp"
#include "core/geometry.hpp"
#include "core/hashing.hpp"

namespace orvane::core {

enum class InterpolationMode { linear, hold, easeIn, easeOut, easeInOut, bezier };

template <>
struct EnumTable<InterpolationMode> {
  using M = InterpolationMode;
  static constexpr std::array<EnumEntry<M>, 6> entries{{
      {M::linear, "linear", "Linear"},
      {M::hold, "hold", "Hold"},
      {M::easeIn, "easeIn", "Ease In"},
      {M::easeOut, "easeOut", "Ease Out"},
      {M::easeInOut, "easeInOut", "Ease In & Out"},
      {M::bezier, "bezier", "Bezier"},
  }};
};

// The two inner control points of a timing curve from (0, 0) to (1, 1):
// x is normalised time (expected in 0...1), y normalised value (may overshoot).
struct BezierHandles {
  OVPoint outControl;
  OVPoint inControl;

  static const BezierHandles smooth, decelerate, glide, accelerate, overshoot, linear, anticipate;

  friend bool operator==(const BezierHandles&, const BezierHandles&) = default;
};
inline constexpr BezierHandles BezierHandles::smooth{{0.33, 0.0}, {0.67, 1.0}};
inline constexpr BezierHandles BezierHandles::decelerate{{0.16, 1.0}, {0.3, 1.0}};
inline constexpr BezierHandles BezierHandles::glide{{0.25, 0.9}, {0.2, 1.0}};
inline constexpr BezierHandles BezierHandles::accelerate{{0.6, 0.0}, {0.9, 0.25}};
inline constexpr BezierHandles BezierHandles::overshoot{{0.18, 1.32}, {0.36, 1.0}};
inline constexpr BezierHandles BezierHandles::linear{{0.0, 0.0}, {1.0, 1.0}};
inline constexpr BezierHandles BezierHandles::anticipate{{0.5, -0.45}, {0.75, 0.1}};
inline std::size_t hashValue(const BezierHandles& h) { return hashAll(h.outControl, h.inControl); }

namespace Easing {

// Eased progress of p (clamped to 0...1 first). `easeIn` decelerates into the
// target key and `easeOut` accelerates out of the leading key. `bezier` uses
// the handles, or `BezierHandles::smooth` when there are none.
double apply(InterpolationMode mode, const std::optional<BezierHandles>& handles, double progress);

// y of the unit timing curve at x; 0 at x ≤ 0, 1 at x ≥ 1.
double cubicBezier(double x, double x1, double y1, double x2, double y2);
// The curve parameter t whose x is `x`: Newton first, then bisection.
double solveCurveX(double x, double x1, double x2);
// One coordinate of the curve with end points 0 and 1 at parameter t.
inline double bezierValue(double t, double p1, double p2) {
  const double u = 1 - t;
  return 3 * u * u * t * p1 + 3 * u * t * t * p2 + t * t * t;
}
// Its derivative in t.
inline double bezierSlope(double t, double p1, double p2) {
  const double u = 1 - t;
  return 3 * u * u * p1 + 6 * u * t * (p2 - p1) + 3 * t * t * (1 - p2);
}

}  // namespace Easing

}  // namespace orvane::core
