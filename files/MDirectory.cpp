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

int DeleteDirectory(const unsigned short* path) {
  if (!path) return -1;
  MString folder = AddDirectorySeparator(path, true, 1);
  std::vector<std::u16string> names;
  {
    vp::FolderEntries entries(folder);
    // A folder that is not there leaves nothing to do.
    if (entries.Error() != 0 && vp::IsNotFound(entries.Error())) return 0;
    std::u16string name;
    while (entries.Next(&name)) names.push_back(name);
  }
  for (const std::u16string& name : names) {
    MString entry = folder + FromUnits(name);
    vp::PathKind kind;
    bool isFolder = vp::InspectPath(entry, &kind) == 0 && kind.folder && !kind.link;
    if (isFolder) {
      int result = DeleteDirectory(entry + MString(u"/"_u16));
      if (result != 0) return result;
    } else if (vp::RemoveFile(entry) != 0) {
      MString text;
      text.Format(u"%s could not be deleted"_u16, static_cast<const unsigned short*>(entry));
      CMessageAction::Error(nullptr, text);
      return -1;
    }
  }
  if (folder.GetLength() == 0) return 0;
  MString bare = folder;
  bare.Cut(0, bare.GetLength() - 1);
  if (vp::RemoveFolder(bare) != 0) {
    MString text;
    text.Format(u"Directory %s could not be deleted"_u16, static_cast<const unsigned short*>(bare));
    CMessageAction::Error(nullptr, text);
    CMessageAction::Inform(nullptr, u"Check if it is open in an Explorer window"_u16);
    return -1;
  }
  return 0;
}

bool UFileUtils::DeleteAllFilesUnderDir(unsigned short* path) {
  // A link to a folder goes as the link: nothing outside the tree is removed.
  CFileQuery files(path, false);
  bool all = true;
  for (unsigned long i = 1; i <= files.GetCount(); ++i) {
    MString* file = nullptr;
    files.FetchItemAt(static_cast<long>(i), &file);
    if (vp::RemoveFile(*file) == 0) continue;
    MString text;
    text.Format(u"Failed to delete file %s. The file might be used."_u16, static_cast<const unsigned short*>(*file));
    CMessageAction::Warning(nullptr, text);
    all = false;
  }
  return all;
}

bool UFileUtils::DeleteDir(unsigned short* path) {
  if (!DeleteAllFilesUnderDir(path)) return false;
  return path && vp::RemoveFolder(path) == 0;
}
