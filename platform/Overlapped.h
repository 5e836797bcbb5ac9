// Overlapped.h: what a host needs to run asynchronous file transfers: the
// transfer record, the manual-reset event that a finished transfer signals,
// and the wait and error codes that the file classes give.
//
//   MEvent done;  OVERLAPPED record;
//   if (file.FReadOverlapped(offset, buffer, 4096, &record, &done) == 0)
//     file.FWaitOverlappedCompletion(&done, 120);   // 0: the read has ended
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

#include "Export.h"

// Results of waits.
constexpr uint32_t kWaitObject0 = 0;         // the event was signalled
constexpr uint32_t kWaitIoCompletion = 192;  // completion routines ran during an alertable wait
constexpr uint32_t kWaitTimeout = 258;       // the time limit passed
constexpr uint32_t kWaitFailed = 0xFFFFFFFFu;
// A wait without limit.
constexpr uint32_t kWaitForever = 0xFFFFFFFFu;

// Error codes of transfers and files. Other failures give the system's error
// number (errno), except that the one errno equal to a code below (ENOSYS,
// 38) is given as kErrorNotImplemented, so that no failure reads as end of
// file or as a transfer under way.
constexpr uint32_t kErrorHandleEof = 38;          // a read at or behind the end of the file
constexpr uint32_t kErrorOperationAborted = 995;  // a transfer ended by a cancel
constexpr uint32_t kErrorIoPending = 997;         // a transfer is under way
constexpr uint32_t kErrorNotImplemented = 0x20000026u;

// The record of one asynchronous transfer. The caller owns it, and the buffer,
// until the transfer has ended; zero it before each transfer.
struct OVERLAPPED {
  uintptr_t Internal;      // the finished transfer's error code, 0 for success
  uintptr_t InternalHigh;  // the bytes that it moved
  uint32_t Offset;         // file offset of the transfer, low 32 bits
  uint32_t OffsetHigh;     // and high 32 bits
  void* hEvent;            // an MEvent* to signal when it ends, or null
};

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

// The calling thread's last error code, as the file classes leave it.
VBU_API uint32_t GetLastError();
VBU_API void SetLastError(uint32_t code);
