#pragma once
// Where a layer's picture lands in its composition: the layer's own
// transform, then the pivot transform of each parent up the chain. The
// renderer draws with it and the stage hit-tests and snaps with it, so both
// agree on where a layer is.

#include "core/affine.hpp"
#include "core/composition.hpp"
#include "core/geometry.hpp"
#include "core/layer.hpp"
#include "core/ov_time.hpp"

namespace orvane::core {

// In composition units, for a picture of layerSize at time t.
Affine2D layerPlacement(const Layer& layer, const Composition& composition, const OVTime& t,
                        const OVSize& layerSize);

}  // namespace orvane::core
