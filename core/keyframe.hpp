#pragma once
// One keyframe of an animated property: a time on the composition clock, a
// value, and the pace and path of the segment that leaves it. Plain value.

#include <optional>

#include "core/easing.hpp"
#include "core/ov_time.hpp"
#include "core/property_value.hpp"
#include "core/spatial_path.hpp"
#include "core/uuid.hpp"

namespace orvane::core {

struct Keyframe {
  Uuid id;
  OVTime time;
  PropertyValue value;
  InterpolationMode mode = InterpolationMode::linear;  // pace of the segment leaving this key
  std::optional<BezierHandles> handles;                // used only when mode is bezier
  SpatialInterpolation spatialMode = SpatialInterpolation::linear;
  SpatialHandles spatialHandles;

  Keyframe() = default;
  // A spatial mode that is not given becomes autoBezier for a point value and
  // linear for every other case. A nil id is replaced by a fresh one.
  Keyframe(OVTime time, PropertyValue value, InterpolationMode mode = InterpolationMode::linear,
           std::optional<BezierHandles> handles = std::nullopt,
           std::optional<SpatialInterpolation> spatialMode = std::nullopt,
           SpatialHandles spatialHandles = SpatialHandles::zero, Uuid id = Uuid{});

  friend bool operator==(const Keyframe&, const Keyframe&) = default;
};

inline std::size_t hashValue(const Keyframe& k) {
  return hashAll(k.id, k.time, k.value, k.mode, k.handles, k.spatialMode, k.spatialHandles);
}

}  // namespace orvane::core
