// Path tails, file specs (MFileSpecWin), the search for a free name, and the
// abstract file's base behaviour.
#include <VantoroBasicUtils/files/MFile.h>
#include <VantoroBasicUtils/files/MFileSpec.h>
#include <VantoroBasicUtils/files/PathTails.h>

#include <gtest/gtest.h>

#include "support/TempFolder.h"

using namespace vbu::literals;

namespace {

std::u16string S(const MString& text) { return Text(text); }

}  // namespace

TEST(PathTails, TrailingSeparatorsAndCharacters) {
  EXPECT_EQ(S(DeleteTailDirectorySeparator(u"/a/b//"_u16)), u"/a/b");
  EXPECT_EQ(S(DeleteTailDirectorySeparator(u"///"_u16)), u"");
  EXPECT_EQ(S(DeleteTailDirectorySeparator(nullptr)), u"");
  EXPECT_EQ(S(DeleteTailCharacter(u"name.."_u16, '.')), u"name");
  EXPECT_EQ(S(DeleteTailCharacter(u"name"_u16, 0)), u"name");
  EXPECT_EQ(S(DeleteTailCharacter(u"..."_u16, '.')), u"");
  EXPECT_EQ(S(DeleteTailCharacter(u"a.b"_u16, '.')), u"a.b") << "only the tail";

  EXPECT_EQ(S(AddDirectorySeparator(u"/a//"_u16, true, 1)), u"/a/");
  EXPECT_EQ(S(AddDirectorySeparator(u"/a//"_u16, true, 2)), u"/a//");
  EXPECT_EQ(S(AddDirectorySeparator(u"/a//"_u16, false, 1)), u"/a///");
  EXPECT_EQ(S(AddDirectorySeparator(u"/a//"_u16, true, 0)), u"/a");
  EXPECT_EQ(S(AddDirectorySeparator(MString(u"/a"_u16), true, 1)), u"/a/");
  EXPECT_EQ(S(AddDirectorySeparator(u""_u16, true, 3)), u"") << "nothing gets no separator";
  EXPECT_EQ(S(AddDirectorySeparator(static_cast<const unsigned short*>(nullptr), false, 1)), u"");
  EXPECT_EQ(S(AddDirectorySeparator(u"/"_u16, true, 1)), u"/") << "the root keeps its one separator";
  EXPECT_EQ(AddDirectorySeparator(u"/a"_u16, false, 100000).GetLength(), 100002);
  EXPECT_EQ(S(AddDirectorySeparator(u"/a"_u16, false, ~0ul)), u"") << "more than a string holds";
}

TEST(FileSpec, ValuesCompareExactlyAndKnowTheirFolder) {
  MFileSpecWin spec;
  EXPECT_TRUE(spec.IsNull());
  spec.SetFilePath(u"/a/b.txt"_u16);
  EXPECT_FALSE(spec.IsNull());
  spec.SetFilePath(u""_u16);
  EXPECT_TRUE(spec.IsNull());
  spec.SetFilePathName(nullptr);
  EXPECT_TRUE(spec.IsNull());

  MFileSpecWin lower(u"/a/b.txt"_u16), upper(u"/A/b.txt"_u16), same(lower);
  EXPECT_TRUE(lower == same);
  EXPECT_FALSE(lower == upper) << "case counts";
  EXPECT_TRUE(lower != upper);
  unsigned short copy[16];
  lower.GetFilePathName(copy);
  EXPECT_EQ(Text(copy), u"/a/b.txt");

  // Text that is only read may be a literal.
  EXPECT_EQ(S(MFileSpecWin::GetDirectory(u"/a/b.txt"_u16)), u"/a/");
  EXPECT_EQ(S(MFileSpecWin::GetDirectory(u"b.txt"_u16)), u"b.txt");
  EXPECT_EQ(S(MFileSpecWin::GetDirectory(nullptr)), u"");

  MString drive, folder, name, extension;
  SplitPath(u"/a/b.c/d.tar.gz"_u16, drive, folder, name, extension);
  EXPECT_EQ(S(drive), u"");
  EXPECT_EQ(S(folder), u"/a/b.c/");
  EXPECT_EQ(S(name), u"d.tar");
  EXPECT_EQ(S(extension), u".gz");
  SplitPath(u"plain"_u16, drive, folder, name, extension);
  EXPECT_EQ(S(folder) + u"|" + S(name) + u"|" + S(extension), u"|plain|");
  SplitPath(u"/a/.profile"_u16, drive, folder, name, extension);
  EXPECT_EQ(S(folder) + u"|" + S(name) + u"|" + S(extension), u"/a/||.profile") << "the last dot starts the extension";
}

