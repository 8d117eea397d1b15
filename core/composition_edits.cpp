// Adding, removing and reordering layers. In a sequence an inserted clip is
// placed by the track rules; in a composition only the stacking order counts.

#include <algorithm>

#include "core/composition.hpp"

namespace orvane::core {

void Composition::insert(Layer layer, std::size_t index, const std::optional<Uuid>& onTrack) {
  if (!isSequence()) {
    layers.insert(std::min(index, layers.size()), std::move(layer));
    return;
  }
  // Placement needs a track; a sequence without any gets the defaults now,
  // as the order restored below would give it anyway.
  if (tracks.empty()) tracks = defaultTracks();
  // A track this sequence does not have (a clip from another one) counts as
  // none: placing on it would check nothing and the order restored below
  // would move the clip onto a track it may cover.
  const auto known = [&](const std::optional<Uuid>& t) { return t && track(*t) != nullptr; };
  const Uuid trackID = known(onTrack) ? *onTrack : known(layer.trackID) ? *layer.trackID : *defaultTrackIDFor(layer);
  // An inserted clip never crossfades: it goes where it covers nothing.
  const std::optional<OVTime> fitted =
      fittedStart(layer.timeRange.duration, layer.timeRange.start, trackID, {layer.id}, false);
  const OVTime start = frameRate.snapped(fitted ? *fitted : trackEnd(trackID));
  layer.moveTo(start);
  layer.trackID = trackID;
  layers.push_back(std::move(layer));
  normalizeSequenceOrder();
}

void Composition::remove(const Uuid& id) {
  const auto index = indexOf(id);
  if (!index) return;
  layers.erase(*index);
  layers.updateWhere([&](const Layer& l) { return l.parentLayerID == id; },
                     [](Layer& l) { l.parentLayerID.reset(); });
}

void Composition::move(const Uuid& id, std::size_t toIndex) {
  const auto from = indexOf(id);
  if (!from) return;
  const std::size_t to = std::min(toIndex, layers.size() - 1);
  if (to == *from) return;
  Layer layer = layers[*from];
  layers.erase(*from);
  layers.insert(to, std::move(layer));
}

}  // namespace orvane::core
