// Joins N source files (default 8 of 128 MiB, made on the fly) into one
// destination on the same disk with ConcatFile, into an MFileUniv and into
// an MFiles with segments of 1 GiB, and in the same run, on the same files,
// copies the same bytes with `dd iflag=direct oflag=direct bs=4M`, with
// `cat sources > dest; sync`, and measures the disk's own limit for a copy
// with fio: one job reads a source while another writes a destination of
// the same size, direct, 4 MiB blocks, 8 in flight each; the slower leg is
// the ceiling. The same fio copy with the join's memory in flight (512 KiB
// blocks, 8 a leg) shows what that memory allows. Also reads fio's source
// through AsyncReadBuffer beside fio's direct sequential read, each with the
// same memory in flight: blocks of 4 MiB (8 MiB in all) beside fio's 1 MiB
// reads 8 at a time, and blocks of 16 MiB beside its 4 MiB reads 8 at a
// time. The system's caches are dropped before each run (as root; else the files' own
// pages are evicted). Prints MB/s of the best and the median run of each,
// ratios, and the growth of the peak resident size.
//
//   ./files_concat_bench [--sources=8] [--source-mib=128] [--dir=.] [--benchmark_repetitions=3]
#include <VantoroBasicUtils/files/AsyncReadBuffer.h>
#include <VantoroBasicUtils/files/MFileUniv.h>
#include <VantoroBasicUtils/files/MFiles.h>
#include <VantoroBasicUtils/text/MString.h>

#include <benchmark/benchmark.h>


#include "support/BenchFiles.h"

namespace {

struct Setup {
  std::vector<std::string> sources;
  std::string destination;
  uint64_t sourceBytes = 0;
  long memoryGrowthKiB = 0;  // peak resident size over baselineKiB in any join
  long baselineKiB = 0;
};
Setup gSetup;

MString Units(const std::string& path) {
  MString text;
  text.ImportASCII(path.c_str(), -1);
  return text;
}

bool gDropped = false;  // the whole system's caches could be dropped

void ColdCaches() {
  std::filesystem::remove(gSetup.destination);
  for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(gSetup.destination).parent_path())) {
    if (entry.path().filename().string().rfind("joined.iso", 0) == 0) std::filesystem::remove(entry.path());
  }
  for (const auto& source : gSetup.sources) bench::Evict(source);
  ::sync();
  std::FILE* drop = std::fopen("/proc/sys/vm/drop_caches", "w");
  gDropped = drop && std::fputs("3", drop) >= 0;
  if (drop) gDropped = std::fclose(drop) == 0 && gDropped;
}

// Joins every source into `destination` (MFileUniv or MFiles), open already.
template <typename File>
bool JoinInto(File& destination) {
  if (destination.ConcatInitialize(2048, 0) != 0) return false;
  bool cancelled = false;
  for (const auto& source : gSetup.sources) {
    MString path = Units(source);
    if (destination.ConcatFile(path, 0, cancelled) != 0) return false;
  }
  gSetup.memoryGrowthKiB = std::max(gSetup.memoryGrowthKiB, bench::MemoryKiB("VmHWM:") - gSetup.baselineKiB);
  return destination.FClose() == 0;
}

// MFileUniv's ConcatFile has two more arguments than MFiles's.
struct PlainDestination : MFileUniv {
  long ConcatFile(unsigned short* path, long reserved, bool& cancelled) {
    return MFileUniv::ConcatFile(path, reserved, cancelled, 0);
  }
};

bool JoinWithConcatFile() {
  PlainDestination destination;
  if (destination.FOpen(Units(gSetup.destination), MFile::file_overlapped_create) != 0) return false;
  return JoinInto(destination);
}

bool JoinIntoSegments() {
  MFiles destination;
  destination.SetMaxFileSize(1024LL << 20);
  if (destination.FOpen(Units(gSetup.destination), MFile::file_overlapped_create) != 0) return false;
  return JoinInto(destination);
}

// fio's figure for `job` (read or write bandwidth, KiB/s) in MB/s, from its terse output.
// `depth`: the block size and the transfers in flight of each job.
double FioRate(const std::string& options, const std::string& depth = "--bs=4M --iodepth=8") {
  std::string command = "fio --output-format=terse --terse-version=3 --direct=1 " + depth +
                        " --ioengine=io_uring --size=" + std::to_string(gSetup.sourceBytes * gSetup.sources.size()) +
                        " " + options;
  std::FILE* out = ::popen(command.c_str(), "r");
  if (!out) return 0;
  double slowest = 0;
  char line[8192];
  while (std::fgets(line, sizeof line, out)) {
    std::vector<std::string> fields;
    std::string field;
    for (char* c = line; *c && *c != '\n'; ++c) {
      if (*c == ';') {
        fields.push_back(field);
        field.clear();
      } else {
        field += *c;
      }
    }
    fields.push_back(field);
    if (fields.size() < 48) continue;
    // Field 7: read KiB/s; field 48: write KiB/s (terse version 3, counted from 1).
    double rate = std::max(std::atof(fields[6].c_str()), std::atof(fields[47].c_str())) * 1024 / 1e6;
    slowest = slowest == 0 ? rate : std::min(slowest, rate);
  }
  ::pclose(out);
  return slowest;
}

