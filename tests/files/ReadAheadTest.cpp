// The read-ahead buffer over a 10000-byte file in 4096-byte blocks: block
// changes, short reads at the end, reads in front of the block.
#include <VantoroBasicUtils/files/AsyncReadBuffer.h>
#include <VantoroBasicUtils/files/MFileUniv.h>

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "support/TempFolder.h"

namespace {

class ReadAhead : public ::testing::Test {
 protected:
  void SetUp() override {
    WriteAll(dir.Bytes("title.vob"), content);
    ASSERT_EQ(file.FOpen(dir.Path("title.vob"), MFile::file_overlapped_read), 0);
  }
  void TearDown() override { file.FClose(); }

  // Reads through the buffer and checks the bytes against the file's.
  int Read(long long offset, int size) {
    std::string got(static_cast<std::size_t>(size), '\0');
    int n = ahead.ReadBuffer(offset, got.data(), size);
    if (n > 0) {
      EXPECT_EQ(got.substr(0, static_cast<std::size_t>(n)), content.substr(offset, static_cast<std::size_t>(n)));
    }
    return n;
  }

  TempFolder dir;
  std::string content = Pattern(10000);
  MFileUniv file;
  AsyncReadBuffer ahead;
};

}  // namespace

TEST_F(ReadAhead, ForwardReadsChangeBlocksOnceAndEndShort) {
  ASSERT_EQ(ahead.InitReadBuffer(&file, 0, 4096, 0), 0);
  EXPECT_EQ(ahead.GetValidBytes(), 4096);
  EXPECT_EQ(ahead.GetRemaining(), 5904);
  EXPECT_TRUE(ahead.IsReadPending());
  EXPECT_EQ(ahead.GetPendingBytes(), 4096);

  EXPECT_EQ(Read(0, 4096), 4096);
  EXPECT_EQ(ahead.GetBlockOffset(), 0) << "all the block holds: the change waits for the next read";

  EXPECT_EQ(Read(4000, 200), 200) << "96 from one block, 104 from the next";
  EXPECT_EQ(ahead.GetBlockOffset(), 4096);
  EXPECT_EQ(ahead.GetRemaining(), 1808);
  EXPECT_EQ(ahead.GetPendingBytes(), 1808);

  EXPECT_EQ(Read(8100, 2000), 1900) << "short: the file ends";
  EXPECT_EQ(ahead.GetBlockOffset(), 8192);
  EXPECT_EQ(ahead.GetRemaining(), 0);
  EXPECT_FALSE(ahead.IsReadPending());
  EXPECT_EQ(Read(10000, 10), 0);
  EXPECT_EQ(Read(9990, 20), 10) << "drained: only what the block holds";

  // In front of the block: a piece of its own; the blocks stay.
  EXPECT_EQ(Read(100, 50), 50);
  EXPECT_EQ(ahead.GetBlockOffset(), 8192);
  EXPECT_EQ(Read(8182, 30), 30) << "10 bytes from the piece, 20 from the block";
  EXPECT_EQ(Read(5000, 4000), 4000) << "far in front, at an offset off the sector";
}

TEST_F(ReadAhead, ReadingInFrontNeverDeliversBytesBehindTheFile) {
  ASSERT_EQ(ahead.InitReadBuffer(&file, 8192, 4096, 0), 0);
  EXPECT_EQ(ahead.GetValidBytes(), 1808);
  EXPECT_FALSE(ahead.IsReadPending()) << "the rest fits one block";
  // 100 bytes in front of the block, and more than the block holds behind them.
  EXPECT_EQ(Read(8092, 4000), 100 + 1808);
}

TEST_F(ReadAhead, AGapForwardStillDeliversTheBytesAsked) {
  ASSERT_EQ(ahead.InitReadBuffer(&file, 0, 4096, 0), 0);
  EXPECT_EQ(Read(5000, 100), 100) << "inside the next block";
  EXPECT_EQ(ahead.GetBlockOffset(), 4096);
  EXPECT_EQ(Read(9000, 500), 500) << "behind the next block too";
}

TEST_F(ReadAhead, StartsThatHaveNothingToRead) {
  EXPECT_EQ(ahead.InitReadBuffer(&file, 10000, 4096, 0), AsyncReadBuffer::kNothingToRead);
  EXPECT_EQ(ahead.InitReadBuffer(&file, 20000, 4096, 0), AsyncReadBuffer::kNothingToRead);
  EXPECT_EQ(ahead.InitReadBuffer(nullptr, 0, 4096, 0), AsyncReadBuffer::kReadFailed);
  // The blocks of the earlier calls serve a later one.
  ASSERT_EQ(ahead.InitReadBuffer(&file, 0, 2048, 0), 0);
  EXPECT_EQ(Read(0, 3000), 3000);

  AsyncReadBuffer unused;
  char byte;
  EXPECT_EQ(unused.ReadBuffer(0, &byte, 1), 0) << "no file: nothing to read";
  int bytes = -1;
  EXPECT_EQ(unused.FillInReadBuffer(bytes), 0);
  EXPECT_EQ(bytes, 0);
}

TEST(ReadAheadSeeks, ANewStartWhileAReadIsInFlightDeliversTheFilesBytes) {
  // A consumer that seeks: a new start at a random place, before or behind
  // the last, while the reads ahead of the last start are still under way;
  // then forward reads of random sizes, each followed now and then by a look
  // back over what it has passed, whose room in the block the read ahead
  // may have taken already. Every byte is the file's.
  constexpr int kBlock = 256 * 1024;
  TempFolder dir;
  const std::string content = Pattern(8u << 20, 7);
  WriteAll(dir.Bytes("title.vob"), content);
  MFileUniv file;
  ASSERT_EQ(file.FOpen(dir.Path("title.vob"), MFile::file_overlapped_read), 0);
  std::string got(kBlock, '\0');
  auto same = [&](long long at, int n) {
    return got.compare(0, static_cast<std::size_t>(n), content, static_cast<std::size_t>(at),
                       static_cast<std::size_t>(n)) == 0;
  };
  {
    AsyncReadBuffer ahead;
    std::mt19937 random(11);
    const long long sectors = static_cast<long long>(content.size()) / MFileUniv::kSectorSize;
    for (int round = 0; round < 60; ++round) {
      // Every third start is off the sector: its reads go whole, not in parts.
      long long at = static_cast<long long>(random() % sectors) * MFileUniv::kSectorSize +
                     (round % 3 == 0 ? static_cast<long long>(random() % MFileUniv::kSectorSize) : 0);
      ASSERT_EQ(ahead.InitReadBuffer(&file, at, kBlock, 0), 0) << round;
      for (int read = 0; read < 12 && at < static_cast<long long>(content.size()); ++read) {
        int n = ahead.ReadBuffer(at, got.data(), 1 + static_cast<int>(random() % (kBlock / 2)));
        ASSERT_GT(n, 0) << round << " " << at;
        ASSERT_TRUE(same(at, n)) << "round " << round << ", offset " << at;
        at += n;
        if (read % 3 == 2) {
          const long long back = at - 1 - static_cast<long long>(random() % std::min<long long>(at, kBlock));
          const int size = 1 + static_cast<int>(random() % std::min<long long>(at - back, kBlock / 4));
          ASSERT_EQ(ahead.ReadBuffer(back, got.data(), size), size) << round << " back to " << back;
          ASSERT_TRUE(same(back, size)) << "round " << round << ", back to " << back;
        }
      }
    }
  }  // the read still under way ends before the blocks go
  file.FClose();
}
