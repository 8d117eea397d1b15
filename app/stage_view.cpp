#include "app/stage_view.hpp"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <span>

#include "app/workspace_time.hpp"
#include "render/frame_compositor.hpp"
#include "render/render_plan.hpp"
#include "render/rgba8.hpp"
#include "surfaces/viewer_geometry.hpp"

namespace orvane::app {

namespace {

constexpr int kMargin = 16;
constexpr int kGridCell = 8;
const QColor kSurround(38, 38, 40);

}  // namespace

StageView::StageView(std::shared_ptr<const document::ProjectDocument> document, QWidget* parent)
    : QWidget(parent), document_(std::move(document)) {
  setAttribute(Qt::WA_OpaquePaintEvent);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

double StageView::fitScale(const core::OVSize& size, QSize area) {
  const core::OVSize view{area.width() - 2.0 * kMargin, area.height() - 2.0 * kMargin};
  const auto drawable = [](double length) { return std::isfinite(length) && length > 0; };
  // No room, or nothing to show: no picture rather than a picture at scale 1.
  if (!drawable(view.width) || !drawable(view.height) || !drawable(size.width) || !drawable(size.height)) return 0;
  return surfaces::ViewerGeometry::fitScale(view, size);
}

QRectF StageView::compositionRect() const {
  const core::Composition* composition = document_->activeComposition();
  if (composition == nullptr) return {};
  const double scale = fitScale(composition->size, size());
  if (scale <= 0) return {};
  const double w = composition->size.width * scale;
  const double h = composition->size.height * scale;
  return {(width() - w) / 2.0, (height() - h) / 2.0, w, h};
}

QImage StageView::renderFrame(double scale) const {
  const core::OVProject project = document_->snapshot();
  const core::Composition* composition = project.activeComposition();
  if (composition == nullptr || scale <= 0) return {};
  const auto t = playheadFrameTime(*composition);
  if (!t) return {};
  const auto plan = render::stillsPlan(project, composition->id, scale);
  if (!plan) return {};
  const render::Image picture = render::FrameCompositor::composeFrame(*plan, *t, {});
  const render::PixelSize size = plan->renderSize();
  QImage image(size.width, size.height, QImage::Format_RGBA8888_Premultiplied);
  if (image.isNull()) return {};
  const std::span<std::uint8_t> bytes(image.bits(), static_cast<std::size_t>(image.sizeInBytes()));
  const render::Rgba8Format format{render::AlphaForm::premultiplied, render::ChannelOrder::rgba};
  if (!render::writeRgba8(picture, {0, 0, size.width, size.height}, bytes,
                          static_cast<std::size_t>(image.bytesPerLine()), format)) {
    return {};
  }
  return image;
}

void StageView::updateFrame() {
  const QSize area = size() * devicePixelRatioF();
  if (document_->revision() == frameRevision_ && area == frameArea_) return;
  frameRevision_ = document_->revision();
  frameArea_ = area;
  const core::Composition* composition = document_->activeComposition();
  const double scale = composition ? fitScale(composition->size, size()) * devicePixelRatioF() : 0;
  frame_ = renderFrame(scale);
  frame_.setDevicePixelRatio(devicePixelRatioF());
}

void StageView::paintEvent(QPaintEvent*) {
  updateFrame();
  QPainter painter(this);
  painter.fillRect(rect(), kSurround);
  const QRectF target = compositionRect();
  if (target.isEmpty()) return;
  const core::Composition* composition = document_->activeComposition();
  if (composition != nullptr && composition->isTransparent) paintTransparencyGrid(painter, target);
  if (!frame_.isNull()) painter.drawImage(target, frame_);
}

void paintTransparencyGrid(QPainter& painter, const QRectF& rect) {
  painter.save();
  painter.setClipRect(rect);
  painter.fillRect(rect, QColor(204, 204, 204));
  const QColor dark(153, 153, 153);
  for (double y = rect.top(); y < rect.bottom(); y += kGridCell) {
    const int row = static_cast<int>((y - rect.top()) / kGridCell);
    for (double x = rect.left() + (row % 2) * kGridCell; x < rect.right(); x += 2 * kGridCell) {
      painter.fillRect(QRectF(x, y, kGridCell, kGridCell), dark);
    }
  }
  painter.restore();
}

}  // namespace orvane::app
