#pragma once
// The passes behind gaussianBlur, shared by its files. Internal to render/;
// any thread.

#include <expected>

#include "render/effects/blur_line_filters.hpp"
#include "render/image.hpp"
#include "render/worker_pool.hpp"

namespace orvane::render::detail {

// image through filter along its rows, then along its columns, over out. A
// finite image is transparent past its extent; an infinite one (clamped to
// its extent) repeats its stored edge pixels.
std::expected<Image, ImageError> separableBlur(const Image& image, const LineFilter& filter, const PixelRect& out,
                                               WorkerPool& pool);

// How many pixels a side the coarse grid of a blur of sigma takes in one
// cell: 1 (no coarse grid) below 8, 2 from 8, 4 from 24, 8 from 56. A blur
// on cells of sigma below 4 (6 for 4 × 4, 7 for 8 × 8) strays more than 6% of
// the peak from the exact kernel on a single bright pixel.
int coarseGridStep(double sigma);

// image blurred to `variance` (pixels², per axis) over out, on a grid of
// step × step cells: the cells averaged, blurred there, and interpolated
// back (linearly) to every pixel of out. The averaging and the interpolation
// spread the picture too; the blur on the grid makes up the rest.
std::expected<Image, ImageError> coarseGridBlur(const Image& image, double variance, const PixelRect& out, int step,
                                                WorkerPool& pool);

}  // namespace orvane::render::detail
