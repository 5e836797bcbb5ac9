// CBroadcastDispatcher.h: a hidden window on the host's user-interface
// thread that carries out a broadcaster's operations there, when any thread
// posts it one of three messages.
//
//   StBroadcasterSetup setup;                 // once, on the user-interface thread
//   static LBroadcaster broadcaster;
//   static LListener listener;
//   CBroadcastDispatcher::sBroadcastDispatcher->PostMessage(WM_ADDLISTENER,   // from any thread
//       reinterpret_cast<uintptr_t>(&broadcaster), reinterpret_cast<intptr_t>(&listener));
#pragma once

#include <cstdint>

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/platform/MessageQueue.h>

class LBroadcaster;

// wParam LBroadcaster*, lParam LListener*: AddListenerSelf.
constexpr unsigned int WM_ADDLISTENER = 1414;
// wParam LBroadcaster*, lParam LListener*: RemoveListenerSelf.
constexpr unsigned int WM_REMOVELISTENER = 1415;
// lParam BroadcastRequest*: BroadcastMessageSelf with the record's fields.
constexpr unsigned int WM_BROADCASTMESSAGE = 1416;

// What WM_BROADCASTMESSAGE carries. The sender keeps it alive until the
// message has been handled; the handler does not free it.
struct BroadcastRequest {
  LBroadcaster* broadcaster;
  void* reserved;  // not read
  long message;
  void* param;
};

// The dispatcher window. Its messages run, in the order posted, when the
// owning thread pumps its queue (MThreadQueue::PumpMessages).
class VBU_API CBroadcastDispatcher : public MMessageWindow {
 public:
  // Belongs to the calling thread; becomes sBroadcastDispatcher.
  CBroadcastDispatcher();
  // Clears sBroadcastDispatcher.
  ~CBroadcastDispatcher() override;

  // The one instance, or null.
  static CBroadcastDispatcher* sBroadcastDispatcher;

 protected:
  // Handles the three messages above (each gives 0); others give 0 unread.
  intptr_t WindowProc(unsigned int message, uintptr_t wParam, intptr_t lParam) override;
};

// Makes the dispatcher window for as long as it lives. The host makes one on
// its user-interface thread and keeps it while it runs.
class VBU_API StBroadcasterSetup {
 public:
  StBroadcasterSetup();
  ~StBroadcasterSetup();
  StBroadcasterSetup(const StBroadcasterSetup&) = delete;
  StBroadcasterSetup& operator=(const StBroadcasterSetup&) = delete;

 private:
  CBroadcastDispatcher* mDispatcher;
};
