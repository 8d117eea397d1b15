#include "surfaces/viewer_geometry.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <numbers>

namespace orvane::surfaces {
namespace {

using core::OVPoint;

void expectNear(const OVPoint& a, const OVPoint& b) {
  EXPECT_NEAR(a.x, b.x, 1e-9);
  EXPECT_NEAR(a.y, b.y, 1e-9);
}

// A 1920 × 1080 composition at half size, 50 points in and 20 down.
const ViewerGeometry kHalf{{50, 20, 960, 540}, {1920, 1080}, 0.5};

TEST(ViewerGeometryTest, CompositionYUpMapsToViewYDown) {
  expectNear(kHalf.viewPoint({0, 0}), {50, 560});
  expectNear(kHalf.viewPoint({1920, 1080}), {1010, 20});
  expectNear(kHalf.viewPoint({960, 540}), {530, 290});
  EXPECT_DOUBLE_EQ(kHalf.viewLength(100), 50);
  EXPECT_DOUBLE_EQ(kHalf.compositionLength(50), 100);
}

TEST(ViewerGeometryTest, PointsAndLengthsRoundTrip) {
  for (const ViewerGeometry& g : {kHalf, ViewerGeometry{{-300, 7.5, 5760, 3240}, {1920, 1080}, 3},
                                  ViewerGeometry::centred({801, 333}, {1280, 720}, 0.37)}) {
    for (const OVPoint p : {OVPoint{0, 0}, OVPoint{12.25, -40}, OVPoint{1919.5, 1079}, OVPoint{-5e4, 3e4}}) {
      expectNear(g.compositionPoint(g.viewPoint(p)), p);
      expectNear(g.viewPoint(g.compositionPoint(p)), p);
    }
    EXPECT_NEAR(g.compositionLength(g.viewLength(123.4)), 123.4, 1e-9);
  }
}

TEST(ViewerGeometryTest, FitScaleTakesTheTighterSide) {
  EXPECT_DOUBLE_EQ(ViewerGeometry::fitScale({1000, 400}, {1920, 1080}), 400.0 / 1080);
  EXPECT_DOUBLE_EQ(ViewerGeometry::fitScale({960, 2000}, {1920, 1080}), 0.5);
  // Nothing to fit, or nowhere to fit it: a scale that maps somewhere.
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_DOUBLE_EQ(ViewerGeometry::fitScale({1000, 400}, {0, 1080}), 1);
  EXPECT_DOUBLE_EQ(ViewerGeometry::fitScale({0, 0}, {1920, 1080}), 1);
  EXPECT_DOUBLE_EQ(ViewerGeometry::fitScale({nan, 400}, {1920, 1080}), 1);
  EXPECT_DOUBLE_EQ(ViewerGeometry::fitScale({1e308, 1e308}, {1e-308, 1e-308}), 1);
}

TEST(ViewerGeometryTest, CentredCanvasAndUnusableScale) {
  const auto g = ViewerGeometry::centred({1000, 1000}, {200, 100}, 2);
  EXPECT_EQ(g.canvasRect, (core::OVRect{300, 400, 400, 200}));
  // A zero scale maps as 1 instead of dividing by zero.
  const ViewerGeometry zero{{0, 0, 10, 10}, {10, 10}, 0};
  EXPECT_DOUBLE_EQ(zero.compositionLength(5), 5);
  expectNear(zero.compositionPoint({2, 3}), {2, 7});
}

TEST(ViewerGeometryTest, CornersFollowTheTransform) {
  const auto square = kHalf.corners({100, 50}, core::Affine2D::makeTranslation(10, 20));
  expectNear(square[0], kHalf.viewPoint({10, 20}));
  expectNear(square[1], kHalf.viewPoint({110, 20}));
  expectNear(square[2], kHalf.viewPoint({110, 70}));
  expectNear(square[3], kHalf.viewPoint({10, 70}));

  const auto turned = kHalf.corners({100, 50}, core::Affine2D::makeRotation(std::numbers::pi / 2));
  expectNear(turned[1], kHalf.viewPoint({0, 100}));
  expectNear(turned[2], kHalf.viewPoint({-50, 100}));
}

TEST(ViewerGeometryTest, PointInConvexQuadEitherWinding) {
  std::array<OVPoint, 4> quad{{{0, 0}, {10, 0}, {10, 10}, {0, 10}}};
  const std::array<OVPoint, 4> reversed{{quad[3], quad[2], quad[1], quad[0]}};
  for (const auto& q : {quad, reversed}) {
    EXPECT_TRUE(pointInConvexQuad({5, 5}, q));
    EXPECT_TRUE(pointInConvexQuad({10, 5}, q));  // on an edge
    EXPECT_FALSE(pointInConvexQuad({10.01, 5}, q));
    EXPECT_FALSE(pointInConvexQuad({-1, -1}, q));
  }
  // A diamond: the corners of its bounding box are outside.
  const std::array<OVPoint, 4> diamond{{{5, 0}, {10, 5}, {5, 10}, {0, 5}}};
  EXPECT_TRUE(pointInConvexQuad({5, 5}, diamond));
  EXPECT_FALSE(pointInConvexQuad({1, 1}, diamond));
  // A layer scaled to nothing, or placed at NaN, holds no point.
  const std::array<OVPoint, 4> flat{{{0, 0}, {10, 0}, {10, 0}, {0, 0}}};
  EXPECT_FALSE(pointInConvexQuad({5, 0}, flat));
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_FALSE(pointInConvexQuad({5, 5}, {{{nan, 0}, {10, 0}, {10, 10}, {0, 10}}}));
  quad[0] = {0, 0};
  EXPECT_FALSE(pointInConvexQuad({nan, 5}, quad));
}

}  // namespace
}  // namespace orvane::surfaces