// Reads `path` whole through an AsyncReadBuffer of two `blockBytes` blocks.
uint64_t ReadAhead(const std::string& path, long blockBytes) {
  MFileUniv file;
  if (file.FOpen(Units(path), MFile::file_overlapped_read) != 0) return 0;
  AsyncReadBuffer ahead;
  if (ahead.InitReadBuffer(&file, 0, blockBytes, 0) != 0) return 0;
  static char piece[65536];
  uint64_t total = 0;
  for (int got; (got = ahead.ReadBuffer(static_cast<long long>(total), piece, sizeof piece)) > 0;) {
    total += static_cast<uint64_t>(got);
  }
  file.FClose();
  return total;
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

  // One big source for the copy ceiling: the same bytes as all sources together.
  const std::string fioSource = folder.Path() + "/fio-source.bin";
  bench::MakeFile(fioSource, gSetup.sourceBytes * gSetup.sources.size(), 99);
  const std::string fioDestination = folder.Path() + "/fio-destination.bin";
  gSetup.baselineKiB = bench::MemoryKiB("VmHWM:");

  bench::JobTimes times(gSetup.sourceBytes * gSetup.sources.size(), ColdCaches);
  times.Add("ConcatFile_MFileUniv", JoinWithConcatFile);
  times.Add("ConcatFile_MFiles_1GiB", JoinIntoSegments);
  times.Add("dd_direct_4M", JoinWithDd);
  times.Add("cat_then_sync", JoinWithCat);
  times.Run(argc, argv);

  // fio and the read-ahead, caches dropped before each; each round runs the
  // jobs in another order, so that none always follows the same one.
  bench::Rates copyCeiling, copySameMemory, fioRead, fioReadSmall, readAhead, readAheadLarge;
  const std::string copy =
      "--name=read --rw=read --filename=" + fioSource + " --name=write --rw=write --filename=" + fioDestination;
  const uint64_t allBytes = gSetup.sourceBytes * gSetup.sources.size();
  auto ReadAheadAll = [&](const std::string& path, long blockBytes) {
    const uint64_t got = ReadAhead(path, blockBytes);
    if (got != allBytes) std::fprintf(stderr, "the read-ahead fell short\n");
    return got;
  };
  const std::vector<std::function<void()>> jobs = {
      [&] { copyCeiling.Add(FioRate(copy)); },
      // The same copy with the join's memory in flight: 4 MiB a leg.
      [&] { copySameMemory.Add(FioRate(copy, "--bs=512k --iodepth=8")); },
      [&] { fioRead.Add(FioRate("--name=read --rw=read --filename=" + fioSource)); },
      [&] { fioReadSmall.Add(FioRate("--name=read --rw=read --filename=" + fioSource, "--bs=1M --iodepth=8")); },
      [&] { readAhead.Add(bench::Timed([&] { return ReadAheadAll(fioSource, 4 << 20); })); },
      [&] { readAheadLarge.Add(bench::Timed([&] { return ReadAheadAll(fioSource, 16 << 20); })); },
  };
  const int rounds = std::stoi(bench::Option(argc, argv, "benchmark_repetitions", "3"));
  for (int i = 0; i < rounds; ++i) {
    for (std::size_t k = 0; k < jobs.size(); ++k) {
      ColdCaches();
      std::filesystem::remove(fioDestination);
      jobs[(k + static_cast<std::size_t>(i) * 2) % jobs.size()]();
    }
  }
  std::filesystem::remove(fioDestination);

  std::printf("\n%d sources of %llu MiB, %s before each run; MB/s of the best and the median run:\n", sources,
              static_cast<unsigned long long>(mib), gDropped ? "system caches dropped" : "the files' pages evicted");
  const bench::Rates& join = times.Of("ConcatFile_MFileUniv");
  const bench::Rates& segments = times.Of("ConcatFile_MFiles_1GiB");
  const bench::Rates& dd = times.Of("dd_direct_4M");
  const bench::Rates& cat = times.Of("cat_then_sync");
  auto line = [](const char* what, const bench::Rates& rates) {
    std::printf("  %-42s %8.1f %8.1f\n", what, rates.Best(), rates.Median());
  };
  line("ConcatFile into MFileUniv", join);
  line("ConcatFile into MFiles 1 GiB", segments);
  line("dd direct 4M", dd);
  line("cat + sync", cat);
  line("fio copy ceiling (slower leg)", copyCeiling);
  line("fio copy, 8 MiB in flight (slower leg)", copySameMemory);
  line("AsyncReadBuffer, 4 MiB blocks", readAhead);
  line("fio direct read, 1 MiB x 8 in flight", fioReadSmall);
  line("AsyncReadBuffer, 16 MiB blocks", readAheadLarge);
  line("fio direct read, 4 MiB x 8 in flight", fioRead);
  auto ratio = [](const char* what, const bench::Rates& a, const bench::Rates& b, const char* goal = "") {
    auto over = [](double x, double y) { return y > 0 ? x / y : 0.0; };
    std::printf("  %-42s %8.2f %8.2f   %s\n", what, over(a.Best(), b.Best()), over(a.Median(), b.Median()), goal);
  };
  ratio("join / dd", join, dd);
  ratio("join / cat+sync", join, cat, "(goal >= 1.20)");
  ratio("join / fio ceiling", join, copyCeiling, "(goal >= 0.90)");
  ratio("join / fio copy with 8 MiB in flight", join, copySameMemory);
  ratio("MFiles / MFileUniv", segments, join, "(goal >= 0.95)");
  ratio("AsyncReadBuffer / fio read, 8 MiB in flight", readAhead, fioReadSmall, "(goal >= 0.95)");
  ratio("AsyncReadBuffer / fio read, 32 MiB in flight", readAheadLarge, fioRead, "(goal >= 0.95)");
  ratio("AsyncReadBuffer 4 MiB blocks / fio 32 MiB", readAhead, fioRead);
  std::printf("  peak resident size growth in a join: %ld KiB (two buffers: %d KiB)\n", gSetup.memoryGrowthKiB,
              2 * 4096);
  return 0;
}
