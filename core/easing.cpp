#include "core/easing.hpp"

#include <algorithm>
#include <cmath>

namespace orvane::core::Easing {

double apply(InterpolationMode mode, const std::optional<BezierHandles>& handles, double progress) {
  const double c = std::clamp(progress, 0.0, 1.0);
  switch (mode) {
    case InterpolationMode::linear: return c;
    case InterpolationMode::hold: return c >= 1 ? 1 : 0;
    case InterpolationMode::easeIn: {
      const double u = 1 - c;
      return 1 - u * u * u;
    }
    case InterpolationMode::easeOut: return c * c * c;
    case InterpolationMode::easeInOut: {
      if (c < 0.5) return 4 * c * c * c;
      const double u = -2 * c + 2;
      return 1 - (u * u * u) / 2;
    }
    case InterpolationMode::bezier: {
      const BezierHandles& h = handles ? *handles : BezierHandles::smooth;
      return cubicBezier(c, h.outControl.x, h.outControl.y, h.inControl.x, h.inControl.y);
    }
  }
  return c;
}

double cubicBezier(double x, double x1, double y1, double x2, double y2) {
  if (x <= 0) return 0;
  if (x >= 1) return 1;
  return bezierValue(solveCurveX(x, x1, x2), y1, y2);
}

double solveCurveX(double x, double x1, double x2) {
  constexpr double kEpsilon = 0.000001;
  double t = x;
  for (int round = 0; round < 8; ++round) {
    const double err = bezierValue(t, x1, x2) - x;
    if (std::fabs(err) < kEpsilon) return t;
    const double slope = bezierSlope(t, x1, x2);
    if (std::fabs(slope) < kEpsilon) break;
    t -= err / slope;
  }
  // Bisection from scratch: the Newton estimate is not trusted once it failed.
  double lo = 0, hi = 1;
  t = x;
  while (lo < hi) {
    const double v = bezierValue(t, x1, x2);
    if (std::fabs(v - x) < kEpsilon) return t;
    if (v < x) lo = t;
    else hi = t;
    const double next = (hi + lo) / 2;
    if (std::fabs(next - t) < 0.000000001) return t;
    t = next;
  }
  return t;
}

}  // namespace orvane::core::Easing
