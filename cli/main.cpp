// Entry point of the orvane executable. For now the command line alone; the
// desktop application takes over here when it is started without a command.

#include <iostream>

#include "cli/command_line.hpp"
#include "cli/commands.hpp"

int main(int argc, char** argv) {
  const int code = orvane::cli::runCommandLine(argc, argv, std::cout, std::cerr);
  // Output that never arrived (a full disk, a closed pipe) is a failure too.
  std::cout.flush();
  if (!std::cout) {
    std::cerr << "orvane: could not write to standard output.\n";
    return code == orvane::cli::kExitSuccess ? orvane::cli::kExitCommandFailed : code;
  }
  return code;
}
