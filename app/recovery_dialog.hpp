#pragma once
// The recovery question after an unclean end: a modal warning that asks
// whether to recover the autosaved projects, lists them, and offers
// "Recover", "Discard" and "Decide Later". The texts and what each choice
// does live in document/'s RecoveryPresenter; this is the dialog. Main
// thread.

#include <QMessageBox>
#include <memory>
#include <vector>

#include "document/recovery_presenter.hpp"

namespace orvane::app {

// The dialog for records, not yet shown.
std::unique_ptr<QMessageBox> makeRecoveryDialog(const std::vector<document::RecoveryRecord>& records,
                                                QWidget* parent = nullptr);
// The choice a button of that dialog stands for; decideLater for anything
// else (the dialog closed by the window manager).
document::RecoveryChoice recoveryChoiceFor(const QMessageBox& dialog, const QAbstractButton* clicked);

}  // namespace orvane::app
