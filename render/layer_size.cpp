#include "render/layer_size.hpp"

#include "render/text_layout_builder.hpp"

namespace orvane::render {

core::TextMeasure textMeasure() { return &TextLayoutBuilder::measure; }

std::optional<core::OVSize> naturalSize(const core::Layer& layer, const core::OVProject& project) {
  return core::LayerBounds::sizeOf(layer, project, textMeasure());
}

}  // namespace orvane::render
