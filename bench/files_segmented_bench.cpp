// Sequential write and read of one large file (default 2 GiB) through
// MFiles with a segment limit (default 256 MiB), beside the same through a
// single MFileUniv, in pieces of 1 MiB. Reads start from a cold cache.
// Prints MB/s of each and the ratios (goal: at least 0.95).
//
//   ./files_segmented_bench [--file-mib=2048] [--limit-mib=256] [--dir=.] [--benchmark_repetitions=3]
#include <VantoroBasicUtils/files/MFileUniv.h>
#include <VantoroBasicUtils/files/MFiles.h>
#include <VantoroBasicUtils/text/MString.h>

#include <benchmark/benchmark.h>

#include "support/BenchFiles.h"

namespace {

constexpr int kPiece = 1 << 20;
std::string gFolder;
uint64_t gBytes = 0;
long long gLimit = 0;
std::vector<char> gData(kPiece);

MString Path(const std::string& name) {
  MString path;
  path.ImportASCII((gFolder + "/" + name).c_str(), -1);
  return path;
}

// Writes gBytes to `file`, opened on `name`; false on any failure.
bool WriteAll(MFile& file, const std::string& name) {
  if (file.FOpen(Path(name), MFile::file_create_binary) != 0) return false;
  for (uint64_t done = 0; done < gBytes; done += kPiece) {
    if (file.FWrite(gData.data(), kPiece) != kPiece) return false;
  }
  return file.FClose() == 0;
}

bool ReadAll(MFile& file, const std::string& name) {
  if (file.FOpen(Path(name), MFile::file_read_binary) != 0) return false;
  std::vector<char> piece(kPiece);
  uint64_t total = 0, sum = 0;
  for (int got; (got = file.FRead(piece.data(), kPiece)) > 0;) {
    total += static_cast<uint64_t>(got);
    sum += static_cast<unsigned char>(piece[0]);
  }
  benchmark::DoNotOptimize(sum);
  file.FClose();
  return total == gBytes;
}

// Empties the cache of every file in the folder and removes the files that the write jobs make.
void Prepare() {
  for (const auto& entry : std::filesystem::directory_iterator(gFolder)) {
    std::string name = entry.path().filename().string();
    if (name.rfind("written", 0) == 0) {
      std::filesystem::remove(entry.path());
    } else {
      bench::Evict(entry.path().string());
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  const uint64_t mib = std::stoull(bench::Option(argc, argv, "file-mib", "2048"));
  gLimit = std::stoll(bench::Option(argc, argv, "limit-mib", "256")) << 20;
  bench::ScratchFolder folder(bench::Option(argc, argv, "dir", "."));
  gFolder = folder.Path();
  gBytes = mib << 20;
  for (std::size_t i = 0; i < gData.size(); ++i) gData[i] = static_cast<char>(i * 2654435761u >> 24);
  // The files that the read jobs read, made once.
  {
    MFileUniv plain;
    MFiles segmented;
    segmented.SetMaxFileSize(gLimit);
    if (!WriteAll(plain, "plain") || !WriteAll(segmented, "segmented")) {
      std::fprintf(stderr, "cannot make the files to read\n");
      return 1;
    }
  }

  bench::JobTimes times(gBytes, Prepare);
  times.Add("write_MFiles", [] {
    MFiles file;
    file.SetMaxFileSize(gLimit);
    return WriteAll(file, "written_segmented");
  });
  times.Add("write_MFileUniv", [] {
    MFileUniv file;
    return WriteAll(file, "written_plain");
  });
  times.Add("read_MFiles", [] {
    MFiles file;
    return ReadAll(file, "segmented");
  });
  times.Add("read_MFileUniv", [] {
    MFileUniv file;
    return ReadAll(file, "plain");
  });
  times.Run(argc, argv);

  std::printf("\n%llu MiB, segments of %lld MiB, pieces of 1 MiB, best of each:\n",
              static_cast<unsigned long long>(mib), gLimit >> 20);
  std::printf("  write  MFiles %8.1f MB/s   MFileUniv %8.1f MB/s   ratio %5.2f   (goal >= 0.95)\n",
              times.Rate("write_MFiles"), times.Rate("write_MFileUniv"), times.Ratio("write_MFiles", "write_MFileUniv"));
  std::printf("  read   MFiles %8.1f MB/s   MFileUniv %8.1f MB/s   ratio %5.2f   (goal >= 0.95)\n",
              times.Rate("read_MFiles"), times.Rate("read_MFileUniv"), times.Ratio("read_MFiles", "read_MFileUniv"));
  return 0;
}
