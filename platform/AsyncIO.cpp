// Asynchronous transfers. One engine for the process: a request pool, a
// count of transfers under way for each descriptor (so that a cancel can
// wait for them), and two routes. On the ring route the system's ring
// (linux/AsyncIO.inc) moves the data, and the ends are handed to their
// records' events or to the starting threads' queues of completion routines
// by whoever takes them from the ring first: a thread that waits while
// transfers of its own are in the ring sleeps in the ring and takes them
// itself, since a hand-over from another thread costs a wake-up for every
// transfer; one reaper thread takes all the others. A few threads of the
// layer's own, started when first needed, make the transfers that the ring
// does not take: all of them where the system refuses a ring or the host
// chose the threads, and any single one that a full or failing ring
// refuses. A transfer, once started, always ends.
#include "platform/internal/AsyncIO.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/internal/Alert.h"
#include "platform/internal/Errors.h"
#include "platform/internal/SysCalls.h"

namespace vbu::platform {
namespace {

// What one system transfer gave: its bytes or its error code; `again` when
// it was interrupted or refused for now, and is to be made again.
struct Outcome {
  uint32_t error = 0;
  uint32_t bytes = 0;
  bool again = false;
};

}  // namespace
}  // namespace vbu::platform

#if defined(__linux__)
#include "linux/AsyncIO.inc"
#elif defined(_WIN32)
#include "windows/AsyncIO.inc"
#else
#error "The platform layer has no AsyncIO files for this system yet."
#endif

namespace vbu::platform {
namespace {

constexpr unsigned kRingEntries = 256;
constexpr int kTransferThreads = 4;
// The longest single sleep of a waiting thread in the ring: a wake-up that
// the ring could not take (full, or failing) is late by at most this.
constexpr uint32_t kRingSleepMilliseconds = 50;

#if defined(VBU_TRANSFER_THREADS)
std::atomic<TransferRoute> gRoute{TransferRoute::kThreads};
#else
std::atomic<TransferRoute> gRoute{TransferRoute::kSystemQueue};
#endif

struct Request : MQueuedCompletion {
  int mFd = -1;
  bool mWrite = false;
  char* mBuffer = nullptr;
  uint32_t mCount = 0;
  int64_t mOffset = 0;
  OVERLAPPED* mOverlapped = nullptr;
  CompletionRoutine mRoutine = nullptr;
  std::shared_ptr<MThreadAlert> mStarter;  // the thread that started it, and runs mRoutine
  uint32_t mError = 0;
  uint32_t mBytes = 0;
  Request* mNext = nullptr;  // in the free list, the threads' queue or the ring's list
  Request* mPrevious = nullptr;  // in the ring's list
};

class Engine {
 public:
  static Engine& Get() {
    static Engine engine;
    return engine;
  }

  uint32_t Start(int fd, bool write, void* buffer, uint32_t count, OVERLAPPED* overlapped,
                 CompletionRoutine routine) {
    if (fd < 0) return kErrorBadDescriptor;
    if (!overlapped || (!buffer && count > 0)) return kErrorInvalidArgument;
    Request* r = Take();
    r->mFd = fd;
    r->mWrite = write;
    r->mBuffer = static_cast<char*>(buffer);
    r->mCount = count;
    r->mOffset = GetOffset(*overlapped);
    r->mOverlapped = overlapped;
    r->mRoutine = routine;
    r->mStarter = CurrentThreadAlert();
    r->mError = r->mBytes = 0;
    overlapped->Internal = kErrorIoPending;
    overlapped->InternalHigh = 0;
    {
      std::lock_guard<std::mutex> lock(mMutex);
      if (mInFlight.size() <= static_cast<std::size_t>(fd)) mInFlight.resize(fd + 1, 0);
      ++mInFlight[fd];
    }
    if (gRoute.load(std::memory_order_relaxed) != TransferRoute::kSystemQueue || !SubmitToRing(r, true)) {
      QueueForThreads(r);
    }
    return 0;
  }

  void Cancel(int fd) {
    if (fd < 0) return;
    Request* aborted = nullptr;
    {
      std::lock_guard<std::mutex> lock(mMutex);
      for (Request** link = &mQueueHead; *link;) {
        Request* r = *link;
        if (r->mFd == fd) {
          *link = r->mNext;
          r->mNext = aborted;
          aborted = r;
        } else {
          link = &r->mNext;
        }
      }
      mQueueTail = nullptr;
      for (Request* r = mQueueHead; r; r = r->mNext) mQueueTail = r;
    }
    while (aborted) {
      Request* next = aborted->mNext;
      Finish(aborted, kErrorOperationAborted, 0);
      aborted = next;
    }
    std::unique_lock<std::mutex> lock(mMutex);
    mDrained.wait(lock, [&] { return static_cast<std::size_t>(fd) >= mInFlight.size() || mInFlight[fd] == 0; });
  }

