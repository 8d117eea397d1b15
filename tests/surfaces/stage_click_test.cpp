#include <gtest/gtest.h>

#include <chrono>
#include <set>

#include "surfaces/canvas_click.hpp"
#include "surfaces/stage_layer_geometry.hpp"
#include "tests/surfaces/stage_test_support.hpp"

namespace orvane::surfaces {
namespace {

using namespace stage_testing;
using namespace std::chrono_literals;

// View points inside each layer at half size: the top solid spans x 200 ...
// 300 and y 365 ... 415, the right one x 575 ... 625, the title x 405 ...
// 555 and y 125 ... 155.
constexpr OVPoint kOnTop{250, 390};
constexpr OVPoint kOnRight{600, 390};
constexpr OVPoint kOnTitle{480, 140};
constexpr OVPoint kOffCanvas{-20, -20};

struct StageClickTest : StageFixture {
  void change(const Uuid& id, const std::function<void(Layer&)>& body) {
    doc.performWithoutUndo([&](OVProject& p) {
      p.updateActiveComposition([&](Composition& c) { c.update(id, body); });
    });
  }
  void changeTop(const std::function<void(Layer&)>& body) { change(top.id, body); }
  // A full-canvas solid beneath everything.
  Uuid addBackdrop() {
    const Layer backdrop = solidAt("Backdrop", {1920, 1080}, {960, 540});
    doc.performWithoutUndo([&](OVProject& p) {
      p.updateActiveComposition([&](Composition& c) { c.layers.push_back(backdrop); });
    });
    return backdrop.id;
  }
  // Each click a second after the last, so that none is taken for a repeat.
  void click(OVPoint at, SelectionModifiers modifiers = {}) {
    advanceClock(1);
    stage.handleCanvasClick(at, modifiers);
  }
  std::set<Uuid> ids(std::initializer_list<Uuid> list) { return std::set<Uuid>(list); }
};

TEST_F(StageClickTest, AClickSelectsTheLayerUnderIt) {
  click(kOnTop);
  EXPECT_EQ(editor.selectedLayerIDs(), ids({top.id}));
  EXPECT_EQ(editor.primaryLayerID(), top.id);
  click(kOnTitle);  // sized by the text measure
  EXPECT_EQ(editor.selectedLayerIDs(), ids({title.id}));
  click(kOnRight, {.shift = false, .command = true});
  EXPECT_EQ(editor.selectedLayerIDs(), ids({title.id, right.id}));
  click(kOnTop, {.shift = true, .command = false});  // the run from the primary
  EXPECT_EQ(editor.selectedLayerIDs(), ids({top.id, right.id}));
  EXPECT_EQ(editor.primaryLayerID(), right.id);
}

TEST_F(StageClickTest, HiddenLockedAndAbsentLayersArePassedOver) {
  const Uuid backdrop = addBackdrop();
  click(kOnTop);
  EXPECT_EQ(editor.selectedLayerIDs(), ids({top.id}));
  for (const auto& change : std::vector<std::function<void(Layer&)>>{
           [](Layer& l) { l.isLocked = true; },
           [](Layer& l) { l.isEnabled = false; },
           [](Layer& l) { l.timeRange.start = secs(2); },  // not yet at the playhead
       }) {
    const OVProject before = doc.project();
    changeTop(change);
    click(kOnTop);
    EXPECT_EQ(editor.selectedLayerIDs(), ids({backdrop}));
    doc.performWithoutUndo([&](OVProject& p) { p = before; });
  }
}

TEST_F(StageClickTest, TheHitFollowsARotatedLayersOutline) {
  // Inside the unrotated rectangle, near its upper left corner.
  const OVPoint nearCorner = view().viewPoint({402, 348});
  click(nearCorner);
  EXPECT_EQ(editor.selectedLayerIDs(), ids({top.id}));
  for (const double degrees : {45.0, -45.0}) {
    changeTop([&](Layer& l) { l.transform.rotation = AnimatedProperty::double_(degrees); });
    click(nearCorner);
    EXPECT_TRUE(editor.selectedLayerIDs().empty()) << degrees;
    click(kOnTop);  // the centre still hits
    EXPECT_EQ(editor.selectedLayerIDs(), ids({top.id}));
  }
  EXPECT_EQ(layerAt(nearCorner, *doc.activeComposition(), doc.project(), playhead, view(), fixedTextSize),
            std::nullopt);
}

TEST_F(StageClickTest, AChildIsHitWhereItsParentPutsIt) {
  // Parented to the top layer, the right solid's position is an offset
  // from the top layer's: its centre lands at (800, 300).
  change(right.id, [&](Layer& l) {
    l.parentLayerID = top.id;
    l.transform.position = AnimatedProperty::point(300, 0);
  });
  click(view().viewPoint({800, 300}));
  EXPECT_EQ(editor.selectedLayerIDs(), ids({right.id}));
  click(kOnRight);
  EXPECT_TRUE(editor.selectedLayerIDs().empty());
}

TEST_F(StageClickTest, BareStageEndsTheModalEdits) {
  editor.beginCropping(top.id);
  editor.setSelectedMaskVertexIndex(2);
  click(kOffCanvas);
  EXPECT_TRUE(editor.selectedLayerIDs().empty());
  EXPECT_EQ(editor.primaryLayerID(), std::nullopt);
  EXPECT_FALSE(editor.isCropping());
  EXPECT_EQ(editor.selectedMaskVertexIndex(), std::nullopt);
  EXPECT_EQ(editor.statusMessage(), "Crop applied.");

  editor.beginEditingText(title.id);
  click(kOffCanvas);
  EXPECT_FALSE(editor.isEditingText());
}

TEST_F(StageClickTest, OneClickReportedTwiceActsOnce) {
  const SelectionModifiers command{.shift = false, .command = true};
  stage.handleCanvasClick(kOnTop, command);
  EXPECT_EQ(editor.selectedLayerIDs(), ids({top.id}));
  // The event monitor's report of the same click would toggle it off again.
  advanceClock(0.05);
  stage.handleCanvasClick({kOnTop.x + 2, kOnTop.y + 2}, command);
  EXPECT_EQ(editor.selectedLayerIDs(), ids({top.id}));
  advanceClock(0.4);
  stage.handleCanvasClick(kOnTop, command);
  EXPECT_TRUE(editor.selectedLayerIDs().empty());
}

TEST(CanvasClickTest, NewWhenLaterOrElsewhere) {
  const CanvasClick::TimePoint t0{10s};
  CanvasClick last;
  EXPECT_TRUE(last.shouldHandle({100, 100}, t0));
  EXPECT_FALSE(last.shouldHandle({100, 100}, t0 + 290ms));
  EXPECT_FALSE(last.shouldHandle({103, 100}, t0 + 100ms));  // 3 points is still the same place
  EXPECT_TRUE(last.shouldHandle({103.5, 100}, t0 + 100ms));
  // Measured from the last handled click, not from the dropped ones.
  EXPECT_FALSE(last.shouldHandle({103.5, 100}, t0 + 350ms));
  EXPECT_TRUE(last.shouldHandle({103.5, 100}, t0 + 410ms));
  EXPECT_EQ(last.location, (OVPoint{103.5, 100}));
  EXPECT_EQ(last.time, t0 + 410ms);
}

}  // namespace
}  // namespace orvane::surfaces
