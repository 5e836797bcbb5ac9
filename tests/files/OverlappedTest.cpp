// The overlapped route: unaligned reads with their sector lead, whole-sector
// writes, the end of the file, waits, sizes and closing.
#include <VantoroBasicUtils/files/MFileUniv.h>

#include <gtest/gtest.h>

#include <memory>

#include "support/TempFolder.h"

namespace {

// Sector-aligned memory with `lead` room in front of the place handed out.
class SectorBuffer {
 public:
  explicit SectorBuffer(std::size_t bytes) : mBlock(static_cast<char*>(::operator new(bytes + 4096, std::align_val_t{4096}))) {}
  ~SectorBuffer() { ::operator delete(mBlock, std::align_val_t{4096}); }
  char* At(std::size_t offset) { return mBlock + offset; }

 private:
  char* mBlock;
};

}  // namespace

TEST(Overlapped, UnalignedReadsLandAtTheCallersAddress) {
  TempFolder dir;
  const std::string content = Pattern(20000);
  WriteAll(dir.Bytes("title.vob"), content);
  MFileUniv file;
  ASSERT_EQ(file.FOpen(dir.Path("title.vob"), MFile::file_overlapped_read), 0);
  EXPECT_TRUE(file.IsOverlapped());
  EXPECT_EQ(file.FTell64(), 0);
  EXPECT_EQ(file.GetSize(), 20000);

  MEvent done;
  OVERLAPPED record;
  SectorBuffer memory(8192);
  // Offset 5000: the transfer starts at 4096 and covers one sector, 904 bytes in front of the buffer.
  char* buffer = memory.At(2048 + 904);
  ASSERT_EQ(file.FReadOverlapped(5000, buffer, 100, &record, &done), 0u);
  EXPECT_EQ(file.GetSectorLead(), 904);
  EXPECT_EQ(record.Offset, 4096u);
  EXPECT_EQ(MFileUniv::FWaitOverlappedCompletion(&done, 10), 0u);
  EXPECT_FALSE(done.IsSet()) << "the wait resets the event";
  EXPECT_EQ(MFileUniv::FWaitOverlappedCompletion(&done, 0), kWaitTimeout);
  EXPECT_EQ(MFileUniv::FWaitOverlappedCompletion(nullptr, 1), kWaitFailed);
  EXPECT_EQ(record.Internal, 0u);
  EXPECT_EQ(record.InternalHigh, 2048u);
  EXPECT_EQ(std::string(buffer, 100), content.substr(5000, 100));

  // Behind the end: end of file, and no message.
  Hearing hearing;
  ASSERT_EQ(file.FReadOverlapped(40960, memory.At(0), 2048, &record, &done), 0u);
  EXPECT_EQ(MFileUniv::FWaitOverlappedCompletion(&done, 10), 0u);
  EXPECT_EQ(record.Internal, kErrorHandleEof);
  EXPECT_EQ(record.InternalHigh, 0u);
  EXPECT_TRUE(hearing.messages.empty());

  EXPECT_EQ(file.FClose(), 0) << "a read-only handle closes without a flush";
  EXPECT_FALSE(file.IsOverlapped());
  EXPECT_EQ(file.FClose(), -1);
}

