#include "tasks/CThreadDispatcher.h"

#include <atomic>
#include <mutex>

#include "messaging/LListener.h"
#include "platform/Thread.h"
#include "tasks/CBrevanderThread.h"
#include "tasks/CThreadAction.h"

CThreadDispatcher* CThreadDispatcher::sThreadDispatcher = nullptr;

namespace {

// Guards sThreadDispatcher against a worker that posts to it while the
// user-interface thread deletes it. No handler runs under it.
std::recursive_mutex& DispatcherMutex() {
  static std::recursive_mutex mutex;
  return mutex;
}

std::atomic<bool> gShutDown{false};  // DeleteAll has run, and no dispatcher has been made since

}  // namespace

CThreadDispatcher::CThreadDispatcher() {
  std::lock_guard<std::recursive_mutex> lock(DispatcherMutex());
  sThreadDispatcher = this;
}

CThreadDispatcher::~CThreadDispatcher() {
  std::lock_guard<std::recursive_mutex> lock(DispatcherMutex());
  if (sThreadDispatcher == this) sThreadDispatcher = nullptr;
}

CThreadDispatcher* CThreadDispatcher::GetThreadDispatcher() {
  std::lock_guard<std::recursive_mutex> lock(DispatcherMutex());
  if (!sThreadDispatcher) {
    MThread::ClaimMainThread();
    new CThreadDispatcher;  // sets sThreadDispatcher
    gShutDown = false;
  }
  return sThreadDispatcher;
}

void CThreadDispatcher::DeleteAll() {
  CThreadDispatcher* dispatcher;
  {
    std::lock_guard<std::recursive_mutex> lock(DispatcherMutex());
    dispatcher = sThreadDispatcher;
    if (dispatcher) gShutDown = true;
  }
  delete dispatcher;
}

bool CThreadDispatcher::HasShutDown() { return gShutDown; }

bool CThreadDispatcher::PostFinished(CBrevanderThread* task) {
  std::lock_guard<std::recursive_mutex> lock(DispatcherMutex());
  return sThreadDispatcher &&
         sThreadDispatcher->PostMessage(WM_THREADFINISHED, 0, reinterpret_cast<intptr_t>(task));
}

long CThreadDispatcher::OnThreadStarted(unsigned int, long lParam) {
  if (auto* task = reinterpret_cast<CBrevanderThread*>(lParam)) CThreadAction::GetThreadAction()->AddThread(task);
  return 0;
}

long CThreadDispatcher::OnThreadFinished(unsigned int, long lParam) {
  if (auto* task = reinterpret_cast<CBrevanderThread*>(lParam)) task->CleanUp(true);
  return 0;
}

long CThreadDispatcher::OnBroadcastMessage(unsigned int, long lParam) {
  auto* request = reinterpret_cast<ListenerRequest*>(lParam);
  if (request && request->listener) request->listener->ListenToMessage(request->message, request->param);
  return 0;
}

intptr_t CThreadDispatcher::WindowProc(unsigned int message, uintptr_t wParam, intptr_t lParam) {
  const auto w = static_cast<unsigned int>(wParam);
  const auto l = static_cast<long>(lParam);
  switch (message) {
    case WM_THREADSTARTED:
      return OnThreadStarted(w, l);
    case WM_THREADFINISHED:
      return OnThreadFinished(w, l);
    case WM_THREADBROADCAST:
      return OnBroadcastMessage(w, l);
    default:
      return MMessageWindow::WindowProc(message, wParam, lParam);
  }
}
