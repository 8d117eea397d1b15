// A layer's natural size with text measured by the renderer's layout.

#include "render/layer_size.hpp"

#include <gtest/gtest.h>

#include "render/text_layout_builder.hpp"

namespace orvane::render {
namespace {

using core::Layer;
using core::LayerContent;
using core::OVTimeRange;

TEST(LayerSizeTest, TextIsMeasuredByItsLayoutAndWrapsInItsBox) {
  core::OVProject project;
  core::TextContent short_;
  short_.string = "Hi";
  short_.fontSize = 40;
  core::TextContent long_ = short_;
  long_.string = "Hi there, a longer line of text";
  const auto sizeOf = [&](const core::TextContent& text) {
    return naturalSize(Layer("t", LayerContent::text(text), OVTimeRange()), project);
  };
  const auto small = sizeOf(short_), large = sizeOf(long_);
  ASSERT_TRUE(small && large);
  EXPECT_EQ(*small, TextLayoutBuilder::measure(short_, std::nullopt));
  EXPECT_GT(large->width, small->width);
  EXPECT_DOUBLE_EQ(large->height, small->height);

  // In a narrow box the long text wraps onto more lines.
  core::TextContent boxed = long_;
  boxed.boxSize = core::OVSize{200, 0};
  const auto wrapped = sizeOf(boxed);
  ASSERT_TRUE(wrapped);
  EXPECT_LE(wrapped->width, 200 + 2 * TextLayoutBuilder::padding(boxed) + 1);
  EXPECT_GT(wrapped->height, 2 * small->height);
}

TEST(LayerSizeTest, OtherKindsKeepTheirOwnSizes) {
  core::OVProject project;
  const Layer solid("s", LayerContent::solid({core::OVColor::white, {30, 20}}), OVTimeRange());
  EXPECT_EQ(naturalSize(solid, project), (core::OVSize{30, 20}));
  const Layer audio("a", LayerContent::audio(core::Uuid::make()), OVTimeRange());
  EXPECT_FALSE(naturalSize(audio, project));
}

}  // namespace
}  // namespace orvane::render
