// The project (compositions, assets, media folders, nesting, value semantics)
// and the media asset records it holds.

#include "core/project.hpp"

#include <gtest/gtest.h>

#include "tests/core/test_support.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "core/build_info.hpp"

namespace orvane::core {
namespace {

using testing_support::expectHashSees;

using Names = std::vector<std::string>;

OVTime sec(double s) { return OVTime::fromSeconds(s); }

Layer layerWith(std::string name, LayerContent content) {
  return Layer(std::move(name), std::move(content), OVTimeRange(OVTime::zero, sec(5)));
}
Layer nestLayer(std::string name, const Composition& nested) {
  return layerWith(std::move(name), LayerContent::precomposition(nested.id));
}

Composition compositionNamed(std::string name, std::vector<Layer> layers = {}) {
  Composition c;
  c.name = std::move(name);
  c.layers = PersistentList<Layer>(layers);
  return c;
}

MediaAsset assetNamed(std::string name, MediaKind kind = MediaKind::video) {
  return MediaAsset{.name = name, .kind = kind, .path = "/media/" + name};
}

MediaFolder folderNamed(std::string name, std::optional<Uuid> parent = std::nullopt) {
  return MediaFolder{.name = std::move(name), .parentFolderID = parent};
}

template <class Range>
Names namesOf(const Range& items) {
  Names names;
  for (const auto& item : items) names.push_back(item.name);
  return names;
}

TEST(ProjectTest, NewProjectIsStampedWithBuildAndNow) {
  const Timestamp before = nowTimestamp();
  const OVProject p;
  EXPECT_LE(before, p.createdAt);
  EXPECT_LE(p.createdAt, nowTimestamp());
  EXPECT_EQ(p.createdAt, p.modifiedAt);
  EXPECT_EQ(p.appVersion, buildVersion());
  EXPECT_EQ(p.name, "Untitled");
  EXPECT_EQ(p.activeComposition(), nullptr);
}

TEST(ProjectTest, UpdatesReachTheNamedOrActiveCompositionWhichFallsBackOnTheFirst) {
  const Composition a = compositionNamed("A"), b = compositionNamed("B");
  EXPECT_EQ(OVProject("P", {a, b}).activeCompositionID, a.id);
  const OVProject explicitB("P", {a, b}, b.id);
  EXPECT_EQ(explicitB.activeComposition(), &explicitB.compositions[1]);
  OVProject stale("P", {a, b}, Uuid::make());
  EXPECT_EQ(stale.activeComposition(), &stale.compositions[0]);
  stale.updateActiveComposition([](Composition& c) { c.name = "Active"; });
  EXPECT_EQ(namesOf(stale.compositions), (Names{"Active", "B"}));
  const OVProject before = stale;
  stale.updateComposition(Uuid::make(), [](Composition& c) { c.name = "X"; });
  EXPECT_EQ(stale, before);
  stale.updateComposition(b.id, [](Composition& c) { c.name = "X"; });
  EXPECT_EQ(namesOf(stale.compositions), (Names{"Active", "X"}));

  OVProject empty("Empty", {});
  EXPECT_EQ(empty.activeComposition(), nullptr);
  const OVProject emptyBefore = empty;
  empty.updateActiveComposition([](Composition& c) { c.name = "None"; });
  EXPECT_EQ(empty, emptyBefore);
}

TEST(ProjectTest, StarterHasOneActiveCompositionAndSequencesGetStarterTracks) {
  const OVProject p = OVProject::starter();
  ASSERT_EQ(p.compositions.size(), 1u);
  const Composition& c = p.compositions[0];
  EXPECT_EQ(p.activeCompositionID, c.id);
  EXPECT_EQ(c.name, "Composition 1");
  EXPECT_EQ(c.editingMode, EditingMode::layers);
  EXPECT_EQ(c.size, (OVSize{1920, 1080}));
  EXPECT_EQ(c.workArea, OVTimeRange(OVTime::zero, sec(10)));
  EXPECT_TRUE(c.tracks.empty());

  const CompositionPreset tall("t", "Tall", CompositionPreset::Group::custom, 1080, 1920, FrameRate::fps30, 30);
  const OVProject trip = OVProject::starter(tall, EditingMode::sequence, "Trip");
  EXPECT_EQ(trip.name, "Trip");
  const Composition* sequence = trip.activeComposition();
  ASSERT_NE(sequence, nullptr);
  EXPECT_EQ(sequence->name, "Sequence 1");
  EXPECT_TRUE(sequence->isSequence());
  EXPECT_EQ(sequence->size, (OVSize{1080, 1920}));
  EXPECT_EQ(sequence->duration, sec(30));
  EXPECT_EQ(namesOf(sequence->tracks), (Names{"V3", "V2", "V1", "A1"}));
}

TEST(ProjectTest, AddCompositionAppendsAndMayActivate) {
  OVProject p = OVProject::starter();
  const Uuid first = p.compositions[0].id;
  const Composition second = compositionNamed("Second"), third = compositionNamed("Third");
  p.addComposition(second, false);
  EXPECT_EQ(p.activeCompositionID, first);
  p.addComposition(third, true);
  EXPECT_EQ(p.activeCompositionID, third.id);
  EXPECT_EQ(namesOf(p.compositions), (Names{"Composition 1", "Second", "Third"}));
}

TEST(ProjectTest, UniqueNamesSkipTakenNumbers) {
  OVProject p("P", {compositionNamed("Composition"), compositionNamed("Composition 2"), compositionNamed("Intro")});
  EXPECT_EQ(p.uniqueCompositionName(), "Composition 3");
  EXPECT_EQ(p.uniqueCompositionName("Intro"), "Intro 2");
  EXPECT_EQ(p.uniqueCompositionName("Outro"), "Outro");
  EXPECT_EQ(p.uniqueMediaFolderName("Folder"), "Folder");
  p.addMediaFolder(folderNamed("Folder"));
  p.addMediaFolder(folderNamed("Folder 2"));
  EXPECT_EQ(p.uniqueMediaFolderName("Folder"), "Folder 3");
}

TEST(ProjectTest, AssetsAreReplacedInPlaceFoundAndUpdatedById) {
  OVProject p;
  for (const char* n : {"a.mov", "b.wav", "c.mov"}) p.addAsset(assetNamed(n));
  const Uuid b = p.assets[1].id;
  MediaAsset replacement = assetNamed("b2.wav");
  replacement.id = b;
  p.addAsset(replacement);
  p.addAsset(assetNamed("d.mov"));
  EXPECT_EQ(namesOf(p.assets), (Names{"a.mov", "b2.wav", "c.mov", "d.mov"}));

  EXPECT_EQ(p.asset(b), &p.assets[1]);
  EXPECT_EQ(p.asset(Uuid::make()), nullptr);
  EXPECT_EQ(p.assetAtPath("/media/c.mov"), &p.assets[2]);
  EXPECT_EQ(p.assetAtPath("/media/none.mov"), nullptr);

  const OVProject before = p;
  p.updateAsset(Uuid::make(), [](MediaAsset& a) { a.name = "X"; });
  EXPECT_EQ(p, before);
  p.updateAsset(b, [](MediaAsset& a) { a.name = "renamed.wav"; });
  EXPECT_EQ(namesOf(p.assets), (Names{"a.mov", "renamed.wav", "c.mov", "d.mov"}));
}

TEST(ProjectTest, AssetUseIsJudgedByLayerContentOnly) {
  const MediaAsset clip = assetNamed("clip.mov"), music = assetNamed("music.wav", MediaKind::audio),
                   keyed = assetNamed("keyed.png", MediaKind::image);
  // The keyed asset's id appears only as text and in an effect keyframe.
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

TEST(ProjectTest, MissingAssetsAreThoseWithoutAFileOnDisk) {
  const auto file = std::filesystem::temp_directory_path() / ("orvane-project-test-" + Uuid::make().text());
  MediaAsset present = assetNamed("present.mov");
  present.path = file.string();
  EXPECT_FALSE(present.fileExists());
  std::ofstream(file) << "frames";
  EXPECT_TRUE(present.fileExists());
  OVProject p;
  p.addAsset(present);
  p.addAsset(assetNamed("gone.mov"));
  EXPECT_EQ(namesOf(p.missingAssets()), (Names{"gone.mov"}));
  std::filesystem::remove(file);
  EXPECT_FALSE(present.fileExists());
  EXPECT_EQ(namesOf(p.missingAssets()), (Names{"present.mov", "gone.mov"}));
  EXPECT_FALSE(MediaAsset{}.fileExists());  // an empty path
}

TEST(ProjectTest, FoldersSortByNameIgnoringCaseAlsoAfterAnUpdate) {
  OVProject p;
  for (const char* n : {"beta", "Gamma", "Alpha", "b", "Same", "same"}) p.addMediaFolder(folderNamed(n));
  // Byte order would put every capital first; equal names keep their order.
  EXPECT_EQ(namesOf(p.mediaFolders), (Names{"Alpha", "b", "beta", "Gamma", "Same", "same"}));
  const OVProject before = p;
  p.updateMediaFolder(Uuid::make(), [](MediaFolder& f) { f.name = "A"; });
  EXPECT_EQ(p, before);
  p.updateMediaFolder(p.mediaFolders[0].id, [](MediaFolder& f) { f.name = "zeta"; });
  EXPECT_EQ(namesOf(p.mediaFolders), (Names{"b", "beta", "Gamma", "Same", "same", "zeta"}));
}

TEST(ProjectTest, FolderContentsAreFoundAndMoveUpToTheParentOnRemoval) {
  OVProject p;
  p.addMediaFolder(folderNamed("Root"));
  const Uuid root = p.mediaFolders[0].id;
  const MediaFolder middle = folderNamed("Middle", root);
  p.addMediaFolder(middle);
  p.addMediaFolder(folderNamed("Leaf", middle.id));
  MediaAsset inMiddle = assetNamed("in.mov");
  inMiddle.folderID = middle.id;
  p.addAsset(assetNamed("top.mov"));
  p.addAsset(inMiddle);
  EXPECT_EQ(namesOf(p.assetsInFolder(middle.id)), (Names{"in.mov"}));
  EXPECT_EQ(namesOf(p.assetsInFolder(std::nullopt)), (Names{"top.mov"}));
  EXPECT_TRUE(p.assetsInFolder(Uuid::make()).empty());
  EXPECT_EQ(p.mediaFolder(middle.id), &p.mediaFolders[1]);
  EXPECT_EQ(p.mediaFolder(Uuid::make()), nullptr);

  p.removeMediaFolder(middle.id);
  EXPECT_EQ(namesOf(p.mediaFolders), (Names{"Leaf", "Root"}));
  EXPECT_EQ(p.mediaFolders[0].parentFolderID, root);
  EXPECT_EQ(p.assets[1].folderID, root);
  p.removeMediaFolder(root);
  EXPECT_EQ(namesOf(p.mediaFolders), (Names{"Leaf"}));
  EXPECT_EQ(p.mediaFolders[0].parentFolderID, std::nullopt);
  EXPECT_EQ(p.assets[1].folderID, std::nullopt);
  const OVProject before = p;
  p.removeMediaFolder(Uuid::make());
  EXPECT_EQ(p, before);
}

TEST(ProjectTest, LayerNameFollowsCompositionWhenEqualOrNumbered) {
  const std::pair<const char*, bool> cases[] = {
      {"Intro", true},   {"Intro 2", true},   {"Intro 12", true}, {"Intro ", false}, {"Intro  2", false},
      {"Intro2", false}, {"Intro 2a", false}, {"Intro x", false}, {"intro 2", false}, {"My Intro", false}};
  for (const auto& [name, matches] : cases)
    EXPECT_EQ(OVProject::layerNameMatchesComposition(name, "Intro"), matches) << name;
}

TEST(ProjectTest, RenamingCompositionRenamesNestingLayersButNotHandNamedOnes) {
  const Composition intro = compositionNamed("Intro"), other = compositionNamed("Other");
  const Composition hostA = compositionNamed(
      "Host A", {nestLayer("Intro", intro), nestLayer("Intro 3", intro), nestLayer("Opening titles", intro),
                 layerWith("Intro", LayerContent::text(TextContent{})), nestLayer("Intro", other)});
  const Composition untouched = compositionNamed("Untouched", {nestLayer("Other", other)});
  OVProject p("P", {intro, other, hostA, compositionNamed("Host B", {nestLayer("Intro 2", intro)}), untouched});
  const OVProject before = p;
  p.syncPrecompositionLayerNamesFor(intro.id, "Intro", "Intro");
  p.syncPrecompositionLayerNamesFor(intro.id, "Intro", "");
  EXPECT_EQ(p, before);

  p.syncPrecompositionLayerNamesFor(intro.id, "Intro", "Opening");
  EXPECT_EQ(namesOf(p.compositions[2].layers), (Names{"Opening", "Opening", "Opening titles", "Intro", "Intro"}));
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

TEST(ProjectTest, ReachableCompositionsListEachOnceAndEndOnCyclesFromFile) {
  OVProject p = nestingChain();
  const Uuid a = p.compositions[0].id, b = p.compositions[1].id, c = p.compositions[2].id,
             d = p.compositions[3].id, e = p.compositions[4].id;
  const Layer nestD = nestLayer("D", p.compositions[3]);  // D is reached on two roads but listed once
  p.updateComposition(a, [&](Composition& comp) { comp.layers.push_back(nestD); });
  Names names;
  for (const auto& [id, comp] : p.reachableCompositionsFrom(a)) {
    EXPECT_EQ(comp->id, id);
    names.push_back(comp->name);
  }
  std::ranges::sort(names);
  EXPECT_EQ(names, (Names{"A", "B", "C", "D"}));
  ASSERT_EQ(p.reachableCompositionsFrom(d).size(), 1u);
  EXPECT_EQ(p.reachableCompositionsFrom(d).begin()->second->name, "D");
  EXPECT_TRUE(p.reachableCompositionsFrom(Uuid::make()).empty());

  const Layer nestB = nestLayer("B", p.compositions[1]);  // C nests B: a cycle read from a file
  p.updateComposition(c, [&](Composition& comp) { comp.layers.push_back(nestB); });
  EXPECT_FALSE(p.wouldCreateCompositionCycle(e, b));
  EXPECT_EQ(p.reachableCompositionsFrom(c).size(), 3u);  // C, D and B
}

TEST(ProjectTest, CopiesAreIndependentValues) {
  const OVProject original = nestingChain();
  const Uuid a = original.compositions[0].id, title = original.compositions[0].layers[0].id;
  const auto rename = [&](Composition& c) { c.update(title, [](Layer& l) { l.name = "Headline"; }); };
  expectHashSees(original, [&](OVProject& copy) { copy.updateComposition(a, rename); });
  EXPECT_EQ(original.compositions[0].layers[0].name, "Title");
  OVProject once = original, again = original;
  once.updateComposition(a, rename);
  again.updateComposition(a, rename);
  EXPECT_EQ(once.compositions[0].layers[0].name, "Headline");
  EXPECT_EQ(again, once);
  EXPECT_EQ(hashValue(again), hashValue(once));
}

TEST(MediaAssetTest, FileNameIsTheLastPathComponent) {
  const std::pair<const char*, const char*> cases[] = {
      {"/Users/me/Movies/clip.mov", "clip.mov"}, {"Media/a b.wav", "a b.wav"}, {"still.png", "still.png"},
      {"/Users/me/Footage/", "Footage"},         {"/", "/"},                   {"", ""}};
  for (const auto& [path, expected] : cases) EXPECT_EQ(MediaAsset{.path = path}.fileName(), expected) << path;
}

TEST(MediaAssetTest, SubtitleFitsTheKind) {
  const auto make = [](MediaKind kind, OVSize size, std::optional<FrameRate> rate, std::int64_t channels,
                       double sampleRate, double seconds) {
    return MediaAsset{.kind = kind, .duration = sec(seconds), .naturalSize = size, .frameRate = rate,
                      .audioChannelCount = channels, .audioSampleRate = sampleRate};
  };
  using K = MediaKind;
  const std::pair<MediaAsset, const char*> cases[] = {
      {make(K::video, {1920, 1080}, FrameRate::fps30, 0, 0, 10), "1920 x 1080 - 30 fps - 0:10"},
      {make(K::video, {1280, 720}, FrameRate::fps29_97, 0, 0, 62.4), "1280 x 720 - 29.970 fps - 1:02"},
      {make(K::video, {640, 480}, std::nullopt, 0, 0, 3723), "640 x 480 - - - 1:02:03"},
      {make(K::video, {640, 480}, FrameRate::fps25, 0, 0, 9.5), "640 x 480 - 25 fps - 0:10"},
      {make(K::audio, {}, std::nullopt, 1, 48000, 10), "mono - 48000 Hz - 0:10"},
      {make(K::audio, {}, std::nullopt, 2, 44100, 125), "2 ch - 44100 Hz - 2:05"},
      {make(K::audio, {}, std::nullopt, 6, 48000, 0), "6 ch - 48000 Hz - 0:00"},
      {make(K::image, {640, 480}, std::nullopt, 0, 0, 5), "640 x 480"},
  };
  for (const auto& [asset, expected] : cases) {
    EXPECT_EQ(asset.displaySubtitle(), expected);
    EXPECT_EQ(asset.isStill(), asset.kind == K::image) << expected;
  }
}

TEST(MediaAssetTest, EqualRecordsHashAlike) {
  MediaAsset asset = assetNamed("clip.mov");
  asset.bookmark = Bytes{1, 2, 3};
  expectHashSees(asset, [](MediaAsset& a) { a.bookmark = Bytes{1, 2, 4}; });
  expectHashSees(asset, [](MediaAsset& a) { a.dateAdded += std::chrono::milliseconds(1); });
  expectHashSees(folderNamed("Footage"), [](MediaFolder& f) { f.parentFolderID = Uuid::make(); });
  expectHashSees(BrowseFolder{.name = "Desktop", .path = "/Users/me/Desktop"},
                 [](BrowseFolder& f) { f.bookmark = Bytes{}; });  // empty differs from none
}

}  // namespace
}  // namespace orvane::core
