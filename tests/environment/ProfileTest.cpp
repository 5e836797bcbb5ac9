// The numbered settings and the settings file: a first start writes the
// whole set in order and a second changes no byte; hand-edited files read as
// the desktop platform reads them; writes keep every other line.
#include <VantoroBasicUtils/environment/CBrevanderDirectories.h>
#include <VantoroBasicUtils/environment/CBrevanderProfile.h>

#include <gtest/gtest.h>

#if !defined(_WIN32)  // the static host runs in a forked child
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <chrono>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <thread>
#include <vector>
#include <string>

#include "support/TempFolder.h"

using namespace vbu::literals;
namespace fs = std::filesystem;

namespace {

std::u16string S(const MString& text) { return Text(text); }
const unsigned short* U(const char16_t* text) { return vbu::ToUnits(text); }

class Profile : public CBrevanderProfile {
 public:
  static void Initialize() { InitializeProfileValue(); }
};

// Each test has a settings file of its own, and leaves none set.
class Settings : public ::testing::Test {
 protected:
  void SetUp() override {
    ini = dir.Bytes("app.ini");
    CBrevanderProfile::SetProfilePath(dir.Path("app.ini"));
  }
  void TearDown() override { CBrevanderProfile::SetProfilePath(nullptr); }
  TempFolder dir;
  std::string ini;
};

// The whole set a first start writes, one section a line.
std::string FirstStart() {
  std::string s =
      "[Vantoro]\r\n1=0\r\n2=0\r\n3=0\r\nVantoro Name=Vantoro\r\n"
      "[Preference]\r\nOpen Recent=0\r\nZoom=0\r\n"
      "[Explorer]\r\nView Style=3\r\nVideo Filter=*.mpeg;*.mpg;*.mpv;*.avi;*.m2v\r\n"
      "Audio Filter=*.ac3;*.aif;*.aiff;*.wav;*.dts;*.mpa\r\n"
      "Image Filter=*.bmp;*.gif;*.jpeg;*.jpg;*.pct;*.pcd;*.pict;*.psd;*.sgi;*.tga;*.tif;*.tiff;*.mps\r\n"
      "[Settings]\r\nResolution=0\r\nDrop Type=0\r\n"
      "[Still]\r\nBitrate=8000000\r\nEncode Type=0\r\nSize=0\r\nAspectratio=0\r\nProgressiveSeq=0\r\n"
      "[Audio]\r\nEncode Type=0\r\nBitrate=128\r\n"
      "[Subpicture]\r\nIntervalDefNTSC=60\r\nIntervalDefPAL=50\r\n"
      "[Subtitle]\r\nSize=24\r\nStyle=4\r\nAlignment=3\r\nLocation=3\r\nRender=2\r\n"
      "Font=Times New Roman (Western)\r\nDuration=00:00:10:00\r\n"
      "[Simulation]\r\nDecode frame=13\r\n"
      "[Color]\r\nConversion Color E2=0, 0, 255\r\nConversion Color E1=255, 0, 0\r\n"
      "Conversion Color P=0, 0, 0\r\nConversion Color Bg=255, 255, 255\r\n"
      "Display Color=0, 1, 2, 3\r\nDisplay Contrast=15, 15, 15, 0\r\nAction Color=9, 10, 11, 12\r\n"
      "Action Contrast=15, 15, 15, 0\r\nSelection Color=5, 6, 7, 8\r\nSelection Contrast=15, 15, 15, 0\r\n"
      "[ColorPalette]\r\n";
  const char* palette[] = {"0, 0, 255",     "255, 0, 0",   "0, 0, 0",     "255, 255, 255", "0, 255, 0",
                           "255, 0, 255",   "255, 255, 0", "0, 125, 125", "125, 125, 125", "225, 225, 225",
                           "125, 0, 0",     "0, 125, 0",   "0, 0, 125",   "222, 0, 255",   "222, 125, 0",
                           "125, 0, 125"};
  for (int i = 0; i < 16; ++i) s += std::to_string(i + 1) + "=" + palette[i] + "\r\n";
  s += "[Languages]\r\n";
  const char* languages[] = {"Chinese", "English", "French", "German", "Italian", "Japanese", "Korean", "Spanish"};
  for (int i = 0; i < 8; ++i) s += "Languages " + std::to_string(i + 1) + "=" + languages[i] + "\r\n";
  s += "Default Language=English\r\n";
  for (int i = 1; i <= 8; ++i) s += "Audio Language " + std::to_string(i) + "=Not Specified\r\n";
  for (int i = 1; i <= 32; ++i) s += "Subpicture Language " + std::to_string(i) + "=Not Specified\r\n";
  return s + "Simulation Audio Language=English\r\nSimulation Subpicture Language=English\r\n"
             "[Layout Editor]\r\nDdpDslMultiple16Fix=ON\r\n";
}
const std::string kFirstStart = FirstStart();

// A settings file as an editor saves it in "Unicode": UTF-16LE with a byte-order mark.
std::string Utf16File(const std::u16string& text) {
  std::string bytes = "\xFF\xFE";
  for (char16_t c : text) bytes += {static_cast<char>(c & 0xFF), static_cast<char>(c >> 8)};
  return bytes;
}

}  // namespace

