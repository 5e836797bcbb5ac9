#include "platform/internal/AsyncIO.h"

#include "platform/internal/Alert.h"
#include "platform/internal/Errors.h"
#include "platform/internal/SysCalls.h"

#if defined(__linux__)
#include "linux/AsyncIO.inc"
#else
#error "The platform layer has no asynchronous transfers for this system yet."
#endif
