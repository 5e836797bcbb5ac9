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

#include <string>
#include <cstring>
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
  EXPECT_EQ(UStringUtils::strchr(buf, 'z'), nullptr);
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
  Buf quoted(u"\"ab"), late(u"ab\""), none(u"ab"), word(u"word\" rest"), bare(u"word"), open(u"\"x");
  unsigned short result[16];
  EXPECT_EQ(CStringExtract::SeekLeftDoubleQuat(quoted.get()), 1);
  EXPECT_EQ(CStringExtract::SeekLeftDoubleQuat(late.get()), 3);
  EXPECT_EQ(CStringExtract::SeekLeftDoubleQuat(none.get()), 0);
  EXPECT_EQ(CStringExtract::GetString(word.get(), result), 5);
  EXPECT_EQ(S(result), u"word");
  EXPECT_EQ(CStringExtract::GetString(bare.get(), result), 0);
  EXPECT_EQ(S(result), u"");
  EXPECT_EQ(CStringExtract::GetString(open.get(), result), 1);
  EXPECT_EQ(S(result), u"");
  char bytes[16];
  EXPECT_EQ(CStringExtract::SeekLeftDoubleQuatChar("ab\"cd\""), 3);
  EXPECT_EQ(CStringExtract::GetStringChar("cd\" x", bytes), 3);
  EXPECT_STREQ(bytes, "cd");
}

TEST(CaseBlindCompare, WideFormsBesideTheByteOnes) {
  EXPECT_EQ(strncasecmp(u"abC"_u16, u"ABc"_u16, 3), 0);
  EXPECT_EQ(strncasecmp(u"abd"_u16, u"ABC"_u16, 3), 1);
  EXPECT_EQ(strncasecmp(u"abd"_u16, u"ABC"_u16, 2), 0);
  EXPECT_EQ(strncasecmp(u"ab"_u16, u"AB"_u16, 10), 0);
  EXPECT_EQ(strncasecmp(u"ab"_u16, u"ab"_u16, 0), 0);
  EXPECT_EQ(strcasecmp(u"abc"_u16, u"ABD"_u16), -1);
  EXPECT_EQ(strcasecmp(u""_u16, u""_u16), 0);
  EXPECT_EQ(strcasecmp(u"\u0141"_u16, u"A"_u16), 0);  // units above U+00FF count by their low byte
  EXPECT_EQ(::strcasecmp("abc", "ABC"), 0);           // the C library's own, untouched
  EXPECT_LT(::strncasecmp("abc", "ABD", 3), 0);
}

TEST(PathText, DirnameAndBasenameInPlace) {
  auto dir = [](const char16_t* p) {
    Buf b(p);
    return S(vbu::dirname(b.get()));
  };
  auto base = [](const char16_t* p) {
    Buf b(p);
    return S(vbu::basename(b.get()));
  };
  EXPECT_EQ(dir(u"a/b"), u"a");
  EXPECT_EQ(dir(u"a/b//"), u"a");
  EXPECT_EQ(dir(u"a//b"), u"a");
  EXPECT_EQ(dir(u"/a"), u"/");
  EXPECT_EQ(dir(u"//"), u"/");
  EXPECT_EQ(dir(u"abc"), u".");
  EXPECT_EQ(dir(u""), u".");
  EXPECT_EQ(base(u"a/b"), u"b");
  EXPECT_EQ(base(u"abc"), u"abc");
  EXPECT_EQ(base(u"//"), u"/");
  EXPECT_EQ(base(u""), u".");
  Buf trailing(u"a/b/");
  EXPECT_EQ(S(basename(trailing.get())), u"b");  // the plain overload
  EXPECT_EQ(trailing.text[3], 0);                // the separator is gone from the caller's text
  char bytes[] = "x/y/";
  EXPECT_STREQ(vbu::basename(bytes), "y");
  char cpath[] = "/usr/lib";
  EXPECT_STREQ(::dirname(cpath), "/usr");  // the C library's, through <libgen.h>

  EXPECT_EQ(S(DirName(MString(u"a/b/"_u16))), u"a/b");
  EXPECT_EQ(S(BaseName(MString(u"a/b/"_u16))), u"");
  EXPECT_EQ(S(DirName(MString(u"abc"_u16))), u"abc");
  EXPECT_EQ(S(DirName(MString(u"/abc"_u16))), u"");
  EXPECT_EQ(S(BaseName(MString(u""_u16))), u".");
}
