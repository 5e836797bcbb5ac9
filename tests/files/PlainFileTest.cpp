// The plain file's stdio route: what each open mode does to a file, text
// mode's line ends on disk, the position bound, and the text transfers.
#include <VantoroBasicUtils/files/MFileUniv.h>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "support/TempFolder.h"

using namespace vbu::literals;

namespace {

// Opens `path` in `mode`, checks that the position stands at `at`, writes
// `text` through the stream, closes: the result of FOpen.
int WriteWith(const MString& path, MFile::file_open_t mode, long long at, const char* text) {
  MFileUniv file;
  int opened = file.FOpen(path, mode);
  if (opened == 0) {
    EXPECT_EQ(file.FTell64(), at) << "the position after the open";
    file.FPuts(text);
    EXPECT_EQ(file.FClose(), 0);
  }
  return opened;
}

}  // namespace

TEST(PlainFile, EveryModeOpensAsItsRowSays) {
  TempFolder dir;
  struct Row {
    MFile::file_open_t mode;
    bool atEnd;                     // the open puts the position at the end
    const char* afterWriteOverOld;  // "old\n" was there; "new\n" is written
  };
  // Binary rows keep LF; text rows write CR LF.
  const Row rows[] = {
      {MFile::file_create_binary, false, "new\n"},
      {MFile::file_create_update_binary, false, "new\n"},
      {MFile::file_create_text, false, "new\r\n"},
      {MFile::file_append_binary, true, "old\nnew\n"},
      {MFile::file_append_update_binary, true, "old\nnew\n"},
      {MFile::file_update_text, false, "new\r\n"},
      {MFile::file_append_text, true, "old\nnew\r\n"},
      {MFile::file_update_binary, false, "new\n"},
  };
  using std::filesystem::perms;
  const mode_t mask = ::umask(0);
  ::umask(mask);
  const perms created = static_cast<perms>(0666 & ~mask);
  auto permissions = [&] { return std::filesystem::status(dir.Bytes("f")).permissions() & perms::all; };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.mode);
    std::filesystem::remove(dir.Bytes("f"));
    ASSERT_EQ(WriteWith(dir.Path("f"), row.mode, 0, "new\n"), 0) << "creates a missing file";
    EXPECT_EQ(permissions(), created) << "as every program's new files";
    WriteAll(dir.Bytes("f"), "old\n");
    std::filesystem::permissions(dir.Bytes("f"), static_cast<perms>(0640));
    ASSERT_EQ(WriteWith(dir.Path("f"), row.mode, row.atEnd ? 4 : 0, "new\n"), 0);
    EXPECT_EQ(ReadAll(dir.Bytes("f")), row.afterWriteOverOld);
    EXPECT_EQ(permissions(), static_cast<perms>(0640)) << "the group keeps its access";
  }
  // Reading modes need the file, and leave it alone.
  MFileUniv reader;
  EXPECT_EQ(reader.FOpen(dir.Path("missing"), MFile::file_read_text), -1);
  EXPECT_EQ(reader.FOpen(dir.Path("missing"), MFile::file_read_binary), -1);
  EXPECT_FALSE(std::filesystem::exists(dir.Bytes("missing")));
  // Modes that no route has.
  EXPECT_EQ(reader.FOpen(dir.Path("f"), MFile::file_unsupported), -1);
  EXPECT_EQ(reader.FOpen(dir.Path("f"), static_cast<MFile::file_open_t>(15)), -1);
  EXPECT_EQ(reader.FOpen(dir.Path("f"), static_cast<MFile::file_open_t>(-1)), -1);
  // The file spec keeps the name, whether the open succeeded or not.
  EXPECT_EQ(Text(reader.GetFilePath()), Text(dir.Path("f")));
}

