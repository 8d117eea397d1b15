// A layer's natural size for each kind of content.

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "core/layer_bounds.hpp"
#include "core/project.hpp"

namespace orvane::core {
namespace {

TEST(LayerBoundsTest, SizeOfEachKind) {
  MediaAsset clip{.name = "clip", .naturalSize = {640, 360}};
  MediaAsset flat{.name = "flat", .naturalSize = {640, 0}};
  Composition nested;
  nested.size = {800, 600};
  OVProject project("P", {Composition{}, nested});
  project.addAsset(clip);
  project.addAsset(flat);

  ShapeContent stroked{.size = {100, 50}, .strokeWidth = 6, .isStroked = true};
  ShapeContent plain{.size = {100, 50}, .strokeWidth = 6, .isStroked = false};
  TextContent boxed;
  boxed.boxSize = OVSize{300, 200};

  // The stand-in measure reports the width limit it was given, or 111.
  const TextMeasure measure = [](const TextContent&, std::optional<double> maxWidth) {
    return OVSize{maxWidth.value_or(111), 40};
  };
  struct Case {
    std::string what;
    LayerContent content;
    std::optional<OVSize> expected;
    bool withMeasure = true;
  };
  const std::vector<Case> cases{
      {"video", LayerContent::video(clip.id), OVSize{640, 360}},
      {"image", LayerContent::image(clip.id), OVSize{640, 360}},
      {"video of a zero side", LayerContent::video(flat.id), std::nullopt},
      {"video of an unknown asset", LayerContent::video(Uuid::make()), std::nullopt},
      {"audio", LayerContent::audio(clip.id), std::nullopt},
      {"text", LayerContent::text(TextContent{}), OVSize{111, 40}},
      {"text in a box", LayerContent::text(boxed), OVSize{300, 40}},
      {"text without a measure", LayerContent::text(TextContent{}), std::nullopt, false},
      {"stroked shape", LayerContent::shape(stroked), OVSize{106, 56}},
      {"shape", LayerContent::shape(plain), OVSize{100, 50}},
      {"solid", LayerContent::solid({OVColor::red_, {20, 30}}), OVSize{20, 30}},
      {"adjustment", LayerContent::adjustment({70, 80}), OVSize{70, 80}},
      {"nested", LayerContent::precomposition(nested.id), OVSize{800, 600}},
      {"nested but missing", LayerContent::precomposition(Uuid::make()), std::nullopt},
  };
  for (const Case& c : cases) {
    const Layer layer(c.what, c.content, OVTimeRange());
    EXPECT_EQ(LayerBounds::sizeOf(layer, project, c.withMeasure ? measure : TextMeasure{}), c.expected) << c.what;
  }
}

}  // namespace
}  // namespace orvane::core
