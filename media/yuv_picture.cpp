#include "media/yuv_picture.hpp"

#include <algorithm>
#include <array>
#if defined(__SSE2__)
#include <immintrin.h>
#endif

#include "media/frame_converter.hpp"

namespace orvane::media {

namespace {

// The contribution of each 8-bit code to the colour channels.
struct Tables {
  std::array<float, 256> luma, redFromCr, greenFromCb, greenFromCr, blueFromCb;
};

void fillTables(const ColourCoding& coding, Tables& t) {
  const double kr = coding.kr, kb = coding.kb, kg = 1 - kr - kb;
  for (int code = 0; code < 256; ++code) {
    const double y = coding.fullRange ? code / 255.0 : (code - 16) / 219.0;
    const double c = coding.fullRange ? (code - 128) / 255.0 : (code - 128) / 224.0;
    t.luma[code] = static_cast<float>(y);
    t.redFromCr[code] = static_cast<float>(2 * (1 - kr) * c);
    t.blueFromCb[code] = static_cast<float>(2 * (1 - kb) * c);
    t.greenFromCb[code] = static_cast<float>(-2 * kb * (1 - kb) / kg * c);
    t.greenFromCr[code] = static_cast<float>(-2 * kr * (1 - kr) / kg * c);
  }
}

}  // namespace

bool isPlanar420(const AVFrame& frame) {
  return (frame.format == AV_PIX_FMT_YUV420P || frame.format == AV_PIX_FMT_YUVJ420P) && frame.width > 0 &&
         frame.height > 0;
}

std::optional<render::Image> yuvPicture(const AVFrame& frame, render::WorkerPool& pool) {
  if (!isPlanar420(frame)) return std::nullopt;
  const int width = frame.width, height = frame.height;
  auto canvas = render::Canvas::makeUnfilled({0, 0, width, height});
  if (!canvas) return std::nullopt;
  Tables tables;
  fillTables(colourCodingOf(frame), tables);
#if defined(__SSE2__)
  const __m128 zero = _mm_setzero_ps(), one = _mm_set1_ps(1.0f);
#endif
  pool.forEachBand(0, height, width, [&](int first, int last) {
    for (int y = first; y < last; ++y) {
      const int source = height - 1 - y;  // the picture is stored from the top
      const std::uint8_t* luma = frame.data[0] + static_cast<std::ptrdiff_t>(source) * frame.linesize[0];
      const std::uint8_t* cb = frame.data[1] + static_cast<std::ptrdiff_t>(source / 2) * frame.linesize[1];
      const std::uint8_t* cr = frame.data[2] + static_cast<std::ptrdiff_t>(source / 2) * frame.linesize[2];
      render::Rgba* out = canvas->row(y);
      for (int x = 0; x < width; ++x) {
        const float l = tables.luma[luma[x]];
        const int u = cb[x >> 1], v = cr[x >> 1];
#if defined(__SSE2__)
        const __m128 pixel = _mm_setr_ps(l + tables.redFromCr[v], l + tables.greenFromCb[u] + tables.greenFromCr[v],
                                         l + tables.blueFromCb[u], 1.0f);
        // Streamed past the cache: a picture is far larger than it, and is
        // read later by another pass, so reading the lines in first would
        // only double the memory traffic.
        _mm_stream_ps(reinterpret_cast<float*>(out + x), _mm_min_ps(_mm_max_ps(pixel, zero), one));
#else
        const auto unit = [](float c) { return c < 0 ? 0.0f : (c > 1 ? 1.0f : c); };
        out[x] = {unit(l + tables.redFromCr[v]), unit(l + tables.greenFromCb[u] + tables.greenFromCr[v]),
                  unit(l + tables.blueFromCb[u]), 1.0f};
#endif
      }
    }
#if defined(__SSE2__)
    _mm_sfence();
#endif
  });
  return std::move(*canvas).image();
}

}  // namespace orvane::media
