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

#include <VantoroBasicUtils/containers/Handle.h>
#include <VantoroBasicUtils/platform/Export.h>

class LList;
class LListener;

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
  void BroadcastMessage(long message, void* param) { BroadcastMessageSelf(message, param); }
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
  LList* mListeners;  // LListener*, in the order of adding; null until the first
  bool mIsBroadcasting;
};
