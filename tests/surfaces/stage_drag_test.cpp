#include <gtest/gtest.h>

#include <limits>

#include "Commands/keyframe_edits.hpp"
#include "tests/surfaces/stage_test_support.hpp"

namespace orvane::surfaces {
namespace {

using namespace stage_testing;
using Tick = StageTransformController::DragTick;

// The view point of the top layer's centre, (500, 300) in the composition.
constexpr OVPoint kTopCentre{250, 390};

struct StageDragTest : StageFixture {
  PropertyAddress position = address(top, Channel::position);

  OVPoint pendingPosition() const {
    const PropertyValue* v = interaction.overrideFor(position);
    return v ? v->pointValue().value_or(OVPoint{-1, -1}) : OVPoint{-1, -1};
  }
  // A move of the top layer by view offsets from kTopCentre.
  void moveTop(double dx, double dy, bool bypass = true) {
    stage.moveGesture(top.id, {kTopCentre, {kTopCentre.x + dx, kTopCentre.y + dy}}, bypass);
  }
};

TEST_F(StageDragTest, AMoveLeavesTheDocumentAloneUntilOneCommit) {
  const OVProject before = doc.project();
  const auto revision = doc.revision();
  const std::size_t steps = undo.undoCount();
  for (const OVPoint d : {OVPoint{10, 0}, OVPoint{-30, 40}, OVPoint{20, -10}}) {
    moveTop(d.x, d.y);
    EXPECT_TRUE(doc.project() == before);
    EXPECT_EQ(doc.revision(), revision);
    EXPECT_TRUE(interaction.isActive());
  }
  // 20 right and 10 up on screen at half size: 40 right, 20 up.
  EXPECT_EQ(pendingPosition(), (OVPoint{540, 320}));
  EXPECT_EQ(interaction.time(), playhead);
  EXPECT_TRUE(scenesShownAt.empty());

  stage.endGesture();
  ASSERT_EQ(undo.undoCount(), steps + 1);
  EXPECT_EQ(undo.undoActionName(), "Move Layer");
  EXPECT_GT(doc.revision(), revision);
  EXPECT_FALSE(doc.isInteracting());
  EXPECT_FALSE(interaction.isActive());
  EXPECT_FALSE(stage.isDragging());
  EXPECT_EQ(scenesShownAt, std::vector<OVTime>{playhead});
  const AnimatedProperty& moved = layer(top.id).transform.position;
  EXPECT_FALSE(moved.isAnimated());
  EXPECT_EQ(moved.baseValue, PropertyValue::point(540, 320));
  const OVProject after = doc.project();
  undo.undo();
  EXPECT_TRUE(doc.project() == before);
  undo.redo();
  EXPECT_TRUE(doc.project() == after);
}

TEST_F(StageDragTest, ScaleIsUniformByDistanceFromTheAnchor) {
  const OVProject before = doc.project();
  const OVPoint start{kTopCentre.x + 30, kTopCentre.y + 40};  // 50 points out
  stage.scaleGesture(top.id, StageTransformController::Corner::topRight, kTopCentre,
                     {start, {kTopCentre.x + 45, kTopCentre.y + 60}});
  stage.scaleGesture(top.id, StageTransformController::Corner::topRight, kTopCentre,
                     {start, {kTopCentre.x - 80, kTopCentre.y + 60}});  // 100 out, any direction
  EXPECT_TRUE(doc.project() == before);
  EXPECT_EQ(*interaction.overrideFor(address(top, Channel::scale)), PropertyValue::point(200, 200));
  stage.endGesture();
  EXPECT_EQ(undo.undoActionName(), "Scale Layer");
  EXPECT_EQ(layer(top.id).transform.scale.baseValue, PropertyValue::point(200, 200));
  undo.undo();
  EXPECT_TRUE(doc.project() == before);
}

TEST_F(StageDragTest, ScaleLimits) {
  const auto scaleAfter = [&](OVPoint start, OVPoint now) {
    stage.scaleGesture(top.id, StageTransformController::Corner::bottomLeft, kTopCentre, {start, now});
    const PropertyValue v = *interaction.overrideFor(address(top, Channel::scale));
    stage.finishCancelledDrag();
    return v;
  };
  // Onto the anchor: never below 1 percent.
  EXPECT_EQ(scaleAfter({kTopCentre.x + 50, kTopCentre.y}, kTopCentre), PropertyValue::point(1, 1));
  // Pressed on the anchor: the start distance counts as 1 point.
  EXPECT_EQ(scaleAfter(kTopCentre, {kTopCentre.x + 3, kTopCentre.y}), PropertyValue::point(300, 300));
}

TEST_F(StageDragTest, RotationFollowsThePointerAroundTheAnchor) {
  const OVProject before = doc.project();
  // From the right of the anchor to above it on screen: a quarter turn
  // counter-clockwise, +90 degrees.
  const OVPoint start{kTopCentre.x + 100, kTopCentre.y};
  stage.rotateGesture(top.id, kTopCentre, {start, {kTopCentre.x + 100, kTopCentre.y - 100}});
  EXPECT_NEAR(*interaction.overrideFor(address(top, Channel::rotation))->doubleValue(), 45, 1e-9);
  stage.rotateGesture(top.id, kTopCentre, {start, {kTopCentre.x, kTopCentre.y - 100}});
  EXPECT_NEAR(*interaction.overrideFor(address(top, Channel::rotation))->doubleValue(), 90, 1e-9);
  EXPECT_TRUE(doc.project() == before);
  stage.endGesture();
  EXPECT_EQ(undo.undoActionName(), "Rotate Layer");
  EXPECT_NEAR(layer(top.id).transform.rotation.doubleValueAt(playhead), 90, 1e-9);
  undo.undo();
  EXPECT_TRUE(doc.project() == before);
}

TEST_F(StageDragTest, AnimationModeKeysAtThePlayhead) {
  editor.setAnimationModeEnabled(true);
  moveTop(20, -10);
  EXPECT_TRUE(interaction.animationEnabled());
  // The stage already shows the key the commit will write.
  const Composition live = liveComposition(*doc.activeComposition(), interaction);
  EXPECT_TRUE(live.layer(top.id)->transform.position.isAnimated());
  EXPECT_EQ(live.layer(top.id)->transform.position.pointValueAt(playhead), (OVPoint{540, 320}));
  EXPECT_FALSE(layer(top.id).transform.position.isAnimated());

  stage.endGesture();
  const AnimatedProperty& p = layer(top.id).transform.position;
  ASSERT_EQ(p.keyframes().size(), 1u);
  EXPECT_EQ(p.keyframes()[0].time, playhead);
  EXPECT_EQ(p.keyframes()[0].value, PropertyValue::point(540, 320));
  EXPECT_EQ(undo.undoCount(), 1u);
}

TEST_F(StageDragTest, WithoutAnimationModeAnAnimatedPropertyStillGetsAKey) {
  setPropertyValue(doc, PropertyValue::double_(10), address(top, Channel::rotation), secs(0), true, false, &undo);
  const Tick tick{{kTopCentre.x + 100, kTopCentre.y}, {kTopCentre.x, kTopCentre.y - 100}};
  stage.rotateGesture(top.id, kTopCentre, tick);
  stage.endGesture();
  const AnimatedProperty& r = layer(top.id).transform.rotation;
  ASSERT_EQ(r.keyframes().size(), 2u);
  EXPECT_NEAR(r.doubleValueAt(playhead), 100, 1e-9);  // from the value at the playhead
  EXPECT_NEAR(r.doubleValueAt(secs(0)), 10, 1e-9);
}

TEST_F(StageDragTest, APressWithoutMovementLeavesNoStep) {
  expectNoEdit(doc, undo, [&] {
    moveTop(0, 0);
    EXPECT_TRUE(stage.isDragging());
    EXPECT_FALSE(interaction.isActive());
    stage.endGesture();
  });
  EXPECT_FALSE(doc.isInteracting());
}

TEST_F(StageDragTest, SmartGuidesSnapUnlessBypassed) {
  // 20 right and 12 up: the top layer's centre line passes 12 above the
  // right layer's, within the 8-point pull (16 units at half size).
  moveTop(10, -6, false);
  EXPECT_EQ(pendingPosition(), (OVPoint{520, 300}));
  ASSERT_FALSE(published.empty());
  EXPECT_FALSE(published.back().alignments.empty());

  moveTop(10, -6, true);  // Ctrl pressed mid-drag
  EXPECT_EQ(pendingPosition(), (OVPoint{520, 312}));
  EXPECT_TRUE(published.back().isEmpty());
  EXPECT_TRUE(stage.guides().isEmpty());

  moveTop(10, -6, false);  // and released
  EXPECT_EQ(pendingPosition(), (OVPoint{520, 300}));
  EXPECT_FALSE(stage.guides().isEmpty());

  stage.setSmartGuidesEnabled(false);  // the preference switched off
  moveTop(10, -6, false);
  EXPECT_EQ(pendingPosition(), (OVPoint{520, 312}));

  stage.endGesture();
  EXPECT_TRUE(published.back().isEmpty());
}

TEST_F(StageDragTest, TheGuideBoxesAreTheOtherVisibleLayers) {
  moveTop(1, 1);
  ASSERT_EQ(stage.guideBoxes().size(), 2u);
  EXPECT_EQ(stage.guideBoxes()[0], (SmartGuides::Box{1150, 1250, 250, 350}));
  EXPECT_EQ(stage.guideBoxes()[1], (SmartGuides::Box{810, 1110, 770, 830}));  // measured text
  EXPECT_EQ(stage.dragStartBox(), (SmartGuides::Box{400, 600, 250, 350}));
  stage.finishCancelledDrag();
  EXPECT_TRUE(stage.guideBoxes().empty());
}

TEST_F(StageDragTest, ACancelledDragLeavesNothing) {
  const OVProject before = doc.project();
  moveTop(10, -6, false);
  stage.rotateGesture(top.id, kTopCentre, {{0, 0}, {5, 5}});  // another gesture meanwhile is ignored
  EXPECT_EQ(interaction.edits().size(), 1u);
  stage.finishCancelledDrag();
  EXPECT_FALSE(interaction.isActive());
  EXPECT_FALSE(stage.isDragging());
  EXPECT_FALSE(doc.isInteracting());
  EXPECT_TRUE(published.back().isEmpty());
  EXPECT_TRUE(doc.project() == before);
  EXPECT_EQ(undo.undoCount(), 0u);
  // A later commit without a drag does nothing, and the next drag works.
  stage.commitDrag("Move Layer");
  EXPECT_EQ(undo.undoCount(), 0u);
  moveTop(20, -10);
  stage.endGesture();
  EXPECT_EQ(undo.undoCount(), 1u);
}

TEST_F(StageDragTest, BadTicksAndUnknownLayersStartNothing) {
  stage.moveGesture(Uuid::make(), {{0, 0}, {10, 10}}, false);
  EXPECT_FALSE(stage.isDragging());
  EXPECT_FALSE(doc.isInteracting());
  const double nan = std::numeric_limits<double>::quiet_NaN();
  stage.moveGesture(top.id, {{0, 0}, {nan, 10}}, false);
  stage.scaleGesture(top.id, StageTransformController::Corner::topLeft, {nan, 0}, {{0, 0}, {10, 10}});
  stage.rotateGesture(top.id, kTopCentre, {{0, 0}, {1e308 * 10, 10}});
  EXPECT_FALSE(stage.isDragging());
  EXPECT_FALSE(interaction.isActive());
  stage.endGesture();
  stage.finishCancelledDrag();
  EXPECT_FALSE(doc.isInteracting());
}

TEST_F(StageDragTest, LiveCompositionSkipsWhatIsGone) {
  interaction.write(PropertyValue::point(1, 2), PropertyAddress::transform(Uuid::make(), Channel::position), playhead,
                    false);
  interaction.write(PropertyValue::double_(50), address(right, Channel::opacity), playhead, false);
  const Composition live = liveComposition(*doc.activeComposition(), interaction);
  EXPECT_EQ(live.layer(right.id)->transform.opacity.baseValue, PropertyValue::double_(50));
  EXPECT_EQ(live.layer(top.id)->transform, layer(top.id).transform);
  EXPECT_EQ(live.layers.size(), doc.activeComposition()->layers.size());
}

}  // namespace
}  // namespace orvane::surfaces
