// Benchmarks of the core model: property evaluation on the render path,
// snapshot cost of large projects, and the per-frame layer query.
//
// Prints the 1,000-layer to 10-layer ratio of the snapshot benchmark and
// exits non-zero when it misses its target (10x) or when evaluation
// allocates.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

#include "bench/allocation_counter.hpp"
#include "bench/bench_projects.hpp"
#include "bench/ratio_reporter.hpp"
#include "core/animated_property.hpp"
#include "core/project.hpp"


namespace {

using namespace orvane::core;
using namespace orvane::bench_projects;
using orvane::bench_support::allocationCount;

// Evaluates at 97 times spread over the keys, so every segment is visited.
template <class Read>
void evaluate(benchmark::State& state, const AnimatedProperty& property, Read read) {
  constexpr int kSamples = 97;
  OVTime times[kSamples];
  for (int i = 0; i < kSamples; ++i) times[i] = OVTime::fromSeconds(19.0 * i / kSamples + 0.013);
  const std::size_t before = allocationCount.load();
  std::int64_t calls = 0;
  for (auto _ : state) {
    for (const OVTime& t : times) benchmark::DoNotOptimize(read(property, t));
    calls += kSamples;
  }
  const double allocationsPerCall = static_cast<double>(allocationCount.load() - before) / static_cast<double>(calls);
  state.counters["allocs/call"] = allocationsPerCall;
  state.counters["ns/call"] = benchmark::Counter(static_cast<double>(calls),
                                                 benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  if (allocationsPerCall > 0) state.SkipWithError("value evaluation allocated on the heap");
}

void BM_ValueAtBezier20(benchmark::State& state) {
  const AnimatedProperty property = makeDoubleProperty(InterpolationMode::bezier);
  evaluate(state, property, [](const AnimatedProperty& p, const OVTime& t) { return p.doubleValueAt(t); });
}
BENCHMARK(BM_ValueAtBezier20);

void BM_ValueAtSpatialPoint20(benchmark::State& state) {
  const AnimatedProperty property = makePointProperty();
  evaluate(state, property, [](const AnimatedProperty& p, const OVTime& t) { return p.pointValueAt(t).x; });
}
BENCHMARK(BM_ValueAtSpatialPoint20);

// ---------------------------------------------------------- project snapshots

void BM_ProjectCopyCompareAfterChange(benchmark::State& state) {
  const int layerCount = static_cast<int>(state.range(0));
  const OVProject original = makeProject(layerCount);
  const Uuid compositionID = original.compositions[0].id;
  const Uuid changedLayer = original.compositions[0].layers[static_cast<std::size_t>(layerCount / 2)].id;
  double rotation = 0;
  for (auto _ : state) {
    OVProject copy = original;
    rotation += 1;
    copy.updateComposition(compositionID, [&](Composition& c) {
      c.update(changedLayer, [&](Layer& l) { l.transform.rotation.baseValue = PropertyValue::double_(rotation); });
    });
    const bool equal = copy == original;
    benchmark::DoNotOptimize(equal);
    if (equal) state.SkipWithError("a changed copy compared equal");
  }
}
BENCHMARK(BM_ProjectCopyCompareAfterChange)->Arg(10)->Arg(1000);

// ------------------------------------------------------------ layer queries

void BM_VisibleVisualLayers1000(benchmark::State& state) {
  const OVProject project = makeProject(1000);
  const Composition& composition = project.compositions[0];
  std::vector<const Layer*> visible;
  const OVTime t = OVTime::fromSeconds(7.5);
  for (auto _ : state) {
    composition.visibleVisualLayersAt(t, visible);
    benchmark::DoNotOptimize(visible.data());
  }
  state.counters["layers"] = static_cast<double>(visible.size());
}
BENCHMARK(BM_VisibleVisualLayers1000);

// ------------------------------------------------------------ ratio report


}  // namespace

int main(int argc, char** argv) {
  orvane::bench_support::RatioReporter reporter;
  if (!orvane::bench_support::runBenchmarks(argc, argv, reporter)) return 1;

  int status = reporter.failed ? 1 : 0;
  const auto small = reporter.times.find("BM_ProjectCopyCompareAfterChange/10");
  const auto large = reporter.times.find("BM_ProjectCopyCompareAfterChange/1000");
  if (small != reporter.times.end() && large != reporter.times.end() && small->second > 0) {
    const double ratio = large->second / small->second;
    std::printf("\nSnapshot copy + == after one change: 10 layers %.0f ns, 1,000 layers %.0f ns, ratio %.2fx (target under 10x)\n",
                small->second, large->second, ratio);
    if (ratio >= 10) status = 1;
  }
  return status;
}
