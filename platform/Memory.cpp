#include "platform/Platform.h"
#include "platform/SysCalls.h"

#if defined(_WIN32)
#include "Windows/Memory.inc"
#else
#include "Unix/Memory.inc"
#endif
