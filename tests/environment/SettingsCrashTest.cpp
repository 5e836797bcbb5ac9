// Crash safety of the settings file: a child process rewrites a setting
// again and again (each write changes the file's length) and is killed
// (SIGKILL) at a random moment. Each time the file on disk is the file of
// one whole write: never empty, never a mix of two.
#include <VantoroBasicUtils/environment/CBrevanderProfile.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <regex>
#include <thread>

#include "support/TempFolder.h"

using namespace vbu::literals;

namespace {

// The value of the nth write: its number, then n % 97 letters.
std::string Value(int n) { return std::to_string(n) + std::string(static_cast<std::size_t>(n % 97), 'v'); }

// The file after the nth write.
std::string FileOf(int n) {
  return "; kept by hand\r\n[Audio]\r\nBitrate=" + Value(n) + "\r\n[Video]\r\nFormat=NTSC\r\n";
}

// The child: writes values 1, 2, 3... until told to stop by the kill (or
// after `writes` of them).
[[noreturn]] void WriteAndExit(const MString& path, int writes) {
  CBrevanderProfile::SetProfilePath(path);
  for (int n = 1; n <= writes; ++n) {
    std::u16string value;
    for (char c : Value(n)) value += static_cast<char16_t>(c);
    CBrevanderProfile::WriteProfileStringW(u"Audio"_u16, u"Bitrate"_u16, reinterpret_cast<const unsigned short*>(value.c_str()));
  }
  _exit(0);
}

}  // namespace

TEST(SettingsCrash, AKilledWriterLeavesTheOldFileOrTheNewOneWhole) {
  std::mt19937 random(std::random_device{}());
  const std::regex whole("; kept by hand\r\n\\[Audio\\]\r\nBitrate=([0-9]+)v*\r\n\\[Video\\]\r\nFormat=NTSC\r\n");
  int lastSeen = 0;
  for (int round = 0; round < 20; ++round) {
    SCOPED_TRACE(round);
    TempFolder dir;
    WriteAll(dir.Bytes("app.ini"), FileOf(0));
    MString path = dir.Path("app.ini");
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) WriteAndExit(path, 20000);
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 60000));
    kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    std::string text = ReadAll(dir.Bytes("app.ini"));
    std::smatch match;
    ASSERT_TRUE(std::regex_match(text, match, whole)) << "not one write's file: " << text.size() << " bytes";
    int n = std::stoi(match[1].str());
    EXPECT_EQ(text, FileOf(n));
    lastSeen = n;
  }
  std::printf("the last write seen by the last round: %d\n", lastSeen);
}
