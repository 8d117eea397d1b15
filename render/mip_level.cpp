#include "render/mip_level.hpp"

#include <cmath>
#include <vector>

namespace orvane::render {

namespace {

int floorHalf(int v) { return v >= 0 ? v / 2 : -((-v + 1) / 2); }
int ceilHalf(int v) { return -floorHalf(-v); }

}  // namespace

std::expected<Image, ImageError> halved(const Image& image, WorkerPool& pool) {
  if (image.isEmpty()) return image;
  if (image.isInfinite()) return std::unexpected(ImageError::unbounded);
  const PixelRect e = image.extent();
  const int x0 = floorHalf(e.x), y0 = floorHalf(e.y);
  const PixelRect out{x0, y0, ceilHalf(e.maxX()) - x0, ceilHalf(e.maxY()) - y0};
  auto canvas = Canvas::makeUnfilled(out);
  if (!canvas) return std::unexpected(canvas.error());
  pool.forEachBand(out.y, out.maxY(), std::int64_t{out.width} * 4, [&](int first, int last) {
    thread_local std::vector<Rgba> lower, upper;
    lower.resize(static_cast<std::size_t>(out.width) * 2);
    upper.resize(lower.size());
    for (int j = first; j < last; ++j) {
      readRow(image, 2 * j, 2 * out.x, 2 * out.width, lower.data());
      readRow(image, 2 * j + 1, 2 * out.x, 2 * out.width, upper.data());
      Rgba* row = canvas->row(j);
      for (int i = 0; i < out.width; ++i) {
        const Rgba &a = lower[2 * i], &b = lower[2 * i + 1], &c = upper[2 * i], &d = upper[2 * i + 1];
        row[i] = {(a.r + b.r + c.r + d.r) * 0.25f, (a.g + b.g + c.g + d.g) * 0.25f,
                  (a.b + b.b + c.b + d.b) * 0.25f, (a.a + b.a + c.a + d.a) * 0.25f};
      }
    }
  });
  return std::move(*canvas).image();
}

void reduceForPlacement(Image& image, core::Affine2D& placement, WorkerPool& pool) {
  if (image.isEmpty() || image.isInfinite()) return;
  for (;;) {
    // How long a source pixel's sides come out on the frame.
    const double across = std::hypot(placement.a, placement.b), up = std::hypot(placement.c, placement.d);
    const PixelRect e = image.extent();
    if (!(std::min(across, up) < 0.5) || (e.width <= 1 && e.height <= 1)) return;
    auto half = halved(image, pool);
    if (!half) return;
    image = std::move(*half);
    placement = core::Affine2D::concatenating(core::Affine2D::makeScale(2, 2), placement);
  }
}

}  // namespace orvane::render
