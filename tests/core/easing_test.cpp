// Easing: the six interpolation modes, the Bézier timing presets, and the
// cubic timing-curve solver, checked against a high-precision reference.

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
    if (refCoordinate(mid, x1, x2) < x) lo = mid;
    else hi = mid;
  }
  return (lo + hi) / 2;
}

double refCurve(double x, const BezierHandles& h) {
  const long double t = refParameter(x, h.outControl.x, h.inControl.x);
  return static_cast<double>(refCoordinate(t, h.outControl.y, h.inControl.y));
}

// The solver stops once x is within 1e-6 of the target, so its y may be any
// value the curve takes for an x in [x − 1e-6, x + 1e-6]. Checks y against
// that band (plus float noise).
void expectOnCurve(double y, double x, const BezierHandles& h) {
  const long double tLo = refParameter(x - 1e-6L, h.outControl.x, h.inControl.x);
  const long double tHi = refParameter(x + 1e-6L, h.outControl.x, h.inControl.x);
  long double lo = 1e300L, hi = -1e300L;
  for (int i = 0; i <= 16; ++i) {
    const long double t = tLo + (tHi - tLo) * i / 16;
    const long double v = refCoordinate(t, h.outControl.y, h.inControl.y);
    lo = std::min(lo, v);
    hi = std::max(hi, v);
  }
  EXPECT_GE(y, static_cast<double>(lo) - 1e-9) << "x = " << x << ", reference " << refCurve(x, h);
  EXPECT_LE(y, static_cast<double>(hi) + 1e-9) << "x = " << x << ", reference " << refCurve(x, h);
}

struct NamedHandles {
  const char* name;
  BezierHandles handles;
};

const std::vector<NamedHandles>& presets() {
  static const std::vector<NamedHandles> all = {
      {"smooth", BezierHandles::smooth},         {"decelerate", BezierHandles::decelerate},
      {"glide", BezierHandles::glide},           {"accelerate", BezierHandles::accelerate},
      {"overshoot", BezierHandles::overshoot},   {"linear", BezierHandles::linear},
      {"anticipate", BezierHandles::anticipate},
  };
  return all;
}

double cubic(double x, const BezierHandles& h) {
  return Easing::cubicBezier(x, h.outControl.x, h.outControl.y, h.inControl.x, h.inControl.y);
}

// --- Interpolation mode names ---

TEST(EasingTest, ModesHaveTheirRawTextAndDisplayNames) {
  EXPECT_EQ(rawValue(M::linear), "linear");
  EXPECT_EQ(rawValue(M::hold), "hold");
  EXPECT_EQ(rawValue(M::easeIn), "easeIn");
  EXPECT_EQ(rawValue(M::easeOut), "easeOut");
  EXPECT_EQ(rawValue(M::easeInOut), "easeInOut");
  EXPECT_EQ(rawValue(M::bezier), "bezier");
  EXPECT_EQ(displayName(M::linear), "Linear");
  EXPECT_EQ(displayName(M::hold), "Hold");
  EXPECT_EQ(displayName(M::easeIn), "Ease In");
  EXPECT_EQ(displayName(M::easeOut), "Ease Out");
  EXPECT_EQ(displayName(M::easeInOut), "Ease In & Out");
  EXPECT_EQ(displayName(M::bezier), "Bezier");
}

TEST(EasingTest, ModesReadBackFromRawTextInDeclaredOrder) {
  EXPECT_EQ(fromRaw<M>("easeInOut"), M::easeInOut);
  EXPECT_EQ(fromRaw<M>("hold"), M::hold);
  EXPECT_FALSE(fromRaw<M>("EaseIn").has_value());
  EXPECT_FALSE(fromRaw<M>("Ease In").has_value());
  const auto all = allCases<M>();
  const M expected[] = {M::linear, M::hold, M::easeIn, M::easeOut, M::easeInOut, M::bezier};
  ASSERT_EQ(all.size(), std::size(expected));
  for (std::size_t i = 0; i < all.size(); ++i) EXPECT_EQ(all[i], expected[i]);
}

// --- Presets ---

