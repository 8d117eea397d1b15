// Compositions (ranges, lookups, what shows and plays, names, parents) and the
// presets new compositions are made from.

#include "core/composition.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "core/composition_preset.hpp"

namespace orvane::core {
namespace {

using Names = std::vector<std::string>;

OVTime sec(double s) { return OVTime::fromSeconds(s); }

Layer makeLayer(std::string name, LayerContent content, double start = 0, double duration = 5) {
  return Layer(std::move(name), std::move(content), OVTimeRange(sec(start), sec(duration)));
}
Layer textLayer(std::string name, double start = 0, double duration = 5) {
  return makeLayer(std::move(name), LayerContent::text(TextContent{}), start, duration);
}
Layer audioLayer(std::string name) { return makeLayer(std::move(name), LayerContent::audio(Uuid::make())); }
Layer videoLayer(std::string name, double duration = 5) {
  return makeLayer(std::move(name), LayerContent::video(Uuid::make()), 0, duration);
}
Layer soloed(Layer layer) {
  layer.isSolo = true;
  return layer;
}

Composition withLayers(std::vector<Layer> layers) {
  Composition c;
  c.layers = PersistentList<Layer>(layers);
  return c;
}

Composition named(const Names& names) {
  std::vector<Layer> layers;
  for (const std::string& n : names) layers.push_back(textLayer(n));
  return withLayers(layers);
}

Names namesOf(const std::vector<const Layer*>& layers) {
  Names names;
  for (const Layer* l : layers) names.push_back(l->name);
  return names;
}

TEST(CompositionTest, RenderRangeIsWorkAreaEvenBeyondDurationAndContentEndsWithTheLatestLayer) {
  Composition c;
  EXPECT_EQ(c.renderRange(), OVTimeRange(OVTime::zero, sec(10)));
  c.workArea = OVTimeRange(sec(5), sec(15));
  EXPECT_EQ(c.renderRange(), OVTimeRange(sec(5), sec(15)));
  EXPECT_EQ(c.fullRange(), OVTimeRange(OVTime::zero, sec(10)));
  EXPECT_EQ(c.contentEnd(), OVTime::zero);
  EXPECT_EQ(withLayers({textLayer("A", 0, 3), textLayer("B", 2, 6), textLayer("C", 5, 1)}).contentEnd(), sec(8));
}

TEST(CompositionTest, DefaultTracksAreThreeVideoOverOneAudioWithFreshIds) {
  const auto tracks = Composition::defaultTracks();
  ASSERT_EQ(tracks.size(), 4u);
  const Names expected{"V3", "V2", "V1", "A1"};
  for (std::size_t i = 0; i < tracks.size(); ++i) {
    EXPECT_EQ(tracks[i].name, expected[i]);
    EXPECT_FALSE(tracks[i].isMuted || tracks[i].isLocked);
    EXPECT_EQ(tracks[i].isAudio(), i == 3);
  }
  EXPECT_NE(tracks[0].id, tracks[1].id);
  EXPECT_NE(Composition::defaultTracks()[0].id, tracks[0].id);
}

TEST(CompositionTest, LookupsFindLayersAndTracksById) {
  Composition c = named({"Top", "Middle", "Bottom"});
  c.tracks = Composition::defaultTracks();
  const Uuid middle = c.layers[1].id, v1 = c.tracks[2].id, unknown = Uuid::make();
  EXPECT_EQ(c.layer(middle), &c.layers[1]);
  EXPECT_EQ(c.indexOf(middle), 1u);
  EXPECT_EQ(c.displayIndexOf(c.layers[0].id), 1u);  // counted from one
  EXPECT_EQ(c.displayIndexOf(middle), 2u);
  EXPECT_EQ(c.track(v1), &c.tracks[2]);
  EXPECT_EQ(c.trackIndexOf(v1), 2u);
  EXPECT_EQ(c.layer(unknown), nullptr);
  EXPECT_EQ(c.indexOf(unknown), std::nullopt);
  EXPECT_EQ(c.displayIndexOf(unknown), std::nullopt);
  EXPECT_EQ(c.track(unknown), nullptr);
  EXPECT_EQ(c.trackIndexOf(unknown), std::nullopt);
}

TEST(CompositionTest, LayersOnTrackAreSortedByStartKeepingListOrderForTies) {
  const Uuid track = Uuid::make();
  std::vector<Layer> layers{textLayer("Late", 5), textLayer("EarlyFirst", 1), textLayer("Elsewhere", 0),
                            textLayer("EarlySecond", 1), textLayer("Loose", 0)};
  for (std::size_t i : {0u, 1u, 3u}) layers[i].trackID = track;
  layers[2].trackID = Uuid::make();
  const Composition c = withLayers(layers);
  EXPECT_EQ(namesOf(c.layersOnTrack(track)), (Names{"EarlyFirst", "EarlySecond", "Late"}));
  EXPECT_TRUE(c.layersOnTrack(Uuid::make()).empty());
}

TEST(CompositionTest, VisibleLayersAreEnabledVisualAndActiveInListOrder) {
  Layer hidden = textLayer("Hidden");
  hidden.isEnabled = false;
  const Composition c = withLayers({textLayer("Title", 0, 5), hidden, audioLayer("Music"),
                                    makeLayer("Still", LayerContent::image(Uuid::make()), 5, 5),
                                    videoLayer("Clip", 10)});
  // Ranges are half open: "Title" ends where "Still" begins.
  const std::pair<double, Names> cases[] = {
      {0, {"Title", "Clip"}}, {4.999, {"Title", "Clip"}}, {5, {"Still", "Clip"}}, {10, {}}};
  for (const auto& [t, expected] : cases) EXPECT_EQ(namesOf(c.visibleVisualLayersAt(sec(t))), expected) << t;

  const Layer stale = textLayer("Stale");
  std::vector<const Layer*> out{&stale, &stale};  // the buffer form replaces what was there
  c.visibleVisualLayersAt(sec(5), out);
  EXPECT_EQ(namesOf(out), (Names{"Still", "Clip"}));
}

TEST(CompositionTest, VisualSoloHidesOtherLayersEvenWhereTheSoloIsInactive) {
  const Composition c =
      withLayers({textLayer("Other", 0, 10), soloed(textLayer("Solo", 2, 3)), videoLayer("Clip", 10)});
  EXPECT_TRUE(c.hasSoloedVisualLayers());
  EXPECT_EQ(namesOf(c.visibleVisualLayersAt(sec(3))), (Names{"Solo"}));
  EXPECT_TRUE(c.visibleVisualLayersAt(sec(8)).empty());
}

TEST(CompositionTest, AudibleLayersContributeAudioAndAudioSoloIsSeparateFromVisualSolo) {
  Layer muted = audioLayer("Muted");
  muted.audio.isMuted = true;
  const Composition plain = withLayers({textLayer("Title"), videoLayer("Clip"), muted, audioLayer("Music")});
  EXPECT_FALSE(plain.hasSoloedAudioLayers());
  EXPECT_EQ(namesOf(plain.audibleLayers()), (Names{"Clip", "Music"}));

  const Composition visualSolo = withLayers({soloed(textLayer("Title")), videoLayer("Clip"), audioLayer("Music")});
  EXPECT_FALSE(visualSolo.hasSoloedAudioLayers());
  EXPECT_EQ(namesOf(visualSolo.audibleLayers()), (Names{"Clip", "Music"}));

  const Composition audioSolo = withLayers({textLayer("Title"), videoLayer("Clip"), soloed(audioLayer("Music"))});
  EXPECT_TRUE(audioSolo.hasSoloedAudioLayers());
  EXPECT_FALSE(audioSolo.hasSoloedVisualLayers());
  EXPECT_EQ(namesOf(audioSolo.audibleLayers()), (Names{"Music"}));
  EXPECT_EQ(namesOf(audioSolo.visibleVisualLayersAt(sec(1))), (Names{"Title", "Clip"}));
}

TEST(CompositionTest, UniqueLayerNameTakesFirstFreeNumberComparingExactly) {
  const std::pair<Names, std::string> cases[] = {
      {{}, "Text"},         {{"Text", "Text 2"}, "Text 3"}, {{"Text 2"}, "Text"},
      {{"Text", "Text 3"}, "Text 2"}, {{"text", "TEXT"}, "Text"}};
  for (const auto& [taken, expected] : cases)
    EXPECT_EQ(named(taken).uniqueLayerName("Text"), expected) << testing::PrintToString(taken);
}

TEST(CompositionTest, ParentChainListsAncestorsDescendantsMakeCyclesAndCyclesFromFileEnd) {
  Composition c = named({"Child", "Parent", "Grandparent", "Loose"});
  const Uuid child = c.layers[0].id, parent = c.layers[1].id, grand = c.layers[2].id, loose = c.layers[3].id;
  c.update(child, [&](Layer& l) { l.parentLayerID = parent; });
  c.update(parent, [&](Layer& l) { l.parentLayerID = grand; });
  EXPECT_EQ(namesOf(c.parentChainFor(child)), (Names{"Parent", "Grandparent"}));
  EXPECT_TRUE(c.parentChainFor(grand).empty());
  EXPECT_TRUE(c.parentChainFor(Uuid::make()).empty());

  EXPECT_TRUE(c.wouldCreateParentCycle(grand, child));
  EXPECT_TRUE(c.wouldCreateParentCycle(parent, child));
  EXPECT_TRUE(c.wouldCreateParentCycle(loose, loose));
  EXPECT_FALSE(c.wouldCreateParentCycle(child, grand));
  EXPECT_FALSE(c.wouldCreateParentCycle(loose, child));
  EXPECT_FALSE(c.wouldCreateParentCycle(loose, Uuid::make()));

  c.update(grand, [](Layer& l) { l.parentLayerID = Uuid::make(); });  // a parent that is gone
  EXPECT_EQ(namesOf(c.parentChainFor(child)), (Names{"Parent", "Grandparent"}));

  c.update(grand, [&](Layer& l) { l.parentLayerID = child; });  // a cycle read from a file
  c.update(loose, [&](Layer& l) { l.parentLayerID = parent; });
  EXPECT_EQ(namesOf(c.parentChainFor(child)), (Names{"Parent", "Grandparent"}));
  EXPECT_EQ(namesOf(c.parentChainFor(loose)), (Names{"Parent", "Grandparent", "Child"}));
  // The walk up from Child loops without meeting a new layer, and ends.
  EXPECT_FALSE(c.wouldCreateParentCycle(Uuid::make(), child));
}

TEST(CompositionTest, UpdateChangesOnlyTheNamedLayerAndTheHashFollows) {
  Composition c = named({"A", "B"});
  c.tracks = Composition::defaultTracks();
  c.workArea = OVTimeRange(sec(1), sec(2));
  const Composition before = c;
  c.update(Uuid::make(), [](Layer& l) { l.name = "Changed"; });
  EXPECT_EQ(c, before);
  EXPECT_EQ(hashValue(c), hashValue(before));
  c.update(c.layers[1].id, [](Layer& l) { l.name = "Changed"; });
  EXPECT_EQ(c.layers[0].name, "A");
  EXPECT_EQ(c.layers[1].name, "Changed");
  EXPECT_EQ(before.layers[1].name, "B");
  EXPECT_NE(hashValue(c), hashValue(before));
  Composition sequence = before;
  sequence.editingMode = EditingMode::sequence;
  EXPECT_NE(sequence, before);
  EXPECT_NE(hashValue(sequence), hashValue(before));
}

TEST(CompositionPresetTest, PickerRowsHaveUniqueIdsAndNoCustomGroup) {
  std::set<std::string> ids;
  for (const CompositionPreset& p : CompositionPreset::all()) {
    EXPECT_TRUE(ids.insert(p.id).second) << "duplicate " << p.id;
    EXPECT_NE(p.group, CompositionPreset::Group::custom) << p.id;
  }
  EXPECT_EQ(CompositionPreset::defaultPreset().id, "hd.1080");
  const auto& all = CompositionPreset::all();  // spot check of one row
  const auto stories = std::ranges::find(all, "instagram.stories", &CompositionPreset::id);
  ASSERT_NE(stories, all.end());
  EXPECT_EQ(stories->group, CompositionPreset::Group::socialMedia);
  EXPECT_EQ(stories->size, (OVSize{1080, 1920}));
  EXPECT_EQ(stories->duration, sec(15));
}

TEST(CompositionPresetTest, DetailIsFilledFromSizeAndRateUnlessGiven) {
  using G = CompositionPreset::Group;
  EXPECT_EQ(CompositionPreset::defaultPreset().detail, "1920 × 1080 · 30 fps");
  const CompositionPreset custom("custom", "Custom", G::custom, 1920.5, 1080, FrameRate::fps29_97);
  EXPECT_EQ(custom.detail, "1920.5 × 1080 · 29.970 fps");
  EXPECT_EQ(custom.duration, sec(10));
  const CompositionPreset given("g", "Given", G::custom, 100, 100, FrameRate::fps25, 2, "Tiny");
  EXPECT_EQ(given.detail, "Tiny");
  EXPECT_EQ(given.duration, sec(2));
}

TEST(CompositionPresetTest, MatchingRoundsAndPrefersTheFirstRow) {
  const struct {
    double width, height;
    std::string id;  // empty: no match
  } cases[] = {
      {1920, 1080, "youtube.1080"},         // before hd.1080, the default
      {1080, 1920, "youtube.shorts"},       // before tiktok and the reels
      {1080, 1080, "instagram.square"},     // before square.1080
      {853.5, 479.5, "sd.480"},             // halves round away from zero
      {1079.5, 1080.49, "instagram.square"},  // anything less rounds down
      {1920.49, 1079.5, "youtube.1080"},    {1919.49, 1080, ""}, {1000, 1000, ""},
  };
  for (const auto& c : cases) {
    const auto match = CompositionPreset::matching(c.width, c.height);
    EXPECT_EQ(match ? match->id : "", c.id) << c.width << " x " << c.height;
  }
}

TEST(CompositionPresetTest, MakeCompositionTakesSizeRateDurationAndWorkArea) {
  const CompositionPreset preset("p", "P", CompositionPreset::Group::custom, 1080, 1920, FrameRate::fps24, 30);
  const Composition c = preset.makeComposition("Reel", EditingMode::sequence);
  EXPECT_EQ(c.name, "Reel");
  EXPECT_EQ(c.size, (OVSize{1080, 1920}));
  EXPECT_EQ(c.frameRate, FrameRate::fps24);
  EXPECT_EQ(c.duration, sec(30));
  EXPECT_EQ(c.workArea, OVTimeRange(OVTime::zero, sec(30)));
  EXPECT_EQ(c.editingMode, EditingMode::sequence);
  EXPECT_TRUE(c.tracks.empty());
  const Composition again = preset.makeComposition("Reel");
  EXPECT_NE(again.id, c.id);
  EXPECT_EQ(again.editingMode, EditingMode::layers);
}

}  // namespace
}  // namespace orvane::core
