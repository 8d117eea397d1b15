#include "app/recovery_dialog.hpp"

#include <QAbstractButton>
#include <QPushButton>
#include <string>

namespace orvane::app {

namespace {

QString buttonTitle(document::RecoveryChoice choice) {
  const auto title = document::kRecoveryButtonTitles[static_cast<std::size_t>(choice)];
  return QString::fromUtf8(title.data(), static_cast<qsizetype>(title.size()));
}

QMessageBox::ButtonRole roleOf(document::RecoveryChoice choice) {
  switch (choice) {
    case document::RecoveryChoice::recover:
      return QMessageBox::AcceptRole;
    case document::RecoveryChoice::discard:
      return QMessageBox::DestructiveRole;
    case document::RecoveryChoice::decideLater:
      return QMessageBox::RejectRole;
  }
  return QMessageBox::RejectRole;
}

constexpr document::RecoveryChoice kChoices[] = {document::RecoveryChoice::recover,
                                                 document::RecoveryChoice::discard,
                                                 document::RecoveryChoice::decideLater};

}  // namespace

std::unique_ptr<QMessageBox> makeRecoveryDialog(const std::vector<document::RecoveryRecord>& records,
                                                QWidget* parent) {
  auto dialog = std::make_unique<QMessageBox>(parent);
  dialog->setIcon(QMessageBox::Warning);
  dialog->setWindowTitle(QStringLiteral("Orvane"));
  dialog->setText(QString::fromStdString(document::RecoveryPresenter::messageText(records)));
  dialog->setInformativeText(QString::fromStdString(document::RecoveryPresenter::summary(records)));
  for (const auto choice : kChoices) {
    QPushButton* button = dialog->addButton(buttonTitle(choice), roleOf(choice));
    button->setProperty("recoveryChoice", static_cast<int>(choice));
    if (choice == document::RecoveryChoice::recover) dialog->setDefaultButton(button);
    if (choice == document::RecoveryChoice::decideLater) dialog->setEscapeButton(button);
  }
  return dialog;
}

document::RecoveryChoice recoveryChoiceFor(const QMessageBox& dialog, const QAbstractButton* clicked) {
  if (clicked == nullptr || !dialog.buttons().contains(const_cast<QAbstractButton*>(clicked))) {
    return document::RecoveryChoice::decideLater;
  }
  const QVariant value = clicked->property("recoveryChoice");
  if (!value.isValid()) return document::RecoveryChoice::decideLater;
  return static_cast<document::RecoveryChoice>(value.toInt());
}

}  // namespace orvane::app
