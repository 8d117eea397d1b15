#include "core/project.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "core/build_info.hpp"

namespace orvane::core {
namespace {

OVTime sec(double s) { return OVTime::fromSeconds(s); }

Layer layerWith(std::string name, LayerContent content) {
  return Layer(std::move(name), std::move(content), OVTimeRange(OVTime::zero, sec(5)));
}

Composition compositionNamed(std::string name, std::vector<Layer> layers = {}) {
  Composition c;
  c.name = std::move(name);
  c.layers = PersistentList<Layer>(layers);
  return c;
}

MediaAsset assetNamed(std::string name, MediaKind kind = MediaKind::video) {
  MediaAsset a;
  a.name = name;
  a.kind = kind;
  a.path = "/media/" + name;
  return a;
}

MediaFolder folderNamed(std::string name, std::optional<Uuid> parent = std::nullopt) {
  MediaFolder f;
  f.name = std::move(name);
  f.parentFolderID = parent;
  return f;
}

std::vector<std::string> folderNames(const OVProject& p) {
  std::vector<std::string> names;
  for (const MediaFolder& f : p.mediaFolders) names.push_back(f.name);
  return names;
}

std::vector<std::string> assetNames(const std::vector<MediaAsset>& assets) {
  std::vector<std::string> names;
  for (const MediaAsset& a : assets) names.push_back(a.name);
  return names;
}

// --- Construction and compositions ---

TEST(ProjectTest, NewProjectIsStampedWithBuildAndNow) {
  const Timestamp before = nowTimestamp();
  const OVProject p;
  const Timestamp after = nowTimestamp();
  EXPECT_EQ(p.formatVersion, 1);
  EXPECT_EQ(p.appVersion, buildVersion());
  EXPECT_EQ(p.name, "Untitled");
  EXPECT_EQ(p.createdAt, p.modifiedAt);
  EXPECT_LE(before, p.createdAt);
  EXPECT_LE(p.createdAt, after);
  EXPECT_TRUE(p.compositions.empty());
  EXPECT_EQ(p.activeCompositionID, std::nullopt);
  EXPECT_EQ(p.activeComposition(), nullptr);
}

TEST(ProjectTest, ActiveCompositionDefaultsToFirstAndFallsBackOnIt) {
  const Composition a = compositionNamed("A"), b = compositionNamed("B");
  const OVProject implicit("P", {a, b});
  EXPECT_EQ(implicit.name, "P");
  EXPECT_EQ(implicit.activeCompositionID, a.id);
  const OVProject explicitB("P", {a, b}, b.id);
  ASSERT_NE(explicitB.activeComposition(), nullptr);
  EXPECT_EQ(explicitB.activeComposition()->name, "B");
  const OVProject stale("P", {a, b}, Uuid::make());
  ASSERT_NE(stale.activeComposition(), nullptr);
  EXPECT_EQ(stale.activeComposition()->name, "A");
  EXPECT_EQ(OVProject("Empty", {}).activeComposition(), nullptr);
}

TEST(ProjectTest, StarterHasOneActiveCompositionFromPreset) {
  const OVProject p = OVProject::starter();
  ASSERT_EQ(p.compositions.size(), 1u);
  const Composition& c = p.compositions[0];
  EXPECT_EQ(p.name, "Untitled");
  EXPECT_EQ(p.activeCompositionID, c.id);
  EXPECT_EQ(c.name, "Composition 1");
  EXPECT_EQ(c.editingMode, EditingMode::layers);
  EXPECT_EQ(c.size, (OVSize{1920, 1080}));
  EXPECT_EQ(c.duration, sec(10));
  EXPECT_EQ(c.workArea, OVTimeRange(OVTime::zero, sec(10)));
  EXPECT_TRUE(c.tracks.empty());
}

TEST(ProjectTest, StarterInSequenceModeHasDefaultTracks) {
  const auto shorts = *CompositionPreset::matching(1080, 1920);
  const OVProject p = OVProject::starter(shorts, EditingMode::sequence, "Trip");
  EXPECT_EQ(p.name, "Trip");
  const Composition* c = p.activeComposition();
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c->name, "Sequence 1");
  EXPECT_TRUE(c->isSequence());
  EXPECT_EQ(c->size, (OVSize{1080, 1920}));
  EXPECT_EQ(c->duration, sec(30));
  std::vector<std::string> tracks;
  for (const SequenceTrack& t : c->tracks) tracks.push_back(t.name);
  EXPECT_EQ(tracks, (std::vector<std::string>{"V3", "V2", "V1", "A1"}));
}

TEST(ProjectTest, UpdateCompositionChangesOnlyThatOne) {
  OVProject p("P", {compositionNamed("A"), compositionNamed("B")});
  const OVProject before = p;
  p.updateComposition(Uuid::make(), [](Composition& c) { c.name = "X"; });
  EXPECT_EQ(p, before);
  p.updateComposition(p.compositions[1].id, [](Composition& c) { c.name = "X"; });
  EXPECT_EQ(p.compositions[0].name, "A");
  EXPECT_EQ(p.compositions[1].name, "X");
}

TEST(ProjectTest, UpdateActiveCompositionFollowsTheFallback) {
  OVProject p("P", {compositionNamed("A"), compositionNamed("B")}, Uuid::make());
  p.updateActiveComposition([](Composition& c) { c.name = "Active"; });
  EXPECT_EQ(p.compositions[0].name, "Active");
  p.activeCompositionID = p.compositions[1].id;
  p.updateActiveComposition([](Composition& c) { c.isTransparent = true; });
  EXPECT_TRUE(p.compositions[1].isTransparent);
  EXPECT_FALSE(p.compositions[0].isTransparent);
  OVProject empty;
  const OVProject emptyBefore = empty;
  empty.updateActiveComposition([](Composition& c) { c.name = "None"; });
  EXPECT_EQ(empty, emptyBefore);
}

TEST(ProjectTest, AddCompositionAppendsAndMayActivate) {
  OVProject p = OVProject::starter();
  const Uuid first = p.compositions[0].id;
  const Composition second = compositionNamed("Second");
  p.addComposition(second, false);
  EXPECT_EQ(p.compositions.size(), 2u);
  EXPECT_EQ(p.compositions[1].id, second.id);
  EXPECT_EQ(p.activeCompositionID, first);
  const Composition third = compositionNamed("Third");
  p.addComposition(third, true);
  EXPECT_EQ(p.activeCompositionID, third.id);
}

TEST(ProjectTest, UniqueCompositionNameSkipsTakenNumbers) {
  const OVProject p("P", {compositionNamed("Composition"), compositionNamed("Composition 2"),
                          compositionNamed("Intro")});
  EXPECT_EQ(p.uniqueCompositionName(), "Composition 3");
  EXPECT_EQ(p.uniqueCompositionName("Intro"), "Intro 2");
  EXPECT_EQ(p.uniqueCompositionName("Outro"), "Outro");
}

// --- Assets ---

TEST(ProjectTest, AddAssetWithExistingIdReplacesInPlace) {
  OVProject p;
  for (const char* n : {"a.mov", "b.mov", "c.mov"}) p.addAsset(assetNamed(n));
  MediaAsset replacement = assetNamed("b2.mov");
  replacement.id = p.assets[1].id;
  p.addAsset(replacement);
  EXPECT_EQ(assetNames(p.assets.items()), (std::vector<std::string>{"a.mov", "b2.mov", "c.mov"}));
  p.addAsset(assetNamed("d.mov"));
  EXPECT_EQ(p.assets.size(), 4u);
  EXPECT_EQ(p.assets[3].name, "d.mov");
}

TEST(ProjectTest, AssetLookupsAndUpdates) {
  OVProject p;
  p.addAsset(assetNamed("a.mov"));
  p.addAsset(assetNamed("b.wav", MediaKind::audio));
  const Uuid b = p.assets[1].id;
  ASSERT_NE(p.asset(b), nullptr);
  EXPECT_EQ(p.asset(b)->name, "b.wav");
  ASSERT_NE(p.assetAtPath("/media/a.mov"), nullptr);
  EXPECT_EQ(p.assetAtPath("/media/a.mov")->name, "a.mov");
  EXPECT_EQ(p.assetAtPath("/media/none.mov"), nullptr);
  EXPECT_EQ(p.asset(Uuid::make()), nullptr);

  const OVProject before = p;
  p.updateAsset(Uuid::make(), [](MediaAsset& a) { a.name = "X"; });
  EXPECT_EQ(p, before);
  p.updateAsset(b, [](MediaAsset& a) { a.name = "renamed.wav"; });
  EXPECT_EQ(p.assets[1].name, "renamed.wav");
  EXPECT_EQ(p.assets[0].name, "a.mov");
}

TEST(ProjectTest, AssetUseIsJudgedByLayerContentOnly) {
  const MediaAsset clip = assetNamed("clip.mov"), music = assetNamed("music.wav", MediaKind::audio),
                   keyed = assetNamed("keyed.png", MediaKind::image);
  Layer keyedOnly = layerWith("Tint", LayerContent::text(TextContent{.string = keyed.id.text()}));
  EffectInstance effect{.effectID = "tint"};
  effect.parameters["source"] =
      AnimatedProperty(PropertyValue::text(""), {Keyframe(sec(1), PropertyValue::text(keyed.id.text()))});
  keyedOnly.effects = {effect};
  OVProject p("P", {compositionNamed("A", {layerWith("Clip", LayerContent::video(clip.id)),
                                          layerWith("Clip again", LayerContent::video(clip.id)), keyedOnly}),
                    compositionNamed("B", {layerWith("Music", LayerContent::audio(music.id)),
                                          layerWith("Clip", LayerContent::video(clip.id))})});
  for (const MediaAsset& a : {clip, music, keyed}) p.addAsset(a);

  EXPECT_EQ(p.unusedAssetIDs(), (std::unordered_set<Uuid>{keyed.id}));
  EXPECT_EQ(p.layerCountUsingAsset(clip.id), 3u);
  EXPECT_EQ(p.layerCountUsingAsset(music.id), 1u);
  EXPECT_EQ(p.layerCountUsingAsset(keyed.id), 0u);
}

TEST(ProjectTest, MissingAssetsAreThoseWithoutAFile) {
  const auto file = std::filesystem::temp_directory_path() / ("orvane-project-test-" + Uuid::make().text());
  std::ofstream(file) << "x";
  OVProject p;
  MediaAsset present = assetNamed("present.mov");
  present.path = file.string();
  p.addAsset(present);
  p.addAsset(assetNamed("gone.mov"));
  EXPECT_EQ(assetNames(p.missingAssets()), (std::vector<std::string>{"gone.mov"}));
  std::filesystem::remove(file);
  EXPECT_EQ(assetNames(p.missingAssets()), (std::vector<std::string>{"present.mov", "gone.mov"}));
}

// --- Media folders ---

TEST(ProjectTest, AssetsInFolderMatchTheFolderOrTopLevel) {
  OVProject p;
  p.addMediaFolder(folderNamed("Footage"));
  const Uuid footage = p.mediaFolders[0].id;
  MediaAsset inFolder = assetNamed("in.mov");
  inFolder.folderID = footage;
  p.addAsset(assetNamed("top.mov"));
  p.addAsset(inFolder);
  EXPECT_EQ(assetNames(p.assetsInFolder(footage)), (std::vector<std::string>{"in.mov"}));
  EXPECT_EQ(assetNames(p.assetsInFolder(std::nullopt)), (std::vector<std::string>{"top.mov"}));
  EXPECT_TRUE(p.assetsInFolder(Uuid::make()).empty());
  ASSERT_NE(p.mediaFolder(footage), nullptr);
  EXPECT_EQ(p.mediaFolder(footage)->name, "Footage");
  EXPECT_EQ(p.mediaFolder(Uuid::make()), nullptr);
}

TEST(ProjectTest, FoldersSortByNameIgnoringCase) {
  OVProject p;
  for (const char* n : {"beta", "Gamma", "Alpha", "b", "Same", "same"}) p.addMediaFolder(folderNamed(n));
  // Byte order would put every capital first; equal names keep their order.
  EXPECT_EQ(folderNames(p), (std::vector<std::string>{"Alpha", "b", "beta", "Gamma", "Same", "same"}));
}

TEST(ProjectTest, UpdateMediaFolderSortsAgain) {
  OVProject p;
  for (const char* n : {"Alpha", "Beta", "Gamma"}) p.addMediaFolder(folderNamed(n));
  const OVProject before = p;
  p.updateMediaFolder(Uuid::make(), [](MediaFolder& f) { f.name = "A"; });
  EXPECT_EQ(p, before);
  p.updateMediaFolder(p.mediaFolders[0].id, [](MediaFolder& f) { f.name = "zeta"; });
  EXPECT_EQ(folderNames(p), (std::vector<std::string>{"Beta", "Gamma", "zeta"}));
}

TEST(ProjectTest, RemoveMediaFolderMovesContentsUpToItsParent) {
  OVProject p;
  p.addMediaFolder(folderNamed("Root"));
  const Uuid root = p.mediaFolders[0].id;
  MediaFolder middle = folderNamed("Middle", root);
  p.addMediaFolder(middle);
  p.addMediaFolder(folderNamed("Leaf", middle.id));
  MediaAsset a = assetNamed("a.mov");
  a.folderID = middle.id;
  p.addAsset(a);

  p.removeMediaFolder(middle.id);
  EXPECT_EQ(folderNames(p), (std::vector<std::string>{"Leaf", "Root"}));
  EXPECT_EQ(p.mediaFolders[0].parentFolderID, root);
  EXPECT_EQ(p.assets[0].folderID, root);

  p.removeMediaFolder(root);
  EXPECT_EQ(folderNames(p), (std::vector<std::string>{"Leaf"}));
  EXPECT_EQ(p.mediaFolders[0].parentFolderID, std::nullopt);
  EXPECT_EQ(p.assets[0].folderID, std::nullopt);

  const OVProject before = p;
  p.removeMediaFolder(Uuid::make());
  EXPECT_EQ(p, before);
}

TEST(ProjectTest, UniqueMediaFolderNameSkipsTakenNumbers) {
  OVProject p;
  EXPECT_EQ(p.uniqueMediaFolderName("Folder"), "Folder");
  p.addMediaFolder(folderNamed("Folder"));
  p.addMediaFolder(folderNamed("Folder 2"));
  EXPECT_EQ(p.uniqueMediaFolderName("Folder"), "Folder 3");
}

// --- Nesting ---

Layer nestLayer(std::string name, const Composition& nested) {
  return layerWith(std::move(name), LayerContent::precomposition(nested.id));
}

TEST(ProjectTest, LayerNameFollowsCompositionWhenEqualOrNumbered) {
  EXPECT_TRUE(OVProject::layerNameMatchesComposition("Intro", "Intro"));
  EXPECT_TRUE(OVProject::layerNameMatchesComposition("Intro 2", "Intro"));
  EXPECT_TRUE(OVProject::layerNameMatchesComposition("Intro 12", "Intro"));
  EXPECT_FALSE(OVProject::layerNameMatchesComposition("Intro ", "Intro"));
  EXPECT_FALSE(OVProject::layerNameMatchesComposition("Intro  2", "Intro"));
  EXPECT_FALSE(OVProject::layerNameMatchesComposition("Intro2", "Intro"));
  EXPECT_FALSE(OVProject::layerNameMatchesComposition("Intro 2a", "Intro"));
  EXPECT_FALSE(OVProject::layerNameMatchesComposition("Intro x", "Intro"));
  EXPECT_FALSE(OVProject::layerNameMatchesComposition("intro 2", "Intro"));
  EXPECT_FALSE(OVProject::layerNameMatchesComposition("My Intro", "Intro"));
}

TEST(ProjectTest, RenamingCompositionRenamesNestingLayersButNotHandNamedOnes) {
  const Composition intro = compositionNamed("Intro"), other = compositionNamed("Other");
  const Composition hostA = compositionNamed(
      "Host A", {nestLayer("Intro", intro), nestLayer("Intro 3", intro), nestLayer("Opening titles", intro),
                 layerWith("Intro", LayerContent::text(TextContent{})), nestLayer("Intro", other)});
  const Composition hostB = compositionNamed("Host B", {nestLayer("Intro 2", intro)});
  const Composition untouched = compositionNamed("Untouched", {nestLayer("Other", other)});
  OVProject p("P", {intro, other, hostA, hostB, untouched});
  const OVProject before = p;

  p.syncPrecompositionLayerNamesFor(intro.id, "Intro", "Intro");
  EXPECT_EQ(p, before);
  p.syncPrecompositionLayerNamesFor(intro.id, "Intro", "");
  EXPECT_EQ(p, before);

  p.syncPrecompositionLayerNamesFor(intro.id, "Intro", "Opening");
  std::vector<std::string> namesA;
  for (const Layer& l : p.compositions[2].layers) namesA.push_back(l.name);
  EXPECT_EQ(namesA, (std::vector<std::string>{"Opening", "Opening", "Opening titles", "Intro", "Intro"}));
  EXPECT_EQ(p.compositions[3].layers[0].name, "Opening");
  EXPECT_EQ(p.compositions[4], untouched);
}

// A nests B, B nests C, C nests D; E stands alone.
OVProject nestingChain() {
  Composition a = compositionNamed("A"), b = compositionNamed("B"), c = compositionNamed("C"),
              d = compositionNamed("D"), e = compositionNamed("E");
  c.layers.push_back(nestLayer("D", d));
  b.layers.push_back(nestLayer("C", c));
  a.layers.push_back(layerWith("Title", LayerContent::text(TextContent{})));
  a.layers.push_back(nestLayer("B", b));
  return OVProject("P", {a, b, c, d, e});
}

TEST(ProjectTest, CompositionCycleIsFoundSeveralLevelsDeep) {
  const OVProject p = nestingChain();
  const Uuid a = p.compositions[0].id, b = p.compositions[1].id, d = p.compositions[3].id,
             e = p.compositions[4].id;
  EXPECT_TRUE(p.wouldCreateCompositionCycle(d, a));
  EXPECT_TRUE(p.wouldCreateCompositionCycle(b, a));
  EXPECT_TRUE(p.wouldCreateCompositionCycle(e, e));
  EXPECT_FALSE(p.wouldCreateCompositionCycle(a, d));
  EXPECT_FALSE(p.wouldCreateCompositionCycle(e, a));
  EXPECT_FALSE(p.wouldCreateCompositionCycle(a, Uuid::make()));
}

TEST(ProjectTest, CompositionWalkEndsOnCycleReadFromFile) {
  OVProject p = nestingChain();
  const Uuid b = p.compositions[1].id, c = p.compositions[2].id, e = p.compositions[4].id;
  const Layer nestB = nestLayer("B", p.compositions[1]);
  p.updateComposition(c, [&](Composition& comp) { comp.layers.push_back(nestB); });
  EXPECT_FALSE(p.wouldCreateCompositionCycle(e, b));
  EXPECT_EQ(p.reachableCompositionsFrom(c).size(), 3u);  // C, D and B
}

TEST(ProjectTest, ReachableCompositionsIncludeStartAndEachNestedOnce) {
  OVProject p = nestingChain();
  const Uuid a = p.compositions[0].id, d = p.compositions[3].id;
  // A also nests D directly: D is reached on two roads but listed once.
  const Layer nestD = nestLayer("D", p.compositions[3]);
  p.updateComposition(a, [&](Composition& comp) { comp.layers.push_back(nestD); });
  const auto fromA = p.reachableCompositionsFrom(a);
  std::vector<std::string> names;
  for (const auto& [id, comp] : fromA) {
    EXPECT_EQ(comp->id, id);
    names.push_back(comp->name);
  }
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::string>{"A", "B", "C", "D"}));
  const auto fromD = p.reachableCompositionsFrom(d);
  ASSERT_EQ(fromD.size(), 1u);
  EXPECT_EQ(fromD.begin()->second->name, "D");
  EXPECT_TRUE(p.reachableCompositionsFrom(Uuid::make()).empty());
}

// --- Value semantics ---

TEST(ProjectTest, CopiesAreIndependentValues) {
  const OVProject original = nestingChain();
  OVProject copy = original;
  EXPECT_EQ(copy, original);
  EXPECT_EQ(hashValue(copy), hashValue(original));

  const Uuid a = original.compositions[0].id;
  const Uuid title = original.compositions[0].layers[0].id;
  const auto rename = [&](Composition& c) { c.update(title, [](Layer& l) { l.name = "Headline"; }); };
  copy.updateComposition(a, rename);
  EXPECT_EQ(original.compositions[0].layers[0].name, "Title");
  EXPECT_EQ(copy.compositions[0].layers[0].name, "Headline");
  EXPECT_NE(copy, original);
  EXPECT_NE(hashValue(copy), hashValue(original));

  OVProject again = original;
  again.updateComposition(a, rename);
  EXPECT_EQ(again, copy);
  EXPECT_EQ(hashValue(again), hashValue(copy));
}

}  // namespace
}  // namespace orvane::core
