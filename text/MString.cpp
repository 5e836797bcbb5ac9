#include "text/MString.h"

#include <cstdarg>
#include <cstring>
#include <new>

#include "platform/internal/CodePage.h"
#include "platform/internal/WideText.h"
#include "text/FormatInternal.h"
#include "text/UStringResources.h"

namespace wt = vbu::wtext;

namespace {

unsigned short* NewBlock(std::size_t units) { return new unsigned short[units]; }

void CopyUnits(unsigned short* dest, const unsigned short* source, std::size_t count) {
  if (count) std::memmove(dest, source, count * sizeof(unsigned short));
}

}  // namespace

// ---- construction

MString::MString() : mBuffer(NewBlock(1)) { mBuffer[0] = 0; }

MString::MString(const unsigned short* text, int count) : mBuffer(nullptr) {
  if (!text) {
    mBuffer = NewBlock(1);
    mBuffer[0] = 0;
  } else if (count <= 0) {
    Assign(text, static_cast<int>(wt::Length(text)));
  } else {
    mBuffer = NewBlock(static_cast<std::size_t>(count) + 1);
    int n = 0;
    while (n < count && text[n]) ++n;
    CopyUnits(mBuffer, text, static_cast<std::size_t>(n));
    mBuffer[n] = 0;
  }
}

MString::MString(const MString& other) : mBuffer(nullptr) { Assign(other.mBuffer, other.GetLength()); }

MString::MString(unsigned int capacity) : mBuffer(NewBlock(static_cast<std::size_t>(capacity) + 1)) {
  mBuffer[0] = 0;
}

MString::MString(unsigned short* block, int) : mBuffer(block) {}

MString::~MString() { delete[] mBuffer; }

void MString::Assign(const unsigned short* text, int count) {
  // The new block is filled before the old one goes: `text` may lie in it.
  unsigned short* block = NewBlock(static_cast<std::size_t>(count) + 1);
  CopyUnits(block, text, static_cast<std::size_t>(count));
  block[count] = 0;
  delete[] mBuffer;
  mBuffer = block;
}

MString& MString::operator=(const unsigned short* text) {
  if (text == mBuffer) return *this;
  if (!text) {
    Assign(nullptr, 0);
  } else {
    Assign(text, static_cast<int>(wt::Length(text)));
  }
  return *this;
}

MString& MString::operator=(const MString& other) {
  if (&other != this) Assign(other.mBuffer, other.GetLength());
  return *this;
}

// ---- access and comparison

int MString::GetLength() const { return static_cast<int>(wt::Length(mBuffer)); }

int MString::CaseCmp(const unsigned short* text) const {
  return text && wt::CompareNoCase(mBuffer, text) == 0 ? 1 : 0;
}

int MString::CaseCmp(const MString& text) const { return CaseCmp(text.mBuffer); }

int operator==(const MString& a, const MString& b) { return wt::Compare(a, b) == 0 ? 1 : 0; }
int operator==(const unsigned short* a, const MString& b) { return a && wt::Compare(a, b) == 0 ? 1 : 0; }
int operator==(const MString& a, const unsigned short* b) { return b && wt::Compare(a, b) == 0 ? 1 : 0; }
int operator!=(const MString& a, const MString& b) { return (a == b) ? 0 : 1; }
int operator!=(const unsigned short* a, const MString& b) { return (a == b) ? 0 : 1; }
int operator!=(const MString& a, const unsigned short* b) { return (a == b) ? 0 : 1; }
int operator>(const MString& a, const MString& b) { return wt::Compare(a, b) > 0 ? 1 : 0; }
int operator>(const unsigned short* a, const MString& b) { return a && wt::Compare(a, b) > 0 ? 1 : 0; }
int operator<(const MString& a, const MString& b) { return wt::Compare(a, b) < 0 ? 1 : 0; }
int operator<(const unsigned short* a, const MString& b) { return !a || wt::Compare(a, b) < 0 ? 1 : 0; }

// ---- building

MString& MString::operator+=(const unsigned short* text) {
  if (!text) return *this;
  std::size_t own = wt::Length(mBuffer), added = wt::Length(text);
  // Filled before the old block goes, so `text` may be this string or lie in it.
  unsigned short* block = new (std::nothrow) unsigned short[own + added + 1];
  if (!block) return *this;
  CopyUnits(block, mBuffer, own);
  CopyUnits(block + own, text, added);
  block[own + added] = 0;
  delete[] mBuffer;
  mBuffer = block;
  return *this;
}

