// After an unclean end the launch offers the autosaved projects back; the
// dialog's texts and buttons, and what Recover and Decide Later do.

#include <QAbstractButton>
#include <QTest>
#include <cstdlib>

#include "app/recovery_dialog.hpp"
#include "document/autosave_service.hpp"
#include "tests/app/app_test_support.hpp"

namespace orvane::app {
namespace {

using testing_support::AppTest;
using testing_support::eventually;

// Stands in for the debounce timers of a session that never got to fire
// them.
class IdleTimers final : public document::OneShotTimerFactory {
 public:
  std::unique_ptr<document::OneShotTimer> start(std::chrono::milliseconds, std::function<void()>) override {
    struct Never final : document::OneShotTimer {
      void cancel() override {}
    };
    return std::make_unique<Never>();
  }
};

class RecoveryTest : public AppTest {
 protected:
  // What a crash leaves: the session lock and one snapshot of a project with
  // a layer, never saved.
  void crashWithProjectNamed(const std::string& name) {
    IdleTimers timers;
    document::AutosaveService crashed(supportFolder(), timers);
    crashed.beginSession();
    core::OVProject project = core::OVProject::starter();
    project.name = name;
    project.updateActiveComposition([](core::Composition& c) {
      c.layers.push_back(core::Layer("Title", core::LayerContent::text({}), c.fullRange()));
    });
    crashed.writeSnapshot(project);
    crashed.waitUntilIdle();
    snapshotID = project.id;
  }  // no endSession: the lock stays

  core::Uuid snapshotID;
};

TEST(RecoveryDialogTest, ShowsTheQuestionTheSummaryAndThreeButtonsInOrder) {
  const std::vector<document::RecoveryRecord> records{
      {core::Uuid::make(), "Tour", core::nowTimestamp(), std::nullopt, {}},
      {core::Uuid::make(), "Promo", core::nowTimestamp(), std::nullopt, {}}};
  const auto dialog = makeRecoveryDialog(records);
  EXPECT_EQ(dialog->icon(), QMessageBox::Warning);
  EXPECT_EQ(dialog->text(), QStringLiteral("Recover 2 projects with unsaved work?"));
  EXPECT_TRUE(dialog->informativeText().startsWith(QStringLiteral("Tour - autosaved ")));
  EXPECT_TRUE(dialog->informativeText().contains(QStringLiteral("\nPromo - autosaved ")));

  const auto buttons = dialog->buttons();
  ASSERT_EQ(buttons.size(), 3);
  QStringList titles;
  for (QAbstractButton* b : buttons) titles << b->text();
  EXPECT_TRUE(titles.contains(QStringLiteral("Recover")) && titles.contains(QStringLiteral("Discard")) &&
              titles.contains(QStringLiteral("Decide Later")));
  for (QAbstractButton* b : buttons) {
    const auto choice = recoveryChoiceFor(*dialog, b);
    const auto title = document::kRecoveryButtonTitles[static_cast<std::size_t>(choice)];
    EXPECT_EQ(b->text().toStdString(), title);
  }
  EXPECT_EQ(recoveryChoiceFor(*dialog, nullptr), document::RecoveryChoice::decideLater);
}

TEST_F(RecoveryTest, RecoverOpensACopyAndDropsTheSnapshot) {
  crashWithProjectNamed("Tour");
  dialogs.recoveryAnswer = document::RecoveryChoice::recover;
  AppDelegate& app = launched();
  ASSERT_TRUE(eventually([&] { return dialogs.recoveryQuestions.size() == 1u; }));
  ASSERT_EQ(dialogs.recoveryQuestions[0].size(), 1u);
  EXPECT_EQ(dialogs.recoveryQuestions[0][0].projectName, "Tour");

  DocumentWindow& window = onlyWindow();
  const auto copy = supportFolder() / "Recovered" / "Tour (Recovered).orvane";
  ASSERT_TRUE(window.filePath());
  EXPECT_EQ(*window.filePath(), copy);
  EXPECT_EQ(window.windowTitle(), QStringLiteral("Tour (Recovered).orvane[*]"));
  EXPECT_EQ(window.document().activeComposition()->layers.size(), 1u);
  app.autosave().waitUntilIdle();
  EXPECT_FALSE(std::filesystem::exists(app.autosave().snapshotPath(snapshotID)));
  EXPECT_TRUE(eventually([&] { return !app.welcome().isVisible(); }));
}

TEST_F(RecoveryTest, DecideLaterKeepsTheSnapshotAndOpensNothing) {
  crashWithProjectNamed("Later");
  dialogs.recoveryAnswer = document::RecoveryChoice::decideLater;
  AppDelegate& app = launched();
  ASSERT_TRUE(eventually([&] { return dialogs.recoveryQuestions.size() == 1u; }));
  EXPECT_TRUE(app.documents().windows().empty());
  EXPECT_TRUE(app.welcome().isVisible());
  app.autosave().waitUntilIdle();
  EXPECT_TRUE(std::filesystem::exists(app.autosave().snapshotPath(snapshotID)));
}

TEST_F(RecoveryTest, ASelfTestLaunchAsksNothingAndKeepsTheSnapshot) {
  crashWithProjectNamed("Checked");
  setenv("OV_SELFTEST_WORKSPACE", (folder() / "check.png").c_str(), 1);
  AppDelegate& app = launched();
  unsetenv("OV_SELFTEST_WORKSPACE");
  QCoreApplication::processEvents();
  EXPECT_TRUE(dialogs.recoveryQuestions.empty());
  app.autosave().waitUntilIdle();
  EXPECT_TRUE(std::filesystem::exists(app.autosave().snapshotPath(snapshotID)));
}

TEST_F(RecoveryTest, ACleanEndOffersNothingNextTime) {
  {
    AppDelegate first(dialogs, supportFolder());
    first.launch({});
    first.shutdown();
  }
  launched();
  QCoreApplication::processEvents();
  EXPECT_TRUE(dialogs.recoveryQuestions.empty());
  EXPECT_TRUE(std::filesystem::exists(delegate().autosave().sessionLockPath()));
  delegate().shutdown();
  EXPECT_FALSE(std::filesystem::exists(delegate().autosave().sessionLockPath()));
}

}  // namespace
}  // namespace orvane::app
