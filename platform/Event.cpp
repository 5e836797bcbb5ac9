// Events and their waits. Plain C++: the same on every system.
#include <algorithm>
#include <chrono>

#include "platform/internal/Alert.h"
#include "platform/Event.h"

MEvent::MEvent(bool initialState) : mSignalled(initialState) {}

MEvent::~MEvent() = default;

void MEvent::Set() {
  // The signal is given under the event's lock: a waiter that sees it still
  // takes that lock before it returns, so the event outlives this call even
  // when the waiter destroys it at once.
  std::lock_guard<std::mutex> lock(mMutex);
  mSignalled.store(true, std::memory_order_release);
  // Taking each waiter's own lock before waking it means that no waiter can
  // be between its check and its sleep: none misses the signal.
  for (MThreadAlert* waiter : mWaiters) {
    std::lock_guard<std::mutex> waiterLock(waiter->mMutex);
    vbu::platform::WakeThread(*waiter);
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
  bool inRing = true;  // may sleep in the transfer ring
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
      if (inRing && self.mTransfersInRing.load(std::memory_order_acquire) > 0) {
        // Transfers of this thread are under way: sleep where their ends arrive.
        uint32_t left = kWaitForever;
        if (milliseconds != kWaitForever) {
          const auto now = std::chrono::steady_clock::now();
          if (now >= deadline) {
            result = kWaitTimeout;
            break;
          }
          left = static_cast<uint32_t>(
              std::chrono::ceil<std::chrono::milliseconds>(deadline - now).count());
        }
        self.mInRingWait.store(true, std::memory_order_release);
        lock.unlock();
        inRing = vbu::platform::WaitInTransferRing(self, left);
        lock.lock();
        continue;
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
