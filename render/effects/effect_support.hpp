#pragma once
// Small pieces shared by the effect filters. Internal to render/effects/.

#include <algorithm>
#include <cmath>
#include <expected>
#include <span>
#include <vector>

#include "render/image.hpp"
#include "render/worker_pool.hpp"

namespace orvane::render::detail {

// Rec. 709 luma weights, used by every effect that needs a grey.
inline constexpr float kLumaR = 0.2126f, kLumaG = 0.7152f, kLumaB = 0.0722f;

inline float luma(float r, float g, float b) { return r * kLumaR + g * kLumaG + b * kLumaB; }

// GLSL smoothstep.
inline float smoothstep(float edge0, float edge1, float x) {
  const float t = std::clamp((x - edge0) / (edge1 - edge0), 0.0f, 1.0f);
  return t * t * (3.0f - 2.0f * t);
}

// A straight colour and its alpha; a transparent pixel reads as black.
struct Straight {
  float r = 0, g = 0, b = 0, a = 0;
};
inline Straight straightOf(const Rgba& p) {
  if (!(p.a > 0)) return {0, 0, 0, 0};
  const float inverse = 1.0f / p.a;
  return {p.r * inverse, p.g * inverse, p.b * inverse, p.a};
}
inline Rgba premultipliedOf(const Straight& s) { return {s.r * s.a, s.g * s.a, s.b * s.a, s.a}; }

// A picture of rect whose every row y is written by fill(y, row), rows split
// over the pool; fill gets a band-local scratch it may keep between rows of
// one band through makeScratch().
template <class MakeScratch, class Fill>
std::expected<Image, ImageError> renderRows(const PixelRect& rect, WorkerPool& pool, MakeScratch&& makeScratch,
                                            Fill&& fill) {
  auto canvas = Canvas::makeUnfilled(rect);
  if (!canvas) return std::unexpected(canvas.error());
  if (rect.isEmpty()) return Image{};
  pool.forEachBand(rect.y, rect.maxY(), rect.width, [&](int first, int last) {
    auto scratch = makeScratch();
    for (int y = first; y < last; ++y) fill(y, canvas->row(y), scratch);
  });
  return std::move(*canvas).image();
}

// Rows of a picture read with padding, kept in a ring so that a band walking
// up its rows reads each source row once. Row y holds the picture's values at
// x0 - pad ..< x0 + width + pad.
class RowRing {
 public:
  RowRing(const Image& source, int x0, int width, int pad, int rows)
      : source_(source), x0_(x0 - pad), stride_(width + 2 * pad), rows_(std::max(rows, 1)),
        storage_(static_cast<std::size_t>(stride_) * static_cast<std::size_t>(rows_)) {}

  // Makes rows lo ... hi (hi - lo < rows) available; rows are asked for in
  // rising order.
  void load(int lo, int hi) {
    for (int y = std::max(lo, loadedTo_ + 1); y <= hi; ++y) readRow(source_, y, x0_, stride_, slot(y));
    loadedTo_ = std::max(loadedTo_, hi);
  }
  // The padded row y: element pad + i is the value at x0 + i.
  const Rgba* row(int y) { return slot(y); }

 private:
  Rgba* slot(int y) {
    const int index = ((y % rows_) + rows_) % rows_;
    return storage_.data() + static_cast<std::ptrdiff_t>(index) * stride_;
  }

  const Image& source_;
  int x0_, stride_, rows_;
  std::vector<Rgba> storage_;
  int loadedTo_ = -(1 << 30);
};

}  // namespace orvane::render::detail
