// UStringUtils, CStringExtract and the path and comparison functions.
#include <cstdlib>
#include <cstring>

#include "platform/internal/WideText.h"
#include "text/CStringExtract.h"
#include "text/PathText.h"
#include "text/UStringUtils.h"

namespace wt = vbu::wtext;

// ---- UStringUtils

char UStringUtils::mABuffer[1024];
unsigned short UStringUtils::mTBuffer[2048];

char* UStringUtils::TtoA(unsigned short* text) { return TtoA(static_cast<const unsigned short*>(text)); }

char* UStringUtils::TtoA(const unsigned short* text) {
  MString s(text);
  s.ExportASCII(mABuffer, sizeof mABuffer - 1, kCharacterSetWindows);
  return mABuffer;
}

unsigned short* UStringUtils::AtoT(char* text) { return AtoT(static_cast<const char*>(text)); }

unsigned short* UStringUtils::AtoT(const char* text) {
  MString s;
  s.ImportASCII(text, -1);
  s.ExportUnicode(mTBuffer, 2048);
  return mTBuffer;
}

unsigned short* UStringUtils::strchr(const unsigned short* text, int c) {
  return wt::Find(text, static_cast<unsigned short>(c));
}

unsigned short* UStringUtils::strrchr(const unsigned short* text, int c) {
  return wt::FindLast(text, static_cast<unsigned short>(c));
}

unsigned short* UStringUtils::strstr(const unsigned short* text, const unsigned short* part) {
  return wt::FindText(text, part);
}

unsigned int UStringUtils::strlen(const unsigned short* text) { return static_cast<unsigned int>(wt::Length(text)); }

unsigned short* UStringUtils::strcpy(unsigned short* dest, const unsigned short* source) {
  std::memmove(dest, source, (wt::Length(source) + 1) * sizeof(unsigned short));
  return dest;
}

unsigned short* UStringUtils::strncpy(unsigned short* dest, const unsigned short* source, unsigned int count) {
  unsigned int i = 0;
  for (; i < count && source[i]; ++i) dest[i] = source[i];
  for (; i < count; ++i) dest[i] = 0;  // padded, as wcsncpy does
  return dest;
}

unsigned short* UStringUtils::strcat(unsigned short* dest, const unsigned short* source) {
  strcpy(dest + wt::Length(dest), source);
  return dest;
}

unsigned short* UStringUtils::strncat(unsigned short* dest, const unsigned short* source, unsigned int count) {
  unsigned short* end = dest + wt::Length(dest);
  unsigned int i = 0;
  for (; i < count && source[i]; ++i) end[i] = source[i];
  end[i] = 0;
  return dest;
}

int UStringUtils::strcmp(const unsigned short* a, const unsigned short* b) { return wt::Compare(a, b); }

int UStringUtils::strncmp(const unsigned short* a, const unsigned short* b, unsigned int count) {
  return wt::CompareN(a, b, count);
}

int UStringUtils::stricmp(const unsigned short* a, const unsigned short* b) { return wt::CompareNoCase(a, b); }

int UStringUtils::strnicmp(const unsigned short* a, const unsigned short* b, unsigned int count) {
  return wt::CompareNoCaseN(a, b, count);
}

int UStringUtils::atoi(const unsigned short* text) { return wt::ToInt(text); }

double UStringUtils::atof(const unsigned short* text) {
  return std::strtod(TtoA(text), nullptr);
}

unsigned short* UStringUtils::strtok(unsigned short* text, const unsigned short* separators) {
  thread_local unsigned short* position = nullptr;  // the hidden position, per thread
  return wt::Tokenize(text, separators, &position);
}

// ---- CStringExtract

namespace {

// The two forms share one walk over units or bytes.
template <class Unit>
int SeekQuote(const Unit* text) {
  for (int i = 0; text && text[i]; ++i) {
    if (text[i] == '"') return i + 1;
  }
  return 0;
}

template <class Unit>
int CopyToQuote(const Unit* text, Unit* result) {
  int behind = SeekQuote(text);
  int n = behind > 0 ? behind - 1 : 0;
  if (result) {
    for (int i = 0; i < n; ++i) result[i] = text[i];
    result[n] = 0;
  }
  return behind;
}

}  // namespace

