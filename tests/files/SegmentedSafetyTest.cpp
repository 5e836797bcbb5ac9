// The segmented file loses no data whatever the host does: overwrites stay
// where they were put, a segment that is gone is never made anew, names in
// use by other files are never taken, an object opened to read changes
// nothing, and the info file never gets a line it cannot read back.
#include <VantoroBasicUtils/files/MFiles.h>

#include <gtest/gtest.h>

#include <map>

#include "support/LogicalFile.h"
#include "support/TempFolder.h"

using namespace vbu::literals;

namespace {

// Every file in the folder with its bytes.
std::map<std::string, std::string> Snapshot(const TempFolder& dir) {
  std::map<std::string, std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(dir.Bytes(""))) {
    files[entry.path().filename().string()] = ReadAll(entry.path().string());
  }
  return files;
}

// A segmented file of `bytes` in segments of `limit`.
void MakeSegmented(const MString& path, const std::string& bytes, long long limit) {
  MFiles file;
  ASSERT_EQ(file.FOpen(path, MFile::file_create_binary), 0);
  file.SetMaxFileSize(limit);
  ASSERT_EQ(file.FWrite(bytes.data(), static_cast<int>(bytes.size())), static_cast<int>(bytes.size()));
  ASSERT_EQ(file.FClose(), 0);
}

}  // namespace

// Overwrites land at the caller's offset in the segment that holds it; only
// bytes behind the logical end follow the limit.
TEST(SegmentedSafety, WritesGoWhereTheCallerPutThem) {
  struct Row {
    const char* what;
    long long limitAtOpen;  // 0: a plain file of 3000 bytes; else segments of this size
    long long limit;        // set after the open
    long long seek;
    MFile::file_seek_t origin;
    int count;
  };
  const Row rows[] = {
      {"inside a plain file above the limit", 0, 1000, 1500, MFile::file_seek_begin, 5},
      {"across the limit inside the file", 0, 1000, 990, MFile::file_seek_begin, 20},
      {"back from the end", 0, 1000, -800, MFile::file_seek_end, 30},
      {"no limit over a segment end", 1000, 0, 900, MFile::file_seek_begin, 200},
      {"a larger limit over two ends", 1000, 5000, 990, MFile::file_seek_begin, 1020},
      {"a smaller limit, past the end", 1000, 300, 2900, MFile::file_seek_begin, 700},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    TempFolder dir;
    MString name = dir.Path("f");
    std::string model = Pattern(3000);
    if (row.limitAtOpen == 0) {
      WriteAll(dir.Bytes("f"), model);
    } else {
      MakeSegmented(name, model, row.limitAtOpen);
    }
    std::size_t segments = ListedSegments(name).size();
    MFiles file;
    ASSERT_EQ(file.FOpen(name, MFile::file_update_binary), 0);
    if (row.limit) file.SetMaxFileSize(row.limit);
    long long at = file.FSeek64(row.seek, row.origin);
    ASSERT_GE(at, 0);
    if (row.origin == MFile::file_seek_end) at = 3000 + row.seek;
    std::string bytes = Pattern(static_cast<std::size_t>(row.count), 9);
    ASSERT_EQ(file.FWrite(bytes.data(), row.count), row.count);
    ASSERT_EQ(file.FClose(), 0);
    if (model.size() < static_cast<std::size_t>(at) + bytes.size()) model.resize(static_cast<std::size_t>(at) + bytes.size());
    model.replace(static_cast<std::size_t>(at), bytes.size(), bytes);
    EXPECT_EQ(ReadLogical(name), model);
    if (at + row.count <= 3000) {
      EXPECT_EQ(ListedSegments(name).size(), segments) << "an overwrite makes no segment";
    }
  }
  // A write of nothing changes nothing.
  TempFolder dir;
  WriteAll(dir.Bytes("f"), Pattern(3000));
  MFiles file;
  ASSERT_EQ(file.FOpen(dir.Path("f"), MFile::file_update_binary), 0);
  file.SetMaxFileSize(1000);
  ASSERT_EQ(file.FSeek64(0, MFile::file_seek_end), 3000);
  EXPECT_EQ(file.FWrite("", 0), 0);
  file.FClose();
  EXPECT_EQ(Snapshot(dir).size(), 1u);
}

