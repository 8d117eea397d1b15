#include "render/vector_image_rasterizer.hpp"

#include <QPainter>
#include <QSvgRenderer>
#include <algorithm>
#include <cmath>
#include <filesystem>

#include "core/affine.hpp"
#include "core/numeric.hpp"
#include "render/draw_layer.hpp"
#include "render/qimage_bridge.hpp"

namespace orvane::render {

namespace {

constexpr double kFallbackSide = 512;

std::optional<core::OVSize> declaredSize(const QSvgRenderer& renderer) {
  if (!renderer.isValid()) return std::nullopt;
  const QSizeF size = renderer.defaultSize();
  if (!(size.width() > 0) || !(size.height() > 0)) return core::OVSize{kFallbackSide, kFallbackSide};
  return core::OVSize{size.width(), size.height()};
}

}  // namespace

bool VectorImageRasterizer::isVector(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extension == ".svg";
}

std::optional<core::OVSize> VectorImageRasterizer::intrinsicSize(const std::string& path) {
  const QSvgRenderer renderer(QString::fromStdString(path));
  return declaredSize(renderer);
}

std::optional<QImage> VectorImageRasterizer::rasterise(const std::string& path, int longestSide) {
  QSvgRenderer renderer(QString::fromStdString(path));
  const auto size = declaredSize(renderer);
  if (!size) return std::nullopt;
  const double longest = std::max(1.0, std::max(size->width, size->height));
  const double scale = longestSide / longest;
  const double width = core::roundHalfAway(size->width * scale);
  const double height = core::roundHalfAway(size->height * scale);
  if (!(width >= 1) || !(height >= 1) || width > kMaxImageSide || height > kMaxImageSide) return std::nullopt;
  QImage bitmap(static_cast<int>(width), static_cast<int>(height), QImage::Format_RGBA8888_Premultiplied);
  if (bitmap.isNull()) return std::nullopt;
  bitmap.fill(Qt::transparent);
  QPainter painter(&bitmap);
  painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
  renderer.render(&painter, QRectF(0, 0, width, height));
  painter.end();
  return bitmap;
}

std::optional<Image> VectorImageRasterizer::imageFor(const std::string& path) {
  const auto size = intrinsicSize(path);
  if (!size) return std::nullopt;
  const auto raster = rasterise(path, targetPixels);
  if (!raster) return std::nullopt;
  const auto picture = imageFromBitmap(*raster);
  if (!picture) return std::nullopt;
  const double scale = size->width / raster->width();
  auto scaled = transformed(*picture, core::Affine2D::makeScale(scale, scale));
  if (!scaled) return std::nullopt;
  // The sampling reaches a pixel past the scaled edges; the extent is the
  // intrinsic size itself.
  const int width = std::max(1, static_cast<int>(core::roundHalfAway(raster->width() * scale)));
  const int height = std::max(1, static_cast<int>(core::roundHalfAway(raster->height() * scale)));
  return crop(*scaled, PixelRect{0, 0, width, height});
}

}  // namespace orvane::render
