// The application's environment with the system's answers set by the test:
// the executable in a temporary tree, the user's home folder, module loads
// counted, and a settings write that fills the disk part way.
#include <VantoroBasicUtils/environment/CBrevanderDirectories.h>
#include <VantoroBasicUtils/environment/CBrevanderProfile.h>
#include <VantoroBasicUtils/environment/CSharedLibrary.h>

#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <string>

#include "platform/FaultInjection.h"
#include "platform/internal/Errors.h"
#include "platform/internal/SettingsFile.h"
#include "support/TempFolder.h"

using namespace vbu::literals;
namespace vp = vbu::platform;
namespace fs = std::filesystem;

namespace {

std::u16string S(const MString& text) { return Text(text); }
std::u16string Wide(const std::string& bytes) { return std::u16string(bytes.begin(), bytes.end()); }

// The running program's file, the user's home folder, the environment's
// variables and the folders the user may not write, as the test says.
class StFakeSystem : public StSysCallTable {
 public:
  StFakeSystem(std::string exe, std::string home, std::map<std::string, std::string> variables = {},
               std::set<std::string> readOnly = {}) {
    sExe = std::move(exe);
    sHome = std::move(home);
    sVariables = std::move(variables);
    sReadOnly = std::move(readOnly);
    vp::Sys().readlink = [](const char* path, char* buffer, std::size_t size) -> long {
      if (std::strcmp(path, "/proc/self/exe") != 0) return vp::DefaultSysCalls().readlink(path, buffer, size);
      if (sExe.empty()) return errno = ENOENT, -1;
      std::size_t n = std::min(size, sExe.size());
      std::memcpy(buffer, sExe.data(), n);
      return static_cast<long>(n);
    };
    vp::Sys().getpwuid_r = [](unsigned, struct passwd* record, char* buffer, std::size_t size,
                              struct passwd** result) -> int {
      *result = nullptr;
      if (sHome.empty()) return 0;  // no entry
      if (size < sHome.size() + 1) return ERANGE;
      std::memset(record, 0, sizeof *record);
      std::memcpy(buffer, sHome.c_str(), sHome.size() + 1);
      record->pw_dir = buffer;
      *result = record;
      return 0;
    };
    vp::Sys().getenv = [](const char* name) -> const char* {
      auto found = sVariables.find(name);
      return found == sVariables.end() ? nullptr : found->second.c_str();
    };
    // Every folder is writable (missing ones too) but those listed.
    vp::Sys().access = [](const char* path, int) -> int {
      std::string folder = path;
      while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
      return sReadOnly.count(folder) ? (errno = EACCES, -1) : 0;
    };
  }

 private:
  static inline std::string sExe, sHome;
  static inline std::map<std::string, std::string> sVariables;
  static inline std::set<std::string> sReadOnly;
};

}  // namespace

TEST(ExecutablePaths, TheFolderAndTheSettingsFileFollowTheProgramsPath) {
  struct Case {
    std::string exe;
    std::u16string folder, profile;
  } cases[] = {
      {"/opt/tool/bin/tool", u"/opt/tool/bin/", u"/opt/tool/bin/tool.ini"},
      {"/opt/tool.d/bin/tool", u"/opt/tool.d/bin/", u"/opt/tool.d/bin/tool.ini"},  // a dot in a folder is no cut
      {"/opt/bin/tool.exe", u"/opt/bin/", u"/opt/bin/tool.ini"},
      {"/opt/bin/a.b.c", u"/opt/bin/", u"/opt/bin/a.b.ini"},
      {"/opt/bin/.tool", u"/opt/bin/", u"/opt/bin/.tool.ini"},  // a hidden file's dot is no extension
      {"/opt/bin/tool (deleted)", u"/opt/bin/", u"/opt/bin/tool.ini"},  // replaced while it runs
      {"tool.exe", u"Error", u"Error"},                          // no separator at all
      {"", u"Error", u"Error"},                                  // the system cannot tell
  };
  for (const Case& c : cases) {
    StFakeSystem system(c.exe, "/home/ann");
    EXPECT_EQ(S(CBrevanderDirectories::GetAppDirectory()), c.folder) << c.exe;
    EXPECT_EQ(S(CBrevanderDirectories::GetAppProfile()), c.profile) << c.exe;
  }
  // The real one: this test program.
  EXPECT_EQ(S(CBrevanderDirectories::GetAppDirectory()), Wide(fs::read_symlink("/proc/self/exe").parent_path().string() + "/"));
  EXPECT_EQ(S(CBrevanderDirectories::GetSystemDirectoryW()), u"/usr/lib/");
  EXPECT_EQ(S(CBrevanderDirectories::GetSystemDriverDirectory()), u"/usr/lib/drivers/");
}

