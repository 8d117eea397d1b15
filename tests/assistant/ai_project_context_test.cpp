// The text the model reads about the project, checked character for
// character against hand-written expectations for small projects with fixed
// ids.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "assistant/ai_project_context.hpp"
#include "behaviors/behavior_catalog.hpp"
#include "core/effect_catalog.hpp"
#include "core/project.hpp"

namespace orvane::assistant {
namespace {

using core::OVTime;
using core::PropertyValue;

core::Uuid id(std::string_view text) { return *core::Uuid::parse(text); }

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  if (!text.empty() && text.back() == '\n') lines.emplace_back();
  return lines;
}

// The lines from the heading up to the empty line that ends its section.
std::vector<std::string> section(const std::string& text, const std::string& heading) {
  const auto lines = linesOf(text);
  std::vector<std::string> out;
  bool inside = false;
  for (const auto& line : lines) {
    if (line == heading) {
      inside = true;
      continue;
    }
    if (inside && line.empty()) break;
    if (inside) out.push_back(line);
  }
  return out;
}

core::MediaAsset asset(std::string_view assetID, std::string name, core::MediaKind kind, std::string path,
                       core::OVSize size, OVTime duration) {
  core::MediaAsset a;
  a.id = id(assetID);
  a.name = std::move(name);
  a.kind = kind;
  a.path = std::move(path);
  a.naturalSize = size;
  a.duration = duration;
  return a;
}

core::Layer layer(std::string_view layerID, std::string name, core::LayerContent content, OVTime start,
                  OVTime duration) {
  core::Layer l(std::move(name), std::move(content), core::OVTimeRange(start, duration));
  l.id = id(layerID);
  return l;
}

core::EffectInstance effect(std::string_view instanceID, std::string effectID) {
  core::EffectInstance e;
  e.id = id(instanceID);
  e.effectID = std::move(effectID);
  return e;
}

core::SequenceTrack track(std::string_view trackID, std::string name) {
  core::SequenceTrack t;
  t.id = id(trackID);
  t.name = std::move(name);
  return t;
}

// A sequence with three tracks and three layers: a plain text layer, a
// keyed and effected clip on multiply, and a nested composition on screen
// whose stale layer name gives way to the composition's.
core::OVProject smallProject() {
  core::Composition intro;
  intro.id = id("11111111-2222-4333-8444-555555555555");
  intro.name = "Intro";

  core::Composition edit;
  edit.id = id("aaaaaaaa-bbbb-4ccc-8ddd-eeeeeeeeeeee");
  edit.name = "Edit";
  edit.size = {1280.9, 720.99};
  edit.frameRate = core::FrameRate::fps29_97;
  edit.duration = OVTime(5, 2);
  edit.isTransparent = true;
  edit.editingMode = core::EditingMode::sequence;
  edit.tracks = std::vector{track("00000000-0000-0000-0000-0000000000C1", "V2"),
                            track("00000000-0000-0000-0000-0000000000C2", "V1"),
                            track("00000000-0000-0000-0000-0000000000C3", "A1")};

  core::Layer title = layer("00000000-0000-0000-0000-0000000000A1", "Title",
                            core::LayerContent::text(core::TextContent{}), OVTime::zero, OVTime(10, 1));

  core::Layer clip = layer("00000000-0000-0000-0000-0000000000A2", "Clip",
                           core::LayerContent::video(id("00000000-0000-0000-0000-0000000000B1")),
                           OVTime(1, 100000), OVTime(1, 3));
  clip.blendMode = core::OVBlendMode::multiply;
  // Keyed out of channel order on purpose: the text lists channels in theirs.
  clip.transform.skew.upsertKeyframe(PropertyValue::double_(5), OVTime::zero);
  clip.transform.opacity.upsertKeyframe(PropertyValue::double_(0), OVTime::zero);
  clip.transform.opacity.upsertKeyframe(PropertyValue::double_(100), OVTime(1, 1));
  clip.transform.position.upsertKeyframe(PropertyValue::point(0, 0), OVTime::zero);
  clip.effects = std::vector{effect("00000000-0000-0000-0000-0000000000E1", "blur.gaussian"),
                             effect("00000000-0000-0000-0000-0000000000E2", "color.hue")};

  core::Layer nested = layer("00000000-0000-0000-0000-0000000000A3", "Old name",
                             core::LayerContent::precomposition(intro.id), OVTime(1, 10), OVTime(5, 2));
  nested.blendMode = core::OVBlendMode::screen;

  edit.layers = core::PersistentList<core::Layer>(std::vector{title, clip, nested});

  core::OVProject project("Test", {intro, edit}, edit.id);
  project.addAsset(asset("00000000-0000-0000-0000-0000000000B1", "Beach", core::MediaKind::video,
                         "/media/trips/beach.mov", {1920.6, 1080.2}, OVTime(25, 10)));
  project.addAsset(asset("00000000-0000-0000-0000-0000000000B2", "Theme", core::MediaKind::audio,
                         "/music/theme song.m4a", {0, 0}, OVTime(90, 1)));
  project.addAsset(asset("00000000-0000-0000-0000-0000000000B3", "Logo", core::MediaKind::image, "logo.png",
                         {512, 256}, OVTime::zero));
  return project;
}

const std::string kSmallProjectHead =
    "## Project\n"
    "Compositions: 2\n"
    "Media assets: 3\n"
    "\n"
    "## Active composition\n"
    "id: AAAAAAAA-BBBB-4CCC-8DDD-EEEEEEEEEEEE\n"
    "name: Edit\n"
    "size: 1280x720\n"
    "transparent_background: true\n"
    "editing_mode: sequence (tracks: V2,V1,A1; clips on a track never overlap \u2014 new clips go after the last "
    "one)\n"
    "duration_seconds: 2.5\n"
    "frame_rate: 29.970 fps\n"
    "layers (3):\n"
    "- id=00000000-0000-0000-0000-0000000000A1 name=\"Title\" kind=text start=0.0 duration=10.0\n"
    "- id=00000000-0000-0000-0000-0000000000A2 name=\"Clip\" kind=video start=1e-05 duration=0.3333333333333333 "
    "asset_id=00000000-0000-0000-0000-0000000000B1 blend=multiply animated=[position,opacity,skew] "
    "effects=[blur.gaussian@00000000-0000-0000-0000-0000000000E1,color.hue@00000000-0000-0000-0000-0000000000E2]\n"
    "- id=00000000-0000-0000-0000-0000000000A3 name=\"Intro\" kind=precomposition start=0.1 duration=2.5 "
    "blend=screen\n"
    "\n"
    "## Media library\n"
    "- id=00000000-0000-0000-0000-0000000000B1 name=\"Beach\" kind=video file=beach.mov 1920x1080 duration=2.5s\n"
    "- id=00000000-0000-0000-0000-0000000000B2 name=\"Theme\" kind=audio file=theme song.m4a 0x0 duration=90.0s\n"
    "- id=00000000-0000-0000-0000-0000000000B3 name=\"Logo\" kind=image file=logo.png 512x256 duration=0.0s\n"
    "\n"
    "## Available effects (id: parameter ids with type and range)\n";

TEST(AIProjectContextTest, SmallSequenceProjectReadsAsExpected) {
  const std::string text = AIProjectContext::build(smallProject());
  ASSERT_GE(text.size(), kSmallProjectHead.size());
  EXPECT_EQ(text.substr(0, kSmallProjectHead.size()), kSmallProjectHead);
  EXPECT_NE(text.back(), '\n');
}

TEST(AIProjectContextTest, LayersModeCompositionHasNoTrackNote) {
  core::Composition c;
  c.id = id("00000000-0000-0000-0000-000000000001");
  c.name = "Comp";
  c.frameRate = core::FrameRate::fps25;
  c.tracks = std::vector{track("00000000-0000-0000-0000-0000000000C1", "V1")};
  const std::string text = AIProjectContext::build(core::OVProject("P", {c}));
  EXPECT_EQ(section(text, "## Active composition"),
            (std::vector<std::string>{"id: 00000000-0000-0000-0000-000000000001", "name: Comp", "size: 1920x1080",
                                      "transparent_background: false", "editing_mode: layers",
                                      "duration_seconds: 10.0", "frame_rate: 25 fps", "layers (0):"}));
  EXPECT_EQ(section(text, "## Media library"), std::vector<std::string>{"(empty)"});
}

TEST(AIProjectContextTest, NoActiveCompositionKeepsTheOtherSections) {
  const std::string text = AIProjectContext::build(core::OVProject());
  const std::string head =
      "## Project\n"
      "Compositions: 0\n"
      "Media assets: 0\n"
      "\n"
      "No active composition.\n"
      "\n"
      "## Media library\n"
      "(empty)\n"
      "\n"
      "## Available effects (id: parameter ids with type and range)\n";
  EXPECT_EQ(text.substr(0, head.size()), head);
  EXPECT_EQ(section(text, "## Blend modes").size(), 1u);
  EXPECT_EQ(section(text, "## Available behavior ids").size(), 1u);
}

TEST(AIProjectContextTest, EffectsBlendModesAndBehaviorsFollowTheCatalogs) {
  const std::string text = AIProjectContext::build(core::OVProject());
  const auto effects = section(text, "## Available effects (id: parameter ids with type and range)");
  const auto& catalog = core::EffectCatalog::all();
  ASSERT_EQ(effects.size(), catalog.size());
  for (std::size_t i = 0; i < catalog.size(); ++i) EXPECT_TRUE(effects[i].starts_with("- " + catalog[i].id + " ["));
  auto has = [&](const std::string& line) { return std::ranges::find(effects, line) != effects.end(); };
  EXPECT_TRUE(has("- blur.gaussian [Blur & Sharpen]: radius=number 0.0\u2026200.0, spread=bool"));
  EXPECT_TRUE(has("- color.hue [Colour Correction]: angle=degrees"));
  EXPECT_TRUE(has("- color.temperature [Colour Correction]: temperature=number 2000.0\u202611000.0, "
                  "tint=number -150.0\u2026150.0"));
  EXPECT_TRUE(has("- key.chroma [Keying]: keyColor=color{r,g,b,a}, threshold=number 0.0\u20261.0, "
                  "softness=number 0.0\u20261.0, invert=bool"));

  EXPECT_EQ(section(text, "## Blend modes"),
            std::vector<std::string>{
                "normal, multiply, screen, overlay, softLight, hardLight, darken, lighten, difference, add"});

  const auto behaviorLines = section(text, "## Available behavior ids");
  ASSERT_EQ(behaviorLines.size(), 1u);
  const auto& behaviors = behaviors::BehaviorCatalog::all();
  std::string expected;
  for (const auto& b : behaviors) expected += (expected.empty() ? "" : ", ") + b.id;
  EXPECT_EQ(behaviorLines[0], expected);
  EXPECT_TRUE(behaviorLines[0].starts_with("entrance.fade-in, entrance.fade-up, "));
  EXPECT_EQ(std::ranges::count(behaviorLines[0], ','), static_cast<std::ptrdiff_t>(behaviors.size()) - 1);
  // The behavior line is the last of the text.
  EXPECT_TRUE(text.ends_with("\n" + behaviorLines[0]));
}

core::OVProject projectWithStills(int count) {
  core::OVProject project;
  for (int i = 0; i < count; ++i) {
    core::MediaAsset a;
    a.id = core::Uuid{0, static_cast<std::uint64_t>(i + 1)};
    a.name = "a" + std::to_string(i);
    a.kind = core::MediaKind::image;
    a.path = "/stills/a" + std::to_string(i) + ".png";
    a.naturalSize = {320, 240};
    project.addAsset(a);
  }
  return project;
}

TEST(AIProjectContextTest, MediaLibraryListsEightyAssetsAndCountsTheRest) {
  const auto over = section(AIProjectContext::build(projectWithStills(81)), "## Media library");
  ASSERT_EQ(over.size(), 81u);
  EXPECT_EQ(over[0], "- id=00000000-0000-0000-0000-000000000001 name=\"a0\" kind=image file=a0.png 320x240 "
                     "duration=0.0s");
  EXPECT_EQ(over[79], "- id=00000000-0000-0000-0000-000000000050 name=\"a79\" kind=image file=a79.png 320x240 "
                      "duration=0.0s");
  EXPECT_EQ(over[80], "\u2026 1 more");

  const auto exact = section(AIProjectContext::build(projectWithStills(80)), "## Media library");
  ASSERT_EQ(exact.size(), 80u);
  EXPECT_EQ(exact[79], over[79]);

  const auto many = section(AIProjectContext::build(projectWithStills(200)), "## Media library");
  ASSERT_EQ(many.size(), 81u);
  EXPECT_EQ(many[80], "\u2026 120 more");
}

TEST(AIProjectContextTest, CorruptSizesPrintWithoutFailing) {
  core::Composition c;
  c.id = id("00000000-0000-0000-0000-000000000001");
  c.size = {std::numeric_limits<double>::quiet_NaN(), 1e300};
  core::OVProject project("P", {c});
  project.addAsset(asset("00000000-0000-0000-0000-0000000000B1", "x", core::MediaKind::video, "/", {-3.7, -1e300},
                         OVTime::zero));
  const std::string text = AIProjectContext::build(project);
  EXPECT_NE(text.find("\nsize: 0x9223372036854775807\n"), std::string::npos);
  EXPECT_NE(text.find(" file=/ -3x-9223372036854775808 duration=0.0s\n"), std::string::npos);
}

TEST(AIProjectContextTest, SystemPromptIsTheInstructionsThenTheState) {
  const core::OVProject project = smallProject();
  const std::string instructions =
      "You are Orvane\u2019s composition assistant. You edit the open project using tools.\n"
      "\n"
      "Rules:\n"
      "- Prefer tools over prose when changing the project.\n"
      "- Use existing media from the library (add_media_layer) \u2014 never invent file paths.\n"
      "- Keep layer counts reasonable; do not spam layers.\n"
      "- After edits, briefly confirm what you did.\n"
      "- Times are in seconds. Scale is percent (100 = 100%). Opacity is 0\u2013100.\n"
      "- Position is the layer's anchor in composition pixels with the origin at the\n"
      "  BOTTOM-LEFT: y increases upwards, so the top edge of a 1080-high composition is y=1080\n"
      "  and the centre is (width/2, height/2).\n"
      "- To animate, call add_keyframe for each property at two or more times (e.g. opacity 0 at\n"
      "  0 s and 100 at 1 s for a fade-in, or position at start and end for a move). Behaviors\n"
      "  are ready-made animations; prefer them for common moves.\n"
      "- Transparent output: set update_composition transparent=true when the user wants\n"
      "  the background see-through (they can then export ProRes 4444 / HEVC with alpha).\n"
      "- Effect parameters: use the ids listed under Available effects; bools take true/false,\n"
      "  colours take {r,g,b,a} in 0\u20131.\n"
      "\n"
      "Current project state:\n";
  EXPECT_EQ(AIProjectContext::systemPrompt(project), instructions + AIProjectContext::build(project));
}

}  // namespace
}  // namespace orvane::assistant
