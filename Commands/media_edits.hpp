#pragma once
// The edits of the project's media list: importing and removing assets,
// the media bin's folders, relinking and replacing files, renaming, moving
// files to the Trash, and the disk folders pinned to the file browser.
// Each is one undo step; an empty list or an unknown id leaves no trace.
// Main thread only.

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/media_asset.hpp"
#include "core/uuid.hpp"
#include "document/project_document.hpp"
#include "document/undo_stack.hpp"

namespace orvane::commands {

// The services that keep data derived from media files: the cache of opened
// assets by path and the thumbnail and waveform previews by asset. The media
// library supplies them; an empty hook is skipped, so edits also run where
// no such service exists (tests, the command line).
struct MediaCacheHooks {
  // Forgets what is cached for the file at path.
  std::function<void(const std::string& path)> removeCachedAsset;
  // Drops the asset's previews; with refresh, asks for new ones at once.
  std::function<void(const core::Uuid& assetID, bool refresh)> invalidatePreviews;
};

// "Import Media" for one asset, "Import Media Files" for several. An asset
// whose id is already there replaces that record in place.
void addAssets(document::ProjectDocument& doc, std::vector<core::MediaAsset> assets, document::UndoStack* undo);
// The same with every asset put in the folder (none: the library root).
void addAssets(document::ProjectDocument& doc, std::vector<core::MediaAsset> assets,
               const std::optional<core::Uuid>& folderID, document::UndoStack* undo);
// "Remove Media": the assets and, in every composition, the layers showing
// them. Parent links and sequence order are left as they are.
void removeAssets(document::ProjectDocument& doc, const std::vector<core::Uuid>& ids, document::UndoStack* undo);

// "New Folder": named by the trimmed name, or "New Folder", "New Folder 2",
// ... when that is blank. A parent that is not in the project gives a
// folder at the top level. Returns the new folder's id.
core::Uuid createMediaFolder(document::ProjectDocument& doc, const std::string& name,
                             const std::optional<core::Uuid>& parentFolderID, document::UndoStack* undo);
// "Rename Folder"; a blank name does nothing.
void renameMediaFolder(document::ProjectDocument& doc, const core::Uuid& id, const std::string& name,
                       document::UndoStack* undo);
// "Delete Folder": its assets and subfolders move up one level.
void deleteMediaFolder(document::ProjectDocument& doc, const core::Uuid& id, document::UndoStack* undo);
// "Move to Folder", or "Move to Library Root" without a folder. A folder that
// is not in the project does nothing.
void moveAssets(document::ProjectDocument& doc, const std::vector<core::Uuid>& ids,
                const std::optional<core::Uuid>& folderID, document::UndoStack* undo);

// "Relink Media": the asset reads the file at path from now on. The old and
// new files leave the caches and the previews are made anew.
void relinkAsset(document::ProjectDocument& doc, const core::Uuid& id, const std::filesystem::path& path,
                 const MediaCacheHooks& hooks, document::UndoStack* undo);
// "Replace Media": the asset takes the file and its facts from newAsset and
// keeps its id, name, date added and folder, so every layer using it shows
// the new file unchanged (a video layer may now read a still).
void replaceAsset(document::ProjectDocument& doc, const core::Uuid& id, const core::MediaAsset& newAsset,
                  const MediaCacheHooks& hooks, document::UndoStack* undo);
// "Rename Media"; a blank name does nothing. Layers keep their names.
void renameAsset(document::ProjectDocument& doc, const core::Uuid& id, const std::string& name,
                 document::UndoStack* undo);
// Moves each asset's file to the Trash, then removes all the assets (those
// whose file could not go too) in one "Remove Media" step. Its undo brings
// back the records, not the files. Returns "<file name>: <reason>" for each
// file that stayed.
std::vector<std::string> deleteAssetsFromDisk(document::ProjectDocument& doc, const std::vector<core::Uuid>& ids,
                                              const MediaCacheHooks& hooks, document::UndoStack* undo);

// "Add Folder": pins the folder by its absolute, normalised path, named
// after its last component; a path already pinned does nothing.
void addBrowseFolder(document::ProjectDocument& doc, const std::filesystem::path& folder, document::UndoStack* undo);
// "Remove Folder".
void removeBrowseFolder(document::ProjectDocument& doc, const core::Uuid& id, document::UndoStack* undo);

// Drops the asset's thumbnails and waveform; with refresh, asks for new ones.
void invalidatePreviewCaches(const core::Uuid& assetID, bool refresh, const MediaCacheHooks& hooks);

}  // namespace orvane::commands
