// Benchmarks of the edit operations: one tick of a clip drag in a large
// sequence, the whole live update included (placement on the tracks, the
// sequence order, and the document's equality check that decides whether
// the tick changed anything).
//
// Prints the time per tick and exits non-zero when it misses its target
// (under 2 ms).

#include <benchmark/benchmark.h>

#include <cstdio>
#include <unordered_map>
#include <vector>

#include "Commands/layer_edits.hpp"
#include "bench/allocation_counter.hpp"
#include "bench/bench_projects.hpp"
#include "bench/ratio_reporter.hpp"
#include "document/project_document.hpp"

namespace {

using namespace orvane;
using namespace orvane::core;

constexpr int kClips = 500;
constexpr int kSelected = 10;

// kClips animated clips of 2 s, spread round-robin over the default tracks
// with half a second between neighbours.
OVProject largeSequence() {
  OVProject p = OVProject::starter(CompositionPreset::defaultPreset(), EditingMode::sequence);
  p.updateActiveComposition([](Composition& c) {
    std::vector<Layer> layers;
    layers.reserve(kClips);
    for (int i = 0; i < kClips; ++i) {
      Layer clip = bench_projects::makeAnimatedLayer(i);
      clip.timeRange = OVTimeRange(OVTime::zero, OVTime::fromSeconds(2));
      clip.moveTo(OVTime::fromSeconds((i / 4) * 2.5));
      clip.trackID = c.tracks[static_cast<std::size_t>(i % 4)].id;
      layers.push_back(std::move(clip));
    }
    c.layers = PersistentList<Layer>(layers);
    c.duration = OVTime::fromSeconds((kClips / 4) * 2.5);
    c.normalizeSequenceOrder();
  });
  return p;
}

// One drag tick: ten clips spread over the sequence follow the mouse by a
// few frames more or less each tick, some into their neighbours.
void BM_DragTick(benchmark::State& state) {
  document::ProjectDocument doc(largeSequence());
  const Composition& c = *doc.activeComposition();
  std::vector<Uuid> ids;
  std::vector<OVTime> origins;
  for (int k = 0; k < kSelected; ++k) {
    const Layer& l = c.layers[static_cast<std::size_t>(k * kClips / kSelected + k % 4)];
    ids.push_back(l.id);
    origins.push_back(l.timeRange.start);
  }
  doc.beginInteraction();
  std::unordered_map<Uuid, OVTime> targets;
  int tick = 0;
  const std::size_t allocationsBefore = bench_support::allocationCount.load();
  for (auto _ : state) {
    const int frames = (tick++ % 40) - 20;  // from 20 frames earlier to 19 later
    for (std::size_t k = 0; k < ids.size(); ++k) {
      targets[ids[k]] = origins[k] + FrameRate::fps30.frameDuration() * frames;
    }
    commands::moveLayersInteractively(doc, ids, targets);
  }
  doc.endInteraction("Move", nullptr);
  state.counters["allocations/tick"] = benchmark::Counter(
      static_cast<double>(bench_support::allocationCount.load() - allocationsBefore) /
      static_cast<double>(state.iterations()));
  if (doc.revision() == 0) state.SkipWithError("the drag moved nothing");
}
BENCHMARK(BM_DragTick)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  orvane::bench_support::RatioReporter reporter;
  if (!orvane::bench_support::runBenchmarks(argc, argv, reporter)) return 1;
  int status = reporter.failed ? 1 : 0;
  const auto tick = reporter.times.find("BM_DragTick");
  if (tick != reporter.times.end()) {
    std::printf("moveLayersInteractively: %.3f ms per drag tick, %d of %d clips selected (target: under 2 ms)\n",
                tick->second, kSelected, kClips);
    if (tick->second >= 2) status = 1;
  }
  return status;
}
