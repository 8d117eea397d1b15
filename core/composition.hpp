#pragma once
// One timeline. Its layer list is in stacking order (index 0 on top; painting
// runs from the last to the first) and is shared persistently, so copying a
// composition is O(1) and changing one layer copies only a little. The same
// record serves two editing modes: free layers, or clips on tracks.

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "core/enum_text.hpp"
#include "core/frame_rate.hpp"
#include "core/geometry.hpp"
#include "core/layer.hpp"
#include "core/marker.hpp"
#include "core/ov_time.hpp"
#include "core/persistent_list.hpp"
#include "core/shared_vector.hpp"
#include "core/uuid.hpp"

namespace orvane::core {

enum class EditingMode { layers, sequence };

template <>
struct EnumTable<EditingMode> {
  using E = EditingMode;
  static constexpr std::array<EnumEntry<E>, 2> entries{{
      {E::layers, "layers", "Composition"}, {E::sequence, "sequence", "Sequence"}}};
};
// The one-line explanation shown under the mode.
std::string_view detailText(EditingMode mode);
// The symbol name of the mode's icon.
std::string_view symbolName(EditingMode mode);

// base when it is not taken, else the first free of "base 2", "base 3", ...
// Names compare exactly, case and all. Shared by layers, compositions and
// media folders.
std::string uniqueName(const std::string& base, const std::unordered_set<std::string>& taken);

struct SequenceTrack {
  Uuid id = Uuid::make();
  std::string name;
  bool isMuted = false;
  bool isLocked = false;

  // An audio track is one whose name begins with "A".
  bool isAudio() const { return name.starts_with('A'); }

  friend bool operator==(const SequenceTrack&, const SequenceTrack&) = default;
};
inline std::size_t hashValue(const SequenceTrack& t) { return hashAll(t.id, t.name, t.isMuted, t.isLocked); }

struct Composition {
  Uuid id = Uuid::make();
  std::string name = "Composition 1";
  OVSize size{1920, 1080};
  FrameRate frameRate = FrameRate::fps30;
  OVTime duration = OVTime(10 * OVTime::defaultTimescale, OVTime::defaultTimescale);
  OVColor backgroundColor = OVColor::black;
  bool isTransparent = false;
  double audioSampleRate = 48000;
  PersistentList<Layer> layers;
  SharedVector<Marker> markers;
  std::optional<OVTimeRange> workArea;
  OVTime playheadTime;
  bool motionBlurEnabled = false;
  double motionBlurShutterAngle = 180;
  EditingMode editingMode = EditingMode::layers;
  SharedVector<SequenceTrack> tracks;
  bool overlapsCrossfade = true;

  // "V3", "V2", "V1", "A1" with fresh ids.
  static std::vector<SequenceTrack> defaultTracks();

  OVTimeRange fullRange() const { return {OVTime::zero, duration}; }
  // The work area when there is one (not clipped to the duration).
  OVTimeRange renderRange() const { return workArea ? *workArea : fullRange(); }
  double aspectRatio() const { return size.aspectRatio(); }
  // The latest end of all layers, zero when there are none.
  OVTime contentEnd() const;
  bool isSequence() const { return editingMode == EditingMode::sequence; }

  // --- Look-ups; the pointers stay valid until this composition changes ---
  const Layer* layer(const Uuid& id) const;
  std::optional<std::size_t> indexOf(const Uuid& id) const;
  const SequenceTrack* track(const Uuid& id) const;
  std::optional<std::size_t> trackIndexOf(const Uuid& id) const;
  // The layers on a track, by start time.
  std::vector<const Layer*> layersOnTrack(const Uuid& trackID) const;

  // --- Sequence rules (no-ops or unused outside a sequence) ---
  // Audio: the first audio track, else the last track. Anything else: the
  // lowest video track, else the first track. None only without tracks.
  std::optional<Uuid> defaultTrackIDFor(const Layer& layer) const;
  // No clip of the track but the excluded one intersects range.
  bool trackIsFree(const Uuid& trackID, const OVTimeRange& range,
                   const std::optional<Uuid>& excluding = std::nullopt) const;
  // The latest end of the track's clips, zero when it has none.
  OVTime trackEnd(const Uuid& trackID) const;
  // How far clips of durations a and b may overlap to crossfade: half the
  // shorter one, zero while crossfades are off.
  OVTime maximumOverlap(const OVTime& a, const OVTime& b) const;
  // Where a clip of this duration lands on the track when dropped at wanted:
  // wanted itself (not before zero) when it covers no other clip's core,
  // else the nearest start that clears every core; none when no start does.
  std::optional<OVTime> fittedStart(const OVTime& duration, const OVTime& wanted, const Uuid& trackID,
                                    const std::unordered_set<Uuid>& excluding = {},
                                    bool allowingCrossfade = true) const;
  // Sets the fades and crossfade flags of neighbouring clips from their
  // overlaps; clears the flags (not the fades) where an overlap has gone.
  void applySequenceCrossfades();
  // Restores the sequence invariants: tracks present, every clip on a known
  // track, clips grouped by track (later clips first), crossfades current.
  void normalizeSequenceOrder();

  // --- Layer queries ---
  bool hasSoloedVisualLayers() const;
  bool hasSoloedAudioLayers() const;
  // In list order, the visual layers active at t; only solo ones when any
  // visual layer is solo.
  std::vector<const Layer*> visibleVisualLayersAt(const OVTime& t) const;
  // The same into a buffer the caller keeps, to spare an allocation per frame.
  void visibleVisualLayersAt(const OVTime& t, std::vector<const Layer*>& out) const;
  // The layers that contribute audio; only solo ones when any such is solo.
  std::vector<const Layer*> audibleLayers() const;
  // Index + 1: the topmost layer shows 1.
  std::optional<std::size_t> displayIndexOf(const Uuid& id) const;
  // base, or "base 2", "base 3", ... whichever is first free among the names.
  std::string uniqueLayerName(const std::string& base) const;
  bool wouldCreateParentCycle(const Uuid& layerID, const Uuid& candidateParentID) const;
  // The ancestors, nearest first; stops at a missing parent or a repeat.
  std::vector<const Layer*> parentChainFor(const Uuid& id) const;

  // The shortest any layer, clip or work area may get: one frame.
  OVTime minimumLayerDuration() const { return frameRate.frameDuration(); }

  // --- Edits ---
  // In a sequence the index is ignored: the layer goes on onTrack, else its
  // own track, else the default track for it, at the nearest start that
  // covers no clip (no crossfade), else at the track's end; snapped to a
  // frame, then the sequence order is restored. Otherwise it is inserted at
  // index, limited to the count.
  void insert(Layer layer, std::size_t index = 0, const std::optional<Uuid>& onTrack = std::nullopt);
  // Removes the layer and clears every parent link to it. The sequence order
  // is not restored.
  void remove(const Uuid& id);
  // To toIndex limited to the list; nothing when already there.
  void move(const Uuid& id, std::size_t toIndex);
  // Applies change to the layer with this id; nothing for an unknown id.
  template <class Change>
  void update(const Uuid& layerID, Change&& change) {
    if (auto i = indexOf(layerID)) layers.update(*i, std::forward<Change>(change));
  }

  friend bool operator==(const Composition&, const Composition&) = default;
};

std::size_t hashValue(const Composition& c);

}  // namespace orvane::core
