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
  // the risks), if the task may be killed and has a worker; once.
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
  // A task without a worker counts as started from Execute on.
  void Abort();
  // Asks KillSelf, if the task may be killed and is not cancelled already.
  void Kill();
  // The end of the task; runs once, whatever calls it again. On a worker
  // thread other than the main thread a self-destroying task is handed to
  // the dispatcher (or, with no dispatcher, ends on the spot).
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
  // What the worker thread runs, and a task without a worker inside Execute.
  static unsigned int ThreadEntry(void* task);

  // Serialises Pause and Continue with the end of the worker, whose thread
  // object goes when its function returns.
  CCriticalSection mThreadGuard;
  std::atomic<bool> mEnded;  // Finish has run
};
