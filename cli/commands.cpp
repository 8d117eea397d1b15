#include "cli/commands.hpp"

namespace orvane::cli {

void addCommands(CLI::App& app) {
  // TODO: export joins here once the export library it drives exists.
  addInfoCommand(app);
  addFrameCommand(app);
  addResaveCommand(app);
  addPackageCommand(app);
  addProbeCommand(app);
  addImportCommand(app);
}

}  // namespace orvane::cli
