// MDirectory.h: a folder by its path, and the removal of whole folders.
// MDirectory names a folder and answers simple questions about it: whether
// it exists (by making it the current folder), whether files may be written
// there, and how much room is left. DeleteDirectory removes a folder with
// everything in it.
//
//   MDirectory out(u"/media/out"_u16);
//   if (MDirectory::CheckDirectory(out) && out.GetDiskFreeSpaceW() > 4700000) std::printf("room for a disc\n");
//   DeleteDirectory(u"/media/out/work"_u16);   // 0, or -1 with the user told
#pragma once

#include <VantoroBasicUtils/containers/LArray.h>
#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/text/MString.h>

class VBU_API MDirectory {
 public:
  // Names no folder.
  MDirectory();
  MDirectory(const unsigned short* path);
  MDirectory(const MDirectory& other);
  MDirectory& operator=(const MDirectory& other);
  virtual ~MDirectory();

  // Replaces the path (null names no folder).
  virtual void SetPath(const unsigned short* path);
  virtual void SetPath(MString& path);
  // ExistsOnDisk(GetPath()): note that it changes the current folder.
  virtual bool ExistsOnDisk();
  // The base creates nothing: false.
  virtual bool CreateNew();
  // The base lists nothing.
  virtual void GetDirectoryList(LList* list);
  virtual void GetFileList(LList* list);

  const unsigned short* GetPath() const { return mPath; }
  operator const unsigned short*() const { return mPath; }

  // True when `path` can be made the current folder; it then stays current.
  static bool ExistsOnDisk(const unsigned short* path);
  // True when files may be written in the folder `path`; otherwise the user
  // is told (a blocking message) and the result is false.
  static bool CheckDirectory(const unsigned short* path);
  // Cuts the last element: "/a/b" and "/a/b/" give "/a". No separator, no change.
  static void DeleteOneFolder(MString& path);
  // Keeps the last element: "/a/b.txt" gives "b.txt", "/a/" gives "".
  static void GetFileName(MString& path);

  // The room left for the caller on the folder's volume, in KiB (the
  // volume of the nearest folder above it that exists, if it does not);
  // -1 if it cannot be asked.
  long GetDiskFreeSpaceW();

 private:
  MString mPath;
};

// Removes the folder `path` and all that lies in it, depth first; links are
// removed, not followed. 0 (also for a folder that is not there), or -1 at
// the first entry that cannot be removed, with the user told.
VBU_API int DeleteDirectory(const unsigned short* path);
