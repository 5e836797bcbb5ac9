// Sweeps: each operation runs again and again with its 1st, 2nd, 3rd...
// system call failed, until it runs through untouched, on both transfer
// routes. Every run must end with the operation's own failure result (or
// its success, where the failed call was one it may do without), show no
// more user messages than the operation has, leak no descriptor, block or
// transfer record, and leave the bytes written before the failure intact.
#include <VantoroBasicUtils/files/AsyncReadBuffer.h>
#include <VantoroBasicUtils/files/MFileUniv.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "platform/FaultInjection.h"
#include "support/TempFolder.h"

using namespace vbu::literals;

namespace {

// The errno of every failed call: one that no operation can take for a
// condition of its own (end of file, a full disk).
constexpr int kError = EIO;
// More runs than any operation here has calls: reaching it is a failure.
constexpr int kLimit = 400;

std::u16string SystemText(int error) {
  std::string text = std::strerror(error);
  return std::u16string(text.begin(), text.end());
}

// Sector-aligned memory, as unbuffered transfers need.
struct Sectors {
  // aligned_alloc takes whole multiples of the alignment.
  explicit Sectors(std::size_t bytes)
      : data(static_cast<char*>(std::aligned_alloc(4096, (bytes + 4095) / 4096 * 4096))) {}
  ~Sectors() { std::free(data); }
  char* data;
};

class Sweep : public ::testing::TestWithParam<vbu::TransferRoute> {
 protected:
  void SetUp() override {
    if (GetParam() == vbu::TransferRoute::kSystemQueue && !vbu::platform::TransfersUseIoUring()) {
      GTEST_SKIP() << "the system refuses io_uring here";
    }
  }

  // Before each run: a ring refused by the run before is asked for again.
  void Reset() { vbu::SetTransferRoute(GetParam()); }

