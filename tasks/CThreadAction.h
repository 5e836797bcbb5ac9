// CThreadAction.h: the process-wide list of tasks. Every task that gets past
// PrePlay stands on it from Execute until CleanUp. It answers the host's
// questions (how many tasks, the first visible one, is a kind of task under
// way) and keeps the one scheduling rule: of the single-run tasks, at most
// one of each class runs at a time, and the others wait in order of arrival.
//
//   static LListener myTaskWindow;
//   CThreadAction::GetThreadAction()->AddListener(&myTaskWindow);   // hears 29000 and 29001
//   constexpr long kBurnTask = 7;                                   // the host's numbering
//   if (CThreadAction::GetThreadAction()->IsThreadTypeRunning(kBurnTask)) std::printf("burning\n");
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include <VantoroBasicUtils/containers/LArray.h>
#include <VantoroBasicUtils/messaging/LBroadcaster.h>
#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/platform/Sync.h>

class CBrevanderThread;

// Sent on the list's broadcaster with the task as param, under the list's lock.
constexpr long kMsgThreadAdded = 29000;    // at the end of AddThread
constexpr long kMsgThreadRemoved = 29001;  // at the end of RemoveThread

// The operations hold mSection, a lock that the holding thread may take
// again, except GetThreadCount, GetVisibleCount and GetThread, which take
// it never and answer at once whatever other threads hold: a count or a
// position read from them may be stale by the time it is used. A listener
// of 29000 or 29001, and an overriding Start or PassInformation, may start,
// abort or look up tasks, but must not wait for another thread that may
// itself call into the list. Listeners run on the thread that made the
// call, which can be a worker thread. Tasks are two of one class when the
// names of their most derived classes, as run-time type identification
// gives them, are equal.
class VBU_API CThreadAction : public LBroadcaster {
 public:
  CThreadAction();
  // Neither waits for nor deletes the tasks still on the list.
  ~CThreadAction() override;

  // The one instance.
  static CThreadAction* GetThreadAction();

  // Appends the task (and to the visible list if it is visible), then sends kMsgThreadAdded.
  void AddThread(CBrevanderThread* task);
  // Takes the task off every list; a running single-run task hands over to
  // the longest-waiting one of its class (PassInformation, then its Start).
  // Then sends kMsgThreadRemoved.
  void RemoveThread(CBrevanderThread* task);
  // Starts a worker task, or leaves a single-run one waiting behind a
  // running task of its class. A task no longer on the list is left alone.
  void Start(CBrevanderThread* task);

  // The first running (waiting) task of the same class as `task`, or null.
  CBrevanderThread* FindRunningThread(CBrevanderThread* task);
  CBrevanderThread* FindWaitingThread(CBrevanderThread* task);
  // The first task on `list` of the same class as `task` (itself included), or null.
  CBrevanderThread* FindThread(LList* list, CBrevanderThread* task);
  // The first running single-run task whose GetThreadId is `threadId`, or null.
  CBrevanderThread* FindThread(unsigned int threadId);
  // The first task whose GetDescription equals `description` (case matters), or null.
  CBrevanderThread* FindThread(const unsigned short* description);
  CBrevanderThread* FindThread(unsigned short* description);
  CBrevanderThread* GetFirstVisibleThread();
  long GetVisibleCount();
  long GetThreadCount();
  // The task at 1-based `position`, or null. A count read earlier may be
  // stale by now: a loop up to GetThreadCount must allow for a null.
  CBrevanderThread* GetThread(long position);
  // The position of the first task of `type` (GetThreadType), waiting ones too; 0 if none.
  long IsThreadTypeRunning(long type);

 private:
  friend class CBrevanderThread;  // Execute adds and starts under one hold

  // A hold of mSection that counts this thread's nested holds; when the
  // outermost ends, the starts refused under it are reported and ended,
  // with no lock of the list held.
  class StHold {
   public:
    explicit StHold(CThreadAction* list);
    ~StHold();
    StHold(const StHold&) = delete;
    StHold& operator=(const StHold&) = delete;

   private:
    CThreadAction* mList;
  };
  // Keeps a refused start for the end of this thread's outermost hold;
  // false when the thread holds no lock of the list (report it now).
  bool DeferRefusedStart(CBrevanderThread* task, uint32_t error);

  // The first task on `list` of the class of `task`; with `live`, only one
  // whose run has not ended (an aborted waiting task is passed nothing).
  CBrevanderThread* FindOfClass(LList* list, CBrevanderThread* task, bool live);
  // Change mThreads and mVisibleThreads (under mSection) with their counts.
  void Enter(CBrevanderThread* task);
  void Leave(CBrevanderThread* task);
  void Change(CBrevanderThread* task, bool enter);

  // Locks of the list. mSection guards the four lists, and is held across
  // task starts, PassInformation and the broadcasts 29000 and 29001, as the
  // operations above say. mItemsGuard guards only the storage of mThreads
  // against GetThread while Enter or Leave moves it; it is held for the
  // change of one item or one fetch, never across anything else, and is
  // the last lock taken. The counts are single words, written under both.
  LList mThreads;         // every task, in order of arrival
  LList mVisibleThreads;  // those visible on arrival
  LList mRunningThreads;  // single-run worker tasks that have been started
  LList mWaitingThreads;  // single-run worker tasks held back by a running one of their class
  CCriticalSection mSection;
  std::mutex mItemsGuard;
  std::atomic<long> mThreadCount{0};
  std::atomic<long> mVisibleCount{0};

  static CThreadAction sThreadAction;
};
