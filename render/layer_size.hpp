#pragma once
// A layer's natural size with text measured by the renderer's own layout,
// for the edits and surfaces that need it (masks, hit tests, guides). Needs
// the GUI runtime for text; any thread.

#include <optional>

#include "core/geometry.hpp"
#include "core/layer.hpp"
#include "core/layer_bounds.hpp"
#include "core/project.hpp"

namespace orvane::render {

// The text measure to hand to core::LayerBounds and the edits that take one.
core::TextMeasure textMeasure();

// core::LayerBounds::sizeOf with that measure.
std::optional<core::OVSize> naturalSize(const core::Layer& layer, const core::OVProject& project);

}  // namespace orvane::render
