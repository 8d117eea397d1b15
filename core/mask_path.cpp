#include "core/mask_path.hpp"

namespace orvane::core {

namespace {

// Bézier handle length of a quarter circle, as a fraction of the radius.
constexpr double kCircleHandle = 0.5522847498;

OVPoint lerp(const OVPoint& a, const OVPoint& b, double p) { return a + (b - a) * p; }

}  // namespace

MaskPath MaskPath::rectangleIn(const OVSize& size, double inset) {
  const double l = inset, b = inset, r = size.width - inset, t = size.height - inset;
  MaskPath path;
  path.vertices = {{{l, b}, {}, {}}, {{r, b}, {}, {}}, {{r, t}, {}, {}}, {{l, t}, {}, {}}};
  return path;
}

MaskPath MaskPath::ellipseIn(const OVSize& size) {
  const double rx = size.width / 2, ry = size.height / 2;
  const double cx = rx, cy = ry;
  const double k = rx * kCircleHandle, kk = ry * kCircleHandle;
  MaskPath path;
  path.vertices = {
      {{cx, cy - ry}, {-k, 0}, {k, 0}},
      {{cx + rx, cy}, {0, -kk}, {0, kk}},
      {{cx, cy + ry}, {k, 0}, {-k, 0}},
      {{cx - rx, cy}, {0, kk}, {0, -kk}},
  };
  return path;
}

MaskPath MaskPath::interpolatedTo(const MaskPath& other, double progress) const {
  if (vertices.size() != other.vertices.size() || closed != other.closed) {
    return progress < 0.5 ? *this : other;
  }
  MaskPath out;
  out.closed = closed;
  out.vertices.reserve(vertices.size());
  for (std::size_t i = 0; i < vertices.size(); ++i) {
    const MaskVertex& a = vertices[i];
    const MaskVertex& b = other.vertices[i];
    out.vertices.push_back({lerp(a.point, b.point, progress), lerp(a.inTangent, b.inTangent, progress),
                            lerp(a.outTangent, b.outTangent, progress)});
  }
  return out;
}

}  // namespace orvane::core
