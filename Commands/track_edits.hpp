#pragma once
// The track edits of a sequence: adding, removing, renaming, muting and
// locking tracks, moving a clip to another track, the ripple delete and
// the crossfade switch. Outside a sequence they do nothing (the ripple
// delete is then a plain delete). Main thread only.

#include <optional>
#include <string>
#include <vector>

#include "core/composition.hpp"
#include "document/project_document.hpp"
#include "document/undo_stack.hpp"

namespace orvane::commands {

// What a new track is for; a track itself only knows its name ("A..." is audio).
enum class TrackKind { video, audio };

// A nil or blank name becomes "V<n>" or "A<n>", n counting the tracks of
// that kind. Above the track `above`, else a video track just above the
// audio tracks and an audio track at the bottom. Returns the new id.
std::optional<core::Uuid> addTrack(document::ProjectDocument& doc, const std::optional<std::string>& name,
                                   TrackKind kind, const std::optional<core::Uuid>& above,
                                   document::UndoStack* undo);
// Never the last track; its clips move to the track that takes its place.
void removeTrack(document::ProjectDocument& doc, const core::Uuid& id, document::UndoStack* undo);
void renameTrack(document::ProjectDocument& doc, const core::Uuid& id, const std::string& name,
                 document::UndoStack* undo);
// Pushed down into the clips: a muted track disables all its clips.
void setTrackMuted(document::ProjectDocument& doc, bool muted, const core::Uuid& id, document::UndoStack* undo);
void setTrackLocked(document::ProjectDocument& doc, bool locked, const core::Uuid& id, document::UndoStack* undo);
// To the nearest free place on the track; nothing when there is none.
void moveLayerToTrack(document::ProjectDocument& doc, const core::Uuid& id, const core::Uuid& trackID,
                      bool interactive, document::UndoStack* undo);
// Deletes the clips and closes their gaps on their tracks.
void rippleDeleteLayers(document::ProjectDocument& doc, const std::vector<core::Uuid>& ids,
                        document::UndoStack* undo);
// Turning crossfades off pushes overlapping clips apart and drops the fades
// the overlaps made.
void setOverlapsCrossfade(document::ProjectDocument& doc, bool enabled, document::UndoStack* undo);

}  // namespace orvane::commands
