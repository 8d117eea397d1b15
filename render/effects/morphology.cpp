// Rectangle maximum and minimum (the minimax effect) by the van Herk /
// Gil-Werman method: the line is cut into blocks of the window's size; a
// running extreme from each block's start (ahead) and one from its end
// (behind) give the extreme of any window as the extreme of two values. The
// rectangle is separable: rows first, then columns in strips of pixels so
// that the column pass reads memory along rows too.

#include <cmath>
#include <vector>

#include "render/effects/effect_filters.hpp"
#include "render/effects/effect_support.hpp"
#include "render/vec4.hpp"

namespace orvane::render {

namespace {

using detail::Vec4;

// Pixels a column strip holds side by side, at most; fewer for tall
// pictures, so that a strip's scratch stays within about 8 MB.
constexpr int kStripWidth = 64;
constexpr std::size_t kStripBytes = std::size_t{8} << 20;

// The window's side in pixels: odd, so that it centres on the pixel.
int oddSide(double side) {
  if (!(side > 1)) return 1;
  const double capped = std::min(side, 2.0 * kMaxImageSide);
  return 2 * static_cast<int>(std::floor(capped / 2)) + 1;
}

template <bool Maximum>
Vec4 extreme(Vec4 a, Vec4 b) {
  if constexpr (Maximum) {
    return detail::vmax(a, b);
  } else {
    return detail::vmin(a, b);
  }
}

// The extreme of every window of `window` elements of `line`, for `lanes`
// interleaved lines (element i of lane j at line[i * lanes + j]); the first
// window starts at element 0. ahead and behind are scratch of line's size.
template <bool Maximum>
void slidingExtreme(const Vec4* line, int count, int lanes, int window, Vec4* ahead, Vec4* behind,
                    const auto& write) {
  for (int start = 0; start < count; start += window) {
    const int end = std::min(start + window, count);
    for (int j = 0; j < lanes; ++j) ahead[start * lanes + j] = line[start * lanes + j];
    for (int i = start + 1; i < end; ++i)
      for (int j = 0; j < lanes; ++j) ahead[i * lanes + j] = extreme<Maximum>(ahead[(i - 1) * lanes + j], line[i * lanes + j]);
    for (int j = 0; j < lanes; ++j) behind[(end - 1) * lanes + j] = line[(end - 1) * lanes + j];
    for (int i = end - 2; i >= start; --i)
      for (int j = 0; j < lanes; ++j) behind[i * lanes + j] = extreme<Maximum>(behind[(i + 1) * lanes + j], line[i * lanes + j]);
  }
  for (int i = 0; i + window <= count; ++i)
    for (int j = 0; j < lanes; ++j) write(i, j, extreme<Maximum>(behind[i * lanes + j], ahead[(i + window - 1) * lanes + j]));
}

struct LineScratch {
  std::vector<Vec4> line, ahead, behind;
  explicit LineScratch(std::size_t size) : line(size), ahead(size), behind(size) {}
};

template <bool Maximum>
std::expected<Image, ImageError> morphology(const Image& image, int windowX, int windowY, WorkerPool& pool) {
  const PixelRect rect = image.extent();
  const int halfX = windowX / 2, halfY = windowY / 2;
  const Image clamped = clampToExtent(image);
  // Rows: each padded by the repeated edge, then windowed.
  auto across = Canvas::makeUnfilled(rect);
  if (!across) return std::unexpected(across.error());
  const int paddedWidth = rect.width + 2 * halfX;
  pool.forEachBand(rect.y, rect.maxY(), rect.width, [&](int first, int last) {
    LineScratch s(static_cast<std::size_t>(paddedWidth));
    std::vector<Rgba> row(static_cast<std::size_t>(paddedWidth));
    for (int y = first; y < last; ++y) {
      readRow(clamped, y, rect.x - halfX, paddedWidth, row.data());
      for (int i = 0; i < paddedWidth; ++i) s.line[i] = detail::load(row[i]);
      Rgba* out = across->row(y);
      slidingExtreme<Maximum>(s.line.data(), paddedWidth, 1, windowX, s.ahead.data(), s.behind.data(),
                              [out](int i, int, Vec4 v) { detail::store(out[i], v); });
    }
  });
  // Columns, a strip at a time; rows past the ends repeat the edge rows.
  auto result = Canvas::makeUnfilled(rect);
  if (!result) return std::unexpected(result.error());
  const int paddedHeight = rect.height + 2 * halfY;
  const int stripWidth = static_cast<int>(std::clamp<std::size_t>(
      kStripBytes / (3 * sizeof(Vec4) * static_cast<std::size_t>(paddedHeight)), 4, kStripWidth));
  const int strips = (rect.width + stripWidth - 1) / stripWidth;
  pool.forEachBand(0, strips, std::int64_t{stripWidth} * rect.height, [&](int first, int last) {
    LineScratch s(static_cast<std::size_t>(paddedHeight) * static_cast<std::size_t>(stripWidth));
    for (int strip = first; strip < last; ++strip) {
      const int x0 = strip * stripWidth;
      const int lanes = std::min(stripWidth, rect.width - x0);
      for (int i = 0; i < paddedHeight; ++i) {
        const Rgba* source = across->row(rect.y + std::clamp(i - halfY, 0, rect.height - 1)) + x0;
        for (int j = 0; j < lanes; ++j) s.line[i * lanes + j] = detail::load(source[j]);
      }
      slidingExtreme<Maximum>(s.line.data(), paddedHeight, lanes, windowY, s.ahead.data(), s.behind.data(),
                              [&](int i, int j, Vec4 v) { detail::store(result->row(rect.y + i)[x0 + j], v); });
    }
  });
  return std::move(*result).image();
}

}  // namespace

std::expected<Image, ImageError> morphologyRectangle(const Image& image, double width, double height, bool maximum,
                                                     WorkerPool& pool) {
  if (image.isInfinite()) return std::unexpected(ImageError::unbounded);
  if (image.isEmpty()) return Image{};
  // Past twice the picture's side a window covers the whole line wherever it
  // stands, and the edges only repeat.
  const PixelRect rect = image.extent();
  const int windowX = std::min(oddSide(width), 2 * rect.width + 1);
  const int windowY = std::min(oddSide(height), 2 * rect.height + 1);
  return maximum ? morphology<true>(image, windowX, windowY, pool) : morphology<false>(image, windowX, windowY, pool);
}

}  // namespace orvane::render
