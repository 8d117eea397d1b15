#include "core/spatial_path.hpp"

#include <algorithm>

namespace orvane::core::SpatialPath {

namespace {
constexpr double kMinimumLength = 0.0001;
}

OVPoint pointFrom(const OVPoint& a, const OVPoint& outTangent, const OVPoint& d,
                  const OVPoint& inTangent, double progress) {
  const double p = std::clamp(progress, 0.0, 1.0);
  if (p == 0) return a;
  if (p == 1) return d;
  const OVPoint b = a + outTangent;
  const OVPoint c = d + inTangent;
  const double u = 1 - p;
  const double wa = u * u * u, wb = 3 * u * u * p, wc = 3 * u * p * p, wd = p * p * p;
  return {wa * a.x + wb * b.x + wc * c.x + wd * d.x, wa * a.y + wb * b.y + wc * c.y + wd * d.y};
}

SpatialHandles autoHandlesAt(const OVPoint& p, const std::optional<OVPoint>& previous,
                             const std::optional<OVPoint>& next) {
  if (!previous && !next) return SpatialHandles::zero;
  if (!previous) return {OVPoint::zero, (*next - p) * (1.0 / 3.0)};
  if (!next) return {(*previous - p) * (1.0 / 3.0), OVPoint::zero};

  const OVPoint inDelta = p - *previous;
  const OVPoint outDelta = *next - p;
  const OVPoint chord = *next - *previous;
  OVPoint direction = chord;
  if (chord.length() < kMinimumLength) direction = outDelta.length() > kMinimumLength ? outDelta : inDelta;
  const double length = direction.length();
  if (length <= kMinimumLength) return SpatialHandles::zero;
  const OVPoint unit = direction * (1 / length);
  return {unit * -(inDelta.length() / 3), unit * (outDelta.length() / 3)};
}

}  // namespace orvane::core::SpatialPath
