// The segmented file: the switch to an info file and its exact bytes,
// reads, writes and seeks across segment ends, the info file's limits and
// overlapped reads over segments. The random run against a model is in
// SegmentedModelTest.cpp.
#include <VantoroBasicUtils/files/MFiles.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "support/AlignedBlock.h"
#include "support/LogicalFile.h"
#include "support/TempFolder.h"

using namespace vbu::literals;

namespace {

std::string Bytes(const MString& text) {
  std::string bytes;
  for (int i = 0; i < text.GetLength(); ++i) bytes += static_cast<char>(text[i]);
  return bytes;
}

// Writes `bytes` to `file` in pieces of at most `piece`; the total written.
long long WriteInPieces(MFiles& file, const std::string& bytes, std::size_t piece) {
  long long total = 0;
  for (std::size_t at = 0; at < bytes.size(); at += piece) {
    int n = static_cast<int>(std::min(piece, bytes.size() - at));
    int written = file.FWrite(bytes.data() + at, n);
    if (written != n) return -1;
    total += written;
  }
  return total;
}

// A segmented file at `path` of `bytes`, with a limit of `limit`.
void MakeSegmented(const MString& path, const std::string& bytes, long long limit) {
  MFiles file;
  ASSERT_EQ(file.FOpen(path, MFile::file_create_binary), 0);
  file.SetMaxFileSize(limit);
  ASSERT_EQ(WriteInPieces(file, bytes, static_cast<std::size_t>(limit)), static_cast<long long>(bytes.size()));
  ASSERT_EQ(file.FClose(), 0);
}

}  // namespace

TEST(SegmentedFile, ANewObjectHasNoLimit) {
  TempFolder dir;
  MFiles file;
  ASSERT_EQ(file.FOpen(dir.Path("title.vob"), MFile::file_create_binary), 0);
  std::string data = Pattern(300000);
  EXPECT_EQ(WriteInPieces(file, data, 65536), 300000);
  EXPECT_EQ(file.FClose(), 0);
  EXPECT_EQ(ReadAll(dir.Bytes("title.vob")), data);
  EXPECT_FALSE(std::filesystem::exists(dir.Bytes("title.vob.cfx.0")));
}

// A write that ends at the limit stays in the plain file; the next one
// switches to an info file; a write over a segment end is split there.
TEST(SegmentedFile, AWritePastTheLimitSwitchesToAnInfoFile) {
  TempFolder dir;
  MString name = dir.Path("title.vob");
  std::string data = Pattern(2200);
  MFiles file;
  ASSERT_EQ(file.FOpen(name, MFile::file_create_binary), 0);
  file.SetMaxFileSize(1000);
  ASSERT_EQ(file.FWrite(data.data(), 800), 800);
  ASSERT_EQ(file.FWrite(data.data() + 800, 200), 200);
  EXPECT_EQ(file.GetCount(), 1) << "at the limit, not past it";
  EXPECT_EQ(file.GetInfoFilePath().GetLength(), 0);
  ASSERT_EQ(file.FWrite(data.data() + 1000, 700), 700);
  EXPECT_EQ(file.FWrite(data.data() + 1700, 500), 500);
  EXPECT_EQ(file.GetCount(), 3);
  EXPECT_EQ(file.GetCurrentPos(), 3);
  EXPECT_EQ(file.FTell64(), 200) << "a position inside the open segment";
  EXPECT_EQ(Text(file.GetInfoFilePath()), Text(name));
  EXPECT_EQ(file.FClose(), 0);
  // The info file, byte for byte: CR LF line ends, no count, no mark.
  std::string path = dir.Bytes("title.vob");
  EXPECT_EQ(ReadAll(path), "# Brevander c_files \r\n" + path + ".cfx.0\r\n" + path + ".cfx.1\r\n" + path + ".cfx.2\r\n");
  EXPECT_EQ(ReadAll(path + ".cfx.0"), data.substr(0, 1000));
  EXPECT_EQ(ReadAll(path + ".cfx.1"), data.substr(1000, 1000));
  EXPECT_EQ(ReadAll(path + ".cfx.2"), data.substr(2000));
  EXPECT_FALSE(std::filesystem::exists(path + ".cfx.new"));
  EXPECT_TRUE(MFiles::IsBrevanderMFiles(name));
  MString segment = dir.Path("title.vob.cfx.0"), missing = dir.Path("none");
  EXPECT_FALSE(MFiles::IsBrevanderMFiles(segment));
  EXPECT_FALSE(MFiles::IsBrevanderMFiles(missing));
  EXPECT_EQ(ReadLogical(name), data);
}

