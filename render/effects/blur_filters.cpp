// The blur-like effect filters: the shared blur shape, motion blur and
// luminance sharpening.

#include <cmath>
#include <limits>
#include <vector>

#include "render/effects/effect_filters.hpp"
#include "render/effects/effect_support.hpp"
#include "render/vec4.hpp"

namespace orvane::render {

namespace {

using detail::Vec4;

// Beyond this a length or a growth covers any picture the engine makes; the
// cap keeps the integer arithmetic in range.
constexpr double kLongest = 4.0 * kMaxImageSide;
// The longest motion blur: its cost grows with the length, and past this no
// slider reaches.
constexpr double kLongestMotion = 2048;

// One weighted read of a motion blur: the pixel (x + dx, y + dy).
struct Tap {
  int dx = 0, dy = 0;
  float weight = 0;
};

// The taps of a box of `length` along the direction (c, s): one sample per
// pixel along the longer axis, each split between the two pixels that
// straddle the line across the other axis. The end samples carry the part of
// a pixel that the box still covers, so the weights sum to the length.
std::vector<Tap> lineTaps(double length, double c, double s) {
  const bool alongX = std::fabs(c) >= std::fabs(s);
  const double slope = alongX ? s / c : c / s;
  const double half = 0.5 * length * (alongX ? std::fabs(c) : std::fabs(s));
  const int reach = std::max(0, static_cast<int>(std::ceil(half - 0.5)));
  std::vector<Tap> taps;
  double total = 0;
  for (int k = -reach; k <= reach; ++k) {
    const double weight = std::min(k + 0.5, half) - std::max(k - 0.5, -half);
    if (!(weight > 0)) continue;
    const double across = k * slope;
    const double low = std::floor(across);
    const double fraction = across - low;
    const int lowIndex = static_cast<int>(low);
    for (const auto& [offset, part] : {std::pair{lowIndex, 1 - fraction}, std::pair{lowIndex + 1, fraction}}) {
      if (!(part * weight > 0)) continue;
      taps.push_back(alongX ? Tap{k, offset, static_cast<float>(part * weight)}
                            : Tap{offset, k, static_cast<float>(part * weight)});
      total += part * weight;
    }
  }
  for (Tap& tap : taps) tap.weight = static_cast<float>(tap.weight / total);
  return taps;
}

// Separable Gaussian weights of sigma, from the centre outwards, summing to 1
// over both sides.
std::vector<float> gaussianWeights(double sigma) {
  const int reach = static_cast<int>(std::ceil(3 * sigma));
  std::vector<float> w(static_cast<std::size_t>(reach) + 1);
  double total = 0;
  for (int i = 0; i <= reach; ++i) {
    const double v = std::exp(-0.5 * i * i / (sigma * sigma));
    w[i] = static_cast<float>(v);
    total += i == 0 ? v : 2 * v;
  }
  for (float& v : w) v = static_cast<float>(v / total);
  return w;
}

// A box of `length` pixels centred on a pixel, along an axis: `reach` whole
// pixels on each side, then one more each side at `endWeight`; all scaled by
// `scale` so that the weights sum to 1.
struct BoxShape {
  int reach = 0;
  float endWeight = 0;
  float scale = 1;
  static BoxShape of(double length) {
    const double half = 0.5 * length;
    if (half <= 0.5) return {};
    const int reach = static_cast<int>(std::floor(half - 0.5));
    return {reach, static_cast<float>(half - (reach + 0.5)), static_cast<float>(1 / length)};
  }
};

std::expected<Image, ImageError> boxAlongRows(const Image& image, BoxShape box, const PixelRect& region,
                                              WorkerPool& pool) {
  const int pad = box.reach + 1, window = 2 * box.reach + 1;
  const Vec4 end = detail::splat(box.endWeight), scale = detail::splat(box.scale);
  return detail::renderRows(
      region, pool, [&] { return std::vector<Rgba>(static_cast<std::size_t>(region.width + 2 * pad)); },
      [&](int y, Rgba* out, std::vector<Rgba>& row) {
        readRow(image, y, region.x - pad, region.width + 2 * pad, row.data());
        const auto p = [&](int i) { return detail::load(row[i]); };
        // Window of x: row[x + 1 ... x + window]; its ends: row[x], row[x + window + 1].
        Vec4 sum = detail::splat(0);
        for (int i = 1; i <= window; ++i) sum += p(i);
        for (int x = 0; x < region.width; ++x) {
          detail::store(out[x], (sum + end * (p(x) + p(x + window + 1))) * scale);
          sum += p(x + window + 1) - p(x + 1);
        }
      });
}

std::expected<Image, ImageError> boxAlongColumns(const Image& image, BoxShape box, const PixelRect& region,
                                                 WorkerPool& pool) {
  const int reach = box.reach;
  const Vec4 end = detail::splat(box.endWeight), scale = detail::splat(box.scale);
  struct Scratch {
    detail::RowRing rows;
    std::vector<Vec4> sum;
    int next = 0;  // the row whose sum is in `sum`; none yet while below the band
  };
  return detail::renderRows(
      region, pool,
      [&] {
        return Scratch{detail::RowRing(image, region.x, region.width, 0, 2 * reach + 3),
                       std::vector<Vec4>(static_cast<std::size_t>(region.width)), std::numeric_limits<int>::min()};
      },
      [&](int y, Rgba* out, Scratch& s) {
        s.rows.load(y - reach - 1, y + reach + 1);
        if (s.next != y) {
          std::fill(s.sum.begin(), s.sum.end(), detail::splat(0));
          for (int k = -reach; k <= reach; ++k) {
            const Rgba* r = s.rows.row(y + k);
            for (int x = 0; x < region.width; ++x) s.sum[x] += detail::load(r[x]);
          }
        }
        const Rgba *below = s.rows.row(y - reach - 1), *above = s.rows.row(y + reach + 1), *leaving = s.rows.row(y - reach);
        for (int x = 0; x < region.width; ++x) {
          const Vec4 a = detail::load(above[x]);
          detail::store(out[x], (s.sum[x] + end * (detail::load(below[x]) + a)) * scale);
          s.sum[x] += a - detail::load(leaving[x]);
        }
        s.next = y + 1;
      });
}

}  // namespace

PixelRect grownBy(const PixelRect& extent, double amount) {
  if (!(amount > 0) || extent.isEmpty() || extent.isInfinite()) return extent;
  const int g = static_cast<int>(std::ceil(std::min(amount, kLongest)));
  return {extent.x - g, extent.y - g, extent.width + 2 * g, extent.height + 2 * g};
}

Image applyBlur(const Image& image, bool spread, double reach, const AreaFilter& filter) {
  if (image.isEmpty() || image.isInfinite()) return image;
  const PixelRect extent = image.extent();
  if (!spread) {
    auto out = filter(clampToExtent(image), extent);
    return out ? crop(*out, extent) : image;
  }
  const PixelRect region = grownBy(extent, reach);
  if (!checkCanvasRect(region)) return image;
  auto out = filter(image, region);
  return out ? crop(*out, region) : image;
}

std::expected<Image, ImageError> motionBlur(const Image& image, double length, double radians,
                                            const PixelRect& region, WorkerPool& pool) {
  if (auto ok = checkCanvasRect(region); !ok) return std::unexpected(ok.error());
  if (image.isEmpty() || region.isEmpty()) return Image{};
  if (!(length > 0) || !std::isfinite(radians)) return crop(image, region);
  const double c = std::cos(radians), s = std::sin(radians);
  const double clipped = std::min(length, kLongestMotion);
  // Along an axis (to rounding) the box runs as a running sum, whatever its length.
  if (std::fabs(s) < 1e-9 * std::fabs(c)) return boxAlongRows(image, BoxShape::of(clipped), region, pool);
  if (std::fabs(c) < 1e-9 * std::fabs(s)) return boxAlongColumns(image, BoxShape::of(clipped), region, pool);
  const std::vector<Tap> taps = lineTaps(clipped, c, s);
  int pad = 0, lowRow = 0, highRow = 0;
  for (const Tap& t : taps) {
    pad = std::max(pad, std::abs(t.dx));
    lowRow = std::min(lowRow, t.dy);
    highRow = std::max(highRow, t.dy);
  }
  return detail::renderRows(
      region, pool, [&] { return detail::RowRing(image, region.x, region.width, pad, highRow - lowRow + 1); },
      [&](int y, Rgba* out, detail::RowRing& rows) {
        rows.load(y + lowRow, y + highRow);
        std::fill(out, out + region.width, Rgba{});
        for (const Tap& t : taps) {
          const Rgba* source = rows.row(y + t.dy) + pad + t.dx;
          const Vec4 w = detail::splat(t.weight);
          for (int x = 0; x < region.width; ++x) detail::store(out[x], detail::load(out[x]) + detail::load(source[x]) * w);
        }
      });
}

std::expected<Image, ImageError> sharpenLuminance(const Image& image, double sharpness, WorkerPool& pool) {
  if (image.isInfinite()) return std::unexpected(ImageError::unbounded);
  if (image.isEmpty()) return Image{};
  const PixelRect rect = image.extent();
  auto canvas = Canvas::from(image, rect, pool);
  if (!canvas) return std::unexpected(canvas.error());
  const int width = rect.width;
  std::vector<float> luma, across;
  try {
    luma.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(rect.height));
    across.resize(luma.size());
  } catch (const std::bad_alloc&) {
    return std::unexpected(ImageError::outOfMemory);
  }
  const std::vector<float> w = gaussianWeights(kSharpenSigma);
  const int reach = static_cast<int>(w.size()) - 1;
  const auto plane = [&](std::vector<float>& p, int y) {
    return p.data() + static_cast<std::ptrdiff_t>(std::clamp(y, rect.y, rect.maxY() - 1) - rect.y) * width;
  };
  // Luma, then its blur along each row, the row's ends repeated.
  pool.forEachBand(rect.y, rect.maxY(), width, [&](int first, int last) {
    std::vector<float> padded(static_cast<std::size_t>(width + 2 * reach));
    for (int y = first; y < last; ++y) {
      const Rgba* row = canvas->row(y);
      float* l = plane(luma, y);
      for (int x = 0; x < width; ++x) l[x] = detail::luma(row[x].r, row[x].g, row[x].b);
      std::fill(padded.begin(), padded.begin() + reach, l[0]);
      std::copy(l, l + width, padded.begin() + reach);
      std::fill(padded.begin() + reach + width, padded.end(), l[width - 1]);
      float* a = plane(across, y);
      for (int x = 0; x < width; ++x) a[x] = w[0] * padded[x + reach];
      for (int i = 1; i <= reach; ++i)
        for (int x = 0; x < width; ++x) a[x] += w[i] * (padded[x + reach - i] + padded[x + reach + i]);
    }
  });
  // Down the columns (rows past the ends repeat), and the detail the blur
  // took away added back × sharpness.
  const auto amount = static_cast<float>(sharpness);
  pool.forEachBand(rect.y, rect.maxY(), width, [&](int first, int last) {
    std::vector<float> blurred(static_cast<std::size_t>(width));
    for (int y = first; y < last; ++y) {
      const float* centre = plane(across, y);
      for (int x = 0; x < width; ++x) blurred[x] = w[0] * centre[x];
      for (int i = 1; i <= reach; ++i) {
        const float *below = plane(across, y - i), *above = plane(across, y + i);
        for (int x = 0; x < width; ++x) blurred[x] += w[i] * (below[x] + above[x]);
      }
      Rgba* row = canvas->row(y);
      const float* l = plane(luma, y);
      for (int x = 0; x < width; ++x) {
        // Scaled by coverage, so that no colour appears where the picture
        // is transparent.
        const float delta = amount * (l[x] - blurred[x]) * row[x].a;
        row[x].r += delta, row[x].g += delta, row[x].b += delta;
      }
    }
  });
  return std::move(*canvas).image();
}

}  // namespace orvane::render
