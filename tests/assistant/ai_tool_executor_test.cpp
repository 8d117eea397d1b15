// The executor's dispatch, the composition tools, the add-layer tools with
// the turn's layer limit, deleting and selecting.

#include <nlohmann/json.hpp>

#include "tests/assistant/ai_tool_test_support.hpp"

namespace orvane::assistant::testing_support {
namespace {

using AIToolExecutorTest = ToolTurnTest;

TEST_F(AIToolExecutorTest, BadArgumentsAndUnknownNamesAreErrorResults) {
  const AIToolResult broken = call("add_text_layer", "{\"text\": ");
  EXPECT_TRUE(broken.isError);
  EXPECT_EQ(broken.toolCallID, "call-7");
  EXPECT_NE(broken.content.find("parse error"), std::string::npos) << broken.content;
  EXPECT_EQ(fails("add_text_layer", "[]"), "Invalid tool arguments JSON.");
  EXPECT_EQ(fails("add_text_layer", ""), call("add_text_layer", "").content);
  EXPECT_EQ(fails("make_coffee", "{}"), "Unknown tool 'make_coffee'.");
  // Names match exactly.
  EXPECT_EQ(fails("Add_Text_Layer", "{}"), "Unknown tool 'Add_Text_Layer'.");
  // The arguments are read before the name is looked up.
  EXPECT_EQ(fails("make_coffee", "7"), "Invalid tool arguments JSON.");
  EXPECT_EQ(limits.layersCreated, 0);
}

// A model can send arguments nested far deeper than any tool reads; copying
// or writing such a value recurses once per level.
TEST_F(AIToolExecutorTest, DeeplyNestedArgumentsAreRefusedWithoutStoppingTheProgram) {
  constexpr int kLevels = 200000;
  std::string deep;
  for (int i = 0; i < kLevels; ++i) deep += "{\"r\":";
  deep += "1";
  deep.append(kLevels, '}');
  const std::string someID = quoted(Uuid::make());
  EXPECT_EQ(fails("set_effect_parameters",
                  "{\"layer_id\":" + someID + ",\"effect_instance_id\":" + someID + ",\"parameters\":" + deep + "}"),
            "Invalid tool arguments JSON.");
  EXPECT_EQ(fails("update_composition", "{\"background\":" + deep + "}"), "Invalid tool arguments JSON.");
  // Nesting of an everyday depth is still read.
  EXPECT_EQ(ok("update_composition", R"({"background": {"r": 1, "g": 0, "b": 0, "extra": [[[[{"a": 1}]]]]}})"),
            "Updated active composition.");
}

// ------------------------------------------------------------ compositions

TEST_F(AIToolExecutorTest, CreateCompositionWithDefaults) {
  const std::string expectedName = document.project().uniqueCompositionName();
  editor.selectLayers({Uuid::make()});
  EXPECT_EQ(ok("create_composition"), "Created composition AI Composition (1920x1080, 10.0s).");
  EXPECT_EQ(document.project().compositions.size(), 2u);
  EXPECT_EQ(active().name, expectedName);
  EXPECT_EQ(active().size, (OVSize{1920, 1080}));
  EXPECT_EQ(active().frameRate, CompositionPreset::defaultPreset().frameRate);
  EXPECT_EQ(active().duration, secs(10));
  EXPECT_FALSE(active().isSequence());
  EXPECT_TRUE(editor.selectedLayerIDs().empty());
  endTurnExpectingOneStep();
}

TEST_F(AIToolExecutorTest, CreateCompositionWithSettings) {
  editor.selectAsset(Uuid::make());
  EXPECT_EQ(ok("create_composition", R"({"name": "Promo", "width": "1280", "height": 720.9,
      "duration_seconds": "12.5", "frame_rate": "29,97", "editing_mode": "sequence"})"),
            "Created composition Promo (1280x720, 12.5s).");
  EXPECT_EQ(active().name, "Promo");
  EXPECT_EQ(active().size, (OVSize{1280, 720.9}));
  EXPECT_EQ(active().frameRate, FrameRate::fps29_97);
  EXPECT_EQ(active().duration, secs(12.5));
  EXPECT_TRUE(active().isSequence());
  EXPECT_EQ(active().tracks.size(), Composition::defaultTracks().size());
  EXPECT_TRUE(editor.selectedAssetIDs().empty());
}

TEST_F(AIToolExecutorTest, CreateCompositionKeepsSizesAndDurationsUsable) {
  EXPECT_EQ(ok("create_composition", R"({"width": 8, "height": -5, "duration_seconds": 0.01,
      "frame_rate": "fast", "editing_mode": "Sequence"})"),
            "Created composition AI Composition (16x16, 0.1s).");
  EXPECT_EQ(active().size, (OVSize{16, 16}));
  EXPECT_EQ(active().duration, secs(0.1));
  EXPECT_EQ(active().frameRate, CompositionPreset::defaultPreset().frameRate);
  EXPECT_FALSE(active().isSequence());
  EXPECT_EQ(fails("create_composition", R"({"width": 1e300})"), "Number out of range for 'width'.");
  EXPECT_EQ(fails("create_composition", R"({"duration_seconds": 1e300})"),
            "Number out of range for 'duration_seconds'.");
}