TEST(SegmentedFile, WritesIntoASegmentAboveTheLimitGoOnAtTheNext) {
  TempFolder dir;
  std::string data = Pattern(3000);
  WriteAll(dir.Bytes("f"), data);
  MFiles file;
  ASSERT_EQ(file.FOpen(dir.Path("f"), MFile::file_update_binary), 0);
  file.SetMaxFileSize(1000);  // lowered under a file that exists
  ASSERT_EQ(file.FSeek64(0, MFile::file_seek_end), 3000);
  ASSERT_EQ(file.FWrite("xyz", 3), 3);
  // A single write larger than the limit is split once.
  std::string big = Pattern(2500, 2);
  ASSERT_EQ(file.FWrite(big.data(), 2500), 2500);
  ASSERT_EQ(file.FWrite("!", 1), 1);
  EXPECT_EQ(file.GetCount(), 4);
  EXPECT_EQ(file.GetSize(), 3000 + 3 + 2500 + 1);
  file.FClose();
  EXPECT_EQ(ReadAll(dir.Bytes("f.cfx.0")), data) << "nothing cut";
  EXPECT_EQ(ReadAll(dir.Bytes("f.cfx.3")), big.substr(1997) + "!") << "new segments follow the limit";
  EXPECT_EQ(ReadLogical(dir.Path("f")), data + "xyz" + big + "!");
}

TEST(SegmentedFile, ReadsAndSeeksCrossSegments) {
  TempFolder dir;
  MString name = dir.Path("f");
  std::string data = Pattern(2500);
  MakeSegmented(name, data, 1000);
  MFiles file;
  ASSERT_EQ(file.FOpen(name, MFile::file_read_binary), 0);
  EXPECT_EQ(file.GetCount(), 3);
  EXPECT_EQ(file.GetSize(), 2500);
  struct _stati64 info;
  ASSERT_EQ(file.FStat(&info), 0);
  EXPECT_EQ(info.st_size, 2500);
  std::string got(10, '\0');
  // A seek into the third segment gives the logical offset; FTell64 the inner one.
  EXPECT_EQ(file.FSeek64(2100, MFile::file_seek_begin), 2100);
  EXPECT_EQ(file.GetCurrentPos(), 3);
  EXPECT_EQ(file.FTell64(), 100);
  // A seek to a boundary stays at the end of the earlier segment; the read crosses over.
  EXPECT_EQ(file.FSeek64(1000, MFile::file_seek_begin), 1000);
  EXPECT_EQ(file.GetCurrentPos(), 1);
  EXPECT_EQ(file.FRead(got.data(), 10), 10);
  EXPECT_EQ(got.substr(0, 10), data.substr(1000, 10));
  EXPECT_EQ(file.FSeek64(-10, MFile::file_seek_end), 490) << "inside the last segment";
  EXPECT_EQ(file.FSeek64(-1, MFile::file_seek_begin), -1);
}

TEST(SegmentedFile, ASeekPastTheEndGrowsByWholeSegments) {
  TempFolder dir;
  std::string data = Pattern(100);
  WriteAll(dir.Bytes("f"), data);
  MFiles file;
  ASSERT_EQ(file.FOpen(dir.Path("f"), MFile::file_update_binary), 0);
  file.SetMaxFileSize(1000);
  EXPECT_EQ(file.FSeek64(700, MFile::file_seek_begin), 700) << "within the limit: one segment still";
  EXPECT_EQ(file.GetCount(), 1);
  EXPECT_EQ(file.FSeek64(3500, MFile::file_seek_begin), 3500);
  EXPECT_EQ(file.GetCount(), 4);
  EXPECT_EQ(file.GetSize(), 3500);
  ASSERT_EQ(file.FWrite("end", 3), 3);
  file.FClose();
  for (int i = 0; i < 3; ++i) EXPECT_EQ(std::filesystem::file_size(dir.Bytes("f.cfx." + std::to_string(i))), 1000u);
  std::string expected = data + std::string(3400, '\0') + "end";
  EXPECT_EQ(ReadLogical(dir.Path("f")), expected);
  // On a segmented file a seek past the end that stays within the last segment's limit.
  MFiles again;
  ASSERT_EQ(again.FOpen(dir.Path("f"), MFile::file_update_binary), 0);
  again.SetMaxFileSize(1000);
  EXPECT_EQ(again.FSeek64(3900, MFile::file_seek_begin), 3900) << "a logical offset, as for every seek from the start";
  EXPECT_EQ(again.GetSize(), 3900);
}

