// Asynchronous transfers. One engine for the process: a request pool, a
// count of transfers under way for each descriptor (so that a cancel can
// wait for them), and two routes. On the ring route the system's ring
// (linux/AsyncIO.inc) moves the data and one reaper thread hands each end to
// its record's event or to the starting thread's queue of completion
// routines; where the system refuses a ring, a few threads of the layer's
// own make the same transfers one at a time.
#include "platform/internal/AsyncIO.h"

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
#else
#error "The platform layer has no asynchronous transfers for this system yet."
#endif

namespace vbu::platform {
namespace {

constexpr unsigned kRingEntries = 256;
constexpr int kTransferThreads = 4;

struct Request : MQueuedCompletion {
  int mFd = -1;
  bool mWrite = false;
  char* mBuffer = nullptr;
  uint32_t mCount = 0;
  int64_t mOffset = 0;
  OVERLAPPED* mOverlapped = nullptr;
  CompletionRoutine mRoutine = nullptr;
  std::shared_ptr<MThreadAlert> mStarter;  // the thread that runs mRoutine
  uint32_t mError = 0;
  uint32_t mBytes = 0;
  Request* mNext = nullptr;  // in the free list, or in the threads' queue
};

class Engine {
 public:
  static Engine& Get() {
    static Engine engine;
    return engine;
  }

  bool UsesRing() const { return mUsesRing; }

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
    if (routine) r->mStarter = CurrentThreadAlert();
    r->mError = r->mBytes = 0;
    overlapped->Internal = kErrorIoPending;
    overlapped->InternalHigh = 0;
    {
      std::lock_guard<std::mutex> lock(mMutex);
      if (mInFlight.size() <= static_cast<std::size_t>(fd)) mInFlight.resize(fd + 1, 0);
      ++mInFlight[fd];
    }
    uint32_t error = Submit(r);
    if (error != 0) {
      r->mStarter.reset();
      Give(r);
      Leave(fd);
    }
    return error;
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

 private:
  Engine() {
    mUsesRing = mRing.Open(kRingEntries);
    if (mUsesRing) {
      mReaper = std::thread([this] { Reap(); });
    } else {
      for (int i = 0; i < kTransferThreads; ++i) mWorkers.emplace_back([this] { Work(); });
    }
  }

  ~Engine() {
    if (mUsesRing) {
      {
        std::lock_guard<std::mutex> lock(mSubmitMutex);
        mRing.SubmitStop();
      }
      mReaper.join();
      mRing.Close();
    } else {
      {
        std::lock_guard<std::mutex> lock(mMutex);
        mStopping = true;
      }
      mWork.notify_all();
      for (std::thread& worker : mWorkers) worker.join();
    }
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
        return r;
      }
    }
    return new Request;
  }

  void Give(Request* r) {
    std::lock_guard<std::mutex> lock(mMutex);
    r->mNext = mFree;
    mFree = r;
  }

  void Leave(int fd) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (--mInFlight[fd] == 0) mDrained.notify_all();
  }

  uint32_t Submit(Request* r) {
    if (!mUsesRing) {
      {
        std::lock_guard<std::mutex> lock(mMutex);
        r->mNext = nullptr;
        if (mQueueTail) {
          mQueueTail->mNext = r;
        } else {
          mQueueHead = r;
        }
        mQueueTail = r;
      }
      mWork.notify_one();
      return 0;
    }
    std::lock_guard<std::mutex> lock(mSubmitMutex);
    return mRing.Submit(r->mWrite, r->mFd, r->mBuffer, r->mCount, r->mOffset, r);
  }

  // One system transfer has ended with `outcome`.
  void Complete(Request* r, Outcome outcome) {
    if (outcome.again) {
      uint32_t error = Submit(r);
      if (error != 0) Finish(r, error, 0);
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

  void Reap() {
    for (;;) {
      void* tag = nullptr;
      Outcome outcome;
      if (mRing.Wait(&tag, &outcome) != 0) return;
      if (!tag) return;
      // Pairs with the submitter's release of the lock: the request's fields
      // were written before it was submitted.
      { std::lock_guard<std::mutex> lock(mSubmitMutex); }
      Complete(static_cast<Request*>(tag), outcome);
    }
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
      Complete(r, os::TransferNow(r->mWrite, r->mFd, r->mBuffer, r->mCount, r->mOffset));
    }
  }

  std::mutex mMutex;  // the free list, the counts, the threads' queue
  std::condition_variable mDrained;
  std::vector<uint32_t> mInFlight;  // transfers under way, by descriptor
  Request* mFree = nullptr;

  bool mUsesRing = false;
  os::Ring mRing;
  std::mutex mSubmitMutex;
  std::thread mReaper;

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

bool TransfersUseIoUring() { return Engine::Get().UsesRing(); }

}  // namespace vbu::platform
