// Runs the registered Google Benchmark cases, then prints the ratios of
// chosen pairs (the library's time over its peer's), so that a goal such as
// "within 2x of X" reads straight off one run.
//
//   int main(int argc, char** argv) {
//     return bench::RunWithRatios(argc, argv, {{"BM_Ours/10", "BM_Peer/10"}});
//   }
#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace bench {

// The console report, with each run's real time per iteration kept by name.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (!run.error_occurred) times[run.benchmark_name()] = run.GetAdjustedRealTime();
    }
  }
  std::map<std::string, double> times;
};

using Pairs = std::vector<std::pair<std::string, std::string>>;

inline int RunWithRatios(int argc, char** argv, const Pairs& pairs) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  std::printf("\n%-44s %-44s %8s\n", "case", "beside", "ratio");
  // With --benchmark_repetitions, the medians are compared.
  auto find = [&](const std::string& name) {
    auto median = reporter.times.find(name + "_median");
    return median != reporter.times.end() ? median : reporter.times.find(name);
  };
  for (const auto& [ours, peer] : pairs) {
    auto a = find(ours), b = find(peer);
    if (a == reporter.times.end() || b == reporter.times.end() || b->second <= 0) continue;  // filtered out
    std::printf("%-44s %-44s %7.2fx\n", ours.c_str(), peer.c_str(), a->second / b->second);
  }
  return 0;
}

}  // namespace bench
