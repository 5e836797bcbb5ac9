// LocalTime.h: a moment as the calendar and clock of the local time zone
// show it. Internal; never installed.
//
//   vbu::platform::CalendarTime t;
//   if (vbu::platform::ToLocalTime(status.st_mtime64, &t)) year = t.year;
#pragma once

#include <cstdint>

namespace vbu::platform {

struct CalendarTime {
  int year, month, day, hour, minute, second;  // month 1-12, day 1-31
};
// `seconds` since 1970 in the local time zone; false if it cannot be shown.
bool ToLocalTime(int64_t seconds, CalendarTime* out);

}  // namespace vbu::platform
