#pragma once
// Keeps track of the media files the program may read now, by asset id.
// Linux has no security-scoped bookmarks: makeBookmarkFor gives none, and
// restoring access falls back on the path stored in the asset, which the
// file permissions alone decide. A bookmark made on another system is kept
// in the record untouched but cannot be resolved here. The map of active
// paths is guarded by a mutex, so any thread may call any member; the
// program shares one instance (shared()) between the document, packaging
// and the media library.

#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

#include "core/base64.hpp"
#include "core/media_asset.hpp"
#include "core/uuid.hpp"

namespace orvane::document {

class MediaAccessManager {
 public:
  static MediaAccessManager& shared();

  // Bookmark data for path; always none on this system.
  std::optional<core::Bytes> makeBookmarkFor(const std::filesystem::path& path) const;
  // The path that may be read now: the one noted for the asset's id, else
  // its stored path when that names a readable file, else none.
  std::optional<std::filesystem::path> restoreAccessFor(const core::MediaAsset& asset);
  // Records a path that is readable without a bookmark.
  void noteDirectAccess(const core::Uuid& assetID, std::filesystem::path path);
  void release(const core::Uuid& assetID);
  void releaseAll();

  // The path noted for the asset, if any.
  std::optional<std::filesystem::path> activePathFor(const core::Uuid& assetID) const;

 private:
  mutable std::mutex lock_;
  std::unordered_map<std::string, std::filesystem::path> activePaths_;  // guarded by lock_
};

// Whether path names a regular file (after links) that this process can open
// for reading now.
bool isReadableFile(const std::filesystem::path& path);

}  // namespace orvane::document