// A listed segment that is gone fails the call that reaches it, in every
// mode, and nothing is made in its place; the segments that are there stay
// reachable.
TEST(SegmentedSafety, AMissingSegmentIsAnErrorNeverANewOne) {
  for (MFile::file_open_t mode : {MFile::file_read_binary, MFile::file_update_binary, MFile::file_append_binary,
                                  MFile::file_update_text}) {
    SCOPED_TRACE(mode);
    TempFolder dir;
    MString name = dir.Path("f");
    std::string data(3000, 'a');
    for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<char>('a' + i * 7 % 26);  // text modes keep it
    MakeSegmented(name, data, 1000);
    std::filesystem::remove(dir.Bytes("f.cfx.1"));
    auto before = Snapshot(dir);
    MFiles file;
    ASSERT_EQ(file.FOpen(name, mode), 0);
    file.SetMaxFileSize(1000);
    std::string got(3000, '\0');
    ASSERT_EQ(file.FSeek64(0, MFile::file_seek_begin), 0);
    EXPECT_LT(file.FRead(got.data(), 3000), 0);
    ASSERT_EQ(file.FSeek64(990, MFile::file_seek_begin), 990);
    EXPECT_LT(file.FWrite("0123456789abcdefghij", 20), 0);
    EXPECT_EQ(file.FSeek64(2500, MFile::file_seek_begin), -1);
    // Back in a segment that is there, all works again.
    ASSERT_EQ(file.FSeek64(500, MFile::file_seek_begin), 500);
    ASSERT_EQ(file.FRead(got.data(), 100), 100);
    EXPECT_EQ(got.substr(0, 100), data.substr(500, 100));
    file.FClose();
    EXPECT_EQ(Snapshot(dir), before);
  }
  // An info file cut inside its last line names no file: nothing of that name is made.
  TempFolder dir;
  MakeSegmented(dir.Path("f"), Pattern(1500), 1000);
  std::string info = ReadAll(dir.Bytes("f"));
  WriteAll(dir.Bytes("f"), info.substr(0, info.size() - 4));
  MFiles file;
  ASSERT_EQ(file.FOpen(dir.Path("f"), MFile::file_update_binary), 0);
  ASSERT_EQ(file.FSeek64(1000, MFile::file_seek_begin), 1000);
  EXPECT_LT(file.FWrite("x", 1), 0);
  file.FClose();
  EXPECT_FALSE(std::filesystem::exists(dir.Bytes("f.cfx")));
}

// A file renamed by the host keeps its segments when a new file of its old
// name is written; a segment name taken on disk is passed over.
TEST(SegmentedSafety, ANameAnotherFileUsesIsNeverTaken) {
  TempFolder dir;
  std::string old = Pattern(2500, 1), fresh = Pattern(2500, 2);
  MakeSegmented(dir.Path("title.vob"), old, 1000);
  std::filesystem::rename(dir.Bytes("title.vob"), dir.Bytes("title-old.vob"));
  WriteAll(dir.Bytes("title.vob.cfx.new"), "someone's");
  MakeSegmented(dir.Path("title.vob"), fresh, 1000);
  EXPECT_EQ(ReadLogical(dir.Path("title-old.vob")), old);
  EXPECT_EQ(ReadLogical(dir.Path("title.vob")), fresh);
  EXPECT_EQ(ReadAll(dir.Bytes("title.vob.cfx.new")), "someone's");
  EXPECT_EQ(ListedSegments(dir.Path("title.vob")).size(), 3u);
}

