// Joins N source files (default 8 of 128 MiB, made on the fly) into one
// destination on the same disk with ConcatFile, into an MFileUniv and into
// an MFiles with segments of 1 GiB, and in the same run, on the same files,
// copies the same bytes with `dd iflag=direct oflag=direct bs=4M`, with
// `cat sources > dest; sync`, and measures the disk's own limit for a copy
// with fio: one job reads a source while another writes a destination of
// the same size, direct, 4 MiB blocks, 8 in flight each; the slower leg is
// the ceiling. Also reads one source through AsyncReadBuffer beside fio's
// direct sequential read. The system's caches are dropped before each run
// (as root; else the files' own pages are evicted). Prints MB/s, ratios
// and the growth of the peak resident size.
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
double FioRate(const std::string& options, bool twoJobs) {
  std::string command = "fio --output-format=terse --terse-version=3 --direct=1 --bs=4M --iodepth=8 "
                        "--ioengine=io_uring --size=" + std::to_string(gSetup.sourceBytes * gSetup.sources.size()) +
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
  (void)twoJobs;
  return slowest;
}

uint64_t ReadAhead() {
  MFileUniv file;
  if (file.FOpen(Units(gSetup.sources[0]), MFile::file_overlapped_read) != 0) return 0;
  AsyncReadBuffer ahead;
  if (ahead.InitReadBuffer(&file, 0, 4 << 20, 0) != 0) return 0;
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

  bench::BestTimes times(gSetup.sourceBytes * gSetup.sources.size(), ColdCaches);
  times.Add("ConcatFile_MFileUniv", JoinWithConcatFile);
  times.Add("ConcatFile_MFiles_1GiB", JoinIntoSegments);
  times.Add("dd_direct_4M", JoinWithDd);
  times.Add("cat_then_sync", JoinWithCat);
  times.Run(argc, argv);

  // fio and the read-ahead, best of three, caches dropped before each.
  double copyCeiling = 0, fioRead = 0, readAhead = 0;
  for (int i = 0; i < 3; ++i) {
    ColdCaches();
    std::filesystem::remove(fioDestination);
    copyCeiling = std::max(copyCeiling, FioRate("--name=read --rw=read --filename=" + fioSource +
                                                    " --name=write --rw=write --filename=" + fioDestination, true));
    ColdCaches();
    fioRead = std::max(fioRead, FioRate("--name=read --rw=read --filename=" + gSetup.sources[0] +
                                            " --size=" + std::to_string(gSetup.sourceBytes), false));
    ColdCaches();
    auto start = std::chrono::steady_clock::now();
    if (ReadAhead() != gSetup.sourceBytes) std::fprintf(stderr, "the read-ahead fell short\n");
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    readAhead = std::max(readAhead, static_cast<double>(gSetup.sourceBytes) / 1e6 / seconds);
  }
  std::filesystem::remove(fioDestination);

  const double join = times.Rate("ConcatFile_MFileUniv");
  std::printf("\n%d sources of %llu MiB, best of each, %s before each run:\n", sources,
              static_cast<unsigned long long>(mib), gDropped ? "system caches dropped" : "the files' pages evicted");
  std::printf("  ConcatFile into MFileUniv     %8.1f MB/s\n", join);
  std::printf("  ConcatFile into MFiles 1 GiB  %8.1f MB/s\n", times.Rate("ConcatFile_MFiles_1GiB"));
  std::printf("  dd direct 4M                  %8.1f MB/s\n", times.Rate("dd_direct_4M"));
  std::printf("  cat + sync                    %8.1f MB/s\n", times.Rate("cat_then_sync"));
  std::printf("  fio copy ceiling (slower leg) %8.1f MB/s\n", copyCeiling);
  std::printf("  join / dd                     %8.2f\n", times.Ratio("ConcatFile_MFileUniv", "dd_direct_4M"));
  std::printf("  join / cat+sync               %8.2f   (goal >= 1.20)\n", times.Ratio("ConcatFile_MFileUniv", "cat_then_sync"));
  std::printf("  join / fio ceiling            %8.2f   (goal >= 0.90)\n", copyCeiling > 0 ? join / copyCeiling : 0.0);
  std::printf("  MFiles / MFileUniv            %8.2f   (goal >= 0.95)\n",
              times.Ratio("ConcatFile_MFiles_1GiB", "ConcatFile_MFileUniv"));
  std::printf("  AsyncReadBuffer %8.1f MB/s, fio direct read %8.1f MB/s, ratio %5.2f   (goal >= 0.95)\n", readAhead,
              fioRead, fioRead > 0 ? readAhead / fioRead : 0.0);
  std::printf("  peak resident size growth in a join: %ld KiB (two buffers: %d KiB)\n", gSetup.memoryGrowthKiB,
              2 * 4096);
  return 0;
}
