// PathBytes.h: a 16-bit path turned into the bytes that the system's file
// calls take (UTF-8 here), for the length of a call, and names read from the
// system turned into 16-bit text. The two are exact inverses for every name
// on disk: bytes that are not UTF-8 stand in the text as lone surrogates
// U+DC80 to U+DCFF, one for each byte, and go back to that byte, so a name
// that is not UTF-8 can be listed, opened and removed. Internal; never installed.
//
//   vbu::platform::PathBytes bytes(path);
//   if (!bytes.Ok()) return bytes.Error();
//   int fd = Sys().open(bytes.Get(), O_RDONLY, 0);
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vbu::platform {

class PathBytes {
 public:
  // Converts `path` up to its terminator; null or empty gives an empty text,
  // not Ok; so does a lone surrogate that stands for no byte.
  explicit PathBytes(const unsigned short* path);
  // True when there is a non-empty path to give to the system.
  bool Ok() const { return !mBytes.empty(); }
  const char* Get() const { return mBytes.c_str(); }
  std::size_t Size() const { return mBytes.size(); }
  // Why it is not Ok: kErrorNoFile for no path, kErrorInvalidArgument for a
  // text that names no file.
  uint32_t Error() const { return mError; }

 private:
  std::string mBytes;
  uint32_t mError;
};

// The 16-bit text of the name or path `bytes` (`count` bytes), as PathBytes takes it back.
std::u16string PathText(const char* bytes, std::size_t count);

}  // namespace vbu::platform
