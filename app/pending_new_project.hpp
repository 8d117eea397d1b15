#pragma once
// Carries the welcome window's choice of preset and editing mode to the
// next new document: the welcome window sets it, then asks for a new
// document, whose construction takes it with consume(). Guarded by a mutex
// because a document may be made off the main thread; any thread.

#include <mutex>
#include <optional>

#include "core/composition.hpp"
#include "core/composition_preset.hpp"

namespace orvane::app {

struct PendingNewProject {
  struct Choice {
    core::CompositionPreset preset;
    core::EditingMode editingMode = core::EditingMode::layers;
    friend bool operator==(const Choice&, const Choice&) = default;
  };

  static void set(Choice choice);
  // The choice made since the last call, once; none afterwards.
  static std::optional<Choice> consume();
  // The project a new document starts with: the consumed choice's starter,
  // else the default starter.
  static core::OVProject starterProject();
};

}  // namespace orvane::app
