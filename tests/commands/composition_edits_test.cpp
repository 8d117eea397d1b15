#include "Commands/composition_edits.hpp"

#include <gtest/gtest.h>

#include "tests/commands/commands_test_support.hpp"

namespace orvane::commands {
namespace {

using namespace testing_support;

TEST(CompositionEditsTest, EveryEditIsOneNamedUndoableStep) {
  using D = ProjectDocument;
  using U = UndoStack*;
  const CompositionSettings settings{"Main", {1280, 720}, FrameRate::fps25, secs(20), OVColor::white, true};
  const std::pair<const char*, std::function<void(D&, U)>> cases[] = {
      {"New Composition",
       [](D& d, U u) { createComposition(d, CompositionPreset::defaultPreset(), {}, EditingMode::layers, u); }},
      {"Switch Composition", [](D& d, U u) { setActiveComposition(d, d.project().compositions[1].id, u); }},
      {"Composition Settings", [&](D& d, U u) { updateCompositionSettings(d, settings, u); }},
      {"Motion Blur", [](D& d, U u) { setMotionBlur(d, true, 720, u); }},
      {"Fit Composition to Layers", [](D& d, U u) { fitCompositionToContent(d, u); }},
      {"Set Work Area", [](D& d, U u) { setWorkArea(d, std::nullopt, u); }},
      {"Set In Point", [](D& d, U u) { setWorkAreaStart(d, secs(2), u); }},
      {"Set Out Point", [](D& d, U u) { setWorkAreaEnd(d, secs(8), u); }},
  };
  for (const auto& [action, edit] : cases) {
    SCOPED_TRACE(action);
    OVProject p = projectWith({clip("A", 1, 3)});
    p.addComposition(CompositionPreset::defaultPreset().makeComposition("Other"), false);
    ProjectDocument doc(p);
    UndoStack undo;
    expectUndoableEdit(doc, undo, action, [&] { edit(doc, &undo); });
  }
}

class CompositionEditsFlowTest : public ::testing::Test {
 protected:
  const Composition& comp() const { return *doc.activeComposition(); }

  ProjectDocument doc{projectWith({clip("A", 1, 3)})};
  UndoStack undo;
};

TEST_F(CompositionEditsFlowTest, NewCompositionsCountUpAndBecomeActive) {
  const auto& preset = CompositionPreset::defaultPreset();
  createComposition(doc, preset, {}, EditingMode::layers, &undo);
  const Uuid third = createComposition(doc, preset, " \t", EditingMode::sequence, &undo);
  EXPECT_EQ(doc.activeCompositionID(), third);
  EXPECT_EQ(comp().name, "Composition 2");  // "Composition 1" and "Composition" are taken
  EXPECT_EQ(comp().tracks.size(), 4u);
  createComposition(doc, preset, " Intro ", EditingMode::layers, &undo);
  EXPECT_EQ(comp().name, "Intro");
  EXPECT_TRUE(comp().tracks.empty());
}

TEST_F(CompositionEditsFlowTest, SettingsKeepANameAndAFrameAndSyncNestedLayers) {
  const Composition host = comp();
  Composition other = CompositionPreset::defaultPreset().makeComposition("Other");
  other.layers.push_back(clip("Composition 1 2", 0, 1, LayerContent::precomposition(host.id)));
  doc.performWithoutUndo([&](OVProject& p) { p.addComposition(other, false); });
  updateCompositionSettings(doc, {" ", {640, 480}, FrameRate::fps24, OVTime::zero, OVColor::black, false}, &undo);
  EXPECT_EQ(comp().name, host.name);
  EXPECT_EQ(comp().duration, FrameRate::fps24.frameDuration());
  updateCompositionSettings(doc, {"Intro", {640, 480}, FrameRate::fps24, secs(3), OVColor::black, false}, &undo);
  EXPECT_EQ(doc.project().composition(other.id)->layers[0].name, "Intro");
  EXPECT_EQ(comp().workArea, host.workArea);
}

TEST_F(CompositionEditsFlowTest, WorkAreaEdgesKeepAFrameApartAndFollowAFit) {
  const OVTime frame = FrameRate::fps30.frameDuration();
  setWorkArea(doc, OVTimeRange(secs(4), secs(2)), &undo);
  setWorkAreaEnd(doc, secs(1), &undo);
  EXPECT_EQ(comp().workArea, OVTimeRange(secs(4), frame));
  setWorkArea(doc, std::nullopt, &undo);
  setWorkAreaStart(doc, secs(10), &undo);
  EXPECT_EQ(comp().workArea, OVTimeRange::fromStartEnd(secs(10) - frame, secs(10)));
  setWorkArea(doc, OVTimeRange(secs(2), secs(6)), &undo);
  fitCompositionToContent(doc, &undo);
  EXPECT_EQ(comp().duration, secs(4));
  EXPECT_EQ(comp().workArea, OVTimeRange(secs(2), secs(2)));
  ProjectDocument empty(projectWith({}));
  expectNoEdit(empty, undo, [&] { fitCompositionToContent(empty, &undo); });
}

TEST_F(CompositionEditsFlowTest, PlayheadAndSliderDragsStayOutOfTheHistoryUntilTheEnd) {
  setPlayhead(doc, secs(30));
  EXPECT_EQ(comp().playheadTime, secs(10));
  doc.beginInteraction();
  setMotionBlur(doc, true, 0, &undo);
  EXPECT_EQ(comp().motionBlurShutterAngle, 1);
  setWorkAreaInteractively(doc, OVTimeRange(secs(1), secs(1)));
  EXPECT_EQ(undo.undoCount(), 0u);
  doc.endInteraction("Motion Blur", &undo);
  EXPECT_EQ(undo.undoCount(), 1u);
  EXPECT_EQ(comp().workArea, OVTimeRange(secs(1), secs(1)));
}

}  // namespace
}  // namespace orvane::commands
