#include "render/draw_layer.hpp"

#include <algorithm>
#include <cmath>
#include <optional>

#include "render/blend_kernels.hpp"
#include "render/samplers.hpp"

namespace orvane::render {

using core::Affine2D;
using core::OVBlendMode;
using namespace detail;

namespace {

// Past this many source pixels per destination pixel along a direction,
// bilinear taps would skip pixels and alias: average the footprint instead.
// Up to a halving, bilinear reads every source pixel at least once.
constexpr double kMinifyFootprint = 2.0;
// Bounds the work per pixel of an extreme downscale.
constexpr int kMaxTapsPerAxis = 64;

// solid: one stored pixel over a finite extent, placed on whole pixels (a
// solid layer): a constant over the placed extent.
enum class SamplingKind { constant, solid, texel, bilinear, area };

// How a source is read for one placement.
struct SamplingPlan {
  SamplingKind kind = SamplingKind::bilinear;
  SourceView view;
  int dx = 0, dy = 0;     // texel: buffer position = destination + (dx, dy)
  AffineSpan span;        // bilinear and area
  int nx = 1, ny = 1;     // area: taps per direction
  double eu = 0, ev = 0;  // reach of a sample past its centre, in source pixels
  Vec4 solid = splat(0);  // constant and solid: the one colour
};

bool isConstant(const Image& image) {
  return image.isInfinite() && image.dataRect().width == 1 && image.dataRect().height == 1;
}

bool isWholePixelTranslation(const Affine2D& m) {
  return m.a == 1 && m.b == 0 && m.c == 0 && m.d == 1 && m.tx == std::trunc(m.tx) && m.ty == std::trunc(m.ty) &&
         std::fabs(m.tx) <= kMaxImagePosition && std::fabs(m.ty) <= kMaxImagePosition;
}

int tapsFor(double footprint) {
  if (!(footprint > kMinifyFootprint)) return 1;
  return static_cast<int>(std::min<double>(std::ceil(footprint), kMaxTapsPerAxis));
}

std::optional<SamplingPlan> planSampling(const Image& source, const Affine2D& m) {
  if (source.isEmpty()) return std::nullopt;
  const PixelRect bufferRect = source.buffer()->rect;
  InverseMap inverse;
  if (!InverseMap::make(m, bufferRect, inverse)) return std::nullopt;
  SamplingPlan plan;
  plan.view = SourceView::of(source);
  if (isConstant(source)) {
    plan.kind = SamplingKind::constant;
    plan.solid = plan.view.texel(plan.view.data.x0, plan.view.data.y0);
    return plan;
  }
  if (isWholePixelTranslation(m)) {
    const PixelRect data = source.dataRect();
    if (data.width == 1 && data.height == 1) {
      const PixelBuffer& buffer = *source.buffer();
      plan.kind = SamplingKind::solid;
      plan.solid = load(buffer.row(data.y)[data.x - buffer.rect.x]);
      return plan;
    }
    plan.kind = SamplingKind::texel;
    plan.dx = -static_cast<int>(m.tx) - bufferRect.x;
    plan.dy = -static_cast<int>(m.ty) - bufferRect.y;
    return plan;
  }
  plan.nx = tapsFor(std::hypot(inverse.a, inverse.b));
  plan.ny = tapsFor(std::hypot(inverse.c, inverse.d));
  plan.kind = plan.nx == 1 && plan.ny == 1 ? SamplingKind::bilinear : SamplingKind::area;
  // The outermost taps sit half a footprint less half a tap spacing from the
  // centre, and a bilinear tap reads half a pixel further.
  const double spreadX = 0.5 - 0.5 / plan.nx, spreadY = 0.5 - 0.5 / plan.ny;
  plan.eu = 0.5 + spreadX * std::fabs(inverse.a) + spreadY * std::fabs(inverse.c);
  plan.ev = 0.5 + spreadX * std::fabs(inverse.b) + spreadY * std::fabs(inverse.d);
  plan.span.map = inverse;
  plan.span.bounded = !plan.view.infinite;
  plan.span.uMin = plan.view.extent.x0 - plan.eu;
  plan.span.uMax = plan.view.extent.x1 + plan.eu;
  plan.span.vMin = plan.view.extent.y0 - plan.ev;
  plan.span.vMax = plan.view.extent.y1 + plan.ev;
  return plan;
}

// The pixels whose centres lie strictly inside the mapped support.
PixelRect extentOf(const SamplingPlan& plan, const Image& source, const Affine2D& m) {
  if (plan.kind == SamplingKind::constant || source.isInfinite()) return PixelRect::infinite();
  const PixelRect e = source.extent();
  if (plan.kind == SamplingKind::texel || plan.kind == SamplingKind::solid) {
    return e.offsetBy(static_cast<int>(m.tx), static_cast<int>(m.ty));
  }
  const double u0 = e.x - plan.eu, u1 = e.maxX() + plan.eu, v0 = e.y - plan.ev, v1 = e.maxY() + plan.ev;
  const core::OVPoint corners[4] = {m.apply({u0, v0}), m.apply({u1, v0}), m.apply({u0, v1}), m.apply({u1, v1})};
  double minX = corners[0].x, maxX = minX, minY = corners[0].y, maxY = minY;
  for (const core::OVPoint& p : corners) {
    minX = std::min(minX, p.x);
    maxX = std::max(maxX, p.x);
    minY = std::min(minY, p.y);
    maxY = std::max(maxY, p.y);
  }
  // Far out is as good as at the edge of the infinite rectangle: such a
  // picture is refused or clipped by the destination anyway.
  constexpr double kFar = PixelRect::kInfiniteHalf;
  const auto first = [&](double low) { return static_cast<int>(std::floor(std::clamp(low, -kFar, kFar) - 0.5)) + 1; };
  const auto last = [&](double high) { return static_cast<int>(std::ceil(std::clamp(high, -kFar, kFar) - 0.5)) - 1; };
  const int x0 = first(minX), x1 = last(maxX), y0 = first(minY), y1 = last(maxY);
  if (x1 < x0 || y1 < y0) return {};
  return {x0, y0, x1 - x0 + 1, y1 - y0 + 1};
}

template <class Blend, class Sampler>
void runKernel(const Sampler& sampler, Canvas& canvas, const PixelRect& region, float opacity, WorkerPool& pool) {
  pool.forEachBand(region.y, region.maxY(), region.width, [&](int firstRow, int lastRow) {
    const int canvasX = canvas.rect().x;
    // A copy of its own on this thread's stack: the pixel stores cannot
    // alias it, so its fields stay in registers through the inner loop.
    const Sampler local = sampler;
    const Vec4 scale = splat(opacity);
    for (int y = firstRow; y < lastRow; ++y) {
      int first = 0, last = 0;
      if (!local.span(y, region.x, region.maxX(), first, last)) continue;
      Rgba* row = canvas.row(y);
      local.forSpan(y, first, last, [&](int x, Vec4 s) {
        Rgba& out = row[x - canvasX];
        store(out, Blend::apply(s * scale, load(out)));
      });
    }
  });
}

template <class Blend>
void runPlan(const SamplingPlan& plan, Canvas& canvas, const PixelRect& region, float opacity, WorkerPool& pool) {
  switch (plan.kind) {
    case SamplingKind::constant:
    case SamplingKind::solid:  // the region is already cut to the placed extent
      runKernel<Blend>(ConstantSampler{plan.solid}, canvas, region, opacity, pool);
      return;
    case SamplingKind::texel:
      runKernel<Blend>(TexelSampler{plan.view, plan.dx, plan.dy}, canvas, region, opacity, pool);
      return;
    case SamplingKind::bilinear:
      if (plan.view.infinite) {
        runKernel<Blend>(BilinearSampler<true>{plan.span, BilinearTap<true>(plan.view)}, canvas, region, opacity, pool);
      } else {
        runKernel<Blend>(BilinearSampler<false>{plan.span, BilinearTap<false>(plan.view)}, canvas, region, opacity,
                         pool);
      }
      return;
    case SamplingKind::area:
      if (plan.view.infinite) {
        runKernel<Blend>(AreaSampler<true>{plan.span, BilinearTap<true>(plan.view), plan.nx, plan.ny}, canvas, region,
                         opacity, pool);
      } else {
        runKernel<Blend>(AreaSampler<false>{plan.span, BilinearTap<false>(plan.view), plan.nx, plan.ny}, canvas,
                         region, opacity, pool);
      }
      return;
  }
}

void runPlan(OVBlendMode mode, const SamplingPlan& plan, Canvas& canvas, const PixelRect& region, float opacity,
             WorkerPool& pool) {
  switch (mode) {
    case OVBlendMode::normal: return runPlan<SourceOverBlend>(plan, canvas, region, opacity, pool);
    case OVBlendMode::multiply: return runPlan<MultiplyBlend>(plan, canvas, region, opacity, pool);
    case OVBlendMode::screen: return runPlan<ScreenBlend>(plan, canvas, region, opacity, pool);
    case OVBlendMode::overlay: return runPlan<OverlayBlend>(plan, canvas, region, opacity, pool);
    case OVBlendMode::softLight: return runPlan<SoftLightBlend>(plan, canvas, region, opacity, pool);
    case OVBlendMode::hardLight: return runPlan<HardLightBlend>(plan, canvas, region, opacity, pool);
    case OVBlendMode::darken: return runPlan<DarkenBlend>(plan, canvas, region, opacity, pool);
    case OVBlendMode::lighten: return runPlan<LightenBlend>(plan, canvas, region, opacity, pool);
    case OVBlendMode::difference: return runPlan<DifferenceBlend>(plan, canvas, region, opacity, pool);
    case OVBlendMode::add: return runPlan<AddBlend>(plan, canvas, region, opacity, pool);
  }
  runPlan<SourceOverBlend>(plan, canvas, region, opacity, pool);
}

// One opaque colour laid over at full strength (a backdrop solid) hides what
// was there: its pixels can be written without reading the destination.
bool hidesWhatIsBeneath(const SamplingPlan& plan, double opacity, OVBlendMode mode) {
  const bool uniform = plan.kind == SamplingKind::constant || plan.kind == SamplingKind::solid;
  return uniform && mode == OVBlendMode::normal && opacity >= 1 && plan.solid[3] == 1;
}

}  // namespace

std::optional<Rgba> coveringColour(const Image& source, const Affine2D& placement, double opacity, OVBlendMode mode,
                                   const PixelRect& rect) {
  const std::optional<SamplingPlan> plan = planSampling(source, placement);
  if (!plan || !hidesWhatIsBeneath(*plan, opacity, mode) || !extentOf(*plan, source, placement).contains(rect)) {
    return std::nullopt;
  }
  Rgba colour;
  store(colour, plan->solid);
  return colour;
}

void drawLayer(Canvas& destination, const PixelRect& destRect, const Image& source, const Affine2D& placement,
               double opacity, OVBlendMode mode, WorkerPool& pool) {
  if (!(opacity > 0)) return;
  const std::optional<SamplingPlan> plan = planSampling(source, placement);
  if (!plan) return;
  const PixelRect region =
      destRect.intersection(destination.rect()).intersection(extentOf(*plan, source, placement));
  if (region.isEmpty()) return;
  if (hidesWhatIsBeneath(*plan, opacity, mode)) {
    runPlan<ReplaceBlend>(*plan, destination, region, 1.0f, pool);
    return;
  }
  runPlan(mode, *plan, destination, region, static_cast<float>(std::min(opacity, 1.0)), pool);
}

PixelRect transformedExtent(const Image& source, const Affine2D& placement) {
  const std::optional<SamplingPlan> plan = planSampling(source, placement);
  return plan ? extentOf(*plan, source, placement) : PixelRect{};
}

std::expected<Image, ImageError> transformed(const Image& source, const Affine2D& placement, WorkerPool& pool) {
  const std::optional<SamplingPlan> plan = planSampling(source, placement);
  if (!plan) return Image{};
  if (plan->kind == SamplingKind::constant || placement == Affine2D::identity()) return source;
  if (source.isInfinite()) return std::unexpected(ImageError::unbounded);
  const PixelRect extent = extentOf(*plan, source, placement);
  auto canvas = Canvas::make(extent, {}, pool);
  if (!canvas) return std::unexpected(canvas.error());
  if (!extent.isEmpty()) runPlan<ReplaceBlend>(*plan, *canvas, extent, 1.0f, pool);
  return std::move(*canvas).image();
}

}  // namespace orvane::render