TEST_F(AIToolExecutorTest, UpdateCompositionChangesEachSettingOnItsOwn) {
  EXPECT_EQ(ok("update_composition", R"({"name": "Main", "width": 1280, "height": 720, "duration_seconds": 4,
      "frame_rate": "25", "transparent": "yes", "background": {"r": 1, "g": "0.5", "b": 0}})"),
            "Updated active composition.");
  EXPECT_EQ(active().name, "Main");
  EXPECT_EQ(active().size, (OVSize{1280, 720}));
  EXPECT_EQ(active().duration, secs(4));
  EXPECT_EQ(active().frameRate, FrameRate::fps25);
  EXPECT_TRUE(active().isTransparent);
  EXPECT_EQ(active().backgroundColor, (OVColor{1, 0.5, 0, 1}));

  // Half a size, a small side, no duration, an unreadable rate, an empty
  // name and a colour without blue: each is left alone.
  const Composition was = active();
  for (const char* arguments :
       {R"({"width": 8, "height": 1080})", R"({"width": 1920})", R"({"duration_seconds": 0})",
        R"({"frame_rate": "fast"})", R"({"name": ""})", R"({"background": {"r": 1, "g": 1}})",
        R"({"background": "red"})"})
    EXPECT_EQ(ok("update_composition", arguments), "Updated active composition.") << arguments;
  EXPECT_EQ(active(), was);

  EXPECT_EQ(ok("update_composition", R"({"frame_rate": "29,97", "transparent": false})"),
            "Updated active composition.");
  EXPECT_EQ(active().frameRate, FrameRate::fps29_97);
  EXPECT_FALSE(active().isTransparent);
  endTurnExpectingOneStep();
}

TEST_F(AIToolExecutorTest, UpdateCompositionNeedsOne) {
  start(OVProject());
  EXPECT_EQ(fails("update_composition", R"({"name": "X"})"), "No active composition.");
  EXPECT_EQ(fails("add_text_layer", R"({"text": "X"})"), "No active composition.");
  EXPECT_EQ(fails("add_media_layer", R"({"name": "X"})"), "No media named 'X' in the project.");
}

// ---------------------------------------------------------- adding layers

TEST_F(AIToolExecutorTest, AddTextLayerOnTopAndSelected) {
  const Uuid below = addSolid();
  const std::string text = ok("add_text_layer", R"({"text": "Hello", "name": "Title", "start_seconds": 2,
      "font_size": "120", "x": 300})");
  const Uuid id = idAtEnd(text);
  EXPECT_EQ(text, "Added text layer " + id.text());
  ASSERT_EQ(active().layers.size(), 2u);
  EXPECT_EQ(active().layers[0].id, id);
  EXPECT_EQ(active().layers[1].id, below);
  const Layer& l = layer(id);
  EXPECT_EQ(l.name, "Title");
  ASSERT_NE(l.content.textContent(), nullptr);
  EXPECT_EQ(l.content.textContent()->string, "Hello");
  EXPECT_EQ(l.content.textContent()->fontSize, 120);
  EXPECT_EQ(l.timeRange.start, secs(2));
  // Only x was given: y stays where the factory centred it.
  EXPECT_EQ(l.transform.position.baseValue, PropertyValue::point(300, 540));
  EXPECT_FALSE(l.transform.position.isAnimated());
  EXPECT_EQ(editor.selectedLayerIDs(), std::set<Uuid>{id});
  endTurnExpectingOneStep();
}

