// The edits of layers in time: the nudge, the drag, trims, fades and cuts.
// In a sequence the neighbours on a track limit trims and drags, and the
// crossfades follow every change.

#include <algorithm>

#include "Commands/layer_edits.hpp"

namespace orvane::commands {

using core::Composition;
using core::Layer;
using core::OVProject;
using core::OVTime;
using core::Uuid;
using document::ProjectDocument;
using document::UndoStack;

namespace {

// One undo step named actionName, or one tick of the running drag.
void changeActiveComposition(ProjectDocument& doc, std::string_view actionName, bool interactive, UndoStack* undo,
                             const ProjectDocument::CompositionChange& change) {
  const ProjectDocument::Change step = [&](OVProject& p) { p.updateActiveComposition(change); };
  if (interactive) {
    doc.updateInteraction(step);
  } else {
    doc.perform(actionName, undo, step);
  }
}

// The other clip on the layer's track that starts before it and ends
// latest; null outside a sequence or without one.
const Layer* previousNeighbour(const Composition& c, const Layer& layer) {
  if (!c.isSequence() || !layer.trackID) return nullptr;
  const Layer* found = nullptr;
  for (const Layer* other : c.layersOnTrack(*layer.trackID)) {
    if (other->id == layer.id || other->timeRange.start >= layer.timeRange.start) continue;
    if (found == nullptr || other->timeRange.end() > found->timeRange.end()) found = other;
  }
  return found;
}

// The other clip on the layer's track that starts after it, earliest first.
const Layer* nextNeighbour(const Composition& c, const Layer& layer) {
  if (!c.isSequence() || !layer.trackID) return nullptr;
  for (const Layer* other : c.layersOnTrack(*layer.trackID)) {
    if (other->id != layer.id && other->timeRange.start > layer.timeRange.start) return other;
  }
  return nullptr;
}

}  // namespace

void moveLayersBy(ProjectDocument& doc, const std::vector<Uuid>& ids, const OVTime& delta, UndoStack* undo) {
  if (ids.empty()) return;
  doc.updateActiveComposition("Move Layers", undo, [&](Composition& c) {
    for (const Uuid& id : ids) {
      const Layer* layer = c.layer(id);
      if (layer == nullptr || layer->isLocked) continue;
      c.update(id, [&](Layer& l) {
        l.moveBy(delta);
        l.alignKeyframesTo(c.frameRate);
      });
    }
  });
}

void moveLayersInteractively(ProjectDocument& doc, const std::vector<Uuid>& ids,
                             const std::unordered_map<Uuid, OVTime>& targets) {
  doc.updateInteraction([&](OVProject& p) {
    p.updateActiveComposition([&](Composition& c) {
      for (const Uuid& id : ids) {
        const auto wanted = targets.find(id);
        const Layer* layer = c.layer(id);
        if (wanted == targets.end() || layer == nullptr) continue;
        OVTime target = wanted->second;
        if (c.isSequence() && layer->trackID) {
          target = c.fittedStart(layer->timeRange.duration, target, *layer->trackID, {id}, true).value_or(target);
        }
        if (layer->isLocked) continue;
        const OVTime start = c.frameRate.snapped(std::max(target, OVTime::zero));
        c.update(id, [&](Layer& l) {
          l.moveTo(start);
          l.alignKeyframesTo(c.frameRate);
        });
      }
      c.normalizeSequenceOrder();
    });
  });
}

void trimLayerStart(ProjectDocument& doc, const Uuid& id, const OVTime& to, bool interactive, UndoStack* undo) {
  if (doc.activeComposition() == nullptr) return;
  changeActiveComposition(doc, "Trim Layer", interactive, undo, [&](Composition& c) {
    const Layer* layer = c.layer(id);
    if (layer == nullptr) return;
    OVTime wanted = to;
    if (const Layer* before = previousNeighbour(c, *layer)) {
      const OVTime overlap = c.maximumOverlap(layer->timeRange.duration, before->timeRange.duration);
      wanted = std::max(wanted, before->timeRange.end() - overlap);
    }
    const OVTime minimum = c.minimumLayerDuration();
    c.update(id, [&](Layer& l) { l.trimStartTo(wanted, minimum); });
    c.applySequenceCrossfades();
  });
}

void trimLayerEnd(ProjectDocument& doc, const Uuid& id, const OVTime& to, bool interactive, UndoStack* undo) {
  const Composition* active = doc.activeComposition();
  const Layer* current = active ? active->layer(id) : nullptr;
  if (current == nullptr) return;
  // Stills and generated content have no source end and may grow at will.
  const std::optional<OVTime> maximumSource = sourceDuration(*current, doc.project());
  changeActiveComposition(doc, "Trim Layer", interactive, undo, [&](Composition& c) {
    const Layer* layer = c.layer(id);
    if (layer == nullptr) return;
    OVTime wanted = to;
    if (const Layer* after = nextNeighbour(c, *layer)) {
      const OVTime overlap = c.maximumOverlap(layer->timeRange.duration, after->timeRange.duration);
      wanted = std::min(wanted, after->timeRange.start + overlap);
    }
    const OVTime minimum = c.minimumLayerDuration();
    c.update(id, [&](Layer& l) { l.trimEndTo(wanted, minimum, maximumSource); });
    c.applySequenceCrossfades();
  });
}

void setLayerFadeIn(ProjectDocument& doc, const Uuid& id, const OVTime& to, bool interactive, UndoStack* undo) {
  changeActiveComposition(doc, "Set Fade In", interactive, undo,
                          [&](Composition& c) { c.update(id, [&](Layer& l) { l.setFadeIn(to); }); });
}

void setLayerFadeOut(ProjectDocument& doc, const Uuid& id, const OVTime& to, bool interactive, UndoStack* undo) {
  changeActiveComposition(doc, "Set Fade Out", interactive, undo,
                          [&](Composition& c) { c.update(id, [&](Layer& l) { l.setFadeOut(to); }); });
}

int splitLayers(ProjectDocument& doc, const std::vector<Uuid>& ids, const OVTime& at, UndoStack* undo) {
  if (doc.activeComposition() == nullptr) return 0;
  int count = 0;
  doc.updateActiveComposition("Split Layer", undo, [&](Composition& c) {
    for (const Uuid& id : ids) {
      // Looked up afresh: an earlier cut may have moved the list.
      const auto index = c.indexOf(id);
      if (!index || c.layers[*index].isLocked) continue;
      auto parts = c.layers[*index].splitAt(at, c.minimumLayerDuration());
      if (!parts) continue;
      c.layers.set(*index, std::move(parts->first));
      c.insert(std::move(parts->second), *index + 1);
      ++count;
    }
    c.normalizeSequenceOrder();
  });
  return count;
}

}  // namespace orvane::commands
