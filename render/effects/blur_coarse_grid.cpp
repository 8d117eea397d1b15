#include <algorithm>
#include <cmath>

#include "render/effects/blur_passes.hpp"
#include "render/vec4.hpp"

namespace orvane::render::detail {

namespace {

// The grid's cells: cell (i, j) covers the pixels out.x + step × i ... and
// out.y + step × j ..., each side step long.
struct Grid {
  PixelRect out;
  int step = 1;

  int cellsAcross() const { return (out.width + step - 1) / step; }
  int cellsUp() const { return (out.height + step - 1) / step; }
  // The cells the interpolation reads: one more on every side.
  PixelRect readCells() const { return {-1, -1, cellsAcross() + 2, cellsUp() + 2}; }
};

// The values of image at x ..< x + count of row y: straight from its
// stored row where they lie in it, else gathered into scratch.
const Rgba* pixelsOf(const Image& image, int y, int x, int count, Rgba* scratch) {
  const PixelRect inside = image.dataRect().intersection(image.extent());
  if (inside.contains(PixelRect{x, y, count, 1})) return image.buffer()->row(y) + (x - image.buffer()->rect.x);
  readRow(image, y, x, count, scratch);
  return scratch;
}

// Cell row j: each of its cells the mean of its kStep × kStep pixels.
template <int kStep>
void averageCellRow(const Image& image, const Grid& grid, const PixelRect& cells, int j, Rgba* row) {
  constexpr int kPiece = 512 / kStep;  // cells at a time, their pixels on the stack
  Rgba scratch[kPiece * kStep];
  const Vec4 scale = splat(1.0f / (kStep * kStep));
  for (int i0 = 0; i0 < cells.width; i0 += kPiece) {
    const int count = std::min(kPiece, cells.width - i0);
    const int x = grid.out.x + kStep * (cells.x + i0);
    Vec4 sums[kPiece];
    for (int i = 0; i < count; ++i) sums[i] = splat(0);
    for (int dy = 0; dy < kStep; ++dy) {
      const Rgba* pixels = pixelsOf(image, grid.out.y + kStep * j + dy, x, count * kStep, scratch);
      for (int i = 0; i < count; ++i) {
        for (int dx = 0; dx < kStep; ++dx) sums[i] += load(pixels[i * kStep + dx]);
      }
    }
    for (int i = 0; i < count; ++i) store(row[i0 + i], sums[i] * scale);
  }
}

// Each cell of `cells` the mean of its step × step pixels of image.
std::expected<Image, ImageError> averageCells(const Image& image, const Grid& grid, const PixelRect& cells,
                                              WorkerPool& pool) {
  auto canvas = Canvas::makeUnfilled(cells);
  if (!canvas) return std::unexpected(canvas.error());
  const int step = grid.step;
  pool.forEachBand(cells.y, cells.maxY(), std::int64_t{cells.width} * step * step, [&](int first, int last) {
    for (int j = first; j < last; ++j) {
      switch (step) {
        case 2: averageCellRow<2>(image, grid, cells, j, canvas->row(j)); break;
        case 4: averageCellRow<4>(image, grid, cells, j, canvas->row(j)); break;
        default: averageCellRow<8>(image, grid, cells, j, canvas->row(j)); break;
      }
    }
  });
  return std::move(*canvas).image();
}

// Where pixel offset k (0 ... step - 1) within its cell falls between cell
// centres: the cell before (-1) or its own (0), and the weight of the next.
struct Phase {
  int cell = 0;
  float weight = 0;
};

Phase phaseOf(int k, int step) {
  const double u = (k + 0.5) / step - 0.5;  // from the centre of the own cell, in cells
  return u < 0 ? Phase{-1, static_cast<float>(1 + u)} : Phase{0, static_cast<float>(u)};
}

// count cells of a mixed row (mixed[n + 1] is cell n) spread over their
// pixels, at most `pixels` of them: each pixel between the two cell centres
// around it.
template <int kStep>
void spreadCells(const Rgba* mixed, Rgba* row, int count, int pixels) {
  Phase phases[kStep];
  Vec4 before[kStep], after[kStep];
  for (int k = 0; k < kStep; ++k) {
    phases[k] = phaseOf(k, kStep);
    before[k] = splat(1 - phases[k].weight);
    after[k] = splat(phases[k].weight);
  }
  const int whole = std::min(count, pixels / kStep);
  for (int n = 0; n < whole; ++n) {
    for (int k = 0; k < kStep; ++k) {
      const Rgba* pair = mixed + n + 1 + phases[k].cell;
      store(row[n * kStep + k], load(pair[0]) * before[k] + load(pair[1]) * after[k]);
    }
  }
  for (int x = whole * kStep; x < std::min(pixels, count * kStep); ++x) {
    const Phase& p = phases[x % kStep];
    const Rgba* pair = mixed + x / kStep + 1 + p.cell;
    store(row[x], load(pair[0]) * before[x % kStep] + load(pair[1]) * after[x % kStep]);
  }
}

// Every pixel of out linearly interpolated between the centres of the cells
// of `blurred` (which covers grid.readCells()).
std::expected<Image, ImageError> interpolateCells(const Image& blurred, const Grid& grid, WorkerPool& pool) {
  const PixelRect out = grid.out, cells = grid.readCells();
  if (!blurred.extent().contains(cells) || blurred.dataRect() != blurred.extent()) {
    return std::unexpected(ImageError::outOfMemory);
  }
  auto canvas = Canvas::makeUnfilled(out);
  if (!canvas) return std::unexpected(canvas.error());
  const int step = grid.step;
  const PixelBuffer& source = *blurred.buffer();
  const auto cellRow = [&](int j) { return source.row(j) + (cells.x - source.rect.x); };
  pool.forEachBand(out.y, out.maxY(), out.width, [&](int first, int last) {
    constexpr int kPiece = 256;
    Rgba mixed[kPiece + 2];
    for (int y = first; y < last; ++y) {
      const int offset = y - out.y;
      const Phase v = phaseOf(offset % step, step);
      const int j = offset / step + v.cell;
      const Rgba* below = cellRow(j);
      const Rgba* above = cellRow(j + 1);
      const Vec4 wa = splat(v.weight), wb = splat(1 - v.weight);
      Rgba* row = canvas->row(y);
      // Pieces of kPiece cells: the two cell rows mixed, then spread over
      // their pixels.
      for (int c0 = 0; c0 < grid.cellsAcross(); c0 += kPiece) {
        const int count = std::min(kPiece, grid.cellsAcross() - c0);
        // mixed[m] is cell c0 - 1 + m, at index c0 - 1 + m - cells.x = c0 + m.
        for (int m = 0; m < count + 2; ++m) {
          store(mixed[m], load(below[c0 + m]) * wb + load(above[c0 + m]) * wa);
        }
        Rgba* pixels = row + c0 * step;
        const int left = out.width - c0 * step;
        switch (step) {
          case 2: spreadCells<2>(mixed, pixels, count, left); break;
          case 4: spreadCells<4>(mixed, pixels, count, left); break;
          default: spreadCells<8>(mixed, pixels, count, left); break;
        }
      }
    }
  });
  return std::move(*canvas).image();
}

}  // namespace

int coarseGridStep(double sigma) {
  if (sigma >= 56) return 8;
  if (sigma >= 24) return 4;
  if (sigma >= 8) return 2;
  return 1;
}

std::expected<Image, ImageError> coarseGridBlur(const Image& image, double variance, const PixelRect& out, int step,
                                                WorkerPool& pool) {
  if (auto ok = checkCanvasRect(out); !ok) return std::unexpected(ok.error());
  if (image.isEmpty() || out.isEmpty()) return Image{};
  const Grid grid{out, step >= 8 ? 8 : (step >= 4 ? 4 : 2)};
  const double s = grid.step;
  // Averaging step pixels adds (s² − 1) / 12, interpolating over s adds
  // s² / 6; the grid's own blur, in cells, makes up the rest.
  const double cellVariance = std::max(variance - (s * s - 1) / 12 - s * s / 6, 0.0) / (s * s);
  const LineFilter filter = boxFilterOfVariance(cellVariance);
  const PixelRect cells = grid.readCells();
  // A clamped picture repeats its edge: the cells reach as far as the blur
  // on them reads, and repeat past that as the picture does.
  const int margin = image.isInfinite() ? filter.support() + 1 : 0;
  auto averaged = averageCells(image, grid,
                               {cells.x - margin, cells.y - margin, cells.width + 2 * margin,
                                cells.height + 2 * margin},
                               pool);
  if (!averaged) return std::unexpected(averaged.error());
  const Image source = image.isInfinite() ? clampToExtent(*averaged) : *averaged;
  auto blurred = separableBlur(source, filter, cells, pool);
  if (!blurred) return std::unexpected(blurred.error());
  return interpolateCells(*blurred, grid, pool);
}

}  // namespace orvane::render::detail
