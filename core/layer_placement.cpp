#include "core/layer_placement.hpp"

namespace orvane::core {

Affine2D layerPlacement(const Layer& layer, const Composition& composition, const OVTime& t,
                        const OVSize& layerSize) {
  Affine2D m = layer.transform.affineTransformAt(t, layerSize);
  if (layer.parentLayerID) {
    for (const Layer* parent : composition.parentChainFor(layer.id)) {
      m = Affine2D::concatenating(m, parent->transform.pivotTransformAt(t));
    }
  }
  return m;
}

}  // namespace orvane::core
