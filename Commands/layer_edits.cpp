// Adding, duplicating, deleting, renaming and reordering layers, linked
// audio, parenting, flags, audio settings and composition markers. The
// edits in time (moves, trims, fades, cuts) are in layer_timing_edits.cpp.

#include "Commands/layer_edits.hpp"

#include <algorithm>
#include <unordered_set>

#include "Commands/layer_factory.hpp"
#include "core/text_util.hpp"

namespace orvane::commands {

using core::Composition;
using core::Layer;
using core::OVProject;
using core::OVTime;
using core::Uuid;
using document::ProjectDocument;
using document::UndoStack;

std::optional<OVTime> sourceDuration(const Layer& layer, const OVProject& project) {
  const core::LayerKind kind = layer.kind();
  if (kind != core::LayerKind::video && kind != core::LayerKind::audio) return std::nullopt;
  const core::MediaAsset* asset = project.asset(*layer.content.assetID());
  if (asset == nullptr || asset->isStill()) return std::nullopt;
  return asset->duration;
}

// --- Adding ---

namespace {

// Builds the layer once, before the step, and puts it on top (or on its
// default track in a sequence).
template <class Make>
std::optional<Uuid> addGeneratedLayer(ProjectDocument& doc, std::string_view actionName, UndoStack* undo, Make make) {
  const Composition* active = doc.activeComposition();
  if (active == nullptr) return std::nullopt;
  Layer layer = make(*active);
  const Uuid id = layer.id;
  doc.updateActiveComposition(actionName, undo, [&](Composition& c) { c.insert(layer, 0); });
  return id;
}

}  // namespace

std::optional<Uuid> addLayer(ProjectDocument& doc, const core::MediaAsset& asset, const OVTime& at,
                             const AddLayerOptions& options, UndoStack* undo) {
  const Composition* active = doc.activeComposition();
  if (active == nullptr) return std::nullopt;
  const bool wasEmpty = active->layers.empty();
  Layer layer = LayerFactory::layerFor(asset, *active, at, options.sourceStart, options.sourceDuration);
  if (wasEmpty && !asset.isStill()) {
    // The factory cuts a clip to the room left; the first footage of an
    // empty composition keeps its own length, and the composition grows.
    const OVTime full = LayerFactory::sourceLength(asset, layer.sourceStart, options.sourceDuration);
    if (full > active->duration) layer.timeRange.duration = full;
  }
  doc.updateActiveComposition("Add " + layer.name, undo, [&](Composition& c) {
    // An empty composition takes the length of its first piece of footage.
    if (wasEmpty && !asset.isStill() && layer.timeRange.duration > c.duration) c.duration = layer.timeRange.duration;
    c.insert(layer, options.index.value_or(0), options.track);
  });
  return layer.id;
}

std::optional<Uuid> addTextLayer(ProjectDocument& doc, const OVTime& at, UndoStack* undo) {
  return addGeneratedLayer(doc, "Add Text Layer", undo,
                           [&](const Composition& c) { return LayerFactory::textLayer(c, at); });
}

std::optional<Uuid> addShapeLayer(ProjectDocument& doc, core::ShapeContent::ShapeType type, const OVTime& at,
                                  UndoStack* undo) {
  return addGeneratedLayer(doc, "Add " + std::string(core::displayName(type)), undo,
                           [&](const Composition& c) { return LayerFactory::shapeLayer(type, c, at); });
}

std::optional<Uuid> addSolidLayer(ProjectDocument& doc, const core::OVColor& color, const OVTime& at,
                                  UndoStack* undo) {
  return addGeneratedLayer(doc, "Add Solid Layer", undo,
                           [&](const Composition& c) { return LayerFactory::solidLayer(color, c, at); });
}

std::optional<Uuid> addAdjustmentLayer(ProjectDocument& doc, const OVTime& at, UndoStack* undo) {
  return addGeneratedLayer(doc, "Add Adjustment Layer", undo,
                           [&](const Composition& c) { return LayerFactory::adjustmentLayer(c, at); });
}

std::optional<Uuid> addPrecompositionLayer(ProjectDocument& doc, const Uuid& compositionID, const OVTime& at,
                                           std::optional<std::size_t> index, const std::optional<Uuid>& track,
                                           UndoStack* undo) {
  const Composition* active = doc.activeComposition();
  const Composition* nested = doc.project().composition(compositionID);
  if (active == nullptr || nested == nullptr) return std::nullopt;
  if (doc.project().wouldCreateCompositionCycle(active->id, compositionID)) return std::nullopt;
  const Layer layer = LayerFactory::precompositionLayer(compositionID, *nested, *active, at);
  doc.updateActiveComposition("Add " + layer.name, undo,
                              [&](Composition& c) { c.insert(layer, index.value_or(0), track); });
  return layer.id;
}

// --- Structure ---

void duplicateLayers(ProjectDocument& doc, const std::vector<Uuid>& ids, UndoStack* undo) {
  if (ids.empty()) return;
  doc.updateActiveComposition(ids.size() == 1 ? "Duplicate Layer" : "Duplicate Layers", undo, [&](Composition& c) {
    // Highest index first, so that each copy lands just above its original
    // without shifting the originals still to come.
    std::vector<std::pair<std::size_t, Uuid>> ordered;
    for (const Uuid& id : ids) ordered.emplace_back(c.indexOf(id).value_or(0), id);
    std::stable_sort(ordered.begin(), ordered.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
    for (const auto& [unused, id] : ordered) {
      const auto index = c.indexOf(id);
      if (!index) continue;
      Layer copy = c.layers[*index];
      copy.id = Uuid::make();
      copy.name = c.uniqueLayerName(copy.name);
      copy.isSolo = false;
      c.insert(std::move(copy), *index);
    }
  });
}

void deleteLayers(ProjectDocument& doc, const std::vector<Uuid>& ids, UndoStack* undo) {
  if (ids.empty()) return;
  doc.updateActiveComposition(ids.size() == 1 ? "Delete Layer" : "Delete Layers", undo, [&](Composition& c) {
    for (const Uuid& id : ids) c.remove(id);
  });
}

void renameLayer(ProjectDocument& doc, const Uuid& id, const std::string& name, UndoStack* undo) {
  const std::string newName = core::trimmed(name);
  const Composition* active = doc.activeComposition();
  if (newName.empty() || active == nullptr) return;
  const Layer* layer = active->layer(id);
  if (layer == nullptr) return;
  const auto nestedID = layer->content.compositionID();
  const Composition* nested = nestedID ? doc.project().composition(*nestedID) : nullptr;
  if (nested == nullptr) {
    doc.updateLayer(id, "Rename Layer", undo, [&](Layer& l) { l.name = newName; });
    return;
  }
  // The layer shows the composition's name: renaming it renames the
  // composition, and the sync renames the layers that follow it.
  if (nested->name == newName) return;
  const std::string oldName = nested->name;
  doc.perform("Rename Composition", undo, [&](OVProject& p) {
    p.updateComposition(*nestedID, [&](Composition& c) { c.name = newName; });
    p.syncPrecompositionLayerNamesFor(*nestedID, oldName, newName);
  });
}

void moveLayer(ProjectDocument& doc, const Uuid& id, std::size_t toIndex, UndoStack* undo) {
  doc.updateActiveComposition("Reorder Layers", undo, [&](Composition& c) { c.move(id, toIndex); });
}

void moveLayers(ProjectDocument& doc, const std::vector<Uuid>& ids, std::size_t toIndex, UndoStack* undo) {
  if (ids.empty()) return;
  const std::unordered_set<Uuid> chosen(ids.begin(), ids.end());
  doc.updateActiveComposition("Reorder Layers", undo, [&](Composition& c) {
    std::vector<std::size_t> indices;
    std::vector<Layer> block;
    for (std::size_t i = 0; i < c.layers.size(); ++i) {
      if (!chosen.contains(c.layers[i].id)) continue;
      indices.push_back(i);
      block.push_back(c.layers[i]);
    }
    for (auto i = indices.rbegin(); i != indices.rend(); ++i) c.layers.erase(*i);
    const std::size_t at = std::min(toIndex, c.layers.size());
    for (std::size_t k = 0; k < block.size(); ++k) c.layers.insert(at + k, std::move(block[k]));
  });
}

// --- Linked audio, parenting, flags ---

void unlinkAudio(ProjectDocument& doc, const Uuid& fromID, UndoStack* undo) {
  const Composition* active = doc.activeComposition();
  const Layer* layer = active ? active->layer(fromID) : nullptr;
  if (layer == nullptr || layer->kind() != core::LayerKind::video || !layer->usesSourceAudio) return;
  const auto assetID = layer->content.assetID();
  if (!assetID) return;
  doc.perform("Unlink Audio", undo, [&](OVProject& p) {
    const core::MediaAsset* asset = p.asset(*assetID);
    if (asset == nullptr || !asset->hasAudioTrack) return;
    p.updateActiveComposition([&](Composition& c) {
      const auto index = c.indexOf(fromID);
      if (!index) return;
      Layer twin = LayerFactory::detachedAudioLayer(c.layers[*index], *assetID);
      c.update(fromID, [](Layer& l) { l.usesSourceAudio = false; });
      c.insert(std::move(twin), *index + 1);
    });
  });
}

void relinkAudio(ProjectDocument& doc, const Uuid& toID, UndoStack* undo) {
  doc.updateLayer(toID, "Link Audio", undo, [](Layer& l) { l.usesSourceAudio = true; });
}

void setParent(ProjectDocument& doc, const Uuid& id, const std::optional<Uuid>& parent, UndoStack* undo) {
  const Composition* active = doc.activeComposition();
  if (active == nullptr) return;
  if (parent && active->wouldCreateParentCycle(id, *parent)) return;
  doc.updateLayer(id, "Set Parent", undo, [&](Layer& l) { l.parentLayerID = parent; });
}

void setLabelColor(ProjectDocument& doc, const std::vector<Uuid>& ids, core::LayerLabelColor color, UndoStack* undo) {
  doc.updateActiveComposition("Set Label Colour", undo, [&](Composition& c) {
    for (const Uuid& id : ids) c.update(id, [&](Layer& l) { l.labelColor = color; });
  });
}

namespace {

// All layers get the opposite of the first found layer's value, so a mixed
// selection becomes uniform. field(layer) gives the flag, const or not.
template <class Field>
void toggleFlag(ProjectDocument& doc, const std::vector<Uuid>& ids, std::string_view actionName, UndoStack* undo,
                Field field) {
  const Composition* active = doc.activeComposition();
  if (active == nullptr) return;
  std::optional<bool> first;
  for (const Uuid& id : ids) {
    if (const Layer* l = active->layer(id)) {
      first = field(*l);
      break;
    }
  }
  if (!first) return;
  const bool value = !*first;
  doc.updateActiveComposition(actionName, undo, [&](Composition& c) {
    for (const Uuid& id : ids) c.update(id, [&](Layer& l) { field(l) = value; });
  });
}

}  // namespace

void toggleVisibility(ProjectDocument& doc, const std::vector<Uuid>& ids, UndoStack* undo) {
  toggleFlag(doc, ids, "Toggle Visibility", undo, [](auto& l) -> auto& { return l.isEnabled; });
}

void toggleLock(ProjectDocument& doc, const std::vector<Uuid>& ids, UndoStack* undo) {
  toggleFlag(doc, ids, "Toggle Lock", undo, [](auto& l) -> auto& { return l.isLocked; });
}

void toggleSolo(ProjectDocument& doc, const std::vector<Uuid>& ids, UndoStack* undo) {
  toggleFlag(doc, ids, "Toggle Solo", undo, [](auto& l) -> auto& { return l.isSolo; });
}

void toggleMute(ProjectDocument& doc, const std::vector<Uuid>& ids, UndoStack* undo) {
  toggleFlag(doc, ids, "Toggle Mute", undo, [](auto& l) -> auto& { return l.audio.isMuted; });
}

// --- Audio settings and markers ---

void setAudioEffect(ProjectDocument& doc, const Uuid& layerID,
                    const std::function<void(core::AudioProperties&)>& change, UndoStack* undo) {
  if (!change) return;
  doc.updateLayer(layerID, "Audio Effect", undo, [&](Layer& l) { change(l.audio); });
}

void resetNormalizeGain(ProjectDocument& doc, const Uuid& layerID, UndoStack* undo) {
  doc.updateLayer(layerID, "Reset Normalize", undo,
                  [](Layer& l) { l.audio.normalizeGain = core::AudioProperties{}.normalizeGain; });
}

void addCompositionMarker(ProjectDocument& doc, const OVTime& at, const std::string& name, UndoStack* undo) {
  doc.updateActiveComposition("Add Marker", undo, [&](Composition& c) {
    core::Marker marker;
    marker.time = at;
    marker.name = name;
    auto& markers = c.markers.mutate();
    markers.push_back(std::move(marker));
    std::stable_sort(markers.begin(), markers.end(),
                     [](const core::Marker& a, const core::Marker& b) { return a.time < b.time; });
  });
}

void removeCompositionMarker(ProjectDocument& doc, const Uuid& id, UndoStack* undo) {
  doc.updateActiveComposition("Delete Marker", undo, [&](Composition& c) {
    const auto& markers = c.markers;
    if (std::none_of(markers.begin(), markers.end(), [&](const core::Marker& m) { return m.id == id; })) return;
    std::erase_if(c.markers.mutate(), [&](const core::Marker& m) { return m.id == id; });
  });
}

}  // namespace orvane::commands