TEST(PlainFile, TextModeHasCrLfOnDiskAndLfInMemory) {
  TempFolder dir;
  MFileUniv file;
  ASSERT_EQ(file.FOpen(dir.Path("t.txt"), MFile::file_create_text), 0);
  EXPECT_EQ(file.FWrite("a\nb\n", 4), 4) << "the caller's count, not the bytes on disk";
  file.FClose();
  EXPECT_EQ(ReadAll(dir.Bytes("t.txt")), "a\r\nb\r\n");

  // A CR alone stays; CR LF split across reads still becomes one LF.
  WriteAll(dir.Bytes("t.txt"), "x\ry\r\nz\r\n");
  ASSERT_EQ(file.FOpen(dir.Path("t.txt"), MFile::file_read_text), 0);
  std::string got;
  char piece[2];
  for (int n; (n = file.FRead(piece, 2)) > 0;) got.append(piece, static_cast<std::size_t>(n));
  EXPECT_EQ(got, "x\ry\nz\n");
  file.FClose();

  // Binary reads see the bytes as they are.
  ASSERT_EQ(file.FOpen(dir.Path("t.txt"), MFile::file_read_binary), 0);
  char all[16] = {};
  EXPECT_EQ(file.FRead(all, 16), 8);
  EXPECT_EQ(std::string(all, 8), "x\ry\r\nz\r\n");
  file.FClose();
}

TEST(PlainFile, LinesThroughTheStream) {
  TempFolder dir;
  MFileUniv file;
  ASSERT_EQ(file.FOpen(dir.Path("empty"), MFile::file_create_binary), 0);
  file.FClose();
  ASSERT_EQ(file.FOpen(dir.Path("empty"), MFile::file_read_text), 0);
  char line[32];
  EXPECT_EQ(file.FGets(line, 32), -1) << "an empty file has no line";
  unsigned short units[32];
  EXPECT_EQ(file.FGetts(units, 16), -1);
  file.FClose();

  // 16-bit text in the system code page (UTF-8), line ends translated.
  const unsigned short* title = u"Kapitel 1 \u00fcber \u6f22\n"_u16;
  ASSERT_EQ(file.FOpen(dir.Path("lines.txt"), MFile::file_create_text), 0);
  EXPECT_GE(file.FPutts(title), 0);
  EXPECT_GE(file.FPuts("second\n"), 0);
  file.FClose();
  EXPECT_EQ(ReadAll(dir.Bytes("lines.txt")), "Kapitel 1 \xc3\xbc" "ber \xe6\xbc\xa2\r\nsecond\r\n");
  ASSERT_EQ(file.FOpen(dir.Path("lines.txt"), MFile::file_read_text), 0);
  EXPECT_EQ(file.FGetts(units, 16), 0);
  EXPECT_EQ(Text(units), Text(title)) << "the line end stays";
  EXPECT_EQ(file.FGets(line, 4), 0);
  EXPECT_STREQ(line, "sec") << "count - 1 bytes at most";
  file.FClose();

  // Native wide text in a binary file: the 16-bit units as they stand.
  ASSERT_EQ(file.FOpen(dir.Path("wide.bin"), MFile::file_create_binary), 0);
  EXPECT_GE(file.FNativePutts(u"A\u6f22\n"_u16), 0);
  file.FClose();
  EXPECT_EQ(ReadAll(dir.Bytes("wide.bin")), std::string("A\0\x22\x6f\n\0", 6));
  ASSERT_EQ(file.FOpen(dir.Path("wide.bin"), MFile::file_read_binary), 0);
  EXPECT_EQ(file.FNativeGetts(units, 8), 0);
  EXPECT_EQ(Text(units), u"A\u6f22\n");
  EXPECT_EQ(file.FNativeGetts(units, 8), -1) << "at the end";
  file.FClose();
}

TEST(PlainFile, ItemsThroughTheStream) {
  TempFolder dir;
  MFileUniv file;
  const int32_t values[3] = {1, -2, 300000};
  ASSERT_EQ(file.FOpen(dir.Path("items"), MFile::file_create_binary), 0);
  EXPECT_EQ(file.FWriteVoid(values, sizeof values[0], 3), 3);
  file.FClose();
  int32_t back[4] = {};
  ASSERT_EQ(file.FOpen(dir.Path("items"), MFile::file_read_binary), 0);
  EXPECT_EQ(file.FReadVoid(back, sizeof back[0], 4), 3) << "whole items only";
  EXPECT_EQ(back[2], 300000);
  file.FClose();
}

