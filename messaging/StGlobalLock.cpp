#include "messaging/StGlobalLock.h"

StGlobalLock::StGlobalLock() : mLock(new CSingleLock(&sSafe, false)) { mLock->Lock(kWaitInfinite); }

StGlobalLock::~StGlobalLock() {
  mLock->Unlock();
  delete mLock;
}

StSingleLock::StSingleLock(CSyncObject* object) : mLock(new CSingleLock(object, false)) { mLock->Lock(kWaitInfinite); }

StSingleLock::~StSingleLock() {
  mLock->Unlock();
  delete mLock;
}
