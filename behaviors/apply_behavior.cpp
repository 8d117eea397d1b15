#include "behaviors/apply_behavior.hpp"

#include <algorithm>
#include <string>

#include "behaviors/behavior_catalog.hpp"

namespace orvane::behaviors {

namespace {

std::vector<core::Uuid> targetsIn(const core::Composition& composition, const Behavior& behavior,
                                  const std::vector<core::Uuid>& layerIDs) {
  std::vector<core::Uuid> targets;
  for (const core::Uuid& id : layerIDs) {
    const core::Layer* layer = composition.layer(id);
    if (layer == nullptr || layer->isLocked || !behavior.applies(layer->kind())) continue;
    // A layer named twice in the selection is stamped and counted once.
    if (std::find(targets.begin(), targets.end(), id) != targets.end()) continue;
    targets.push_back(id);
  }
  return targets;
}

void stampTargets(core::OVProject& project, const Behavior& behavior, const std::vector<core::Uuid>& targets) {
  project.updateActiveComposition([&](core::Composition& c) {
    const core::FrameRate frameRate = c.frameRate;
    for (const core::Uuid& id : targets) c.update(id, [&](core::Layer& layer) { stamp(behavior, layer, frameRate); });
  });
}

}  // namespace

int stampBehavior(core::OVProject& project, const Behavior& behavior, const std::vector<core::Uuid>& layerIDs) {
  const core::Composition* composition = project.activeComposition();
  if (composition == nullptr) return 0;
  const std::vector<core::Uuid> targets = targetsIn(*composition, behavior, layerIDs);
  if (!targets.empty()) stampTargets(project, behavior, targets);
  return static_cast<int>(targets.size());
}

int applyBehavior(document::ProjectDocument& doc, const Behavior& behavior, const std::vector<core::Uuid>& layerIDs,
                  document::UndoStack* undo) {
  const core::Composition* composition = doc.activeComposition();
  if (composition == nullptr) return 0;
  // Counted before the step, so that no layer taking it makes no step.
  const std::vector<core::Uuid> targets = targetsIn(*composition, behavior, layerIDs);
  if (targets.empty()) return 0;
  doc.perform("Apply " + behavior.name, undo,
              [&](core::OVProject& project) { stampTargets(project, behavior, targets); });
  return static_cast<int>(targets.size());
}

int applyBehavior(document::ProjectDocument& doc, std::string_view behaviorID,
                  const std::vector<core::Uuid>& layerIDs, document::UndoStack* undo) {
  const Behavior* behavior = BehaviorCatalog::behavior(behaviorID);
  return behavior == nullptr ? 0 : applyBehavior(doc, *behavior, layerIDs, undo);
}

}  // namespace orvane::behaviors