TEST(PlainFile, PositionsFrom0x7FFFFFFFOnAreNotReported) {
  TempFolder dir;
  MFileUniv file;
  ASSERT_EQ(file.FOpen(dir.Path("big"), MFile::file_create_binary), 0);
  EXPECT_EQ(file.FSeek64(0x7FFFFFFE, MFile::file_seek_begin), 0x7FFFFFFE);
  EXPECT_EQ(file.FTell64(), 0x7FFFFFFE);
  EXPECT_EQ(file.FSeek64(1, static_cast<MFile::file_seek_t>(7)), 0x7FFFFFFF) << "an unknown origin is current";
  EXPECT_EQ(file.FTell64(), -1);
  EXPECT_EQ(file.FWrite("x", 1), 1) << "though the file can be written there";
  EXPECT_EQ(file.FSeek64(-1, MFile::file_seek_end), 0x7FFFFFFF);
  EXPECT_EQ(file.FSetEndOfFile(), 0);
  file.FClose();
  EXPECT_EQ(std::filesystem::file_size(dir.Bytes("big")), 0x7FFFFFFFu);
}

TEST(PlainFile, SizesTimesAndInformation) {
  TempFolder dir;
  WriteAll(dir.Bytes("data"), Pattern(5000));
  MFileUniv file;
  struct _stati64 info{};
  EXPECT_EQ(file.FStat(&info), -1) << "not open";
  int year = -7, month = -7, day = -7, hour = -7, minute = -7, second = -7;
  EXPECT_FALSE(file.GetModifyTime(year, month, day, hour, minute, second));
  EXPECT_EQ(year, -7) << "outputs untouched";

  ASSERT_EQ(file.FOpen(dir.Path("data"), MFile::file_update_binary), 0);
  EXPECT_EQ(file.GetSize(), 5000);
  ASSERT_EQ(file.FStat(&info), 0);
  EXPECT_EQ(info.st_size, 5000);
  EXPECT_TRUE(file.GetModifyTime(year, month, day, hour, minute, second));
  EXPECT_GE(year, 2024);
  EXPECT_TRUE(month >= 1 && month <= 12 && day >= 1 && day <= 31);
  EXPECT_TRUE(file.GetCreateTime(year, month, day, hour, minute, second));
  EXPECT_TRUE(file.GetAccessTime(year, month, day, hour, minute, second));

  MFileSpecWin none;
  EXPECT_EQ(file.FStat(none, &info), -1);
  MFileSpecWin named(dir.Path("data"));
  info = {};
  EXPECT_EQ(file.FStat(named, &info), 0);
  EXPECT_EQ(info.st_size, 5000);
  EXPECT_EQ(file.FStat(dir.Path("missing"), &info), -1);
  file.FClose();

  EXPECT_EQ(MFileUniv::FDelete(MString()), -1);
  EXPECT_EQ(MFileUniv::FDelete(dir.Path("data")), 0);
  EXPECT_FALSE(std::filesystem::exists(dir.Bytes("data")));
  EXPECT_EQ(MFileUniv::FDelete(dir.Path("data")), -1);
}

TEST(PlainFile, ClosedFileRefusesEverything) {
  MFileUniv file;
  char buffer[8];
  EXPECT_EQ(file.FRead(buffer, 8), -1);
  EXPECT_EQ(file.FWrite(buffer, 8), -1);
  EXPECT_EQ(file.FSeek64(0, MFile::file_seek_begin), -1);
  EXPECT_EQ(file.FTell64(), -1);
  EXPECT_EQ(file.FGets(buffer, 8), -1);
  EXPECT_EQ(file.FPuts("x"), -1);
  EXPECT_EQ(file.FPutts(u"x"_u16), -1);
  EXPECT_EQ(file.FSetEndOfFile(), -1);
  EXPECT_EQ(file.FSetFileSize(10), -1);
  EXPECT_EQ(file.GetSize(), -1);
  EXPECT_EQ(file.FClose(), -1);
}
