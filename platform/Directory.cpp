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
#elif defined(_WIN32)
#include "windows/Directory.inc"
#else
#error "The platform layer has no Directory files for this system yet."
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

namespace {

// The next entry of an open listing but "." and "..": 0 with `*name`, or
// the error; 0 with `*found` false at the end.
uint32_t NextName(void* folder, std::u16string* name, bool* found) {
  *found = false;
  for (;;) {
    const char* entry = nullptr;
    if (uint32_t error = os::ReadFolder(folder, &entry)) return error;
    if (!entry) return 0;
    if (std::strcmp(entry, ".") == 0 || std::strcmp(entry, "..") == 0) continue;
    *name = PathText(entry, std::strlen(entry));
    *found = true;
    return 0;
  }
}

// A name of an entry of one folder as the system's bytes; empty for a name
// that is none (empty, unconvertible, or reaching past the folder with "/").
std::string EntryBytes(const std::u16string& name) {
  PathBytes bytes(reinterpret_cast<const unsigned short*>(name.c_str()));
  if (!bytes.Ok()) return std::string();
  std::string result(bytes.Get(), bytes.Size());
  return result.find('/') == std::string::npos ? result : std::string();
}

}  // namespace

bool FolderEntries::Next(std::u16string* name) {
  if (!mFolder || !name) return false;
  bool found = false;
  mError = NextName(mFolder, name, &found);
  return found;
}

OpenFolder::OpenFolder(const unsigned short* path) {
  PathBytes bytes(path);
  mError = bytes.Ok() ? os::OpenFolderAt(os::kCurrentFolder, bytes.Get(), true, &mFd) : bytes.Error();
}

OpenFolder::OpenFolder(const OpenFolder& parent, const std::u16string& name) {
  std::string bytes = EntryBytes(name);
  if (parent.mFd < 0) {
    mError = parent.mError != 0 ? parent.mError : kErrorInvalidArgument;
  } else if (bytes.empty()) {
    mError = kErrorInvalidArgument;
  } else {
    mError = os::OpenFolderAt(parent.mFd, bytes.c_str(), false, &mFd);
  }
}

OpenFolder::~OpenFolder() {
  if (mFd >= 0) os::CloseFolderDescriptor(mFd);
}

uint32_t OpenFolder::Inspect(PathKind* out) const {
  if (mFd < 0) return mError;
  return out ? os::InspectAt(mFd, "", out) : kErrorInvalidArgument;
}

uint32_t OpenFolder::Names(std::vector<std::u16string>* names) const {
  if (mFd < 0) return mError;
  void* folder = nullptr;
  if (uint32_t error = os::ListFolder(mFd, &folder)) return error;
  uint32_t error = 0;
  std::u16string name;
  for (bool found = true; error == 0 && found;) {
    error = NextName(folder, &name, &found);
    if (found) names->push_back(name);
  }
  os::CloseFolder(folder);
  return error;
}

uint32_t OpenFolder::Inspect(const std::u16string& name, PathKind* out) const {
  if (mFd < 0) return mError;
  std::string bytes = EntryBytes(name);
  if (bytes.empty() || !out) return kErrorInvalidArgument;
  return os::InspectAt(mFd, bytes.c_str(), out);
}

uint32_t OpenFolder::RemoveFile(const std::u16string& name) const {
  if (mFd < 0) return mError;
  std::string bytes = EntryBytes(name);
  return bytes.empty() ? kErrorInvalidArgument : os::RemoveAt(mFd, bytes.c_str(), false);
}

uint32_t OpenFolder::RemoveFolder(const std::u16string& name) const {
  if (mFd < 0) return mError;
  std::string bytes = EntryBytes(name);
  return bytes.empty() ? kErrorInvalidArgument : os::RemoveAt(mFd, bytes.c_str(), true);
}

}  // namespace vbu::platform
