#pragma once
// The whole document as one value: compositions, media records, folders and
// the active composition. Copying a project is O(1): compositions and their
// layers are shared persistently. Owned by the document on the main thread;
// other threads work on copies.

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "core/composition.hpp"
#include "core/composition_preset.hpp"
#include "core/media_asset.hpp"
#include "core/persistent_list.hpp"
#include "core/shared_vector.hpp"
#include "core/timestamp.hpp"

namespace orvane::core {

struct OVProject {
  static constexpr std::int64_t currentFormatVersion = 1;

  std::int64_t formatVersion = currentFormatVersion;
  std::string appVersion;
  Uuid id = Uuid::make();
  std::string name = "Untitled";
  PersistentList<Composition> compositions;
  SharedVector<MediaAsset> assets;
  SharedVector<MediaFolder> mediaFolders;
  SharedVector<BrowseFolder> browseFolders;
  std::optional<Uuid> activeCompositionID;
  Timestamp createdAt;
  Timestamp modifiedAt;

  // An empty, untitled project stamped with this build and now.
  OVProject();
  // The active composition defaults to the first one.
  OVProject(std::string name, std::vector<Composition> compositions,
            std::optional<Uuid> activeCompositionID = std::nullopt);

  // One composition from the preset, named "Composition 1" or "Sequence 1"
  // after the mode, and active; a sequence gets the default tracks.
  static OVProject starter(const CompositionPreset& preset = CompositionPreset::defaultPreset(),
                           EditingMode mode = EditingMode::layers,
                           std::optional<std::string> name = std::nullopt);

  // --- Compositions ---
  // The one with activeCompositionID, else the first; null when none.
  const Composition* activeComposition() const;
  const Composition* composition(const Uuid& id) const;
  void updateComposition(const Uuid& id, const std::function<void(Composition&)>& change);
  void updateActiveComposition(const std::function<void(Composition&)>& change);
  void addComposition(Composition c, bool makeActive);
  std::string uniqueCompositionName(const std::string& base = "Composition") const;

  // --- Assets ---
  const MediaAsset* asset(const Uuid& id) const;
  const MediaAsset* assetAtPath(const std::string& path) const;
  // Replaces the record with the same id in place, else appends.
  void addAsset(MediaAsset a);
  void updateAsset(const Uuid& id, const std::function<void(MediaAsset&)>& change);
  // Assets no layer content names, in any composition.
  std::unordered_set<Uuid> unusedAssetIDs() const;
  std::size_t layerCountUsingAsset(const Uuid& assetID) const;
  // Assets whose file is not on disk now.
  std::vector<MediaAsset> missingAssets() const;

  // --- Media folders ---
  const MediaFolder* mediaFolder(const Uuid& id) const;
  std::vector<MediaAsset> assetsInFolder(const std::optional<Uuid>& folderID) const;
  // Appends, then sorts folders by name (case-insensitive).
  void addMediaFolder(MediaFolder f);
  void updateMediaFolder(const Uuid& id, const std::function<void(MediaFolder&)>& change);
  // Its assets and child folders move up to its parent; then it goes.
  void removeMediaFolder(const Uuid& id);
  std::string uniqueMediaFolderName(const std::string& base) const;

  // --- Nesting ---
  // Renames layers nesting composition id whose name still follows old.
  void syncPrecompositionLayerNamesFor(const Uuid& id, const std::string& oldName,
                                       const std::string& newName);
  // Equal, or compositionName + " " + digits.
  static bool layerNameMatchesComposition(const std::string& name, const std::string& compositionName);
  bool wouldCreateCompositionCycle(const Uuid& hostID, const Uuid& nestedID) const;
  // Every composition reachable through nested layers, the start included.
  std::unordered_map<Uuid, const Composition*> reachableCompositionsFrom(const Uuid& id) const;

  friend bool operator==(const OVProject&, const OVProject&) = default;
};

std::size_t hashValue(const OVProject& p);

}  // namespace orvane::core
