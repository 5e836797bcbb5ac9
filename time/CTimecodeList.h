// CTimecodeList.h: owning lists of copies of timecodes and of ranges, in the
// order added, on a cursor list; and the move of a whole list from NTSC to
// PAL numbering.
//
//   CTimecodeList marks;  marks.Add(CTimecode(0, 1, 0, 0, 30.0));
//   for (CTimecode* t = marks.GetHead(); t; t = marks.GetNext()) std::printf("%d\n", t->GetMinute());
//   marks.Change2PAL();                  // same labels, now at 25 fps
#pragma once

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/time/CDuration.h>
#include <VantoroBasicUtils/time/CTimecode.h>

class CVoidList;

// Copies of timecodes; the list owns them. GetHead, GetTail and GetNext move
// the list's one cursor.
class VBU_API CTimecodeList {
 public:
  CTimecodeList();
  ~CTimecodeList();
  CTimecodeList(const CTimecodeList&) = delete;
  // Replaces the entries with copies of `other`'s (their listeners are not copied).
  CTimecodeList& operator=(CTimecodeList& other);

  // Appends a copy of `item`.
  void Add(const CTimecode& item);
  // Frees every entry.
  void DeleteAll();
  CTimecode* GetHead();
  CTimecode* GetTail();
  // The entry after the cursor; null at the end.
  CTimecode* GetNext();
  int GetSize();
  // Each entry keeps its labels at 25 fps; frames of 25 and above become 24.
  void Change2PAL();

 private:
  CVoidList* mList;
};

// Copies of ranges; the list owns them.
class VBU_API CDurationList {
 public:
  CDurationList();
  ~CDurationList();
  CDurationList(const CDurationList&) = delete;
  CDurationList& operator=(CDurationList& other);

  void Add(const CDuration& item);
  void DeleteAll();
  CDuration* GetHead();
  CDuration* GetTail();
  CDuration* GetNext();
  int GetSize();
  // Each range becomes PAL with its start and length labels kept at 25 fps.
  void Change2PAL();

 private:
  CVoidList* mList;
};
