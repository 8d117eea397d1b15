#pragma once
// The edits of the layers of the active composition: adding every kind of
// layer, duplicating, deleting, renaming, reordering, moving in time,
// trimming, fading, splitting, linked audio, parenting, flags, audio
// settings and composition markers. Each is one undo step named as the
// Edit menu shows it, or one tick of a drag where it says "interactive".
// Bad input (unknown ids, an empty selection, no active composition) does
// nothing. Main thread only, like the document.

#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "core/layer.hpp"
#include "core/media_asset.hpp"
#include "core/project.hpp"
#include "document/project_document.hpp"
#include "document/undo_stack.hpp"

namespace orvane::commands {

// Where a new media clip comes from in its source and where it goes.
struct AddLayerOptions {
  core::OVTime sourceStart;
  std::optional<core::OVTime> sourceDuration;
  std::optional<std::size_t> index;      // in the stacking order; top when none
  std::optional<core::Uuid> track;       // in a sequence; the default track when none
};

// How long the layer's source runs: the asset's duration for video and
// audio; none for stills, generated content and missing assets, which may
// be lengthened at will.
std::optional<core::OVTime> sourceDuration(const core::Layer& layer, const core::OVProject& project);

// --- Adding ---
// A clip of asset at time. The first non-still clip of an empty composition
// lengthens the composition to its own length. "Add <name>".
std::optional<core::Uuid> addLayer(document::ProjectDocument& doc, const core::MediaAsset& asset,
                                   const core::OVTime& at, const AddLayerOptions& options,
                                   document::UndoStack* undo);
std::optional<core::Uuid> addTextLayer(document::ProjectDocument& doc, const core::OVTime& at,
                                       document::UndoStack* undo);
std::optional<core::Uuid> addShapeLayer(document::ProjectDocument& doc, core::ShapeContent::ShapeType type,
                                        const core::OVTime& at, document::UndoStack* undo);
std::optional<core::Uuid> addSolidLayer(document::ProjectDocument& doc, const core::OVColor& color,
                                        const core::OVTime& at, document::UndoStack* undo);
std::optional<core::Uuid> addAdjustmentLayer(document::ProjectDocument& doc, const core::OVTime& at,
                                             document::UndoStack* undo);
// Nests compositionID in the active composition; none when that would
// make a composition contain itself.
std::optional<core::Uuid> addPrecompositionLayer(document::ProjectDocument& doc, const core::Uuid& compositionID,
                                                 const core::OVTime& at, std::optional<std::size_t> index,
                                                 const std::optional<core::Uuid>& track, document::UndoStack* undo);

// --- Structure ---
void duplicateLayers(document::ProjectDocument& doc, const std::vector<core::Uuid>& ids, document::UndoStack* undo);
void deleteLayers(document::ProjectDocument& doc, const std::vector<core::Uuid>& ids, document::UndoStack* undo);
// A nested composition's layer renames the composition itself.
void renameLayer(document::ProjectDocument& doc, const core::Uuid& id, const std::string& name,
                 document::UndoStack* undo);
void moveLayer(document::ProjectDocument& doc, const core::Uuid& id, std::size_t toIndex, document::UndoStack* undo);
// The layers as one block at toIndex, counted without them.
void moveLayers(document::ProjectDocument& doc, const std::vector<core::Uuid>& ids, std::size_t toIndex,
                document::UndoStack* undo);

// --- Time (layer_timing_edits.cpp) ---
// The nudge: unlocked layers move by delta, no sequence rules.
void moveLayersBy(document::ProjectDocument& doc, const std::vector<core::Uuid>& ids, const core::OVTime& delta,
                  document::UndoStack* undo);
// One tick of a drag: each layer with a target goes there, fitted to its
// track in a sequence and snapped to a frame; locked layers stay.
void moveLayersInteractively(document::ProjectDocument& doc, const std::vector<core::Uuid>& ids,
                             const std::unordered_map<core::Uuid, core::OVTime>& targets);
void trimLayerStart(document::ProjectDocument& doc, const core::Uuid& id, const core::OVTime& to, bool interactive,
                    document::UndoStack* undo);
void trimLayerEnd(document::ProjectDocument& doc, const core::Uuid& id, const core::OVTime& to, bool interactive,
                  document::UndoStack* undo);
void setLayerFadeIn(document::ProjectDocument& doc, const core::Uuid& id, const core::OVTime& to, bool interactive,
                    document::UndoStack* undo);
void setLayerFadeOut(document::ProjectDocument& doc, const core::Uuid& id, const core::OVTime& to, bool interactive,
                     document::UndoStack* undo);
// Cuts each unlocked layer at time; returns how many were cut.
int splitLayers(document::ProjectDocument& doc, const std::vector<core::Uuid>& ids, const core::OVTime& at,
                document::UndoStack* undo);

// --- Linked audio, parenting, flags ---
// The video clip stops playing its sound; a new audio layer plays it.
void unlinkAudio(document::ProjectDocument& doc, const core::Uuid& fromID, document::UndoStack* undo);
// The clip plays its own sound again; a detached audio layer stays.
void relinkAudio(document::ProjectDocument& doc, const core::Uuid& toID, document::UndoStack* undo);
// Nothing when parent would become its own ancestor.
void setParent(document::ProjectDocument& doc, const core::Uuid& id, const std::optional<core::Uuid>& parent,
               document::UndoStack* undo);
void setLabelColor(document::ProjectDocument& doc, const std::vector<core::Uuid>& ids, core::LayerLabelColor color,
                   document::UndoStack* undo);
// The toggles make a selection uniform: all get the opposite of the first
// layer's value.
void toggleVisibility(document::ProjectDocument& doc, const std::vector<core::Uuid>& ids, document::UndoStack* undo);
void toggleLock(document::ProjectDocument& doc, const std::vector<core::Uuid>& ids, document::UndoStack* undo);
void toggleSolo(document::ProjectDocument& doc, const std::vector<core::Uuid>& ids, document::UndoStack* undo);
void toggleMute(document::ProjectDocument& doc, const std::vector<core::Uuid>& ids, document::UndoStack* undo);

// --- Audio settings and markers ---
void setAudioEffect(document::ProjectDocument& doc, const core::Uuid& layerID,
                    const std::function<void(core::AudioProperties&)>& change, document::UndoStack* undo);
void resetNormalizeGain(document::ProjectDocument& doc, const core::Uuid& layerID, document::UndoStack* undo);
void addCompositionMarker(document::ProjectDocument& doc, const core::OVTime& at, const std::string& name,
                          document::UndoStack* undo);
void removeCompositionMarker(document::ProjectDocument& doc, const core::Uuid& id, document::UndoStack* undo);

}  // namespace orvane::commands
