// The string class: building, formatting, cutting, case, code pages and resources.
#include <VantoroBasicUtils/text/MString.h>
#include <VantoroBasicUtils/text/UStringResources.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using namespace vbu::literals;

namespace {
std::u16string S(const MString& s) { return std::u16string(reinterpret_cast<const char16_t*>(static_cast<const unsigned short*>(s))); }
}  // namespace

TEST(MString, ConstructionAssignmentAndAppendingItself) {
  EXPECT_EQ(S(MString()), u"");
  EXPECT_EQ(S(MString(u"abc"_u16, 2)), u"ab");
  EXPECT_EQ(S(MString(u"a"_u16, 2)), u"a");  // stops at the terminator
  MString s(u"text"_u16);
  s = static_cast<const unsigned short*>(nullptr);
  EXPECT_EQ(S(s), u"");
  s = u"self"_u16;
  s = s;
  s = static_cast<const unsigned short*>(s);
  EXPECT_EQ(S(s), u"self");
  s = static_cast<const unsigned short*>(s) + 2;  // a pointer into its own text
  EXPECT_EQ(S(s), u"lf");
  MString room(10u);
  EXPECT_EQ(room.GetLength(), 0);
  s = u"ab"_u16;  // appending itself, or a part of itself
  s += s;
  s += static_cast<const unsigned short*>(s) + 3;
  EXPECT_EQ(S(s + MString(u"y"_u16)), u"ababby");
}

TEST(MString, ComparisonIsByUnitValue) {
  MString a(u"abc"_u16), b(u"abd"_u16), prefix(u"ab"_u16);
  EXPECT_TRUE(a < b && prefix < a && a == u"abc"_u16);
  EXPECT_TRUE(u"\u00e9"_u16 > MString(u"z"_u16));  // unsigned units, no collation
  EXPECT_EQ(MString(u"Abc"_u16).CaseCmp(u"aBC"_u16) + MString(u"\u00c4"_u16).CaseCmp(u"\u00e4"_u16), 2);
  EXPECT_EQ(a.CaseCmp(b), 0);
}

TEST(MString, FormatSpecifiers) {
  MString s;
  s.Format(u"%d%%|%u|%5d|%ld"_u16, 5);  // no flags, widths or modifiers: nothing is taken
  EXPECT_EQ(S(s), u"5%|u|5d|ld");
  s.Format(u"%x %d %f %s%s!%x"_u16, 255, -42, 1.5, u"txt"_u16, static_cast<const unsigned short*>(nullptr), -1);
  EXPECT_EQ(S(s), u"ff -42 1.500000 txt!ffffffff");
  MString self(u"me"_u16);
  self.Format(u"[%s]"_u16, static_cast<const unsigned short*>(self));  // its own text as argument
  EXPECT_EQ(S(self), u"[me]");
  s.Format(u""_u16);
  EXPECT_EQ(s.GetLength(), 0);
}

TEST(MString, FormatNeverPassesItsLimitOrTheFormat) {
  MString s;
  s.Format(u"abc%"_u16);  // a lone % at the end
  EXPECT_EQ(S(s), u"abc");
  std::u16string big(20000, u'x');
  s.Format(u"%s%s"_u16, vbu::ToUnits(big.c_str()), vbu::ToUnits(big.c_str()));
  EXPECT_EQ(s.GetLength(), 8191);
  // Wide numbers near the end of the room are cut, not written past it.
  std::u16string nearFull(8180, u'y');
  nearFull += u"%f%d%x%f";
  s.Format(vbu::ToUnits(nearFull.c_str()), 1e300, -2147483647, -1, -1e300);
  EXPECT_EQ(s.GetLength(), 8191);
  s.Format(u"%f"_u16, 1e308);
  EXPECT_EQ(s.GetLength(), 309 + 7);
}

