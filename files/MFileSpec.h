// MFileSpec.h: the value that names one file. MFileSpec is the abstract
// notion; MFileSpecWin holds a path as given (not normalised or checked).
// Also: whether a volume can be written to, and a search for a free name.
//
//   MFileSpecWin spec(u"/media/out/title.vob"_u16);
//   MFileSpecWin temp;
//   if (MFileSpecWin::CreateUniqueFileSpec(spec, u".tmp"_u16, &temp)) {   // title.tmp, title_1.tmp, ...
//     MString path = temp.GetFilePath();
//   }
#pragma once

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/text/MString.h>

class VBU_API MFileSpec {
 public:
  // The arguments are not kept: the abstract value holds nothing.
  MFileSpec() = default;
  explicit MFileSpec(MString& /*path*/) {}
  explicit MFileSpec(const unsigned short* /*path*/) {}
  MFileSpec(const MFileSpec&) = default;
  MFileSpec& operator=(const MFileSpec&) { return *this; }
  virtual ~MFileSpec();

  // Copies the path with its terminator to `dst`, which must hold it.
  virtual void GetFilePathName(unsigned short* dst) = 0;
  // True when the path exists.
  virtual bool FileExist() = 0;
  // Removes the file; true on success.
  virtual bool Delete() = 0;
  // True when no file is named.
  virtual bool IsNull() = 0;
};

class VBU_API MFileSpecWin : public MFileSpec {
 public:
  // Names nothing.
  MFileSpecWin();
  MFileSpecWin(MString& path);
  MFileSpecWin(const unsigned short* path);
  MFileSpecWin(const MFileSpecWin& other);
  MFileSpecWin& operator=(const MFileSpecWin& other);
  ~MFileSpecWin() override;

  void GetFilePathName(unsigned short* dst) override;
  bool FileExist() override;
  bool Delete() override;
  bool IsNull() override;
  // Replaces the path (null names nothing).
  virtual void SetFilePathName(const unsigned short* path);
  // The path itself, not a copy.
  virtual MString& GetFilePath();
  virtual void SetFilePath(const unsigned short* path);
  virtual void SetFilePath(MString& path);

  // Exact comparison of the paths, case included.
  bool operator==(const MFileSpecWin& other) const;
  bool operator!=(const MFileSpecWin& other) const;
  // True when the file's volume cannot be written (see IsFileOnReadOnlyDrive).
  bool IsOnReadOnlyDrive();

  // The path up to and including its last separator; a path without one comes back whole.
  static MString GetDirectory(const unsigned short* path);
  static MString GetDirectory(unsigned short* path);
  // A bare nullptr would fit both forms.
  static MString GetDirectory(decltype(nullptr)) { return GetDirectory(static_cast<const unsigned short*>(nullptr)); }
  // True when the volume of `root` cannot be written: it does not exist, is
  // optical or read-only (unless `skipDriveType`), cannot be asked, or has
  // no byte free for the caller.
  static bool IsDriveReadOnly(const unsigned short* root, bool skipDriveType);
  // IsDriveReadOnly for the folder of `path` (the current folder for a bare
  // name; true for no path); only the free-space test applies, since paths
  // here carry no drive.
  static bool IsFileOnReadOnlyDrive(const unsigned short* path);
  // The first free name among "name" + `extension` (the source's own if
  // empty; it brings its dot) and "name_1" + extension, "name_2" ..., in
  // the source's folder. False, with a message and `result` untouched, when
  // the source lies on a read-only volume; false alone for a null `result`
  // or a source that names nothing. Nothing is created.
  static bool CreateUniqueFileSpec(MFileSpecWin& source, const unsigned short* extension, MFileSpecWin* result);

 private:
  MString mPath;
};

// A path split as the file names of the platform are: drive (empty here),
// folder with its trailing separator, name, and extension with its dot.
VBU_API void SplitPath(const unsigned short* path, MString& drive, MString& directory, MString& name,
                       MString& extension);
