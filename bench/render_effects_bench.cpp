// Benchmarks of the visual effects: each catalog effect over a full HD
// picture with detail and soft alpha, at its default values and at the
// heaviest preset where that costs more, on 1 and 2 threads.
//
// Prints the 2-thread speed-up of each.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "bench/ratio_reporter.hpp"
#include "bench/render_bench_support.hpp"
#include "core/effect_catalog.hpp"
#include "render/effects/effect_stack.hpp"

namespace {

using namespace orvane::render;
using orvane::bench_support::kFullHD;
using orvane::bench_support::poolOf;
using orvane::core::PropertyValue;

const Image& sourcePicture() {
  static const Image image = [] {
    return orvane::bench_support::fullHDPicture([](int x, int y) {
      const float a = 0.5f + 0.5f * static_cast<float>((x / 7 + y / 5) & 1);
      return Rgba{a * static_cast<float>(x % 256) / 255, a * static_cast<float>(y % 256) / 255,
                      a * (0.5f + 0.5f * std::sin(x * 0.05f)), a};
    });
  }();
  return image;
}

struct Case {
  std::string name;
  std::string effect;
  std::map<std::string, PropertyValue> values;
};

std::vector<Case> cases() {
  std::vector<Case> all;
  for (const auto& d : orvane::core::EffectCatalog::all()) all.push_back({d.id, d.id, {}});
  // The presets that cost more than the defaults.
  const auto n = [](double v) { return PropertyValue::double_(v); };
  all.push_back({"blur.gaussian Heavy", "blur.gaussian", {{"radius", n(60)}}});
  all.push_back({"blur.directional Speed", "blur.directional", {{"radius", n(120)}, {"spread", PropertyValue::bool_(true)}}});
  all.push_back({"blur.directional Diagonal", "blur.directional", {{"radius", n(40)}, {"angle", n(45)}}});
  all.push_back({"stylize.minimax r50", "stylize.minimax", {{"radius", n(50)}}});
  all.push_back({"stylize.glow Neon", "stylize.glow", {{"radius", n(60)}, {"intensity", n(1.6)}}});
  all.push_back({"stylize.dropShadow Long", "stylize.dropShadow", {{"distance", n(40)}, {"softness", n(20)}}});
  // Defaults at rest: these set a visible value.
  all.push_back({"color.brightness 0.2", "color.brightness", {{"amount", n(0.2)}}});
  all.push_back({"color.exposure 1", "color.exposure", {{"ev", n(1)}}});
  all.push_back({"color.hue 90", "color.hue", {{"angle", n(90)}}});
  all.push_back({"color.temperature 3200", "color.temperature", {{"temperature", n(3200)}}});
  return all;
}

void runEffect(benchmark::State& state, const Case& c) {
  WorkerPool& pool = poolOf(static_cast<int>(state.range(0)));
  const auto* descriptor = orvane::core::EffectCatalog::descriptorFor(c.effect);
  EffectValues values;
  for (const auto& p : descriptor->parameters) values.emplace(p.id, p.defaultValue);
  for (const auto& [id, v] : c.values) values.insert_or_assign(id, v);
  const EffectKernel kernel = effectKernel(c.effect);
  const EffectRenderContext context{{1920, 1080}, {}, 1};
  for (auto _ : state) {
    const Image out = kernel(sourcePicture(), values, context, pool);
    benchmark::DoNotOptimize(out.buffer());
  }
  state.counters["Mpx/s"] = benchmark::Counter(static_cast<double>(state.iterations()) * kFullHD.area() / 1e6,
                                               benchmark::Counter::kIsRate);
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<Case> all = cases();
  for (const Case& c : all) {
    benchmark::RegisterBenchmark(("BM_Effect/" + c.name).c_str(), [&c](benchmark::State& s) { runEffect(s, c); })
        ->Arg(1)
        ->Arg(2)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
  }
  orvane::bench_support::RatioReporter reporter;
  if (!orvane::bench_support::runBenchmarks(argc, argv, reporter)) return 1;
  for (const Case& c : all) {
    const std::string name = "BM_Effect/" + c.name;
    const double speedUp = reporter.ratio(name + "/1/real_time", name + "/2/real_time");
    if (speedUp > 0) std::printf("%s: 2 threads are %.2fx as fast as 1\n", c.name.c_str(), speedUp);
  }
  return reporter.failed ? 1 : 0;
}
