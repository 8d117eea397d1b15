// The stylising filters that look at neighbours: pixellate, edges and the
// comic look.

#include <cmath>
#include <vector>

#include "render/effects/effect_filters.hpp"
#include "render/effects/effect_support.hpp"
#include "render/effects/gaussian_blur.hpp"
#include "render/vec4.hpp"

namespace orvane::render {

namespace {

using detail::Vec4;

// Sobel gradients of the 3 × 3 neighbourhood of column x in the rows below,
// at and above it (padded by one pixel: element x + 1 is column x).
struct Sobel {
  Vec4 gx, gy;
  Sobel(const Rgba* below, const Rgba* at, const Rgba* above, int x) {
    const auto p = [](const Rgba* row, int i) { return detail::load(row[i]); };
    gx = (p(below, x + 2) - p(below, x)) + detail::splat(2) * (p(at, x + 2) - p(at, x)) + (p(above, x + 2) - p(above, x));
    gy = (p(above, x) + detail::splat(2) * p(above, x + 1) + p(above, x + 2)) -
         (p(below, x) + detail::splat(2) * p(below, x + 1) + p(below, x + 2));
  }
  // Per component, scaled so that a unit step reads 1.
  Vec4 magnitude() const {
    const Vec4 squared = gx * gx + gy * gy;
    return Vec4{std::sqrt(squared[0]), std::sqrt(squared[1]), std::sqrt(squared[2]), std::sqrt(squared[3])} *
           detail::splat(0.25f);
  }
};

// Three padded rows of the edge-repeated picture around each row of rect.
detail::RowRing neighbourRows(const Image& clamped, const PixelRect& rect) {
  return detail::RowRing(clamped, rect.x, rect.width, 1, 3);
}

// The cell of a pixel along one axis: the pixel's centre measured from the
// grid's anchor in cells.
int cellOf(int pixel, double anchor, double scale) { return static_cast<int>(std::floor((pixel + 0.5 - anchor) / scale)); }

// The value (largest straight channel) rounded to quarters, hue and
// saturation kept.
detail::Straight flattened(detail::Straight s) {
  const float value = std::max({s.r, s.g, s.b});
  const float factor = value > 0 ? std::round(value * 4) / 4 / value : 0.0f;
  return {s.r * factor, s.g * factor, s.b * factor, s.a};
}

}  // namespace

std::expected<Image, ImageError> pixellate(const Image& image, double scale, core::OVPoint center, WorkerPool& pool) {
  if (image.isInfinite()) return std::unexpected(ImageError::unbounded);
  if (image.isEmpty()) return Image{};
  if (!(scale > 0) || !std::isfinite(center.x) || !std::isfinite(center.y)) return image;
  const PixelRect rect = image.extent();
  // Larger than the picture, a cell holds all of it along that axis anyway;
  // a cell of a pixel or more holds at least one pixel centre.
  const double s = std::clamp(scale, 1.0, 4.0 * std::max(rect.width, rect.height));
  const int firstColumn = cellOf(rect.x, center.x, s), firstRow = cellOf(rect.y, center.y, s);
  const int columns = cellOf(rect.maxX() - 1, center.x, s) - firstColumn + 1;
  const int rows = cellOf(rect.maxY() - 1, center.y, s) - firstRow + 1;
  std::vector<int> columnOf(static_cast<std::size_t>(rect.width));
  for (int x = 0; x < rect.width; ++x) columnOf[x] = cellOf(rect.x + x, center.x, s) - firstColumn;
  // rowStart[k] ..< rowStart[k + 1]: the pixel rows of the k-th row of cells.
  std::vector<int> rowStart(static_cast<std::size_t>(rows) + 1, rect.maxY());
  for (int y = rect.maxY() - 1; y >= rect.y; --y) rowStart[cellOf(y, center.y, s) - firstRow] = y;
  auto canvas = Canvas::makeUnfilled(rect);
  if (!canvas) return std::unexpected(canvas.error());
  const std::int64_t pixelsPerCellRow = static_cast<std::int64_t>(rect.width) * std::max(1, rect.height / rows);
  pool.forEachBand(0, rows, pixelsPerCellRow, [&](int first, int last) {
    std::vector<Vec4> sums(static_cast<std::size_t>(columns));
    std::vector<int> counts(static_cast<std::size_t>(columns));
    std::vector<Rgba> row(static_cast<std::size_t>(rect.width));
    for (int cellRow = first; cellRow < last; ++cellRow) {
      const int y0 = rowStart[cellRow], y1 = rowStart[cellRow + 1];
      std::fill(sums.begin(), sums.end(), detail::splat(0));
      std::fill(counts.begin(), counts.end(), 0);
      for (int y = y0; y < y1; ++y) {
        readRow(image, y, rect.x, rect.width, row.data());
        for (int x = 0; x < rect.width; ++x) sums[columnOf[x]] += detail::load(row[x]), ++counts[columnOf[x]];
      }
      for (int c = 0; c < columns; ++c) sums[c] = counts[c] > 0 ? sums[c] / detail::splat(float(counts[c])) : sums[c];
      for (int y = y0; y < y1; ++y) {
        Rgba* out = canvas->row(y);
        for (int x = 0; x < rect.width; ++x) detail::store(out[x], sums[columnOf[x]]);
      }
    }
  });
  return std::move(*canvas).image();
}

std::expected<Image, ImageError> edges(const Image& image, double intensity, WorkerPool& pool) {
  if (image.isInfinite()) return std::unexpected(ImageError::unbounded);
  if (image.isEmpty()) return Image{};
  const PixelRect rect = image.extent();
  const Image clamped = clampToExtent(image);
  const Vec4 gain = detail::splat(static_cast<float>(intensity));
  return detail::renderRows(
      rect, pool, [&] { return neighbourRows(clamped, rect); },
      [&](int y, Rgba* out, detail::RowRing& rows) {
        rows.load(y - 1, y + 1);
        const Rgba *below = rows.row(y - 1), *at = rows.row(y), *above = rows.row(y + 1);
        for (int x = 0; x < rect.width; ++x) {
          const Vec4 e = detail::vclamp01(Sobel(below, at, above, x).magnitude() * gain);
          out[x] = {e[0], e[1], e[2], std::max({at[x + 1].a, e[0], e[1], e[2]})};
        }
      });
}

std::expected<Image, ImageError> comicEffect(const Image& image, WorkerPool& pool) {
  if (image.isInfinite()) return std::unexpected(ImageError::unbounded);
  if (image.isEmpty()) return Image{};
  const PixelRect rect = image.extent();
  auto smoothed = gaussianBlur(clampToExtent(image), kComicSmoothing, rect, pool);
  if (!smoothed) return std::unexpected(smoothed.error());
  const Image clamped = clampToExtent(*smoothed);
  struct Scratch {
    detail::RowRing rows;
    std::vector<Rgba> source;
    std::vector<float> below, at, above;
  };
  return detail::renderRows(
      rect, pool,
      [&] {
        const auto w = static_cast<std::size_t>(rect.width);
        return Scratch{neighbourRows(clamped, rect), std::vector<Rgba>(w), std::vector<float>(w + 2),
                       std::vector<float>(w + 2), std::vector<float>(w + 2)};
      },
      [&](int y, Rgba* out, Scratch& s) {
        s.rows.load(y - 1, y + 1);
        readRow(image, y, rect.x, rect.width, s.source.data());
        const auto lumaRow = [&](const Rgba* row, std::vector<float>& l) {
          for (int i = 0; i < rect.width + 2; ++i) l[i] = detail::luma(row[i].r, row[i].g, row[i].b);
        };
        lumaRow(s.rows.row(y - 1), s.below), lumaRow(s.rows.row(y), s.at), lumaRow(s.rows.row(y + 1), s.above);
        const Rgba* at = s.rows.row(y);
        for (int x = 0; x < rect.width; ++x) {
          const float gx = (s.below[x + 2] - s.below[x]) + 2 * (s.at[x + 2] - s.at[x]) + (s.above[x + 2] - s.above[x]);
          const float gy = (s.above[x] + 2 * s.above[x + 1] + s.above[x + 2]) - (s.below[x] + 2 * s.below[x + 1] + s.below[x + 2]);
          const float ink = detail::smoothstep(0.12f, 0.3f, 0.25f * std::sqrt(gx * gx + gy * gy));
          detail::Straight flat = flattened(detail::straightOf(at[x + 1]));
          flat.a = s.source[x].a;
          const float keep = 1 - ink;
          flat.r *= keep, flat.g *= keep, flat.b *= keep;
          out[x] = detail::premultipliedOf(flat);
        }
      });
}

}  // namespace orvane::render
