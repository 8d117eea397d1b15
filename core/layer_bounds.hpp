#pragma once
// A layer's natural size in composition units, found without rendering.
// Text needs real font metrics, which live with the renderer: callers pass
// the renderer's measuring function (tests pass a stand-in). Stateless.

#include <functional>
#include <optional>

#include "core/geometry.hpp"
#include "core/layer.hpp"
#include "core/layer_content.hpp"

namespace orvane::core {

struct OVProject;

// The size a text takes when laid out, padding included; maxWidth limits
// the line length when given.
using TextMeasure = std::function<OVSize(const TextContent& text, std::optional<double> maxWidth)>;

struct LayerBounds {
  // Video and image: the asset's natural size when found and both sides are
  // positive. Audio: none. Text: measured, limited to the box width when the
  // box is set (none without a measure). Shape: its size, grown by the
  // stroke width when stroked. Solid, adjustment: their size.
  // Nested composition: that composition's size, none when it is missing.
  static std::optional<OVSize> sizeOf(const Layer& layer, const OVProject& project,
                                      const TextMeasure& measure = {});
};

}  // namespace orvane::core
