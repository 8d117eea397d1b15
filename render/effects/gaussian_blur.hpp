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

// How the kernel is applied. `automatic` takes the sampled kernel for small
// sigma, where it costs at most about twice as much and three boxes would
// stray from it by 1% on an edge, and three extended box filters (together of
// the sampled kernel's variance) from kBoxBlurMinSigma on, which cost the same
// whatever the sigma. The other two exist for the benchmarks and the
// accuracy tests.
enum class GaussianBlurMethod { automatic, exact, boxes };

// The sigma from which `automatic` takes the box filters.
inline constexpr double kBoxBlurMinSigma = 3;

// The reach of the kernel: how far the extent of a finite image grows.
int gaussianBlurReach(double sigma);

std::expected<Image, ImageError> gaussianBlur(const Image& image, double sigma, const PixelRect& within,
                                              WorkerPool& pool, GaussianBlurMethod method);

}  // namespace orvane::render
