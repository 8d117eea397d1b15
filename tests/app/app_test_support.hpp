#pragma once
// What the desktop tests share: dialogs that answer from a script instead
// of waiting for a person, and a fixture with an application delegate over
// its own support folder.

#include <gtest/gtest.h>

#include <QAction>
#include <QMenu>
#include <ostream>
#include <QCoreApplication>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/app_delegate.hpp"
#include "app/dialog_presenter.hpp"
#include "app/document_window.hpp"

// Readable QStrings in failure messages.
inline void PrintTo(const QString& text, std::ostream* out) { *out << '"' << text.toStdString() << '"'; }

namespace orvane::app::testing_support {

// Runs the event loop until condition holds or two seconds have passed.
// Qt's QTRY_ macros cannot be used here: under GoogleTest a failed one
// returns from the test without reporting anything.
template <typename Condition>
bool eventually(Condition condition) {
  for (int waited = 0; waited < 2000; waited += 10) {
    if (condition()) return true;
    QTest::qWait(10);
  }
  return condition();
}

struct ShownError {
  QString message;
  QString detail;
};

class ScriptedDialogs final : public DialogPresenter {
 public:
  void showError(QWidget*, const QString& message, const QString& detail) override {
    errors.push_back({message, detail});
  }
  SaveChangesAnswer askToSaveChanges(QWidget*, const QString& documentName) override {
    saveQuestions.push_back(documentName);
    if (saveAnswers.empty()) return SaveChangesAnswer::cancel;
    const SaveChangesAnswer answer = saveAnswers.front();
    saveAnswers.pop_front();
    return answer;
  }
  document::RecoveryChoice askRecovery(const std::vector<document::RecoveryRecord>& records) override {
    recoveryQuestions.push_back(records);
    return recoveryAnswer;
  }
  std::optional<std::filesystem::path> chooseFileToOpen(QWidget*) override { return fileToOpen; }
  std::optional<std::filesystem::path> chooseSaveLocation(QWidget*, const QString&) override { return saveLocation; }

  std::vector<ShownError> errors;
  std::vector<QString> saveQuestions;
  std::deque<SaveChangesAnswer> saveAnswers;
  std::vector<std::vector<document::RecoveryRecord>> recoveryQuestions;
  document::RecoveryChoice recoveryAnswer = document::RecoveryChoice::decideLater;
  std::optional<std::filesystem::path> fileToOpen;
  std::optional<std::filesystem::path> saveLocation;
};

class AppTest : public ::testing::Test {
 protected:
  AppTest() { QSettings().clear(); }
  ~AppTest() override {
    delegate_.reset();
    QSettings().clear();
  }

  std::filesystem::path folder() const { return std::filesystem::path(temp_.path().toStdString()); }
  std::filesystem::path supportFolder() const { return folder() / "support"; }

  AppDelegate& delegate() {
    if (!delegate_) delegate_ = std::make_unique<AppDelegate>(dialogs, supportFolder());
    return *delegate_;
  }
  AppDelegate& launched(const std::vector<std::filesystem::path>& files = {}) {
    delegate().launch(files);
    QCoreApplication::processEvents();
    return delegate();
  }
  DocumentWindow& onlyWindow() {
    EXPECT_EQ(delegate().documents().windows().size(), 1u);
    return *delegate().documents().windows().front();
  }
  // The item as the menu shows it now ("Undo Add Text Layer"), else by the
  // title it was built with.
  static QAction* menuItem(const DocumentWindow& window, const QString& title) {
    for (QAction* action : window.findChildren<QAction*>()) {
      if (action->text() == title && !action->menu()) return action;
    }
    const auto it = window.menus().byTitle.find(title);
    return it == window.menus().byTitle.end() ? nullptr : it->second;
  }
  static void choose(const DocumentWindow& window, const QString& title) {
    QAction* action = menuItem(window, title);
    ASSERT_NE(action, nullptr) << title.toStdString();
    ASSERT_TRUE(action->isEnabled()) << title.toStdString();
    action->trigger();
  }

  ScriptedDialogs dialogs;

 private:
  QTemporaryDir temp_;
  std::unique_ptr<AppDelegate> delegate_;
};

}  // namespace orvane::app::testing_support
