// AsyncIO.h: asynchronous transfers at explicit 64-bit offsets on a file
// descriptor. The system moves the data (io_uring, or the layer's own
// threads where io_uring is refused); each transfer ends by filling in its
// OVERLAPPED record and then either signalling the record's event or
// queueing a completion routine for the thread that started it, which runs
// it during its next alertable wait. Internal; never installed.
//
//   OVERLAPPED record{};  record.hEvent = &event;  SetOffset(record, 4096);
//   if (StartTransfer(fd, false, buffer, 2048, &record, nullptr) == 0) event.Wait();
//   // record.Internal: error code; record.InternalHigh: bytes read
#pragma once

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

// Starts reading (`write` false) or writing `count` bytes at the record's
// offset. A read that meets the end of the file moves what is there; one
// that starts at or behind it ends with kErrorHandleEof. A write that the
// disk cannot take whole ends with the error of the disk (ENOSPC: full).
// With `routine`, the end is delivered as routine(error, bytes, overlapped)
// on the calling thread; without, the record's event is signalled. Gives 0
// once started, else an error code, and then nothing is delivered.
uint32_t StartTransfer(int fd, bool write, void* buffer, uint32_t count, OVERLAPPED* overlapped,
                       CompletionRoutine routine);

// Ends every transfer on `fd`: those not yet begun end with
// kErrorOperationAborted, and the call waits for those under way, so that
// none touches its buffer after the return. Their events and routines are
// delivered as usual.
void CancelTransfers(int fd);

// True when the system's io_uring carries the transfers, false when the
// layer's own threads do. Decided at the first transfer.
bool TransfersUseIoUring();

}  // namespace vbu::platform
