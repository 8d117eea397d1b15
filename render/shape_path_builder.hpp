#pragma once
// The outlines of shape layers, and their drawing into pictures. Paths are
// in the y-up layer space of the picture they are drawn into: a polygon's
// first vertex sits at the middle of the bottom edge, and a line runs from
// the bottom left corner to the top right. Stateless; any thread.

#include <QPainterPath>
#include <optional>

#include "core/geometry.hpp"
#include "core/layer_content.hpp"
#include "render/generated_image.hpp"

namespace orvane::render {

struct ShapePathBuilder {
  // The outline of content fitted to rect: a rectangle (its corner radius
  // at most half the shorter side), the inscribed ellipse, a line between
  // opposite corners (open), or a closed polygon or star (at least 3 sides
  // or points, the star's inner radius ratio clamped to 0.05 ... 0.95),
  // scaled separately along x and y.
  static QPainterPath pathFor(const core::ShapeContent& content, const core::OVRect& rect);
};

// The picture of a shape: fill (non-zero winding) then a centred stroke with
// round joins and butt caps, on a canvas widened by the stroke width so the
// stroke just fits. The size is that canvas. None when the canvas can't be
// made (a side that isn't finite or is above kMaxImageSide).
std::optional<GeneratedImage> drawShape(const core::ShapeContent& content);

}  // namespace orvane::render
