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


#include "support/BenchFiles.h"

namespace {

std::string gPath;
uint64_t gBytes = 0;

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

  bench::JobTimes times(gBytes, [] { bench::Evict(gPath); });
  times.Add("AsyncReadBuffer_2048", [] { return ReadAhead() == gBytes; });
  times.Add("O_DIRECT_read_4M", [] { return ReadDirect() == gBytes; });
  times.Run(argc, argv);

  std::printf("\n%llu MiB, best of each:\n", static_cast<unsigned long long>(mib));
  std::printf("  AsyncReadBuffer, 2048-byte pieces  %8.1f MB/s\n", times.Rate("AsyncReadBuffer_2048"));
  std::printf("  O_DIRECT, 4 MiB reads              %8.1f MB/s\n", times.Rate("O_DIRECT_read_4M"));
  std::printf("  ratio                              %8.2f   (goal >= 0.90)\n",
              times.Ratio("AsyncReadBuffer_2048", "O_DIRECT_read_4M"));
  return 0;
}
