// Paths: the 16-bit path becomes the system's bytes here; the system file
// (linux/FileSystem.inc) asks the system.
#include "platform/internal/FileSystem.h"

#include "platform/internal/Errors.h"
#include "platform/internal/PathBytes.h"
#include "platform/internal/SysCalls.h"

#if defined(__linux__)
#include "linux/FileSystem.inc"
#else
#error "The platform layer has no file system queries for this system yet."
#endif

namespace vbu::platform {

uint32_t StatPath(const unsigned short* path, _stati64* out) {
  PathBytes bytes(path);
  if (!bytes.Ok()) return kErrorNoFile;
  if (!out) return kErrorInvalidArgument;
  return os::StatPath(bytes.Get(), out);
}

uint32_t StatDescriptor(int fd, _stati64* out) {
  if (fd < 0) return kErrorBadDescriptor;
  if (!out) return kErrorInvalidArgument;
  return os::StatDescriptor(fd, out);
}

bool PathExists(const unsigned short* path) {
  _stati64 ignored;
  return StatPath(path, &ignored) == 0;
}

uint32_t RemoveFile(const unsigned short* path) {
  PathBytes bytes(path);
  if (!bytes.Ok()) return kErrorNoFile;
  return os::RemoveFile(bytes.Get());
}

DriveKind GetDriveKind(const unsigned short* path) {
  PathBytes bytes(path);
  if (!bytes.Ok()) return DriveKind::kNoRoot;
  return os::DriveKindOf(bytes.Get());
}

uint32_t GetFreeBytesAvailable(const unsigned short* path, uint64_t* bytes) {
  PathBytes text(path);
  if (!text.Ok()) return kErrorNoFile;
  if (!bytes) return kErrorInvalidArgument;
  return os::FreeBytes(text.Get(), bytes);
}

}  // namespace vbu::platform
