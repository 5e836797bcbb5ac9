#include "platform/internal/File.h"

#include "platform/internal/AsyncIO.h"
#include "platform/internal/CodePage.h"
#include "platform/internal/Errors.h"
#include "platform/internal/PathBytes.h"
#include "platform/internal/SysCalls.h"
#include "platform/internal/WideText.h"

#if defined(__linux__)
#include "linux/File.inc"
#else
#error "The platform layer has no files for this system yet."
#endif
