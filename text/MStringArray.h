// MStringArray.h: an indexed array of string copies, always exactly as
// long as its content. Indices run from 0; a bad index does nothing.
//
//   MStringArray names;  names.InsertBefore(0, u"b"_u16);  names.InsertBefore(0, u"a"_u16);
//   names.Change(0, 1);              // "b", "a"
//   const unsigned short* first = names.GetAtConst(0);
#pragma once

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/text/MString.h>

class MStringList;

class VBU_API MStringArray {
 public:
  MStringArray();
  // `size` empty strings.
  explicit MStringArray(int size);
  ~MStringArray();
  MStringArray(const MStringArray&) = delete;

  int GetSize() const { return mSize; }
  // Empties the array, then makes `size` empty strings.
  void SetSize(int size);
  void RemoveAll();
  void SetAt(int index, const MString& text);
  void SetAt(int index, const unsigned short* text);
  // The string itself (the caller may change it); null for a bad index.
  MString* GetAt(int index) const;
  // Its text; null for a bad index.
  const unsigned short* GetAtConst(int index) const;
  // Puts `text` at `index` (0 to GetSize(): GetSize() appends).
  void InsertBefore(int index, const unsigned short* text);
  // Puts `text` right behind `index` (0 to GetSize() - 1).
  void InsertAfter(int index, const unsigned short* text);
  void DeleteAt(int index);
  // Exchanges two strings.
  void Swap(int first, int second);
  // Moves the string at `source` to `target`; those between close the gap.
  void Change(int target, int source);
  // Leaves the order as it is.
  void SortByName();

  MStringArray& operator=(const MStringArray& other);
  // From a list, head to tail (moves the list's cursor).
  MStringArray& operator=(MStringList& other);

 private:
  bool Valid(int index) const { return index >= 0 && index < mSize; }
  // Rebuilds the array with one string more (`text` at `index`) or, for a
  // null `text`, one less (the one at `index` gone).
  void Rebuild(int index, const unsigned short* text);

  MString* mItems;
  int mSize;
};
