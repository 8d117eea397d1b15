#include "core/composition.hpp"

#include <algorithm>
#include <cstdint>
#include <string>
#include <unordered_set>

namespace orvane::core {

std::string_view detailText(EditingMode mode) {
  switch (mode) {
    case EditingMode::layers:
      return "One row per layer, free to overlap — for motion graphics and compositing.";
    case EditingMode::sequence:
      return "Tracks that hold clips end to end; cuts stay on the same track — for editing.";
  }
  return {};
}

std::string_view symbolName(EditingMode mode) {
  switch (mode) {
    case EditingMode::layers:
      return "rectangle.on.rectangle";
    case EditingMode::sequence:
      return "film.stack";
  }
  return {};
}

std::string uniqueName(const std::string& base, const std::unordered_set<std::string>& taken) {
  if (!taken.contains(base)) return base;
  for (std::uint64_t n = 2;; ++n) {
    std::string candidate = base + " " + std::to_string(n);
    if (!taken.contains(candidate)) return candidate;
  }
}

std::vector<SequenceTrack> Composition::defaultTracks() {
  return {SequenceTrack{.name = "V3"}, SequenceTrack{.name = "V2"}, SequenceTrack{.name = "V1"},
          SequenceTrack{.name = "A1"}};
}

OVTime Composition::contentEnd() const {
  OVTime latest = OVTime::zero;
  bool any = false;
  for (const Layer& l : layers) {
    const OVTime end = l.timeRange.end();
    if (!any || end > latest) latest = end;
    any = true;
  }
  return latest;
}

// --- Look-ups ---

const Layer* Composition::layer(const Uuid& id) const {
  for (const Layer& l : layers)
    if (l.id == id) return &l;
  return nullptr;
}

std::optional<std::size_t> Composition::indexOf(const Uuid& id) const {
  return layers.indexWhere([&](const Layer& l) { return l.id == id; });
}

const SequenceTrack* Composition::track(const Uuid& id) const {
  for (const SequenceTrack& t : tracks)
    if (t.id == id) return &t;
  return nullptr;
}

std::optional<std::size_t> Composition::trackIndexOf(const Uuid& id) const {
  for (std::size_t i = 0; i < tracks.size(); ++i)
    if (tracks[i].id == id) return i;
  return std::nullopt;
}

std::vector<const Layer*> Composition::layersOnTrack(const Uuid& trackID) const {
  std::vector<const Layer*> out;
  for (const Layer& l : layers)
    if (l.trackID == trackID) out.push_back(&l);
  std::stable_sort(out.begin(), out.end(), [](const Layer* a, const Layer* b) {
    return a->timeRange.start < b->timeRange.start;
  });
  return out;
}

// --- Layer queries ---

bool Composition::hasSoloedVisualLayers() const {
  return std::any_of(layers.begin(), layers.end(), [](const Layer& l) { return l.isSolo && l.isVisual(); });
}

bool Composition::hasSoloedAudioLayers() const {
  return std::any_of(layers.begin(), layers.end(),
                     [](const Layer& l) { return l.isSolo && l.contributesAudio(); });
}

std::vector<const Layer*> Composition::visibleVisualLayersAt(const OVTime& t) const {
  std::vector<const Layer*> out;
  visibleVisualLayersAt(t, out);
  return out;
}

void Composition::visibleVisualLayersAt(const OVTime& t, std::vector<const Layer*>& out) const {
  out.clear();
  const bool soloOnly = hasSoloedVisualLayers();
  for (const Layer& l : layers) {
    if (!l.isVisual() || !l.isActiveAt(t)) continue;
    if (soloOnly && !l.isSolo) continue;
    out.push_back(&l);
  }
}

std::vector<const Layer*> Composition::audibleLayers() const {
  const bool soloOnly = hasSoloedAudioLayers();
  std::vector<const Layer*> out;
  for (const Layer& l : layers) {
    if (!l.contributesAudio()) continue;
    if (soloOnly && !l.isSolo) continue;
    out.push_back(&l);
  }
  return out;
}

std::optional<std::size_t> Composition::displayIndexOf(const Uuid& id) const {
  if (auto i = indexOf(id)) return *i + 1;
  return std::nullopt;
}

std::string Composition::uniqueLayerName(const std::string& base) const {
  std::unordered_set<std::string> names;
  for (const Layer& l : layers) names.insert(l.name);
  return uniqueName(base, names);
}

bool Composition::wouldCreateParentCycle(const Uuid& layerID, const Uuid& candidateParentID) const {
  std::unordered_set<Uuid> visited;
  std::optional<Uuid> current = candidateParentID;
  while (current) {
    if (*current == layerID) return true;
    // A cycle that does not pass through layerID is none of our business.
    if (!visited.insert(*current).second) return false;
    const Layer* l = layer(*current);
    if (l == nullptr) return false;
    current = l->parentLayerID;
  }
  return false;
}

std::vector<const Layer*> Composition::parentChainFor(const Uuid& id) const {
  std::vector<const Layer*> chain;
  const Layer* l = layer(id);
  if (l == nullptr) return chain;
  // The layer itself counts as seen, so a cycle read from a file ends the
  // chain before the layer turns up as its own ancestor.
  std::unordered_set<Uuid> seen{id};
  std::optional<Uuid> next = l->parentLayerID;
  while (next && !seen.contains(*next)) {
    const Layer* parent = layer(*next);
    if (parent == nullptr) break;
    chain.push_back(parent);
    seen.insert(parent->id);
    next = parent->parentLayerID;
  }
  return chain;
}

std::size_t hashValue(const Composition& c) {
  std::size_t seed = hashAll(c.id, c.name, c.size, c.frameRate, c.duration, c.backgroundColor, c.isTransparent,
                             c.audioSampleRate, c.layers, c.markers, c.workArea, c.playheadTime);
  hashCombine(seed, hashAll(c.motionBlurEnabled, c.motionBlurShutterAngle,
                            c.editingMode, c.tracks, c.overlapsCrossfade));
  return seed;
}

}  // namespace orvane::core
