// SystemText.h: text as the system's calls give and take it (bytes in the
// system code page, UTF-8 here), to and from 16-bit text held in a string.
// Internal; never installed.
//
//   std::u16string home = vbu::platform::FromSystemBytes(record->pw_dir, std::strlen(record->pw_dir));
//   std::string line = vbu::platform::ToSystemBytes(u"Bitrate=128");
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vbu::platform {

// 16-bit text held as char16_t, seen as the layer's units (one representation).
inline const unsigned short* AsUnits(const char16_t* text) { return reinterpret_cast<const unsigned short*>(text); }
inline unsigned short* AsUnits(char16_t* text) { return reinterpret_cast<unsigned short*>(text); }

// `count` bytes as text; bytes that are no character become U+FFFD. A
// conversion that cannot be made gives no text, and its error code in
// `*error` when given (untouched on success): callers that must not take a
// failure for an empty text ask for it.
std::u16string FromSystemBytes(const char* bytes, std::size_t count, uint32_t* error = nullptr);
// Terminated text as bytes; null gives none. `error` as above.
std::string ToSystemBytes(const char16_t* text, uint32_t* error = nullptr);

}  // namespace vbu::platform
