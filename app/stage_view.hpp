#pragma once
// The stage of a document window: the active composition at the playhead,
// composed by the frame compositor at the scale it is shown at (never at
// full size and then shrunk), fitted and centred in the view, with a
// transparency grid behind a transparent composition. The picture is made
// again when the document's revision or the view's size changes. Owned by
// its window; main thread.

#include <QImage>
#include <QWidget>
#include <cstdint>
#include <memory>

#include "core/geometry.hpp"
#include "document/project_document.hpp"

namespace orvane::app {

class StageView final : public QWidget {
 public:
  explicit StageView(std::shared_ptr<const document::ProjectDocument> document, QWidget* parent = nullptr);

  // The scale at which a composition of size fits in area, with a margin.
  static double fitScale(const core::OVSize& size, QSize area);
  // Where the composition is drawn, in widget coordinates; empty without one.
  QRectF compositionRect() const;
  // The picture drawn last, in device pixels.
  const QImage& lastFrame() const { return frame_; }
  // Renders now if the revision or size changed since the last picture.
  void updateFrame();

  QSize sizeHint() const override { return {960, 540}; }
  QSize minimumSizeHint() const override { return {160, 90}; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QImage renderFrame(double scale) const;

  std::shared_ptr<const document::ProjectDocument> document_;
  QImage frame_;
  std::int64_t frameRevision_ = -1;
  QSize frameArea_;
};

// The checkerboard drawn behind transparent pictures, aligned to rect.
void paintTransparencyGrid(class QPainter& painter, const QRectF& rect);

}  // namespace orvane::app
