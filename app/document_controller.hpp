#pragma once
// The open documents and everything that concerns them as files: new
// documents (from the welcome window's pending choice), opening (read
// errors shown with the codec's sentence, no window), saving and Save As
// (written atomically by the codec), Revert, the unsaved-changes question
// when a window closes or the program quits, the recent-documents list and
// the autosave snapshot at every revision. Owned by the application object;
// main thread.

#include <expected>
#include <filesystem>
#include <functional>
#include <vector>

#include "app/document_window.hpp"
#include "document/project_codec_error.hpp"

class QWidget;

namespace orvane::document {
class AutosaveService;
}

namespace orvane::app {

class DialogPresenter;
class InteractionWatchdog;
class RecentDocuments;

// What the controller asks of the application around it.
struct ApplicationHooks {
  std::function<void()> showWelcome;
  std::function<void()> about;
  std::function<void()> checkForUpdates;
  std::function<void()> quit;
  // A document window opened or closed.
  std::function<void()> documentsChanged;
};

class DocumentController final : public WindowHost {
 public:
  DocumentController(DialogPresenter& dialogs, RecentDocuments& recents, document::AutosaveService& autosave,
                     InteractionWatchdog& watchdog, ApplicationHooks hooks);
  ~DocumentController() override;
  DocumentController(const DocumentController&) = delete;
  DocumentController& operator=(const DocumentController&) = delete;

  // A new window; its project follows the welcome window's pending choice,
  // else the default starter.
  DocumentWindow* newDocument();
  // Opens path in a window, or raises the window that has it open already.
  std::expected<DocumentWindow*, document::ProjectCodecError> openDocument(const std::filesystem::path& path);
  // The same, with a failure shown in an error dialog; null then.
  DocumentWindow* openDocumentReportingErrors(const std::filesystem::path& path, QWidget* parent = nullptr);
  // Asks for a file, then opens it.
  void openWithPanel(QWidget* parent);

  // False when the file could not be written or the user cancelled.
  bool save(DocumentWindow& window);
  bool saveAs(DocumentWindow& window);
  // Back to the file's contents, dropping undo; nothing for a new document.
  void revert(DocumentWindow& window);
  // Asks about each window with unsaved changes, then closes them all; false
  // (and nothing closed) when the user cancelled.
  bool closeAll();

  const std::vector<DocumentWindow*>& windows() const { return windows_; }
  DocumentWindow* windowFor(const std::filesystem::path& path) const;

  // --- WindowHost ---
  bool windowShouldClose(DocumentWindow& window) override;
  void windowClosed(DocumentWindow& window) override;
  ShellActions shellActionsFor(DocumentWindow& window) override;
  void documentChanged(DocumentWindow& window) override;
  void workspaceStarted(DocumentWindow& window) override;

 private:
  DocumentWindow* addWindow(core::OVProject project, std::optional<std::filesystem::path> file);
  bool writeTo(DocumentWindow& window, const std::filesystem::path& path);

  DialogPresenter& dialogs_;
  RecentDocuments& recents_;
  document::AutosaveService& autosave_;
  InteractionWatchdog& watchdog_;
  ApplicationHooks hooks_;
  std::vector<DocumentWindow*> windows_;
};

}  // namespace orvane::app
