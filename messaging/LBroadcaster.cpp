#include "messaging/LBroadcaster.h"

#include "containers/LArrayIterator.h"
#include "messaging/LListener.h"

// ---- LBroadcaster

LBroadcaster::LBroadcaster() : mListeners(nullptr), mIsBroadcasting(true) {}

LBroadcaster::LBroadcaster(const LBroadcaster& other)
    : CMemoryCheck(), mListeners(nullptr), mIsBroadcasting(other.mIsBroadcasting) {}

LBroadcaster& LBroadcaster::operator=(const LBroadcaster& other) {
  mIsBroadcasting = other.mIsBroadcasting;
  return *this;
}

LBroadcaster::~LBroadcaster() {
  BroadcastMessage(kMsgBroadcasterDying, this);
  if (!mListeners) return;
  // The list is taken off the object first: a listener that hears of the
  // detachment cannot reach a half-dismantled list.
  LList* listeners = mListeners;
  mListeners = nullptr;
  LListIterator it(*listeners);
  for (LListener* listener; it.Next(&listener);) listener->RemoveBroadcaster(this);
  delete listeners;  // leaves any walk still open on it dead, so it ends
}

void LBroadcaster::AddListener(LListener* listener) { AddListenerSelf(listener); }

void LBroadcaster::AddListenerSelf(LListener* listener) {
  if (!listener) return;
  if (!mListeners) mListeners = new LList;
  if (mListeners->FetchIndexOf(&listener) != kBadIndex) return;
  mListeners->InsertItemsAt(1, kLastIndex, &listener, 0);
  listener->AddBroadcaster(this);
}

void LBroadcaster::RemoveListener(LListener* listener) { RemoveListenerSelf(listener); }

void LBroadcaster::RemoveListenerSelf(LListener* listener) {
  if (!mListeners || !listener) return;
  mListeners->Remove(&listener);
  listener->RemoveBroadcaster(this);
}

void LBroadcaster::BroadcastMessage(long message, void* param) { BroadcastMessageSelf(message, param); }

void LBroadcaster::BroadcastMessageSelf(long message, void* param) {
  if (!mListeners || !mIsBroadcasting) return;
  // The iterator follows removals from inside ListenToMessage, and goes dead
  // (ending the walk) if a listener destroys this broadcaster. Nothing of
  // `this` is touched after a listener has run.
  LListIterator it(*mListeners);
  for (LListener* listener; it.Next(&listener);) {
    if (listener->IsListening()) listener->ListenToMessage(message, param);
  }
}

// ---- LListener

LListener::LListener() : mBroadcasters(nullptr), mIsListening(true) {}

LListener::LListener(const LListener& other) : mBroadcasters(nullptr), mIsListening(other.mIsListening) {}

LListener& LListener::operator=(const LListener& other) {
  mIsListening = other.mIsListening;
  return *this;
}

LListener::~LListener() {
  if (!mBroadcasters) return;
  // Each RemoveListener comes back into RemoveBroadcaster, shrinking the
  // list under the iterator, which follows.
  LListIterator it(*mBroadcasters);
  for (LBroadcaster* broadcaster; it.Next(&broadcaster);) broadcaster->RemoveListener(this);
  delete mBroadcasters;
  mBroadcasters = nullptr;
}

bool LListener::ListenToMessage(long, void*) { return false; }

void LListener::AddBroadcaster(LBroadcaster* broadcaster) {
  if (!mBroadcasters) mBroadcasters = new LList;
  mBroadcasters->InsertItemsAt(1, kLastIndex, &broadcaster, 0);
}

void LListener::RemoveBroadcaster(LBroadcaster* broadcaster) {
  if (mBroadcasters) mBroadcasters->Remove(&broadcaster);
}
