#pragma once
// The address of every animatable property of a layer, and of one keyframe
// in it. Addresses are how the inspector, the timeline, the clipboard and
// the assistant name a property; propertyOf/propertyAt (reading) and
// mutateProperty (writing) are the one place where an address resolves.
// Plain values; the resolvers are pure.

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "Commands/clipboard_channel.hpp"
#include "core/animated_property.hpp"
#include "core/layer.hpp"
#include "core/layer_parts.hpp"
#include "core/uuid.hpp"
#include "document/project_document.hpp"

namespace orvane::commands {

struct PropertyAddress {
  enum class Kind { transform, crop, maskPath, maskFeather, textReveal, audioVolume, audioPan, effectParameter };

  Kind kind = Kind::transform;
  core::Uuid layerID;
  core::LayerTransform::Channel channel = core::LayerTransform::Channel::position;  // transform
  core::LayerCrop::Edge edge = core::LayerCrop::Edge::left;                          // crop
  core::Uuid maskID;        // maskPath, maskFeather
  core::Uuid effectID;      // effectParameter: the instance's id
  std::string parameterID;  // effectParameter

  static PropertyAddress transform(const core::Uuid& layerID, core::LayerTransform::Channel channel);
  static PropertyAddress crop(const core::Uuid& layerID, core::LayerCrop::Edge edge);
  static PropertyAddress maskPath(const core::Uuid& layerID, const core::Uuid& maskID);
  static PropertyAddress maskFeather(const core::Uuid& layerID, const core::Uuid& maskID);
  static PropertyAddress textReveal(const core::Uuid& layerID);
  static PropertyAddress audioVolume(const core::Uuid& layerID);
  static PropertyAddress audioPan(const core::Uuid& layerID);
  static PropertyAddress effectParameter(const core::Uuid& layerID, const core::Uuid& effectID,
                                         std::string parameterID);

  // "t:<layer>:position", "c:<layer>:left", "m:<layer>:<mask>",
  // "mf:<layer>:<mask>", "tr:<layer>", "av:<layer>", "ap:<layer>",
  // "e:<layer>:<effect>:<parameter>"; UUIDs in upper case.
  std::string key() const;
  // The name users see. An effect parameter's name comes from the catalog
  // through the effect instance on layer; without it, the parameter id.
  std::string displayName(const core::Layer* layer = nullptr) const;
  // Position and anchor point: the only properties with a motion path.
  bool isSpatial() const;
  // The clipboard channel; none for masks, and for an effect parameter
  // whose instance is not on layer.
  std::optional<ClipboardChannel> clipboardChannel(const core::Layer* layer) const;

  friend bool operator==(const PropertyAddress& a, const PropertyAddress& b);
};
std::size_t hashValue(const PropertyAddress& a);

// The address of channel on layer; for an effect parameter the first
// instance of that catalog id. None when the layer has no such effect.
std::optional<PropertyAddress> addressOn(const core::Layer& layer, const ClipboardChannel& channel);

struct KeyframeRef {
  PropertyAddress address;
  core::Uuid id;

  friend bool operator==(const KeyframeRef&, const KeyframeRef&) = default;
};
std::size_t hashValue(const KeyframeRef& r);

// The property at address on layer (its layer id is not checked). An
// effect parameter not stored yet reads as a fresh property at the
// catalog's default. None for a missing mask or effect, and for an effect
// or parameter unknown to the catalog that is not stored.
std::optional<core::AnimatedProperty> propertyOf(const core::Layer& layer, const PropertyAddress& address);
// The same, finding the layer in the active composition.
std::optional<core::AnimatedProperty> propertyAt(const document::ProjectDocument& doc,
                                                 const PropertyAddress& address);
// Runs body on the property in place. An effect parameter not stored yet
// starts from the catalog default and is stored after body. Returns false,
// running nothing, when the address does not resolve.
bool mutateProperty(core::Layer& layer, const PropertyAddress& address,
                    const std::function<void(core::AnimatedProperty&)>& body);

}  // namespace orvane::commands

template <>
struct std::hash<orvane::commands::PropertyAddress> {
  std::size_t operator()(const orvane::commands::PropertyAddress& a) const { return hashValue(a); }
};
template <>
struct std::hash<orvane::commands::KeyframeRef> {
  std::size_t operator()(const orvane::commands::KeyframeRef& r) const { return hashValue(r); }
};
