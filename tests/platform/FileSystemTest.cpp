// Questions about paths as the platform layer asks them: the information
// record, existence and removal, the kind of volume and its free space.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "platform/FaultInjection.h"
#include "platform/internal/FileSystem.h"
#include "support/TempFolder.h"

using namespace vbu::literals;
namespace vp = vbu::platform;

TEST(FileSystem, StatGivesWhatTheSystemKnowsOfAPathAndOfADescriptor) {
  TempFolder dir;
  WriteAll(dir.Bytes("b.vob"), Pattern(1234));
  struct stat system;
  ASSERT_EQ(::stat(dir.Bytes("b.vob").c_str(), &system), 0);

  struct _stati64 byPath{}, byDescriptor{}, folder{};
  ASSERT_EQ(vp::StatPath(dir.Path("b.vob"), &byPath), 0u);
  EXPECT_EQ(byPath.st_size, 1234);
  EXPECT_TRUE(S_ISREG(byPath.st_mode));
  EXPECT_EQ(byPath.st_ino, static_cast<uint64_t>(system.st_ino));
  EXPECT_EQ(byPath.st_mtime64, static_cast<int64_t>(system.st_mtim.tv_sec));
  int fd = ::open(dir.Bytes("b.vob").c_str(), O_RDONLY);
  ASSERT_GE(fd, 0);
  EXPECT_EQ(vp::StatDescriptor(fd, &byDescriptor), 0u);
  EXPECT_EQ(byDescriptor.st_ino, byPath.st_ino);
  EXPECT_EQ(byDescriptor.st_size, 1234);
  ::close(fd);
  ASSERT_EQ(vp::StatPath(dir.Path(""), &folder), 0u);
  EXPECT_TRUE(S_ISDIR(folder.st_mode));

  struct _stati64 untouched{};
  untouched.st_size = 77;
  EXPECT_EQ(vp::StatPath(dir.Path("missing"), &untouched), static_cast<uint32_t>(ENOENT));
  EXPECT_EQ(vp::StatPath(u""_u16, &untouched), static_cast<uint32_t>(ENOENT));
  EXPECT_EQ(vp::StatPath(nullptr, &untouched), static_cast<uint32_t>(ENOENT));
  EXPECT_EQ(vp::StatPath(dir.Path("b.vob"), nullptr), static_cast<uint32_t>(EINVAL));
  EXPECT_EQ(vp::StatDescriptor(-1, &untouched), static_cast<uint32_t>(EBADF));
  EXPECT_EQ(vp::StatDescriptor(fd, &untouched), static_cast<uint32_t>(EBADF)) << "closed";
  EXPECT_EQ(untouched.st_size, 77) << "a failure fills nothing in";
}

TEST(FileSystem, SizesAndTimesPastThirtyTwoBitsArriveWhole) {
  StSysCallTable saved;
  vp::Sys().stat = [](const char*, struct ::stat* info) {
    std::memset(info, 0, sizeof *info);
    info->st_size = 5000000000;         // a dual-layer disc image
    info->st_mtim.tv_sec = 4102444800;  // 2100-01-01
    return 0;
  };
  struct _stati64 info{};
  ASSERT_EQ(vp::StatPath(u"/disc.iso"_u16, &info), 0u);
  EXPECT_EQ(info.st_size, 5000000000);
  EXPECT_EQ(info.st_mtime64, 4102444800);
}

TEST(FileSystem, ExistenceAndRemovalOfFilesOnly) {
  TempFolder dir;
  WriteAll(dir.Bytes("b.txt"), "x");
  EXPECT_TRUE(vp::PathExists(dir.Path("b.txt")));
  EXPECT_TRUE(vp::PathExists(dir.Path(""))) << "a folder exists too";
  EXPECT_FALSE(vp::PathExists(dir.Path("missing")));
  EXPECT_FALSE(vp::PathExists(u""_u16));
  EXPECT_FALSE(vp::PathExists(nullptr));

  EXPECT_EQ(vp::RemoveFile(dir.Path("")), static_cast<uint32_t>(EISDIR)) << "not a folder";
  EXPECT_TRUE(vp::PathExists(dir.Path("")));
  EXPECT_NE(vp::RemoveFile(u""_u16), 0u);
  EXPECT_NE(vp::RemoveFile(nullptr), 0u);
  {
    StSysCallTable saved;
    vp::Sys().unlink = [](const char*) { return errno = EACCES, -1; };
    EXPECT_EQ(vp::RemoveFile(dir.Path("b.txt")), static_cast<uint32_t>(EACCES));
  }
  EXPECT_TRUE(vp::PathExists(dir.Path("b.txt")));
  EXPECT_EQ(vp::RemoveFile(dir.Path("b.txt")), 0u);
  EXPECT_FALSE(vp::PathExists(dir.Path("b.txt")));
  EXPECT_EQ(vp::RemoveFile(dir.Path("b.txt")), static_cast<uint32_t>(ENOENT)) << "already gone";
}

TEST(FileSystem, AMissingPathHasNoRootAndAnUntellableKindIsLeftToFreeSpace) {
  TempFolder dir;
  EXPECT_EQ(vp::GetDriveKind(dir.Path("missing/")), vp::DriveKind::kNoRoot);
  EXPECT_EQ(vp::GetDriveKind(u""_u16), vp::DriveKind::kNoRoot);
  EXPECT_EQ(vp::GetDriveKind(dir.Path("")), vp::DriveKind::kFixed) << "the test's own folder is writable";
  StSysCallTable saved;
  vp::Sys().statvfs = [](const char*, struct ::statvfs*) { return errno = EIO, -1; };
  vp::Sys().statfs = [](const char*, struct ::statfs*) { return errno = EIO, -1; };
  EXPECT_EQ(vp::GetDriveKind(dir.Path("")), vp::DriveKind::kFixed);
}

TEST(FileSystem, FreeBytesAreTheCallersBlocksTimesTheFragmentSize) {
  StSysCallTable saved;
  vp::Sys().statvfs = [](const char*, struct ::statvfs* info) {
    std::memset(info, 0, sizeof *info);
    info->f_bavail = 1ull << 40;  // what the caller may use
    info->f_bfree = 1ull << 41;   // what root may use
    info->f_frsize = 4096;
    info->f_bsize = 65536;
    return 0;
  };
  uint64_t bytes = 0;
  ASSERT_EQ(vp::GetFreeBytesAvailable(u"/media/disc/"_u16, &bytes), 0u);
  EXPECT_EQ(bytes, 1ull << 52);
  EXPECT_EQ(vp::GetFreeBytesAvailable(u"/media/disc/"_u16, nullptr), static_cast<uint32_t>(EINVAL));
  EXPECT_EQ(vp::GetFreeBytesAvailable(u""_u16, &bytes), static_cast<uint32_t>(ENOENT));
}
