// Directory.h: names in folders: renames and hard links of files, the
// current folder, the removal of a folder, what a path is, and the entries
// of a folder. Each call gives 0 or the system's error code (errno style)
// and leaves the thread's last error alone. Internal; never installed.
//
//   vbu::platform::FolderEntries entries(folder);
//   std::u16string name;
//   while (entries.Next(&name)) { ... }   // "." and ".." are passed over
#pragma once

#include <cstdint>
#include <string>

namespace vbu::platform {

// Gives `from` the name `to`, replacing a file of that name in one step.
int RenamePath(const unsigned short* from, const unsigned short* to);
// Makes `name` a second name of the file `existing`; `name` must not exist.
int LinkPath(const unsigned short* existing, const unsigned short* name);
// Makes `path` the process's current folder.
int ChangeDirectory(const unsigned short* path);
// The process's current folder.
int CurrentDirectory(std::u16string* out);
// Removes the empty folder `path`.
int RemoveFolder(const unsigned short* path);

// What a path names. Links are followed for `folder`, `device` and `node`;
// `link` says that the name itself is a symbolic link.
struct PathKind {
  bool folder = false;
  bool link = false;
  uint64_t device = 0;
  uint64_t node = 0;
};
int InspectPath(const unsigned short* path, PathKind* out);
// True when `code` says that there is no such file or folder.
bool IsNotFound(int code);

// The entries of a folder in the system's order, "." and ".." passed over.
class FolderEntries {
 public:
  explicit FolderEntries(const unsigned short* path);
  ~FolderEntries();
  FolderEntries(const FolderEntries&) = delete;
  FolderEntries& operator=(const FolderEntries&) = delete;
  // 0 when the folder could be opened, else its error code.
  int Error() const { return mError; }
  // The next entry's name; false at the end (or after a failure).
  bool Next(std::u16string* name);

 private:
  void* mFolder = nullptr;
  int mError = 0;
};

}  // namespace vbu::platform
