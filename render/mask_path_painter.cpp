#include "render/mask_path_painter.hpp"

#include <QPainter>
#include <QTransform>
#include <algorithm>
#include <array>
#include <cmath>

#include "core/numeric.hpp"

namespace orvane::render {

namespace {

bool isFinite(const core::OVPoint& p) { return std::isfinite(p.x) && std::isfinite(p.y); }

QPointF qPoint(const core::OVPoint& p) { return {p.x, p.y}; }

// The grey levels as float components.
const std::array<float, 256>& greyLevels() {
  static const std::array<float, 256> levels = [] {
    std::array<float, 256> l{};
    for (int i = 0; i < 256; ++i) l[static_cast<std::size_t>(i)] = static_cast<float>(i) / 255.0f;
    return l;
  }();
  return levels;
}

}  // namespace

QPainterPath maskPainterPath(const core::MaskPath& path) {
  QPainterPath out;
  out.setFillRule(Qt::WindingFill);
  const auto& v = path.vertices;
  if (v.empty()) return out;
  // Qt drops points that are not numbers with a warning each frame; a path
  // holding one is no outline at all.
  for (const core::MaskVertex& vertex : v) {
    if (!isFinite(vertex.point) || !isFinite(vertex.inTangent) || !isFinite(vertex.outTangent)) return out;
  }
  const auto curve = [&out](const core::MaskVertex& a, const core::MaskVertex& b) {
    out.cubicTo(qPoint(a.point + a.outTangent), qPoint(b.point + b.inTangent), qPoint(b.point));
  };
  out.moveTo(qPoint(v.front().point));
  for (std::size_t i = 1; i < v.size(); ++i) curve(v[i - 1], v[i]);
  if (path.closed) {
    if (v.size() > 1) curve(v.back(), v.front());
    out.closeSubpath();
  }
  return out;
}

std::optional<PixelRect> matteRect(const core::OVSize& layerSize) {
  const auto width = bitmapSide(layerSize.width);
  const auto height = bitmapSide(layerSize.height);
  if (!width || !height) return std::nullopt;
  return PixelRect{0, 0, *width, *height};
}

QImage makeGreyBitmap(const PixelRect& rect, int grey) {
  QImage bitmap(rect.width, rect.height, QImage::Format_Grayscale8);
  if (!bitmap.isNull()) bitmap.fill(QColor(grey, grey, grey));
  return bitmap;
}

void fillMaskPath(QImage& bitmap, const QPainterPath& path, int grey) {
  if (path.isEmpty() || bitmap.isNull()) return;
  QPainter painter(&bitmap);
  painter.setRenderHint(QPainter::Antialiasing, true);
  // Layer space is y-up; the bitmap's first row is its top.
  painter.setTransform(QTransform(1, 0, 0, -1, 0, bitmap.height()));
  painter.fillPath(path, QColor(grey, grey, grey));
}

std::optional<Image> imageFromGreyBitmap(const QImage& bitmap, const PixelRect& rect, WorkerPool& pool) {
  if (bitmap.isNull() || bitmap.format() != QImage::Format_Grayscale8 || bitmap.width() != rect.width ||
      bitmap.height() != rect.height) {
    return std::nullopt;
  }
  auto canvas = Canvas::makeUnfilled(rect);
  if (!canvas) return std::nullopt;
  const std::array<float, 256>& levels = greyLevels();
  pool.forEachBand(rect.y, rect.maxY(), rect.width, [&](int first, int last) {
    for (int y = first; y < last; ++y) {
      const uchar* grey = bitmap.constScanLine(rect.maxY() - 1 - y);
      Rgba* row = canvas->row(y);
      for (int x = 0; x < rect.width; ++x) {
        const float g = levels[grey[x]];
        row[x] = {g, g, g, g};
      }
    }
  });
  return std::move(*canvas).image();
}

}  // namespace orvane::render
