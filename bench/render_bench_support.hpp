#pragma once
// What the render benchmarks share: the full HD rectangle, pools of one and
// two threads to compare, and full HD pictures made from a pixel function.

#include "render/image.hpp"
#include "render/worker_pool.hpp"

namespace orvane::bench_support {

inline constexpr render::PixelRect kFullHD{0, 0, 1920, 1080};

inline render::WorkerPool& poolOf(int threads) {
  static render::WorkerPool one(1), two(2);
  return threads == 1 ? one : two;
}

// A full HD picture whose pixel (x, y) is value(x, y).
template <class Value>
render::Image fullHDPicture(Value value) {
  render::Canvas canvas = *render::Canvas::make(kFullHD);
  for (int y = 0; y < kFullHD.height; ++y) {
    for (int x = 0; x < kFullHD.width; ++x) canvas.row(y)[x] = value(x, y);
  }
  return std::move(canvas).image();
}

}  // namespace orvane::bench_support
