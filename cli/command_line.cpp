#include "cli/command_line.hpp"

#include <ostream>
#include <string>
#include <utility>

#include "cli/commands.hpp"
#include "core/build_info.hpp"

namespace orvane::cli {

namespace {

constexpr const char* kProgramName = "orvane";
constexpr const char* kDescription =
    "Orvane: compositing, motion graphics and video editing, with headless rendering and "
    "export from the command line.";
constexpr const char* kNoCommandsYet =
    "Commands (export, frame, info, ...) are added in later versions.";

// CLI11's own messages run over two lines; keep to one sentence on one line,
// with a pointer to --help.
std::string oneLineFailure(const CLI::App* app, const CLI::Error& error) {
  std::string message = error.what();
  for (char& c : message) {
    if (c == '\n' || c == '\r') c = ' ';
  }
  while (!message.empty() && (message.back() == ' ' || message.back() == '.')) message.pop_back();
  return std::string(kProgramName) + ": " + message + "; see '" + app->get_name() +
         " --help'.\n";
}

void buildApp(CLI::App& app) {
  app.set_version_flag("--version", "Orvane " + core::buildVersion(),
                       "Print the version and build number, then exit");
  app.failure_message(oneLineFailure);
  addCommands(app);
  const auto commands = std::as_const(app).get_subcommands([](const CLI::App*) { return true; });
  if (commands.empty()) app.footer(kNoCommandsYet);
}

}  // namespace

int runCommandLine(int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
  try {
    CLI::App app{kDescription, kProgramName};
    buildApp(app);
    // main() opens the desktop application when there are no arguments; a
    // caller that still gets here without any is shown the usage.
    if (argc <= 1) {
      out << app.help();
      return kExitSuccess;
    }
    try {
      app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
      // Help and version come this way too, with exit code zero.
      const int code = app.exit(e, out, err);
      return code == 0 ? kExitSuccess : kExitUsage;
    }
    return kExitSuccess;
  } catch (const CommandFailure& failure) {
    err << kProgramName << ": " << failure.what() << '\n';
    return failure.exitCode();
  } catch (const std::exception& e) {
    err << kProgramName << ": unexpected error: " << e.what() << '\n';
    return kExitCommandFailed;
  } catch (...) {
    err << kProgramName << ": unexpected error of unknown kind.\n";
    return kExitCommandFailed;
  }
}

}  // namespace orvane::cli
