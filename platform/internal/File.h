// File.h: files as the file classes need them. Two routes: a descriptor
// with a buffered stream on it, in binary or text mode, and a handle for
// unbuffered asynchronous transfers in whole sectors. Every call that fails
// leaves its error code as the thread's last error (GetLastError).
// Internal; never installed.
//
//   int fd = OpenDescriptor(path, kDescriptorReadWrite | kDescriptorCreate | kDescriptorText);
//   void* stream = OpenStream(fd, "r+");
//   StreamPuts(stream, "line\n");  CloseStream(stream);   // "line\r\n" on disk
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
};

// Opens `path`; gives the descriptor or -1.
int OpenDescriptor(const unsigned short* path, unsigned flags);
// Closes a descriptor that no stream owns; 0 or -1.
int CloseDescriptor(int fd);
// Reads at most `count` bytes (in text mode, the bytes after translation);
// gives their number, 0 at the end of the file, or -1.
int ReadDescriptor(int fd, void* buffer, unsigned count);
// Writes `count` bytes (in text mode, each LF as CR LF); gives `count` or -1.
int WriteDescriptor(int fd, const void* buffer, unsigned count);
// Moves the position (origin 0 start, 1 current, 2 end); gives it, or -1.
int64_t SeekDescriptor(int fd, int64_t offset, int origin);
// Ends the file at the descriptor's position, shorter or longer; 0 or -1.
int EndFileAtPosition(int fd);
// Gives the file the permissions of its owner alone (read and write); 0 or -1.
int SetOwnerReadWrite(const unsigned short* path);

// ---- streams over a descriptor; a stream owns its descriptor once made

// A buffered stream over `fd` with the C stream `mode` ("r", "w", "r+"); it
// reads and writes in the descriptor's mode. Null on failure.
void* OpenStream(int fd, const char* mode);
// Flushes and closes the stream and its descriptor; 0 or -1 (EOF).
int CloseStream(void* stream);
// As fgets: a line of at most `count` - 1 bytes with its end; null when
// nothing was read.
char* StreamGets(void* stream, char* buffer, int count);
// As fputs: a non-negative value, or -1.
int StreamPuts(void* stream, const char* text);
// As fread and fwrite: the number of whole items.
std::size_t StreamRead(void* stream, void* buffer, std::size_t size, std::size_t count);
std::size_t StreamWrite(void* stream, const void* buffer, std::size_t size, std::size_t count);
// Wide text as the stream takes it: in binary mode 16-bit little-endian
// units as they stand; in text mode the system code page. Gets a line of at
// most `count` - 1 units with its end (null when nothing was read); puts a
// terminated text and gives a non-negative value or -1.
unsigned short* StreamGetUnits(void* stream, unsigned short* buffer, int count);
int StreamPutUnits(void* stream, const unsigned short* text);

// ---- local time

struct CalendarTime {
  int year, month, day, hour, minute, second;  // month 1-12, day 1-31
};
// `seconds` since 1970 in the local time zone; false if it cannot be shown.
bool ToLocalTime(int64_t seconds, CalendarTime* out);

// ---- handles for asynchronous transfers

enum class HandleAccess { kRead, kWrite, kReadWrite };
enum class HandleDisposition { kCreateAlways, kOpenAlways, kOpenExisting };

// Opens `path` for asynchronous transfers at explicit offsets. `unbuffered`
// asks to bypass the system cache: the transfers must then be whole
// 2048-byte sectors at sector offsets, from addresses on a sector boundary.
// Where the file system cannot do that (no direct transfers, or a coarser
// alignment than the sector), the handle quietly goes through the cache.
// `sequential` says that the file is read from start to end: reads through
// the cache then have the system fetch the next piece of the same length
// while the caller works on this one. Gives the handle or -1.
intptr_t OpenHandle(const unsigned short* path, HandleAccess access, HandleDisposition disposition,
                    bool unbuffered, bool sequential = false);
// True when the handle bypasses the system cache.
bool HandleIsUnbuffered(intptr_t handle);
// True when the handle may write.
bool HandleIsWritable(intptr_t handle);
// Ends every transfer on the handle (see CancelTransfers); true.
bool CancelHandleTransfers(intptr_t handle);
// Writes the file's data through to the disk; needs write access. True on success.
bool FlushHandle(intptr_t handle);
// True on success; the handle is gone either way.
bool CloseHandle(intptr_t handle);
// The size of the file, or -1.
int64_t GetHandleSize(intptr_t handle);
// Makes the file `size` bytes long; true on success.
bool SetHandleSize(intptr_t handle, int64_t size);
// The descriptor under a handle.
inline int HandleDescriptor(intptr_t handle) { return static_cast<int>(handle); }
// Starts a transfer on the handle, as StartTransfer (AsyncIO.h) does. A
// transfer that an unbuffered handle cannot take as it stands (an address,
// offset or length off the file system's direct-transfer alignment) turns
// the handle to buffered transfers for good, so that it still works.
uint32_t StartHandleTransfer(intptr_t handle, bool write, void* buffer, uint32_t count, OVERLAPPED* overlapped,
                             CompletionRoutine routine);

}  // namespace vbu::platform