TEST_F(Settings, AFirstStartWritesEverySettingInOrderAndASecondChangesNoByte) {
  EXPECT_EQ(CBrevanderProfile::GetProfileIntW(kProfileAudioBitrate, 96), 96) << "no file yet";
  Profile::Initialize();
  EXPECT_EQ(ReadAll(ini), kFirstStart);
  EXPECT_EQ(CBrevanderProfile::GetProfileIntW(kProfileAudioBitrate, 96), 128);

  auto written = std::filesystem::last_write_time(ini);
  Profile::Initialize();
  EXPECT_EQ(ReadAll(ini), kFirstStart);
  EXPECT_EQ(std::filesystem::last_write_time(ini), written) << "the file was not rewritten";

  // Values already there stay; a missing one comes back with its default.
  std::string edited = kFirstStart;
  edited.replace(edited.find("Bitrate=128"), 11, "Bitrate=192");
  edited.erase(edited.find("Zoom=0\r\n"), 8);
  WriteAll(ini, edited);
  Profile::Initialize();
  std::string expected = kFirstStart;
  expected.replace(expected.find("Bitrate=128"), 11, "Bitrate=192");
  EXPECT_EQ(ReadAll(ini), expected);
}

TEST_F(Settings, WithoutAFileReadsGiveTheirDefaultsAndWritesAreDropped) {
  CBrevanderProfile::SetProfilePath(nullptr);
  CBrevanderProfile::WriteProfileInt(kProfileAudioBitrate, 5);
  EXPECT_EQ(CBrevanderProfile::GetProfileIntW(kProfileAudioBitrate, 96), 96);
  EXPECT_EQ(S(CBrevanderProfile::GetProfileStringW(kProfileSubtitleFont, u"F"_u16)), u"F");
  EXPECT_FALSE(std::filesystem::exists(ini));
}

TEST_F(Settings, EachFormWritesUnderItsSectionAndKey) {
  CBrevanderProfile::WriteProfileInt(kProfileStillBitrate, 6000000);
  CBrevanderProfile::WriteProfileInt(kProfileStillEncodeType, 2);
  CBrevanderProfile::WriteProfileInt(kProfileAudioBitrate, 384);
  CBrevanderProfile::WriteProfileInt(kProfileAudioEncodeType, 1);
  CBrevanderProfile::WriteProfileInt3(kProfileColorPalette1, 1, 2, 3);
  CBrevanderProfile::WriteProfileInt3(kProfileColorPalette16, -1, 0, 70000);
  CBrevanderProfile::WriteProfileInt4(kProfileSubtitleColor, 4, 3, 2, 1);
  CBrevanderProfile::WriteProfileStringW(kProfileSubpictureLanguage32, u"Danish"_u16);
  CBrevanderProfile::WriteProfileStringW(kProfileUrl8, u"http://example.org/"_u16);
  EXPECT_EQ(ReadAll(ini),
            "[Still]\r\nBitrate=6000000\r\nEncode Type=2\r\n"
            "[Audio]\r\nBitrate=384\r\nEncode Type=1\r\n"
            "[ColorPalette]\r\n1=1, 2, 3\r\n16=-1, 0, 70000\r\n"
            "[Subtitle]\r\nColor=4, 3, 2, 1\r\n"
            "[Languages]\r\nSubpicture Language 32=Danish\r\n"
            "[Explorer]\r\nUrl 8=http://example.org/\r\n");
}

