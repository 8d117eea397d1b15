#pragma once
// Document edits of a layer's effects, masks, transform, crop, blend mode
// and generated content. Each is one undo step named after what the user
// did; bad ids are silent no-ops. Main thread, like the document.

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

#include "core/effect_catalog.hpp"
#include "core/layer.hpp"
#include "core/layer_bounds.hpp"
#include "core/layer_content.hpp"
#include "core/layer_style.hpp"
#include "core/mask_path.hpp"
#include "core/ov_time.hpp"
#include "core/uuid.hpp"
#include "document/project_document.hpp"
#include "document/undo_stack.hpp"

namespace orvane::commands {

// --- Effects ---
// A new instance of descriptor at the end of each layer's stack.
void addEffect(document::ProjectDocument& doc, const core::EffectDescriptor& descriptor,
               const std::vector<core::Uuid>& layerIDs, document::UndoStack* undo);
void removeEffect(document::ProjectDocument& doc, const core::Uuid& effectID, const core::Uuid& layerID,
                  document::UndoStack* undo);
void toggleEffect(document::ProjectDocument& doc, const core::Uuid& effectID, const core::Uuid& layerID,
                  document::UndoStack* undo);
// toIndex is limited to the stack.
void moveEffect(document::ProjectDocument& doc, const core::Uuid& effectID, const core::Uuid& layerID,
                std::ptrdiff_t toIndex, document::UndoStack* undo);
// Every parameter back to the catalog default.
void resetEffect(document::ProjectDocument& doc, const core::Uuid& effectID, const core::Uuid& layerID,
                 document::UndoStack* undo);
// The source's effects appended to each other target, with fresh ids.
void copyEffects(document::ProjectDocument& doc, const core::Uuid& sourceLayerID,
                 const std::vector<core::Uuid>& targetLayerIDs, document::UndoStack* undo);
// The preset's values as base values of the instance's parameters at time;
// no keyframe is made.
void applyEffectPreset(document::ProjectDocument& doc, const core::EffectPreset& preset, const core::Uuid& layerID,
                       const core::Uuid& effectInstanceID, const core::OVTime& time, document::UndoStack* undo);

// --- Masks ---
enum class MaskShapePreset { rectangle, ellipse };

// A mask of the preset's shape over the layer's natural bounds (text
// measured by measure); its id, or none for a layer without bounds.
std::optional<core::Uuid> addMask(document::ProjectDocument& doc, MaskShapePreset preset, const core::Uuid& layerID,
                                  const core::TextMeasure& measure, document::UndoStack* undo);
void removeMask(document::ProjectDocument& doc, const core::Uuid& maskID, const core::Uuid& layerID,
                document::UndoStack* undo);
void setMaskEnabled(document::ProjectDocument& doc, bool enabled, const core::Uuid& maskID,
                    const core::Uuid& layerID, document::UndoStack* undo);
void setMaskInverted(document::ProjectDocument& doc, bool inverted, const core::Uuid& maskID,
                     const core::Uuid& layerID, document::UndoStack* undo);
// The path as a value of the mask's path property (see setPropertyValue).
void setMaskPath(document::ProjectDocument& doc, const core::MaskPath& path, const core::Uuid& maskID,
                 const core::Uuid& layerID, const core::OVTime& time, bool animationEnabled, bool interactive,
                 document::UndoStack* undo);

// --- Transform, crop, blending ---
// Writes each flag that is given; nothing else.
void setFlip(document::ProjectDocument& doc, std::optional<bool> horizontal, std::optional<bool> vertical,
             const core::Uuid& layerID, document::UndoStack* undo);
// The default transform centred in the composition: keys, scale and flips go.
void resetTransform(document::ProjectDocument& doc, const core::Uuid& layerID, document::UndoStack* undo);
void resetCrop(document::ProjectDocument& doc, const core::Uuid& layerID, document::UndoStack* undo);
void setBlendMode(document::ProjectDocument& doc, core::OVBlendMode mode, const std::vector<core::Uuid>& layerIDs,
                  document::UndoStack* undo);

// --- Generated content; only a layer already holding that kind changes ---
void setTextContent(document::ProjectDocument& doc, const core::TextContent& content, const core::Uuid& layerID,
                    bool interactive, document::UndoStack* undo);
void setShapeContent(document::ProjectDocument& doc, const core::ShapeContent& content, const core::Uuid& layerID,
                     bool interactive, document::UndoStack* undo);
void setSolidContent(document::ProjectDocument& doc, const core::SolidContent& content, const core::Uuid& layerID,
                     bool interactive, document::UndoStack* undo);

}  // namespace orvane::commands

template <>
struct orvane::core::EnumTable<orvane::commands::MaskShapePreset> {
  using M = orvane::commands::MaskShapePreset;
  static constexpr std::array<EnumEntry<M>, 2> entries{{{M::rectangle, "rectangle", "Rectangle"},
                                                        {M::ellipse, "ellipse", "Ellipse"}}};
};
