#include "render/still_image_loader.hpp"

#include <QColorSpace>
#include <QFile>
#include <QImageReader>
#include <mutex>
#include <utility>
#include <poppler-qt6.h>

#include "render/qimage_bridge.hpp"
#include "render/vector_image_rasterizer.hpp"

namespace orvane::render {

namespace {

constexpr int kAllocationLimitMB = 1024;

bool withinSideLimit(double width, double height) {
  return width <= kMaxImageSide && height <= kMaxImageSide;
}

bool looksLikePdf(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) && file.read(5) == "%PDF-";
}

// Poppler keeps process-wide state (its global parameters) while documents
// live; one document at a time keeps it out of harm's way. Calls use with
// the document's first page and its size in points (one pixel a point),
// when the page is there and its size is usable.
template <typename Use>
auto withFirstPdfPage(const QString& path, Use use) -> decltype(use(std::declval<Poppler::Page&>(), QSizeF())) {
  static std::mutex popplerMutex;
  std::lock_guard lock(popplerMutex);
  const std::unique_ptr<Poppler::Document> document = Poppler::Document::load(path);
  if (!document || document->isLocked() || document->numPages() < 1) return std::nullopt;
  document->setRenderHint(Poppler::Document::Antialiasing);
  document->setRenderHint(Poppler::Document::TextAntialiasing);
  document->setRenderHint(Poppler::Document::IgnorePaperColor);
  const std::unique_ptr<Poppler::Page> page = document->page(0);
  if (!page) return std::nullopt;
  const QSizeF points = page->pageSizeF();
  if (!(points.width() > 0) || !(points.height() > 0) || !withinSideLimit(points.width(), points.height())) {
    return std::nullopt;
  }
  return use(*page, points);
}

std::optional<QImage> firstPdfPage(const QString& path) {
  return withFirstPdfPage(path, [](Poppler::Page& page, QSizeF) -> std::optional<QImage> {
    QImage image = page.renderToImage(72.0, 72.0);
    if (image.isNull()) return std::nullopt;
    return image;
  });
}

std::optional<QImage> readRaster(const QString& path, bool applyOrientation) {
  QImageReader reader(path);
  reader.setAutoTransform(applyOrientation);
  const QSize declared = reader.size();
  if (declared.isValid() && !withinSideLimit(declared.width(), declared.height())) return std::nullopt;
  QImage image;
  if (!reader.read(&image) || image.isNull()) return std::nullopt;
  if (!withinSideLimit(image.width(), image.height())) return std::nullopt;
  return image;
}

}  // namespace

std::optional<Image> loadStillImage(const std::string& path) {
  static std::once_flag limitSet;
  std::call_once(limitSet, [] { QImageReader::setAllocationLimit(kAllocationLimitMB); });

  if (VectorImageRasterizer::isVector(path)) return VectorImageRasterizer::imageFor(path);
  const QString file = QString::fromStdString(path);
  std::optional<QImage> decoded;
  if (looksLikePdf(file)) {
    decoded = firstPdfPage(file);
  } else {
    decoded = readRaster(file, true);
    if (!decoded) decoded = readRaster(file, false);
  }
  if (!decoded) return std::nullopt;
  if (decoded->colorSpace().isValid() && decoded->colorSpace() != QColorSpace(QColorSpace::SRgb)) {
    decoded->convertToColorSpace(QColorSpace(QColorSpace::SRgb));
  }
  return imageFromBitmap(*decoded);
}

std::optional<core::OVSize> stillImageSize(const std::string& path) {
  if (VectorImageRasterizer::isVector(path)) return VectorImageRasterizer::intrinsicSize(path);
  const QString file = QString::fromStdString(path);
  if (looksLikePdf(file)) {
    return withFirstPdfPage(file, [](Poppler::Page&, QSizeF points) -> std::optional<core::OVSize> {
      return core::OVSize{points.width(), points.height()};
    });
  }
  QImageReader reader(file);
  reader.setAutoTransform(true);
  const QSize size = reader.size();
  if (!size.isValid() || size.isEmpty()) return std::nullopt;
  // Orientations 5 to 8 turn the picture a quarter.
  if (reader.transformation() & QImageIOHandler::TransformationRotate90) {
    return core::OVSize{double(size.height()), double(size.width())};
  }
  return core::OVSize{double(size.width()), double(size.height())};
}

}  // namespace orvane::render