  StTransferRoute route{GetParam()};
  TempFolder dir;
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Routes, Sweep,
                         ::testing::Values(vbu::TransferRoute::kSystemQueue, vbu::TransferRoute::kThreads),
                         [](const auto& info) {
                           return info.param == vbu::TransferRoute::kThreads ? "Threads" : "SystemQueue";
                         });

TEST_P(Sweep, FOpenGivesMinusOneOrAWorkingFile) {
  const std::string before = Pattern(6144, 3);
  for (auto mode : {MFile::file_read_binary, MFile::file_update_text, MFile::file_create_binary,
                    MFile::file_overlapped_read, MFile::file_overlapped_update, MFile::file_overlapped_create}) {
    SCOPED_TRACE(mode);
    const bool empties = mode == MFile::file_create_binary || mode == MFile::file_overlapped_create;
    int runs = SweepSysCallFaults(kError, [&](StSysCallFaults& faults) {
      faults.Pause();
      Reset();
      WriteAll(dir.Bytes("f"), before);
      MString path = dir.Path("f");  // the test's own conversion is not swept
      LeakProbe probe;
      Hearing hearing;
      faults.Resume();
      {
        MFileUniv file;
        int result = file.FOpen(path, mode);
        ASSERT_TRUE(result == 0 || result == -1) << faults.Describe();
        if (result == -1) {
          EXPECT_EQ(GetLastError(), static_cast<uint32_t>(kError)) << faults.Describe();
          EXPECT_TRUE(faults.Fired());
          EXPECT_FALSE(file.IsOverlapped()) << "a failed open leaves the object closed";
        } else {
          EXPECT_EQ(file.IsOverlapped(), mode >= MFile::file_overlapped_create);
        }
        file.FClose();
      }
      faults.Pause();
      EXPECT_TRUE(hearing.messages.empty()) << faults.Describe();
      std::string after = ReadAll(dir.Bytes("f"));
      // An open that empties the file may have done so before its failure.
      if (!empties || after.size() != 0) {
        EXPECT_TRUE(after == before) << faults.Describe();
      }
      ExpectNothingLeaked(faults, probe);
    });
    EXPECT_LT(runs, kLimit);
    EXPECT_GT(runs, 1) << "an open makes system calls";
  }
}

TEST_P(Sweep, OverlappedWritesAndReadsEndWithTheirError) {
  const std::string before = Pattern(4 * 2048, 4);
  const std::string sectors = Pattern(2 * 2048, 5);
  Sectors memory(2 * 2048);
  int runs = SweepSysCallFaults(kError, [&](StSysCallFaults& faults) {
    faults.Pause();
    Reset();
    WriteAll(dir.Bytes("image"), before);
    LeakProbe probe;
    Hearing hearing;
    {
      MFileUniv file;
      ASSERT_EQ(file.FOpen(dir.Path("image"), MFile::file_overlapped_update), 0);
      std::memcpy(memory.data, sectors.data(), sectors.size());
      faults.Resume();

      // The write of sectors 1 and 2: all of it, or none with the error.
      MEvent done;
      OVERLAPPED record;
      uint32_t started = file.FWriteOverlapped(2048, memory.data, 4096, &record, &done);
      EXPECT_EQ(started, 0u) << "a start never fails for a system's reason: " << faults.Describe();
      ASSERT_EQ(MFileUniv::FWaitOverlappedCompletion(&done, 30), 0u) << faults.Describe();
      bool written = record.Internal == 0;
      if (written) {
        EXPECT_EQ(record.InternalHigh, 4096u);
      } else {
        EXPECT_EQ(record.Internal, static_cast<uintptr_t>(kError)) << faults.Describe();
        EXPECT_EQ(record.InternalHigh, 0u);
      }

      // The read of sectors 0 to 2.
      std::memset(memory.data, 0, 2 * 2048);
      Sectors read(3 * 2048);
      started = file.FReadOverlapped(0, read.data, 3 * 2048, &record, &done);
      EXPECT_EQ(started, 0u) << faults.Describe();
      ASSERT_EQ(MFileUniv::FWaitOverlappedCompletion(&done, 30), 0u) << faults.Describe();
      if (record.Internal == 0) {
        EXPECT_EQ(record.InternalHigh, 3u * 2048);
        EXPECT_TRUE(std::string(read.data, 2048) == before.substr(0, 2048));
        std::string middle(read.data + 2048, 4096);
        if (written) {
          EXPECT_TRUE(middle == sectors) << faults.Describe();
        } else {
          // A write whose wait failed may still have reached the disk; it never mixes the two.
          EXPECT_TRUE(middle == sectors || middle == before.substr(2048, 4096)) << faults.Describe();
        }
      } else {
        EXPECT_EQ(record.Internal, static_cast<uintptr_t>(kError)) << faults.Describe();
        EXPECT_EQ(record.InternalHigh, 0u);
      }
      file.FClose();
      faults.Pause();
      std::string after = ReadAll(dir.Bytes("image"));
      EXPECT_TRUE(after.substr(0, 2048) == before.substr(0, 2048)) << "in front of the write: " << faults.Describe();
      EXPECT_TRUE(after.substr(6144) == before.substr(6144)) << "behind the write: " << faults.Describe();
      if (written) {
        EXPECT_TRUE(after.substr(2048, 4096) == sectors) << faults.Describe();
      }
    }
    // A start that fails tells it: the read a retry and its failure, the write its failure.
    EXPECT_LE(hearing.messages.size(), 3u) << faults.Describe();
    ExpectNothingLeaked(faults, probe);
  });
  EXPECT_LT(runs, kLimit);
  EXPECT_GT(runs, 2) << "two transfers make system calls";
}

// Reads a file through AsyncReadBuffer under every fault, in blocks of 16
// KiB that go as four transfers each, the block after next read into each
// quarter as the consumer passes it. It ends cleanly, and the bytes delivered before a
// failure are the file's: a read that ended with an error after it started
// never hands out its block's stale bytes.
TEST_P(Sweep, ReadAheadEndsCleanlyAndDeliversOnlyTheFilesBytes) {
  const std::string bytes = Pattern(5 * 4096 + 1000, 6);
  WriteAll(dir.Bytes("title.vob"), bytes);
  int runs = SweepSysCallFaults(kError, [&](StSysCallFaults& faults) {
    faults.Pause();
    Reset();
    LeakProbe probe;
    Hearing hearing;
    {
      MFileUniv file;
      ASSERT_EQ(file.FOpen(dir.Path("title.vob"), MFile::file_overlapped_read), 0);
      faults.Resume();
      {
        AsyncReadBuffer ahead;
        int start = ahead.InitReadBuffer(&file, 0, 16384, 0);
        if (start != 0) {
          // A size that cannot be had reads as nothing to read.
          EXPECT_TRUE(start == AsyncReadBuffer::kOutOfMemory || start == AsyncReadBuffer::kReadFailed ||
                      start == AsyncReadBuffer::kNothingToRead)
              << start << " " << faults.Describe();
        } else {
          std::string got;
          char piece[3000];
          for (;;) {
            int n = ahead.ReadBuffer(static_cast<long long>(got.size()), piece, sizeof piece);
            ASSERT_GE(n, -1) << faults.Describe();
            if (n <= 0) {
              // The end of the file, or a failure: what came before is the file's.
              if (n == 0) {
                EXPECT_EQ(got.size(), bytes.size()) << faults.Describe();
              }
              break;
            }
            got.append(piece, static_cast<std::size_t>(n));
            ASSERT_LE(got.size(), bytes.size());
          }
          EXPECT_TRUE(got == bytes.substr(0, got.size())) << faults.Describe() << " got " << got.size();
        }
        // No read may be under way when the blocks go: the close waits for it.
        file.FClose();
      }
      faults.Pause();
    }
    EXPECT_LE(hearing.messages.size(), 2u) << faults.Describe();
    ExpectNothingLeaked(faults, probe);
  });
  EXPECT_LT(runs, kLimit);
  EXPECT_GT(runs, 3);
}

// A join with several transfers in flight on both legs (buffers of 32 KiB
// in slots of 8 KiB; the second source takes five buffers), failed at every
// call: every failed call of any kind with EIO, then a disk that fills up at
// every write. After ConcatFile no transfer is under way, and every byte
// that progress reported is in the destination.
TEST_P(Sweep, ConcatFileKeepsWhatWasWrittenBeforeAFailure) {
  // Rounding to 16 bytes: the first source ends at 5008.
  const std::string first = Pattern(5000, 7);
  const std::string second = Pattern(4 * 32768 + 14464, 8);
  WriteAll(dir.Bytes("first"), first);
  WriteAll(dir.Bytes("second"), second);
  const std::string firstOnDisc = first + std::string(8, '\0');
  // One run: joins both, the second under `arm`'s faults; gives true when a fault fired.
  auto run = [&](int error, auto arm) {
    Reset();
    LeakProbe probe;
    Hearing hearing;
    int64_t offset = 0;
    std::string what;
    bool fired = false;
    {
      MFileUniv disc;
      EXPECT_EQ(disc.FOpen(dir.Path("disc.iso"), MFile::file_overlapped_create), 0);
      EXPECT_EQ(disc.ConcatInitialize(16, 0), 0);
      bool cancelled = false;
      MString path = dir.Path("first");
      EXPECT_EQ(disc.ConcatFile(path, 0, cancelled, 0), 0);
      path = dir.Path("second");
      hearing.advanced = 0;
      const std::size_t requests = vbu::platform::TransferRequestsInUse();
      long result = arm([&] { return disc.ConcatFile(path, 0, cancelled, 0); }, &what, &fired);
      EXPECT_EQ(vbu::platform::TransferRequestsInUse(), requests) << "a transfer outlived the call " << what;
      const OVERLAPPED& written = disc.GetConcatInfo().mWriteInfo.mOverlapped;
      offset = static_cast<int64_t>((uint64_t{written.OffsetHigh} << 32) | written.Offset);
      if (result == 0) {
        EXPECT_EQ(offset, 5008 + static_cast<int64_t>(second.size())) << what;
        EXPECT_TRUE(hearing.messages.empty());
      } else {
        EXPECT_TRUE(fired);
        // -1, or the code of a size that could not be had.
        EXPECT_TRUE(result == -1 || result == kError) << result << " " << what;
        // At most the system's text for the failure, as an error.
        EXPECT_LE(hearing.messages.size(), 1u) << what;
        if (!hearing.messages.empty()) {
          EXPECT_EQ(hearing.messages[0], 26000) << what;
          EXPECT_EQ(hearing.texts[0], SystemText(error)) << what;
          EXPECT_EQ(hearing.sources[0], nullptr) << "the library's own messages carry no source";
        }
      }
      // Progress counts whole buffers of 16 units, written in order.
      if (offset < 5008 + static_cast<int64_t>(second.size())) {
        EXPECT_EQ(hearing.advanced * 2048, offset - 5008) << what;
      }
      disc.FClose();
    }
    // What the run wrote before it stopped: the first source whole, then the
    // beginning of the second that the offset and progress count.
    std::string image = ReadAll(dir.Bytes("disc.iso"));
    EXPECT_GE(image.size(), 5008u) << what;
    EXPECT_TRUE(image.substr(0, 5008) == firstOnDisc) << what;
    EXPECT_GE(static_cast<int64_t>(image.size()), offset) << what;
    EXPECT_TRUE(image.substr(5008, static_cast<std::size_t>(offset - 5008)) == second.substr(0, offset - 5008))
        << what;
    EXPECT_TRUE(probe.Clean()) << what << probe.Describe();
    return fired;
  };

  int runs = SweepSysCallFaults(kError, [&](StSysCallFaults& faults) {
    faults.Pause();
    run(kError, [&](auto join, std::string* what, bool* fired) {
      faults.Resume();
      long result = join();
      faults.Pause();
      *what = faults.Describe();
      *fired = faults.Fired();
      if (result == -1 && !faults.Fired()) ADD_FAILURE() << "failed untouched";
      return result;
    });
    EXPECT_EQ(faults.LivePageBlocks(), 0) << faults.Describe();
    EXPECT_EQ(faults.LiveHeapBlocks(), 0) << faults.Describe();
  });
  EXPECT_LT(runs, kLimit);
  EXPECT_GT(runs, 20);

  // The disk's own refusal reaches the table only on the layer's threads.
  if (GetParam() != vbu::TransferRoute::kThreads) return;
  int writes = 1;
  for (bool fired = true; fired && writes < kLimit; ++writes) {
    fired = run(ENOSPC, [&](auto join, std::string* what, bool* failed) {
      StSysCallFaults full(writes, ENOSPC, StSysCallFaults::kFromThenOn, {"write", "pwrite"});
      long result = join();
      *what = "writes full from the " + std::to_string(writes) + "th";
      *failed = full.Fired();
      return result;
    });
  }
  EXPECT_GT(writes, 10) << "every write of the join was failed in turn";
}

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
      _stati64 info;
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
  _stati64 info;
  MFileUniv().FStat(path, &info);
  EXPECT_EQ(counting.Calls(), 1);
}
