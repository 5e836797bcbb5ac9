// The segmented file when the system fails: a failure swept over every
// system call of writes that cross segment ends (the switch to an info
// file with its link and renames, each new segment, each line appended to
// the info file), once as an I/O error of one call and once as a disk that
// fills up. Whatever fails, the write says so, the bytes reported written
// are there, and the info file opens and reads.
#include <VantoroBasicUtils/files/MFiles.h>

#include <gtest/gtest.h>

#include <optional>

#include "platform/FaultInjection.h"
#include "support/LogicalFile.h"
#include "support/TempFolder.h"

using namespace vbu::literals;

namespace {

struct SweepResult {
  bool tripped = false;
  long long reported = 0;  // bytes the writes said they wrote
  bool failedWrite = false;
  std::string failed;  // which call failed
};

// Opens a new file with a limit of 1000, writes 600 bytes, then writes
// pieces of 700 (crossing an end at every one but one) with the failure in force.
// `fullDisk`: every write from the nth on fails with ENOSPC; else the nth
// system call of any kind fails with `error`.
SweepResult WriteWithFailure(const TempFolder& dir, const std::string& data, int n, int error, bool fullDisk) {
  SweepResult result;
  MFiles file;
  EXPECT_EQ(file.FOpen(dir.Path("title.vob"), MFile::file_create_binary), 0);
  file.SetMaxFileSize(1000);
  EXPECT_EQ(file.FWrite(data.data(), 600), 600);
  result.reported = 600;
  {
    std::optional<StSysCallFaults> faults;
    if (fullDisk) {
      faults.emplace(n, error, StSysCallFaults::kFromThenOn, std::initializer_list<const char*>{"write", "pwrite"});
    } else {
      faults.emplace(n, error, StSysCallFaults::kOnce);
    }
    for (long long at = 600; at + 700 <= static_cast<long long>(data.size()); at += 700) {
      int written = file.FWrite(data.data() + at, 700);
      if (written != 700) {
        EXPECT_LT(written, 0) << "a failure gives a negative value, never a short count";
        result.failedWrite = true;
        break;
      }
      result.reported += 700;
    }
    result.tripped = faults->Fired();
    if (faults->Fired()) result.failed = faults->Describe();
  }
  file.FClose();
  return result;
}

// Sweeps the failure over every call (every write, for a full disk); the
// writes make at least `calls` of them, and at least `failures` failures
// reach the caller.
void Sweep(int error, bool fullDisk, int calls, int failuresSeen) {
  const std::string data = Pattern(600 + 6 * 700);
  int failures = 0;
  for (int n = 1; n < 10000; ++n) {
    SCOPED_TRACE(n);
    TempFolder dir;
    SweepResult result = WriteWithFailure(dir, data, n, error, fullDisk);
    if (!result.tripped) {
      EXPECT_EQ(result.reported, static_cast<long long>(data.size()));
      EXPECT_GT(n, calls) << "the writes make more calls than that";
      break;
    }
    failures += result.failedWrite;
    MString name = dir.Path("title.vob");
    // Every listed segment is there, and the logical file reads whole.
    std::vector<MString> segments = ListedSegments(name);
    ASSERT_FALSE(segments.empty());
    for (MString& segment : segments) EXPECT_TRUE(MFile::FileExist(segment)) << Text(segment).size();
    std::string content = ReadLogical(name);
    ASSERT_NE(content, "<unreadable>");
    ASSERT_GE(content.size(), static_cast<std::size_t>(result.reported)) << "reported bytes were lost; " << result.failed;
    EXPECT_EQ(content, data.substr(0, content.size()));
    EXPECT_FALSE(std::filesystem::exists(dir.Bytes("title.vob.cfx.new")));
  }
  EXPECT_GE(failures, failuresSeen);
}

// Writes `data` to a new segmented file "f" in `dir` with a limit of 1000, in pieces of 900.
void WriteSegmented(const TempFolder& dir, const std::string& data) {
  MFiles file;
  ASSERT_EQ(file.FOpen(dir.Path("f"), MFile::file_create_binary), 0);
  file.SetMaxFileSize(1000);
  for (std::size_t at = 0; at < data.size(); at += 900) {
    const int piece = static_cast<int>(std::min<std::size_t>(900, data.size() - at));
    ASSERT_EQ(file.FWrite(data.data() + at, piece), piece);
  }
  ASSERT_EQ(file.FClose(), 0);
}

}  // namespace

TEST(SegmentedFaults, AnIoErrorAtEveryCallOfCrossingWrites) { Sweep(EIO, false, 60, 40); }

TEST(SegmentedFaults, ADiskThatFillsUpDuringCrossingWrites) { Sweep(ENOSPC, true, 10, 10); }

TEST(SegmentedFaults, WithoutHardLinksTheSwitchRenames) {
  TempFolder dir;
  StSysCallTable saved;
  vbu::platform::Sys().link = [](const char*, const char*) { return errno = EPERM, -1; };
  std::string data = Pattern(2500);
  WriteSegmented(dir, data);
  EXPECT_EQ(ReadLogical(dir.Path("f")), data);
}

TEST(SegmentedFaults, AnInfoFileThatCannotBeAskedIsNeverTakenForANewFile) {
  TempFolder dir;
  std::string data = Pattern(2500);
  WriteSegmented(dir, data);
  std::string info = ReadAll(dir.Bytes("f"));
  {
    StSysCallTable saved;
    vbu::platform::Sys().stat = [](const char*, struct ::stat*) { return errno = EIO, -1; };
    MFiles file;
    EXPECT_EQ(file.FOpen(dir.Path("f"), MFile::file_create_binary), -1);
  }
  EXPECT_EQ(ReadAll(dir.Bytes("f")), info) << "not emptied as a plain file";
  EXPECT_EQ(ReadLogical(dir.Path("f")), data);
}

// A folder where no name can be asked: the search for a free segment name
// ends, the write fails, and the file stays whole.
TEST(SegmentedFaults, NoNameThatCanBeAskedEndsTheSearchForAFreeOne) {
  TempFolder dir;
  std::string data = Pattern(1200);
  MFiles file;
  ASSERT_EQ(file.FOpen(dir.Path("f"), MFile::file_create_binary), 0);
  file.SetMaxFileSize(1000);
  ASSERT_EQ(file.FWrite(data.data(), 900), 900);
  {
    StSysCallTable saved;
    vbu::platform::Sys().lstat = [](const char*, struct ::stat*) { return errno = EACCES, -1; };
    EXPECT_EQ(file.FWrite(data.data() + 900, 300), -1);
  }
  ASSERT_EQ(file.FSeek64(0, MFile::file_seek_end), 1000);
  ASSERT_EQ(file.FWrite(data.data() + 1000, 200), 200);
  ASSERT_EQ(file.FClose(), 0);
  EXPECT_EQ(ReadLogical(dir.Path("f")), data);
}