TEST_F(Settings, NumbersOfOtherFormsOrOfNoneSelectNothing) {
  WriteAll(ini, "[Subtitle]\r\nFont=Arial\r\n[Preference]\r\nOpen Recent=4\r\n");
  const std::string before = ReadAll(ini);
  auto none = static_cast<brevander_profile_t>(3);
  EXPECT_EQ(CBrevanderProfile::GetProfileIntW(none, 77), 0);
  EXPECT_EQ(CBrevanderProfile::GetProfileIntW(kProfileSubtitleFont, 77), 0);
  EXPECT_EQ(S(CBrevanderProfile::GetProfileStringW(kProfileOpenRecent, u"d"_u16)), u"");
  CBrevanderProfile::WriteProfileInt(none, 1);
  CBrevanderProfile::WriteProfileInt(kProfileSubtitleFont, 1);
  CBrevanderProfile::WriteProfileInt3(kProfileOpenRecent, 1, 2, 3);
  CBrevanderProfile::WriteProfileInt4(kProfileColorPalette1, 1, 2, 3, 4);
  CBrevanderProfile::WriteProfileStringW(none, u"x"_u16);
  EXPECT_EQ(ReadAll(ini), before);
  int a = -1, b = -1, c = -1;
  CBrevanderProfile::GetProfileInt3(kProfileSubtitleFont, 1, 2, 3, a, b, c);
  EXPECT_EQ((std::vector<int>{a, b, c}), (std::vector<int>{1, 2, 3})) << "no triple there: the defaults";
}

TEST_F(Settings, StoredTriplesAndQuadruplesSplitAtBlanksAndCommas) {
  struct Case {
    const char* stored;
    std::vector<int> read;
  } cases[] = {
      {"10,20 30", {10, 20, 30}},
      {" 1 ,, -2,3 ", {1, -2, 3}},
      {"default", {7, 8, 9}},   // the caller's defaults
      {"x, 5, 6y", {0, 5, 6}},  // a token that is no number reads 0
      {"4", {4, 8, 9}},         // too few: the rest keep their defaults
      {"", {7, 8, 9}},
      {"1, 2, 3, 4", {1, 2, 3}},
  };
  for (const Case& k : cases) {
    WriteAll(ini, std::string("[Color]\nConversion Color P=") + k.stored + "\n");
    int a, b, c;
    CBrevanderProfile::GetProfileInt3(kProfileConversionColorP, 7, 8, 9, a, b, c);
    EXPECT_EQ((std::vector<int>{a, b, c}), k.read) << k.stored;
  }
  WriteAll(ini, "[Color]\nAction Color=1 2\n");
  int a, b, c, d;
  CBrevanderProfile::GetProfileInt4(kProfileActionColor, 5, 6, 7, 8, a, b, c, d);
  EXPECT_EQ((std::vector<int>{a, b, c, d}), (std::vector<int>{1, 2, 7, 8}));
}

TEST_F(Settings, TheClassicDeviceEngineIsSetByHandOnly) {
  CBrevanderProfile::WriteProfileStringW(kProfileUseClassicDeviceEngine, u"ON"_u16);
  EXPECT_FALSE(std::filesystem::exists(ini));
  WriteAll(ini, "[Layout Editor]\nUseClassicDeviceEngine=ON\n");
  EXPECT_EQ(S(CBrevanderProfile::GetProfileStringW(kProfileUseClassicDeviceEngine, nullptr)), u"ON");
  CBrevanderProfile::WriteProfileStringW(kProfileUseClassicDeviceEngine, nullptr);
  EXPECT_EQ(ReadAll(ini), "[Layout Editor]\nUseClassicDeviceEngine=ON\n");
}

