#pragma once
// Pictures at reduced resolution for strong downscales. A layer drawn at a
// quarter of its size would otherwise average many taps for every output
// pixel, band after band; halving its picture once per frame first (2 × 2
// box means, as mipmaps do) lets the draw sample it bilinearly. Any
// thread; the work is split over the pool.

#include <expected>

#include "core/affine.hpp"
#include "render/image.hpp"
#include "render/worker_pool.hpp"

namespace orvane::render {

// image at half resolution: pixel (i, j) is the mean of the pixels (2i, 2j),
// (2i + 1, 2j), (2i, 2j + 1), (2i + 1, 2j + 1), each transparent outside
// image's extent. image must be finite.
std::expected<Image, ImageError> halved(const Image& image, WorkerPool& pool = WorkerPool::shared());

// Halves image, and makes placement read the halved picture at the same
// places, until placement shrinks it to half or more along both axes (or
// the picture is down to one pixel). On failure both stay as they were.
void reduceForPlacement(Image& image, core::Affine2D& placement, WorkerPool& pool = WorkerPool::shared());

}  // namespace orvane::render
