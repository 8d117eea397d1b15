#include "core/keyframe.hpp"

namespace orvane::core {

Keyframe::Keyframe(OVTime time, PropertyValue value, InterpolationMode mode,
                   std::optional<BezierHandles> handles,
                   std::optional<SpatialInterpolation> spatialMode, SpatialHandles spatialHandles,
                   Uuid id)
    : id(id.isNil() ? Uuid::make() : id),
      time(time),
      value(std::move(value)),
      mode(mode),
      handles(handles),
      spatialMode(spatialMode.value_or(this->value.kind() == PropertyValue::Kind::point
                                           ? SpatialInterpolation::autoBezier
                                           : SpatialInterpolation::linear)),
      spatialHandles(spatialHandles) {}

}  // namespace orvane::core
