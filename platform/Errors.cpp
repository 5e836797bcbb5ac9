#include "platform/internal/Errors.h"

#include "platform/Overlapped.h"

#if defined(__linux__)
#include "linux/Errors.inc"
#elif defined(_WIN32)
#include "windows/Errors.inc"
#else
#error "The platform layer has no Errors files for this system yet."
#endif

namespace vbu::platform {

std::string ErrorText(uint32_t code) {
  // The layer's own conditions have texts of their own.
  switch (code) {
    case 0: return {};
    case kErrorHandleEof: return "Reached the end of the file";
    case kErrorOperationAborted: return "The transfer was cancelled";
    case kErrorIoPending: return "A transfer is under way";
    case kErrorNotImplemented: return os::ErrnoText(os::kNotImplemented);
    default: break;
  }
  return code > 4095 ? std::string() : os::ErrnoText(static_cast<int>(code));
}

uint32_t SetLastErrorCode(uint32_t code) {
  SetLastError(code);
  return code;
}

}  // namespace vbu::platform

#if !defined(_WIN32)
namespace {
thread_local uint32_t tLastError = 0;
}  // namespace

uint32_t GetLastError() { return tLastError; }

void SetLastError(uint32_t code) { tLastError = code; }
#endif
