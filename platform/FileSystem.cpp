// Paths: the 16-bit path becomes the system's bytes here; the system file
// (linux/FileSystem.inc) asks the system.
#include "platform/internal/FileSystem.h"

#include "platform/internal/Errors.h"
#include "platform/internal/PathBytes.h"
#include "platform/internal/SysCalls.h"

#if defined(__linux__)
#include "linux/FileSystem.inc"
#elif defined(_WIN32)
#include "windows/FileSystem.inc"
#else
#error "The platform layer has no FileSystem files for this system yet."
#endif

namespace vbu::platform {

uint32_t StatPath(const unsigned short* path, struct _stati64* out) {
  PathBytes bytes(path);
  if (!bytes.Ok()) return bytes.Error();
  if (!out) return kErrorInvalidArgument;
  return os::StatPath(bytes.Get(), out);
}

uint32_t StatDescriptor(int fd, struct _stati64* out) {
  if (fd < 0) return kErrorBadDescriptor;
  if (!out) return kErrorInvalidArgument;
  return os::StatDescriptor(fd, out);
}

int64_t StatSeconds(const struct _stati64& info, int which) { return os::StatSeconds(info, which); }

bool PathExists(const unsigned short* path) {
  struct _stati64 ignored;
  return StatPath(path, &ignored) == 0;
}

uint32_t RemoveFile(const unsigned short* path) {
  PathBytes bytes(path);
  if (!bytes.Ok()) return bytes.Error();
  return os::RemoveFile(bytes.Get());
}

DriveKind GetDriveKind(const unsigned short* path) {
  PathBytes bytes(path);
  if (!bytes.Ok()) return DriveKind::kNoRoot;
  return os::DriveKindOf(bytes.Get());
}

uint32_t GetFreeBytesAvailable(const unsigned short* path, uint64_t* bytes) {
  PathBytes text(path);
  if (!text.Ok()) return text.Error();
  if (!bytes) return kErrorInvalidArgument;
  return os::FreeBytes(text.Get(), bytes);
}

}  // namespace vbu::platform
