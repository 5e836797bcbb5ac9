// Joins N source files (default 8 of 128 MiB, made on the fly) into one
// destination on the same disk with ConcatFile, and in the same run, on the
// same files, copies the same bytes with `dd iflag=direct oflag=direct
// bs=4M` and with `cat sources > dest; sync`. Caches are emptied before
// each run. Prints MB/s of each and the ratios (goal: at least 0.9x dd and
// 1.0x cat plus sync), and the memory that the joining took.
//
//   ./files_concat_bench [--sources=8] [--source-mib=128] [--dir=.] [--benchmark_repetitions=3]
#include <VantoroBasicUtils/files/MFileUniv.h>
#include <VantoroBasicUtils/text/MString.h>

#include <benchmark/benchmark.h>


#include "support/BenchFiles.h"

namespace {

struct Setup {
  std::vector<std::string> sources;
  std::string destination;
  uint64_t sourceBytes = 0;
  long memoryGrowthKiB = 0;
};
Setup gSetup;

MString Units(const std::string& path) {
  MString text;
  text.ImportASCII(path.c_str(), -1);
  return text;
}

void ColdCaches() {
  for (const auto& source : gSetup.sources) bench::Evict(source);
  bench::Evict(gSetup.destination);
  std::filesystem::remove(gSetup.destination);
}

bool JoinWithConcatFile() {
  MFileUniv destination;
  if (destination.FOpen(Units(gSetup.destination), MFile::file_overlapped_create) != 0) return false;
  long before = bench::MemoryKiB("VmRSS:");
  if (destination.ConcatInitialize(2048, 0) != 0) return false;
  bool cancelled = false;
  for (const auto& source : gSetup.sources) {
    MString path = Units(source);
    if (destination.ConcatFile(path, 0, cancelled, 0) != 0) return false;
  }
  gSetup.memoryGrowthKiB = bench::MemoryKiB("VmRSS:") - before;
  return destination.FClose() == 0;
}

bool JoinWithDd() {
  const uint64_t size = gSetup.sourceBytes;
  for (std::size_t i = 0; i < gSetup.sources.size(); ++i) {
    std::string command = "dd if=" + gSetup.sources[i] + " of=" + gSetup.destination +
                          " iflag=direct oflag=direct,seek_bytes bs=4M conv=notrunc seek=" + std::to_string(i * size) +
                          (i + 1 == gSetup.sources.size() ? " conv=fsync" : "") + " status=none";
    if (bench::Run(command) != 0) return false;
  }
  return true;
}

bool JoinWithCat() {
  std::string command = "cat";
  for (const auto& source : gSetup.sources) command += " " + source;
  command += " > " + gSetup.destination + " && sync";
  return bench::Run(command) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  const int sources = std::stoi(bench::Option(argc, argv, "sources", "8"));
  const uint64_t mib = std::stoull(bench::Option(argc, argv, "source-mib", "128"));
  bench::ScratchFolder folder(bench::Option(argc, argv, "dir", "."));
  gSetup.sourceBytes = mib << 20;
  for (int i = 0; i < sources; ++i) {
    gSetup.sources.push_back(folder.Path() + "/source" + std::to_string(i) + ".vob");
    bench::MakeFile(gSetup.sources.back(), gSetup.sourceBytes, static_cast<uint32_t>(i + 1));
  }
  gSetup.destination = folder.Path() + "/joined.iso";

  bench::BestTimes times(gSetup.sourceBytes * gSetup.sources.size(), ColdCaches);
  times.Add("ConcatFile", JoinWithConcatFile);
  times.Add("dd_direct_4M", JoinWithDd);
  times.Add("cat_then_sync", JoinWithCat);
  times.Run(argc, argv);

  std::printf("\n%d sources of %llu MiB, best of each:\n", sources, static_cast<unsigned long long>(mib));
  std::printf("  ConcatFile     %8.1f MB/s\n", times.Rate("ConcatFile"));
  std::printf("  dd direct 4M   %8.1f MB/s\n", times.Rate("dd_direct_4M"));
  std::printf("  cat + sync     %8.1f MB/s\n", times.Rate("cat_then_sync"));
  std::printf("  ratio to dd    %8.2f   (goal >= 0.90)\n", times.Ratio("ConcatFile", "dd_direct_4M"));
  std::printf("  ratio to cat   %8.2f   (goal >= 1.00)\n", times.Ratio("ConcatFile", "cat_then_sync"));
  std::printf("  memory taken by the run: %ld KiB (two buffers: %d KiB)\n", gSetup.memoryGrowthKiB, 2 * 4096);
  return 0;
}
