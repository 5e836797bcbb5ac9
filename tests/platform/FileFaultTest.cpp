// Files when the system fails: a join's source whose size cannot be had, a
// folder where nothing may be written, streams and closes that fail, and the
// read-only tests of volumes.
#include <VantoroBasicUtils/files/MFileSpec.h>
#include <VantoroBasicUtils/files/MFileUniv.h>

#include <sys/statfs.h>
#include <sys/statvfs.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "platform/FaultInjection.h"
#include "support/TempFolder.h"

using namespace vbu::literals;
namespace vp = vbu::platform;

// A failed read or write of a join, at every place, is swept in
// FaultSweepTest; here, the one failure that gives a code of its own.
TEST(JoinFaults, ASourceWhoseSizeCannotBeHadGivesTheCode) {
  TempFolder dir;
  WriteAll(dir.Bytes("source"), Pattern(5000, 2));
  MFileUniv destination;
  ASSERT_EQ(destination.FOpen(dir.Path("disc.iso"), MFile::file_overlapped_create), 0);
  ASSERT_EQ(destination.ConcatInitialize(2048, 0), 0);
  StSysCallTable saved;
  vp::Sys().fstat = [](int, struct ::stat*) { return errno = EIO, -1; };
  MString path = dir.Path("source");
  bool cancelled = false;
  EXPECT_EQ(destination.ConcatFile(path, 0, cancelled, 0), EIO);
}

// A refused open gives the system's reason as the library's code: ENOSYS
// shares its number with the end-of-file code, and must not read as one.
TEST(FileFaults, ARefusedOpenGivesTheSystemsReasonOnEveryRoute) {
  static int error;
  TempFolder dir;
  StSysCallTable saved;
  vp::Sys().open = [](const char*, int, unsigned) { return errno = error, -1; };
  const struct {
    int error;
    uint32_t code;
  } rows[] = {{EROFS, EROFS}, {ENOSYS, kErrorNotImplemented}};
  for (const auto& row : rows) {
    error = row.error;
    for (auto mode : {MFile::file_overlapped_create, MFile::file_overlapped_read, MFile::file_create_text}) {
      SCOPED_TRACE(std::to_string(row.error) + " " + std::to_string(mode));
      MFileUniv file;
      EXPECT_EQ(file.FOpen(dir.Path("disc.iso"), mode), -1);
      EXPECT_EQ(GetLastError(), row.code);
      EXPECT_EQ(file.FClose(), -1);
    }
  }
  EXPECT_FALSE(std::filesystem::exists(dir.Bytes("disc.iso")));
}

TEST(FileFaults, AStreamThatCannotWriteSaysSoAtItsClose) {
  TempFolder dir;
  MFileUniv file;
  ASSERT_EQ(file.FOpen(dir.Path("list.txt"), MFile::file_create_text), 0);
  EXPECT_GE(file.FPuts("buffered line\n"), 0);
  StSysCallTable saved;
  vp::Sys().write = [](int, const void*, std::size_t) -> long { return errno = ENOSPC, -1; };
  EXPECT_EQ(file.FWrite("x", 1), -1);
  EXPECT_EQ(GetLastError(), static_cast<uint32_t>(ENOSPC));
  EXPECT_NE(file.FClose(), 0) << "the stream's bytes never reached the disk";
}

// ---- read-only tests of volumes

namespace {

// What the volume questions answer, and the paths that statvfs was asked about.
struct VolumeAnswers {
  static inline std::vector<std::string> asked;
  static inline int statfsCalls = 0;
  static inline unsigned long freeBlocks = 100, flags = 0;
  static inline long type = 0xEF53;  // ext4
  static inline bool statvfsFails = false;
};

class StVolume : public StSysCallTable {
 public:
  StVolume() {
    VolumeAnswers::statfsCalls = 0;
    VolumeAnswers::freeBlocks = 100;
    VolumeAnswers::flags = 0;
    VolumeAnswers::type = 0xEF53;
    VolumeAnswers::statvfsFails = false;
    VolumeAnswers::asked.clear();
    vp::Sys().statvfs = [](const char* path, struct ::statvfs* info) {
      VolumeAnswers::asked.push_back(path);
      if (VolumeAnswers::statvfsFails) return errno = EIO, -1;
      std::memset(info, 0, sizeof *info);
      info->f_bavail = VolumeAnswers::freeBlocks;
      info->f_frsize = 4096;
      info->f_flag = VolumeAnswers::flags;
      return 0;
    };
    vp::Sys().statfs = [](const char*, struct ::statfs* info) {
      ++VolumeAnswers::statfsCalls;
      std::memset(info, 0, sizeof *info);
      info->f_type = VolumeAnswers::type;
      return 0;
    };
  }
};

}  // namespace