TEST(FileSpec, ExistenceAndDeletion) {
  TempFolder dir;
  MFileSpecWin spec(dir.Path("b.txt"));
  EXPECT_FALSE(spec.FileExist());
  EXPECT_FALSE(spec.Delete());
  WriteAll(dir.Bytes("b.txt"), "x");
  EXPECT_TRUE(spec.FileExist());
  EXPECT_TRUE(spec.Delete());
  EXPECT_FALSE(spec.FileExist());
  EXPECT_FALSE(MFileSpecWin().FileExist());
}

TEST(FileSpec, UniqueNamesCountUpFromTheFreeOne) {
  TempFolder dir;
  MFileSpecWin source(dir.Path("b.txt")), result;
  ASSERT_TRUE(MFileSpecWin::CreateUniqueFileSpec(source, u".tmp"_u16, &result));
  EXPECT_EQ(S(result.GetFilePath()), S(dir.Path("b.tmp"))) << "a free name is taken as it is";
  WriteAll(dir.Bytes("b.tmp"), "");
  WriteAll(dir.Bytes("b_1.tmp"), "");
  ASSERT_TRUE(MFileSpecWin::CreateUniqueFileSpec(source, u".tmp"_u16, &result));
  EXPECT_EQ(S(result.GetFilePath()), S(dir.Path("b_2.tmp")));
  EXPECT_FALSE(std::filesystem::exists(dir.Bytes("b_2.tmp"))) << "nothing is created";
  ASSERT_TRUE(MFileSpecWin::CreateUniqueFileSpec(source, u""_u16, &result));
  EXPECT_EQ(S(result.GetFilePath()), S(dir.Path("b.txt"))) << "its own extension; the source itself is free";
  WriteAll(dir.Bytes("b.txt"), "");
  ASSERT_TRUE(MFileSpecWin::CreateUniqueFileSpec(source, nullptr, &result));
  EXPECT_EQ(S(result.GetFilePath()), S(dir.Path("b_1.txt")));
  EXPECT_FALSE(source.IsOnReadOnlyDrive());
  EXPECT_FALSE(MFileSpecWin::IsDriveReadOnly(dir.Path(""), false));
  // A bare name lies in the current folder, which tests may write to.
  EXPECT_FALSE(MFileSpecWin::IsFileOnReadOnlyDrive(u"b.txt"_u16));
  EXPECT_FALSE(MFileSpecWin::IsDriveReadOnly(u"."_u16, true));
}

// No place for the name, or nothing to name it after: a quiet false. A
// source where nothing can be written: refused with a message.
TEST(FileSpec, UniqueNamesThatCannotBeHad) {
  Hearing hearing;
  MFileSpecWin source(u"/no/such/volume/b.txt"_u16), nothing, result(u"/kept"_u16);
  EXPECT_FALSE(MFileSpecWin::CreateUniqueFileSpec(source, u".tmp"_u16, nullptr));
  EXPECT_FALSE(MFileSpecWin::CreateUniqueFileSpec(nothing, u".tmp"_u16, &result));
  EXPECT_TRUE(hearing.messages.empty());
  EXPECT_TRUE(source.IsOnReadOnlyDrive()) << "a folder that cannot be asked counts as read-only";
  EXPECT_TRUE(MFileSpecWin::IsDriveReadOnly(u"/no/such/volume"_u16, false)) << "no root";
  EXPECT_FALSE(MFileSpecWin::CreateUniqueFileSpec(source, u".tmp"_u16, &result));
  EXPECT_EQ(S(result.GetFilePath()), u"/kept");
  ASSERT_EQ(hearing.messages, std::vector<long>{26000});
  EXPECT_EQ(hearing.texts[0], u"/no/such/volume/b.txt is on a read-only drive. This is not supported. please copy "
                              u"it to a writable disk.");
  EXPECT_TRUE(MFileSpecWin::IsFileOnReadOnlyDrive(nullptr));
  EXPECT_TRUE(MFileSpecWin::IsFileOnReadOnlyDrive(u""_u16));
  EXPECT_TRUE(MFileSpecWin::IsDriveReadOnly(u""_u16, true));
}

