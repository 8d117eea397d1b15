// `orvane probe FILE`: what importing the file would record about it, one
// fact a line, without touching any project. A file that can't be imported
// ends with the import's sentence.

#include <cstdio>
#include <iostream>
#include <memory>
#include <string>

#include "cli/commands.hpp"
#include "core/enum_text.hpp"
#include "media/media_import_service.hpp"
#include "render/gui_runtime.hpp"

namespace orvane::cli {

namespace {

std::string number(double value, const char* format) {
  char text[64];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

void printAsset(const core::MediaAsset& asset, std::ostream& out) {
  out << "name: " << asset.name << '\n';
  out << "kind: " << core::rawValue(asset.kind) << '\n';
  out << "path: " << asset.path << '\n';
  out << "duration: " << number(asset.duration.seconds(), "%.3f") << " s\n";
  if (asset.hasVideoTrack || asset.isStill()) {
    out << "size: " << number(asset.naturalSize.width, "%g") << " x " << number(asset.naturalSize.height, "%g")
        << '\n';
  }
  if (asset.frameRate) {
    out << "frame rate: " << asset.frameRate->numerator << '/' << asset.frameRate->denominator << " ("
        << asset.frameRate->displayName() << ")\n";
  }
  out << "video: " << (asset.hasVideoTrack ? "yes" : "no") << '\n';
  out << "audio: ";
  if (asset.hasAudioTrack) {
    out << asset.audioChannelCount << (asset.audioChannelCount == 1 ? " channel, " : " channels, ")
        << number(asset.audioSampleRate, "%g") << " Hz\n";
  } else {
    out << "no\n";
  }
  out << "file size: " << asset.fileSizeBytes << " bytes\n";
}

}  // namespace

void addProbeCommand(CLI::App& app) {
  auto file = std::make_shared<std::string>();
  CLI::App* command = app.add_subcommand("probe", "Show what importing a media file would record");
  command->add_option("FILE", *file, "The media file to read")->required();
  command->callback([file] {
    // Stills are measured through Qt Gui (SVG through its renderer).
    render::ensureGuiRuntime();
    auto asset = media::MediaImportService::importAsset(*file);
    if (!asset) throw CommandFailure(asset.error().message());
    printAsset(*asset, std::cout);
  });
}

}  // namespace orvane::cli
