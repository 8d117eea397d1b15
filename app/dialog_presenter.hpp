#pragma once
// Every question and message the desktop puts up in a dialog, behind one
// interface: the application shows Qt's dialogs (QtDialogPresenter), tests
// answer with a script, so that no dialog blocks them. Main thread.

#include <QString>
#include <filesystem>
#include <optional>
#include <vector>

#include "document/autosave_service.hpp"
#include "document/recovery_presenter.hpp"

class QWidget;

namespace orvane::app {

enum class SaveChangesAnswer { save, dontSave, cancel };

class DialogPresenter {
 public:
  virtual ~DialogPresenter() = default;

  // A failure the user must see: a title line and the sentence of the error.
  virtual void showError(QWidget* parent, const QString& message, const QString& detail) = 0;
  // "Do you want to save the changes made to the document "name"?"
  virtual SaveChangesAnswer askToSaveChanges(QWidget* parent, const QString& documentName) = 0;
  // The recovery question at launch (records is never empty).
  virtual document::RecoveryChoice askRecovery(const std::vector<document::RecoveryRecord>& records) = 0;
  // A project file to open; none when cancelled.
  virtual std::optional<std::filesystem::path> chooseFileToOpen(QWidget* parent) = 0;
  // Where to save; none when cancelled. The path ends in ".orvane".
  virtual std::optional<std::filesystem::path> chooseSaveLocation(QWidget* parent,
                                                                  const QString& suggestedName) = 0;
};

// The dialogs themselves: QMessageBox and QFileDialog, modal.
class QtDialogPresenter final : public DialogPresenter {
 public:
  void showError(QWidget* parent, const QString& message, const QString& detail) override;
  SaveChangesAnswer askToSaveChanges(QWidget* parent, const QString& documentName) override;
  document::RecoveryChoice askRecovery(const std::vector<document::RecoveryRecord>& records) override;
  std::optional<std::filesystem::path> chooseFileToOpen(QWidget* parent) override;
  std::optional<std::filesystem::path> chooseSaveLocation(QWidget* parent, const QString& suggestedName) override;
};

// Paths with ".orvane" added when the user left it off.
std::filesystem::path withProjectExtension(std::filesystem::path path);

}  // namespace orvane::app
