#pragma once
// The commands of `orvane <command>`: the headless side of the program that
// renders, exports and inspects projects without a window.
//
// Each command lives in its own file, cli/<name>_command.cpp, and exposes one
// function, `void add<Name>Command(CLI::App& app)`, that adds its subcommand
// to the application: name, one-line description, options, and the callback
// that does the work. addCommands calls them all. A callback that cannot
// finish throws CommandFailure; the program then prints its one sentence on
// stderr and exits with its code. Everything here runs on the main thread.

#include <CLI/CLI.hpp>

#include <stdexcept>
#include <string>

namespace orvane::cli {

// Exit codes of the program.
inline constexpr int kExitSuccess = 0;
inline constexpr int kExitCommandFailed = 1;  // a command could not do its work
inline constexpr int kExitUsage = 2;          // the command line itself was wrong

// Ends the running command. `what()` is the one sentence shown to the user.
class CommandFailure : public std::runtime_error {
 public:
  explicit CommandFailure(const std::string& sentence, int exitCode = kExitCommandFailed)
      : std::runtime_error(sentence), exitCode_(exitCode) {}

  int exitCode() const { return exitCode_; }

 private:
  int exitCode_;
};

// Adds every command to `app`, in the order that --help lists them.
void addCommands(CLI::App& app);

void addInfoCommand(CLI::App& app);
void addFrameCommand(CLI::App& app);
void addResaveCommand(CLI::App& app);
void addPackageCommand(CLI::App& app);
void addProbeCommand(CLI::App& app);
void addImportCommand(CLI::App& app);
void addExportCommand(CLI::App& app);
void addAssistCommand(CLI::App& app);

}  // namespace orvane::cli
