// CBrevanderWinThread.h: the base of a long-lived thread with a message loop
// of its own, which can post to itself and be told to stop. The library
// starts none: the host derives a class and starts it.
//
//   constexpr unsigned int kEncodeNext = 0x8001;
//   class Encoder : public CBrevanderWinThread {
//    protected:
//     bool OnThreadMessage(unsigned int m, uintptr_t w, intptr_t l) override {
//       if (m == kEncodeNext) { ++mFrames; return true; }
//       return CBrevanderWinThread::OnThreadMessage(m, w, l);
//     }
//     int mFrames = 0;
//   };
//   auto* encoder = new Encoder;  encoder->CreateThread();   // deletes itself when its loop ends
//   encoder->SelfMessage(kEncodeNext, 0, 0);                  // from any thread
//   encoder->Quit();                                          // queued messages run first
#pragma once

#include <atomic>
#include <cstdint>

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/platform/Thread.h>

// The thread message that ends the loop of a CBrevanderWinThread (OnQuit).
constexpr unsigned int WM_THREADQUIT = 1219;

class VBU_API CBrevanderWinThread : public MThread {
 public:
  ~CBrevanderWinThread() override;

  // No idle work is ever asked for: gives false.
  bool OnIdle(long count) override;
  // From any thread: drops everything SelfMessage sends from now on, and
  // queues WM_THREADQUIT behind what is queued already.
  virtual void Quit();
  // From any thread: queues a thread message for this thread, unless Quit has been called.
  void SelfMessage(unsigned int message, unsigned int wParam, long lParam);

 protected:
  CBrevanderWinThread();

  // WM_THREADQUIT, on the thread itself: ends the loop (a quit message).
  virtual void OnQuit(unsigned int wParam, long lParam);
  // Routes WM_THREADQUIT to OnQuit; other messages are not handled here.
  bool OnThreadMessage(unsigned int message, uintptr_t wParam, intptr_t lParam) override;

 private:
  std::atomic<bool> mQuitting;
};