MString& MString::operator+=(const MString& text) { return *this += text.mBuffer; }

MString operator+(const MString& a, const MString& b) {
  std::size_t left = wt::Length(a.mBuffer), right = wt::Length(b.mBuffer);
  unsigned short* block = new unsigned short[left + right + 1];
  CopyUnits(block, a.mBuffer, left);
  CopyUnits(block + left, b.mBuffer, right);
  block[left + right] = 0;
  return MString(block, 0);
}

void MString::Format(const unsigned short* format, ...) {
  // On the stack, and assigned at the end: an argument may be this string's text.
  unsigned short out[vbu::text::kFormatRoom];
  va_list args;
  va_start(args, format);
  std::size_t n = vbu::text::FormatUnits(out, format, args);
  va_end(args);
  Assign(out, static_cast<int>(n));
}

namespace vbu::text {

std::size_t FormatUnits(unsigned short (&out)[kFormatRoom], const unsigned short* format, va_list args) {
  std::size_t n = 0;
  const std::size_t last = kFormatRoom - 1;  // room for the terminator
  for (const unsigned short* p = format; p && *p && n < last; ++p) {
    if (*p != '%') {
      out[n++] = *p;
      continue;
    }
    unsigned short spec = *++p;
    if (spec == 0) break;  // a lone % at the end: nothing more to read
    switch (spec) {
      case 'd': n += wt::FormatDecimal(va_arg(args, int), out + n, kFormatRoom - n); break;
      case 'x': n += wt::FormatHex(va_arg(args, int), out + n, kFormatRoom - n); break;
      case 'f': n += wt::FormatFixed(va_arg(args, double), out + n, kFormatRoom - n); break;
      case 's': {
        const unsigned short* text = va_arg(args, const unsigned short*);
        for (; text && *text && n < last; ++text) out[n++] = *text;
        break;
      }
      default: out[n++] = spec;
    }
  }
  out[n] = 0;
  return n;
}

}  // namespace vbu::text

void MString::LoadStr(unsigned long id, const unsigned short* moduleName) {
  unsigned short text[256];
  if (!UStringResources::Find(moduleName, id, text, 256)) text[0] = 0;
  *this = text;
}

// ---- cutting and trimming

int MString::Cut(int start, int length) {
  int total = GetLength();
  if (start < 0 || start >= total || length <= 0) {
    Assign(nullptr, 0);
    return 0;
  }
  int kept = length < total - start ? length : total - start;
  Assign(mBuffer + start, kept);
  return kept;
}

long MString::Split(unsigned short separator, MString& left, MString& right, bool fromStart) {
  // Copies first: `left` or `right` may be this string.
  MString text(*this);
  left = text;
  right = text;
  unsigned short* found = fromStart ? wt::Find(text.mBuffer, separator) : wt::FindLast(text.mBuffer, separator);
  if (separator == 0 || !found) {
    // No separator: the whole text is the left part.
    right = static_cast<const unsigned short*>(nullptr);
    return 0;
  }
  int p = static_cast<int>(found - text.mBuffer);
  int length = text.GetLength();
  left.Cut(0, p);
  right.Cut(p + 1, length - p - 1);
  return 0;
}

void MString::StripNewline() { RemoveTailChar('\n'); }

bool MString::RemoveTailChar(unsigned short c) {
  int length = GetLength();
  if (length == 0 || mBuffer[length - 1] != c) return false;
  mBuffer[length - 1] = 0;  // shortened in place
  return true;
}

bool MString::RemoveHeadChar(unsigned short c) {
  int length = GetLength();
  if (length == 0 || mBuffer[0] != c) return false;
  Cut(1, length - 1);
  return true;
}

void MString::RemoveTailSpace(bool all) {
  while (RemoveTailChar(' ') && all) {
  }
}

void MString::RemoveTailCR(bool all) {
  while (RemoveTailChar('\n') && all) {
  }
}

void MString::RemoveTailSpaceAndCR(bool all) {
  RemoveTailCR(all);
  RemoveTailSpace(all);
}

void MString::RemoveHeadSpace(bool all) {
  int length = GetLength(), blanks = 0;
  while (blanks < length && mBuffer[blanks] == ' ' && (all || blanks == 0)) ++blanks;
  if (blanks > 0) Cut(blanks, length - blanks);
}

// ---- changing in place

