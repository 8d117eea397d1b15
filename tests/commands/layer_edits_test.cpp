#include "Commands/layer_edits.hpp"

#include <gtest/gtest.h>

#include "Commands/composition_edits.hpp"
#include "tests/commands/commands_test_support.hpp"

namespace orvane::commands {
namespace {

using namespace testing_support;

// A 10 s composition with a video clip A (0-4 s, soundtrack linked), a solid
// B (2-6 s), a video clip C (5-9 s, sound unlinked) and a layer "Nested"
// showing the second composition, plus one marker.
OVProject base() {
  MediaAsset beach = videoAsset("Beach", 8);
  Layer a = clip("A", 0, 4, LayerContent::video(beach.id));
  a.audio.normalizeGain = 0.5;
  Layer c = clip("C", 5, 4, LayerContent::video(beach.id));
  c.usesSourceAudio = false;
  Composition nested = CompositionPreset::defaultPreset().makeComposition("Nested");
  OVProject p = projectWith({a, clip("B", 2, 4), c, clip("Nested", 0, 2, LayerContent::precomposition(nested.id))});
  p.addAsset(beach);
  p.addComposition(nested, false);
  p.updateActiveComposition([](Composition& comp) { comp.markers = {Marker{.time = secs(3), .name = "Beat"}}; });
  return p;
}

const Layer* named(const ProjectDocument& doc, const std::string& name) {
  for (const Layer& l : doc.activeComposition()->layers)
    if (l.name == name) return &l;
  return nullptr;
}
Uuid id(const ProjectDocument& doc, const std::string& name) { return named(doc, name)->id; }

using D = ProjectDocument;
using U = UndoStack*;

struct EditCase {
  const char* action;
  std::function<void(ProjectDocument&, UndoStack*)> edit;
};

TEST(LayerEditsTest, EveryEditIsOneNamedUndoableStep) {
  const EditCase cases[] = {
      {"Add Beach", [](D& d, U u) { addLayer(d, *d.project().assets.begin(), secs(1), {}, u); }},
      {"Add Text Layer", [](D& d, U u) { addTextLayer(d, secs(1), u); }},
      {"Add Ellipse", [](D& d, U u) { addShapeLayer(d, ShapeContent::ShapeType::ellipse, secs(1), u); }},
      {"Add Solid Layer", [](D& d, U u) { addSolidLayer(d, OVColor::red_, secs(1), u); }},
      {"Add Adjustment Layer", [](D& d, U u) { addAdjustmentLayer(d, secs(1), u); }},
      {"Add Nested 2",
       [](D& d, U u) { addPrecompositionLayer(d, *named(d, "Nested")->content.compositionID(), secs(0), {}, {}, u); }},
      {"Duplicate Layer", [](D& d, U u) { duplicateLayers(d, {id(d, "A")}, u); }},
      {"Duplicate Layers", [](D& d, U u) { duplicateLayers(d, {id(d, "A"), id(d, "B")}, u); }},
      {"Delete Layer", [](D& d, U u) { deleteLayers(d, {id(d, "A")}, u); }},
      {"Delete Layers", [](D& d, U u) { deleteLayers(d, {id(d, "A"), id(d, "B")}, u); }},
      {"Rename Layer", [](D& d, U u) { renameLayer(d, id(d, "B"), " Sky\n", u); }},
      {"Rename Composition", [](D& d, U u) { renameLayer(d, id(d, "Nested"), "Intro", u); }},
      {"Reorder Layers", [](D& d, U u) { moveLayer(d, id(d, "C"), 0, u); }},
      {"Reorder Layers", [](D& d, U u) { moveLayers(d, {id(d, "A"), id(d, "C")}, 0, u); }},
      {"Move Layers", [](D& d, U u) { moveLayersBy(d, {id(d, "B")}, secs(1), u); }},
      {"Trim Layer", [](D& d, U u) { trimLayerStart(d, id(d, "B"), secs(3), false, u); }},
      {"Trim Layer", [](D& d, U u) { trimLayerEnd(d, id(d, "B"), secs(5), false, u); }},
      {"Set Fade In", [](D& d, U u) { setLayerFadeIn(d, id(d, "B"), secs(1), false, u); }},
      {"Set Fade Out", [](D& d, U u) { setLayerFadeOut(d, id(d, "B"), secs(1), false, u); }},
      {"Split Layer", [](D& d, U u) { EXPECT_EQ(splitLayers(d, {id(d, "B"), id(d, "C")}, secs(4), u), 1); }},
      {"Unlink Audio", [](D& d, U u) { unlinkAudio(d, id(d, "A"), u); }},
      {"Link Audio", [](D& d, U u) { relinkAudio(d, id(d, "C"), u); }},
      {"Set Parent", [](D& d, U u) { setParent(d, id(d, "B"), id(d, "A"), u); }},
      {"Set Label Colour", [](D& d, U u) { setLabelColor(d, {id(d, "A")}, LayerLabelColor::teal, u); }},
      {"Toggle Visibility", [](D& d, U u) { toggleVisibility(d, {id(d, "A")}, u); }},
      {"Toggle Lock", [](D& d, U u) { toggleLock(d, {id(d, "A")}, u); }},
      {"Toggle Solo", [](D& d, U u) { toggleSolo(d, {id(d, "A")}, u); }},
      {"Toggle Mute", [](D& d, U u) { toggleMute(d, {id(d, "A")}, u); }},
      {"Audio Effect",
       [](D& d, U u) { setAudioEffect(d, id(d, "A"), [](AudioProperties& a) { a.reverbMix = 30; }, u); }},
      {"Reset Normalize", [](D& d, U u) { resetNormalizeGain(d, id(d, "A"), u); }},
      {"Add Marker", [](D& d, U u) { addCompositionMarker(d, secs(1), "Drop", u); }},
      {"Delete Marker", [](D& d, U u) { removeCompositionMarker(d, d.activeComposition()->markers[0].id, u); }},
  };
  for (const auto& tc : cases) {
    SCOPED_TRACE(tc.action);
    ProjectDocument doc(base());
    UndoStack undo;
    expectUndoableEdit(doc, undo, tc.action, [&] { tc.edit(doc, &undo); });
  }
}

TEST(LayerEditsTest, BadInputLeavesNoTrace) {
  const Uuid unknown = Uuid::make();
  const EditCase cases[] = {
      {"empty delete", [](D& d, U u) { deleteLayers(d, {}, u); }},
      {"blank rename", [](D& d, U u) { renameLayer(d, id(d, "A"), " \n", u); }},
      {"unknown toggle", [&](D& d, U u) { toggleSolo(d, {unknown}, u); }},
      {"split near the start", [](D& d, U u) { EXPECT_EQ(splitLayers(d, {id(d, "B")}, secs(2.02), u), 0); }},
      {"split near the end", [](D& d, U u) { EXPECT_EQ(splitLayers(d, {id(d, "B")}, secs(5.98), u), 0); }},
      {"unlink without a soundtrack", [](D& d, U u) { unlinkAudio(d, id(d, "C"), u); }},
  };
  for (const auto& tc : cases) {
    SCOPED_TRACE(tc.action);
    ProjectDocument doc(base());
    UndoStack undo;
    expectNoEdit(doc, undo, [&] { tc.edit(doc, &undo); });
  }
}

class LayerEditsFlowTest : public ::testing::Test {
 protected:
  const Layer* layer(const std::string& name) const { return named(doc, name); }
  Uuid idOf(const std::string& name) const { return id(doc, name); }
  OVTime startOf(const std::string& name) const { return layer(name)->timeRange.start; }

