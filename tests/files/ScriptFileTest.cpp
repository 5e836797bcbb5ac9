// The script scanner: the character scanner, words, lists, tokens and
// their comments on small scripts, syntax errors with their line, writes,
// the working file's removal, and hostile input (huge lines and words, no
// line end, binary bytes) that must end cleanly.
#include <VantoroBasicUtils/files/CScriptFile.h>
#include <VantoroBasicUtils/text/MStringList.h>

#include <gtest/gtest.h>

#include "support/TempFolder.h"

using namespace vbu::literals;

namespace {

// The scanner's protected steps, opened for the tests.
class Script : public CScriptFile {
 public:
  using CScriptFile::GetListMember;
  using CScriptFile::GetOneChar;
  using CScriptFile::GetString;
  using CScriptFile::GetString2;
  using CScriptFile::GetToken;
  using CScriptFile::StopUntilChars;
};

// A script holding `text`, open to parse.
class ScriptOn {
 public:
  explicit ScriptOn(const std::string& text) {
    WriteAll(dir.Bytes("script"), text);
    EXPECT_EQ(script.OpenForParse(dir.Path("script")), 1);
  }
  TempFolder dir;
  Script script;
};

std::vector<std::u16string> Items(MStringList& list) {
  std::vector<std::u16string> items;
  for (MString* s = list.GetHead(); s; s = list.GetNext()) items.push_back(Text(*s));
  return items;
}

}  // namespace

TEST(ScriptFile, WordsAndComments) {
  ScriptOn on("# head\r\n  name value\r\n");
  Script& s = on.script;
  ASSERT_EQ(s.SkipWhiteSpaceAndChar(0), 1);
  EXPECT_EQ(s.GetCurrentLineNum(), 2);
  MString word;
  ASSERT_EQ(s.GetString(&word, 0), 1);
  EXPECT_EQ(Text(word), u"name");
  ASSERT_EQ(s.SkipWhiteSpaceAndChar(0), 1);
  ASSERT_EQ(s.GetString(&word, 0), 1);
  EXPECT_EQ(Text(word), u"value");
  // At the line feed: an empty word.
  ASSERT_EQ(s.GetString(&word, 0), 1);
  EXPECT_EQ(Text(word), u"");
  EXPECT_EQ(s.SkipWhiteSpaceAndChar(0), -1) << "the end of the file";
  EXPECT_EQ(s.GetString(&word, 0), 1) << "still standing on the last line feed";
}

TEST(ScriptFile, StoppersAndSlashComments) {
  ScriptOn on("a=b // note\n\t#x\nkey:val;\n");
  Script& s = on.script;
  MString word;
  ASSERT_EQ(s.SkipWhiteSpaceAndChar(0), 1);
  ASSERT_EQ(s.GetString(&word, '='), 1);
  EXPECT_EQ(Text(word), u"a");
  ASSERT_EQ(s.SkipWhiteSpaceAndChar('='), 1);
  ASSERT_EQ(s.GetString(&word, '='), 1);
  EXPECT_EQ(Text(word), u"b");
  ASSERT_EQ(s.SkipWhiteSpaceAndChar(0), 1);
  EXPECT_EQ(s.GetCurrentLineNum(), 3) << "both comments passed over";
  ASSERT_EQ(s.GetString2(&word, MString(u":;"_u16)), 1);
  EXPECT_EQ(Text(word), u"key");
  unsigned short found = 0;
  EXPECT_EQ(s.StopUntilChars(MString(u":;"_u16), &found), 1);
  EXPECT_EQ(found, ':');
}

TEST(ScriptFile, Lists) {
  struct Row {
    const char* text;
    int result;
    std::vector<std::u16string> items;
  };
  const Row rows[] = {
      {"( a, b  c )\n", 1, {u"a", u"b", u"c"}},
      {"()\n", 1, {}},
      {"( )\n", 1, {}},
      {"(a,,b)\n", 1, {u"a", u"b"}},
      {"(a,", 1, {u"a"}},
      {"(abc", 0, {}},
      {"// c\n# d\n(\n  one,\n  two\n)\n", 1, {u"one", u"two"}},
      {"", 0, {}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    ScriptOn on(row.text);
    MStringList list;
    list.Add(u"old"_u16);
    EXPECT_EQ(on.script.GetListMember(&list), row.result);
    EXPECT_EQ(Items(list), row.items);
  }
}

TEST(ScriptFile, TokensEndTheirLineAtAComment) {
  ScriptOn on("x y // z\n\n// all comment\nw\n");
  Script& s = on.script;
  MString token, rest(u"old"_u16);
  std::vector<std::u16string> tokens;
  while (s.GetToken(&token, u" \t\n"_u16, &rest) == 1) tokens.push_back(Text(token));
  EXPECT_EQ(tokens, (std::vector<std::u16string>{u"x", u"y", u"w"}));
  EXPECT_EQ(Text(rest), u"");
  EXPECT_EQ(s.GetCurrentLineNum(), 4);
  EXPECT_EQ(Text(s.GetCurrentLine()), u"w");
}

TEST(ScriptFile, TwoScriptsTokenizeApart) {
  ScriptOn one("a b\n"), two("c d\n");
  MString token, rest;
  std::u16string order;
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(one.script.GetToken(&token, u" \n"_u16, &rest), 1);
    order += Text(token);
    ASSERT_EQ(two.script.GetToken(&token, u" \n"_u16, &rest), 1);
    order += Text(token);
  }
  EXPECT_EQ(order, u"acbd");
}

