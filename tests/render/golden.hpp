#pragma once
// Golden-image checks for the render tests. A picture is compared, as 8-bit
// straight RGBA, with tests/render/golden/<name>.png: a component may differ
// by 0.004 anywhere, by up to 0.012 in at most 0.02% of the pixels, and by no
// more anywhere. On a mismatch (or a missing golden) the actual picture and a
// difference picture are written to golden-failures/ in the build folder.
// ORVANE_UPDATE_GOLDENS=1 writes the goldens instead, on purpose only.

#include <gtest/gtest.h>

#include <QImage>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "render/image.hpp"
#include "render/rgba8.hpp"

namespace orvane::render::testing_support {

inline QImage toQImage(const Image& image, const PixelRect& region) {
  auto bytes = toRgba8(image, region);
  if (!bytes) return {};
  QImage q(region.width, region.height, QImage::Format_RGBA8888);
  for (int y = 0; y < region.height; ++y) {
    std::copy_n(bytes->data() + static_cast<std::size_t>(y) * region.width * 4, region.width * 4, q.scanLine(y));
  }
  return q;
}

// Writes the picture over region as a PNG; for looking at results.
inline bool writePng(const Image& image, const PixelRect& region, const std::filesystem::path& path) {
  std::filesystem::create_directories(path.parent_path());
  return toQImage(image, region).save(QString::fromStdString(path.string()), "PNG");
}

inline ::testing::AssertionResult matchesGolden(const Image& image, const PixelRect& region, const std::string& name) {
  namespace fs = std::filesystem;
  const fs::path golden = fs::path(ORVANE_GOLDEN_DIR) / (name + ".png");
  const fs::path failures = fs::path(ORVANE_TEST_OUTPUT_DIR) / "golden-failures";
  const QImage actual = toQImage(image, region);
  if (actual.isNull()) return ::testing::AssertionFailure() << name << ": the picture could not be converted";
  const char* update = std::getenv("ORVANE_UPDATE_GOLDENS");
  if (update != nullptr && std::string(update) == "1") {
    fs::create_directories(golden.parent_path());
    actual.save(QString::fromStdString(golden.string()), "PNG");
    return ::testing::AssertionSuccess();
  }
  const QImage expected = QImage(QString::fromStdString(golden.string())).convertToFormat(QImage::Format_RGBA8888);
  const auto fail = [&](const std::string& why) {
    fs::create_directories(failures);
    actual.save(QString::fromStdString((failures / (name + ".actual.png")).string()), "PNG");
    return ::testing::AssertionFailure() << name << ": " << why << " (actual picture in " << failures.string() << ")";
  };
  if (expected.isNull()) return fail("no golden image " + golden.string());
  if (expected.size() != actual.size()) return fail("size differs from the golden");
  QImage difference(actual.size(), QImage::Format_RGBA8888);
  long over = 0;
  int worst = 0;
  for (int y = 0; y < actual.height(); ++y) {
    const uchar* a = actual.constScanLine(y);
    const uchar* e = expected.constScanLine(y);
    uchar* d = difference.scanLine(y);
    for (int x = 0; x < actual.width(); ++x) {
      int pixelWorst = 0;
      for (int c = 0; c < 4; ++c) pixelWorst = std::max(pixelWorst, std::abs(a[4 * x + c] - e[4 * x + c]));
      // 0.004 of 255 is one step; 0.012 is three.
      if (pixelWorst > 1) ++over;
      worst = std::max(worst, pixelWorst);
      const auto v = static_cast<uchar>(std::min(255, pixelWorst * 32));
      d[4 * x] = v, d[4 * x + 1] = v, d[4 * x + 2] = v, d[4 * x + 3] = 255;
    }
  }
  const double allowed = 0.0002 * actual.width() * actual.height();
  if (worst > 3 || static_cast<double>(over) > allowed) {
    fs::create_directories(failures);
    difference.save(QString::fromStdString((failures / (name + ".difference.png")).string()), "PNG");
    return fail("differs from the golden: largest step " + std::to_string(worst) + ", " + std::to_string(over) +
                " pixels past one step");
  }
  return ::testing::AssertionSuccess();
}

}  // namespace orvane::render::testing_support
