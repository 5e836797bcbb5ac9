// Overlapped.h: what a host needs to run asynchronous file transfers: the
// transfer record, the event that a finished transfer signals (Event.h), the
// error codes that the file classes give, with the thread's last error, and
// the choice of the route that moves the data.
//
//   MFileUniv file;
//   file.FOpen(u"/media/title.vob"_u16, MFile::file_overlapped_read);
//   alignas(4096) static char buffer[4096];
//   MEvent done;  OVERLAPPED record;
//   if (file.FReadOverlapped(0, buffer, 4096, &record, &done) == 0)
//     file.FWaitOverlappedCompletion(&done, 120);   // 0: the read has ended
#pragma once

#include <cstdint>

#include <VantoroBasicUtils/platform/Event.h>
#include <VantoroBasicUtils/platform/Export.h>

#if defined(_WIN32)
// OVERLAPPED, GetLastError and SetLastError are the system's own there; only
// the headers that declare them, so that the rest of <windows.h> (its macros
// GetMessage, min, max...) stays out of the host's way.
#include <windef.h>
#include <minwinbase.h>
#include <errhandlingapi.h>
#endif

// Error codes of transfers and files. Other failures give the system's error
// number (errno), except that the one errno equal to a code below (ENOSYS,
// 38) is given as kErrorNotImplemented, so that no failure reads as end of
// file or as a transfer under way.
constexpr uint32_t kErrorHandleEof = 38;          // a read at or behind the end of the file
constexpr uint32_t kErrorOperationAborted = 995;  // a transfer ended by a cancel
constexpr uint32_t kErrorIoPending = 997;         // a transfer is under way
constexpr uint32_t kErrorNotImplemented = 0x20000026u;

namespace vbu {

// How the library moves asynchronous transfers. kSystemQueue: through the
// system's own queue of transfers where it has one (io_uring), with any
// transfer that the queue cannot take at the moment, or all of them where
// the system refuses it, moved on the library's threads instead. kThreads:
// on the library's threads only. The default is kSystemQueue, or kThreads in
// a library built with VBU_TRANSFER_THREADS.
enum class TransferRoute { kSystemQueue, kThreads };

// Chooses the route of the transfers started from now on; those under way
// end on their own. Any thread, at any time.
VBU_API void SetTransferRoute(TransferRoute route);
VBU_API TransferRoute GetTransferRoute();

}  // namespace vbu

#if !defined(_WIN32)
// The record of one asynchronous transfer. The caller owns it, and the buffer,
// until the transfer has ended; zero it before each transfer.
struct OVERLAPPED {
  uintptr_t Internal;      // the finished transfer's error code, 0 for success
  uintptr_t InternalHigh;  // the bytes that it moved
  uint32_t Offset;         // file offset of the transfer, low 32 bits
  uint32_t OffsetHigh;     // and high 32 bits
  void* hEvent;            // an MEvent* to signal when it ends, or null
};

// The calling thread's last error code, as the file classes leave it.
VBU_API uint32_t GetLastError();
VBU_API void SetLastError(uint32_t code);
#endif