TEST_F(AIToolExecutorTest, AddTextLayerDefaults) {
  const Uuid id = idAtEnd(ok("add_text_layer"));
  const Layer& l = layer(id);
  EXPECT_EQ(l.content.textContent()->string, "Text");
  EXPECT_EQ(l.name, "Text");
  EXPECT_EQ(l.timeRange.start, OVTime::zero);
  EXPECT_EQ(l.transform.position.baseValue, PropertyValue::point(960, 540));
}

TEST_F(AIToolExecutorTest, AddShapeLayerMatchesTheShapeInAnyCase) {
  const std::string star = ok("add_shape_layer", R"({"shape": "Star", "y": 100, "name": "Badge"})");
  const Uuid id = idAtEnd(star);
  EXPECT_EQ(star, "Added Star layer " + id.text());
  EXPECT_EQ(layer(id).content.shapeContent()->type, ShapeContent::ShapeType::star);
  EXPECT_EQ(layer(id).name, "Badge");
  EXPECT_EQ(layer(id).transform.position.baseValue, PropertyValue::point(960, 100));
  EXPECT_EQ(editor.selectedLayerIDs(), std::set<Uuid>{id});

  const Uuid rectangle = idAtEnd(ok("add_shape_layer"));
  EXPECT_EQ(layer(rectangle).content.shapeContent()->type, ShapeContent::ShapeType::rectangle);
  EXPECT_EQ(fails("add_shape_layer", R"({"shape": "Hexagon"})"), "Unknown shape 'Hexagon'.");
  EXPECT_EQ(limits.layersCreated, 3);
}

TEST_F(AIToolExecutorTest, AddSolidLayerDefaultsToDarkBlueGreyAtZero) {
  const std::string text = ok("add_solid_layer");
  const Uuid id = idAtEnd(text);
  EXPECT_EQ(text, "Added solid layer " + id.text());
  const Layer& l = layer(id);
  ASSERT_NE(l.content.solidContent(), nullptr);
  EXPECT_EQ(l.content.solidContent()->color, (OVColor{0.2, 0.2, 0.25, 1.0}));
  EXPECT_EQ(l.timeRange.start, OVTime::zero);
  EXPECT_EQ(l.name, "Solid");

  // Colours and a name; positions are not the solid tool's business.
  const Uuid red = addSolid(R"({"r": 1, "g": "0", "b": 0, "a": 0.5, "start_seconds": 1, "name": "Red", "x": 5})");
  EXPECT_EQ(layer(red).content.solidContent()->color, (OVColor{1, 0, 0, 0.5}));
  EXPECT_EQ(layer(red).name, "Red");
  EXPECT_EQ(layer(red).timeRange.start, secs(1));
  EXPECT_EQ(layer(red).transform.position.baseValue, layer(id).transform.position.baseValue);
  EXPECT_EQ(fails("add_solid_layer", R"({"start_seconds": 1e300})"), "Number out of range for 'start_seconds'.");
}

TEST_F(AIToolExecutorTest, AddAdjustmentLayer) {
  const std::string text = ok("add_adjustment_layer", R"({"start_seconds": "0.5", "name": "Grade"})");
  const Uuid id = idAtEnd(text);
  EXPECT_EQ(text, "Added adjustment layer " + id.text());
  EXPECT_EQ(layer(id).kind(), LayerKind::adjustment);
  EXPECT_EQ(layer(id).name, "Grade");
  EXPECT_EQ(layer(id).timeRange.start, secs(0.5));
  EXPECT_EQ(active().layers[0].id, id);
}

