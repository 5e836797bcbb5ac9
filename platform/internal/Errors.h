// Errors.h: the layer's error codes. A code is the system's error number,
// except the few numbers that name conditions of their own (see
// Overlapped.h). Internal; never installed.
//
// Inside the layer every call that can fail gives its code (0: success); the
// thread's last error is set only by the file classes, at their boundary,
// with the helpers at the end of this header.
//
//   if (uint32_t error = vbu::platform::RemoveFile(path)) return vbu::platform::ReportError(error);
//   std::string text = vbu::platform::ErrorText(GetLastError());
#pragma once

#include <cstdint>
#include <string>

namespace vbu::platform {

// Codes of conditions that the portable code names (the system's numbers).
extern const uint32_t kErrorNoFile;           // no such file (ENOENT)
extern const uint32_t kErrorBadDescriptor;    // not an open file (EBADF)
extern const uint32_t kErrorInvalidArgument;  // a bad argument (EINVAL)
extern const uint32_t kErrorIo;               // the device failed (EIO)
extern const uint32_t kErrorDiskFull;         // no room left on the disk (ENOSPC)
extern const uint32_t kErrorNoMemory;         // no memory (ENOMEM)
extern const uint32_t kErrorNoThread;         // the thread is not there (ESRCH)

// The code of a system error number; 0 stays 0.
uint32_t ErrorFromErrno(int number);
// The system's text for `code` (UTF-8), without a line end; empty for a
// code that has none (0, the layer's own, or unknown numbers).
std::string ErrorText(uint32_t code);

// ---- for the file classes' boundary

// Stores `code` as the thread's last error and gives it.
uint32_t SetLastErrorCode(uint32_t code);
// Stores kErrorInvalidArgument as the last error and gives it.
inline uint32_t SetLastErrorInvalidArgument() { return SetLastErrorCode(kErrorInvalidArgument); }
// For the classes' int results: 0 for success, else -1 with `code` stored
// as the last error.
inline int ReportError(uint32_t code) { return code == 0 ? 0 : (SetLastErrorCode(code), -1); }

}  // namespace vbu::platform
