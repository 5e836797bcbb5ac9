#include "files/MFileSpec.h"

#include "files/PathTails.h"
#include "messaging/CMessageAction.h"
#include "platform/internal/FileSystem.h"
#include "platform/internal/WideText.h"
#include "text/PathText.h"

using namespace vbu::literals;
namespace vp = vbu::platform;

MFileSpec::~MFileSpec() = default;

MFileSpecWin::MFileSpecWin() = default;

MFileSpecWin::MFileSpecWin(MString& path) : mPath(path) {}

MFileSpecWin::MFileSpecWin(const unsigned short* path) { SetFilePathName(path); }

MFileSpecWin::MFileSpecWin(const MFileSpecWin& other) : MFileSpec(other), mPath(other.mPath) {}

MFileSpecWin& MFileSpecWin::operator=(const MFileSpecWin& other) {
  mPath = other.mPath;
  return *this;
}

MFileSpecWin::~MFileSpecWin() = default;

void MFileSpecWin::GetFilePathName(unsigned short* dst) {
  if (!dst) return;
  const unsigned short* path = mPath;
  int length = mPath.GetLength();
  for (int i = 0; i <= length; ++i) dst[i] = path[i];
}

bool MFileSpecWin::FileExist() { return vp::PathExists(mPath); }

bool MFileSpecWin::Delete() { return vp::RemoveFile(mPath) == 0; }

bool MFileSpecWin::IsNull() { return mPath.GetLength() == 0; }

void MFileSpecWin::SetFilePathName(const unsigned short* path) { mPath = path ? path : u""_u16; }

MString& MFileSpecWin::GetFilePath() { return mPath; }

void MFileSpecWin::SetFilePath(const unsigned short* path) { SetFilePathName(path); }

void MFileSpecWin::SetFilePath(MString& path) { mPath = path; }

bool MFileSpecWin::operator==(const MFileSpecWin& other) const { return mPath == other.mPath; }

bool MFileSpecWin::operator!=(const MFileSpecWin& other) const { return !(*this == other); }

bool MFileSpecWin::IsOnReadOnlyDrive() { return IsFileOnReadOnlyDrive(mPath); }

MString MFileSpecWin::GetDirectory(unsigned short* path) {
  return GetDirectory(static_cast<const unsigned short*>(path));
}

MString MFileSpecWin::GetDirectory(const unsigned short* path) {
  if (!path) return MString();
  const unsigned short* last = vbu::wtext::FindLast(path, kPathSeparator);
  if (!last) return MString(path);
  return MString(static_cast<const unsigned short*>(path), static_cast<int>(last - path) + 1);
}

bool MFileSpecWin::IsDriveReadOnly(const unsigned short* root, bool skipDriveType) {
  MString query = AddDirectorySeparator(root, true, 1);
  if (!skipDriveType && vp::GetDriveKind(query) != vp::DriveKind::kFixed) return true;
  uint64_t free = 0;
  // A volume that cannot be asked, or a full one, cannot be written.
  return vp::GetFreeBytesAvailable(query, &free) != 0 || free == 0;
}

bool MFileSpecWin::IsFileOnReadOnlyDrive(const unsigned short* path) {
  // No path names no place to write.
  if (!path || path[0] == 0) return true;
  MString drive, directory, name, extension;
  SplitPath(path, drive, directory, name, extension);
  if (drive.GetLength() != 0) return IsDriveReadOnly(drive, false);
  // The folder that holds the file, separator included; a bare name lies
  // in the current folder (asked as it stands it would be no folder at all).
  const unsigned short* folder = directory.GetLength() != 0 ? static_cast<const unsigned short*>(directory) : u"."_u16;
  return IsDriveReadOnly(folder, true);
}

bool MFileSpecWin::CreateUniqueFileSpec(MFileSpecWin& source, const unsigned short* extension,
                                        MFileSpecWin* result) {
  // Nowhere to put the name, or nothing to name it after: no search, no message.
  if (!result || source.IsNull()) return false;
  if (IsFileOnReadOnlyDrive(source.GetFilePath())) {
    MString text;
    text.Format(u"%s is on a read-only drive. This is not supported. please copy it to a writable disk."_u16,
                static_cast<const unsigned short*>(source.GetFilePath()));
    CMessageAction::Error(nullptr, text);
    return false;
  }
  MString drive, directory, name, ownExtension;
  SplitPath(source.GetFilePath(), drive, directory, name, ownExtension);
  MString suffix = extension && extension[0] ? MString(extension) : ownExtension;
  MString candidate = drive + directory + name + suffix;
  for (int counter = 1; vp::PathExists(candidate); ++counter) {
    candidate.Format(u"%s%s%s_%d%s"_u16, static_cast<const unsigned short*>(drive),
                     static_cast<const unsigned short*>(directory), static_cast<const unsigned short*>(name), counter,
                     static_cast<const unsigned short*>(suffix));
  }
  result->SetFilePath(candidate);
  return true;
}

void SplitPath(const unsigned short* path, MString& drive, MString& directory, MString& name, MString& extension) {
  drive = MString();
  directory = name = extension = MString();
  if (!path) return;
  const unsigned short* last = vbu::wtext::FindLast(path, kPathSeparator);
  const unsigned short* leaf = last ? last + 1 : path;
  directory = MString(path, static_cast<int>(leaf - path));
  if (leaf == path) directory = MString();
  // The extension starts at the leaf's last dot.
  const unsigned short* dot = vbu::wtext::FindLast(leaf, '.');
  if (dot) {
    name = MString(leaf, static_cast<int>(dot - leaf));
    if (dot == leaf) name = MString();
    extension = MString(dot);
  } else {
    name = MString(leaf);
  }
}
