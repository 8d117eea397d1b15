// The tools as the model is shown them. Their names must agree with the
// executor's dispatch (ai_tool_executor.cpp), which is kept as its own list.

#include <initializer_list>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "assistant/ai_tools.hpp"

namespace orvane::assistant {
namespace {

using Json = nlohmann::ordered_json;

enum class Form { text, number, boolean, object, textList };

struct Parameter {
  std::string_view name;
  Form form;
  std::string_view description;
  bool required = false;
};

constexpr bool kRequired = true;

Json propertySchema(const Parameter& p) {
  Json schema = Json::object();
  switch (p.form) {
    case Form::text: schema["type"] = "string"; break;
    case Form::number: schema["type"] = "number"; break;
    case Form::boolean: schema["type"] = "boolean"; break;
    case Form::object:
      schema["type"] = "object";
      schema["additionalProperties"] = true;
      break;
    case Form::textList:
      schema["type"] = "array";
      schema["items"] = Json{{"type", "string"}};
      break;
  }
  schema["description"] = p.description;
  return schema;
}

std::string parametersJSON(std::initializer_list<Parameter> parameters) {
  Json properties = Json::object();
  Json required = Json::array();
  for (const auto& p : parameters) {
    properties[std::string(p.name)] = propertySchema(p);
    if (p.required) required.push_back(p.name);
  }
  Json schema = Json::object();
  schema["type"] = "object";
  schema["properties"] = std::move(properties);
  schema["additionalProperties"] = false;
  if (!required.empty()) schema["required"] = std::move(required);
  try {
    return schema.dump();
  } catch (const Json::exception&) {
    return "{}";
  }
}

AIToolDefinition tool(std::string_view name, std::string_view description,
                      std::initializer_list<Parameter> parameters) {
  return {std::string(name), std::string(description), parametersJSON(parameters)};
}

constexpr std::string_view kLayerUUID = "Layer UUID";
constexpr std::string_view kLayerName = "Layer name";
constexpr std::string_view kStartTime = "Start time";
constexpr std::string_view kPositionX = "Position X";
constexpr std::string_view kPositionY = "Position Y";

void appendCompositionTools(std::vector<AIToolDefinition>& tools) {
  tools.push_back(tool("create_composition",
                       "Create a new composition and make it active. Optional size, duration (seconds), frame rate.",
                       {{"name", Form::text, "Composition name"},
                        {"width", Form::number, "Width in pixels"},
                        {"height", Form::number, "Height in pixels"},
                        {"duration_seconds", Form::number, "Duration in seconds"},
                        {"frame_rate", Form::text, "One of: 24, 25, 30, 29.97, 60"},
                        {"editing_mode", Form::text,
                         "layers (one row per layer, default) or sequence (tracks of clips end to end)"}}));
  tools.push_back(tool("update_composition",
                       "Update the active composition settings (name, size, duration, frame rate, background).",
                       {{"name", Form::text, "New name"},
                        {"width", Form::number, "Width"},
                        {"height", Form::number, "Height"},
                        {"duration_seconds", Form::number, "Duration in seconds"},
                        {"frame_rate", Form::text, "Frame rate label"},
                        {"transparent", Form::boolean, "True for a see-through background (alpha export)"},
                        {"background", Form::object, "Background colour {r,g,b} in 0\u20131"}}));
}

void appendLayerCreationTools(std::vector<AIToolDefinition>& tools) {
  tools.push_back(tool("add_text_layer", "Add a text layer to the active composition.",
                       {{"text", Form::text, "Text string", kRequired},
                        {"name", Form::text, kLayerName},
                        {"start_seconds", Form::number, "Start time on timeline"},
                        {"font_size", Form::number, "Font size"},
                        {"x", Form::number, kPositionX},
                        {"y", Form::number, kPositionY}}));
  tools.push_back(tool("add_shape_layer", "Add a shape layer (rectangle, ellipse, line, polygon, star).",
                       {{"shape", Form::text, "rectangle|ellipse|line|polygon|star", kRequired},
                        {"name", Form::text, kLayerName},
                        {"start_seconds", Form::number, kStartTime},
                        {"x", Form::number, kPositionX},
                        {"y", Form::number, kPositionY}}));
  tools.push_back(tool("add_solid_layer", "Add a solid colour layer.",
                       {{"r", Form::number, "Red 0-1"},
                        {"g", Form::number, "Green 0-1"},
                        {"b", Form::number, "Blue 0-1"},
                        {"a", Form::number, "Alpha 0-1"},
                        {"start_seconds", Form::number, kStartTime},
                        {"name", Form::text, kLayerName}}));
  tools.push_back(tool("add_adjustment_layer", "Add an adjustment layer.",
                       {{"start_seconds", Form::number, kStartTime}, {"name", Form::text, kLayerName}}));
  tools.push_back(tool("add_media_layer",
                       "Place an existing project media asset on the timeline. Match by asset_id or name.",
                       {{"asset_id", Form::text, "Media asset UUID"},
                        {"name", Form::text, "Media name to match"},
                        {"start_seconds", Form::number, "Timeline start"},
                        {"source_start_seconds", Form::number, "In-point in source"},
                        {"duration_seconds", Form::number, "Clip duration"}}));
}

void appendLayerEditTools(std::vector<AIToolDefinition>& tools) {
  tools.push_back(tool("delete_layers", "Delete layers by id.",
                       {{"layer_ids", Form::textList, "Layer UUIDs", kRequired}}));
  tools.push_back(tool("rename_layer", "Rename a layer.",
                       {{"layer_id", Form::text, kLayerUUID, kRequired}, {"name", Form::text, "New name", kRequired}}));
  tools.push_back(tool("set_layer_timing", "Set layer start, duration, and/or source in-point (seconds).",
                       {{"layer_id", Form::text, kLayerUUID, kRequired},
                        {"start_seconds", Form::number, "Timeline start"},
                        {"duration_seconds", Form::number, "Duration"},
                        {"source_start_seconds", Form::number, "Source in-point"}}));
  tools.push_back(tool("set_layer_transform",
                       "Set layer transform constants (position, scale %, rotation, opacity %, anchor 0-1).",
                       {{"layer_id", Form::text, kLayerUUID, kRequired},
                        {"x", Form::number, kPositionX},
                        {"y", Form::number, kPositionY},
                        {"scale_x", Form::number, "Scale X percent"},
                        {"scale_y", Form::number, "Scale Y percent"},
                        {"rotation", Form::number, "Rotation degrees"},
                        {"opacity", Form::number, "Opacity 0-100"},
                        {"anchor_x", Form::number, "Anchor X 0-1"},
                        {"anchor_y", Form::number, "Anchor Y 0-1"}}));
  tools.push_back(tool("set_text_content", "Update text on a text layer.",
                       {{"layer_id", Form::text, kLayerUUID, kRequired},
                        {"text", Form::text, "New string"},
                        {"font_size", Form::number, "Font size"}}));
}

void appendAnimationTools(std::vector<AIToolDefinition>& tools) {
  tools.push_back(tool("add_effect", "Add an effect from the catalog to a layer.",
                       {{"layer_id", Form::text, kLayerUUID, kRequired},
                        {"effect_id", Form::text, "Catalog effect id", kRequired}}));
  tools.push_back(tool("add_keyframe", "Set a transform property at a time, creating animation between keyframes.",
                       {{"layer_id", Form::text, kLayerUUID, kRequired},
                        {"property", Form::text, "position|scale|rotation|opacity|anchorPoint", kRequired},
                        {"time_seconds", Form::number, "Time on the timeline", kRequired},
                        {"x", Form::number, "X for position/scale(percent)/anchorPoint(0-1)"},
                        {"y", Form::number, "Y for position/scale(percent)/anchorPoint(0-1)"},
                        {"value", Form::number, "Value for rotation (degrees) or opacity (0-100)"},
                        {"easing", Form::text, "linear|ease|hold (default ease)"}}));
  tools.push_back(tool("set_blend_mode", "Set how a layer blends with the layers beneath it.",
                       {{"layer_id", Form::text, kLayerUUID, kRequired},
                        {"blend_mode", Form::text,
                         "normal|multiply|screen|overlay|softLight|hardLight|darken|lighten|difference|add",
                         kRequired}}));
  tools.push_back(tool("set_effect_parameters",
                       "Set parameters on an effect instance. Numbers for sliders/angles, true/false for toggles, "
                       "{r,g,b,a} for colours, {x,y} for points.",
                       {{"layer_id", Form::text, kLayerUUID, kRequired},
                        {"effect_instance_id", Form::text, "Effect instance UUID on the layer", kRequired},
                        {"parameters", Form::object, "Map of parameter id to number or string", kRequired}}));
  tools.push_back(tool("apply_behavior", "Apply a motion-graphics behavior preset to layers.",
                       {{"behavior_id", Form::text, "Behavior catalog id", kRequired},
                        {"layer_ids", Form::textList, "Layer UUIDs", kRequired}}));
  tools.push_back(tool("select_layers", "Select layers in the editor UI.",
                       {{"layer_ids", Form::textList, "Layer UUIDs", kRequired}}));
}

}  // namespace

std::vector<AIToolDefinition> AIToolSchema::all() {
  std::vector<AIToolDefinition> tools;
  tools.reserve(18);
  appendCompositionTools(tools);
  appendLayerCreationTools(tools);
  appendLayerEditTools(tools);
  appendAnimationTools(tools);
  return tools;
}

}  // namespace orvane::assistant