TEST(ReadOnlyVolumes, FullReadOnlyOpticalAndUnaskableVolumesCannotBeWritten) {
  TempFolder dir;
  MString root = dir.Path("");
  StVolume volume;
  EXPECT_FALSE(MFileSpecWin::IsDriveReadOnly(root, false));
  VolumeAnswers::freeBlocks = 0;
  EXPECT_TRUE(MFileSpecWin::IsDriveReadOnly(root, false)) << "a full volume counts as read-only";
  VolumeAnswers::freeBlocks = 100;
  VolumeAnswers::flags = ST_RDONLY;
  EXPECT_TRUE(MFileSpecWin::IsDriveReadOnly(root, false));
  EXPECT_FALSE(MFileSpecWin::IsDriveReadOnly(root, true)) << "without the kind, free space alone decides";
  VolumeAnswers::flags = 0;
  VolumeAnswers::type = 0x9660;
  EXPECT_TRUE(MFileSpecWin::IsDriveReadOnly(root, false)) << "ISO 9660";
  VolumeAnswers::type = 0x15013346;
  EXPECT_TRUE(MFileSpecWin::IsDriveReadOnly(root, false)) << "UDF";
  VolumeAnswers::type = 0xEF53;
  VolumeAnswers::statvfsFails = true;
  EXPECT_TRUE(MFileSpecWin::IsDriveReadOnly(root, true)) << "a volume that cannot be asked";
}

TEST(ReadOnlyVolumes, AFileIsJudgedByTheFreeSpaceOfTheFolderThatHoldsItAlone) {
  TempFolder dir;
  StVolume volume;
  VolumeAnswers::type = 0x9660;  // would count as optical if the kind were asked
  EXPECT_FALSE(MFileSpecWin::IsFileOnReadOnlyDrive(dir.Path("b.txt")));
  EXPECT_FALSE(MFileSpecWin::IsFileOnReadOnlyDrive(u"/media/disc/VIDEO_TS/VTS_01_1.VOB"_u16));
  EXPECT_FALSE(MFileSpecWin::IsFileOnReadOnlyDrive(u"/disc.iso"_u16));
  EXPECT_FALSE(MFileSpecWin::IsFileOnReadOnlyDrive(u"/media//disc.iso"_u16));
  EXPECT_FALSE(MFileSpecWin::IsFileOnReadOnlyDrive(u"disc.iso"_u16));
  EXPECT_EQ(VolumeAnswers::statfsCalls, 0);
  EXPECT_FALSE(MFileSpecWin::IsDriveReadOnly(u"/media/disc///"_u16, true));
  EXPECT_EQ(VolumeAnswers::asked, (std::vector<std::string>{dir.Bytes(""), "/media/disc/VIDEO_TS/", "/", "/media/",
                                                            "./", "/media/disc/"}));
  VolumeAnswers::freeBlocks = 0;
  EXPECT_TRUE(MFileSpecWin::IsFileOnReadOnlyDrive(dir.Path("b.txt")));
}

TEST(FileFaults, AFailedCloseLetsTheNumberGo) {
  // The system lets a descriptor go even when its close fails: the file must
  // not close that number again later, when another open may hold it.
  static std::vector<int> closed;
  closed.clear();
  TempFolder dir;
  for (MFile::file_open_t mode : {MFile::file_overlapped_create, MFile::file_create_binary}) {
    int number = -1;
    {
      MFileUniv file;
      ASSERT_EQ(file.FOpen(dir.Path("f"), mode), 0);
      StSysCallTable table;
      vp::Sys().close = [](int fd) {
        closed.push_back(fd);
        vp::DefaultSysCalls().close(fd);
        return errno = EIO, -1;
      };
      EXPECT_EQ(file.FClose(), -1) << mode;
      ASSERT_EQ(closed.size(), 1u) << mode;
      number = closed[0];
      EXPECT_EQ(file.FClose(), -1) << "nothing left to close";
    }  // the destructor closes nothing either
    EXPECT_EQ(closed, std::vector<int>{number}) << mode;
    closed.clear();
  }
}

