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
    *name = PathText(entry, std::strlen(entry));
    return true;
  }
}

namespace {

// A name of an entry as the system's bytes.
std::string EntryBytes(const std::u16string& name) {
  PathBytes bytes(reinterpret_cast<const unsigned short*>(name.c_str()));
  return bytes.Ok() ? std::string(bytes.Get(), bytes.Size()) : std::string();
}

}  // namespace

OpenFolder::OpenFolder(const unsigned short* path) {
  PathBytes bytes(path);
  mError = bytes.Ok() ? os::OpenFolderAt(os::kCurrentFolder, bytes.Get(), true, &mFd) : bytes.Error();
}

OpenFolder::OpenFolder(const OpenFolder& parent, const std::u16string& name) {
  std::string bytes = EntryBytes(name);
  if (parent.mFd < 0) {
    mError = parent.mError != 0 ? parent.mError : kErrorInvalidArgument;
  } else if (bytes.empty() || bytes.find('/') != std::string::npos) {
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
  for (;;) {
    const char* entry = nullptr;
    error = os::ReadFolder(folder, &entry);
    if (error != 0 || !entry) break;
    if (std::strcmp(entry, ".") == 0 || std::strcmp(entry, "..") == 0) continue;
    names->push_back(PathText(entry, std::strlen(entry)));
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
