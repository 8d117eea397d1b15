#include "behaviors/apply_behavior.hpp"

#include <algorithm>
#include <string>

#include "behaviors/behavior_catalog.hpp"

namespace orvane::behaviors {

int applyBehavior(document::ProjectDocument& doc, const Behavior& behavior, const std::vector<core::Uuid>& layerIDs,
                  document::UndoStack* undo) {
  const core::Composition* composition = doc.activeComposition();
  if (composition == nullptr) return 0;

  std::vector<core::Uuid> targets;
  for (const core::Uuid& id : layerIDs) {
    const core::Layer* layer = composition->layer(id);
    if (layer == nullptr || layer->isLocked || !behavior.applies(layer->kind())) continue;
    // A layer named twice in the selection is stamped and counted once.
    if (std::find(targets.begin(), targets.end(), id) != targets.end()) continue;
    targets.push_back(id);
  }
  if (targets.empty()) return 0;

  const core::FrameRate frameRate = composition->frameRate;
  doc.perform("Apply " + behavior.name, undo, [&](core::OVProject& project) {
    project.updateActiveComposition([&](core::Composition& c) {
      for (const core::Uuid& id : targets) c.update(id, [&](core::Layer& layer) { stamp(behavior, layer, frameRate); });
    });
  });
  return static_cast<int>(targets.size());
}

int applyBehavior(document::ProjectDocument& doc, std::string_view behaviorID,
                  const std::vector<core::Uuid>& layerIDs, document::UndoStack* undo) {
  const Behavior* behavior = BehaviorCatalog::behavior(behaviorID);
  return behavior == nullptr ? 0 : applyBehavior(doc, *behavior, layerIDs, undo);
}

}  // namespace orvane::behaviors
