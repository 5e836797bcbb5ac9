// SysCalls.h: every system call the platform layer makes goes through one
// table, so that a test can swap an entry and make the Nth call fail with a
// chosen error. Internal; never installed.
//
//   vbu::platform::SysCalls saved = vbu::platform::Sys();
//   vbu::platform::Sys().calloc = [](std::size_t, std::size_t) -> void* { return nullptr; };
//   ...; vbu::platform::Sys() = saved;
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(_WIN32)
#include "platform/internal/SysCallsWindows.h"
#else

// The system's records, known here by name only.
struct stat;
struct statx;
struct statvfs;
struct statfs;
struct io_uring;
struct __kernel_timespec;
struct sigaction;
struct dirent;
struct passwd;

namespace vbu::platform {

// What the mmap entry gives on failure (the system's MAP_FAILED).
inline void* const kMapFailed = reinterpret_cast<void*>(-1);
// Memory in pieces of this size is contiguous in the machine: a direct
// transfer into it goes to the device as few large requests instead of
// many that each carry a scattered page.
constexpr std::size_t kHugePage = std::size_t{2} << 20;

struct SysCalls {
  void* (*calloc)(std::size_t count, std::size_t size);
  void (*free)(void* block);
  // Character set conversion; a descriptor is (void*)-1 on failure.
  void* (*iconv_open)(const char* to, const char* from);
  std::size_t (*iconv)(void* cd, char** in, std::size_t* inLeft, char** out, std::size_t* outLeft);
  int (*iconv_close)(void* cd);

  // Files and file systems; failures set errno as the system does.
  int (*open)(const char* path, int flags, unsigned mode);
  int (*close)(int fd);
  long (*read)(int fd, void* buffer, std::size_t count);
  long (*write)(int fd, const void* buffer, std::size_t count);
  long (*pread)(int fd, void* buffer, std::size_t count, int64_t offset);
  long (*pwrite)(int fd, const void* buffer, std::size_t count, int64_t offset);
  int64_t (*lseek)(int fd, int64_t offset, int origin);
  int (*fstat)(int fd, struct ::stat* info);
  int (*stat)(const char* path, struct ::stat* info);
  int (*statx)(int dirfd, const char* path, int flags, unsigned mask, struct ::statx* info);
  int (*statvfs)(const char* path, struct ::statvfs* info);
  int (*statfs)(const char* path, struct ::statfs* info);
  int (*fsync)(int fd);
  int (*ftruncate)(int fd, int64_t size);
  // fallocate with mode 0: allocates the range, growing the file to cover it.
  int (*fallocate)(int fd, int64_t offset, int64_t length);
  int (*fcntl)(int fd, int command, long argument);
  int (*unlink)(const char* path);
  int (*chmod)(const char* path, unsigned mode);
  // posix_fadvise: gives 0 or an error number (not through errno).
  int (*fadvise)(int fd, int64_t offset, int64_t length, int advice);

  // Names in folders (rename is with the environment's entries below); a
  // folder stream is the system's DIR*, null on failure.
  int (*link)(const char* existing, const char* name);
  int (*lstat)(const char* path, struct ::stat* info);
  int (*chdir)(const char* path);
  int (*rmdir)(const char* path);
  void* (*opendir)(const char* path);
  struct ::dirent* (*readdir)(void* folder);
  int (*closedir)(void* folder);
  // The same relative to an open folder, for walks that no path length limits.
  int (*openat)(int folder, const char* path, int flags, unsigned mode);
  int (*fstatat)(int folder, const char* path, struct ::stat* info, int flags);
  int (*unlinkat)(int folder, const char* path, int flags);
  void* (*fdopendir)(int fd);

  // Page-aligned blocks of zeroed memory; those of kHugePage or more on huge
  // pages where the system has them to give.
  void* (*mmap)(std::size_t size);  // kMapFailed on failure
  int (*munmap)(void* block, std::size_t size);

  // The io_uring ring of asynchronous transfers (liburing); each gives 0 (or
  // a count) or minus an errno, not through errno. A refused init makes the
  // layer move transfers on threads of its own; a refused submit hands that
  // transfer to them; a failed wait ends the transfers in the ring with its error.
  int (*io_uring_queue_init)(unsigned entries, struct ::io_uring* ring, unsigned flags);
  int (*io_uring_submit)(struct ::io_uring* ring);
  // Sleeps until the ring holds an ended entry (at once if it does) or
  // `limit` passes (null: no limit; else -ETIME). Takes nothing from the
  // ring, so that several threads may sleep in it while one takes the ends.
  int (*io_uring_wait)(struct ::io_uring* ring, struct ::__kernel_timespec* limit);

  // Threads. These give 0 or an error number (not through errno).
  // Starts a detached thread running start(arg); its handle goes to *thread.
  int (*thread_create)(uint64_t* thread, void* (*start)(void* arg), void* arg);
  // Sends `signal` to a thread of this process.
  int (*thread_kill)(uint64_t thread, int signal);
  // Unblocks `signal` for the calling thread.
  int (*thread_unblock_signal)(int signal);
  // Installs a signal's action; -1 and errno on failure.
  int (*sigaction)(int signal, const struct ::sigaction* action, struct ::sigaction* old);
  // Waits while *word equals `expected` (spurious wake-ups allowed); wakes up to `count` waiters.
  void (*futex_wait)(uint32_t* word, uint32_t expected);
  void (*futex_wake)(uint32_t* word, int count);
  // The application's environment: folders, renames over a file, the
  // running program's own file, the user's entry in the password database,
  // and modules loaded at run time (dlopen flags as the system has them).
  int (*mkdir)(const char* path, unsigned mode);
  int (*rename)(const char* from, const char* to);
  long (*readlink)(const char* path, char* buffer, std::size_t size);
  int (*getpid)();
  unsigned (*getuid)();
  // Gives 0 or an error number (not through errno); `*result` null when there is no entry.
  int (*getpwuid_r)(unsigned uid, struct ::passwd* record, char* buffer, std::size_t size, struct ::passwd** result);
  void* (*dlopen)(const char* name, int flags);
  void* (*dlsym)(void* module, const char* name);
  int (*dlclose)(void* module);
  // access(2): 0 when the calling user may `mode` (R_OK, W_OK...) the path; -1 and errno otherwise.
  int (*access)(const char* path, int mode);
  // The file of the loaded module that holds `address` (dladdr), or null.
  const char* (*module_file)(const void* address);
  // Why the last dlopen or dlsym failed, or null.
  const char* (*dlerror)();
  // A variable of the process's environment, or null: read only for the
  // user's base folders (HOME and the XDG_*_HOME variables) and, by the
  // desktop module's loader, for the display (DISPLAY, WAYLAND_DISPLAY).
  const char* (*getenv)(const char* name);
};

// The live table: what the layer calls. Tests may change its entries.
SysCalls& Sys();
// The system's own entries, for putting the live table back.
const SysCalls& DefaultSysCalls();

}  // namespace vbu::platform

#endif  // !_WIN32
