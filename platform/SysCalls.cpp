#include "platform/internal/SysCalls.h"

#if defined(__linux__)
#include "linux/SysCalls.inc"
#else
#error "The platform layer has no system call table for this system yet."
#endif

namespace vbu::platform {

SysCalls& Sys() {
  // A function-local table is ready before any static constructor needs it.
  static SysCalls live = DefaultSysCalls();
  return live;
}

}  // namespace vbu::platform
