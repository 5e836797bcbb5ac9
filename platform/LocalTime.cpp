#include "platform/internal/LocalTime.h"

#if defined(__linux__)
#include "linux/LocalTime.inc"
#elif defined(_WIN32)
#include "windows/LocalTime.inc"
#else
#error "The platform layer has no LocalTime files for this system yet."
#endif

namespace vbu::platform {

bool ToLocalTime(int64_t seconds, CalendarTime* out) { return out && os::LocalTime(seconds, out); }

}  // namespace vbu::platform
