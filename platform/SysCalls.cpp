#include "platform/SysCalls.h"

#if defined(_WIN32)
#include "Windows/SysCalls.inc"
#else
#include "Unix/SysCalls.inc"
#endif

namespace vbu::platform {

SysCalls& Sys() {
  // A function-local table is ready before any static constructor needs it.
  static SysCalls live = DefaultSysCalls();
  return live;
}

}  // namespace vbu::platform
