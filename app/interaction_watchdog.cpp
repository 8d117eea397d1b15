#include "app/interaction_watchdog.hpp"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QTimer>

namespace orvane::app {

bool anyMouseButtonDown() { return QGuiApplication::mouseButtons() != Qt::NoButton; }

InteractionWatchdog::~InteractionWatchdog() {
  if (installed_ && QCoreApplication::instance() != nullptr) {
    QCoreApplication::instance()->removeEventFilter(this);
  }
}

void InteractionWatchdog::install(std::weak_ptr<document::ProjectDocument> document,
                                  std::weak_ptr<document::UndoStack> undo) {
  document_ = std::move(document);
  undo_ = std::move(undo);
  if (installed_ || QCoreApplication::instance() == nullptr) return;
  QCoreApplication::instance()->installEventFilter(this);
  installed_ = true;
}

bool InteractionWatchdog::eventFilter(QObject* watched, QEvent* event) {
  // A release reaches the filter once per widget it propagates through;
  // only the window-level delivery counts, so that one release schedules
  // one check.
  if (event->type() == QEvent::MouseButtonRelease && watched->isWindowType()) {
    const auto button = static_cast<QMouseEvent*>(event)->button();
    if (button == Qt::LeftButton || button == Qt::RightButton) scheduleRecovery();
  }
  return false;
}

void InteractionWatchdog::scheduleRecovery() {
  QTimer::singleShot(kRecoveryDelay, this, [this] {
    const auto document = document_.lock();
    if (!document) return;
    const auto undo = undo_.lock();
    document->recoverOrphanedInteraction(undo.get());
  });
}

}  // namespace orvane::app
