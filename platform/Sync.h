// Sync.h: locks of the platform layer. CCriticalSection is a lock that the
// thread holding it may take again; CSingleLock holds one for a scope.
//
//   CCriticalSection section;
//   CSingleLock lock(&section, true);   // locked until the end of the scope
//   if (lock.IsLocked()) std::printf("held\n");
#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include <VantoroBasicUtils/platform/Export.h>

// A wait without limit, for Lock.
constexpr unsigned long kWaitInfinite = 0xFFFFFFFFul;

// Anything a CSingleLock can hold.
class VBU_API CSyncObject {
 public:
  CSyncObject() = default;
  virtual ~CSyncObject();
  CSyncObject(const CSyncObject&) = delete;
  CSyncObject& operator=(const CSyncObject&) = delete;

  // Takes the object, waiting at most `timeout` milliseconds; true if taken.
  virtual bool Lock(unsigned long timeout = kWaitInfinite) = 0;
  // Gives the object back; true on success.
  virtual bool Unlock() = 0;
};

// A lock that the thread holding it may take again; each Lock needs an
// Unlock. Unlock by a thread that does not hold it gives false and changes nothing.
class VBU_API CCriticalSection : public CSyncObject {
 public:
  CCriticalSection() = default;
  ~CCriticalSection() override;

  bool Lock(unsigned long timeout = kWaitInfinite) override;
  bool Unlock() override;

 private:
  // Ownership is state under a plain mutex, so that timed waits are
  // condition-variable waits, which every thread checker understands.
  std::mutex mMutex;
  std::condition_variable mReleased;
  std::thread::id mOwner;
  unsigned long mDepth = 0;
};

// Holds a CSyncObject for a scope: what it has taken, it gives back at the end.
class VBU_API CSingleLock {
 public:
  // Binds `object`; takes it at once if `initialLock`.
  explicit CSingleLock(CSyncObject* object, bool initialLock = false);
  // Gives the object back if this guard holds it.
  ~CSingleLock();
  CSingleLock(const CSingleLock&) = delete;
  CSingleLock& operator=(const CSingleLock&) = delete;

  // Takes the object, waiting at most `timeout` ms; true if this guard holds it.
  bool Lock(unsigned long timeout = kWaitInfinite);
  // Gives the object back; false if this guard did not hold it.
  bool Unlock();
  // True while this guard holds the object.
  bool IsLocked() const { return mLocked; }

 private:
  CSyncObject* mObject;
  bool mLocked;
};
