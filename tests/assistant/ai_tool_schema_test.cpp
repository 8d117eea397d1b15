// The tools as the model is shown them: names and order, and each
// parameter schema read back as JSON.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "assistant/ai_tools.hpp"

namespace orvane::assistant {
namespace {

using nlohmann::json;

const AIToolDefinition& toolNamed(const std::vector<AIToolDefinition>& tools, std::string_view name) {
  for (const auto& t : tools)
    if (t.name == name) return t;
  static const AIToolDefinition none;
  ADD_FAILURE() << "no tool " << name;
  return none;
}

json parametersOf(std::string_view name) {
  static const std::vector<AIToolDefinition> tools = AIToolSchema::all();
  return json::parse(toolNamed(tools, name).parametersJSON);
}

TEST(AIToolSchemaTest, EighteenToolsInOrder) {
  std::vector<std::string> names;
  for (const auto& t : AIToolSchema::all()) names.push_back(t.name);
  EXPECT_EQ(names, (std::vector<std::string>{
                       "create_composition", "update_composition", "add_text_layer", "add_shape_layer",
                       "add_solid_layer", "add_adjustment_layer", "add_media_layer", "delete_layers",
                       "rename_layer", "set_layer_timing", "set_layer_transform", "set_text_content", "add_effect",
                       "add_keyframe", "set_blend_mode", "set_effect_parameters", "apply_behavior",
                       "select_layers"}));
}

TEST(AIToolSchemaTest, EverySchemaIsAClosedObjectOfTypedDescribedProperties) {
  for (const auto& t : AIToolSchema::all()) {
    SCOPED_TRACE(t.name);
    EXPECT_FALSE(t.description.empty());
    const json schema = json::parse(t.parametersJSON);
    ASSERT_TRUE(schema.is_object());
    EXPECT_EQ(schema.at("type"), "object");
    EXPECT_EQ(schema.at("additionalProperties"), false);
    const json& properties = schema.at("properties");
    ASSERT_TRUE(properties.is_object());
    EXPECT_FALSE(properties.empty());
    for (const auto& [name, property] : properties.items()) {
      SCOPED_TRACE(name);
      const std::string type = property.at("type");
      EXPECT_TRUE(type == "string" || type == "number" || type == "boolean" || type == "object" || type == "array");
      EXPECT_TRUE(property.at("description").is_string());
      EXPECT_FALSE(property.at("description").get<std::string>().empty());
    }
    // A required list is never empty, and names only declared properties.
    if (schema.contains("required")) {
      ASSERT_TRUE(schema["required"].is_array());
      EXPECT_FALSE(schema["required"].empty());
      for (const auto& r : schema["required"]) EXPECT_TRUE(properties.contains(r.get<std::string>()));
    }
    EXPECT_EQ(schema.size(), schema.contains("required") ? 4u : 3u);
  }
}

TEST(AIToolSchemaTest, RequiredListsAsDeclared) {
  using Names = std::vector<std::string>;
  EXPECT_EQ(parametersOf("add_keyframe").at("required").get<Names>(),
            (Names{"layer_id", "property", "time_seconds"}));
  EXPECT_EQ(parametersOf("set_effect_parameters").at("required").get<Names>(),
            (Names{"layer_id", "effect_instance_id", "parameters"}));
  EXPECT_EQ(parametersOf("rename_layer").at("required").get<Names>(), (Names{"layer_id", "name"}));
  EXPECT_EQ(parametersOf("apply_behavior").at("required").get<Names>(), (Names{"behavior_id", "layer_ids"}));
  EXPECT_EQ(parametersOf("add_text_layer").at("required").get<Names>(), (Names{"text"}));
  for (const char* open : {"create_composition", "update_composition", "add_solid_layer", "add_adjustment_layer",
                           "add_media_layer"}) {
    EXPECT_FALSE(parametersOf(open).contains("required")) << open;
  }
}

TEST(AIToolSchemaTest, PropertyFormsCarryTheirExtraKeys) {
  const json list = parametersOf("delete_layers").at("properties").at("layer_ids");
  EXPECT_EQ(list, json::parse(R"({"type":"array","items":{"type":"string"},"description":"Layer UUIDs"})"));
  EXPECT_EQ(parametersOf("select_layers").at("properties").at("layer_ids"), list);

  const json parameters = parametersOf("set_effect_parameters").at("properties").at("parameters");
  const json expectedObject = json::parse(
      R"({"type":"object","additionalProperties":true,"description":"Map of parameter id to number or string"})");
  EXPECT_EQ(parameters, expectedObject);

  const json create = parametersOf("create_composition").at("properties");
  EXPECT_EQ(create.size(), 6u);
  EXPECT_EQ(create.at("width"), json::parse(R"({"type":"number","description":"Width in pixels"})"));
  EXPECT_EQ(create.at("frame_rate"),
            json::parse(R"({"type":"string","description":"One of: 24, 25, 30, 29.97, 60"})"));
  EXPECT_EQ(parametersOf("update_composition").at("properties").at("transparent"),
            json::parse(R"j({"type":"boolean","description":"True for a see-through background (alpha export)"})j"));
  EXPECT_EQ(parametersOf("set_layer_transform").at("properties").size(), 9u);
}

TEST(AIToolSchemaTest, DescriptionsKeepTheirPunctuation) {
  const auto tools = AIToolSchema::all();
  auto propertyDescription = [&](std::string_view tool, const char* property) {
    return json::parse(toolNamed(tools, tool).parametersJSON)
        .at("properties")
        .at(property)
        .at("description")
        .get<std::string>();
  };
  EXPECT_EQ(propertyDescription("update_composition", "background"), "Background colour {r,g,b} in 0\u20131");
  EXPECT_EQ(propertyDescription("add_shape_layer", "shape"), "rectangle|ellipse|line|polygon|star");
  EXPECT_EQ(propertyDescription("set_blend_mode", "blend_mode"),
            "normal|multiply|screen|overlay|softLight|hardLight|darken|lighten|difference|add");
  EXPECT_EQ(propertyDescription("add_keyframe", "property"), "position|scale|rotation|opacity|anchorPoint");
  EXPECT_EQ(propertyDescription("add_keyframe", "easing"), "linear|ease|hold (default ease)");
  EXPECT_EQ(propertyDescription("set_layer_transform", "anchor_x"), "Anchor X 0-1");

  EXPECT_EQ(toolNamed(tools, "set_effect_parameters").description,
            "Set parameters on an effect instance. Numbers for sliders/angles, true/false for toggles, {r,g,b,a} "
            "for colours, {x,y} for points.");
  EXPECT_EQ(toolNamed(tools, "set_layer_transform").description,
            "Set layer transform constants (position, scale %, rotation, opacity %, anchor 0-1).");
  EXPECT_EQ(toolNamed(tools, "create_composition").description,
            "Create a new composition and make it active. Optional size, duration (seconds), frame rate.");
  // The en dash goes out as UTF-8, not as an escape the model would read literally.
  EXPECT_NE(toolNamed(tools, "update_composition").parametersJSON.find("0\u20131"), std::string::npos);
}

}  // namespace
}  // namespace orvane::assistant