  bool RingCarriesTransfers() {
    if (gRoute.load(std::memory_order_relaxed) != TransferRoute::kSystemQueue) return false;
    std::unique_lock<std::mutex> lock(mRingMutex);
    return OpenRing(lock);
  }

  // Sleeps in the ring for a waiting thread whose transfers are there
  // (WaitInTransferRing), then takes every end found.
  bool WaitInRing(MThreadAlert& self, uint32_t milliseconds) {
    {
      std::lock_guard<std::mutex> lock(mRingMutex);
      if (mRingState != RingState::kOpen || !mRing.WaitsWithLimit()) {
        self.mInRingWait.store(false, std::memory_order_release);
        return false;
      }
      ++mRingSleepers;
    }
    const uint32_t error = mRing.WaitReady(std::min(milliseconds, kRingSleepMilliseconds));
    self.mInRingWait.store(false, std::memory_order_release);
    if (error == 0) TakeEnds();
    {
      std::lock_guard<std::mutex> lock(mRingMutex);
      if (--mRingSleepers == 0) mRingIdle.notify_all();
    }
    // A failed sleep leaves the ends to the reaper, whose own wait decides the ring's fate.
    return error == 0;
  }

  // Wakes the threads that sleep in the ring. Best effort: one that misses
  // it wakes by itself within kRingSleepMilliseconds.
  void WakeRing() {
    std::lock_guard<std::mutex> lock(mRingMutex);
    if (mRingState == RingState::kOpen) mRing.SubmitWake();
  }

  // A refused ring is asked again once the host asks for it again.
  void RouteChosen(TransferRoute route) {
    if (route != TransferRoute::kSystemQueue) return;
    std::lock_guard<std::mutex> lock(mRingMutex);
    if (mRingState == RingState::kRefused) mRingState = RingState::kUntried;
  }

  std::size_t RequestsInUse() {
    std::lock_guard<std::mutex> lock(mMutex);
    return mRequests - mFreeCount;
  }

  bool RingHasFailed() {
    std::lock_guard<std::mutex> lock(mRingMutex);
    return mRingState == RingState::kFailed;
  }

 private:
  enum class RingState { kUntried, kOpen, kRefused, kFailed };

  Engine() = default;

  ~Engine() {
    {
      std::unique_lock<std::mutex> lock(mRingMutex);
      if (mRingState == RingState::kOpen) {
        mStopReaper.store(true);
        // A waiting thread may take the wake-up first: repeat it until the reaper has gone.
        bool told = false;
        while (mReaperRunning && mRing.SubmitWake() == 0) {
          told = true;
          mReaperEnded.wait_for(lock, std::chrono::milliseconds(kRingSleepMilliseconds));
        }
        if (mReaperRunning && !told) {
          // The reaper cannot be told to end: leave it, and the ring, to the process's end.
          mReaper.detach();
          mRingState = RingState::kUntried;
        }
      }
    }
    if (mReaper.joinable()) mReaper.join();
    if (mRingState == RingState::kOpen || mRingState == RingState::kFailed) CloseRing();
    {
      std::lock_guard<std::mutex> lock(mMutex);
      mStopping = true;
    }
    mWork.notify_all();
    for (std::thread& worker : mWorkers) worker.join();
    while (Request* r = mFree) {
      mFree = r->mNext;
      delete r;
    }
  }

  // Requests are kept for reuse: a stream of transfers allocates nothing.
  Request* Take() {
    {
      std::lock_guard<std::mutex> lock(mMutex);
      if (Request* r = mFree) {
        mFree = r->mNext;
        r->mNext = nullptr;
        --mFreeCount;
        return r;
      }
      ++mRequests;
    }
    return new Request;
  }

  void Give(Request* r) {
    std::lock_guard<std::mutex> lock(mMutex);
    r->mNext = mFree;
    mFree = r;
    ++mFreeCount;
  }

  void Leave(int fd) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (--mInFlight[fd] == 0) mDrained.notify_all();
  }

  // ---- the ring route

  // Opens the ring if it is not open: the first time, or anew after a ring
  // whose wait failed. True when it is open. Under mRingMutex (`lock`).
  bool OpenRing(std::unique_lock<std::mutex>& lock) {
    if (mRingState == RingState::kOpen) return true;
    if (mRingState == RingState::kRefused) return false;
    if (mRingState == RingState::kFailed) {
      // Its reaper has handed back every transfer and is ending; threads
      // that sleep in it wake within kRingSleepMilliseconds.
      mReaperEnded.wait(lock, [this] { return !mReaperRunning; });
      if (mReaper.joinable()) mReaper.join();
      mRingIdle.wait(lock, [this] { return mRingSleepers == 0; });
      if (mRingState != RingState::kFailed) return mRingState == RingState::kOpen;  // another thread reopened it
      CloseRing();
    }
    if (mRing.Open(kRingEntries) != 0) {
      mRingState = RingState::kRefused;
      return false;
    }
    mRingState = RingState::kOpen;
    mStopReaper.store(false);
    mReaperRunning = true;
    mReaper = std::thread([this] { Reap(); });
    return true;
  }

