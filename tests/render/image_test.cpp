#include "render/image.hpp"

#include <gtest/gtest.h>

#include "render/image_ops.hpp"
#include "tests/render/render_test_support.hpp"

namespace orvane::render {
namespace {

using testing_support::makeImage;
using testing_support::positionColour;

TEST(ImageTest, CropKeepsValuesAndSharesPixels) {
  const Image image = makeImage({0, 0, 8, 8}, positionColour);
  const Image cropped = crop(image, {2, 3, 4, 9});
  EXPECT_EQ(cropped.extent(), (PixelRect{2, 3, 4, 5}));
  EXPECT_TRUE(cropped.sharesStorageWith(image));
  EXPECT_EQ(cropped.pixelAt(5, 7), positionColour(5, 7));
  EXPECT_EQ(cropped.pixelAt(1, 3), Rgba{});  // cut away
  EXPECT_TRUE(crop(image, {8, 0, 4, 4}).isEmpty());
  EXPECT_TRUE(crop(image, {}).isEmpty());
}

TEST(ImageTest, ConstantIsInfiniteUntilCropped) {
  const Rgba red{0.5f, 0, 0, 0.5f};
  const Image constant = Image::constant(red);
  EXPECT_TRUE(constant.isInfinite());
  EXPECT_EQ(compositedOver(constant, Image{}).error(), ImageError::unbounded);
  const Image cropped = crop(constant, {-100, 40, 3, 2});
  EXPECT_EQ(cropped.extent(), (PixelRect{-100, 40, 3, 2}));
  EXPECT_EQ(cropped.pixelAt(-98, 41), red);
  EXPECT_EQ(cropped.pixelAt(-101, 41), Rgba{});
}

TEST(ImageTest, ClampToExtentRepeatsEdgePixels) {
  const Image image = makeImage({10, 20, 3, 2}, positionColour);
  const Image clamped = clampToExtent(image);
  EXPECT_TRUE(clamped.isInfinite());
  EXPECT_EQ(clamped.pixelAt(-500, 900), positionColour(10, 21));  // upper left corner
  EXPECT_EQ(clamped.pixelAt(11, -7), positionColour(11, 20));     // below: bottom row
  EXPECT_EQ(clamped.pixelAt(40, 20), positionColour(12, 20));     // right: right column
  // Cropped far away it is the nearest corner everywhere, and stays so when
  // clamped once more.
  const Image far = crop(clamped, {100, 100, 4, 4});
  EXPECT_EQ(far.pixelAt(102, 101), positionColour(12, 21));
  EXPECT_EQ(clampToExtent(far).pixelAt(-3, -3), positionColour(12, 21));
  // A canvas over a wider rectangle holds the extended values.
  auto canvas = Canvas::from(clamped, {8, 19, 7, 4});
  ASSERT_TRUE(canvas.has_value());
  EXPECT_EQ(canvas->row(19)[0], positionColour(10, 20));
  EXPECT_EQ(canvas->row(22)[6], positionColour(12, 21));
}

TEST(ImageTest, CanvasFromImageCopiesOnlyWhenShared) {
  Image image = makeImage({0, 0, 4, 4}, positionColour);
  const Image copy = image;
  auto shared = Canvas::from(image, image.extent());
  ASSERT_TRUE(shared.has_value());
  shared->row(0)[0] = Rgba{1, 1, 1, 1};
  EXPECT_EQ(copy.pixelAt(0, 0), positionColour(0, 0));  // the copy never sees the write

  Image sole = makeImage({0, 0, 4, 4}, positionColour);
  const Rgba* pixels = sole.buffer()->pixels.get();
  auto adopted = Canvas::from(std::move(sole), {0, 0, 4, 4});
  ASSERT_TRUE(adopted.has_value());
  EXPECT_EQ(adopted->row(0), pixels);  // taken over, not copied
}

TEST(ImageTest, PointwiseOperationKeepsExtentOfInfiniteImages) {
  const Image clamped = clampToExtent(makeImage({0, 0, 2, 1}, positionColour));
  auto halved = applyOpacity(clamped, 0.5);
  ASSERT_TRUE(halved.has_value());
  EXPECT_TRUE(halved->isInfinite());
  const Rgba edge = positionColour(1, 0);
  EXPECT_EQ(halved->pixelAt(50, -50), (Rgba{edge.r * 0.5f, edge.g * 0.5f, edge.b * 0.5f, 0.5f}));
}

TEST(ImageTest, SizeLimits) {
  EXPECT_EQ(Canvas::make({0, 0, kMaxImageSide + 1, 1}).error(), ImageError::tooLarge);
  EXPECT_EQ(Canvas::make({0, 0, 1, kMaxImageSide + 1}).error(), ImageError::tooLarge);
  EXPECT_EQ(Canvas::make({kMaxImagePosition, 0, 1, 1}).error(), ImageError::tooLarge);
  EXPECT_EQ(Canvas::make(PixelRect::infinite()).error(), ImageError::unbounded);
  auto line = Canvas::make({0, 0, kMaxImageSide, 1});
  ASSERT_TRUE(line.has_value());
  EXPECT_EQ(line->rect().width, kMaxImageSide);
  auto none = Canvas::make({5, 5, 0, 3});
  ASSERT_TRUE(none.has_value());
  EXPECT_TRUE(std::move(*none).image().isEmpty());
  EXPECT_FALSE(message(ImageError::tooLarge).empty());
}

}  // namespace
}  // namespace orvane::render
