#include "messaging/LBroadcaster.h"

#include <cstdint>

#include "containers/LArrayIterator.h"
#include "messaging/LListener.h"

// ---- The walk of a broadcast
//
// A broadcast walks the listener array with a small record on its own stack,
// linked into a chain that belongs to the broadcasting thread alone. Nothing
// shared is written, so several threads may broadcast on one broadcaster at
// once, and no lock is held while a listener runs. A listener's changes to the
// list during a broadcast (removing itself or another listener, adding one,
// destroying the broadcaster) happen on the broadcasting thread, so they only
// need to bring that thread's walks up to date; changing the list while
// another thread broadcasts is the callers' business to keep apart.

namespace vbu::detail {
constinit thread_local BroadcastWalk* tBroadcastWalks = nullptr;
}  // namespace vbu::detail

namespace {

using vbu::detail::BroadcastWalk;
using vbu::detail::ListenerList;
using vbu::detail::tBroadcastWalks;

const ListenerList& ListOf(const LList* list) { return *static_cast<const ListenerList*>(list); }

// Brings this thread's walks over `broadcaster` up to date with its list,
// after the item at 0-based `removed` left it (-1: nothing left it).
void UpdateWalks(const LBroadcaster* broadcaster, const LList* list, int32_t removed) {
  for (BroadcastWalk* walk = tBroadcastWalks; walk; walk = walk->outer) {
    if (walk->broadcaster != broadcaster) continue;
    if (!list) {
      walk->broadcaster = nullptr;
      walk->count = 0;
      continue;
    }
    if (removed >= 0 && removed < walk->next) --walk->next;
    walk->items = ListOf(list).Items();
    walk->count = ListOf(list).Count();
  }
}

}  // namespace

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
  // A listener that destroys the broadcaster mid-broadcast ends that walk.
  UpdateWalks(this, nullptr, -1);
  if (!mListeners) return;
  // The list is taken off the object first: a listener that hears of the
  // detachment cannot reach a half-dismantled list.
  LList* listeners = mListeners;
  mListeners = nullptr;
  LListIterator it(*listeners);
  for (LListener* listener; it.Next(&listener);) listener->RemoveBroadcaster(this);
  delete listeners;
}

void LBroadcaster::AddListener(LListener* listener) { AddListenerSelf(listener); }

void LBroadcaster::AddListenerSelf(LListener* listener) {
  if (!listener) return;
  if (!mListeners) mListeners = new ListenerList;
  if (mListeners->FetchIndexOf(&listener) != kBadIndex) return;
  mListeners->InsertItemsAt(1, kLastIndex, &listener, 0);
  UpdateWalks(this, mListeners, -1);  // a walk under way reaches the new listener last
  listener->AddBroadcaster(this);
}

void LBroadcaster::RemoveListener(LListener* listener) { RemoveListenerSelf(listener); }

void LBroadcaster::RemoveListenerSelf(LListener* listener) {
  if (!mListeners || !listener) return;
  const long index = mListeners->FetchIndexOf(&listener);
  if (index != kBadIndex) {
    mListeners->RemoveItemsAt(1, index);
    UpdateWalks(this, mListeners, static_cast<int32_t>(index - 1));
  }
  listener->RemoveBroadcaster(this);
}

void LBroadcaster::BroadcastMessageSelf(long message, void* param) { Walk(message, param); }

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
