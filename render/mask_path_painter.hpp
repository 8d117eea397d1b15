#pragma once
// Drawing mask outlines into 8-bit grey bitmaps with Qt's painter: the
// outline of a MaskPath as a painter path, and the grey bitmaps of a matte
// with their conversion to the engine's pictures. Bitmaps are y-up in layer
// units on the outside: the painter is flipped so that layer point (x, y)
// lands at bitmap column x, row height - y. Any thread; a bitmap is used by
// one thread at a time.

#include <QImage>
#include <QPainterPath>
#include <optional>

#include "core/geometry.hpp"
#include "core/mask_path.hpp"
#include "render/image.hpp"

namespace orvane::render {

// The outline in layer units (y up): a move to the first point, then a cubic
// curve from each vertex a to the next b with controls a.point + a.outTangent
// and b.point + b.inTangent; a closed path adds that curve from the last
// vertex back to the first and closes. Non-zero winding. Empty for no
// vertices, or when a number in it is not finite.
QPainterPath maskPainterPath(const core::MaskPath& path);

// The pixel size of a matte for a layer: each side the larger of 1 and the
// layer's side rounded to nearest (halves away from zero). None when a side
// is not finite or passes kMaxImageSide.
std::optional<PixelRect> matteRect(const core::OVSize& layerSize);

// An 8-bit grey bitmap of rect's size, filled with grey (0 black ... 255
// white); a null image when the pixels can't be had.
QImage makeGreyBitmap(const PixelRect& rect, int grey);

// path filled antialiased with grey into bitmap, whose height sets the flip.
void fillMaskPath(QImage& bitmap, const QPainterPath& path, int grey);

// The grey bitmap as a picture over rect (its size), the grey / 255 in all
// four components; none when the pixels can't be had.
std::optional<Image> imageFromGreyBitmap(const QImage& bitmap, const PixelRect& rect,
                                         WorkerPool& pool = WorkerPool::shared());

}  // namespace orvane::render
