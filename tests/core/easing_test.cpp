// Easing: the six interpolation modes and the cubic timing-curve solver,
// checked against hand-computed values and a high-precision reference.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "core/easing.hpp"
#include "core/enum_text.hpp"

namespace orvane::core {
namespace {

using M = InterpolationMode;

// --- Reference timing curve, in long double, independent of the solver ---

long double refCoordinate(long double t, long double p1, long double p2) {
  const long double u = 1 - t;
  return 3 * u * u * t * p1 + 3 * u * t * t * p2 + t * t * t;
}

// The parameter whose x is `x`, by 200 rounds of bisection on a curve whose x
// rises monotonically (control x values within 0...1).
long double refParameter(long double x, long double x1, long double x2) {
  long double lo = 0, hi = 1;
  for (int i = 0; i < 200; ++i) {
    const long double mid = (lo + hi) / 2;
    (refCoordinate(mid, x1, x2) < x ? lo : hi) = mid;
  }
  return (lo + hi) / 2;
}

// The solver stops once x is within 1e-6 of the target, so its y may be any
// value the curve takes for an x in [x − 1e-6, x + 1e-6]. Checks y against
// that band (plus float noise).
void expectOnCurve(double y, double x, const BezierHandles& h) {
  const long double tLo = refParameter(x - 1e-6L, h.outControl.x, h.inControl.x);
  const long double tHi = refParameter(x + 1e-6L, h.outControl.x, h.inControl.x);
  long double lo = 1e300L, hi = -1e300L;
  for (int i = 0; i <= 16; ++i) {
    const long double v = refCoordinate(tLo + (tHi - tLo) * i / 16, h.outControl.y, h.inControl.y);
    lo = std::min(lo, v);
    hi = std::max(hi, v);
  }
  EXPECT_GE(y, static_cast<double>(lo) - 1e-9) << "x = " << x;
  EXPECT_LE(y, static_cast<double>(hi) + 1e-9) << "x = " << x;
}

// The presets and some extreme shapes: S-curves, overshoot both ways, corners,
// and a start so flat that Newton's method cannot take the first step.
const BezierHandles kCurves[] = {
    BezierHandles::smooth,       BezierHandles::decelerate, BezierHandles::glide,      BezierHandles::accelerate,
    BezierHandles::overshoot,    BezierHandles::linear,     BezierHandles::anticipate, {{0.9, 0.1}, {0.1, 0.9}},
    {{0.05, 2.0}, {0.95, -1.0}}, {{1.0, 0.0}, {0.0, 1.0}},  {{0.0, 1.0}, {1.0, 0.0}},  {{0.42, 0.0}, {1.0, 1.0}},
    {{0.7, -0.6}, {0.3, 1.6}},   {{0.0, 0.0}, {0.0, 1.0}}};

double cubic(double x, const BezierHandles& h) {
  return Easing::cubicBezier(x, h.outControl.x, h.outControl.y, h.inControl.x, h.inControl.y);
}

::testing::Message describe(const BezierHandles& h) {
  return ::testing::Message() << "(" << h.outControl.x << ", " << h.outControl.y << ") (" << h.inControl.x << ", "
                              << h.inControl.y << ")";
}

// --- Easing.apply ---

TEST(EasingTest, ModesReadBackFromTheirRawText) {
  EXPECT_EQ(rawValue(M::easeInOut), "easeInOut");
  for (M mode : allCases<M>()) EXPECT_EQ(fromRaw<M>(rawValue(mode)), mode);
  EXPECT_FALSE(fromRaw<M>("Ease In").has_value());
}

TEST(EasingTest, ModesGiveHandComputedValues) {
  // easeIn decelerates into the target key, 1 − (1 − c)³; easeOut accelerates
  // out of the leading key, c³; easeInOut is 4c³ below one half and
  // 1 − (2 − 2c)³ / 2 from there. Handles count only for bezier.
  struct Case {
    M mode;
    double progress, expected;
    std::optional<BezierHandles> handles = std::nullopt;
  };
  const Case cases[] = {{M::linear, 0.77, 0.77},       {M::hold, 0.5, 0},          {M::hold, 0.9999999, 0},
                        {M::easeIn, 0.1, 0.271},       {M::easeIn, 0.5, 0.875},    {M::easeOut, 0.1, 0.001},
                        {M::easeOut, 0.9, 0.729},      {M::easeInOut, 0.1, 0.004}, {M::easeInOut, 0.5, 0.5},
                        {M::easeInOut, 0.75, 0.9375},  {M::linear, 0.3, 0.3, BezierHandles::overshoot},
                        {M::easeOut, 0.5, 0.125, BezierHandles::decelerate},
                        {M::hold, 0.5, 0, BezierHandles::decelerate}};
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::Message() << rawValue(c.mode) << " at " << c.progress);
    EXPECT_NEAR(Easing::apply(c.mode, c.handles, c.progress), c.expected, 1e-12);
  }
}

