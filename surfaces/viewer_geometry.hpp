#pragma once
// Where the composition lies in the stage view: the one mapping between
// composition units (y up, origin at the lower left) and view points (y
// down, origin at the view's top left) that drawing, hit tests and drags
// share. Plain value, recomputed by the stage on every layout; any thread.

#include <array>

#include "core/affine.hpp"
#include "core/geometry.hpp"

namespace orvane::surfaces {

struct ViewerGeometry {
  // The canvas in view points; y grows downwards, so y is the canvas's top.
  core::OVRect canvasRect;
  core::OVSize compositionSize;
  // View points per composition unit.
  double scale = 1;

  // The scale at which the whole composition fits the view; 1 when either
  // size is empty or not finite, so that a degenerate layout maps somewhere.
  static double fitScale(const core::OVSize& viewSize, const core::OVSize& composition);
  // The composition at scale, centred in a view of viewSize.
  static ViewerGeometry centred(const core::OVSize& viewSize, const core::OVSize& compositionSize, double scale);

  core::OVPoint viewPoint(const core::OVPoint& p) const;
  core::OVPoint compositionPoint(const core::OVPoint& v) const;
  double viewLength(double l) const { return l * usableScale(); }
  double compositionLength(double l) const { return l / usableScale(); }

  // The corners of a layer of layerSize placed by transform (layer space to
  // composition), in view points: the layer's lower left, lower right,
  // upper right and upper left.
  std::array<core::OVPoint, 4> corners(const core::OVSize& layerSize, const core::Affine2D& transform) const;

  // scale when it is finite and positive, else 1: a zero scale would turn
  // every inverse mapping into infinities.
  double usableScale() const;

  friend bool operator==(const ViewerGeometry&, const ViewerGeometry&) = default;
};

// Whether p lies in the convex quadrilateral (either winding, edges
// included). A quad without area holds nothing.
bool pointInConvexQuad(const core::OVPoint& p, const std::array<core::OVPoint, 4>& quad);

}  // namespace orvane::surfaces
