// Bit reads of every width over a large buffer, and the byte swaps beside
// the compiler's byte-swap builtins.
#include <VantoroBasicUtils/bytes/CAppBits.h>
#include <VantoroBasicUtils/bytes/UByteSwapper.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

namespace {

std::vector<unsigned char> Noise(size_t n) {
  std::mt19937 rng(7);
  std::vector<unsigned char> v(n);
  for (auto& b : v) b = static_cast<unsigned char>(rng());
  return v;
}

void BM_GetBits(benchmark::State& state) {
  const int width = static_cast<int>(state.range(0));
  std::vector<unsigned char> buffer = Noise(1 << 20);
  const int reads = static_cast<int>((buffer.size() - 8) * 8 / width);
  int64_t bits = 0;
  for (auto _ : state) {
    CAppBits cursor(buffer.data(), static_cast<int>(buffer.size()));
    int sum = 0;
    for (int i = 0; i < reads; ++i) sum += cursor.GetBits(width, cbits_get);
    benchmark::DoNotOptimize(sum);
    bits += static_cast<int64_t>(reads) * width;
  }
  state.counters["bits/s"] = benchmark::Counter(static_cast<double>(bits), benchmark::Counter::kIsRate);
  state.counters["s/read"] = benchmark::Counter(
      reads, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_GetBits)->DenseRange(1, 8)->Arg(12)->Arg(16)->Arg(24)->Arg(32)->Unit(benchmark::kMillisecond);

template <class T, class F>
void SwapLoop(benchmark::State& state, F swap) {
  std::vector<T> values(4096);
  for (size_t i = 0; i < values.size(); ++i) values[i] = static_cast<T>(i * 2654435761u);
  for (auto _ : state) {
    for (auto& v : values) v = swap(v);
    benchmark::DoNotOptimize(values.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(values.size()));
}

void BM_SwapShort(benchmark::State& s) { SwapLoop<unsigned short>(s, [](unsigned short v) { return UByteSwapper::SwapShort(v); }); }
void BM_Builtin16(benchmark::State& s) { SwapLoop<unsigned short>(s, [](unsigned short v) { return __builtin_bswap16(v); }); }
void BM_SwapLong(benchmark::State& s) { SwapLoop<uint32_t>(s, [](uint32_t v) { return UByteSwapper::SwapLong(v); }); }
void BM_Builtin32(benchmark::State& s) { SwapLoop<uint32_t>(s, [](uint32_t v) { return __builtin_bswap32(v); }); }
void BM_SwapLongLong(benchmark::State& s) {
  SwapLoop<long long>(s, [](long long v) { return UByteSwapper::SwapLongLong(v); });
}
void BM_Builtin64(benchmark::State& s) {
  SwapLoop<long long>(s, [](long long v) { return static_cast<long long>(__builtin_bswap64(static_cast<uint64_t>(v))); });
}
BENCHMARK(BM_SwapShort);
BENCHMARK(BM_Builtin16);
BENCHMARK(BM_SwapLong);
BENCHMARK(BM_Builtin32);
BENCHMARK(BM_SwapLongLong);
BENCHMARK(BM_Builtin64);

}  // namespace
