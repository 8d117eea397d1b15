// Sequence rules: default tracks per kind, placement around clip cores,
// crossfades from overlaps, and the normalised order of the layer list.

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "core/composition.hpp"
#include "tests/core/test_support.hpp"

namespace orvane::core {
namespace {

using testing_support::secs;

Layer clip(std::string name, std::optional<Uuid> track, double start, double duration,
           LayerKind kind = LayerKind::video) {
  Layer l(std::move(name), kind == LayerKind::audio ? LayerContent::audio(Uuid::make()) : LayerContent::video(Uuid::make()),
          OVTimeRange(secs(start), secs(duration)));
  l.trackID = track;
  return l;
}

Composition sequence(std::vector<SequenceTrack> tracks, std::vector<Layer> layers) {
  Composition c;
  c.editingMode = EditingMode::sequence;
  c.tracks = std::move(tracks);
  c.layers = PersistentList<Layer>(layers);
  return c;
}

std::vector<std::string> namesOf(const Composition& c) {
  std::vector<std::string> names;
  for (const Layer& l : c.layers) names.push_back(l.name);
  return names;
}

TEST(CompositionSequenceTest, OverlapIsHalfTheShorterClipAndNoneWithCrossfadesOff) {
  Composition c = sequence(Composition::defaultTracks(), {});
  EXPECT_EQ(c.maximumOverlap(secs(4), secs(2)), secs(1));
  EXPECT_EQ(c.maximumOverlap(secs(2), secs(4)), secs(1));
  c.overlapsCrossfade = false;
  EXPECT_EQ(c.maximumOverlap(secs(4), secs(2)), OVTime::zero);
}

TEST(CompositionSequenceTest, FittedStartJumpsToTheNearerAllowedEdge) {
  const SequenceTrack t{.name = "V1"};
  // Cores with a 4 s drop: [5, 9), [12, 18), [21, 23).
  const Layer before = clip("Before", t.id, 3, 8), middle = clip("Middle", t.id, 10, 10),
              after = clip("After", t.id, 19, 6);
  const Composition two = sequence({t}, {middle});
  const Composition three = sequence({t}, {before, middle, after});
  struct Case {
    const Composition* c;
    double wanted;
    std::unordered_set<Uuid> excluding;
    bool crossfade;
    std::optional<double> expected;
  };
  const std::vector<Case> cases{
      {&two, 5, {}, true, 5},        {&two, -3, {}, true, 0},      {&two, 14, {}, true, 18},
      {&two, 12.5, {}, true, 8},     {&two, 13, {}, true, 18},     {&two, 14, {}, false, 20},
      {&three, 14, {}, true, {}},    {&three, 14, {middle.id}, true, 14},
  };
  for (const Case& k : cases) {
    SCOPED_TRACE(k.wanted);
    const auto got = k.c->fittedStart(secs(4), secs(k.wanted), t.id, k.excluding, k.crossfade);
    EXPECT_EQ(got, k.expected ? std::optional(secs(*k.expected)) : std::nullopt);
  }
  // A 2 s clip against a 4 s one overlaps by at most 1 s; the nearer edge
  // before zero does not count.
  const Composition pair = sequence({t}, {clip("Four", t.id, 0, 4)});
  for (double wanted : {2.5, 0.5}) EXPECT_EQ(pair.fittedStart(secs(2), secs(wanted), t.id), secs(3));
}

TEST(CompositionSequenceTest, ClipTwiceTheAllowanceKeepsOneFrameAtItsMiddle) {
  const SequenceTrack t{.name = "V1"};
  const Composition c = sequence({t}, {clip("Four", t.id, 10, 4)});
  const OVTime frame = c.frameRate.frameDuration();
  EXPECT_EQ(c.fittedStart(secs(4), secs(8), t.id), secs(8));  // ends where the frame begins
  EXPECT_EQ(c.fittedStart(secs(4), secs(10), t.id), secs(8));
  EXPECT_EQ(c.fittedStart(secs(4), secs(11), t.id), secs(12) + frame);
}

TEST(CompositionSequenceTest, TrackQueriesSeeOnlyTheirOwnClips) {
  const SequenceTrack t{.name = "V1"}, other{.name = "V2"};
  const Layer a = clip("A", t.id, 0, 5);
  const Composition c = sequence({t, other}, {a, clip("B", t.id, 6, 2), clip("C", other.id, 0, 30)});
  EXPECT_EQ(c.trackEnd(t.id), secs(8));
  EXPECT_EQ(c.trackEnd(Uuid::make()), OVTime::zero);
  EXPECT_FALSE(c.trackIsFree(t.id, OVTimeRange(secs(4), secs(1))));
  EXPECT_TRUE(c.trackIsFree(t.id, OVTimeRange(secs(4), secs(1)), a.id));
  EXPECT_TRUE(c.trackIsFree(t.id, OVTimeRange(secs(5), secs(1))));  // touching is free
}

TEST(CompositionSequenceTest, TrackKindFollowsTheFirstLetterOfTheName) {
  for (const auto& [name, audio] : std::vector<std::pair<std::string, bool>>{
           {"Audio", true}, {"Ambience", true}, {"A1", true}, {"B-roll", false}, {"a1", false}, {"", false}}) {
    EXPECT_EQ(SequenceTrack{.name = name}.isAudio(), audio) << name;
  }
}

TEST(CompositionSequenceTest, DefaultTrackPerKind) {
  struct Case {
    std::vector<std::string> tracks;
    std::string audio, video;
  };
  const std::vector<Case> cases{{{"V3", "V2", "V1", "A1"}, "A1", "V1"}, {{"V2", "V1"}, "V1", "V1"},
                                {{"A1", "A2"}, "A1", "A1"},             {{"A2", "V1", "A1", "V2"}, "A2", "V2"}};
  for (const Case& k : cases) {
    std::vector<SequenceTrack> tracks;
    for (const std::string& n : k.tracks) tracks.push_back({.name = n});
    const Composition c = sequence(tracks, {});
    EXPECT_EQ(c.track(*c.defaultTrackIDFor(clip("", {}, 0, 1, LayerKind::audio)))->name, k.audio);
    EXPECT_EQ(c.track(*c.defaultTrackIDFor(clip("", {}, 0, 1)))->name, k.video);
  }
  EXPECT_EQ(sequence({}, {}).defaultTrackIDFor(clip("", {}, 0, 1)), std::nullopt);
}

TEST(CompositionSequenceTest, NormalizeGivesTracksAndOrdersByTrackThenLatestFirst) {
  Composition empty = sequence({}, {clip("Music", {}, 0, 5, LayerKind::audio), clip("Shot", Uuid::make(), 0, 5)});
  empty.normalizeSequenceOrder();
  ASSERT_EQ(empty.tracks.size(), 4u);
  EXPECT_EQ(empty.tracks[0].name, "V3");
  EXPECT_EQ(empty.layers[0].trackID, empty.tracks[2].id);  // the stray video clip lands on V1
  EXPECT_EQ(empty.layers[1].trackID, empty.tracks[3].id);

  const auto tracks = Composition::defaultTracks();
  const Uuid v3 = tracks[0].id, v1 = tracks[2].id, a1 = tracks[3].id;
  Composition c = sequence(tracks, {clip("V1@0", v1, 0, 5), clip("A1@0", a1, 0, 5, LayerKind::audio),
                                    clip("V3@0", v3, 0, 5), clip("V1@10", v1, 10, 5), clip("Lost@5", Uuid::make(), 5, 5),
                                    clip("V3@5", v3, 5, 5)});
  c.normalizeSequenceOrder();
  EXPECT_EQ(namesOf(c), (std::vector<std::string>{"V3@5", "V3@0", "V1@10", "Lost@5", "V1@0", "A1@0"}));
  EXPECT_EQ(c.layers[3].trackID, v1);
}

TEST(CompositionSequenceTest, CrossfadeFlagsFollowOverlaps) {
  const SequenceTrack t{.name = "V1"};
  Layer a = clip("A", t.id, 0, 5), b = clip("B", t.id, 4, 4);
  a.fadeIn = secs(0.5);  // the user's fade before the first clip stays
  Composition c = sequence({t}, {b, a});
  c.normalizeSequenceOrder();
  EXPECT_EQ(c.layers[0].fadeIn, secs(1));
  EXPECT_TRUE(c.layers[0].crossfadeIn);
  EXPECT_EQ(c.layers[1].fadeOut, secs(1));
  EXPECT_TRUE(c.layers[1].crossfadeOut);
  EXPECT_EQ(c.layers[1].fadeIn, secs(0.5));

  c.update(b.id, [](Layer& l) { l.timeRange.start = secs(6); });
  c.normalizeSequenceOrder();
  EXPECT_FALSE(c.layers[0].crossfadeIn || c.layers[1].crossfadeOut);
  EXPECT_EQ(c.layers[0].fadeIn, secs(1));
  EXPECT_EQ(c.layers[1].fadeOut, secs(1));

  Composition off = sequence({t}, {b, a});
  off.overlapsCrossfade = false;
  off.normalizeSequenceOrder();
  EXPECT_FALSE(off.layers[0].crossfadeIn);
}

TEST(CompositionSequenceTest, NormalizeLeavesPlainAndNormalisedCompositionsShared) {
  const SequenceTrack t{.name = "V1"};
  Composition plain = sequence({}, {clip("Early", {}, 0, 5), clip("Late", {}, 10, 5)});
  plain.editingMode = EditingMode::layers;
  Composition done =
      sequence({t}, {clip("Early", t.id, 0, 5), clip("Late", t.id, 3, 5), clip("Apart", t.id, 10, 2)});
  done.normalizeSequenceOrder();
  for (Composition* c : {&plain, &done}) {
    const Composition before = *c;
    c->normalizeSequenceOrder();
    EXPECT_EQ(*c, before);
    EXPECT_TRUE(c->layers.sharesStorageWith(before.layers));
    EXPECT_TRUE(c->tracks.sharesStorageWith(before.tracks));
  }
}

}  // namespace
}  // namespace orvane::core
