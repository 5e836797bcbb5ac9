// Alert.h: each thread's queue of due completion routines, run by the
// thread itself during an alertable wait (MEvent::Wait). Internal; never
// installed.
//
//   std::shared_ptr<MThreadAlert> self = vbu::platform::CurrentThreadAlert();
//   vbu::platform::QueueCompletion(*self, entry);   // from any thread
#pragma once

#include <condition_variable>
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

  ~MThreadAlert();
};

namespace vbu::platform {

// The calling thread's alert state, made on first use; it lives while the
// thread does or anyone holds it.
const std::shared_ptr<MThreadAlert>& CurrentThreadAlert();
// Queues `entry` for `thread` and wakes it.
void QueueCompletion(MThreadAlert& thread, MQueuedCompletion* entry);

}  // namespace vbu::platform
