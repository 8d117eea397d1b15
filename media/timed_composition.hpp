#pragma once
// The media engine's timeline: tracks of one kind of media each, holding
// segments of source files placed at composition time, with gaps where a
// track has nothing. The assembler builds one per assembly; readers and
// players then only read it. Plain value; any thread may read a copy.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/ov_time.hpp"

namespace orvane::media {

enum class TrackMediaType { video, audio };

// One stretch of a source file played at composition time, at its own speed.
struct TrackSegment {
  std::string sourcePath;
  std::string sourceName;  // the media's name, for messages about the file
  core::OVTimeRange sourceRange;   // on the file's clock
  core::OVTime compositionStart;   // where sourceRange.start plays

  core::OVTimeRange compositionRange() const { return {compositionStart, sourceRange.duration}; }
  // The file time shown at composition time t (no clamping).
  core::OVTime sourceTimeFor(const core::OVTime& t) const { return sourceRange.start + (t - compositionStart); }

  friend bool operator==(const TrackSegment&, const TrackSegment&) = default;
};

struct TimedTrack {
  std::int32_t trackID = 0;
  TrackMediaType mediaType = TrackMediaType::video;
  std::vector<TrackSegment> segments;  // by composition start, never overlapping

  // The segment playing at t; null in a gap.
  const TrackSegment* segmentAt(const core::OVTime& t) const;
  // Where the last segment ends; zero for an empty track.
  core::OVTime end() const;

  friend bool operator==(const TimedTrack&, const TimedTrack&) = default;
};

class TimedComposition {
 public:
  // A new, empty track with an id of its own (ids start at 1; 0 is never one).
  TimedTrack& addTrack(TrackMediaType type);
  // Places sourceRange of the file at `at` on the track. An empty range, an
  // unknown track or a range that would overlap what is there already is
  // refused (false).
  bool insertTimeRange(std::int32_t trackID, const std::string& sourcePath, const core::OVTimeRange& sourceRange,
                       const core::OVTime& at, const std::string& sourceName = {});

  const std::vector<TimedTrack>& tracks() const { return tracks_; }
  const TimedTrack* track(std::int32_t trackID) const;
  std::vector<const TimedTrack*> tracksOf(TrackMediaType type) const;

  // The composition's length; tracks may end earlier, never later.
  core::OVTime duration;

  friend bool operator==(const TimedComposition&, const TimedComposition&) = default;

 private:
  TimedTrack* mutableTrack(std::int32_t trackID);
  std::vector<TimedTrack> tracks_;
  std::int32_t nextTrackID_ = 1;
};

}  // namespace orvane::media
