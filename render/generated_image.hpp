#pragma once
// A picture together with the layer-space size it stands for: what
// generated content, stills and nested compositions hand the compositor.
// The size, not the picture's extent, is what anchors and placement work
// from (a shadow may reach past it). Plain value; any thread.

#include "core/geometry.hpp"
#include "render/image.hpp"

namespace orvane::render {

struct GeneratedImage {
  Image image;
  core::OVSize size;
};

}  // namespace orvane::render