TEST(ScriptFile, SyntaxErrorsNameTheirLine) {
  std::string text;
  for (int i = 1; i < 12; ++i) text += "\n";
  text += "  x\n";
  ScriptOn on(text);
  Hearing hearing;
  unsigned short found = 0;
  EXPECT_EQ(on.script.StopUntilChars(MString(u"{;"_u16), &found), 0);
  ASSERT_EQ(hearing.messages, std::vector<long>{26010}) << "an error to window selector 2";
  EXPECT_EQ(hearing.texts[0], u"syntax error: Syntax error near line 12\n              >>>    x\n");
  ScriptOn semicolon("  \n ;\n");
  EXPECT_EQ(semicolon.script.StopUntilChars(MString(u"{;"_u16), &found), 1);
  EXPECT_EQ(found, ';');
}

TEST(ScriptFile, WritesAndTheWorkingFile) {
  TempFolder dir;
  {
    Script s;
    ASSERT_EQ(s.FOpen(dir.Path("out"), MFile::file_create_binary), 0);
    MStringList none;
    EXPECT_EQ(s.WriteStringList2File(&none), 1);
    MStringList list;
    list.Add(u"one "_u16);
    list.Add(u"zwei \u00e9"_u16);
    EXPECT_EQ(s.WriteStringList2File(&list), 1);
    std::u16string longText(20000, u'q');
    MString whole(reinterpret_cast<const unsigned short*>(longText.c_str()));
    EXPECT_EQ(s.WriteString2File(&whole), 1);
    s.FClose();
  }
  EXPECT_EQ(ReadAll(dir.Bytes("out")), "one zwei \xc3\xa9" + std::string(20000, 'q'));
  {
    Script s;
    ASSERT_EQ(s.FOpen(dir.Path("out"), MFile::file_read_binary), 0);
    MString text(u"x"_u16);
    testing::internal::CaptureStdout();
    EXPECT_EQ(s.WriteString2File(&text), 0);
    std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(printed, "Error: write failed(" + dir.Bytes("out") + ")\nCheck your free disk size\n");
  }
  {
    Script s;
    EXPECT_EQ(s.OpenForParse(dir.Path("out")), 1);
    s.FClose();
  }
  EXPECT_FALSE(std::filesystem::exists(dir.Bytes("out"))) << "the working file goes with the object";
  // A second parse closes the first file and removes its working file.
  auto descriptors = [] {
    auto entries = std::filesystem::directory_iterator("/proc/self/fd");
    return std::distance(begin(entries), end(entries));
  };
  WriteAll(dir.Bytes("one"), "first\n");
  WriteAll(dir.Bytes("two"), "second\n");
  {
    Script s;
    const auto before = descriptors();
    ASSERT_EQ(s.OpenForParse(dir.Path("one")), 1);
    ASSERT_EQ(s.GetOneChar(), 1);
    ASSERT_EQ(s.OpenForParse(dir.Path("two")), 1);
    EXPECT_EQ(descriptors(), before + 1);
    EXPECT_FALSE(std::filesystem::exists(dir.Bytes("one")));
    MString word;
    ASSERT_EQ(s.GetString(&word, 0), 1);
    EXPECT_EQ(Text(word), u"second");
    EXPECT_EQ(s.GetCurrentLineNum(), 1);
  }
  Script missing;
  EXPECT_EQ(missing.OpenForParse(dir.Path("none")), 0);
}

// Hostile input: every scanner ends at the end of the file, never overruns.
TEST(ScriptFile, HostileInputEndsCleanly) {
  std::string binary;
  for (int i = 0; i < 70000; ++i) binary += static_cast<char>((i * 7919) % 256);
  const std::string inputs[] = {
      std::string(200000, 'w'),                            // one word, no line end
      std::string(100000, ' ') + "word",                   // blanks, then a word without an end
      "(" + std::string(30000, 'i') + "," + std::string(30000, 'j'),
      binary,
      std::string(5, '\0') + "\n(a\xff\xfe,b)\n",
      "//" + std::string(150000, '/'),
  };
  for (const std::string& input : inputs) {
    SCOPED_TRACE(input.size());
    {
      ScriptOn on(input);
      MString word;
      int steps = 0;
      while (on.script.SkipWhiteSpaceAndChar(0) == 1 && on.script.GetString(&word, ')') == 1 && steps < 100000) {
        EXPECT_LE(word.GetLength(), CScriptFile::kMaxWord);
        if (word.GetLength() == 0 && on.script.GetOneChar() == -1) break;
        ++steps;
      }
      EXPECT_LT(steps, 100000);
    }
    {
      ScriptOn on(input);
      MStringList list;
      int steps = 0;
      while (on.script.GetListMember(&list) == 1 && steps < 100000) {
        for (MString* item = list.GetHead(); item; item = list.GetNext()) {
          EXPECT_LE(item->GetLength(), CScriptFile::kMaxListItem);
        }
        ++steps;
      }
      EXPECT_LT(steps, 100000);
    }
    {
      ScriptOn on(input);
      MString token, rest;
      int steps = 0;
      while (on.script.GetToken(&token, u" \n"_u16, &rest) == 1 && steps < 1000000) ++steps;
      EXPECT_LT(steps, 1000000);
    }
  }
}
