#include "core/layer_bounds.hpp"

#include "core/project.hpp"

namespace orvane::core {
namespace {

std::optional<OVSize> assetSize(const std::optional<Uuid>& assetID, const OVProject& project) {
  const MediaAsset* asset = assetID ? project.asset(*assetID) : nullptr;
  if (asset == nullptr || asset->naturalSize.width <= 0 || asset->naturalSize.height <= 0) return std::nullopt;
  return asset->naturalSize;
}

}  // namespace

std::optional<OVSize> LayerBounds::sizeOf(const Layer& layer, const OVProject& project, const TextMeasure& measure) {
  const LayerContent& content = layer.content;
  switch (content.kind()) {
    case LayerKind::video:
    case LayerKind::image:
      return assetSize(content.assetID(), project);
    case LayerKind::audio:
      return std::nullopt;
    case LayerKind::text: {
      const TextContent& text = *content.textContent();
      if (!measure) return std::nullopt;
      return measure(text, text.boxSize ? std::optional<double>(text.boxSize->width) : std::nullopt);
    }
    case LayerKind::shape: {
      const ShapeContent& shape = *content.shapeContent();
      if (!shape.isStroked) return shape.size;
      return OVSize{shape.size.width + shape.strokeWidth, shape.size.height + shape.strokeWidth};
    }
    case LayerKind::solid:
      return content.solidContent()->size;
    case LayerKind::adjustment:
      return content.adjustmentSize();
    case LayerKind::precomposition: {
      const auto id = content.compositionID();
      const Composition* nested = id ? project.composition(*id) : nullptr;
      if (nested == nullptr) return std::nullopt;
      return nested->size;
    }
  }
  return std::nullopt;
}

}  // namespace orvane::core
