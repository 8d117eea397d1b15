#include "cli/commands.hpp"

namespace orvane::cli {

void addCommands(CLI::App& app) {
  // TODO: export and frame join here once the render and export libraries
  // they drive exist.
  addInfoCommand(app);
  addResaveCommand(app);
  addPackageCommand(app);
}

}  // namespace orvane::cli