// An object opened to read changes nothing on disk, whatever it is asked.
TEST(SegmentedSafety, OpeningToReadChangesNothing) {
  TempFolder dir;
  WriteAll(dir.Bytes("plain"), Pattern(2000));
  MakeSegmented(dir.Path("seg"), Pattern(2000), 1000);  // a full last segment
  for (const char* name : {"plain", "seg"}) {
    SCOPED_TRACE(name);
    auto before = Snapshot(dir);
    MFiles file;
    ASSERT_EQ(file.FOpen(dir.Path(name), MFile::file_read_binary), 0);
    file.SetMaxFileSize(1000);
    EXPECT_EQ(file.FSeek64(5000, MFile::file_seek_begin), -1);
    EXPECT_EQ(file.FSeek64(1, MFile::file_seek_end), -1);
    ASSERT_EQ(file.FSeek64(2000, MFile::file_seek_begin), 2000);
    EXPECT_EQ(file.FWrite("x", 1), -1);
    file.FClose();
    EXPECT_EQ(Snapshot(dir), before);
  }
}

// The info file holds only what its reader reads back: a name that starts
// with '#' is written so that it does not; a name with a line end is
// refused before a byte is written; the longest path the system allows is read.
TEST(SegmentedSafety, WhatTheInfoFileCannotHoldIsNeverWritten) {
  TempFolder dir;
  std::filesystem::current_path(dir.Bytes(""));
  std::string data = Pattern(1500);
  MakeSegmented(MString(u"#1.vob"_u16), data, 1000);
  EXPECT_EQ(ReadAll(dir.Bytes("#1.vob")), "# Brevander c_files \r\n./#1.vob.cfx.0\r\n./#1.vob.cfx.1\r\n");
  EXPECT_EQ(ReadLogical(MString(u"#1.vob"_u16)), data);
  MFiles broken;
  MString lineEnd = dir.Path("a\nb.vob");
  ASSERT_EQ(broken.FOpen(lineEnd, MFile::file_create_binary), 0);
  broken.SetMaxFileSize(1000);
  ASSERT_EQ(broken.FWrite(data.data(), 900), 900);
  EXPECT_EQ(broken.FWrite(data.data(), 200), -1);
  EXPECT_EQ(broken.FSeek64(5000, MFile::file_seek_begin), -1);
  broken.FClose();
  EXPECT_EQ(ReadAll(dir.Bytes("a\nb.vob")), data.substr(0, 900));
  EXPECT_FALSE(std::filesystem::exists(dir.Bytes("a\nb.vob.cfx.0")));
  // Paths up to the longest the system takes (4095 bytes: the pending info
  // file's name), through folders of 200 bytes.
  std::string path = dir.Bytes("");
  std::string folder(200, 'd');
  while (4087 - path.size() > 240) {
    path += folder + "/";
    std::filesystem::create_directory(path);
  }
  path += std::string(4087 - path.size(), 'n');
  MString logical;
  logical.ImportASCII(path.c_str(), -1);
  MakeSegmented(logical, data, 1000);
  EXPECT_EQ(ReadLogical(logical), data);
  std::filesystem::current_path("/");
}

// FDelete removes the segments of a closed object too; a create mode on a
// segmented file leaves one empty segment.
TEST(SegmentedSafety, DeletingAndMakingAnewLeaveNothingBehind) {
  TempFolder dir;
  MakeSegmented(dir.Path("f"), Pattern(2500), 1000);
  MFiles file;
  ASSERT_EQ(file.FOpen(dir.Path("f"), MFile::file_create_binary), 0);
  EXPECT_EQ(file.GetCount(), 1);
  EXPECT_EQ(file.GetSize(), 0);
  ASSERT_EQ(file.FClose(), 0);
  EXPECT_EQ(Snapshot(dir).size(), 2u) << "the info file and one segment";
  EXPECT_EQ(ListedSegments(dir.Path("f")).size(), 1u);
  MakeSegmented(dir.Path("g"), Pattern(2500), 1000);
  MFiles closed;
  ASSERT_EQ(closed.FOpen(dir.Path("g"), MFile::file_read_binary), 0);
  ASSERT_EQ(closed.FClose(), 0);
  EXPECT_EQ(closed.FDelete(), 0);
  EXPECT_EQ(Snapshot(dir).size(), 2u) << "only f's files";
}
