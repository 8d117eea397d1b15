// A document window's file life: undo and redo through the Edit menu, the
// unsaved-changes mark and question, saving and reverting.

#include <QPointer>
#include <QStatusBar>
#include <QTest>

#include "Commands/layer_edits.hpp"
#include "document/project_codec.hpp"
#include "tests/app/app_test_support.hpp"

namespace orvane::app {
namespace {

using testing_support::AppTest;
using testing_support::eventually;

class DocumentWindowTest : public AppTest {
 protected:
  DocumentWindow& newWindow() {
    launched();
    return *delegate().documents().newDocument();
  }
  static std::size_t layerCount(DocumentWindow& window) {
    return window.document().activeComposition()->layers.size();
  }
};

TEST_F(DocumentWindowTest, UndoAndRedoAreTitledAfterTheLastStep) {
  DocumentWindow& window = newWindow();
  QAction* undo = menuItem(window, QStringLiteral("Undo"));
  QAction* redo = menuItem(window, QStringLiteral("Redo"));
  ASSERT_TRUE(undo && redo);
  EXPECT_FALSE(undo->isEnabled());
  EXPECT_FALSE(redo->isEnabled());

  choose(window, QStringLiteral("New Text Layer"));
  choose(window, QStringLiteral("New Solid Layer"));
  EXPECT_EQ(layerCount(window), 2u);
  EXPECT_EQ(undo->text(), QStringLiteral("Undo Add Solid Layer"));
  ASSERT_EQ(window.selection().size(), 1u) << "a new layer is selected";

  choose(window, QStringLiteral("Delete"));
  EXPECT_EQ(layerCount(window), 1u);
  EXPECT_TRUE(window.selection().empty()) << "a deleted layer leaves the selection";
  EXPECT_EQ(undo->text(), QStringLiteral("Undo Delete Layer"));

  choose(window, QStringLiteral("Undo Delete Layer"));
  EXPECT_EQ(layerCount(window), 2u);
  EXPECT_EQ(undo->text(), QStringLiteral("Undo Add Solid Layer"));
  EXPECT_EQ(redo->text(), QStringLiteral("Redo Delete Layer"));
  EXPECT_TRUE(redo->isEnabled());

  choose(window, QStringLiteral("Redo Delete Layer"));
  EXPECT_EQ(layerCount(window), 1u);
  EXPECT_EQ(redo->text(), QStringLiteral("Redo"));
  EXPECT_FALSE(redo->isEnabled());
}

TEST_F(DocumentWindowTest, EachWindowUndoesItsOwnDocument) {
  DocumentWindow& first = newWindow();
  DocumentWindow& second = *delegate().documents().newDocument();
  choose(first, QStringLiteral("New Text Layer"));
  EXPECT_EQ(menuItem(second, QStringLiteral("Undo"))->isEnabled(), false);
  choose(second, QStringLiteral("New Adjustment Layer"));
  choose(first, QStringLiteral("Undo Add Text Layer"));
  EXPECT_EQ(layerCount(first), 0u);
  EXPECT_EQ(layerCount(second), 1u);
}

TEST_F(DocumentWindowTest, ModifiedMarkFollowsEditsUndoAndSaveButNotThePlayhead) {
  DocumentWindow& window = newWindow();
  EXPECT_FALSE(window.isWindowModified());
  choose(window, QStringLiteral("Next Frame"));
  EXPECT_GT(window.document().activeComposition()->playheadTime, core::OVTime::zero);
  EXPECT_FALSE(window.isWindowModified()) << "moving the playhead is no change to save";

  choose(window, QStringLiteral("New Text Layer"));
  EXPECT_TRUE(window.isWindowModified());
  choose(window, QStringLiteral("Undo Add Text Layer"));
  EXPECT_FALSE(window.isWindowModified());

  choose(window, QStringLiteral("New Text Layer"));
  const auto path = folder() / "saved.orvane";
  dialogs.saveLocation = folder() / "saved";  // the extension is added
  choose(window, QStringLiteral("Save"));
  EXPECT_FALSE(window.isWindowModified());
  EXPECT_EQ(window.windowTitle(), QStringLiteral("saved.orvane[*]"));
  const auto reread = document::ProjectCodec::read(path);
  ASSERT_TRUE(reread);
  EXPECT_EQ(reread->activeComposition()->layers.size(), 1u);

  // Revert drops the edits made since, and their undo.
  choose(window, QStringLiteral("New Solid Layer"));
  choose(window, QStringLiteral("Revert to Saved"));
  EXPECT_EQ(layerCount(window), 1u);
  EXPECT_FALSE(window.isWindowModified());
  EXPECT_FALSE(menuItem(window, QStringLiteral("Undo"))->isEnabled());
}

TEST_F(DocumentWindowTest, ClosingWithUnsavedChangesAsksFirst) {
  DocumentWindow& window = newWindow();
  QPointer<DocumentWindow> watched(&window);
  choose(window, QStringLiteral("New Text Layer"));

  dialogs.saveAnswers = {SaveChangesAnswer::cancel};
  EXPECT_FALSE(window.close());
  ASSERT_EQ(dialogs.saveQuestions.size(), 1u);
  EXPECT_EQ(dialogs.saveQuestions[0], QStringLiteral("Untitled"));
  EXPECT_EQ(delegate().documents().windows().size(), 1u);

  // Save, with the file chooser cancelled: still open.
  dialogs.saveAnswers = {SaveChangesAnswer::save};
  dialogs.saveLocation.reset();
  EXPECT_FALSE(window.close());

  // Save to a file: written, then closed.
  dialogs.saveAnswers = {SaveChangesAnswer::save};
  dialogs.saveLocation = folder() / "closing.orvane";
  EXPECT_TRUE(window.close());
  EXPECT_TRUE(std::filesystem::exists(folder() / "closing.orvane"));
  EXPECT_TRUE(delegate().documents().windows().empty());
  EXPECT_TRUE(eventually([&] { return watched.isNull(); }));
}

TEST_F(DocumentWindowTest, DontSaveClosesWithoutWritingAndCleanWindowsCloseUnasked) {
  DocumentWindow& edited = newWindow();
  DocumentWindow& clean = *delegate().documents().newDocument();
  choose(edited, QStringLiteral("New Text Layer"));
  EXPECT_TRUE(clean.close());
  EXPECT_TRUE(dialogs.saveQuestions.empty());

  dialogs.saveAnswers = {SaveChangesAnswer::dontSave};
  EXPECT_TRUE(edited.close());
  EXPECT_EQ(dialogs.saveQuestions.size(), 1u);
  EXPECT_TRUE(delegate().documents().windows().empty());
}

TEST_F(DocumentWindowTest, QuitCancelledByOneWindowClosesNone) {
  DocumentWindow& first = newWindow();
  DocumentWindow& second = *delegate().documents().newDocument();
  choose(first, QStringLiteral("New Text Layer"));
  choose(second, QStringLiteral("New Text Layer"));
  dialogs.saveAnswers = {SaveChangesAnswer::dontSave, SaveChangesAnswer::cancel};
  EXPECT_FALSE(delegate().quit());
  EXPECT_EQ(dialogs.saveQuestions.size(), 2u) << "each unsaved window is asked";
  EXPECT_EQ(delegate().documents().windows().size(), 2u);

  // Asked again, both let go: both close.
  dialogs.saveAnswers = {SaveChangesAnswer::dontSave, SaveChangesAnswer::dontSave};
  EXPECT_TRUE(delegate().quit());
  EXPECT_EQ(dialogs.saveQuestions.size(), 4u);
  EXPECT_TRUE(delegate().documents().windows().empty());
}

TEST_F(DocumentWindowTest, FailedSaveSaysWhyAndKeepsTheFileTheWindowAndItsChanges) {
  DocumentWindow& window = newWindow();
  choose(window, QStringLiteral("New Text Layer"));
  const auto kept = folder() / "kept.orvane";
  dialogs.saveLocation = kept;
  choose(window, QStringLiteral("Save"));
  const auto saved = document::ProjectCodec::read(kept);
  ASSERT_TRUE(saved);

  choose(window, QStringLiteral("New Solid Layer"));
  dialogs.saveLocation = folder() / "no such folder" / "elsewhere.orvane";
  choose(window, QStringLiteral("Save As\u2026"));
  ASSERT_EQ(dialogs.errors.size(), 1u);
  EXPECT_EQ(dialogs.errors[0].message, QStringLiteral("The document \u201Celsewhere.orvane\u201D could not be saved."));
  EXPECT_TRUE(dialogs.errors[0].detail.startsWith(QStringLiteral("Could not save \"elsewhere.orvane\": ")))
      << dialogs.errors[0].detail.toStdString();
  EXPECT_EQ(window.windowTitle(), QStringLiteral("kept.orvane[*]"));
  EXPECT_TRUE(window.isWindowModified());
  EXPECT_EQ(document::ProjectCodec::read(kept)->activeComposition()->layers.size(), 1u);

  // Save chosen at the close question, and the save fails: the window stays.
  window.setFilePath(folder() / "no such folder" / "kept.orvane");
  dialogs.saveAnswers = {SaveChangesAnswer::save};
  EXPECT_FALSE(window.close());
  EXPECT_EQ(dialogs.errors.size(), 2u);
  EXPECT_EQ(delegate().documents().windows().size(), 1u);
}

TEST_F(DocumentWindowTest, SplitAtPlayheadCutsTheSelectionAndSaysWhenItCannot) {
  DocumentWindow& window = newWindow();
  choose(window, QStringLiteral("Split at Playhead"));  // nothing selected
  EXPECT_EQ(window.statusBar()->currentMessage(),
            QStringLiteral("Move the playhead inside a selected layer to split it."));
  choose(window, QStringLiteral("New Text Layer"));
  for (int i = 0; i < 30; ++i) choose(window, QStringLiteral("Next Frame"));
  choose(window, QStringLiteral("Split at Playhead"));
  EXPECT_EQ(window.statusBar()->currentMessage(), QStringLiteral("Split 1 layer."));
  EXPECT_EQ(layerCount(window), 2u);
  choose(window, QStringLiteral("Select All Layers"));
  choose(window, QStringLiteral("Duplicate"));
  EXPECT_EQ(layerCount(window), 4u);
  EXPECT_EQ(menuItem(window, QStringLiteral("Undo"))->text(), QStringLiteral("Undo Duplicate Layers"));
}

}  // namespace
}  // namespace orvane::app
