// Benchmarks of the Gaussian blur: the sampled kernel against three extended
// box filters, and against the boxes on a coarse grid, at sigma 2, 12 and 60
// on a full HD picture (1 and 2 threads); and the two blurs of a
// motion-graphics frame (12 px on a text layer, 8 px for its soft drop
// shadow) with the method the blur picks by itself.
//
// Prints how many times faster each approximation is than the sampled
// kernel at each sigma, and exits non-zero when a blur allocates per row or
// per pixel after warm-up (a call allocates its pictures and its kernel's
// weights).

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

#include "bench/allocation_counter.hpp"
#include "bench/ratio_reporter.hpp"
#include "bench/render_bench_support.hpp"
#include "render/effects/gaussian_blur.hpp"

namespace {

using namespace orvane::render;
using orvane::bench_support::kFullHD;
using orvane::bench_support::poolOf;

// A line of title text on a full HD frame, as its layer's picture.
constexpr PixelRect kTextLayer{0, 0, 1400, 220};
// What one blur may allocate: the result (pixels and owner), the coarse
// grid's two pictures, the kernel's weights; the intermediate rows and line
// buffers are kept.
constexpr double kAllocationsPerBlur = 8;
constexpr GaussianBlurMethod kMethods[] = {GaussianBlurMethod::exact, GaussianBlurMethod::boxes,
                                           GaussianBlurMethod::coarseGrid};

// Glyph-like opaque strokes on transparency: what blurs of text see.
Image strokes(const PixelRect& rect) {
  Canvas canvas = *Canvas::make(rect);
  for (int y = 0; y < rect.height; ++y) {
    for (int x = 0; x < rect.width; ++x) {
      const bool ink = (x / 9) % 3 == 0 || (y / 13) % 4 == 0;
      canvas.row(rect.y + y)[x] = ink ? Rgba{0.9f, 0.8f, 0.1f, 1} : Rgba{};
    }
  }
  return std::move(canvas).image();
}

template <class Call>
std::size_t countAllocations(Call&& call) {
  const std::size_t before = orvane::bench_support::allocationCount.load();
  call();
  return orvane::bench_support::allocationCount.load() - before;
}

void runBlur(benchmark::State& state, const Image& image, double sigma, GaussianBlurMethod method, int threads) {
  WorkerPool& pool = poolOf(threads);
  const auto blur = [&] {
    auto result = gaussianBlur(image, sigma, {}, pool, method);
    benchmark::DoNotOptimize(result->buffer());
  };
  blur();  // warm-up: the threads' line buffers
  std::size_t allocations = 0;
  for (auto _ : state) allocations += countAllocations(blur);
  const double calls = static_cast<double>(state.iterations());
  state.counters["Mpx/s"] =
      benchmark::Counter(calls * static_cast<double>(image.extent().area()) / 1e6, benchmark::Counter::kIsRate);
  state.counters["allocs/call"] = static_cast<double>(allocations) / calls;
  if (static_cast<double>(allocations) > kAllocationsPerBlur * calls) state.SkipWithError("the blur allocated per row");
}

// Arguments: method (0 exact, 1 boxes, 2 coarse grid), sigma, threads.
void BM_BlurFullHD(benchmark::State& state) {
  static const Image image = strokes(kFullHD);
  const GaussianBlurMethod method = kMethods[state.range(0)];
  runBlur(state, image, static_cast<double>(state.range(1)), method, static_cast<int>(state.range(2)));
}
BENCHMARK(BM_BlurFullHD)
    ->ArgsProduct({{0, 1, 2}, {2, 12, 60}, {1, 2}})
    ->ArgNames({"method", "sigma", "threads"})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// The frame's two blurs on a text layer, 2 threads, automatic method.
void BM_BlurTextLayer(benchmark::State& state) {
  static const Image image = strokes(kTextLayer);
  runBlur(state, image, static_cast<double>(state.range(0)), GaussianBlurMethod::automatic, 2);
}
BENCHMARK(BM_BlurTextLayer)->ArgName("sigma")->Arg(8)->Arg(12)->Unit(benchmark::kMillisecond)->UseRealTime();

// A full HD matte clamped to its extent, as a feathered mask blurs it.
void BM_BlurClampedMatte(benchmark::State& state) {
  static const Image image = clampToExtent(strokes(kFullHD));
  WorkerPool& pool = poolOf(2);
  const double sigma = static_cast<double>(state.range(0));
  for (auto _ : state) {
    auto result = gaussianBlur(image, sigma, kFullHD, pool);
    benchmark::DoNotOptimize(result->buffer());
  }
}
BENCHMARK(BM_BlurClampedMatte)->ArgName("sigma")->Arg(5)->Arg(20)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  orvane::bench_support::RatioReporter reporter;
  if (!orvane::bench_support::runBenchmarks(argc, argv, reporter)) return 1;

  for (const char* sigma : {"2", "12", "60"}) {
    for (const char* threads : {"1", "2"}) {
      const std::string tail = std::string("/sigma:") + sigma + "/threads:" + threads + "/real_time";
      const double boxes = reporter.ratio("BM_BlurFullHD/method:0" + tail, "BM_BlurFullHD/method:1" + tail);
      const double grid = reporter.ratio("BM_BlurFullHD/method:0" + tail, "BM_BlurFullHD/method:2" + tail);
      if (boxes > 0 && grid > 0) {
        std::printf("sigma %s, %s thread(s): as fast as the sampled kernel x %.2f (boxes), x %.2f (coarse grid)\n",
                    sigma, threads, boxes, grid);
      }
    }
  }
  return reporter.failed ? 1 : 0;
}
