#include "Commands/property_address.hpp"

#include <algorithm>

#include "core/effect_catalog.hpp"
#include "core/hashing.hpp"

namespace orvane::commands {

using core::AnimatedProperty;
using core::EffectInstance;
using core::Layer;
using core::LayerMask;
using core::Uuid;
using Kind = PropertyAddress::Kind;

namespace {

const EffectInstance* findEffect(const Layer& layer, const Uuid& id) {
  const auto& effects = layer.effects.items();
  auto it = std::ranges::find(effects, id, &EffectInstance::id);
  return it == effects.end() ? nullptr : &*it;
}

std::optional<std::size_t> indexOfEffect(const Layer& layer, const Uuid& id) {
  const auto& effects = layer.effects.items();
  auto it = std::ranges::find(effects, id, &EffectInstance::id);
  if (it == effects.end()) return std::nullopt;
  return static_cast<std::size_t>(it - effects.begin());
}

std::optional<std::size_t> indexOfMask(const Layer& layer, const Uuid& id) {
  const auto& masks = layer.masks.items();
  auto it = std::ranges::find(masks, id, &LayerMask::id);
  if (it == masks.end()) return std::nullopt;
  return static_cast<std::size_t>(it - masks.begin());
}

// The catalog's default for a parameter of an effect; none when either is
// unknown to the catalog.
std::optional<AnimatedProperty> defaultParameter(const std::string& effectID, const std::string& parameterID) {
  const core::EffectDescriptor* descriptor = core::EffectCatalog::descriptorFor(effectID);
  if (!descriptor) return std::nullopt;
  const core::EffectParameterDescriptor* parameter = descriptor->parameter(parameterID);
  if (!parameter) return std::nullopt;
  return AnimatedProperty(parameter->defaultValue);
}

// The property of a kind other than effect parameter; null when a mask is missing.
template <class L>
auto* plainProperty(L& layer, const PropertyAddress& a) {
  using P = decltype(&layer.textReveal);
  switch (a.kind) {
    case Kind::transform: return P{&layer.transform[a.channel]};
    case Kind::crop: return P{&layer.crop[a.edge]};
    case Kind::textReveal: return P{&layer.textReveal};
    case Kind::audioVolume: return P{&layer.audio.volume};
    case Kind::audioPan: return P{&layer.audio.pan};
    case Kind::maskPath:
    case Kind::maskFeather:
    case Kind::effectParameter: break;
  }
  return P{nullptr};
}

}  // namespace

PropertyAddress PropertyAddress::transform(const Uuid& layerID, core::LayerTransform::Channel channel) {
  return {.kind = Kind::transform, .layerID = layerID, .channel = channel};
}

PropertyAddress PropertyAddress::crop(const Uuid& layerID, core::LayerCrop::Edge edge) {
  return {.kind = Kind::crop, .layerID = layerID, .edge = edge};
}

PropertyAddress PropertyAddress::maskPath(const Uuid& layerID, const Uuid& maskID) {
  return {.kind = Kind::maskPath, .layerID = layerID, .maskID = maskID};
}

PropertyAddress PropertyAddress::maskFeather(const Uuid& layerID, const Uuid& maskID) {
  return {.kind = Kind::maskFeather, .layerID = layerID, .maskID = maskID};
}

PropertyAddress PropertyAddress::textReveal(const Uuid& layerID) {
  return {.kind = Kind::textReveal, .layerID = layerID};
}

PropertyAddress PropertyAddress::audioVolume(const Uuid& layerID) {
  return {.kind = Kind::audioVolume, .layerID = layerID};
}

PropertyAddress PropertyAddress::audioPan(const Uuid& layerID) { return {.kind = Kind::audioPan, .layerID = layerID}; }

PropertyAddress PropertyAddress::effectParameter(const Uuid& layerID, const Uuid& effectID, std::string parameterID) {
  return {.kind = Kind::effectParameter,
          .layerID = layerID,
          .effectID = effectID,
          .parameterID = std::move(parameterID)};
}

std::string PropertyAddress::key() const {
  const std::string layer = layerID.text();
  switch (kind) {
    case Kind::transform: return "t:" + layer + ":" + std::string(core::rawValue(channel));
    case Kind::crop: return "c:" + layer + ":" + std::string(core::rawValue(edge));
    case Kind::maskPath: return "m:" + layer + ":" + maskID.text();
    case Kind::maskFeather: return "mf:" + layer + ":" + maskID.text();
    case Kind::textReveal: return "tr:" + layer;
    case Kind::audioVolume: return "av:" + layer;
    case Kind::audioPan: return "ap:" + layer;
    case Kind::effectParameter: return "e:" + layer + ":" + effectID.text() + ":" + parameterID;
  }
  return {};
}

std::string PropertyAddress::displayName(const Layer* layer) const {
  switch (kind) {
    case Kind::transform: return std::string(core::displayName(channel));
    case Kind::crop: return "Crop " + std::string(core::displayName(edge));
    case Kind::maskPath: return "Mask Path";
    case Kind::maskFeather: return "Mask Feather";
    case Kind::textReveal: return "Type On";
    case Kind::audioVolume: return "Volume";
    case Kind::audioPan: return "Pan";
    case Kind::effectParameter: break;
  }
  const EffectInstance* instance = layer ? findEffect(*layer, effectID) : nullptr;
  const core::EffectDescriptor* descriptor =
      instance ? core::EffectCatalog::descriptorFor(instance->effectID) : nullptr;
  const core::EffectParameterDescriptor* parameter = descriptor ? descriptor->parameter(parameterID) : nullptr;
  return parameter ? parameter->name : parameterID;
}

bool PropertyAddress::isSpatial() const {
  return kind == Kind::transform &&
         (channel == core::LayerTransform::Channel::position || channel == core::LayerTransform::Channel::anchorPoint);
}

std::optional<ClipboardChannel> PropertyAddress::clipboardChannel(const Layer* layer) const {
  using CK = ClipboardChannel::Kind;
  ClipboardChannel c;
  switch (kind) {
    case Kind::transform: c.kind = CK::transform; c.channel = channel; return c;
    case Kind::crop: c.kind = CK::crop; c.edge = edge; return c;
    case Kind::textReveal: c.kind = CK::textReveal; return c;
    case Kind::audioVolume: c.kind = CK::audioVolume; return c;
    case Kind::audioPan: c.kind = CK::audioPan; return c;
    case Kind::maskPath:
    case Kind::maskFeather: return std::nullopt;
    case Kind::effectParameter: break;
  }
  const EffectInstance* instance = layer ? findEffect(*layer, effectID) : nullptr;
  if (!instance) return std::nullopt;
  c.kind = CK::effectParameter;
  c.effectID = instance->effectID;
  c.parameterID = parameterID;
  return c;
}

bool operator==(const PropertyAddress& a, const PropertyAddress& b) {
  if (a.kind != b.kind || a.layerID != b.layerID) return false;
  switch (a.kind) {
    case Kind::transform: return a.channel == b.channel;
    case Kind::crop: return a.edge == b.edge;
    case Kind::maskPath:
    case Kind::maskFeather: return a.maskID == b.maskID;
    case Kind::textReveal:
    case Kind::audioVolume:
    case Kind::audioPan: return true;
    case Kind::effectParameter: return a.effectID == b.effectID && a.parameterID == b.parameterID;
  }
  return true;
}

std::size_t hashValue(const PropertyAddress& a) {
  switch (a.kind) {
    case Kind::transform: return core::hashAll(a.kind, a.layerID, a.channel);
    case Kind::crop: return core::hashAll(a.kind, a.layerID, a.edge);
    case Kind::maskPath:
    case Kind::maskFeather: return core::hashAll(a.kind, a.layerID, a.maskID);
    case Kind::textReveal:
    case Kind::audioVolume:
    case Kind::audioPan: break;
    case Kind::effectParameter: return core::hashAll(a.kind, a.layerID, a.effectID, a.parameterID);
  }
  return core::hashAll(a.kind, a.layerID);
}

std::size_t hashValue(const KeyframeRef& r) { return core::hashAll(hashValue(r.address), r.id); }

std::optional<PropertyAddress> addressOn(const Layer& layer, const ClipboardChannel& channel) {
  using CK = ClipboardChannel::Kind;
  switch (channel.kind) {
    case CK::transform: return PropertyAddress::transform(layer.id, channel.channel);
    case CK::crop: return PropertyAddress::crop(layer.id, channel.edge);
    case CK::audioVolume: return PropertyAddress::audioVolume(layer.id);
    case CK::audioPan: return PropertyAddress::audioPan(layer.id);
    case CK::textReveal: return PropertyAddress::textReveal(layer.id);
    case CK::effectParameter: break;
  }
  const auto& effects = layer.effects.items();
  auto it = std::ranges::find(effects, channel.effectID, &EffectInstance::effectID);
  if (it == effects.end()) return std::nullopt;
  return PropertyAddress::effectParameter(layer.id, it->id, channel.parameterID);
}

std::optional<AnimatedProperty> propertyOf(const Layer& layer, const PropertyAddress& address) {
  if (const AnimatedProperty* p = plainProperty(layer, address)) return *p;
  if (address.kind == Kind::maskPath || address.kind == Kind::maskFeather) {
    const auto index = indexOfMask(layer, address.maskID);
    if (!index) return std::nullopt;
    const LayerMask& mask = layer.masks[*index];
    return address.kind == Kind::maskPath ? mask.path : mask.feather;
  }
  const EffectInstance* instance = findEffect(layer, address.effectID);
  if (!instance) return std::nullopt;
  if (auto it = instance->parameters.find(address.parameterID); it != instance->parameters.end()) return it->second;
  return defaultParameter(instance->effectID, address.parameterID);
}

std::optional<AnimatedProperty> propertyAt(const document::ProjectDocument& doc, const PropertyAddress& address) {
  const core::Composition* composition = doc.activeComposition();
  const Layer* layer = composition ? composition->layer(address.layerID) : nullptr;
  if (!layer) return std::nullopt;
  return propertyOf(*layer, address);
}

bool mutateProperty(Layer& layer, const PropertyAddress& address,
                    const std::function<void(AnimatedProperty&)>& body) {
  if (AnimatedProperty* p = plainProperty(layer, address)) {
    body(*p);
    return true;
  }
  if (address.kind == Kind::maskPath || address.kind == Kind::maskFeather) {
    const auto index = indexOfMask(layer, address.maskID);
    if (!index) return false;
    LayerMask& mask = layer.masks.mutate()[*index];
    body(address.kind == Kind::maskPath ? mask.path : mask.feather);
    return true;
  }
  const auto index = indexOfEffect(layer, address.effectID);
  if (!index) return false;
  const EffectInstance& stored = layer.effects[*index];
  if (stored.parameters.contains(address.parameterID)) {
    body(layer.effects.mutate()[*index].parameters[address.parameterID]);
    return true;
  }
  const std::optional<AnimatedProperty> untouched = defaultParameter(stored.effectID, address.parameterID);
  if (!untouched) return false;
  AnimatedProperty property = *untouched;
  body(property);
  // A parameter is stored only once it differs from untouched, so that a
  // body that changes nothing leaves the layer equal.
  if (property != *untouched)
    layer.effects.mutate()[*index].parameters.emplace(address.parameterID, std::move(property));
  return true;
}

}  // namespace orvane::commands
