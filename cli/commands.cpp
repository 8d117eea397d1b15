#include "cli/commands.hpp"

namespace orvane::cli {

void addCommands(CLI::App& app) {
  addInfoCommand(app);
  addFrameCommand(app);
  addExportCommand(app);
  addResaveCommand(app);
  addPackageCommand(app);
  addProbeCommand(app);
  addImportCommand(app);
  addAssistCommand(app);
}

}  // namespace orvane::cli
