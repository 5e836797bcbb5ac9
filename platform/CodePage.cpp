#include "platform/internal/CodePage.h"

#include "platform/internal/SysCalls.h"

#if defined(__linux__)
#include "linux/CodePage.inc"
#else
#error "The platform layer has no code pages for this system yet."
#endif
