// StGlobalLock.h: scope guards over the library's one process-wide lock and
// over any lock of the host's.
//
//   static int sharedCount = 0;
//   { StGlobalLock hold;  ++sharedCount; }            // waits, then holds for the scope
//   CCriticalSection mine;
//   { StSingleLock hold(&mine);  ++sharedCount; }
#pragma once

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/platform/Sync.h>

// Holds the process-wide lock for a scope. The lock may be taken again by
// the thread that holds it. Nothing in the library takes it: it is the host's.
class VBU_API StGlobalLock {
 public:
  StGlobalLock();
  ~StGlobalLock();
  StGlobalLock(const StGlobalLock&) = delete;
  StGlobalLock& operator=(const StGlobalLock&) = delete;

 private:
  CSingleLock* mLock;
  static CCriticalSection sSafe;
};

// Holds `object` for a scope, waiting as long as it takes.
class VBU_API StSingleLock {
 public:
  explicit StSingleLock(CSyncObject* object);
  ~StSingleLock();
  StSingleLock(const StSingleLock&) = delete;
  StSingleLock& operator=(const StSingleLock&) = delete;

 private:
  CSingleLock* mLock;
};