TEST(ExecutablePaths, TheUsersHomeFolderStandsForTheSystemDrive) {
  struct Case {
    std::string home;
    std::u16string drive;
    std::string variable;  // HOME
  } cases[] = {{"/home/ann", u"/home/ann", ""}, {"/home/ann/", u"/home/ann", ""}, {"/", u"", ""}, {"", u"", ""},
               {"", u"/home/env", "/home/env"},  // no entry in the password database
               {"/home/ann", u"/home/ann", "/home/env"}};
  for (const Case& c : cases) {
    StFakeSystem system("/opt/bin/tool", c.home, {{"HOME", c.variable}});
    EXPECT_EQ(S(CBrevanderDirectories::GetSystemDrive()), c.drive) << c.home;
  }
  // Neither: the user's folders are empty, and nothing is made at the root.
  {
    StFakeSystem nobody("/opt/bin/tool", "");
    EXPECT_EQ(S(CBrevanderDirectories::GetScenarioDirectory()), u"");
    EXPECT_EQ(S(CBrevanderDirectories::GetScriptDirectory()), u"");
    EXPECT_FALSE(fs::exists("/My Scenarios"));
  }
  // The real one: the password database's entry of this user.
  struct passwd* real = getpwuid(getuid());
  if (real && real->pw_dir) {
    std::string home = real->pw_dir;
    while (!home.empty() && home.back() == '/') home.pop_back();
    EXPECT_EQ(S(CBrevanderDirectories::GetSystemDrive()), Wide(home));
  }
}

// The executable at <tree>/app/bin/tool, the user's home at <tree>/home.
class AppTree : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::create_directories(tree.Bytes("app/bin"));
    fs::create_directories(tree.Bytes("home"));
    fs::create_directories(tree.Bytes("work"));
    system = std::make_unique<StFakeSystem>(tree.Bytes("app/bin/tool"), tree.Bytes("home"));
    bin = Wide(tree.Bytes("app/bin/"));
  }
  void TearDown() override {
    CBrevanderProfile::SetProfilePath(nullptr);
    system.reset();
  }
  bool IsFolder(const std::string& name) { return fs::is_directory(tree.Bytes(name)); }

  TempFolder tree;
  std::unique_ptr<StFakeSystem> system;
  std::u16string bin;
};

// (Data, Temp and Project Templates: with the installed program's folders, below.)
TEST_F(AppTree, FoldersBesideTheExecutableAreMadeWhereTheyAreForWriting) {
  EXPECT_EQ(S(CBrevanderDirectories::GetDocumentationDirectory()), bin + u"Documentation/");
  EXPECT_FALSE(IsFolder("app/bin/Documentation"));

  // Two separators in a row; only the last level is made, so its parent must be there.
  EXPECT_EQ(S(CBrevanderDirectories::GetTemplateDirectory()), bin + u"/My Scenarios/Templates/");
  EXPECT_FALSE(IsFolder("app/bin/My Scenarios"));
  fs::create_directories(tree.Bytes("app/bin/My Scenarios"));
  CBrevanderDirectories::GetTemplateDirectory();
  EXPECT_TRUE(IsFolder("app/bin/My Scenarios/Templates"));
  EXPECT_EQ(S(CBrevanderDirectories::GetTempDirectory()), bin + u"Temp/") << "a folder that is there is no failure";
}

