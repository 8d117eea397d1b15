#include "Commands/keyframe_edits.hpp"

#include <cmath>
#include <cstdint>
#include <set>
#include <string>
#include <unordered_set>

namespace orvane::commands {

using core::AnimatedProperty;
using core::InterpolationMode;
using core::Keyframe;
using core::Layer;
using core::OVTime;
using core::PropertyValue;
using core::Uuid;
using document::ProjectDocument;
using document::UndoStack;

namespace {

using RefBody = std::function<void(const KeyframeRef&, AnimatedProperty&)>;

const Layer* activeLayer(const ProjectDocument& doc, const Uuid& id) {
  const core::Composition* composition = doc.activeComposition();
  return composition ? composition->layer(id) : nullptr;
}

std::string setActionName(const ProjectDocument& doc, const PropertyAddress& address) {
  return "Set " + address.displayName(activeLayer(doc, address.layerID));
}

void editProperty(ProjectDocument& doc, const PropertyAddress& address, std::string_view actionName,
                  bool interactive, UndoStack* undo, const std::function<void(AnimatedProperty&)>& body) {
  applyLayerChange(doc, address.layerID, actionName, interactive, undo,
                   [&](Layer& layer) { mutateProperty(layer, address, body); });
}

// body on the property of each ref, all in one step (or one live update).
void editRefs(ProjectDocument& doc, const std::vector<KeyframeRef>& refs, std::string_view actionName,
              bool interactive, UndoStack* undo, const RefBody& body) {
  const ProjectDocument::Change change = [&](core::OVProject& project) {
    project.updateActiveComposition([&](core::Composition& composition) {
      for (const KeyframeRef& ref : refs)
        composition.update(ref.address.layerID, [&](Layer& layer) {
          mutateProperty(layer, ref.address, [&](AnimatedProperty& p) { body(ref, p); });
        });
    });
  };
  if (interactive)
    doc.updateInteraction(change);
  else
    doc.perform(actionName, undo, change);
}

void updateKey(ProjectDocument& doc, const PropertyAddress& address, const Uuid& id, std::string_view actionName,
               bool interactive, UndoStack* undo, const std::function<void(Keyframe&)>& change) {
  editProperty(doc, address, actionName, interactive, undo,
               [&](AnimatedProperty& p) { p.updateKeyframe(id, change); });
}

}  // namespace

std::optional<PropertyValue> replacingComponent(const PropertyValue& value, GraphComponent component,
                                                double number) {
  using K = PropertyValue::Kind;
  if (component == GraphComponent::scalar) {
    if (value.kind() == K::double_) return PropertyValue::double_(number);
    if (value.kind() == K::integer) return PropertyValue::integer(static_cast<std::int64_t>(std::round(number)));
    return std::nullopt;
  }
  const bool x = component == GraphComponent::x;
  if (auto p = value.pointValue()) {
    (x ? p->x : p->y) = number;
    return PropertyValue::point(*p);
  }
  if (auto s = value.sizeValue()) {
    (x ? s->width : s->height) = number;
    return PropertyValue::size(*s);
  }
  return std::nullopt;
}

std::string_view symbolName(EasingPreset preset) {
  switch (preset) {
    case EasingPreset::easyEase: return "point.topleft.down.to.point.bottomright.curvepath";
    case EasingPreset::easeIn: return "arrow.up.right";
    case EasingPreset::easeOut: return "arrow.down.right";
    case EasingPreset::linear: return "line.diagonal";
    case EasingPreset::hold: return "square";
  }
  return {};
}

InterpolationMode mode(EasingPreset preset) {
  switch (preset) {
    case EasingPreset::easyEase: return InterpolationMode::bezier;
    case EasingPreset::easeIn: return InterpolationMode::easeIn;
    case EasingPreset::easeOut: return InterpolationMode::easeOut;
    case EasingPreset::linear: return InterpolationMode::linear;
    case EasingPreset::hold: return InterpolationMode::hold;
  }
  return InterpolationMode::linear;
}

std::optional<core::BezierHandles> handles(EasingPreset preset) {
  if (preset == EasingPreset::easyEase) return core::BezierHandles::smooth;
  return std::nullopt;
}

// ------------------------------------------------------------------ routing

void applyLayerChange(ProjectDocument& doc, const Uuid& layerID, std::string_view actionName, bool interactive,
                      UndoStack* undo, const std::function<void(Layer&)>& change) {
  if (!interactive) {
    doc.updateLayer(layerID, actionName, undo, change);
    return;
  }
  doc.updateInteraction([&](core::OVProject& project) {
    project.updateActiveComposition([&](core::Composition& c) { c.update(layerID, change); });
  });
}

void modifyProperty(ProjectDocument& doc, const PropertyAddress& address, std::string_view actionName,
                    UndoStack* undo, const std::function<void(AnimatedProperty&)>& body) {
  editProperty(doc, address, actionName, false, undo, body);
}

// ------------------------------------------------------------------ queries

bool hasKeyframe(const ProjectDocument& doc, const PropertyAddress& address, const OVTime& time) {
  const auto property = propertyAt(doc, address);
  return property && property->hasKeyframeAt(doc.frameSnapped(time));
}

std::optional<Keyframe> keyframe(const ProjectDocument& doc, const KeyframeRef& ref) {
  const auto property = propertyAt(doc, ref.address);
  const Keyframe* k = property ? property->keyframe(ref.id) : nullptr;
  if (!k) return std::nullopt;
  return *k;
}

std::vector<KeyframeRef> keyframeRefs(const ProjectDocument& doc, const PropertyAddress& address) {
  std::vector<KeyframeRef> refs;
  if (const auto property = propertyAt(doc, address))
    for (const Keyframe& k : property->keyframes()) refs.push_back({address, k.id});
  return refs;
}

std::optional<KeyframeRef> keyframeRefAt(const ProjectDocument& doc, const PropertyAddress& address,
                                         const OVTime& time) {
  const auto property = propertyAt(doc, address);
  const Keyframe* k = property ? property->keyframeAt(doc.frameSnapped(time)) : nullptr;
  if (!k) return std::nullopt;
  return KeyframeRef{address, k->id};
}

std::optional<OVTime> keyframeTimeBefore(const ProjectDocument& doc, const PropertyAddress& address,
                                         const OVTime& time) {
  const auto property = propertyAt(doc, address);
  const Keyframe* k = property ? property->keyframeBefore(time) : nullptr;
  if (!k) return std::nullopt;
  return k->time;
}

std::optional<OVTime> keyframeTimeAfter(const ProjectDocument& doc, const PropertyAddress& address,
                                        const OVTime& time) {
  const auto property = propertyAt(doc, address);
  const Keyframe* k = property ? property->keyframeAfter(time) : nullptr;
  if (!k) return std::nullopt;
  return k->time;
}

std::optional<InterpolationMode> sharedInterpolation(const ProjectDocument& doc,
                                                     const std::vector<KeyframeRef>& refs) {
  std::set<InterpolationMode> modes;
  for (const KeyframeRef& ref : refs)
    if (const auto k = keyframe(doc, ref)) modes.insert(k->mode);
  if (modes.size() != 1) return std::nullopt;
  return *modes.begin();
}

// ------------------------------------------------------ values and keyframes

void setPropertyValue(ProjectDocument& doc, const PropertyValue& value, const PropertyAddress& address,
                      const OVTime& time, bool animationEnabled, bool interactive, UndoStack* undo) {
  const OVTime t = doc.frameSnapped(time);
  editProperty(doc, address, setActionName(doc, address), interactive, undo,
               [&](AnimatedProperty& p) { p.setValue(value, t, animationEnabled); });
}

void addKeyframe(ProjectDocument& doc, const PropertyAddress& address, const OVTime& time, UndoStack* undo) {
  const OVTime t = doc.frameSnapped(time);
  modifyProperty(doc, address, "Add Keyframe", undo, [&](AnimatedProperty& p) { p.addKeyframeAt(t); });
}

void removeKeyframe(ProjectDocument& doc, const PropertyAddress& address, const OVTime& time, UndoStack* undo) {
  const OVTime t = doc.frameSnapped(time);
  modifyProperty(doc, address, "Delete Keyframe", undo, [&](AnimatedProperty& p) { p.removeKeyframeAt(t); });
}

void toggleKeyframe(ProjectDocument& doc, const PropertyAddress& address, const OVTime& time, UndoStack* undo) {
  if (!propertyAt(doc, address)) return;
  if (hasKeyframe(doc, address, time))
    removeKeyframe(doc, address, time, undo);
  else
    addKeyframe(doc, address, time, undo);
}

void removeKeyframes(ProjectDocument& doc, const std::vector<KeyframeRef>& refs, UndoStack* undo) {
  if (refs.empty()) return;
  editRefs(doc, refs, refs.size() == 1 ? "Delete Keyframe" : "Delete Keyframes", false, undo,
           [](const KeyframeRef& ref, AnimatedProperty& p) { p.removeKeyframe(ref.id); });
}

void setAnimated(ProjectDocument& doc, bool enabled, const PropertyAddress& address, const OVTime& time,
                 UndoStack* undo) {
  const OVTime t = doc.frameSnapped(time);
  if (!enabled) {
    modifyProperty(doc, address, "Remove Animation", undo, [&](AnimatedProperty& p) { p.removeAllKeyframes(t); });
    return;
  }
  const auto property = propertyAt(doc, address);
  if (!property || property->isAnimated()) return;
  modifyProperty(doc, address, "Enable Animation", undo, [&](AnimatedProperty& p) { p.addKeyframeAt(t); });
}

void moveKeyframe(ProjectDocument& doc, const PropertyAddress& address, const Uuid& id, const OVTime& time,
                  bool interactive, UndoStack* undo) {
  const OVTime t = doc.frameSnapped(time);
  editProperty(doc, address, "Move Keyframe", interactive, undo,
               [&](AnimatedProperty& p) { p.moveKeyframe(id, t); });
}

void moveKeyframes(ProjectDocument& doc, const std::unordered_map<KeyframeRef, OVTime>& moves, bool interactive,
                   UndoStack* undo) {
  if (moves.empty()) return;
  std::vector<KeyframeRef> refs;
  std::unordered_map<KeyframeRef, OVTime> targets;
  for (const auto& [ref, time] : moves) {
    refs.push_back(ref);
    targets.emplace(ref, doc.frameSnapped(time));
  }
  editRefs(doc, refs, moves.size() == 1 ? "Move Keyframe" : "Move Keyframes", interactive, undo,
           [&](const KeyframeRef& ref, AnimatedProperty& p) { p.moveKeyframe(ref.id, targets.at(ref)); });
}

void setKeyframeValue(ProjectDocument& doc, const PropertyValue& value, const PropertyAddress& address,
                      const Uuid& id, bool interactive, UndoStack* undo) {
  updateKey(doc, address, id, setActionName(doc, address), interactive, undo, [&](Keyframe& k) { k.value = value; });
}

void setKeyframeComponent(ProjectDocument& doc, double number, GraphComponent component,
                          const PropertyAddress& address, const Uuid& id, bool interactive, UndoStack* undo) {
  const auto k = keyframe(doc, {address, id});
  if (!k) return;
  if (const auto value = replacingComponent(k->value, component, number))
    setKeyframeValue(doc, *value, address, id, interactive, undo);
}

// ------------------------------------------------------------------- easing

void setKeyframeInterpolation(ProjectDocument& doc, const PropertyAddress& address, const Uuid& id,
                              InterpolationMode mode, UndoStack* undo) {
  updateKey(doc, address, id, "Set Interpolation", false, undo, [&](Keyframe& k) {
    k.mode = mode;
    if (mode == InterpolationMode::bezier && !k.handles) k.handles = core::BezierHandles::smooth;
  });
}

void setKeyframeHandles(ProjectDocument& doc, const PropertyAddress& address, const Uuid& id,
                        const core::BezierHandles& handles, bool interactive, UndoStack* undo) {
  updateKey(doc, address, id, "Adjust Easing", interactive, undo, [&](Keyframe& k) { k.handles = handles; });
}

void setInterpolation(ProjectDocument& doc, InterpolationMode mode, const std::optional<core::BezierHandles>& handles,
                      const std::vector<KeyframeRef>& refs, UndoStack* undo) {
  if (refs.empty()) return;
  editRefs(doc, refs, "Set Easing", false, undo, [&](const KeyframeRef& ref, AnimatedProperty& p) {
    p.updateKeyframe(ref.id, [&](Keyframe& k) {
      k.mode = mode;
      if (handles)
        k.handles = handles;
      else if (mode == InterpolationMode::bezier && !k.handles)
        k.handles = core::BezierHandles::smooth;
    });
  });
}

void applyEasing(ProjectDocument& doc, EasingPreset preset, const std::vector<KeyframeRef>& refs, UndoStack* undo) {
  setInterpolation(doc, mode(preset), handles(preset), refs, undo);
}

// -------------------------------------------------------------- motion path

void setSpatialInterpolation(ProjectDocument& doc, core::SpatialInterpolation mode, const PropertyAddress& address,
                             const Uuid& id, UndoStack* undo) {
  setSpatialInterpolation(doc, mode, std::vector<KeyframeRef>{{address, id}}, undo);
}

void setSpatialInterpolation(ProjectDocument& doc, core::SpatialInterpolation mode,
                             const std::vector<KeyframeRef>& refs, UndoStack* undo) {
  if (refs.empty()) return;
  std::unordered_map<PropertyAddress, std::unordered_set<Uuid>> groups;
  std::vector<KeyframeRef> firsts;  // one ref per address, in input order
  for (const KeyframeRef& ref : refs) {
    auto [it, inserted] = groups.try_emplace(ref.address);
    it->second.insert(ref.id);
    if (inserted) firsts.push_back(ref);
  }
  editRefs(doc, firsts, "Set Spatial Interpolation", false, undo, [&](const KeyframeRef& ref, AnimatedProperty& p) {
    p.applySpatialInterpolation(groups.at(ref.address), mode);
  });
}

void setSpatialHandles(ProjectDocument& doc, const PropertyAddress& address, const Uuid& id,
                       const core::SpatialHandles& handles, bool interactive, UndoStack* undo) {
  updateKey(doc, address, id, "Adjust Motion Path", interactive, undo,
            [&](Keyframe& k) { k.spatialHandles = handles; });
}

}  // namespace orvane::commands
