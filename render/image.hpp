#pragma once
// Pictures of the image engine.
//
// `Image` is a value: a picture with an extent in the y-up image space,
// premultiplied RGBA floats, its pixels shared copy-on-write so that copying
// or cropping it costs nothing. Outside its extent a picture is transparent.
// An image may have an infinite extent (a constant colour, or a picture
// clamped to its extent); such an image must be cropped before the operations
// that produce a new picture accept it.
//
// `Canvas` is the one writable form: a pixel rectangle owned by one thread,
// which the kernels fill (splitting its rows over the worker threads during a
// call) and which becomes an `Image` when done.
//
// Images may be read from any number of threads at once; one `Image` or
// `Canvas` object is changed by one thread at a time.

#include <cstddef>
#include <expected>
#include <memory>
#include <optional>
#include <string_view>
#include <type_traits>

#include "render/pixel_memory.hpp"
#include "render/pixel_rect.hpp"
#include "render/rgba.hpp"
#include "render/worker_pool.hpp"

namespace orvane::render {

// The largest side of a picture that the engine makes.
inline constexpr int kMaxImageSide = 16384;
// Pictures lie within ±kMaxImagePosition on both axes.
inline constexpr int kMaxImagePosition = PixelRect::kInfiniteHalf / 2;

enum class ImageError {
  tooLarge,      // a side above kMaxImageSide, or placed too far out
  unbounded,     // an infinite image where a finite one is needed
  outOfMemory,   // the pixels could not be allocated
  bufferTooSmall // an output buffer does not hold the pixels asked for
};

// One sentence for people.
std::string_view message(ImageError error);

// The pixels of a bitmap side that stands for `units` layer units: rounded
// half away from zero, at least 1; none when not finite or past
// kMaxImageSide.
std::optional<int> bitmapSide(double units);

// Whether a picture of this rectangle may be made (finite, sides and position
// in range).
std::expected<void, ImageError> checkCanvasRect(const PixelRect& rect);

// Stored pixels: a rectangle of them, rows from the bottom up.
struct PixelBuffer {
  PixelRect rect;
  PixelStorage pixels;
  std::size_t capacity = 0;  // pixels allocated; at least rect.area()

  // The pixel at (rect.x, y).
  Rgba* row(int y) { return pixels.get() + static_cast<std::ptrdiff_t>(y - rect.y) * rect.width; }
  const Rgba* row(int y) const { return pixels.get() + static_cast<std::ptrdiff_t>(y - rect.y) * rect.width; }
};

class Image {
 public:
  // The empty image: transparent everywhere, empty extent.
  Image() = default;
  // An image of one colour (premultiplied) everywhere: infinite extent.
  static Image constant(Rgba colour);

  PixelRect extent() const { return extent_; }
  bool isEmpty() const { return extent_.isEmpty(); }
  bool isInfinite() const { return extent_.isInfinite(); }

  // The value at a pixel: transparent outside the extent; inside it, the
  // stored pixel nearest to it (stored pixels repeat past their edges).
  Rgba pixelAt(int x, int y) const;

  // The stored pixels and the part of them this image reads; null when empty.
  // Kernels read through these: a point p of the extent has the value of the
  // stored pixel at p clamped into dataRect().
  const PixelBuffer* buffer() const { return buffer_.get(); }
  PixelRect dataRect() const { return data_; }

  bool sharesStorageWith(const Image& other) const { return buffer_ && buffer_ == other.buffer_; }

  // Keeps what lies inside rect; the extent becomes the intersection. No
  // pixels are copied.
  friend Image crop(const Image& image, const PixelRect& rect);
  // The edge pixels repeated outward without end: an infinite image. No
  // pixels are copied.
  friend Image clampToExtent(const Image& image);

 private:
  friend std::expected<Image, ImageError> mapStoredPixels(Image image, void (*function)(Rgba*, int, void*),
                                                          void* context, WorkerPool& pool);
  friend class Canvas;
  Image(std::shared_ptr<const PixelBuffer> buffer, PixelRect data, PixelRect extent)
      : buffer_(std::move(buffer)), data_(data), extent_(extent) {}

  std::shared_ptr<const PixelBuffer> buffer_;
  PixelRect data_;
  PixelRect extent_;
};

Image crop(const Image& image, const PixelRect& rect);
Image clampToExtent(const Image& image);

// What mapPixels runs: function(pixels, count, context) over the stored rows.
std::expected<Image, ImageError> mapStoredPixels(Image image, void (*function)(Rgba*, int, void*), void* context,
                                                 WorkerPool& pool);

// The values of image at the pixels x ..< x + count of row y, into out.
void readRow(const Image& image, int y, int x, int count, Rgba* out);

// A pointwise operation: f(pixels, count) rewrites runs of stored pixels in
// place, on the worker threads. The extent stays as it is, so this is exact
// for infinite images too (a constant changes one stored pixel). The pixels
// are rewritten where they are when image was their only owner.
template <class F>
std::expected<Image, ImageError> mapPixels(Image image, F&& f, WorkerPool& pool = WorkerPool::shared()) {
  using Fn = std::remove_reference_t<F>;
  return mapStoredPixels(
      std::move(image), [](Rgba* pixels, int count, void* context) { (*static_cast<Fn*>(context))(pixels, count); },
      const_cast<void*>(static_cast<const void*>(&f)), pool);
}

class Canvas {
 public:
  // An empty canvas, covering no pixels.
  Canvas() = default;

  // A canvas of rect filled with one colour (transparent by default).
  static std::expected<Canvas, ImageError> make(const PixelRect& rect, Rgba fill = {},
                                                WorkerPool& pool = WorkerPool::shared());
  // A canvas of rect whose pixels are left unset, for a kernel that writes
  // every one of them.
  static std::expected<Canvas, ImageError> makeUnfilled(const PixelRect& rect);
  // A canvas of rect holding the values of image there (transparent where
  // image has none). It takes over image's pixels without copying when this
  // was their only owner and they cover exactly rect.
  static std::expected<Canvas, ImageError> from(Image image, const PixelRect& rect,
                                                WorkerPool& pool = WorkerPool::shared());

  // Makes this canvas cover rect with pixels left unset, reusing its own
  // when nothing else shares them and there are enough; otherwise new ones.
  // For scratch canvases that a thread fills again and again.
  std::expected<void, ImageError> reuseFor(const PixelRect& rect);

  PixelRect rect() const { return buffer_ ? buffer_->rect : PixelRect{}; }
  // The pixel at (rect().x, y); y must lie in rect().
  Rgba* row(int y) { return buffer_->row(y); }
  const Rgba* row(int y) const { return buffer_->row(y); }

  // The finished picture; the canvas is left empty.
  Image image() &&;

 private:
  explicit Canvas(std::shared_ptr<PixelBuffer> buffer) : buffer_(std::move(buffer)) {}

  std::shared_ptr<PixelBuffer> buffer_;
};

}  // namespace orvane::render
