#include "media/timed_composition.hpp"

#include <algorithm>

namespace orvane::media {

const TrackSegment* TimedTrack::segmentAt(const core::OVTime& t) const {
  // Segments are few per track (one per layer); a linear walk beats a search.
  for (const TrackSegment& segment : segments) {
    if (segment.compositionRange().contains(t)) return &segment;
  }
  return nullptr;
}

core::OVTime TimedTrack::end() const {
  return segments.empty() ? core::OVTime::zero : segments.back().compositionRange().end();
}

TimedTrack& TimedComposition::addTrack(TrackMediaType type) {
  TimedTrack& track = tracks_.emplace_back();
  track.trackID = nextTrackID_++;
  track.mediaType = type;
  return track;
}

bool TimedComposition::insertTimeRange(std::int32_t trackID, const std::string& sourcePath,
                                       const core::OVTimeRange& sourceRange, const core::OVTime& at,
                                       const std::string& sourceName) {
  TimedTrack* track = mutableTrack(trackID);
  if (track == nullptr || sourceRange.isEmpty()) return false;
  TrackSegment segment{sourcePath, sourceName, sourceRange, at};
  const core::OVTimeRange placed = segment.compositionRange();
  for (const TrackSegment& other : track->segments) {
    if (other.compositionRange().intersects(placed)) return false;
  }
  const auto position = std::ranges::find_if(
      track->segments, [&](const TrackSegment& other) { return placed.start < other.compositionStart; });
  track->segments.insert(position, std::move(segment));
  return true;
}

const TimedTrack* TimedComposition::track(std::int32_t trackID) const {
  const auto found = std::ranges::find(tracks_, trackID, &TimedTrack::trackID);
  return found == tracks_.end() ? nullptr : &*found;
}

TimedTrack* TimedComposition::mutableTrack(std::int32_t trackID) {
  const auto found = std::ranges::find(tracks_, trackID, &TimedTrack::trackID);
  return found == tracks_.end() ? nullptr : &*found;
}

std::vector<const TimedTrack*> TimedComposition::tracksOf(TrackMediaType type) const {
  std::vector<const TimedTrack*> found;
  for (const TimedTrack& track : tracks_) {
    if (track.mediaType == type) found.push_back(&track);
  }
  return found;
}

}  // namespace orvane::media
