#include "document/project_document.hpp"

#include <gtest/gtest.h>

#include <fstream>

#include "document/project_codec.hpp"
#include "tests/document/sample_project.hpp"
#include "tests/document/temp_folder.hpp"

namespace orvane::document {
namespace {

using namespace core;

void rename(OVProject& p, const std::string& name) { p.name = name; }

struct DocumentFixture : ::testing::Test {
  bool mouseDown = false;
  ProjectDocument doc{testing_support::sampleProject(), [this] { return mouseDown; }};
  UndoStack undo;
  int published = 0;
  int menuChanges = 0;
  DocumentFixture() {
    doc.addRevisionObserver([this] { ++published; });
    undo.setOnChange([this] { ++menuChanges; });
  }
};

using ProjectDocumentTest = DocumentFixture;

TEST_F(ProjectDocumentTest, PerformIsOneNamedStepWithUndoAndRedo) {
  const OVProject before = doc.project();
  doc.perform("Rename Project", &undo, [](OVProject& p) { rename(p, "A"); });
  const OVProject after = doc.project();
  EXPECT_EQ(doc.revision(), 1);
  EXPECT_EQ(published, 1);
  EXPECT_GE(after.modifiedAt, before.modifiedAt);
  EXPECT_EQ(undo.undoMenuTitle(), "Undo Rename Project");

  undo.undo();
  EXPECT_EQ(doc.project(), before);  // modifiedAt rolls back too
  EXPECT_EQ(undo.redoMenuTitle(), "Redo Rename Project");
  EXPECT_FALSE(undo.canUndo());
  undo.redo();
  EXPECT_EQ(doc.project(), after);
  EXPECT_EQ(undo.undoActionName(), "Rename Project");
  EXPECT_EQ(doc.revision(), 3);
  // The Edit menu hears of the new step, the undo and the redo.
  EXPECT_GE(menuChanges, 3);
}

TEST_F(ProjectDocumentTest, NoOpEditsLeaveNoTrace) {
  const OVProject before = doc.project();
  doc.perform("Nothing", &undo, [](OVProject&) {});
  doc.perform("Same", &undo, [](OVProject& p) { rename(p, p.name); });
  doc.performWithoutUndo([](OVProject&) {});
  EXPECT_EQ(doc.revision(), 0);
  EXPECT_EQ(published, 0);
  EXPECT_FALSE(undo.canUndo());
  EXPECT_EQ(doc.project().modifiedAt, before.modifiedAt);
}

TEST_F(ProjectDocumentTest, WithoutUndoMovesTheRevisionButNotTheTimestamp) {
  const Timestamp stamp = doc.project().modifiedAt;
  doc.performWithoutUndo([](OVProject& p) { rename(p, "Derived"); });
  EXPECT_EQ(doc.revision(), 1);
  EXPECT_EQ(doc.project().modifiedAt, stamp);
  doc.perform("Rename", nullptr, [](OVProject& p) { rename(p, "Nobody undoes"); });
  EXPECT_EQ(doc.project().name, "Nobody undoes");
  EXPECT_FALSE(undo.canUndo());
}

TEST_F(ProjectDocumentTest, ANewEditForgetsWhatCouldBeRedone) {
  doc.perform("One", &undo, [](OVProject& p) { rename(p, "1"); });
  undo.undo();
  doc.perform("Two", &undo, [](OVProject& p) { rename(p, "2"); });
  EXPECT_FALSE(undo.canRedo());
  EXPECT_EQ(undo.undoCount(), 1u);
}

TEST_F(ProjectDocumentTest, ADragIsOneStepBackToItsStart) {
  const OVProject start = doc.project();
  doc.beginInteraction();
  EXPECT_TRUE(doc.isInteracting());
  for (int i = 1; i <= 5; ++i) doc.updateInteraction([i](OVProject& p) { rename(p, "tick " + std::to_string(i)); });
  EXPECT_EQ(doc.revision(), 5);
  const OVProject end = doc.project();
  doc.endInteraction("Move", &undo);
  EXPECT_EQ(doc.revision(), 5);  // the ticks published it already
  EXPECT_FALSE(doc.isInteracting());
  EXPECT_EQ(undo.undoCount(), 1u);
  undo.undo();
  EXPECT_EQ(doc.project(), start);
  undo.redo();
  EXPECT_EQ(doc.project().name, end.name);
}

TEST_F(ProjectDocumentTest, ADragBackToItsStartLeavesNoStep) {
  const std::string name = doc.project().name;
  doc.beginInteraction();
  doc.updateInteraction([](OVProject& p) { rename(p, "away"); });
  doc.updateInteraction([&](OVProject& p) { rename(p, name); });
  doc.endInteraction("Move", &undo);
  EXPECT_EQ(doc.revision(), 2);
  EXPECT_FALSE(undo.canUndo());
}

TEST_F(ProjectDocumentTest, NestedInteractionsKeepTheOuterSnapshotAndName) {
  const OVProject start = doc.project();
  doc.beginInteraction();
  doc.updateInteraction([](OVProject& p) { rename(p, "outer"); });
  doc.beginInteraction();
  doc.updateInteraction([](OVProject& p) { rename(p, "inner"); });
  doc.endInteraction("Inner", &undo);
  EXPECT_TRUE(doc.isInteracting());
  EXPECT_FALSE(undo.canUndo());
  doc.endInteraction("Outer", &undo);
  EXPECT_EQ(undo.undoActionName(), "Outer");
  undo.undo();
  EXPECT_EQ(doc.project(), start);
  // An end without a begin changes nothing.
  doc.endInteraction("Stray", &undo);
  EXPECT_EQ(doc.interactionDepth(), 0);
  EXPECT_FALSE(undo.canUndo());
}

TEST_F(ProjectDocumentTest, CancelRestoresTheStartOnlyAtTheOutermostLevel) {
  const OVProject start = doc.project();
  doc.beginInteraction();
  doc.beginInteraction();
  doc.updateInteraction([](OVProject& p) { rename(p, "moved"); });
  doc.cancelInteraction();
  EXPECT_EQ(doc.project().name, "moved");
  doc.cancelInteraction();
  EXPECT_EQ(doc.project(), start);
  EXPECT_EQ(doc.revision(), 2);  // one tick, one repaint for the cancel
  EXPECT_FALSE(undo.canUndo());

  doc.beginInteraction();
  doc.beginInteraction();
  doc.updateInteraction([](OVProject& p) { rename(p, "again"); });
  doc.endInteraction("Inner", &undo);
  doc.cancelInteraction();
  EXPECT_EQ(doc.project(), start);
  EXPECT_FALSE(undo.canUndo());
}

TEST_F(ProjectDocumentTest, OrphanedMouseDragIsKeptAsOneEditStep) {
  mouseDown = true;
  doc.beginInteraction();
  doc.beginInteraction();
  doc.updateInteraction([](OVProject& p) { rename(p, "dragged"); });
  doc.recoverOrphanedInteraction(&undo);  // the button is still held
  EXPECT_TRUE(doc.isInteracting());
  mouseDown = false;
  doc.recoverOrphanedInteraction(&undo);
  EXPECT_FALSE(doc.isInteracting());
  EXPECT_EQ(doc.project().name, "dragged");
  EXPECT_EQ(undo.undoActionName(), "Edit");
}

TEST_F(ProjectDocumentTest, KeyboardInteractionsAreNotRecovered) {
  doc.beginInteraction();  // no button down at the start
  doc.updateInteraction([](OVProject& p) { rename(p, "nudged"); });
  doc.recoverOrphanedInteraction(&undo);
  EXPECT_TRUE(doc.isInteracting());
}

TEST_F(ProjectDocumentTest, EditsDuringADragKeepTheirOwnStep) {
  doc.beginInteraction();
  doc.updateInteraction([](OVProject& p) { rename(p, "drag"); });
  doc.perform("Add Marker", &undo, [](OVProject& p) { p.appVersion = "x"; });
  doc.endInteraction("Move", &undo);
  EXPECT_EQ(undo.undoCount(), 2u);
  // Saving mid-drag writes the live value.
  doc.beginInteraction();
  doc.updateInteraction([](OVProject& p) { rename(p, "live"); });
  EXPECT_EQ(ProjectCodec::decode(doc.fileContents())->name, "live");
}

TEST_F(ProjectDocumentTest, LayerAndCompositionHelpersAndFrameSnapping) {
  const Uuid layerID = doc.activeComposition()->layers[0].id;
  doc.updateLayer(layerID, "Rename Layer", &undo, [](Layer& l) { l.name = "Renamed"; });
  EXPECT_EQ(doc.activeComposition()->layers[0].name, "Renamed");
  doc.updateLayer(Uuid::make(), "Nothing", &undo, [](Layer& l) { l.name = "x"; });
  EXPECT_EQ(undo.undoActionName(), "Rename Layer");
  // 30 fps: 0.51 s is frame 15.
  EXPECT_EQ(doc.frameSnapped(OVTime::fromSeconds(0.51)), OVTime(15, 30));
  ProjectDocument empty(OVProject{});
  EXPECT_EQ(empty.frameSnapped(OVTime(7, 100)), OVTime(7, 100));
  EXPECT_FALSE(empty.activeCompositionID());
}

TEST(ProjectDocumentReadTest, RefusesFoldersAndUnusableRates) {
  testing_support::TempFolder dir;
  EXPECT_EQ(ProjectDocument::read(dir.path()).error().message(), "The file is empty or is a folder.");
  const auto path = dir.path() / "zero.orvane";
  std::ofstream(path) << R"({"comps":[{"id":"6B1C1D2E-0000-4000-8000-000000000001","n":"C","sz":{"w":1,"h":1},)"
                         R"("fr":{"numerator":0,"denominator":1},"d":{"v":1,"ts":1}}]})";
  ASSERT_TRUE(ProjectCodec::read(path));  // the file format itself lets it through
  const auto opened = ProjectDocument::read(path);
  ASSERT_FALSE(opened);
  EXPECT_EQ(opened.error().message(),
            "The project file could not be read. The composition \"C\" has a frame rate that is not positive.");
}

}  // namespace
}  // namespace orvane::document
