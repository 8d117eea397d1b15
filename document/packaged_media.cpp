#include "document/packaged_media.hpp"

#include <algorithm>
#include <system_error>
#include <utility>
#include <vector>

#include "document/project_document.hpp"

namespace orvane::document {
namespace {

namespace fs = std::filesystem;

bool canReadFolder(const fs::path& folder) {
  std::error_code error;
  fs::directory_iterator listing(folder, error);
  return !error;
}

}  // namespace

bool isPackagedMediaPath(const std::string& path) { return !path.empty() && !path.starts_with('/'); }

bool hasPackagedMedia(const core::OVProject& project) {
  return std::ranges::any_of(project.assets,
                             [](const core::MediaAsset& a) { return isPackagedMediaPath(a.path); });
}

fs::path packageFolderFor(const fs::path& projectPath) {
  std::error_code error;
  fs::path absolute = fs::absolute(projectPath, error);
  if (error) absolute = projectPath;
  return absolute.lexically_normal().parent_path();
}

std::optional<core::OVProject> resolvedPackagedMedia(const core::OVProject& project,
                                                     const fs::path& folder,
                                                     MediaAccessManager& access) {
  if (!canReadFolder(folder)) return std::nullopt;
  core::OVProject resolved = project;
  std::vector<std::pair<core::Uuid, fs::path>> noted;
  for (const auto& asset : project.assets) {
    if (!isPackagedMediaPath(asset.path)) continue;
    const fs::path absolute = (folder / asset.path).lexically_normal();
    resolved.updateAsset(asset.id, [&](core::MediaAsset& a) {
      a.path = absolute.string();
      a.bookmark = access.makeBookmarkFor(absolute);
    });
    noted.emplace_back(asset.id, absolute);
  }
  for (auto& [id, path] : noted) access.noteDirectAccess(id, std::move(path));
  return resolved;
}

bool ProjectDocument::hasPackagedMedia() const { return document::hasPackagedMedia(project_); }

void ProjectDocument::resolvePackagedMedia(const fs::path& projectPath) {
  if (!hasPackagedMedia()) return;
  // Without a sandbox there is no one to ask for the folder: an unreadable
  // one leaves the paths relative, and the next opening tries again.
  auto resolved =
      resolvedPackagedMedia(project_, packageFolderFor(projectPath), MediaAccessManager::shared());
  if (!resolved) return;
  performWithoutUndo([&](core::OVProject& p) { p.assets = resolved->assets; });
}

}  // namespace orvane::document
