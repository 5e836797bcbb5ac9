// The path functions with <libgen.h> included after the library's header.
#include <VantoroBasicUtils/text/PathText.h>

#include <libgen.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

TEST(PathText, LibgenAfterTheLibrarysHeader) {
  std::u16string path = u"dir/name";
  EXPECT_EQ(std::u16string(reinterpret_cast<char16_t*>(vbu::basename(vbu::ToUnits(path.data())))), u"name");
  char bytes[] = "dir/leaf/";
  EXPECT_STREQ(vbu::basename(bytes), "leaf");
  char xpg[] = "a/b";
  EXPECT_STREQ(basename(xpg), "b");  // the C library's, as <libgen.h> defines it
}