namespace {

const std::string kLong(5000, 'L');
// A file as a user might leave it: notes, odd case and spacing, quotes, LF-only lines.
const std::string kHandEdited =
    "; my notes about this file\n"
    "\n"
    "  [ audio ]  \r\n"
    "\tBITRATE\t=\t \"256\" \n"
    "bitrate=999\n"
    "Empty=\n"
    "Spaces =   a b   \n"
    "Single='q'\n"
    "Mismatch=\"x'\n"
    "NoEquals\n"
    "Num1=12abc\n"
    "Num2=3.9\n"
    "Num3=010\n"
    "Num4=abc\n"
    "Num5=-42\n"
    "; end of audio\n"
    "\n"
    "[Audio]\n"
    "Second=1\n"
    "[Other]\r\n"
    "Long=" + kLong;

}  // namespace

TEST_F(Settings, HandEditedFilesReadAsThePlatformReadsThem) {
  WriteAll(ini, kHandEdited);
  struct Case {
    const char16_t* section;
    const char16_t* key;
    std::u16string text;  // "<default>" when the key counts as missing
  } texts[] = {
      {u"Audio", u"Bitrate", u"256"},     // case, blanks, tabs and quotes; the first of two
      {u" AUDIO\t", u" bitrate ", u"256"},
      {u"audio", u"Empty", u""},          // present and empty, not the default
      {u"audio", u"Spaces", u"a b"},
      {u"audio", u"Single", u"q"},
      {u"audio", u"Mismatch", u"\"x'"},   // quotes that do not pair stay
      {u"audio", u"NoEquals", u"<default>"},
      {u"audio", u"Second", u"<default>"},  // in the second [Audio]: not looked at
      {u"Missing", u"Bitrate", u"<default>"},
      {u"Other", u"Long", std::u16string(kLong.begin(), kLong.end())},
  };
  for (const Case& k : texts) {
    MString read = CBrevanderProfile::GetProfileStringW(U(k.section), U(k.key), u"<default>"_u16);
    EXPECT_EQ(S(read), k.text) << std::string(k.key, k.key + std::char_traits<char16_t>::length(k.key));
  }
  struct Int {
    const char16_t* key;
    int value;
  } ints[] = {{u"Bitrate", 256}, {u"Num1", 12}, {u"Num2", 3}, {u"Num3", 10}, {u"Num4", 0},
              {u"Num5", -42},    {u"Empty", -7}, {u"NoEquals", -7}};
  for (const Int& k : ints) EXPECT_EQ(CBrevanderProfile::GetProfileIntW(u"audio"_u16, U(k.key), -7), k.value);

  // Nothing is cached: an edit between two reads counts.
  WriteAll(ini, "[Audio]\nBitrate=1\n");
  EXPECT_EQ(CBrevanderProfile::GetProfileIntW(kProfileAudioBitrate, 0), 1);
}

