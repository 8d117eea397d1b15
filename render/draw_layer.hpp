#pragma once
// Placing a picture through an affine transform: the one-pass layer draw of
// the compositor, and the transform as an operation of its own.
//
// Sampling: a whole-pixel translation copies pixels exactly; otherwise each
// destination pixel centre is mapped back into the source. Bilinear
// interpolation serves magnification and minification down to half size
// (where it still reads every source pixel); once a destination pixel spans
// more than 2 source pixels along a direction, its footprint is averaged from
// a grid of bilinear
// taps about a source pixel apart (up to 64 per direction), so that a
// downscale does not alias. Outside its extent the source is transparent,
// so edges come out antialiased.
//
// All functions may be called from any thread; a call splits its rows over
// the pool's threads.

#include <expected>
#include <optional>

#include "core/affine.hpp"
#include "core/layer_style.hpp"
#include "render/image.hpp"

namespace orvane::render {

// Draws source, mapped by placement (source space to canvas space), with its
// alpha scaled by opacity (clamped to 0 ... 1) and composited with the blend
// mode onto destination, changing only pixels inside destRect. One pass over
// the covered pixels: no intermediate picture and no allocation. A source that
// is empty, a placement that is not finite or shrinks the picture a million
// times or more (singular ones included), or an opacity of 0 leaves the
// destination as it is.
void drawLayer(Canvas& destination, const PixelRect& destRect, const Image& source,
               const core::Affine2D& placement, double opacity, core::OVBlendMode mode,
               WorkerPool& pool = WorkerPool::shared());

// The one colour that drawLayer leaves on every pixel of rect whatever lay
// there before: source is one opaque colour drawn source-over at full
// opacity and its placed extent covers rect. None otherwise. Everything
// drawn beneath such a layer is hidden.
std::optional<Rgba> coveringColour(const Image& source, const core::Affine2D& placement, double opacity,
                                   core::OVBlendMode mode, const PixelRect& rect);

// The pixels where source through placement may be non-zero: the bounding
// box of the mapped extent, widened by the reach of the sampling. Infinite
// for an infinite source; empty for a degenerate placement.
PixelRect transformedExtent(const Image& source, const core::Affine2D& placement);

// source through placement, sampled as drawLayer samples it; the extent is
// transformedExtent. An identity placement returns source itself. Fails with
// unbounded for an infinite source other than a constant colour (which any
// placement leaves as it is), and with tooLarge past kMaxImageSide.
std::expected<Image, ImageError> transformed(const Image& source, const core::Affine2D& placement,
                                             WorkerPool& pool = WorkerPool::shared());

}  // namespace orvane::render
