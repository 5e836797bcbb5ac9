// MStringList.h: a linked list of string copies with one cursor. GetHead,
// GetTail, GetNext, GetAt and the assignments all move the cursor, so a
// loop over a list calls no other such operation on it.
//
//   MString format(u"%d"_u16);
//   MStringList lines;  lines.Add(u"one"_u16);  lines.AddFormat(format, 2);
//   for (MString* s = lines.GetHead(); s; s = lines.GetNext()) std::printf("%s\n", UStringUtils::TtoA(*s));
#pragma once

#include <cstdarg>

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/text/MString.h>

class CVoidList;
class MStringArray;

class VBU_API MStringList {
 public:
  MStringList();
  ~MStringList();
  MStringList(const MStringList&) = delete;

  // Appends a copy of `text`.
  void Add(const unsigned short* text);
  // Appends the text that MString::Format makes of the arguments.
  void AddFormat(unsigned short* format, ...);
  void AddFormat(const unsigned short* format, ...);
  // Appends copies of `other`'s strings (moving its cursor).
  void AddList(MStringList* other);
  void AddArray(const MStringArray& other);
  int GetSize() const;
  MString* GetHead() const;
  MString* GetTail() const;
  // The string after the cursor; null at the end.
  MString* GetNext() const;
  // The string at `index` from the head (cursor there); null beyond the tail.
  MString* GetAt(int index) const;
  // Frees the string at `index` (0 to GetSize() - 1); the cursor is then on none.
  void DeleteAt(int index);
  void DeleteAll();

  MStringList& operator=(MStringList& other);
  MStringList& operator=(MStringArray& other);

 private:
  void AddFormatList(const unsigned short* format, va_list args);

  CVoidList* mList;
};
