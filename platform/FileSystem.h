// FileSystem.h: questions about paths: whether one exists, what it holds,
// what kind of volume holds it and how much room is left there; and its
// removal. Internal; never installed.
//
//   vbu::platform::FileStatus status;
//   if (vbu::platform::StatPath(path, &status) == 0) size = status.st_size;
//   if (vbu::platform::GetDriveKind(path) == vbu::platform::DriveKind::kOptical) ...
#pragma once

#include <cstdint>

namespace vbu::platform {

// What the system knows of a file; times in seconds since 1970.
struct FileStatus {
  uint64_t st_dev;
  uint64_t st_ino;
  uint32_t st_mode;
  uint32_t st_nlink;
  uint32_t st_uid;
  uint32_t st_gid;
  uint64_t st_rdev;
  int64_t st_size;
  int64_t st_atime64;
  int64_t st_mtime64;
  int64_t st_ctime64;
};

// 0 with `out` filled, or -1 (the last error set).
int StatPath(const unsigned short* path, FileStatus* out);
int StatDescriptor(int fd, FileStatus* out);
// True when `path` names something that exists.
bool PathExists(const unsigned short* path);
// Removes the file `path`; true on success.
bool DeleteFile(const unsigned short* path);

// The volume that holds a path: none (the path does not exist), a read-only
// or optical medium (a read-only mount, or an ISO 9660 or UDF file system),
// or an ordinary writable one.
enum class DriveKind { kNoRoot, kOptical, kFixed };
DriveKind GetDriveKind(const unsigned short* path);
// The bytes free for the calling user on the volume of `path`; false if it cannot be asked.
bool GetFreeBytesAvailable(const unsigned short* path, uint64_t* bytes);

}  // namespace vbu::platform
