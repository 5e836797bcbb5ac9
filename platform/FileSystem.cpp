#include "platform/internal/FileSystem.h"

#include "platform/internal/Errors.h"
#include "platform/Overlapped.h"
#include "platform/internal/PathBytes.h"
#include "platform/internal/SysCalls.h"

#if defined(__linux__)
#include "linux/FileSystem.inc"
#else
#error "The platform layer has no file system queries for this system yet."
#endif
