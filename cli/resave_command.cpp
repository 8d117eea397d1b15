// `orvane resave PROJECT -o OUT`: reads a project and writes it again in the
// current form of the file, stamped with this build. Writing over the file
// read is allowed: the new file replaces the old one whole or not at all.

#include <filesystem>
#include <memory>
#include <string>

#include "cli/commands.hpp"
#include "cli/project_input.hpp"
#include "document/project_codec.hpp"

namespace orvane::cli {

void addResaveCommand(CLI::App& app) {
  struct Options {
    std::string project;
    std::string output;
  };
  auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand(
      "resave", "Read a project file and write it again in the current file format");
  command->add_option("PROJECT", options->project, "The project file to read")->required();
  command->add_option("-o,--output", options->output, "Where to write the project")->required();
  command->callback([options] {
    const core::OVProject project = readProjectOrFail(options->project);
    if (auto written = document::ProjectCodec::write(project, options->output); !written)
      throw CommandFailure(written.error().message);
  });
}

}  // namespace orvane::cli
