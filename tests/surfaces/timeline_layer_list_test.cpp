#include "surfaces/timeline_layer_list.hpp"

#include <gtest/gtest.h>

#include "tests/surfaces/timeline_test_support.hpp"

namespace orvane::surfaces {
namespace {

using namespace testing_support;

class TimelineReorderTest : public TimelineFixture {
 protected:
  static constexpr double kRow = 34;
  void SetUp() override {
    open({clip("L0", 0, 1), clip("L1", 0, 1), clip("L2", 0, 1), clip("L3", 0, 1), clip("L4", 0, 1)});
    for (const Layer& l : comp().layers) ids.push_back(l.id);
  }
  std::vector<Uuid> order() const {
    std::vector<Uuid> out;
    for (const Layer& l : comp().layers) out.push_back(l.id);
    return out;
  }
  std::vector<Uuid> ids;
};

TEST_F(TimelineReorderTest, ASelectedBlockMovesOnceAtTheDrop) {
  editor.selectLayers({ids[3], ids[1]});
  auto state = beginLayerReorder(comp(), editor, ids[3]);
  ASSERT_TRUE(state);
  EXPECT_EQ(state->layerIDs, (std::vector<Uuid>{ids[1], ids[3]})) << "in list order";
  EXPECT_EQ(state->blockCount(), 2);
  EXPECT_EQ(state->fromIndex, 1);
  EXPECT_TRUE(state->isDragging(ids[1]));
  EXPECT_FALSE(state->isDragging(ids[2]));

  const OVProject before = doc->project();
  for (int i = 1; i <= 10; ++i) updateLayerReorder(*state, 7.0 * i, kRow, comp());
  EXPECT_EQ(state->toIndex, 3) << "two rows down, limited to the list without the block";
  EXPECT_TRUE(doc->project() == before) << "the drag itself changes nothing";

  EXPECT_TRUE(endLayerReorder(*doc, *state, &undo));
  EXPECT_EQ(order(), (std::vector<Uuid>{ids[0], ids[2], ids[4], ids[1], ids[3]}));
  expectOneStep(before, 0, "Reorder Layers");
}

TEST_F(TimelineReorderTest, AnUnselectedLayerMovesAloneWithinTheList) {
  editor.selectLayers({ids[0], ids[1]});
  auto state = beginLayerReorder(comp(), editor, ids[2]);
  ASSERT_TRUE(state);
  EXPECT_EQ(state->layerIDs, std::vector<Uuid>{ids[2]});
  updateLayerReorder(*state, -1000, kRow, comp());
  EXPECT_EQ(state->toIndex, 0);
  updateLayerReorder(*state, 1000, kRow, comp());
  EXPECT_EQ(state->toIndex, 4);
  updateLayerReorder(*state, -16, kRow, comp());
  EXPECT_EQ(state->toIndex, 2) << "under half a row stays";
  updateLayerReorder(*state, -18, kRow, comp());
  EXPECT_EQ(state->toIndex, 1);
  EXPECT_TRUE(endLayerReorder(*doc, *state, &undo));
  EXPECT_EQ(order(), (std::vector<Uuid>{ids[0], ids[2], ids[1], ids[3], ids[4]}));
}

TEST_F(TimelineReorderTest, NoRowsTravelledLeavesEvenAScatteredBlockAlone) {
  editor.selectLayers({ids[0], ids[4]});
  auto state = beginLayerReorder(comp(), editor, ids[4]);
  updateLayerReorder(*state, 10, kRow, comp());
  const auto revision = doc->revision();
  EXPECT_FALSE(endLayerReorder(*doc, *state, &undo));
  EXPECT_EQ(doc->revision(), revision);
  EXPECT_EQ(undo.undoCount(), 0u);
  EXPECT_FALSE(beginLayerReorder(comp(), editor, Uuid::make()));
}

TEST_F(TimelineReorderTest, DropSlotSitsAboveTheRowThatWillFollow) {
  auto state = beginLayerReorder(comp(), editor, ids[1]);
  updateLayerReorder(*state, 2 * kRow, kRow, comp());
  ASSERT_EQ(state->toIndex, 3);
  EXPECT_EQ((TimelineDropSlot{*state, kRow}.offsetIn(comp())), 4 * kRow) << "above L4";
  updateLayerReorder(*state, 10 * kRow, kRow, comp());
  EXPECT_EQ((TimelineDropSlot{*state, kRow}.offsetIn(comp())), 5 * kRow) << "below the last row";
}

TEST_F(TimelineReorderTest, AnExpandedLayerCountsAsOneRowHoweverTall) {
  // L1 shows four property rows: 34 + 4 * 22 = 122 points.
  editor.expandPropertyRowsFor(ids[1]);
  const std::vector<double> heights = layerRowHeights(comp(), editor, 4);
  ASSERT_EQ(heights, (std::vector<double>{kRow, 122, kRow, kRow, kRow}));

  auto state = beginLayerReorder(comp(), editor, ids[0]);
  updateLayerReorder(*state, 80, heights, comp());
  EXPECT_EQ(state->toIndex, 1) << "past half of L1, not yet half of L2";
  updateLayerReorder(*state, 122 + 17, heights, comp());
  EXPECT_EQ(state->toIndex, 2);
  updateLayerReorder(*state, 1e6, heights, comp());
  EXPECT_EQ(state->toIndex, 4);

  auto up = beginLayerReorder(comp(), editor, ids[3]);
  updateLayerReorder(*up, -(kRow + 60), heights, comp());
  EXPECT_EQ(up->toIndex, 2) << "above L2, not yet over half of L1";
  updateLayerReorder(*up, -(kRow + 61), heights, comp());
  EXPECT_EQ(up->toIndex, 1) << "over half of L1";

  updateLayerReorder(*up, 50, std::vector<double>{kRow}, comp());
  EXPECT_EQ(up->toIndex, 1) << "heights that do not fit the list change nothing";
}

}  // namespace
}  // namespace orvane::surfaces
