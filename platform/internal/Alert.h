// Alert.h: each thread's queue of due completion routines, run by the
// thread itself during an alertable wait (MEvent::Wait). Internal; never
// installed.
//
//   std::shared_ptr<MThreadAlert> self = vbu::platform::CurrentThreadAlert();
//   vbu::platform::QueueCompletion(*self, entry);   // from any thread
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>

// One queued completion. Whoever queues it decides what running it means.
struct MQueuedCompletion {
  MQueuedCompletion* mNextQueued = nullptr;
  // Runs the completion on its thread, or, when `run` is false (the thread
  // has ended), only releases it.
  void (*mRun)(MQueuedCompletion* self, bool run) = nullptr;
};

struct MThreadAlert {
  std::mutex mMutex;
  std::condition_variable mWake;  // a queued completion, or an event set for a waiter
  MQueuedCompletion* mHead = nullptr;
  MQueuedCompletion* mTail = nullptr;
  // The thread's transfers now in the system's ring. While it has any, its
  // waits sleep in the ring itself: the end of one of its transfers then
  // wakes it at once, not through a second thread.
  std::atomic<int> mTransfersInRing{0};
  // True while it sleeps in the ring: a signal for it (under mMutex) must
  // then also wake the ring (WakeThread).
  std::atomic<bool> mInRingWait{false};

  ~MThreadAlert();
};

namespace vbu::platform {

// The calling thread's alert state, made on first use; it lives while the
// thread does or anyone holds it.
const std::shared_ptr<MThreadAlert>& CurrentThreadAlert();
// Queues `entry` for `thread` and wakes it.
void QueueCompletion(MThreadAlert& thread, MQueuedCompletion* entry);
// Wakes `thread` for a signal given under its mMutex: its condition
// variable, and the transfer ring if it sleeps there.
void WakeThread(MThreadAlert& thread);

// Sleeps in the transfer ring until some transfer ends, a WakeThread, or
// `milliseconds` (kWaitForever: no limit; the sleep may end earlier), then
// delivers the ends found there. False when the ring cannot be waited on
// now: the caller waits on mWake instead. Called without `self.mMutex`,
// with self.mInRingWait set; clears it as soon as the sleep is over, before
// delivering, so that ends it delivers to itself wake no ring.
bool WaitInTransferRing(MThreadAlert& self, uint32_t milliseconds);

}  // namespace vbu::platform
