#include "render/rgba8.hpp"

#include <algorithm>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "render/samplers.hpp"

namespace orvane::render {

namespace {

template <bool straight, bool bgra>
inline void writePixel(const Rgba& p, std::uint8_t* out) {
  float r = p.r, g = p.g, b = p.b;
  // Opaque pixels, the common case of a frame, need no division.
  if (straight && p.a != 1.0f) {
    const float inverse = p.a > 0 ? 1.0f / p.a : 0.0f;
    r *= inverse;
    g *= inverse;
    b *= inverse;
  }
  if (bgra) std::swap(r, b);
  out[0] = toByte(r);
  out[1] = toByte(g);
  out[2] = toByte(b);
  out[3] = toByte(p.a);
}

#if defined(__SSE2__)
// Four components of one pixel as bytes in the low lanes: straight colour
// when asked (alpha kept), channels swapped for BGRA, clamped to 0 ... 1
// (NaN as 0), × 255 and rounded, as toByte does.
template <bool straight, bool bgra>
inline __m128i scaledPixel(__m128 p) {
  if (straight) {
    const __m128 a = _mm_shuffle_ps(p, p, _MM_SHUFFLE(3, 3, 3, 3));
    const __m128 inverse = _mm_and_ps(_mm_cmpgt_ps(a, _mm_setzero_ps()), _mm_div_ps(_mm_set1_ps(1.0f), a));
    const __m128 alphaLane = _mm_castsi128_ps(_mm_set_epi32(-1, 0, 0, 0));
    p = _mm_or_ps(_mm_andnot_ps(alphaLane, _mm_mul_ps(p, inverse)), _mm_and_ps(alphaLane, p));
  }
  if (bgra) p = _mm_shuffle_ps(p, p, _MM_SHUFFLE(3, 0, 1, 2));
  // max(p, 0) gives 0 for NaN: the second operand wins when one is NaN.
  const __m128 clamped = _mm_min_ps(_mm_max_ps(p, _mm_setzero_ps()), _mm_set1_ps(1.0f));
  return _mm_cvttps_epi32(_mm_add_ps(_mm_mul_ps(clamped, _mm_set1_ps(255.0f)), _mm_set1_ps(0.5f)));
}

template <bool straight, bool bgra>
inline void writeFour(const Rgba* in, std::uint8_t* out) {
  const __m128i p0 = scaledPixel<straight, bgra>(_mm_load_ps(&in[0].r));
  const __m128i p1 = scaledPixel<straight, bgra>(_mm_load_ps(&in[1].r));
  const __m128i p2 = scaledPixel<straight, bgra>(_mm_load_ps(&in[2].r));
  const __m128i p3 = scaledPixel<straight, bgra>(_mm_load_ps(&in[3].r));
  const __m128i bytes = _mm_packus_epi16(_mm_packs_epi32(p0, p1), _mm_packs_epi32(p2, p3));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), bytes);
}

template <bool straight, bool bgra>
void writeRow(const Rgba* in, int count, std::uint8_t* out) {
  int x = 0;
  for (; x + 4 <= count; x += 4) {
    // Opaque pixels, most of a frame, are the same straight or not.
    if (!straight || (in[x].a == 1.0f && in[x + 1].a == 1.0f && in[x + 2].a == 1.0f && in[x + 3].a == 1.0f)) {
      writeFour<false, bgra>(in + x, out + 4 * x);
    } else {
      writeFour<true, bgra>(in + x, out + 4 * x);
    }
  }
  for (; x < count; ++x) writePixel<straight, bgra>(in[x], out + 4 * x);
}
#else
template <bool straight, bool bgra>
void writeRow(const Rgba* in, int count, std::uint8_t* out) {
  for (int x = 0; x < count; ++x) writePixel<straight, bgra>(in[x], out + 4 * x);
}
#endif

using RowWriter = void (*)(const Rgba*, int, std::uint8_t*);

RowWriter rowWriterFor(Rgba8Format format) {
  const bool straight = format.alpha == AlphaForm::straight, bgra = format.order == ChannelOrder::bgra;
  if (straight) return bgra ? &writeRow<true, true> : &writeRow<true, false>;
  return bgra ? &writeRow<false, true> : &writeRow<false, false>;
}

