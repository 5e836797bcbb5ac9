// UFileUtils.h: removal of the files under a folder.
//
//   MString folder(u"/media/out/work"_u16);
//   if (!UFileUtils::DeleteDir(folder)) std::printf("a subfolder, or a file in use, stays\n");
#pragma once

#include <VantoroBasicUtils/platform/Export.h>

class VBU_API UFileUtils {
 public:
  // Removes every file that a CFileQuery on `path` lists, going on past
  // failures (each one reported as a warning); true when all went. Folders
  // stay; a link to a folder is removed as a link, its folder is not entered.
  static bool DeleteAllFilesUnderDir(unsigned short* path);
  // DeleteAllFilesUnderDir, then the folder itself, which must then be empty.
  static bool DeleteDir(unsigned short* path);
};
