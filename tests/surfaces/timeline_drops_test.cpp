#include "surfaces/timeline_drops.hpp"

#include <gtest/gtest.h>

#include "Commands/composition_edits.hpp"
#include "behaviors/behavior_catalog.hpp"
#include "tests/surfaces/timeline_test_support.hpp"

namespace orvane::surfaces {
namespace {

using namespace testing_support;

// A catalog behavior for visual layers only, so that an audio layer refuses it.
const behaviors::Behavior& visualOnlyBehavior() {
  for (const behaviors::Behavior& b : behaviors::BehaviorCatalog::all()) {
    if (!b.applies(LayerKind::audio) && b.applies(LayerKind::solid)) return b;
  }
  ADD_FAILURE() << "the catalog has no behavior for visual layers only";
  static const behaviors::Behavior none;
  return none;
}

class TimelineBehaviorDropTest : public TimelineFixture {
 protected:
  void SetUp() override {
    Layer sound("Sound", LayerContent::audio(Uuid::make()), {secs(0), secs(4)});
    open({clip("Solid", 1, 2), sound});
    solid = layerAt(0).id;
    audio = layerAt(1).id;
  }
  Uuid solid, audio;
};

TEST_F(TimelineBehaviorDropTest, OntoAClipItAppliesAsOneStep) {
  const behaviors::Behavior& b = visualOnlyBehavior();
  const OVProject before = doc->project();
  EXPECT_EQ(applyBehaviorDrop(*doc, editor, b.id, solid, &undo), 1);
  EXPECT_EQ(editor.statusMessage(), "Applied " + b.name + ".");
  expectOneStep(before, 0, "Apply " + b.name);
}

TEST_F(TimelineBehaviorDropTest, OntoNoClipOrAnUnsuitedLayerItOnlySays) {
  const behaviors::Behavior& b = visualOnlyBehavior();
  const OVProject before = doc->project();
  EXPECT_EQ(applyBehaviorDrop(*doc, editor, b.id, std::nullopt, &undo), 0);
  EXPECT_EQ(editor.statusMessage(), "Drop " + b.name + " onto a clip segment.");
  EXPECT_EQ(applyBehaviorDrop(*doc, editor, b.id, Uuid::make(), &undo), 0);
  EXPECT_EQ(editor.statusMessage(), "Drop " + b.name + " onto a clip segment.");
  EXPECT_EQ(applyBehaviorDrop(*doc, editor, b.id, audio, &undo), 0);
  EXPECT_EQ(editor.statusMessage(), b.name + " doesn\u2019t apply to that layer type.");
  EXPECT_TRUE(doc->project() == before);
  EXPECT_EQ(undo.undoCount(), 0u);

  editor.clearStatus();
  EXPECT_EQ(applyBehaviorDrop(*doc, editor, "no.such-behavior", solid, &undo), 0);
  EXPECT_FALSE(editor.statusMessage());
}

TEST(TimelineDragPayloadTest, RoundTripsAndRefusesOtherRecords) {
  EXPECT_EQ(BehaviorDrag::contentType, "com.brightfold.orvane.behavior");
  EXPECT_EQ(CompositionDrag::contentType, "com.brightfold.orvane.composition");
  EXPECT_EQ(MediaAssetDrag::contentType, "com.brightfold.orvane.asset");

  const BehaviorDrag behavior{"entrance.fade-in"};
  EXPECT_EQ(BehaviorDrag::decode(behavior.encoded()), behavior);
  const CompositionDrag composition{Uuid::make()};
  EXPECT_EQ(CompositionDrag::decode(composition.encoded()), composition);
  const MediaAssetDrag asset{Uuid::make()};
  EXPECT_EQ(MediaAssetDrag::decode(asset.encoded()), asset);
  EXPECT_EQ(MediaAssetDrag::decode(R"({"assetID":")" + asset.assetID.text() + R"("})"), asset);

  EXPECT_FALSE(MediaAssetDrag::decode(composition.encoded())) << "another payload's record";
  EXPECT_FALSE(MediaAssetDrag::decode(R"({"assetID":"not a uuid"})"));
  EXPECT_FALSE(BehaviorDrag::decode(R"({"behaviorID":7})"));
  EXPECT_FALSE(BehaviorDrag::decode("[1,2"));
  EXPECT_FALSE(BehaviorDrag::decode(std::string("\0\xff\xfe", 3)));
  EXPECT_FALSE(CompositionDrag::decode(""));
}

class TimelineMediaDropTest : public TimelineFixture {};

TEST_F(TimelineMediaDropTest, AssetsAndCompositionsLandWhereDroppedAndAreSelected) {
  MediaAsset image;
  image.name = "Still";
  image.kind = MediaKind::image;
  image.path = "/media/still.png";
  image.naturalSize = {800, 600};
  image.hasVideoTrack = true;
  OVProject p = projectWith({clip("A", 0, 1)});
  p.assets.mutate().push_back(image);
  Composition nested;
  nested.name = "Nested";
  p.compositions.push_back(nested);
  doc.emplace(p);

  const auto added = dropMediaAsset(*doc, editor, {image.id}, {secs(2), std::nullopt, std::nullopt}, &undo);
  ASSERT_TRUE(added);
  EXPECT_EQ(layer(*added).timeRange.start, secs(2));
  EXPECT_EQ(editor.selectedLayerIDs(), std::set<Uuid>{*added});
  EXPECT_EQ(undo.undoCount(), 1u);

  const auto nestedLayer = dropComposition(*doc, editor, {nested.id}, {secs(3), std::nullopt, 0}, &undo);
  ASSERT_TRUE(nestedLayer);
  EXPECT_EQ(layerAt(0).id, *nestedLayer);
  EXPECT_EQ(layer(*nestedLayer).timeRange.start, secs(3));
  EXPECT_EQ(undo.undoCount(), 2u);

  EXPECT_FALSE(dropMediaAsset(*doc, editor, {Uuid::make()}, {}, &undo));
  EXPECT_FALSE(dropComposition(*doc, editor, {comp().id}, {}, &undo)) << "a composition inside itself";
  EXPECT_EQ(undo.undoCount(), 2u);
}

}  // namespace
}  // namespace orvane::surfaces
