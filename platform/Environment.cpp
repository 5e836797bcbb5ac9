#include "platform/internal/Environment.h"

#include <string>

#include "platform/PathBytes.h"
#include "platform/SysCalls.h"
#include "platform/internal/SystemText.h"

#if defined(__linux__)
#include "linux/Environment.inc"
#else
#error "No application environment for this system"
#endif
