#include "render/shape_path_builder.hpp"

#include <QPainter>
#include <QPen>
#include <algorithm>
#include <cmath>
#include <numbers>

#include "render/qimage_bridge.hpp"

namespace orvane::render {

namespace {

using core::ShapeContent;

// Vertices on the ellipse inscribed in rect, from -π/2 on (the bottom middle
// in y-up space), each pulled in by its radius factor.
QPainterPath radialPath(const core::OVRect& rect, int vertexCount, double oddFactor) {
  const double midX = rect.x + rect.width / 2, midY = rect.y + rect.height / 2;
  QPainterPath path;
  for (int i = 0; i < vertexCount; ++i) {
    const double angle = -std::numbers::pi / 2 + 2 * std::numbers::pi * i / vertexCount;
    const double factor = i % 2 == 0 ? 1.0 : oddFactor;
    const QPointF vertex(midX + rect.width / 2 * factor * std::cos(angle),
                         midY + rect.height / 2 * factor * std::sin(angle));
    if (i == 0) {
      path.moveTo(vertex);
    } else {
      path.lineTo(vertex);
    }
  }
  path.closeSubpath();
  return path;
}

// At least 3; huge counts are capped where more vertices can't be seen.
int vertexCountAtLeast3(std::int64_t count) { return static_cast<int>(std::clamp<std::int64_t>(count, 3, 100000)); }

}  // namespace

QPainterPath ShapePathBuilder::pathFor(const ShapeContent& content, const core::OVRect& rect) {
  const QRectF box(rect.x, rect.y, rect.width, rect.height);
  QPainterPath path;
  path.setFillRule(Qt::WindingFill);
  switch (content.type) {
    case ShapeContent::ShapeType::rectangle: {
      const double radius = std::min(content.cornerRadius, std::min(rect.width, rect.height) / 2);
      if (radius > 0) {
        path.addRoundedRect(box, radius, radius);
      } else {
        path.addRect(box);
      }
      return path;
    }
    case ShapeContent::ShapeType::ellipse:
      path.addEllipse(box);
      return path;
    case ShapeContent::ShapeType::line:
      path.moveTo(rect.x, rect.y);
      path.lineTo(rect.maxX(), rect.maxY());
      return path;
    case ShapeContent::ShapeType::polygon:
      path = radialPath(rect, vertexCountAtLeast3(content.sideCount), 1.0);
      break;
    case ShapeContent::ShapeType::star: {
      const double inner = std::clamp(std::isnan(content.innerRadiusRatio) ? 0.5 : content.innerRadiusRatio, 0.05, 0.95);
      path = radialPath(rect, 2 * vertexCountAtLeast3(content.sideCount), inner);
      break;
    }
  }
  path.setFillRule(Qt::WindingFill);
  return path;
}

std::optional<GeneratedImage> drawShape(const ShapeContent& content) {
  if (!std::isfinite(content.size.width) || !std::isfinite(content.size.height)) return std::nullopt;
  const double stroke = content.isStroked ? content.strokeWidth : 0;
  const core::OVSize canvas{std::max(1.0, content.size.width + stroke), std::max(1.0, content.size.height + stroke)};
  auto bitmap = makeBitmap(canvas);
  if (!bitmap) return std::nullopt;
  const QPainterPath path =
      ShapePathBuilder::pathFor(content, {stroke / 2, stroke / 2, content.size.width, content.size.height});
  {
    QPainter painter(&*bitmap);
    painter.setRenderHint(QPainter::Antialiasing);
    // y-up drawing: the bitmap's bottom row is y = 0.
    painter.setTransform(QTransform(1, 0, 0, -1, 0, bitmap->height()));
    if (content.isFilled && content.type != ShapeContent::ShapeType::line) {
      painter.fillPath(path, toQColor(content.fillColor, Qt::black));
    }
    if (content.isStroked && content.strokeWidth > 0) {
      QPen pen(toQColor(content.strokeColor, Qt::black), content.strokeWidth, Qt::SolidLine, Qt::FlatCap,
               Qt::RoundJoin);
      painter.strokePath(path, pen);
    }
  }
  auto image = imageFromBitmap(*bitmap);
  if (!image) return std::nullopt;
  return GeneratedImage{std::move(*image), canvas};
}

}  // namespace orvane::render
