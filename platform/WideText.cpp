#include "platform/internal/WideText.h"

#include <charconv>
#include <climits>

#if defined(__linux__)
#include "linux/WideText.inc"
#elif defined(_WIN32)
#include "windows/WideText.inc"
#else
#error "The platform layer has no WideText files for this system yet."
#endif

namespace vbu::wtext {

std::size_t Length(const Unit* text) {
  const Unit* p = text;
  while (*p) ++p;
  return static_cast<std::size_t>(p - text);
}

int Compare(const Unit* a, const Unit* b) {
  for (; *a && *a == *b; ++a, ++b) {
  }
  return static_cast<int>(*a) - static_cast<int>(*b);
}

int CompareN(const Unit* a, const Unit* b, std::size_t count) {
  for (; count > 0; --count, ++a, ++b) {
    if (*a != *b || *a == 0) return static_cast<int>(*a) - static_cast<int>(*b);
  }
  return 0;
}

int CompareNoCaseN(const Unit* a, const Unit* b, std::size_t count) {
  for (; count > 0; --count, ++a, ++b) {
    Unit x = ToLower(*a), y = ToLower(*b);
    if (x != y || x == 0) return static_cast<int>(x) - static_cast<int>(y);
  }
  return 0;
}

int CompareNoCase(const Unit* a, const Unit* b) { return CompareNoCaseN(a, b, static_cast<std::size_t>(-1)); }

Unit* Find(const Unit* text, Unit c) {
  for (;; ++text) {
    if (*text == c) return const_cast<Unit*>(text);
    if (*text == 0) return nullptr;
  }
}

Unit* FindLast(const Unit* text, Unit c) {
  const Unit* found = nullptr;
  for (;; ++text) {
    if (*text == c) found = text;
    if (*text == 0) return const_cast<Unit*>(found);
  }
}

Unit* FindText(const Unit* text, const Unit* part) {
  if (*part == 0) return const_cast<Unit*>(text);
  std::size_t n = Length(part);
  for (; *text; ++text) {
    if (*text == *part && CompareN(text, part, n) == 0) return const_cast<Unit*>(text);
  }
  return nullptr;
}

Unit* Tokenize(Unit* text, const Unit* separators, Unit** position) {
  Unit* p = text ? text : *position;
  if (!p) return nullptr;
  while (*p && Find(separators, *p)) ++p;  // leading separators
  if (*p == 0) {
    *position = nullptr;
    return nullptr;
  }
  Unit* token = p;
  while (*p && !Find(separators, *p)) ++p;
  if (*p) *p++ = 0;
  *position = p;
  return token;
}

int ToInt(const Unit* text) {
  while (*text == ' ' || (*text >= '\t' && *text <= '\r')) ++text;
  bool negative = false;
  if (*text == '+' || *text == '-') negative = *text++ == '-';
  long long value = 0;
  for (; *text >= '0' && *text <= '9'; ++text) {
    if (value <= INT_MAX) value = value * 10 + (*text - '0');  // beyond that it is held below
  }
  if (negative) value = -value;
  if (value > INT_MAX) return INT_MAX;
  if (value < INT_MIN) return INT_MIN;
  return static_cast<int>(value);
}

namespace {
// Copies bytes `from`..`to` as units into `out`, cut to `room` - 1 units.
std::size_t Widen(const char* from, const char* to, Unit* out, std::size_t room) {
  std::size_t n = 0;
  for (; from < to && n + 1 < room; ++from) out[n++] = static_cast<unsigned char>(*from);
  out[n] = 0;
  return n;
}
}  // namespace

std::size_t FormatDecimal(int value, Unit* out, std::size_t room) {
  char digits[16];
  auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  return Widen(digits, end, out, room);
}

std::size_t FormatHex(int value, Unit* out, std::size_t room) {
  char digits[16];
  auto end = std::to_chars(digits, digits + sizeof digits, static_cast<unsigned int>(value), 16).ptr;
  return Widen(digits, end, out, room);
}

std::size_t FormatFixed(double value, Unit* out, std::size_t room) {
  char digits[400];  // the widest double in fixed notation with six decimals
  auto result = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 6);
  return Widen(digits, result.ptr, out, room);
}

}  // namespace vbu::wtext
