#include "render/image.hpp"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <new>

#include "core/numeric.hpp"

namespace orvane::render {

namespace {

// The stored span [lo, hi] (inclusive) that the points of [e0, e1] read when
// they clamp into [d0, d1]: the overlap, or the end of d nearest to e.
void narrowAxis(int d0, int d1, int e0, int e1, int& lo, int& hi) {
  lo = std::max(d0, e0);
  hi = std::min(d1, e1);
  if (lo <= hi) return;
  lo = hi = d1 < e0 ? d1 : d0;
}

// The part of data that points of extent can read. Reading through the result
// gives every point of extent the same value as reading through data.
PixelRect narrowedData(const PixelRect& data, const PixelRect& extent) {
  int x0, x1, y0, y1;
  narrowAxis(data.x, data.maxX() - 1, extent.x, extent.maxX() - 1, x0, x1);
  narrowAxis(data.y, data.maxY() - 1, extent.y, extent.maxY() - 1, y0, y1);
  return {x0, y0, x1 - x0 + 1, y1 - y0 + 1};
}

std::expected<std::shared_ptr<PixelBuffer>, ImageError> allocateBuffer(const PixelRect& rect) {
  try {
    auto buffer = std::make_shared<PixelBuffer>();
    buffer->rect = rect;
    buffer->capacity = static_cast<std::size_t>(rect.area());
    buffer->pixels = makePixelStorage(buffer->capacity);
    if (!buffer->pixels) return std::unexpected(ImageError::outOfMemory);
    return buffer;
  } catch (const std::bad_alloc&) {
    return std::unexpected(ImageError::outOfMemory);
  }
}

}  // namespace

std::string_view message(ImageError error) {
  switch (error) {
    case ImageError::tooLarge: return "The picture is larger than 16384 pixels on a side.";
    case ImageError::unbounded: return "The picture has no bounds; it must be cropped first.";
    case ImageError::outOfMemory: return "There is not enough memory for the picture.";
    case ImageError::bufferTooSmall: return "The output buffer is too small for the picture.";
  }
  return {};
}

std::optional<int> bitmapSide(double units) {
  if (!std::isfinite(units)) return std::nullopt;
  const double pixels = std::max(1.0, core::roundHalfAway(units));
  if (pixels > kMaxImageSide) return std::nullopt;
  return static_cast<int>(pixels);
}

std::expected<void, ImageError> checkCanvasRect(const PixelRect& rect) {
  if (rect.isEmpty()) return {};
  if (rect.isInfinite()) return std::unexpected(ImageError::unbounded);
  if (rect.width > kMaxImageSide || rect.height > kMaxImageSide || rect.x < -kMaxImagePosition ||
      rect.y < -kMaxImagePosition || rect.maxX() > kMaxImagePosition || rect.maxY() > kMaxImagePosition) {
    return std::unexpected(ImageError::tooLarge);
  }
  return {};
}

Image Image::constant(Rgba colour) {
  auto buffer = std::make_shared<PixelBuffer>();
  buffer->rect = {0, 0, 1, 1};
  buffer->pixels = makePixelStorage(1);
  if (!buffer->pixels) throw std::bad_alloc();
  buffer->pixels[0] = colour;
  return Image(std::move(buffer), {0, 0, 1, 1}, PixelRect::infinite());
}

Rgba Image::pixelAt(int x, int y) const {
  if (!extent_.contains(x, y)) return {};
  const int cx = std::clamp(x, data_.x, data_.maxX() - 1);
  const int cy = std::clamp(y, data_.y, data_.maxY() - 1);
  return buffer_->row(cy)[cx - buffer_->rect.x];
}

Image crop(const Image& image, const PixelRect& rect) {
  const PixelRect extent = image.extent_.intersection(rect);
  if (extent.isEmpty()) return {};
  return Image(image.buffer_, narrowedData(image.data_, extent), extent);
}

Image clampToExtent(const Image& image) {
  if (image.isEmpty()) return {};
  return Image(image.buffer_, image.data_, PixelRect::infinite());
}

void readRow(const Image& image, int y, int x, int count, Rgba* out) {
  const PixelRect extent = image.extent();
  const PixelRect data = image.dataRect();
  if (count <= 0) return;
  if (y < extent.y || y >= extent.maxY()) {
    std::fill(out, out + count, Rgba{});
    return;
  }
  const PixelBuffer& buffer = *image.buffer();
  const Rgba* source = buffer.row(std::clamp(y, data.y, data.maxY() - 1)) - buffer.rect.x;
  // Five runs, left to right: before the extent, left edge repeated, stored
  // pixels, right edge repeated, after the extent.
  const int end = x + count;
  const int stops[5] = {extent.x, data.x, data.maxX(), extent.maxX(), end};
  int at = x;
  for (int run = 0; run < 5 && at < end; ++run) {
    const int stop = std::clamp(stops[run], at, end);
    Rgba* first = out + (at - x);
    Rgba* last = out + (stop - x);
    switch (run) {
      case 0:
      case 4: std::fill(first, last, Rgba{}); break;
      case 1: std::fill(first, last, source[data.x]); break;
      case 2: std::memcpy(static_cast<void*>(first), source + at, sizeof(Rgba) * static_cast<std::size_t>(stop - at)); break;
      case 3: std::fill(first, last, source[data.maxX() - 1]); break;
    }
    at = stop;
  }
}

std::expected<Canvas, ImageError> Canvas::make(const PixelRect& rect, Rgba fill, WorkerPool& pool) {
  if (auto ok = checkCanvasRect(rect); !ok) return std::unexpected(ok.error());
  if (rect.isEmpty()) return Canvas{};
  auto buffer = allocateBuffer(rect);
  if (!buffer) return std::unexpected(buffer.error());
  PixelBuffer& pixels = **buffer;
  pool.forEachBand(rect.y, rect.maxY(), rect.width, [&](int first, int last) {
    std::fill(pixels.row(first), pixels.row(last), fill);
  });
  return Canvas(std::move(*buffer));
}

std::expected<Canvas, ImageError> Canvas::makeUnfilled(const PixelRect& rect) {
  if (auto ok = checkCanvasRect(rect); !ok) return std::unexpected(ok.error());
  if (rect.isEmpty()) return Canvas{};
  auto buffer = allocateBuffer(rect);
  if (!buffer) return std::unexpected(buffer.error());
  return Canvas(std::move(*buffer));
}

std::expected<void, ImageError> Canvas::reuseFor(const PixelRect& rect) {
  if (auto ok = checkCanvasRect(rect); !ok) return ok;
  if (buffer_ && buffer_.use_count() == 1 && buffer_->capacity >= static_cast<std::size_t>(rect.area())) {
    buffer_->rect = rect;
    return {};
  }
  auto made = makeUnfilled(rect);
  if (!made) return std::unexpected(made.error());
  *this = std::move(*made);
  return {};
}

std::expected<Canvas, ImageError> Canvas::from(Image image, const PixelRect& rect, WorkerPool& pool) {
  if (auto ok = checkCanvasRect(rect); !ok) return std::unexpected(ok.error());
  if (rect.isEmpty()) return Canvas{};
  if (image.buffer_ && image.buffer_.use_count() == 1 && image.buffer_->rect == rect && image.data_ == rect &&
      image.extent_ == rect) {
    // Pairs with the release of the last other owner, so that its reads of the
    // pixels happen before our writes. Every buffer is made writable and only
    // handed out as const, so taking the constness away here is sound.
    std::atomic_thread_fence(std::memory_order_acquire);
    return Canvas(std::const_pointer_cast<PixelBuffer>(std::move(image.buffer_)));
  }
  auto buffer = allocateBuffer(rect);
  if (!buffer) return std::unexpected(buffer.error());
  PixelBuffer& pixels = **buffer;
  pool.forEachBand(rect.y, rect.maxY(), rect.width, [&](int first, int last) {
    for (int y = first; y < last; ++y) readRow(image, y, rect.x, rect.width, pixels.row(y));
  });
  return Canvas(std::move(*buffer));
}

std::expected<Image, ImageError> mapStoredPixels(Image image, void (*function)(Rgba*, int, void*), void* context,
                                                 WorkerPool& pool) {
  if (image.isEmpty()) return Image{};
  const PixelRect data = image.data_, extent = image.extent_;
  auto canvas = Canvas::from(Image(std::move(image.buffer_), data, data), data, pool);
  if (!canvas) return std::unexpected(canvas.error());
  pool.forEachBand(data.y, data.maxY(), data.width, [&](int first, int last) {
    for (int y = first; y < last; ++y) function(canvas->row(y), data.width, context);
  });
  Image stored = std::move(*canvas).image();
  return Image(std::move(stored.buffer_), data, extent);
}

Image Canvas::image() && {
  if (!buffer_) return {};
  const PixelRect rect = buffer_->rect;
  return Image(std::move(buffer_), rect, rect);
}

}  // namespace orvane::render
