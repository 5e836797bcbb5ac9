// Events, waits and each thread's due completion routines. Plain C++: the
// same on every system.
#include <algorithm>
#include <chrono>

#include "platform/internal/Alert.h"
#include "platform/Event.h"

MThreadAlert::~MThreadAlert() {
  // The thread has ended: what it never ran is only released.
  while (MQueuedCompletion* entry = mHead) {
    mHead = entry->mNextQueued;
    entry->mRun(entry, false);
  }
}

namespace vbu::platform {

const std::shared_ptr<MThreadAlert>& CurrentThreadAlert() {
  thread_local std::shared_ptr<MThreadAlert> alert = std::make_shared<MThreadAlert>();
  return alert;
}

void QueueCompletion(MThreadAlert& thread, MQueuedCompletion* entry) {
  entry->mNextQueued = nullptr;
  std::lock_guard<std::mutex> lock(thread.mMutex);
  if (thread.mTail) {
    thread.mTail->mNextQueued = entry;
  } else {
    thread.mHead = entry;
  }
  thread.mTail = entry;
  thread.mWake.notify_all();
}

}  // namespace vbu::platform

MEvent::MEvent(bool initialState) : mSignalled(initialState) {}

MEvent::~MEvent() = default;

void MEvent::Set() {
  mSignalled.store(true, std::memory_order_release);
  std::lock_guard<std::mutex> lock(mMutex);
  // Taking each waiter's own lock before waking it means that no waiter can
  // be between its check and its sleep: none misses the signal.
  for (MThreadAlert* waiter : mWaiters) {
    std::lock_guard<std::mutex> waiterLock(waiter->mMutex);
    waiter->mWake.notify_all();
  }
}

void MEvent::Reset() { mSignalled.store(false, std::memory_order_release); }

uint32_t MEvent::Wait(uint32_t milliseconds, bool alertable) {
  MThreadAlert& self = *vbu::platform::CurrentThreadAlert();
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  {
    std::lock_guard<std::mutex> lock(mMutex);
    mWaiters.push_back(&self);
  }
  uint32_t result;
  MQueuedCompletion* due = nullptr;
  {
    std::unique_lock<std::mutex> lock(self.mMutex);
    for (;;) {
      if (alertable && self.mHead) {
        due = self.mHead;
        self.mHead = self.mTail = nullptr;
        result = kWaitIoCompletion;
        break;
      }
      if (IsSet()) {
        result = kWaitObject0;
        break;
      }
      if (milliseconds == kWaitForever) {
        self.mWake.wait(lock);
      } else if (self.mWake.wait_until(lock, deadline) == std::cv_status::timeout) {
        result = IsSet() ? kWaitObject0 : kWaitTimeout;
        break;
      }
    }
  }
  {
    std::lock_guard<std::mutex> lock(mMutex);
    mWaiters.erase(std::find(mWaiters.begin(), mWaiters.end(), &self));
  }
  while (due) {
    MQueuedCompletion* next = due->mNextQueued;
    due->mRun(due, true);
    due = next;
  }
  return result;
}