TEST_F(Settings, AWriteKeepsEveryOtherLineByteForByte) {
  struct Case {
    const char16_t* section;
    const char16_t* key;
    const char16_t* value;
    std::string from, to;  // the bytes the write replaces, and by what ("" from: appended)
  } cases[] = {
      {u"AUDIO", u"bitrate", u"300", "\tBITRATE\t=\t \"256\" \n", "\tBITRATE\t=\t 300\r\n"},
      {u"audio", u"Spaces", u"a b", "", ""},                       // the value it holds: no change
      {u"audio", u"Single", u"q", "", ""},                         // also when it is quoted
      {u"audio", u"New", u"v", "Num5=-42\n", "Num5=-42\nNew=v\r\n"},  // after the section's last key
      {u"audio", u"Single", nullptr, "Single='q'\n", ""},           // null value: the key goes
      {u"audio", u"Absent", nullptr, "", ""},
      {u"Fresh", u"k", u"1", kLong, kLong + "\r\n[Fresh]\r\nk=1\r\n"},  // a new section at the end
      {u"other", nullptr, nullptr, "[Other]\r\nLong=" + kLong, ""},    // null key: the section goes
      {u"Nowhere", nullptr, nullptr, "", ""},
  };
  for (const Case& k : cases) {
    WriteAll(ini, kHandEdited);
    auto before = std::filesystem::last_write_time(ini);
    CBrevanderProfile::WriteProfileStringW(U(k.section), k.key ? U(k.key) : nullptr, k.value ? U(k.value) : nullptr);
    std::string expected = kHandEdited;
    if (!k.from.empty()) {
      std::size_t at = k.from == kLong ? expected.size() - kLong.size() : expected.find(k.from);
      ASSERT_NE(at, std::string::npos);
      expected.replace(at, k.from.size(), k.to);
    }
    EXPECT_EQ(ReadAll(ini), expected) << std::string(k.section, k.section + std::char_traits<char16_t>::length(k.section));
    if (k.from.empty()) {
      EXPECT_EQ(std::filesystem::last_write_time(ini), before) << "a write that changes nothing";
    }
  }
  // The file's permissions survive the replacement.
  std::filesystem::permissions(ini, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  CBrevanderProfile::WriteProfileInt(u"audio"_u16, u"Num1"_u16, 5);
  EXPECT_EQ(std::filesystem::status(ini).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(Settings, ANewSectionFollowsAnUnendedLastLineAndAFileComesIntoBeing) {
  WriteAll(ini, "[A]\nx=1");
  CBrevanderProfile::WriteProfileStringW(u"A"_u16, u"y"_u16, u"2"_u16);
  EXPECT_EQ(ReadAll(ini), "[A]\nx=1\r\ny=2\r\n");
  // An unended last line that stops at a CR gets only the LF.
  WriteAll(ini, "[A]\nx=1\r");
  CBrevanderProfile::WriteProfileStringW(u"B"_u16, u"y"_u16, u"2"_u16);
  EXPECT_EQ(ReadAll(ini), "[A]\nx=1\r\n[B]\r\ny=2\r\n");
  EXPECT_EQ(CBrevanderProfile::GetProfileIntW(u"B"_u16, u"y"_u16, 0), 2);
  EXPECT_EQ(CBrevanderProfile::GetProfileIntW(u"A"_u16, u"x"_u16, 0), 1);
  WriteAll(ini, "[A]\n\n; notes of B\n[B]\n");
  CBrevanderProfile::WriteProfileStringW(u"A"_u16, u"y"_u16, u"2"_u16);
  EXPECT_EQ(ReadAll(ini), "[A]\ny=2\r\n\n; notes of B\n[B]\n") << "a key of an empty section follows its header";
  std::filesystem::remove(ini);
  CBrevanderProfile::WriteProfileStringW(u"A"_u16, u"y"_u16, nullptr);
  EXPECT_FALSE(std::filesystem::exists(ini)) << "removing from no file makes none";
}

TEST_F(Settings, TheUsersFoldersComeFromTheFile) {
  TempFolder work;
  MString scenario = work.Path("Discs");
  CBrevanderDirectories::SetScenarioDirectory(scenario);
  EXPECT_EQ(S(CBrevanderDirectories::GetScenarioDirectory()), S(scenario)) << "as stored, no separator added";
  EXPECT_TRUE(std::filesystem::is_directory(work.Bytes("Discs")));
  MString script = work.Path("Scripts/");
  CBrevanderDirectories::SetScriptDirectory(script);
  EXPECT_EQ(S(CBrevanderDirectories::GetScriptDirectory()), S(script));
  EXPECT_TRUE(std::filesystem::is_directory(work.Bytes("Scripts")));
  EXPECT_NE(ReadAll(ini).find("[BREVANDER]\r\nScenario Directory="), std::string::npos);

  // Present and empty: the scenario folder falls back on its default, unmade; the script folder is empty.
  CBrevanderDirectories::SetScenarioDirectory(u""_u16);
  CBrevanderDirectories::SetScriptDirectory(u""_u16);
  EXPECT_EQ(S(CBrevanderDirectories::GetScenarioDirectory()),
            S(CBrevanderDirectories::GetSystemDrive() + MString(u"/My Scenarios/"_u16)));
  EXPECT_EQ(S(CBrevanderDirectories::GetScriptDirectory()), u"");
}

TEST_F(Settings, ALinkedFileIsWrittenWhereTheLinkPoints) {
  fs::create_directories(dir.Bytes("dotfiles"));
  WriteAll(dir.Bytes("dotfiles/real.ini"), "[A]\nx=1\n");
  fs::create_symlink("dotfiles/real.ini", ini);
  CBrevanderProfile::WriteProfileInt(u"A"_u16, u"x"_u16, 2);
  EXPECT_TRUE(fs::is_symlink(ini));
  EXPECT_EQ(ReadAll(dir.Bytes("dotfiles/real.ini")), "[A]\nx=2\r\n");
  fs::remove(dir.Bytes("dotfiles/real.ini"));
  CBrevanderProfile::WriteProfileInt(u"A"_u16, u"x"_u16, 3);
  EXPECT_EQ(ReadAll(dir.Bytes("dotfiles/real.ini")), "[A]\r\nx=3\r\n") << "a link to no file yet";
}

TEST_F(Settings, WritesFromSeveralThreadsAreNotLost) {
  constexpr int kThreads = 4, kKeys = 25;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t] {
      for (int k = 0; k < kKeys; ++k) {
        MString key;
        key.Format(u"key %d"_u16, t * kKeys + k);
        CBrevanderProfile::WriteProfileInt(u"Threads"_u16, key, k);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int i = 0; i < kThreads * kKeys; ++i) {
    MString key;
    key.Format(u"key %d"_u16, i);
    EXPECT_EQ(CBrevanderProfile::GetProfileIntW(u"Threads"_u16, key, -1), i % kKeys) << i;
  }
}

TEST_F(Settings, AFileMadeReadOnlyRefusesWrites) {
  WriteAll(ini, "[Audio]\r\nBitrate=128\r\n");
  fs::permissions(ini, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
  EXPECT_FALSE(CBrevanderProfile::WriteProfileInt(kProfileAudioBitrate, 256));
  EXPECT_EQ(ReadAll(ini), "[Audio]\r\nBitrate=128\r\n");
  EXPECT_EQ(CBrevanderProfile::GetProfileIntW(kProfileAudioBitrate, 0), 128);
  fs::permissions(ini, fs::perms::owner_write, fs::perm_options::add);
  EXPECT_TRUE(CBrevanderProfile::WriteProfileInt(kProfileAudioBitrate, 256));
}

TEST_F(Settings, AUtf16FileIsReadAndWrittenInItsOwnForm) {
  WriteAll(ini, Utf16File(u"; \u00e9t\u00e9\r\n[Audio]\r\nBitrate=256\r\n"));
  EXPECT_EQ(CBrevanderProfile::GetProfileIntW(kProfileAudioBitrate, 0), 256);
  EXPECT_TRUE(CBrevanderProfile::WriteProfileInt(kProfileAudioBitrate, 300));
  EXPECT_TRUE(CBrevanderProfile::WriteProfileStringW(kProfileSubtitleFont, u"\u00c9cole"_u16));
  EXPECT_EQ(ReadAll(ini), Utf16File(u"; \u00e9t\u00e9\r\n[Audio]\r\nBitrate=300\r\n[Subtitle]\r\nFont=\u00c9cole\r\n"));
}

TEST_F(Settings, AReadCostsTimeInProportionToTheFile) {
  // 1.6 MB of notes without "=" and of section headers that never close.
  std::string notes = "[Audio]\nBitrate=5\n";
  for (int i = 0; i < 40000; ++i) notes += i % 8 ? "a note of the user's, with no equals sign\n" : "[unclosed\n";
  WriteAll(ini, notes + "[Video]\nFormat=1\n");
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(CBrevanderProfile::GetProfileIntW(u"Video"_u16, u"Format"_u16, 0), 1);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

#if !defined(_WIN32)  // a forked child runs the host
TEST(StaticHost, ObjectsOfTheHostTouchTheSettingsAtStartAndAtExit) {
  TempFolder dir;
  WriteAll(dir.Bytes("host.ini"), "[Preference]\r\nZoom=4\r\n");
  pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    execl(VBU_STATIC_HOST, VBU_STATIC_HOST, dir.Bytes("host.ini").c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  int status = 0;
  for (int waited = 0; waitpid(child, &status, WNOHANG) == 0; ++waited) {
    if (waited == 3000) kill(child, SIGKILL);  // 30 s: a hang fails, it does not stop the suite
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  ASSERT_TRUE(WIFEXITED(status)) << "the host died of signal " << WTERMSIG(status);
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_EQ(ReadAll(dir.Bytes("host.ini")),
            "[Preference]\r\nZoom=5\r\nOpen Recent=1\r\n[Window]\r\nState=saved at exit\r\nSession=ended\r\n");
}
#endif

// Random writes beside a map, under names of varying case, with lines a user
// added by hand, keys the file cannot hold, a reopen and a change of the
// file's form to UTF-16 along the way: every read agrees with the map, and
// every hand-made line is still there, in order.
TEST_F(Settings, RandomWritesAndReadsAgreeWithAMap) {
  const int steps = std::getenv("VBU_LONG_TESTS") ? 3000 : 300;
  std::mt19937 random(7);
  auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  const char16_t* sections[] = {u"Video", u"video ", u"Audio", u"AUDIO", u"Paths"};
  // The last five the file cannot hold ("=", a line break, a leading ";" or "["); inside a key, ";" and "[" are text.
  const char16_t* keys[] = {u"Size", u"size", u" Rate ", u"a;b[c]", u"a=b", u"two\nlines", u";note", u"[Open", u" [Open"};
  auto canonical = [](std::u16string s) {  // blind to case and to the blanks around it
    while (!s.empty() && s.back() == u' ') s.pop_back();
    while (!s.empty() && s.front() == u' ') s.erase(0, 1);
    for (char16_t& c : s) c = static_cast<char16_t>(std::tolower(c));
    return s;
  };
  std::map<std::u16string, std::u16string> model;  // "section|key" -> value
  std::vector<std::string> handLines;
  bool wide = false;  // the file is UTF-16, and stays so
  for (int step = 0; step < steps; ++step) {
    const std::u16string section = sections[pick(5)], key = keys[pick(9)];
    const std::u16string name = canonical(section) + u"|" + canonical(key);
    const bool keyHoldable = name.find_first_of(u"=\n") == std::u16string::npos &&
                             canonical(key)[0] != u';' && canonical(key)[0] != u'[';
    switch (pick(10)) {
      case 0: {  // a comment the user added at the end
        std::string line = "; note " + std::to_string(step);
        std::string bytes = ReadAll(ini);
        if (bytes.size() >= 2 && bytes.compare(0, 2, "\xFF\xFE") == 0) break;  // edited in UTF-8 only
        WriteAll(ini, bytes + line + "\r\n");
        handLines.push_back(line);
        break;
      }
      case 1:  // the host starts again
        CBrevanderProfile::SetProfilePath(dir.Path("app.ini"));
        break;
      case 2: {  // an editor saves the file as UTF-16 with a byte-order mark
        std::string bytes = ReadAll(ini);
        if (bytes.empty() || bytes.compare(0, 2, "\xFF\xFE") == 0) break;
        wide = true;
        WriteAll(ini, Utf16File(std::u16string(bytes.begin(), bytes.end())));  // the file is ASCII
        break;
      }
      default: {
        const std::u16string value = pick(8) == 0 ? u"line\nbreak"
                                     : u"v" + std::u16string(1, static_cast<char16_t>(u'a' + pick(26))) +
                                           (pick(2) ? u" x" : u"");
        const bool holdable = keyHoldable && value.find(u'\n') == std::u16string::npos;
        const bool written = CBrevanderProfile::WriteProfileStringW(U(section.c_str()), U(key.c_str()),
                                                                    U(value.c_str()));
        EXPECT_EQ(written, holdable) << step;
        if (holdable) model[name] = value;
      }
    }
    const MString read = CBrevanderProfile::GetProfileStringW(U(section.c_str()), U(key.c_str()), u"-"_u16);
    const auto known = model.find(name);
    ASSERT_EQ(S(read), known == model.end() ? u"-" : known->second) << "step " << step;
  }
  std::string bytes = ReadAll(ini);
  ASSERT_EQ(bytes.compare(0, 2, "\xFF\xFE") == 0, wide) << "written back in its own form";
  if (wide) {  // back to bytes to look for the hand-made lines
    std::string narrow;
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) narrow += bytes[i];
    bytes = narrow;
  }
  std::size_t at = 0;
  for (const std::string& line : handLines) {
    at = bytes.find(line, at);
    ASSERT_NE(at, std::string::npos) << line;
  }
}
