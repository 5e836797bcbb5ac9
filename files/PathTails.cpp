#include "files/PathTails.h"

#include "platform/internal/WideText.h"
#include "text/PathText.h"

namespace {

// The most units an MString holds: its length is an int.
constexpr unsigned long kMostUnits = 0x7FFFFFFE;

}  // namespace

MString DeleteTailCharacter(const unsigned short* path, unsigned short character) {
  if (!path) return MString();
  int length = static_cast<int>(vbu::wtext::Length(path));
  // The terminator is no character of the text: nothing to drop for 0.
  if (character != 0) {
    while (length > 0 && path[length - 1] == character) --length;
  }
  // MString(text, 0) would copy the whole text, so nothing left is said apart.
  return length > 0 ? MString(path, length) : MString();
}

MString DeleteTailDirectorySeparator(const unsigned short* path) { return DeleteTailCharacter(path, kPathSeparator); }

MString AddDirectorySeparator(const unsigned short* path, bool deleteTail, unsigned long count) {
  if (!path || path[0] == 0) return MString();
  MString kept = deleteTail ? DeleteTailDirectorySeparator(path) : MString(path);
  unsigned long length = static_cast<unsigned long>(kept.GetLength());
  if (count > kMostUnits - length) return MString();
  // One block for the whole result, however many separators are asked for.
  MString result(static_cast<unsigned int>(length + count));
  unsigned short* out = result;
  const unsigned short* in = kept;
  for (unsigned long i = 0; i < length; ++i) out[i] = in[i];
  for (unsigned long i = 0; i < count; ++i) out[length + i] = kPathSeparator;
  out[length + count] = 0;
  return result;
}

MString AddDirectorySeparator(MString path, bool deleteTail, unsigned long count) {
  return AddDirectorySeparator(static_cast<const unsigned short*>(path), deleteTail, count);
}
