// CBrevanderThread.h: the base class of every long operation the host runs:
// one unit of work with a name, a status text, a progress range, an optional
// worker thread of its own, and a fixed lifecycle.
//
//   class Joiner : public CBrevanderThread {
//    public:
//     Joiner() { SetWorkerThread(true); mSingleRun = true; mHasProgress = true; SetRange(100); }
//     void RunSelf() override { while (ShouldStart() && GetPos() < GetRange()) SetPos(GetPos() + 1); }
//     void PostPlay() override { /* on the user-interface thread */ }
//   };
//   (new Joiner)->Execute();   // on the user-interface thread; the task deletes itself
//
// The road of a self-destroying worker: Execute (PrePlay, onto the task
// list, Start) on the caller's thread; RunSelf on the worker; then, on the
// user-interface thread through the dispatcher (CThreadDispatcher), PostPlay,
// kMsgTaskCleanUp, removal from the list (kMsgThreadRemoved) and deletion
// (kMsgTaskDestroyed, kMsgBroadcasterDying). A worker that does not destroy
// itself ends on its worker thread and then sends kMsgTaskFinished; a task
// without a worker runs inside Execute.
#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>

#include <VantoroBasicUtils/messaging/LBroadcaster.h>
#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/platform/Sync.h>
#include <VantoroBasicUtils/text/MString.h>

class MThread;

// Sent by a task on its own broadcaster, with the task as param.
constexpr long kMsgTaskCleanUp = 58900;    // in CleanUp, after PostPlay, before the task leaves the list
constexpr long kMsgTaskFinished = 58901;   // after CleanUp of a worker that does not destroy itself, on the worker
constexpr long kMsgTaskDestroyed = 29002;  // in the destructor

class VBU_API CBrevanderThread : public LBroadcaster {
 public:
  // A task that deletes itself at the end of CleanUp if `selfDestroy`.
  explicit CBrevanderThread(bool selfDestroy = true);
  // Copies every field but the thread object (a task is copied before it
  // starts); the copy has no listeners.
  CBrevanderThread(const CBrevanderThread& other);
  CBrevanderThread& operator=(const CBrevanderThread& other);
  // Sends kMsgTaskDestroyed. It neither stops nor waits for a thread: a
  // task is destroyed only after it has finished.
  ~CBrevanderThread() override;

  // Called first by Execute; false ends the task before it reaches the list.
  // The base notes the current thread for a task without a worker, and gives true.
  virtual bool PrePlay();
  // Starts the worker thread, unless ShouldStart says no: then, and when the
  // system refuses the thread (reported through CMessageAction::Error), the
  // task ends at once through Finish(true). Called by the task list.
  virtual void Start();
  // False once Abort has been called. RunSelf of a long task looks at it.
  virtual bool ShouldStart();
  // The work. The base does nothing.
  virtual void RunSelf();
  // Closing work after RunSelf, also after a refused start. The base does nothing.
  virtual void PostPlay();
  virtual long long GetRange();
  virtual long long GetPos();
  // The name for the user; a task that nobody named gets its class's name.
  virtual MString& GetDescription();
  virtual MString& GetStatus();
  virtual MString& GetDetail();
  // Five stores for the host's time estimate; the library computes nothing.
  virtual long GetLastEstimateTime();
  virtual long long GetLastPosition();
  virtual long GetAverageProgress();
  virtual long GetProgressStartTime();
  virtual long GetStableEstimateCount();
  // Holds the worker thread wherever it is (see MThread::SuspendThread for
  // the risks), if the task may be killed and has a worker; once. From
  // another thread it returns once the worker stands still; a worker that
  // pauses itself stops inside it. IsPaused and the hold always agree: a
  // Continue that comes before the worker stops cancels the stop.
  virtual void Pause();
  // Lets a paused worker go on.
  virtual void Continue();
  // Asked by Kill to stop the work; true if it will. The base gives false.
  virtual bool KillSelf();
  // Called by the task list as this single-run task leaves it, with the
  // task of its class that starts next, or null. The base does nothing.
  virtual void PassInformation(CBrevanderThread* next);
  // The thread that runs the task (0 until it is known).
  virtual unsigned int GetThreadId();

