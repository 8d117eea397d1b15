// The tools that change one layer's own settings (name, timing, transform
// constants, text, blend mode) and apply_behavior. A layer id that names no
// layer of the active composition changes nothing and still succeeds: the
// model learns of missing layers from the project text it is sent.

#include <algorithm>
#include <optional>

#include "assistant/ai_tool_handlers.hpp"
#include "behaviors/apply_behavior.hpp"
#include "behaviors/behavior.hpp"
#include "behaviors/behavior_catalog.hpp"

namespace orvane::assistant::tools {

namespace {

// A constant: on an unkeyed property it replaces the base value.
void setConstant(core::AnimatedProperty& property, const core::PropertyValue& value) {
  property.setValue(value, core::OVTime::zero, false);
}

}  // namespace

std::string renameLayer(ToolContext& context) {
  const core::Uuid id = context.args.uuid("layer_id");
  const std::string name = context.args.requireString("name");
  mutateLayer(context.document, id, [&](core::Layer& layer) { layer.name = name; });
  return "Renamed layer " + id.text() + " to '" + name + "'.";
}

std::string setLayerTiming(ToolContext& context) {
  const Args& args = context.args;
  const core::Uuid id = args.uuid("layer_id");
  std::optional<core::OVTime> start, duration, sourceStart;
  if (const std::optional<double> s = args.double_("start_seconds"))
    start = timeFromSeconds(std::max(0.0, *s), "start_seconds");
  if (const std::optional<double> d = args.double_("duration_seconds"); d && *d > 0)
    duration = timeFromSeconds(*d, "duration_seconds");
  if (const std::optional<double> s = args.double_("source_start_seconds"))
    sourceStart = timeFromSeconds(std::max(0.0, *s), "source_start_seconds");
  mutateLayer(context.document, id, [&](core::Layer& layer) {
    if (start) layer.moveTo(*start);
    if (duration) layer.timeRange.duration = *duration;
    if (sourceStart) layer.sourceStart = *sourceStart;
  });
  return "Updated timing for layer " + id.text() + ".";
}

std::string setLayerTransform(ToolContext& context) {
  const Args& args = context.args;
  const core::Uuid id = args.uuid("layer_id");
  const std::optional<double> x = args.double_("x"), y = args.double_("y");
  const std::optional<double> scaleX = args.double_("scale_x"), scaleY = args.double_("scale_y");
  const std::optional<double> rotation = args.double_("rotation");
  const std::optional<double> opacity = args.double_("opacity");
  const std::optional<double> anchorX = args.double_("anchor_x"), anchorY = args.double_("anchor_y");
  mutateLayer(context.document, id, [&](core::Layer& layer) {
    core::LayerTransform& t = layer.transform;
    if (x || y) {
      const core::OVPoint current = t.position.pointValueAt(core::OVTime::zero);
      setConstant(t.position, core::PropertyValue::point(x.value_or(current.x), y.value_or(current.y)));
    }
    if (scaleX && scaleY) setConstant(t.scale, core::PropertyValue::point(*scaleX, *scaleY));
    if (rotation) setConstant(t.rotation, core::PropertyValue::double_(*rotation));
    if (opacity) setConstant(t.opacity, core::PropertyValue::double_(std::clamp(*opacity, 0.0, 100.0)));
    if (anchorX && anchorY) setConstant(t.anchorPoint, core::PropertyValue::point(*anchorX, *anchorY));
  });
  return "Updated transform for layer " + id.text() + ".";
}

std::string setTextContent(ToolContext& context) {
  const core::Uuid id = context.args.uuid("layer_id");
  const std::optional<std::string> text = context.args.string("text");
  const std::optional<double> fontSize = context.args.double_("font_size");
  mutateLayer(context.document, id, [&](core::Layer& layer) {
    const core::TextContent* current = layer.content.textContent();
    if (current == nullptr) return;
    core::TextContent content = *current;
    if (text) content.string = *text;
    if (fontSize) content.fontSize = *fontSize;
    layer.content = core::LayerContent::text(std::move(content));
  });
  return "Updated text on layer " + id.text() + ".";
}

std::string setBlendMode(ToolContext& context) {
  const core::Uuid id = context.args.uuid("layer_id");
  const std::string given = context.args.requireString("blend_mode");
  const std::optional<core::OVBlendMode> mode = core::fromRaw<core::OVBlendMode>(given);
  if (!mode) throw ToolError("Unknown blend mode '" + given + "'.");
  mutateLayer(context.document, id, [&](core::Layer& layer) { layer.blendMode = *mode; });
  return "Set blend mode " + std::string(core::rawValue(*mode)) + " on layer " + id.text() + ".";
}

std::string applyBehavior(ToolContext& context) {
  const std::string behaviorID = context.args.requireString("behavior_id");
  const behaviors::Behavior* behavior = behaviors::BehaviorCatalog::behavior(behaviorID);
  if (behavior == nullptr) throw ToolError("Unknown behavior_id '" + behaviorID + "'.");
  const std::vector<core::Uuid> ids = context.args.uuidArray("layer_ids");

  // Stamped inside the turn's interaction: the panel's own operation
  // records a step of its own, and the whole turn must stay one step.
  int applied = 0;
  mutate(context.document,
         [&](core::OVProject& project) { applied = behaviors::stampBehavior(project, *behavior, ids); });
  if (applied == 0) throw ToolError("Behavior did not apply to any of the given layers.");
  return "Applied behavior '" + behaviorID + "' to " + std::to_string(applied) + " layer(s).";
}

}  // namespace orvane::assistant::tools
