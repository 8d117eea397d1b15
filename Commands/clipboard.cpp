// Copy and paste of layers and keyframes on the document.

#include "Commands/clipboard.hpp"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "Commands/layer_edits.hpp"
#include "core/composition.hpp"
#include "core/project.hpp"

namespace orvane::commands {
namespace {

using namespace core;

std::optional<OVClipboard::LayerPayload> layerPayload(const OVProject& project, const std::vector<Uuid>& ids) {
  const Composition* comp = project.activeComposition();
  if (comp == nullptr || ids.empty()) return std::nullopt;
  const std::unordered_set<Uuid> wanted(ids.begin(), ids.end());
  OVClipboard::LayerPayload payload;
  std::unordered_set<Uuid> used;
  for (const Layer& l : comp->layers) {
    if (!wanted.contains(l.id)) continue;
    payload.origin = payload.layers.empty() ? l.timeRange.start : std::min(payload.origin, l.timeRange.start);
    payload.layers.push_back(l);
    if (const auto asset = l.content.assetID()) used.insert(*asset);
  }
  if (payload.layers.empty()) return std::nullopt;
  for (const MediaAsset& a : project.assets)
    if (used.contains(a.id)) payload.assets.push_back(a);
  return payload;
}

// The keyframe a ref names and the channel it belongs to, or none.
std::optional<std::pair<ClipboardChannel, Keyframe>> resolve(const Composition& comp, const KeyframeRef& ref) {
  const Layer* layer = comp.layer(ref.address.layerID);
  if (layer == nullptr) return std::nullopt;
  const auto channel = ref.address.clipboardChannel(layer);
  const auto property = propertyOf(*layer, ref.address);
  if (!channel || !property) return std::nullopt;
  const Keyframe* keyframe = property->keyframe(ref.id);
  if (keyframe == nullptr) return std::nullopt;
  return std::pair{*channel, *keyframe};
}

std::optional<OVClipboard::KeyframePayload> keyframePayload(const Composition& comp,
                                                            const std::vector<KeyframeRef>& refs) {
  OVClipboard::KeyframePayload payload;
  std::optional<OVTime> origin;
  for (const KeyframeRef& ref : refs) {
    auto found = resolve(comp, ref);
    if (!found) continue;
    auto& [channel, keyframe] = *found;
    origin = origin ? std::min(*origin, keyframe.time) : keyframe.time;
    auto& entries = payload.entries;
    auto entry = std::find_if(entries.begin(), entries.end(), [&](const auto& e) { return e.channel == channel; });
    if (entry == entries.end()) entry = entries.insert(entries.end(), {channel, {}});
    entry->keyframes.push_back(std::move(keyframe));
  }
  if (!origin) return std::nullopt;
  payload.origin = *origin;
  return payload;
}

// Fresh ids, moved by delta, parents kept only within the paste.
std::vector<Layer> pastedCopies(const OVClipboard::LayerPayload& payload, const OVTime& delta) {
  std::unordered_map<Uuid, Uuid> newIDs;
  std::vector<Layer> copies = payload.layers;
  for (Layer& l : copies) {
    const Uuid fresh = Uuid::make();
    newIDs[l.id] = fresh;
    l.id = fresh;
    l.moveBy(delta);
  }
  for (Layer& l : copies) {
    if (!l.parentLayerID) continue;
    const auto it = newIDs.find(*l.parentLayerID);
    l.parentLayerID = it == newIDs.end() ? std::nullopt : std::optional<Uuid>(it->second);
  }
  return copies;
}

// On the default track at the nearest start that fits, else at its end.
void placeInSequence(const Composition& comp, Layer& layer) {
  const auto track = comp.defaultTrackIDFor(layer);
  if (!track) return;
  const auto fitted = comp.fittedStart(layer.timeRange.duration, layer.timeRange.start, *track);
  layer.moveTo(fitted ? *fitted : comp.trackEnd(*track));
  layer.trackID = *track;
}

}  // namespace

void copyLayers(const document::ProjectDocument& doc, const std::vector<Uuid>& ids, Pasteboard& pasteboard) {
  if (const auto payload = layerPayload(doc.project(), ids)) OVClipboard::write(pasteboard, *payload);
}

bool cutLayers(document::ProjectDocument& doc, const std::vector<Uuid>& ids, Pasteboard& pasteboard,
               document::UndoStack* undo) {
  if (ids.empty() || doc.activeComposition() == nullptr) return false;
  copyLayers(doc, ids, pasteboard);
  deleteLayers(doc, ids, undo);
  return true;
}

void copyKeyframes(const document::ProjectDocument& doc, const std::vector<KeyframeRef>& refs,
                   Pasteboard& pasteboard) {
  const Composition* comp = doc.activeComposition();
  if (comp == nullptr) return;
  if (const auto payload = keyframePayload(*comp, refs)) OVClipboard::write(pasteboard, *payload);
}

std::vector<Uuid> paste(document::ProjectDocument& doc, const OVTime& time, const std::vector<Uuid>& ontoLayers,
                        const Pasteboard& pasteboard, document::UndoStack* undo) {
  if (const auto layers = OVClipboard::layers(pasteboard)) return pasteLayers(doc, *layers, time, undo);
  if (ontoLayers.empty()) return {};
  if (const auto keyframes = OVClipboard::keyframes(pasteboard))
    pasteKeyframes(doc, *keyframes, time, ontoLayers, undo);
  return {};
}

std::vector<Uuid> pasteLayers(document::ProjectDocument& doc, const OVClipboard::LayerPayload& payload,
                              const OVTime& time, document::UndoStack* undo) {
  if (doc.activeComposition() == nullptr || payload.layers.empty()) return {};
  const std::vector<Layer> copies = pastedCopies(payload, doc.frameSnapped(time) - payload.origin);
  const char* name = copies.size() == 1 ? "Paste Layer" : "Paste Layers";
  doc.perform(name, undo, [&](OVProject& p) {
    for (const MediaAsset& a : payload.assets) p.addAsset(a);
    p.updateActiveComposition([&](Composition& c) {
      for (auto it = copies.rbegin(); it != copies.rend(); ++it) {
        Layer layer = *it;
        if (c.isSequence()) placeInSequence(c, layer);
        c.layers.insert(0, std::move(layer));
      }
      if (c.isSequence()) c.normalizeSequenceOrder();
    });
  });
  std::vector<Uuid> ids;
  for (const Layer& l : copies) ids.push_back(l.id);
  return ids;
}

void pasteKeyframes(document::ProjectDocument& doc, const OVClipboard::KeyframePayload& payload,
                    const OVTime& time, const std::vector<Uuid>& onto, document::UndoStack* undo) {
  if (doc.activeComposition() == nullptr) return;
  const OVTime delta = doc.frameSnapped(time) - payload.origin;
  doc.updateActiveComposition("Paste Keyframes", undo, [&](Composition& c) {
    for (const Uuid& id : onto) {
      c.update(id, [&](Layer& layer) {
        for (const auto& entry : payload.entries) {
          const auto address = addressOn(layer, entry.channel);
          if (!address) continue;
          mutateProperty(layer, *address, [&](AnimatedProperty& property) {
            for (const Keyframe& k : entry.keyframes)
              property.upsertKeyframe(k.value, c.frameRate.snapped(k.time + delta), k.mode, k.handles);
          });
        }
      });
    }
  });
}

}  // namespace orvane::commands