TEST_F(AppTree, SupportFilesByResolution) {
  struct Case {
    MString (*get)(resolution_t);
    std::u16string ntsc, pal;
  } cases[] = {
      {CBrevanderDirectories::GetDefaultBackgroundImageFile, u"bg_ntsc.mps", u"bg_pal.mps"},
      {CBrevanderDirectories::GetPlaceHolderWarningMpegFile, u"w_ph_ntsc.mps", u"w_ph_pal.mps"},
      {CBrevanderDirectories::GetMissingVobWarningMpegFile, u"w_vob_ntsc.mps", u"w_vob_pal.mps"},
      {CBrevanderDirectories::GetPlaceHolderWarningVobFile, u"w_ph_ntsc.vob", u"w_ph_pal.vob"},
      {CBrevanderDirectories::GetMissingVobWarningVobFile, u"w_vob_ntsc.vob", u"w_vob_pal.vob"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(S(c.get(kResolutionNTSC)), bin + u"Data/" + c.ntsc);
    EXPECT_EQ(S(c.get(kResolutionPAL)), bin + u"Data/" + c.pal);
    EXPECT_EQ(S(c.get(kResolutionUnset)), bin + u"Data/" + c.pal) << "anything but NTSC is PAL";
  }
  EXPECT_EQ(S(CBrevanderDirectories::GetDefaultSubPicBackgroundNTSCVideo()), bin + u"Data/defaultStill_NTSC.mps");
  EXPECT_EQ(S(CBrevanderDirectories::GetDefaultSubPicBackgroundPALVideo()), bin + u"Data/defaultStill_PAL.mps");
  EXPECT_TRUE(IsFolder("app/bin/Data"));
}

TEST_F(AppTree, CacheFoldersStandBesideTheirDocument) {
  std::u16string work = Wide(tree.Bytes("work/"));
  std::u16string film = work + u"Film.dat";
  unsigned short* path = const_cast<unsigned short*>(vbu::ToUnits(film.c_str()));
  EXPECT_EQ(S(CBrevanderDirectories::GetEncodedJacketDataDirectory(path)),
            work + u"Film Cache/Encoded Files/Jacket Files/");
  EXPECT_TRUE(IsFolder("work/Film Cache/Encoded Files/Jacket Files"));
  EXPECT_EQ(S(CBrevanderDirectories::GetSubtitleTextDirectory(path)), work + u"Film Cache/Subtitle Files/");
  EXPECT_TRUE(IsFolder("work/Film Cache/Subtitle Files"));
  EXPECT_EQ(S(CBrevanderDirectories::GetEncodedDataDirectory(path)), work + u"Film Cache/Encoded Files/");
  std::u16string bare = work + u"Take";
  EXPECT_EQ(S(CBrevanderDirectories::GetTempDataDirectory(const_cast<unsigned short*>(vbu::ToUnits(bare.c_str())))),
            work + u"Take Cache/");
  EXPECT_TRUE(IsFolder("work/Take Cache"));

  EXPECT_EQ(S(CBrevanderDirectories::GetBody(vbu::ToUnits(film.c_str()))), work + u"Film");
  EXPECT_EQ(S(CBrevanderDirectories::GetDirectory(vbu::ToUnits(film.c_str()))), work);
  EXPECT_EQ(S(CBrevanderDirectories::GetDirectory(u"Film.dat"_u16)), u"");

  // A missing parent leaves the folder unmade, and the path comes all the same; no file, no folder.
  std::u16string lost = Wide(tree.Bytes("nowhere/x.dat"));
  EXPECT_EQ(S(CBrevanderDirectories::GetEncodedDataDirectory(const_cast<unsigned short*>(vbu::ToUnits(lost.c_str())))),
            Wide(tree.Bytes("nowhere/x Cache/Encoded Files/")));
  EXPECT_FALSE(fs::exists(tree.Bytes("nowhere")));
  EXPECT_EQ(S(CBrevanderDirectories::GetEncodedJacketDataDirectory(const_cast<unsigned short*>(u""_u16))), u"");
  EXPECT_EQ(S(CBrevanderDirectories::GetTempDataDirectory(nullptr)), u"");
}

TEST_F(AppTree, UserFoldersDefaultToTheHomeFolder) {
  CBrevanderProfile::SetProfilePath(tree.Path("app/bin/tool.ini"));
  std::u16string home = Wide(tree.Bytes("home"));
  EXPECT_EQ(S(CBrevanderDirectories::GetScenarioDirectory()), home + u"/My Scenarios/");
  EXPECT_TRUE(IsFolder("home/My Scenarios"));
  EXPECT_EQ(S(CBrevanderDirectories::GetScriptDirectory()), home + u"/My Scenarios/Script/");
  EXPECT_TRUE(IsFolder("home/My Scenarios/Script"));
  EXPECT_FALSE(fs::exists(tree.Bytes("app/bin/tool.ini"))) << "reading writes nothing";
}

TEST_F(AppTree, AnInstalledProgramKeepsItsFilesInTheUsersFolders) {
  struct Case {
    const char* name;
    bool binWritable, iniBeside;
    std::map<std::string, std::string> variables;
    std::string config, data, cache;  // in the tree; "app/bin/" for beside the executable
  } cases[] = {
      {"writable folder", true, false, {}, "app/bin/", "app/bin/", "app/bin/"},
      {"portable install", false, true, {}, "app/bin/", "app/bin/", "app/bin/"},
      {"installed", false, false, {}, "home/.config/tool/", "home/.local/share/tool/", "home/.cache/tool/"},
      {"installed, XDG", false, false,
       {{"XDG_CONFIG_HOME", tree.Bytes("x/conf")}, {"XDG_DATA_HOME", tree.Bytes("x/data/")},
        {"XDG_CACHE_HOME", "relative/is/ignored"}},
       "x/conf/tool/", "x/data/tool/", "home/.cache/tool/"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    fs::remove_all(tree.Bytes("home"));
    fs::remove_all(tree.Bytes("x"));
    fs::remove(tree.Bytes("app/bin/tool.ini"));
    fs::create_directories(tree.Bytes("home"));
    if (c.iniBeside) WriteAll(tree.Bytes("app/bin/tool.ini"), "");
    std::set<std::string> readOnly;
    if (!c.binWritable) readOnly.insert(tree.Bytes("app/bin"));
    StFakeSystem fake(tree.Bytes("app/bin/tool"), tree.Bytes("home"), c.variables, readOnly);
    EXPECT_EQ(S(CBrevanderDirectories::GetAppProfile()), Wide(tree.Bytes(c.config + "tool.ini")));
    CBrevanderProfile::SetAppProfile();  // a first start there: its folder is made, the whole set written
    EXPECT_EQ(ReadAll(tree.Bytes(c.config + "tool.ini")).rfind("[Vantoro]\r\n1=0\r\n", 0), 0u);
    EXPECT_EQ(S(CBrevanderDirectories::GetSupportDataDirectory()), Wide(tree.Bytes(c.data + "Data/")));
    EXPECT_EQ(S(CBrevanderDirectories::GetProjectTemplateDirectory()), Wide(tree.Bytes(c.data + "Project Templates/")));
    EXPECT_EQ(S(CBrevanderDirectories::GetTempDirectory()), Wide(tree.Bytes(c.cache + "Temp/")));
    for (const std::string& made : {c.data + "Data", c.data + "Project Templates", c.cache + "Temp"}) {
      EXPECT_TRUE(IsFolder(made)) << made;
    }
    EXPECT_EQ(S(CBrevanderDirectories::GetAppDirectory()), bin) << "the program's own folder stays";
  }
}

TEST(SettingsFile, AFolderThatTakesNoNewFileGetsTheFileRewrittenInPlace) {
  TempFolder dir;
  WriteAll(dir.Bytes("app.ini"), "[Audio]\r\nBitrate=128\r\n; a long note that the shorter file loses\r\n");
  const std::u16string path = Wide(dir.Bytes("app.ini"));
  const auto permissions = fs::status(dir.Bytes("app.ini")).permissions();
  StSysCallTable saved;
  vp::Sys().open = [](const char* name, int flags, unsigned mode) -> int {
    if (flags & O_CREAT) return errno = EACCES, -1;  // the folder refuses new files
    return vp::DefaultSysCalls().open(name, flags, mode);
  };
  EXPECT_EQ(vp::WriteSetting(path.c_str(), u"Audio", u"Bitrate", u"256"), 0u);
  EXPECT_EQ(vp::WriteSetting(path.c_str(), u"Audio", nullptr, nullptr), 0u);
  EXPECT_EQ(ReadAll(dir.Bytes("app.ini")), "");
  EXPECT_EQ(vp::WriteSetting(path.c_str(), u"Video", u"Format", u"PAL"), 0u);
  EXPECT_EQ(ReadAll(dir.Bytes("app.ini")), "[Video]\r\nFormat=PAL\r\n");
  EXPECT_EQ(fs::status(dir.Bytes("app.ini")).permissions(), permissions);
  // A disk that is full keeps the old file whole there too.
  vp::Sys().fallocate = [](int, int64_t, int64_t) { return errno = ENOSPC, -1; };
  EXPECT_EQ(vp::WriteSetting(path.c_str(), u"Video", u"Format", u"NTSC with a longer value"),
            static_cast<uint32_t>(ENOSPC));
  EXPECT_EQ(ReadAll(dir.Bytes("app.ini")), "[Video]\r\nFormat=PAL\r\n");
}

namespace {

// A disk that fills up in the middle of a write: the first write to a file
// moves half of what it was given, every later one fails with ENOSPC. (A
// failure of each call in turn, the whole call, is swept in
// FaultSweepTest.)
class StDiskFillsUp : public StSysCallTable {
 public:
  StDiskFillsUp() {
    sWrites = 0;
    vp::Sys().write = [](int fd, const void* buffer, std::size_t count) -> long {
      if (fd <= 2) return vp::DefaultSysCalls().write(fd, buffer, count);
      if (++sWrites == 1 && count > 1) return vp::DefaultSysCalls().write(fd, buffer, count / 2);
      return errno = ENOSPC, -1;
    };
  }

 private:
  static inline int sWrites = 0;
};

}  // namespace

TEST(SettingsFile, ADiskThatFillsUpMidWriteLeavesTheOldFileWhole) {
  TempFolder dir;
  const std::string old = "; notes\n[Audio]\nBitrate=128\n" + std::string(100000, 'x') + "=1\n";
  const std::u16string path = Wide(dir.Bytes("app.ini"));
  WriteAll(dir.Bytes("app.ini"), old);
  {
    StDiskFillsUp full;
    EXPECT_EQ(vp::WriteSetting(path.c_str(), u"Audio", u"Bitrate", u"256"), static_cast<uint32_t>(ENOSPC));
  }
  EXPECT_EQ(ReadAll(dir.Bytes("app.ini")), old);
  int files = 0;
  for (const auto& entry : fs::directory_iterator(dir.Bytes(""))) files += entry.is_regular_file();
  EXPECT_EQ(files, 1) << "nothing is left beside the file";
  // Through the profile the failure is silent, and the file is whole as well.
  {
    CBrevanderProfile::SetProfilePath(vbu::ToUnits(path.c_str()));
    StDiskFillsUp full;
    CBrevanderProfile::WriteProfileInt(kProfileAudioBitrate, 256);
    CBrevanderProfile::SetProfilePath(nullptr);
  }
  EXPECT_EQ(ReadAll(dir.Bytes("app.ini")), old);
}

namespace {

int gOpens = 0;

}  // namespace

TEST(SharedLibrary, LoadsOnceAndTriesAgainAfterAFailure) {
  StSysCallTable saved;
  gOpens = 0;
  vp::Sys().dlopen = [](const char* name, int flags) {
    ++gOpens;
    return vp::DefaultSysCalls().dlopen(name, flags);
  };
  MString path;
  path.ImportASCII(VBU_TEST_PLUGIN, -1);
  CSharedLibrary plugin(path);
  EXPECT_TRUE(plugin.Load());
  EXPECT_TRUE(plugin.Load());
  EXPECT_EQ(gOpens, 1);

  // A bare name is looked for beside the executable first.
  {
    StFakeSystem beside(fs::path(VBU_TEST_PLUGIN).parent_path().string() + "/host", "/home/ann");
    std::u16string name = Wide(fs::path(VBU_TEST_PLUGIN).filename().string());
    CSharedLibrary bare(vbu::ToUnits(name.c_str()));
    EXPECT_NE(bare.LoadFunction("VbuTestPluginAnswer"), nullptr);
    gOpens = 0;
  }

  CSharedLibrary missing(u"/no/such/module.so"_u16);
  EXPECT_FALSE(missing.Load());
  EXPECT_EQ(missing.LoadFunction("VbuTestPluginAnswer"), nullptr);
  EXPECT_EQ(gOpens, 2) << "a failed load is tried again";
}
