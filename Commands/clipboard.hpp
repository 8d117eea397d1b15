#pragma once
// Copy, cut and paste of layers and keyframes through a Pasteboard, within
// one document or between documents. Copying reads the document and keeps
// no reference to it; pasting is one undo step. The payloads and their JSON
// are in clipboard_payload.hpp. Main thread only, like the document.

#include <vector>

#include "Commands/clipboard_payload.hpp"
#include "Commands/pasteboard.hpp"
#include "Commands/property_address.hpp"
#include "core/ov_time.hpp"
#include "core/uuid.hpp"
#include "document/project_document.hpp"
#include "document/undo_stack.hpp"

namespace orvane::commands {

// Puts the layers of the active composition with these ids (in stacking
// order) and the media they use on the pasteboard. Nothing without an
// active composition or without any such layer.
void copyLayers(const document::ProjectDocument& doc, const std::vector<core::Uuid>& ids, Pasteboard& pasteboard);
// copyLayers, then deleteLayers. Whether it ran: false for no ids or no
// active composition.
bool cutLayers(document::ProjectDocument& doc, const std::vector<core::Uuid>& ids, Pasteboard& pasteboard,
               document::UndoStack* undo);
// Puts the keyframes on the pasteboard, grouped by channel in order of
// first appearance. Mask keyframes and refs that do not resolve are left
// out; nothing is written when no keyframe remains.
void copyKeyframes(const document::ProjectDocument& doc, const std::vector<KeyframeRef>& refs,
                   Pasteboard& pasteboard);

// Layers on the pasteboard win; otherwise keyframes go onto ontoLayers.
// The ids of the pasted layers, or empty.
std::vector<core::Uuid> paste(document::ProjectDocument& doc, const core::OVTime& time,
                              const std::vector<core::Uuid>& ontoLayers, const Pasteboard& pasteboard,
                              document::UndoStack* undo);
// Copies of the payload's layers with new ids, the earliest at time
// (frame-snapped) and the rest keeping their offsets, on top of the stack;
// parent links survive only within the paste; the media join the project.
// In a sequence each clip is placed on its default track where it fits.
// "Paste Layer" / "Paste Layers". The new ids in payload order.
std::vector<core::Uuid> pasteLayers(document::ProjectDocument& doc, const OVClipboard::LayerPayload& payload,
                                    const core::OVTime& time, document::UndoStack* undo);
// Writes the payload's keyframes onto each layer of onto, the earliest at
// time (frame-snapped), each on a frame, replacing keys at those frames. A
// layer lacking an entry's effect skips that entry. "Paste Keyframes".
void pasteKeyframes(document::ProjectDocument& doc, const OVClipboard::KeyframePayload& payload,
                    const core::OVTime& time, const std::vector<core::Uuid>& onto, document::UndoStack* undo);

}  // namespace orvane::commands
