#include "app/document_controller.hpp"

#include <QApplication>
#include <algorithm>
#include <system_error>

#include "app/dialog_presenter.hpp"
#include "app/interaction_watchdog.hpp"
#include "app/pending_new_project.hpp"
#include "app/recent_documents.hpp"
#include "document/autosave_service.hpp"
#include "document/media_access.hpp"
#include "document/project_codec.hpp"

namespace orvane::app {

namespace {

std::filesystem::path absolutePath(const std::filesystem::path& path) {
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(path, error);
  return (error ? path : absolute).lexically_normal();
}

bool samePath(const std::filesystem::path& a, const std::filesystem::path& b) {
  std::error_code error;
  if (std::filesystem::equivalent(a, b, error)) return true;
  return absolutePath(a) == absolutePath(b);
}

QString fileName(const std::filesystem::path& path) { return QString::fromStdString(path.filename().string()); }

// Media whose file cannot be read now, after access was restored.
int restoreMediaAccess(const core::OVProject& project) {
  int lost = 0;
  for (const core::MediaAsset& asset : project.assets) {
    if (!document::MediaAccessManager::shared().restoreAccessFor(asset)) ++lost;
  }
  return lost;
}

}  // namespace

DocumentController::DocumentController(DialogPresenter& dialogs, RecentDocuments& recents,
                                       document::AutosaveService& autosave, InteractionWatchdog& watchdog,
                                       ApplicationHooks hooks)
    : dialogs_(dialogs), recents_(recents), autosave_(autosave), watchdog_(watchdog), hooks_(std::move(hooks)) {}

DocumentController::~DocumentController() {
  // Windows still open at the end go without questions (the quit asked).
  const auto open = windows_;
  windows_.clear();
  for (DocumentWindow* window : open) delete window;
}

DocumentWindow* DocumentController::addWindow(core::OVProject project, std::optional<std::filesystem::path> file) {
  auto* window = new DocumentWindow(std::move(project), std::move(file), *this);
  windows_.push_back(window);
  window->show();
  window->raise();
  window->activateWindow();
  if (hooks_.documentsChanged) hooks_.documentsChanged();
  return window;
}

DocumentWindow* DocumentController::newDocument() { return addWindow(PendingNewProject::starterProject(), std::nullopt); }

DocumentWindow* DocumentController::windowFor(const std::filesystem::path& path) const {
  for (DocumentWindow* window : windows_) {
    if (window->filePath() && samePath(*window->filePath(), path)) return window;
  }
  return nullptr;
}

std::expected<DocumentWindow*, document::ProjectCodecError> DocumentController::openDocument(
    const std::filesystem::path& path) {
  const std::filesystem::path file = absolutePath(path);
  if (DocumentWindow* open = windowFor(file)) {
    open->raise();
    open->activateWindow();
    return open;
  }
  auto project = document::ProjectDocument::read(file);
  if (!project) return std::unexpected(project.error());
  recents_.noteOpened(file);
  DocumentWindow* window = addWindow(std::move(*project), file);
  if (window->document().hasPackagedMedia()) {
    window->document().resolvePackagedMedia(file);
    window->markSaved();
  }
  return window;
}

DocumentWindow* DocumentController::openDocumentReportingErrors(const std::filesystem::path& path, QWidget* parent) {
  auto opened = openDocument(path);
  if (opened) return *opened;
  dialogs_.showError(parent, QStringLiteral("The document \u201C%1\u201D could not be opened.").arg(fileName(path)),
                     QString::fromStdString(opened.error().message()));
  return nullptr;
}

void DocumentController::openWithPanel(QWidget* parent) {
  if (const auto path = dialogs_.chooseFileToOpen(parent)) openDocumentReportingErrors(*path, parent);
}

bool DocumentController::writeTo(DocumentWindow& window, const std::filesystem::path& path) {
  if (auto written = document::ProjectCodec::write(window.document().snapshot(), path); !written) {
    dialogs_.showError(&window, QStringLiteral("The document \u201C%1\u201D could not be saved.").arg(fileName(path)),
                       QString::fromStdString(written.error().message));
    return false;
  }
  window.setFilePath(path);
  window.markSaved();
  recents_.noteOpened(path);
  return true;
}

bool DocumentController::save(DocumentWindow& window) {
  if (!window.filePath()) return saveAs(window);
  return writeTo(window, *window.filePath());
}

bool DocumentController::saveAs(DocumentWindow& window) {
  const QString suggested = window.filePath() ? fileName(*window.filePath())
                                              : window.displayName() + QStringLiteral(".orvane");
  const auto path = dialogs_.chooseSaveLocation(&window, suggested);
  if (!path) return false;
  return writeTo(window, withProjectExtension(absolutePath(*path)));
}

void DocumentController::revert(DocumentWindow& window) {
  if (!window.filePath()) return;
  auto project = document::ProjectDocument::read(*window.filePath());
  if (!project) {
    dialogs_.showError(&window, QStringLiteral("The document \u201C%1\u201D could not be reverted.")
                                    .arg(fileName(*window.filePath())),
                       QString::fromStdString(project.error().message()));
    return;
  }
  window.replaceProject(std::move(*project));
}

bool DocumentController::windowShouldClose(DocumentWindow& window) {
  if (!window.hasUnsavedChanges()) return true;
  switch (dialogs_.askToSaveChanges(&window, window.displayName())) {
    case SaveChangesAnswer::save:
      return save(window);
    case SaveChangesAnswer::dontSave:
      return true;
    case SaveChangesAnswer::cancel:
      return false;
  }
  return false;
}

bool DocumentController::closeAll() {
  const auto open = windows_;
  for (DocumentWindow* window : open) {
    if (!windowShouldClose(*window)) return false;
  }
  for (DocumentWindow* window : open) window->closeWithoutAsking();
  return true;
}

void DocumentController::windowClosed(DocumentWindow& window) {
  std::erase(windows_, &window);
  if (hooks_.documentsChanged) hooks_.documentsChanged();
}

ShellActions DocumentController::shellActionsFor(DocumentWindow& window) {
  DocumentWindow* w = &window;
  ShellActions a;
  a.newDocument = [this] { newDocument(); };
  a.openDocument = [this, w] { openWithPanel(w); };
  a.closeWindow = [w] { w->close(); };
  a.save = [this, w] { save(*w); };
  a.saveAs = [this, w] { saveAs(*w); };
  a.revert = [this, w] { revert(*w); };
  a.quit = hooks_.quit;
  a.showWelcome = hooks_.showWelcome;
  a.about = hooks_.about;
  a.checkForUpdates = hooks_.checkForUpdates;
  a.recentDocuments = [this] { return recents_.paths(); };
  a.openRecent = [this, w](const std::filesystem::path& path) { openDocumentReportingErrors(path, w); };
  return a;
}

void DocumentController::documentChanged(DocumentWindow& window) {
  std::optional<std::string> original;
  if (window.filePath()) original = window.filePath()->string();
  autosave_.scheduleSnapshot(window.document().project(), std::move(original));
}

void DocumentController::workspaceStarted(DocumentWindow& window) {
  watchdog_.install(window.sharedDocument(), window.undoStack());
  if (const int lost = restoreMediaAccess(window.document().project()); lost > 0) {
    window.showStatus(lost == 1 ? QStringLiteral("1 media file could not be found.")
                                : QStringLiteral("%1 media files could not be found.").arg(lost));
  }
}

}  // namespace orvane::app
