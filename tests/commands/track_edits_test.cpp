#include "Commands/track_edits.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

#include "Commands/layer_edits.hpp"
#include "tests/commands/commands_test_support.hpp"

namespace orvane::commands {
namespace {

using namespace testing_support;

Uuid trackNamed(const Composition& c, const std::string& name) {
  for (const SequenceTrack& t : c.tracks)
    if (t.name == name) return t.id;
  ADD_FAILURE() << "no track " << name;
  return {};
}

// A sequence with the default tracks, each clip on the track named.
OVProject sequence(std::vector<std::pair<std::string, Layer>> clips) {
  OVProject p = projectWith({}, EditingMode::sequence);
  p.updateActiveComposition([&](Composition& c) {
    for (auto& [track, layer] : clips) {
      layer.trackID = trackNamed(c, track);
      c.layers.push_back(layer);
    }
    c.normalizeSequenceOrder();
  });
  return p;
}

const Layer& named(const ProjectDocument& doc, const std::string& name) {
  for (const Layer& l : doc.activeComposition()->layers)
    if (l.name == name) return l;
  throw std::runtime_error("no layer " + name);
}
Uuid track(const ProjectDocument& doc, const std::string& name) { return trackNamed(*doc.activeComposition(), name); }
double startOf(const ProjectDocument& doc, const std::string& name) {
  return named(doc, name).timeRange.start.seconds();
}

TEST(TrackEditsTest, EveryEditIsOneNamedUndoableStep) {
  using D = ProjectDocument;
  using U = UndoStack*;
  struct Case {
    const char* action;
    std::function<void(D&, U)> edit;
    bool crossfadesOff = false;
  };
  const Case cases[] = {
      {"Add Track", [](D& d, U u) { EXPECT_TRUE(addTrack(d, {}, TrackKind::video, {}, u)); }},
      {"Remove Track", [](D& d, U u) { removeTrack(d, track(d, "V2"), u); }},
      {"Rename Track", [](D& d, U u) { renameTrack(d, track(d, "V2"), "B-roll", u); }},
      {"Mute Track", [](D& d, U u) { setTrackMuted(d, true, track(d, "V1"), u); }},
      {"Unmute Track", [](D& d, U u) { setTrackMuted(d, false, track(d, "V1"), u); }},
      {"Lock Track", [](D& d, U u) { setTrackLocked(d, true, track(d, "V1"), u); }},
      {"Unlock Track", [](D& d, U u) { setTrackLocked(d, false, track(d, "V2"), u); }},
      {"Move to Track", [](D& d, U u) { moveLayerToTrack(d, named(d, "X").id, track(d, "V3"), false, u); }},
      {"Ripple Delete", [](D& d, U u) { rippleDeleteLayers(d, {named(d, "X").id}, u); }},
      {"Disable Crossfades", [](D& d, U u) { setOverlapsCrossfade(d, false, u); }},
      {"Enable Crossfades", [](D& d, U u) { setOverlapsCrossfade(d, true, u); }, true},
  };
  for (const auto& tc : cases) {
    SCOPED_TRACE(tc.action);
    Layer off = clip("Off", 4, 2);
    off.isEnabled = false;
    Layer pinned = clip("Pinned", 0, 3);
    pinned.isLocked = true;
    OVProject p = sequence({{"V1", clip("X", 0, 2)}, {"V1", off}, {"V2", pinned}});
    p.updateActiveComposition([&](Composition& c) { c.overlapsCrossfade = !tc.crossfadesOff; });
    ProjectDocument doc(p);
    UndoStack undo;
    expectUndoableEdit(doc, undo, tc.action, [&] { tc.edit(doc, &undo); });
  }
}

TEST(TrackEditsTest, NewTracksAreNamedAndPlacedByKind) {
  ProjectDocument doc(sequence({}));
  UndoStack undo;
  addTrack(doc, {}, TrackKind::video, {}, &undo);
  addTrack(doc, " ", TrackKind::audio, {}, &undo);
  addTrack(doc, "Titles", TrackKind::video, track(doc, "V3"), &undo);
  std::vector<std::string> names;
  for (const SequenceTrack& t : doc.activeComposition()->tracks) names.push_back(t.name);
  EXPECT_EQ(names, (std::vector<std::string>{"Titles", "V3", "V2", "V1", "V4", "A1", "A2"}));
  ProjectDocument plain(projectWith({}));
  expectNoEdit(plain, undo, [&] { EXPECT_FALSE(addTrack(plain, {}, TrackKind::video, {}, &undo)); });
}

TEST(TrackEditsTest, RemovingATrackMovesItsClipsToTheTrackTakingItsPlace) {
  Layer sound = clip("Sound", 1, 2, LayerContent::audio(Uuid::make()));
  ProjectDocument doc(sequence({{"V3", clip("Top", 1, 1)}, {"V2", clip("Mid", 0, 3)}, {"A1", sound}}));
  UndoStack undo;
  removeTrack(doc, track(doc, "V3"), &undo);
  EXPECT_EQ(named(doc, "Top").trackID, track(doc, "V2"));
  EXPECT_DOUBLE_EQ(startOf(doc, "Top"), 2.5);  // out of Mid's core: half a second of crossfade
  EXPECT_TRUE(named(doc, "Top").crossfadeIn);
  removeTrack(doc, track(doc, "A1"), &undo);  // the last: its clips go to the new last track
  EXPECT_EQ(named(doc, "Sound").trackID, track(doc, "V1"));
  removeTrack(doc, track(doc, "V1"), &undo);
  expectNoEdit(doc, undo, [&] { removeTrack(doc, track(doc, "V2"), &undo); });
}

TEST(TrackEditsTest, RippleDeleteClosesTheGapsOnItsTracksOnly) {
  ProjectDocument doc(sequence({{"V1", clip("a", 0, 2)}, {"V1", clip("b", 3, 2)}, {"V1", clip("c", 6, 2)},
                                {"V2", clip("p", 6, 2)}}));
  UndoStack undo;
  rippleDeleteLayers(doc, {named(doc, "a").id, named(doc, "b").id}, &undo);
  EXPECT_DOUBLE_EQ(startOf(doc, "c"), 2);
  EXPECT_DOUBLE_EQ(startOf(doc, "p"), 6);
  ProjectDocument plain(projectWith({clip("a", 0, 2), clip("b", 3, 2)}));
  rippleDeleteLayers(plain, {named(plain, "a").id}, &undo);
  EXPECT_EQ(undo.undoActionName(), "Delete Layer");
  EXPECT_DOUBLE_EQ(startOf(plain, "b"), 3);
}

TEST(TrackEditsTest, TurningCrossfadesOffPushesOverlapsApartAndDropsTheirFades) {
  Layer c = clip("c", 9, 1);
  c.fadeIn = secs(0.5);
  ProjectDocument doc(sequence({{"V1", clip("a", 0, 5)}, {"V1", clip("b", 4, 4)}, {"V1", c}}));
  UndoStack undo;
  ASSERT_EQ(named(doc, "b").fadeIn, secs(1));
  setOverlapsCrossfade(doc, false, &undo);
  EXPECT_DOUBLE_EQ(startOf(doc, "b"), 5);
  EXPECT_DOUBLE_EQ(startOf(doc, "c"), 10);
  EXPECT_EQ(named(doc, "a").fadeOut, OVTime::zero);
  EXPECT_FALSE(named(doc, "b").crossfadeIn);
  EXPECT_EQ(named(doc, "b").fadeIn, OVTime::zero);
  EXPECT_EQ(named(doc, "c").fadeIn, secs(0.5));  // the user's fade stays
}

TEST(TrackEditsTest, DragsAndTrimsOverlapAtMostHalfTheShorterClip) {
  struct Case {
    bool crossfades;
    double target, expected;
  };
  for (const Case tc : {Case{true, 3, 3}, Case{true, 2.5, 3}, Case{false, 2.5, 4}, Case{true, 10, 10}}) {
    OVProject p = sequence({{"V1", clip("a", 0, 4)}, {"V1", clip("b", 6, 2)}, {"V1", clip("far", 20, 2)}});
    p.updateActiveComposition([&](Composition& c) { c.overlapsCrossfade = tc.crossfades; });
    ProjectDocument doc(p);
    const Uuid b = named(doc, "b").id;
    doc.beginInteraction();
    moveLayersInteractively(doc, {b}, {{b, secs(tc.target)}});
    EXPECT_DOUBLE_EQ(startOf(doc, "b"), tc.expected) << tc.target << " crossfades " << tc.crossfades;
    EXPECT_EQ(named(doc, "b").crossfadeIn, tc.crossfades && tc.expected < 4);
  }
  ProjectDocument doc(sequence({{"V1", clip("a", 0, 4)}, {"V1", clip("b", 6, 2)}}));
  UndoStack undo;
  trimLayerEnd(doc, named(doc, "a").id, secs(10), false, &undo);
  EXPECT_EQ(named(doc, "a").timeRange.end(), secs(7));
  EXPECT_EQ(named(doc, "b").fadeIn, secs(1));
}

TEST(TrackEditsTest, MovingToATrackFitsTheClipAndSkipsLockedOnes) {
  Layer pinned = clip("Pinned", 0, 1);
  pinned.isLocked = true;
  ProjectDocument doc(sequence({{"V1", clip("a", 1, 2)}, {"V1", pinned}, {"V2", clip("wide", 0, 6)}}));
  UndoStack undo;
  moveLayerToTrack(doc, named(doc, "a").id, track(doc, "V2"), false, &undo);
  EXPECT_EQ(named(doc, "a").trackID, track(doc, "V2"));
  EXPECT_DOUBLE_EQ(startOf(doc, "a"), 5);  // after wide's core, crossfading a second
  expectNoEdit(doc, undo, [&] { moveLayerToTrack(doc, named(doc, "Pinned").id, track(doc, "V3"), false, &undo); });
}

}  // namespace
}  // namespace orvane::commands
