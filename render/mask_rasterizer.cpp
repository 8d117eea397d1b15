#include "render/mask_rasterizer.hpp"

#include <algorithm>
#include <vector>

#include "render/effects/gaussian_blur.hpp"
#include "render/mask_path_painter.hpp"
#include "render/vec4.hpp"

namespace orvane::render {

namespace {

using core::LayerMask;

// Below this a feather is no feather: an animated feather that settles near
// zero stays on the hard road, which costs one bitmap and no blur.
constexpr double kFeatherThreshold = 0.01;

double featherOf(const LayerMask& mask, const core::OVTime& t) { return std::max(0.0, mask.featherValueAt(t)); }

bool allInverted(const std::vector<const LayerMask*>& masks) {
  return std::all_of(masks.begin(), masks.end(), [](const LayerMask* m) { return m->inverted; });
}

// The union of the normal masks less the union of the inverted ones, in one
// bitmap: the order of the list does not matter.
std::optional<Image> hardMatte(const std::vector<const LayerMask*>& masks, const core::OVTime& t,
                               const PixelRect& rect) {
  QImage bitmap = makeGreyBitmap(rect, allInverted(masks) ? 255 : 0);
  if (bitmap.isNull()) return std::nullopt;
  for (const bool inverted : {false, true}) {
    for (const LayerMask* mask : masks) {
      if (mask->inverted == inverted) fillMaskPath(bitmap, maskPainterPath(mask->pathValueAt(t)), inverted ? 0 : 255);
    }
  }
  return imageFromGreyBitmap(bitmap, rect);
}

// One mask's own matte for the sequential form: its path in white on black,
// blurred by its feather with the edges extended (so that a mask reaching the
// layer's edge stays solid there). None when the bitmap can't be made.
std::optional<Image> softMaskMatte(const LayerMask& mask, const core::OVTime& t, const PixelRect& rect) {
  QImage bitmap = makeGreyBitmap(rect, 0);
  if (bitmap.isNull()) return std::nullopt;
  fillMaskPath(bitmap, maskPainterPath(mask.pathValueAt(t)), 255);
  auto matte = imageFromGreyBitmap(bitmap, rect);
  const double feather = featherOf(mask, t);
  if (!matte || feather <= kFeatherThreshold) return matte;
  // The feather is the whole width of the soft edge, twice the blur's sigma.
  // A blur that can't be made leaves the edge hard.
  if (auto blurred = gaussianBlur(clampToExtent(*matte), feather / 2, rect)) return std::move(*blurred);
  return matte;
}

// accumulator = max(accumulator, matte) for a normal mask, accumulator ×
// (1 − matte) for an inverted one, per component.
void combine(Canvas& accumulator, const Image& matte, bool inverted) {
  const PixelRect rect = accumulator.rect();
  WorkerPool::shared().forEachBand(rect.y, rect.maxY(), rect.width, [&](int first, int last) {
    for (int y = first; y < last; ++y) {
      Rgba* row = accumulator.row(y);
      const Rgba* source = matte.buffer()->row(y) + (rect.x - matte.buffer()->rect.x);
      for (int x = 0; x < rect.width; ++x) {
        const detail::Vec4 a = detail::load(row[x]), m = detail::load(source[x]);
        detail::store(row[x], inverted ? a * (detail::splat(1) - m) : detail::vmax(a, m));
      }
    }
  });
}

// The sequential form: each mask in list order folded into the accumulator.
// Here the order matters: a normal mask after an inverted one gives its area
// back.
std::optional<Image> featheredMatte(const std::vector<const LayerMask*>& masks, const core::OVTime& t,
                                    const PixelRect& rect) {
  const float start = allInverted(masks) ? 1.0f : 0.0f;
  auto accumulator = Canvas::make(rect, {start, start, start, start});
  if (!accumulator) return std::nullopt;
  for (const LayerMask* mask : masks) {
    const auto matte = softMaskMatte(*mask, t, rect);
    // The blur and the bitmap both cover exactly rect, so rows line up.
    if (!matte || matte->extent() != rect || matte->dataRect() != rect) continue;
    combine(*accumulator, *matte, mask->inverted);
  }
  return std::move(*accumulator).image();
}

}  // namespace

std::optional<Image> MaskRasterizer::image(const core::SharedVector<LayerMask>& masks, const core::OVTime& t,
                                           const core::OVSize& layerSize) {
  std::vector<const LayerMask*> enabled;
  for (const LayerMask& mask : masks) {
    if (mask.isEnabled) enabled.push_back(&mask);
  }
  if (enabled.empty()) return std::nullopt;
  const auto rect = matteRect(layerSize);
  if (!rect) return std::nullopt;
  const bool soft = std::any_of(enabled.begin(), enabled.end(),
                                [&t](const LayerMask* m) { return featherOf(*m, t) > kFeatherThreshold; });
  return soft ? featheredMatte(enabled, t, *rect) : hardMatte(enabled, t, *rect);
}

Image MaskRasterizer::apply(const Image& matte, const Image& picture) {
  if (picture.isEmpty() || matte.isEmpty()) return {};
  // The matte's lower left corner goes onto the picture's.
  const PixelRect m = matte.extent(), p = picture.extent();
  const int dx = matte.isInfinite() ? 0 : p.x - m.x;
  const int dy = matte.isInfinite() ? 0 : p.y - m.y;
  const PixelRect rect = picture.isInfinite() ? p.intersection(m.offsetBy(dx, dy)) : p;
  auto canvas = Canvas::makeUnfilled(rect);
  if (!canvas || rect.isEmpty()) return {};
  WorkerPool::shared().forEachBand(rect.y, rect.maxY(), rect.width, [&](int first, int last) {
    // The matte is read in runs, so a row needs no buffer of its own.
    constexpr int kRun = 256;
    Rgba grey[kRun];
    for (int y = first; y < last; ++y) {
      Rgba* row = canvas->row(y);
      readRow(picture, y, rect.x, rect.width, row);
      for (int x = 0; x < rect.width; x += kRun) {
        const int count = std::min(kRun, rect.width - x);
        readRow(matte, y - dy, rect.x + x - dx, count, grey);
        for (int i = 0; i < count; ++i) {
          // A matte holds its grey in every component; red is read.
          const float value = std::clamp(grey[i].r, 0.0f, 1.0f);
          detail::store(row[x + i], detail::load(row[x + i]) * detail::splat(value));
        }
      }
    }
  });
  return std::move(*canvas).image();
}

}  // namespace orvane::render
