#pragma once
// The picture of a text layer: backing, shadow, then the glyphs filled and
// stroked, laid out from the top of the text box. Any thread, once the GUI
// runtime runs; each call draws into its own bitmap.

#include <QPainterPath>
#include <optional>

#include "core/layer_content.hpp"
#include "render/generated_image.hpp"
#include "render/text_layout_builder.hpp"

namespace orvane::render {

// The outlines of the drawn glyphs of laid-out text (those before
// visibleEnd), each line moved along x to its alignment within
// layoutWidth, in the layout's top-down coordinates.
QPainterPath visibleGlyphOutlines(const LaidOutText& laid, int visibleEnd, core::TextContent::Alignment alignment,
                                  double layoutWidth);

// The text with its first revealedCharacters drawn; the size is the whole
// canvas: the box (or the text's bounds) plus the margin on every side.
// None when the canvas can't be made.
std::optional<GeneratedImage> drawText(const core::TextContent& content, int revealedCharacters);

}  // namespace orvane::render
