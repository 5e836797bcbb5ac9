// SysCalls.h: every system call the platform layer makes goes through one
// table, so that a test can swap an entry and make the Nth call fail with a
// chosen error. An entry is read and written atomically, so that a test may
// swap it while the layer's own threads (transfers) call it. Internal;
// never installed.
//
//   vbu::platform::SysCalls saved = vbu::platform::Sys();
//   vbu::platform::Sys().calloc = [](std::size_t, std::size_t) -> void* { return nullptr; };
//   ...; vbu::platform::Sys() = saved;
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <type_traits>

// The system's records, known here by name only.
struct stat;
struct statx;
struct statvfs;
struct statfs;
struct io_uring;
struct io_uring_cqe;

namespace vbu::platform {

template <typename Signature>
class SysCall;

// One entry: a function of the system, or a test's stand-in for it. Called
// like the function; assigned a function (or a lambda without captures).
template <typename Result, typename... Args>
class SysCall<Result(Args...)> {
 public:
  using Function = Result (*)(Args...);

  constexpr SysCall() = default;  // null: to be assigned before it is called
  template <typename F>
    requires std::is_convertible_v<F, Function>
  constexpr SysCall(F function) : mFunction(static_cast<Function>(function)) {}
  SysCall(const SysCall& other) : mFunction(other.mFunction.load(std::memory_order_relaxed)) {}
  SysCall& operator=(const SysCall& other) {
    mFunction.store(other.mFunction.load(std::memory_order_relaxed), std::memory_order_relaxed);
    return *this;
  }
  template <typename F>
    requires std::is_convertible_v<F, Function>
  SysCall& operator=(F function) {
    mFunction.store(static_cast<Function>(function), std::memory_order_relaxed);
    return *this;
  }

  Result operator()(Args... args) const { return mFunction.load(std::memory_order_relaxed)(args...); }

 private:
  std::atomic<Function> mFunction;
};

// What the mmap entry gives on failure (the system's MAP_FAILED).
inline void* const kMapFailed = reinterpret_cast<void*>(-1);

struct SysCalls {
  SysCall<void*(std::size_t count, std::size_t size)> calloc;
  SysCall<void(void* block)> free;
  // Character set conversion; a descriptor is (void*)-1 on failure.
  SysCall<void*(const char* to, const char* from)> iconv_open;
  SysCall<std::size_t(void* cd, char** in, std::size_t* inLeft, char** out, std::size_t* outLeft)> iconv;
  SysCall<int(void* cd)> iconv_close;

  // Files and file systems; failures set errno as the system does.
  SysCall<int(const char* path, int flags, unsigned mode)> open;
  SysCall<int(int fd)> close;
  SysCall<long(int fd, void* buffer, std::size_t count)> read;
  SysCall<long(int fd, const void* buffer, std::size_t count)> write;
  SysCall<long(int fd, void* buffer, std::size_t count, int64_t offset)> pread;
  SysCall<long(int fd, const void* buffer, std::size_t count, int64_t offset)> pwrite;
  SysCall<int64_t(int fd, int64_t offset, int origin)> lseek;
  SysCall<int(int fd, struct ::stat* info)> fstat;
  SysCall<int(const char* path, struct ::stat* info)> stat;
  SysCall<int(int dirfd, const char* path, int flags, unsigned mask, struct ::statx* info)> statx;
  SysCall<int(const char* path, struct ::statvfs* info)> statvfs;
  SysCall<int(const char* path, struct ::statfs* info)> statfs;
  SysCall<int(int fd)> fsync;
  SysCall<int(int fd, int64_t size)> ftruncate;
  SysCall<int(int fd, int command, long argument)> fcntl;
  SysCall<int(const char* path)> unlink;
  SysCall<int(const char* path, unsigned mode)> chmod;
  // posix_fadvise: gives 0 or an error number (not through errno).
  SysCall<int(int fd, int64_t offset, int64_t length, int advice)> fadvise;

  // Page-aligned blocks of zeroed memory.
  SysCall<void*(std::size_t size)> mmap;  // kMapFailed on failure
  SysCall<int(void* block, std::size_t size)> munmap;

  // The io_uring ring of asynchronous transfers (liburing); each gives 0 (or
  // a count) or minus an errno, not through errno. A refused init makes the
  // layer move transfers on threads of its own; a refused submit hands that
  // transfer to them; a failed wait ends the transfers in the ring with its error.
  SysCall<int(unsigned entries, struct ::io_uring* ring, unsigned flags)> io_uring_queue_init;
  SysCall<int(struct ::io_uring* ring)> io_uring_submit;
  SysCall<int(struct ::io_uring* ring, struct ::io_uring_cqe** completion)> io_uring_wait_cqe;
};

// The live table: what the layer calls. Tests may change its entries.
SysCalls& Sys();
// The system's own entries, for putting the live table back.
const SysCalls& DefaultSysCalls();

}  // namespace vbu::platform
