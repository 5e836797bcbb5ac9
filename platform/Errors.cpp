#include "platform/internal/Errors.h"

#include "platform/Overlapped.h"

#if defined(__linux__)
#include "linux/Errors.inc"
#else
#error "The platform layer has no error codes for this system yet."
#endif

#if !defined(_WIN32)
namespace {
thread_local uint32_t tLastError = 0;
}  // namespace

uint32_t GetLastError() { return tLastError; }

void SetLastError(uint32_t code) { tLastError = code; }
#endif