TEST(SegmentedFile, LinesOfTheInfoFile) {
  TempFolder dir;
  WriteAll(dir.Bytes("a"), "first");
  WriteAll(dir.Bytes("b"), "second");
  std::string header = "# Brevander c_files \r\n";
  struct Row {
    std::string text;
    int opens;
    int count;
    std::string content;
  };
  std::string a = dir.Bytes("a"), b = dir.Bytes("b");
  std::string most = header;  // at most 2048 segments
  for (int i = 0; i < 2048; ++i) most += a + "\r\n";
  std::string first20;
  for (int i = 0; i < 20; ++i) first20 += "first";
  const Row rows[] = {
      {header + "# a comment\r\n" + a + "\r\n#another\r\n" + b + "\r\n", 0, 2, "firstsecond"},
      {"# Brevander c_files" + std::string("\n") + a + "\n" + b, 0, 2, "firstsecond"},  // no blank, LF only, no end
      {header, -1, 0, ""},                                                          // no path lines
      {header + "# only a comment\r\n", -1, 0, ""},
      {header + std::string(4096, 'x') + "\r\n", -1, 0, ""},                        // longer than any path
      {"# Brevander c_file\r\n" + a + "\r\n", 0, 1, "# Brevander c_file\r\n" + a + "\r\n"},  // no header: a plain file
      {most, 0, 2048, first20},
      {most + a + "\r\n", -1, 0, ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text.substr(0, 60) + " (" + std::to_string(row.text.size()) + " bytes)");
    WriteAll(dir.Bytes("info"), row.text);
    MFiles file;
    ASSERT_EQ(file.FOpen(dir.Path("info"), MFile::file_read_binary), row.opens);
    EXPECT_EQ(file.GetCount(), row.count);
    if (row.opens != 0) {
      EXPECT_EQ(file.GetCurrentPos(), -1);
      continue;
    }
    std::string got(100, '\0');
    got.resize(static_cast<std::size_t>(file.FRead(got.data(), 100)));
    EXPECT_EQ(got, row.content);
  }
}

TEST(SegmentedFile, ExplicitListsAndTheirFaults) {
  TempFolder dir;
  WriteAll(dir.Bytes("a"), "one");
  WriteAll(dir.Bytes("b"), "two");
  MFileSpecWin first(dir.Path("a")), second(dir.Path("b"));
  LList specs;
  MFileSpecWin* items[] = {&first, &second};
  specs.InsertItemsAt(1, kLastIndex, &items[0]);
  specs.InsertItemsAt(1, kLastIndex, &items[1]);
  MFiles file;
  ASSERT_EQ(file.FOpen(specs, MFile::file_read_binary), 0);
  char got[8] = {};
  EXPECT_EQ(file.FRead(got, 8), 6);
  EXPECT_STREQ(got, "onetwo");
  EXPECT_EQ(file.FClose(), 0);
  EXPECT_EQ(file.FClose(), -1) << "closed already";
  LList none;
  EXPECT_EQ(file.FOpen(none, MFile::file_read_binary), -1);
  EXPECT_EQ(file.FRead(got, 1), -1);
  EXPECT_EQ(file.FWrite(got, 1), -1);
  EXPECT_EQ(file.FSeek64(0, MFile::file_seek_begin), -1);
}

TEST(SegmentedFile, TextLinesCrossSegments) {
  TempFolder dir;
  WriteAll(dir.Bytes("a"), "one\r\ntwo\r\n");
  WriteAll(dir.Bytes("b"), "three\r\n");
  WriteAll(dir.Bytes("info"), "# Brevander c_files \r\n" + dir.Bytes("a") + "\r\n" + dir.Bytes("b") + "\r\n");
  MFiles file;
  ASSERT_EQ(file.FOpen(dir.Path("info"), MFile::file_read_text), 0);
  unsigned short line[64];
  std::vector<std::u16string> lines;
  while (file.FGetts(line, 32) == 0) lines.push_back(Text(line));
  EXPECT_EQ(lines, (std::vector<std::u16string>{u"one\n", u"two\n", u"three\n"}));
}

TEST(SegmentedFile, ChangeAllFilesDirectoryRewritesTheLines) {
  TempFolder dir;
  MString name = dir.Path("f");
  MakeSegmented(name, Pattern(1500), 1000);
  MFiles file;
  ASSERT_EQ(file.FOpen(name, MFile::file_read_binary), 0);
  EXPECT_EQ(file.ChangeAllFilesDirectory(u"/media/moved/"_u16), 0);
  EXPECT_EQ(file.GetCurrentPos(), -1) << "the object stays closed";
  EXPECT_EQ(ReadAll(dir.Bytes("f")),
            "# Brevander c_files \r\n/media/moved/f.cfx.0\r\n/media/moved/f.cfx.1\r\n");
  // Nothing listed, nothing rewritten.
  MFiles never;
  EXPECT_EQ(never.ChangeAllFilesDirectory(u"/x"_u16), -1);
  EXPECT_EQ(file.ChangeAllFilesDirectory(u"/x"_u16), -1);
}

