#include "app/time_bar.hpp"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>
#include <algorithm>
#include <limits>

#include "Commands/composition_edits.hpp"
#include "app/workspace_time.hpp"
#include "core/timecode.hpp"

namespace orvane::app {

namespace {

// The last frame index of a composition, kept to what a slider can hold.
int lastFrameOf(const core::Composition& composition) {
  if (!hasValidFrameRate(composition)) return 0;
  const std::int64_t frames = composition.frameRate.frameIndexAt(composition.duration);
  return static_cast<int>(std::clamp<std::int64_t>(frames - 1, 0, std::numeric_limits<int>::max() / 2));
}

}  // namespace

TimeBar::TimeBar(std::shared_ptr<document::ProjectDocument> document, QWidget* parent)
    : QWidget(parent), document_(std::move(document)), slider_(new QSlider(Qt::Horizontal)),
      timecode_(new QLabel) {
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(8, 4, 8, 4);
  timecode_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  timecode_->setToolTip(QStringLiteral("Playhead"));
  layout->addWidget(timecode_);
  layout->addWidget(slider_, 1);
  connect(slider_, &QSlider::valueChanged, this, [this](int frame) { sliderMoved(frame); });
  reload();
}

void TimeBar::reload() {
  const core::Composition* composition = document_->activeComposition();
  const QSignalBlocker blocker(slider_);
  if (composition == nullptr || !hasValidFrameRate(*composition)) {
    slider_->setRange(0, 0);
    slider_->setEnabled(false);
    timecode_->setText(QStringLiteral("--:--:--:--"));
    return;
  }
  slider_->setEnabled(true);
  slider_->setRange(0, lastFrameOf(*composition));
  const std::int64_t frame = composition->frameRate.frameIndexAt(composition->playheadTime);
  slider_->setValue(static_cast<int>(std::clamp<std::int64_t>(frame, 0, slider_->maximum())));
  timecode_->setText(QString::fromStdString(core::Timecode{composition->frameRate}.stringFor(composition->playheadTime)));
}

void TimeBar::sliderMoved(int frame) {
  const core::Composition* composition = document_->activeComposition();
  if (composition == nullptr || !hasValidFrameRate(*composition)) return;
  commands::setPlayhead(*document_, composition->frameRate.timeForFrame(frame));
}

}  // namespace orvane::app
