// Folders when the system refuses: a file that cannot be removed stops
// DeleteDirectory with one message, DeleteAllFilesUnderDir goes on past it
// with a warning each, a folder that cannot be removed says where to look,
// and a full volume is no place to write.
#include <VantoroBasicUtils/files/MDirectory.h>
#include <VantoroBasicUtils/files/UFileUtils.h>
#include <VantoroBasicUtils/platform/MessageBox.h>

#include <sys/statvfs.h>

#include <gtest/gtest.h>

#include <cstring>

#include "platform/FaultInjection.h"
#include "support/TempFolder.h"

namespace vp = vbu::platform;

namespace {

bool EndsInLocked(const char* path) {
  std::size_t n = std::strlen(path);
  return n >= 6 && std::strcmp(path + n - 6, "locked") == 0;
}

// unlink refuses paths that end in "locked", by path or in an open folder.
class StLockedFiles : public StSysCallTable {
 public:
  StLockedFiles() {
    vp::Sys().unlink = [](const char* path) {
      if (EndsInLocked(path)) return errno = EBUSY, -1;
      return vp::DefaultSysCalls().unlink(path);
    };
    vp::Sys().unlinkat = [](int folder, const char* path, int flags) {
      if (EndsInLocked(path)) return errno = EBUSY, -1;
      return vp::DefaultSysCalls().unlinkat(folder, path, flags);
    };
  }
};

// s/a, s/t/locked and s/t/z, heard while the locked file cannot be removed.
class LockedTree : public ::testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directories(dir.Bytes("s/t"));
    WriteAll(dir.Bytes("s/a"), "a");
    WriteAll(dir.Bytes("s/t/locked"), "x");
    WriteAll(dir.Bytes("s/t/z"), "z");
  }
  TempFolder dir;
  Hearing hearing;
  StLockedFiles locked;
};

}  // namespace

TEST_F(LockedTree, AFileThatCannotBeRemovedStopsDeleteDirectory) {
  EXPECT_EQ(DeleteDirectory(dir.Path("s")), -1);
  ASSERT_EQ(hearing.messages, std::vector<long>{26000});
  std::string text = dir.Bytes("s/t/locked") + " could not be deleted";
  EXPECT_EQ(hearing.texts[0], std::u16string(text.begin(), text.end()));
  EXPECT_TRUE(std::filesystem::exists(dir.Bytes("s/t")));
}

TEST_F(LockedTree, DeleteAllFilesUnderDirGoesOnPastAFailure) {
  EXPECT_FALSE(UFileUtils::DeleteAllFilesUnderDir(dir.Path("s")));
  ASSERT_EQ(hearing.messages, std::vector<long>{26001});
  std::string text = "Failed to delete file " + dir.Bytes("s/t/locked") + ". The file might be used.";
  EXPECT_EQ(hearing.texts[0], std::u16string(text.begin(), text.end()));
  EXPECT_FALSE(std::filesystem::exists(dir.Bytes("s/a")));
  EXPECT_FALSE(std::filesystem::exists(dir.Bytes("s/t/z")));
  EXPECT_FALSE(UFileUtils::DeleteDir(dir.Path("s")));
}

TEST(FolderFaults, AFolderThatCannotBeRemovedSaysWhereToLook) {
  TempFolder dir;
  std::filesystem::create_directories(dir.Bytes("s"));
  Hearing hearing;
  StSysCallTable saved;
  vp::Sys().rmdir = [](const char*) { return errno = EBUSY, -1; };
  EXPECT_EQ(DeleteDirectory(dir.Path("s")), -1);
  ASSERT_EQ(hearing.messages, (std::vector<long>{26000, 26002}));
  std::string text = "Directory " + dir.Bytes("s") + " could not be deleted";
  EXPECT_EQ(hearing.texts[0], std::u16string(text.begin(), text.end()));
  EXPECT_EQ(hearing.texts[1], u"Check if it is open in an Explorer window");
}

TEST(FolderFaults, AFullVolumeIsNoPlaceToWrite) {
  TempFolder dir;
  std::filesystem::create_directories(dir.Bytes("out"));
  static std::u16string shown;
  vbu::SetMessageBoxHook([](const unsigned short* text, void*) { shown = Text(text); }, nullptr);
  {
    StSysCallTable saved;
    vp::Sys().statvfs = [](const char* path, struct ::statvfs* info) {
      int result = vp::DefaultSysCalls().statvfs(path, info);
      info->f_bavail = 0;
      return result;
    };
    EXPECT_FALSE(MDirectory::CheckDirectory(dir.Path("out")));
    EXPECT_TRUE(shown.size() > 0);
    MDirectory folder(dir.Path(""));
    EXPECT_EQ(folder.GetDiskFreeSpaceW(), 0);
  }
  vbu::SetMessageBoxHook(nullptr, nullptr);
  std::string text = "Folder( " + dir.Bytes("out") + " ) is a read-only drive. please use other drive.";
  EXPECT_EQ(shown, std::u16string(text.begin(), text.end()));
}
