// Timecode conversions in operations per second.
#include <VantoroBasicUtils/text/MString.h>
#include <VantoroBasicUtils/time/CTimecode.h>
#include <VantoroBasicUtils/time/CTimecodeParser.h>

#include <benchmark/benchmark.h>

#include "support/Ratios.h"

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

// Conversions of a value that moves on by 997 frames a call, across 25 hours,
// from a reference inside a minute that skips labels.
void BM_Nondrop2Drop(benchmark::State& state) {
  const CTimecode reference(0, 3, 20, 7, 30.0);
  CTimecode plain(reference), drop;
  long total = plain.GetTotalFrame();
  for (auto _ : state) {
    plain.Nondrop2Drop(reference, &drop);
    benchmark::DoNotOptimize(drop.GetFrame());
    total = total > 2700000 ? reference.GetTotalFrame() : total + 997;
    plain.SetTotalFrame(total, kFrameTypeCurrent);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Nondrop2Drop);

void BM_Drop2Nondrop(benchmark::State& state) {
  const CTimecode reference(0, 3, 20, 7, 30.0);
  CTimecode drop(reference), plain;
  long total = drop.GetTotalFrame();
  for (auto _ : state) {
    drop.Drop2Nondrop(reference, &plain);
    benchmark::DoNotOptimize(plain.GetFrame());
    total = total > 2700000 ? reference.GetTotalFrame() : total + 997;
    drop.SetTotalFrame(total, kFrameTypeCurrent);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Drop2Nondrop);

}  // namespace

namespace {

void BM_PrintText(benchmark::State& state) {
  CTimecode t(10, 33, 20, 7, 25.0);
  MString text;
  for (auto _ : state) {
    t.GetTime(&text);
    benchmark::DoNotOptimize(static_cast<const unsigned short*>(text));
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_PrintText);

void BM_ParseText(benchmark::State& state) {
  unsigned short text[] = {'1', '0', ':', '3', '3', ':', '2', '0', ';', '0', '7', 0};
  for (auto _ : state) {
    CTimecodeParser parser;
    parser.Parse(text, false);
    CTimecode t = parser.GetTime();
    benchmark::DoNotOptimize(t.GetFrame());
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ParseText);

void BM_SetTimeFromText(benchmark::State& state) {
  unsigned short text[] = {'1', '0', ':', '3', '3', ':', '2', '0', ':', '0', '7', 0};
  CTimecode t;
  for (auto _ : state) {
    t.SetTime(text);
    benchmark::DoNotOptimize(t.GetFrame());
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_SetTimeFromText);

}  // namespace

// Each conversion also moves its value on with one SetTotalFrame, so the
// round trip of the count is the floor it is compared with.
int main(int argc, char** argv) {
  return bench::RunWithRatios(argc, argv, {{"BM_Nondrop2Drop", "BM_TotalFrameRoundTrip"},
                                           {"BM_Drop2Nondrop", "BM_TotalFrameRoundTrip"}});
}
