// Event.h: a manual-reset event that any thread may set or wait for, and the
// results of its waits. A finished asynchronous transfer signals one (see
// Overlapped.h); an alertable wait also runs the completion routines that
// are due on the waiting thread.
//
//   MEvent done;
//   std::thread worker([&] { done.Set(); });
//   if (done.Wait(5000) == kWaitTimeout) std::printf("still busy\n");   // at most five seconds
//   worker.join();
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

#include <VantoroBasicUtils/platform/Export.h>

// Results of waits.
constexpr uint32_t kWaitObject0 = 0;         // the event was signalled
constexpr uint32_t kWaitIoCompletion = 192;  // completion routines ran during an alertable wait
constexpr uint32_t kWaitTimeout = 258;       // the time limit passed
constexpr uint32_t kWaitFailed = 0xFFFFFFFFu;
// A wait without limit.
constexpr uint32_t kWaitForever = 0xFFFFFFFFu;

struct MThreadAlert;

// A manual-reset event: once set, it stays set, and every wait passes, until
// it is reset. Any thread may set it or wait for it.
class VBU_API MEvent {
 public:
  // Unsignalled unless `initialState`.
  explicit MEvent(bool initialState = false);
  ~MEvent();
  MEvent(const MEvent&) = delete;
  MEvent& operator=(const MEvent&) = delete;

  // Signals the event and wakes its waiters.
  void Set();
  // Makes it unsignalled.
  void Reset();
  // True while signalled.
  bool IsSet() const { return mSignalled.load(std::memory_order_acquire); }
  // Waits at most `milliseconds` (kWaitForever: no limit) for the event:
  // kWaitObject0 or kWaitTimeout. An `alertable` wait also ends when
  // completion routines of transfers that the calling thread started are
  // due: it runs them all, on this thread, and gives kWaitIoCompletion.
  uint32_t Wait(uint32_t milliseconds = kWaitForever, bool alertable = false);

 private:
  std::atomic<bool> mSignalled;
  std::mutex mMutex;                    // guards mWaiters
  std::vector<MThreadAlert*> mWaiters;  // threads in Wait
};
