#include "Commands/track_edits.hpp"

#include <algorithm>
#include <unordered_set>

#include "Commands/layer_edits.hpp"
#include "core/text_util.hpp"

namespace orvane::commands {

using core::Composition;
using core::Layer;
using core::OVProject;
using core::OVTime;
using core::SequenceTrack;
using core::Uuid;
using document::ProjectDocument;
using document::UndoStack;

namespace {

// The index of the track where a new one goes: above `above` when given and
// found; else a video track just above the first audio track, an audio
// track at the bottom.
std::size_t insertionIndex(const Composition& c, TrackKind kind, const std::optional<Uuid>& above) {
  const std::size_t count = c.tracks.size();
  std::optional<std::size_t> index = above ? c.trackIndexOf(*above) : std::nullopt;
  if (!index && kind == TrackKind::video) {
    const auto firstAudio =
        std::find_if(c.tracks.begin(), c.tracks.end(), [](const SequenceTrack& t) { return t.isAudio(); });
    index = static_cast<std::size_t>(firstAudio - c.tracks.begin());
  }
  return std::min(index.value_or(count), count);
}

// Sets one track's fields and pushes a value down into its clips.
template <class TrackChange, class ClipChange>
void updateTrack(ProjectDocument& doc, const Uuid& id, std::string_view actionName, UndoStack* undo,
                 TrackChange trackChange, ClipChange clipChange) {
  doc.updateActiveComposition(actionName, undo, [&](Composition& c) {
    const auto index = c.trackIndexOf(id);
    if (!index) return;
    trackChange(c.tracks.mutate()[*index]);
    c.layers.updateWhere([&](const Layer& l) { return l.trackID == id; }, clipChange);
  });
}

// The layer indices on a track, by start. Moving clips in time keeps them.
std::vector<std::size_t> clipIndicesByStart(const Composition& c, const Uuid& trackID) {
  std::vector<std::size_t> indices;
  for (std::size_t i = 0; i < c.layers.size(); ++i)
    if (c.layers[i].trackID == trackID) indices.push_back(i);
  std::stable_sort(indices.begin(), indices.end(), [&](std::size_t a, std::size_t b) {
    return c.layers[a].timeRange.start < c.layers[b].timeRange.start;
  });
  return indices;
}

// Without crossfades nothing may overlap: each clip that starts inside the
// one before pushes itself and everything after it on its track later.
void pushOverlappingClipsApart(Composition& c) {
  for (const SequenceTrack& track : c.tracks) {
    const std::vector<std::size_t> order = clipIndicesByStart(c, track.id);
    for (std::size_t k = 1; k < order.size(); ++k) {
      const OVTime previousEnd = c.layers[order[k - 1]].timeRange.end();
      const OVTime start = c.layers[order[k]].timeRange.start;
      if (start >= previousEnd) continue;
      const OVTime push = previousEnd - start;
      for (std::size_t j = k; j < order.size(); ++j) c.layers.update(order[j], [&](Layer& l) { l.moveBy(push); });
    }
  }
}

}  // namespace

std::optional<Uuid> addTrack(ProjectDocument& doc, const std::optional<std::string>& name, TrackKind kind,
                             const std::optional<Uuid>& above, UndoStack* undo) {
  const Composition* active = doc.activeComposition();
  if (active == nullptr || !active->isSequence()) return std::nullopt;
  const bool audio = kind == TrackKind::audio;
  const auto sameKind = std::count_if(active->tracks.begin(), active->tracks.end(),
                                      [&](const SequenceTrack& t) { return t.isAudio() == audio; });
  SequenceTrack track;
  track.name = core::orIfBlank(name.value_or(""), (audio ? "A" : "V") + std::to_string(sameKind + 1));
  doc.updateActiveComposition("Add Track", undo, [&](Composition& c) {
    const std::size_t index = insertionIndex(c, kind, above);
    auto& tracks = c.tracks.mutate();
    tracks.insert(tracks.begin() + static_cast<std::ptrdiff_t>(index), track);
    c.normalizeSequenceOrder();
  });
  return track.id;
}

void removeTrack(ProjectDocument& doc, const Uuid& id, UndoStack* undo) {
  doc.updateActiveComposition("Remove Track", undo, [&](Composition& c) {
    const auto removed = c.trackIndexOf(id);
    if (!c.isSequence() || c.tracks.size() < 2 || !removed) return;
    auto& tracks = c.tracks.mutate();
    tracks.erase(tracks.begin() + static_cast<std::ptrdiff_t>(*removed));
    const Uuid target = tracks[std::min(*removed, tracks.size() - 1)].id;
    // In list order, each clip takes the nearest free place on its new track.
    for (std::size_t i = 0; i < c.layers.size(); ++i) {
      const Layer& clip = c.layers[i];
      if (clip.trackID != id) continue;
      const OVTime fitted = c.fittedStart(clip.timeRange.duration, clip.timeRange.start, target, {clip.id})
                                .value_or(c.trackEnd(target));
      const OVTime start = c.frameRate.snapped(fitted);
      c.layers.update(i, [&](Layer& l) {
        l.trackID = target;
        l.moveTo(start);
      });
    }
    c.normalizeSequenceOrder();
  });
}

void renameTrack(ProjectDocument& doc, const Uuid& id, const std::string& name, UndoStack* undo) {
  const std::string newName = core::trimmed(name);
  if (newName.empty()) return;
  updateTrack(doc, id, "Rename Track", undo, [&](SequenceTrack& t) { t.name = newName; }, [](Layer&) {});
}

void setTrackMuted(ProjectDocument& doc, bool muted, const Uuid& id, UndoStack* undo) {
  updateTrack(doc, id, muted ? "Mute Track" : "Unmute Track", undo, [&](SequenceTrack& t) { t.isMuted = muted; },
              [&](Layer& l) { l.isEnabled = !muted; });
}

void setTrackLocked(ProjectDocument& doc, bool locked, const Uuid& id, UndoStack* undo) {
  updateTrack(doc, id, locked ? "Lock Track" : "Unlock Track", undo, [&](SequenceTrack& t) { t.isLocked = locked; },
              [&](Layer& l) { l.isLocked = locked; });
}

void moveLayerToTrack(ProjectDocument& doc, const Uuid& id, const Uuid& trackID, bool interactive,
                      UndoStack* undo) {
  const ProjectDocument::Change change = [&](OVProject& p) {
    p.updateActiveComposition([&](Composition& c) {
      const Layer* layer = c.layer(id);
      if (!c.isSequence() || c.track(trackID) == nullptr || layer == nullptr) return;
      if (layer->trackID == trackID || layer->isLocked) return;
      const auto start = c.fittedStart(layer->timeRange.duration, layer->timeRange.start, trackID, {id});
      if (!start) return;
      c.update(id, [&](Layer& l) {
        l.trackID = trackID;
        l.moveTo(*start);
      });
      c.normalizeSequenceOrder();
    });
  };
  if (interactive) {
    doc.updateInteraction(change);
  } else {
    doc.perform("Move to Track", undo, change);
  }
}

void rippleDeleteLayers(ProjectDocument& doc, const std::vector<Uuid>& ids, UndoStack* undo) {
  const Composition* active = doc.activeComposition();
  if (active == nullptr || ids.empty()) return;
  if (!active->isSequence()) {
    deleteLayers(doc, ids, undo);
    return;
  }
  const std::unordered_set<Uuid> chosen(ids.begin(), ids.end());
  doc.updateActiveComposition("Ripple Delete", undo, [&](Composition& c) {
    // Taken out directly: parent links to them stay, unlike a plain delete.
    std::vector<Layer> removed;
    for (std::size_t i = c.layers.size(); i-- > 0;) {
      if (!chosen.contains(c.layers[i].id)) continue;
      removed.push_back(c.layers[i]);
      c.layers.erase(i);
    }
    // In list order, which puts later clips first, so each gap closes on
    // its own before the earlier ones.
    std::reverse(removed.begin(), removed.end());
    for (const Layer& gone : removed) {
      if (!gone.trackID) continue;
      const OVTime end = gone.timeRange.end();
      const OVTime back = OVTime::zero - gone.timeRange.duration;
      c.layers.updateWhere([&](const Layer& l) { return l.trackID == gone.trackID && l.timeRange.start >= end; },
                           [&](Layer& l) { l.moveBy(back); });
    }
    c.normalizeSequenceOrder();
  });
}

void setOverlapsCrossfade(ProjectDocument& doc, bool enabled, UndoStack* undo) {
  doc.updateActiveComposition(enabled ? "Enable Crossfades" : "Disable Crossfades", undo, [&](Composition& c) {
    c.overlapsCrossfade = enabled;
    if (!enabled) {
      pushOverlappingClipsApart(c);
      // The fades the overlaps made go; those the user set stay.
      c.layers.updateWhere([](const Layer& l) { return l.crossfadeIn || l.crossfadeOut; }, [](Layer& l) {
        if (l.crossfadeIn) l.fadeIn = OVTime::zero;
        if (l.crossfadeOut) l.fadeOut = OVTime::zero;
        l.crossfadeIn = false;
        l.crossfadeOut = false;
      });
    }
    c.normalizeSequenceOrder();
  });
}

}  // namespace orvane::commands
