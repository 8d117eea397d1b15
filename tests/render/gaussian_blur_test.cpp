// The Gaussian blur: the kernel's shape, what happens at picture edges
// (fading for a finite picture, none for one clamped to its extent), the
// growth of the extent, and the box approximation against the exact kernel.

#include "render/effects/gaussian_blur.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "tests/render/render_test_support.hpp"

namespace orvane::render {
namespace {

using testing_support::makeImage;
using testing_support::solid;

constexpr Rgba kWhite{1, 1, 1, 1};
constexpr GaussianBlurMethod kMethods[] = {GaussianBlurMethod::exact, GaussianBlurMethod::boxes,
                                           GaussianBlurMethod::coarseGrid};

const char* nameOf(GaussianBlurMethod method) {
  switch (method) {
    case GaussianBlurMethod::exact: return "exact";
    case GaussianBlurMethod::boxes: return "boxes";
    case GaussianBlurMethod::coarseGrid: return "coarse grid";
    case GaussianBlurMethod::automatic: return "automatic";
  }
  return "";
}

// A sigma that puts each method on its own road (the coarse grid starts at 8).
double sigmaFor(GaussianBlurMethod method, double sigma) {
  return method == GaussianBlurMethod::coarseGrid ? std::max(sigma, 10.0) : sigma;
}

Image blurred(const Image& image, double sigma, GaussianBlurMethod method, const PixelRect& within = {}) {
  auto result = gaussianBlur(image, sigma, within, WorkerPool::shared(), method);
  EXPECT_TRUE(result.has_value());
  return result ? *result : Image{};
}

double alphaSum(const Image& image) {
  double total = 0;
  const PixelRect e = image.extent();
  for (int y = e.y; y < e.maxY(); ++y) {
    for (int x = e.x; x < e.maxX(); ++x) total += image.pixelAt(x, y).a;
  }
  return total;
}

// The normalised sampled Gaussian of sigma at offset k, over ±ceil(3 sigma).
double gaussianWeight(double sigma, int k) {
  const int reach = static_cast<int>(std::ceil(3 * sigma));
  double total = 0;
  for (int i = -reach; i <= reach; ++i) total += std::exp(-0.5 * i * i / (sigma * sigma));
  return std::abs(k) > reach ? 0 : std::exp(-0.5 * k * k / (sigma * sigma)) / total;
}

TEST(GaussianBlurTest, NoBlurReturnsTheInputItself) {
  const Image image = solid({0, 0, 4, 4}, kWhite);
  for (double sigma : {0.0, -3.0, std::numeric_limits<double>::quiet_NaN()}) {
    auto result = gaussianBlur(image, sigma);
    ASSERT_TRUE(result.has_value());
    EXPECT_TRUE(result->sharesStorageWith(image)) << sigma;
    EXPECT_EQ(result->extent(), image.extent());
  }
  auto empty = gaussianBlur(Image{}, 4);
  ASSERT_TRUE(empty.has_value());
  EXPECT_TRUE(empty->isEmpty());
}

TEST(GaussianBlurTest, BadInputIsRefusedNotCrashed) {
  const Image image = solid({0, 0, 4, 4}, kWhite);
  EXPECT_EQ(gaussianBlur(image, 1e12).error(), ImageError::tooLarge);
  EXPECT_EQ(gaussianBlur(image, std::numeric_limits<double>::infinity()).error(), ImageError::tooLarge);
  // An infinite picture needs a finite region to blur over.
  EXPECT_EQ(gaussianBlur(clampToExtent(image), 2).error(), ImageError::unbounded);
  EXPECT_EQ(gaussianBlur(clampToExtent(image), 2, PixelRect::infinite()).error(), ImageError::unbounded);
  // A finite picture whose grown extent passes the largest side.
  EXPECT_EQ(gaussianBlur(solid({0, 0, 4, 4}, kWhite), 6000).error(), ImageError::tooLarge);
}

TEST(GaussianBlurTest, FiniteExtentGrowsByTheReach) {
  const Image image = solid({10, -5, 20, 8}, kWhite);
  for (const auto& [sigma, reach] : {std::pair{0.2, 1}, {2.0, 6}, {2.1, 7}, {12.0, 36}, {60.0, 180}}) {
    EXPECT_EQ(gaussianBlurReach(sigma), reach);
    auto result = gaussianBlur(image, sigma);
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(result->extent(), (PixelRect{10 - reach, -5 - reach, 20 + 2 * reach, 8 + 2 * reach})) << sigma;
  }
}

TEST(GaussianBlurTest, EnergyIsKeptForAFinitePicture) {
  // A patch of varied alpha off the origin.
  const Image image = makeImage({-7, 3, 23, 17}, [](int x, int y) {
    const float a = static_cast<float>((x * 7 + y * 13) % 10) / 10.0f;
    return Rgba{a * 0.5f, a * 0.25f, a, a};
  });
  const double before = alphaSum(image);
  for (GaussianBlurMethod method : kMethods) {
    for (double sigma : {0.7, 2.0, 5.5, 12.0, 30.0}) {
      // The exact kernel is normalised over its reach; the others reach a
      // little further than 3 sigma and lose a sliver past the extent.
      const double tolerance = method == GaussianBlurMethod::exact ? 1e-4 : 3e-3;
      EXPECT_NEAR(alphaSum(blurred(image, sigma, method)) / before, 1.0, tolerance) << nameOf(method) << " " << sigma;
    }
  }
}

TEST(GaussianBlurTest, ClampedPictureKeepsItsEdgeWhileAFiniteOneFades) {
  const PixelRect rect{0, 0, 100, 80};
  const Rgba colour{0.2f, 0.4f, 0.6f, 0.8f};
  const Image image = solid(rect, colour);
  for (GaussianBlurMethod method : kMethods) {
    const double sigma = sigmaFor(method, 6);
    const int reach = gaussianBlurReach(sigma);
    const Image clamped = blurred(clampToExtent(image), sigma, method, rect);
    EXPECT_EQ(clamped.extent(), rect);
    float worst = 0;
    for (int y = 0; y < rect.height; ++y) {
      for (int x = 0; x < rect.width; ++x) worst = std::max(worst, std::abs(clamped.pixelAt(x, y).a - colour.a));
    }
    EXPECT_LT(worst, 1e-5f) << nameOf(method);

    const Image faded = blurred(image, sigma, method);
    EXPECT_EQ(faded.extent(), (PixelRect{-reach, -reach, 100 + 2 * reach, 80 + 2 * reach})) << nameOf(method);
    // On the edge a half-plane keeps half of it, at a corner a quarter;
    // the middle is far enough in to stay whole.
    EXPECT_NEAR(faded.pixelAt(-1, 40).a + faded.pixelAt(0, 40).a, colour.a, 0.01) << nameOf(method);
    EXPECT_NEAR(faded.pixelAt(50, 40).a, colour.a, 0.01) << nameOf(method);
    EXPECT_LT(faded.pixelAt(-1, -1).a, colour.a / 4 + 0.01) << nameOf(method);
    EXPECT_LT(faded.pixelAt(-reach, 40).a, 1e-3) << nameOf(method);
  }
}

TEST(GaussianBlurTest, ClampedPictureBlursOnlyWithinAndReadsPastIt) {
  // Stripes: within a region off to one side, the result equals the same
  // region of the whole picture blurred with clamped edges.
  const PixelRect rect{0, 0, 64, 48};
  const Image image = makeImage(rect, [](int x, int y) {
    const float v = ((x / 5 + y / 3) % 2) ? 1.0f : 0.1f;
    return Rgba{v, v, v, 1};
  });
  const PixelRect within{30, 10, 20, 25};
  for (GaussianBlurMethod method : kMethods) {
    const double sigma = sigmaFor(method, 4);
    // The coarse grid is laid from the corner of the region, so another
    // region sees the picture from a slightly other grid.
    const double tolerance = method == GaussianBlurMethod::coarseGrid ? 3e-3 : 1e-5;
    const Image whole = blurred(clampToExtent(image), sigma, method, rect);
    const Image part = blurred(clampToExtent(image), sigma, method, within);
    EXPECT_EQ(part.extent(), within);
    for (int y = within.y; y < within.maxY(); ++y) {
      for (int x = within.x; x < within.maxX(); ++x) {
        ASSERT_NEAR(part.pixelAt(x, y).r, whole.pixelAt(x, y).r, tolerance) << nameOf(method) << x << "," << y;
      }
    }
    // A region outside the stored pixels sees the repeated edge.
    const Image beyond = blurred(clampToExtent(image), sigma, method, {100, 100, 3, 3});
    EXPECT_NEAR(beyond.pixelAt(101, 101).r, image.pixelAt(63, 47).r, 1e-5);
  }
}

TEST(GaussianBlurTest, SymmetricInputGivesSymmetricOutput) {
  // An off-centre L shape mirrored about x = 0 and a diagonal gradient, so a
  // shift by one pixel or a swapped axis shows.
  const Image image = makeImage({-9, -4, 18, 11}, [](int x, int y) {
    const int mx = x < 0 ? -x - 1 : x;
    const float v = (mx < 3 || y < 2) ? 1.0f : 0.05f * static_cast<float>(mx + y);
    return Rgba{v, v / 2, v / 3, v};
  });
  for (GaussianBlurMethod method : kMethods) {
    const Image result = blurred(image, 3.5, method);
    const PixelRect e = result.extent();
    EXPECT_EQ(e.x + e.maxX(), 0);
    for (int y = e.y; y < e.maxY(); ++y) {
      for (int x = 0; x < e.maxX(); ++x) {
        ASSERT_NEAR(result.pixelAt(x, y).a, result.pixelAt(-x - 1, y).a, 1e-5) << nameOf(method) << x << "," << y;
      }
    }
  }
}

TEST(GaussianBlurTest, BrightPixelSpreadsAsTheSampledGaussian) {
  const Image dot = solid({0, 0, 1, 1}, {2, 1, 0.5f, 1});
  for (double sigma : {0.8, 2.0, 4.5}) {
    const Image result = blurred(dot, sigma, GaussianBlurMethod::exact);
    const int reach = gaussianBlurReach(sigma);
    for (int y = -reach; y <= reach; ++y) {
      for (int x = -reach; x <= reach; ++x) {
        const double g = gaussianWeight(sigma, x) * gaussianWeight(sigma, y);
        const Rgba p = result.pixelAt(x, y);
        ASSERT_NEAR(p.a, g, 1e-6) << sigma << " at " << x << "," << y;
        ASSERT_NEAR(p.r, 2 * g, 2e-6);
        ASSERT_NEAR(p.b, 0.5 * g, 1e-6);
      }
    }
  }
}

// The approximations against the exact kernel, where the blur uses them:
// on a straight edge (what a blurred shape shows) the values differ by less
// than 0.01; on one bright pixel the profile differs by less than 6% of its
// peak. The coarse grid is checked with the edge and the pixel at every
// place within a cell.
TEST(GaussianBlurTest, ApproximationsStayCloseToTheExactKernel) {
  const std::pair<GaussianBlurMethod, std::vector<double>> cases[] = {
      {GaussianBlurMethod::boxes, {kBoxBlurMinSigma, 3.5, 5.0, 12.0, 33.3, 60.0}},
      {GaussianBlurMethod::coarseGrid, {8.0, 12.0, 23.9, 24.0, 33.3, 55.9, 56.0, 90.0}},
  };
  for (const auto& [method, sigmas] : cases) {
    for (double sigma : sigmas) {
      const int side = 8 * static_cast<int>(sigma) + 16;
      const PixelRect rect{0, 0, side, 1};
      for (int shift = 0; shift < (method == GaussianBlurMethod::coarseGrid ? 8 : 1); ++shift) {
        const int at = side / 2 + shift;
        // Clamped rows: a one-dimensional step and impulse along x.
        const Image step = makeImage(rect, [at](int x, int) { return x < at ? Rgba{} : kWhite; });
        const Image impulse = makeImage(rect, [at](int x, int) { return x == at ? kWhite : Rgba{}; });
        const auto compare = [&](const Image& image) {
          const Image exact = blurred(clampToExtent(image), sigma, GaussianBlurMethod::exact, rect);
          const Image other = blurred(clampToExtent(image), sigma, method, rect);
          double worst = 0, peak = 0;
          for (int x = 0; x < side; ++x) {
            worst = std::max(worst, double{std::abs(other.pixelAt(x, 0).a - exact.pixelAt(x, 0).a)});
            peak = std::max(peak, double{exact.pixelAt(x, 0).a});
          }
          return std::pair{worst, peak};
        };
        EXPECT_LT(compare(step).first, 0.01) << nameOf(method) << " " << sigma << " " << shift;
        const auto [dotWorst, dotPeak] = compare(impulse);
        EXPECT_LT(dotWorst / dotPeak, 0.06) << nameOf(method) << " " << sigma << " " << shift;
        EXPECT_NEAR(dotPeak, gaussianWeight(sigma, 0), 1e-6);
      }
    }
  }
}

// One straight colour at varying alpha stays that colour wherever the blur
// leaves any alpha, and nothing but transparency where it leaves none: the
// tails of the running sums carry no colour of their own.
TEST(GaussianBlurTest, FadingTailsKeepTheirColour) {
  const float colour[3] = {0.2f, 0.6f, 1.0f};
  const Image image = makeImage({0, 0, 90, 70}, [&](int x, int y) {
    const float a = (x > 20 && x < 50 && y > 10 && y < 40) ? 1.0f : static_cast<float>((x * 3 + y) % 7) / 40.0f;
    return Rgba{colour[0] * a, colour[1] * a, colour[2] * a, a};
  });
  for (GaussianBlurMethod method : kMethods) {
    const Image result = blurred(image, sigmaFor(method, 9), method);
    const PixelRect e = result.extent();
    for (int y = e.y; y < e.maxY(); ++y) {
      for (int x = e.x; x < e.maxX(); ++x) {
        const Rgba p = result.pixelAt(x, y);
        if (p.a == 0) {
          ASSERT_EQ(p, Rgba{}) << nameOf(method) << " at " << x << "," << y;
          continue;
        }
        ASSERT_NEAR(p.r / p.a, colour[0], 0.02) << nameOf(method) << " at " << x << "," << y << " alpha " << p.a;
        ASSERT_NEAR(p.g / p.a, colour[1], 0.02) << nameOf(method) << " at " << x << "," << y;
        ASSERT_NEAR(p.b / p.a, colour[2], 0.02) << nameOf(method) << " at " << x << "," << y;
      }
    }
  }
}

TEST(GaussianBlurTest, ConstantPictureStaysConstant) {
  const Image constant = Image::constant({0.1f, 0.2f, 0.3f, 0.4f});
  const PixelRect within{5, 6, 7, 8};
  auto result = gaussianBlur(constant, 9, within);
  ASSERT_TRUE(result.has_value());
  EXPECT_EQ(result->extent(), within);
  EXPECT_EQ(result->pixelAt(8, 9), (Rgba{0.1f, 0.2f, 0.3f, 0.4f}));
}

TEST(GaussianBlurTest, SmallPoolGivesTheSameResult) {
  const Image image = makeImage({0, 0, 300, 200}, testing_support::positionColour);
  WorkerPool one(1);
  for (GaussianBlurMethod method : kMethods) {
    auto many = gaussianBlur(image, sigmaFor(method, 4), {}, WorkerPool::shared(), method);
    auto single = gaussianBlur(image, sigmaFor(method, 4), {}, one, method);
    ASSERT_TRUE(many && single);
    for (int y = -12; y < 212; y += 7) {
      for (int x = -12; x < 312; x += 5) ASSERT_EQ(many->pixelAt(x, y), single->pixelAt(x, y));
    }
  }
}

}  // namespace
}  // namespace orvane::render
