// LBroadcaster.h: the sending end of the message bus. A message is a number
// and a pointer; BroadcastMessage calls every listener on the caller's
// thread, in the order they were added, and returns after the last one.
//
//   struct Sink : LListener {
//     bool ListenToMessage(long message, void* param) override { return message == 7130; }
//   };
//   LBroadcaster source;  Sink sink;
//   source.AddListener(&sink);
//   int record = 0;
//   source.BroadcastMessage(7130, &record);   // sink.ListenToMessage(7130, &record)
#pragma once

#include <cstdint>

#include <VantoroBasicUtils/containers/Handle.h>
#include <VantoroBasicUtils/containers/LArray.h>
#include <VantoroBasicUtils/messaging/LListener.h>
#include <VantoroBasicUtils/platform/Export.h>

class LBroadcaster;

namespace vbu::detail {

// One broadcast under way: its place in the listener array, on the
// broadcasting thread's stack. A thread's walks form a chain, innermost first,
// which changes to a broadcaster's list bring up to date.
struct BroadcastWalk {
  BroadcastWalk* outer;             // the thread's enclosing walk
  const LBroadcaster* broadcaster;  // null once the broadcaster has died
  LListener* const* items;
  int32_t count;
  int32_t next;  // 0-based index of the next listener to call
};

// The calling thread's innermost walk. Constant-initialised and initial-exec,
// so that a broadcast inlined into a host reaches it with one thread-pointer
// access and no wrapper call.
extern VBU_API constinit thread_local BroadcastWalk* tBroadcastWalks
    __attribute__((tls_model("initial-exec")));

// A broadcaster's list of listeners: an LList whose items a walk reads in place.
class ListenerList : public LList {
 public:
  LListener* const* Items() const {
    return mItemsH ? reinterpret_cast<LListener* const*>(mItemsH->Handle::GetPtr()) : nullptr;
  }
  int32_t Count() const { return mItemCount; }
};

}  // namespace vbu::detail

// Sent by a broadcaster as it dies; the param is the dying LBroadcaster*.
constexpr long kMsgBroadcasterDying = 202;

// Keeps a list of listeners and calls them. The link with each listener is
// two-way: either end's death dissolves it at both ends, also in the middle
// of a broadcast. Listeners may remove themselves or others, and may destroy
// themselves or the broadcaster, from inside ListenToMessage. The bus takes
// no lock: several threads may broadcast on one broadcaster at once, as long
// as its list of listeners is not being changed meanwhile.
class VBU_API LBroadcaster : public CMemoryCheck {
 public:
  // No listeners; broadcasting on.
  LBroadcaster();
  // Copies the broadcasting flag only: the copy has no listeners.
  LBroadcaster(const LBroadcaster& other);
  // Copies the broadcasting flag only: this object keeps its own listeners.
  LBroadcaster& operator=(const LBroadcaster& other);
  // Announces kMsgBroadcasterDying, then detaches every listener.
  virtual ~LBroadcaster();

  // Adds `listener` at the end, unless it is there already.
  void AddListener(LListener* listener);
  void AddListenerSelf(LListener* listener);
  // Removes `listener`; a listener that is not there is left alone.
  void RemoveListener(LListener* listener);
  void RemoveListenerSelf(LListener* listener);
  // Calls ListenToMessage of every listening listener, in the order of adding.
  void BroadcastMessage(long message, void* param) { Walk(message, param); }
  void BroadcastMessageSelf(long message, void* param);

  // Resumes delivery.
  void StartBroadcasting() { mIsBroadcasting = true; }
  // Suspends delivery; the listeners stay attached.
  void StopBroadcasting() { mIsBroadcasting = false; }
  bool IsBroadcasting() const { return mIsBroadcasting; }

 protected:
  // True if the broadcaster has a listener list (it had a listener once).
  bool HasListenerList() const { return mListeners != nullptr; }

 private:
  // The walk of one broadcast, inline: a broadcast is on the hot path of
  // every host, and a call into the library would cost as much as the walk.
  inline void Walk(long message, void* param);

  LList* mListeners;  // LListener*, in the order of adding; null until the first
  bool mIsBroadcasting;
};

inline void LBroadcaster::Walk(long message, void* param) {
  if (!mListeners || !mIsBroadcasting) return;
  using vbu::detail::BroadcastWalk;
  using vbu::detail::tBroadcastWalks;
  const auto& list = *static_cast<const vbu::detail::ListenerList*>(mListeners);
  BroadcastWalk walk{tBroadcastWalks, this, list.Items(), list.Count(), 0};
  tBroadcastWalks = &walk;
  // Unlinked however the walk ends, also when a listener throws.
  struct Unlink {
    BroadcastWalk& walk;
    ~Unlink() { tBroadcastWalks = walk.outer; }
  } unlink{walk};
  // Nothing of `this` is touched once a listener has run: the record holds
  // what the walk needs, and the list's changes come to it.
  while (walk.next < walk.count) {
    LListener* listener = walk.items[walk.next++];
    if (listener->IsListening()) listener->ListenToMessage(message, param);
  }
}
