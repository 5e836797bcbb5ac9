// PathBytes.h: a 16-bit path turned into the bytes that the system's file
// calls take (the system code page, UTF-8 here), for the length of a call.
// Internal; never installed.
//
//   vbu::platform::PathBytes bytes(path);
//   if (!bytes.Ok()) return -1;
//   int fd = Sys().open(bytes.Get(), O_RDONLY, 0);
#pragma once

#include <string>

namespace vbu::platform {

class PathBytes {
 public:
  // Converts `path` up to its terminator; null or empty gives an empty text, not Ok.
  explicit PathBytes(const unsigned short* path);
  // True when there is a non-empty path to give to the system.
  bool Ok() const { return !mBytes.empty(); }
  const char* Get() const { return mBytes.c_str(); }

 private:
  std::string mBytes;
};

}  // namespace vbu::platform
