// Writes a fuzzer's seed corpus. "project" (the default): projects as the
// program saves them, from the test sample down to tiny ones, plus a few
// damaged files. "clipboard": layer and keyframe payloads as copying writes
// them, plus damaged and foreign ones. "aireply": model replies and model
// lists of both wire formats, plus damaged ones.

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

Seeds aiReplySeeds() {
  return {
      {"anthropic-text.json",
       R"({"id":"msg_1","type":"message","role":"assistant","content":[{"type":"text","text":"Done."}],)"
       R"("stop_reason":"end_turn"})"},
      {"anthropic-tools.json",
       R"({"content":[{"type":"text","text":"Adding a title."},{"type":"tool_use","id":"toolu_1",)"
       R"("name":"add_text_layer","input":{"text":"Hello","position":{"x":960,"y":540}}},)"
       R"({"type":"tool_use","id":"toolu_2","name":"list_layers"}],"stop_reason":"tool_use"})"},
      {"openai-text.json",
       R"({"id":"chatcmpl-1","object":"chat.completion","choices":[{"index":0,"message":{"role":"assistant",)"
       R"("content":"Done."},"finish_reason":"stop"}]})"},
      {"openai-tools.json",
       R"({"choices":[{"message":{"role":"assistant","content":null,"tool_calls":[{"id":"call_1",)"
       R"("type":"function","function":{"name":"set_opacity","arguments":"{"opacity":0.5}"}}]},)"
       R"("finish_reason":"tool_calls"}]})"},
      {"anthropic-models.json",
       R"({"data":[{"id":"claude-sonnet-4-5","display_name":"Claude Sonnet 4.5"},{"id":"claude-haiku"}]})"},
      {"openai-models.json",
       R"({"object":"list","data":[{"id":"text-embedding-3-small"},{"id":"gpt-4o"},{"id":"GPT-4O-mini"}]})"},
      {"error.json", R"({"type":"error","error":{"type":"authentication_error","message":"invalid x-api-key"}})"},
      {"truncated.json", R"({"choices":[{"message":{"content":"Hel)"},
  };
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view kind = argc == 3 ? argv[2] : "project";
  if ((argc != 2 && argc != 3) || (kind != "project" && kind != "clipboard" && kind != "aireply")) {
    std::cerr << "usage: write_seeds FOLDER [project|clipboard|aireply]\n";
    return 2;
  }
  const std::filesystem::path folder = argv[1];
  const Seeds seeds = kind == "project" ? projectSeeds() : kind == "clipboard" ? clipboardSeeds() : aiReplySeeds();
  for (const auto& [name, bytes] : seeds)
    std::ofstream(folder / name, std::ios::binary) << bytes;
  return 0;
}
