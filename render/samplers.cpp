#include "render/samplers.hpp"

namespace orvane::render::detail {

namespace {
// Past these a placement shrinks the picture below a millionth: it draws
// nothing.
constexpr double kMinDeterminant = 1e-12;
constexpr double kMaxInverseStep = 1e6;
constexpr int kUnbounded = 1 << 30;
}  // namespace

SourceView SourceView::of(const Image& image) {
  const PixelBuffer& buffer = *image.buffer();
  const int ox = buffer.rect.x, oy = buffer.rect.y;
  SourceView view;
  view.pixels = buffer.pixels.get();
  view.stride = buffer.rect.width;
  view.infinite = image.isInfinite();
  const PixelRect e = image.extent(), d = image.dataRect();
  view.extent = view.infinite ? Box{-kUnbounded, -kUnbounded, kUnbounded, kUnbounded}
                              : Box{e.x - ox, e.y - oy, e.maxX() - ox, e.maxY() - oy};
  view.data = {d.x - ox, d.y - oy, d.maxX() - ox, d.maxY() - oy};
  view.inner = {std::max(view.extent.x0, view.data.x0), std::max(view.extent.y0, view.data.y0),
                std::min(view.extent.x1, view.data.x1), std::min(view.extent.y1, view.data.y1)};
  view.innerWidth = static_cast<unsigned>(std::max(0, view.inner.x1 - view.inner.x0));
  view.innerHeight = static_cast<unsigned>(std::max(0, view.inner.y1 - view.inner.y0));
  view.blockWidth = view.innerWidth > 0 ? view.innerWidth - 1 : 0;
  view.blockHeight = view.innerHeight > 0 ? view.innerHeight - 1 : 0;
  return view;
}

bool TexelSampler::span(int y, int x0, int x1, int& first, int& last) const {
  const int sy = y + dy;
  if (sy < src.extent.y0 || sy >= src.extent.y1) return false;
  first = std::max(x0, src.extent.x0 - dx);
  last = std::min(x1, src.extent.x1 - dx);
  return first < last;
}

bool InverseMap::make(const core::Affine2D& m, const PixelRect& bufferRect, InverseMap& out) {
  const double det = m.a * m.d - m.b * m.c;
  if (!std::isfinite(det) || !std::isfinite(m.tx) || !std::isfinite(m.ty) || !(std::fabs(det) > kMinDeterminant)) {
    return false;
  }
  out.a = m.d / det;
  out.b = -m.b / det;
  out.c = -m.c / det;
  out.d = m.a / det;
  out.tx = (m.c * m.ty - m.d * m.tx) / det - bufferRect.x;
  out.ty = (m.b * m.tx - m.a * m.ty) / det - bufferRect.y;
  const double largestStep = std::max({std::fabs(out.a), std::fabs(out.b), std::fabs(out.c), std::fabs(out.d)});
  return largestStep < kMaxInverseStep && std::isfinite(out.tx) && std::isfinite(out.ty);
}

bool AffineSpan::span(int y, int x0, int x1, int& first, int& last) const {
  if (!bounded) {
    first = x0;
    last = x1;
    return x0 < x1;
  }
  // The open interval of x where start + step·x lies strictly inside
  // (low, high), narrowed to a pixel beyond the row on each side.
  double lo = x0 - 1.0, hi = x1 + 1.0;
  const auto limit = [&](double start, double step, double low, double high) {
    if (step == 0) {
      if (!(start > low && start < high)) hi = lo;
      return;
    }
    double t0 = (low - start) / step, t1 = (high - start) / step;
    if (step < 0) std::swap(t0, t1);
    lo = std::max(lo, t0);
    hi = std::min(hi, t1);
  };
  limit(map.uAtRowStart(y), map.a, uMin, uMax);
  limit(map.vAtRowStart(y), map.b, vMin, vMax);
  if (!(lo < hi)) return false;
  // One pixel of slack on each side against rounding: the value there is
  // exactly transparent.
  first = std::max(x0, floorToInt(lo));
  last = std::min(x1, floorToInt(hi) + 2);
  return first < last;
}

}  // namespace orvane::render::detail
