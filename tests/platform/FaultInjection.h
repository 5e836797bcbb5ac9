// Failing the platform layer's system calls in white-box tests (programs
// linked against the library's objects, tests/platform).
//
// StSysCallTable     puts the whole table back at the end of its scope; swap
//                    entries by hand inside it.
// StSysCallFaults    counts the calls of EVERY entry of the table with one
//                    shared counter and fails the nth call, whichever entry
//                    it is, with a chosen errno: that call alone (kOnce) or
//                    it and every later one (kFromThenOn). Given a list of
//                    entries, it counts and fails only theirs: a disk that
//                    fills up is {"write", "pwrite"} from the nth on, memory
//                    that runs out {"calloc"}.
// SweepSysCallFaults runs an operation with the 1st, 2nd, 3rd... call failed,
//                    until a run makes fewer calls than the chosen n (the
//                    operation then ran untouched), checking each run.
// LeakProbe          counts what a run may leak: open descriptors and
//                    transfer records (StSysCallFaults counts the blocks).
// StTransferRoute    chooses the transfer route for a scope.
//
//   int runs = SweepSysCallFaults(EIO, [&](StSysCallFaults& faults) {
//     faults.Pause();                       // set-up and probes are not swept
//     MString path = dir.Path("f");         // (a path conversion is a call too)
//     LeakProbe probe;
//     faults.Resume();
//     {
//       MFileUniv file;
//       int result = file.FOpen(path, MFile::file_read_binary);
//       if (result == -1) EXPECT_EQ(GetLastError(), EIO) << faults.Describe();
//     }
//     faults.Pause();
//     EXPECT_TRUE(probe.Clean()) << faults.Describe() << probe.Describe();
//     EXPECT_EQ(faults.LivePageBlocks(), 0);
//   });
//   EXPECT_LT(runs, 2000);                 // it ran untouched in the end
//
// Whoever adds an entry to the table adds it to StSysCallFaults's list too:
// a static_assert below counts them.
//
// A failed call sets errno and gives the entry's failure result: null for
// calloc, kMapFailed for mmap, (void*)-1 for iconv_open, (size_t)-1 for
// iconv, null for opendir, readdir, fdopendir, dlopen, dlsym and getenv, the error itself for
// the entries that give it (fadvise, the thread entries, getpwuid_r), minus
// the error for the io_uring entries, and -1 for the rest. close, munmap,
// iconv_close, closedir and dlclose release their object first, as the
// system does when they fail. free, futex_wait, futex_wake, getpid and
// getuid cannot fail: they are neither failed nor counted.
#pragma once

#include <dirent.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <utility>

#include "platform/internal/AsyncIO.h"
#include "platform/internal/SysCalls.h"

class StSysCallTable {
 public:
  StSysCallTable() : mSaved(vbu::platform::Sys()) {}
  ~StSysCallTable() { vbu::platform::Sys() = mSaved; }
  StSysCallTable(const StSysCallTable&) = delete;
  StSysCallTable& operator=(const StSysCallTable&) = delete;

 private:
  vbu::platform::SysCalls mSaved;
};

namespace fault_detail {
// What the wrapped entries share (they cannot capture).
struct State {
  std::atomic<int> calls{0};
  std::atomic<bool> armed{false};
  std::atomic<bool> paused{false};
  std::atomic<const char*> failedEntry{nullptr};
  std::atomic<long> heapBlocks{0};
  std::atomic<long> pageBlocks{0};
  std::atomic<int> n{0};
  std::atomic<int> error{0};
  std::atomic<bool> fromThenOn{false};
  // The entries counted and failed; none listed: every entry.
  const char* only[4] = {};
  vbu::platform::SysCalls inner{};
};
inline State sState;
}  // namespace fault_detail

class StSysCallFaults : public StSysCallTable {
 public:
  enum Mode { kOnce, kFromThenOn };

