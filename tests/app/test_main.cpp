// The desktop tests drive real widgets on Qt's offscreen platform. Each run
// gets its own home, data and settings folders, so that nothing of the
// user's (recent documents, autosave snapshots) is read or touched.

#include <gtest/gtest.h>

#include <QApplication>
#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>

#include "app/workspace_commands.hpp"

namespace {

// The offscreen platform warns about every window raised or resized; those
// lines say nothing about the program.
void quietOffscreenWarnings(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  if (message.startsWith(QStringLiteral("This plugin does not support"))) return;
  std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, message)));
}

}  // namespace

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  setenv("QT_QPA_PLATFORM", "offscreen", 1);
  QTemporaryDir home;
  if (!home.isValid()) return 1;
  const QByteArray root = home.path().toLocal8Bit();
  setenv("HOME", root.constData(), 1);
  setenv("XDG_DATA_HOME", (root + "/data").constData(), 1);
  setenv("XDG_CONFIG_HOME", (root + "/config").constData(), 1);
  setenv("XDG_CACHE_HOME", (root + "/cache").constData(), 1);
  qInstallMessageHandler(quietOffscreenWarnings);
  QApplication application(argc, argv);
  QCoreApplication::setOrganizationName(QStringLiteral("Brightfold"));
  QCoreApplication::setApplicationName(QStringLiteral("Orvane"));
  QApplication::setQuitOnLastWindowClosed(false);
  orvane::app::installTextFieldKeyGuard();
  return RUN_ALL_TESTS();
}
