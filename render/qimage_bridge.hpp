#pragma once
// The meeting point of Qt's 8-bit bitmaps, where text, shapes and files are
// drawn or decoded, and the engine's float pictures. A QImage runs from the
// top row down; a picture is y-up, so rows are flipped on the way. Any
// thread may call these; a QImage is used by one thread at a time.

#include <QColor>
#include <QImage>
#include <cstddef>
#include <optional>

#include "core/geometry.hpp"
#include "render/image.hpp"

namespace orvane::render {

// A transparent 8-bit premultiplied RGBA bitmap for drawing content of the
// given size in layer units: each side is the larger of 1 and the size
// rounded to nearest. None when a side is not finite, exceeds kMaxImageSide,
// or the pixels can't be allocated.
std::optional<QImage> makeBitmap(const core::OVSize& size);

// The bitmap as a picture at the origin: its top row becomes the top of the
// y-up picture. Any format is accepted (converted to premultiplied RGBA
// first). None for a null bitmap or one the engine can't hold.
std::optional<Image> imageFromBitmap(const QImage& bitmap);

// A model colour (straight sRGB, unclamped) for Qt drawing, clamped to
// 0 ... 1; fallback when a component is not a number.
QColor toQColor(const core::OVColor& colour, const QColor& fallback);

// What a picture of this many pixels costs to keep: its float pixels.
inline std::size_t pictureCost(const Image& image) {
  return static_cast<std::size_t>(image.dataRect().area()) * sizeof(Rgba);
}

}  // namespace orvane::render
