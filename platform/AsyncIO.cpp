#include "platform/AsyncIO.h"

#include "platform/Alert.h"
#include "platform/Errors.h"
#include "platform/SysCalls.h"

#if defined(_WIN32)
#include "Windows/AsyncIO.inc"
#else
#include "Unix/AsyncIO.inc"
#endif
