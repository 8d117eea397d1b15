// The rules that make a sequence: clips on tracks that cover each other only
// to crossfade, placement around the parts of clips nothing may cover, and
// the order of the layer list by track.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>
#include <vector>

#include "core/composition.hpp"

namespace orvane::core {

namespace {

// The part of a clip that no other clip may cover.
std::vector<OVTimeRange> coresOf(const Composition& c, const std::vector<const Layer*>& others,
                                 const OVTime& duration, bool allowingCrossfade) {
  std::vector<OVTimeRange> cores;
  cores.reserve(others.size());
  for (const Layer* other : others) {
    const OVTimeRange& r = other->timeRange;
    const OVTime allowed = allowingCrossfade ? c.maximumOverlap(duration, r.duration) : OVTime::zero;
    const OVTime lo = r.start + allowed;
    const OVTime hi = r.end() - allowed;
    // A clip no longer than twice the allowance still keeps one frame.
    cores.push_back(hi > lo ? OVTimeRange::fromStartEnd(lo, hi)
                            : OVTimeRange(r.start + r.duration * 0.5, c.frameRate.frameDuration()));
  }
  return cores;
}

bool meetsAny(const OVTimeRange& range, const std::vector<OVTimeRange>& cores) {
  return std::any_of(cores.begin(), cores.end(), [&](const OVTimeRange& core) { return core.intersects(range); });
}

// The layer indices of each track, in the order of tracks, each by start
// (list order for equal starts).
std::vector<std::vector<std::size_t>> indicesByTrack(const Composition& c) {
  std::vector<std::vector<std::size_t>> groups(c.tracks.size());
  std::vector<OVTime> starts;
  starts.reserve(c.layers.size());
  for (const Layer& l : c.layers) {
    if (l.trackID) {
      if (auto t = c.trackIndexOf(*l.trackID)) groups[*t].push_back(starts.size());
    }
    starts.push_back(l.timeRange.start);
  }
  for (auto& group : groups) {
    std::stable_sort(group.begin(), group.end(), [&](std::size_t a, std::size_t b) { return starts[a] < starts[b]; });
  }
  return groups;
}

// Sets or clears the crossfade between a clip ending at a and one starting at b.
void crossfadeNeighbours(PersistentList<Layer>& layers, std::size_t a, std::size_t b) {
  const OVTime overlap = layers[a].timeRange.end() - layers[b].timeRange.start;
  if (overlap.isPositive()) {
    // Only changed clips are touched, so unchanged ones stay shared.
    if (!layers[a].crossfadeOut || layers[a].fadeOut != overlap) {
      layers.update(a, [&](Layer& l) {
        l.fadeOut = overlap;
        l.crossfadeOut = true;
      });
    }
    if (!layers[b].crossfadeIn || layers[b].fadeIn != overlap) {
      layers.update(b, [&](Layer& l) {
        l.fadeIn = overlap;
        l.crossfadeIn = true;
      });
    }
    return;
  }
  if (layers[a].crossfadeOut) layers.update(a, [](Layer& l) { l.crossfadeOut = false; });
  if (layers[b].crossfadeIn) layers.update(b, [](Layer& l) { l.crossfadeIn = false; });
}

// By track index (a clip on no known track last), and within a track later
// clips first, so the top of the stack is the last clip of the first track.
// The list is rebuilt only when the order changes, so a sorted one stays
// shared.
void sortByTrackThenLatestFirst(Composition& c) {
  constexpr std::size_t kUnknownTrack = std::numeric_limits<std::size_t>::max();
  std::vector<const Layer*> all;
  std::vector<std::size_t> trackIndex;
  all.reserve(c.layers.size());
  trackIndex.reserve(c.layers.size());
  for (const Layer& l : c.layers) {
    all.push_back(&l);
    trackIndex.push_back(l.trackID ? c.trackIndexOf(*l.trackID).value_or(kUnknownTrack) : kUnknownTrack);
  }
  std::vector<std::size_t> order(all.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    if (trackIndex[a] != trackIndex[b]) return trackIndex[a] < trackIndex[b];
    return all[a]->timeRange.start > all[b]->timeRange.start;
  });
  if (std::is_sorted(order.begin(), order.end())) return;
  std::vector<Layer> sorted;
  sorted.reserve(order.size());
  for (std::size_t i : order) sorted.push_back(*all[i]);
  c.layers = PersistentList<Layer>(sorted);
}

}  // namespace

