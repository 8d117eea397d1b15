#include "Commands/clipboard.hpp"

#include <gtest/gtest.h>

#include "core/effect_catalog.hpp"
#include "tests/commands/commands_test_support.hpp"
#include "tests/document/sample_project.hpp"

namespace orvane::commands {
namespace {

using namespace testing_support;
using Channel = ClipboardChannel;

const Layer& layerAt(const ProjectDocument& doc, std::size_t index) { return doc.activeComposition()->layers[index]; }
const Layer* layerWith(const ProjectDocument& doc, const Uuid& id) { return doc.activeComposition()->layer(id); }

Layer blurred(std::string name, std::vector<Keyframe> radiusKeys = {}) {
  Layer l = clip(std::move(name), 0, 10);
  EffectInstance fx = EffectCatalog::descriptorFor("blur.gaussian")->makeInstance();
  fx.parameters["radius"] = AnimatedProperty(PropertyValue::double_(12), std::move(radiusKeys));
  l.effects = SharedVector<EffectInstance>(std::vector{fx});
  return l;
}

TEST(ClipboardTest, PastedLayersKeepTheirOffsetsFromThePlayhead) {
  Layer a = clip("A", 3, 2), b = clip("B", 5, 2);
  a.transform.opacity.setKeyframes({Keyframe(secs(3.5), PropertyValue::double_(50))});
  ProjectDocument doc(projectWith({a, b}));
  UndoStack undo;
  MemoryPasteboard board;
  copyLayers(doc, {b.id, a.id}, board);
  std::vector<Uuid> pasted;
  expectUndoableEdit(doc, undo, "Paste Layers", [&] { pasted = paste(doc, secs(10), {}, board, &undo); });
  ASSERT_EQ(pasted.size(), 2u);
  EXPECT_EQ(layerAt(doc, 0).id, pasted[0]);  // on top, in their own order
  EXPECT_EQ(layerAt(doc, 1).id, pasted[1]);
  EXPECT_EQ(layerAt(doc, 0).name, "A");
  EXPECT_NE(pasted[0], a.id);
  EXPECT_EQ(layerAt(doc, 0).timeRange.start, secs(10));
  EXPECT_EQ(layerAt(doc, 1).timeRange.start, secs(12));
  EXPECT_EQ(layerAt(doc, 0).transform.opacity.keyframes()[0].time, secs(10.5));
  EXPECT_EQ(doc.activeComposition()->layers.size(), 4u);
}

TEST(ClipboardTest, ParentLinksSurviveOnlyWithinThePaste) {
  Layer parent = clip("Parent", 0, 5), child = clip("Child", 1, 2);
  child.parentLayerID = parent.id;
  ProjectDocument doc(projectWith({parent, child}));
  UndoStack undo;
  MemoryPasteboard board;
  copyLayers(doc, {child.id}, board);
  const auto alone = paste(doc, secs(0), {}, board, &undo);
  ASSERT_EQ(alone.size(), 1u);
  EXPECT_EQ(undo.undoActionName(), "Paste Layer");
  EXPECT_FALSE(layerWith(doc, alone[0])->parentLayerID.has_value());

  copyLayers(doc, {parent.id, child.id}, board);
  const auto both = paste(doc, secs(0), {}, board, &undo);
  ASSERT_EQ(both.size(), 2u);
  EXPECT_EQ(layerWith(doc, both[1])->parentLayerID, both[0]);
}

TEST(ClipboardTest, PasteIntoAnotherProjectBringsTheMediaOnce) {
  const MediaAsset asset = videoAsset("shot", 8);
  OVProject source = projectWith({clip("shot", 0, 8, LayerContent::video(asset.id))});
  source.addAsset(asset);
  MemoryPasteboard board;
  copyLayers(ProjectDocument(source), {source.activeComposition()->layers[0].id}, board);

  ProjectDocument doc(projectWith({}));
  UndoStack undo;
  expectUndoableEdit(doc, undo, "Paste Layer", [&] { paste(doc, secs(0), {}, board, &undo); });
  ASSERT_EQ(doc.project().assets.size(), 1u);
  EXPECT_TRUE(doc.project().assets[0] == asset);
  paste(doc, secs(0), {}, board, &undo);
  EXPECT_EQ(doc.project().assets.size(), 1u);
  EXPECT_EQ(doc.activeComposition()->layers.size(), 2u);
}

TEST(ClipboardTest, PasteIntoASequencePlacesClipsWithoutOverlap) {
  OVProject p = projectWith({clip("A", 0, 4)}, EditingMode::sequence);
  p.updateActiveComposition([](Composition& c) { c.overlapsCrossfade = false; });
  ProjectDocument doc(p);
  UndoStack undo;
  MemoryPasteboard board;
  const Layer original = layerAt(doc, 0);
  copyLayers(doc, {original.id}, board);
  std::vector<Uuid> pasted;
  expectUndoableEdit(doc, undo, "Paste Layer", [&] { pasted = paste(doc, secs(2), {}, board, &undo); });
  ASSERT_EQ(pasted.size(), 1u);
  const Layer& copy = *layerWith(doc, pasted[0]);
  EXPECT_EQ(copy.trackID, doc.activeComposition()->defaultTrackIDFor(copy));
  EXPECT_FALSE(copy.timeRange.intersects(original.timeRange));
  EXPECT_EQ(copy.timeRange.start, secs(4));
}

TEST(ClipboardTest, EffectKeyframesSkipLayersWithoutThatEffect) {
  const Layer source = blurred("Source", {Keyframe(secs(1), PropertyValue::double_(5)),
                                          Keyframe(secs(2), PropertyValue::double_(30))});
  const Layer withBlur = blurred("With"), without = clip("Without", 0, 10);
  ProjectDocument doc(projectWith({source, withBlur, without}));
  UndoStack undo;
  MemoryPasteboard board;
  const auto address = PropertyAddress::effectParameter(source.id, source.effects[0].id, "radius");
  const auto& keys = source.effects[0].parameters.at("radius").keyframes();
  copyKeyframes(doc, {{address, keys[1].id}, {address, keys[0].id}}, board);
  expectUndoableEdit(doc, undo, "Paste Keyframes",
                     [&] { EXPECT_TRUE(paste(doc, secs(3), {withBlur.id, without.id}, board, &undo).empty()); });
  const auto& pasted = layerWith(doc, withBlur.id)->effects[0].parameters.at("radius").keyframes();
  ASSERT_EQ(pasted.size(), 2u);
  EXPECT_EQ(pasted[0].time, secs(3));
  EXPECT_EQ(pasted[1].value, PropertyValue::double_(30));
  EXPECT_EQ(pasted[1].time, secs(4));
  EXPECT_TRUE(*layerWith(doc, without.id) == without);
}

TEST(ClipboardTest, PastedKeyframeSnapsAndReplacesTheKeyThere) {
  Layer source = clip("Source", 0, 10), target = clip("Target", 0, 10);
  source.transform.position.setKeyframes({Keyframe(secs(1), PropertyValue::point(7, 8))});
  target.transform.position.setKeyframes({Keyframe(secs(3), PropertyValue::point(1, 1)),
                                          Keyframe(secs(5), PropertyValue::point(2, 2))});
  ProjectDocument doc(projectWith({source, target}));
  UndoStack undo;
  MemoryPasteboard board;
  const auto address = PropertyAddress::transform(source.id, LayerTransform::Channel::position);
  copyKeyframes(doc, {{address, source.transform.position.keyframes()[0].id}}, board);
  expectUndoableEdit(doc, undo, "Paste Keyframes", [&] { paste(doc, secs(3.01), {target.id}, board, &undo); });
  const auto& keys = layerWith(doc, target.id)->transform.position.keyframes();
  ASSERT_EQ(keys.size(), 2u);
  EXPECT_EQ(keys[0].time, secs(3));
  EXPECT_EQ(keys[0].value, PropertyValue::point(7, 8));
}

TEST(ClipboardTest, PayloadsSurviveTheirJson) {
  const OVProject sample = document::testing_support::sampleProject();
  const auto& layers = sample.activeComposition()->layers;
  const OVClipboard::LayerPayload layerPayload{{layers.begin(), layers.end()},
                                               {sample.assets.begin(), sample.assets.end()}, secs(0.5)};
  EXPECT_EQ(OVClipboard::decodeLayers(OVClipboard::encode(layerPayload)), layerPayload);

  const std::vector<Keyframe> keys = layers[0].transform.position.keyframes().items();
  Channel effect{Channel::Kind::effectParameter};
  effect.effectID = "blur.gaussian";
  effect.parameterID = "radius";
  Channel crop{Channel::Kind::crop};
  crop.edge = LayerCrop::Edge::bottom;
  const OVClipboard::KeyframePayload keyPayload{
      {{effect, keys}, {crop, keys}, {Channel{Channel::Kind::textReveal}, keys}, {Channel{}, {}}}, secs(0.5)};
  const std::string json = OVClipboard::encode(keyPayload);
  EXPECT_EQ(OVClipboard::decodeKeyframes(json), keyPayload);
  EXPECT_NE(json.find(R"({"crop":"bottom"})"), std::string::npos);
  EXPECT_NE(json.find(R"({"transform":"position"})"), std::string::npos);
  EXPECT_NE(json.find(R"({"textReveal":{}})"), std::string::npos);
}

TEST(ClipboardTest, CorruptOrForeignPayloadsReadAsNoneAndPasteNothing) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {OVClipboard::layerType, "{\"layers\":["},
      {OVClipboard::layerType, R"({"layers":[],"origin":{"v":0,"ts":600}})"},
      {OVClipboard::layerType, R"({"layers":[{"n":"x"}],"assets":[],"origin":{"v":0,"ts":600}})"},
      {OVClipboard::keyframeType, R"({"entries":[],"origin":{"v":0}})"},
      {OVClipboard::keyframeType, R"({"entries":[{"channel":{"crop":"left","audioPan":{}},"keyframes":[]}],)"
                                  R"("origin":{"v":0,"ts":600}})"},
      {OVClipboard::keyframeType, R"({"entries":[{"channel":{"mask":{}},"keyframes":[]}],"origin":{"v":0,"ts":6}})"},
  };
  const Layer layer = clip("A", 0, 5);
  ProjectDocument doc(projectWith({layer}));
  UndoStack undo;
  for (const auto& [type, data] : cases) {
    SCOPED_TRACE(data);
    MemoryPasteboard board;
    board.setData(type, std::string(data));
    EXPECT_FALSE(OVClipboard::layers(board) || OVClipboard::keyframes(board));
    expectNoEdit(doc, undo, [&] { EXPECT_TRUE(paste(doc, secs(1), {layer.id}, board, &undo).empty()); });
  }
}

}  // namespace
}  // namespace orvane::commands
