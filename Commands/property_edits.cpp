#include "Commands/property_edits.hpp"

#include <algorithm>
#include <functional>
#include <iterator>
#include <string>

#include "Commands/keyframe_edits.hpp"
#include "Commands/property_address.hpp"

namespace orvane::commands {

using core::AnimatedProperty;
using core::EffectInstance;
using core::Layer;
using core::LayerMask;
using core::Uuid;
using document::ProjectDocument;
using document::UndoStack;

namespace {

const Layer* activeLayer(const ProjectDocument& doc, const Uuid& id) {
  const core::Composition* composition = doc.activeComposition();
  return composition ? composition->layer(id) : nullptr;
}

// change on the instance with this id in the layer's stack; nothing when
// it is not there.
void updateEffect(ProjectDocument& doc, const Uuid& layerID, const Uuid& effectID, std::string_view actionName,
                  UndoStack* undo, const std::function<void(EffectInstance&)>& change) {
  doc.updateLayer(layerID, actionName, undo, [&](Layer& layer) {
    const auto& effects = layer.effects.items();
    auto it = std::ranges::find(effects, effectID, &EffectInstance::id);
    if (it != effects.end()) change(layer.effects.mutate()[static_cast<std::size_t>(it - effects.begin())]);
  });
}

void updateMask(ProjectDocument& doc, const Uuid& layerID, const Uuid& maskID, std::string_view actionName,
                UndoStack* undo, const std::function<void(LayerMask&)>& change) {
  doc.updateLayer(layerID, actionName, undo, [&](Layer& layer) {
    const auto& masks = layer.masks.items();
    auto it = std::ranges::find(masks, maskID, &LayerMask::id);
    if (it != masks.end()) change(layer.masks.mutate()[static_cast<std::size_t>(it - masks.begin())]);
  });
}

// One step changing every listed layer of the active composition.
void updateLayers(ProjectDocument& doc, const std::vector<Uuid>& layerIDs, std::string_view actionName,
                  UndoStack* undo, const std::function<void(Layer&)>& change) {
  doc.updateActiveComposition(actionName, undo, [&](core::Composition& c) {
    for (const Uuid& id : layerIDs) c.update(id, change);
  });
}

// Writes content into the layer only when it already holds content of
// that kind: a text layer stays a text layer.
void applyContent(ProjectDocument& doc, const Uuid& layerID, std::string_view actionName, bool interactive,
                  UndoStack* undo, const core::LayerContent& content) {
  applyLayerChange(doc, layerID, actionName, interactive, undo, [&](Layer& layer) {
    if (layer.kind() == content.kind()) layer.content = content;
  });
}

}  // namespace

// ------------------------------------------------------------------ effects

void addEffect(ProjectDocument& doc, const core::EffectDescriptor& descriptor, const std::vector<Uuid>& layerIDs,
               UndoStack* undo) {
  updateLayers(doc, layerIDs, "Add " + descriptor.name, undo,
               [&](Layer& layer) { layer.effects.mutate().push_back(descriptor.makeInstance()); });
}

void removeEffect(ProjectDocument& doc, const Uuid& effectID, const Uuid& layerID, UndoStack* undo) {
  doc.updateLayer(layerID, "Delete Effect", undo, [&](Layer& layer) {
    if (std::ranges::find(layer.effects, effectID, &EffectInstance::id) != layer.effects.end())
      std::erase_if(layer.effects.mutate(), [&](const EffectInstance& e) { return e.id == effectID; });
  });
}

void toggleEffect(ProjectDocument& doc, const Uuid& effectID, const Uuid& layerID, UndoStack* undo) {
  updateEffect(doc, layerID, effectID, "Toggle Effect", undo, [](EffectInstance& e) { e.isEnabled = !e.isEnabled; });
}

void moveEffect(ProjectDocument& doc, const Uuid& effectID, const Uuid& layerID, std::ptrdiff_t toIndex,
                UndoStack* undo) {
  doc.updateLayer(layerID, "Reorder Effects", undo, [&](Layer& layer) {
    const auto& effects = layer.effects.items();
    auto it = std::ranges::find(effects, effectID, &EffectInstance::id);
    if (it == effects.end()) return;
    const std::ptrdiff_t from = it - effects.begin();
    const std::ptrdiff_t to = std::clamp<std::ptrdiff_t>(toIndex, 0, std::ssize(effects) - 1);
    if (from == to) return;
    auto& list = layer.effects.mutate();
    EffectInstance moved = std::move(list[static_cast<std::size_t>(from)]);
    list.erase(list.begin() + from);
    list.insert(list.begin() + to, std::move(moved));
  });
}

void resetEffect(ProjectDocument& doc, const Uuid& effectID, const Uuid& layerID, UndoStack* undo) {
  updateEffect(doc, layerID, effectID, "Reset Effect", undo, [](EffectInstance& e) {
    if (const core::EffectDescriptor* descriptor = core::EffectCatalog::descriptorFor(e.effectID))
      e.parameters = descriptor->makeDefaultParameters();
  });
}

void copyEffects(ProjectDocument& doc, const Uuid& sourceLayerID, const std::vector<Uuid>& targetLayerIDs,
                 UndoStack* undo) {
  const Layer* source = activeLayer(doc, sourceLayerID);
  if (!source || source->effects.empty()) return;
  const auto effects = source->effects;  // the pointer does not outlive the change below
  std::vector<Uuid> targets;
  std::ranges::copy_if(targetLayerIDs, std::back_inserter(targets),
                       [&](const Uuid& id) { return id != sourceLayerID; });
  updateLayers(doc, targets, "Paste Effects", undo, [&](Layer& layer) {
    auto& list = layer.effects.mutate();
    for (EffectInstance copy : effects) {
      copy.id = Uuid::make();
      list.push_back(std::move(copy));
    }
  });
}

void applyEffectPreset(ProjectDocument& doc, const core::EffectPreset& preset, const Uuid& layerID,
                       const Uuid& effectInstanceID, const core::OVTime& time, UndoStack* undo) {
  const core::OVTime t = doc.frameSnapped(time);
  updateEffect(doc, layerID, effectInstanceID, "Apply " + preset.name + " Preset", undo, [&](EffectInstance& e) {
    const core::EffectDescriptor* descriptor = core::EffectCatalog::descriptorFor(e.effectID);
    if (!descriptor) return;
    for (const auto& [id, value] : preset.values) {
      const core::EffectParameterDescriptor* parameter = descriptor->parameter(id);
      if (!parameter) continue;
      auto [it, _] = e.parameters.try_emplace(id, AnimatedProperty(parameter->defaultValue));
      it->second.setValue(value, t, false);
    }
  });
}

// -------------------------------------------------------------------- masks

std::optional<Uuid> addMask(ProjectDocument& doc, MaskShapePreset preset, const Uuid& layerID,
                            const core::TextMeasure& measure, UndoStack* undo) {
  const Layer* layer = activeLayer(doc, layerID);
  if (!layer) return std::nullopt;
  const std::optional<core::OVSize> size = core::LayerBounds::sizeOf(*layer, doc.project(), measure);
  if (!size) return std::nullopt;
  LayerMask mask;
  mask.name = "Mask " + std::to_string(layer->masks.size() + 1);
  mask.path = AnimatedProperty(core::PropertyValue::maskPath(
      preset == MaskShapePreset::ellipse ? core::MaskPath::ellipseIn(*size) : core::MaskPath::rectangleIn(*size)));
  const Uuid id = mask.id;
  doc.updateLayer(layerID, "Add Mask", undo, [&](Layer& l) { l.masks.mutate().push_back(mask); });
  return id;
}

void removeMask(ProjectDocument& doc, const Uuid& maskID, const Uuid& layerID, UndoStack* undo) {
  doc.updateLayer(layerID, "Delete Mask", undo, [&](Layer& layer) {
    if (std::ranges::find(layer.masks, maskID, &LayerMask::id) != layer.masks.end())
      std::erase_if(layer.masks.mutate(), [&](const LayerMask& m) { return m.id == maskID; });
  });
}

void setMaskEnabled(ProjectDocument& doc, bool enabled, const Uuid& maskID, const Uuid& layerID, UndoStack* undo) {
  updateMask(doc, layerID, maskID, "Toggle Mask", undo, [&](LayerMask& m) { m.isEnabled = enabled; });
}

void setMaskInverted(ProjectDocument& doc, bool inverted, const Uuid& maskID, const Uuid& layerID,
                     UndoStack* undo) {
  updateMask(doc, layerID, maskID, "Invert Mask", undo, [&](LayerMask& m) { m.inverted = inverted; });
}

void setMaskPath(ProjectDocument& doc, const core::MaskPath& path, const Uuid& maskID, const Uuid& layerID,
                 const core::OVTime& time, bool animationEnabled, bool interactive, UndoStack* undo) {
  setPropertyValue(doc, core::PropertyValue::maskPath(path), PropertyAddress::maskPath(layerID, maskID), time,
                   animationEnabled, interactive, undo);
}

// ------------------------------------------------- transform, crop, blending

void setFlip(ProjectDocument& doc, std::optional<bool> horizontal, std::optional<bool> vertical,
             const Uuid& layerID, UndoStack* undo) {
  doc.updateLayer(layerID, "Flip Layer", undo, [&](Layer& layer) {
    if (horizontal) layer.transform.flipHorizontally = *horizontal;
    if (vertical) layer.transform.flipVertically = *vertical;
  });
}

void resetTransform(ProjectDocument& doc, const Uuid& layerID, UndoStack* undo) {
  const core::Composition* composition = doc.activeComposition();
  if (!composition) return;
  const core::LayerTransform centered = core::LayerTransform::centeredIn(composition->size);
  doc.updateLayer(layerID, "Reset Transform", undo, [&](Layer& layer) { layer.transform = centered; });
}

void resetCrop(ProjectDocument& doc, const Uuid& layerID, UndoStack* undo) {
  doc.updateLayer(layerID, "Reset Crop", undo, [](Layer& layer) { layer.crop = core::LayerCrop{}; });
}

void setBlendMode(ProjectDocument& doc, core::OVBlendMode mode, const std::vector<Uuid>& layerIDs, UndoStack* undo) {
  updateLayers(doc, layerIDs, "Set Blend Mode", undo, [&](Layer& layer) { layer.blendMode = mode; });
}

// ------------------------------------------------------------------ content

void setTextContent(ProjectDocument& doc, const core::TextContent& content, const Uuid& layerID, bool interactive,
                    UndoStack* undo) {
  applyContent(doc, layerID, "Edit Text", interactive, undo, core::LayerContent::text(content));
}

void setShapeContent(ProjectDocument& doc, const core::ShapeContent& content, const Uuid& layerID, bool interactive,
                     UndoStack* undo) {
  applyContent(doc, layerID, "Edit Shape", interactive, undo, core::LayerContent::shape(content));
}

void setSolidContent(ProjectDocument& doc, const core::SolidContent& content, const Uuid& layerID, bool interactive,
                     UndoStack* undo) {
  applyContent(doc, layerID, "Edit Solid", interactive, undo, core::LayerContent::solid(content));
}

}  // namespace orvane::commands
