// Writes the fuzzer's seed corpus: projects as the program saves them, from
// the test sample down to tiny ones, plus a few damaged files.

#include <fstream>
#include <iostream>

#include "document/project_codec.hpp"
#include "tests/document/sample_project.hpp"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: write_seeds FOLDER\n";
    return 2;
  }
  using namespace orvane;
  namespace ts = document::testing_support;
  const std::filesystem::path folder = argv[1];
  const std::pair<const char*, std::string> seeds[] = {
      {"sample.orvane", document::ProjectCodec::encode(ts::sampleProject())},
      {"large.orvane", document::ProjectCodec::encode(ts::largeProject(2, 2, 3))},
      {"starter.orvane", document::ProjectCodec::encode(core::OVProject::starter())},
      {"sequence.orvane", document::ProjectCodec::encode(core::OVProject::starter(
                              core::CompositionPreset::defaultPreset(), core::EditingMode::sequence))},
      {"empty.json", "{}"},
      {"newer.json", R"({"fv":2})"},
      {"truncated.json", document::ProjectCodec::encode(ts::sampleProject()).substr(0, 700)},
  };
  for (const auto& [name, bytes] : seeds) std::ofstream(folder / name, std::ios::binary) << bytes;
  return 0;
}