  // From now until the end of the scope, fails the `n`th counted call (1 =
  // the next) with `error`. The entries wrap those live at construction, so
  // that swaps made before (a route forced, say) still hold. One at a time.
  // `only` names the entries to count and fail (at most four); the others
  // go through uncounted.
  StSysCallFaults(int n, int error, Mode mode = kOnce, std::initializer_list<const char*> only = {}) {
    int listed = 0;
    for (const char* entry : only) {
      if (listed < 4) fault_detail::sState.only[listed++] = entry;
    }
    while (listed < 4) fault_detail::sState.only[listed++] = nullptr;
    fault_detail::sState.calls = 0;
    fault_detail::sState.paused = false;
    fault_detail::sState.failedEntry = nullptr;
    fault_detail::sState.heapBlocks = 0;
    fault_detail::sState.pageBlocks = 0;
    fault_detail::sState.n = n;
    fault_detail::sState.error = error;
    fault_detail::sState.fromThenOn = mode == kFromThenOn;
    fault_detail::sState.inner = vbu::platform::Sys();
    vbu::platform::SysCalls& live = vbu::platform::Sys();
#define VBU_FAULT_ENTRY(entry, failure)                                             \
  live.entry = [](auto... args) -> decltype(fault_detail::sState.inner.entry(args...)) {          \
    if (Hit(#entry)) return failure;                                                \
    return fault_detail::sState.inner.entry(args...);                                             \
  }
// Entries whose failure still releases their object, as the system's do.
#define VBU_FAULT_RELEASE(entry)                                                    \
  live.entry = [](auto... args) -> decltype(fault_detail::sState.inner.entry(args...)) {          \
    bool fail = Hit(#entry);                                                        \
    auto result = fault_detail::sState.inner.entry(args...);                                      \
    if (!fail) return result;                                                       \
    errno = fault_detail::sState.error;                                                           \
    return -1;                                                                      \
  }
    live.calloc = [](std::size_t count, std::size_t size) -> void* {
      if (Hit("calloc")) return nullptr;
      void* block = fault_detail::sState.inner.calloc(count, size);
      if (block) ++fault_detail::sState.heapBlocks;
      return block;
    };
    live.free = [](void* block) {
      if (block) --fault_detail::sState.heapBlocks;
      fault_detail::sState.inner.free(block);
    };
    VBU_FAULT_ENTRY(iconv_open, reinterpret_cast<void*>(-1));
    VBU_FAULT_ENTRY(iconv, static_cast<std::size_t>(-1));
    VBU_FAULT_RELEASE(iconv_close);
    VBU_FAULT_ENTRY(open, -1);
    VBU_FAULT_RELEASE(close);
    VBU_FAULT_ENTRY(read, -1);
    VBU_FAULT_ENTRY(write, -1);
    VBU_FAULT_ENTRY(pread, -1);
    VBU_FAULT_ENTRY(pwrite, -1);
    VBU_FAULT_ENTRY(lseek, -1);
    VBU_FAULT_ENTRY(fstat, -1);
    VBU_FAULT_ENTRY(stat, -1);
    VBU_FAULT_ENTRY(statx, -1);
    VBU_FAULT_ENTRY(statvfs, -1);
    VBU_FAULT_ENTRY(statfs, -1);
    VBU_FAULT_ENTRY(fsync, -1);
    VBU_FAULT_ENTRY(ftruncate, -1);
    VBU_FAULT_ENTRY(fallocate, -1);
    VBU_FAULT_ENTRY(fcntl, -1);
    VBU_FAULT_ENTRY(unlink, -1);
    VBU_FAULT_ENTRY(chmod, -1);
    VBU_FAULT_ENTRY(fadvise, fault_detail::sState.error);
    live.mmap = [](std::size_t size) -> void* {
      if (Hit("mmap")) return vbu::platform::kMapFailed;
      void* block = fault_detail::sState.inner.mmap(size);
      if (block != vbu::platform::kMapFailed) ++fault_detail::sState.pageBlocks;
      return block;
    };
    live.munmap = [](void* block, std::size_t size) {
      bool fail = Hit("munmap");
      int result = fault_detail::sState.inner.munmap(block, size);
      if (result == 0) --fault_detail::sState.pageBlocks;
      if (!fail) return result;
      errno = fault_detail::sState.error;
      return -1;
    };
    VBU_FAULT_ENTRY(io_uring_queue_init, -fault_detail::sState.error);
    VBU_FAULT_ENTRY(io_uring_submit, -fault_detail::sState.error);
    VBU_FAULT_ENTRY(io_uring_wait, -fault_detail::sState.error);
    VBU_FAULT_ENTRY(link, -1);
    VBU_FAULT_ENTRY(lstat, -1);
    VBU_FAULT_ENTRY(chdir, -1);
    VBU_FAULT_ENTRY(rmdir, -1);
    VBU_FAULT_ENTRY(opendir, static_cast<void*>(nullptr));
    VBU_FAULT_ENTRY(readdir, static_cast<struct ::dirent*>(nullptr));
    VBU_FAULT_RELEASE(closedir);
    VBU_FAULT_ENTRY(openat, -1);
    VBU_FAULT_ENTRY(fstatat, -1);
    VBU_FAULT_ENTRY(unlinkat, -1);
    VBU_FAULT_ENTRY(fdopendir, static_cast<void*>(nullptr));
    VBU_FAULT_ENTRY(thread_create, fault_detail::sState.error);
    VBU_FAULT_ENTRY(thread_kill, fault_detail::sState.error);
    VBU_FAULT_ENTRY(thread_unblock_signal, fault_detail::sState.error);
    VBU_FAULT_ENTRY(sigaction, -1);
    VBU_FAULT_ENTRY(mkdir, -1);
    VBU_FAULT_ENTRY(rename, -1);
    VBU_FAULT_ENTRY(readlink, -1);
    VBU_FAULT_ENTRY(getpwuid_r, fault_detail::sState.error);
    VBU_FAULT_ENTRY(dlopen, static_cast<void*>(nullptr));
    VBU_FAULT_ENTRY(dlsym, static_cast<void*>(nullptr));
    VBU_FAULT_RELEASE(dlclose);
    VBU_FAULT_ENTRY(access, -1);
    VBU_FAULT_ENTRY(module_file, static_cast<const char*>(nullptr));
    VBU_FAULT_ENTRY(getenv, static_cast<const char*>(nullptr));
    // free, futex_wait, futex_wake, getpid, getuid and dlerror cannot fail:
    // neither failed nor counted.
#undef VBU_FAULT_ENTRY
#undef VBU_FAULT_RELEASE
    static_assert(sizeof(vbu::platform::SysCalls) == 59 * sizeof(void*),
                  "a new entry of the system-call table: wrap it above, and count it here");
    fault_detail::sState.armed = true;
  }
  ~StSysCallFaults() {
    fault_detail::sState.armed = false;
    fault_detail::sState.paused = false;
  }

  // The call that is to fail, and with which errno.
  int N() const { return fault_detail::sState.n; }
  int Error() const { return fault_detail::sState.error; }
  // Calls counted so far, the failed ones included.
  int Calls() const { return fault_detail::sState.calls.load(); }
  // True once a call has been failed.
  bool Fired() const { return fault_detail::sState.failedEntry.load() != nullptr; }
  // The entry that was failed first ("open", "io_uring_submit"...), or "".
  const char* FailedEntry() const {
    const char* name = fault_detail::sState.failedEntry.load();
    return name ? name : "";
  }
  // For failure messages: which call failed, with which errno.
  std::string Describe() const {
    return Fired() ? "call " + std::to_string(N()) + " (" + FailedEntry() + ") failed with errno " +
                         std::to_string(Error())
                   : "no call failed (n = " + std::to_string(N()) + ")";
  }
  // Lets every later call through; the counting goes on.
  void Disarm() { fault_detail::sState.armed = false; }
  // Neither counts nor fails calls until Resume: for a run's set-up and
  // checks. Calls of other threads meanwhile go uncounted too.
  void Pause() { fault_detail::sState.paused = true; }
  void Resume() { fault_detail::sState.paused = false; }

  // Blocks that the table's entries have handed out and not taken back
  // since construction: calloc against free, mmap against munmap.
  long LiveHeapBlocks() const { return fault_detail::sState.heapBlocks.load(); }
  long LivePageBlocks() const { return fault_detail::sState.pageBlocks.load(); }

 private:
  static bool Listed(const char* entry) {
    const char* const* only = fault_detail::sState.only;
    if (!only[0]) return true;
    for (int i = 0; i < 4 && only[i]; ++i) {
      if (std::strcmp(only[i], entry) == 0) return true;
    }
    return false;
  }

  // Counts one call of `entry`; true when it is to fail (errno is then set).
  static bool Hit(const char* entry) {
    if (fault_detail::sState.paused.load() || !Listed(entry)) return false;
    int call = ++fault_detail::sState.calls;
    if (!fault_detail::sState.armed.load()) return false;
    bool fail = fault_detail::sState.fromThenOn ? call >= fault_detail::sState.n : call == fault_detail::sState.n;
    if (!fail) return false;
    const char* none = nullptr;
    fault_detail::sState.failedEntry.compare_exchange_strong(none, entry);
    errno = fault_detail::sState.error;
    return true;
  }
};

// Runs `operation(faults)` under StSysCallFaults(n, error, mode) for n = 1,
// 2, ... and stops after the first run in which no call failed: the
// operation then made fewer than n calls and ran untouched. `operation`
// checks its own results; it asks `faults` whether its call failed
// (Fired(), Describe()). Cleanups inside it are counted and may be failed
// too. Gives the number of runs; stops at `limit`, which a test should
// take as a failure.
template <typename Operation>
int SweepSysCallFaults(int error, Operation&& operation, StSysCallFaults::Mode mode = StSysCallFaults::kOnce,
                       int limit = 2000) {
  for (int n = 1; n <= limit; ++n) {
    StSysCallFaults faults(n, error, mode);
    operation(faults);
    if (!faults.Fired()) return n;
  }
  return limit;
}

// Chooses the transfer route for a scope, and puts back the one before.
class StTransferRoute {
 public:
  explicit StTransferRoute(vbu::TransferRoute route) : mSaved(vbu::GetTransferRoute()) { vbu::SetTransferRoute(route); }
  ~StTransferRoute() { vbu::SetTransferRoute(mSaved); }
  StTransferRoute(const StTransferRoute&) = delete;
  StTransferRoute& operator=(const StTransferRoute&) = delete;

 private:
  vbu::TransferRoute mSaved;
};

// Counts, at construction and on demand, the process's open descriptors and
// the engine's transfer records in use; Clean() is true when neither grew.
class LeakProbe {
 public:
  LeakProbe() : mDescriptors(OpenDescriptors()), mRequests(vbu::platform::TransferRequestsInUse()) {}

  static int OpenDescriptors() {
    int count = 0;
    if (DIR* dir = opendir("/proc/self/fd")) {
      while (dirent* entry = readdir(dir)) count += entry->d_name[0] != '.';
      closedir(dir);
    }
    return count - 1;  // the listing's own
  }
  bool Clean() const {
    return OpenDescriptors() <= mDescriptors && vbu::platform::TransferRequestsInUse() <= mRequests;
  }
  std::string Describe() const {
    return " descriptors " + std::to_string(mDescriptors) + " -> " + std::to_string(OpenDescriptors()) +
           ", transfer records " + std::to_string(mRequests) + " -> " +
           std::to_string(vbu::platform::TransferRequestsInUse());
  }

 private:
  int mDescriptors;
  std::size_t mRequests;
};

// After a swept run: nothing leaked since `probe` was made, and no block of
// the table's left.
inline void ExpectNothingLeaked(const StSysCallFaults& faults, const LeakProbe& probe) {
  EXPECT_TRUE(probe.Clean()) << faults.Describe() << probe.Describe();
  EXPECT_EQ(faults.LivePageBlocks(), 0) << faults.Describe();
  EXPECT_EQ(faults.LiveHeapBlocks(), 0) << faults.Describe();
}
