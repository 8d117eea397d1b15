#pragma once
// The playhead control under the stage: a slider over the active
// composition's frames and the playhead's timecode. Moving the slider moves
// the playhead, which is stored in the project but never undoable. Owned by
// its window; main thread.

#include <QWidget>
#include <memory>

#include "document/project_document.hpp"

class QLabel;
class QSlider;

namespace orvane::app {

class TimeBar final : public QWidget {
 public:
  explicit TimeBar(std::shared_ptr<document::ProjectDocument> document, QWidget* parent = nullptr);

  // Follows the document: range, position and timecode.
  void reload();
  QSlider* slider() const { return slider_; }
  QLabel* timecodeLabel() const { return timecode_; }

 private:
  void sliderMoved(int frame);

  std::shared_ptr<document::ProjectDocument> document_;
  QSlider* slider_;
  QLabel* timecode_;
};

}  // namespace orvane::app
