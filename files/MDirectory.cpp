// Folders: MDirectory, DeleteDirectory and UFileUtils.
#include "files/MDirectory.h"

#include <algorithm>
#include <memory>
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

// What a walk does at each entry; each gives false to stop the walk.
class TreeVisitor {
 public:
  virtual ~TreeVisitor() = default;
  // A file, a link or anything else that is no folder, in `folder`.
  virtual bool File(const vp::OpenFolder& folder, const std::u16string& name, const MString& shown) = 0;
  // A subfolder that cannot be opened or read: it is not entered.
  virtual bool Unreadable(const vp::OpenFolder& folder, const std::u16string& name, const MString& shown) = 0;
  // A subfolder of `folder` whose entries have all been visited.
  virtual bool Left(const vp::OpenFolder& folder, const std::u16string& name, const MString& shown) = 0;
};

// Walks the tree under the folder `path` (shown as `shown`, which ends in a
// separator) depth first, names in order, with one folder open at a time:
// a subfolder is entered by descriptor, never through a link, and left
// through "..", which must be the folder the walk came down from. So
// neither depth nor path length is a limit, and a tree moved behind the
// walk's back is not followed out. 1 when walked to the end, 0 when the
// visitor stopped it or the way back up was lost, -1 when `path` cannot be read.
int WalkTree(const unsigned short* path, const MString& shown, TreeVisitor& visitor) {
  struct Level {
    std::vector<std::u16string> names;
    std::size_t next = 0;
    vp::PathKind id;
    std::u16string name;  // in the folder above
    MString shown;
  };
  auto current = std::make_unique<vp::OpenFolder>(path);
  std::vector<Level> levels(1);
  levels[0].shown = shown;
  if (current->Error() != 0 || current->Inspect(&levels[0].id) != 0 || !SortedNames(*current, &levels[0].names)) {
    return -1;
  }
  for (;;) {
    Level& level = levels.back();
    if (level.next == level.names.size()) {
      Level done = std::move(level);
      levels.pop_back();
      if (levels.empty()) return 1;
      auto parent = std::make_unique<vp::OpenFolder>(*current, u"..");
      vp::PathKind id;
      if (parent->Error() != 0 || parent->Inspect(&id) != 0 || id.device != levels.back().id.device ||
          id.node != levels.back().id.node) {
        return 0;
      }
      current = std::move(parent);
      if (!visitor.Left(*current, done.name, levels.back().shown + FromUnits(done.name))) return 0;
      continue;
    }
    const std::u16string name = level.names[level.next++];
    MString entry = level.shown + FromUnits(name);
    vp::PathKind kind;
    if (current->Inspect(name, &kind) != 0 || !kind.folder || kind.link) {
      if (!visitor.File(*current, name, entry)) return 0;
      continue;
    }
    auto child = std::make_unique<vp::OpenFolder>(*current, name);
    Level below;
    below.name = name;
    below.shown = entry + MString(u"/"_u16);
    if (child->Error() != 0 || child->Inspect(&below.id) != 0 || !SortedNames(*child, &below.names)) {
      if (!visitor.Unreadable(*current, name, entry)) return 0;
      continue;
    }
    current = std::move(child);
    levels.push_back(std::move(below));
  }
}

// Removes everything, stopping at the first entry that stays, with its message.
class RemoveAll : public TreeVisitor {
 public:
  bool File(const vp::OpenFolder& folder, const std::u16string& name, const MString& shown) override {
    if (folder.RemoveFile(name) == 0) return true;
    ReportFile(shown);
    return !(reported = true);
  }
  // A folder that cannot be read shows when it cannot be removed.
  bool Unreadable(const vp::OpenFolder& folder, const std::u16string& name, const MString& shown) override {
    return Left(folder, name, shown);
  }
  bool Left(const vp::OpenFolder& folder, const std::u16string& name, const MString& shown) override {
    if (folder.RemoveFolder(name) == 0) return true;
    ReportFolder(shown);
    return !(reported = true);
  }
  bool reported = false;
};

// Tells the user that `path` stays; false.
bool Warn(const MString& path) {
  MString text;
  text.Format(u"Failed to delete file %s. The file might be used."_u16, static_cast<const unsigned short*>(path));
  CMessageAction::Warning(nullptr, text);
  return false;
}

// Removes the files, going on past failures, each reported; folders stay.
class RemoveFiles : public TreeVisitor {
 public:
  bool File(const vp::OpenFolder& folder, const std::u16string& name, const MString& shown) override {
    if (folder.RemoveFile(name) != 0) all = Warn(shown);
    return true;
  }
  bool Unreadable(const vp::OpenFolder&, const std::u16string&, const MString& shown) override {
    all = Warn(shown);
    return true;
  }
  bool Left(const vp::OpenFolder&, const std::u16string&, const MString&) override { return true; }
  bool all = true;
};

// The path as shown with a separator behind it.
MString Shown(const MString& bare) { return bare == MString(u"/"_u16) ? bare : bare + MString(u"/"_u16); }

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
  RemoveAll removal;
  if (WalkTree(bare, Shown(bare), removal) == 0) {
    if (!removal.reported) ReportFolder(bare);
    return -1;
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
  RemoveFiles removal;
  int walked = WalkTree(bare, Shown(bare), removal);
  if (walked <= 0) return Warn(bare);
  return removal.all;
}

bool UFileUtils::DeleteDir(unsigned short* path) { return DeleteDir(static_cast<const unsigned short*>(path)); }

bool UFileUtils::DeleteDir(const unsigned short* path) {
  if (!DeleteAllFilesUnderDir(path)) return false;
  return path && vp::RemoveFolder(path) == 0;
}
