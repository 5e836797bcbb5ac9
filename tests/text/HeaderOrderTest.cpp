// The path functions with <libgen.h> included after the library's header.
#include <VantoroBasicUtils/text/PathText.h>

#include <libgen.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "support/NativePath.h"

TEST(PathText, LibgenAfterTheLibrarysHeader) {
  std::u16string path = vbu_test::NativePath(u"dir/name");
  EXPECT_EQ(std::u16string(reinterpret_cast<char16_t*>(vbu::basename(vbu::ToUnits(path.data())))), u"name");
  std::string bytes = vbu_test::NativePath(std::string("dir/leaf/"));
  EXPECT_STREQ(vbu::basename(bytes.data()), "leaf");
  char xpg[] = "a/b";
  EXPECT_STREQ(basename(xpg), "b");  // the C library's, as <libgen.h> defines it
}
