// Directory.h: names in folders: renames and hard links of files, the
// current folder, the removal of a folder, what a path is, and the entries
// of a folder. Calls that can fail give their error code (0: success) and
// set no last error. Internal; never installed.
//
//   vbu::platform::FolderEntries entries(folder);
//   std::u16string name;
//   while (entries.Next(&name)) { ... }   // "." and ".." are passed over
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vbu::platform {

// Gives `from` the name `to`, replacing a file of that name in one step.
uint32_t RenamePath(const unsigned short* from, const unsigned short* to);
// Makes `name` a second name of the file `existing`; `name` must not exist.
uint32_t LinkPath(const unsigned short* existing, const unsigned short* name);
// Makes `path` the process's current folder.
uint32_t ChangeDirectory(const unsigned short* path);
// Removes the empty folder `path`.
uint32_t RemoveFolder(const unsigned short* path);

// What a path names. Links are followed for `folder`, `device` and `node`
// (a link that leads nowhere is taken as it stands); `link` says that the
// name itself is a symbolic link.
struct PathKind {
  bool folder = false;
  bool link = false;
  uint64_t device = 0;
  uint64_t node = 0;
};
uint32_t InspectPath(const unsigned short* path, PathKind* out);
// True when `code` says that there is no such file or folder.
bool IsNotFound(uint32_t code);

// The entries of a folder in the system's order, "." and ".." passed over.
class FolderEntries {
 public:
  explicit FolderEntries(const unsigned short* path);
  ~FolderEntries();
  FolderEntries(const FolderEntries&) = delete;
  FolderEntries& operator=(const FolderEntries&) = delete;
  // 0 while all went well, else the error code of the open or of the last read.
  uint32_t Error() const { return mError; }
  // The next entry's name; false at the end or after a failure.
  bool Next(std::u16string* name);

 private:
  void* mFolder = nullptr;
  uint32_t mError = 0;
};

// A folder held open by descriptor. Its entries are named relative to it,
// so a walk from folder to subfolder works at any depth, whatever the
// length of the path, and a name replaced behind the walk's back is not
// followed out of the tree.
class OpenFolder {
 public:
  // Opens the folder `path`; a link to a folder is followed.
  explicit OpenFolder(const unsigned short* path);
  // Opens the subfolder `name` of `parent`; a link is not followed.
  OpenFolder(const OpenFolder& parent, const std::u16string& name);
  ~OpenFolder();
  OpenFolder(const OpenFolder&) = delete;
  OpenFolder& operator=(const OpenFolder&) = delete;
  // 0 when open, else the open's error code.
  uint32_t Error() const { return mError; }
  // The device and node of the folder itself.
  uint32_t Inspect(PathKind* out) const;
  // Every entry's name, "." and ".." passed over; 0 or the error code.
  uint32_t Names(std::vector<std::u16string>* names) const;
  // What the entry `name` is; a link is not followed.
  uint32_t Inspect(const std::u16string& name, PathKind* out) const;
  // Removes the entry `name`: a file or link, or an empty folder.
  uint32_t RemoveFile(const std::u16string& name) const;
  uint32_t RemoveFolder(const std::u16string& name) const;

 private:
  int mFd = -1;
  uint32_t mError = 0;
};

}  // namespace vbu::platform
