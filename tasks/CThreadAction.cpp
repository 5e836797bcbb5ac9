#include "tasks/CThreadAction.h"

#include <typeinfo>

#include "tasks/CBrevanderThread.h"
#include "text/UStringUtils.h"

namespace {

void Append(LList& list, CBrevanderThread* task) { list.InsertItemsAt(1, kLastIndex, &task, 0); }

bool Contains(const LList& list, CBrevanderThread* task) { return list.FetchIndexOf(&task) != kBadIndex; }

}  // namespace

CThreadAction::CThreadAction() = default;

CThreadAction::~CThreadAction() = default;

CThreadAction* CThreadAction::GetThreadAction() { return &sThreadAction; }

void CThreadAction::AddThread(CBrevanderThread* task) {
  CSingleLock lock(&mSection, true);
  Append(mThreads, task);
  if (task->IsVisible()) Append(mVisibleThreads, task);
  BroadcastMessage(kMsgThreadAdded, task);
}

void CThreadAction::Start(CBrevanderThread* task) {
  CSingleLock lock(&mSection, true);
  // A listener of 29000 may have ended the task while it was being added.
  if (!Contains(mThreads, task)) return;
  if (!task->IsSingleRun()) {
    task->Start();
    return;
  }
  if (FindRunningThread(task)) {
    Append(mWaitingThreads, task);
    return;
  }
  Append(mRunningThreads, task);
  task->Start();
}

void CThreadAction::RemoveThread(CBrevanderThread* task) {
  CSingleLock lock(&mSection, true);
  if (Contains(mRunningThreads, task)) {
    mRunningThreads.Remove(&task);
    if (CBrevanderThread* next = FindWaitingThread(task)) {
      task->PassInformation(next);
      Append(mRunningThreads, next);
      mWaitingThreads.Remove(&next);
      next->Start();  // a refused start comes back here for `next`, and promotes the one after
    } else {
      task->PassInformation(nullptr);
    }
  } else {
    mWaitingThreads.Remove(&task);
  }
  mThreads.Remove(&task);
  if (task->IsVisible()) mVisibleThreads.Remove(&task);
  BroadcastMessage(kMsgThreadRemoved, task);
}

CBrevanderThread* CThreadAction::FindRunningThread(CBrevanderThread* task) { return FindThread(&mRunningThreads, task); }

CBrevanderThread* CThreadAction::FindWaitingThread(CBrevanderThread* task) { return FindThread(&mWaitingThreads, task); }

CBrevanderThread* CThreadAction::FindThread(LList* list, CBrevanderThread* task) {
  if (!list || !task) return nullptr;
  CSingleLock lock(&mSection, true);
  const std::type_info& type = typeid(*task);
  for (long i = 1; i <= static_cast<long>(list->GetCount()); ++i) {
    CBrevanderThread* item = nullptr;
    list->FetchItemAt(i, &item);
    if (item && typeid(*item) == type) return item;
  }
  return nullptr;
}

CBrevanderThread* CThreadAction::FindThread(unsigned int threadId) {
  CSingleLock lock(&mSection, true);
  for (long i = 1; i <= static_cast<long>(mRunningThreads.GetCount()); ++i) {
    CBrevanderThread* item = nullptr;
    mRunningThreads.FetchItemAt(i, &item);
    if (item && item->GetThreadId() == threadId) return item;
  }
  return nullptr;
}

CBrevanderThread* CThreadAction::FindThread(unsigned short* description) {
  if (!description) return nullptr;
  CSingleLock lock(&mSection, true);
  for (long i = 1; i <= static_cast<long>(mThreads.GetCount()); ++i) {
    CBrevanderThread* item = nullptr;
    mThreads.FetchItemAt(i, &item);
    if (item && UStringUtils::strcmp(item->GetDescription(), description) == 0) return item;
  }
  return nullptr;
}

CBrevanderThread* CThreadAction::GetFirstVisibleThread() {
  CSingleLock lock(&mSection, true);
  CBrevanderThread* first = nullptr;
  mVisibleThreads.FetchItemAt(1, &first);
  return first;
}

// The counts and GetThread take the lock too: a list's block can move under a reader otherwise.
long CThreadAction::GetVisibleCount() {
  CSingleLock lock(&mSection, true);
  return static_cast<long>(mVisibleThreads.GetCount());
}

long CThreadAction::GetThreadCount() {
  CSingleLock lock(&mSection, true);
  return static_cast<long>(mThreads.GetCount());
}

CBrevanderThread* CThreadAction::GetThread(long position) {
  CSingleLock lock(&mSection, true);
  CBrevanderThread* task = nullptr;
  mThreads.FetchItemAt(position, &task);
  return task;
}

long CThreadAction::IsThreadTypeRunning(long type) {
  CSingleLock lock(&mSection, true);
  for (long i = 1; i <= static_cast<long>(mThreads.GetCount()); ++i) {
    CBrevanderThread* item = nullptr;
    mThreads.FetchItemAt(i, &item);
    if (item && item->GetThreadType() == type) return i;
  }
  return 0;
}
