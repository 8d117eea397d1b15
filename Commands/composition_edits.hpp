#pragma once
// The edits of compositions as a whole: creating one, switching the active
// one, its settings, motion blur, fitting it to its layers, the work area
// and the playhead. Each is one undo step, except the drag forms and the
// playhead, which never enter the history. Main thread only.

#include <optional>
#include <string>

#include "core/composition.hpp"
#include "core/composition_preset.hpp"
#include "document/project_document.hpp"
#include "document/undo_stack.hpp"

namespace orvane::commands {

// What the settings sheet edits.
struct CompositionSettings {
  std::string name;
  core::OVSize size;
  core::FrameRate frameRate;
  core::OVTime duration;
  core::OVColor backgroundColor;
  bool isTransparent = false;
};

// A new composition from the preset, made active; named "Composition",
// "Composition 2", ... when name is none or blank. Returns its id.
core::Uuid createComposition(document::ProjectDocument& doc, const core::CompositionPreset& preset,
                             const std::optional<std::string>& name, core::EditingMode editingMode,
                             document::UndoStack* undo);
void setActiveComposition(document::ProjectDocument& doc, const core::Uuid& id, document::UndoStack* undo);
// Layers are neither rescaled nor refitted, and the work area stays. A
// rename carries over to the layers that show the composition's name.
void updateCompositionSettings(document::ProjectDocument& doc, const CompositionSettings& settings,
                               document::UndoStack* undo);
// While the document is interacting (a slider drag) the change is live and
// the drag's end makes the step.
void setMotionBlur(document::ProjectDocument& doc, bool enabled, double shutterAngle, document::UndoStack* undo);
// The duration becomes the end of the last layer.
void fitCompositionToContent(document::ProjectDocument& doc, document::UndoStack* undo);
void setWorkArea(document::ProjectDocument& doc, const std::optional<core::OVTimeRange>& range,
                 document::UndoStack* undo);
void setWorkAreaInteractively(document::ProjectDocument& doc, const std::optional<core::OVTimeRange>& range);
// At least a frame before the end, not before zero.
void setWorkAreaStart(document::ProjectDocument& doc, const core::OVTime& time, document::UndoStack* undo);
// At least a frame after the start, not past the duration.
void setWorkAreaEnd(document::ProjectDocument& doc, const core::OVTime& time, document::UndoStack* undo);
// Stored in the project, yet never undoable.
void setPlayhead(document::ProjectDocument& doc, const core::OVTime& time);

}  // namespace orvane::commands
