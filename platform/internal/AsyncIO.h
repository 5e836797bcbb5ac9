// AsyncIO.h: asynchronous transfers at explicit 64-bit offsets on a file
// descriptor. The system's queue of transfers moves the data (io_uring), or
// the layer's own threads do: for every transfer where the host chose them
// or the system refuses the queue, and for any one transfer that the queue
// cannot take. Each transfer ends by filling in its OVERLAPPED record and
// then either signalling the record's event or queueing a completion routine
// for the thread that started it, which runs it during its next alertable
// wait. Internal; never installed.
//
//   OVERLAPPED record{};  record.hEvent = &event;  SetOffset(record, 4096);
//   if (StartTransfer(fd, false, buffer, 2048, &record, nullptr) == 0) event.Wait();
//   // record.Internal: error code; record.InternalHigh: bytes read
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/Overlapped.h"

namespace vbu::platform {

using CompletionRoutine = void (*)(uint32_t error, uint32_t bytes, OVERLAPPED* overlapped);

// The record's 64-bit offset.
inline int64_t GetOffset(const OVERLAPPED& record) {
  return static_cast<int64_t>((static_cast<uint64_t>(record.OffsetHigh) << 32) | record.Offset);
}
inline void SetOffset(OVERLAPPED& record, int64_t offset) {
  record.Offset = static_cast<uint32_t>(static_cast<uint64_t>(offset));
  record.OffsetHigh = static_cast<uint32_t>(static_cast<uint64_t>(offset) >> 32);
}

// The offsets and lengths of direct transfers that are whole multiples of
// this (the largest sector of today's disks) pass every disk's alignment.
constexpr uint32_t kTransferAlignment = 4096;

// The length of each part when a block of `bytes` at an aligned offset is
// moved as up to `parts` transfers side by side, so that several requests
// keep the device busy: every part a whole multiple of kTransferAlignment,
// so none turns a file away from direct transfers. A block that cannot be
// split so stays whole.
inline uint32_t TransferPartBytes(uint32_t bytes, uint32_t parts) {
  for (; parts > 1; --parts) {
    if (bytes % (parts * kTransferAlignment) == 0) return bytes / parts;
  }
  return bytes;
}

// Starts reading (`write` false) or writing `count` bytes at the record's
// offset. A read that meets the end of the file moves what is there; one
// that starts at or behind it ends with kErrorHandleEof. A write that the
// disk cannot take whole ends with the error of the disk (ENOSPC: full).
// With `routine`, the end is delivered as routine(error, bytes, overlapped)
// on the calling thread; without, the record's event is signalled. Gives 0
// once started, and then the end is always delivered, a failure of the
// system's included; else (a bad descriptor or argument) an error code, and
// nothing is delivered. Sets no last error.
uint32_t StartTransfer(int fd, bool write, void* buffer, uint32_t count, OVERLAPPED* overlapped,
                       CompletionRoutine routine);

// Ends every transfer on `fd`: those not yet begun end with
// kErrorOperationAborted, and the call waits for those under way, so that
// none touches its buffer after the return. Their events and routines are
// delivered as usual.
void CancelTransfers(int fd);

// True when the system's io_uring carries the transfers started now, false
// when the layer's own threads do (the host chose them, or the system
// refuses io_uring).
bool TransfersUseIoUring();

// The transfer records taken from the engine's pool and not given back:
// those of transfers under way, and of ended ones whose completion routine
// has not run yet. For tests, which check that nothing is lost.
std::size_t TransferRequestsInUse();

// True from the moment the ring's wait has failed until the next transfer
// replaces the ring. Until then the ring still hands out every end that it
// holds, so a test that fails the ring's waits waits for this first.
bool TransferRingHasFailed();

}  // namespace vbu::platform
