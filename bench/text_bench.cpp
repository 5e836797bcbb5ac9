// MString::Format beside the C library's swprintf into a buffer, for the same
// numbers and text.
#include <VantoroBasicUtils/text/MString.h>

#include <benchmark/benchmark.h>

#include <cwchar>

using namespace vbu::literals;

namespace {

void BM_MStringFormat(benchmark::State& state) {
  MString s;
  for (auto _ : state) {
    s.Format(u"Sector %d of %d: %s (%x) %f"_u16, 123456, 2295104, u"VIDEO_TS.VOB"_u16, 48879, 12.5);
    benchmark::DoNotOptimize(static_cast<const unsigned short*>(s));
  }
}
BENCHMARK(BM_MStringFormat);

void BM_Swprintf(benchmark::State& state) {
  wchar_t buffer[256];
  for (auto _ : state) {
    std::swprintf(buffer, 256, L"Sector %d of %d: %ls (%x) %f", 123456, 2295104, L"VIDEO_TS.VOB", 48879, 12.5);
    benchmark::DoNotOptimize(buffer);
  }
}
BENCHMARK(BM_Swprintf);

}  // namespace
