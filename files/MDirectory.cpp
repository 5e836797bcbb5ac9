// Folders: MDirectory, DeleteDirectory and UFileUtils.
#include "files/MDirectory.h"

#include <algorithm>
#include <string>
#include <vector>

#include "files/CFileQuery.h"
#include "files/MFileSpec.h"
#include "files/PathTails.h"
#include "files/UFileUtils.h"
#include "messaging/CMessageAction.h"
#include "platform/internal/FileSystem.h"
#include "platform/MessageBox.h"
#include "platform/internal/WideText.h"
#include "platform/internal/Directory.h"
#include "text/PathText.h"

using namespace vbu::literals;
namespace vp = vbu::platform;

namespace {

MString FromUnits(const std::u16string& text) {
  return MString(reinterpret_cast<const unsigned short*>(text.c_str()));
}

}  // namespace

MDirectory::MDirectory() = default;

MDirectory::MDirectory(const unsigned short* path) { SetPath(path); }

MDirectory::MDirectory(const MDirectory& other) : mPath(other.mPath) {}

MDirectory& MDirectory::operator=(const MDirectory& other) {
  mPath = other.mPath;
  return *this;
}

MDirectory::~MDirectory() = default;

void MDirectory::SetPath(const unsigned short* path) { mPath = path ? path : u""_u16; }

void MDirectory::SetPath(MString& path) { mPath = path; }

bool MDirectory::ExistsOnDisk() { return ExistsOnDisk(mPath); }

bool MDirectory::CreateNew() { return false; }

void MDirectory::GetDirectoryList(LList*) {}

void MDirectory::GetFileList(LList*) {}

bool MDirectory::ExistsOnDisk(const unsigned short* path) { return path && vp::ChangeDirectory(path) == 0; }

bool MDirectory::CheckDirectory(const unsigned short* path) {
  // The folder's own volume: asked as a file path, a folder without a
  // trailing separator would be judged by the folder above it.
  MString folder = AddDirectorySeparator(path, true, 1);
  if (path && path[0] == kPathSeparator && folder.GetLength() == 0) folder = MString(u"/"_u16);
  if (!MFileSpecWin::IsFileOnReadOnlyDrive(folder)) return true;
  MString text;
  text.Format(u"Folder( %s ) is a read-only drive. please use other drive."_u16, path ? path : u""_u16);
  vbu::ShowMessageBox(text);
  return false;
}

void MDirectory::DeleteOneFolder(MString& path) {
  const unsigned short* last = vbu::wtext::FindLast(path, kPathSeparator);
  if (!last) return;
  path.Cut(0, static_cast<int>(last - static_cast<const unsigned short*>(path)));
}

void MDirectory::GetFileName(MString& path) {
  const unsigned short* last = vbu::wtext::FindLast(path, kPathSeparator);
  if (!last) return;
  path = MString(last + 1);
}

long MDirectory::GetDiskFreeSpaceW() {
  // A relative path, like the empty one, counts from the current folder.
  MString folder = mPath.GetLength() != 0 ? mPath : MString(u"."_u16);
  for (;;) {
    uint64_t bytes = 0;
    if (vp::GetFreeBytesAvailable(folder, &bytes) == 0) return static_cast<long>(bytes / 1024);
    // Not there (yet): the folder above it, up to the root or the current folder.
    MString above = DeleteTailDirectorySeparator(folder);
    if (!vbu::wtext::Find(above, kPathSeparator)) {
      above = MString(u"."_u16);
    } else {
      DeleteOneFolder(above);
      if (above.GetLength() == 0) above = MString(u"/"_u16);
    }
    if (above == folder) return -1;
    folder = above;
  }
}

