// Benchmarks of the document: encoding and decoding a large project file,
// and the cost of an edit through ProjectDocument on a large project next to
// a small one.
//
// Prints the 1,000-layer to 10-layer ratios of perform and exits non-zero
// when one misses its target (under 10x).

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

#include "bench/bench_projects.hpp"
#include "bench/ratio_reporter.hpp"
#include "document/project_codec.hpp"
#include "document/project_document.hpp"
#include "tests/document/sample_project.hpp"

namespace {

using namespace orvane;
using document::ProjectCodec;
using document::ProjectDocument;

// 200 layers, each with 30 animated parameters of 30 keys.
const core::OVProject& largeFile() {
  static const core::OVProject p = document::testing_support::largeProject(200, 30, 30);
  return p;
}

void BM_EncodeLargeProject(benchmark::State& state) {
  std::size_t bytes = 0;
  for (auto _ : state) {
    const std::string data = ProjectCodec::encodeUnstamped(largeFile());
    bytes = data.size();
    benchmark::DoNotOptimize(data.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
  state.counters["MB"] = static_cast<double>(bytes) / 1e6;
}
BENCHMARK(BM_EncodeLargeProject)->Unit(benchmark::kMillisecond);

void BM_DecodeLargeProject(benchmark::State& state) {
  const std::string data = ProjectCodec::encodeUnstamped(largeFile());
  for (auto _ : state) {
    auto p = ProjectCodec::decode(data);
    if (!p) state.SkipWithError("the project did not decode");
    benchmark::DoNotOptimize(p);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(data.size()) * state.iterations());
}
BENCHMARK(BM_DecodeLargeProject)->Unit(benchmark::kMillisecond);

// A change that leaves the project as it is: equality finds it cheaply.
void BM_PerformNoOp(benchmark::State& state) {
  ProjectDocument doc(bench_projects::makeProject(static_cast<int>(state.range(0))));
  document::UndoStack undo;
  for (auto _ : state) doc.perform("Nothing", &undo, [](core::OVProject&) {});
  if (doc.revision() != 0) state.SkipWithError("a no-op moved the revision");
}
BENCHMARK(BM_PerformNoOp)->Arg(10)->Arg(1000);

// One layer's rotation changes: one undo step per call.
void BM_PerformOneLayerChange(benchmark::State& state) {
  const int layers = static_cast<int>(state.range(0));
  ProjectDocument doc(bench_projects::makeProject(layers));
  document::UndoStack undo;
  const core::Uuid layerID = doc.activeComposition()->layers[static_cast<std::size_t>(layers / 2)].id;
  double rotation = 0;
  for (auto _ : state) {
    rotation += 1;
    doc.updateLayer(layerID, "Rotate", &undo, [&](core::Layer& l) {
      l.transform.rotation.baseValue = core::PropertyValue::double_(rotation);
    });
  }
  if (doc.revision() != static_cast<std::int64_t>(state.iterations())) state.SkipWithError("an edit was lost");
}
BENCHMARK(BM_PerformOneLayerChange)->Arg(10)->Arg(1000);

}  // namespace

int main(int argc, char** argv) {
  orvane::bench_support::RatioReporter reporter;
  if (!orvane::bench_support::runBenchmarks(argc, argv, reporter)) return 1;
  int status = reporter.failed ? 1 : 0;
  for (const std::string name : {"BM_PerformNoOp", "BM_PerformOneLayerChange"}) {
    const double ratio = reporter.ratio(name + "/1000", name + "/10");
    if (ratio == 0) continue;
    std::printf("%s: 1000 layers take %.2fx the time of 10 layers (target: under 10x)\n", name.c_str(), ratio);
    if (ratio >= 10) status = 1;
  }
  return status;
}
