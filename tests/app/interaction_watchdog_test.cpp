// The watchdog with the toolkit's real mouse state: a drag whose end never
// came is ended after the button goes up, one held button keeps it going,
// a keyboard interaction is left alone, and a window closed mid-drag leaves
// nothing behind to recover.

#include <QPointer>
#include <QTest>

#include "app/interaction_watchdog.hpp"
#include "app/stage_view.hpp"
#include "tests/app/app_test_support.hpp"

namespace orvane::app {
namespace {

using testing_support::AppTest;

class InteractionWatchdogTest : public AppTest {
 protected:
  DocumentWindow& shownWindow() {
    launched();
    DocumentWindow& window = *delegate().documents().newDocument();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    return window;
  }
  // Mouse events go to the window, as the platform delivers them, so that
  // the toolkit's button state and the window-level release are the real
  // ones.
  static void press(DocumentWindow& window, Qt::MouseButton button) {
    QTest::mousePress(window.windowHandle(), button, {}, stagePoint(window));
  }
  static void release(DocumentWindow& window, Qt::MouseButton button) {
    QTest::mouseRelease(window.windowHandle(), button, {}, stagePoint(window));
  }
  static QPoint stagePoint(DocumentWindow& window) { return window.stage()->mapTo(&window, QPoint(40, 40)); }
  static void renameProject(DocumentWindow& window, const std::string& name) {
    window.document().updateInteraction([&](core::OVProject& p) { p.name = name; });
  }
  // Longer than the watchdog's delay, so that a scheduled recovery has run.
  static void waitPastRecovery() { QTest::qWait(static_cast<int>(InteractionWatchdog::kRecoveryDelay.count()) + 150); }
};

TEST_F(InteractionWatchdogTest, MouseDragWithoutItsEndIsKeptAsOneEditStep) {
  DocumentWindow& window = shownWindow();
  ASSERT_EQ(delegate().watchdog().watchedDocument(), window.sharedDocument());

  // Begun with the left button down: a drag.
  press(window, Qt::LeftButton);
  ASSERT_TRUE(anyMouseButtonDown());
  window.document().beginInteraction();
  renameProject(window, "Dragged");
  // The right button goes up while the left one is still held: no recovery.
  press(window, Qt::RightButton);
  release(window, Qt::RightButton);
  waitPastRecovery();
  EXPECT_TRUE(window.document().isInteracting()) << "a button is still down";

  release(window, Qt::LeftButton);
  waitPastRecovery();
  EXPECT_FALSE(window.document().isInteracting());
  EXPECT_EQ(window.document().project().name, "Dragged");
  EXPECT_EQ(menuItem(window, QStringLiteral("Undo"))->text(), QStringLiteral("Undo Edit"));

  // Begun from the keyboard, no button down: left alone by a later click.
  window.document().beginInteraction();
  renameProject(window, "Typed");
  press(window, Qt::LeftButton);
  release(window, Qt::LeftButton);
  waitPastRecovery();
  EXPECT_TRUE(window.document().isInteracting());
  window.document().endInteraction("Rename", window.undoStack().get());
}

TEST_F(InteractionWatchdogTest, WindowClosedMidDragLeavesNothingToRecover) {
  DocumentWindow& first = shownWindow();
  QPointer<DocumentWindow> closing(delegate().documents().newDocument());
  ASSERT_TRUE(QTest::qWaitForWindowExposed(closing.data()));
  EXPECT_EQ(delegate().watchdog().watchedDocument(), closing->sharedDocument()) << "the newest window is watched";

  press(*closing, Qt::LeftButton);
  closing->document().beginInteraction();
  renameProject(*closing, "Half dragged");
  dialogs.saveAnswers = {SaveChangesAnswer::dontSave};
  EXPECT_TRUE(closing->close());
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  ASSERT_TRUE(closing.isNull());
  EXPECT_EQ(delegate().watchdog().watchedDocument(), nullptr);

  // The button comes up over the window left open.
  release(first, Qt::LeftButton);
  waitPastRecovery();
  EXPECT_FALSE(anyMouseButtonDown());
  EXPECT_EQ(delegate().documents().windows().size(), 1u);
  EXPECT_FALSE(first.document().isInteracting());
}

}  // namespace
}  // namespace orvane::app