TEST(MString, CuttingSplittingAndTrimming) {
  MString s(u"abcde"_u16);
  EXPECT_EQ(s.Cut(2, 100), 3);
  EXPECT_EQ(S(s), u"cde");
  for (auto [start, length] : {std::pair{0, 0}, {9, 2}, {1, -1}, {-1, 2}}) {
    MString t(u"abc"_u16);
    EXPECT_EQ(t.Cut(start, length), 0);
    EXPECT_EQ(t.GetLength(), 0);
  }
  MString left, right;
  // No separator: all of it is the left part.
  for (auto [text, separator, fromStart, l, r] :
       {std::tuple{u"dir/sub/file.vob"_u16, '/', true, u"dir", u"sub/file.vob"},
        {u"dir/sub/file.vob"_u16, '/', false, u"dir/sub", u"file.vob"}, {u"name"_u16, '.', false, u"name", u""}}) {
    MString(text).Split(separator, left, right, fromStart);
    EXPECT_EQ(S(left) + u"|" + S(right), std::u16string(l) + u"|" + r);
  }
  MString plain(u"name"_u16);
  plain.Split('a', plain, right, true);  // the parts may be the string itself
  EXPECT_EQ(S(plain), u"n");

  for (auto [text, trimmed] : {std::pair{u"abc  \n\n"_u16, u"abc"}, {u"abc\n  "_u16, u"abc\n"}}) {
    MString t(text);
    t.RemoveTailSpaceAndCR(true);
    EXPECT_EQ(S(t), trimmed);  // line feeds are looked at first, blanks second
  }
  MString v(u"  \r x\n"_u16);
  v.RemoveHeadSpace(false);
  EXPECT_EQ(S(v), u" \r x\n");
  v.RemoveHeadSpace(true);
  v.StripNewline();
  EXPECT_EQ(S(v), u"\r x");
  MString empty;
  empty.StripNewline();
  EXPECT_FALSE(empty.RemoveTailChar('x') || empty.RemoveHeadChar('x'));
  EXPECT_TRUE(v.RemoveHeadChar('\r'));
  EXPECT_EQ(S(v), u" x");
}

TEST(MString, CaseAndCharacterChanges) {
  MString s(u"\u00e4bc-\u0142"_u16);
  s.Change2Upper();
  EXPECT_EQ(S(s), u"\u00c4BC-\u0141");
  s.Change2Lower();
  EXPECT_EQ(S(s), u"\u00e4bc-\u0142");
  MString path(u"a.b.c"_u16);
  path.ChangeChar('.', '/');
  EXPECT_EQ(S(path), u"a/b/c");
  path.ChangeChar('/', 0);  // a zero cuts the text at the first one
  EXPECT_EQ(S(path), u"a");
}

TEST(MString, BytesInAndOut) {
  MString s;
  // UTF-8, the system's code page; a byte that is no character reads as
  // U+FFFD, and nothing after it is lost.
  for (auto [bytes, length, text] : {std::tuple{"abc", 0, u""}, {"abc", 2, u"ab"},
                                     {"gr\xC3\xBC\xC3\x9F", -1, u"gr\u00fc\u00df"}, {"a\xFF" "b", -1, u"a\ufffdb"}}) {
    s.ImportASCII(bytes, length);
    EXPECT_EQ(S(s), text);
  }

  char out[8];
  MString five(u"h\u00e9llo"_u16);  // six bytes in UTF-8
  EXPECT_EQ(five.ExportASCII(out, 6, kCharacterSetWindows), 6);
  EXPECT_STREQ(out, "h\xC3\xA9llo");
  std::memset(out, 'z', sizeof out);
  EXPECT_EQ(five.ExportASCII(out, 5, kCharacterSetWindows), 0);  // one byte short: nothing, never cut
  EXPECT_EQ(out[0], 0);
  EXPECT_EQ(five.ExportASCII(out, 7, kCharacterSetMacintosh), 5);
  EXPECT_STREQ(out, "h\x8Ello");  // Mac Roman
  out[0] = 'q';
  EXPECT_EQ(MString().ExportASCII(out, 7, kCharacterSetWindows), 0);
  EXPECT_EQ(out[0], 0);

  unsigned short units[10];
  MString abc(u"abc"_u16);
  EXPECT_EQ(abc.ExportUnicode(units, 10), 10);
  EXPECT_TRUE(units[3] == 0 && units[9] == 0);  // the rest cleared
  EXPECT_EQ(abc.ExportUnicode(units, 3), 2);
  EXPECT_TRUE(units[1] == 'b' && units[2] == 0);

  char bytes[] = "\x80\xA9\xE9" "a";
  s.DoMapWindowsCharactersToASCII(bytes, 4);
  EXPECT_STREQ(bytes, "\x20\xA9\x8E" "a");
}

TEST(MString, LoadStrFromRegisteredTables) {
  UStringResources::Register(UStringResources::DefaultModule(), 101, u"Disc full"_u16);
  UStringResources::Register(nullptr, 7, u"program text"_u16);
  std::u16string longText(300, u'p');
  UStringResources::Register(u"plugin.dll"_u16, 1, vbu::ToUnits(longText.c_str()));
  MString s;
  s.LoadStr(101);
  EXPECT_EQ(S(s), u"Disc full");
  s.LoadStr(7, u"NOT-LOADED.dll"_u16);  // a module without table: the program's
  EXPECT_EQ(S(s), u"program text");
  s.LoadStr(1, u"PLUGIN.DLL"_u16);  // module names are case-blind; texts stop at 255 units
  EXPECT_EQ(s.GetLength(), 255);
  s.LoadStr(999, u"plugin.dll"_u16);
  EXPECT_EQ(s.GetLength(), 0);
  UStringResources::Unregister(nullptr);
  s.LoadStr(7, u"NOT-LOADED.dll"_u16);
  EXPECT_EQ(s.GetLength(), 0);
}
