#include "surfaces/stage_layer_geometry.hpp"

#include "core/layer_placement.hpp"

namespace orvane::surfaces {

std::optional<SmartGuides::Box> layerBox(const core::Layer& layer, const core::Composition& composition,
                                         const core::OVProject& project, const core::OVTime& t,
                                         const core::TextMeasure& measure) {
  const auto size = core::LayerBounds::sizeOf(layer, project, measure);
  if (!size) return std::nullopt;
  return SmartGuides::Box::from(core::mappedBounds(*size, core::layerPlacement(layer, composition, t, *size)));
}

std::vector<SmartGuides::Box> guideBoxes(const core::Composition& composition, const core::OVProject& project,
                                         const core::OVTime& t, const core::Uuid& dragging,
                                         const core::TextMeasure& measure) {
  std::vector<SmartGuides::Box> boxes;
  for (const core::Layer& layer : composition.layers) {
    if (layer.id == dragging || !layer.isVisual() || !layer.isActiveAt(t)) continue;
    if (const auto box = layerBox(layer, composition, project, t, measure)) boxes.push_back(*box);
  }
  return boxes;
}

std::optional<std::array<core::OVPoint, 4>> layerCorners(const core::Layer& layer,
                                                         const core::Composition& composition,
                                                         const core::OVProject& project, const core::OVTime& t,
                                                         const ViewerGeometry& geometry,
                                                         const core::TextMeasure& measure) {
  const auto size = core::LayerBounds::sizeOf(layer, project, measure);
  if (!size) return std::nullopt;
  return geometry.corners(*size, core::layerPlacement(layer, composition, t, *size));
}

std::optional<core::Uuid> layerAt(const core::OVPoint& viewPoint, const core::Composition& composition,
                                  const core::OVProject& project, const core::OVTime& t,
                                  const ViewerGeometry& geometry, const core::TextMeasure& measure) {
  for (const core::Layer& layer : composition.layers) {
    if (!layer.isVisual() || !layer.isActiveAt(t) || layer.isLocked) continue;
    const auto quad = layerCorners(layer, composition, project, t, geometry, measure);
    if (quad && pointInConvexQuad(viewPoint, *quad)) return layer.id;
  }
  return std::nullopt;
}

}  // namespace orvane::surfaces
