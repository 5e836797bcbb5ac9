// The segmented file loses no data whatever the host does, where the random
// run against a model (SegmentedModelTest.cpp) does not reach: a cut info
// file, names in use by other files, lines the info file cannot hold, and
// deleting or making anew a segmented file.
#include <VantoroBasicUtils/files/CFileQuery.h>
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

// An info file cut inside its last line names no file: nothing of that
// name is made. (Segments gone behind the object's back are the model's.)
TEST(SegmentedSafety, ACutLastLineNamesNothingThatIsMade) {
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

// The info file holds only what its reader reads back: a name that starts
// with '#' is written so that it does not; a name with a line end is
// refused before a byte is written; the longest path the system allows is read.
#if !defined(_WIN32)  // names are UTF-16 there: no name holds a byte that is not UTF-8
TEST(SegmentedSafety, WhatTheInfoFileCannotHoldIsNeverWritten) {
  TempFolder dir;
  std::filesystem::current_path(dir.Bytes(""));
  std::string data = Pattern(1500);
  MakeSegmented(MString(u"#1.vob"_u16), data, 1000);
  EXPECT_EQ(ReadAll(dir.Bytes("#1.vob")), "# Brevander c_files \r\n./#1.vob.cfx.0\r\n./#1.vob.cfx.1\r\n");
  EXPECT_EQ(ReadLogical(MString(u"#1.vob"_u16)), data);
  // A name that is not UTF-8, as a query lists it: its lines are its own bytes.
  WriteAll(dir.Bytes("bad\xFF.vob"), "");
  MString here = dir.Path("");
  CFileQuery listed(here);
  MString* odd = nullptr;
  for (unsigned long i = 1; i <= listed.GetCount(); ++i) {
    MString* path = nullptr;
    listed.FetchItemAt(static_cast<long>(i), &path);
    if (path->GetLength() > 5 && (*path)[path->GetLength() - 5] == 0xDCFF) odd = path;  // the byte 0xFF
  }
  ASSERT_NE(odd, nullptr);
  MakeSegmented(*odd, data, 1000);
  EXPECT_EQ(ReadLogical(*odd), data);
  EXPECT_NE(ReadAll(dir.Bytes("bad\xFF.vob")).find("/bad\xFF.vob.cfx.1\r\n"), std::string::npos);
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
#endif

// FDelete removes the segments of an open or a closed object; a create mode on a
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
  MFiles open;  // and of an open one
  ASSERT_EQ(open.FOpen(dir.Path("f"), MFile::file_read_binary), 0);
  EXPECT_EQ(open.FDelete(), 0);
  EXPECT_EQ(open.GetCount(), 0);
  EXPECT_TRUE(Snapshot(dir).empty());
}