  ProjectDocument doc{base()};
  UndoStack undo;
};

TEST_F(LayerEditsFlowTest, FirstFootageLengthensAnEmptyComposition) {
  for (const bool still : {false, true}) {
    ProjectDocument empty(projectWith({}));
    const auto added = addLayer(empty, still ? imageAsset("i") : videoAsset("v", 12), secs(0), {}, &undo);
    EXPECT_EQ(empty.activeComposition()->duration, secs(still ? 10 : 12)) << still;
    EXPECT_EQ(empty.activeComposition()->layer(*added)->timeRange.duration, secs(still ? 5 : 12));
  }
}

TEST_F(LayerEditsFlowTest, NamesCountUpAndFreeNamesComeBack) {
  const auto first = addTextLayer(doc, secs(0), &undo);
  addTextLayer(doc, secs(0), &undo);
  ASSERT_TRUE(layer("Text 2"));
  deleteLayers(doc, {*first}, &undo);
  addTextLayer(doc, secs(0), &undo);
  EXPECT_TRUE(layer("Text"));
}

TEST_F(LayerEditsFlowTest, NestingBothWaysIsRefusedTheSecondTime) {
  const Uuid host = doc.activeComposition()->id;
  const Uuid other = createComposition(doc, CompositionPreset::defaultPreset(), "B", EditingMode::layers, &undo);
  EXPECT_TRUE(addPrecompositionLayer(doc, host, secs(0), {}, {}, &undo));
  setActiveComposition(doc, host, &undo);
  expectNoEdit(doc, undo, [&] { EXPECT_FALSE(addPrecompositionLayer(doc, other, secs(0), {}, {}, &undo)); });
}

TEST_F(LayerEditsFlowTest, ParentCyclesAreRefusedAndDeletingAParentClearsTheLink) {
  setParent(doc, idOf("B"), idOf("A"), &undo);
  expectNoEdit(doc, undo, [&] { setParent(doc, idOf("A"), idOf("B"), &undo); });
  const LayerTransform before = layer("B")->transform;
  deleteLayers(doc, {idOf("A")}, &undo);
  EXPECT_FALSE(layer("B")->parentLayerID);
  EXPECT_TRUE(layer("B")->transform == before);
}

TEST_F(LayerEditsFlowTest, TogglesMakeASelectionUniformAndDuplicatesAreNotSolo) {
  toggleSolo(doc, {idOf("A")}, &undo);
  toggleSolo(doc, {idOf("A"), idOf("B"), Uuid::make()}, &undo);
  EXPECT_FALSE(layer("A")->isSolo || layer("B")->isSolo);
  toggleSolo(doc, {idOf("B")}, &undo);
  duplicateLayers(doc, {idOf("B")}, &undo);
  const Layer& above = doc.activeComposition()->layers[*doc.activeComposition()->indexOf(idOf("B")) - 1];
  EXPECT_EQ(above.name, "B 2");
  EXPECT_FALSE(above.isSolo);
}

TEST_F(LayerEditsFlowTest, RenamingACompositionRenamesNumberedLayersThatFollowIt) {
  const Uuid nested = *layer("Nested")->content.compositionID();
  doc.performWithoutUndo([&](OVProject& p) {
    p.updateActiveComposition([&](Composition& c) {
      c.insert(clip("Nested 3", 0, 1, LayerContent::precomposition(nested)));
      c.insert(clip("Nested take", 0, 1, LayerContent::precomposition(nested)));
    });
  });
  renameLayer(doc, idOf("Nested 3"), "Intro", &undo);
  EXPECT_EQ(doc.project().composition(nested)->name, "Intro");
  EXPECT_EQ(layer("Nested 3"), nullptr);
  EXPECT_TRUE(layer("Nested take"));
}

TEST_F(LayerEditsFlowTest, MovesNeverShiftLockedLayersButSnapAndFloorTheRest) {
  toggleLock(doc, {idOf("A")}, &undo);
  moveLayersBy(doc, {idOf("A"), idOf("B")}, secs(-3), &undo);
  EXPECT_EQ(std::pair(startOf("A"), startOf("B")), std::pair(secs(0), secs(0)));
  doc.beginInteraction();
  moveLayersInteractively(doc, {idOf("A"), idOf("C")}, {{idOf("A"), secs(2)}, {idOf("C"), secs(1.01)}});
  doc.endInteraction("Move", &undo);
  EXPECT_EQ(std::pair(startOf("A"), startOf("C")), std::pair(secs(0), secs(1)));
}

TEST_F(LayerEditsFlowTest, MovingABlockKeepsItsOrder) {
  moveLayers(doc, {idOf("Nested"), idOf("A")}, 1, &undo);
  std::vector<std::string> names;
  for (const Layer& l : doc.activeComposition()->layers) names.push_back(l.name);
  EXPECT_EQ(names, (std::vector<std::string>{"B", "A", "Nested", "C"}));
}

TEST_F(LayerEditsFlowTest, TrimsKeepAFrameAndStopAtTheSourceEnd) {
  trimLayerEnd(doc, idOf("A"), secs(20), false, &undo);
  EXPECT_EQ(layer("A")->timeRange.end(), secs(8));  // the asset is 8 s
  trimLayerEnd(doc, idOf("B"), secs(20), false, &undo);
  EXPECT_EQ(layer("B")->timeRange.end(), secs(20));  // generated content grows at will
  trimLayerStart(doc, idOf("C"), secs(20), false, &undo);
  EXPECT_EQ(layer("C")->timeRange.duration, FrameRate::fps30.frameDuration());
}

}  // namespace
}  // namespace orvane::commands
