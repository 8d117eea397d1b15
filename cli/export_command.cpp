#include "cli/commands.hpp"

namespace orvane::cli {

// Placeholder until the export command is written: registered so that the
// command table is complete, failing with one sentence.
void addExportCommand(CLI::App& app) {
  auto* command = app.add_subcommand("export", "Export a composition to a movie or audio file");
  command->allow_extras();
  command->callback([] { throw CommandFailure("Export is not available in this build."); });
}

}  // namespace orvane::cli
