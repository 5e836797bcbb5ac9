// Errors.h: the layer's error codes. A code is the system's error number,
// except the few numbers that name conditions of their own (see
// Overlapped.h). Internal; never installed.
//
//   if (fd < 0) { SetLastError(vbu::platform::ErrorFromErrno(errno)); return -1; }
//   std::string text = vbu::platform::ErrorText(GetLastError());
#pragma once

#include <cstdint>
#include <string>

namespace vbu::platform {

// The code of a system error number; 0 stays 0.
uint32_t ErrorFromErrno(int number);
// The code of the calling thread's errno, also stored as its last error.
uint32_t SetLastErrorFromErrno();
// The code of a bad argument (EINVAL), also stored as the last error.
uint32_t SetLastErrorInvalidArgument();
// The system's text for `code` (UTF-8), without a line end; empty for a
// code that has none (0, the layer's own, or unknown numbers).
std::string ErrorText(uint32_t code);

}  // namespace vbu::platform
