// Shapes, solids and the cache of generated pictures: outlines in y-up
// space, exact pixels where the drawing is exact, keys and eviction.

#include <gtest/gtest.h>

#include <QPainterPath>
#include <cmath>
#include <set>
#include <thread>
#include <vector>

#include "render/bounded_cache.hpp"
#include "render/generated_image_factory.hpp"
#include "render/shape_path_builder.hpp"
#include "tests/render/golden.hpp"
#include "tests/render/render_test_support.hpp"

namespace orvane::render {
namespace {

using core::LayerContent;
using core::OVColor;
using core::ShapeContent;
using Type = ShapeContent::ShapeType;
using testing_support::expectPixelNear;
using testing_support::matchesGolden;

constexpr Rgba kClear{0, 0, 0, 0};
constexpr Rgba kRed{1, 0, 0, 1};
constexpr Rgba kWhite{1, 1, 1, 1};

ShapeContent shape(Type type, core::OVSize size, bool filled = true, bool stroked = false) {
  ShapeContent content;
  content.type = type;
  content.size = size;
  content.fillColor = OVColor::red_;
  content.isFilled = filled;
  content.strokeColor = OVColor::white;
  content.strokeWidth = 4;
  content.isStroked = stroked;
  return content;
}

GeneratedImage drawn(const ShapeContent& content) {
  auto generated = drawShape(content);
  EXPECT_TRUE(generated.has_value());
  return generated ? *generated : GeneratedImage{};
}

// The distinct vertices of a polygonal path.
std::vector<QPointF> vertices(const QPainterPath& path) {
  std::vector<QPointF> points;
  for (int i = 0; i < path.elementCount(); ++i) {
    const QPointF p = path.elementAt(i);
    if (points.empty() || (QLineF(points.front(), p).length() > 1e-9 && QLineF(points.back(), p).length() > 1e-9)) {
      points.push_back(p);
    }
  }
  return points;
}

TEST(ShapePathBuilderTest, PolygonStartsAtTheBottomMiddleAndFitsTheBoxPerAxis) {
  ShapeContent content = shape(Type::polygon, {});
  content.sideCount = 4;
  const auto points = vertices(ShapePathBuilder::pathFor(content, {10, 20, 100, 50}));
  ASSERT_EQ(points.size(), 4u);
  // y-up: the minimum y is the bottom edge.
  EXPECT_NEAR(points[0].x(), 60, 1e-9);
  EXPECT_NEAR(points[0].y(), 20, 1e-9);
  EXPECT_NEAR(points[1].x(), 110, 1e-9);
  EXPECT_NEAR(points[1].y(), 45, 1e-9);
  EXPECT_NEAR(points[2].y(), 70, 1e-9);
  EXPECT_NEAR(points[3].x(), 10, 1e-9);

  content.sideCount = 1;
  EXPECT_EQ(vertices(ShapePathBuilder::pathFor(content, {0, 0, 10, 10})).size(), 3u);
}

TEST(ShapePathBuilderTest, StarHasAtLeastThreePointsAndAClampedInnerRadius) {
  ShapeContent content = shape(Type::star, {});
  content.sideCount = 2;
  const struct {
    double ratio;
    double expected;
  } cases[] = {{0, 0.05}, {1, 0.95}, {0.4, 0.4}, {-3, 0.05}};
  for (const auto& c : cases) {
    content.innerRadiusRatio = c.ratio;
    const auto points = vertices(ShapePathBuilder::pathFor(content, {-50, -50, 100, 100}));
    ASSERT_EQ(points.size(), 6u) << c.ratio;
    for (std::size_t i = 0; i < points.size(); ++i) {
      const double radius = std::hypot(points[i].x(), points[i].y()) / 50;
      EXPECT_NEAR(radius, i % 2 == 0 ? 1.0 : c.expected, 1e-9) << "ratio " << c.ratio << " vertex " << i;
    }
  }
}

TEST(ShapePathBuilderTest, LineRunsFromBottomLeftToTopRightOpen) {
  const QPainterPath path = ShapePathBuilder::pathFor(shape(Type::line, {}), {5, 6, 30, 40});
  ASSERT_EQ(path.elementCount(), 2);
  EXPECT_EQ(QPointF(path.elementAt(0)), QPointF(5, 6));
  EXPECT_EQ(QPointF(path.elementAt(1)), QPointF(35, 46));
}

TEST(ShapeDrawingTest, PixelsInsideOutsideAndUnderTheStrokeInYUpSpace) {
  ShapeContent triangle = shape(Type::polygon, {40, 40});
  triangle.sideCount = 3;
  struct Probe {
    int x, y;
    Rgba expected;
  };
  const struct {
    const char* what;
    ShapeContent content;
    PixelRect extent;
    std::vector<Probe> probes;
  } cases[] = {
      {"filled rectangle", shape(Type::rectangle, {40, 30}), {0, 0, 40, 30},
       {{0, 0, kRed}, {39, 29, kRed}, {40, 10, kClear}}},
      // The stroke covers 0 ... 4 across each edge; the fill shows inside.
      {"stroked rectangle", shape(Type::rectangle, {40, 30}, true, true), {0, 0, 44, 34},
       {{1, 17, kWhite}, {3, 17, kWhite}, {22, 32, kWhite}, {4, 17, kRed}, {22, 17, kRed}}},
      // Pixel (0, 0) is the bottom-left corner; fill has no effect on a line.
      {"line", shape(Type::line, {40, 40}, true, true), {0, 0, 44, 44},
       {{2, 2, kWhite}, {41, 41, kWhite}, {22, 22, kWhite}, {40, 3, kClear}, {3, 40, kClear}}},
      // Vertices (20, 0), (37.3, 30), (2.7, 30): the apex at the bottom.
      {"triangle", triangle, {0, 0, 40, 40}, {{19, 5, kRed}, {19, 25, kRed}, {19, 35, kClear}, {3, 5, kClear}}},
      {"ellipse", shape(Type::ellipse, {60, 30}), {0, 0, 60, 30},
       {{0, 0, kClear}, {59, 29, kClear}, {30, 15, kRed}, {1, 15, kRed}}},
  };
  for (const auto& c : cases) {
    const GeneratedImage generated = drawn(c.content);
    EXPECT_EQ(generated.image.extent(), c.extent) << c.what;
    EXPECT_EQ(generated.size, (core::OVSize{double(c.extent.width), double(c.extent.height)})) << c.what;
    for (const Probe& p : c.probes) {
      EXPECT_EQ(generated.image.pixelAt(p.x, p.y), p.expected) << c.what << " at " << p.x << ", " << p.y;
    }
  }
  // Round joins leave the outermost corner pixel of a stroke partly clear.
  EXPECT_LT(drawn(shape(Type::rectangle, {40, 30}, true, true)).image.pixelAt(0, 0).a, 0.9f);
}

TEST(ShapeDrawingTest, CornerRadiusBeyondHalfTheShortSideGivesACapsule) {
  ShapeContent capsule = shape(Type::rectangle, {100, 40});
  capsule.cornerRadius = 1000;
  ShapeContent half = capsule;
  half.cornerRadius = 20;
  const Image a = drawn(capsule).image;
  const Image b = drawn(half).image;
  for (int y = 0; y < 40; ++y) {
    for (int x = 0; x < 100; ++x) ASSERT_EQ(a.pixelAt(x, y), b.pixelAt(x, y)) << x << ", " << y;
  }
  EXPECT_EQ(a.pixelAt(1, 1), kClear);
  EXPECT_EQ(a.pixelAt(50, 0), kRed);
  EXPECT_EQ(a.pixelAt(1, 20), kRed);
}

TEST(ShapeDrawingTest, NeitherFillNorStrokeGivesAClearPictureOfTheRightSize) {
  ShapeContent content = shape(Type::star, {100, 50}, false, false);
  const GeneratedImage generated = drawn(content);
  EXPECT_EQ(generated.size, (core::OVSize{100, 50}));
  EXPECT_EQ(generated.image.extent(), (PixelRect{0, 0, 100, 50}));
  for (int y = 0; y < 50; ++y) {
    for (int x = 0; x < 100; ++x) ASSERT_EQ(generated.image.pixelAt(x, y), kClear);
  }
}

TEST(ShapeDrawingTest, DegenerateSizesDegrade) {
  // Zero size: a 1 × 1 canvas.
  EXPECT_EQ(drawn(shape(Type::ellipse, {0, 0})).image.extent(), (PixelRect{0, 0, 1, 1}));
  EXPECT_FALSE(drawShape(shape(Type::rectangle, {NAN, 10})).has_value());
  EXPECT_FALSE(drawShape(shape(Type::rectangle, {INFINITY, 10})).has_value());
  EXPECT_FALSE(drawShape(shape(Type::rectangle, {1e9, 10})).has_value());
}

TEST(ShapeDrawingTest, ShapesMatchGoldens) {
  struct Case {
    const char* name;
    Type type;
    double cornerRadius;
    std::int64_t sides;
  };
  const Case cases[] = {{"shape_rectangle", Type::rectangle, 14, 5}, {"shape_ellipse", Type::ellipse, 0, 5},
                        {"shape_line", Type::line, 0, 5},            {"shape_polygon", Type::polygon, 0, 5},
                        {"shape_star", Type::star, 0, 5}};
  for (const Case& c : cases) {
    ShapeContent content = shape(c.type, {90, 70}, true, true);
    content.fillColor = {0.24, 0.55, 0.98, 1};
    content.strokeColor = {0.1, 0.1, 0.2, 1};
    content.strokeWidth = 6;
    content.cornerRadius = c.cornerRadius;
    content.sideCount = c.sides;
    const GeneratedImage generated = drawn(content);
    EXPECT_TRUE(matchesGolden(generated.image, generated.image.extent(), c.name));
  }
}

TEST(SolidTest, IsTheColourPremultipliedOverAtLeastOnePixel) {
  const struct {
    core::OVSize size;
    PixelRect extent;
    core::OVSize reported;
  } cases[] = {{{0, 0}, {0, 0, 1, 1}, {1, 1}},
               {{-5, 3}, {0, 0, 1, 3}, {1, 3}},
               {{1920, 1080}, {0, 0, 1920, 1080}, {1920, 1080}},
               {{10.4, 10.5}, {0, 0, 10, 11}, {10.4, 10.5}}};
  for (const auto& c : cases) {
    const auto generated =
        GeneratedImageFactory::shared().imageFor(LayerContent::solid({{1, 0.5, 0, 0.5}, c.size}));
    ASSERT_TRUE(generated.has_value());
    EXPECT_EQ(generated->size, c.reported);
    EXPECT_EQ(generated->image.extent(), c.extent);
    expectPixelNear(generated->image.pixelAt(0, 0), {0.5f, 0.25f, 0, 0.5f}, 0);
    // No bitmap: a constant colour, cropped.
    EXPECT_EQ(generated->image.dataRect().area(), 1);
  }
  EXPECT_FALSE(GeneratedImageFactory::solidImage({OVColor::white, {NAN, 5}}).has_value());
  EXPECT_FALSE(GeneratedImageFactory::solidImage({OVColor::white, {1e12, 5}}).has_value());
  EXPECT_FALSE(GeneratedImageFactory::solidImage({{NAN, 0, 0, 1}, {5, 5}}).has_value());
}

TEST(GeneratedImageFactoryTest, CachesShapesAndTextButNotSolids) {
  GeneratedImageFactory factory;
  const LayerContent square = LayerContent::shape(shape(Type::rectangle, {20, 20}));
  const auto first = factory.imageFor(square);
  const auto second = factory.imageFor(square);
  ASSERT_TRUE(first && second);
  EXPECT_TRUE(first->image.sharesStorageWith(second->image));
  EXPECT_EQ(factory.cachedCount(), 1u);

  ShapeContent changed = shape(Type::rectangle, {20, 20});
  changed.sideCount = 6;  // not drawn for a rectangle, yet part of the value
  ASSERT_TRUE(factory.imageFor(LayerContent::shape(changed)));
  EXPECT_EQ(factory.cachedCount(), 2u);

  ASSERT_TRUE(factory.imageFor(LayerContent::solid({OVColor::white, {4, 4}})));
  EXPECT_EQ(factory.cachedCount(), 2u);

  core::TextContent text;
  text.string = "Hi";
  ASSERT_TRUE(factory.imageFor(LayerContent::text(text), 100));
  ASSERT_TRUE(factory.imageFor(LayerContent::text(text), 60));  // 2 of 2, the same key
  ASSERT_TRUE(factory.imageFor(LayerContent::text(text), 40));
  EXPECT_EQ(factory.cachedCount(), 4u);

  factory.clearCache();
  EXPECT_EQ(factory.cachedCount(), 0u);
}

TEST(GeneratedImageFactoryTest, KeysNameTheHashAndTheRevealedCount) {
  core::TextContent text;
  text.string = "Hello";
  const std::string hash = std::to_string(hashValue(text));
  EXPECT_EQ(GeneratedImageFactory::cacheKeyFor(LayerContent::text(text), 0), "text:" + hash + ":0");
  EXPECT_EQ(GeneratedImageFactory::cacheKeyFor(LayerContent::text(text), 50), "text:" + hash + ":3");
  EXPECT_EQ(GeneratedImageFactory::cacheKeyFor(LayerContent::text(text)), "text:" + hash + ":5");
  const ShapeContent star = shape(Type::star, {10, 10});
  EXPECT_EQ(GeneratedImageFactory::cacheKeyFor(LayerContent::shape(star)), "shape:" + std::to_string(hashValue(star)));
  EXPECT_FALSE(GeneratedImageFactory::cacheKeyFor(LayerContent::solid({})).has_value());
}

TEST(GeneratedImageFactoryTest, OtherKindsAndFailedDrawingsGiveNothingAndStoreNothing) {
  GeneratedImageFactory factory;
  EXPECT_FALSE(factory.imageFor(LayerContent::video(core::Uuid{})).has_value());
  EXPECT_FALSE(factory.imageFor(LayerContent::adjustment({100, 100})).has_value());
  EXPECT_FALSE(factory.imageFor(LayerContent::precomposition(core::Uuid{})).has_value());
  EXPECT_FALSE(factory.imageFor(LayerContent::shape(shape(Type::ellipse, {1e7, 1e7}))).has_value());
  EXPECT_EQ(factory.cachedCount(), 0u);
}

TEST(GeneratedImageFactoryTest, ManyThreadsAskingAtOnceAllGetThePicture) {
  GeneratedImageFactory factory;
  std::vector<std::thread> threads;
  std::vector<int> answered(6, 0);
  for (int i = 0; i < 6; ++i) {
    threads.emplace_back([&, i] {
      for (int round = 0; round < 20; ++round) {
        const double width = 30.0 + round % 4;
        const auto generated = factory.imageFor(LayerContent::shape(shape(Type::star, {width, 30})));
        if (generated && generated->size.width == width) ++answered[i];
      }
    });
  }
  for (auto& t : threads) t.join();
  for (const int count : answered) EXPECT_EQ(count, 20);
  EXPECT_EQ(factory.cachedCount(), 4u);
}

TEST(BoundedCacheTest, DropsTheLeastRecentlyUsedPastTheCountLimit) {
  BoundedCache<int> cache(3, 1000);
  cache.store("a", 1, 0);
  cache.store("b", 2, 0);
  cache.store("c", 3, 0);
  EXPECT_EQ(cache.find("a"), 1);  // now the most recent
  cache.store("d", 4, 0);
  EXPECT_EQ(cache.count(), 3u);
  EXPECT_FALSE(cache.find("b").has_value());
  EXPECT_EQ(cache.find("a"), 1);
  cache.store("a", 10, 0);  // replaces, no growth
  EXPECT_EQ(cache.count(), 3u);
  EXPECT_EQ(cache.find("a"), 10);
}

TEST(BoundedCacheTest, DropsByCostButKeepsTheNewestEntry) {
  BoundedCache<int> cache(10, 100);
  cache.store("a", 1, 60);
  cache.store("b", 2, 30);
  EXPECT_EQ(cache.totalCost(), 90u);
  cache.store("c", 3, 20);
  EXPECT_FALSE(cache.find("a").has_value());
  EXPECT_EQ(cache.totalCost(), 50u);
  cache.store("huge", 4, 500);
  EXPECT_EQ(cache.count(), 1u);
  EXPECT_EQ(cache.find("huge"), 4);
  cache.clear();
  EXPECT_EQ(cache.count(), 0u);
  EXPECT_EQ(cache.totalCost(), 0u);
}

}  // namespace
}  // namespace orvane::render