TEST_F(AIToolExecutorTest, TheTwentyFifthLayerOfATurnIsRefused) {
  // A failed add uses up its count as well.
  EXPECT_EQ(fails("add_shape_layer", R"({"shape": "blob"})"), "Unknown shape 'blob'.");
  for (int i = 0; i < 23; ++i) {
    const char* tool = i % 4 == 0 ? "add_text_layer" : i % 4 == 1 ? "add_solid_layer"
                     : i % 4 == 2 ? "add_shape_layer" : "add_adjustment_layer";
    ok(tool);
  }
  EXPECT_EQ(limits.layersCreated, 24);
  EXPECT_EQ(fails("add_solid_layer"), "Layer creation limit (24) reached for this turn.");
  EXPECT_EQ(fails("add_media_layer", R"({"name": "x"})"), "Layer creation limit (24) reached for this turn.");
  EXPECT_EQ(active().layers.size(), 23u);
  // Other tools go on working.
  ok("rename_layer", R"({"layer_id": )" + quoted(active().layers[0].id) + R"(, "name": "Top"})");
  // A new turn counts afresh.
  limits = {};
  ok("add_solid_layer");
  endTurnExpectingOneStep();
}

// ------------------------------------------------------------------ media

class AIToolMediaTest : public ToolTurnTest {
 protected:
  void SetUp() override {
    OVProject p = projectWith({});
    p.addAsset(videoAsset("Beach Long", 90));
    p.addAsset(videoAsset("Interview", 120));
    p.addAsset(imageAsset("Logo"));
    p.addAsset(audioAsset("beach", 30));
    start(std::move(p));
  }
  const MediaAsset& asset(std::string_view name) const {
    for (const MediaAsset& a : document.project().assets)
      if (a.name == name) return a;
    static const MediaAsset none;
    ADD_FAILURE() << name;
    return none;
  }
};

TEST_F(AIToolMediaTest, TheFirstClipOfAnEmptyCompositionStretchesIt) {
  const std::string text = ok("add_media_layer", R"({"name": "beach long"})");
  const Uuid id = idAtEnd(text);
  EXPECT_EQ(text, "Added media 'Beach Long' as layer " + id.text());
  EXPECT_EQ(active().duration, secs(90));
  EXPECT_EQ(layer(id).timeRange.duration, secs(90));
  EXPECT_EQ(layer(id).content.assetID(), asset("Beach Long").id);
  EXPECT_EQ(editor.selectedLayerIDs(), std::set<Uuid>{id});

  // The second clip, longer still, does not.
  ok("add_media_layer", R"({"asset_id": ")" + asset("Interview").id.text() + R"("})");
  EXPECT_EQ(active().duration, secs(90));
  EXPECT_EQ(active().layers.size(), 2u);
  endTurnExpectingOneStep();
}

TEST_F(AIToolMediaTest, AStillNeverStretchesTheComposition) {
  const Uuid id = idAtEnd(ok("add_media_layer", R"({"name": "LOGO", "start_seconds": 1})"));
  EXPECT_EQ(active().duration, secs(10));
  EXPECT_EQ(layer(id).timeRange.start, secs(1));
  EXPECT_EQ(layer(id).kind(), LayerKind::image);
}

TEST_F(AIToolMediaTest, NamesMatchExactlyFirstThenByContainment) {
  // "beach" is the audio clip's whole name, though "Beach Long" comes first.
  const Uuid exact = idAtEnd(ok("add_media_layer", R"({"name": "BEACH"})"));
  EXPECT_EQ(layer(exact).content.assetID(), asset("beach").id);
  const Uuid part = idAtEnd(ok("add_media_layer", R"({"name": "view"})"));
  EXPECT_EQ(layer(part).content.assetID(), asset("Interview").id);
  // An id of no asset falls back to the name.
  const Uuid byName = idAtEnd(
      ok("add_media_layer", R"({"asset_id": "0A1B2C3D-0000-4000-8000-00000000000F", "name": "logo"})"));
  EXPECT_EQ(layer(byName).content.assetID(), asset("Logo").id);
}

