#include "render/rgba8.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "tests/render/render_test_support.hpp"

namespace orvane::render {
namespace {

using testing_support::makeImage;
using testing_support::solid;

TEST(Rgba8Test, RoundsToNearestAndClamps) {
  EXPECT_EQ(toByte(0.5f), 128);       // 127.5
  EXPECT_EQ(toByte(0.25f), 64);       // 63.75
  EXPECT_EQ(toByte(0.2f / 255), 0);   // below half a step
  EXPECT_EQ(toByte(1.5f), 255);
  EXPECT_EQ(toByte(-0.2f), 0);
  EXPECT_EQ(toByte(std::nanf("")), 0);
}

TEST(Rgba8Test, StraightOrPremultipliedAlpha) {
  const Image image = solid({0, 0, 1, 1}, {0.25f, 0.125f, 0, 0.5f});
  EXPECT_EQ(*toRgba8(image, image.extent()), (std::vector<std::uint8_t>{128, 64, 0, 128}));
  EXPECT_EQ(*toRgba8(image, image.extent(), {AlphaForm::premultiplied}),
            (std::vector<std::uint8_t>{64, 32, 0, 128}));
  EXPECT_EQ(*toRgba8(image, image.extent(), {AlphaForm::straight, ChannelOrder::bgra}),
            (std::vector<std::uint8_t>{0, 64, 128, 128}));
}

TEST(Rgba8Test, TopRowComesFirstAndMissingPixelsAreTransparent) {
  // Bottom row red, top row blue; the region reaches one pixel past the right.
  const Image image = makeImage({0, 0, 1, 2}, [](int, int y) { return y == 0 ? Rgba{1, 0, 0, 1} : Rgba{0, 0, 1, 1}; });
  EXPECT_EQ(*toRgba8(image, {0, 0, 2, 2}),
            (std::vector<std::uint8_t>{0, 0, 255, 255, 0, 0, 0, 0, 255, 0, 0, 255, 0, 0, 0, 0}));
}

TEST(Rgba8Test, RoundTripAndBufferChecks) {
  const std::vector<std::uint8_t> bytes{10, 20, 30, 255, 200, 100, 0, 255, 1, 2, 3, 255, 4, 5, 6, 255, 0, 0};
  auto image = imageFromRgba8(bytes, 2, 2, 8);
  ASSERT_TRUE(image.has_value());
  EXPECT_EQ(image->extent(), (PixelRect{0, 0, 2, 2}));
  auto back = toRgba8(*image, image->extent());
  EXPECT_EQ(*back, std::vector<std::uint8_t>(bytes.begin(), bytes.begin() + 16));
  EXPECT_EQ(imageFromRgba8(bytes, 2, 3, 8).error(), ImageError::bufferTooSmall);
  EXPECT_EQ(imageFromRgba8(bytes, 2, 2, 4).error(), ImageError::bufferTooSmall);  // rows overlap
  std::vector<std::uint8_t> small(15);
  EXPECT_EQ(writeRgba8(*image, image->extent(), small, 8).error(), ImageError::bufferTooSmall);
  EXPECT_TRUE(imageFromRgba8({}, 0, 5, 0)->isEmpty());
  EXPECT_EQ(toRgba8(*image, {0, 0, kMaxImageSide + 1, 1}).error(), ImageError::tooLarge);
  EXPECT_TRUE(toRgba8(*image, {})->empty());
}

}  // namespace
}  // namespace orvane::render

namespace orvane::render {
namespace {

// Rows are converted four pixels at a time where the processor allows, the
// rest one by one; both must follow toByte exactly, in every format.
TEST(Rgba8Test, RowConversionFollowsTheByteRuleInEveryFormat) {
  const float nan = std::nanf("");
  const Rgba pixels[] = {{0.5f, 0.25f, 0.125f, 1},   {0.2f, 0.1f, 0.05f, 0.4f}, {nan, -1, 2, 1},
                         {0.3f, 0.3f, 0.3f, 0},      {1.2f, 0.6f, -0.1f, 0.6f}, {0, 0, 0, 0.003f},
                         {0.001f, 0.5f, 0.999f, 1}};
  for (const AlphaForm alpha : {AlphaForm::straight, AlphaForm::premultiplied}) {
    for (const ChannelOrder order : {ChannelOrder::rgba, ChannelOrder::bgra}) {
      std::uint8_t out[sizeof pixels / sizeof pixels[0] * 4];
      alignas(16) Rgba row[sizeof pixels / sizeof pixels[0]];
      std::copy(std::begin(pixels), std::end(pixels), row);
      writeRgba8Row(row, 7, out, {alpha, order});
      for (int i = 0; i < 7; ++i) {
        const Rgba& p = pixels[i];
        const float inverse = alpha == AlphaForm::straight ? (p.a > 0 ? 1 / p.a : 0) : 1;
        float r = p.r * inverse, g = p.g * inverse, b = p.b * inverse;
        if (alpha == AlphaForm::straight && p.a == 1) r = p.r, g = p.g, b = p.b;
        if (order == ChannelOrder::bgra) std::swap(r, b);
        EXPECT_EQ(out[4 * i], toByte(r)) << i;
        EXPECT_EQ(out[4 * i + 1], toByte(g)) << i;
        EXPECT_EQ(out[4 * i + 2], toByte(b)) << i;
        EXPECT_EQ(out[4 * i + 3], toByte(p.a)) << i;
      }
    }
  }
}

}  // namespace
}  // namespace orvane::render
