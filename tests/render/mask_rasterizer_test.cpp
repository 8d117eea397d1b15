// Masks as a matte: the hard form (normal masks united, inverted ones taken
// away, in any order), the feathered sequential form (list order matters),
// the outline of a mask path in the y-up layer space, the matte's size, and
// the matte applied to a picture.

#include "render/mask_rasterizer.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "tests/render/golden.hpp"
#include "tests/render/render_test_support.hpp"

namespace orvane::render {
namespace {

using core::AnimatedProperty;
using core::LayerMask;
using core::MaskPath;
using core::MaskVertex;
using core::OVPoint;
using core::OVSize;
using core::PropertyValue;
using testing_support::makeImage;

const core::OVTime kTime = core::OVTime::zero;
constexpr OVSize kLayer{64, 48};

MaskPath polygon(std::vector<OVPoint> points, bool closed = true) {
  MaskPath path;
  path.closed = closed;
  for (const OVPoint& p : points) path.vertices.push_back({p, {}, {}});
  return path;
}

MaskPath rectangle(double x0, double y0, double x1, double y1) {
  return polygon({{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}});
}

LayerMask mask(const MaskPath& path, bool inverted = false, double feather = 0, bool enabled = true) {
  LayerMask m;
  m.path = AnimatedProperty(PropertyValue::maskPath(path));
  m.inverted = inverted;
  m.feather = AnimatedProperty::double_(feather);
  m.isEnabled = enabled;
  return m;
}

// A: x 8 ... 40, y 8 ... 40. B: x 24 ... 56, y 16 ... 32. Probe pixels lie
// at least 4 pixels from every edge.
const MaskPath kA = rectangle(8, 8, 40, 40);
const MaskPath kB = rectangle(24, 16, 56, 32);
struct Probe {
  int x, y;
};
constexpr Probe kOnlyA{12, 12}, kBoth{30, 24}, kOnlyB{48, 24}, kNeither{4, 44};

Image matteOf(std::vector<LayerMask> masks, OVSize size = kLayer) {
  auto matte = MaskRasterizer::image(core::SharedVector<LayerMask>(std::move(masks)), kTime, size);
  EXPECT_TRUE(matte.has_value());
  return matte ? *matte : Image{};
}

float at(const Image& matte, Probe p) { return matte.pixelAt(p.x, p.y).r; }

double total(const Image& matte) {
  double sum = 0;
  const PixelRect e = matte.extent();
  for (int y = e.y; y < e.maxY(); ++y) {
    for (int x = e.x; x < e.maxX(); ++x) sum += matte.pixelAt(x, y).r;
  }
  return sum;
}

void expectSamePixels(const Image& a, const Image& b) {
  ASSERT_EQ(a.extent(), b.extent());
  for (int y = a.extent().y; y < a.extent().maxY(); ++y) {
    for (int x = a.extent().x; x < a.extent().maxX(); ++x) ASSERT_EQ(a.pixelAt(x, y), b.pixelAt(x, y)) << x << "," << y;
  }
}

TEST(MaskRasterizerTest, NoEnabledMaskMeansNoMatte) {
  EXPECT_FALSE(MaskRasterizer::image({}, kTime, kLayer).has_value());
  EXPECT_FALSE(MaskRasterizer::image({mask(kA, false, 0, false), mask(kB, true, 5, false)}, kTime, kLayer));
  // A disabled mask takes nothing away and does not make the others soft.
  expectSamePixels(matteOf({mask(kB, true, 5, false), mask(kA)}), matteOf({mask(kA)}));
}

TEST(MaskRasterizerTest, HardMatteHoldsTheGreyInEveryComponent) {
  const Image matte = matteOf({mask(kA)});
  EXPECT_EQ(matte.extent(), (PixelRect{0, 0, 64, 48}));
  EXPECT_EQ(matte.pixelAt(kOnlyA.x, kOnlyA.y), (Rgba{1, 1, 1, 1}));
  EXPECT_EQ(matte.pixelAt(kNeither.x, kNeither.y), (Rgba{0, 0, 0, 0}));
  // Pixel-aligned edges cover whole pixels: the area is exact.
  EXPECT_EQ(total(matte), 32.0 * 32.0);
}

TEST(MaskRasterizerTest, LoneInvertedMaskKeepsTheOutside) {
  const Image matte = matteOf({mask(kA, true)});
  EXPECT_EQ(at(matte, kNeither), 1.0f);
  EXPECT_EQ(at(matte, kOnlyB), 1.0f);
  EXPECT_EQ(at(matte, kOnlyA), 0.0f);
  EXPECT_EQ(total(matte), 64.0 * 48 - 32.0 * 32);
}

TEST(MaskRasterizerTest, HardMatteIsNormalUnionLessInvertedUnionInAnyOrder) {
  const Image normalFirst = matteOf({mask(kA), mask(kB, true)});
  const Image invertedFirst = matteOf({mask(kB, true), mask(kA)});
  expectSamePixels(normalFirst, invertedFirst);
  EXPECT_EQ(at(normalFirst, kOnlyA), 1.0f);
  EXPECT_EQ(at(normalFirst, kBoth), 0.0f);
  EXPECT_EQ(at(normalFirst, kOnlyB), 0.0f);
  EXPECT_EQ(at(normalFirst, kNeither), 0.0f);
  // Two normal masks unite.
  const Image both = matteOf({mask(kA), mask(kB)});
  EXPECT_EQ(at(both, kOnlyB), 1.0f);
  EXPECT_EQ(total(both), 32.0 * 32 + 16.0 * 16);
}

TEST(MaskRasterizerTest, FeatheredFormFoldsMasksInListOrder) {
  for (const bool featherA : {true, false}) {
    const double fa = featherA ? 1 : 0, fb = featherA ? 0 : 1;
    // A last: its area comes back inside B.
    const Image aLast = matteOf({mask(kB, true, fb), mask(kA, false, fa)});
    EXPECT_NEAR(at(aLast, kBoth), 1, 1e-5);
    EXPECT_NEAR(at(aLast, kOnlyA), 1, 1e-5);
    EXPECT_NEAR(at(aLast, kOnlyB), 0, 1e-5);
    EXPECT_NEAR(at(aLast, kNeither), 0, 1e-5);
    // B last: it takes its area out of A, as the hard form does.
    const Image bLast = matteOf({mask(kA, false, fa), mask(kB, true, fb)});
    EXPECT_NEAR(at(bLast, kBoth), 0, 1e-5);
    EXPECT_NEAR(at(bLast, kOnlyA), 1, 1e-5);
  }
  // Only inverted masks start from white and each takes its area away.
  const Image inverted = matteOf({mask(kA, true, 2), mask(kB, true)});
  EXPECT_NEAR(at(inverted, kNeither), 1, 1e-5);
  EXPECT_NEAR(at(inverted, kOnlyA), 0, 1e-5);
  EXPECT_NEAR(at(inverted, kOnlyB), 0, 1e-5);
}

TEST(MaskRasterizerTest, FeatherAboveOneHundredthTakesTheSequentialForm) {
  const auto bothAt = [](double feather) { return at(matteOf({mask(kB, true), mask(kA, false, feather)}), kBoth); };
  EXPECT_EQ(bothAt(0.01), 0.0f);
  EXPECT_EQ(bothAt(-4), 0.0f);  // a negative feather counts as none
  EXPECT_NEAR(bothAt(0.011), 1, 1e-5);
}

TEST(MaskRasterizerTest, EmptyPathAddsNothingAndAloneHidesTheLayer) {
  expectSamePixels(matteOf({mask(kA), mask(MaskPath{})}), matteOf({mask(kA)}));
  EXPECT_EQ(total(matteOf({mask(MaskPath{})})), 0.0);
  EXPECT_EQ(total(matteOf({mask(MaskPath{}, false, 3)})), 0.0);
  // An inverted one alone takes nothing away.
  EXPECT_EQ(total(matteOf({mask(MaskPath{}, true)})), 64.0 * 48);
  // A single vertex, or numbers that are not finite, make no outline.
  EXPECT_EQ(total(matteOf({mask(polygon({{10, 10}}))})), 0.0);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(total(matteOf({mask(polygon({{0, 0}, {nan, 40}, {60, 0}}))})), 0.0);
  // Points far past the layer still cover it.
  const Image huge = matteOf({mask(rectangle(-1e12, -1e12, 1e12, 1e12))});
  EXPECT_EQ(total(huge), 64.0 * 48);
}

TEST(MaskRasterizerTest, MatteSizeRoundsHalvesAwayFromZero) {
  const auto extentFor = [](OVSize size) { return matteOf({mask(kA)}, size).extent(); };
  EXPECT_EQ(extentFor({10.5, 7.49}), (PixelRect{0, 0, 11, 7}));
  EXPECT_EQ(extentFor({0.2, 0}), (PixelRect{0, 0, 1, 1}));
  EXPECT_EQ(extentFor({-4, 3.5}), (PixelRect{0, 0, 1, 4}));
  // No bitmap can be made: the layer is drawn unmasked.
  const double inf = std::numeric_limits<double>::infinity();
  for (const OVSize size : {OVSize{inf, 5}, OVSize{5, std::nan("")}, OVSize{1e9, 5}}) {
    EXPECT_FALSE(MaskRasterizer::image({mask(kA)}, kTime, size).has_value());
    EXPECT_FALSE(MaskRasterizer::image({mask(kA, false, 4)}, kTime, size).has_value());
  }
}

TEST(MaskRasterizerTest, PathsAreYUpCubicsWithTangentsFromTheirPoints) {
  // The lower strip of the layer is the bottom of the picture.
  const Image strip = matteOf({mask(rectangle(0, 0, 64, 12))});
  EXPECT_EQ(strip.pixelAt(30, 3).r, 1.0f);
  EXPECT_EQ(strip.pixelAt(30, 44).r, 0.0f);

  // An ellipse of four cubics, its tangents offsets from the points, moved
  // off the origin by its points alone.
  MaskPath ellipse = MaskPath::ellipseIn({40, 30});
  for (MaskVertex& v : ellipse.vertices) v.point = v.point + OVPoint{10, 6};
  const Image oval = matteOf({mask(ellipse)});
  EXPECT_NEAR(total(oval), std::numbers::pi * 20 * 15, 0.01 * std::numbers::pi * 20 * 15);
  EXPECT_EQ(oval.pixelAt(29, 20).r, 1.0f);  // the centre (30, 21)
  EXPECT_EQ(oval.pixelAt(51, 21).r, 0.0f);  // past the right end at x = 50
  EXPECT_EQ(oval.pixelAt(30, 37).r, 0.0f);  // past the top at y = 36

  // A star drawn in one stroke: non-zero winding fills its centre too.
  std::vector<OVPoint> star;
  for (int i = 0; i < 5; ++i) {
    const double angle = std::numbers::pi / 2 + i * 4 * std::numbers::pi / 5;
    star.push_back({32 + 20 * std::cos(angle), 24 + 20 * std::sin(angle)});
  }
  EXPECT_EQ(matteOf({mask(polygon(star))}).pixelAt(31, 23).r, 1.0f);

  // An open outline is filled as if it were closed.
  const std::vector<OVPoint> triangle{{4, 4}, {60, 10}, {20, 44}};
  expectSamePixels(matteOf({mask(polygon(triangle, false))}), matteOf({mask(polygon(triangle, true))}));
}

TEST(MaskRasterizerTest, FeatherIsTwiceTheBlurSigmaAndTheLayerEdgeStaysSolid) {
  // The left part of the layer, past its left, top and bottom edges, with a
  // feather of 8: sigma 4 across the edge at x = 32.
  const Image matte = matteOf({mask(rectangle(-10, -10, 32, 58), false, 8)});
  const auto expected = [](double centre) { return 0.5 * std::erfc((centre - 32) / (4 * std::numbers::sqrt2)); };
  for (int x : {24, 28, 31, 32, 35, 40}) EXPECT_NEAR(matte.pixelAt(x, 24).r, expected(x + 0.5), 0.012) << x;
  // Where the mask runs past the layer, the edge is not faded.
  EXPECT_NEAR(matte.pixelAt(0, 24).r, 1, 1e-5);
  EXPECT_NEAR(matte.pixelAt(10, 0).r, 1, 1e-5);
  EXPECT_NEAR(matte.pixelAt(10, 47).r, 1, 1e-5);
  EXPECT_NEAR(matte.pixelAt(63, 24).r, 0, 1e-5);
}

TEST(MaskRasterizerApplyTest, PictureTimesMatteWithTheCornersLaidTogether) {
  const PixelRect pictureRect{5, 7, 20, 10};
  const Image picture = makeImage(pictureRect, testing_support::positionColour);
  // Anywhere: only its lower left corner counts. Whole, half, then nothing
  // across; shorter than the picture.
  const Image matte = makeImage({100, 200, 20, 6}, [](int x, int) {
    const float v = x < 110 ? 1.0f : (x < 115 ? 0.5f : 0.0f);
    return Rgba{v, v, v, v};
  });
  const Image result = MaskRasterizer::apply(matte, picture);
  EXPECT_EQ(result.extent(), pictureRect);
  EXPECT_EQ(result.pixelAt(8, 9), picture.pixelAt(8, 9));
  const Rgba p = picture.pixelAt(17, 9);
  EXPECT_EQ(result.pixelAt(17, 9), (Rgba{p.r * 0.5f, p.g * 0.5f, p.b * 0.5f, p.a * 0.5f}));
  EXPECT_EQ(result.pixelAt(22, 9), Rgba{});
  // Above the matte's top there is nothing to keep.
  EXPECT_EQ(result.pixelAt(8, 13), Rgba{});
  EXPECT_EQ(result.pixelAt(8, 12), picture.pixelAt(8, 12));
  EXPECT_TRUE(MaskRasterizer::apply(Image{}, picture).isEmpty());
}

// A colourful card with fine detail, opaque.
Image testCard(const PixelRect& rect) {
  return makeImage(rect, [&](int x, int y) {
    const int bar = x * 6 / rect.width;
    const float bars[6][3] = {{1, 1, 1}, {1, 1, 0}, {0, 1, 1}, {0, 1, 0}, {1, 0, 1}, {1, 0, 0}};
    const float shade = 0.4f + 0.6f * static_cast<float>(y) / static_cast<float>(rect.height);
    const bool check = ((x / 8) + (y / 8)) % 2 == 0 && y < rect.height / 4;
    const float c = check ? 0.15f : 1.0f;
    return Rgba{bars[bar][0] * shade * c, bars[bar][1] * shade * c, bars[bar][2] * shade * c, 1};
  });
}

TEST(MaskRasterizerApplyTest, FeatheredEllipseLessRectangleOnATestCard) {
  const OVSize size{160, 120};
  MaskPath ellipse = MaskPath::ellipseIn({140, 100});
  for (MaskVertex& v : ellipse.vertices) v.point = v.point + OVPoint{10, 10};
  const Image matte = matteOf({mask(ellipse, false, 16), mask(rectangle(60, 40, 100, 80), true)}, size);
  const PixelRect rect{0, 0, 160, 120};
  EXPECT_TRUE(testing_support::matchesGolden(MaskRasterizer::apply(matte, testCard(rect)), rect, "mask_feathered"));
}

}  // namespace
}  // namespace orvane::render
