// Sweeps over the file paths that the other sweeps leave out: a segmented
// file opened through its info file and read, grown by a seek, moved to
// another folder and deleted; the read-ahead after a seek; the settings
// file; the removal of a folder tree; the file query. Each operation runs
// again and again with its 1st, 2nd, 3rd... system call failed until it
// runs untouched. Every run ends with the operation's documented result, no
// descriptor, block or transfer record leaked, and no byte lost of what was
// on disk (or reported written) before.
#include <VantoroBasicUtils/files/AsyncReadBuffer.h>
#include <VantoroBasicUtils/files/CFileQuery.h>
#include <VantoroBasicUtils/files/MDirectory.h>
#include <VantoroBasicUtils/files/MFileUniv.h>
#include <VantoroBasicUtils/files/MFiles.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <set>
#include <sstream>
#include <string>

#include "platform/FaultInjection.h"
#include "platform/internal/SettingsFile.h"
#include "support/LogicalFile.h"
#include "support/TempFolder.h"

using namespace vbu::literals;

namespace {

constexpr int kError = EIO;
constexpr int kLimit = 600;

std::string Narrow(const MString& text) {
  std::u16string wide = Text(text);
  return std::string(wide.begin(), wide.end());
}

// A segmented file of three segments under "title.vob" in `dir`: 2500
// bytes of `data` with a limit of 1000.
void MakeSegmented(const TempFolder& dir, const std::string& data) {
  MFiles file;
  ASSERT_EQ(file.FOpen(dir.Path("title.vob"), MFile::file_create_binary), 0);
  file.SetMaxFileSize(1000);
  for (std::size_t at = 0; at < data.size(); at += 500) ASSERT_EQ(file.FWrite(data.data() + at, 500), 500);
  ASSERT_EQ(file.FClose(), 0);
  ASSERT_EQ(ListedSegments(dir.Path("title.vob")).size(), 3u);
}

// Every segment the info file lists is there, and the logical file reads
// as `data` (or, with `prefix`, begins with it).
void ExpectWhole(const MString& name, const std::string& data, const StSysCallFaults& faults, bool prefix = false) {
  for (MString& segment : ListedSegments(name)) {
    EXPECT_TRUE(MFile::FileExist(segment)) << faults.Describe();
  }
  std::string content = ReadLogical(name);
  if (prefix) {
    ASSERT_GE(content.size(), data.size()) << faults.Describe();
    EXPECT_TRUE(content.compare(0, data.size(), data) == 0) << faults.Describe();
  } else {
    EXPECT_TRUE(content == data) << faults.Describe() << " read " << content.size();
  }
}

// The lines of the info file "title.vob" in `dir`, its header left out.
std::vector<std::string> InfoLines(const TempFolder& dir) {
  std::vector<std::string> lines;
  std::istringstream text(ReadAll(dir.Bytes("title.vob")));
  for (std::string line; std::getline(text, line);) {
    if (!line.empty() && line[0] != '#') lines.push_back(line);
  }
  return lines;
}

// One row: a name, the set-up (not swept), and the operation under the
// failure, which checks its own result; it is given the path of
// "title.vob" in its folder, made before the sweep counts.
struct PathSweep {
  const char* name;
  std::function<void(const TempFolder&)> setUp;
  std::function<void(const TempFolder&, const MString& titleVob, StSysCallFaults&)> run;
  int minimumCalls;  // the untouched operation makes more calls than this
};

const std::string kData = Pattern(2500, 11);

const PathSweep kSweeps[] = {
    {"SegmentedOpensThroughItsInfoFileAndReads", [](const TempFolder& dir) { MakeSegmented(dir, kData); },
     [](const TempFolder&, const MString& name, StSysCallFaults& faults) {
       std::string got;
       {
         MFiles file;
         int opened = file.FOpen(name, MFile::file_read_binary);
         ASSERT_TRUE(opened == 0 || opened == -1) << faults.Describe();
         if (opened == 0) {
           char piece[700];
           for (;;) {
             int n = file.FRead(piece, sizeof piece);
             if (n <= 0) {
               if (n == 0) {
                 EXPECT_EQ(got.size(), kData.size()) << faults.Describe();
               }
               break;
             }
             got.append(piece, static_cast<std::size_t>(n));
             ASSERT_LE(got.size(), kData.size()) << faults.Describe();
           }
           if (!faults.Fired()) {
             EXPECT_EQ(file.GetCount(), 3);
           }
         }
         file.FClose();
       }
       EXPECT_TRUE(got == kData.substr(0, got.size())) << faults.Describe();
       faults.Pause();
       ExpectWhole(name, kData, faults);
     },
     10},
    {"SegmentedGrowsByASeekBehindItsEnd", [](const TempFolder& dir) { MakeSegmented(dir, kData); },
     [](const TempFolder&, const MString& name, StSysCallFaults& faults) {
       long long at = -2;
       {
         MFiles file;
         if (file.FOpen(name, MFile::file_update_binary) == 0) {
           file.SetMaxFileSize(1000);
           at = file.FSeek64(4200, MFile::file_seek_begin);
           EXPECT_TRUE(at == 4200 || at == -1) << at << " " << faults.Describe();
           if (at == 4200) {
             int written = file.FWrite("end", 3);
             EXPECT_TRUE(written == 3 || written < 0) << faults.Describe();
           }
         }
         file.FClose();
       }
       faults.Pause();
       // What was there before is there still, whatever failed.
       ExpectWhole(name, kData, faults, true);
       if (!faults.Fired()) {
         EXPECT_EQ(ReadLogical(name).size(), 4203u);
       }
     },
     20},
    {"SegmentedMovesToAnotherFolder",
     [](const TempFolder& dir) {
       MakeSegmented(dir, kData);
       std::filesystem::create_directory(dir.Bytes("moved"));
     },
     [](const TempFolder& dir, const MString& name, StSysCallFaults& faults) {
       faults.Pause();
       MString moved = dir.Path("moved");
       const std::vector<std::string> before = InfoLines(dir);
       faults.Resume();
       int result = -1;
       {
         MFiles file;
         if (file.FOpen(name, MFile::file_read_binary) != 0) return;
         result = file.ChangeAllFilesDirectory(moved);
         EXPECT_TRUE(result == 0 || result == -1) << faults.Describe();
       }
       faults.Pause();
       // The info file is the old one, whole, or the new one, whole (no
       // file moves: its lines name the other folder).
       const std::vector<std::string> after = InfoLines(dir);
       ASSERT_EQ(after.size(), before.size()) << faults.Describe();
       for (std::size_t i = 0; i < after.size(); ++i) {
         bool now = after[i].rfind(dir.Bytes("moved/"), 0) == 0;
         EXPECT_TRUE(result == -1 ? after[i] == before[i] : now) << faults.Describe() << " " << after[i];
       }
     },
     5},
    {"SegmentedDeletesEveryPart", [](const TempFolder& dir) { MakeSegmented(dir, kData); },
     [](const TempFolder& dir, const MString& name, StSysCallFaults& faults) {
       {
         MFiles file;
         if (file.FOpen(name, MFile::file_read_binary) == 0) {
           EXPECT_EQ(file.FDelete(), 0) << faults.Describe();
         }
       }
       faults.Pause();
       if (!faults.Fired()) {
         EXPECT_FALSE(std::filesystem::exists(dir.Bytes("title.vob")));
         EXPECT_FALSE(std::filesystem::exists(dir.Bytes("title.vob.cfx.0")));
       }
     },
     5},
    {"ReadAheadAfterASeek",
     [](const TempFolder& dir) { WriteAll(dir.Bytes("title.vob"), Pattern(6 * 4096 + 700, 12)); },
     [](const TempFolder& dir, const MString&, StSysCallFaults& faults) {
       faults.Pause();
       const std::string bytes = Pattern(6 * 4096 + 700, 12);
       MFileUniv file;
       ASSERT_EQ(file.FOpen(dir.Path("title.vob"), MFile::file_overlapped_read), 0);
       faults.Resume();
       {
         AsyncReadBuffer ahead;
         char piece[3000];
         // Forward from the start, then a seek forward and one back: the
         // blocks are reused, and every byte handed out is the file's.
         for (long long start : {0LL, 3 * 4096LL, 4096LL}) {
           int init = ahead.InitReadBuffer(&file, start, 4096, 0);
           if (init != 0) {
             // (A size that cannot be had reads as nothing to read.)
             EXPECT_TRUE(init == AsyncReadBuffer::kOutOfMemory || init == AsyncReadBuffer::kReadFailed ||
                         init == AsyncReadBuffer::kNothingToRead)
                 << init << " " << faults.Describe();
             break;
           }
           long long at = start;
           for (int i = 0; i < 4; ++i) {
             int n = ahead.ReadBuffer(at, piece, sizeof piece);
             ASSERT_GE(n, -1) << faults.Describe();
             if (n <= 0) break;
             EXPECT_EQ(std::string(piece, static_cast<std::size_t>(n)),
                       bytes.substr(static_cast<std::size_t>(at), static_cast<std::size_t>(n)))
                 << faults.Describe() << " at " << at;
             at += n;
           }
         }
         file.FClose();
       }
       faults.Pause();
     },
     8},
    {"SettingsFileIsOldOrNew",
     [](const TempFolder& dir) { WriteAll(dir.Bytes("app.ini"), "[Audio]\r\nBitrate=128\r\n; note\r\n[Video]\r\nA=1\r\n"); },
     [](const TempFolder& dir, const MString&, StSysCallFaults& faults) {
       faults.Pause();
       const std::string before = ReadAll(dir.Bytes("app.ini"));
       const std::string path = dir.Bytes("app.ini");
       std::u16string wide(path.begin(), path.end());
       faults.Resume();
       uint32_t error = vbu::platform::WriteSetting(wide.c_str(), u"Audio", u"Bitrate", u"256");
       std::u16string value;
       bool read = vbu::platform::ReadSetting(wide.c_str(), u"Video", u"A", &value);
       faults.Pause();
       const std::string after = ReadAll(path);
       if (error != 0) {
         // Whichever call failed (open, read, write, flush, close, rename, chmod), its code.
         EXPECT_EQ(error, static_cast<uint32_t>(kError)) << faults.Describe();
         EXPECT_EQ(after, before) << faults.Describe();
       } else {
         EXPECT_EQ(after, "[Audio]\r\nBitrate=256\r\n; note\r\n[Video]\r\nA=1\r\n") << faults.Describe();
       }
       // A read that fails reads as a missing key, never as another value.
       if (read) {
         EXPECT_TRUE(value == u"1") << faults.Describe();
       }
       // No new file is left beside the old one.
       int files = 0;
       for (auto& entry : std::filesystem::directory_iterator(std::filesystem::path(path).parent_path())) {
         files += entry.is_regular_file();
       }
       EXPECT_EQ(files, 1) << faults.Describe();
     },
     6},
    {"FolderTreeDeletion",
     [](const TempFolder& dir) {
       std::filesystem::create_directories(dir.Bytes("tree/a/b"));
       std::filesystem::create_directories(dir.Bytes("tree/c"));
       WriteAll(dir.Bytes("tree/one"), "1");
       WriteAll(dir.Bytes("tree/a/two"), "22");
       WriteAll(dir.Bytes("tree/a/b/three"), "333");
       std::filesystem::create_symlink(dir.Bytes("outside"), dir.Bytes("tree/c/link"));
       WriteAll(dir.Bytes("outside"), "keep");
     },
     [](const TempFolder& dir, const MString&, StSysCallFaults& faults) {
       faults.Pause();
       MString tree = dir.Path("tree");
       Hearing hearing;
       faults.Resume();
       int result = DeleteDirectory(tree);
       faults.Pause();
       ASSERT_TRUE(result == 0 || result == -1) << faults.Describe();
       if (result == 0) {
         EXPECT_FALSE(std::filesystem::exists(dir.Bytes("tree"))) << faults.Describe();
       } else {
         EXPECT_GE(hearing.messages.size(), 1u) << "the user is told; " << faults.Describe();
       }
       // A link is removed, never followed; files left keep their bytes.
       EXPECT_EQ(ReadAll(dir.Bytes("outside")), "keep") << faults.Describe();
       if (std::filesystem::exists(dir.Bytes("tree/a/b/three"))) {
         EXPECT_EQ(ReadAll(dir.Bytes("tree/a/b/three")), "333");
       }
     },
     10},
    {"FileQueryListsOnlyFilesThatAreThere",
     [](const TempFolder& dir) {
       std::filesystem::create_directories(dir.Bytes("in/a/b"));
       WriteAll(dir.Bytes("in/one"), "1");
       WriteAll(dir.Bytes("in/a/two"), "2");
       WriteAll(dir.Bytes("in/a/b/three"), "3");
       std::filesystem::create_directory_symlink(dir.Bytes("in/a"), dir.Bytes("in/a/b/loop"));
     },
     [](const TempFolder& dir, const MString&, StSysCallFaults& faults) {
       faults.Pause();
       MString in = dir.Path("in");
       const std::set<std::string> files = {dir.Bytes("in/a/b/three"), dir.Bytes("in/a/two"), dir.Bytes("in/one")};
       faults.Resume();
       std::vector<std::string> listed;
       {
         CFileQuery query(in);
         faults.Pause();
         for (unsigned long i = 1; i <= query.GetCount(); ++i) {
           MString* path = nullptr;
           query.FetchItemAt(i, &path);
           listed.push_back(Narrow(*path));
         }
       }
       // A subset of the files, each once, no folder; all of them when nothing failed.
       std::set<std::string> seen(listed.begin(), listed.end());
       EXPECT_EQ(seen.size(), listed.size()) << faults.Describe();
       for (const std::string& path : listed) {
         EXPECT_TRUE(files.count(path)) << path << " " << faults.Describe();
       }
       if (!faults.Fired()) {
         EXPECT_EQ(seen, files);
       }
     },
     8},
};

class PathSweepTest : public ::testing::TestWithParam<PathSweep> {};

void PrintTo(const PathSweep& row, std::ostream* out) { *out << row.name; }

}  // namespace

TEST_P(PathSweepTest, EveryFailingCallEndsWithTheDocumentedResult) {
  const PathSweep& row = GetParam();
  int runs = SweepSysCallFaults(kError, [&](StSysCallFaults& faults) {
    faults.Pause();
    TempFolder dir;
    row.setUp(dir);
    const MString name = dir.Path("title.vob");  // the test's own conversion is not swept
    LeakProbe probe;
    faults.Resume();
    row.run(dir, name, faults);
    faults.Pause();
    ExpectNothingLeaked(faults, probe);
  });
  EXPECT_LT(runs, kLimit);
  EXPECT_GT(runs, row.minimumCalls) << "the operation makes more calls than that";
}

INSTANTIATE_TEST_SUITE_P(Paths, PathSweepTest, ::testing::ValuesIn(kSweeps),
                         [](const auto& info) { return std::string(info.param.name); });
