// `orvane import PROJECT FILE...`: adds media files to a project as one
// "Import Media" step and writes the project back in place (atomically).
// Every file that can't be imported is reported with its sentence; the
// others are added all the same, and the command then exits with 1.

#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "Commands/media_edits.hpp"
#include "cli/commands.hpp"
#include "cli/project_input.hpp"
#include "document/project_codec.hpp"
#include "document/project_document.hpp"
#include "media/media_import_service.hpp"
#include "render/gui_runtime.hpp"

namespace orvane::cli {

namespace {

struct ImportOptions {
  std::string project;
  std::vector<std::string> files;
};

void importMedia(const ImportOptions& options) {
  document::ProjectDocument doc(readProjectOrFail(options.project));
  render::ensureGuiRuntime();
  const std::vector<std::filesystem::path> paths(options.files.begin(), options.files.end());
  media::MediaImportResults results = media::MediaImportService::importAssets(paths);
  for (const core::MediaAsset& asset : results.assets) std::cout << "Imported " << asset.name << '\n';
  if (!results.assets.empty()) {
    commands::addAssets(doc, std::move(results.assets), nullptr);
    if (auto written = document::ProjectCodec::write(doc.project(), options.project); !written) {
      throw CommandFailure(written.error().message);
    }
  }
  if (results.failures.empty()) return;
  for (std::size_t i = 0; i + 1 < results.failures.size(); ++i) {
    std::cerr << "orvane: " << results.failures[i].error.message() << '\n';
  }
  throw CommandFailure(results.failures.back().error.message());
}

}  // namespace

void addImportCommand(CLI::App& app) {
  auto options = std::make_shared<ImportOptions>();
  CLI::App* command = app.add_subcommand("import", "Add media files to a project");
  command->add_option("PROJECT", options->project, "The project file to add to")->required();
  command->add_option("FILE", options->files, "The media files to import")->required();
  command->callback([options] { importMedia(*options); });
}

}  // namespace orvane::cli
