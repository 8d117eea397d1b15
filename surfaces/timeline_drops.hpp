#pragma once
// What the timeline panel does with something dropped on it: a behavior
// onto a clip, a media asset or a composition into the timeline. Each drop
// is one ordinary undoable step of the document, and tells the user through
// the window's status line what happened. Main thread only.

#include <cstddef>
#include <optional>
#include <string_view>

#include "core/ov_time.hpp"
#include "core/uuid.hpp"
#include "document/project_document.hpp"
#include "document/undo_stack.hpp"
#include "surfaces/drag_payload.hpp"
#include "surfaces/editor_state.hpp"

namespace orvane::surfaces {

// A behavior dropped onto the clip of layerID (none: onto no clip). Stamps
// it and says "Applied <name>."; onto no clip it says "Drop <name> onto a
// clip segment.", onto a layer of a kind it does not suit "<name> doesn’t
// apply to that layer type.". An unknown behavior does nothing. Returns the
// number of layers stamped.
int applyBehaviorDrop(document::ProjectDocument& document, EditorState& editor, std::string_view behaviorID,
                      const std::optional<core::Uuid>& layerID, document::UndoStack* undoManager);

// Where a drop lands: a time, and either a track of a sequence or a place
// in a composition's stacking order (the top when none).
struct TimelineDropPlace {
  core::OVTime time;
  std::optional<core::Uuid> track;
  std::optional<std::size_t> index;
};

// A clip of the asset at the place, selected alone. None for an unknown asset.
std::optional<core::Uuid> dropMediaAsset(document::ProjectDocument& document, EditorState& editor,
                                         const MediaAssetDrag& drag, const TimelineDropPlace& place,
                                         document::UndoStack* undoManager);
// The composition nested at the place, selected alone. None for an unknown
// composition or one that would contain itself.
std::optional<core::Uuid> dropComposition(document::ProjectDocument& document, EditorState& editor,
                                          const CompositionDrag& drag, const TimelineDropPlace& place,
                                          document::UndoStack* undoManager);

}  // namespace orvane::surfaces
