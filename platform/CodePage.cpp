#include "platform/CodePage.h"

#include "platform/SysCalls.h"

#if defined(_WIN32)
#include "Windows/CodePage.inc"
#else
#include "Unix/CodePage.inc"
#endif
