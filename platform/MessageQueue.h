// MessageQueue.h: the message queue of each thread, and the hidden windows
// that receive messages through it. Any thread posts a three-word message;
// the thread that owns the queue takes messages out and dispatches them, in
// the order posted, from its own loop.
//
//   struct Inbox : MMessageWindow { intptr_t WindowProc(unsigned m, uintptr_t w, intptr_t l) override; };
//   Inbox inbox;                              // belongs to the thread that makes it
//   inbox.PostMessage(1414, 0, 0);            // from any thread; then, on the owner:
//   MThreadQueue::PumpMessages();             // runs inbox.WindowProc(1414, 0, 0)
#pragma once

#include <cstdint>
#include <memory>

#include <VantoroBasicUtils/platform/Export.h>

class MMessageWindow;
struct MThreadQueueState;

// A queued message: for a window, or for the thread itself (null window).
struct MMessage {
  MMessageWindow* window;
  unsigned int message;
  uintptr_t wParam;
  intptr_t lParam;
};

// A message that ends a thread's loop: GetMessage gives false for it.
constexpr unsigned int kMsgQuit = 0x0012;

// A window that exists only to receive messages on the thread that made it.
// Its messages still queued when it dies are dropped, never dispatched.
class VBU_API MMessageWindow {
 public:
  // Belongs to the calling thread, whose queue it posts into.
  MMessageWindow();
  virtual ~MMessageWindow();
  MMessageWindow(const MMessageWindow&) = delete;
  MMessageWindow& operator=(const MMessageWindow&) = delete;

  // Queues a message for this window; any thread. False if the owning thread has ended.
  bool PostMessage(unsigned int message, uintptr_t wParam, intptr_t lParam);
  // Runs the message at once on the calling thread and gives WindowProc's result.
  intptr_t SendMessage(unsigned int message, uintptr_t wParam, intptr_t lParam);
  // The id of the owning thread.
  unsigned long GetThreadId() const;

 protected:
  friend class MThreadQueue;
  // Handles one message; the base handles nothing and gives 0.
  virtual intptr_t WindowProc(unsigned int message, uintptr_t wParam, intptr_t lParam);

 private:
  std::shared_ptr<MThreadQueueState> mQueue;
};

// The calling thread's queue, made on first use. A host pumps the queue of
// its user-interface thread from its own event loop: it calls PumpMessages
// whenever the wake-up handler it set has fired (or at least once per turn).
class VBU_API MThreadQueue {
 public:
  // The calling thread's id, as thread messages address it.
  static unsigned long CurrentThreadId();
  // Queues a message without window for thread `threadId`; false if that thread has no queue.
  static bool PostThreadMessage(unsigned long threadId, unsigned int message, uintptr_t wParam, intptr_t lParam);
  // Queues kMsgQuit for the calling thread, behind what is queued already.
  static void PostQuitMessage(int exitCode);

  // Waits for the next message of the calling thread; false for kMsgQuit.
  static bool GetMessage(MMessage& message);
  // Takes the next message if there is one, without waiting.
  static bool PeekMessage(MMessage& message);
  // Waits up to `timeout` ms (0xFFFFFFFF: no limit) for a message; true if one is queued.
  static bool WaitMessage(unsigned long timeout);
  // Runs a window message's WindowProc; thread messages give 0.
  static intptr_t DispatchMessage(const MMessage& message);
  // Dispatches every message queued for the calling thread's windows, in
  // order, and gives their number. Stops early at kMsgQuit, which stays queued.
  static int PumpMessages();
  // Calls `wake(context)` on the posting thread each time a message is
  // queued for the calling thread, so that a host can wake its event loop.
  // Null removes the handler.
  static void SetWakeUpHandler(void (*wake)(void* context), void* context);
};
