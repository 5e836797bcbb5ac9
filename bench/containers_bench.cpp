// LArray against std::vector doing the same work, for 1e3 to 1e6 items of 4 bytes.
#include <VantoroBasicUtils/containers/LArray.h>
#include <VantoroBasicUtils/containers/LArrayIterator.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

namespace {

std::vector<int32_t> RandomValues(size_t n) {
  std::mt19937 rng(12345);
  std::vector<int32_t> v(n);
  for (auto& x : v) x = static_cast<int32_t>(rng() % 1000000000);
  return v;
}

void Fill(LArray& a, const std::vector<int32_t>& values) {
  for (int32_t v : values) a.InsertItemsAt(1, kLastIndex, &v, 0);
}

void Sizes(benchmark::internal::Benchmark* b) {
  for (int64_t n : {1000, 10000, 100000, 1000000}) b->Arg(n);
}

// ---- append: one item at a time (the array's growth is linear by design)

void BM_LArray_Append(benchmark::State& state) {
  const auto n = static_cast<int32_t>(state.range(0));
  for (auto _ : state) {
    LArray a(4);
    for (int32_t i = 0; i < n; ++i) a.InsertItemsAt(1, kLastIndex, &i, 0);
    benchmark::DoNotOptimize(a.GetItemPtr(1));
  }
  state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_LArray_Append)->Apply(Sizes)->Unit(benchmark::kMillisecond);

void BM_Vector_Append(benchmark::State& state) {
  const auto n = static_cast<int32_t>(state.range(0));
  for (auto _ : state) {
    std::vector<int32_t> v;
    for (int32_t i = 0; i < n; ++i) v.push_back(i);
    benchmark::DoNotOptimize(v.data());
  }
  state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_Vector_Append)->Apply(Sizes)->Unit(benchmark::kMillisecond);

// ---- insert one item in the middle of n items, then remove it again

void BM_LArray_InsertRemoveMiddle(benchmark::State& state) {
  const auto n = static_cast<size_t>(state.range(0));
  LArray a(4);
  Fill(a, RandomValues(n));
  const long middle = static_cast<long>(n / 2);
  int32_t x = 7;
  for (auto _ : state) {
    a.InsertItemsAt(1, middle, &x, 0);
    a.RemoveItemsAt(1, middle);
  }
  state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(BM_LArray_InsertRemoveMiddle)->Apply(Sizes);

void BM_Vector_InsertRemoveMiddle(benchmark::State& state) {
  const auto n = static_cast<size_t>(state.range(0));
  std::vector<int32_t> v = RandomValues(n);
  const size_t middle = n / 2;
  for (auto _ : state) {
    v.insert(v.begin() + middle, 7);
    v.erase(v.begin() + middle);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(BM_Vector_InsertRemoveMiddle)->Apply(Sizes);

// ---- linear search (unsorted) for the item in the middle

void BM_LArray_FetchIndexOfLinear(benchmark::State& state) {
  const auto n = static_cast<size_t>(state.range(0));
  std::vector<int32_t> values(n);
  std::iota(values.begin(), values.end(), 0);
  LArray a(4);
  Fill(a, values);
  a.InvalidateSort();
  int32_t key = static_cast<int32_t>(n / 2);
  for (auto _ : state) benchmark::DoNotOptimize(a.FetchIndexOf(&key));
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(n / 2));
}
BENCHMARK(BM_LArray_FetchIndexOfLinear)->Apply(Sizes);

void BM_Vector_FindLinear(benchmark::State& state) {
  const auto n = static_cast<size_t>(state.range(0));
  std::vector<int32_t> v(n);
  std::iota(v.begin(), v.end(), 0);
  int32_t key = static_cast<int32_t>(n / 2);
  for (auto _ : state) benchmark::DoNotOptimize(std::find(v.begin(), v.end(), key));
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(n / 2));
}
BENCHMARK(BM_Vector_FindLinear)->Apply(Sizes);

// ---- binary search of a sorted array, random keys

void BM_LArray_FetchIndexOfBinary(benchmark::State& state) {
  const auto n = static_cast<size_t>(state.range(0));
  std::vector<int32_t> values = RandomValues(n);
  LArray a(4);
  Fill(a, values);
  a.Sort();
  size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(a.FetchIndexOf(&values[i]));
    if (++i == n) i = 0;
  }
}
BENCHMARK(BM_LArray_FetchIndexOfBinary)->Apply(Sizes);

void BM_Vector_LowerBound(benchmark::State& state) {
  const auto n = static_cast<size_t>(state.range(0));
  std::vector<int32_t> values = RandomValues(n);
  std::vector<int32_t> v = values;
  std::sort(v.begin(), v.end());
  size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(std::lower_bound(v.begin(), v.end(), values[i]));
    if (++i == n) i = 0;
  }
}
BENCHMARK(BM_Vector_LowerBound)->Apply(Sizes);

// ---- sort n random items

void BM_LArray_Sort(benchmark::State& state) {
  const auto n = static_cast<size_t>(state.range(0));
  std::vector<int32_t> values = RandomValues(n);
  LArray a(4);
  Fill(a, values);
  for (auto _ : state) {
    state.PauseTiming();
    for (size_t i = 0; i < n; ++i) *static_cast<int32_t*>(a.GetItemPtr(static_cast<long>(i + 1))) = values[i];
    a.InvalidateSort();
    state.ResumeTiming();
    a.Sort();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(n));
}
BENCHMARK(BM_LArray_Sort)->Apply(Sizes)->Unit(benchmark::kMillisecond);

void BM_Vector_Sort(benchmark::State& state) {
  const auto n = static_cast<size_t>(state.range(0));
  std::vector<int32_t> values = RandomValues(n);
  std::vector<int32_t> v;
  for (auto _ : state) {
    state.PauseTiming();
    v = values;
    state.ResumeTiming();
    std::sort(v.begin(), v.end());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(n));
}
BENCHMARK(BM_Vector_Sort)->Apply(Sizes)->Unit(benchmark::kMillisecond);

// ---- a forward walk over all items

void BM_LArrayIterator_Walk(benchmark::State& state) {
  const auto n = static_cast<size_t>(state.range(0));
  LArray a(4);
  Fill(a, RandomValues(n));
  for (auto _ : state) {
    int64_t sum = 0;
    LArrayIterator it(a);
    for (int32_t x; it.Next(&x);) sum += x;
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(n));
}
BENCHMARK(BM_LArrayIterator_Walk)->Apply(Sizes);

void BM_Vector_Walk(benchmark::State& state) {
  const auto n = static_cast<size_t>(state.range(0));
  std::vector<int32_t> v = RandomValues(n);
  for (auto _ : state) {
    int64_t sum = 0;
    for (int32_t x : v) sum += x;
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(n));
}
BENCHMARK(BM_Vector_Walk)->Apply(Sizes);

}  // namespace
