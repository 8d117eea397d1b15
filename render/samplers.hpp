#pragma once
// Reading a picture at the pixels of a destination, for the kernels. Internal
// to render/.
//
// Every sampler answers, for a destination row, the span of pixels where its
// value may be non-zero (span), and hands the value of each pixel of a span to
// a function (forSpan). The span may be a pixel wider than the exact support
// on each side, where the value is exactly transparent.

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "core/affine.hpp"
#include "render/image.hpp"
#include "render/vec4.hpp"

namespace orvane::render::detail {

// A picture in the coordinates of its buffer: the buffer's lower left pixel
// is (0, 0). Rectangles are [x0, x1) × [y0, y1).
struct SourceView {
  struct Box {
    int x0 = 0, y0 = 0, x1 = 0, y1 = 0;
  };
  const Rgba* pixels = nullptr;
  std::ptrdiff_t stride = 0;
  Box extent;  // outside: transparent
  Box data;    // reads clamp into it
  Box inner;   // in both: reads the stored pixel itself
  unsigned innerWidth = 0, innerHeight = 0;
  unsigned blockWidth = 0, blockHeight = 0;  // lower left corners of all-stored 2 × 2 blocks
  bool infinite = false;

  static SourceView of(const Image& image);  // image not empty

  Vec4 texel(int x, int y) const {
    if (x < extent.x0 || x >= extent.x1 || y < extent.y0 || y >= extent.y1) return splat(0);
    x = std::clamp(x, data.x0, data.x1 - 1);
    y = std::clamp(y, data.y0, data.y1 - 1);
    return load(pixels[y * stride + x]);
  }
  bool isStoredRow(int y) const { return static_cast<unsigned>(y - inner.y0) < innerHeight; }
  bool isStoredColumn(int x) const { return static_cast<unsigned>(x - inner.x0) < innerWidth; }
  // Whether the 2 × 2 block with lower left corner (x, y) is all stored.
  bool isStoredBlock(int x, int y) const {
    return static_cast<unsigned>(x - inner.x0) < blockWidth && static_cast<unsigned>(y - inner.y0) < blockHeight;
  }
};

// Lowest integer at or below v, for |v| < 2^29 (no call to floor).
inline int floorToInt(double v) {
  constexpr double kShift = 1073741824.0;  // 2^30
  return static_cast<int>(v + kShift) - (1 << 30);
}

// Bilinear value at (u, v) of the buffer space (pixel centres at +0.5).
// For an infinite source, positions are first held within a pixel or two of
// the stored pixels, where the value no longer changes, so that the
// conversions stay in range; a finite source is only ever sampled near its
// extent (see AffineSpan), which needs no such care.
template <bool Unbounded>
struct BilinearTap {
  SourceView src;
  double uLow = 0, uHigh = 0, vLow = 0, vHigh = 0;

  explicit BilinearTap(const SourceView& view) : src(view) {
    uLow = view.data.x0 - 1.0;
    uHigh = view.data.x1 + 1.0;
    vLow = view.data.y0 - 1.0;
    vHigh = view.data.y1 + 1.0;
  }

  [[gnu::always_inline]] Vec4 operator()(double u, double v) const {
    if constexpr (Unbounded) {
      u = std::clamp(u, uLow, uHigh);
      v = std::clamp(v, vLow, vHigh);
    }
    const double fx = u - 0.5, fy = v - 0.5;
    const int x0 = floorToInt(fx), y0 = floorToInt(fy);
    const Vec4 wx = splat(static_cast<float>(fx - x0));
    const Vec4 wy = splat(static_cast<float>(fy - y0));
    Vec4 p00, p10, p01, p11;
    if (src.isStoredBlock(x0, y0)) {
      const Rgba* p = src.pixels + y0 * src.stride + x0;
      p00 = load(p[0]);
      p10 = load(p[1]);
      p01 = load(p[src.stride]);
      p11 = load(p[src.stride + 1]);
    } else {
      p00 = src.texel(x0, y0);
      p10 = src.texel(x0 + 1, y0);
      p01 = src.texel(x0, y0 + 1);
      p11 = src.texel(x0 + 1, y0 + 1);
    }
    const Vec4 bottom = p00 + (p10 - p00) * wx;
    const Vec4 top = p01 + (p11 - p01) * wx;
    return bottom + (top - bottom) * wy;
  }
};

// One colour everywhere.
struct ConstantSampler {
  Vec4 value;
  bool span(int, int x0, int x1, int& first, int& last) const {
    first = x0;
    last = x1;
    return x0 < x1;
  }
  template <class F>
  void forSpan(int, int first, int last, F&& f) const {
    for (int x = first; x < last; ++x) f(x, value);
  }
};

// A whole-pixel translation: destination (x, y) reads the stored pixel
// (x + dx, y + dy) of the buffer, exactly.
struct TexelSampler {
  SourceView src;
  int dx = 0, dy = 0;

