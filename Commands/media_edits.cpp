#include "Commands/media_edits.hpp"

#include <algorithm>
#include <system_error>
#include <unordered_set>

#include "Commands/trash.hpp"
#include "core/project.hpp"
#include "core/text_util.hpp"
#include "document/media_access.hpp"

namespace orvane::commands {

using core::MediaAsset;
using core::OVProject;
using core::Uuid;
using document::MediaAccessManager;
using document::ProjectDocument;
using document::UndoStack;

namespace {

// Absolute and lexically normal, without a trailing separator.
std::filesystem::path standardized(const std::filesystem::path& path) {
  std::error_code error;
  std::filesystem::path absolute = std::filesystem::absolute(path, error);
  if (error) absolute = path;
  absolute = absolute.lexically_normal();
  if (!absolute.has_filename() && absolute.has_relative_path()) absolute = absolute.parent_path();
  return absolute;
}

// After the file behind an asset changed: the cached copies of the old and
// new files go, access is noted for the new one, previews are made anew.
void afterFileChange(const Uuid& id, const std::string& oldPath, const std::string& newPath,
                     const MediaCacheHooks& hooks) {
  MediaAccessManager::shared().noteDirectAccess(id, newPath);
  if (hooks.removeCachedAsset) {
    if (!oldPath.empty()) hooks.removeCachedAsset(oldPath);
    hooks.removeCachedAsset(newPath);
  }
  invalidatePreviewCaches(id, true, hooks);
}

bool usesAny(const core::Layer& layer, const std::unordered_set<Uuid>& ids) {
  const auto assetID = layer.content.assetID();
  return assetID && ids.contains(*assetID);
}

// Plain removal from each layer list: parent links and sequence order stay
// as they are. Compositions without such layers keep their storage.
void removeLayersUsing(OVProject& project, const std::unordered_set<Uuid>& ids) {
  for (std::size_t i = 0; i < project.compositions.size(); ++i) {
    const auto& layers = project.compositions[i].layers;
    if (std::none_of(layers.begin(), layers.end(), [&](const core::Layer& l) { return usesAny(l, ids); })) continue;
    project.compositions.update(i, [&](core::Composition& c) {
      for (std::size_t k = c.layers.size(); k-- > 0;)
        if (usesAny(c.layers[k], ids)) c.layers.erase(k);
    });
  }
}

}  // namespace

// ---------------------------------------------------------------- assets

void addAssets(ProjectDocument& doc, std::vector<MediaAsset> assets, UndoStack* undo) {
  if (assets.empty()) return;
  const char* actionName = assets.size() == 1 ? "Import Media" : "Import Media Files";
  doc.perform(actionName, undo, [&](OVProject& p) {
    for (const MediaAsset& a : assets) p.addAsset(a);
  });
}

void addAssets(ProjectDocument& doc, std::vector<MediaAsset> assets, const std::optional<Uuid>& folderID,
               UndoStack* undo) {
  for (MediaAsset& a : assets) a.folderID = folderID;
  addAssets(doc, std::move(assets), undo);
}

void removeAssets(ProjectDocument& doc, const std::vector<Uuid>& ids, UndoStack* undo) {
  if (ids.empty()) return;
  const std::unordered_set<Uuid> gone(ids.begin(), ids.end());
  doc.perform("Remove Media", undo, [&](OVProject& p) {
    removeLayersUsing(p, gone);
    if (std::none_of(p.assets.begin(), p.assets.end(), [&](const MediaAsset& a) { return gone.contains(a.id); }))
      return;
    std::erase_if(p.assets.mutate(), [&](const MediaAsset& a) { return gone.contains(a.id); });
  });
}

void relinkAsset(ProjectDocument& doc, const Uuid& id, const std::filesystem::path& path,
                 const MediaCacheHooks& hooks, UndoStack* undo) {
  const MediaAsset* asset = doc.project().asset(id);
  if (asset == nullptr) return;
  const std::string oldPath = asset->path;
  const std::string newPath = standardized(path).string();
  const auto bookmark = MediaAccessManager::shared().makeBookmarkFor(newPath);
  doc.perform("Relink Media", undo, [&](OVProject& p) {
    p.updateAsset(id, [&](MediaAsset& a) {
      a.path = newPath;
      a.bookmark = bookmark;
    });
  });
  afterFileChange(id, oldPath, newPath, hooks);
}

void replaceAsset(ProjectDocument& doc, const Uuid& id, const MediaAsset& newAsset, const MediaCacheHooks& hooks,
                  UndoStack* undo) {
  const MediaAsset* asset = doc.project().asset(id);
  if (asset == nullptr) return;
  const std::string oldPath = asset->path;
  doc.perform("Replace Media", undo, [&](OVProject& p) {
    p.updateAsset(id, [&](MediaAsset& a) {
      // Identity and place in the library stay; the file and its facts change.
      MediaAsset replaced = newAsset;
      replaced.id = a.id;
      replaced.name = a.name;
      replaced.dateAdded = a.dateAdded;
      replaced.folderID = a.folderID;
      a = std::move(replaced);
    });
  });
  afterFileChange(id, oldPath, newAsset.path, hooks);
}

void renameAsset(ProjectDocument& doc, const Uuid& id, const std::string& name, UndoStack* undo) {
  const std::string newName = core::trimmed(name);
  if (newName.empty()) return;
  doc.perform("Rename Media", undo, [&](OVProject& p) { p.updateAsset(id, [&](MediaAsset& a) { a.name = newName; }); });
}

std::vector<std::string> deleteAssetsFromDisk(ProjectDocument& doc, const std::vector<Uuid>& ids,
                                              const MediaCacheHooks& hooks, UndoStack* undo) {
  std::vector<std::string> failures;
  if (ids.empty()) return failures;
  for (const Uuid& id : ids) {
    const MediaAsset* asset = doc.project().asset(id);
    if (asset == nullptr) continue;
    const std::filesystem::path file =
        MediaAccessManager::shared().restoreAccessFor(*asset).value_or(std::filesystem::path(asset->path));
    std::error_code error;
    if (std::filesystem::exists(std::filesystem::symlink_status(file, error))) {
      if (auto trashed = moveToTrash(file); !trashed)
        failures.push_back(file.filename().string() + ": " + trashed.error().message());
    }
    if (hooks.removeCachedAsset) hooks.removeCachedAsset(asset->path);
    invalidatePreviewCaches(id, false, hooks);
  }
  removeAssets(doc, ids, undo);
  return failures;
}

void invalidatePreviewCaches(const Uuid& assetID, bool refresh, const MediaCacheHooks& hooks) {
  if (hooks.invalidatePreviews) hooks.invalidatePreviews(assetID, refresh);
}

// --------------------------------------------------------------- folders

Uuid createMediaFolder(ProjectDocument& doc, const std::string& name, const std::optional<Uuid>& parentFolderID,
                       UndoStack* undo) {
  core::MediaFolder folder;
  folder.name = core::trimmed(name);
  if (folder.name.empty()) folder.name = doc.project().uniqueMediaFolderName("New Folder");
  if (parentFolderID && doc.project().mediaFolder(*parentFolderID) != nullptr) folder.parentFolderID = parentFolderID;
  const Uuid id = folder.id;
  doc.perform("New Folder", undo, [&](OVProject& p) { p.addMediaFolder(folder); });
  return id;
}

void renameMediaFolder(ProjectDocument& doc, const Uuid& id, const std::string& name, UndoStack* undo) {
  const std::string newName = core::trimmed(name);
  if (newName.empty()) return;
  doc.perform("Rename Folder", undo,
              [&](OVProject& p) { p.updateMediaFolder(id, [&](core::MediaFolder& f) { f.name = newName; }); });
}

void deleteMediaFolder(ProjectDocument& doc, const Uuid& id, UndoStack* undo) {
  doc.perform("Delete Folder", undo, [&](OVProject& p) { p.removeMediaFolder(id); });
}

void moveAssets(ProjectDocument& doc, const std::vector<Uuid>& ids, const std::optional<Uuid>& folderID,
                UndoStack* undo) {
  if (ids.empty()) return;
  if (folderID && doc.project().mediaFolder(*folderID) == nullptr) return;
  const std::unordered_set<Uuid> moving(ids.begin(), ids.end());
  doc.perform(folderID ? "Move to Folder" : "Move to Library Root", undo, [&](OVProject& p) {
    for (MediaAsset& a : p.assets.mutate())
      if (moving.contains(a.id)) a.folderID = folderID;
  });
}

// -------------------------------------------------------- browse folders

void addBrowseFolder(ProjectDocument& doc, const std::filesystem::path& folder, UndoStack* undo) {
  const std::filesystem::path path = standardized(folder);
  const auto& present = doc.project().browseFolders;
  if (std::any_of(present.begin(), present.end(),
                  [&](const core::BrowseFolder& f) { return standardized(f.path) == path; }))
    return;
  core::BrowseFolder pinned;
  pinned.name = path.has_filename() ? path.filename().string() : path.string();
  pinned.path = path.string();
  pinned.bookmark = MediaAccessManager::shared().makeBookmarkFor(path);
  doc.perform("Add Folder", undo, [&](OVProject& p) { p.browseFolders.mutate().push_back(pinned); });
}

void removeBrowseFolder(ProjectDocument& doc, const Uuid& id, UndoStack* undo) {
  doc.perform("Remove Folder", undo, [&](OVProject& p) {
    const auto& folders = p.browseFolders;
    if (std::none_of(folders.begin(), folders.end(), [&](const core::BrowseFolder& f) { return f.id == id; }))
      return;
    std::erase_if(p.browseFolders.mutate(), [&](const core::BrowseFolder& f) { return f.id == id; });
  });
}

}  // namespace orvane::commands