TEST(EasingTest, EveryModeRunsFromZeroToOneWithProgressClamped) {
  for (M mode : allCases<M>()) {
    SCOPED_TRACE(std::string(rawValue(mode)));
    for (double p : {-0.5, 0.0}) EXPECT_NEAR(Easing::apply(mode, std::nullopt, p), 0.0, 1e-12) << p;
    for (double p : {1.0, 40.0}) EXPECT_NEAR(Easing::apply(mode, std::nullopt, p), 1.0, 1e-12) << p;
  }
  // Clamped even where the handles would overshoot or anticipate.
  EXPECT_EQ(Easing::apply(M::bezier, BezierHandles::overshoot, 1.2), 1.0);
  EXPECT_EQ(Easing::apply(M::bezier, BezierHandles::anticipate, -0.2), 0.0);
}

TEST(EasingTest, BezierFollowsTheHandlesOrSmoothWithoutThem) {
  for (double p : {0.05, 0.2, 0.5, 0.9, 0.99}) {
    SCOPED_TRACE(p);
    expectOnCurve(Easing::apply(M::bezier, std::nullopt, p), p, BezierHandles::smooth);
    expectOnCurve(Easing::apply(M::bezier, BezierHandles::decelerate, p), p, BezierHandles::decelerate);
  }
}

// --- The curve and its solver ---

TEST(EasingBezierSolverTest, BezierValueAndSlopeByHand) {
  EXPECT_NEAR(Easing::bezierValue(0.5, 0.2, 0.6), 0.425, 1e-15);  // 3·¼·½·0.2 + 3·½·¼·0.6 + ⅛
  EXPECT_NEAR(Easing::bezierSlope(0.5, 0.2, 0.6), 1.05, 1e-15);   // 3·¼·0.2 + 6·¼·0.4 + 3·¼·0.4
  EXPECT_EQ(Easing::bezierValue(1, 0.7, -3), 1.0);
  EXPECT_NEAR(Easing::bezierSlope(0, 0.25, 0.5), 0.75, 1e-15);
  EXPECT_NEAR(Easing::bezierSlope(1, 0.25, 0.5), 1.5, 1e-15);
}

TEST(EasingBezierSolverTest, CubicBezierMatchesTheReferenceAndIsZeroOrOneOutside) {
  for (const auto& h : kCurves) {
    SCOPED_TRACE(describe(h));
    for (int i = 1; i < 200; ++i) expectOnCurve(cubic(i / 200.0, h), i / 200.0, h);
    for (double x : {1e-5, 1e-4, 3e-4, 0.999, 0.99999}) expectOnCurve(cubic(x, h), x, h);
    for (double x : {-0.3, 0.0}) EXPECT_EQ(cubic(x, h), 0.0) << x;
    for (double x : {1.0, 1.7}) EXPECT_EQ(cubic(x, h), 1.0) << x;
  }
}

TEST(EasingBezierSolverTest, SolveCurveXLandsWithinAMillionthEvenWhereTheSlopeIsFlat) {
  // x1 = x2 = 0: x(t) = t³, flat at the start, so the first Newton step from
  // t = x meets a slope below 1e-6. x1 = 1, x2 = 0: x(t) = 4(t − ½)³ + ½, flat
  // in the middle.
  const double controls[][2] = {{0.33, 0.67}, {0.16, 0.3}, {0.6, 0.9}, {0.18, 0.36},
                                {0.9, 0.1},   {1.0, 0.0},  {0.0, 0.0}, {1.0, 1.0}};
  std::vector<double> xs = {2e-5, 1e-4, 5e-4, 0.495, 0.505};
  for (int i = 0; i <= 100; ++i) xs.push_back(i / 100.0);
  for (const auto& [x1, x2] : controls) {
    for (double x : xs) {
      const double t = Easing::solveCurveX(x, x1, x2);
      EXPECT_LT(std::fabs(static_cast<double>(refCoordinate(t, x1, x2)) - x), 1e-6)
          << "x1 = " << x1 << ", x2 = " << x2 << ", x = " << x << ", t = " << t;
      EXPECT_GE(t, -1e-6);
      EXPECT_LE(t, 1 + 1e-6);
    }
  }
}

}  // namespace
}  // namespace orvane::core
