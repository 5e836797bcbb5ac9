// The 16-bit string calls, quoted words, case-blind comparison and paths.
// The C headers with byte functions of the same names are included too: both
// families must compile side by side and each call must reach its own.
#include <libgen.h>
#include <string.h>
#include <strings.h>

#include <VantoroBasicUtils/text/CStringExtract.h>
#include <VantoroBasicUtils/text/PathText.h>
#include <VantoroBasicUtils/text/UStringUtils.h>

#include <gtest/gtest.h>

#include "support/NativePath.h"

#include <cstring>
#include <string>
#include <thread>

using namespace vbu::literals;

namespace {
std::u16string S(const unsigned short* s) { return s ? std::u16string(reinterpret_cast<const char16_t*>(s)) : u"<null>"; }

// A modifiable copy of a literal, in a buffer that outlives the call.
struct Buf {
  explicit Buf(const char16_t* text) : text(text) {}
  unsigned short* get() { return vbu::ToUnits(text.data()); }
  std::u16string text;
};
}  // namespace

TEST(UStringUtils, ByteBuffersNeverCut) {
  std::u16string fits(1023, u'a'), over(1024, u'a');
  EXPECT_EQ(std::strlen(UStringUtils::TtoA(vbu::ToUnits(fits.data()))), 1023u);
  EXPECT_EQ(std::strlen(UStringUtils::TtoA(vbu::ToUnits(over.data()))), 0u);
  char bytes[] = "gr\xC3\xBC\xC3\x9F";
  EXPECT_EQ(S(UStringUtils::AtoT(bytes)), u"gr\u00fc\u00df");
  EXPECT_DOUBLE_EQ(UStringUtils::atof(u"  2.5e3xyz"_u16), 2500.0);
  EXPECT_EQ(UStringUtils::atoi(u" -42abc"_u16), -42);
  EXPECT_EQ(UStringUtils::atoi(u"99999999999"_u16), 2147483647);
}

TEST(UStringUtils, WideCalls) {
  unsigned short buf[32];
  UStringUtils::strcpy(buf, u"abc"_u16);
  UStringUtils::strcat(buf, u"def"_u16);
  UStringUtils::strncat(buf, u"ghij"_u16, 2);
  EXPECT_EQ(S(buf), u"abcdefgh");
  EXPECT_EQ(UStringUtils::strlen(buf), 8u);
  EXPECT_EQ(S(UStringUtils::strchr(buf, 'd')), u"defgh");
  EXPECT_EQ(S(UStringUtils::strchr(buf, 'z')), u"<null>");
  EXPECT_EQ(S(UStringUtils::strrchr(u"a.b.c"_u16, '.')), u".c");
  EXPECT_EQ(S(UStringUtils::strstr(buf, u"efg"_u16)), u"efgh");
  EXPECT_LT(UStringUtils::strcmp(u"ab"_u16, u"abc"_u16), 0);
  EXPECT_EQ(UStringUtils::strncmp(u"abX"_u16, u"abY"_u16, 2), 0);
  EXPECT_EQ(UStringUtils::stricmp(u"\u00c4bc"_u16, u"\u00e4BC"_u16), 0);
  EXPECT_EQ(UStringUtils::strnicmp(u"ABx"_u16, u"aby"_u16, 2), 0);
  unsigned short padded[6] = {9, 9, 9, 9, 9, 9};
  UStringUtils::strncpy(padded, u"ab"_u16, 5);
  EXPECT_EQ(padded[4], 0);
  EXPECT_EQ(padded[5], 9);
}

TEST(UStringUtils, StrtokKeepsOnePositionPerThread) {
  Buf line(u"::a:b;;c");
  const unsigned short seps[] = {':', ';', 0};
  EXPECT_EQ(S(UStringUtils::strtok(line.get(), seps)), u"a");
  std::thread([&] {  // another thread's walk does not disturb this one
    Buf other(u"x:y");
    UStringUtils::strtok(other.get(), seps);
    UStringUtils::strtok(nullptr, seps);
  }).join();
  EXPECT_EQ(S(UStringUtils::strtok(nullptr, seps)), u"b");
  EXPECT_EQ(S(UStringUtils::strtok(nullptr, seps)), u"c");
  EXPECT_EQ(UStringUtils::strtok(nullptr, seps), nullptr);
  EXPECT_EQ(UStringUtils::strtok(nullptr, seps), nullptr);
}

