// The command table: its keys as the platform spells them, which commands
// a window can carry out today, and the keys a text field keeps.

#include <QLineEdit>
#include <QMenuBar>
#include <QStatusBar>
#include <QTest>
#include <map>
#include <set>

#include "app/layer_list_view.hpp"
#include "app/workspace_commands.hpp"
#include "tests/app/app_test_support.hpp"

namespace orvane::app {
namespace {

using testing_support::AppTest;

const CommandItem* row(std::string_view title) {
  for (const CommandItem& item : workspaceCommandTable()) {
    if (item.title == title) return &item;
  }
  return nullptr;
}

TEST(WorkspaceCommandTableTest, CommandIsCtrlAndOptionIsAlt) {
  EXPECT_EQ(keySequenceFor(*row("New Text Layer")), QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_T));
  EXPECT_EQ(keySequenceFor(*row("New Adjustment Layer")), QKeySequence(Qt::CTRL | Qt::ALT | Qt::SHIFT | Qt::Key_Y));
  EXPECT_EQ(keySequenceFor(*row("New Composition...")), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N));
  EXPECT_EQ(keySequenceFor(*row("Set Work Area End")), QKeySequence(Qt::Key_N));
  EXPECT_EQ(keySequenceFor(*row("Previous Frame")), QKeySequence(Qt::Key_Left));
  EXPECT_TRUE(keySequenceFor(*row("Package Project\u2026")).isEmpty());
  EXPECT_TRUE(isBareKey(*row("Play / Pause")));
  EXPECT_FALSE(isBareKey(*row("Clear Work Area")));
  EXPECT_FALSE(isBareKey(*row("Smart Guides")));
}

TEST(WorkspaceCommandTableTest, NoTwoCommandsShareAKey) {
  std::set<QString> keys;
  for (const CommandItem& item : workspaceCommandTable()) {
    const QKeySequence key = keySequenceFor(item);
    if (key.isEmpty()) continue;
    EXPECT_TRUE(keys.insert(key.toString()).second) << "key of " << item.title << " is taken";
  }
  // The document commands take standard keys of their own.
  for (const QKeySequence& standard : {QKeySequence(QKeySequence::New), QKeySequence(QKeySequence::Open),
                                      QKeySequence(QKeySequence::Save), QKeySequence(QKeySequence::Undo)}) {
    EXPECT_FALSE(keys.contains(standard.toString())) << standard.toString().toStdString();
  }
}

class WorkspaceCommandsTest : public AppTest {};

TEST_F(WorkspaceCommandsTest, MenusCarryTheTableAndDisableWhatIsNotBuilt) {
  launched();
  DocumentWindow& window = *delegate().documents().newDocument();
  QStringList menus;
  for (QAction* menu : window.menuBar()->actions()) menus << menu->text();
  EXPECT_EQ(menus, (QStringList{"Orvane", "File", "Edit", "Layer", "Playback", "View", "Help"}));
  for (const CommandItem& item : workspaceCommandTable()) {
    QAction* action = menuItem(window, QString::fromUtf8(item.title.data(), item.title.size()));
    ASSERT_NE(action, nullptr) << item.title;
    EXPECT_EQ(action->shortcut(), keySequenceFor(item)) << item.title;
  }
  EXPECT_FALSE(menuItem(window, QStringLiteral("Export..."))->isEnabled());
  EXPECT_FALSE(menuItem(window, QStringLiteral("Play / Pause"))->isEnabled());
  EXPECT_TRUE(menuItem(window, QStringLiteral("New Text Layer"))->isEnabled());
  EXPECT_TRUE(menuItem(window, QStringLiteral("Welcome to Orvane"))->isEnabled());
  EXPECT_EQ(menuItem(window, QStringLiteral("Guides & Overlays")), nullptr) << "submenus are menus, not items";
  // A key that two items of the window share triggers neither of them.
  std::map<QString, QString> owners;
  for (QAction* action : window.findChildren<QAction*>()) {
    for (const QKeySequence& key : action->shortcuts()) {
      const auto [it, added] = owners.emplace(key.toString(), action->text());
      EXPECT_TRUE(added) << key.toString().toStdString() << " is on " << it->second.toStdString() << " and "
                         << action->text().toStdString();
    }
  }
}

TEST_F(WorkspaceCommandsTest, BareKeysActOnTheWindowButNotInATextField) {
  launched();
  DocumentWindow& window = *delegate().documents().newDocument();
  auto* field = new QLineEdit;
  window.statusBar()->addPermanentWidget(field);
  window.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  const auto playheadFrame = [&] {
    const core::Composition* c = window.document().activeComposition();
    return c->frameRate.frameIndexAt(c->playheadTime);
  };

  window.layerList()->setFocus();
  QTest::keyClick(window.layerList(), Qt::Key_Right);
  QTest::keyClick(window.layerList(), Qt::Key_Right);
  EXPECT_EQ(playheadFrame(), 2);
  QTest::keyClick(window.layerList(), Qt::Key_N);
  ASSERT_TRUE(window.document().activeComposition()->workArea);

  const auto workArea = window.document().activeComposition()->workArea;
  field->setFocus();
  QTest::keyClick(field, Qt::Key_B);
  QTest::keyClick(field, Qt::Key_Left);
  QTest::keyClick(field, Qt::Key_N);
  EXPECT_EQ(field->text(), QStringLiteral("nb"));
  EXPECT_EQ(playheadFrame(), 2);
  EXPECT_EQ(window.document().activeComposition()->workArea, workArea);

  // Keys with Ctrl still reach the menus from a text field.
  QTest::keyClick(field, Qt::Key_T, Qt::ControlModifier | Qt::AltModifier);
  EXPECT_EQ(window.document().activeComposition()->layers.size(), 1u);
}

}  // namespace
}  // namespace orvane::app
