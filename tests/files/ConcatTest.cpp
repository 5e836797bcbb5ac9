// The concatenation engine, byte for byte against the destination it should
// make: padding to sectors, pieces of one buffer and more, runs of sources,
// blocks from memory, progress, missing sources and cancellation.
#include <VantoroBasicUtils/files/MFileUniv.h>

#include <gtest/gtest.h>

#include <map>
#include <vector>

#include "support/TempFolder.h"

using namespace vbu::literals;

namespace {

constexpr long kBuffer = 4194304;

std::string Padded(const std::string& bytes) {
  return bytes + std::string((2048 - bytes.size() % 2048) % 2048, '\0');
}

class Concat : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(destination.FOpen(dir.Path("disc.iso"), MFile::file_overlapped_create), 0);
    ASSERT_EQ(destination.ConcatInitialize(2048, 0), 0);
  }

  // Makes a source of `size` bytes and joins it: ConcatFile's result.
  long Join(const std::string& name, std::size_t size, unsigned seed, bool cancel = false) {
    sources[name] = Pattern(size, seed);
    WriteAll(dir.Bytes(name), sources[name]);
    MString path = dir.Path(name);
    bool cancelled = cancel;
    return destination.ConcatFile(path, 0, cancelled, 0);
  }

  long long Offset() const { return destination.GetConcatInfo().mWriteInfo.mOverlapped.Offset; }

  std::string Disc() {
    EXPECT_EQ(destination.FClose(), 0);
    return ReadAll(dir.Bytes("disc.iso"));
  }

  TempFolder dir;
  MFileUniv destination;
  std::map<std::string, std::string> sources;
};

}  // namespace

// Runs of sources, each padded with zeros to the sector and following the
// last: the offset, one progress message per buffer written with every unit
// counted, and the bytes of the destination.
TEST(ConcatRuns, SourcesArePaddedToSectorsAndFollowEachOther) {
  struct Row {
    const char* what;
    long sector;
    long long start;
    std::vector<std::size_t> sizes;
  };
  const Row rows[] = {
      {"an empty source writes nothing; two of 5000 bytes", 2048, 0, {0, 5000, 5000}},
      {"one buffer exactly, then one byte more", 2048, 0, {kBuffer, kBuffer + 1}},
      {"a larger sector, many buffers, a start offset", 4096, 8192, {3 * 2 * kBuffer + 5000}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    TempFolder dir;
    MFileUniv destination;
    ASSERT_EQ(destination.FOpen(dir.Path("disc.iso"), MFile::file_overlapped_create), 0);
    ASSERT_EQ(destination.ConcatInitialize(row.sector, row.start), 0);
    const std::size_t buffer = static_cast<std::size_t>(row.sector) * 2048;
    Hearing hearing;
    std::string expected(static_cast<std::size_t>(row.start), '\0');
    std::size_t writes = 0;
    for (std::size_t k = 0; k < row.sizes.size(); ++k) {
      const std::string bytes = Pattern(row.sizes[k], static_cast<unsigned>(k + 2));
      const std::string name = "s" + std::to_string(k);
      WriteAll(dir.Bytes(name), bytes);
      MString path = dir.Path(name);
      bool cancelled = false;
      EXPECT_EQ(destination.ConcatFile(path, 0, cancelled, 0), 0);
      const std::size_t sector = static_cast<std::size_t>(row.sector);
      expected += bytes + std::string((sector - bytes.size() % sector) % sector, '\0');
      writes += (bytes.size() + buffer - 1) / buffer;
      EXPECT_EQ(destination.GetConcatInfo().mWriteInfo.mOverlapped.Offset, expected.size());
    }
    EXPECT_EQ(hearing.masks, std::vector<int>(writes, kStatusAdvance));
    EXPECT_EQ(static_cast<std::size_t>(hearing.advanced) * 2048, expected.size() - static_cast<std::size_t>(row.start));
    EXPECT_TRUE(hearing.messages.empty());
    EXPECT_EQ(destination.FClose(), 0);
    EXPECT_TRUE(ReadAll(dir.Bytes("disc.iso")) == expected);
  }
}

TEST_F(Concat, BlocksFromMemoryArePaddedWithoutProgress) {
  Hearing hearing;
  std::string block = Pattern(100, 7);
  EXPECT_EQ(destination.ConcatBufferSynchronously(block.data(), 100), 0);
  EXPECT_EQ(Offset(), 2048);
  EXPECT_EQ(Join("a", 5000, 8), 0);
  EXPECT_EQ(destination.ConcatBufferSynchronously(block.data(), kBuffer + 1), -1) << "more than a buffer";
  EXPECT_EQ(destination.ConcatBufferSynchronously(nullptr, 10), -1);
  EXPECT_EQ(hearing.advanced, 3) << "only the file's write";
  EXPECT_EQ(Disc(), Padded(block) + Padded(sources["a"]));
}

TEST_F(Concat, AMissingSourceFailsWithoutAMessage) {
  Hearing hearing;
  EXPECT_EQ(Join("a", 5000, 9), 0);
  MString missing = dir.Path("missing.vob");
  bool cancelled = false;
  EXPECT_EQ(destination.ConcatFile(missing, 0, cancelled, 0), -1);
  EXPECT_EQ(destination.ConcatFile(nullptr, 0, cancelled, 0), -1);
  EXPECT_TRUE(hearing.messages.empty());
  EXPECT_EQ(Offset(), 6144);
  EXPECT_EQ(Disc(), Padded(sources["a"])) << "what was written stays";
}

TEST_F(Concat, ACancelledCallStillRunsItsFirstPassAndKeepsWhatWasWritten) {
  EXPECT_EQ(Join("long", 2 * kBuffer + 100, 10, true), 0);
  // The first piece was read and its write started, then the run stopped;
  // that write ended before the call returned, and the offset counts it.
  EXPECT_EQ(Offset(), kBuffer);
  EXPECT_EQ(Disc(), sources["long"].substr(0, kBuffer));
}

TEST_F(Concat, WithoutARunThereIsNothingToJoin) {
  MFileUniv idle;
  bool cancelled = false;
  MString path = dir.Path("x");
  EXPECT_EQ(idle.ConcatFile(path, 0, cancelled, 0), -1);
  char byte = 1;
  EXPECT_EQ(idle.ConcatBufferSynchronously(&byte, 1), -1);
  EXPECT_EQ(idle.ConcatInitialize(0, 0), -1);
  EXPECT_EQ(idle.ConcatInitialize(2048, -1), -1);
  // A run started twice keeps one set of buffers (leaks would show under the sanitizer).
  EXPECT_EQ(destination.ConcatInitialize(2048, 0), 0);
}

TEST(ConcatFull, ADestinationWithNoRoomFailsWithTheSystemsText) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
  TempFolder dir;
  WriteAll(dir.Bytes("a"), Pattern(5000));
  MFileUniv full;
  ASSERT_EQ(full.FOpen(u"/dev/full"_u16, MFile::file_overlapped_write), 0);
  ASSERT_EQ(full.ConcatInitialize(2048, 0), 0);
  Hearing hearing;
  MString path = dir.Path("a");
  bool cancelled = false;
  EXPECT_EQ(full.ConcatFile(path, 0, cancelled, 0), -1);
  ASSERT_EQ(hearing.messages, std::vector<long>{26000});
  EXPECT_EQ(hearing.texts[0], u"No space left on device");
  EXPECT_EQ(full.GetConcatInfo().mWriteInfo.mOverlapped.Offset, 0u) << "nothing counted as written";
  char block[100] = {};
  EXPECT_EQ(full.ConcatBufferSynchronously(block, 100), -1);
}

