// LListener.h: the receiving end of the message bus.
//
//   class Watcher : public LListener {
//     bool ListenToMessage(long message, void* param) override { return message == kMsgThreadStatus; }
//   };
//   Watcher watcher;
//   CThreadStatus::GetThreadStatus()->AddListener(&watcher);
#pragma once

#include <VantoroBasicUtils/platform/Export.h>

class LBroadcaster;
class LList;

// Receives the messages of the broadcasters it was added to. Its death
// removes it from all of them.
class VBU_API LListener {
 public:
  // Attached to nothing; listening on.
  LListener();
  // Copies the listening flag only: the copy is attached to nothing.
  LListener(const LListener& other);
  // Copies the listening flag only: this object keeps its own broadcasters.
  LListener& operator=(const LListener& other);
  // Removes itself from every broadcaster that holds it.
  virtual ~LListener();

  // Receives one message; the result says whether it was handled, and the
  // bus does not read it. The base does nothing and gives false.
  virtual bool ListenToMessage(long message, void* param);

  // Resumes delivery to this listener.
  void StartListening() { mIsListening = true; }
  // Suspends delivery; the listener stays attached.
  void StopListening() { mIsListening = false; }
  bool IsListening() const { return mIsListening; }

 protected:
  friend class LBroadcaster;
  // Records a broadcaster that holds this listener; called by LBroadcaster alone.
  void AddBroadcaster(LBroadcaster* broadcaster);
  // Forgets a broadcaster; called by LBroadcaster alone.
  void RemoveBroadcaster(LBroadcaster* broadcaster);

 private:
  LList* mBroadcasters;  // LBroadcaster*; null until the first
  bool mIsListening;
};
