#include "Commands/property_address.hpp"

#include <gtest/gtest.h>

#include "core/effect_catalog.hpp"
#include "tests/commands/commands_test_support.hpp"

namespace orvane::commands {
namespace {

using namespace testing_support;
using Channel = LayerTransform::Channel;
using Edge = LayerCrop::Edge;

const Uuid kLayer = *Uuid::parse("0a1b2c3d-4e5f-4a6b-8c7d-9e0f1a2b3c4d");
const Uuid kOther = *Uuid::parse("11111111-2222-4333-8444-555555555555");
const std::string L = "0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D";
const std::string O = "11111111-2222-4333-8444-555555555555";

// A layer with one directional blur (instance id kOther) and one mask (kOther).
Layer layerWithEffectAndMask() {
  Layer layer = clip("Solid", 0, 5);
  layer.id = kLayer;
  EffectInstance blur = EffectCatalog::descriptorFor("blur.directional")->makeInstance();
  blur.id = kOther;
  layer.effects = {blur};
  LayerMask mask;
  mask.id = kOther;
  layer.masks = {mask};
  return layer;
}

TEST(PropertyAddressTest, KeyAndDisplayNameOfEveryKind) {
  const Layer layer = layerWithEffectAndMask();
  const struct {
    PropertyAddress address;
    std::string key;
    std::string name;
  } cases[] = {
      {PropertyAddress::transform(kLayer, Channel::anchorPoint), "t:" + L + ":anchorPoint", "Anchor Point"},
      {PropertyAddress::crop(kLayer, Edge::bottom), "c:" + L + ":bottom", "Crop Bottom"},
      {PropertyAddress::maskPath(kLayer, kOther), "m:" + L + ":" + O, "Mask Path"},
      {PropertyAddress::maskFeather(kLayer, kOther), "mf:" + L + ":" + O, "Mask Feather"},
      {PropertyAddress::textReveal(kLayer), "tr:" + L, "Type On"},
      {PropertyAddress::audioVolume(kLayer), "av:" + L, "Volume"},
      {PropertyAddress::audioPan(kLayer), "ap:" + L, "Pan"},
      // The catalog names the directional blur's "radius" "Length".
      {PropertyAddress::effectParameter(kLayer, kOther, "radius"), "e:" + L + ":" + O + ":radius", "Length"},
      {PropertyAddress::effectParameter(kLayer, kOther, "nope"), "e:" + L + ":" + O + ":nope", "nope"},
      {PropertyAddress::effectParameter(kLayer, kLayer, "radius"), "e:" + L + ":" + L + ":radius", "radius"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.address.key(), c.key);
    EXPECT_EQ(c.address.displayName(&layer), c.name) << c.key;
  }
  EXPECT_EQ(PropertyAddress::effectParameter(kLayer, kOther, "radius").displayName(), "radius");
}

TEST(PropertyAddressTest, OnlyPositionAndAnchorAreSpatial) {
  for (Channel c : allCases<Channel>())
    EXPECT_EQ(PropertyAddress::transform(kLayer, c).isSpatial(), c == Channel::position || c == Channel::anchorPoint);
  EXPECT_FALSE(PropertyAddress::maskPath(kLayer, kOther).isSpatial());
}

TEST(PropertyAddressTest, EqualityAndHashIgnoreFieldsTheKindDoesNotUse) {
  PropertyAddress a = PropertyAddress::transform(kLayer, Channel::scale);
  PropertyAddress b = a;
  b.maskID = kOther;
  b.parameterID = "radius";
  EXPECT_EQ(a, b);
  EXPECT_EQ(hashValue(a), hashValue(b));
  EXPECT_NE(a, PropertyAddress::transform(kLayer, Channel::rotation));
  EXPECT_NE(PropertyAddress::audioPan(kLayer), PropertyAddress::audioVolume(kLayer));
}

TEST(PropertyAddressTest, ClipboardChannelRoundTripsThroughAddressOn) {
  const Layer layer = layerWithEffectAndMask();
  for (const PropertyAddress& a :
       {PropertyAddress::transform(kLayer, Channel::opacity), PropertyAddress::crop(kLayer, Edge::top),
        PropertyAddress::textReveal(kLayer), PropertyAddress::audioVolume(kLayer), PropertyAddress::audioPan(kLayer),
        PropertyAddress::effectParameter(kLayer, kOther, "angle")}) {
    const auto channel = a.clipboardChannel(&layer);
    ASSERT_TRUE(channel) << a.key();
    EXPECT_EQ(addressOn(layer, *channel), a) << a.key();
  }
  EXPECT_FALSE(PropertyAddress::maskPath(kLayer, kOther).clipboardChannel(&layer));
  EXPECT_FALSE(PropertyAddress::effectParameter(kLayer, kLayer, "angle").clipboardChannel(&layer));

  // An effect channel names the catalog id, so it finds the same effect elsewhere.
  const auto channel = PropertyAddress::effectParameter(kLayer, kOther, "angle").clipboardChannel(&layer);
  EXPECT_EQ(channel->effectID, "blur.directional");
  Layer target = clip("Target", 0, 5);
  EXPECT_FALSE(addressOn(target, *channel));
  target.effects = {EffectCatalog::descriptorFor("sharpen")->makeInstance(),
                    EffectCatalog::descriptorFor("blur.directional")->makeInstance()};
  EXPECT_EQ(addressOn(target, *channel), PropertyAddress::effectParameter(target.id, target.effects[1].id, "angle"));
}

TEST(PropertyAddressTest, UnstoredParameterReadsAsCatalogDefault) {
  const Layer layer = layerWithEffectAndMask();
  const auto* radius = EffectCatalog::descriptorFor("blur.directional")->parameter("radius");
  EXPECT_EQ(propertyOf(layer, PropertyAddress::effectParameter(kLayer, kOther, "radius")),
            AnimatedProperty(radius->defaultValue));
  EXPECT_TRUE(layer.effects[0].parameters.empty());
  EXPECT_FALSE(propertyOf(layer, PropertyAddress::effectParameter(kLayer, kOther, "nope")));
  EXPECT_FALSE(propertyOf(layer, PropertyAddress::effectParameter(kLayer, kLayer, "radius")));
  EXPECT_FALSE(propertyOf(layer, PropertyAddress::maskFeather(kLayer, kLayer)));
  EXPECT_EQ(propertyOf(layer, PropertyAddress::maskFeather(kLayer, kOther)), layer.masks[0].feather);

  ProjectDocument doc(projectWith({layer}));
  EXPECT_EQ(propertyAt(doc, PropertyAddress::audioPan(kLayer)), layer.audio.pan);
  EXPECT_FALSE(propertyAt(doc, PropertyAddress::audioPan(kOther)));
}

TEST(PropertyAddressTest, MutateStoresParameterOnlyAfterTheBody) {
  Layer layer = layerWithEffectAndMask();
  const auto address = PropertyAddress::effectParameter(kLayer, kOther, "radius");
  bool emptyDuringBody = false;
  EXPECT_TRUE(mutateProperty(layer, address, [&](AnimatedProperty& p) {
    emptyDuringBody = layer.effects[0].parameters.empty();
    p.baseValue = PropertyValue::double_(77);
  }));
  EXPECT_TRUE(emptyDuringBody);
  EXPECT_EQ(layer.effects[0].parameters.at("radius").baseValue, PropertyValue::double_(77));

  // Unknown effects, parameters and masks run nothing.
  bool ran = false;
  const auto mark = [&](AnimatedProperty&) { ran = true; };
  EXPECT_FALSE(mutateProperty(layer, PropertyAddress::effectParameter(kLayer, kLayer, "radius"), mark));
  EXPECT_FALSE(mutateProperty(layer, PropertyAddress::effectParameter(kLayer, kOther, "nope"), mark));
  EXPECT_FALSE(mutateProperty(layer, PropertyAddress::maskPath(kLayer, kLayer), mark));
  EXPECT_FALSE(ran);
  EXPECT_EQ(layer.effects[0].parameters.size(), 1u);
}

}  // namespace
}  // namespace orvane::commands
