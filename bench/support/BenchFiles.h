// Helpers of the file benchmarks: a scratch folder on the disk under test,
// files of pseudo-random bytes, cold caches, and the process's memory.
#pragma once

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace bench {

// A fresh folder under `parent` (the disk under test), removed at the end.
class ScratchFolder {
 public:
  explicit ScratchFolder(const std::string& parent) {
    std::string pattern = parent + "/vbu-bench-XXXXXX";
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back(0);
    if (!mkdtemp(name.data())) {
      std::perror("mkdtemp");
      std::exit(1);
    }
    mPath = name.data();
  }
  ~ScratchFolder() { std::filesystem::remove_all(mPath); }
  const std::string& Path() const { return mPath; }

 private:
  std::string mPath;
};

// Writes `bytes` pseudo-random bytes to `path` and syncs them.
inline void MakeFile(const std::string& path, uint64_t bytes, uint32_t seed) {
  int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (fd < 0) {
    std::perror(path.c_str());
    std::exit(1);
  }
  std::vector<uint64_t> chunk((4u << 20) / 8);
  std::mt19937_64 random(seed);
  for (uint64_t done = 0; done < bytes;) {
    for (auto& word : chunk) word = random();
    const uint64_t n = std::min<uint64_t>(bytes - done, chunk.size() * 8);
    if (::write(fd, chunk.data(), n) != static_cast<ssize_t>(n)) {
      std::perror("write");
      std::exit(1);
    }
    done += n;
  }
  ::fsync(fd);
  ::close(fd);
}

// Drops the file's pages from the system cache, so that the next run reads the disk.
inline void Evict(const std::string& path) {
  int fd = ::open(path.c_str(), O_RDONLY);
  if (fd < 0) return;
  ::fdatasync(fd);
  ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
  ::close(fd);
}

// The process's resident memory in KiB (VmRSS), and its peak (VmHWM).
inline long MemoryKiB(const char* field) {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind(field, 0) == 0) return std::atol(line.c_str() + std::strlen(field) + 1);
  }
  return -1;
}

// The value of --name=value among the arguments, or `fallback`.
inline std::string Option(int argc, char** argv, const std::string& name, const std::string& fallback) {
  const std::string prefix = "--" + name + "=";
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], prefix.c_str(), prefix.size()) == 0) return argv[i] + prefix.size();
  }
  return fallback;
}

inline int Run(const std::string& command) {
  int status = std::system(command.c_str());
  if (status != 0) std::fprintf(stderr, "failed (%d): %s\n", status, command.c_str());
  return status;
}

// The rates of a job's runs, in MB (10^6 bytes) per second: the best and
// the median; 0 when it never ran.
struct Rates {
  std::vector<double> runs;
  void Add(double rate) { runs.push_back(rate); }
  double Best() const { return runs.empty() ? 0.0 : *std::max_element(runs.begin(), runs.end()); }
  double Median() const {
    std::vector<double> sorted = runs;
    std::sort(sorted.begin(), sorted.end());
    return sorted.empty() ? 0.0 : sorted[(sorted.size() - 1) / 2];
  }
};

// MB/s of `run`, which gives the bytes it moved.
template <typename Run>
double Timed(Run run) {
  auto start = std::chrono::steady_clock::now();
  const uint64_t bytes = run();
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return seconds > 0 ? static_cast<double>(bytes) / 1e6 / seconds : 0.0;
}

// Whole jobs timed side by side: each runs once a repetition (three unless
// --benchmark_repetitions says otherwise) after an untimed `prepare`, the
// repetitions of all jobs interleaved in a random order, so that a slow
// spell of the machine falls on every job alike. Keeps the rate of every run.
class JobTimes {
 public:
  JobTimes(uint64_t bytes, std::function<void()> prepare) : mBytes(bytes), mPrepare(std::move(prepare)) {}

  // Adds a job; `run` gives false when it failed.
  void Add(const std::string& name, std::function<bool()> run) {
    benchmark::RegisterBenchmark(name.c_str(), [this, name, run](benchmark::State& state) { Measure(state, name, run); })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(1)
        ->Repetitions(3);
  }
  // Runs every job, as the benchmark library's arguments say.
  void Run(int& argc, char** argv) {
    std::vector<char*> args(argv, argv + argc);
    std::string interleave = "--benchmark_enable_random_interleaving=true";
    args.insert(args.begin() + 1, interleave.data());
    int count = static_cast<int>(args.size());
    benchmark::Initialize(&count, args.data());
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
  }
  // The rates of the job's runs that did not fail.
  const Rates& Of(const std::string& name) const {
    static const Rates kNone;
    auto found = mRates.find(name);
    return found == mRates.end() ? kNone : found->second;
  }
  // Of the job's best run; 0 if it never ran.
  double Rate(const std::string& name) const { return Of(name).Best(); }
  // Rate of `a` over rate of `b`, best runs; 0 if either never ran.
  double Ratio(const std::string& a, const std::string& b) const {
    return Rate(b) > 0 ? Rate(a) / Rate(b) : 0.0;
  }

 private:
  void Measure(benchmark::State& state, const std::string& name, const std::function<bool()>& run) {
    for (auto _ : state) {
      state.PauseTiming();
      mPrepare();
      state.ResumeTiming();
      auto start = std::chrono::steady_clock::now();
      const bool ok = run();
      double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
      if (!ok) state.SkipWithError("the run failed");
      state.SetIterationTime(seconds);
      if (ok && seconds > 0) mRates[name].Add(static_cast<double>(mBytes) / 1e6 / seconds);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * mBytes));
  }

  uint64_t mBytes;
  std::function<void()> mPrepare;
  std::map<std::string, Rates> mRates;
};

}  // namespace bench
