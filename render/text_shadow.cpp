#include "render/text_shadow.hpp"

#include <QPainter>
#include <QPen>
#include <cmath>
#include <span>

#include "render/effects/gaussian_blur.hpp"
#include "render/qimage_bridge.hpp"
#include "render/rgba8.hpp"

namespace orvane::render {

namespace {

QColor withAlphaScaled(QColor colour, double factor) {
  colour.setAlphaF(static_cast<float>(colour.alphaF() * factor));
  return colour;
}

}  // namespace

void drawTextShadow(QImage& bitmap, const QPainterPath& glyphs, const QColor& fillColor,
                    const std::optional<TextStroke>& stroke, const TextShadow& shadow, WorkerPool& pool) {
  // Painting one colour, the fill and the stroke leave that colour times
  // their joint coverage: the tinted shadow before its blur.
  QImage tinted(bitmap.size(), QImage::Format_RGBA8888_Premultiplied);
  if (tinted.isNull()) return;
  tinted.fill(Qt::transparent);
  {
    QPainter painter(&tinted);
    painter.setRenderHint(QPainter::Antialiasing);
    // The offset is y-up; the bitmap runs top-down.
    const double dx = std::isfinite(shadow.offset.x) ? shadow.offset.x : 0;
    const double dy = std::isfinite(shadow.offset.y) ? shadow.offset.y : 0;
    painter.translate(dx, -dy);
    painter.fillPath(glyphs, withAlphaScaled(shadow.color, fillColor.alphaF()));
    if (stroke) {
      painter.strokePath(glyphs, QPen(withAlphaScaled(shadow.color, stroke->color.alphaF()), stroke->width,
                                      Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin));
    }
  }
  const auto picture = imageFromBitmap(tinted);
  if (!picture) return;
  const double sigma = std::isfinite(shadow.blur) ? shadow.blur / 2 : 0;
  const auto blurred = gaussianBlur(*picture, sigma, {}, pool);
  if (!blurred) return;
  // The blur spreads past the bitmap; only what falls on it is kept.
  const PixelRect region{0, 0, tinted.width(), tinted.height()};
  const std::span<std::uint8_t> bytes(tinted.bits(), static_cast<std::size_t>(tinted.sizeInBytes()));
  if (!writeRgba8(*blurred, region, bytes, static_cast<std::size_t>(tinted.bytesPerLine()),
                  Rgba8Format{AlphaForm::premultiplied, ChannelOrder::rgba}, pool)) {
    return;
  }
  QPainter(&bitmap).drawImage(0, 0, tinted);
}

}  // namespace orvane::render
