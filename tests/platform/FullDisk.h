// Fails one system call of the file entries of the platform's table,
// counted over all of them, so that a test can sweep a failure over every
// call an operation makes: n = 1, 2, ... until the operation makes fewer
// than n calls. A full disk fails every write from the `n`th write on.
// The table is put back at the end of the scope.
//
//   for (int n = 1;; ++n) {
//     StFailNthFileCall fail(n, EIO);
//     ... the operation ...
//     if (!fail.Tripped()) break;
//   }
#pragma once

#include <cerrno>

#include "platform/FaultInjection.h"
#include "platform/internal/SysCalls.h"

class StFailNthFileCall : public StSysCallTable {
 public:
  enum Mode { kOneCall, kFullDisk };

  StFailNthFileCall(int n, int error, Mode mode = kOneCall) {
    sSaved = vbu::platform::Sys();
    sCountdown = n;
    sError = error;
    sMode = mode;
    sTripped = false;
    auto& table = vbu::platform::Sys();
    Hook<&vbu::platform::SysCalls::open>(table);
    Hook<&vbu::platform::SysCalls::close>(table);
    Hook<&vbu::platform::SysCalls::read>(table);
    Hook<&vbu::platform::SysCalls::write, true>(table);
    Hook<&vbu::platform::SysCalls::pread>(table);
    Hook<&vbu::platform::SysCalls::pwrite, true>(table);
    Hook<&vbu::platform::SysCalls::lseek>(table);
    Hook<&vbu::platform::SysCalls::fstat>(table);
    Hook<&vbu::platform::SysCalls::stat>(table);
    Hook<&vbu::platform::SysCalls::ftruncate>(table);
    Hook<&vbu::platform::SysCalls::fsync>(table);
    Hook<&vbu::platform::SysCalls::unlink>(table);
    Hook<&vbu::platform::SysCalls::chmod>(table);
    Hook<&vbu::platform::SysCalls::rename>(table);
    Hook<&vbu::platform::SysCalls::link>(table);
  }
  // True once a call has been failed: the sweep has not run past the end.
  bool Tripped() const { return sTripped; }

 private:
  template <auto Member, bool kWrite>
  struct Entry;
  template <typename R, typename... A, R (*vbu::platform::SysCalls::*Member)(A...), bool kWrite>
  struct Entry<Member, kWrite> {
    static R Call(A... args) {
      if (Fails(kWrite)) {
        errno = sError;
        return static_cast<R>(-1);
      }
      return (sSaved.*Member)(args...);
    }
  };
  template <auto Member, bool kWrite = false>
  static void Hook(vbu::platform::SysCalls& table) {
    table.*Member = &Entry<Member, kWrite>::Call;
  }
  static bool Fails(bool write) {
    if (sMode == kFullDisk) {
      if (!write) return false;
      if (--sCountdown > 0) return false;
      sTripped = true;
      return true;
    }
    if (--sCountdown != 0) return false;
    sTripped = true;
    return true;
  }

  static inline vbu::platform::SysCalls sSaved{};
  static inline int sCountdown = 0;
  static inline int sError = 0;
  static inline Mode sMode = kOneCall;
  static inline bool sTripped = false;
};
