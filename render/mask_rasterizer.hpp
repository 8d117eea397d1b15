#pragma once
// A layer's masks as one grey matte of the layer's size, and the matte
// applied to the layer's picture. Everything is in the layer's own space at
// source resolution (y up, origin at the bottom left), before placement.
// Mattes are drawn afresh for every frame. Stateless; any thread.

#include <optional>

#include "core/geometry.hpp"
#include "core/layer_parts.hpp"
#include "core/ov_time.hpp"
#include "core/shared_vector.hpp"
#include "render/image.hpp"

namespace orvane::render {

struct MaskRasterizer {
  // The matte of the enabled masks at t over (0, 0, layerSize): a grey
  // picture stored in all four components (white keeps, black removes).
  // None when no mask is enabled, so nothing is to be masked.
  static std::optional<Image> image(const core::SharedVector<core::LayerMask>& masks, const core::OVTime& t,
                                    const core::OVSize& layerSize);
  // picture × matte value, transparent where the matte is black; the
  // matte's lower left corner is laid on the picture's.
  static Image apply(const Image& matte, const Image& picture);
};

}  // namespace orvane::render
