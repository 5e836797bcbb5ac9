#include "platform/internal/SysCalls.h"

#if defined(__linux__)
#include "linux/SysCalls.inc"
#elif defined(_WIN32)
#include "windows/SysCalls.inc"
#else
#error "The platform layer has no SysCalls files for this system yet."
#endif

namespace vbu::platform {

SysCalls& Sys() {
  // A function-local table is ready before any static constructor needs it.
  static SysCalls live = DefaultSysCalls();
  return live;
}

}  // namespace vbu::platform
