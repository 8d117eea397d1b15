#pragma once
// Gaussian blur of a picture, the filter behind the blur, drop shadow and
// glow effects and the feathered masks. Any thread; rows and columns are
// split over the pool.

#include <expected>

#include "render/image.hpp"
#include "render/worker_pool.hpp"

namespace orvane::render {

// image blurred with a Gaussian of standard deviation sigma (in pixels) on
// all four components. A finite image's extent grows by the kernel's reach
// (about 3 sigma) on every side, where the picture fades out. An infinite
// image (one clamped to its extent) is blurred over `within` only and the
// result cropped to it; a finite image ignores `within`. A sigma of 0 or
// less returns image as it is.
//
// Fails with unbounded for an infinite image without a finite, non-empty
// `within`, with tooLarge when the result or the kernel passes
// kMaxImageSide, with outOfMemory when the pixels can't be had.
std::expected<Image, ImageError> gaussianBlur(const Image& image, double sigma, const PixelRect& within = {},
                                              WorkerPool& pool = WorkerPool::shared());

// How the kernel is applied:
// - exact: the sampled kernel over ±ceil(3 sigma), row by row, then column
//   by column.
// - boxes: three extended box filters, together of the sampled kernel's
//   variance; they cost the same whatever the sigma.
// - coarseGrid: the boxes on a grid of 2 × 2 cells from sigma 8 (4 × 4 from
//   24, 8 × 8 from 56), the cells averaged first and interpolated back after;
//   a quarter of the work or less. Below 8, the boxes.
// - automatic: exact below kBoxBlurMinSigma (where it costs at most about
//   twice the boxes, which would stray from it by 1% on an edge), then
//   coarseGrid.
// On a straight edge every method stays within 0.01 of the exact one.
enum class GaussianBlurMethod { automatic, exact, boxes, coarseGrid };

// The sigma from which `automatic` leaves the sampled kernel.
inline constexpr double kBoxBlurMinSigma = 3;

// The reach of the kernel: how far the extent of a finite image grows.
int gaussianBlurReach(double sigma);

std::expected<Image, ImageError> gaussianBlur(const Image& image, double sigma, const PixelRect& within,
                                              WorkerPool& pool, GaussianBlurMethod method);

}  // namespace orvane::render
