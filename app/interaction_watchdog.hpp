#pragma once
// Ends drags whose mouse-up never reached their owner (a view torn down
// while the button was held), so that a document cannot stay in an
// interaction for good. One application-wide filter sees every left and
// right mouse release and, kRecoveryDelay later, asks the watched document
// to recover an orphaned interaction; the gesture's own end normally comes
// first and leaves nothing to do. The most recently started window is the
// watched one. Owned by the application object; main thread.

#include <QObject>
#include <QPointer>
#include <chrono>
#include <memory>

#include "document/project_document.hpp"
#include "document/undo_stack.hpp"

namespace orvane::app {

// Whether a mouse button is held now, as Qt knows it; what documents of the
// desktop ask when an interaction begins or is recovered.
bool anyMouseButtonDown();

class InteractionWatchdog final : public QObject {
 public:
  static constexpr std::chrono::milliseconds kRecoveryDelay{400};

  InteractionWatchdog() = default;
  ~InteractionWatchdog() override;

  // Watches document from now on, with its window's undo stack. Both are
  // held weakly: a closed window's document makes the recovery a no-op.
  // The event filter goes in at the first call only.
  void install(std::weak_ptr<document::ProjectDocument> document, std::weak_ptr<document::UndoStack> undo);

  bool isInstalled() const { return installed_; }
  std::shared_ptr<document::ProjectDocument> watchedDocument() const { return document_.lock(); }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void scheduleRecovery();

  bool installed_ = false;
  std::weak_ptr<document::ProjectDocument> document_;
  std::weak_ptr<document::UndoStack> undo_;
};

}  // namespace orvane::app
