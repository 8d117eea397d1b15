#pragma once
// The path through space of point values between two keyframes: straight, or
// a cubic Bézier through tangents that are either computed from the
// neighbours (auto) or set by the user. Pure.

#include <array>
#include <optional>

#include "core/enum_text.hpp"
#include "core/geometry.hpp"
#include "core/hashing.hpp"

namespace orvane::core {

enum class SpatialInterpolation { linear, autoBezier, bezier };

template <>
struct EnumTable<SpatialInterpolation> {
  using S = SpatialInterpolation;
  static constexpr std::array<EnumEntry<S>, 3> entries{{
      {S::linear, "linear", "Linear"},
      {S::autoBezier, "autoBezier", "Auto Bezier"},
      {S::bezier, "bezier", "Bezier"},
  }};
};

// Tangents as offsets from the keyframe's own point, in the property's units.
struct SpatialHandles {
  OVPoint inTangent;
  OVPoint outTangent;

  static const SpatialHandles zero;

  friend bool operator==(const SpatialHandles&, const SpatialHandles&) = default;
};
inline constexpr SpatialHandles SpatialHandles::zero{};
inline std::size_t hashValue(const SpatialHandles& h) { return hashAll(h.inTangent, h.outTangent); }

namespace SpatialPath {

// The cubic from A through A + outTangent and D + inTangent to D at raw
// parameter p (clamped; exactly A at 0 and D at 1).
OVPoint pointFrom(const OVPoint& a, const OVPoint& outTangent, const OVPoint& d,
                  const OVPoint& inTangent, double progress);

// Catmull-Rom style handles at P: collinear along the chord of the
// neighbours, each a third of its own segment's length.
SpatialHandles autoHandlesAt(const OVPoint& p, const std::optional<OVPoint>& previous,
                             const std::optional<OVPoint>& next);

}  // namespace SpatialPath

}  // namespace orvane::core
