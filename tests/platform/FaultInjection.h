// Swaps entries of the platform's system call table for a scope, so that a
// chosen call fails. The table is put back at the end of the scope.
#pragma once

#include <cerrno>
#include <cstddef>

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

// Makes calloc calls fail with ENOMEM from the `n`th call on (1 = the next).
class StFailCalloc : public StSysCallTable {
 public:
  explicit StFailCalloc(int n = 1) {
    sCountdown = n;
    vbu::platform::Sys().calloc = [](std::size_t count, std::size_t size) -> void* {
      if (--sCountdown <= 0) {
        errno = ENOMEM;
        return nullptr;
      }
      return vbu::platform::DefaultSysCalls().calloc(count, size);
    };
  }

 private:
  static inline int sCountdown = 0;
};
