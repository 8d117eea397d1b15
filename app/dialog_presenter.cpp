#include "app/dialog_presenter.hpp"

#include <QAbstractButton>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>

#include "app/recovery_dialog.hpp"
#include "document/project_codec.hpp"

namespace orvane::app {

namespace {

const QString kProjectFilter = QStringLiteral("Orvane Projects (*.orvane)");

QString startFolder() {
  const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
  return documents.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::HomeLocation) : documents;
}

}  // namespace

std::filesystem::path withProjectExtension(std::filesystem::path path) {
  if (path.extension() != document::kProjectFileExtension) path += std::string(document::kProjectFileExtension);
  return path;
}

void QtDialogPresenter::showError(QWidget* parent, const QString& message, const QString& detail) {
  QMessageBox box(QMessageBox::Critical, QStringLiteral("Orvane"), message, QMessageBox::Ok, parent);
  box.setInformativeText(detail);
  box.exec();
}

SaveChangesAnswer QtDialogPresenter::askToSaveChanges(QWidget* parent, const QString& documentName) {
  QMessageBox box(parent);
  box.setIcon(QMessageBox::Warning);
  box.setWindowTitle(QStringLiteral("Orvane"));
  box.setText(QStringLiteral("Do you want to save the changes made to the document \u201C%1\u201D?").arg(documentName));
  box.setInformativeText(QStringLiteral("Your changes will be lost if you don\u2019t save them."));
  QPushButton* save = box.addButton(QStringLiteral("Save"), QMessageBox::AcceptRole);
  QPushButton* dontSave = box.addButton(QStringLiteral("Don\u2019t Save"), QMessageBox::DestructiveRole);
  QPushButton* cancel = box.addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
  box.setDefaultButton(save);
  box.setEscapeButton(cancel);
  box.exec();
  if (box.clickedButton() == save) return SaveChangesAnswer::save;
  if (box.clickedButton() == dontSave) return SaveChangesAnswer::dontSave;
  return SaveChangesAnswer::cancel;
}

document::RecoveryChoice QtDialogPresenter::askRecovery(const std::vector<document::RecoveryRecord>& records) {
  const auto dialog = makeRecoveryDialog(records);
  dialog->exec();
  return recoveryChoiceFor(*dialog, dialog->clickedButton());
}

std::optional<std::filesystem::path> QtDialogPresenter::chooseFileToOpen(QWidget* parent) {
  const QString file = QFileDialog::getOpenFileName(parent, QStringLiteral("Open"), startFolder(), kProjectFilter);
  if (file.isEmpty()) return std::nullopt;
  return std::filesystem::path(file.toStdString());
}

std::optional<std::filesystem::path> QtDialogPresenter::chooseSaveLocation(QWidget* parent,
                                                                           const QString& suggestedName) {
  const QString suggested = startFolder() + QLatin1Char('/') + suggestedName;
  const QString file = QFileDialog::getSaveFileName(parent, QStringLiteral("Save As"), suggested, kProjectFilter);
  if (file.isEmpty()) return std::nullopt;
  return withProjectExtension(file.toStdString());
}

}  // namespace orvane::app
