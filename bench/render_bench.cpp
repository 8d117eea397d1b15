// Benchmarks of the image engine: the one-pass layer draw of a full HD
// picture, rotated 10° and scaled 0.9 about its centre, onto a full HD
// canvas, on 1 and 2 threads; the same with a 1/8 downscale (footprint
// averaging); and the three-step transform, opacity and blend it replaces.
//
// Prints the 2-thread speed-up of the layer draw, and exits non-zero when a
// layer draw allocates after warm-up.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <numbers>

#include "bench/allocation_counter.hpp"
#include "bench/ratio_reporter.hpp"
#include "bench/render_bench_support.hpp"
#include "render/draw_layer.hpp"
#include "render/image_ops.hpp"


namespace {

using namespace orvane::render;
using orvane::bench_support::kFullHD;
using orvane::bench_support::poolOf;
using orvane::core::Affine2D;
using orvane::core::OVBlendMode;

// A half-transparent picture with detail everywhere.
const Image& sourcePicture() {
  static const Image image = [] {
    return orvane::bench_support::fullHDPicture([](int x, int y) {
      const float a = 0.5f + 0.5f * static_cast<float>((x ^ y) & 1);
      return Rgba{a * static_cast<float>(x % 256) / 255, a * static_cast<float>(y % 256) / 255, a * 0.5f, a};
    });
  }();
  return image;
}

// Scale and rotation about the centre of the full HD frame.
Affine2D placementAboutCentre(double scale, double degrees) {
  const double cx = kFullHD.width / 2.0, cy = kFullHD.height / 2.0;
  const Affine2D turn = Affine2D::concatenating(Affine2D::makeScale(scale, scale),
                                                Affine2D::makeRotation(degrees * std::numbers::pi / 180));
  return Affine2D::concatenating(Affine2D::concatenating(Affine2D::makeTranslation(-cx, -cy), turn),
                                 Affine2D::makeTranslation(cx, cy));
}

void reportRate(benchmark::State& state, std::size_t allocations) {
  const double calls = static_cast<double>(state.iterations());
  state.counters["Mpx/s"] =
      benchmark::Counter(calls * static_cast<double>(kFullHD.area()) / 1e6, benchmark::Counter::kIsRate);
  state.counters["allocs/call"] = static_cast<double>(allocations) / calls;
}

// Heap allocations made by call(), and only by it (the benchmark loop
// allocates a little of its own).
template <class Call>
std::size_t countAllocations(Call&& call) {
  const std::size_t before = orvane::bench_support::allocationCount.load();
  call();
  return orvane::bench_support::allocationCount.load() - before;
}

void drawLayerBenchmark(benchmark::State& state, double scale) {
  WorkerPool& pool = poolOf(static_cast<int>(state.range(0)));
  Canvas canvas = *Canvas::make(kFullHD, {0.2f, 0.3f, 0.4f, 1});
  const Affine2D m = placementAboutCentre(scale, 10);
  const auto draw = [&] { drawLayer(canvas, kFullHD, sourcePicture(), m, 0.8, OVBlendMode::normal, pool); };
  draw();  // warm-up
  std::size_t allocations = 0;
  for (auto _ : state) {
    allocations += countAllocations(draw);
    benchmark::ClobberMemory();
  }
  reportRate(state, allocations);
  if (allocations != 0) state.SkipWithError("the layer draw allocated");
}

void BM_DrawLayerRotated(benchmark::State& state) { drawLayerBenchmark(state, 0.9); }
BENCHMARK(BM_DrawLayerRotated)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_DrawLayerDownscaleEighth(benchmark::State& state) { drawLayerBenchmark(state, 0.125); }
BENCHMARK(BM_DrawLayerDownscaleEighth)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

// What the one pass saves: the placed picture, then the faded one, then the
// blend, each a picture of its own.
void BM_TransformOpacityBlendSteps(benchmark::State& state) {
  WorkerPool& pool = poolOf(static_cast<int>(state.range(0)));
  const Image backdrop = std::move(*Canvas::make(kFullHD, {0.2f, 0.3f, 0.4f, 1})).image();
  const Affine2D m = placementAboutCentre(0.9, 10);
  std::size_t allocations = 0;
  for (auto _ : state) {
    allocations += countAllocations([&] {
      auto placed = transformed(sourcePicture(), m, pool);
      auto faded = applyOpacity(std::move(*placed), 0.8, pool);
      auto result = blended(*faded, backdrop, OVBlendMode::normal, pool);
      benchmark::DoNotOptimize(result->buffer());
    });
  }
  reportRate(state, allocations);
}
BENCHMARK(BM_TransformOpacityBlendSteps)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  orvane::bench_support::RatioReporter reporter;
  if (!orvane::bench_support::runBenchmarks(argc, argv, reporter)) return 1;

  for (const char* name : {"BM_DrawLayerRotated", "BM_DrawLayerDownscaleEighth", "BM_TransformOpacityBlendSteps"}) {
    const double speedUp = reporter.ratio(std::string(name) + "/1/real_time", std::string(name) + "/2/real_time");
    if (speedUp > 0) std::printf("%s: 2 threads are %.2fx as fast as 1\n", name, speedUp);
  }
  return reporter.failed ? 1 : 0;
}
