#pragma once
// Applying a behavior to layers of the active composition: one undo step
// named "Apply " + the behavior's name. Main thread only, like the document.

#include <string_view>
#include <vector>

#include "behaviors/behavior.hpp"
#include "core/uuid.hpp"
#include "document/project_document.hpp"
#include "document/undo_stack.hpp"

namespace orvane::behaviors {

// The rule under applyBehavior, on a project value, for callers that edit
// inside an interaction of their own (the assistant's turn): stamps the
// active composition's layers among layerIDs that are not locked and are
// of a kind the behavior applies to, each once. Returns how many took it.
int stampBehavior(core::OVProject& project, const Behavior& behavior, const std::vector<core::Uuid>& layerIDs);

// Stamps behavior onto those of layerIDs that are layers of the active
// composition, are not locked and are of a kind the behavior applies to.
// Returns how many layers took it; with none (or no active composition) the
// project is left alone and no step is made.
int applyBehavior(document::ProjectDocument& doc, const Behavior& behavior, const std::vector<core::Uuid>& layerIDs,
                  document::UndoStack* undo = nullptr);
// The catalog behavior with this id; 0 for an unknown id.
int applyBehavior(document::ProjectDocument& doc, std::string_view behaviorID,
                  const std::vector<core::Uuid>& layerIDs, document::UndoStack* undo = nullptr);

}  // namespace orvane::behaviors
