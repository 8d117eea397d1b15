#include "render/effects/gaussian_blur.hpp"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "render/effects/blur_passes.hpp"

namespace orvane::render {

namespace {

using detail::LineFilter;

// The vertical pass works on column bands in multiples of this width.
constexpr int kColumnChunk = 16;
// What a thread's vertical-pass working set (the box rings, or the rows
// under the sampled kernel) may take: about a quarter of a core's L2 cache.
constexpr std::size_t kVerticalWorkingBytes = 256 * 1024;

// Pixels kept from call to call. A fresh buffer of a full HD frame costs
// more to fault in than to blur, so each thread keeps its line buffers, and
// one intermediate picture is kept for the next call (taken and given back
// under a lock that is never held while pixels are touched).
class PixelStore {
 public:
  PixelStore() = default;
  PixelStore(PixelStore&& other) noexcept
      : pixels_(std::move(other.pixels_)), capacity_(std::exchange(other.capacity_, 0)) {}
  PixelStore& operator=(PixelStore&& other) noexcept {
    pixels_ = std::move(other.pixels_);
    capacity_ = std::exchange(other.capacity_, 0);
    return *this;
  }

  // Room for count pixels; null when it can't be had.
  Rgba* reserve(std::size_t count) {
    if (count > capacity_) {
      pixels_.reset();
      capacity_ = 0;
      try {
        pixels_ = std::make_unique_for_overwrite<Rgba[]>(count);
      } catch (const std::bad_alloc&) {
        return nullptr;
      }
      capacity_ = count;
    }
    return pixels_.get();
  }
  std::size_t capacity() const { return capacity_; }

 private:
  std::unique_ptr<Rgba[]> pixels_;
  std::size_t capacity_ = 0;
};

// The largest intermediate picture kept between calls (64 MB): a full HD
// frame with a reach of 100 pixels.
constexpr std::size_t kMaxKeptPixels = std::size_t{4} << 20;

std::mutex keptMutex;
PixelStore keptStore;  // guarded by keptMutex

PixelStore takeKeptStore() {
  std::lock_guard lock(keptMutex);
  return std::exchange(keptStore, PixelStore{});
}

void keepStore(PixelStore store) {
  if (store.capacity() > kMaxKeptPixels) return;
  std::lock_guard lock(keptMutex);
  if (store.capacity() > keptStore.capacity()) keptStore = std::move(store);
}

thread_local PixelStore lineScratch;

// What one blur computes. The horizontal pass filters the rows firstRow ..<
// lastRow of the source over the columns of `out` into `middle`; the vertical
// pass filters middle's columns into the output. Rows of middle past its ends
// are transparent for a finite source, and repeat its end rows for an
// infinite one.
struct BlurJob {
  const Image* source = nullptr;
  LineFilter filter;
  PixelRect out;
  int firstRow = 0;
  int lastRow = 0;
  bool repeatRows = false;
  Rgba* middle = nullptr;
  // Columns the vertical pass takes at once.
  int segmentWidth = kColumnChunk;
  // What each thread's line buffer must hold for either pass, so that it
  // grows once.
  std::size_t scratchPixels = 0;
  std::atomic<bool> failed{false};