TEST(EasingTest, PresetsHaveTheirControlPoints) {
  auto expectHandles = [](const BezierHandles& h, double ox, double oy, double ix, double iy) {
    EXPECT_EQ(h.outControl, (OVPoint{ox, oy}));
    EXPECT_EQ(h.inControl, (OVPoint{ix, iy}));
  };
  expectHandles(BezierHandles::smooth, 0.33, 0.0, 0.67, 1.0);
  expectHandles(BezierHandles::decelerate, 0.16, 1.0, 0.3, 1.0);
  expectHandles(BezierHandles::glide, 0.25, 0.9, 0.2, 1.0);
  expectHandles(BezierHandles::accelerate, 0.6, 0.0, 0.9, 0.25);
  expectHandles(BezierHandles::overshoot, 0.18, 1.32, 0.36, 1.0);
  expectHandles(BezierHandles::linear, 0.0, 0.0, 1.0, 1.0);
  expectHandles(BezierHandles::anticipate, 0.5, -0.45, 0.75, 0.1);
}

// --- Easing.apply, mode by mode ---

TEST(EasingTest, LinearPassesProgressThrough) {
  for (double p : {0.0, 0.1, 0.3, 0.5, 0.77, 1.0}) EXPECT_DOUBLE_EQ(Easing::apply(M::linear, std::nullopt, p), p);
}

TEST(EasingTest, HoldStaysAtZeroUntilTheEnd) {
  for (double p : {0.0, 0.001, 0.5, 0.999, 0.9999999}) EXPECT_EQ(Easing::apply(M::hold, std::nullopt, p), 0.0) << p;
  EXPECT_EQ(Easing::apply(M::hold, std::nullopt, 1.0), 1.0);
  EXPECT_EQ(Easing::apply(M::hold, std::nullopt, 1.5), 1.0);
}

TEST(EasingTest, EaseInDeceleratesIntoTheTargetKey) {
  // 1 − (1 − c)³
  EXPECT_NEAR(Easing::apply(M::easeIn, std::nullopt, 0.1), 0.271, 1e-12);
  EXPECT_NEAR(Easing::apply(M::easeIn, std::nullopt, 0.25), 0.578125, 1e-12);
  EXPECT_NEAR(Easing::apply(M::easeIn, std::nullopt, 0.5), 0.875, 1e-12);
  EXPECT_NEAR(Easing::apply(M::easeIn, std::nullopt, 0.9), 0.999, 1e-12);
  // Fast start: ahead of linear everywhere inside the segment.
  EXPECT_GT(Easing::apply(M::easeIn, std::nullopt, 0.2), 0.2);
}

TEST(EasingTest, EaseOutAcceleratesOutOfTheLeadingKey) {
  // c³
  EXPECT_NEAR(Easing::apply(M::easeOut, std::nullopt, 0.1), 0.001, 1e-12);
  EXPECT_NEAR(Easing::apply(M::easeOut, std::nullopt, 0.25), 0.015625, 1e-12);
  EXPECT_NEAR(Easing::apply(M::easeOut, std::nullopt, 0.5), 0.125, 1e-12);
  EXPECT_NEAR(Easing::apply(M::easeOut, std::nullopt, 0.9), 0.729, 1e-12);
  EXPECT_LT(Easing::apply(M::easeOut, std::nullopt, 0.8), 0.8);
}

TEST(EasingTest, EaseInOutIsCubicOnBothHalves) {
  // 4c³ below one half, 1 − (−2c + 2)³ / 2 from one half on.
  EXPECT_NEAR(Easing::apply(M::easeInOut, std::nullopt, 0.1), 0.004, 1e-12);
  EXPECT_NEAR(Easing::apply(M::easeInOut, std::nullopt, 0.25), 0.0625, 1e-12);
  EXPECT_NEAR(Easing::apply(M::easeInOut, std::nullopt, 0.5), 0.5, 1e-12);
  EXPECT_NEAR(Easing::apply(M::easeInOut, std::nullopt, 0.75), 0.9375, 1e-12);
  EXPECT_NEAR(Easing::apply(M::easeInOut, std::nullopt, 0.9), 0.996, 1e-12);
}

TEST(EasingTest, EveryModeStartsAtZeroAndEndsAtOne) {
  for (M mode : allCases<M>()) {
    SCOPED_TRACE(std::string(rawValue(mode)));
    EXPECT_NEAR(Easing::apply(mode, std::nullopt, 0.0), 0.0, 1e-12);
    EXPECT_NEAR(Easing::apply(mode, std::nullopt, 1.0), 1.0, 1e-12);
  }
}

