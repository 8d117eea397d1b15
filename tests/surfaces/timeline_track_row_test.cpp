#include "surfaces/timeline_track_row.hpp"

#include <gtest/gtest.h>

#include "Commands/composition_edits.hpp"
#include "Commands/layer_edits.hpp"
#include "tests/surfaces/timeline_test_support.hpp"

namespace orvane::surfaces {
namespace {

using namespace testing_support;
using Mode = TimelineTrackRow::DragMode;
using Kind = TimelineMetrics::SnapTarget::Kind;

class TimelineBarDragTest : public TimelineFixture {
 protected:
  // A at 1-3 s, B at 4-6 s, C at 7-8 s.
  void SetUp() override {
    open({clip("A", 1, 2), clip("B", 4, 2), clip("C", 7, 1)});
    a = layerAt(0).id;
    b = layerAt(1).id;
    c = layerAt(2).id;
  }
  Uuid a, b, c;
};

TEST_F(TimelineBarDragTest, EdgeHitWidths) {
  open({clip("short", 1, 0.2), clip("long", 1, 2)});
  TimelineTrackRow shortRow(*doc, editor, layerAt(0).id, &undo);
  EXPECT_EQ(shortRow.modeForPress(100 + 12, 20), Mode::trimStart) << "12 points in trims the start";
  EXPECT_EQ(shortRow.modeForPress(100 + 13, 20), Mode::trimEnd) << "the other 8 points trim the end";
  TimelineTrackRow longRow(*doc, editor, layerAt(1).id, &undo);
  EXPECT_EQ(longRow.modeForPress(100, 200), Mode::trimStart);
  EXPECT_EQ(longRow.modeForPress(113, 200), Mode::move);
  EXPECT_EQ(longRow.modeForPress(287, 200), Mode::move);
  EXPECT_EQ(longRow.modeForPress(288, 200), Mode::trimEnd);
}

TEST_F(TimelineBarDragTest, DraggingOneOfASelectionMovesAllAsOneStep) {
  editor.selectLayers({a, b});
  TimelineTrackRow row(*doc, editor, a, &undo);
  const OVProject before = doc->project();
  const auto steps = undo.undoCount();
  dragBar(row, 200, 50);
  EXPECT_EQ(layer(a).timeRange.start, secs(1.5));
  EXPECT_EQ(layer(b).timeRange.start, secs(4.5));
  EXPECT_EQ(layer(c).timeRange.start, secs(7));
  EXPECT_FALSE(row.isDragging());
  expectOneStep(before, steps, "Move Layer");
}

TEST_F(TimelineBarDragTest, AnUnselectedLayerIsSelectedAloneAndMovesAlone) {
  editor.selectLayers({a, b});
  TimelineTrackRow row(*doc, editor, c, &undo);
  EXPECT_EQ(row.targetIDs(), std::vector<Uuid>{c});
  dragBar(row, 750, -50);
  EXPECT_EQ(editor.selectedLayerIDs(), std::set<Uuid>{c});
  EXPECT_EQ(layer(c).timeRange.start, secs(6.5));
  EXPECT_EQ(layer(a).timeRange.start, secs(1));
}

TEST_F(TimelineBarDragTest, MovingSoTheEndMeetsThePlayheadSnapsByTheEnd) {
  commands::setPlayhead(*doc, secs(5));
  TimelineTrackRow row(*doc, editor, c, &undo);
  TimelineTrackRow rowA(*doc, editor, a, &undo);
  std::vector<std::optional<OVTime>> guides;
  rowA.onSnap = [&](std::optional<OVTime> t) { guides.push_back(t); };
  // Raw end 4.97 s, 3 points short of the playhead; the start meets nothing.
  dragBar(rowA, 200, 197);
  EXPECT_EQ(layer(a).timeRange.start, secs(3));
  EXPECT_EQ(layer(a).timeRange.end(), secs(5));
  ASSERT_GE(guides.size(), 2u);
  EXPECT_EQ(guides[guides.size() - 2], secs(5)) << "the guide stood at the playhead";
  EXPECT_EQ(guides.back(), std::nullopt) << "and is gone at the end";
}

TEST_F(TimelineBarDragTest, WithBothEdgesNearTargetsTheSmallerPullWins) {
  // Raw start 1.5 s, raw end 3.5 s after 50 points.
  commands::addCompositionMarker(*doc, OVTime(43, 30), "far from the start", &undo);
  commands::addCompositionMarker(*doc, OVTime(106, 30), "near the end", &undo);
  TimelineTrackRow row(*doc, editor, a, &undo);
  dragBar(row, 200, 50);
  EXPECT_EQ(layer(a).timeRange.start, secs(1) + (OVTime(106, 30) - secs(3)));
}

TEST_F(TimelineBarDragTest, EqualPullOnBothEdgesGoesToTheStart) {
  commands::addCompositionMarker(*doc, OVTime(44, 30), "a frame before the start", &undo);
  commands::addCompositionMarker(*doc, OVTime(106, 30), "a frame after the end", &undo);
  TimelineTrackRow row(*doc, editor, a, &undo);
  dragBar(row, 200, 50);
  EXPECT_EQ(layer(a).timeRange.start, OVTime(44, 30));
}

TEST_F(TimelineBarDragTest, WithSnappingOffTheClipStillMovesByWholeFrames) {
  commands::setPlayhead(*doc, secs(1.55));
  {
    TimelineTrackRow row(*doc, editor, a, &undo);
    dragBar(row, 200, 51.7);
    EXPECT_EQ(layer(a).timeRange.start, OVTime(46, 30)) << "snapping on: pulled to the playhead's frame";
    undo.undo();
  }
  editor.setSnappingEnabled(false);
  TimelineTrackRow row(*doc, editor, a, &undo);
  std::vector<std::optional<OVTime>> guides;
  row.onSnap = [&](std::optional<OVTime> t) { guides.push_back(t); };
  dragBar(row, 200, 51.7);
  EXPECT_EQ(layer(a).timeRange.start, secs(1.5)) << "1.517 s falls to the frame at 1.5 s";
  for (const auto& g : guides) EXPECT_FALSE(g);
}

TEST_F(TimelineBarDragTest, TrimStartSnapsToANeighbourAndUndoesInOneStep) {
  // B's source has two seconds before its head to give.
  Layer withHandle = clip("B", 4, 2);
  withHandle.sourceStart = secs(2);
  open({clip("A", 1, 2), withHandle});
  b = withHandle.id;
  TimelineTrackRow row(*doc, editor, b, &undo);
  const OVProject before = doc->project();
  const auto steps = undo.undoCount();
  // Raw 3.05 s, 5 points from A's end at 3 s; forty ticks of a long trim.
  dragBar(row, 405, -95, 0, 40);
  EXPECT_EQ(layer(b).timeRange.start, secs(3));
  EXPECT_EQ(layer(b).timeRange.end(), secs(6));
  expectOneStep(before, steps, "Trim Layer");
}

TEST_F(TimelineBarDragTest, TrimEndSnapsToANeighbour) {
  TimelineTrackRow row(*doc, editor, a, &undo);
  const OVProject before = doc->project();
  const auto steps = undo.undoCount();
  dragBar(row, 295, 98);
  EXPECT_EQ(layer(a).timeRange.start, secs(1));
  EXPECT_EQ(layer(a).timeRange.end(), secs(4));
  expectOneStep(before, steps, "Trim Layer");
}

TEST_F(TimelineBarDragTest, DragStartsOnlyPastItsThresholdAndAClickLeavesNoStep) {
  TimelineTrackRow row(*doc, editor, a, &undo);
  const auto revision = doc->revision();
  row.barDragChanged({{200, 5}, {2, 2}}, 200);  // 2.8 points
  EXPECT_FALSE(row.isDragging());
  EXPECT_FALSE(doc->isInteracting());
  row.dragEnded();
  EXPECT_EQ(undo.undoCount(), 0u);
  EXPECT_EQ(doc->revision(), revision);
  row.barDragChanged({{200, 5}, {3, 0}}, 200);
  EXPECT_TRUE(row.isDragging());
  EXPECT_EQ(row.dragMode(), Mode::move);
  row.barDragChanged({{200, 5}, {1, 0}}, 200);  // once started, small moves count
  EXPECT_TRUE(row.isDragging());
}

TEST_F(TimelineBarDragTest, CancelledDragRestoresWithoutAStep) {
  TimelineTrackRow row(*doc, editor, a, &undo);
  const OVProject before = doc->project();
  for (int i = 1; i <= 5; ++i) row.barDragChanged({{200, 5}, {30.0 * i, 0}}, 200);
  EXPECT_FALSE(doc->project() == before) << "the drag is live";
  row.dragCancelled();
  EXPECT_TRUE(doc->project() == before);
  EXPECT_EQ(undo.undoCount(), 0u);
  EXPECT_FALSE(doc->isInteracting());
}

TEST_F(TimelineBarDragTest, SnapTargetsInPriorityOrder) {
  commands::setPlayhead(*doc, secs(0.5));
  commands::addCompositionMarker(*doc, secs(2.5), "m", &undo);
  commands::setWorkArea(*doc, OVTimeRange(secs(2), secs(6)), &undo);
  TimelineTrackRow row(*doc, editor, a, &undo);
  using T = TimelineMetrics::SnapTarget;
  const std::vector<T> expected{
      {secs(0), Kind::start},     {secs(10), Kind::end},      {secs(0.5), Kind::playhead},
      {secs(2.5), Kind::marker},  {secs(4), Kind::layerEdge}, {secs(6), Kind::layerEdge},
      {secs(7), Kind::layerEdge}, {secs(8), Kind::layerEdge}, {secs(2), Kind::workArea},
      {secs(8), Kind::workArea}};
  EXPECT_EQ(row.snapTargets(), expected) << "the dragged layer's own edges are left out";
}

TEST_F(TimelineBarDragTest, InACompositionVerticalMotionDoesNotRestack) {
  TimelineTrackRow row(*doc, editor, a, &undo);
  dragBar(row, 200, 0, 200);
  EXPECT_EQ(layerAt(0).id, a);
  EXPECT_EQ(layer(a).timeRange.start, secs(1));
}

class TimelineFadeDragTest : public TimelineFixture {
 protected:
  void SetUp() override {
    open({clip("A", 1, 2)});
    a = layerAt(0).id;
    commands::setLayerFadeOut(*doc, a, secs(0.5), false, &undo);
    undo.removeAll();
  }
  Uuid a;
};

TEST_F(TimelineFadeDragTest, FadeInStopsAtWhatTheFadeOutLeaves) {
  TimelineTrackRow row(*doc, editor, a, &undo);
  const OVProject before = doc->project();
  dragFade(row, Mode::fadeIn, 500);
  EXPECT_EQ(layer(a).fadeIn, secs(1.5));
  EXPECT_EQ(editor.selectedLayerIDs(), std::set<Uuid>{a});
  expectOneStep(before, 0, "Set Fade In");
}

TEST_F(TimelineFadeDragTest, FadeOutGrowsLeftwardsAndIsNotSnapped) {
  commands::setPlayhead(*doc, secs(2.4));
  TimelineTrackRow row(*doc, editor, a, &undo);
  const OVProject before = doc->project();
  dragFade(row, Mode::fadeOut, -31.3);
  EXPECT_EQ(layer(a).fadeOut, secs(0.813));
  expectOneStep(before, 0, "Set Fade Out");
}

TEST_F(TimelineFadeDragTest, FadeDragStartsAfterOnePoint) {
  TimelineTrackRow row(*doc, editor, a, &undo);
  row.fadeDragChanged(Mode::fadeIn, {{0, 0}, {0.9, 0}});
  EXPECT_FALSE(row.isDragging());
  row.fadeDragChanged(Mode::move, {{0, 0}, {20, 0}});
  EXPECT_FALSE(row.isDragging()) << "only fade handles";
  row.fadeDragChanged(Mode::fadeIn, {{0, 0}, {1, 0}});
  EXPECT_TRUE(row.isDragging());
  EXPECT_EQ(row.dragMode(), Mode::fadeIn);
  row.dragEnded();
  EXPECT_EQ(undo.undoActionName(), "Set Fade In");
  EXPECT_EQ(layer(a).fadeIn, secs(0.01));
}

class TimelineSequenceDragTest : public TimelineFixture {
 protected:
  void SetUp() override {
    open({clip("A", 1, 2), clip("B", 4, 2)}, EditingMode::sequence);
    a = comp().layersOnTrack(*layerAt(0).trackID).front()->id;
    b = comp().layersOnTrack(*layerAt(0).trackID).back()->id;
  }
  std::size_t trackIndex(const Uuid& id) const { return *comp().trackIndexOf(*layer(id).trackID); }
  Uuid a, b;
};

TEST_F(TimelineSequenceDragTest, ALoneClipChangesTrackByRows) {
  const std::size_t start = trackIndex(a);
  ASSERT_GE(start, 2u) << "visual clips start on the lowest video track";
  TimelineTrackRow row(*doc, editor, a, &undo);
  const OVProject before = doc->project();
  dragBar(row, 200, 0, -editor.timelineRowHeight());
  EXPECT_EQ(trackIndex(a), start - 1);
  EXPECT_EQ(layer(a).timeRange.start, secs(1));
  expectOneStep(before, 0, "Move Layer");

  undo.undo();
  TimelineTrackRow again(*doc, editor, a, &undo);
  dragBar(again, 200, 0, -1000);
  EXPECT_EQ(trackIndex(a), 0u) << "limited to the first track";
}

TEST_F(TimelineSequenceDragTest, SeveralMovingClipsIgnoreVerticalMotion) {
  const std::size_t start = trackIndex(a);
  editor.selectLayers({a, b});
  TimelineTrackRow row(*doc, editor, a, &undo);
  dragBar(row, 200, 20, -editor.timelineRowHeight());
  EXPECT_EQ(trackIndex(a), start);
  EXPECT_EQ(trackIndex(b), start);
  EXPECT_EQ(layer(a).timeRange.start, secs(1.2));
  EXPECT_EQ(layer(b).timeRange.start, secs(4.2));
  EXPECT_EQ(undo.undoActionName(), "Move Layer");
}

}  // namespace
}  // namespace orvane::surfaces
