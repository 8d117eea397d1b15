#pragma once
// The outline of a mask: vertices with Bézier tangents (offsets from their
// point), in layer units, y up. A value of `PropertyValue`, so it animates.

#include <vector>

#include "core/geometry.hpp"
#include "core/hashing.hpp"

namespace orvane::core {

struct MaskVertex {
  OVPoint point;
  OVPoint inTangent;
  OVPoint outTangent;

  friend bool operator==(const MaskVertex&, const MaskVertex&) = default;
};
inline std::size_t hashValue(const MaskVertex& v) { return hashAll(v.point, v.inTangent, v.outTangent); }

struct MaskPath {
  bool closed = true;
  std::vector<MaskVertex> vertices;

  // Corners from (inset, inset) round by (w − inset, inset), (w − inset,
  // h − inset) and (inset, h − inset); closed, no tangents.
  static MaskPath rectangleIn(const OVSize& size, double inset = 0);
  // Four vertices (bottom, right, top, left) with circular tangents.
  static MaskPath ellipseIn(const OVSize& size);

  // Vertex by vertex when both have the same count and closed flag;
  // otherwise a flip from self to other at progress 0.5.
  MaskPath interpolatedTo(const MaskPath& other, double progress) const;

  friend bool operator==(const MaskPath&, const MaskPath&) = default;
};
inline std::size_t hashValue(const MaskPath& p) { return hashAll(p.closed, p.vertices); }

}  // namespace orvane::core
