#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "render/draw_layer.hpp"
#include "render/image_ops.hpp"
#include "tests/render/render_test_support.hpp"

namespace orvane::render {
namespace {

using core::Affine2D;
using core::OVBlendMode;
using testing_support::expectPixelNear;
using testing_support::makeImage;
using testing_support::positionColour;
using testing_support::solid;

// A ramp, linear in the pixel centre's position: bilinear interpolation
// reproduces it exactly, so any sample can be checked against the position
// it was read from.
Rgba rampAt(double u, double v) {
  return {static_cast<float>(u / 64), static_cast<float>(v / 64), 0.25f, 1.0f};
}
Image ramp(const PixelRect& rect) {
  return makeImage(rect, [](int x, int y) { return rampAt(x + 0.5, y + 0.5); });
}

TEST(TransformTest, WholePixelMovesAreExact) {
  const Image image = makeImage({0, 0, 16, 12}, positionColour);
  auto same = transformed(image, Affine2D::identity());
  ASSERT_TRUE(same.has_value());
  EXPECT_TRUE(same->sharesStorageWith(image));

  auto moved = transformed(image, Affine2D::makeTranslation(5, -3));
  ASSERT_TRUE(moved.has_value());
  EXPECT_EQ(moved->extent(), (PixelRect{5, -3, 16, 12}));
  for (int y = 0; y < 12; ++y) {
    for (int x = 0; x < 16; ++x) ASSERT_EQ(moved->pixelAt(x + 5, y - 3), positionColour(x, y));
  }
}

TEST(TransformTest, HalfPixelMoveAveragesNeighbours) {
  auto moved = transformed(makeImage({0, 0, 4, 1}, positionColour), Affine2D::makeTranslation(0.5, 0));
  ASSERT_TRUE(moved.has_value());
  EXPECT_EQ(moved->extent(), (PixelRect{0, 0, 5, 1}));
  expectPixelNear(moved->pixelAt(2, 0), {1.5f / 64, 0, 0.5f, 1}, 1e-6f);
  expectPixelNear(moved->pixelAt(0, 0), {0, 0, 0.25f, 0.5f}, 1e-6f);  // half covered edge
}

TEST(TransformTest, RotationAndScaleSampleTheRightPlace) {
  const Affine2D placements[] = {
      Affine2D::makeRotation(std::numbers::pi / 2),
      Affine2D::makeScale(2, 2),
      Affine2D::concatenating(Affine2D::makeRotation(0.5), Affine2D::makeScale(1.5, 1.25)).translatedBy(3, 2),
  };
  const Image source = ramp({0, 0, 24, 16});
  for (const Affine2D& m : placements) {
    auto placed = transformed(source, m);
    ASSERT_TRUE(placed.has_value());
    const Affine2D inverse = [&] {
      const double det = m.a * m.d - m.b * m.c;
      return Affine2D{m.d / det, -m.b / det, -m.c / det, m.a / det, (m.c * m.ty - m.d * m.tx) / det,
                      (m.b * m.tx - m.a * m.ty) / det};
    }();
    int checked = 0;
    const PixelRect e = placed->extent();
    for (int y = e.y; y < e.maxY(); ++y) {
      for (int x = e.x; x < e.maxX(); ++x) {
        const core::OVPoint p = inverse.apply({x + 0.5, y + 0.5});
        if (p.x < 1 || p.y < 1 || p.x > 23 || p.y > 15) continue;  // near an edge: part transparent
        expectPixelNear(placed->pixelAt(x, y), rampAt(p.x, p.y), 1e-4f);
        ++checked;
      }
    }
    EXPECT_GT(checked, 200);
  }
}

// One-pixel stripes at the finest frequency: point or bilinear sampling at
// 1/8 reads only black or only white, an averaging filter gives grey.
TEST(TransformTest, DownscaleDoesNotAlias) {
  const Image stripes = makeImage({0, 0, 256, 128}, [](int x, int) {
    const float v = x % 2 ? 1.0f : 0.0f;
    return Rgba{v, v, v, 1};
  });
  const Affine2D placements[] = {
      Affine2D::makeScale(0.125, 0.125),
      Affine2D::concatenating(Affine2D::makeScale(1 / 7.3, 1 / 7.3), Affine2D::makeRotation(0.35)),
  };
  for (const Affine2D& m : placements) {
    auto small = transformed(stripes, m);
    ASSERT_TRUE(small.has_value());
    float low = 1, high = 0;
    const PixelRect e = small->extent();
    for (int y = e.y; y < e.maxY(); ++y) {
      for (int x = e.x; x < e.maxX(); ++x) {
        const Rgba p = small->pixelAt(x, y);
        if (p.a < 0.999f) continue;  // edge pixels: partly outside
        low = std::min(low, p.r);
        high = std::max(high, p.r);
      }
    }
    EXPECT_GT(low, 0.45f);
    EXPECT_LT(high, 0.55f);
  }
}

// The one-pass layer draw gives what transform, opacity and blend give as
// three separate steps.
TEST(DrawLayerTest, EqualsTransformThenBlend) {
  const Image source = makeImage({0, 0, 40, 30}, [](int x, int y) {
    const float a = 0.3f + 0.02f * static_cast<float>((x + y) % 30);
    return Rgba{0.9f * a, 0.5f * a * static_cast<float>(y % 2), 0.2f * a, a};
  });
  const PixelRect destRect{0, 0, 64, 48};
  const Image backdrop = ramp(destRect);
  const Affine2D placements[] = {
      Affine2D::makeRotation(0.3).scaledBy(0.9, 0.9).translatedBy(10, 5),  // bilinear
      Affine2D::makeTranslation(12, 9),                                    // whole pixels
      Affine2D::makeScale(0.3, 0.4).rotatedBy(-0.2),                       // footprint averaging
  };
  const double opacity = 0.6;
  for (const Affine2D& m : placements) {
    for (const OVBlendMode mode : {OVBlendMode::normal, OVBlendMode::multiply, OVBlendMode::softLight,
                                   OVBlendMode::difference, OVBlendMode::add}) {
      auto canvas = Canvas::from(backdrop, destRect);
      ASSERT_TRUE(canvas.has_value());
      drawLayer(*canvas, destRect, source, m, opacity, mode);
      const Image onePass = std::move(*canvas).image();

      auto placed = transformed(source, m);
      ASSERT_TRUE(placed.has_value());
      auto faded = applyOpacity(*placed, opacity);
      auto twoStep = blended(*faded, backdrop, mode);
      ASSERT_TRUE(twoStep.has_value());
      for (int y = 0; y < destRect.height; ++y) {
        for (int x = 0; x < destRect.width; ++x) {
          expectPixelNear(onePass.pixelAt(x, y), twoStep->pixelAt(x, y), 1e-6f, core::rawValue(mode).data());
        }
      }
    }
  }
}

TEST(DrawLayerTest, WritesOnlyInsideDestRectAndExtent) {
  const Rgba white{1, 1, 1, 1};
  auto canvas = Canvas::make({0, 0, 32, 32});
  const Affine2D m = Affine2D::makeRotation(0.7).translatedBy(4, -6);
  const Image source = solid({0, 0, 10, 10}, white);
  drawLayer(*canvas, {0, 0, 32, 16}, source, m, 1, OVBlendMode::normal);
  const PixelRect extent = transformedExtent(source, m);
  int drawn = 0;
  for (int y = 0; y < 32; ++y) {
    for (int x = 0; x < 32; ++x) {
      if (canvas->row(y)[x].a == 0) continue;
      ++drawn;
      EXPECT_LT(y, 16);
      EXPECT_TRUE(extent.contains(x, y)) << x << "," << y;
    }
  }
  EXPECT_GT(drawn, 50);
}

TEST(DrawLayerTest, BadInputLeavesDestinationAlone) {
  const Rgba grey{0.5f, 0.5f, 0.5f, 1};
  const Image source = solid({0, 0, 4, 4}, {1, 0, 0, 1});
  auto canvas = Canvas::make({0, 0, 8, 8}, grey);
  const double nan = std::nan("");
  drawLayer(*canvas, canvas->rect(), source, Affine2D::makeScale(0, 1), 1, OVBlendMode::normal);
  drawLayer(*canvas, canvas->rect(), source, Affine2D::makeTranslation(nan, 0), 1, OVBlendMode::normal);
  drawLayer(*canvas, canvas->rect(), source, Affine2D::identity(), 0, OVBlendMode::normal);
  drawLayer(*canvas, canvas->rect(), source, Affine2D::identity(), nan, OVBlendMode::normal);
  drawLayer(*canvas, canvas->rect(), Image{}, Affine2D::identity(), 1, OVBlendMode::normal);
  drawLayer(*canvas, {}, source, Affine2D::identity(), 1, OVBlendMode::normal);
  for (int y = 0; y < 8; ++y) {
    for (int x = 0; x < 8; ++x) ASSERT_EQ(canvas->row(y)[x], grey);
  }
  Canvas empty;
  drawLayer(empty, {0, 0, 8, 8}, source, Affine2D::identity(), 1, OVBlendMode::normal);
  EXPECT_TRUE(transformed(source, Affine2D::makeScale(0, 0))->isEmpty());
}

TEST(DrawLayerTest, HugePlacementsAreRefusedOrClipped) {
  const Image source = solid({0, 0, 2000, 10}, {1, 1, 1, 1});
  EXPECT_EQ(transformed(source, Affine2D::makeScale(10, 1)).error(), ImageError::tooLarge);
  EXPECT_EQ(transformed(source, Affine2D::makeTranslation(1e12, 0)).error(), ImageError::tooLarge);
  EXPECT_EQ(transformed(clampToExtent(source), Affine2D::makeScale(2, 2)).error(), ImageError::unbounded);
  // Drawn into a canvas, only the canvas is computed, however large the
  // placed picture: here the middle of the source, blown up 100,000 times.
  auto canvas = Canvas::make({0, 0, 16, 16});
  const Affine2D huge = Affine2D::makeScale(1e5, 1e5).translatedBy(-1000, -5);
  drawLayer(*canvas, canvas->rect(), source, huge, 1, OVBlendMode::normal);
  expectPixelNear(canvas->row(15)[15], {1, 1, 1, 1}, 1e-6f);
  // A constant colour covers the whole rectangle, whatever the placement.
  drawLayer(*canvas, {0, 0, 16, 8}, Image::constant({0, 0.5f, 0, 0.5f}), Affine2D::makeRotation(1), 1,
            OVBlendMode::normal);
  expectPixelNear(canvas->row(0)[0], {0.5f, 1, 0.5f, 1}, 1e-6f);
  expectPixelNear(canvas->row(8)[0], {1, 1, 1, 1}, 1e-6f);
}

}  // namespace
}  // namespace orvane::render