int CStringExtract::SeekLeftDoubleQuat(unsigned short* text) { return SeekQuote(text); }
int CStringExtract::SeekLeftDoubleQuat(const unsigned short* text) { return SeekQuote(text); }
int CStringExtract::GetString(unsigned short* text, unsigned short* result) { return CopyToQuote(text, result); }
int CStringExtract::GetString(const unsigned short* text, unsigned short* result) { return CopyToQuote(text, result); }
int CStringExtract::SeekLeftDoubleQuatChar(const char* text) { return SeekQuote(text); }
int CStringExtract::GetStringChar(const char* text, char* result) {
  return CopyToQuote(text, result);
}

// ---- comparison and paths

namespace {
// The byte routine toupper as the "C" locale has it, whatever the host's locale.
unsigned int ByteUpper(unsigned int c) { return (c >= 'a' && c <= 'z') ? c - ('a' - 'A') : c; }
}  // namespace

namespace vbu {

int strncasecmp(const unsigned short* a, const unsigned short* b, int count) {
  for (int i = 0; i < count; ++i) {
    auto x = static_cast<unsigned short>(ByteUpper(a[i]));
    auto y = static_cast<unsigned short>(ByteUpper(b[i]));
    if (x != y) return x < y ? -1 : 1;
    if (x == 0) return 0;
  }
  return 0;
}

int strcasecmp(const unsigned short* a, const unsigned short* b) {
  for (;; ++a, ++b) {
    auto x = static_cast<signed char>(ByteUpper(*a) & 0xFF);
    auto y = static_cast<signed char>(ByteUpper(*b) & 0xFF);
    if (x == 0 && y == 0) return 0;
    if (x != y) return x < y ? -1 : 1;
  }
}

namespace {

const unsigned short kDot[] = {'.', 0};
const unsigned short kRoot[] = {kPathSeparator, 0};
char kDotChar[] = ".";

template <class Unit>
Unit* LastName(Unit* path, Unit separator, Unit* dot) {
  if (!path || !*path) return dot;
  std::size_t length = 0;
  while (path[length]) ++length;
  while (length > 0 && path[length - 1] == separator) path[--length] = 0;  // erased one by one
  if (length == 0) {
    path[0] = separator;  // the path was all separators: one is left
    return path;
  }
  Unit* name = path;
  for (std::size_t i = 0; i < length; ++i) {
    if (path[i] == separator) name = path + i + 1;
  }
  return name;
}

}  // namespace

unsigned short* dirname(unsigned short* path) {
  if (!path || !*path) return const_cast<unsigned short*>(kDot);
  long end = static_cast<long>(wt::Length(path));
  while (end > 0 && path[end - 1] == kPathSeparator) --end;  // stepped over, not removed
  if (end == 0) return const_cast<unsigned short*>(kRoot);
  long last = end - 1;
  while (last >= 0 && path[last] != kPathSeparator) --last;
  if (last < 0) return const_cast<unsigned short*>(kDot);
  while (last > 0 && path[last - 1] == kPathSeparator) --last;  // the run of separators
  path[last == 0 ? 1 : last] = 0;
  return path;
}

unsigned short* basename(unsigned short* path) {
  return LastName(path, kPathSeparator, const_cast<unsigned short*>(kDot));
}

char* basename(char* path) { return LastName(path, kPathSeparatorChar, kDotChar); }

}  // namespace vbu

MString DirName(const MString& path) {
  if (path.GetLength() == 0) return MString(vbu::ToUnits(u"."));
  const unsigned short* text = path;
  const unsigned short* last = vbu::wtext::FindLast(text, kPathSeparator);
  if (!last) return path;
  return last == text ? MString() : MString(text, static_cast<int>(last - text));
}

MString BaseName(const MString& path) {
  int length = path.GetLength();
  if (length == 0) return MString(vbu::ToUnits(u"."));
  unsigned short* last = vbu::wtext::FindLast(path, kPathSeparator);
  if (!last) return path;
  return MString(last + 1);
}
