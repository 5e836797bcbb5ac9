// The concatenation engine, byte for byte against the destination it should
// make: padding to sectors, pieces of one buffer and more, runs of sources,
// blocks from memory, progress, missing sources and cancellation.
#include <VantoroBasicUtils/files/MFileUniv.h>

#include <gtest/gtest.h>

#include <map>

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

TEST_F(Concat, SourcesArePaddedToSectorsAndFollowEachOther) {
  Hearing hearing;
  EXPECT_EQ(Join("empty", 0, 1), 0);
  EXPECT_EQ(Offset(), 0) << "an empty source writes nothing";
  EXPECT_EQ(Join("a", 5000, 2), 0);
  EXPECT_EQ(Offset(), 6144);
  EXPECT_EQ(hearing.advanced, 3) << "6144 bytes are 3 units of progress";
  EXPECT_EQ(Join("b", 5000, 3), 0);
  EXPECT_EQ(Offset(), 12288) << "the second starts at 6144";
  EXPECT_EQ(hearing.masks, (std::vector<int>{kStatusAdvance, kStatusAdvance}));
  EXPECT_TRUE(hearing.messages.empty());
  EXPECT_EQ(Disc(), Padded(sources["a"]) + Padded(sources["b"]));
}

TEST_F(Concat, OneBufferExactlyAndOneByteMore) {
  Hearing hearing;
  EXPECT_EQ(Join("whole", kBuffer, 4), 0);
  EXPECT_EQ(Offset(), kBuffer) << "no padding";
  EXPECT_EQ(hearing.masks.size(), 1u) << "one write";
  EXPECT_EQ(Join("more", kBuffer + 1, 5), 0);
  EXPECT_EQ(Offset(), 2 * kBuffer + 2048);
  EXPECT_EQ(hearing.masks.size(), 3u) << "two more writes, the second of one byte and 2047 zeros";
  EXPECT_EQ(hearing.advanced, (2 * kBuffer + 2048) / 2048);
  EXPECT_EQ(Disc(), sources["whole"] + Padded(sources["more"]));
}

TEST_F(Concat, ManyBuffersAndAStartOffsetAndALargerSector) {
  MFileUniv other;
  ASSERT_EQ(other.FOpen(dir.Path("other.iso"), MFile::file_overlapped_create), 0);
  ASSERT_EQ(other.ConcatInitialize(4096, 8192), 0);
  EXPECT_EQ(other.GetConcatInfo().mBufferSize, 8388608);
  std::string big = Pattern(3 * 8388608 + 5000, 6);
  WriteAll(dir.Bytes("big"), big);
  bool cancelled = false;
  MString path = dir.Path("big");
  EXPECT_EQ(other.ConcatFile(path, 0, cancelled, 0), 0);
  EXPECT_EQ(other.GetConcatInfo().mWriteInfo.mOverlapped.Offset, 8192u + 3 * 8388608 + 8192);
  EXPECT_EQ(other.FClose(), 0);
  std::string disc = ReadAll(dir.Bytes("other.iso"));
  EXPECT_EQ(disc.substr(0, 8192), std::string(8192, '\0'));
  EXPECT_TRUE(disc.substr(8192) == big + std::string(8192 - 5000, '\0')) << "padded to 4096 bytes";
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

