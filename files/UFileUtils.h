// UFileUtils.h: removal of the files under a folder.
//
//   MString folder(u"/media/out/work"_u16);
//   if (!UFileUtils::DeleteDir(folder)) std::printf("a subfolder, or a file in use, stays\n");
#pragma once

#include <VantoroBasicUtils/platform/Export.h>

class VBU_API UFileUtils {
 public:
  // Removes every file under the folder `path` (entered even when `path` is
  // a link to it), at any depth, going on past failures (each one reported
  // as a warning); true when all went. Folders stay; a link inside the tree
  // is removed as a link and never followed. A folder that cannot be read
  // makes the result false. `path` naming a file removes that file.
  static bool DeleteAllFilesUnderDir(const unsigned short* path);
  static bool DeleteAllFilesUnderDir(unsigned short* path);
  // DeleteAllFilesUnderDir, then the folder itself, which must then be empty.
  static bool DeleteDir(const unsigned short* path);
  static bool DeleteDir(unsigned short* path);
};
