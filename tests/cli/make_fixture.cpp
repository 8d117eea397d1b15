// Writes the project files the command-line tests read, into the folder
// given as the only argument:
//   demo.orvane      two compositions, a video asset on disk (media/clip.mov)
//                    and an image asset that is not (media/gone.png)
//   bad_rate.orvane  a composition whose frame rate is 0/1
//   corrupt.orvane   text that is not JSON
//   newer.orvane     a project of format version 2
//   frame.orvane     "Card": 64 × 48, blue, a red 16 × 16 solid centred at
//                    (16, 24) and a title; "Clear": 32 × 32, transparent, a
//                    green 8 × 8 solid in its middle
//   showcase.orvane  a 1280 × 720 title card to look at: a gradient-like
//                    backdrop of solids, two titles (one with a drop
//                    shadow), shapes, a blurred star and a masked solid

#include <filesystem>
#include <fstream>
#include <iostream>

#include "core/project.hpp"
#include "document/project_codec.hpp"

namespace {

namespace fs = std::filesystem;
using namespace orvane;

core::MediaAsset asset(std::string name, core::MediaKind kind, const fs::path& path) {
  core::MediaAsset a;
  a.name = std::move(name);
  a.kind = kind;
  a.path = path.string();
  return a;
}

core::OVProject demoProject(const fs::path& folder) {
  const core::MediaAsset clip = asset("clip", core::MediaKind::video, folder / "media/clip.mov");
  const core::MediaAsset gone = asset("gone", core::MediaKind::image, folder / "media/gone.png");
  const core::OVTimeRange range{core::OVTime::zero, core::OVTime(5, 1)};
  core::Composition main;
  main.name = "Main";
  main.layers = {core::Layer("Title", core::LayerContent::text({}), range),
                 core::Layer("Clip A", core::LayerContent::video(clip.id), range),
                 core::Layer("Clip B", core::LayerContent::video(clip.id), range)};
  core::Composition edit;
  edit.name = "Edit";
  edit.size = {1280, 720};
  edit.frameRate = core::FrameRate::fps29_97;
  edit.duration = core::OVTime(3, 2);
  edit.editingMode = core::EditingMode::sequence;
  core::OVProject project("Demo", {main, edit});
  project.addAsset(clip);
  project.addAsset(gone);
  return project;
}

core::OVProject badRateProject() {
  core::Composition c;
  c.name = "Broken";
  c.frameRate = core::FrameRate::unchecked(0, 1);
  return core::OVProject("Bad Rate", {c});
}

// A layer of the whole 10 s with its anchor (the middle) at `at`.
core::Layer placedLayer(const std::string& name, core::LayerContent content, core::OVPoint at) {
  core::Layer layer(name, std::move(content), {core::OVTime::zero, core::OVTime(10, 1)});
  layer.transform.position = core::AnimatedProperty::point(at.x, at.y);
  return layer;
}

core::Layer solidLayer(const std::string& name, core::OVColor color, core::OVSize size, core::OVPoint at) {
  return placedLayer(name, core::LayerContent::solid({color, size}), at);
}

core::OVProject frameProject() {
  core::Composition card;
  card.name = "Card";
  card.size = {64, 48};
  card.backgroundColor = {0, 0, 1, 1};
  core::TextContent title;
  title.string = "Hi";
  title.fontSize = 12;
  card.layers = {placedLayer("Title", core::LayerContent::text(title), {48, 40}),
                 solidLayer("Red", {1, 0, 0, 1}, {16, 16}, {16, 24})};
  core::Composition clear;
  clear.name = "Clear";
  clear.size = {32, 32};
  clear.isTransparent = true;
  clear.layers = {solidLayer("Green", {0, 1, 0, 1}, {8, 8}, {16, 16})};
  return core::OVProject("Frames", {card, clear}, card.id);
}

core::EffectInstance effect(const char* id, std::initializer_list<std::pair<const char*, core::PropertyValue>> values) {
  core::EffectInstance instance;
  instance.effectID = id;
  for (const auto& [key, value] : values) instance.parameters[key] = core::AnimatedProperty(value);
  return instance;
}

core::Layer textLayer(const std::string& string, double size, core::OVPoint at, core::OVColor color) {
  core::TextContent text;
  text.string = string;
  text.fontName = "Helvetica-Bold";
  text.fontSize = size;
  text.color = color;
  return placedLayer(string, core::LayerContent::text(text), at);
}

core::Layer shapeLayer(core::ShapeContent::ShapeType type, core::OVSize size, core::OVPoint at, core::OVColor fill) {
  core::ShapeContent shape;
  shape.type = type;
  shape.size = size;
  shape.fillColor = fill;
  shape.cornerRadius = 24;
  shape.isStroked = true;
  shape.strokeWidth = 6;
  return placedLayer("Shape", core::LayerContent::shape(shape), at);
}

core::OVProject showcaseProject() {
  core::Composition c;
  c.name = "Showcase";
  c.size = {1280, 720};
  c.backgroundColor = {0.05, 0.07, 0.12, 1};
  core::Layer title = textLayer("Welcome to Orvane", 96, {640, 420}, core::OVColor::white);
  title.effects = {effect("stylize.dropShadow", {{"distance", core::PropertyValue::double_(10)},
                                                 {"softness", core::PropertyValue::double_(10)}})};
  core::Layer subtitle = textLayer("Compositing, motion graphics and video", 40, {640, 320}, {0.7, 0.85, 1, 1});
  core::Layer star = shapeLayer(core::ShapeContent::ShapeType::star, {180, 180}, {1080, 560}, {1, 0.75, 0.2, 1});
  star.effects = {effect("blur.gaussian", {{"radius", core::PropertyValue::double_(4)},
                                           {"spread", core::PropertyValue::bool_(true)}})};
  star.transform.rotation = core::AnimatedProperty::double_(15);
  core::Layer panel = solidLayer("Panel", {0.85, 0.2, 0.35, 1}, {260, 160}, {200, 560});
  core::LayerMask oval;
  oval.path = core::AnimatedProperty(core::PropertyValue::maskPath(core::MaskPath::ellipseIn({260, 160})));
  oval.feather = core::AnimatedProperty::double_(20);
  panel.masks = {oval};
  c.layers = {title,
              subtitle,
              star,
              panel,
              shapeLayer(core::ShapeContent::ShapeType::rectangle, {300, 90}, {640, 150}, {0.2, 0.55, 0.95, 1}),
              shapeLayer(core::ShapeContent::ShapeType::ellipse, {140, 140}, {1100, 170}, {0.3, 0.85, 0.5, 1}),
              solidLayer("Band", {0.1, 0.14, 0.24, 1}, {1280, 260}, {640, 360})};
  return core::OVProject("Showcase", {c});
}

bool writeText(const fs::path& path, std::string_view text) {
  std::ofstream out(path, std::ios::binary);
  out << text;
  return static_cast<bool>(out);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: make_fixture FOLDER\n";
    return 2;
  }
  const fs::path folder = fs::absolute(argv[1]);
  fs::remove_all(folder);
  fs::create_directories(folder / "media");
  bool ok = writeText(folder / "media/clip.mov", "not really a movie") &&
            writeText(folder / "corrupt.orvane", "not json") &&
            writeText(folder / "newer.orvane", R"({"fv":2})");
  ok = ok && document::ProjectCodec::write(demoProject(folder), folder / "demo.orvane").has_value() &&
       document::ProjectCodec::write(badRateProject(), folder / "bad_rate.orvane").has_value() &&
       document::ProjectCodec::write(frameProject(), folder / "frame.orvane").has_value() &&
       document::ProjectCodec::write(showcaseProject(), folder / "showcase.orvane").has_value();
  if (!ok) std::cerr << "make_fixture: could not write the fixtures in " << folder << "\n";
  return ok ? 0 : 1;
}
