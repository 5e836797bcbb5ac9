// Timecode conversions in operations per second.
#include <VantoroBasicUtils/time/CTimecode.h>

#include <benchmark/benchmark.h>

namespace {

void BM_TotalFrameRoundTrip(benchmark::State& state) {
  CTimecode t(1, 23, 45, 12, 30.0);
  long total = t.GetTotalFrame();
  for (auto _ : state) {
    t.SetTotalFrame(total, kFrameTypeCurrent);
    total = t.GetTotalFrame() + 1;
    benchmark::DoNotOptimize(total);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_TotalFrameRoundTrip);

void BM_Nondrop2Drop(benchmark::State& state) {
  CTimecode zero, plain(10, 33, 20, 7, 30.0), drop;
  for (auto _ : state) {
    plain.Nondrop2Drop(zero, &drop);
    benchmark::DoNotOptimize(drop.GetFrame());
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Nondrop2Drop);

void BM_Drop2Nondrop(benchmark::State& state) {
  CTimecode zero, drop(10, 33, 58, 7, 30.0), plain;
  for (auto _ : state) {
    drop.Drop2Nondrop(zero, &plain);
    benchmark::DoNotOptimize(plain.GetFrame());
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Drop2Nondrop);

}  // namespace
