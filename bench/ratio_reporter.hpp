#pragma once
// A console reporter that also keeps each benchmark's time by name, so that
// a program can print ratios between runs measured in the same process and
// fail when one misses its target, and notes any run that failed.

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace orvane::bench_support {

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      times[run.benchmark_name()] = run.GetAdjustedRealTime();
      if (run.error_occurred) failed = true;
    }
    ConsoleReporter::ReportRuns(runs);
  }

  // large / small, or 0 when either did not run.
  double ratio(const std::string& large, const std::string& small) const {
    const auto l = times.find(large);
    const auto s = times.find(small);
    return l == times.end() || s == times.end() ? 0 : l->second / s->second;
  }

  std::map<std::string, double> times;
  bool failed = false;
};

// Runs the benchmarks that the command line selects into reporter.
// Returns false when the command line holds arguments it does not know.
inline bool runBenchmarks(int& argc, char** argv, RatioReporter& reporter) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return false;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return true;
}

}  // namespace orvane::bench_support
