// The tools that edit existing layers: names, timing, transform constants,
// text, blend modes, effects and their parameters, keyframes, behaviors.

#include <cctype>

#include "core/effect_catalog.hpp"
#include "tests/assistant/ai_tool_test_support.hpp"

namespace orvane::assistant::testing_support {
namespace {

class AIToolEditsTest : public ToolTurnTest {
 protected:
  void SetUp() override {
    ToolTurnTest::SetUp();
    text = addText();
    solid = addSolid();
  }
  // {"layer_id": "<id>", ...rest}
  static std::string on(const Uuid& id, std::string_view rest = "") {
    std::string json = R"({"layer_id": )" + quoted(id);
    if (!rest.empty()) json += ", " + std::string(rest);
    return json + "}";
  }
  Uuid text, solid;
};

TEST_F(AIToolEditsTest, LayerIdsAreCheckedForFormOnly) {
  // A well-formed id of no layer: success, nothing changes.
  const OVProject was = document.project();
  const Uuid stale = Uuid::make();
  EXPECT_EQ(ok("rename_layer", on(stale, R"("name": "X")")), "Renamed layer " + stale.text() + " to 'X'.");
  EXPECT_EQ(ok("set_layer_timing", on(stale, R"("start_seconds": 1)")),
            "Updated timing for layer " + stale.text() + ".");
  EXPECT_EQ(ok("set_layer_transform", on(stale, R"("x": 1)")), "Updated transform for layer " + stale.text() + ".");
  EXPECT_EQ(ok("set_text_content", on(stale, R"("text": "X")")), "Updated text on layer " + stale.text() + ".");
  EXPECT_EQ(ok("set_blend_mode", on(stale, R"("blend_mode": "add")")),
            "Set blend mode add on layer " + stale.text() + ".");
  EXPECT_EQ(ok("add_effect", on(stale, R"("effect_id": "sharpen")")).find("Added effect 'Sharpen' ("), 0u);
  EXPECT_EQ(document.project(), was);
  // Lower-case ids are read, and printed back upper-case.
  std::string lower = text.text();
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  EXPECT_EQ(ok("rename_layer", R"({"layer_id": ")" + lower + R"(", "name": "Low"})"),
            "Renamed layer " + text.text() + " to 'Low'.");
  EXPECT_EQ(layer(text).name, "Low");

  for (const char* tool : {"rename_layer", "set_layer_timing", "set_layer_transform", "set_text_content",
                           "set_blend_mode", "add_effect", "set_effect_parameters", "add_keyframe"}) {
    EXPECT_EQ(fails(tool, "{}"), "Missing string 'layer_id'.") << tool;
    EXPECT_EQ(fails(tool, R"({"layer_id": 5})"), "Missing string 'layer_id'.") << tool;
    EXPECT_EQ(fails(tool, R"({"layer_id": "layer-1"})"), "Invalid UUID for 'layer_id'.") << tool;
  }
}

TEST_F(AIToolEditsTest, RenameLayer) {
  EXPECT_EQ(ok("rename_layer", on(solid, R"("name": "Back drop")")),
            "Renamed layer " + solid.text() + " to 'Back drop'.");
  EXPECT_EQ(layer(solid).name, "Back drop");
  EXPECT_EQ(fails("rename_layer", on(solid, R"("name": "")")), "Missing string 'name'.");
  EXPECT_EQ(fails("rename_layer", on(solid)), "Missing string 'name'.");
  endTurnExpectingOneStep();
}

TEST_F(AIToolEditsTest, SetLayerTiming) {
  ok("add_keyframe", on(solid, R"("property": "opacity", "time_seconds": 1, "value": 50)"));
  EXPECT_EQ(ok("set_layer_timing", on(solid, R"("start_seconds": "2", "duration_seconds": 3,
      "source_start_seconds": 1.5)")),
            "Updated timing for layer " + solid.text() + ".");
  EXPECT_EQ(layer(solid).timeRange, (OVTimeRange{secs(2), secs(3)}));
  EXPECT_EQ(layer(solid).sourceStart, secs(1.5));
  // Moving the layer carries its keys along.
  EXPECT_EQ(layer(solid).transform.opacity.keyframes()[0].time, secs(3));

  // Negative times stop at zero; a duration of zero is ignored.
  ok("set_layer_timing", on(solid, R"("start_seconds": -4, "duration_seconds": 0, "source_start_seconds": -1)"));
  EXPECT_EQ(layer(solid).timeRange, (OVTimeRange{OVTime::zero, secs(3)}));
  EXPECT_EQ(layer(solid).sourceStart, OVTime::zero);
  EXPECT_EQ(fails("set_layer_timing", on(solid, R"("duration_seconds": 1e20)")),
            "Number out of range for 'duration_seconds'.");
  endTurnExpectingOneStep();
}

TEST_F(AIToolEditsTest, SetLayerTransformWritesConstants) {
  EXPECT_EQ(ok("set_layer_transform", on(solid, R"("y": 100, "scale_x": 50, "scale_y": "25", "rotation": -30,
      "opacity": 150, "anchor_x": 0, "anchor_y": 1)")),
            "Updated transform for layer " + solid.text() + ".");
  const LayerTransform& t = layer(solid).transform;
  EXPECT_EQ(t.position.baseValue, PropertyValue::point(960, 100));
  EXPECT_EQ(t.scale.baseValue, PropertyValue::point(50, 25));
  EXPECT_EQ(t.rotation.baseValue, PropertyValue::double_(-30));
  EXPECT_EQ(t.opacity.baseValue, PropertyValue::double_(100));
  EXPECT_EQ(t.anchorPoint.baseValue, PropertyValue::point(0, 1));
  EXPECT_FALSE(t.isAnimated());

  // Half a scale or half an anchor does nothing; opacity stops at zero.
  ok("set_layer_transform", on(solid, R"("scale_x": 10, "anchor_y": 0.2, "opacity": -5, "x": 7)"));
  const LayerTransform& u = layer(solid).transform;
  EXPECT_EQ(u.scale.baseValue, PropertyValue::point(50, 25));
  EXPECT_EQ(u.anchorPoint.baseValue, PropertyValue::point(0, 1));
  EXPECT_EQ(u.opacity.baseValue, PropertyValue::double_(0));
  EXPECT_EQ(u.position.baseValue, PropertyValue::point(7, 100));
  endTurnExpectingOneStep();
}

TEST_F(AIToolEditsTest, SetLayerTransformOnAnAnimatedPropertyKeysTimeZero) {
  ok("add_keyframe", on(solid, R"("property": "rotation", "time_seconds": 2, "value": 90)"));
  ok("set_layer_transform", on(solid, R"("rotation": 45)"));
  const AnimatedProperty& rotation = layer(solid).transform.rotation;
  ASSERT_EQ(rotation.keyframes().size(), 2u);
  EXPECT_EQ(rotation.keyframes()[0].time, OVTime::zero);
  EXPECT_EQ(rotation.keyframes()[0].value, PropertyValue::double_(45));
}

TEST_F(AIToolEditsTest, SetTextContentOnlyOnText) {
  EXPECT_EQ(ok("set_text_content", on(text, R"("text": "New", "font_size": 64)")),
            "Updated text on layer " + text.text() + ".");
  EXPECT_EQ(layer(text).content.textContent()->string, "New");
  EXPECT_EQ(layer(text).content.textContent()->fontSize, 64);
  ok("set_text_content", on(text, R"("font_size": "80")"));
  EXPECT_EQ(layer(text).content.textContent()->string, "New");
  EXPECT_EQ(layer(text).content.textContent()->fontSize, 80);

  const Layer solidBefore = layer(solid);
  EXPECT_EQ(ok("set_text_content", on(solid, R"("text": "Nope")")), "Updated text on layer " + solid.text() + ".");
  EXPECT_EQ(layer(solid), solidBefore);
  endTurnExpectingOneStep();
}

TEST_F(AIToolEditsTest, SetBlendModeByExactRawValue) {
  EXPECT_EQ(ok("set_blend_mode", on(solid, R"("blend_mode": "softLight")")),
            "Set blend mode softLight on layer " + solid.text() + ".");
  EXPECT_EQ(layer(solid).blendMode, OVBlendMode::softLight);
  EXPECT_EQ(fails("set_blend_mode", on(solid, R"("blend_mode": "Multiply")")), "Unknown blend mode 'Multiply'.");
  EXPECT_EQ(fails("set_blend_mode", on(solid)), "Missing string 'blend_mode'.");
  EXPECT_EQ(layer(solid).blendMode, OVBlendMode::softLight);
}

// ---------------------------------------------------------------- effects

TEST_F(AIToolEditsTest, AddEffectAppendsANewInstance) {
  const std::string first = ok("add_effect", on(solid, R"("effect_id": "blur.gaussian")"));
  const std::string second = ok("add_effect", on(solid, R"("effect_id": "blur.gaussian")"));
  const SharedVector<EffectInstance>& effects = layer(solid).effects;
  ASSERT_EQ(effects.size(), 2u);
  EXPECT_EQ(first, "Added effect 'Gaussian Blur' (" + effects[0].id.text() + ") to layer " + solid.text() + ".");
  EXPECT_EQ(second, "Added effect 'Gaussian Blur' (" + effects[1].id.text() + ") to layer " + solid.text() + ".");
  EXPECT_NE(effects[0].id, effects[1].id);
  EXPECT_EQ(effects[0].effectID, "blur.gaussian");
  EXPECT_TRUE(effects[0].parameters.empty());
  endTurnExpectingOneStep();
}

TEST_F(AIToolEditsTest, AnUnknownEffectListsTwelveExamples) {
  const std::string error = fails("add_effect", on(solid, R"("effect_id": "blur.box")"));
  const std::string lead = "Unknown effect_id 'blur.box'. Examples: ";
  ASSERT_EQ(error.find(lead), 0u) << error;
  std::string expected;
  for (std::size_t i = 0; i < 12; ++i) expected += (i ? ", " : "") + EffectCatalog::all()[i].id;
  EXPECT_EQ(error.substr(lead.size()), expected);
  EXPECT_EQ(fails("add_effect", on(solid)), "Missing string 'effect_id'.");
}

TEST_F(AIToolEditsTest, SetEffectParametersConvertsByTheValueKind) {
  ok("add_effect", on(solid, R"("effect_id": "stylize.dropShadow")"));
  ok("add_effect", on(solid, R"("effect_id": "key.chroma")"));
  // A point-valued parameter of an instance, as a project may hold one.
  document.updateInteraction([&](OVProject& p) {
    p.updateActiveComposition([&](Composition& c) {
      c.update(solid, [](Layer& l) { l.effects.mutate()[0].parameters["center"] = AnimatedProperty::point(0, 0); });
    });
  });
  const Uuid shadow = layer(solid).effects[0].id, chroma = layer(solid).effects[1].id;
  const std::string shadowArgs = on(solid, R"("effect_instance_id": )" + quoted(shadow) + R"(, "parameters": {
      "distance": "30", "direction": 45, "color": {"r": 1, "g": 0, "b": 0, "a": 0.5}, "center": {"x": 3, "y": "4"},
      "opacity": "lots", "softness": {"x": 1}, "nonsense": 1})");
  EXPECT_EQ(ok("set_effect_parameters", shadowArgs), "Updated parameters on effect " + shadow.text() + ".");
  const auto& parameters = layer(solid).effects[0].parameters;
  EXPECT_EQ(parameters.at("distance").baseValue, PropertyValue::double_(30));
  EXPECT_EQ(parameters.at("direction").baseValue, PropertyValue::double_(45));
  EXPECT_EQ(parameters.at("color").baseValue, PropertyValue::color({1, 0, 0, 0.5}));
  EXPECT_EQ(parameters.at("center").baseValue, PropertyValue::point(3, 4));
  // Values that do not fit and ids the effect lacks are skipped.
  EXPECT_FALSE(parameters.contains("opacity"));
  EXPECT_FALSE(parameters.contains("softness"));
  EXPECT_FALSE(parameters.contains("nonsense"));

  ok("set_effect_parameters", on(solid, R"("effect_instance_id": )" + quoted(chroma) +
                                            R"(, "parameters": {"invert": "ON", "keyColor": {"r": 0, "g": 0}})"));
  EXPECT_EQ(layer(solid).effects[1].parameters.at("invert").baseValue, PropertyValue::bool_(true));
  EXPECT_FALSE(layer(solid).effects[1].parameters.contains("keyColor"));
  ok("set_effect_parameters", on(solid, R"("effect_instance_id": )" + quoted(chroma) +
                                            R"(, "parameters": {"invert": 0, "threshold": 0.7})"));
  EXPECT_EQ(layer(solid).effects[1].parameters.at("invert").baseValue, PropertyValue::bool_(false));
  EXPECT_EQ(layer(solid).effects[1].parameters.at("threshold").baseValue, PropertyValue::double_(0.7));
  endTurnExpectingOneStep();
}

TEST_F(AIToolEditsTest, SetEffectParametersFailures) {
  ok("add_effect", on(solid, R"("effect_id": "sharpen")"));
  const Uuid instance = layer(solid).effects[0].id;
  const OVProject was = document.project();
  // No such instance: success, nothing changes.
  const Uuid stale = Uuid::make();
  EXPECT_EQ(ok("set_effect_parameters", on(solid, R"("effect_instance_id": )" + quoted(stale) +
                                                      R"(, "parameters": {"amount": 1})")),
            "Updated parameters on effect " + stale.text() + ".");
  EXPECT_EQ(document.project(), was);
  EXPECT_EQ(fails("set_effect_parameters", on(solid, R"("effect_instance_id": )" + quoted(instance))),
            "parameters object required");
  EXPECT_EQ(fails("set_effect_parameters", on(solid, R"("effect_instance_id": )" + quoted(instance) +
                                                        R"(, "parameters": [1])")),
            "parameters object required");
  EXPECT_EQ(fails("set_effect_parameters", on(solid, R"("effect_instance_id": "x", "parameters": {})")),
            "Invalid UUID for 'effect_instance_id'.");
}

// -------------------------------------------------------------- keyframes

TEST_F(AIToolEditsTest, AddKeyframeSnapsTheTimeButReportsItAsGiven) {
  EXPECT_EQ(ok("add_keyframe", on(solid, R"("property": "opacity", "time_seconds": 1.004, "value": "0")")),
            "Keyframed opacity at 1.004s on layer " + solid.text() + ".");
  EXPECT_EQ(ok("add_keyframe", on(solid, R"("property": "opacity", "time_seconds": "1", "value": 100,
      "easing": "hold")")),
            "Keyframed opacity at 1.0s on layer " + solid.text() + ".");
  const AnimatedProperty& opacity = layer(solid).transform.opacity;
  // Both landed on frame 30, the second replacing the first.
  ASSERT_EQ(opacity.keyframes().size(), 1u);
  EXPECT_EQ(opacity.keyframes()[0].time, secs(1));
  EXPECT_EQ(opacity.keyframes()[0].value, PropertyValue::double_(100));
  EXPECT_EQ(opacity.keyframes()[0].mode, InterpolationMode::hold);
  EXPECT_FALSE(opacity.keyframes()[0].handles.has_value());
  endTurnExpectingOneStep();
}

TEST_F(AIToolEditsTest, AddKeyframeEasingIsExact) {
  const auto modeAt = [&](const char* easing, double seconds) {
    ok("add_keyframe", on(solid, std::string(R"("property": "rotation", "value": 5, "time_seconds": )") +
                                     std::to_string(seconds) + R"(, "easing": ")" + easing + "\""));
    return layer(solid).transform.rotation.keyframeAt(secs(seconds))->mode;
  };
  EXPECT_EQ(modeAt("hold", 1), InterpolationMode::hold);
  EXPECT_EQ(modeAt("linear", 2), InterpolationMode::linear);
  EXPECT_EQ(modeAt("Hold", 3), InterpolationMode::easeInOut);
  EXPECT_EQ(modeAt("ease", 4), InterpolationMode::easeInOut);
  EXPECT_EQ(modeAt("bounce", 5), InterpolationMode::easeInOut);
}

TEST_F(AIToolEditsTest, AddKeyframePointChannels) {
  // The layer starts at 2 s; the time is not shifted by it.
  ok("set_layer_timing", on(text, R"("start_seconds": 2)"));
  ok("add_keyframe", on(text, R"("property": "position", "x": 10, "y": "20")"));
  ok("add_keyframe", on(text, R"("property": "scale", "time_seconds": 0.5, "x": 50, "y": 50, "easing": "linear")"));
  ok("add_keyframe", on(text, R"("property": "anchorPoint", "time_seconds": 0.5, "x": 0, "y": 0)"));
  const LayerTransform& t = layer(text).transform;
  ASSERT_EQ(t.position.keyframes().size(), 1u);
  EXPECT_EQ(t.position.keyframes()[0].time, OVTime::zero);
  EXPECT_EQ(t.position.keyframes()[0].value, PropertyValue::point(10, 20));
  EXPECT_EQ(t.position.keyframes()[0].mode, InterpolationMode::easeInOut);
  EXPECT_EQ(t.scale.keyframes()[0].value, PropertyValue::point(50, 50));
  EXPECT_EQ(t.scale.keyframes()[0].time, secs(0.5));
  EXPECT_EQ(t.anchorPoint.keyframes()[0].value, PropertyValue::point(0, 0));
  endTurnExpectingOneStep();
}

TEST_F(AIToolEditsTest, AddKeyframeFailures) {
  EXPECT_EQ(fails("add_keyframe", on(solid, R"("property": "opacity", "time_seconds": 1)")),
            "opacity needs value.");
  EXPECT_EQ(fails("add_keyframe", on(solid, R"("property": "rotation", "value": "fast")")), "rotation needs value.");
  EXPECT_EQ(fails("add_keyframe", on(solid, R"("property": "position", "x": 1)")), "position needs x and y.");
  EXPECT_EQ(fails("add_keyframe", on(solid, R"("property": "skew", "value": 1)")), "skew needs x and y.");
  EXPECT_EQ(fails("add_keyframe", on(solid, R"("property": "Opacity", "value": 1)")),
            "Unknown property 'Opacity'. Use position, scale, rotation, opacity or anchorPoint.");
  EXPECT_EQ(fails("add_keyframe", on(solid, R"("value": 1)")), "Missing string 'property'.");
  const Uuid stale = Uuid::make();
  EXPECT_EQ(fails("add_keyframe", on(stale, R"("property": "opacity", "value": 1)")),
            "No layer with id " + stale.text() + ".");
  EXPECT_EQ(fails("add_keyframe", on(solid, R"("property": "opacity", "value": 1, "time_seconds": 1e12)")),
            "Number out of range for 'time_seconds'.");
}

TEST_F(AIToolEditsTest, AddKeyframeNeedsAnActiveComposition) {
  document.updateInteraction([](OVProject& p) { p = OVProject(); });
  EXPECT_EQ(fails("add_keyframe", on(solid, R"("property": "opacity", "value": 1)")), "No active composition.");
}

// -------------------------------------------------------------- behaviors

TEST_F(AIToolEditsTest, ApplyBehaviorStampsTheLayersThatTakeIt) {
  const Uuid stale = Uuid::make();
  EXPECT_EQ(ok("apply_behavior", R"({"behavior_id": "entrance.fade-in", "layer_ids": [)" + quoted(text) + "," +
                                     quoted(stale) + "," + quoted(text) + "]}"),
            "Applied behavior 'entrance.fade-in' to 1 layer(s).");
  EXPECT_TRUE(layer(text).transform.isAnimated() || layer(text).fadeIn.isPositive());
  EXPECT_FALSE(layer(solid).transform.isAnimated());
  // Inside the turn: no step of its own, one for the whole turn.
  EXPECT_EQ(undo.undoCount(), 0u);
  endTurnExpectingOneStep();
}

TEST_F(AIToolEditsTest, ApplyBehaviorFailures) {
  document.updateInteraction([&](OVProject& p) {
    p.updateActiveComposition([&](Composition& c) { c.update(solid, [](Layer& l) { l.isLocked = true; }); });
  });
  EXPECT_EQ(fails("apply_behavior", R"({"behavior_id": "entrance.fade-in", "layer_ids": [)" + quoted(solid) + "]}"),
            "Behavior did not apply to any of the given layers.");
  EXPECT_EQ(fails("apply_behavior", R"({"behavior_id": "entrance.fade-in", "layer_ids": []})"),
            "Behavior did not apply to any of the given layers.");
  EXPECT_EQ(fails("apply_behavior", R"({"behavior_id": "entrance.teleport", "layer_ids": []})"),
            "Unknown behavior_id 'entrance.teleport'.");
  EXPECT_EQ(fails("apply_behavior", R"({"layer_ids": []})"), "Missing string 'behavior_id'.");
  EXPECT_EQ(fails("apply_behavior", R"({"behavior_id": "entrance.fade-in"})"), "Missing array 'layer_ids'.");
}

// ------------------------------------------------------------ whole turns

TEST_F(AIToolEditsTest, AFailedToolLeavesEarlierToolsOfTheTurnApplied) {
  ok("rename_layer", on(text, R"("name": "Title")"));
  const std::int64_t revision = document.revision();
  fails("add_keyframe", on(Uuid::make(), R"("property": "opacity", "value": 1)"));
  EXPECT_EQ(document.revision(), revision);
  ok("add_keyframe", on(text, R"("property": "opacity", "value": 0)"));
  ok("add_keyframe", on(text, R"("property": "opacity", "value": 100, "time_seconds": 1)"));
  EXPECT_EQ(layer(text).name, "Title");
  EXPECT_EQ(layer(text).transform.opacity.keyframes().size(), 2u);
  endTurnExpectingOneStep();
}

}  // namespace
}  // namespace orvane::assistant::testing_support
