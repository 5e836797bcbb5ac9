// CFileQuery.h: a dropped selection or one path turned into a flat list of
// the files meant: every folder is walked and replaced by the files under
// it, at any depth, and never listed itself. The list is the object: an
// LList of MString*, owned. Order: as given and, within a folder, by name,
// a subfolder's files standing where the subfolder is. A folder reached
// again inside its own walk (through a symbolic link) is not walked again,
// so a cycle of links ends; a folder given twice is listed twice.
//
//   MString folder(u"/media/in"_u16);
//   CFileQuery files(folder);
//   for (unsigned long i = 1; i <= files.GetCount(); ++i) {
//     MString* path = nullptr;
//     if (files.FetchItemAt(i, &path)) std::printf("%s\n", UStringUtils::TtoA(*path));
//   }
#pragma once

#include <VantoroBasicUtils/containers/LArray.h>
#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/text/MString.h>

class MStringList;

class VBU_API CFileQuery : public LList {
 public:
  // The files of the paths dropped, in the order of the drop; empty names are skipped.
  explicit CFileQuery(MStringList* dropped);
  // The files of one path: a file, or a folder walked.
  explicit CFileQuery(const unsigned short* path);
  explicit CFileQuery(unsigned short* path);
  // Two queries on one list would delete its strings twice.
  CFileQuery(const CFileQuery&) = delete;
  CFileQuery& operator=(const CFileQuery&) = delete;
  // Deletes the strings.
  ~CFileQuery() override;

 protected:
  // A folder is walked, anything else appended.
  void ProcessFileName(unsigned short* path);
  // True for a folder, and for a path that cannot be asked (its walk finds nothing).
  bool IsDir(unsigned short* path);
  // Runs ProcessFileName on "path/name" for each entry.
  void ProcessDirectory(unsigned short* path);
  // Appends a copy of `path`.
  void ProcessFile(unsigned short* path);

 private:
  void* mWalked;  // the folders being walked, while the constructor runs
};
