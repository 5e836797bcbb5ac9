#include "time/CTimecodeList.h"

#include "containers/CVoidList.h"

namespace {

// The owning-list operations that both lists share, on their cursor list.
template <class T>
struct Owned {
  static void Add(CVoidList* list, const T& item) { list->AddListToTail(new T(item)); }

  static void DeleteAll(CVoidList* list) {
    while (T* item = static_cast<T*>(list->GetHead())) {
      list->DeleteList();
      delete item;
    }
  }

  static void Assign(CVoidList* list, CVoidList* other) {
    if (list == other) return;
    DeleteAll(list);
    for (void* item = other->GetHead(); item; item = other->GetNext()) Add(list, *static_cast<T*>(item));
  }

  // The labels of `time` again, at 25 fps (frames above the rate are held at 24).
  static void RelabelAtPAL(CTimecode& time) {
    unsigned short hour, minute, second, frame;
    time.GetTime(hour, minute, second, frame);
    time.SetTime(hour, minute, second, frame, 25.0);
  }
};

}  // namespace

// ---- CTimecodeList

CTimecodeList::CTimecodeList() : mList(new CVoidList) {}

CTimecodeList::~CTimecodeList() {
  DeleteAll();
  delete mList;
}

CTimecodeList& CTimecodeList::operator=(CTimecodeList& other) {
  Owned<CTimecode>::Assign(mList, other.mList);
  return *this;
}

void CTimecodeList::Add(const CTimecode& item) { Owned<CTimecode>::Add(mList, item); }
void CTimecodeList::DeleteAll() { Owned<CTimecode>::DeleteAll(mList); }
CTimecode* CTimecodeList::GetHead() { return static_cast<CTimecode*>(mList->GetHead()); }
CTimecode* CTimecodeList::GetTail() { return static_cast<CTimecode*>(mList->GetTail()); }
CTimecode* CTimecodeList::GetNext() { return static_cast<CTimecode*>(mList->GetNext()); }
int CTimecodeList::GetSize() { return mList->GetCount(); }

void CTimecodeList::Change2PAL() {
  for (CTimecode* time = GetHead(); time; time = GetNext()) Owned<CTimecode>::RelabelAtPAL(*time);
}

// ---- CDurationList

CDurationList::CDurationList() : mList(new CVoidList) {}

CDurationList::~CDurationList() {
  DeleteAll();
  delete mList;
}

CDurationList& CDurationList::operator=(CDurationList& other) {
  Owned<CDuration>::Assign(mList, other.mList);
  return *this;
}

void CDurationList::Add(const CDuration& item) { Owned<CDuration>::Add(mList, item); }
void CDurationList::DeleteAll() { Owned<CDuration>::DeleteAll(mList); }
CDuration* CDurationList::GetHead() { return static_cast<CDuration*>(mList->GetHead()); }
CDuration* CDurationList::GetTail() { return static_cast<CDuration*>(mList->GetTail()); }
CDuration* CDurationList::GetNext() { return static_cast<CDuration*>(mList->GetNext()); }
int CDurationList::GetSize() { return mList->GetCount(); }

void CDurationList::Change2PAL() {
  // Resolution first, then start, then length: the order of the announcements.
  for (CDuration* range = GetHead(); range; range = GetNext()) {
    CTimecode start = range->GetStartTime();
    CTimecode length = range->GetDuration();
    Owned<CDuration>::RelabelAtPAL(start);
    Owned<CDuration>::RelabelAtPAL(length);
    range->SetFrameType(kFrameType25);
    range->SetStartTime(start);
    range->SetDuration(length);
  }
}
