#include "cli/project_input.hpp"

#include "cli/commands.hpp"
#include "document/media_access.hpp"
#include "document/packaged_media.hpp"
#include "document/project_codec.hpp"

namespace orvane::cli {

core::OVProject readProjectOrFail(const std::filesystem::path& path) {
  auto project = document::ProjectCodec::read(path);
  if (!project) throw CommandFailure(project.error().message());
  return std::move(*project);
}

core::OVProject withResolvedMedia(core::OVProject project, const std::filesystem::path& path) {
  if (!document::hasPackagedMedia(project)) return project;
  if (auto resolved = document::resolvedPackagedMedia(project, document::packageFolderFor(path),
                                                      document::MediaAccessManager::shared())) {
    return std::move(*resolved);
  }
  return project;
}

const core::Composition& chosenComposition(const core::OVProject& project, const std::string& name,
                                           std::string_view purpose) {
  if (!name.empty()) {
    for (const core::Composition& c : project.compositions) {
      if (c.name == name) return c;
    }
    throw CommandFailure("The project has no composition named \"" + name + "\".");
  }
  if (const core::Composition* active = project.activeComposition()) return *active;
  throw CommandFailure("The project has no composition to " + std::string(purpose) + ".");
}

}  // namespace orvane::cli
