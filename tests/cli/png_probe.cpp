// Checks a PNG written by `orvane frame`: its size, whether it has alpha,
// and the colour of chosen pixels, each within two steps of 255.
//
//   png_probe FILE WIDTHxHEIGHT alpha|opaque [X,Y=RRGGBBAA ...]
//
// X and Y count from the top left, as image files store pixels. Prints
// "ok" and exits 0 when everything matches; otherwise prints each mismatch
// and exits 1.

#include <QImage>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

int failures = 0;

void fail(const std::string& what) {
  std::printf("mismatch: %s\n", what.c_str());
  ++failures;
}

void checkPixel(const QImage& image, const std::string& probe) {
  int x = 0, y = 0;
  unsigned rgba = 0;
  if (std::sscanf(probe.c_str(), "%d,%d=%8x", &x, &y, &rgba) != 3) return fail("cannot read " + probe);
  if (!image.rect().contains(x, y)) return fail(probe + " lies outside the picture");
  const QColor c = image.pixelColor(x, y);
  const int expected[] = {static_cast<int>(rgba >> 24), static_cast<int>((rgba >> 16) & 0xFF),
                          static_cast<int>((rgba >> 8) & 0xFF), static_cast<int>(rgba & 0xFF)};
  const int actual[] = {c.red(), c.green(), c.blue(), c.alpha()};
  for (int i = 0; i < 4; ++i) {
    if (std::abs(expected[i] - actual[i]) > 2) {
      char text[64];
      std::snprintf(text, sizeof text, "%02X%02X%02X%02X", actual[0], actual[1], actual[2], actual[3]);
      return fail(probe + " is " + text);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "usage: png_probe FILE WIDTHxHEIGHT alpha|opaque [X,Y=RRGGBBAA ...]\n");
    return 2;
  }
  const QImage image(QString::fromLocal8Bit(argv[1]));
  if (image.isNull()) {
    std::printf("mismatch: %s is not a readable image\n", argv[1]);
    return 1;
  }
  const std::string size = std::to_string(image.width()) + "x" + std::to_string(image.height());
  if (size != argv[2]) fail("size is " + size);
  if (image.hasAlphaChannel() != (std::string(argv[3]) == "alpha")) fail("alpha channel differs");
  for (int i = 4; i < argc; ++i) checkPixel(image, argv[i]);
  if (failures == 0) std::printf("ok\n");
  return failures == 0 ? 0 : 1;
}
