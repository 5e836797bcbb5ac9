#include "tasks/CBrevanderThread.h"

#include <typeinfo>

#include "messaging/CMessageAction.h"
#include "platform/Overlapped.h"
#include "platform/Thread.h"
#include "platform/internal/Thread.h"
#include "tasks/CThreadAction.h"
#include "tasks/CThreadDispatcher.h"

using namespace vbu::literals;

CBrevanderThread::CBrevanderThread(bool selfDestroy)
    : mThreadId(0),
      mThreadType(0),
      mSelfDestroy(selfDestroy),
      mWorkerThread(false),
      mSingleRun(false),
      mCanKill(true),
      mCanceled(false),
      mPaused(false),
      mHasProgress(false),
      mRange(0),
      mPos(0),
      mWinThread(nullptr),
      mVisible(true),
      mShouldStart(true),
      mStarted(false),
      mProgressStartTime(0),
      mLastEstimateTime(0),
      mLastPosition(0),
      mAverageProgress(0),
      mStableEstimateCount(0),
      mResult(false),
      mLife(std::make_shared<Life>()),
      mRun(kRunWaiting) {}

CBrevanderThread::CBrevanderThread(const CBrevanderThread& other)
    : LBroadcaster(other), mWinThread(nullptr), mLife(std::make_shared<Life>()), mRun(kRunWaiting) {
  *this = other;
}

CBrevanderThread& CBrevanderThread::operator=(const CBrevanderThread& other) {
  if (this == &other) return *this;
  LBroadcaster::operator=(other);
  mThreadId = other.mThreadId.load();
  mThreadType = other.mThreadType;
  mSelfDestroy = other.mSelfDestroy;
  mWorkerThread = other.mWorkerThread;
  mSingleRun = other.mSingleRun;
  mCanKill = other.mCanKill;
  mCanceled = other.mCanceled.load();
  mPaused = other.mPaused.load();
  mHasProgress = other.mHasProgress;
  mRange = other.mRange.load();
  mPos = other.mPos.load();
  mDescription = other.mDescription;
  mStatus = other.mStatus;
  mDetail = other.mDetail;
  mVisible = other.mVisible;
  mShouldStart = other.mShouldStart.load();
  mStarted = other.mStarted.load();
  mProgressStartTime = other.mProgressStartTime;
  mLastEstimateTime = other.mLastEstimateTime;
  mLastPosition = other.mLastPosition;
  mAverageProgress = other.mAverageProgress;
  mStableEstimateCount = other.mStableEstimateCount;
  mResult = other.mResult;
  return *this;
}

CBrevanderThread::~CBrevanderThread() {
  {
    // A kMsgTaskFinished under way on another thread still reads this task.
    std::unique_lock<std::mutex> lock(mLife->mutex);
    mLife->deleted = true;
    const unsigned long self = MThreadQueue::CurrentThreadId();
    mLife->finished.wait(lock, [&] { return mLife->finishing == 0 || mLife->finishing == self; });
  }
  delete mWinThread.exchange(nullptr);
  BroadcastMessage(kMsgTaskDestroyed, this);
}

bool CBrevanderThread::PrePlay() {
  if (!mWorkerThread) mThreadId = static_cast<unsigned int>(MThreadQueue::CurrentThreadId());
  return true;
}

void CBrevanderThread::Start() {
  // An Abort that came first has ended the task already.
  int waiting = kRunWaiting;
  if (!mRun.compare_exchange_strong(waiting, kRunStarted)) return;
  if (!ShouldStart()) {
    Finish(true);
    return;
  }
  // Held back until the fields below are set, so the task's code sees them.
  auto* thread = new MThread(&ThreadEntry, this);
  if (!thread->CreateThread(true)) {
    const uint32_t error = GetLastError();
    delete thread;
    // Under the list's lock the report waits for its release: a listener
    // of the report may wait for a thread that needs the list.
    if (!CThreadAction::GetThreadAction()->DeferRefusedStart(this, error)) EndRefusedStart(error);
    return;
  }
  mWinThread = thread;
  mThreadId = static_cast<unsigned int>(thread->GetThreadId());
  mStarted = true;
  thread->ResumeThread();  // from here on the task may end, and go, at any moment
}

void CBrevanderThread::EndRefusedStart(uint32_t error) {
  MString text;
  text.Format(u"The task \"%s\" could not start a thread of its own (system error %d)."_u16,
              static_cast<const unsigned short*>(GetDescription()), static_cast<int>(error));
  CMessageAction::Error(this, text, 0);
  Finish(true);
}

bool CBrevanderThread::ShouldStart() { return mShouldStart; }

void CBrevanderThread::RunSelf() {}

void CBrevanderThread::PostPlay() {}

long long CBrevanderThread::GetRange() { return mRange; }

long long CBrevanderThread::GetPos() { return mPos; }

MString& CBrevanderThread::GetDescription() {
  if (mDescription.GetLength() == 0) {
    mDescription.ImportASCII(vbu::platform::TypeName(typeid(*this)).c_str(), -1);
  }
  return mDescription;
}

MString& CBrevanderThread::GetStatus() { return mStatus; }

MString& CBrevanderThread::GetDetail() { return mDetail; }

long CBrevanderThread::GetLastEstimateTime() { return mLastEstimateTime; }

long long CBrevanderThread::GetLastPosition() { return mLastPosition; }

long CBrevanderThread::GetAverageProgress() { return mAverageProgress; }