  void CloseRing() {
    mRing.Close();
    mRingState = RingState::kUntried;
  }

  // Hands `r` to the ring; false when the ring does not take it (refused,
  // full or failing), and the caller moves it on the threads. `mayOpen` is
  // false on the reaper's own thread, which must never wait for itself.
  bool SubmitToRing(Request* r, bool mayOpen) {
    std::unique_lock<std::mutex> lock(mRingMutex);
    if (mayOpen ? !OpenRing(lock) : mRingState != RingState::kOpen) return false;
    // Counted before the system may end it: its starter sleeps in the ring from now on.
    r->mStarter->mTransfersInRing.fetch_add(1, std::memory_order_acq_rel);
    if (mRing.Submit(r->mWrite, r->mFd, r->mBuffer, r->mCount, r->mOffset, r) != 0) {
      r->mStarter->mTransfersInRing.fetch_sub(1, std::memory_order_acq_rel);
      return false;
    }
    // In the list of transfers in the ring, so that a failed wait can end them.
    r->mPrevious = nullptr;
    r->mNext = mInRing;
    if (mInRing) mInRing->mPrevious = r;
    mInRing = r;
    return true;
  }

  // Takes `r` out of the ring's list. Under mRingMutex.
  void LeaveRing(Request* r) {
    if (r->mPrevious) {
      r->mPrevious->mNext = r->mNext;
    } else {
      mInRing = r->mNext;
    }
    if (r->mNext) r->mNext->mPrevious = r->mPrevious;
    r->mNext = r->mPrevious = nullptr;
    r->mStarter->mTransfersInRing.fetch_sub(1, std::memory_order_acq_rel);
  }

  // Delivers every end that the ring holds now. Any thread; one at a time.
  void TakeEnds() {
    std::lock_guard<std::mutex> taking(mTakeMutex);
    void* tag = nullptr;
    Outcome outcome;
    for (;;) {
      {
        std::lock_guard<std::mutex> lock(mRingMutex);
        // A failed ring's transfers have all been ended already: what comes
        // out of it later is not theirs to deliver again.
        if (mRingState != RingState::kOpen || !mRing.Next(&tag, &outcome)) return;
        // Also pairs with the submitter's release of the lock: the request's
        // fields were written before it was submitted.
        LeaveRing(static_cast<Request*>(tag));
      }
      Complete(static_cast<Request*>(tag), outcome, true);
    }
  }

  void Reap() {
    while (!mStopReaper.load()) {
      if (uint32_t error = mRing.WaitReady(kWaitForever)) {
        FailRing(error);
        break;
      }
      TakeEnds();
    }
    std::lock_guard<std::mutex> lock(mRingMutex);
    mReaperRunning = false;
    mReaperEnded.notify_all();
  }

  // The ring's wait has failed: nothing more comes out of it. Every transfer
  // in it ends with the wait's error; the next transfer opens a new ring.
  void FailRing(uint32_t error) {
    Request* ended = nullptr;
    {
      std::lock_guard<std::mutex> lock(mRingMutex);
      mRingState = RingState::kFailed;
      while (Request* r = mInRing) {
        LeaveRing(r);
        r->mNext = ended;
        ended = r;
      }
    }
    while (ended) {
      Request* next = ended->mNext;
      ended->mNext = nullptr;
      Finish(ended, error, 0);
      ended = next;
    }
  }

  // ---- the threads' route

  void QueueForThreads(Request* r) {
    {
      std::lock_guard<std::mutex> lock(mMutex);
      if (mWorkers.empty()) {
        for (int i = 0; i < kTransferThreads; ++i) mWorkers.emplace_back([this] { Work(); });
      }
      r->mNext = nullptr;
      if (mQueueTail) {
        mQueueTail->mNext = r;
      } else {
        mQueueHead = r;
      }
      mQueueTail = r;
    }
    mWork.notify_one();
  }

  void Work() {
    for (;;) {
      Request* r;
      {
        std::unique_lock<std::mutex> lock(mMutex);
        mWork.wait(lock, [this] { return mStopping || mQueueHead; });
        if (mStopping) return;
        r = mQueueHead;
        mQueueHead = r->mNext;
        if (!mQueueHead) mQueueTail = nullptr;
      }
      Complete(r, os::TransferNow(r->mWrite, r->mFd, r->mBuffer, r->mCount, r->mOffset), false);
    }
  }

