#include "core/project.hpp"

#include <algorithm>
#include <utility>

#include "core/build_info.hpp"

namespace orvane::core {
namespace {

char foldCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// Case-insensitive order: ASCII letters fold to lower case, every other byte
// compares as it is.
bool lessIgnoringCase(const std::string& a, const std::string& b) {
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
    return static_cast<unsigned char>(foldCase(x)) < static_cast<unsigned char>(foldCase(y));
  });
}

void sortFoldersByName(SharedVector<MediaFolder>& folders) {
  auto& items = folders.mutate();
  std::stable_sort(items.begin(), items.end(),
                   [](const MediaFolder& a, const MediaFolder& b) { return lessIgnoringCase(a.name, b.name); });
}

bool isAsciiDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

// --- Construction ---

OVProject::OVProject() : appVersion(buildVersion()), createdAt(nowTimestamp()), modifiedAt(createdAt) {}

OVProject::OVProject(std::string name, std::vector<Composition> compositions,
                     std::optional<Uuid> activeCompositionID)
    : OVProject() {
  this->name = std::move(name);
  if (!activeCompositionID && !compositions.empty()) activeCompositionID = compositions.front().id;
  this->activeCompositionID = activeCompositionID;
  this->compositions = PersistentList<Composition>(compositions);
}

OVProject OVProject::starter(const CompositionPreset& preset, EditingMode mode, std::optional<std::string> name) {
  Composition c = preset.makeComposition(std::string(displayName(mode)) + " 1", mode);
  if (mode == EditingMode::sequence) c.tracks = Composition::defaultTracks();
  const Uuid activeID = c.id;
  OVProject project;
  if (name) project.name = std::move(*name);
  project.compositions.push_back(std::move(c));
  project.activeCompositionID = activeID;
  return project;
}

// --- Compositions ---

const Composition* OVProject::activeComposition() const {
  if (activeCompositionID) {
    if (const Composition* c = composition(*activeCompositionID)) return c;
  }
  return compositions.empty() ? nullptr : &compositions.front();
}

const Composition* OVProject::composition(const Uuid& id) const {
  for (const Composition& c : compositions)
    if (c.id == id) return &c;
  return nullptr;
}

void OVProject::updateComposition(const Uuid& id, const std::function<void(Composition&)>& change) {
  if (auto i = compositions.indexWhere([&](const Composition& c) { return c.id == id; })) {
    compositions.update(*i, change);
  }
}

void OVProject::updateActiveComposition(const std::function<void(Composition&)>& change) {
  const Composition* active = activeComposition();
  if (active == nullptr) return;
  const Uuid id = active->id;
  updateComposition(id, change);
}

void OVProject::addComposition(Composition c, bool makeActive) {
  const Uuid id = c.id;
  compositions.push_back(std::move(c));
  if (makeActive) activeCompositionID = id;
}

std::string OVProject::uniqueCompositionName(const std::string& base) const {
  std::unordered_set<std::string> names;
  for (const Composition& c : compositions) names.insert(c.name);
  return uniqueName(base, names);
}

// --- Assets ---

const MediaAsset* OVProject::asset(const Uuid& id) const {
  for (const MediaAsset& a : assets)
    if (a.id == id) return &a;
  return nullptr;
}

const MediaAsset* OVProject::assetAtPath(const std::string& path) const {
  for (const MediaAsset& a : assets)
    if (a.path == path) return &a;
  return nullptr;
}

void OVProject::addAsset(MediaAsset a) {
  auto& items = assets.mutate();
  auto it = std::find_if(items.begin(), items.end(), [&](const MediaAsset& x) { return x.id == a.id; });
  if (it != items.end()) {
    *it = std::move(a);
  } else {
    items.push_back(std::move(a));
  }
}

void OVProject::updateAsset(const Uuid& id, const std::function<void(MediaAsset&)>& change) {
  if (asset(id) == nullptr) return;  // leaves the storage shared
  for (MediaAsset& a : assets.mutate()) {
    if (a.id == id) {
      change(a);
      return;
    }
  }
}

std::unordered_set<Uuid> OVProject::unusedAssetIDs() const {
  std::unordered_set<Uuid> unused;
  for (const MediaAsset& a : assets) unused.insert(a.id);
  for (const Composition& c : compositions)
    for (const Layer& l : c.layers)
      if (auto used = l.content.assetID()) unused.erase(*used);
  return unused;
}

std::size_t OVProject::layerCountUsingAsset(const Uuid& assetID) const {
  std::size_t count = 0;
  for (const Composition& c : compositions)
    for (const Layer& l : c.layers)
      if (l.content.assetID() == assetID) ++count;
  return count;
}

std::vector<MediaAsset> OVProject::missingAssets() const {
  std::vector<MediaAsset> missing;
  for (const MediaAsset& a : assets)
    if (!a.fileExists()) missing.push_back(a);
  return missing;
}

// --- Media folders ---