// Offsets, sizes and progress past 4 GiB: a sparse source of 5 GiB and a
// little more, joined behind a small one. Only windows are compared: the
// start, both sides of 4 GiB in the source and in the destination, and the
// end with its padding. Once, on the system's queue by default (the other routes run the
// same code with the smaller files of the engine's own tests).
TEST(LargeJoin, ASourcePastFourGiBIsJoinedWhole) {
  TempFolder dir;
  MFileUniv destination;
  ASSERT_EQ(destination.FOpen(dir.Path("disc.iso"), MFile::file_overlapped_create), 0);
  ASSERT_EQ(destination.ConcatInitialize(2048, 0), 0);
  bool cancelled = false;
  const std::string small = Pattern(5000, 15);
  WriteAll(dir.Bytes("small"), small);
  ASSERT_EQ(destination.ConcatFile(dir.Path("small"), 0, cancelled, 0), 0);
  constexpr uint64_t kGiB = uint64_t{1} << 30;
  constexpr uint64_t kSize = 5 * kGiB + 1000;
  constexpr uint64_t kFirst = 6144;  // the small source, padded
  const std::string big = dir.Bytes("big.vob");
  // Windows of the source that hold data; the rest is holes, read as zeros.
  const std::vector<std::pair<uint64_t, std::string>> windows = {
      {0, Pattern(8192, 11)},
      {4 * kGiB - kFirst - 4096, Pattern(8192, 12)},   // across 4 GiB of the destination
      {4 * kGiB - 1000, Pattern(2000, 13)},            // across 4 GiB of the source
      {kSize - 5000, Pattern(5000, 14)},               // the end
  };
  {
    std::ofstream out(big, std::ios::binary);
    for (const auto& [at, bytes] : windows) {
      out.seekp(static_cast<std::streamoff>(at));
      out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    ASSERT_TRUE(out.good());
  }
  ASSERT_EQ(std::filesystem::file_size(big), kSize);
  Hearing hearing;
  MString path = dir.Path("big.vob");
  ASSERT_EQ(destination.ConcatFile(path, 0, cancelled, 0), 0);
  const OVERLAPPED& written = destination.GetConcatInfo().mWriteInfo.mOverlapped;
  const uint64_t rounded = (kSize + 2047) / 2048 * 2048;
  EXPECT_EQ((uint64_t{written.OffsetHigh} << 32) | written.Offset, kFirst + rounded);
  EXPECT_EQ(destination.GetConcatInfo().mBytesWritten, rounded);
  EXPECT_EQ(static_cast<uint64_t>(hearing.advanced) * 2048, rounded) << "progress counts every unit";
  ASSERT_EQ(destination.FClose(), 0);

  std::ifstream disc(dir.Bytes("disc.iso"), std::ios::binary);
  auto at = [&](uint64_t offset, std::size_t count) {
    std::string bytes(count, '\0');
    disc.seekg(static_cast<std::streamoff>(offset));
    disc.read(bytes.data(), static_cast<std::streamsize>(count));
    return bytes;
  };
  EXPECT_TRUE(at(0, kFirst) == small + std::string(kFirst - 5000, '\0'));
  for (const auto& [offset, bytes] : windows) {
    SCOPED_TRACE(offset);
    // A window, with a stretch of the holes around it where there is one.
    const uint64_t before = offset == 0 ? 0 : 1024;
    const uint64_t after = offset + bytes.size() == kSize ? 0 : 1024;
    std::string expected = std::string(before, '\0') + bytes + std::string(after, '\0');
    EXPECT_TRUE(at(kFirst + offset - before, expected.size()) == expected);
  }
  EXPECT_EQ(at(kFirst + kSize, rounded - kSize), std::string(rounded - kSize, '\0')) << "padded to the sector";
  EXPECT_EQ(std::filesystem::file_size(dir.Bytes("disc.iso")), kFirst + rounded);
}
