// FormatInternal.h: the formatter of MString::Format, shared with the
// string list's AddFormat. Internal; never installed.
#pragma once

#include <cstdarg>
#include <cstddef>

namespace vbu::text {

// Format's work space in units, terminator included.
constexpr std::size_t kFormatRoom = 8192;

// Formats into `out`: %d and %x take an int, %f a double, %s a terminated
// 16-bit text (null: nothing); any other unit after % is copied as it stands,
// and a lone % at the end stops. Never writes past kFormatRoom units nor reads
// past the format's terminator. Gives the units written, terminator excluded.
std::size_t FormatUnits(unsigned short (&out)[kFormatRoom], const unsigned short* format, va_list args);

}  // namespace vbu::text