TEST(SegmentedFile, GenerateNewFilePathFindsAFreeName) {
  TempFolder dir;
  MString result;
  MString base = dir.Path("in.dir/title.vob");
  std::filesystem::create_directories(dir.Bytes("in.dir"));
  ASSERT_TRUE(MFiles::GenerateNewFilePath(base, u"_x"_u16, u"iso"_u16, &result));
  EXPECT_EQ(Bytes(result), dir.Bytes("in.dir/title_x.iso"));
  WriteAll(dir.Bytes("in.dir/title_x.iso"), "");
  WriteAll(dir.Bytes("in.dir/title_x1.iso"), "");
  ASSERT_TRUE(MFiles::GenerateNewFilePath(base, u"_x"_u16, u"iso"_u16, &result));
  EXPECT_EQ(Bytes(result), dir.Bytes("in.dir/title_x2.iso"));
  // The point of a folder name is no extension.
  MString bare = dir.Path("in.dir/title");
  ASSERT_TRUE(MFiles::GenerateNewFilePath(bare, u""_u16, u"iso"_u16, &result));
  EXPECT_EQ(Bytes(result), dir.Bytes("in.dir/title.iso"));
  EXPECT_FALSE(MFiles::GenerateNewFilePath(bare, u""_u16, u"iso"_u16, nullptr));
}

TEST(SegmentedFile, OverlappedReadsCrossSegments) {
  TempFolder dir;
  MString name = dir.Path("f");
  constexpr long kLimit = 4 * 2048;
  std::string data = Pattern(3 * kLimit + 2048);
  MakeSegmented(name, data, kLimit);
  MFiles file;
  ASSERT_EQ(file.FOpen(name, MFile::file_overlapped_read), 0);
  char* block = static_cast<char*>(vbu_test::AlignedAlloc(4096, 8 * kLimit));
  MEvent done;
  OVERLAPPED record;
  // From the middle of the first segment over two ends into the third.
  long count = 2 * kLimit;
  ASSERT_EQ(file.FReadOverlapped(2048, block, count, &record, &done), 0u);
  ASSERT_EQ(file.FWaitOverlappedCompletion(&done, 10), 0u);
  EXPECT_EQ(std::string(block, 2 * kLimit), data.substr(2048, 2 * kLimit));
  EXPECT_EQ(file.GetCurrentPos(), 3);
  // Back into the first segment.
  count = 2048;
  ASSERT_EQ(file.FReadOverlapped(4096, block, count, &record, &done), 0u);
  ASSERT_EQ(file.FWaitOverlappedCompletion(&done, 10), 0u);
  EXPECT_EQ(std::string(block, 2048), data.substr(4096, 2048));
  EXPECT_EQ(file.GetCurrentPos(), 1);
  // Over the logical end: what is there, and the end-of-file code.
  count = 4 * kLimit;
  EXPECT_EQ(file.FReadOverlapped(kLimit, block, count, &record, &done), kErrorHandleEof);
  EXPECT_EQ(count, 2 * kLimit + 2048);
  EXPECT_EQ(std::string(block, static_cast<std::size_t>(count)), data.substr(kLimit));
  // Behind the end.
  count = 2048;
  EXPECT_EQ(file.FReadOverlapped(4 * kLimit, block, count, &record, &done), kErrorHandleEof);
  EXPECT_EQ(count, 0);
  vbu_test::AlignedFree(block);
  // A creating open empties the whole file.
  ASSERT_EQ(file.FClose(), 0);
  ASSERT_EQ(file.FOpen(name, MFile::file_overlapped_create), 0);
  EXPECT_EQ(file.GetCount(), 1) << "made anew: one empty segment";
  EXPECT_EQ(file.GetSize(), 0);
}

TEST(SegmentedFile, TheJoinEngineRunsOnTheOpenSegment) {
  TempFolder dir;
  std::string first = Pattern(5000, 1);
  WriteAll(dir.Bytes("first"), first);
  MFiles disc;
  ASSERT_EQ(disc.FOpen(dir.Path("disc.iso"), MFile::file_overlapped_create), 0);
  ASSERT_EQ(disc.ConcatInitialize(2048, 0), 0);
  bool cancelled = false;
  MString one = dir.Path("first");
  EXPECT_EQ(disc.ConcatFile(one, 0, cancelled), 0);
  EXPECT_EQ(disc.ConcatBufferSynchronously(first.data(), 100), 0);
  disc.FClose();
  EXPECT_EQ(ReadAll(dir.Bytes("disc.iso")), first + std::string(6144 - 5000, '\0') + first.substr(0, 100) +
                                                std::string(1948, '\0'));
}
