#include "app/app_delegate.hpp"

#include <QApplication>
#include <QMessageBox>
#include <QTimer>
#include <string>

#include "app/pending_new_project.hpp"
#include "app/self_test.hpp"
#include "core/build_info.hpp"
#include "core/log.hpp"
#include "document/media_access.hpp"
#include "document/recovery_presenter.hpp"

namespace orvane::app {

AppDelegate::AppDelegate(DialogPresenter& dialogs, std::filesystem::path supportDirectory)
    : dialogs_(dialogs), autosave_(std::make_unique<document::AutosaveService>(std::move(supportDirectory), timers_)) {
  ApplicationHooks hooks;
  hooks.showWelcome = [this] { welcome_->show(); };
  hooks.about = [this] { showAbout(); };
  hooks.checkForUpdates = [this] { showUpdates(); };
  hooks.quit = [this] { quit(); };
  hooks.documentsChanged = [this] {
    QTimer::singleShot(kWelcomeDelay, &lifetime_, [this] { showWelcomeIfNoDocuments(); });
  };
  documents_ = std::make_unique<DocumentController>(dialogs_, recents_, *autosave_, watchdog_, std::move(hooks));

  WelcomeWindow::Callbacks welcome;
  welcome.presetChosen = [this](const core::CompositionPreset& preset, core::EditingMode mode) {
    presetChosen(preset, mode);
  };
  welcome.openRecent = [this](const std::filesystem::path& path) {
    documents_->openDocumentReportingErrors(path, welcome_->window());
  };
  welcome.openOther = [this] { documents_->openWithPanel(welcome_->window()); };
  // Closing the welcome window with no document open leaves nothing to
  // work in: that is the end of the program.
  welcome.closedByUser = [this] {
    if (documents_->windows().empty()) QTimer::singleShot(0, &lifetime_, [this] { quit(); });
  };
  welcome_ = std::make_unique<WelcomePresenter>(std::move(welcome), [this] { return recents_.paths(); });
}

AppDelegate::~AppDelegate() {
  shutdown();
  welcome_.reset();
  documents_.reset();
}

void AppDelegate::launch(const std::vector<std::filesystem::path>& files) {
  std::vector<document::RecoveryRecord> records;
  if (!sessionBegun_) {
    records = autosave_->beginSession();
    sessionBegun_ = true;
  }
  for (const auto& file : files) documents_->openDocumentReportingErrors(file);
  showWelcomeIfNoDocuments();
  if (!records.empty() && !selfTestAsked()) {
    QTimer::singleShot(0, &lifetime_, [this, records] { offerRecovery(records); });
  }
}

void AppDelegate::offerRecovery(const std::vector<document::RecoveryRecord>& records) {
  const document::RecoveryChoice choice = dialogs_.askRecovery(records);
  const auto open = [this](const std::filesystem::path& path) -> std::expected<void, std::string> {
    auto opened = documents_->openDocument(path);
    if (!opened) return std::unexpected(opened.error().message());
    return {};
  };
  for (const std::string& alert : document::RecoveryPresenter::apply(choice, records, *autosave_, open)) {
    dialogs_.showError(welcome_->window(), QString::fromStdString(alert), QString());
  }
}

void AppDelegate::presetChosen(const core::CompositionPreset& preset, core::EditingMode mode) {
  PendingNewProject::set({preset, mode});
  documents_->newDocument();
}

void AppDelegate::showWelcomeIfNoDocuments() {
  if (documents_->windows().empty()) {
    welcome_->show();
  } else {
    welcome_->close();
  }
}

bool AppDelegate::quit() {
  if (!documents_->closeAll()) return false;
  welcome_->close();
  QCoreApplication::quit();
  return true;
}

void AppDelegate::shutdown() {
  if (shutDown_) return;
  shutDown_ = true;
  if (sessionBegun_) autosave_->endSession();
  document::MediaAccessManager::shared().releaseAll();
}

void AppDelegate::showAbout() {
  QMessageBox::about(welcome_->isVisible() ? welcome_->window() : nullptr, QStringLiteral("About Orvane"),
                     QStringLiteral("<b>Orvane</b> %1<br>Compositing, motion graphics and video editing.")
                         .arg(QString::fromStdString(core::buildVersion())));
}

void AppDelegate::showUpdates() {
  QMessageBox::information(nullptr, QStringLiteral("Check for Updates"),
                           QStringLiteral("Updates to Orvane come from your system\u2019s package manager."));
}

}  // namespace orvane::app
