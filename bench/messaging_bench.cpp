// One broadcast to 1, 10 and 100 listeners, beside the floor: a loop over a
// std::vector of std::function doing the same calls.
#include <VantoroBasicUtils/messaging/LBroadcaster.h>
#include <VantoroBasicUtils/messaging/LListener.h>

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <vector>

namespace {

class Sink : public LListener {
 public:
  bool ListenToMessage(long message, void* param) override {
    sum += message + (param != nullptr);
    return true;
  }
  long sum = 0;
};

void BM_Broadcast(benchmark::State& state) {
  const auto n = static_cast<size_t>(state.range(0));
  LBroadcaster broadcaster;
  std::vector<std::unique_ptr<Sink>> sinks;
  for (size_t i = 0; i < n; ++i) {
    sinks.push_back(std::make_unique<Sink>());
    broadcaster.AddListener(sinks.back().get());
  }
  int payload = 0;
  for (auto _ : state) broadcaster.BroadcastMessage(7130, &payload);
  benchmark::DoNotOptimize(sinks[0]->sum);
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(n));
}
BENCHMARK(BM_Broadcast)->Arg(1)->Arg(10)->Arg(100);

void BM_FunctionVectorFloor(benchmark::State& state) {
  const auto n = static_cast<size_t>(state.range(0));
  std::vector<std::unique_ptr<Sink>> sinks;
  std::vector<std::function<bool(long, void*)>> calls;
  for (size_t i = 0; i < n; ++i) {
    sinks.push_back(std::make_unique<Sink>());
    Sink* s = sinks.back().get();
    calls.push_back([s](long message, void* param) { return s->ListenToMessage(message, param); });
  }
  int payload = 0;
  for (auto _ : state) {
    for (auto& call : calls) call(7130, &payload);
    benchmark::ClobberMemory();
  }
  benchmark::DoNotOptimize(sinks[0]->sum);
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(n));
}
BENCHMARK(BM_FunctionVectorFloor)->Arg(1)->Arg(10)->Arg(100);

}  // namespace
