#include "surfaces/viewer_geometry.hpp"

#include <algorithm>
#include <cmath>

namespace orvane::surfaces {

namespace {

bool usable(double v) { return std::isfinite(v) && v > 0; }

}  // namespace

double ViewerGeometry::fitScale(const core::OVSize& viewSize, const core::OVSize& composition) {
  if (!usable(viewSize.width) || !usable(viewSize.height) || !usable(composition.width) ||
      !usable(composition.height)) {
    return 1;
  }
  const double fit = std::min(viewSize.width / composition.width, viewSize.height / composition.height);
  return usable(fit) ? fit : 1;
}

ViewerGeometry ViewerGeometry::centred(const core::OVSize& viewSize, const core::OVSize& compositionSize,
                                       double scale) {
  ViewerGeometry g{{}, compositionSize, scale};
  const double width = g.viewLength(compositionSize.width), height = g.viewLength(compositionSize.height);
  g.canvasRect = {(viewSize.width - width) * 0.5, (viewSize.height - height) * 0.5, width, height};
  return g;
}

double ViewerGeometry::usableScale() const { return usable(scale) ? scale : 1; }

core::OVPoint ViewerGeometry::viewPoint(const core::OVPoint& p) const {
  const double s = usableScale();
  return {canvasRect.x + p.x * s, canvasRect.maxY() - p.y * s};
}

core::OVPoint ViewerGeometry::compositionPoint(const core::OVPoint& v) const {
  const double s = usableScale();
  return {(v.x - canvasRect.x) / s, (canvasRect.maxY() - v.y) / s};
}

std::array<core::OVPoint, 4> ViewerGeometry::corners(const core::OVSize& layerSize,
                                                     const core::Affine2D& transform) const {
  const double w = layerSize.width, h = layerSize.height;
  return {viewPoint(transform.apply({0, 0})), viewPoint(transform.apply({w, 0})),
          viewPoint(transform.apply({w, h})), viewPoint(transform.apply({0, h}))};
}

bool pointInConvexQuad(const core::OVPoint& p, const std::array<core::OVPoint, 4>& quad) {
  // Twice the signed area; a collapsed quad would otherwise hold every
  // point on its line.
  double area = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const core::OVPoint& a = quad[i];
    const core::OVPoint& b = quad[(i + 1) % 4];
    area += a.x * b.y - b.x * a.y;
  }
  if (!(std::abs(area) > 1e-12)) return false;
  bool anyPositive = false, anyNegative = false;
  for (std::size_t i = 0; i < 4; ++i) {
    const core::OVPoint& a = quad[i];
    const core::OVPoint& b = quad[(i + 1) % 4];
    const double cross = (b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x);
    if (std::isnan(cross)) return false;
    anyPositive = anyPositive || cross > 0;
    anyNegative = anyNegative || cross < 0;
  }
  return !(anyPositive && anyNegative);
}

}  // namespace orvane::surfaces
