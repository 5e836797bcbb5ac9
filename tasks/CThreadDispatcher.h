// CThreadDispatcher.h: the hidden window on the host's user-interface thread
// through which work that must not run on a worker thread is handed across:
// above all the end of a self-destroying worker task (PostPlay, removal from
// the task list, deletion), and messages that a listener called on a worker
// wants delivered on the user-interface thread.
//
//   CThreadDispatcher::GetThreadDispatcher();   // once at start-up, on the user-interface thread
//   MThreadQueue::PumpMessages();               // from the host's event loop, when woken
//   CThreadDispatcher::DeleteAll();             // at shutdown
//
//   // From a listener on a worker: deliver a message to a listener on the user-interface thread.
//   static LListener window;
//   static ListenerRequest request{&window, 70001, nullptr};   // kept alive until handled
//   CThreadDispatcher::GetThreadDispatcher()->PostMessage(WM_THREADBROADCAST, 0, reinterpret_cast<intptr_t>(&request));
#pragma once

#include <cstdint>

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/platform/MessageQueue.h>

class CBrevanderThread;
class LListener;

// lParam CBrevanderThread*: puts the task on the task list (AddThread).
constexpr unsigned int WM_THREADSTARTED = 1313;
// lParam CBrevanderThread*: the end of a self-destroying worker (CleanUp(true)).
constexpr unsigned int WM_THREADFINISHED = 1314;
// lParam ListenerRequest*: the record's listener hears the record's message.
constexpr unsigned int WM_THREADBROADCAST = 1315;

// What WM_THREADBROADCAST carries. The sender keeps it alive until the
// message has been handled; the handler does not free it.
struct ListenerRequest {
  LListener* listener;
  long message;
  void* param;
};

// The dispatcher window. Its messages run one at a time, in the order
// posted, when its thread pumps its queue. Messages still queued when it is
// deleted are lost: a task whose end was among them is not cleaned up.
class VBU_API CThreadDispatcher : public MMessageWindow {
 public:
  // Belongs to the calling thread; becomes sThreadDispatcher.
  CThreadDispatcher();
  // Clears sThreadDispatcher.
  ~CThreadDispatcher() override;

  // The one instance, made on the first call, on the calling thread, which
  // becomes the main thread unless the host has named one
  // (MThread::SetMainThreadId). Call it on the user-interface thread before
  // any self-destroying worker task can end.
  static CThreadDispatcher* GetThreadDispatcher();
  // Deletes the instance, if there is one; the next GetThreadDispatcher
  // makes a new one. Until then a worker task that ends does nothing more
  // (see CBrevanderThread::Finish).
  static void DeleteAll();

  // The instance, or null.
  static CThreadDispatcher* sThreadDispatcher;

 protected:
  // The handlers of the three messages; each gives 0.
  long OnThreadStarted(unsigned int wParam, long lParam);
  long OnThreadFinished(unsigned int wParam, long lParam);
  long OnBroadcastMessage(unsigned int wParam, long lParam);

  intptr_t WindowProc(unsigned int message, uintptr_t wParam, intptr_t lParam) override;

 private:
  friend class CBrevanderThread;
  // Posts WM_THREADFINISHED for `task`; false if there is no dispatcher to take it.
  static bool PostFinished(CBrevanderThread* task);
  // True from DeleteAll until a new dispatcher is made: the host has shut down.
  static bool HasShutDown();
};
