// `orvane package PROJECT --into DIR [--name NAME]`: gathers a copy of the
// project and all its media into one folder that can be moved elsewhere.
// Progress goes to stderr: a bar on a terminal, plain lines otherwise.

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "cli/commands.hpp"
#include "cli/project_input.hpp"
#include "document/project_packager.hpp"

namespace orvane::cli {
namespace {

constexpr int kBarWidth = 30;

// Shows each whole percent once.
class ProgressDisplay {
 public:
  ProgressDisplay() : onTerminal_(::isatty(::fileno(stderr)) == 1) {}

  void update(double fraction) {
    const int percent = static_cast<int>(std::floor(std::clamp(fraction, 0.0, 1.0) * 100));
    if (percent == lastPercent_) return;
    lastPercent_ = percent;
    if (onTerminal_) {
      const int filled = percent * kBarWidth / 100;
      std::cerr << "\rPackaging [" << std::string(filled, '#') << std::string(kBarWidth - filled, ' ')
                << "] " << percent << "%" << std::flush;
    } else {
      std::cerr << "Packaging: " << percent << "%\n";
    }
  }

  // Ends the bar's line, so what follows starts on a fresh one.
  void finish() {
    if (onTerminal_ && lastPercent_ >= 0) std::cerr << "\n";
  }

 private:
  bool onTerminal_;
  int lastPercent_ = -1;
};

struct Options {
  std::string project;
  std::string into;
  std::string name;
};

void runPackage(const Options& options) {
  const core::OVProject project = readProjectOrFail(options.project);
  const std::string name =
      options.name.empty() ? std::filesystem::path(options.project).stem().string() : options.name;
  ProgressDisplay display;
  auto report = document::ProjectPackager::package(project, name, options.into,
                                                   [&](double f) { display.update(f); });
  display.finish();
  if (!report) throw CommandFailure(report.error().message);
  std::cout << "Package: " << report->packageURL.string() << "\n"
            << "Copied: " << report->copied.size() << " (" << document::fileByteCountText(report->totalBytes)
            << ")\n"
            << "Missing: " << report->missing.size() << "\n";
  for (const auto& asset : report->missing) std::cout << "  " << asset.path << "\n";
}

}  // namespace

void addPackageCommand(CLI::App& app) {
  auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand(
      "package", "Copy a project and all its media into one folder that can be moved");
  command->add_option("PROJECT", options->project, "The project file to package")->required();
  command->add_option("--into", options->into, "The folder to make the package in")->required();
  command->add_option("--name", options->name,
                      "The package's name (default: the project file's name)");
  command->callback([options] { runPackage(*options); });
}

}  // namespace orvane::cli
