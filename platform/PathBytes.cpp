#include "platform/internal/PathBytes.h"

#include "platform/internal/Errors.h"

namespace vbu::platform {

namespace {

// A byte that is not part of UTF-8 and the unit that stands for it.
constexpr char16_t kEscapeBase = 0xDC00;

bool IsEscape(char16_t unit) { return unit >= 0xDC80 && unit <= 0xDCFF; }

// The length of the well-formed UTF-8 sequence at `at` (1 to 4), or 0.
// Overlong forms, surrogates and values above U+10FFFF are not well formed,
// so their bytes are escaped one by one and come back as they were.
std::size_t SequenceLength(const unsigned char* at, std::size_t left, char32_t* value) {
  unsigned char lead = at[0];
  if (lead < 0x80) {
    *value = lead;
    return 1;
  }
  std::size_t length = lead >= 0xC2 && lead <= 0xDF ? 2 : lead >= 0xE0 && lead <= 0xEF ? 3 : lead >= 0xF0 && lead <= 0xF4 ? 4 : 0;
  if (length == 0 || length > left) return 0;
  char32_t code = lead & (0x7F >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((at[i] & 0xC0) != 0x80) return 0;
    code = (code << 6) | (at[i] & 0x3F);
  }
  if ((length == 3 && (code < 0x800 || (code >= 0xD800 && code <= 0xDFFF))) || (length == 4 && (code < 0x10000 || code > 0x10FFFF))) {
    return 0;
  }
  *value = code;
  return length;
}

void AppendUtf8(std::string& out, char32_t code) {
  if (code < 0x80) {
    out += static_cast<char>(code);
  } else if (code < 0x800) {
    out += static_cast<char>(0xC0 | (code >> 6));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    out += static_cast<char>(0xE0 | (code >> 12));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (code >> 18));
    out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  }
}

}  // namespace

PathBytes::PathBytes(const unsigned short* path) : mError(kErrorNoFile) {
  if (!path || !path[0]) return;
  for (const unsigned short* at = path; *at; ++at) {
    char16_t unit = *at;
    if (unit >= 0xD800 && unit <= 0xDBFF && at[1] >= 0xDC00 && at[1] <= 0xDFFF) {
      AppendUtf8(mBytes, 0x10000 + ((static_cast<char32_t>(unit) - 0xD800) << 10) + (at[1] - 0xDC00));
      ++at;
    } else if (IsEscape(unit)) {
      mBytes += static_cast<char>(unit - kEscapeBase);
    } else if (unit >= 0xD800 && unit <= 0xDFFF) {
      // A lone surrogate that stands for no byte names no file.
      mBytes.clear();
      mError = kErrorInvalidArgument;
      return;
    } else {
      AppendUtf8(mBytes, unit);
    }
  }
}

std::u16string PathText(const char* bytes, std::size_t count) {
  std::u16string text;
  text.reserve(count);
  const auto* at = reinterpret_cast<const unsigned char*>(bytes);
  for (std::size_t i = 0; i < count;) {
    char32_t code = 0;
    std::size_t length = SequenceLength(at + i, count - i, &code);
    if (length == 0) {
      text += static_cast<char16_t>(kEscapeBase + at[i]);
      ++i;
      continue;
    }
    if (code >= 0x10000) {
      text += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
      text += static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
    } else {
      text += static_cast<char16_t>(code);
    }
    i += length;
  }
  return text;
}

}  // namespace vbu::platform
