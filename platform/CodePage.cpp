#include "platform/internal/CodePage.h"

#include "platform/internal/Errors.h"
#include "platform/internal/SysCalls.h"

#if defined(__linux__)
#include "linux/CodePage.inc"
#elif defined(_WIN32)
#include "windows/CodePage.inc"
#else
#error "The platform layer has no CodePage files for this system yet."
#endif
