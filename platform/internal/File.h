// File.h: files as the file classes need them. Two routes: a descriptor
// with a buffered stream on it, in binary or text mode, and a handle for
// unbuffered asynchronous transfers in whole sectors. Internal; never
// installed.
//
// Each call gives its error code: 0 for success, else the system's error
// number (see Overlapped.h for the codes of the layer's own). Nothing here
// sets the thread's last error; the file classes do that at their boundary.
//
//   int fd;
//   if (OpenDescriptor(path, kDescriptorReadWrite | kDescriptorCreate | kDescriptorText, &fd) != 0) return;
//   void* stream;
//   if (OpenStream(fd, "r+", &stream) == 0) { StreamPuts(stream, "line\n"); CloseStream(stream); }  // "line\r\n"
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/internal/AsyncIO.h"

namespace vbu::platform {

// ---- descriptors

enum DescriptorFlags : unsigned {
  kDescriptorRead = 0,       // read only
  kDescriptorReadWrite = 1,  // read and write
  kDescriptorCreate = 2,     // create when missing
  kDescriptorTruncate = 4,   // empty when present
  kDescriptorText = 8,       // text mode: CR LF on disk, LF in memory
  kDescriptorExclusive = 16, // with kDescriptorCreate: fails when present
};

// Opens `path` into `*fd` (-1 on failure).
uint32_t OpenDescriptor(const unsigned short* path, unsigned flags, int* fd);
// Closes a descriptor that no stream owns.
uint32_t CloseDescriptor(int fd);
// Reads at most `count` bytes (in text mode, the bytes after translation);
// `*got` is their number, 0 at the end of the file.
uint32_t ReadDescriptor(int fd, void* buffer, unsigned count, unsigned* got);
// Writes all `count` bytes (in text mode, each LF as CR LF).
uint32_t WriteDescriptor(int fd, const void* buffer, unsigned count);
// Moves the position (origin 0 start, 1 current, 2 end); `position`, when
// given, receives the new one (-1 on failure).
uint32_t SeekDescriptor(int fd, int64_t offset, int origin, int64_t* position = nullptr);
// Ends the file at the descriptor's position, shorter or longer.
uint32_t EndFileAtPosition(int fd);
// Adds read and write for the owner where they are missing; takes nothing away.
uint32_t AddOwnerReadWrite(const unsigned short* path);

// ---- streams over a descriptor; a stream owns its descriptor once made

// A buffered stream over `fd` with the C stream `mode` ("r", "w", "r+") into
// `*stream` (null on failure); it reads and writes in the descriptor's mode.
uint32_t OpenStream(int fd, const char* mode, void** stream);
// Flushes and closes the stream and its descriptor; the stream is gone either way.
uint32_t CloseStream(void* stream);
// As fgets: a line of at most `count` - 1 bytes with its end.
// kErrorHandleEof when the file ends before anything was read.
uint32_t StreamGets(void* stream, char* buffer, int count);
// As fputs.
uint32_t StreamPuts(void* stream, const char* text);
// As fread and fwrite: `*items` whole items moved; a read cut short by the
// end of the file is no failure.
uint32_t StreamRead(void* stream, void* buffer, std::size_t size, std::size_t count, std::size_t* items);
uint32_t StreamWrite(void* stream, const void* buffer, std::size_t size, std::size_t count, std::size_t* items);
// Wide text as the stream takes it: in binary mode 16-bit little-endian
// units as they stand; in text mode the system code page. Gets a line of at
// most `count` - 1 units with its end (kErrorHandleEof when nothing was
// read); puts a terminated text.
uint32_t StreamGetUnits(void* stream, unsigned short* buffer, int count);
uint32_t StreamPutUnits(void* stream, const unsigned short* text);

// ---- handles for asynchronous transfers

enum class HandleAccess { kRead, kWrite, kReadWrite };
enum class HandleDisposition { kCreateAlways, kOpenAlways, kOpenExisting };

struct HandleOptions {
  // Bypass the system cache: the transfers must then be whole 2048-byte
  // sectors at sector offsets, from addresses on a sector boundary. Where
  // the file system cannot do that (no direct transfers, or a coarser
  // alignment than the sector), the handle quietly goes through the cache.
  bool unbuffered = false;
  // The file is read once from start to end: reads through the cache then
  // have the system fetch the next piece of the same length while the
  // caller works on this one, and the pages of what was read well before
  // (all of them at the close) go back to the system.
  bool sequential = false;
};

// Opens `path` for asynchronous transfers at explicit offsets into `*handle`
// (-1 on failure).
uint32_t OpenHandle(const unsigned short* path, HandleAccess access, HandleDisposition disposition,
                    HandleOptions options, intptr_t* handle);
// True when the handle bypasses the system cache.
bool HandleIsUnbuffered(intptr_t handle);
// True when the handle may write.
bool HandleIsWritable(intptr_t handle);
// Ends every transfer on the handle (see CancelTransfers).
void CancelHandleTransfers(intptr_t handle);
// Writes the file's data through to the disk; needs write access.
uint32_t FlushHandle(intptr_t handle);
// Closes the handle; it is gone either way.
uint32_t CloseHandle(intptr_t handle);
// The size of the file into `*size` (-1 on failure).
uint32_t GetHandleSize(intptr_t handle, int64_t* size);
// Allocates the disk space of `length` bytes at `offset`, the file growing
// to cover them (their bytes read as zeros until written). Direct writes
// into space that is already the file's run side by side, where writes
// that grow the file wait for each other. An error code where the file
// system or device cannot (EOPNOTSUPP, ENODEV, ENOSPC...).
uint32_t ReserveHandleSpace(intptr_t handle, int64_t offset, int64_t length);
// Makes the file `size` bytes long.
uint32_t SetHandleSize(intptr_t handle, int64_t size);
// The descriptor under a handle.
inline int HandleDescriptor(intptr_t handle) { return static_cast<int>(handle); }
// Starts a transfer on the handle, as StartTransfer (AsyncIO.h) does. A
// transfer that an unbuffered handle cannot take as it stands (an address,
// offset or length off the file system's direct-transfer alignment) turns
// the handle to buffered transfers for good, so that it still works.
uint32_t StartHandleTransfer(intptr_t handle, bool write, void* buffer, uint32_t count, OVERLAPPED* overlapped,
                             CompletionRoutine routine);

}  // namespace vbu::platform
