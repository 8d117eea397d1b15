// The project side of the `orvane assist` tests:
//
//   orvane_cli_assist_probe make PATH   writes a fresh starter project
//   orvane_cli_assist_probe show PATH   prints the active composition's layers
//
// One line per layer: `layer "NAME" text "STRING" opacity T=V T=V`, the
// text part only for text layers, the keyframes of opacity in seconds.

#include <iostream>
#include <string>

#include "core/project.hpp"
#include "document/project_codec.hpp"

namespace {

using namespace orvane;

int show(const std::string& path) {
  auto project = document::ProjectCodec::read(path);
  if (!project) {
    std::cerr << project.error().message() << '\n';
    return 1;
  }
  const core::Composition* composition = project->activeComposition();
  if (!composition) {
    std::cout << "no active composition\n";
    return 0;
  }
  for (const core::Layer& layer : composition->layers) {
    std::cout << "layer \"" << layer.name << '"';
    if (const auto* text = layer.content.textContent()) std::cout << " text \"" << text->string << '"';
    std::cout << " opacity";
    for (const core::Keyframe& key : layer.transform.opacity.keyframes()) {
      std::cout << ' ' << key.time.seconds() << '=' << key.value.doubleValue().value_or(-1);
    }
    std::cout << '\n';
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: " << argv[0] << " make|show PATH\n";
    return 2;
  }
  const std::string mode = argv[1];
  if (mode == "make") {
    if (auto written = document::ProjectCodec::write(core::OVProject::starter(), argv[2]); !written) {
      std::cerr << written.error().message << '\n';
      return 1;
    }
    return 0;
  }
  if (mode == "show") return show(argv[2]);
  std::cerr << "unknown mode " << mode << '\n';
  return 2;
}
