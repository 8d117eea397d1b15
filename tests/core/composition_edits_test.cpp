// Inserting, removing and reordering layers.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/composition.hpp"
#include "tests/core/test_support.hpp"

namespace orvane::core {
namespace {

using testing_support::secs;
using Names = std::vector<std::string>;

Layer clip(std::string name, double start, double duration, std::optional<Uuid> track = std::nullopt) {
  Layer l(std::move(name), LayerContent::video(Uuid::make()), OVTimeRange(secs(start), secs(duration)));
  l.trackID = track;
  return l;
}

Composition holding(std::vector<Layer> layers, std::optional<SequenceTrack> track = std::nullopt) {
  Composition c;
  if (track) {
    c.editingMode = EditingMode::sequence;
    c.tracks = std::vector<SequenceTrack>{*track};
  }
  c.layers = PersistentList<Layer>(layers);
  return c;
}

Names namesOf(const Composition& c) {
  Names names;
  for (const Layer& l : c.layers) names.push_back(l.name);
  return names;
}

TEST(CompositionEditsTest, InsertIntoSequenceNeverCrossfadesAndCarriesKeyframes) {
  const SequenceTrack v1{.name = "V1"};
  Composition c = holding({clip("A", 0, 4, v1.id)}, v1);
  Layer b = clip("B", 3, 2);
  b.transform.opacity.upsertKeyframe(PropertyValue::double_(50), secs(3.5));
  c.insert(b, 7, v1.id);
  // A crossfade would allow B to start at 3 s; an insert clears A instead.
  EXPECT_EQ(namesOf(c), (Names{"B", "A"}));
  EXPECT_EQ(c.layers[0].timeRange.start, secs(4));
  EXPECT_EQ(c.layers[0].trackID, v1.id);
  EXPECT_EQ(c.layers[0].transform.opacity.keyframes()[0].time, secs(4.5));
  EXPECT_FALSE(c.layers[0].crossfadeIn);
}

TEST(CompositionEditsTest, InsertFallsBackToTrackEndAndSnapsToAFrame) {
  const SequenceTrack v1{.name = "V1"};
  // Gaps of 1 s: a 3 s clip wanted at 1 s fits nowhere near, so it goes last.
  Composition c = holding({clip("A", 0, 2, v1.id), clip("C", 3, 2, v1.id), clip("D", 6, 2, v1.id)}, v1);
  c.insert(clip("B", 1, 3, v1.id));
  EXPECT_EQ(namesOf(c), (Names{"B", "D", "C", "A"}));
  EXPECT_EQ(c.layers[0].timeRange.start, secs(8));
  // An unknown track gives way to the default; the start lands on a frame.
  Composition empty = holding({}, v1);
  empty.insert(clip("Late", 1.0 + 0.5 / 30, 1), 0, Uuid::make());
  EXPECT_EQ(empty.layers[0].timeRange.start, secs(1));
  EXPECT_EQ(empty.layers[0].trackID, v1.id);
}

TEST(CompositionEditsTest, InsertIntoCompositionLimitsTheIndex) {
  Composition c;
  c.insert(clip("A", 0, 1));
  c.insert(clip("B", 0, 1), 99);
  c.insert(clip("C", 5.01, 1), 1);
  EXPECT_EQ(namesOf(c), (Names{"A", "C", "B"}));
  EXPECT_EQ(c.layers[1].timeRange.start, secs(5.01));
}

TEST(CompositionEditsTest, RemoveClearsParentLinksToTheLayer) {
  Layer parent = clip("Parent", 0, 1), child = clip("Child", 0, 1), other = clip("Other", 0, 1);
  child.parentLayerID = parent.id;
  other.parentLayerID = child.id;
  Composition c = holding({child, parent, other});
  c.remove(parent.id);
  EXPECT_EQ(namesOf(c), (Names{"Child", "Other"}));
  EXPECT_EQ(c.layers[0].parentLayerID, std::nullopt);
  EXPECT_EQ(c.layers[1].parentLayerID, child.id);
}

TEST(CompositionEditsTest, MoveClampsToTheList) {
  const Layer a = clip("A", 0, 1), b = clip("B", 0, 1), d = clip("D", 0, 1);
  Composition c = holding({a, b, d});
  c.move(a.id, 99);
  EXPECT_EQ(namesOf(c), (Names{"B", "D", "A"}));
  c.move(d.id, 0);
  EXPECT_EQ(namesOf(c), (Names{"D", "B", "A"}));
}

}  // namespace
}  // namespace orvane::core
