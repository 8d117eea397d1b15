#pragma once
// An integer rectangle of whole pixels in the y-up image space: (x, y) is the
// lower left pixel, the rectangle covers the pixels x ..< x + width and
// y ..< y + height. The pixel (i, j) covers the area [i, i + 1) × [j, j + 1),
// so its centre is (i + 0.5, j + 0.5). Plain value.
//
// An infinite rectangle stands for the unbounded extent of a constant colour or
// of a picture clamped to its extent; it is wide enough that intersecting it
// with any real rectangle gives the real one.

#include <algorithm>
#include <cstdint>

namespace orvane::render {

struct PixelRect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;

  // Half of the infinite side: every finite rectangle of an image lies inside.
  static constexpr int kInfiniteHalf = 1 << 29;

  static constexpr PixelRect infinite() { return {-kInfiniteHalf, -kInfiniteHalf, 2 * kInfiniteHalf, 2 * kInfiniteHalf}; }

  constexpr int maxX() const { return x + width; }
  constexpr int maxY() const { return y + height; }
  constexpr bool isEmpty() const { return width <= 0 || height <= 0; }
  constexpr bool isInfinite() const { return width >= 2 * kInfiniteHalf || height >= 2 * kInfiniteHalf; }
  constexpr std::int64_t area() const { return isEmpty() ? 0 : std::int64_t{width} * height; }

  constexpr bool contains(int px, int py) const { return px >= x && px < maxX() && py >= y && py < maxY(); }
  constexpr bool contains(const PixelRect& r) const {
    return r.isEmpty() || (!isEmpty() && r.x >= x && r.y >= y && r.maxX() <= maxX() && r.maxY() <= maxY());
  }

  // The common part; an empty rectangle when they do not overlap.
  constexpr PixelRect intersection(const PixelRect& r) const {
    const int x0 = std::max(x, r.x), y0 = std::max(y, r.y);
    const int x1 = std::min(maxX(), r.maxX()), y1 = std::min(maxY(), r.maxY());
    if (isEmpty() || r.isEmpty() || x1 <= x0 || y1 <= y0) return {};
    return {x0, y0, x1 - x0, y1 - y0};
  }
  // The smallest rectangle holding both; an empty one does not count.
  constexpr PixelRect united(const PixelRect& r) const {
    if (isEmpty()) return r.isEmpty() ? PixelRect{} : r;
    if (r.isEmpty()) return *this;
    const int x0 = std::min(x, r.x), y0 = std::min(y, r.y);
    return {x0, y0, std::max(maxX(), r.maxX()) - x0, std::max(maxY(), r.maxY()) - y0};
  }
  constexpr PixelRect offsetBy(int dx, int dy) const { return {x + dx, y + dy, width, height}; }

  friend constexpr bool operator==(const PixelRect&, const PixelRect&) = default;
};

}  // namespace orvane::render