  bool span(int y, int x0, int x1, int& first, int& last) const;
  template <class F>
  void forSpan(int y, int first, int last, F&& f) const {
    const int sy = y + dy;
    if (!src.isStoredRow(sy)) {
      for (int x = first; x < last; ++x) f(x, src.texel(x + dx, sy));
      return;
    }
    const Rgba* row = src.pixels + static_cast<std::ptrdiff_t>(sy) * src.stride;
    for (int x = first; x < last; ++x) {
      const int sx = x + dx;
      f(x, src.isStoredColumn(sx) ? load(row[sx]) : src.texel(sx, sy));
    }
  }
};

// The inverse of a placement: destination pixel centre to buffer position.
struct InverseMap {
  double a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;
  // The inverse of m followed by the move into buffer space; none when m
  // is not finite or shrinks the picture a million times or more in some
  // direction (it would not show, and its steps would leave the range that
  // sampling computes in).
  static bool make(const core::Affine2D& m, const PixelRect& bufferRect, InverseMap& out);
  double uAtRowStart(int y) const { return a * 0.5 + c * (y + 0.5) + tx; }
  double vAtRowStart(int y) const { return b * 0.5 + d * (y + 0.5) + ty; }
};

// Where along a destination row the footprint of a sample can touch the
// picture: the buffer-space support is widened by (eu, ev).
struct AffineSpan {
  InverseMap map;
  bool bounded = true;
  double uMin = 0, uMax = 0, vMin = 0, vMax = 0;  // open support interval

  bool span(int y, int x0, int x1, int& first, int& last) const;
};

// Bilinear sampling: magnification and mild minification.
template <bool Unbounded>
struct BilinearSampler {
  AffineSpan area;
  BilinearTap<Unbounded> tap;

  bool span(int y, int x0, int x1, int& first, int& last) const { return area.span(y, x0, x1, first, last); }
  template <class F>
  void forSpan(int y, int first, int last, F&& f) const {
    const double du = area.map.a, dv = area.map.b;
    double u = area.map.uAtRowStart(y) + du * first, v = area.map.vAtRowStart(y) + dv * first;
    for (int x = first; x < last; ++x, u += du, v += dv) f(x, tap(u, v));
  }
};

// Strong minification: the footprint of a destination pixel (the
// parallelogram spanned by the two inverse steps) is covered by nx × ny
// bilinear taps about one source pixel apart and averaged, a box prefilter
// over exactly the area that the pixel sees.
template <bool Unbounded>
struct AreaSampler {
  AffineSpan area;
  BilinearTap<Unbounded> tap;
  int nx = 1, ny = 1;

  bool span(int y, int x0, int x1, int& first, int& last) const { return area.span(y, x0, x1, first, last); }
  template <class F>
  void forSpan(int y, int first, int last, F&& f) const {
    const InverseMap& m = area.map;
    const double u0 = m.uAtRowStart(y), v0 = m.vAtRowStart(y);
    // Tap (i, j) sits at the centre + ((i + 0.5) / nx − 0.5) × x-step + the same in y.
    const double stepXu = m.a / nx, stepXv = m.b / nx, stepYu = m.c / ny, stepYv = m.d / ny;
    const double startU = -0.5 * (m.a + m.c) + 0.5 * (stepXu + stepYu);
    const double startV = -0.5 * (m.b + m.d) + 0.5 * (stepXv + stepYv);
    const Vec4 weight = splat(1.0f / static_cast<float>(nx * ny));
    for (int x = first; x < last; ++x) {
      const double cu = u0 + m.a * x + startU, cv = v0 + m.b * x + startV;
      Vec4 sum = splat(0);
      for (int j = 0; j < ny; ++j) {
        const double ru = cu + j * stepYu, rv = cv + j * stepYv;
        for (int i = 0; i < nx; ++i) sum += tap(ru + i * stepXu, rv + i * stepXv);
      }
      f(x, sum * weight);
    }
  }
};

}  // namespace orvane::render::detail