long CBrevanderThread::GetProgressStartTime() { return mProgressStartTime; }

long CBrevanderThread::GetStableEstimateCount() { return mStableEstimateCount; }

void CBrevanderThread::Pause() {
  MThread::Hold hold;
  {
    // The flag and the hold change together, so a Continue sees both or
    // neither; the wait for the stop (on a worker that pauses itself: the
    // stop itself) comes after the guard, which Continue needs. For the
    // same reason the worker is never held while it owns the guard.
    MThread::StHoldOff holdOff;
    CSingleLock guard(&mThreadGuard, true);
    MThread* thread = mWinThread;
    if (!mCanKill || !thread || mPaused) return;
    hold = thread->AddHold();
    if (hold.Before() < 0) return;
    mPaused = true;
  }
  hold.Wait();
}

void CBrevanderThread::Continue() {
  MThread::StHoldOff holdOff;
  CSingleLock guard(&mThreadGuard, true);
  MThread* thread = mWinThread;
  if (!mCanKill || !thread || !mPaused) return;
  mPaused = false;
  thread->ResumeThread();
}

bool CBrevanderThread::KillSelf() { return false; }

void CBrevanderThread::PassInformation(CBrevanderThread*) {}

unsigned int CBrevanderThread::GetThreadId() { return mThreadId; }

bool CBrevanderThread::Execute() {
  // Each Execute is a new run of the task.
  mRun = kRunWaiting;
  if (!PrePlay()) {
    delete this;
    return false;
  }
  // Read after PrePlay, which may choose where the task runs.
  const bool worker = mWorkerThread;
  if (!worker) mRun = kRunStarted;  // under way from here on: Abort does not end it
  CThreadAction* list = CThreadAction::GetThreadAction();
  if (worker) {
    // Onto the list and started under one hold of the list's lock, so that
    // tasks of a class wait in the order in which they arrived.
    CThreadAction::StHold hold(list);
    // A listener of 29000 may end the task, and it may be deleted (and its
    // memory given to a new task) before AddThread returns: the token says.
    // Under the lock nobody else can take it off the list and delete it.
    const std::shared_ptr<Life> life = mLife;
    list->AddThread(this);
    {
      std::lock_guard<std::mutex> guard(life->mutex);
      if (life->deleted) return true;
    }
    if (!HasEnded()) list->Start(this);
    return true;
  }
  list->AddThread(this);
  ThreadEntry(this);
  return true;
}

void CBrevanderThread::Abort() {
  mShouldStart = false;
  // Start and Abort race for a waiting task in one step: it either starts,
  // and goes on, or it never will, and ends here.
  int waiting = kRunWaiting;
  if (mRun.compare_exchange_strong(waiting, kRunEnded)) End(false);
}

void CBrevanderThread::Kill() {
  if (mCanKill && !mCanceled) mCanceled = KillSelf();
}

void CBrevanderThread::Finish(bool runPostPlay) {
  if (mRun.exchange(kRunEnded) == kRunEnded) return;  // the end runs once, whatever calls it again
  End(runPostPlay);
}

void CBrevanderThread::End(bool runPostPlay) {
  {
    MThread::StHoldOff holdOff;
    CSingleLock guard(&mThreadGuard, true);
    // A pause that met the worker on its way here would hold it for good:
    // with the thread object gone, no Continue could reach it.
    MThread* thread = mWinThread.exchange(nullptr);
    if (thread && mPaused) {
      thread->ResumeThread();
      mPaused = false;
    }
  }
  if (mWorkerThread && !MThread::IsMainThread()) {
    // After the host's shutdown (CThreadDispatcher::DeleteAll) nothing more
    // of the task runs here, and nothing it would start.
    if (CThreadDispatcher::HasShutDown()) return;
    if (mSelfDestroy) {
      // PostPlay and deletion belong to the user-interface thread.
      if (CThreadDispatcher::PostFinished(this)) return;
    } else {
      // From the removal on, the owner may delete the task on any thread:
      // the token tells whether it still lives, and holds its deletion back
      // while kMsgTaskFinished is under way.
      const std::shared_ptr<Life> life = mLife;
      CleanUp(runPostPlay);
      {
        std::lock_guard<std::mutex> lock(life->mutex);
        if (life->deleted) return;
        life->finishing = MThreadQueue::CurrentThreadId();
      }
      BroadcastMessage(kMsgTaskFinished, this);
      std::lock_guard<std::mutex> lock(life->mutex);
      life->finishing = 0;
      life->finished.notify_all();
      return;
    }
  }
  CleanUp(runPostPlay);
}

void CBrevanderThread::CleanUp(bool runPostPlay) {
  if (runPostPlay) PostPlay();
  BroadcastMessage(kMsgTaskCleanUp, this);
  // Read before the removal: from then on the owner of a kept task may delete it.
  const bool selfDestroy = mSelfDestroy;
  CThreadAction::GetThreadAction()->RemoveThread(this);
  if (selfDestroy) delete this;
}

bool CBrevanderThread::CanKill() { return mCanKill && mWinThread != nullptr; }

int CBrevanderThread::GetStatusPosition() {
  const double unit = static_cast<double>(mRange) * 0.0009765625;
  if (unit == 0.0) return 0;
  return static_cast<int>(static_cast<double>(mPos) / unit);
}

unsigned int CBrevanderThread::ThreadEntry(void* task) {
  auto* self = static_cast<CBrevanderThread*>(task);
  self->RunSelf();
  self->Finish(true);
  return 0;
}
