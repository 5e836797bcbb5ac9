// One broadcast to 1, 10 and 100 listeners, beside a loop over a vector of
// std::function doing the same calls (the floor: no protection against
// changes during the walk, nor across threads) and boost::signals2 (the
// thread-safe peer). Prints the bus's time over each peer's.
#include <VantoroBasicUtils/messaging/LBroadcaster.h>
#include <VantoroBasicUtils/messaging/LListener.h>

#include <benchmark/benchmark.h>
#include <boost/signals2/signal.hpp>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/Ratios.h"

namespace {

class Sink : public LListener {
 public:
  bool ListenToMessage(long message, void* param) override {
    sum += message + (param != nullptr);
    return true;
  }
  long sum = 0;
};

std::vector<std::unique_ptr<Sink>> MakeSinks(benchmark::State& state) {
  std::vector<std::unique_ptr<Sink>> sinks;
  for (int64_t i = 0; i < state.range(0); ++i) sinks.push_back(std::make_unique<Sink>());
  return sinks;
}

void BM_Broadcast(benchmark::State& state) {
  auto sinks = MakeSinks(state);
  LBroadcaster broadcaster;
  for (auto& sink : sinks) broadcaster.AddListener(sink.get());
  int payload = 0;
  for (auto _ : state) broadcaster.BroadcastMessage(7130, &payload);
  benchmark::DoNotOptimize(sinks[0]->sum);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_FunctionVector(benchmark::State& state) {
  auto sinks = MakeSinks(state);
  std::vector<std::function<bool(long, void*)>> calls;
  for (auto& sink : sinks) {
    Sink* s = sink.get();
    calls.push_back([s](long message, void* param) { return s->ListenToMessage(message, param); });
  }
  int payload = 0;
  for (auto _ : state) {
    for (auto& call : calls) call(7130, &payload);
    benchmark::ClobberMemory();
  }
  benchmark::DoNotOptimize(sinks[0]->sum);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_Signals2(benchmark::State& state) {
  auto sinks = MakeSinks(state);
  boost::signals2::signal<void(long, void*)> signal;
  for (auto& sink : sinks) {
    Sink* s = sink.get();
    signal.connect([s](long message, void* param) { s->ListenToMessage(message, param); });
  }
  int payload = 0;
  for (auto _ : state) signal(7130, &payload);
  benchmark::DoNotOptimize(sinks[0]->sum);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(BM_Broadcast)->Arg(1)->Arg(10)->Arg(100);
BENCHMARK(BM_FunctionVector)->Arg(1)->Arg(10)->Arg(100);
BENCHMARK(BM_Signals2)->Arg(1)->Arg(10)->Arg(100);

}  // namespace

int main(int argc, char** argv) {
  bench::Pairs pairs;
  for (const char* n : {"1", "10", "100"}) {
    pairs.push_back({std::string("BM_Broadcast/") + n, std::string("BM_FunctionVector/") + n});
    pairs.push_back({std::string("BM_Broadcast/") + n, std::string("BM_Signals2/") + n});
  }
  return bench::RunWithRatios(argc, argv, pairs);
}