namespace {

void ReportFile(const MString& path) {
  MString text;
  text.Format(u"%s could not be deleted"_u16, static_cast<const unsigned short*>(path));
  CMessageAction::Error(nullptr, text);
}

void ReportFolder(const MString& path) {
  MString text;
  text.Format(u"Directory %s could not be deleted"_u16, static_cast<const unsigned short*>(path));
  CMessageAction::Error(nullptr, text);
  CMessageAction::Inform(nullptr, u"Check if it is open in an Explorer window"_u16);
}

// The names in `folder`, in order so that a walk goes the same way each
// time; false when they cannot be read.
bool SortedNames(const vp::OpenFolder& folder, std::vector<std::u16string>* names) {
  if (folder.Names(names) != 0) return false;
  std::sort(names->begin(), names->end());
  return true;
}

// The path without its trailing separators (the root keeps its one).
MString WithoutTail(const unsigned short* path) {
  MString bare(path);
  while (bare.GetLength() > 1 && bare[bare.GetLength() - 1] == kPathSeparator) bare.Cut(0, bare.GetLength() - 1);
  return bare;
}

// Empties the open `folder` (shown to the user as `shown`, which ends in a
// separator), depth first, from descriptors: no path grows with the depth,
// and a link is removed as a link. Stops at the first entry that stays: -1.
int RemoveContents(const vp::OpenFolder& folder, const MString& shown) {
  std::vector<std::u16string> names;
  // A folder that cannot be read shows when it cannot be removed.
  if (!SortedNames(folder, &names)) return 0;
  for (const std::u16string& name : names) {
    MString entry = shown + FromUnits(name);
    vp::PathKind kind;
    if (folder.Inspect(name, &kind) == 0 && kind.folder && !kind.link) {
      {
        vp::OpenFolder child(folder, name);
        if (child.Error() == 0 && RemoveContents(child, entry + MString(u"/"_u16)) != 0) return -1;
      }
      if (folder.RemoveFolder(name) != 0) {
        ReportFolder(entry);
        return -1;
      }
    } else if (folder.RemoveFile(name) != 0) {
      ReportFile(entry);
      return -1;
    }
  }
  return 0;
}

// Tells the user that `path` stays; false.
bool Warn(const MString& path) {
  MString text;
  text.Format(u"Failed to delete file %s. The file might be used."_u16, static_cast<const unsigned short*>(path));
  CMessageAction::Warning(nullptr, text);
  return false;
}

// Removes every file under the open `folder`, going on past failures, each
// reported; links are removed, never followed. False when anything stays.
bool RemoveFilesUnder(const vp::OpenFolder& folder, const MString& shown) {
  std::vector<std::u16string> names;
  if (!SortedNames(folder, &names)) return Warn(shown);
  bool all = true;
  for (const std::u16string& name : names) {
    MString entry = shown + FromUnits(name);
    vp::PathKind kind;
    if (folder.Inspect(name, &kind) == 0 && kind.folder && !kind.link) {
      vp::OpenFolder child(folder, name);
      if (child.Error() != 0) {
        all = Warn(entry);
      } else if (!RemoveFilesUnder(child, entry + MString(u"/"_u16))) {
        all = false;
      }
    } else if (folder.RemoveFile(name) != 0) {
      all = Warn(entry);
    }
  }
  return all;
}

}  // namespace

int DeleteDirectory(const unsigned short* path) {
  if (!path) return -1;
  MString bare = WithoutTail(path);
  vp::PathKind kind;
  uint32_t error = vp::InspectPath(bare, &kind);
  // A folder that is not there leaves nothing to do.
  if (error != 0 && vp::IsNotFound(error)) return 0;
  if (error != 0) {
    ReportFolder(bare);
    return -1;
  }
  // A link given as the tree goes as a link: nothing it leads to is touched.
  if (kind.link) {
    if (vp::RemoveFile(bare) == 0) return 0;
    ReportFile(bare);
    return -1;
  }
  if (!kind.folder) return 0;
  {
    vp::OpenFolder folder(bare);
    MString shown = bare == MString(u"/"_u16) ? bare : bare + MString(u"/"_u16);
    if (folder.Error() == 0 && RemoveContents(folder, shown) != 0) return -1;
  }
  if (vp::RemoveFolder(bare) != 0) {
    ReportFolder(bare);
    return -1;
  }
  return 0;
}

bool UFileUtils::DeleteAllFilesUnderDir(unsigned short* path) {
  return DeleteAllFilesUnderDir(static_cast<const unsigned short*>(path));
}

bool UFileUtils::DeleteAllFilesUnderDir(const unsigned short* path) {
  if (!path || !path[0]) return true;
  MString bare = WithoutTail(path);
  vp::PathKind kind;
  uint32_t error = vp::InspectPath(bare, &kind);
  if (error != 0) return vp::IsNotFound(error);
  // The folder named is entered even through a link; the links inside are
  // removed, never followed. A file named is the one file.
  if (!kind.folder) return vp::RemoveFile(bare) == 0 || Warn(bare);
  vp::OpenFolder folder(bare);
  MString shown = bare == MString(u"/"_u16) ? bare : bare + MString(u"/"_u16);
  return RemoveFilesUnder(folder, shown);
}

bool UFileUtils::DeleteDir(unsigned short* path) { return DeleteDir(static_cast<const unsigned short*>(path)); }

bool UFileUtils::DeleteDir(const unsigned short* path) {
  if (!DeleteAllFilesUnderDir(path)) return false;
  return path && vp::RemoveFolder(path) == 0;
}
