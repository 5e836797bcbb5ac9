#include "platform/Sync.h"

#include <chrono>

CSyncObject::~CSyncObject() = default;

CCriticalSection::~CCriticalSection() = default;

bool CCriticalSection::Lock(unsigned long timeout) {
  const std::thread::id self = std::this_thread::get_id();
  std::unique_lock<std::mutex> lock(mMutex);
  if (mOwner == self) {
    ++mDepth;
    return true;
  }
  auto free = [this] { return mOwner == std::thread::id(); };
  if (timeout == kWaitInfinite) {
    mReleased.wait(lock, free);
  } else if (!mReleased.wait_for(lock, std::chrono::milliseconds(timeout), free)) {
    return false;
  }
  mOwner = self;
  mDepth = 1;
  return true;
}

bool CCriticalSection::Unlock() {
  {
    std::lock_guard<std::mutex> lock(mMutex);
    if (mOwner != std::this_thread::get_id()) return false;
    if (--mDepth != 0) return true;
    mOwner = std::thread::id();
  }
  mReleased.notify_one();
  return true;
}

CSingleLock::CSingleLock(CSyncObject* object, bool initialLock) : mObject(object), mLocked(false) {
  if (initialLock) Lock();
}

CSingleLock::~CSingleLock() { Unlock(); }

bool CSingleLock::Lock(unsigned long timeout) {
  if (!mObject) return false;
  if (mLocked) return true;  // a guard holds its object once
  mLocked = mObject->Lock(timeout);
  return mLocked;
}

bool CSingleLock::Unlock() {
  if (!mObject || !mLocked) return false;
  mLocked = !mObject->Unlock();
  return !mLocked;
}
