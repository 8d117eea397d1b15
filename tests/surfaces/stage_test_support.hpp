#pragma once
// A stage over a 1920 × 1080 composition shown at half size, for the drag
// and click tests: a document with undo, the editor state with a clock the
// test moves, the interaction, and the controller wired to record what it
// publishes.

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <vector>

#include "surfaces/editor_state.hpp"
#include "surfaces/stage_interaction.hpp"
#include "surfaces/stage_transform_controller.hpp"
#include "surfaces/viewer_geometry.hpp"
#include "tests/commands/commands_test_support.hpp"

namespace orvane::surfaces::stage_testing {

using namespace commands::testing_support;
using Channel = LayerTransform::Channel;
using commands::PropertyAddress;

// A solid of size whose centre sits at centre (composition units).
inline Layer solidAt(std::string name, OVSize size, OVPoint centre, double start = 0, double duration = 10) {
  Layer l = clip(std::move(name), start, duration, LayerContent::solid({OVColor::white, size}));
  l.transform.position = AnimatedProperty::point(centre.x, centre.y);
  return l;
}

// Every text measures 300 × 60, as the renderer's measure would say.
inline OVSize fixedTextSize(const TextContent&, std::optional<double>) { return {300, 60}; }

struct StageFixture : ::testing::Test {
  // Listed top first: a 200 × 100 solid at (500, 300), a 100 × 100 solid
  // at (1200, 300) and a text layer at (960, 800).
  Layer top = solidAt("Top", {200, 100}, {500, 300});
  Layer right = solidAt("Right", {100, 100}, {1200, 300});
  Layer title = [] {
    Layer l = clip("Title", 0, 10, LayerContent::text(TextContent{}));
    l.transform.position = AnimatedProperty::point(960, 800);
    return l;
  }();

  ProjectDocument doc{projectWith({top, right, title})};
  UndoStack undo;
  std::chrono::steady_clock::time_point clockNow{std::chrono::seconds(100)};
  EditorState editor{[this] { return clockNow; }};
  StageInteraction interaction;
  OVTime playhead = secs(1);
  std::vector<SmartGuides::Result> published;
  std::vector<OVTime> scenesShownAt;
  StageTransformController stage{doc, &undo, editor, interaction,
                                 StageTransformController::Services{
                                     [this] { return playhead; },
                                     fixedTextSize,
                                     [this](const Composition&, const OVTime& t) { scenesShownAt.push_back(t); },
                                     [this](const SmartGuides::Result& r) { published.push_back(r); },
                                     [this] { return clockNow; },
                                 }};

  StageFixture() { stage.setGeometry(ViewerGeometry{{0, 0, 960, 540}, {1920, 1080}, 0.5}); }

  const ViewerGeometry& view() const { return stage.geometry(); }
  const Layer& layer(const Uuid& id) const { return *doc.activeComposition()->layer(id); }
  PropertyAddress address(const Layer& l, Channel c) const { return PropertyAddress::transform(l.id, c); }
  void advanceClock(double seconds) {
    clockNow += std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(seconds));
  }
};

}  // namespace orvane::surfaces::stage_testing