void MString::Change2Upper() {
  for (unsigned short* p = mBuffer; *p; ++p) {
    if (wt::IsLower(*p)) *p = wt::ToUpper(*p);
  }
}

void MString::Change2Lower() {
  for (unsigned short* p = mBuffer; *p; ++p) {
    if (wt::IsUpper(*p)) *p = wt::ToLower(*p);
  }
}

void MString::ChangeChar(unsigned short from, unsigned short to) {
  // The length is read again at each step: a `to` of 0 ends the text there.
  for (int i = 0; i < GetLength(); ++i) {
    if (mBuffer[i] == from) mBuffer[i] = to;
  }
}

// ---- bytes

void MString::ImportASCII(const char* text, long count) {
  if (text && count == -1) count = static_cast<long>(std::strlen(text));
  if (!text || count <= 0) {
    Assign(nullptr, 0);
    return;
  }
  unsigned short* block = NewBlock(static_cast<std::size_t>(count) + 1);
  long units = vbu::platform::BytesToUnits(text, static_cast<std::size_t>(count), block,
                                           static_cast<std::size_t>(count), vbu::platform::CodePage::kSystem);
  block[units < 0 ? 0 : units] = 0;
  delete[] mBuffer;
  mBuffer = block;
}

int MString::ExportUnicode(unsigned short* destination, int max) {
  if (!destination || max < 1) return 0;
  int length = GetLength();
  if (length == 0) {
    destination[0] = 0;
    return 0;
  }
  if (length < max - 1) {
    CopyUnits(destination, mBuffer, static_cast<std::size_t>(length));
    for (int i = length; i < max; ++i) destination[i] = 0;
    return max;
  }
  CopyUnits(destination, mBuffer, static_cast<std::size_t>(max - 1));
  destination[max - 1] = 0;
  return max - 1;
}

int MString::ExportASCII(char* destination, int max, character_set_type set) {
  if (!destination || max < 0) return 0;
  int length = GetLength();
  if (length == 0) {
    destination[0] = 0;
    return 0;
  }
  std::memset(destination, 0, static_cast<std::size_t>(max));
  auto page = set == kCharacterSetMacintosh ? vbu::platform::CodePage::kMacintosh : vbu::platform::CodePage::kSystem;
  long bytes = vbu::platform::UnitsToBytes(mBuffer, static_cast<std::size_t>(length), destination,
                                           static_cast<std::size_t>(max), page);
  if (bytes < 0) {
    // Too long (or not convertible): an empty text, never a cut one.
    destination[0] = 0;
    return 0;
  }
  destination[bytes] = 0;
  return static_cast<int>(bytes);
}

void MString::DoMapWindowsCharactersToASCII(char* bytes, long count) {
  static const unsigned char kMap[128] = {
      0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20,
      0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20,
      0x20, 0xC1, 0xA2, 0xA3, 0xDB, 0xB4, 0x7C, 0xA4, 0xAC, 0xA9, 0x5F, 0xC7, 0xC2, 0xD1, 0xA8, 0xD1,
      0xBC, 0xB1, 0x5F, 0x5F, 0xAB, 0xB5, 0xB8, 0xA5, 0x5F, 0x5F, 0x5F, 0xC8, 0x5F, 0x5F, 0x5F, 0xC0,
      0xCB, 0xE7, 0x89, 0x8B, 0x80, 0x81, 0xAE, 0x82, 0xE9, 0x83, 0xE6, 0xE8, 0xED, 0xEA, 0xEB, 0xEC,
      0x5F, 0x84, 0xF1, 0xEE, 0xEF, 0xCD, 0x85, 0x5F, 0xAF, 0xF4, 0xF2, 0xF3, 0x86, 0x5F, 0x5F, 0xA7,
      0x88, 0x87, 0x89, 0x8B, 0x8A, 0x8C, 0xBE, 0x8D, 0x8F, 0x8E, 0x90, 0x91, 0x93, 0x92, 0x94, 0x95,
      0x5F, 0x96, 0x98, 0x97, 0x99, 0x9B, 0x9A, 0xD6, 0xBF, 0x9D, 0x9C, 0x9E, 0x9F, 0x5F, 0x5F, 0xD8,
  };
  if (!bytes) return;
  for (long i = 0; i < count; ++i) {
    auto b = static_cast<unsigned char>(bytes[i]);
    if (b >= 0x80) bytes[i] = static_cast<char>(kMap[b - 0x80]);
  }
}

void MString::PrintToStdout() {}