  // Runs the task: PrePlay, onto the list, then Start (worker) or the work
  // itself on this thread. False if PrePlay refused: the task is deleted
  // then, whatever SetSelfDestroy says. A self-destroying task may be gone
  // when this returns.
  bool Execute();
  // Clears ShouldStart. A task whose worker has not started (a waiting one)
  // ends at once, without PostPlay; a running one must look at ShouldStart.
  // A task without a worker counts as started from Execute on. Takes no
  // lock of the task list, so it may come from any thread at any time.
  void Abort();
  // Asks KillSelf, if the task may be killed and is not cancelled already.
  void Kill();
  // The end of the task; runs once, whatever calls it again. On a worker
  // thread other than the main thread a self-destroying task is handed to
  // the dispatcher (or, if none was ever made, ends on the spot). Once the
  // host has called CThreadDispatcher::DeleteAll, a worker task that ends
  // off the main thread does nothing more: no PostPlay, no removal from the
  // list (so nothing waiting starts), no deletion.
  //
  // A kept worker task (not self-destroying) may be deleted by its owner, on
  // any thread, at any moment after kMsgThreadRemoved (29001) has reached
  // it, even from inside that listener on the worker: the library touches
  // nothing of a deleted task, and a kMsgTaskFinished not sent by then is
  // not sent. A deletion on another thread while kMsgTaskFinished is under
  // way waits for that broadcast to end. CanKill turning false is no sign:
  // it does so before the end.
  void Finish(bool runPostPlay);
  // PostPlay (if asked), kMsgTaskCleanUp, removal from the list, and deletion if self-destroying.
  void CleanUp(bool runPostPlay);
  // True while the task may be killed and a worker thread is attached.
  bool CanKill();
  // The position on a scale of 1024 (1024 when GetPos equals the range); 0 for a range of 0.
  int GetStatusPosition();

  bool IsVisible() const { return mVisible; }
  bool HasProgress() const { return mHasProgress; }
  bool IsPaused() const { return mPaused; }
  bool IsCanceled() const { return mCanceled; }
  bool IsSingleRun() const { return mSingleRun; }
  bool IsWorkerThread() const { return mWorkerThread; }
  bool GetResult() const { return mResult; }
  long GetThreadType() const { return mThreadType; }

  void SetSelfDestroy(bool selfDestroy) { mSelfDestroy = selfDestroy; }
  void SetCanKill(bool canKill) { mCanKill = canKill; }
  void SetWorkerThread(bool workerThread) { mWorkerThread = workerThread; }
  // Progress stores, read whole from any thread. They send nothing.
  void SetRange(long long range) { mRange = range; }
  void SetPos(long long pos) { mPos = pos; }
  // They send nothing; a reader on another thread must keep clear of a write.
  void SetStatus(const unsigned short* status) { mStatus = status; }
  void SetDetail(const unsigned short* detail) { mDetail = detail; }
  void SetProgressStartTime(long time) { mProgressStartTime = time; }
  void SetLastEstimateTime(long time) { mLastEstimateTime = time; }
  void SetLastPosition(long long position) { mLastPosition = position; }
  void SetAverageProgress(long progress) { mAverageProgress = progress; }
  void SetStableEstimateCount(long count) { mStableEstimateCount = count; }

 protected:
  void SetResult(bool result) { mResult = result; }

  std::atomic<unsigned int> mThreadId;
  long mThreadType;  // the host's numbering of kinds of task (IsThreadTypeRunning)
  bool mSelfDestroy;
  bool mWorkerThread;
  bool mSingleRun;  // at most one task of this class runs at a time
  bool mCanKill;
  std::atomic<bool> mCanceled;
  std::atomic<bool> mPaused;
  bool mHasProgress;
  std::atomic<long long> mRange;
  std::atomic<long long> mPos;
  MString mDescription;
  MString mStatus;
  MString mDetail;
  std::atomic<MThread*> mWinThread;  // the worker; null before Start and from Finish on
  bool mVisible;                     // shown to the user: on the task list's visible list
  std::atomic<bool> mShouldStart;
  std::atomic<bool> mStarted;
  long mProgressStartTime;
  long mLastEstimateTime;
  long long mLastPosition;
  long mAverageProgress;
  long mStableEstimateCount;
  bool mResult;

 private:
  friend class CThreadAction;  // passes no turn to a task that has ended

  // What the worker thread runs, and a task without a worker inside Execute.
  static unsigned int ThreadEntry(void* task);
  // The body of Finish, for the one caller that has claimed the end.
  void End(bool runPostPlay);
  // A start whose thread the system refused: says so on the bus, then ends
  // as a refused start. Never under the list's lock (the list defers it).
  void EndRefusedStart(uint32_t error);
  bool HasEnded() const { return mRun == kRunEnded; }

  // What outlives a task: whether it has been deleted, and which thread, if
  // any, is sending kMsgTaskFinished (a kept task's owner may delete it
  // meanwhile).
  struct Life {
    std::mutex mutex;  // guards the two fields
    std::condition_variable finished;
    bool deleted = false;
    unsigned long finishing = 0;
  };

  // Locks of a task. mThreadGuard makes Pause and Continue one step each
  // with mWinThread, mPaused and the worker's hold, against each other and
  // the end of the worker (whose thread object goes when its function
  // returns); Life::mutex guards what the kept task's end shares with its
  // deletion. Neither is held across a wait for another thread, a listener
  // or a task start, and no other lock is taken under them.
  CCriticalSection mThreadGuard;
  std::shared_ptr<Life> mLife;
  // Where the run stands; Start, Abort and Finish each claim their step
  // with one atomic change, so exactly one of them ends a run.
  enum { kRunWaiting, kRunStarted, kRunEnded };
  std::atomic<int> mRun;
};