TEST(EasingTest, ProgressIsClampedBeforeEasing) {
  for (M mode : allCases<M>()) {
    SCOPED_TRACE(std::string(rawValue(mode)));
    EXPECT_NEAR(Easing::apply(mode, std::nullopt, -0.5), 0.0, 1e-12);
    EXPECT_NEAR(Easing::apply(mode, std::nullopt, -7), 0.0, 1e-12);
    EXPECT_NEAR(Easing::apply(mode, std::nullopt, 1.5), 1.0, 1e-12);
    EXPECT_NEAR(Easing::apply(mode, std::nullopt, 40), 1.0, 1e-12);
  }
  // Clamped even where the handles would overshoot or anticipate.
  EXPECT_EQ(Easing::apply(M::bezier, BezierHandles::overshoot, 1.2), 1.0);
  EXPECT_EQ(Easing::apply(M::bezier, BezierHandles::anticipate, -0.2), 0.0);
}

TEST(EasingTest, HandlesAreIgnoredUnlessTheModeIsBezier) {
  EXPECT_DOUBLE_EQ(Easing::apply(M::linear, BezierHandles::overshoot, 0.3), 0.3);
  EXPECT_NEAR(Easing::apply(M::easeOut, BezierHandles::decelerate, 0.5), 0.125, 1e-12);
  EXPECT_EQ(Easing::apply(M::hold, BezierHandles::decelerate, 0.5), 0.0);
}

TEST(EasingTest, BezierWithoutHandlesFollowsSmooth) {
  for (double p : {0.05, 0.2, 0.25, 0.5, 0.6, 0.9, 0.99}) {
    SCOPED_TRACE(p);
    const double y = Easing::apply(M::bezier, std::nullopt, p);
    expectOnCurve(y, p, BezierHandles::smooth);
    EXPECT_NEAR(y, Easing::apply(M::bezier, BezierHandles::smooth, p), 1e-12);
  }
  // Smooth is symmetric about the middle: 0.5 eases to 0.5.
  EXPECT_NEAR(Easing::apply(M::bezier, std::nullopt, 0.5), 0.5, 1e-5);
}

TEST(EasingTest, BezierUsesTheKeyframesHandles) {
  for (const auto& [name, h] : presets()) {
    SCOPED_TRACE(name);
    for (double p : {0.1, 0.3, 0.5, 0.7, 0.9}) expectOnCurve(Easing::apply(M::bezier, h, p), p, h);
  }
  // Decelerate is far ahead of smooth at 0.2.
  EXPECT_GT(Easing::apply(M::bezier, BezierHandles::decelerate, 0.2),
            Easing::apply(M::bezier, std::nullopt, 0.2) + 0.3);
}

// --- The curve's coordinate and slope ---

TEST(EasingBezierSolverTest, BezierValueAndSlopeByHand) {
  // 3·¼·½·0.2 + 3·½·¼·0.6 + ⅛
  EXPECT_NEAR(Easing::bezierValue(0.5, 0.2, 0.6), 0.425, 1e-15);
  // 3·¼·0.2 + 6·¼·0.4 + 3·¼·0.4
  EXPECT_NEAR(Easing::bezierSlope(0.5, 0.2, 0.6), 1.05, 1e-15);
  EXPECT_EQ(Easing::bezierValue(0, 0.7, -3), 0.0);
  EXPECT_EQ(Easing::bezierValue(1, 0.7, -3), 1.0);
  EXPECT_NEAR(Easing::bezierSlope(0, 0.25, 0.5), 0.75, 1e-15);
  EXPECT_NEAR(Easing::bezierSlope(1, 0.25, 0.5), 1.5, 1e-15);
}

// --- cubicBezier and solveCurveX ---

TEST(EasingBezierSolverTest, CubicBezierIsZeroAndOneOutsideTheUnitInterval) {
  for (const auto& [name, h] : presets()) {
    SCOPED_TRACE(name);
    EXPECT_EQ(cubic(0, h), 0.0);
    EXPECT_EQ(cubic(-0.3, h), 0.0);
    EXPECT_EQ(cubic(1, h), 1.0);
    EXPECT_EQ(cubic(1.7, h), 1.0);
  }
}

TEST(EasingBezierSolverTest, CubicBezierMatchesADenseReferenceForEveryPreset) {
  for (const auto& [name, h] : presets()) {
    SCOPED_TRACE(name);
    for (int i = 1; i < 100; ++i) expectOnCurve(cubic(i / 100.0, h), i / 100.0, h);
    for (double x : {1e-5, 0.001, 0.999, 0.99999}) expectOnCurve(cubic(x, h), x, h);
  }
}

