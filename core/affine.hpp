#pragma once
// A 2-D affine transform as a 2 × 3 matrix in the row-vector convention:
//   [x' y' 1] = [x y 1] · | a  b  0 |
//                         | c  d  0 |
//                         | tx ty 1 |
// so x' = a·x + c·y + tx and y' = b·x + d·y + ty. Plain value.

#include <algorithm>
#include <cmath>

#include "core/geometry.hpp"

namespace orvane::core {

struct Affine2D {
  double a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;

  static constexpr Affine2D identity() { return {}; }
  static Affine2D makeTranslation(double x, double y) { return {1, 0, 0, 1, x, y}; }
  static Affine2D makeScale(double sx, double sy) { return {sx, 0, 0, sy, 0, 0}; }
  static Affine2D makeRotation(double radians) {
    const double cs = std::cos(radians), sn = std::sin(radians);
    return {cs, sn, -sn, cs, 0, 0};
  }

  // first then second: the product first · second of the row-vector matrices.
  static Affine2D concatenating(const Affine2D& first, const Affine2D& second) {
    return {first.a * second.a + first.b * second.c,
            first.a * second.b + first.b * second.d,
            first.c * second.a + first.d * second.c,
            first.c * second.b + first.d * second.d,
            first.tx * second.a + first.ty * second.c + second.tx,
            first.tx * second.b + first.ty * second.d + second.ty};
  }
  // The platform's "translatedBy"/"rotated"/"scaledBy": the new step applies
  // first (innermost), then this transform.
  Affine2D translatedBy(double x, double y) const { return concatenating(makeTranslation(x, y), *this); }
  Affine2D rotatedBy(double radians) const { return concatenating(makeRotation(radians), *this); }
  Affine2D scaledBy(double sx, double sy) const { return concatenating(makeScale(sx, sy), *this); }

  OVPoint apply(const OVPoint& p) const { return {a * p.x + c * p.y + tx, b * p.x + d * p.y + ty}; }

  friend bool operator==(const Affine2D&, const Affine2D&) = default;
};

// The rectangle (0, 0, size) mapped by m, as the axis-aligned box around it.
inline OVRect mappedBounds(const OVSize& size, const Affine2D& m) {
  const OVPoint corners[] = {m.apply({0, 0}), m.apply({size.width, 0}), m.apply({0, size.height}),
                             m.apply({size.width, size.height})};
  double minX = corners[0].x, minY = corners[0].y, maxX = minX, maxY = minY;
  for (const OVPoint& p : corners) {
    minX = std::min(minX, p.x), minY = std::min(minY, p.y);
    maxX = std::max(maxX, p.x), maxY = std::max(maxY, p.y);
  }
  return {minX, minY, maxX - minX, maxY - minY};
}

}  // namespace orvane::core