Rgba readPixel(const std::uint8_t* in, Rgba8Format format) {
  constexpr float kScale = 1.0f / 255.0f;
  float r = in[0] * kScale, g = in[1] * kScale, b = in[2] * kScale;
  const float a = in[3] * kScale;
  if (format.order == ChannelOrder::bgra) std::swap(r, b);
  if (format.alpha == AlphaForm::straight) return {r * a, g * a, b * a, a};
  return {r, g, b, a};
}

}  // namespace

bool rgba8Fits(std::size_t size, int width, int height, std::size_t bytesPerRow) {
  const std::size_t rowBytes = static_cast<std::size_t>(width) * 4;
  if (height <= 0 || width <= 0) return true;
  return bytesPerRow >= rowBytes && (static_cast<std::size_t>(height) - 1) * bytesPerRow + rowBytes <= size;
}

void writeRgba8Row(const Rgba* pixels, int count, std::uint8_t* out, Rgba8Format format) {
  rowWriterFor(format)(pixels, count, out);
}

std::expected<void, ImageError> writeRgba8(const Image& image, const PixelRect& region, std::span<std::uint8_t> out,
                                           std::size_t bytesPerRow, Rgba8Format format, WorkerPool& pool) {
  if (auto ok = checkCanvasRect(region); !ok) return ok;
  if (region.isEmpty()) return {};
  if (!rgba8Fits(out.size(), region.width, region.height, bytesPerRow)) {
    return std::unexpected(ImageError::bufferTooSmall);
  }
  if (image.isEmpty()) {
    for (int row = 0; row < region.height; ++row) {
      std::fill_n(out.data() + row * bytesPerRow, static_cast<std::size_t>(region.width) * 4, std::uint8_t{0});
    }
    return {};
  }
  const detail::SourceView view = detail::SourceView::of(image);
  const PixelBuffer& buffer = *image.buffer();
  const int ox = buffer.rect.x, oy = buffer.rect.y;
  const RowWriter writeRowOf = rowWriterFor(format);
  // A frame's region lies inside the stored pixels: rows are read in place.
  const bool stored = image.dataRect().contains(region) && image.extent().contains(region);
  pool.forEachBand(region.y, region.maxY(), region.width, [&](int first, int last) {
    Rgba line[256];
    for (int y = first; y < last; ++y) {
      std::uint8_t* row = out.data() + static_cast<std::size_t>(region.maxY() - 1 - y) * bytesPerRow;
      if (stored) {
        writeRowOf(buffer.row(y) + (region.x - ox), region.width, row);
        continue;
      }
      for (int x = 0; x < region.width; x += 256) {
        const int count = std::min(256, region.width - x);
        for (int i = 0; i < count; ++i) detail::store(line[i], view.texel(region.x + x + i - ox, y - oy));
        writeRowOf(line, count, row + 4 * x);
      }
    }
  });
  return {};
}

std::expected<std::vector<std::uint8_t>, ImageError> toRgba8(const Image& image, const PixelRect& region,
                                                             Rgba8Format format, WorkerPool& pool) {
  if (auto ok = checkCanvasRect(region); !ok) return std::unexpected(ok.error());
  std::vector<std::uint8_t> out(static_cast<std::size_t>(region.area()) * 4);
  if (auto ok = writeRgba8(image, region, out, static_cast<std::size_t>(std::max(region.width, 0)) * 4, format, pool);
      !ok) {
    return std::unexpected(ok.error());
  }
  return out;
}

std::expected<Image, ImageError> imageFromRgba8(std::span<const std::uint8_t> data, int width, int height,
                                                std::size_t bytesPerRow, Rgba8Format format, WorkerPool& pool) {
  if (width <= 0 || height <= 0) return Image{};
  const PixelRect rect{0, 0, width, height};
  if (auto ok = checkCanvasRect(rect); !ok) return std::unexpected(ok.error());
  if (!rgba8Fits(data.size(), width, height, bytesPerRow)) return std::unexpected(ImageError::bufferTooSmall);
  auto canvas = Canvas::makeUnfilled(rect);
  if (!canvas) return std::unexpected(canvas.error());
  pool.forEachBand(0, height, width, [&](int first, int last) {
    for (int y = first; y < last; ++y) {
      const std::uint8_t* in = data.data() + static_cast<std::size_t>(height - 1 - y) * bytesPerRow;
      Rgba* row = canvas->row(y);
      for (int x = 0; x < width; ++x) row[x] = readPixel(in + 4 * x, format);
    }
  });
  return std::move(*canvas).image();
}

}  // namespace orvane::render
