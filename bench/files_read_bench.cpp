// Reads a file (default 1 GiB, made on the fly) through AsyncReadBuffer in
// 2048-byte pieces, and in the same run the same file with plain O_DIRECT
// sequential reads of 4 MiB. Caches are emptied before each run. Prints
// MB/s of each and the ratio (goal: at least 0.9).
//
//   ./files_read_bench [--file-mib=1024] [--dir=.] [--benchmark_repetitions=3]
#include <VantoroBasicUtils/files/AsyncReadBuffer.h>
#include <VantoroBasicUtils/files/MFileUniv.h>
#include <VantoroBasicUtils/text/MString.h>

#include <benchmark/benchmark.h>

#include <map>

#include "support/BenchFiles.h"

namespace {

std::string gPath;
uint64_t gBytes = 0;
std::map<std::string, double> gBestSeconds;

template <typename Read>
void Measure(benchmark::State& state, const char* name, Read read) {
  bench::MeasureBest(state, gBestSeconds[name], gBytes, [] { bench::Evict(gPath); }, [&] { return read() == gBytes; });
}

uint64_t ReadAhead() {
  MString path;
  path.ImportASCII(gPath.c_str(), -1);
  MFileUniv file;
  if (file.FOpen(path, MFile::file_overlapped_read) != 0) return 0;
  AsyncReadBuffer ahead;
  if (ahead.InitReadBuffer(&file, 0, 4 << 20, 0) != 0) return 0;
  char piece[2048];
  uint64_t total = 0, sum = 0;
  for (int got; (got = ahead.ReadBuffer(static_cast<long long>(total), piece, sizeof piece)) > 0;) {
    total += static_cast<uint64_t>(got);
    sum += static_cast<unsigned char>(piece[0]);
  }
  benchmark::DoNotOptimize(sum);
  file.FClose();
  return total;
}

uint64_t ReadDirect() {
  int fd = ::open(gPath.c_str(), O_RDONLY | O_DIRECT);
  if (fd < 0) return 0;
  void* block = nullptr;
  if (posix_memalign(&block, 4096, 4 << 20) != 0) return 0;
  uint64_t total = 0, sum = 0;
  for (ssize_t got; (got = ::read(fd, block, 4 << 20)) > 0;) {
    total += static_cast<uint64_t>(got);
    // Touch each 2048-byte piece, as the consumer of the read-ahead does.
    for (ssize_t i = 0; i < got; i += 2048) sum += static_cast<unsigned char*>(block)[i];
  }
  benchmark::DoNotOptimize(sum);
  std::free(block);
  ::close(fd);
  return total;
}

}  // namespace

int main(int argc, char** argv) {
  const uint64_t mib = std::stoull(bench::Option(argc, argv, "file-mib", "1024"));
  bench::ScratchFolder folder(bench::Option(argc, argv, "dir", "."));
  gBytes = mib << 20;
  gPath = folder.Path() + "/title.vob";
  bench::MakeFile(gPath, gBytes, 7);

  benchmark::RegisterBenchmark("AsyncReadBuffer_2048", [](benchmark::State& s) { Measure(s, "ahead", ReadAhead); })
      ->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3);
  benchmark::RegisterBenchmark("O_DIRECT_read_4M", [](benchmark::State& s) { Measure(s, "direct", ReadDirect); })
      ->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();

  const double megabytes = static_cast<double>(gBytes) / 1e6;
  auto rate = [&](const char* name) { return gBestSeconds[name] > 0 ? megabytes / gBestSeconds[name] : 0.0; };
  std::printf("\n%llu MiB, best of each:\n", static_cast<unsigned long long>(mib));
  std::printf("  AsyncReadBuffer, 2048-byte pieces  %8.1f MB/s\n", rate("ahead"));
  std::printf("  O_DIRECT, 4 MiB reads              %8.1f MB/s\n", rate("direct"));
  std::printf("  ratio                              %8.2f   (goal >= 0.90)\n",
              rate("direct") > 0 ? rate("ahead") / rate("direct") : 0.0);
  return 0;
}
