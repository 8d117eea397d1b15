#include "render/gui_runtime.hpp"

#include <QGuiApplication>

namespace orvane::render {

bool ensureGuiRuntime() {
  if (QCoreApplication* existing = QCoreApplication::instance()) {
    return qobject_cast<QGuiApplication*>(existing) != nullptr;
  }
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  // The application object lives until the process ends; Qt keeps
  // references to argc and argv, so they must outlive it too.
  static int argc = 1;
  static char name[] = "orvane";
  static char* argv[] = {name, nullptr};
  static QGuiApplication* application = new QGuiApplication(argc, argv);
  return application != nullptr;
}

}  // namespace orvane::render
