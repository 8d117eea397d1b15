// Still image files: decoding upright (EXIF orientation), vector files at
// their own size, PDF first pages, refusals of oversized and broken files,
// the cache of failures, and background prewarming.

#include <gtest/gtest.h>

#include <QBuffer>
#include <QImageWriter>
#include <QPainter>
#include <QPdfWriter>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "render/still_image_cache.hpp"
#include "render/vector_image_rasterizer.hpp"
#include "tests/document/temp_folder.hpp"
#include "tests/render/golden.hpp"
#include "tests/render/render_test_support.hpp"

namespace orvane::render {
namespace {

using document::testing_support::TempFolder;
using testing_support::expectPixelNear;

constexpr Rgba kRed{1, 0, 0, 1};
constexpr Rgba kBlue{0, 0, 1, 1};

void writeBytes(const std::filesystem::path& path, const QByteArray& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.constData(), bytes.size());
}

// Top half red, bottom half blue, as a file shows it.
QImage redOverBlue(int width, int height) {
  QImage image(width, height, QImage::Format_RGBA8888);
  image.fill(Qt::blue);
  QPainter(&image).fillRect(0, 0, width, height / 2, Qt::red);
  return image;
}

QByteArray encoded(const QImage& image, const char* format) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  QImageWriter writer(&buffer, format);
  writer.setQuality(100);
  EXPECT_TRUE(writer.write(image));
  return bytes;
}

std::uint32_t crc32(const QByteArray& bytes) {
  std::uint32_t crc = 0xFFFFFFFFu;
  for (const char byte : bytes) {
    crc ^= static_cast<std::uint8_t>(byte);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
  }
  return ~crc;
}

QByteArray bigEndian32(std::uint32_t v) {
  const char bytes[] = {char(v >> 24), char(v >> 16), char(v >> 8), char(v)};
  return QByteArray(bytes, 4);
}

// A PNG signature and header claiming width × height, with no pixel data.
QByteArray pngHeaderOnly(std::uint32_t width, std::uint32_t height) {
  const QByteArray chunk = QByteArray("IHDR") + bigEndian32(width) + bigEndian32(height) + QByteArray("\x08\x06\0\0\0", 5);
  return QByteArray("\x89PNG\r\n\x1a\n", 8) + bigEndian32(13) + chunk + bigEndian32(crc32(chunk));
}

// A JPEG with an EXIF segment giving orientation 6: turn 90° clockwise to show.
QByteArray jpegWithOrientation6(const QImage& image) {
  QByteArray jpeg = encoded(image, "jpeg");
  const QByteArray tiff = QByteArray("MM\0*\0\0\0\x08", 8) + QByteArray("\0\x01", 2) +
                          QByteArray("\x01\x12\0\x03\0\0\0\x01\0\x06\0\0", 12) + QByteArray("\0\0\0\0", 4);
  const QByteArray payload = QByteArray("Exif\0\0", 6) + tiff;
  const int length = static_cast<int>(payload.size()) + 2;
  const char lengthBytes[] = {char(length >> 8), char(length & 0xFF)};
  const QByteArray segment = QByteArray("\xFF\xE1", 2) + QByteArray(lengthBytes, 2) + payload;
  return jpeg.insert(2, segment);
}

constexpr const char* kShapesSvg =
    R"(<svg xmlns="http://www.w3.org/2000/svg" width="120" height="80" viewBox="0 0 120 80">)"
    R"(<rect x="0" y="0" width="60" height="40" fill="#e03020"/>)"
    R"(<circle cx="85" cy="50" r="25" fill="#2060e0"/>)"
    R"(<path d="M10 75 L50 45 L60 75 Z" fill="#20a040"/></svg>)";

class StillImageTest : public ::testing::Test {
 protected:
  std::string file(const char* name) const { return (folder_.path() / name).string(); }

  TempFolder folder_;
  StillImageCache cache_;
};

