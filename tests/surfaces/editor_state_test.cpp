#include "surfaces/editor_state.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <vector>

namespace orvane::surfaces {
namespace {

using core::Composition;
using core::Layer;
using core::Uuid;
using namespace std::chrono_literals;

// A clock the test moves by hand.
struct FakeClock {
  EditorState::TimePoint now{};
  EditorState::Clock clock() {
    return [this] { return now; };
  }
};

// A composition of n plain layers; layers[0] is the top one.
Composition compositionOf(int n) {
  Composition c;
  for (int i = 0; i < n; ++i) c.layers.push_back(Layer());
  return c;
}

std::set<Uuid> idsOf(const Composition& c, std::size_t from, std::size_t to) {
  std::set<Uuid> out;
  for (std::size_t i = from; i <= to; ++i) out.insert(c.layers[i].id);
  return out;
}

TEST(EditorStateTest, StartValues) {
  EditorState s;
  EXPECT_TRUE(s.selectedLayerIDs().empty());
  EXPECT_FALSE(s.hasSelection());
  EXPECT_EQ(s.pixelsPerSecond(), 90);
  EXPECT_EQ(s.timelineScrollOffset(), 0);
  EXPECT_TRUE(s.isSnappingEnabled());
  EXPECT_EQ(s.timelineRowHeight(), 34);
  EXPECT_EQ(s.viewerZoom(), 1);
  EXPECT_TRUE(s.isViewerZoomAutomatic());
  EXPECT_FALSE(s.showsGuides() || s.showsSafeAreas() || s.showsGrid());
  EXPECT_TRUE(s.showsTransparencyGrid() && s.showsTransformHandles() && s.showsMotionPaths() && s.showsMasks());
  EXPECT_FALSE(s.isAnimationModeEnabled() || s.isGraphEditorVisible() || s.isCropping() || s.isEditingText());
  EXPECT_TRUE(s.isMediaBrowserVisible() && s.isInspectorVisible());
  EXPECT_EQ(s.leftLibraryTab(), LeftLibraryTab::media);
  EXPECT_EQ(s.inspectorTab(), InspectorTab::layer);
  EXPECT_FALSE(s.capturePresentation() || s.statusMessage() || s.errorMessage() || s.messageDeadline());
  EXPECT_EQ(core::rawValue(LeftLibraryTab::behaviors), "behaviors");
}

TEST(EditorStateSelectionTest, CommandClickOnPrimaryOfThreeMovesPrimaryToARemainingOne) {
  const Composition c = compositionOf(3);
  EditorState s;
  for (const Layer& l : c.layers) s.click(l.id, c, {.command = true});
  ASSERT_EQ(s.selectedLayerIDs().size(), 3u);
  ASSERT_EQ(s.primaryLayerID(), c.layers[2].id);

  s.click(c.layers[2].id, c, {.command = true});
  EXPECT_EQ(s.selectedLayerIDs(), idsOf(c, 0, 1));
  ASSERT_TRUE(s.primaryLayerID());
  EXPECT_TRUE(s.selectedLayerIDs().contains(*s.primaryLayerID()));
}

TEST(EditorStateSelectionTest, CommandClickOnOnlySelectedLayerLeavesNothing) {
  const Composition c = compositionOf(2);
  EditorState s;
  s.click(c.layers[1].id, c, {});
  s.click(c.layers[1].id, c, {.command = true});
  EXPECT_TRUE(s.selectedLayerIDs().empty());
  EXPECT_FALSE(s.primaryLayerID());
}

TEST(EditorStateSelectionTest, ShiftClickWithNothingSelectedSelectsTheOneLayer) {
  const Composition c = compositionOf(4);
  EditorState s;
  s.click(c.layers[2].id, c, {.shift = true});
  EXPECT_EQ(s.selectedLayerIDs(), idsOf(c, 2, 2));
  EXPECT_EQ(s.primaryLayerID(), c.layers[2].id);
}

TEST(EditorStateSelectionTest, SecondShiftClickReplacesTheRunFromTheSameAnchor) {
  const Composition c = compositionOf(6);
  EditorState s;
  s.click(c.layers[2].id, c, {});
  s.click(c.layers[5].id, c, {.shift = true});
  EXPECT_EQ(s.selectedLayerIDs(), idsOf(c, 2, 5));
  EXPECT_EQ(s.primaryLayerID(), c.layers[2].id);

  // Shift goes before Command.
  s.click(c.layers[0].id, c, {.shift = true, .command = true});
  EXPECT_EQ(s.selectedLayerIDs(), idsOf(c, 0, 2));
  EXPECT_EQ(s.primaryLayerID(), c.layers[2].id);
}

TEST(EditorStateSelectionTest, ShiftClickOnALayerOutsideTheCompositionFallsBackToPlainSelect) {
  const Composition c = compositionOf(3);
  EditorState s;
  s.click(c.layers[0].id, c, {});
  const Uuid stranger = Uuid::make();
  s.selectRangeTo(stranger, c);
  EXPECT_EQ(s.selectedLayerIDs(), std::set<Uuid>{stranger});
  EXPECT_EQ(s.primaryLayerID(), stranger);
}

TEST(EditorStateSelectionTest, OneKindOfSelectionAtATime) {
  const Composition c = compositionOf(2);
  EditorState s;
  const Uuid asset = Uuid::make();
  s.selectAsset(asset);
  s.selectLayer(c.layers[0].id);
  EXPECT_TRUE(s.selectedAssetIDs().empty());

  s.selectFile("/tmp/a.mov");
  EXPECT_TRUE(s.selectedLayerIDs().empty());
  EXPECT_FALSE(s.primaryLayerID());
  EXPECT_EQ(s.selectedFileURL(), std::filesystem::path("/tmp/a.mov"));

  s.selectAsset(asset);
  EXPECT_FALSE(s.selectedFileURL());
  EXPECT_EQ(s.selectedAssetIDs(), std::set<Uuid>{asset});

  s.selectLayers({c.layers[1].id, c.layers[0].id});
  EXPECT_TRUE(s.selectedAssetIDs().empty());
  EXPECT_EQ(s.primaryLayerID(), c.layers[1].id);
  s.selectLayers({});
  EXPECT_FALSE(s.primaryLayerID());
  EXPECT_FALSE(s.hasSelection());
}

TEST(EditorStateSelectionTest, ClearingLayersEndsTextEditingAndKeyframeSelection) {
  EditorState s;
  const Uuid layer = Uuid::make();
  s.beginEditingText(layer);
  s.setSelectedKeyframes({Uuid::make()});
  s.clearLayerSelection();
  EXPECT_FALSE(s.isEditingText());
  EXPECT_TRUE(s.selectedKeyframes().empty());
  EXPECT_FALSE(s.primaryLayerID());
}

TEST(EditorStateSelectionTest, PruneDropsVanishedLayersAndMovesThePrimary) {
  Composition c = compositionOf(3);
  EditorState s;
  s.selectLayers({c.layers[0].id, c.layers[1].id, c.layers[2].id});
  const Uuid gone = c.layers[0].id;
  c.remove(gone);
  s.pruneSelectionAgainst(&c);
  EXPECT_EQ(s.selectedLayerIDs(), idsOf(c, 0, 1));
  ASSERT_TRUE(s.primaryLayerID());
  EXPECT_TRUE(s.selectedLayerIDs().contains(*s.primaryLayerID()));

  int reports = 0;
  auto sub = s.onChange([&](EditorField) { ++reports; });
  s.pruneSelectionAgainst(&c);
  EXPECT_EQ(reports, 0) << "an unchanged selection is not written again";

  s.pruneSelectionAgainst(nullptr);
  EXPECT_TRUE(s.selectedLayerIDs().empty());
}

TEST(EditorStateModalTest, CroppingAndTextEditingExcludeEachOther) {
  FakeClock clock;
  EditorState s(clock.clock());
  const Uuid a = Uuid::make(), b = Uuid::make();
  s.setSelectedMaskID(Uuid::make());
  s.setSelectedMaskVertexIndex(3);
  s.beginCropping(a);
  EXPECT_TRUE(s.isCropping());
  EXPECT_FALSE(s.selectedMaskID() || s.selectedMaskVertexIndex());
  EXPECT_EQ(s.selectedLayerIDs(), std::set<Uuid>{a});
  EXPECT_EQ(s.statusMessage(), "Crop mode — drag the edges, Esc or double-click to finish.");

  s.beginEditingText(b);
  EXPECT_FALSE(s.isCropping());
  EXPECT_EQ(s.editingTextLayerID(), b);
  EXPECT_EQ(s.selectedLayerIDs(), std::set<Uuid>{b});
  EXPECT_EQ(s.statusMessage(), "Type on the stage — Esc or click away to finish.");

  s.endCropping();  // no crop runs: no message
  EXPECT_EQ(s.statusMessage(), "Type on the stage — Esc or click away to finish.");
  s.beginCropping(a);
  EXPECT_FALSE(s.isEditingText()) << "starting a crop ends the text editing";
  EXPECT_EQ(s.croppingLayerID(), a);
  s.endCropping();
  EXPECT_FALSE(s.isCropping());
  EXPECT_EQ(s.statusMessage(), "Crop applied.");

  s.selectAsset(Uuid::make());
  s.beginCropping(a);
  s.selectAsset(Uuid::make());
  EXPECT_FALSE(s.isCropping()) << "selecting an asset leaves crop mode";
}

TEST(EditorStateMessageTest, ANewerStatusLivesItsWholeTime) {
  FakeClock clock;
  EditorState s(clock.clock());
  s.showStatus("first");
  clock.now += 3s;
  s.showStatus("second");
  clock.now += 2s;  // the first message's time is up here
  EXPECT_FALSE(s.tick());
  EXPECT_EQ(s.statusMessage(), "second");
  clock.now += 1999ms;
  EXPECT_FALSE(s.tick());
  EXPECT_EQ(s.statusMessage(), "second");
  clock.now += 1ms;
  EXPECT_EQ(s.statusMessage(), std::nullopt) << "reads as gone once due, before the tick";
  EXPECT_TRUE(s.tick());
  EXPECT_FALSE(s.messageDeadline());
  EXPECT_FALSE(s.tick());
}

TEST(EditorStateMessageTest, CustomAndAbsurdTimes) {
  FakeClock clock;
  EditorState s(clock.clock());
  s.showStatus("short", 0.5);
  EXPECT_EQ(s.messageDeadline(), clock.now + 500ms);

  s.showStatus("nan", std::numeric_limits<double>::quiet_NaN());
  EXPECT_TRUE(s.tick()) << "a NaN time clears at the next tick";

  s.showStatus("forever", std::numeric_limits<double>::infinity());
  clock.now += std::chrono::hours(24 * 365);
  EXPECT_FALSE(s.tick());
  EXPECT_EQ(s.statusMessage(), "forever");
  s.clearStatus();
  EXPECT_FALSE(s.statusMessage() || s.messageDeadline());
}

TEST(EditorStateMessageTest, ErrorsStayUntilDismissed) {
  FakeClock clock;
  EditorState s(clock.clock());
  std::vector<EditorField> seen;
  auto sub = s.onChange([&](EditorField f) { seen.push_back(f); });
  s.showError("The file could not be read.");
  clock.now += 1h;
  s.tick();
  EXPECT_EQ(s.errorMessage(), "The file could not be read.");
  s.dismissError();
  EXPECT_FALSE(s.errorMessage());
  EXPECT_EQ(seen, (std::vector<EditorField>{EditorField::errorMessage, EditorField::errorMessage}));
}

TEST(EditorStateObservationTest, ReportsChangedFieldsUntilCancelled) {
  FakeClock clock;
  EditorState s(clock.clock());
  std::vector<EditorField> seen;
  Subscription sub = s.onChange([&](EditorField f) { seen.push_back(f); });
  s.setSnappingEnabled(true);  // unchanged
  s.setSnappingEnabled(false);
  s.showStatus("hi", 1);
  clock.now += 1s;
  s.tick();
  EXPECT_EQ(seen, (std::vector<EditorField>{EditorField::isSnappingEnabled, EditorField::statusMessage,
                                            EditorField::statusMessage}));
  sub.cancel();
  s.setShowsGrid(true);
  EXPECT_EQ(seen.size(), 3u);
}

TEST(EditorStateZoomTest, ViewerZoomStaysInRange) {
  EditorState s;
  s.zoomViewerBy(1000);
  EXPECT_EQ(s.viewerZoom(), 8);
  EXPECT_FALSE(s.isViewerZoomAutomatic());
  s.zoomViewerBy(1e-9);
  EXPECT_EQ(s.viewerZoom(), 0.05);
  s.zoomViewerBy(std::numeric_limits<double>::quiet_NaN());
  s.zoomViewerBy(0);
  EXPECT_EQ(s.viewerZoom(), 0.05);
  EXPECT_EQ(EditorState::clampViewerZoom(std::numeric_limits<double>::infinity()), 8);
  EXPECT_EQ(EditorState::clampViewerZoom(-1), 0.05);
}

TEST(EditorStateZoomTest, StepFromTheAutomaticFitIgnoresTheStoredZoom) {
  EditorState s;
  s.setViewerZoom(3);
  s.setViewerZoomAutomatic(true);
  s.zoomViewerBy(2, 0.4);
  EXPECT_DOUBLE_EQ(s.viewerZoom(), 0.8);
  EXPECT_FALSE(s.isViewerZoomAutomatic());
  // Once manual, the stored zoom is the start.
  s.zoomViewerBy(2, 0.4);
  EXPECT_DOUBLE_EQ(s.viewerZoom(), 1.6);
}

TEST(EditorStateZoomTest, FitViewerTakesTheTighterSideAndBecomesAutomatic) {
  EditorState s;
  s.zoomViewerBy(2);
  s.fitViewerTo({960, 1080}, {1920, 1080});
  EXPECT_DOUBLE_EQ(s.viewerZoom(), 0.5);
  EXPECT_TRUE(s.isViewerZoomAutomatic());
  s.zoomViewerBy(2);
  s.fitViewerTo({100, 100}, {0, 0});  // nothing to fit: the stage's fallback scale
  EXPECT_DOUBLE_EQ(s.viewerZoom(), 1);
  EXPECT_TRUE(s.isViewerZoomAutomatic());
  s.fitViewerTo({1, 1}, {100000, 100000});
  EXPECT_DOUBLE_EQ(s.viewerZoom(), 0.05);
}

TEST(EditorStateZoomTest, TimelineZoomStaysInRange) {
  EditorState s;
  s.zoomTimelineBy(2);
  EXPECT_EQ(s.pixelsPerSecond(), 180);
  s.zoomTimelineBy(1e6);
  EXPECT_EQ(s.pixelsPerSecond(), 3000);
  s.zoomTimelineBy(1e-9);
  EXPECT_EQ(s.pixelsPerSecond(), 2);
  s.zoomTimelineBy(-3);
  s.setPixelsPerSecond(std::numeric_limits<double>::infinity());
  EXPECT_EQ(s.pixelsPerSecond(), 2);
  s.setPixelsPerSecond(1e9);
  EXPECT_EQ(s.pixelsPerSecond(), 3000);
}

TEST(EditorStateRowsTest, PropertyRowsAndGraphCurves) {
  EditorState s;
  const Uuid layer = Uuid::make();
  s.togglePropertyRowsFor(layer);
  EXPECT_TRUE(s.expandedPropertyRows().contains(layer));
  s.expandPropertyRowsFor(layer);
  EXPECT_TRUE(s.expandedPropertyRows().contains(layer));
  s.togglePropertyRowsFor(layer);
  EXPECT_FALSE(s.expandedPropertyRows().contains(layer));

  const auto address = commands::PropertyAddress::transform(layer, core::LayerTransform::Channel::position);
  s.setGraphCurve(address.key() + ".x", false);
  s.setGraphCurve(address.key() + ".y", false);
  s.setGraphCurve("other", false);
  s.setSelectedKeyframes({Uuid::make()});
  s.showGraphCurvesFor(address);
  EXPECT_EQ(s.hiddenGraphCurves(), std::set<std::string>{"other"});
  EXPECT_TRUE(s.selectedKeyframes().empty());
  EXPECT_EQ(s.selectedLayerIDs(), std::set<Uuid>{layer});
  s.setGraphCurve("other", true);
  EXPECT_TRUE(s.hiddenGraphCurves().empty());
}

}  // namespace
}  // namespace orvane::surfaces
