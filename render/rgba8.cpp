#include "render/rgba8.hpp"

#include <algorithm>

#include "render/samplers.hpp"

namespace orvane::render {

namespace {

// Whether rows of 4-byte pixels fit in a buffer of size bytes.
bool fits(std::size_t size, int width, int height, std::size_t bytesPerRow) {
  const std::size_t rowBytes = static_cast<std::size_t>(width) * 4;
  if (height <= 0 || width <= 0) return true;
  return bytesPerRow >= rowBytes && (static_cast<std::size_t>(height) - 1) * bytesPerRow + rowBytes <= size;
}

void writePixel(const Rgba& p, Rgba8Format format, std::uint8_t* out) {
  float r = p.r, g = p.g, b = p.b;
  if (format.alpha == AlphaForm::straight) {
    const float inverse = p.a > 0 ? 1.0f / p.a : 0.0f;
    r *= inverse;
    g *= inverse;
    b *= inverse;
  }
  if (format.order == ChannelOrder::bgra) std::swap(r, b);
  out[0] = toByte(r);
  out[1] = toByte(g);
  out[2] = toByte(b);
  out[3] = toByte(p.a);
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

std::uint8_t toByte(float component) {
  const float c = component > 0 ? std::min(component, 1.0f) : 0.0f;
  return static_cast<std::uint8_t>(c * 255.0f + 0.5f);
}

std::expected<void, ImageError> writeRgba8(const Image& image, const PixelRect& region, std::span<std::uint8_t> out,
                                           std::size_t bytesPerRow, Rgba8Format format, WorkerPool& pool) {
  if (auto ok = checkCanvasRect(region); !ok) return ok;
  if (region.isEmpty()) return {};
  if (!fits(out.size(), region.width, region.height, bytesPerRow)) return std::unexpected(ImageError::bufferTooSmall);
  if (image.isEmpty()) {
    for (int row = 0; row < region.height; ++row) {
      std::fill_n(out.data() + row * bytesPerRow, static_cast<std::size_t>(region.width) * 4, std::uint8_t{0});
    }
    return {};
  }
  const detail::SourceView view = detail::SourceView::of(image);
  const int ox = image.buffer()->rect.x, oy = image.buffer()->rect.y;
  pool.forEachBand(region.y, region.maxY(), region.width, [&](int first, int last) {
    for (int y = first; y < last; ++y) {
      std::uint8_t* row = out.data() + static_cast<std::size_t>(region.maxY() - 1 - y) * bytesPerRow;
      for (int x = 0; x < region.width; ++x) {
        Rgba p;
        detail::store(p, view.texel(region.x + x - ox, y - oy));
        writePixel(p, format, row + 4 * x);
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
  if (!fits(data.size(), width, height, bytesPerRow)) return std::unexpected(ImageError::bufferTooSmall);
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