TEST_F(StillImageTest, ReadsAPictureUprightAtTheOrigin) {
  writeBytes(file("a.png"), encoded(redOverBlue(30, 20), "png"));
  const auto image = cache_.imageAtPath(file("a.png"));
  ASSERT_TRUE(image.has_value());
  EXPECT_EQ(image->extent(), (PixelRect{0, 0, 30, 20}));
  EXPECT_EQ(image->pixelAt(5, 18), kRed);  // y-up: the top rows are high y
  EXPECT_EQ(image->pixelAt(5, 2), kBlue);
}

TEST_F(StillImageTest, AppliesTheExifOrientation) {
  // Stored 40 wide: red on top. Turned clockwise, red is on the right.
  QImage stored(40, 20, QImage::Format_RGB32);
  stored.fill(Qt::blue);
  QPainter(&stored).fillRect(0, 0, 20, 20, Qt::red);
  writeBytes(file("turned.jpg"), jpegWithOrientation6(stored));
  const auto image = cache_.imageAtPath(file("turned.jpg"));
  ASSERT_TRUE(image.has_value());
  EXPECT_EQ(image->extent(), (PixelRect{0, 0, 20, 40}));
  // The stored left half (red) becomes the top after a clockwise turn.
  expectPixelNear(image->pixelAt(10, 35), kRed, 0.05f, "top");
  expectPixelNear(image->pixelAt(10, 5), kBlue, 0.05f, "bottom");
}

TEST_F(StillImageTest, ACorruptFileIsReadOnceUntilRemoveAll) {
  writeBytes(file("broken.png"), QByteArray("\x89PNG not really a picture", 26));
  EXPECT_FALSE(cache_.imageAtPath(file("broken.png")).has_value());
  EXPECT_EQ(cache_.cachedCount(), 1u);
  // A good file in its place is not read: the failure is remembered.
  writeBytes(file("broken.png"), encoded(redOverBlue(8, 8), "png"));
  EXPECT_FALSE(cache_.imageAtPath(file("broken.png")).has_value());
  cache_.removeAll();
  EXPECT_EQ(cache_.cachedCount(), 0u);
  EXPECT_TRUE(cache_.imageAtPath(file("broken.png")).has_value());
  EXPECT_FALSE(cache_.imageAtPath(file("missing.png")).has_value());
}

TEST_F(StillImageTest, RefusesPicturesWiderThanTheEngineHolds) {
  writeBytes(file("huge.png"), pngHeaderOnly(20000, 20000));
  EXPECT_FALSE(cache_.imageAtPath(file("huge.png")).has_value());
  writeBytes(file("wide.png"), encoded(QImage(kMaxImageSide + 1, 1, QImage::Format_RGB32), "png"));
  EXPECT_FALSE(cache_.imageAtPath(file("wide.png")).has_value());
  QImage widest(kMaxImageSide, 1, QImage::Format_RGB32);
  widest.fill(Qt::red);
  writeBytes(file("widest.png"), encoded(widest, "png"));
  const auto image = cache_.imageAtPath(file("widest.png"));
  ASSERT_TRUE(image.has_value());
  EXPECT_EQ(image->extent().width, kMaxImageSide);
}

