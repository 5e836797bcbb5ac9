#include "tasks/CBrevanderWinThread.h"

#include "platform/MessageQueue.h"

CBrevanderWinThread::CBrevanderWinThread() : mQuitting(false) {}

CBrevanderWinThread::~CBrevanderWinThread() = default;

bool CBrevanderWinThread::OnIdle(long) { return false; }

void CBrevanderWinThread::Quit() {
  mQuitting = true;
  MThreadQueue::PostThreadMessage(GetThreadId(), WM_THREADQUIT, 0, 0);
}

void CBrevanderWinThread::SelfMessage(unsigned int message, unsigned int wParam, long lParam) {
  if (mQuitting) return;
  MThreadQueue::PostThreadMessage(GetThreadId(), message, wParam, lParam);
}

void CBrevanderWinThread::OnQuit(unsigned int, long) { MThreadQueue::PostQuitMessage(0); }

bool CBrevanderWinThread::OnThreadMessage(unsigned int message, uintptr_t wParam, intptr_t lParam) {
  if (message != WM_THREADQUIT) return MThread::OnThreadMessage(message, wParam, lParam);
  OnQuit(static_cast<unsigned int>(wParam), static_cast<long>(lParam));
  return true;
}
