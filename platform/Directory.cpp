// Folders: the 16-bit paths become the system's bytes here, and names read
// from a folder become 16-bit text; the system file (linux/Directory.inc)
// makes the calls.
#include "platform/internal/Directory.h"

#include <cstring>

#include "platform/internal/CodePage.h"
#include "platform/internal/Errors.h"
#include "platform/internal/PathBytes.h"
#include "platform/internal/SysCalls.h"

#if defined(__linux__)
#include "linux/Directory.inc"
#else
#error "The platform layer has no folder calls for this system yet."
#endif

namespace vbu::platform {

uint32_t RenamePath(const unsigned short* from, const unsigned short* to) {
  PathBytes source(from), target(to);
  if (!source.Ok()) return source.Error();
  if (!target.Ok()) return target.Error();
  return os::Rename(source.Get(), target.Get());
}

uint32_t LinkPath(const unsigned short* existing, const unsigned short* name) {
  PathBytes source(existing), target(name);
  if (!source.Ok()) return source.Error();
  if (!target.Ok()) return target.Error();
  return os::Link(source.Get(), target.Get());
}

uint32_t ChangeDirectory(const unsigned short* path) {
  PathBytes bytes(path);
  if (!bytes.Ok()) return bytes.Error();
  return os::ChangeDirectory(bytes.Get());
}

uint32_t RemoveFolder(const unsigned short* path) {
  PathBytes bytes(path);
  if (!bytes.Ok()) return bytes.Error();
  return os::RemoveFolder(bytes.Get());
}

uint32_t InspectPath(const unsigned short* path, PathKind* out) {
  PathBytes bytes(path);
  if (!bytes.Ok()) return bytes.Error();
  if (!out) return kErrorInvalidArgument;
  return os::InspectPath(bytes.Get(), out);
}

bool IsNotFound(uint32_t code) { return code == kErrorNoFile || code == os::kErrorNotFolder; }

FolderEntries::FolderEntries(const unsigned short* path) {
  PathBytes bytes(path);
  mError = bytes.Ok() ? os::OpenFolder(bytes.Get(), &mFolder) : bytes.Error();
}

FolderEntries::~FolderEntries() {
  if (mFolder) os::CloseFolder(mFolder);
}

bool FolderEntries::Next(std::u16string* name) {
  if (!mFolder || !name) return false;
  for (;;) {
    const char* entry = nullptr;
    mError = os::ReadFolder(mFolder, &entry);
    if (mError != 0 || !entry) return false;
    if (std::strcmp(entry, ".") == 0 || std::strcmp(entry, "..") == 0) continue;
    std::size_t count = std::strlen(entry);
    name->resize(count);
    long units = BytesToUnits(entry, count, reinterpret_cast<unsigned short*>(name->data()), count, CodePage::kSystem);
    if (units < 0) continue;  // a name the code page cannot show is passed over
    name->resize(static_cast<std::size_t>(units));
    return true;
  }
}

}  // namespace vbu::platform
