#include "platform/FileSystem.h"

#include "platform/Errors.h"
#include "platform/Overlapped.h"
#include "platform/PathBytes.h"
#include "platform/SysCalls.h"

#if defined(_WIN32)
#include "Windows/FileSystem.inc"
#else
#include "Unix/FileSystem.inc"
#endif
