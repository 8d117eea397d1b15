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
std::expected<Image, ImageError> gaussianBlur(const Image& image, double sigma, const PixelRect& within = {},
                                              WorkerPool& pool = WorkerPool::shared());

}  // namespace orvane::render
