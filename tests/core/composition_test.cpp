#include "core/composition.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orvane::core {
namespace {

OVTime sec(double s) { return OVTime::fromSeconds(s); }

Layer makeLayer(std::string name, LayerContent content, double start, double duration) {
  return Layer(std::move(name), std::move(content), OVTimeRange(sec(start), sec(duration)));
}

Layer textLayer(std::string name, double start = 0, double duration = 5) {
  return makeLayer(std::move(name), LayerContent::text(TextContent{}), start, duration);
}

Layer audioLayer(std::string name, double start = 0, double duration = 5) {
  return makeLayer(std::move(name), LayerContent::audio(Uuid::make()), start, duration);
}

Layer videoLayer(std::string name, double start = 0, double duration = 5) {
  return makeLayer(std::move(name), LayerContent::video(Uuid::make()), start, duration);
}

Composition withLayers(std::vector<Layer> layers) {
  Composition c;
  c.layers = PersistentList<Layer>(layers);
  return c;
}

std::vector<std::string> namesOf(const std::vector<const Layer*>& layers) {
  std::vector<std::string> names;
  for (const Layer* l : layers) names.push_back(l->name);
  return names;
}

TEST(CompositionTest, RenderRangeIsWorkAreaEvenBeyondDuration) {
  Composition c;
  EXPECT_EQ(c.renderRange(), OVTimeRange(OVTime::zero, sec(10)));
  c.workArea = OVTimeRange(sec(5), sec(15));
  EXPECT_EQ(c.renderRange(), OVTimeRange(sec(5), sec(15)));
  EXPECT_EQ(c.renderRange().end(), sec(20));
  EXPECT_EQ(c.fullRange(), OVTimeRange(OVTime::zero, sec(10)));
}

TEST(CompositionTest, ContentEndIsLatestLayerEnd) {
  EXPECT_EQ(Composition{}.contentEnd(), OVTime::zero);
  const Composition c = withLayers({textLayer("A", 0, 3), textLayer("B", 2, 6), textLayer("C", 5, 1)});
  EXPECT_EQ(c.contentEnd(), sec(8));
}

TEST(CompositionTest, EditingModeTextsAndSymbols) {
  EXPECT_EQ(rawValue(EditingMode::layers), "layers");
  EXPECT_EQ(displayName(EditingMode::layers), "Composition");
  EXPECT_EQ(displayName(EditingMode::sequence), "Sequence");
  EXPECT_EQ(fromRaw<EditingMode>("sequence"), EditingMode::sequence);
  EXPECT_EQ(detailText(EditingMode::layers),
            "One row per layer, free to overlap — for motion graphics and compositing.");
  EXPECT_EQ(detailText(EditingMode::sequence),
            "Tracks that hold clips end to end; cuts stay on the same track — for editing.");
  EXPECT_EQ(symbolName(EditingMode::layers), "rectangle.on.rectangle");
  EXPECT_EQ(symbolName(EditingMode::sequence), "film.stack");
}

TEST(CompositionTest, DefaultTracksAreThreeVideoOverOneAudioWithFreshIds) {
  const auto tracks = Composition::defaultTracks();
  ASSERT_EQ(tracks.size(), 4u);
  const std::vector<std::string> expected{"V3", "V2", "V1", "A1"};
  for (std::size_t i = 0; i < tracks.size(); ++i) {
    EXPECT_EQ(tracks[i].name, expected[i]);
    EXPECT_FALSE(tracks[i].isMuted);
    EXPECT_FALSE(tracks[i].isLocked);
    EXPECT_EQ(tracks[i].isAudio(), i == 3);
  }
  EXPECT_NE(tracks[0].id, tracks[1].id);
  EXPECT_NE(Composition::defaultTracks()[0].id, tracks[0].id);
}

TEST(CompositionTest, LookupsFindLayersAndTracksById) {
  Composition c = withLayers({textLayer("Top"), textLayer("Middle"), textLayer("Bottom")});
  c.tracks = Composition::defaultTracks();
  const Uuid middle = c.layers[1].id;
  ASSERT_NE(c.layer(middle), nullptr);
  EXPECT_EQ(c.layer(middle)->name, "Middle");
  EXPECT_EQ(c.indexOf(middle), 1u);
  EXPECT_EQ(c.displayIndexOf(c.layers[0].id), 1u);
  EXPECT_EQ(c.displayIndexOf(middle), 2u);
  const Uuid unknown = Uuid::make();
  EXPECT_EQ(c.layer(unknown), nullptr);
  EXPECT_EQ(c.indexOf(unknown), std::nullopt);
  EXPECT_EQ(c.displayIndexOf(unknown), std::nullopt);

  const Uuid v1 = c.tracks[2].id;
  ASSERT_NE(c.track(v1), nullptr);
  EXPECT_EQ(c.track(v1)->name, "V1");
  EXPECT_EQ(c.trackIndexOf(v1), 2u);
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
  EXPECT_EQ(namesOf(c.layersOnTrack(track)), (std::vector<std::string>{"EarlyFirst", "EarlySecond", "Late"}));
  EXPECT_TRUE(c.layersOnTrack(Uuid::make()).empty());
}

TEST(CompositionTest, VisibleLayersAreEnabledVisualAndActiveInListOrder) {
  Layer hidden = textLayer("Hidden");
  hidden.isEnabled = false;
  const Composition c = withLayers(
      {textLayer("Title", 0, 5), hidden, audioLayer("Music"), makeLayer("Still", LayerContent::image(Uuid::make()), 5, 5),
       videoLayer("Clip", 0, 10)});
  EXPECT_EQ(namesOf(c.visibleVisualLayersAt(OVTime::zero)), (std::vector<std::string>{"Title", "Clip"}));
  EXPECT_EQ(namesOf(c.visibleVisualLayersAt(sec(4.999))), (std::vector<std::string>{"Title", "Clip"}));
  // Ranges are half open: "Title" ends where "Still" begins.
  EXPECT_EQ(namesOf(c.visibleVisualLayersAt(sec(5))), (std::vector<std::string>{"Still", "Clip"}));
  EXPECT_TRUE(c.visibleVisualLayersAt(sec(10)).empty());
}

TEST(CompositionTest, SoloLimitsVisibleLayersToSoloedOnes) {
  Layer soloText = textLayer("Solo", 2, 3);
  soloText.isSolo = true;
  const Composition c = withLayers({textLayer("Other", 0, 10), soloText, videoLayer("Clip", 0, 10)});
  EXPECT_TRUE(c.hasSoloedVisualLayers());
  EXPECT_EQ(namesOf(c.visibleVisualLayersAt(sec(3))), (std::vector<std::string>{"Solo"}));
  // While a solo layer exists, the others stay hidden even where it is not active.
  EXPECT_TRUE(c.visibleVisualLayersAt(sec(8)).empty());
}

TEST(CompositionTest, AudioSoloDoesNotHideVisualLayers) {
  Layer soloMusic = audioLayer("Music", 0, 10);
  soloMusic.isSolo = true;
  const Composition c = withLayers({textLayer("Title", 0, 10), soloMusic});
  EXPECT_FALSE(c.hasSoloedVisualLayers());
  EXPECT_EQ(namesOf(c.visibleVisualLayersAt(sec(1))), (std::vector<std::string>{"Title"}));
}

TEST(CompositionTest, VisibleLayersIntoBufferReplacesItsContents) {
  const Composition c = withLayers({textLayer("Title")});
  const Layer stale = textLayer("Stale");
  std::vector<const Layer*> out{&stale, &stale};
  c.visibleVisualLayersAt(sec(1), out);
  EXPECT_EQ(namesOf(out), (std::vector<std::string>{"Title"}));
}

TEST(CompositionTest, AudibleLayersAreThoseThatContributeAudio) {
  Layer muted = audioLayer("Muted");
  muted.audio.isMuted = true;
  Layer silentClip = videoLayer("SilentClip");
  silentClip.usesSourceAudio = false;
  Layer ownAudio = audioLayer("OwnAudio");
  ownAudio.usesSourceAudio = false;  // ignored by audio layers
  const Composition c = withLayers({textLayer("Title"), videoLayer("Clip"), muted, silentClip, ownAudio,
                                    makeLayer("Nested", LayerContent::precomposition(Uuid::make()), 0, 5)});
  EXPECT_FALSE(c.hasSoloedAudioLayers());
  EXPECT_EQ(namesOf(c.audibleLayers()), (std::vector<std::string>{"Clip", "OwnAudio", "Nested"}));
}

TEST(CompositionTest, AudioSoloIsIndependentOfVisualSolo) {
  Layer soloTitle = textLayer("Title");
  soloTitle.isSolo = true;
  Layer music = audioLayer("Music");
  const Composition visualSolo = withLayers({soloTitle, videoLayer("Clip"), music});
  EXPECT_TRUE(visualSolo.hasSoloedVisualLayers());
  EXPECT_FALSE(visualSolo.hasSoloedAudioLayers());
  EXPECT_EQ(namesOf(visualSolo.audibleLayers()), (std::vector<std::string>{"Clip", "Music"}));

  music.isSolo = true;
  const Composition audioSolo = withLayers({soloTitle, videoLayer("Clip"), music});
  EXPECT_TRUE(audioSolo.hasSoloedAudioLayers());
  EXPECT_EQ(namesOf(audioSolo.audibleLayers()), (std::vector<std::string>{"Music"}));
  EXPECT_EQ(namesOf(audioSolo.visibleVisualLayersAt(sec(1))), (std::vector<std::string>{"Title"}));
}

TEST(CompositionTest, UniqueLayerNameTakesFirstFreeNumber) {
  EXPECT_EQ(Composition{}.uniqueLayerName("Text"), "Text");
  EXPECT_EQ(withLayers({textLayer("Text"), textLayer("Text 2")}).uniqueLayerName("Text"), "Text 3");
  EXPECT_EQ(withLayers({textLayer("Text 2")}).uniqueLayerName("Text"), "Text");
  EXPECT_EQ(withLayers({textLayer("Text"), textLayer("Text 3")}).uniqueLayerName("Text"), "Text 2");
  // Exact comparison: other cases do not take the name.
  EXPECT_EQ(withLayers({textLayer("text"), textLayer("TEXT")}).uniqueLayerName("Text"), "Text");
}

Composition chainOf(std::vector<std::string> names) {
  std::vector<Layer> layers;
  for (auto& n : names) layers.push_back(textLayer(std::move(n)));
  return withLayers(layers);
}

TEST(CompositionTest, ParentChainListsAncestorsNearestFirst) {
  Composition c = chainOf({"Child", "Parent", "Grandparent"});
  const Uuid child = c.layers[0].id, parent = c.layers[1].id, grand = c.layers[2].id;
  c.update(child, [&](Layer& l) { l.parentLayerID = parent; });
  c.update(parent, [&](Layer& l) { l.parentLayerID = grand; });
  EXPECT_EQ(namesOf(c.parentChainFor(child)), (std::vector<std::string>{"Parent", "Grandparent"}));
  EXPECT_TRUE(c.parentChainFor(grand).empty());
  EXPECT_TRUE(c.parentChainFor(Uuid::make()).empty());

  c.update(grand, [](Layer& l) { l.parentLayerID = Uuid::make(); });  // a parent that is gone
  EXPECT_EQ(namesOf(c.parentChainFor(child)), (std::vector<std::string>{"Parent", "Grandparent"}));
}

TEST(CompositionTest, ParentCandidateThatDescendsFromLayerMakesCycle) {
  Composition c = chainOf({"Child", "Parent", "Grandparent", "Loose"});
  const Uuid child = c.layers[0].id, parent = c.layers[1].id, grand = c.layers[2].id, loose = c.layers[3].id;
  c.update(child, [&](Layer& l) { l.parentLayerID = parent; });
  c.update(parent, [&](Layer& l) { l.parentLayerID = grand; });
  EXPECT_TRUE(c.wouldCreateParentCycle(grand, child));
  EXPECT_TRUE(c.wouldCreateParentCycle(parent, child));
  EXPECT_TRUE(c.wouldCreateParentCycle(loose, loose));
  EXPECT_FALSE(c.wouldCreateParentCycle(child, grand));
  EXPECT_FALSE(c.wouldCreateParentCycle(loose, child));
  EXPECT_FALSE(c.wouldCreateParentCycle(loose, Uuid::make()));
}

TEST(CompositionTest, ParentCycleFromFileIsHarmless) {
  Composition c = chainOf({"A", "B", "C"});
  const Uuid a = c.layers[0].id, b = c.layers[1].id, third = c.layers[2].id;
  c.update(a, [&](Layer& l) { l.parentLayerID = b; });
  c.update(b, [&](Layer& l) { l.parentLayerID = a; });
  c.update(third, [&](Layer& l) { l.parentLayerID = a; });
  EXPECT_EQ(namesOf(c.parentChainFor(a)), (std::vector<std::string>{"B"}));
  EXPECT_EQ(namesOf(c.parentChainFor(b)), (std::vector<std::string>{"A"}));
  EXPECT_EQ(namesOf(c.parentChainFor(third)), (std::vector<std::string>{"A", "B"}));
  EXPECT_TRUE(c.wouldCreateParentCycle(a, b));
  // The walk from A loops between A and B without meeting the third layer, and ends.
  EXPECT_FALSE(c.wouldCreateParentCycle(Uuid::make(), a));
}

TEST(CompositionTest, UpdateChangesOnlyTheNamedLayer) {
  Composition c = chainOf({"A", "B"});
  const Composition before = c;
  c.update(Uuid::make(), [](Layer& l) { l.name = "Changed"; });
  EXPECT_EQ(c, before);
  c.update(c.layers[1].id, [](Layer& l) { l.name = "Changed"; });
  EXPECT_EQ(c.layers[0].name, "A");
  EXPECT_EQ(c.layers[1].name, "Changed");
  EXPECT_NE(c, before);
  EXPECT_EQ(before.layers[1].name, "B");
}

TEST(CompositionTest, EqualCompositionsHashAlike) {
  Composition c = chainOf({"A", "B"});
  c.tracks = Composition::defaultTracks();
  c.workArea = OVTimeRange(sec(1), sec(2));
  Composition copy = c;
  EXPECT_EQ(copy, c);
  EXPECT_EQ(hashValue(copy), hashValue(c));
  copy.editingMode = EditingMode::sequence;
  EXPECT_NE(copy, c);
  EXPECT_NE(hashValue(copy), hashValue(c));
}

}  // namespace
}  // namespace orvane::core
