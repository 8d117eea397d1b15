#include "render/gui_runtime.hpp"

#include <QGuiApplication>
#include <QtGlobal>

#include "core/log.hpp"

namespace orvane::render {

namespace {

// Qt's own remarks (a missing runtime folder, font fallbacks) are
// diagnostics: they go to the program's log, at debug level, so that a
// command's stderr holds only its own sentence.
void toLog(QtMsgType type, const QMessageLogContext&, const QString& message) {
  const core::LogLevel level = type == QtFatalMsg ? core::LogLevel::error : core::LogLevel::debug;
  core::logLine(level, "qt", message.toStdString());
}

}  // namespace

bool ensureGuiRuntime() {
  if (QCoreApplication* existing = QCoreApplication::instance()) {
    return qobject_cast<QGuiApplication*>(existing) != nullptr;
  }
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  qInstallMessageHandler(toLog);
  // The application object lives until the process ends; Qt keeps
  // references to argc and argv, so they must outlive it too.
  static int argc = 1;
  static char name[] = "orvane";
  static char* argv[] = {name, nullptr};
  static QGuiApplication* application = new QGuiApplication(argc, argv);
  return application != nullptr;
}

}  // namespace orvane::render
