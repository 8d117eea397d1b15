// The stage: the composed frame at the scale it is shown at, and the layer
// list's switches editing through undoable commands.

#include <QTest>

#include "app/layer_list_view.hpp"
#include "app/stage_view.hpp"
#include "tests/app/app_test_support.hpp"

namespace orvane::app {
namespace {

using testing_support::AppTest;

class StageViewTest : public AppTest {};

int brightPixels(const QImage& image, QRect area) {
  int count = 0;
  for (int y = area.top(); y <= area.bottom(); ++y) {
    for (int x = area.left(); x <= area.right(); ++x) {
      if (qGray(image.pixel(x, y)) > 200) ++count;
    }
  }
  return count;
}

TEST(StageViewFitTest, FitsInsideTheMarginAndRefusesEmptyAreas) {
  EXPECT_DOUBLE_EQ(StageView::fitScale({1920, 1080}, QSize(992, 572)), 0.5);
  EXPECT_DOUBLE_EQ(StageView::fitScale({1080, 1920}, QSize(992, 572)), 540.0 / 1920.0);
  EXPECT_EQ(StageView::fitScale({1920, 1080}, QSize(20, 20)), 0);
  EXPECT_EQ(StageView::fitScale({0, 1080}, QSize(992, 572)), 0);
}

TEST_F(StageViewTest, DrawsTheFrameAtTheViewsScaleWithTheTextCentred) {
  launched();
  DocumentWindow& window = *delegate().documents().newDocument();
  choose(window, QStringLiteral("New Text Layer"));
  StageView* stage = window.stage();
  stage->resize(992, 572);
  stage->updateFrame();

  const QImage& frame = stage->lastFrame();
  const double dpr = stage->devicePixelRatioF();
  EXPECT_EQ(frame.width(), qRound(960 * dpr)) << "rendered at the view's size, not full size";
  EXPECT_EQ(frame.height(), qRound(540 * dpr));
  EXPECT_EQ(stage->compositionRect(), QRectF(16, 16, 960, 540));
  // Black composition, white "Text" in the middle.
  EXPECT_EQ(qGray(frame.pixel(5, 5)), 0);
  const QRect middle(frame.width() / 2 - 60, frame.height() / 2 - 25, 120, 50);
  EXPECT_GT(brightPixels(frame, middle), 100);
  EXPECT_EQ(brightPixels(frame, QRect(0, 0, frame.width(), frame.height() / 4)), 0);

  // A small view gets a small picture, not the 1920x1080 frame shrunk.
  stage->resize(200, 150);
  stage->updateFrame();
  EXPECT_EQ(stage->lastFrame().width(), qRound(168 * dpr));
  EXPECT_EQ(stage->lastFrame().height(), qRound(94.5 * dpr));
  stage->resize(992, 572);
  stage->updateFrame();

  // Hiding the layer from the list is an undoable edit, and the stage follows.
  window.layerList()->switchClicked(0, LayerListView::visibleColumn);
  stage->updateFrame();
  EXPECT_EQ(brightPixels(stage->lastFrame(), middle), 0);
  EXPECT_EQ(menuItem(window, QStringLiteral("Undo"))->text(), QStringLiteral("Undo Toggle Visibility"));
}

TEST_F(StageViewTest, LayerListShowsKindsAndSelectsIntoTheWindow) {
  launched();
  DocumentWindow& window = *delegate().documents().newDocument();
  choose(window, QStringLiteral("New Text Layer"));
  choose(window, QStringLiteral("New Solid Layer"));
  LayerListView* list = window.layerList();
  ASSERT_EQ(list->rowCount(), 2);
  EXPECT_EQ(list->item(0, LayerListView::kindColumn)->text(), QStringLiteral("Solid"));
  EXPECT_EQ(list->item(1, LayerListView::kindColumn)->text(), QStringLiteral("Text"));
  list->selectRow(1);
  ASSERT_EQ(window.selection().size(), 1u);
  EXPECT_EQ(window.selection()[0], *list->layerAt(1));
  list->switchClicked(1, LayerListView::soloColumn);
  EXPECT_TRUE(window.document().activeComposition()->layers[1].isSolo);
  EXPECT_EQ(list->item(1, LayerListView::soloColumn)->data(Qt::UserRole).toBool(), true);
}

}  // namespace
}  // namespace orvane::app