  int support() const { return filter.support(); }
};

void horizontalRow(BlurJob& job, int y) {
  const int s = job.support(), width = job.out.width;
  Rgba* line = lineScratch.reserve(job.scratchPixels);
  if (line == nullptr) {
    job.failed = true;
    return;
  }
  readRow(*job.source, y, job.out.x - s, width + 2 * s, line);
  Rgba* target = job.middle + static_cast<std::ptrdiff_t>(y - job.firstRow) * width;
  detail::filterContiguousLine(job.filter, line, line + width + 2 * s, target, width);
}

// Columns x ..< x + count of the output (relative to its left edge), walking
// down the rows.
void verticalSegment(BlurJob& job, Canvas& canvas, int x, int count) {
  const int s = job.support();
  Rgba* zeros = lineScratch.reserve(job.scratchPixels);
  if (zeros == nullptr) {
    job.failed = true;
    return;
  }
  std::fill(zeros, zeros + count, Rgba{});
  Rgba* rings = zeros + job.segmentWidth;
  const int top = job.out.y - s;
  const auto in = [&job, zeros, top, x](int i) -> const Rgba* {
    int y = top + i;
    if (job.repeatRows) y = std::clamp(y, job.firstRow, job.lastRow - 1);
    if (y < job.firstRow || y >= job.lastRow) return zeros;
    return job.middle + static_cast<std::ptrdiff_t>(y - job.firstRow) * job.out.width + x;
  };
  const int bottom = job.out.y;
  const auto out = [&canvas, bottom, x](int j) { return canvas.row(bottom + j) + x; };
  detail::runFilter(job.filter, in, out, job.out.height, count, rings);
}

// The rows of the source the vertical pass reads: all of a finite image's
// extent; for an infinite one, those within reach of `out`, clipped to the
// stored rows (the rows past them repeat the end rows).
void chooseRows(BlurJob& job, const Image& image) {
  if (!image.isInfinite()) {
    job.firstRow = image.extent().y;
    job.lastRow = image.extent().maxY();
    return;
  }
  const PixelRect data = image.dataRect();
  const int s = job.support();
  job.repeatRows = true;
  job.firstRow = std::clamp(job.out.y - s, data.y, data.maxY() - 1);
  job.lastRow = std::clamp(job.out.maxY() + s, job.firstRow + 1, data.maxY());
}

}  // namespace

int gaussianBlurReach(double sigma) {
  if (!(sigma > 0)) return 0;
  return static_cast<int>(std::ceil(3 * std::min(sigma, double{kMaxImageSide})));
}

std::expected<Image, ImageError> gaussianBlur(const Image& image, double sigma, const PixelRect& within,
                                              WorkerPool& pool) {
  return gaussianBlur(image, sigma, within, pool, GaussianBlurMethod::automatic);
}

namespace detail {

std::expected<Image, ImageError> separableBlur(const Image& image, const LineFilter& filter, const PixelRect& out,
                                               WorkerPool& pool) {
  if (auto ok = checkCanvasRect(out); !ok) return std::unexpected(ok.error());
  if (image.isEmpty() || out.isEmpty()) return Image{};
  BlurJob job;
  job.source = &image;
  job.out = out;
  job.filter = filter;
  chooseRows(job, image);

  PixelStore middle = takeKeptStore();
  job.middle = middle.reserve(static_cast<std::size_t>(job.lastRow - job.firstRow) *
                              static_cast<std::size_t>(job.out.width));
  if (job.middle == nullptr) return std::unexpected(ImageError::outOfMemory);
  auto canvas = Canvas::makeUnfilled(job.out);
  if (!canvas) return std::unexpected(canvas.error());

  const int s = job.support();
  const std::size_t perLane = job.filter.scratchPerLane();
  const std::size_t rowsPerColumn = perLane > 0 ? perLane : static_cast<std::size_t>(2 * s + 1);
  job.segmentWidth = static_cast<int>(
      std::clamp<std::size_t>(kVerticalWorkingBytes / sizeof(Rgba) / rowsPerColumn, kColumnChunk, 1024));
  job.scratchPixels = std::max(static_cast<std::size_t>(job.out.width + 2 * s) * 3,
                               static_cast<std::size_t>(job.segmentWidth) * (perLane + 1));
  pool.forEachBand(job.firstRow, job.lastRow, job.out.width + 2 * s, [&](int first, int last) {
    for (int y = first; y < last; ++y) horizontalRow(job, y);
  });
  const int chunks = (job.out.width + kColumnChunk - 1) / kColumnChunk;
  pool.forEachBand(0, chunks, std::int64_t{kColumnChunk} * (job.out.height + 2 * s), [&](int first, int last) {
    const int end = std::min(job.out.width, last * kColumnChunk);
    for (int x = first * kColumnChunk; x < end; x += job.segmentWidth) {
      verticalSegment(job, *canvas, x, std::min(job.segmentWidth, end - x));
    }
  });
  keepStore(std::move(middle));
  if (job.failed) return std::unexpected(ImageError::outOfMemory);
  return std::move(*canvas).image();
}

}  // namespace detail

std::expected<Image, ImageError> gaussianBlur(const Image& image, double sigma, const PixelRect& within,
                                              WorkerPool& pool, GaussianBlurMethod method) {
  if (!(sigma > 0) || image.isEmpty()) return image;
  if (!(3 * sigma <= kMaxImageSide)) return std::unexpected(ImageError::tooLarge);
  PixelRect out;
  if (image.isInfinite()) {
    if (within.isEmpty() || within.isInfinite()) return std::unexpected(ImageError::unbounded);
    // One stored pixel repeated everywhere is a constant: the blur keeps it.
    if (image.dataRect().area() == 1) return crop(image, within);
    out = within;
  } else {
    const int reach = gaussianBlurReach(sigma);
    const PixelRect e = image.extent();
    out = {e.x - reach, e.y - reach, e.width + 2 * reach, e.height + 2 * reach};
  }
  if (auto ok = checkCanvasRect(out); !ok) return std::unexpected(ok.error());
  const bool exact = method == GaussianBlurMethod::exact ||
                     (method == GaussianBlurMethod::automatic && sigma < kBoxBlurMinSigma);
  if (exact) return detail::separableBlur(image, detail::exactFilter(sigma), out, pool);
  const int step = method == GaussianBlurMethod::boxes ? 1 : detail::coarseGridStep(sigma);
  if (step > 1) return detail::coarseGridBlur(image, detail::sampledVariance(sigma), out, step, pool);
  return detail::separableBlur(image, detail::boxFilter(sigma), out, pool);
}

}  // namespace orvane::render
