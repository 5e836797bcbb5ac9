// FileInfo.h: the library's file information record, as the file classes
// give it (MFile::FStat).
//
//   MFileUniv file;
//   file.FOpen(u"/media/title.vob"_u16, MFile::file_read_binary);
//   struct _stati64 info;
//   long long bytes = file.FStat(&info) == 0 ? info.st_size : -1;
#pragma once

#include <cstdint>

#if defined(_WIN32)
// The C library's own record there.
#include <sys/types.h>
#include <sys/stat.h>
#else
// Times are seconds since 1970. (They are not named st_atime and so on: the
// C library makes those names macros.)
struct _stati64 {
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
#endif
