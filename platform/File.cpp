#include "platform/File.h"

#include "platform/AsyncIO.h"
#include "platform/CodePage.h"
#include "platform/Errors.h"
#include "platform/PathBytes.h"
#include "platform/SysCalls.h"
#include "platform/WideText.h"

#if defined(_WIN32)
#include "Windows/File.inc"
#else
#include "Unix/File.inc"
#endif
