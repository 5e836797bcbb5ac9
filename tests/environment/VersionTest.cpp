// The version record with its feature switches in the settings file, and
// plug-in modules loaded on first use.
#include <VantoroBasicUtils/environment/CBrevanderDirectories.h>
#include <VantoroBasicUtils/environment/CBrevanderProfile.h>
#include <VantoroBasicUtils/environment/CSharedLibrary.h>
#include <VantoroBasicUtils/environment/CVersionControl.h>

#include <gtest/gtest.h>

#include "support/TempFolder.h"

using namespace vbu::literals;

namespace {

class Profile : public CBrevanderProfile {
 public:
  static void Initialize() { InitializeProfileValue(); }
};

MString PluginPath() {
  MString path;
  path.ImportASCII(VBU_TEST_PLUGIN, -1);
  return path;
}

}  // namespace

TEST(VersionControl, TheCurrentRecordIsTheLastMadeUntilOneDies) {
  EXPECT_EQ(CVersionControl::gVersionControl, nullptr);
  EXPECT_FALSE(CVersionControl::IsVantoroRunning());
  EXPECT_EQ(Text(CBrevanderDirectories::GetDvdPlayerDirectory()), u"");
  EXPECT_EQ(Text(CBrevanderDirectories::GetDvdPlayerRelativeFsListFilePath()), u"");
  {
    auto* first = new CVersionControl;
    EXPECT_EQ(CVersionControl::gVersionControl, first);
    EXPECT_EQ(first->GetEdition(), 0);
    EXPECT_FALSE(first->IsSupportAC3Encoder());
    first->SetEdition(kVantoroStandardID);
    first->SetMajorVersion(kMajorVersion);
    first->SetBuildVersion(kBuildVersion);
    EXPECT_TRUE(CVersionControl::IsVantoroRunning());
    MString player = CBrevanderDirectories::GetDvdPlayerDirectory();
    EXPECT_EQ(Text(player), Text(CBrevanderDirectories::GetAppDirectory() + MString(u"EmbeddedDVDPlayer"_u16)));
    EXPECT_EQ(Text(CBrevanderDirectories::GetDvdPlayerRelativeFsListFilePath()),
              Text(player + MString(u"/dvdplayer_rel_fslist.lst"_u16)));

    CVersionControl copy(*first);
    EXPECT_EQ(CVersionControl::gVersionControl, first) << "a copy does not become current";
    EXPECT_EQ(copy.GetEdition(), kVantoroStandardID);
    CVersionControl* second = new CVersionControl;
    EXPECT_EQ(CVersionControl::gVersionControl, second);
    EXPECT_FALSE(CVersionControl::IsVantoroRunning()) << "the newest record is no Vantoro";
    delete first;
    EXPECT_EQ(CVersionControl::gVersionControl, nullptr) << "even with another record alive";
    delete second;
  }
  EXPECT_EQ(CVersionControl::gVersionControl, nullptr);
}

TEST(VersionControl, TheSettingsFileCanTurnFeaturesOff) {
  TempFolder dir;
  CBrevanderProfile::SetProfilePath(dir.Path("app.ini"));
  CVersionControl version;
  struct Case {
    const char* file;  // null: none yet
    bool record, web, enhanced;
  } cases[] = {
      {nullptr, true, true, true},            // no keys: the record decides
      {nullptr, false, false, false},
      {"[Vantoro]\n2=0\n3=0\n", true, false, false},
      {"[Vantoro]\n2=1\n3=0\n", true, true, false},
      {"[Vantoro]\n2=5\n3=-1\n", true, true, true},
      {"[Vantoro]\n2=1\n3=1\n", false, false, false},
  };
  for (const Case& c : cases) {
    if (c.file) WriteAll(dir.Bytes("app.ini"), c.file);
    version.SetSupportWebConnection(c.record);
    version.SetSupportEnhancedDVD(c.record);
    EXPECT_EQ(version.IsSupportWebConnection(), c.web) << (c.file ? c.file : "no file");
    EXPECT_EQ(version.IsSupportEnhancedDVD(), c.enhanced) << (c.file ? c.file : "no file");
  }
  // A new settings file turns both off, whatever the record says; the AC3 encoder has no switch.
  std::filesystem::remove(dir.Bytes("app.ini"));
  Profile::Initialize();
  version.SetSupportWebConnection(true);
  version.SetSupportEnhancedDVD(true);
  version.SetSupportAC3Encoder(true);
  EXPECT_FALSE(version.IsSupportWebConnection());
  EXPECT_FALSE(version.IsSupportEnhancedDVD());
  EXPECT_TRUE(version.IsSupportAC3Encoder());
  CBrevanderProfile::SetProfilePath(nullptr);
}

TEST(SharedLibrary, LoadsOnFirstUseAndFindsItsEntries) {
  MString path = PluginPath();
  CSharedLibrary plugin(path);
  EXPECT_FALSE(plugin.IsLoaded());
  plugin.Unload();  // nothing loaded: nothing happens
  CSharedLibrary::Function answer = plugin.LoadFunction("VbuTestPluginAnswer");
  ASSERT_NE(answer, nullptr);
  EXPECT_TRUE(plugin.IsLoaded());
  EXPECT_EQ(answer(), 42);
  EXPECT_EQ(plugin.LoadFunction("NoSuchEntry"), nullptr);
  EXPECT_TRUE(plugin.IsLoaded());
  EXPECT_TRUE(plugin.Load());
  {
    CSharedLibrary copy(plugin);  // a load of its own
    EXPECT_TRUE(copy.IsLoaded());
    CSharedLibrary assigned(u"/no/such/module.so"_u16);
    assigned = plugin;
    EXPECT_TRUE(assigned.IsLoaded());
  }
  EXPECT_EQ(answer(), 42) << "the copies freed only their own loads";
  plugin.Unload();
  EXPECT_FALSE(plugin.IsLoaded());

  CSharedLibrary missing(u"/no/such/module.so"_u16);
  EXPECT_FALSE(missing.Load());
  EXPECT_EQ(missing.LoadFunction("VbuTestPluginAnswer"), nullptr);
  EXPECT_FALSE(missing.IsLoaded());
  CSharedLibrary unnamed(nullptr);
  EXPECT_FALSE(unnamed.Load());
  CSharedLibrary unloadedCopy(missing);
  EXPECT_FALSE(unloadedCopy.IsLoaded());
}
