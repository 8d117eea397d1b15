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
// ±0.05.

#include <array>

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

// The sRGB transfer curve and its inverse, extended to all reals by odd
// symmetry (c < 0 maps to −f(−c)).
float srgbToLinear(float c);
float linearToSrgb(float c);

}  // namespace orvane::render
