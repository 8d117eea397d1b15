#pragma once
// Shared by the timeline tests: a window's worth of document, undo stack
// and editor state over a 10 s, 30 fps composition, a zoom of 100 points
// per second (so 1 point is 10 ms), and drags fed tick by tick as a widget
// feeds them.

#include <gtest/gtest.h>

#include <vector>

#include "core/project.hpp"
#include "document/project_document.hpp"
#include "document/undo_stack.hpp"
#include "surfaces/editor_state.hpp"
#include "surfaces/timeline_track_row.hpp"

namespace orvane::surfaces::testing_support {

using namespace core;
using document::ProjectDocument;
using document::UndoStack;

inline OVTime secs(double s) { return OVTime::fromSeconds(s); }

// A solid from start for duration, not yet in any composition.
inline Layer clip(std::string name, double start, double duration) {
  return Layer(std::move(name), LayerContent::solid({OVColor::white, {100, 100}}), {secs(start), secs(duration)});
}

inline OVProject projectWith(std::vector<Layer> layers, EditingMode mode = EditingMode::layers) {
  OVProject p = OVProject::starter(CompositionPreset::defaultPreset(), mode);
  p.updateActiveComposition([&](Composition& c) {
    c.frameRate = FrameRate::fps30;
    c.duration = secs(10);
    for (auto& l : layers) c.layers.push_back(std::move(l));
    c.normalizeSequenceOrder();
  });
  return p;
}

class TimelineFixture : public ::testing::Test {
 protected:
  static constexpr double kPixelsPerSecond = 100;

  void open(std::vector<Layer> layers, EditingMode mode = EditingMode::layers) {
    doc.emplace(projectWith(std::move(layers), mode));
    editor.setPixelsPerSecond(kPixelsPerSecond);
  }
  const Composition& comp() const { return *doc->activeComposition(); }
  const Layer& layer(const Uuid& id) const { return *comp().layer(id); }
  const Layer& layerAt(std::size_t i) const { return comp().layers[i]; }
  double xOf(const OVTime& t) const { return t.seconds() * kPixelsPerSecond; }

  // A bar drag pressed at contentX and carried to (dx, dy) in steps ticks,
  // then released.
  void dragBar(TimelineTrackRow& row, double contentX, double dx, double dy = 0, int steps = 8) {
    const double width = row.layerID().isNil() ? 0 : xOf(layer(row.layerID()).timeRange.duration);
    for (int i = 1; i <= steps; ++i) {
      const double k = static_cast<double>(i) / steps;
      row.barDragChanged({{contentX, 5}, {dx * k, dy * k}}, width);
    }
    row.dragEnded();
  }

  void dragFade(TimelineTrackRow& row, TimelineTrackRow::DragMode handle, double dx, int steps = 8) {
    for (int i = 1; i <= steps; ++i) {
      const double k = static_cast<double>(i) / steps;
      row.fadeDragChanged(handle, {{0, 0}, {dx * k, 0}});
    }
    row.dragEnded();
  }

  // The drag left one step named name; undo gives back the project before.
  void expectOneStep(const OVProject& before, std::size_t stepsBefore, std::string_view name) {
    ASSERT_EQ(undo.undoCount(), stepsBefore + 1);
    EXPECT_EQ(undo.undoActionName(), name);
    EXPECT_FALSE(doc->isInteracting());
    const OVProject after = doc->project();
    undo.undo();
    EXPECT_TRUE(doc->project() == before) << "undo of " << name;
    undo.redo();
    EXPECT_TRUE(doc->project() == after) << "redo of " << name;
  }

  std::optional<ProjectDocument> doc;
  UndoStack undo;
  EditorState editor;
};

}  // namespace orvane::surfaces::testing_support
