#pragma once
// White points given as (temperature in kelvin, tint), as the temperature
// and tint effect takes them, and the chromatic adaptation between two of
// them. Pure functions; any thread.
//
// The temperature picks a point on the Planckian locus (the cubic spline
// approximation of Kim et al., 1667 K to 25000 K; temperatures outside are
// held at those ends). The tint moves it off the locus, at right angles to
// it in the CIE 1960 (u, v) plane, by tint / 3000: positive towards
// magenta, negative towards green, so that the slider's ±150 span a Δuv of
// ±0.05 (tints past ±600 count as ±600).

#include <array>
#include <cmath>

#include "core/geometry.hpp"

namespace orvane::render {

using Matrix3 = std::array<std::array<double, 3>, 3>;

Matrix3 multiply(const Matrix3& a, const Matrix3& b);
// The inverse of a non-singular matrix.
Matrix3 inverted(const Matrix3& m);

// The CIE 1931 chromaticity (x, y) of a white point.
core::OVPoint whitePointChromaticity(double temperature, double tint);

// The matrix on linear sRGB (D65) that maps colours seen under the white
// `from` to the same colours seen under `to`: Bradford cone responses scaled
// by the ratio of the two whites (von Kries), both whites at luminance 1.
Matrix3 adaptationMatrix(core::OVPoint fromWhite, core::OVPoint toWhite);

// The sRGB transfer curve (decode) or its inverse (encode), extended to all
// reals by odd symmetry (c < 0 maps to −f(−c)). On 0 ... 1 a table with
// linear interpolation stands in for pow, within 2e-5 of it; past 1 the
// exact curve runs. Built once; any thread may read it.
class SrgbCurve {
 public:
  static const SrgbCurve& decode();
  static const SrgbCurve& encode();

  float operator()(float c) const {
    const float magnitude = std::fabs(c);
    if (!(magnitude <= 1.0f)) return beyondOne(c);
    const float position = magnitude * kSteps;
    const int i = static_cast<int>(position);
    const float v = table_[i] + (table_[i + 1] - table_[i]) * (position - static_cast<float>(i));
    return c < 0 ? -v : v;
  }

 private:
  static constexpr int kSteps = 4096;
  explicit SrgbCurve(double (*exact)(double));
  float beyondOne(float c) const;

  double (*exact_)(double);
  std::array<float, kSteps + 2> table_;
};

inline float srgbToLinear(float c) { return SrgbCurve::decode()(c); }
inline float linearToSrgb(float c) { return SrgbCurve::encode()(c); }

}  // namespace orvane::render
