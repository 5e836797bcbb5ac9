#include "platform/Errors.h"

#include "platform/Overlapped.h"

#if defined(_WIN32)
#include "Windows/Errors.inc"
#else
#include "Unix/Errors.inc"
#endif
