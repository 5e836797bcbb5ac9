// Sweeps: each operation of the table runs again and again with its 1st,
// 2nd, 3rd... system call failed, until it runs through untouched; those
// that transfer do so on both transfer routes. Every run ends with the
// operation's documented result (or its success, where the failed call was
// one it may do without), shows no more user messages than the operation
// has, leaks no descriptor, block or transfer record, and loses no byte of
// what was on disk (or reported written) before.
#include <VantoroBasicUtils/files/AsyncReadBuffer.h>
#include <VantoroBasicUtils/files/CFileQuery.h>
#include <VantoroBasicUtils/files/MDirectory.h>
#include <VantoroBasicUtils/files/MFileUniv.h>
#include <VantoroBasicUtils/files/MFiles.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <limits>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "platform/FaultInjection.h"
#include "platform/internal/SettingsFile.h"
#include "support/LogicalFile.h"
#include "support/TempFolder.h"

using namespace vbu::literals;

namespace {

// The errno of every failed call: one that no operation can take for a
// condition of its own (end of file, a full disk).
constexpr int kError = EIO;
// More runs than any operation here has calls: reaching it is a failure.
constexpr int kLimit = 600;
constexpr std::size_t kAnyMessages = std::numeric_limits<std::size_t>::max();

std::u16string SystemText(int error) {
  std::string text = std::strerror(error);
  return std::u16string(text.begin(), text.end());
}

std::string Narrow(const MString& text) {
  std::u16string wide = Text(text);
  return std::string(wide.begin(), wide.end());
}

// Sector-aligned memory, as unbuffered transfers need.
struct Sectors {
  // aligned_alloc takes whole multiples of the alignment.
  explicit Sectors(std::size_t bytes)
      : data(static_cast<char*>(std::aligned_alloc(4096, (bytes + 4095) / 4096 * 4096))) {}
  ~Sectors() { std::free(data); }
  char* data;
};

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
void ExpectWhole(const MString& name, const std::string& data, bool prefix = false) {
  for (MString& segment : ListedSegments(name)) EXPECT_TRUE(MFile::FileExist(segment));
  std::string content = ReadLogical(name);
  if (prefix) {
    ASSERT_GE(content.size(), data.size());
    EXPECT_TRUE(content.compare(0, data.size(), data) == 0);
  } else {
    EXPECT_TRUE(content == data) << "read " << content.size();
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

// Writes `bytes` to `path` unless an earlier run of the sweep did: for
// inputs that no run changes.
void WriteOnce(const std::string& path, const std::string& bytes) {
  if (!std::filesystem::exists(path)) WriteAll(path, bytes);
}

// What a row's operation is given: its folder, the path of "title.vob" in
// it (converted before the faults count), the faults (counting when it is
// called) and what the user was told.
struct Swept {
  const TempFolder& dir;
  const MString& name;
  StSysCallFaults& faults;
  Hearing& hearing;
};

// Opens "title.vob", which holds `bytes`, for overlapped reads before the
// faults count, and reads it through a read-ahead of `blockSize` from each
// of `starts`, at most `reads` pieces from each. Every byte handed out is
// the file's at its place (a read that ended with an error after it started
// never hands out its block's stale bytes), and a piece of 0 comes only at
// the end of the file.
void ReadAhead(Swept& r, const std::string& bytes, std::initializer_list<long long> starts, long blockSize, int reads) {
  r.faults.Pause();
  MFileUniv file;
  ASSERT_EQ(file.FOpen(r.name, MFile::file_overlapped_read), 0);
  r.faults.Resume();
  AsyncReadBuffer ahead;
  for (long long start : starts) {
    int init = ahead.InitReadBuffer(&file, start, blockSize, 0);
    if (init != 0) {
      // A size that cannot be had reads as nothing to read.
      EXPECT_TRUE(init == AsyncReadBuffer::kOutOfMemory || init == AsyncReadBuffer::kReadFailed ||
                  init == AsyncReadBuffer::kNothingToRead)
          << init;
      break;
    }
    char piece[3000];
    long long at = start;
    for (int i = 0; i < reads && at <= static_cast<long long>(bytes.size()); ++i) {
      int n = ahead.ReadBuffer(at, piece, sizeof piece);
      EXPECT_GE(n, -1);
      if (n <= 0) {
        EXPECT_TRUE(n < 0 || at == static_cast<long long>(bytes.size())) << "an end before the file's at " << at;
        break;
      }
      EXPECT_TRUE(std::string(piece, static_cast<std::size_t>(n)) == bytes.substr(static_cast<std::size_t>(at), n))
          << "at " << at;
      at += n;
    }
  }
  // No read may be under way when the blocks go: the close waits for it.
  file.FClose();
}

const std::vector<vbu::TransferRoute> kBothRoutes = {vbu::TransferRoute::kSystemQueue, vbu::TransferRoute::kThreads};
const std::vector<vbu::TransferRoute> kProcessRoute = {};

// One swept operation.
struct SweepRow {
  const char* name;
  // The routes it is swept on; kProcessRoute: the process's own.
  std::vector<vbu::TransferRoute> routes;
  // A fresh folder for each run, or one for the whole sweep.
  bool folderPerRun;
  std::function<void(const TempFolder&)> setUp;  // not swept
  std::function<void(Swept&)> run;               // checks its own result
  int minimumRuns;                               // the untouched operation makes more calls than this
  std::size_t maxMessages = kAnyMessages;
  // Fails every write from the nth on with ENOSPC (a disk that fills up),
  // instead of the nth call of any kind with kError.
  bool diskFull = false;
};

const std::string kBefore = Pattern(6144, 3);

// FOpen in `mode`: 0, or -1 with the failed call's code and the object
// left closed.
SweepRow OpenRow(const char* name, MFile::file_open_t mode) {
  return {name,
          kBothRoutes,
          false,
          [](const TempFolder& dir) { WriteAll(dir.Bytes("title.vob"), kBefore); },
          [mode](Swept& r) {
            {
              MFileUniv file;
              int result = file.FOpen(r.name, mode);
              ASSERT_TRUE(result == 0 || result == -1);
              if (result == -1) {
                EXPECT_EQ(GetLastError(), static_cast<uint32_t>(kError));
                EXPECT_TRUE(r.faults.Fired());
                EXPECT_FALSE(file.IsOverlapped()) << "a failed open leaves the object closed";
              } else {
                EXPECT_EQ(file.IsOverlapped(), mode >= MFile::file_overlapped_create);
              }
              file.FClose();
            }
            r.faults.Pause();
            const std::string after = ReadAll(r.dir.Bytes("title.vob"));
            // An open that empties the file may have done so before its failure.
            const bool empties = mode == MFile::file_create_binary || mode == MFile::file_overlapped_create;
            if (!empties || !after.empty()) {
              EXPECT_TRUE(after == kBefore);
            }
          },
          1,
          0};
}

// The second source of a join; the first ends at 5008 (rounded to 16 bytes).
const std::string kFirst = Pattern(5000, 7);
const std::string kSecond = Pattern(4 * 32768 + 14464, 8);

// A join with several transfers in flight on both legs (buffers of 32 KiB in
// slots of 8 KiB; the second source takes five buffers), swept over the
// second source. After ConcatFile no transfer is under way, and every byte
// that progress reported is in the destination.
void Join(Swept& r) {
  r.faults.Pause();
  int64_t offset = 0;
  {
    MFileUniv disc;
    ASSERT_EQ(disc.FOpen(r.dir.Path("disc.iso"), MFile::file_overlapped_create), 0);
    ASSERT_EQ(disc.ConcatInitialize(16, 0), 0);
    bool cancelled = false;
    MString path = r.dir.Path("first");
    ASSERT_EQ(disc.ConcatFile(path, 0, cancelled, 0), 0);
    path = r.dir.Path("second");
    r.hearing.advanced = 0;
    const std::size_t requests = vbu::platform::TransferRequestsInUse();
    r.faults.Resume();
    long result = disc.ConcatFile(path, 0, cancelled, 0);
    r.faults.Pause();
    EXPECT_EQ(vbu::platform::TransferRequestsInUse(), requests) << "a transfer outlived the call";
    const OVERLAPPED& written = disc.GetConcatInfo().mWriteInfo.mOverlapped;
    offset = static_cast<int64_t>((uint64_t{written.OffsetHigh} << 32) | written.Offset);
    if (result == 0) {
      EXPECT_EQ(offset, 5008 + static_cast<int64_t>(kSecond.size()));
      EXPECT_TRUE(r.hearing.messages.empty());
    } else {
      EXPECT_TRUE(r.faults.Fired()) << "failed untouched";
      // -1, or the code of a size that could not be had.
      EXPECT_TRUE(result == -1 || result == kError) << result;
      // At most the system's text for the failure, as an error.
      if (!r.hearing.messages.empty()) {
        EXPECT_EQ(r.hearing.messages[0], 26000);
        EXPECT_EQ(r.hearing.texts[0], SystemText(r.faults.Error()));
        EXPECT_EQ(r.hearing.sources[0], nullptr) << "the library's own messages carry no source";
      }
    }
    // Progress counts whole buffers of 16 units, written in order.
    if (offset < 5008 + static_cast<int64_t>(kSecond.size())) {
      EXPECT_EQ(r.hearing.advanced * 2048, offset - 5008);
    }
    disc.FClose();
  }
  // What the run wrote before it stopped: the first source whole, then the
  // beginning of the second that the offset and progress count.
  const std::string image = ReadAll(r.dir.Bytes("disc.iso"));
  ASSERT_GE(image.size(), 5008u);
  EXPECT_TRUE(image.substr(0, 5008) == kFirst + std::string(8, '\0'));
  ASSERT_GE(static_cast<int64_t>(image.size()), offset);
  EXPECT_TRUE(image.substr(5008, static_cast<std::size_t>(offset - 5008)) == kSecond.substr(0, offset - 5008));
}

void MakeJoinSources(const TempFolder& dir) {
  WriteOnce(dir.Bytes("first"), kFirst);
  WriteOnce(dir.Bytes("second"), kSecond);
}

const std::string kData = Pattern(2500, 11);
const std::string kWhole = Pattern(5 * 4096 + 1000, 6);
const std::string kSeeked = Pattern(6 * 4096 + 700, 12);

void MakeSegmentedData(const TempFolder& dir) { MakeSegmented(dir, kData); }

const SweepRow kRows[] = {
    OpenRow("OpenReadBinary", MFile::file_read_binary),
    OpenRow("OpenUpdateText", MFile::file_update_text),
    OpenRow("OpenCreateBinary", MFile::file_create_binary),
    OpenRow("OpenOverlappedRead", MFile::file_overlapped_read),
    OpenRow("OpenOverlappedUpdate", MFile::file_overlapped_update),
    OpenRow("OpenOverlappedCreate", MFile::file_overlapped_create),
    // A write of sectors 1 and 2, then a read of sectors 0 to 2: each whole,
    // or nothing with the error; the bytes around the write are kept.
    {"OverlappedWriteThenRead", kBothRoutes, false,
     [](const TempFolder& dir) { WriteAll(dir.Bytes("title.vob"), Pattern(4 * 2048, 4)); },
     [](Swept& r) {
       r.faults.Pause();
       const std::string before = Pattern(4 * 2048, 4);
       const std::string sectors = Pattern(2 * 2048, 5);
       Sectors memory(2 * 2048);
       std::memcpy(memory.data, sectors.data(), sectors.size());
       Sectors read(3 * 2048);
       bool written = false;
       {
         MFileUniv file;
         ASSERT_EQ(file.FOpen(r.name, MFile::file_overlapped_update), 0);
         r.faults.Resume();
         MEvent done;
         OVERLAPPED record;
         uint32_t started = file.FWriteOverlapped(2048, memory.data, 4096, &record, &done);
         EXPECT_EQ(started, 0u) << "a start never fails for a system's reason";
         ASSERT_EQ(MFileUniv::FWaitOverlappedCompletion(&done, 30), 0u);
         written = record.Internal == 0;
         EXPECT_EQ(record.InternalHigh, written ? 4096u : 0u);
         if (!written) {
           EXPECT_EQ(record.Internal, static_cast<uintptr_t>(kError));
         }

         std::memset(memory.data, 0, 2 * 2048);
         started = file.FReadOverlapped(0, read.data, 3 * 2048, &record, &done);
         EXPECT_EQ(started, 0u);
         ASSERT_EQ(MFileUniv::FWaitOverlappedCompletion(&done, 30), 0u);
         if (record.Internal == 0) {
           EXPECT_EQ(record.InternalHigh, 3u * 2048);
           EXPECT_TRUE(std::string(read.data, 2048) == before.substr(0, 2048));
           const std::string middle(read.data + 2048, 4096);
           // A write whose wait failed may still have reached the disk; it never mixes the two.
           EXPECT_TRUE(middle == sectors || (!written && middle == before.substr(2048, 4096)));
         } else {
           EXPECT_EQ(record.Internal, static_cast<uintptr_t>(kError));
           EXPECT_EQ(record.InternalHigh, 0u);
         }
         file.FClose();
       }
       r.faults.Pause();
       const std::string after = ReadAll(r.dir.Bytes("title.vob"));
       EXPECT_TRUE(after.substr(0, 2048) == before.substr(0, 2048)) << "in front of the write";
       EXPECT_TRUE(after.substr(6144) == before.substr(6144)) << "behind the write";
       if (written) {
         EXPECT_TRUE(after.substr(2048, 4096) == sectors);
       }
     },
     2,
     // A start that fails tells it: the read a retry and its failure, the write its failure.
     3},
    // A read-ahead in blocks of 16 KiB that go as four transfers each, the
    // block after next read into each quarter as the consumer passes it: it
    // ends cleanly, and hands out only the file's bytes.
    {"ReadAheadToTheEnd", kBothRoutes, false, [](const TempFolder& dir) { WriteOnce(dir.Bytes("title.vob"), kWhole); },
     [](Swept& r) { ReadAhead(r, kWhole, {0}, 16384, 1000); }, 3, 2},
    // Forward from the start, then a seek forward and one back: the blocks
    // are reused, and every byte handed out is the file's.
    {"ReadAheadAfterASeek", kProcessRoute, false,
     [](const TempFolder& dir) { WriteOnce(dir.Bytes("title.vob"), kSeeked); },
     [](Swept& r) {
       ReadAhead(r, kSeeked, {0, 3 * 4096, 4096}, 4096, 4);
     },
     8},
    // Every call of any kind failed with kError.
    {"Join", kBothRoutes, false, MakeJoinSources, Join, 20, 1},
    // The disk's own refusal reaches the table only on the layer's threads.
    {"JoinOnAFullDisk", {vbu::TransferRoute::kThreads}, false, MakeJoinSources, Join, 9, 1, true},
    {"SegmentedOpensThroughItsInfoFileAndReads", kProcessRoute, true, MakeSegmentedData,
     [](Swept& r) {
       std::string got;
       {
         MFiles file;
         int opened = file.FOpen(r.name, MFile::file_read_binary);
         ASSERT_TRUE(opened == 0 || opened == -1);
         if (opened == 0) {
           char piece[700];
           for (;;) {
             int n = file.FRead(piece, sizeof piece);
             if (n <= 0) {
               if (n == 0) {
                 EXPECT_EQ(got.size(), kData.size());
               }
               break;
             }
             got.append(piece, static_cast<std::size_t>(n));
             ASSERT_LE(got.size(), kData.size());
           }
           if (!r.faults.Fired()) {
             EXPECT_EQ(file.GetCount(), 3);
           }
         }
         file.FClose();
       }
       EXPECT_TRUE(got == kData.substr(0, got.size()));
       r.faults.Pause();
       ExpectWhole(r.name, kData);
     },
     10},
    {"SegmentedGrowsByASeekBehindItsEnd", kProcessRoute, true, MakeSegmentedData,
     [](Swept& r) {
       {
         MFiles file;
         if (file.FOpen(r.name, MFile::file_update_binary) == 0) {
           file.SetMaxFileSize(1000);
           long long at = file.FSeek64(4200, MFile::file_seek_begin);
           EXPECT_TRUE(at == 4200 || at == -1) << at;
           if (at == 4200) {
             int written = file.FWrite("end", 3);
             EXPECT_TRUE(written == 3 || written < 0);
           }
         }
         file.FClose();
       }
       r.faults.Pause();
       // What was there before is there still, whatever failed.
       ExpectWhole(r.name, kData, true);
       if (!r.faults.Fired()) {
         EXPECT_EQ(ReadLogical(r.name).size(), 4203u);
       }
     },
     20},
    {"SegmentedMovesToAnotherFolder", kProcessRoute, true,
     [](const TempFolder& dir) {
       MakeSegmented(dir, kData);
       std::filesystem::create_directory(dir.Bytes("moved"));
     },
     [](Swept& r) {
       r.faults.Pause();
       MString moved = r.dir.Path("moved");
       const std::vector<std::string> before = InfoLines(r.dir);
       r.faults.Resume();
       int result = -1;
       {
         MFiles file;
         if (file.FOpen(r.name, MFile::file_read_binary) != 0) return;
         result = file.ChangeAllFilesDirectory(moved);
         EXPECT_TRUE(result == 0 || result == -1);
       }
       r.faults.Pause();
       // The info file is the old one, whole, or the new one, whole (no
       // file moves: its lines name the other folder).
       const std::vector<std::string> after = InfoLines(r.dir);
       ASSERT_EQ(after.size(), before.size());
       for (std::size_t i = 0; i < after.size(); ++i) {
         bool now = after[i].rfind(r.dir.Bytes("moved/"), 0) == 0;
         EXPECT_TRUE(result == -1 ? after[i] == before[i] : now) << after[i];
       }
     },
     5},
    {"SegmentedDeletesEveryPart", kProcessRoute, true, MakeSegmentedData,
     [](Swept& r) {
       {
         MFiles file;
         if (file.FOpen(r.name, MFile::file_read_binary) == 0) {
           EXPECT_EQ(file.FDelete(), 0);
         }
       }
       r.faults.Pause();
       if (!r.faults.Fired()) {
         EXPECT_FALSE(std::filesystem::exists(r.dir.Bytes("title.vob")));
         EXPECT_FALSE(std::filesystem::exists(r.dir.Bytes("title.vob.cfx.0")));
       }
     },
     5},
    {"SettingsFileIsOldOrNew", kProcessRoute, true,
     [](const TempFolder& dir) {
       WriteAll(dir.Bytes("app.ini"), "[Audio]\r\nBitrate=128\r\n; note\r\n[Video]\r\nA=1\r\n");
     },
     [](Swept& r) {
       r.faults.Pause();
       const std::string path = r.dir.Bytes("app.ini");
       const std::string before = ReadAll(path);
       const std::u16string wide(path.begin(), path.end());
       r.faults.Resume();
       uint32_t error = vbu::platform::WriteSetting(wide.c_str(), u"Audio", u"Bitrate", u"256");
       std::u16string value;
       bool read = vbu::platform::ReadSetting(wide.c_str(), u"Video", u"A", &value);
       r.faults.Pause();
       const std::string after = ReadAll(path);
       if (error != 0) {
         // Whichever call failed (open, read, write, flush, close, rename, chmod), its code.
         EXPECT_EQ(error, static_cast<uint32_t>(kError));
         EXPECT_EQ(after, before);
       } else {
         EXPECT_EQ(after, "[Audio]\r\nBitrate=256\r\n; note\r\n[Video]\r\nA=1\r\n");
       }
       // A read that fails reads as a missing key, never as another value.
       if (read) {
         EXPECT_TRUE(value == u"1");
       }
       // No new file is left beside the old one.
       int files = 0;
       for (auto& entry : std::filesystem::directory_iterator(std::filesystem::path(path).parent_path())) {
         files += entry.is_regular_file();
       }
       EXPECT_EQ(files, 1);
     },
     6},
    {"FolderTreeDeletion", kProcessRoute, true,
     [](const TempFolder& dir) {
       std::filesystem::create_directories(dir.Bytes("tree/a/b"));
       std::filesystem::create_directories(dir.Bytes("tree/c"));
       WriteAll(dir.Bytes("tree/one"), "1");
       WriteAll(dir.Bytes("tree/a/two"), "22");
       WriteAll(dir.Bytes("tree/a/b/three"), "333");
       std::filesystem::create_symlink(dir.Bytes("outside"), dir.Bytes("tree/c/link"));
       WriteAll(dir.Bytes("outside"), "keep");
     },
     [](Swept& r) {
       r.faults.Pause();
       MString tree = r.dir.Path("tree");
       r.faults.Resume();
       int result = DeleteDirectory(tree);
       r.faults.Pause();
       ASSERT_TRUE(result == 0 || result == -1);
       if (result == 0) {
         EXPECT_FALSE(std::filesystem::exists(r.dir.Bytes("tree")));
       } else {
         EXPECT_GE(r.hearing.messages.size(), 1u) << "the user is told";
       }
       // A link is removed, never followed; files left keep their bytes.
       EXPECT_EQ(ReadAll(r.dir.Bytes("outside")), "keep");
       if (std::filesystem::exists(r.dir.Bytes("tree/a/b/three"))) {
         EXPECT_EQ(ReadAll(r.dir.Bytes("tree/a/b/three")), "333");
       }
     },
     10},
    {"FileQueryListsOnlyFilesThatAreThere", kProcessRoute, true,
     [](const TempFolder& dir) {
       std::filesystem::create_directories(dir.Bytes("in/a/b"));
       WriteAll(dir.Bytes("in/one"), "1");
       WriteAll(dir.Bytes("in/a/two"), "2");
       WriteAll(dir.Bytes("in/a/b/three"), "3");
       std::filesystem::create_directory_symlink(dir.Bytes("in/a"), dir.Bytes("in/a/b/loop"));
     },
     [](Swept& r) {
       r.faults.Pause();
       MString in = r.dir.Path("in");
       const std::set<std::string> files = {r.dir.Bytes("in/a/b/three"), r.dir.Bytes("in/a/two"),
                                            r.dir.Bytes("in/one")};
       r.faults.Resume();
       std::vector<std::string> listed;
       {
         CFileQuery query(in);
         r.faults.Pause();
         for (unsigned long i = 1; i <= query.GetCount(); ++i) {
           MString* path = nullptr;
           query.FetchItemAt(i, &path);
           listed.push_back(Narrow(*path));
         }
       }
       // A subset of the files, each once, no folder; all of them when nothing failed.
       const std::set<std::string> seen(listed.begin(), listed.end());
       EXPECT_EQ(seen.size(), listed.size());
       for (const std::string& path : listed) EXPECT_TRUE(files.count(path)) << path;
       if (!r.faults.Fired()) {
         EXPECT_EQ(seen, files);
       }
     },
     8},
};

// A row on one route (none: the process's own).
struct Case {
  const SweepRow* row;
  std::optional<vbu::TransferRoute> route;
};

std::vector<Case> Cases() {
  std::vector<Case> cases;
  for (const SweepRow& row : kRows) {
    if (row.routes.empty()) cases.push_back({&row, std::nullopt});
    for (vbu::TransferRoute route : row.routes) cases.push_back({&row, route});
  }
  return cases;
}

std::string CaseName(const Case& c) {
  std::string name = c.row->name;
  if (c.route) name += *c.route == vbu::TransferRoute::kThreads ? "_Threads" : "_SystemQueue";
  return name;
}

void PrintTo(const Case& c, std::ostream* out) { *out << CaseName(c); }

int FailedParts() { return ::testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count(); }

class FaultSweep : public ::testing::TestWithParam<Case> {};

}  // namespace

TEST_P(FaultSweep, EveryFailedCallEndsWithTheDocumentedResult) {
  const SweepRow& row = *GetParam().row;
  const std::optional<vbu::TransferRoute> route = GetParam().route;
  if (route == vbu::TransferRoute::kSystemQueue && !vbu::platform::TransfersUseIoUring()) {
    GTEST_SKIP() << "the system refuses io_uring here";
  }
  std::optional<StTransferRoute> chosen;
  if (route) chosen.emplace(*route);
  // As SweepSysCallFaults: the nth call failed for n = 1, 2, ... until a run is untouched.
  TempFolder sweepFolder;
  int runs = 0;
  for (bool fired = true; fired && runs < kLimit;) {
    ++runs;
    StSysCallFaults faults = row.diskFull
                                 ? StSysCallFaults(runs, ENOSPC, StSysCallFaults::kFromThenOn, {"write", "pwrite"})
                                 : StSysCallFaults(runs, kError);
    faults.Pause();
    // A ring refused by the run before is asked for again.
    if (route) vbu::SetTransferRoute(*route);
    std::optional<TempFolder> runFolder;
    if (row.folderPerRun) runFolder.emplace();
    const TempFolder& dir = runFolder ? *runFolder : sweepFolder;
    row.setUp(dir);
    const MString name = dir.Path("title.vob");  // the test's own conversion is not swept
    LeakProbe probe;
    const int failedBefore = FailedParts();
    {
      Hearing hearing;
      Swept swept{dir, name, faults, hearing};
      faults.Resume();
      row.run(swept);
      faults.Pause();
      EXPECT_LE(hearing.messages.size(), row.maxMessages);
    }
    ExpectNothingLeaked(faults, probe);
    if (FailedParts() > failedBefore) ADD_FAILURE() << "in the run in which " << faults.Describe();
    fired = faults.Fired();
  }
  EXPECT_LT(runs, kLimit);
  EXPECT_GT(runs, row.minimumRuns) << "the untouched operation makes more calls than that";
}

INSTANTIATE_TEST_SUITE_P(Operations, FaultSweep, ::testing::ValuesIn(Cases()),
                         [](const auto& info) { return CaseName(info.param); });

// The helper itself: one counter across entries, once or from then on.
// Each round stats, opens, seeks and closes: 4 calls (a path's conversion
// makes none).
TEST(SysCallFaults, OneCounterAcrossEntriesFailsTheNthCallOnceOrFromThenOn) {
  TempFolder dir;
  WriteAll(dir.Bytes("f"), "abc");
  MString path = dir.Path("f");
  auto run = [&](int n, StSysCallFaults::Mode mode, std::string* outcome) {
    StSysCallFaults faults(n, EACCES, mode);
    for (int i = 0; i < 3; ++i) {
      struct _stati64 info;
      MFileUniv file;
      int statted = file.FStat(path, &info);
      int opened = file.FOpen(path, MFile::file_read_binary);
      *outcome += std::to_string(statted) + std::to_string(opened) + " ";
    }
    return std::string(faults.FailedEntry());
  };
  std::string outcome;
  run(1000, StSysCallFaults::kOnce, &outcome);  // the thread's converter is opened once, before counting
  const struct {
    int n;
    StSysCallFaults::Mode mode;
    const char* entry;
    const char* outcome;
  } cases[] = {
      {1, StSysCallFaults::kOnce, "stat", "-10 00 00 "},
      {2, StSysCallFaults::kOnce, "open", "0-1 00 00 "},
      {3, StSysCallFaults::kOnce, "lseek", "0-1 00 00 "},
      {4, StSysCallFaults::kOnce, "close", "00 00 00 "},  // a close that fails still closes
      {2, StSysCallFaults::kFromThenOn, "open", "0-1 -1-1 -1-1 "},
      {1000, StSysCallFaults::kOnce, "", "00 00 00 "},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.n);
    outcome.clear();
    int descriptors = LeakProbe::OpenDescriptors();
    EXPECT_EQ(run(c.n, c.mode, &outcome), c.entry);
    EXPECT_EQ(outcome, c.outcome);
    EXPECT_EQ(LeakProbe::OpenDescriptors(), descriptors);
    if (*c.entry && std::string(c.entry) != "close") {
      EXPECT_EQ(GetLastError(), static_cast<uint32_t>(EACCES)) << "the failed call's own code";
    }
  }
  StSysCallFaults counting(1000, EIO);
  struct _stati64 info;
  MFileUniv().FStat(path, &info);
  EXPECT_EQ(counting.Calls(), 1);
}
