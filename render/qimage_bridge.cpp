#include "render/qimage_bridge.hpp"

#include <algorithm>
#include <cmath>
#include <span>

#include "core/numeric.hpp"
#include "render/rgba8.hpp"

namespace orvane::render {

QColor toQColor(const core::OVColor& colour, const QColor& fallback) {
  const double components[] = {colour.red, colour.green, colour.blue, colour.alpha};
  for (const double c : components) {
    if (std::isnan(c)) return fallback;
  }
  const auto unit = [](double c) { return static_cast<float>(std::clamp(c, 0.0, 1.0)); };
  return QColor::fromRgbF(unit(colour.red), unit(colour.green), unit(colour.blue), unit(colour.alpha));
}

std::optional<QImage> makeBitmap(const core::OVSize& size) {
  const auto width = bitmapSide(size.width);
  const auto height = bitmapSide(size.height);
  if (!width || !height) return std::nullopt;
  QImage bitmap(*width, *height, QImage::Format_RGBA8888_Premultiplied);
  if (bitmap.isNull()) return std::nullopt;
  bitmap.fill(Qt::transparent);
  return bitmap;
}

std::optional<Image> imageFromBitmap(const QImage& bitmap) {
  if (bitmap.isNull()) return std::nullopt;
  const QImage rgba = bitmap.format() == QImage::Format_RGBA8888_Premultiplied
                          ? bitmap
                          : bitmap.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
  if (rgba.isNull()) return std::nullopt;
  const auto bytesPerRow = static_cast<std::size_t>(rgba.bytesPerLine());
  const std::span<const std::uint8_t> bytes(rgba.constBits(), bytesPerRow * static_cast<std::size_t>(rgba.height()));
  auto image = imageFromRgba8(bytes, rgba.width(), rgba.height(), bytesPerRow,
                              Rgba8Format{AlphaForm::premultiplied, ChannelOrder::rgba});
  if (!image) return std::nullopt;
  return std::move(*image);
}

}  // namespace orvane::render