  // ---- ends

  // One system transfer has ended with `outcome`; `fromRing` when it was
  // taken from the ring, by its reaper or a thread that sleeps there.
  void Complete(Request* r, Outcome outcome, bool fromRing) {
    if (outcome.again) {
      // Made again: through the ring if it came from there and the ring takes it.
      if (!fromRing || !SubmitToRing(r, false)) QueueForThreads(r);
    } else if (outcome.error != 0) {
      Finish(r, outcome.error, 0);
    } else if (r->mWrite && outcome.bytes < r->mCount) {
      // A regular file takes less than the whole write only when the disk is full.
      Finish(r, kErrorDiskFull, outcome.bytes);
    } else if (!r->mWrite && outcome.bytes == 0 && r->mCount > 0) {
      Finish(r, kErrorHandleEof, 0);
    } else {
      Finish(r, 0, outcome.bytes);
    }
  }

  void Finish(Request* r, uint32_t error, uint32_t bytes) {
    const int fd = r->mFd;
    OVERLAPPED* overlapped = r->mOverlapped;
    overlapped->Internal = error;
    overlapped->InternalHigh = bytes;
    if (r->mRoutine) {
      r->mError = error;
      r->mBytes = bytes;
      r->mRun = &RunRoutine;
      MThreadAlert& starter = *r->mStarter;
      QueueCompletion(starter, r);
    } else {
      auto* event = static_cast<MEvent*>(overlapped->hEvent);
      r->mStarter.reset();
      Give(r);
      if (event) event->Set();
    }
    // Only now may a cancel return: the record and event have had their last touch.
    Leave(fd);
  }

  // Runs on the starting thread, in its alertable wait.
  static void RunRoutine(MQueuedCompletion* entry, bool run) {
    auto* r = static_cast<Request*>(entry);
    if (run) {
      // A routine's thread finds the transfer's error as its last error.
      if (r->mError != 0) SetLastError(r->mError);
      r->mRoutine(r->mError, r->mBytes, r->mOverlapped);
    }
    r->mStarter.reset();
    Get().Give(r);
  }

  std::mutex mMutex;  // the pool and its counts, the counts by descriptor, the threads' queue
  std::condition_variable mDrained;
  std::vector<uint32_t> mInFlight;  // transfers under way, by descriptor
  Request* mFree = nullptr;
  std::size_t mRequests = 0;   // made
  std::size_t mFreeCount = 0;  // of those, in the free list

  std::mutex mRingMutex;  // the ring, its state, its list, its sleepers and the reaper's state
  RingState mRingState = RingState::kUntried;
  os::Ring mRing;
  std::thread mReaper;
  bool mReaperRunning = false;
  std::atomic<bool> mStopReaper{false};
  std::condition_variable mReaperEnded;
  Request* mInRing = nullptr;
  int mRingSleepers = 0;  // threads in WaitInRing: the ring stays open for them
  std::condition_variable mRingIdle;
  std::mutex mTakeMutex;  // one thread at a time takes ends from the ring, so that they go in order

  std::condition_variable mWork;
  Request* mQueueHead = nullptr;
  Request* mQueueTail = nullptr;
  std::vector<std::thread> mWorkers;
  bool mStopping = false;
};

}  // namespace

uint32_t StartTransfer(int fd, bool write, void* buffer, uint32_t count, OVERLAPPED* overlapped,
                       CompletionRoutine routine) {
  return Engine::Get().Start(fd, write, buffer, count, overlapped, routine);
}

void CancelTransfers(int fd) { Engine::Get().Cancel(fd); }

void WakeThread(MThreadAlert& thread) {
  thread.mWake.notify_all();
  if (thread.mInRingWait.load(std::memory_order_acquire)) Engine::Get().WakeRing();
}

bool WaitInTransferRing(MThreadAlert& self, uint32_t milliseconds) {
  return Engine::Get().WaitInRing(self, milliseconds);
}

bool TransfersUseIoUring() { return Engine::Get().RingCarriesTransfers(); }

std::size_t TransferRequestsInUse() { return Engine::Get().RequestsInUse(); }

bool TransferRingHasFailed() { return Engine::Get().RingHasFailed(); }

}  // namespace vbu::platform

namespace vbu {

void SetTransferRoute(TransferRoute route) {
  platform::gRoute.store(route, std::memory_order_relaxed);
  platform::Engine::Get().RouteChosen(route);
}

TransferRoute GetTransferRoute() { return platform::gRoute.load(std::memory_order_relaxed); }

}  // namespace vbu
