#include "cli/commands.hpp"

namespace orvane::cli {

// Placeholder until the assist command is written: registered so that the
// command table is complete, failing with one sentence.
void addAssistCommand(CLI::App& app) {
  auto* command = app.add_subcommand("assist", "Let the assistant edit a project from one prompt");
  command->allow_extras();
  command->callback([] { throw CommandFailure("The assistant is not available in this build."); });
}

}  // namespace orvane::cli
