#include "tasks/CThreadAction.h"

#include <cstring>
#include <typeinfo>
#include <utility>
#include <vector>

#include "tasks/CBrevanderThread.h"
#include "text/UStringUtils.h"

namespace {

// This thread's holds of the list's lock, and the starts refused under them.
thread_local int tHolds = 0;
thread_local std::vector<std::pair<CBrevanderThread*, uint32_t>> tRefusedStarts;

void Append(LList& list, CBrevanderThread* task) { list.InsertItemsAt(1, kLastIndex, &task, 0); }

bool Contains(const LList& list, CBrevanderThread* task) { return list.FetchIndexOf(&task) != kBadIndex; }

}  // namespace

CThreadAction::StHold::StHold(CThreadAction* list) : mList(list) {
  mList->mSection.Lock();
  ++tHolds;
}

CThreadAction::StHold::~StHold() {
  --tHolds;
  mList->mSection.Unlock();
  if (tHolds > 0) return;
  // A refused task cannot end meanwhile: its run is claimed, and only its
  // own end takes it off the list.
  while (!tRefusedStarts.empty()) {
    // In the order refused; an end may promote a task whose start is refused in turn.
    auto refused = std::move(tRefusedStarts);
    tRefusedStarts.clear();
    for (auto [task, error] : refused) task->EndRefusedStart(error);
  }
}

bool CThreadAction::DeferRefusedStart(CBrevanderThread* task, uint32_t error) {
  if (tHolds == 0) return false;
  tRefusedStarts.emplace_back(task, error);
  return true;
}

CThreadAction::CThreadAction() = default;

CThreadAction::~CThreadAction() = default;

CThreadAction* CThreadAction::GetThreadAction() { return &sThreadAction; }

void CThreadAction::AddThread(CBrevanderThread* task) {
  StHold hold(this);
  Enter(task);
  BroadcastMessage(kMsgThreadAdded, task);
}

void CThreadAction::Enter(CBrevanderThread* task) { Change(task, true); }

void CThreadAction::Leave(CBrevanderThread* task) { Change(task, false); }

void CThreadAction::Change(CBrevanderThread* task, bool enter) {
  const bool visible = task->IsVisible();
  std::lock_guard<std::mutex> items(mItemsGuard);
  auto change = [&](LList& list, std::atomic<long>& count) {
    if (enter) {
      Append(list, task);
    } else {
      list.Remove(&task);
    }
    count = static_cast<long>(list.GetCount());
  };
  change(mThreads, mThreadCount);
  if (visible) change(mVisibleThreads, mVisibleCount);
}

void CThreadAction::Start(CBrevanderThread* task) {
  StHold hold(this);
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
  StHold hold(this);
  if (Contains(mRunningThreads, task)) {
    mRunningThreads.Remove(&task);
    if (CBrevanderThread* next = FindOfClass(&mWaitingThreads, task, true)) {
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
  Leave(task);
  BroadcastMessage(kMsgThreadRemoved, task);
}

CBrevanderThread* CThreadAction::FindRunningThread(CBrevanderThread* task) { return FindThread(&mRunningThreads, task); }

CBrevanderThread* CThreadAction::FindWaitingThread(CBrevanderThread* task) { return FindThread(&mWaitingThreads, task); }

CBrevanderThread* CThreadAction::FindThread(LList* list, CBrevanderThread* task) {
  return FindOfClass(list, task, false);
}

CBrevanderThread* CThreadAction::FindOfClass(LList* list, CBrevanderThread* task, bool live) {
  if (!list || !task) return nullptr;
  StHold hold(this);
  // By name, not by type_info: classes of one name in unnamed namespaces of
  // two files are distinct types, yet one class to the host.
  const char* name = typeid(*task).name();
  for (long i = 1; i <= static_cast<long>(list->GetCount()); ++i) {
    CBrevanderThread* item = nullptr;
    list->FetchItemAt(i, &item);
    if (item && std::strcmp(typeid(*item).name(), name) == 0 && !(live && item->HasEnded())) return item;
  }
  return nullptr;
}

CBrevanderThread* CThreadAction::FindThread(unsigned int threadId) {
  StHold hold(this);
  for (long i = 1; i <= static_cast<long>(mRunningThreads.GetCount()); ++i) {
    CBrevanderThread* item = nullptr;
    mRunningThreads.FetchItemAt(i, &item);
    if (item && item->GetThreadId() == threadId) return item;
  }
  return nullptr;
}

CBrevanderThread* CThreadAction::FindThread(unsigned short* description) {
  return FindThread(static_cast<const unsigned short*>(description));
}

CBrevanderThread* CThreadAction::FindThread(const unsigned short* description) {
  if (!description) return nullptr;
  StHold hold(this);
  for (long i = 1; i <= static_cast<long>(mThreads.GetCount()); ++i) {
    CBrevanderThread* item = nullptr;
    mThreads.FetchItemAt(i, &item);
    if (item && UStringUtils::strcmp(item->GetDescription(), description) == 0) return item;
  }
  return nullptr;
}

CBrevanderThread* CThreadAction::GetFirstVisibleThread() {
  StHold hold(this);
  CBrevanderThread* first = nullptr;
  mVisibleThreads.FetchItemAt(1, &first);
  return first;
}

long CThreadAction::GetVisibleCount() { return mVisibleCount; }

long CThreadAction::GetThreadCount() { return mThreadCount; }

CBrevanderThread* CThreadAction::GetThread(long position) {
  std::lock_guard<std::mutex> items(mItemsGuard);
  CBrevanderThread* task = nullptr;
  mThreads.FetchItemAt(position, &task);
  return task;
}

long CThreadAction::IsThreadTypeRunning(long type) {
  StHold hold(this);
  for (long i = 1; i <= static_cast<long>(mThreads.GetCount()); ++i) {
    CBrevanderThread* item = nullptr;
    mThreads.FetchItemAt(i, &item);
    if (item && item->GetThreadType() == type) return i;
  }
  return 0;
}
