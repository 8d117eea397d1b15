#include "surfaces/timeline_drops.hpp"

#include <string>

#include "Commands/layer_edits.hpp"
#include "behaviors/apply_behavior.hpp"
#include "behaviors/behavior_catalog.hpp"

namespace orvane::surfaces {

using core::Uuid;

int applyBehaviorDrop(document::ProjectDocument& document, EditorState& editor, std::string_view behaviorID,
                      const std::optional<Uuid>& layerID, document::UndoStack* undoManager) {
  const behaviors::Behavior* behavior = behaviors::BehaviorCatalog::behavior(behaviorID);
  if (behavior == nullptr) return 0;
  const core::Composition* composition = document.activeComposition();
  const core::Layer* layer = (composition && layerID) ? composition->layer(*layerID) : nullptr;
  if (layer == nullptr) {
    editor.showStatus("Drop " + behavior->name + " onto a clip segment.");
    return 0;
  }
  if (!behavior->applies(layer->kind())) {
    editor.showStatus(behavior->name + " doesn’t apply to that layer type.");
    return 0;
  }
  const int count = behaviors::applyBehavior(document, *behavior, {*layerID}, undoManager);
  editor.showStatus("Applied " + behavior->name + ".");
  return count;
}

std::optional<Uuid> dropMediaAsset(document::ProjectDocument& document, EditorState& editor,
                                   const MediaAssetDrag& drag, const TimelineDropPlace& place,
                                   document::UndoStack* undoManager) {
  const core::MediaAsset* asset = document.project().asset(drag.assetID);
  if (asset == nullptr) return std::nullopt;
  commands::AddLayerOptions options;
  options.index = place.index;
  options.track = place.track;
  // A copy: the edit replaces the project the pointer lives in.
  const core::MediaAsset copy = *asset;
  const auto id = commands::addLayer(document, copy, place.time, options, undoManager);
  if (id) editor.selectLayer(*id);
  return id;
}

std::optional<Uuid> dropComposition(document::ProjectDocument& document, EditorState& editor,
                                    const CompositionDrag& drag, const TimelineDropPlace& place,
                                    document::UndoStack* undoManager) {
  if (document.project().composition(drag.compositionID) == nullptr) return std::nullopt;
  const auto id = commands::addPrecompositionLayer(document, drag.compositionID, place.time, place.index,
                                                   place.track, undoManager);
  if (id) editor.selectLayer(*id);
  return id;
}

}  // namespace orvane::surfaces
