// Each thread's queue of due completion routines. Plain C++: the same on
// every system.
#include "platform/internal/Alert.h"

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
  WakeThread(thread);
}

}  // namespace vbu::platform