const MediaFolder* OVProject::mediaFolder(const Uuid& id) const {
  for (const MediaFolder& f : mediaFolders)
    if (f.id == id) return &f;
  return nullptr;
}

std::vector<MediaAsset> OVProject::assetsInFolder(const std::optional<Uuid>& folderID) const {
  std::vector<MediaAsset> out;
  for (const MediaAsset& a : assets)
    if (a.folderID == folderID) out.push_back(a);
  return out;
}

void OVProject::addMediaFolder(MediaFolder f) {
  mediaFolders.mutate().push_back(std::move(f));
  sortFoldersByName(mediaFolders);
}

void OVProject::updateMediaFolder(const Uuid& id, const std::function<void(MediaFolder&)>& change) {
  if (mediaFolder(id) == nullptr) return;
  for (MediaFolder& f : mediaFolders.mutate())
    if (f.id == id) change(f);
  sortFoldersByName(mediaFolders);
}

void OVProject::removeMediaFolder(const Uuid& id) {
  const MediaFolder* folder = mediaFolder(id);
  if (folder == nullptr) return;
  // A folder that names itself as parent sends its contents to the top level.
  std::optional<Uuid> parent = folder->parentFolderID;
  if (parent == id) parent.reset();
  const auto inRemoved = [&](const MediaAsset& a) { return a.folderID == id; };
  if (std::any_of(assets.begin(), assets.end(), inRemoved)) {
    for (MediaAsset& a : assets.mutate())
      if (a.folderID == id) a.folderID = parent;
  }
  auto& folders = mediaFolders.mutate();
  std::erase_if(folders, [&](const MediaFolder& f) { return f.id == id; });
  for (MediaFolder& f : folders)
    if (f.parentFolderID == id) f.parentFolderID = parent;
}

std::string OVProject::uniqueMediaFolderName(const std::string& base) const {
  std::unordered_set<std::string> names;
  for (const MediaFolder& f : mediaFolders) names.insert(f.name);
  return uniqueName(base, names);
}

// --- Nesting ---

bool OVProject::layerNameMatchesComposition(const std::string& name, const std::string& compositionName) {
  if (name == compositionName) return true;
  const std::size_t n = compositionName.size();
  if (name.size() < n + 2 || !name.starts_with(compositionName) || name[n] != ' ') return false;
  return std::all_of(name.begin() + static_cast<std::ptrdiff_t>(n) + 1, name.end(), isAsciiDigit);
}

void OVProject::syncPrecompositionLayerNamesFor(const Uuid& id, const std::string& oldName,
                                                const std::string& newName) {
  if (oldName == newName || newName.empty()) return;
  const auto follows = [&](const Layer& l) {
    return l.content.compositionID() == id && layerNameMatchesComposition(l.name, oldName);
  };
  // Compositions and layers that do not change stay shared with the old value.
  compositions.updateWhere(
      [&](const Composition& c) { return std::any_of(c.layers.begin(), c.layers.end(), follows); },
      [&](Composition& c) { c.layers.updateWhere(follows, [&](Layer& l) { l.name = newName; }); });
}

namespace {

// Depth-first walk with an explicit stack from `start` through the nested
// composition layers, each id once. visit(id, composition or null) returns
// true to stop the walk; the result says whether it stopped.
template <class Visit>
bool walkNestedCompositions(const OVProject& project, const Uuid& start, Visit visit) {
  std::vector<Uuid> stack{start};
  std::unordered_set<Uuid> visited;
  while (!stack.empty()) {
    const Uuid current = stack.back();
    stack.pop_back();
    if (!visited.insert(current).second) continue;
    const Composition* c = project.composition(current);
    if (visit(current, c)) return true;
    if (c == nullptr) continue;
    for (const Layer& l : c->layers)
      if (auto nested = l.content.compositionID()) stack.push_back(*nested);
  }
  return false;
}

}  // namespace

bool OVProject::wouldCreateCompositionCycle(const Uuid& hostID, const Uuid& nestedID) const {
  return walkNestedCompositions(*this, nestedID, [&](const Uuid& id, const Composition*) { return id == hostID; });
}

std::unordered_map<Uuid, const Composition*> OVProject::reachableCompositionsFrom(const Uuid& id) const {
  std::unordered_map<Uuid, const Composition*> reached;
  walkNestedCompositions(*this, id, [&](const Uuid& current, const Composition* c) {
    if (c != nullptr) reached.emplace(current, c);
    return false;
  });
  return reached;
}

std::size_t hashValue(const OVProject& p) {
  std::size_t seed = hashAll(p.formatVersion, p.appVersion, p.id, p.name, p.compositions, p.assets,
                             p.mediaFolders, p.browseFolders, p.activeCompositionID);
  hashCombine(seed, hashValue(p.createdAt));
  hashCombine(seed, hashValue(p.modifiedAt));
  return seed;
}

}  // namespace orvane::core
