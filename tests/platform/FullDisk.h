// A disk that fills up: every write of the platform's table (write and
// pwrite) fails with the given error from the `n`th on; other calls go
// through. A failure of any one call of any kind is StSysCallFaults's
// (FaultInjection.h). The table is put back at the end of the scope.
//
//   for (int n = 1;; ++n) {
//     StFailWritesFrom full(n, ENOSPC);
//     ... the operation ...
//     if (!full.Tripped()) break;
//   }
#pragma once

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>

#include "platform/FaultInjection.h"
#include "platform/internal/SysCalls.h"

class StFailWritesFrom : public StSysCallTable {
 public:
  StFailWritesFrom(int n, int error) {
    sSaved = vbu::platform::Sys();
    sCountdown = n;
    sError = error;
    sTripped = false;
    vbu::platform::Sys().write = [](int fd, const void* buffer, std::size_t count) -> long {
      return Fails() ? -1 : sSaved.write(fd, buffer, count);
    };
    vbu::platform::Sys().pwrite = [](int fd, const void* buffer, std::size_t count, int64_t offset) -> long {
      return Fails() ? -1 : sSaved.pwrite(fd, buffer, count, offset);
    };
  }
  // True once a write has been failed: the sweep has not run past the end.
  bool Tripped() const { return sTripped.load(); }

 private:
  static bool Fails() {
    // Writes come from several transfer threads at once.
    if (sCountdown.fetch_sub(1) > 1) return false;
    sTripped = true;
    errno = sError;
    return true;
  }

  static inline vbu::platform::SysCalls sSaved{};
  static inline std::atomic<int> sCountdown{0};
  static inline int sError = 0;
  static inline std::atomic<bool> sTripped{false};
};