TEST(Overlapped, WholeSectorWritesSizesAndEveryModesPosition) {
  TempFolder dir;
  SectorBuffer memory(8192);
  std::string bytes = Pattern(6144);
  std::copy(bytes.begin(), bytes.end(), memory.At(0));
  MEvent done;
  OVERLAPPED record;
  {
    MFileUniv file;
    ASSERT_EQ(file.FOpen(dir.Path("image.iso"), MFile::file_overlapped_create), 0);
    ASSERT_EQ(file.FWriteOverlapped(2048, memory.At(0), 6144, &record, &done), 0u);
    EXPECT_EQ(MFileUniv::FWaitOverlappedCompletion(&done, 10), 0u);
    EXPECT_EQ(record.InternalHigh, 6144u);
    EXPECT_EQ(file.GetSize(), 8192);
    EXPECT_EQ(file.FSetFileSize(3000), 0) << "shorter";
    EXPECT_EQ(file.GetSize(), 3000);
    EXPECT_EQ(file.FSetFileSize(10240), 0) << "longer";
    EXPECT_EQ(file.FTell64(), 0);
    EXPECT_EQ(file.FClose(), 0);
  }
  std::string disk = ReadAll(dir.Bytes("image.iso"));
  ASSERT_EQ(disk.size(), 10240u);
  EXPECT_EQ(disk.substr(0, 2048), std::string(2048, '\0'));
  EXPECT_EQ(disk.substr(2048, 952), bytes.substr(0, 952));
  EXPECT_EQ(disk.substr(3000), std::string(10240 - 3000, '\0'));

  // Open-always keeps the file; open-existing needs it; create empties it.
  MFileUniv file;
  for (auto mode : {MFile::file_overlapped_write, MFile::file_overlapped_read, MFile::file_overlapped_update}) {
    ASSERT_EQ(file.FOpen(dir.Path("image.iso"), mode), 0);
    EXPECT_EQ(file.GetSize(), 10240);
    EXPECT_EQ(file.FTell64(), 0);
    EXPECT_EQ(file.FClose(), 0);
  }
  EXPECT_EQ(file.FOpen(dir.Path("none"), MFile::file_overlapped_read), -1);
  EXPECT_FALSE(file.IsOverlapped()) << "a failed open leaves the object closed";
  EXPECT_EQ(file.FOpen(dir.Path("none"), MFile::file_overlapped_update), -1);
  EXPECT_EQ(file.FOpen(dir.Path("new"), MFile::file_overlapped_write), 0);
  file.FClose();
  EXPECT_TRUE(std::filesystem::exists(dir.Bytes("new")));
  ASSERT_EQ(file.FOpen(dir.Path("image.iso"), MFile::file_overlapped_create), 0);
  EXPECT_EQ(file.GetSize(), 0);
  file.FClose();
}

TEST(Overlapped, RefusedTransfersWarnRetryAndReport) {
  // A file that is not open, and an offset that no transfer can take: one
  // retry of the read, told as a warning, then its failure; the write fails
  // at once, to window 16. The library's messages carry no source.
  TempFolder dir;
  WriteAll(dir.Bytes("f"), std::string(8192, 'x'));
  MFileUniv open;
  ASSERT_EQ(open.FOpen(dir.Path("f"), MFile::file_overlapped_update), 0);
  MFileUniv closed;
  struct Row {
    MFileUniv* file;
    long long offset;
    const char16_t* sector;
  } rows[] = {{&closed, 2048, u"1"}, {&open, -2048, u"-1"}};
  for (const Row& row : rows) {
    Hearing hearing;
    MEvent done;
    OVERLAPPED record;
    SectorBuffer memory(4096);
    uint32_t read = row.file->FReadOverlapped(row.offset, memory.At(2048), 2048, &record, &done);
    EXPECT_NE(read, 0u);
    EXPECT_EQ(GetLastError(), read);
    uint32_t written = row.file->FWriteOverlapped(row.offset, memory.At(0), 2048, &record, &done);
    EXPECT_NE(written, 0u);
    ASSERT_EQ(hearing.messages, (std::vector<long>{26001, 26000, 26040})) << row.offset;
    auto number = [](uint32_t code) {
      std::string digits = std::to_string(code);
      return std::u16string(digits.begin(), digits.end());
    };
    const std::u16string sector = row.sector;
    EXPECT_EQ(hearing.texts[0], u"Retry ReadFile at sector " + sector + u" due to Win32 error " + number(read) + u" ...");
    EXPECT_EQ(hearing.texts[1], u"ReadFile at sector " + sector + u" failed, Win32 error " + number(read));
    EXPECT_EQ(hearing.texts[2], u"WriteFile failed at sector " + sector + u", error " + number(written));
    EXPECT_EQ(hearing.sources, (std::vector<void*>(3, nullptr)));
    EXPECT_FALSE(done.IsSet());
  }
  EXPECT_EQ(open.FClose(), 0);
}
