#include "document/media_access.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <system_error>

namespace orvane::document {

MediaAccessManager& MediaAccessManager::shared() {
  static MediaAccessManager instance;
  return instance;
}

std::optional<core::Bytes> MediaAccessManager::makeBookmarkFor(const std::filesystem::path&) const {
  return std::nullopt;
}

std::optional<std::filesystem::path> MediaAccessManager::restoreAccessFor(
    const core::MediaAsset& asset) {
  std::lock_guard guard(lock_);
  if (auto it = activePaths_.find(asset.id.text()); it != activePaths_.end()) return it->second;
  // A bookmark, if any, came from a system that has them; the stored path is
  // all this one can go by.
  std::filesystem::path path(asset.path);
  if (isReadableFile(path)) return path;
  return std::nullopt;
}

void MediaAccessManager::noteDirectAccess(const core::Uuid& assetID, std::filesystem::path path) {
  std::lock_guard guard(lock_);
  activePaths_[assetID.text()] = std::move(path);
}

void MediaAccessManager::release(const core::Uuid& assetID) {
  std::lock_guard guard(lock_);
  activePaths_.erase(assetID.text());
}

void MediaAccessManager::releaseAll() {
  std::lock_guard guard(lock_);
  activePaths_.clear();
}

std::optional<std::filesystem::path> MediaAccessManager::activePathFor(
    const core::Uuid& assetID) const {
  std::lock_guard guard(lock_);
  if (auto it = activePaths_.find(assetID.text()); it != activePaths_.end()) return it->second;
  return std::nullopt;
}

bool isReadableFile(const std::filesystem::path& path) {
  if (path.empty()) return false;
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return false;
  // Opening is the only sure test: permission bits alone miss ACLs and
  // read-only mounts of other kinds.
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) return false;
  ::close(fd);
  return true;
}

}  // namespace orvane::document
