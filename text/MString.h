// MString.h: the library's one string class: an owned block of 16-bit
// units (UTF-16 code units, surrogates not interpreted) with a terminator,
// exactly as long as its text. Length is found by scanning.
//
//   MString name(u"clip"_u16);            // see TextLiteral.h for _u16
//   name += u".vob"_u16;
//   name.Format(u"%s %d"_u16, static_cast<const unsigned short*>(name), 3);
#pragma once

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/text/TextLiteral.h>

// The byte code page of ExportASCII: 1 is the Macintosh set (Mac Roman),
// anything else the system's (UTF-8 here).
enum character_set_type { kCharacterSetMacintosh = 1, kCharacterSetWindows = 2 };

class VBU_API MString {
 public:
  // Empty.
  MString();
  // `count` 0: `text` up to its terminator. Otherwise `count` units,
  // stopping early at a terminator, in a block of `count` + 1 units.
  // `text` must not be null.
  MString(const unsigned short* text, int count = 0);
  MString(const MString& other);
  // Empty, with room for `capacity` units to be filled through the
  // non-const conversion.
  explicit MString(unsigned int capacity);
  virtual ~MString();

  // Copies `text` (null gives empty; the string's own text changes nothing).
  MString& operator=(const unsigned short* text);
  MString& operator=(const MString& other);

  // Units before the terminator.
  int GetLength() const;
  // The unit at `index`; no check (the length gives the terminator).
  const unsigned short& operator[](int index) const { return mBuffer[index]; }
  // The block itself, valid until an operation replaces it.
  operator unsigned short*() { return mBuffer; }
  operator const unsigned short*() const { return mBuffer; }

  // 1 if the two texts are equal ignoring case, else 0.
  int CaseCmp(const unsigned short* text) const;
  int CaseCmp(const MString& text) const;

  // Appends; the argument may be this string or point into it.
  MString& operator+=(const MString& text);
  MString& operator+=(const unsigned short* text);
  // Replaces the text: %d and %x take an int, %f a double, %s a terminated
  // 16-bit text; any other unit after % is copied as it stands. At most
  // 8191 units; what would pass that is cut.
  void Format(const unsigned short* format, ...);
  // Text `id` of the string table of module `moduleName` (null: the
  // library's default module; a module not registered: the program's own
  // table), at most 255 units; empty if there is none (see UStringResources).
  void LoadStr(unsigned long id, const unsigned short* moduleName = nullptr);

  // Keeps `length` units from `start` (clipped); gives the units kept.
  int Cut(int start, int length);
  // Splits at the first (or last) `separator` into `left` and `right`,
  // neither holding it. Gives 0.
  long Split(unsigned short separator, MString& left, MString& right, bool fromStart);
  // Removes one final line feed.
  void StripNewline();
  // Removes a last (first) unit equal to `c`; true if it did.
  bool RemoveTailChar(unsigned short c);
  bool RemoveHeadChar(unsigned short c);
  // Removes blanks (U+0020) or line feeds (U+000A) at an end: all of them,
  // or at most one.
  void RemoveTailSpace(bool all);
  void RemoveTailCR(bool all);
  // Line feeds first, then blanks, once each.
  void RemoveTailSpaceAndCR(bool all);
  void RemoveHeadSpace(bool all);

  void Change2Upper();
  void Change2Lower();
  // Every `from` becomes `to`; a `to` of 0 cuts the text at the first `from`.
  void ChangeChar(unsigned short from, unsigned short to);

  // Replaces the text with `count` bytes (-1: up to the terminator) in the
  // system's code page.
  void ImportASCII(const char* text, long count);
  // Copies into `destination` (room for `max` units): see the source for
  // the padding and cutting rules.
  int ExportUnicode(unsigned short* destination, int max);
  // Converts into `destination` (room for `max` + 1 bytes); a text that
  // needs more than `max` bytes gives an empty destination and 0, never a
  // cut text. Gives the bytes stored.
  int ExportASCII(char* destination, int max, character_set_type set);
  // Maps the bytes from 0x80 up of a Windows-1252 text to a fixed ASCII
  // approximation table; the string is not touched.
  void DoMapWindowsCharactersToASCII(char* bytes, long count);
  // Does nothing.
  void PrintToStdout();

  friend VBU_API MString operator+(const MString& a, const MString& b);

 private:
  // Takes over a terminated block made with new[].
  MString(unsigned short* block, int);
  int getLength() const { return GetLength(); }
  // Replaces the block with a copy of `count` units of `text`.
  void Assign(const unsigned short* text, int count);

  unsigned short* mBuffer;
};

VBU_API MString operator+(const MString& a, const MString& b);
// Order by unsigned unit values; results 1 or 0.
VBU_API int operator==(const MString& a, const MString& b);
VBU_API int operator==(const unsigned short* a, const MString& b);
VBU_API int operator==(const MString& a, const unsigned short* b);
VBU_API int operator!=(const MString& a, const MString& b);
VBU_API int operator!=(const unsigned short* a, const MString& b);
VBU_API int operator!=(const MString& a, const unsigned short* b);
VBU_API int operator>(const MString& a, const MString& b);
VBU_API int operator>(const unsigned short* a, const MString& b);
VBU_API int operator<(const MString& a, const MString& b);
VBU_API int operator<(const unsigned short* a, const MString& b);
