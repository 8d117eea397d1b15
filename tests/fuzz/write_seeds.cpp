// Writes a fuzzer's seed corpus. "project" (the default): projects as the
// program saves them, from the test sample down to tiny ones, plus a few
// damaged files. "clipboard": layer and keyframe payloads as copying writes
// them, plus damaged and foreign ones.

#include <fstream>
#include <iostream>
#include <string_view>
#include <utility>
#include <vector>

#include "Commands/clipboard_payload.hpp"
#include "document/project_codec.hpp"
#include "tests/document/sample_project.hpp"

namespace {

using namespace orvane;
namespace ts = document::testing_support;
using Seeds = std::vector<std::pair<const char*, std::string>>;

Seeds projectSeeds() {
  return {
      {"sample.orvane", document::ProjectCodec::encode(ts::sampleProject())},
      {"large.orvane", document::ProjectCodec::encode(ts::largeProject(2, 2, 3))},
      {"starter.orvane", document::ProjectCodec::encode(core::OVProject::starter())},
      {"sequence.orvane", document::ProjectCodec::encode(core::OVProject::starter(
                              core::CompositionPreset::defaultPreset(), core::EditingMode::sequence))},
      {"empty.json", "{}"},
      {"newer.json", R"({"fv":2})"},
      {"truncated.json", document::ProjectCodec::encode(ts::sampleProject()).substr(0, 700)},
  };
}

commands::OVClipboard::KeyframePayload keyframePayload() {
  using Channel = commands::ClipboardChannel;
  const core::Layer text = ts::animatedTextLayer();
  const auto& position = text.transform.position.keyframes().items();
  const auto& opacity = text.transform.opacity.keyframes().items();
  Channel transform;
  Channel crop{Channel::Kind::crop};
  crop.edge = core::LayerCrop::Edge::right;
  Channel effect{Channel::Kind::effectParameter, {}, {}, "blur.gaussian", "radius"};
  return {{{transform, position},
           {crop, opacity},
           {effect, opacity},
           {Channel{Channel::Kind::audioVolume}, opacity},
           {Channel{Channel::Kind::audioPan}, {}},
           {Channel{Channel::Kind::textReveal}, opacity}},
          ts::secs(0.5)};
}

Seeds clipboardSeeds() {
  using commands::OVClipboard;
  const core::OVProject sample = ts::sampleProject();
  std::vector<core::Layer> layers;
  for (const auto& c : sample.compositions) layers.insert(layers.end(), c.layers.begin(), c.layers.end());
  const std::string layerJson = OVClipboard::encode(
      OVClipboard::LayerPayload{layers, {sample.assets.begin(), sample.assets.end()}, ts::secs(0)});
  return {
      {"layers.json", layerJson},
      {"one-layer.json", OVClipboard::encode(OVClipboard::LayerPayload{{layers[1]}, {}, ts::secs(1)})},
      {"keyframes.json", OVClipboard::encode(keyframePayload())},
      {"truncated.json", layerJson.substr(0, 900)},
      {"project.orvane", document::ProjectCodec::encode(core::OVProject::starter())},
      {"empty.json", "{}"},
  };
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view kind = argc == 3 ? argv[2] : "project";
  if ((argc != 2 && argc != 3) || (kind != "project" && kind != "clipboard")) {
    std::cerr << "usage: write_seeds FOLDER [project|clipboard]\n";
    return 2;
  }
  const std::filesystem::path folder = argv[1];
  for (const auto& [name, bytes] : kind == "project" ? projectSeeds() : clipboardSeeds())
    std::ofstream(folder / name, std::ios::binary) << bytes;
  return 0;
}
