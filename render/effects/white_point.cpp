#include "render/effects/white_point.hpp"

#include <algorithm>
#include <cmath>

namespace orvane::render {

namespace {

struct Uv {
  double u = 0, v = 0;
};

// Kim et al.'s cubic spline fit of the Planckian locus, in x then y.
core::OVPoint planckian(double kelvin) {
  const double t = std::clamp(kelvin, 1667.0, 25000.0);
  const double t1 = 1e3 / t, t2 = t1 * t1, t3 = t2 * t1;  // in thousands of kelvin, inverted
  const double x = t <= 4000 ? -0.2661239 * t3 - 0.2343589 * t2 + 0.8776956 * t1 + 0.179910
                             : -3.0258469 * t3 + 2.1070379 * t2 + 0.2226347 * t1 + 0.240390;
  const double x2 = x * x, x3 = x2 * x;
  double y;
  if (t <= 2222) {
    y = -1.1063814 * x3 - 1.34811020 * x2 + 2.18555832 * x - 0.20219683;
  } else if (t <= 4000) {
    y = -0.9549476 * x3 - 1.37418593 * x2 + 2.09137015 * x - 0.16748867;
  } else {
    y = 3.0817580 * x3 - 5.87338670 * x2 + 3.75112997 * x - 0.37001483;
  }
  return {x, y};
}

Uv toUv(core::OVPoint p) {
  const double d = -2 * p.x + 12 * p.y + 3;
  return {4 * p.x / d, 6 * p.y / d};
}

core::OVPoint fromUv(Uv p) {
  const double d = 2 * p.u - 8 * p.v + 4;
  return {3 * p.u / d, 2 * p.v / d};
}

std::array<double, 3> product(const Matrix3& m, const std::array<double, 3>& v) {
  return {m[0][0] * v[0] + m[0][1] * v[1] + m[0][2] * v[2], m[1][0] * v[0] + m[1][1] * v[1] + m[1][2] * v[2],
          m[2][0] * v[0] + m[2][1] * v[1] + m[2][2] * v[2]};
}

constexpr Matrix3 kSrgbToXyz{{{0.4124564, 0.3575761, 0.1804375},
                              {0.2126729, 0.7151522, 0.0721750},
                              {0.0193339, 0.1191920, 0.9503041}}};
constexpr Matrix3 kBradford{{{0.8951, 0.2664, -0.1614}, {-0.7502, 1.7135, 0.0367}, {0.0389, -0.0685, 1.0296}}};

std::array<double, 3> xyzOf(core::OVPoint white) {
  return {white.x / white.y, 1.0, (1 - white.x - white.y) / white.y};
}

double srgbDecode(double c) { return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); }
double srgbEncode(double c) { return c <= 0.0031308 ? c * 12.92 : 1.055 * std::pow(c, 1 / 2.4) - 0.055; }

}  // namespace

Matrix3 multiply(const Matrix3& a, const Matrix3& b) {
  Matrix3 m{};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j)
      for (int k = 0; k < 3; ++k) m[i][j] += a[i][k] * b[k][j];
  return m;
}

Matrix3 inverted(const Matrix3& m) {
  const double det = m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
                     m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
                     m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
  Matrix3 r{};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      // The cofactor of (j, i); cyclic indices carry its sign.
      const int r0 = (j + 1) % 3, r1 = (j + 2) % 3, c0 = (i + 1) % 3, c1 = (i + 2) % 3;
      r[i][j] = (m[r0][c0] * m[r1][c1] - m[r0][c1] * m[r1][c0]) / det;
    }
  }
  return r;
}

core::OVPoint whitePointChromaticity(double temperature, double tint) {
  const double t = std::clamp(temperature, 1667.0, 25000.0);
  const Uv on = toUv(planckian(t));
  // The locus' direction by a small step towards higher temperature.
  const Uv ahead = toUv(planckian(std::min(t * 1.001, 25000.0)));
  const Uv behind = toUv(planckian(std::max(t / 1.001, 1667.0)));
  double du = ahead.u - behind.u, dv = ahead.v - behind.v;
  const double length = std::hypot(du, dv);
  du /= length, dv /= length;
  // The normal with falling v points away from green, towards magenta.
  double nu = -dv, nv = du;
  if (nv > 0) nu = -nu, nv = -nv;
  // Past four times the slider's reach the white leaves every gamut.
  const double offset = std::clamp(tint, -600.0, 600.0) / 3000.0;
  return fromUv({on.u + nu * offset, on.v + nv * offset});
}

Matrix3 adaptationMatrix(core::OVPoint fromWhite, core::OVPoint toWhite) {
  const auto from = product(kBradford, xyzOf(fromWhite));
  const auto to = product(kBradford, xyzOf(toWhite));
  const Matrix3 scale{{{to[0] / from[0], 0, 0}, {0, to[1] / from[1], 0}, {0, 0, to[2] / from[2]}}};
  const Matrix3 cone = multiply(multiply(inverted(kBradford), scale), kBradford);
  return multiply(multiply(inverted(kSrgbToXyz), cone), kSrgbToXyz);
}

SrgbCurve::SrgbCurve(double (*exact)(double)) : exact_(exact) {
  for (int i = 0; i <= kSteps + 1; ++i) table_[i] = static_cast<float>(exact(std::min(1.0, double(i) / kSteps)));
}

const SrgbCurve& SrgbCurve::decode() {
  static const SrgbCurve curve(srgbDecode);
  return curve;
}

const SrgbCurve& SrgbCurve::encode() {
  static const SrgbCurve curve(srgbEncode);
  return curve;
}

float SrgbCurve::beyondOne(float c) const {
  const float magnitude = std::fabs(c);
  if (!std::isfinite(magnitude)) return c;  // infinities stay, NaN stays
  const auto v = static_cast<float>(exact_(magnitude));
  return c < 0 ? -v : v;
}

}  // namespace orvane::render