std::optional<Uuid> Composition::defaultTrackIDFor(const Layer& layer) const {
  if (tracks.empty()) return std::nullopt;
  if (layer.kind() == LayerKind::audio) {
    for (const SequenceTrack& t : tracks)
      if (t.isAudio()) return t.id;
    return tracks.back().id;
  }
  for (std::size_t i = tracks.size(); i-- > 0;)
    if (!tracks[i].isAudio()) return tracks[i].id;
  return tracks.front().id;
}

bool Composition::trackIsFree(const Uuid& trackID, const OVTimeRange& range,
                              const std::optional<Uuid>& excluding) const {
  return std::none_of(layers.begin(), layers.end(), [&](const Layer& l) {
    return l.trackID == trackID && l.id != excluding && l.timeRange.intersects(range);
  });
}

OVTime Composition::trackEnd(const Uuid& trackID) const {
  std::optional<OVTime> latest;
  for (const Layer& l : layers) {
    if (l.trackID != trackID) continue;
    const OVTime end = l.timeRange.end();
    if (!latest || end > *latest) latest = end;
  }
  return latest.value_or(OVTime::zero);
}

OVTime Composition::maximumOverlap(const OVTime& a, const OVTime& b) const {
  if (!overlapsCrossfade) return OVTime::zero;
  return OVTime::fromSeconds(std::min(a, b).seconds() / 2);
}

std::optional<OVTime> Composition::fittedStart(const OVTime& duration, const OVTime& wanted,
                                                const Uuid& trackID, const std::unordered_set<Uuid>& excluding,
                                                bool allowingCrossfade) const {
  std::vector<const Layer*> others = layersOnTrack(trackID);
  std::erase_if(others, [&](const Layer* l) { return excluding.contains(l->id); });
  const std::vector<OVTimeRange> cores = coresOf(*this, others, duration, allowingCrossfade);

  const OVTime start = std::max(wanted, OVTime::zero);
  const OVTimeRange wantedRange(start, duration);
  if (!meetsAny(wantedRange, cores)) return start;

  std::vector<OVTime> candidates;
  for (const OVTimeRange& core : cores) {
    if (!core.intersects(wantedRange)) continue;
    candidates.push_back(core.end());
    candidates.push_back(core.start - duration);
  }
  std::optional<OVTime> best;
  double bestDistance = 0;
  for (const OVTime& candidate : candidates) {
    if (candidate < OVTime::zero || meetsAny(OVTimeRange(candidate, duration), cores)) continue;
    const double distance = std::abs((candidate - start).seconds());
    if (!best || distance < bestDistance) {
      best = candidate;
      bestDistance = distance;
    }
  }
  return best;
}

void Composition::applySequenceCrossfades() {
  if (!isSequence() || !overlapsCrossfade) return;
  for (const auto& group : indicesByTrack(*this)) {
    for (std::size_t k = 1; k < group.size(); ++k) crossfadeNeighbours(layers, group[k - 1], group[k]);
  }
}

void Composition::normalizeSequenceOrder() {
  if (!isSequence()) return;
  if (tracks.empty()) tracks = defaultTracks();

  layers.updateWhere([&](const Layer& l) { return !l.trackID || !trackIndexOf(*l.trackID); },
                     [&](Layer& l) { l.trackID = defaultTrackIDFor(l); });

  sortByTrackThenLatestFirst(*this);
  applySequenceCrossfades();
}

}  // namespace orvane::core
