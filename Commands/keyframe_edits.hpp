#pragma once
// Keyframe and property value edits on the document: values with or
// without animation, adding, removing and moving keys, easing and motion
// path handles. Every time that enters a keyframe operation is snapped to
// the active composition's frames first, so two edits at one displayed
// frame meet the same key. Main thread, like the document.

#include <array>
#include <functional>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Commands/property_address.hpp"
#include "core/easing.hpp"
#include "core/keyframe.hpp"
#include "core/ov_time.hpp"
#include "core/property_value.hpp"
#include "core/spatial_path.hpp"
#include "document/project_document.hpp"
#include "document/undo_stack.hpp"

namespace orvane::commands {

// The curve of a value the graph editor draws: a number, or one coordinate
// of a point or size.
enum class GraphComponent { scalar, x, y };

// value with component set to number: a double replaced, an integer rounded
// half away from zero, a point's x or y, a size's width or height. None for
// any other pairing.
std::optional<core::PropertyValue> replacingComponent(const core::PropertyValue& value, GraphComponent component,
                                                      double number);

// The easing buttons of the keyframe menu.
enum class EasingPreset { easyEase, easeIn, easeOut, linear, hold };

std::string_view symbolName(EasingPreset preset);
core::InterpolationMode mode(EasingPreset preset);
std::optional<core::BezierHandles> handles(EasingPreset preset);

// --- Routing ---
// change on the layer in the active composition: a live update of the
// running interaction when interactive, else one step named actionName.
void applyLayerChange(document::ProjectDocument& doc, const core::Uuid& layerID, std::string_view actionName,
                      bool interactive, document::UndoStack* undo,
                      const std::function<void(core::Layer&)>& change);
// body on the property at address, as one step named actionName.
void modifyProperty(document::ProjectDocument& doc, const PropertyAddress& address, std::string_view actionName,
                    document::UndoStack* undo, const std::function<void(core::AnimatedProperty&)>& body);

// --- Queries ---
bool hasKeyframe(const document::ProjectDocument& doc, const PropertyAddress& address, const core::OVTime& time);
std::optional<core::Keyframe> keyframe(const document::ProjectDocument& doc, const KeyframeRef& ref);
// In time order.
std::vector<KeyframeRef> keyframeRefs(const document::ProjectDocument& doc, const PropertyAddress& address);
std::optional<KeyframeRef> keyframeRefAt(const document::ProjectDocument& doc, const PropertyAddress& address,
                                         const core::OVTime& time);
std::optional<core::OVTime> keyframeTimeBefore(const document::ProjectDocument& doc,
                                               const PropertyAddress& address, const core::OVTime& time);
std::optional<core::OVTime> keyframeTimeAfter(const document::ProjectDocument& doc,
                                              const PropertyAddress& address, const core::OVTime& time);
// The mode all found keyframes share; none when they differ or none is found.
std::optional<core::InterpolationMode> sharedInterpolation(const document::ProjectDocument& doc,
                                                           const std::vector<KeyframeRef>& refs);

// --- Values and keyframes ---
// A key at time when animationEnabled or already animated, else the base value.
void setPropertyValue(document::ProjectDocument& doc, const core::PropertyValue& value,
                      const PropertyAddress& address, const core::OVTime& time, bool animationEnabled,
                      bool interactive, document::UndoStack* undo);
void addKeyframe(document::ProjectDocument& doc, const PropertyAddress& address, const core::OVTime& time,
                 document::UndoStack* undo);
void removeKeyframe(document::ProjectDocument& doc, const PropertyAddress& address, const core::OVTime& time,
                    document::UndoStack* undo);
void toggleKeyframe(document::ProjectDocument& doc, const PropertyAddress& address, const core::OVTime& time,
                    document::UndoStack* undo);
void removeKeyframes(document::ProjectDocument& doc, const std::vector<KeyframeRef>& refs,
                     document::UndoStack* undo);
// The stopwatch: on adds a key at time to an unanimated property; off drops
// every key, keeping the value shown at time.
void setAnimated(document::ProjectDocument& doc, bool enabled, const PropertyAddress& address,
                 const core::OVTime& time, document::UndoStack* undo);
void moveKeyframe(document::ProjectDocument& doc, const PropertyAddress& address, const core::Uuid& id,
                  const core::OVTime& time, bool interactive, document::UndoStack* undo);
void moveKeyframes(document::ProjectDocument& doc, const std::unordered_map<KeyframeRef, core::OVTime>& moves,
                   bool interactive, document::UndoStack* undo);
void setKeyframeValue(document::ProjectDocument& doc, const core::PropertyValue& value,
                      const PropertyAddress& address, const core::Uuid& id, bool interactive,
                      document::UndoStack* undo);
void setKeyframeComponent(document::ProjectDocument& doc, double number, GraphComponent component,
                          const PropertyAddress& address, const core::Uuid& id, bool interactive,
                          document::UndoStack* undo);

// --- Easing ---
// bezier gives smooth handles to a key that has none.
void setKeyframeInterpolation(document::ProjectDocument& doc, const PropertyAddress& address,
                              const core::Uuid& id, core::InterpolationMode mode, document::UndoStack* undo);
void setKeyframeHandles(document::ProjectDocument& doc, const PropertyAddress& address, const core::Uuid& id,
                        const core::BezierHandles& handles, bool interactive, document::UndoStack* undo);
// Without handles, other modes keep the stored ones, so going back to
// bezier restores them.
void setInterpolation(document::ProjectDocument& doc, core::InterpolationMode mode,
                      const std::optional<core::BezierHandles>& handles, const std::vector<KeyframeRef>& refs,
                      document::UndoStack* undo);
void applyEasing(document::ProjectDocument& doc, EasingPreset preset, const std::vector<KeyframeRef>& refs,
                 document::UndoStack* undo);

// --- Motion path ---
void setSpatialInterpolation(document::ProjectDocument& doc, core::SpatialInterpolation mode,
                             const PropertyAddress& address, const core::Uuid& id, document::UndoStack* undo);
void setSpatialInterpolation(document::ProjectDocument& doc, core::SpatialInterpolation mode,
                             const std::vector<KeyframeRef>& refs, document::UndoStack* undo);
void setSpatialHandles(document::ProjectDocument& doc, const PropertyAddress& address, const core::Uuid& id,
                       const core::SpatialHandles& handles, bool interactive, document::UndoStack* undo);

}  // namespace orvane::commands

template <>
struct orvane::core::EnumTable<orvane::commands::EasingPreset> {
  using P = orvane::commands::EasingPreset;
  static constexpr std::array<EnumEntry<P>, 5> entries{{
      {P::easyEase, "easyEase", "Easy Ease"},
      {P::easeIn, "easeIn", "Ease In"},
      {P::easeOut, "easeOut", "Ease Out"},
      {P::linear, "linear", "Linear"},
      {P::hold, "hold", "Hold"},
  }};
};
