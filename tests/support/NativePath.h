// Paths written with '/' in a test, turned into the platform's own
// separator ('\' on Windows), so that a test of path text runs unchanged
// on every platform.
#pragma once

#include <VantoroBasicUtils/text/PathText.h>

#include <algorithm>
#include <string>

namespace vbu_test {

inline std::u16string NativePath(std::u16string path) {
  std::replace(path.begin(), path.end(), u'/', static_cast<char16_t>(kPathSeparator));
  return path;
}

inline std::string NativePath(std::string path) {
  std::replace(path.begin(), path.end(), '/', kPathSeparatorChar);
  return path;
}

}  // namespace vbu_test