TEST_F(AIToolMediaTest, SourceRangeAndFailures) {
  const Uuid id = idAtEnd(ok("add_media_layer", R"({"name": "Interview", "start_seconds": 2,
      "source_start_seconds": 10, "duration_seconds": 3})"));
  EXPECT_EQ(layer(id).sourceStart, secs(10));
  EXPECT_EQ(layer(id).timeRange, (OVTimeRange{secs(2), secs(3)}));
  // The whole asset sets the length, not the part of it placed.
  EXPECT_EQ(active().duration, secs(120));

  EXPECT_EQ(fails("add_media_layer", R"({"name": "Sunset"})"), "No media named 'Sunset' in the project.");
  EXPECT_EQ(fails("add_media_layer", "{}"), "Provide asset_id or name for add_media_layer.");
  EXPECT_EQ(fails("add_media_layer", R"({"asset_id": "nope", "name": ""})"),
            "Provide asset_id or name for add_media_layer.");
  EXPECT_EQ(limits.layersCreated, 4);
}

// ----------------------------------------------------- deleting, selecting

TEST_F(AIToolExecutorTest, DeleteLayersCountsTheIdsGiven) {
  const Uuid a = addSolid(), b = addSolid();
  const std::string stale = Uuid::make().text();
  EXPECT_EQ(ok("delete_layers", R"({"layer_ids": [)" + quoted(a) + ",\"" + stale + "\"]}"), "Deleted 2 layer(s).");
  ASSERT_EQ(active().layers.size(), 1u);
  EXPECT_EQ(active().layers[0].id, b);
  EXPECT_TRUE(editor.selectedLayerIDs().empty());
  EXPECT_EQ(fails("delete_layers", R"({"layer_ids": )" + quoted(b) + "}"), "Missing array 'layer_ids'.");
  EXPECT_EQ(fails("delete_layers", R"({"layer_ids": [)" + quoted(b) + R"(, "B"]})"), "Invalid UUID in 'layer_ids'.");
  EXPECT_EQ(active().layers.size(), 1u);
  endTurnExpectingOneStep();
}

TEST_F(AIToolExecutorTest, SelectLayersReplacesTheSelection) {
  const Uuid a = addSolid(), b = addSolid();
  editor.selectLayers({a});
  const OVProject was = document.project();
  EXPECT_EQ(ok("select_layers", R"({"layer_ids": [)" + quoted(b) + "]}"), "Selected 1 layer(s).");
  EXPECT_EQ(editor.selectedLayerIDs(), std::set<Uuid>{b});
  EXPECT_EQ(ok("select_layers", R"({"layer_ids": []})"), "Selected 0 layer(s).");
  EXPECT_TRUE(editor.selectedLayerIDs().empty());
  EXPECT_EQ(document.project(), was);
  EXPECT_EQ(fails("select_layers", R"({"layer_ids": ["x"]})"), "Invalid UUID in 'layer_ids'.");
}

}  // namespace
}  // namespace orvane::assistant::testing_support

namespace orvane::assistant::testing_support {
namespace {

// ------------------------------------------------- schema and dispatch

// Every parameter of every tool set to one odd value at a time: each call
// answers, none stops the program.
TEST_F(AIToolExecutorTest, EveryToolOfTheSchemaIsDispatchedAndSurvivesOddValues) {
  const Uuid existing = addSolid();
  const std::vector<AIToolDefinition> tools = AIToolSchema::all();
  ASSERT_EQ(tools.size(), 18u);
  const std::vector<nlohmann::json> oddValues = {
      nullptr, true, 0, -1, 1e308, -1e308, "1e308", "-0", "", "x", nlohmann::json::array(),
      nlohmann::json::object(), nlohmann::json::array({existing.text(), "x"}), existing.text(),
      nlohmann::json{{"r", "1e308"}, {"g", -1e308}, {"b", 0}, {"x", 1e308}, {"y", "nan"}}};
  for (const AIToolDefinition& tool : tools) {
    EXPECT_NE(call(tool.name, "{}").content, "Unknown tool '" + tool.name + "'.");
    const nlohmann::json schema = nlohmann::json::parse(tool.parametersJSON);
    for (const nlohmann::json& odd : oddValues) {
      nlohmann::json arguments = nlohmann::json::object();
      for (const auto& [name, property] : schema.at("properties").items()) arguments[name] = odd;
      limits = {};
      const AIToolResult r = call(tool.name, arguments.dump());
      EXPECT_FALSE(r.content.empty()) << tool.name << " " << arguments.dump();
    }
  }
  endTurnExpectingOneStep();
}

}  // namespace
}  // namespace orvane::assistant::testing_support
