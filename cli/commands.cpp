#include "cli/commands.hpp"

namespace orvane::cli {

void addCommands([[maybe_unused]] CLI::App& app) {
  // TODO: export, frame and info join here, one add<Name>Command(app) each,
  // once the document, render and export libraries they drive exist.
}

}  // namespace orvane::cli
