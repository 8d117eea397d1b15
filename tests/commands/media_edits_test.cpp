// Media and folder edits: each one step with its name, undone exactly.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Commands/media_edits.hpp"
#include "document/media_access.hpp"
#include "tests/commands/commands_test_support.hpp"

namespace orvane::commands {
namespace {

using namespace testing_support;

// Records what the edits asked of the caches.
struct HookLog {
  std::vector<std::string> removedPaths;
  std::vector<std::pair<Uuid, bool>> invalidated;
  MediaCacheHooks hooks() {
    return {[this](const std::string& p) { removedPaths.push_back(p); },
            [this](const Uuid& id, bool refresh) { invalidated.emplace_back(id, refresh); }};
  }
};

std::vector<std::string> folderNames(const OVProject& p) {
  std::vector<std::string> names;
  for (const MediaFolder& f : p.mediaFolders) names.push_back(f.name);
  return names;
}

class MediaEditsTest : public ::testing::Test {
 protected:
  ProjectDocument doc{projectWith({})};
  UndoStack undo;
  const OVProject& project() const { return doc.project(); }
};

TEST_F(MediaEditsTest, ImportNamesByCountAndMergesByID) {
  MediaAsset a = videoAsset("a", 4), b = audioAsset("b", 2);
  expectNoEdit(doc, undo, [&] { addAssets(doc, {}, &undo); });
  expectUndoableEdit(doc, undo, "Import Media Files", [&] { addAssets(doc, {a, b}, &undo); });
  a.name = "a again";
  expectUndoableEdit(doc, undo, "Import Media", [&] { addAssets(doc, {a}, &undo); });
  ASSERT_EQ(project().assets.size(), 2u);
  EXPECT_EQ(project().assets[0].name, "a again");
  const Uuid folder = createMediaFolder(doc, "Bin", std::nullopt, &undo);
  expectUndoableEdit(doc, undo, "Import Media", [&] { addAssets(doc, {imageAsset("c")}, folder, &undo); });
  EXPECT_EQ(project().assets.back().folderID, folder);
}

TEST_F(MediaEditsTest, RemovingAnAssetRemovesItsLayersInEveryComposition) {
  const MediaAsset used = videoAsset("used", 4), kept = imageAsset("kept");
  OVProject p = projectWith({});
  p.addAsset(used);
  p.addAsset(kept);
  std::vector<Layer> survivors;
  for (int i = 0; i < 3; ++i) {
    Composition c;
    Layer gone = clip("gone", 0, 1, LayerContent::video(used.id)), child = clip("child", 0, 1);
    child.parentLayerID = gone.id;
    const Layer still = clip("still", 0, 1, LayerContent::image(kept.id));
    c.layers = PersistentList<Layer>(std::vector<Layer>{gone, child, still});
    p.addComposition(c, false);
  }
  doc = ProjectDocument(p);
  expectNoEdit(doc, undo, [&] { removeAssets(doc, {}, &undo); });
  expectUndoableEdit(doc, undo, "Remove Media", [&] { removeAssets(doc, {used.id}, &undo); });
  EXPECT_EQ(project().assets.size(), 1u);
  for (std::size_t i = 1; i < project().compositions.size(); ++i) {
    const auto& layers = project().compositions[i].layers;
    ASSERT_EQ(layers.size(), 2u);
    EXPECT_EQ(layers[0].name, "child");
    EXPECT_TRUE(layers[0].parentLayerID.has_value());  // a plain removal repairs no links
  }
}

TEST_F(MediaEditsTest, FoldersAreTrimmedCountedAndSorted) {
  Uuid first;
  expectUndoableEdit(doc, undo, "New Folder", [&] { first = createMediaFolder(doc, " \u00A0", std::nullopt, &undo); });
  createMediaFolder(doc, "", std::nullopt, &undo);
  const Uuid clips = createMediaFolder(doc, " clips\n", first, &undo);
  EXPECT_EQ(folderNames(project()), (std::vector<std::string>{"clips", "New Folder", "New Folder 2"}));
  EXPECT_EQ(project().mediaFolder(clips)->parentFolderID, first);
  expectNoEdit(doc, undo, [&] { renameMediaFolder(doc, clips, "  ", &undo); });
  expectUndoableEdit(doc, undo, "Rename Folder", [&] { renameMediaFolder(doc, clips, " Zoo ", &undo); });
  EXPECT_EQ(folderNames(project()), (std::vector<std::string>{"New Folder", "New Folder 2", "Zoo"}));
}

TEST_F(MediaEditsTest, DeletingAFolderLiftsItsContentsOneLevel) {
  const Uuid top = createMediaFolder(doc, "Top", std::nullopt, &undo);
  const Uuid mid = createMediaFolder(doc, "Mid", top, &undo);
  const Uuid leaf = createMediaFolder(doc, "Leaf", mid, &undo);
  const MediaAsset inMid = imageAsset("m"), inLeaf = imageAsset("l");
  addAssets(doc, {inMid}, mid, &undo);
  addAssets(doc, {inLeaf}, leaf, &undo);
  expectUndoableEdit(doc, undo, "Delete Folder", [&] { deleteMediaFolder(doc, mid, &undo); });
  EXPECT_EQ(project().mediaFolder(mid), nullptr);
  EXPECT_EQ(project().mediaFolder(leaf)->parentFolderID, top);
  EXPECT_EQ(project().asset(inMid.id)->folderID, top);
  EXPECT_EQ(project().asset(inLeaf.id)->folderID, leaf);
}

TEST_F(MediaEditsTest, MovingAssetsBetweenFolders) {
  const MediaAsset a = imageAsset("a"), b = imageAsset("b");
  addAssets(doc, {a, b}, &undo);
  const Uuid folder = createMediaFolder(doc, "F", std::nullopt, &undo);
  expectNoEdit(doc, undo, [&] { moveAssets(doc, {}, folder, &undo); });
  expectNoEdit(doc, undo, [&] { moveAssets(doc, {a.id}, Uuid::make(), &undo); });
  expectUndoableEdit(doc, undo, "Move to Folder", [&] { moveAssets(doc, {a.id, b.id}, folder, &undo); });
  EXPECT_EQ(project().assetsInFolder(folder).size(), 2u);
  expectUndoableEdit(doc, undo, "Move to Library Root", [&] { moveAssets(doc, {b.id}, std::nullopt, &undo); });
  EXPECT_EQ(project().asset(b.id)->folderID, std::nullopt);
}

TEST_F(MediaEditsTest, ReplaceKeepsIdentityAndLayers) {
  MediaAsset old = videoAsset("old", 4);
  old.folderID = createMediaFolder(doc, "F", std::nullopt, &undo);
  addAssets(doc, {old}, &undo);
  const Layer layer = clip("old", 0, 4, LayerContent::video(old.id));
  doc.updateActiveComposition("Add", &undo, [&](Composition& c) { c.insert(layer); });
  const MediaAsset still = imageAsset("new");
  HookLog log;
  expectUndoableEdit(doc, undo, "Replace Media", [&] { replaceAsset(doc, old.id, still, log.hooks(), &undo); });
  MediaAsset expected = still;
  expected.id = old.id;
  expected.name = old.name;
  expected.dateAdded = old.dateAdded;
  expected.folderID = old.folderID;
  EXPECT_EQ(*project().asset(old.id), expected);
  EXPECT_EQ(*doc.activeComposition()->layer(layer.id), layer);
  EXPECT_EQ(log.removedPaths, (std::vector<std::string>{old.path, still.path}));
  EXPECT_EQ(log.invalidated, (std::vector<std::pair<Uuid, bool>>{{old.id, true}}));
}

TEST_F(MediaEditsTest, RelinkWritesTheStandardizedPath) {
  const MediaAsset a = videoAsset("a", 4);
  addAssets(doc, {a}, &undo);
  HookLog log;
  expectNoEdit(doc, undo, [&] { relinkAsset(doc, Uuid::make(), "/x.mov", log.hooks(), &undo); });
  EXPECT_TRUE(log.removedPaths.empty());
  expectUndoableEdit(doc, undo, "Relink Media",
                     [&] { relinkAsset(doc, a.id, "/data/x/../clips/a.mov", log.hooks(), &undo); });
  EXPECT_EQ(project().asset(a.id)->path, "/data/clips/a.mov");
  EXPECT_EQ(document::MediaAccessManager::shared().activePathFor(a.id), "/data/clips/a.mov");
  EXPECT_EQ(log.removedPaths, (std::vector<std::string>{a.path, "/data/clips/a.mov"}));
  EXPECT_EQ(log.invalidated.size(), 1u);
}

TEST_F(MediaEditsTest, RenameAssetTrimsAndLeavesLayerNames) {
  const MediaAsset a = videoAsset("a", 4);
  addAssets(doc, {a}, &undo);
  const Layer layer = clip("a", 0, 1, LayerContent::video(a.id));
  doc.updateActiveComposition("Add", &undo, [&](Composition& c) { c.insert(layer); });
  expectNoEdit(doc, undo, [&] { renameAsset(doc, a.id, "\u2029", &undo); });
  expectUndoableEdit(doc, undo, "Rename Media", [&] { renameAsset(doc, a.id, " Intro ", &undo); });
  EXPECT_EQ(project().asset(a.id)->name, "Intro");
  EXPECT_EQ(doc.activeComposition()->layers[0].name, "a");
}

TEST_F(MediaEditsTest, BrowseFoldersArePinnedOncePerPath) {
  expectUndoableEdit(doc, undo, "Add Folder", [&] { addBrowseFolder(doc, "/data/footage/", &undo); });
  ASSERT_EQ(project().browseFolders.size(), 1u);
  const BrowseFolder pinned = project().browseFolders[0];
  EXPECT_EQ(pinned.path, "/data/footage");
  EXPECT_EQ(pinned.name, "footage");
  expectNoEdit(doc, undo, [&] { addBrowseFolder(doc, "/data/./footage", &undo); });
  expectNoEdit(doc, undo, [&] { removeBrowseFolder(doc, Uuid::make(), &undo); });
  expectUndoableEdit(doc, undo, "Remove Folder", [&] { removeBrowseFolder(doc, pinned.id, &undo); });
  EXPECT_TRUE(project().browseFolders.empty());
}

}  // namespace
}  // namespace orvane::commands