TEST(CStringExtract, QuotedWords) {
  for (auto [text, at] : {std::pair{u"\"ab", 1}, {u"ab\"", 3}, {u"ab", 0}}) {
    EXPECT_EQ(CStringExtract::SeekLeftDoubleQuat(Buf(text).get()), at);
  }
  unsigned short result[16];
  for (auto [text, taken, word] : {std::tuple{u"word\" rest", 5, u"word"}, {u"word", 0, u""}, {u"\"x", 1, u""}}) {
    EXPECT_EQ(CStringExtract::GetString(Buf(text).get(), result), taken);
    EXPECT_EQ(S(result), word);
  }
  char bytes[16];
  EXPECT_EQ(CStringExtract::SeekLeftDoubleQuatChar("ab\"cd\""), 3);
  EXPECT_EQ(CStringExtract::GetStringChar("cd\" x", bytes), 3);
  EXPECT_STREQ(bytes, "cd");
}

TEST(CaseBlindCompare, WideFormsBesideTheByteOnes) {
  for (auto [a, b, n, order] : {std::tuple{u"abC"_u16, u"ABc"_u16, 3, 0}, {u"abd"_u16, u"ABC"_u16, 3, 1},
                                 {u"abd"_u16, u"ABC"_u16, 2, 0}, {u"ab"_u16, u"AB"_u16, 10, 0}, {u"ab"_u16, u"ac"_u16, 0, 0}}) {
    EXPECT_EQ(strncasecmp(a, b, n), order) << n;
  }
  EXPECT_EQ(strcasecmp(u"abc"_u16, u"ABD"_u16), -1);
  EXPECT_EQ(strcasecmp(u""_u16, u""_u16), 0);
  EXPECT_EQ(strcasecmp(u"\u0141"_u16, u"A"_u16), 0);  // units above U+00FF count by their low byte
  EXPECT_EQ(::strcasecmp("abc", "ABC"), 0);           // the C library's own, untouched
  EXPECT_LT(::strncasecmp("abc", "ABD", 3), 0);
}

TEST(PathText, DirnameAndBasenameInPlace) {
  using vbu_test::NativePath;
  auto dir = [](const char16_t* p) {
    Buf b(NativePath(p).c_str());
    return S(vbu::dirname(b.get()));
  };
  auto base = [](const char16_t* p) {
    Buf b(NativePath(p).c_str());
    return S(vbu::basename(b.get()));
  };
  for (auto [path, d, b] : {std::tuple{u"a/b", u"a", u"b"}, {u"a/b//", u"a", u"b"}, {u"a//b", u"a", u"b"},
                            {u"/a", u"/", u"a"}, {u"//", u"/", u"/"}, {u"abc", u".", u"abc"}, {u"", u".", u"."}}) {
    EXPECT_EQ(dir(path) + u"|" + base(path), NativePath(d) + u"|" + NativePath(b));
  }
  Buf trailing(NativePath(u"a/b/").c_str());
  EXPECT_EQ(S(basename(trailing.get())), u"b");  // the plain overload
  EXPECT_EQ(trailing.text[3], 0);                // the separator is gone from the caller's text
  char cpath[] = "/usr/lib";
  EXPECT_STREQ(::dirname(cpath), "/usr");  // the C library's, through <libgen.h>

  // The string forms cut at the last separator only.
  for (auto [path, d, b] : {std::tuple{u"a/b/", u"a/b", u""}, {u"abc", u"abc", u"abc"}, {u"/abc", u"", u"abc"},
                            {u"", u".", u"."}}) {
    const MString native(vbu::ToUnits(NativePath(path).c_str()));
    EXPECT_EQ(S(DirName(native)) + u"|" + S(BaseName(native)), NativePath(d) + u"|" + b);
  }
}
