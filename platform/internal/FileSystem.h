// FileSystem.h: questions about paths: whether one exists, what it holds,
// what kind of volume holds it and how much room is left there; and the
// removal of a file. Internal; never installed. Calls that can fail give
// their error code (0: success) and set no last error.
//
//   struct _stati64 status;
//   if (vbu::platform::StatPath(path, &status) == 0) size = status.st_size;
//   if (vbu::platform::GetDriveKind(path) == vbu::platform::DriveKind::kOptical) ...
#pragma once

#include <cstdint>

#include "platform/FileInfo.h"

namespace vbu::platform {

// Fills `out` with what the system knows of `path` or of descriptor `fd`.
uint32_t StatPath(const unsigned short* path, struct _stati64* out);
uint32_t StatDescriptor(int fd, struct _stati64* out);
// A time of the record in seconds since 1970: 0 the status change (the
// making, where the system keeps that instead), 1 the last write, 2 the last read.
int64_t StatSeconds(const struct _stati64& info, int which);
// True when `path` names something that exists.
bool PathExists(const unsigned short* path);
// Removes the file `path` (never a folder).
uint32_t RemoveFile(const unsigned short* path);

// The volume that holds a path: none (the path does not exist), a read-only
// or optical medium (a read-only mount, or an ISO 9660 or UDF file system),
// or an ordinary writable one.
enum class DriveKind { kNoRoot, kOptical, kFixed };
DriveKind GetDriveKind(const unsigned short* path);
// The bytes free for the calling user on the volume of `path`.
uint32_t GetFreeBytesAvailable(const unsigned short* path, uint64_t* bytes);

}  // namespace vbu::platform
