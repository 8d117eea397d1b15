// The tools that add effects, set effect parameters and keyframe the
// transform. Of all the tools only add_keyframe insists that the layer
// exists.

#include <optional>

#include "assistant/ai_tool_handlers.hpp"
#include "core/effect_catalog.hpp"

namespace orvane::assistant::tools {

namespace {

constexpr std::size_t kExampleEffectCount = 12;

std::string exampleEffectIDs() {
  std::string text;
  const std::vector<core::EffectDescriptor>& all = core::EffectCatalog::all();
  for (std::size_t i = 0; i < all.size() && i < kExampleEffectCount; ++i) {
    if (i > 0) text += ", ";
    text += all[i].id;
  }
  return text;
}

// value as the kind the property already holds; none when it does not fit.
std::optional<core::PropertyValue> converted(const nlohmann::json& value, core::PropertyValue::Kind kind) {
  using Kind = core::PropertyValue::Kind;
  switch (kind) {
    case Kind::point: {
      if (!value.is_object()) return std::nullopt;
      const auto x = value.find("x"), y = value.find("y");
      if (x == value.end() || y == value.end()) return std::nullopt;
      const std::optional<double> px = numberFrom(*x), py = numberFrom(*y);
      if (!px || !py) return std::nullopt;
      return core::PropertyValue::point(*px, *py);
    }
    case Kind::color: {
      const std::optional<core::OVColor> color = parseColor(value);
      return color ? std::optional(core::PropertyValue::color(*color)) : std::nullopt;
    }
    case Kind::bool_:
      if (value.is_boolean()) return core::PropertyValue::bool_(value.get<bool>());
      if (value.is_number()) return core::PropertyValue::bool_(value.get<double>() != 0);
      if (value.is_string()) return core::PropertyValue::bool_(isTruthyText(value.get_ref<const std::string&>()));
      return std::nullopt;
    default: {
      const std::optional<double> number = numberFrom(value);
      return number ? std::optional(core::PropertyValue::double_(*number)) : std::nullopt;
    }
  }
}

void setParameters(core::EffectInstance& instance, const nlohmann::json& parameters) {
  const core::EffectDescriptor* descriptor = core::EffectCatalog::descriptorFor(instance.effectID);
  for (const auto& [key, value] : parameters.items()) {
    std::optional<core::AnimatedProperty> property;
    if (const auto it = instance.parameters.find(key); it != instance.parameters.end()) {
      property = it->second;
    } else if (const core::EffectParameterDescriptor* parameter =
                   descriptor != nullptr ? descriptor->parameter(key) : nullptr) {
      property = core::AnimatedProperty(parameter->defaultValue);
    }
    if (!property) continue;
    const std::optional<core::PropertyValue> v = converted(value, property->baseValue.kind());
    if (!v) continue;
    property->setValue(*v, core::OVTime::zero, false);
    instance.parameters[key] = std::move(*property);
  }
}

}  // namespace

std::string addEffect(ToolContext& context) {
  const core::Uuid layerID = context.args.uuid("layer_id");
  const std::string effectID = context.args.requireString("effect_id");
  const core::EffectDescriptor* descriptor = core::EffectCatalog::descriptorFor(effectID);
  if (descriptor == nullptr)
    throw ToolError("Unknown effect_id '" + effectID + "'. Examples: " + exampleEffectIDs());
  core::EffectInstance instance = descriptor->makeInstance();
  instance.id = core::Uuid::make();
  mutateLayer(context.document, layerID, [&](core::Layer& layer) { layer.effects.mutate().push_back(instance); });
  return "Added effect '" + descriptor->name + "' (" + instance.id.text() + ") to layer " + layerID.text() + ".";
}

std::string setEffectParameters(ToolContext& context) {
  const core::Uuid layerID = context.args.uuid("layer_id");
  const core::Uuid instanceID = context.args.uuid("effect_instance_id");
  const std::optional<nlohmann::json> parameters = context.args.object("parameters");
  if (!parameters) throw ToolError("parameters object required");
  mutateLayer(context.document, layerID, [&](core::Layer& layer) {
    const std::vector<core::EffectInstance>& effects = layer.effects.items();
    for (std::size_t i = 0; i < effects.size(); ++i) {
      if (effects[i].id != instanceID) continue;
      setParameters(layer.effects.mutate()[i], *parameters);
      return;
    }
  });
  return "Updated parameters on effect " + instanceID.text() + ".";
}

namespace {

core::InterpolationMode easingMode(const std::optional<std::string>& easing) {
  const std::string text = easing.value_or("ease");
  if (text == "hold") return core::InterpolationMode::hold;
  if (text == "linear") return core::InterpolationMode::linear;
  return core::InterpolationMode::easeInOut;
}

}  // namespace

std::string addKeyframe(ToolContext& context) {
  const Args& args = context.args;
  const core::Uuid layerID = args.uuid("layer_id");
  const std::string property = args.requireString("property");
  const std::optional<core::LayerTransform::Channel> channel = core::fromRaw<core::LayerTransform::Channel>(property);
  if (!channel)
    throw ToolError("Unknown property '" + property + "'. Use position, scale, rotation, opacity or anchorPoint.");
  const double seconds = args.double_("time_seconds").value_or(0);
  const core::OVTime time = timeFromSeconds(seconds, "time_seconds");

  core::PropertyValue value;
  if (*channel == core::LayerTransform::Channel::rotation || *channel == core::LayerTransform::Channel::opacity) {
    const std::optional<double> number = args.double_("value");
    if (!number) throw ToolError(property + " needs value.");
    value = core::PropertyValue::double_(*number);
  } else {
    const std::optional<double> x = args.double_("x"), y = args.double_("y");
    if (!x || !y) throw ToolError(property + " needs x and y.");
    value = core::PropertyValue::point(*x, *y);
  }
  const core::InterpolationMode mode = easingMode(args.string("easing"));

  mutate(context.document, [&](core::OVProject& project) {
    const core::Composition& active = requireActiveComposition(project);
    if (active.layer(layerID) == nullptr) throw ToolError("No layer with id " + layerID.text() + ".");
    // On the layer's property clock as given: no shift by the layer's start.
    const core::OVTime snapped = active.frameRate.snapped(time);
    const core::Uuid compositionID = active.id;
    project.updateComposition(compositionID, [&](core::Composition& c) {
      c.update(layerID, [&](core::Layer& layer) {
        layer.transform[*channel].upsertKeyframe(value, snapped, mode, std::nullopt);
      });
    });
  });
  return "Keyframed " + property + " at " + decimalText(seconds) + "s on layer " + layerID.text() + ".";
}

}  // namespace orvane::assistant::tools
