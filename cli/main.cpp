// Entry point of the orvane executable. With no arguments, or with project
// files alone, it is the desktop application; with a command (info, frame,
// resave, package, ...) or an option it is the headless command line.

#include <filesystem>
#include <iostream>
#include <string_view>
#include <vector>

#include "app/desktop_application.hpp"
#include "cli/command_line.hpp"
#include "cli/commands.hpp"

namespace {

int runCommandLine(int argc, char** argv) {
  const int code = orvane::cli::runCommandLine(argc, argv, std::cout, std::cerr);
  // Output that never arrived (a full disk, a closed pipe) is a failure too.
  std::cout.flush();
  if (!std::cout) {
    std::cerr << "orvane: could not write to standard output.\n";
    return code == orvane::cli::kExitSuccess ? orvane::cli::kExitCommandFailed : code;
  }
  return code;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string_view> arguments(argv + 1, argv + argc);
  if (!orvane::app::argumentsAskForDesktop(arguments)) return runCommandLine(argc, argv);
  // Without a display Qt would abort the program; say what works instead.
  if (!orvane::app::displayAvailable()) {
    std::cerr << "orvane: " << orvane::app::kNoDisplaySentence << '\n';
    return orvane::cli::kExitUsage;
  }
  const std::vector<std::filesystem::path> files(arguments.begin(), arguments.end());
  return orvane::app::runDesktopApplication(argc, argv, files);
}
