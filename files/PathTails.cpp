#include "files/PathTails.h"

#include "text/PathText.h"

MString DeleteTailCharacter(const unsigned short* path, unsigned short character) {
  MString result;
  if (path) result = path;
  if (character == 0) return result;
  while (result.RemoveTailChar(character)) {
  }
  return result;
}

MString DeleteTailDirectorySeparator(const unsigned short* path) { return DeleteTailCharacter(path, kPathSeparator); }

MString AddDirectorySeparator(const unsigned short* path, bool deleteTail, unsigned long count) {
  if (!path || path[0] == 0) return MString();
  MString result = deleteTail ? DeleteTailDirectorySeparator(path) : MString(path);
  const unsigned short separator[2] = {kPathSeparator, 0};
  for (unsigned long i = 0; i < count; ++i) result += separator;
  return result;
}

MString AddDirectorySeparator(MString path, bool deleteTail, unsigned long count) {
  return AddDirectorySeparator(static_cast<const unsigned short*>(path), deleteTail, count);
}
