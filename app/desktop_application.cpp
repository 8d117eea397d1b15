#include "app/desktop_application.hpp"

#include <QApplication>
#include <QIcon>
#include <QPixmap>
#include <cstdlib>
#include <string>

#include "app/app_delegate.hpp"
#include "app/app_icon.hpp"
#include "app/self_test.hpp"
#include "app/workspace_commands.hpp"
#include "core/build_info.hpp"
#include "document/project_codec.hpp"

namespace orvane::app {

namespace {

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string_view() : std::string_view(value);
}

}  // namespace

bool displayAvailable() {
  if (!environment("DISPLAY").empty() || !environment("WAYLAND_DISPLAY").empty()) return true;
  const std::string_view platform = environment("QT_QPA_PLATFORM");
  // xcb and wayland need the display that is missing; the others (offscreen,
  // minimal, vnc, eglfs, linuxfb) draw without one.
  return !platform.empty() && !platform.starts_with("xcb") && !platform.starts_with("wayland");
}

bool argumentsAskForDesktop(const std::vector<std::string_view>& arguments) {
  for (const std::string_view argument : arguments) {
    if (argument.starts_with('-') || !argument.ends_with(document::kProjectFileExtension)) return false;
  }
  return true;
}

int runDesktopApplication(int& argc, char** argv, const std::vector<std::filesystem::path>& files) {
  QApplication application(argc, argv);
  QCoreApplication::setOrganizationName(QStringLiteral("Brightfold"));
  QCoreApplication::setApplicationName(QStringLiteral("Orvane"));
  QCoreApplication::setApplicationVersion(QString::fromStdString(core::buildVersion()));
  QGuiApplication::setApplicationDisplayName(QStringLiteral("Orvane"));
  QGuiApplication::setDesktopFileName(QStringLiteral("orvane"));
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setWindowIcon(applicationIcon());
  installTextFieldKeyGuard();

  QtDialogPresenter dialogs;
  AppDelegate delegate(dialogs, document::defaultSupportDirectory());
  QObject::connect(&application, &QCoreApplication::aboutToQuit, [&delegate] { delegate.shutdown(); });
  delegate.launch(files);
  scheduleSelfTestIfAsked(delegate);
  return QApplication::exec();
}

}  // namespace orvane::app
