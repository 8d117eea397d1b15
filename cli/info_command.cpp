// `orvane info PROJECT`: a readable summary of a project file: its name and
// versions, each composition with its size, rate, duration, mode and layers,
// and each media file with whether it is on disk now.

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <string>

#include "cli/commands.hpp"
#include "cli/project_input.hpp"
#include "core/enum_text.hpp"
#include "core/numeric.hpp"
#include "core/timecode.hpp"
#include "document/packaged_media.hpp"

namespace orvane::cli {
namespace {

namespace fs = std::filesystem;

std::string plural(std::size_t count, std::string_view word) {
  return std::to_string(count) + " " + std::string(word) + (count == 1 ? "" : "s");
}

// A rate from a file may be zero or negative, and every frame computation on
// such a rate stops the program; it is shown, never used.
bool isValidRate(const core::FrameRate& rate) { return rate.numerator > 0 && rate.denominator > 0; }

std::string durationText(const core::Composition& c) {
  const double seconds = c.duration.seconds();
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.1f s", seconds);
  std::string text = buffer;
  // Far beyond any real timeline the frame index would not fit.
  if (isValidRate(c.frameRate) && std::isfinite(seconds) &&
      std::fabs(seconds * c.frameRate.fps()) < 1e15)
    text += " (" + core::Timecode{c.frameRate}.stringFor(c.duration) + ")";
  return text;
}

// "3 layers: 1 text, 2 video", kinds in alphabetical order.
std::string layerCountText(const core::Composition& c) {
  std::map<std::string_view, std::size_t> counts;
  for (const auto& layer : c.layers) ++counts[core::rawValue(layer.kind())];
  std::string text = plural(c.layers.size(), "layer");
  std::string separator = ": ";
  for (const auto& [kind, count] : counts) {
    text += separator + std::to_string(count) + " " + std::string(kind);
    separator = ", ";
  }
  return text;
}

void printComposition(const core::Composition& c, bool isActive) {
  const std::string rate = isValidRate(c.frameRate) ? c.frameRate.displayName() : "invalid frame rate";
  std::cout << "  \"" << c.name << "\"" << (isActive ? " (active)" : "") << ": "
            << core::numberText(c.size.width) << "x" << core::numberText(c.size.height) << ", "
            << rate << ", " << durationText(c) << ", " << core::rawValue(c.editingMode)
            << " mode\n    " << layerCountText(c) << "\n";
}

// Relative paths of a packaged project count from the project file's folder.
bool assetFileExists(const core::MediaAsset& asset, const fs::path& projectPath) {
  if (asset.path.empty()) return false;
  fs::path path(asset.path);
  if (document::isPackagedMediaPath(asset.path)) path = document::packageFolderFor(projectPath) / path;
  std::error_code error;
  return fs::exists(path, error);
}

void printInfo(const core::OVProject& project, const fs::path& projectPath) {
  std::cout << "Project: " << project.name << "\n"
            << "Format version: " << project.formatVersion << "\n"
            << "App version: " << (project.appVersion.empty() ? "unknown" : project.appVersion)
            << "\n"
            << "Compositions: " << project.compositions.size() << "\n";
  const core::Composition* active = project.activeComposition();
  for (const auto& c : project.compositions) printComposition(c, active && active->id == c.id);
  std::cout << "Assets: " << project.assets.size() << "\n";
  for (const auto& asset : project.assets) {
    std::cout << "  " << core::rawValue(asset.kind) << ": " << asset.path
              << (assetFileExists(asset, projectPath) ? "" : " (missing)") << "\n";
  }
}

}  // namespace

void addInfoCommand(CLI::App& app) {
  auto projectPath = std::make_shared<std::string>();
  CLI::App* command = app.add_subcommand("info", "Summarise a project file");
  command->add_option("PROJECT", *projectPath, "The project file to read")->required();
  command->callback([projectPath] { printInfo(readProjectOrFail(*projectPath), *projectPath); });
}

}  // namespace orvane::cli