TEST_F(StillImageTest, VectorFilesAreRasterisedToTheirOwnSize) {
  EXPECT_TRUE(VectorImageRasterizer::isVector("/a/b/logo.svg"));
  EXPECT_TRUE(VectorImageRasterizer::isVector("LOGO.SVG"));
  EXPECT_FALSE(VectorImageRasterizer::isVector("logo.svgz"));
  EXPECT_FALSE(VectorImageRasterizer::isVector("page.pdf"));
  EXPECT_FALSE(VectorImageRasterizer::isVector("svg"));

  writeBytes(file("shapes.SVG"), kShapesSvg);
  EXPECT_EQ(VectorImageRasterizer::intrinsicSize(file("shapes.SVG")), (core::OVSize{120, 80}));
  const auto raster = VectorImageRasterizer::rasterise(file("shapes.SVG"));
  ASSERT_TRUE(raster.has_value());
  EXPECT_EQ(raster->size(), QSize(2048, 1365));
  const auto image = cache_.imageAtPath(file("shapes.SVG"));
  ASSERT_TRUE(image.has_value());
  EXPECT_EQ(image->extent(), (PixelRect{0, 0, 120, 80}));
  expectPixelNear(image->pixelAt(20, 60), premultiplied(*core::OVColor::fromHex("E03020")), 0.01f, "rect");
  EXPECT_EQ(image->pixelAt(115, 75), (Rgba{}));
  EXPECT_TRUE(testing_support::matchesGolden(*image, image->extent(), "svg_shapes"));
}

TEST_F(StillImageTest, VectorFilesWithoutASizeAre512Square) {
  writeBytes(file("unsized.svg"), R"(<svg xmlns="http://www.w3.org/2000/svg" width="0" height="0"/>)");
  EXPECT_EQ(VectorImageRasterizer::intrinsicSize(file("unsized.svg")), (core::OVSize{512, 512}));
  writeBytes(file("bad.svg"), "<svg this is not");
  EXPECT_FALSE(VectorImageRasterizer::intrinsicSize(file("bad.svg")).has_value());
  EXPECT_FALSE(cache_.imageAtPath(file("bad.svg")).has_value());
}

TEST_F(StillImageTest, ReadsTheFirstPageOfAPdfAtOnePixelAPoint) {
  {
    QPdfWriter writer(QString::fromStdString(file("doc.pdf")));
    writer.setPageSize(QPageSize(QSizeF(200, 100), QPageSize::Point));
    writer.setPageMargins(QMarginsF(0, 0, 0, 0));
    writer.setResolution(72);
    QPainter painter(&writer);
    painter.fillRect(QRectF(0, 0, 100, 100), Qt::red);
    writer.newPage();
    painter.fillRect(QRectF(0, 0, 200, 100), Qt::blue);
  }
  const auto image = cache_.imageAtPath(file("doc.pdf"));
  ASSERT_TRUE(image.has_value());
  EXPECT_EQ(image->extent(), (PixelRect{0, 0, 200, 100}));
  expectPixelNear(image->pixelAt(50, 50), kRed, 0.01f, "drawn half");
  EXPECT_LT(image->pixelAt(150, 50).a, 0.01f);  // no paper colour
}

TEST_F(StillImageTest, PrewarmLoadsInTheBackground) {
  std::vector<std::string> paths;
  for (const char* name : {"p1.png", "p2.png", "p3.png"}) {
    writeBytes(file(name), encoded(redOverBlue(16, 16), "png"));
    paths.push_back(file(name));
  }
  cache_.prewarm(paths);
  cache_.prewarm({});
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (cache_.cachedCount() < 3 && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  EXPECT_EQ(cache_.cachedCount(), 3u);
  // The files are gone; the pictures come from the cache.
  for (const auto& path : paths) std::filesystem::remove(path);
  for (const auto& path : paths) EXPECT_TRUE(cache_.imageAtPath(path).has_value());
}

TEST(StillImageExitTest, ExitingWhilePrewarmingEndsCleanly) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        // std::exit skips destructors: the files go to the build folder.
        const std::filesystem::path folder = std::filesystem::path(ORVANE_TEST_OUTPUT_DIR) / "prewarm-exit";
        std::filesystem::create_directories(folder);
        QImage large(3000, 2000, QImage::Format_RGB32);
        large.fill(Qt::darkCyan);
        std::vector<std::string> paths;
        for (int i = 0; i < 6; ++i) {
          paths.push_back((folder / ("large" + std::to_string(i) + ".png")).string());
          large.save(QString::fromStdString(paths.back()));
        }
        StillImageCache::shared().prewarm(paths);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace orvane::render