TEST(EasingBezierSolverTest, CubicBezierMatchesTheReferenceForAssortedHandles) {
  const BezierHandles handles[] = {
      {{0.9, 0.1}, {0.1, 0.9}},  {{0.05, 2.0}, {0.95, -1.0}}, {{1.0, 0.0}, {0.0, 1.0}},
      {{0.0, 1.0}, {1.0, 0.0}},  {{0.42, 0.0}, {1.0, 1.0}},   {{0.7, -0.6}, {0.3, 1.6}},
  };
  for (const auto& h : handles) {
    SCOPED_TRACE(::testing::Message() << "(" << h.outControl.x << ", " << h.outControl.y << ") ("
                                      << h.inControl.x << ", " << h.inControl.y << ")");
    for (int i = 1; i < 200; ++i) expectOnCurve(cubic(i / 200.0, h), i / 200.0, h);
  }
}

TEST(EasingBezierSolverTest, LinearHandlesGiveTheIdentity) {
  for (double x : {0.1, 0.25, 0.5, 0.8}) {
    EXPECT_NEAR(Easing::cubicBezier(x, 1.0 / 3, 1.0 / 3, 2.0 / 3, 2.0 / 3), x, 2e-6);
  }
}

TEST(EasingBezierSolverTest, OvershootRisesAboveOne) {
  // At parameter 0.6 the overshoot curve has x = 0.42336 and y = 1.02816.
  const double y = cubic(0.42336, BezierHandles::overshoot);
  EXPECT_NEAR(y, 1.02816, 2e-5);
  EXPECT_GT(y, 1.0);
  expectOnCurve(y, 0.42336, BezierHandles::overshoot);
}

TEST(EasingBezierSolverTest, AnticipateDipsBelowZero) {
  // At parameter 0.2 the anticipate curve has x = 0.272 and y = −0.1552.
  const double y = cubic(0.272, BezierHandles::anticipate);
  EXPECT_NEAR(y, -0.1552, 2e-5);
  EXPECT_LT(y, 0.0);
}

TEST(EasingBezierSolverTest, SolveCurveXLandsWithinAMillionthOfTheTarget) {
  const double controls[][2] = {{0.33, 0.67}, {0.16, 0.3}, {0.6, 0.9}, {0.18, 0.36},
                                {0.9, 0.1},   {1.0, 0.0},  {0.0, 0.0}, {1.0, 1.0}};
  for (const auto& c : controls) {
    for (int i = 0; i <= 100; ++i) {
      const double x = i / 100.0;
      const double t = Easing::solveCurveX(x, c[0], c[1]);
      const long double reached = refCoordinate(t, c[0], c[1]);
      EXPECT_LT(std::fabs(static_cast<double>(reached) - x), 1e-6)
          << "x1 = " << c[0] << ", x2 = " << c[1] << ", x = " << x << ", t = " << t;
      EXPECT_GE(t, -1e-6);
      EXPECT_LE(t, 1 + 1e-6);
    }
  }
}

TEST(EasingBezierSolverTest, FlatSlopeAtTheStartFallsBackToBisection) {
  // With x1 = x2 = 0 the curve's x is t³, whose slope vanishes near t = 0:
  // starting from t = x the first Newton step meets a slope below 1e-6.
  for (double x : {1e-4, 2e-5, 5e-4, 0.3, 0.9}) {
    const double t = Easing::solveCurveX(x, 0, 0);
    EXPECT_LT(std::fabs(t * t * t - x), 1e-6) << "x = " << x << ", t = " << t;
    EXPECT_NEAR(t, std::cbrt(x), 2e-3) << "x = " << x;
  }
  // y follows the curve with the same handles: (0, 0) and (0, 1).
  const BezierHandles flat{{0, 0}, {0, 1}};
  for (double x : {1e-4, 3e-4, 0.01, 0.5}) {
    expectOnCurve(Easing::cubicBezier(x, 0, 0, 0, 1), x, flat);
    expectOnCurve(Easing::apply(M::bezier, flat, x), x, flat);
  }
}

TEST(EasingBezierSolverTest, FlatSlopeInTheMiddleStillConverges) {
  // x1 = 1, x2 = 0: x(t) = 4(t − ½)³ + ½, flat at the middle.
  for (double x : {0.2, 0.45, 0.5, 0.51, 0.55, 0.8}) {
    const double t = Easing::solveCurveX(x, 1, 0);
    const double expected = 0.5 + std::cbrt((x - 0.5) / 4);
    EXPECT_NEAR(t, expected, 1e-2) << "x = " << x;
    EXPECT_LT(std::fabs(4 * std::pow(t - 0.5, 3) + 0.5 - x), 1e-6) << "x = " << x << ", t = " << t;
  }
}

}  // namespace
}  // namespace orvane::core
