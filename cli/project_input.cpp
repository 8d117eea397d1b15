#include "cli/project_input.hpp"

#include "cli/commands.hpp"
#include "document/project_codec.hpp"

namespace orvane::cli {

core::OVProject readProjectOrFail(const std::filesystem::path& path) {
  auto project = document::ProjectCodec::read(path);
  if (!project) throw CommandFailure(project.error().message());
  return std::move(*project);
}

}  // namespace orvane::cli
