// Several processes share one settings file: each starts as a host does
// (the first-start pass), then writes its own keys round after round, in a
// section of its own and in one that all share, and reads each back. One of
// them is killed (SIGKILL) at a random moment. Afterwards every key holds
// what its process last wrote (the killed one's: its last reported write, or
// the one it was making), and every default of the first start is there.
#include <VantoroBasicUtils/environment/CBrevanderProfile.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/TempFolder.h"

using namespace vbu::literals;

namespace {

class Profile : public CBrevanderProfile {
 public:
  static void Initialize() { InitializeProfileValue(); }
};

MString Key(int process, int key) {
  MString text;
  text.Format(u"p%d key %d"_u16, process, key);
  return text;
}

MString Section(int process, bool shared) {
  MString text;
  text.Format(u"Process %d"_u16, process);
  return shared ? MString(u"Shared"_u16) : text;
}

// Write n (from 0) of a process: key n % keys, round n / keys + 1, own
// section for even rounds, the shared one for odd.
struct Write {
  int key, round;
  bool shared;
};
Write WriteNumber(int n, int keys) { return {n % keys, n / keys + 1, (n / keys) % 2 == 1}; }

// The child: a first start, then its writes, each read back and reported
// (its number) on `report`. Exits 0, or 1 when a read gave something else.
[[noreturn]] void Run(const MString& path, int process, int keys, int rounds, int report) {
  CBrevanderProfile::SetProfilePath(path);
  Profile::Initialize();
  for (int n = 0; n < keys * rounds; ++n) {
    Write w = WriteNumber(n, keys);
    MString section = Section(process, w.shared), key = Key(process, w.key);
    CBrevanderProfile::WriteProfileInt(section, key, w.round);
    if (CBrevanderProfile::GetProfileIntW(section, key, -1) != w.round) _exit(1);
    if (write(report, &n, sizeof n) != sizeof n) _exit(1);
  }
  _exit(0);
}

// The value each key of a process holds after its first `done` writes.
int Expected(int done, int keys, int key, bool shared) {
  int value = -1;
  for (int n = 0; n < done; ++n) {
    Write w = WriteNumber(n, keys);
    if (w.key == key && w.shared == shared) value = w.round;
  }
  return value;
}

void RunProcesses(int processes, int keys, int rounds, std::mt19937& random) {
  TempFolder dir;
  MString path = dir.Path("host.ini");
  std::vector<pid_t> children;
  std::vector<int> reports, done(static_cast<std::size_t>(processes), 0);
  for (int p = 0; p < processes; ++p) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) Run(path, p, keys, rounds, ends[1]);
    close(ends[1]);
    children.push_back(child);
    reports.push_back(ends[0]);
  }
  // Process 0 dies at a random moment; the others run to their end, within two minutes.
  std::this_thread::sleep_for(std::chrono::microseconds(random() % 200000));
  kill(children[0], SIGKILL);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(2);
  for (std::size_t p = 0; p < children.size(); ++p) {
    int status = 0;
    while (waitpid(children[p], &status, WNOHANG) == 0) {
      if (std::chrono::steady_clock::now() > deadline) kill(children[p], SIGKILL);
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    if (p > 0 || !WIFSIGNALED(status)) {
      EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "process " << p;
    }
    // Its reports, now that it is gone (a few bytes each: the pipe held them all).
    for (int n; read(reports[p], &n, sizeof n) == sizeof n;) done[p] = n + 1;
    close(reports[p]);
  }

  CBrevanderProfile::SetProfilePath(path);
  for (int p = 0; p < processes; ++p) {
    for (bool shared : {false, true}) {
      for (int k = 0; k < keys; ++k) {
        int value = CBrevanderProfile::GetProfileIntW(Section(p, shared), Key(p, k), -1);
        int last = Expected(done[p], keys, k, shared);
        // The killed process may have been killed after a write and before its report.
        bool inFlight = p == 0 && value == Expected(done[p] + 1, keys, k, shared);
        EXPECT_TRUE(value == last || inFlight) << "process " << p << " key " << k << (shared ? " shared" : " own")
                                               << ": " << value << ", last written " << last;
      }
    }
  }
  // The whole first-start set is there: another pass changes nothing.
  const std::string before = ReadAll(dir.Bytes("host.ini"));
  EXPECT_NE(before.find("[Layout Editor]\r\nDdpDslMultiple16Fix=ON\r\n"), std::string::npos);
  Profile::Initialize();
  EXPECT_EQ(ReadAll(dir.Bytes("host.ini")), before) << "a default was missing";
  CBrevanderProfile::SetProfilePath(nullptr);
  std::printf("%d processes: the killed one made %d of %d writes\n", processes, done[0], keys * rounds);
  std::fflush(stdout);  // before the next fork: a child must not inherit the line
}

}  // namespace

TEST(SettingsStress, ProcessesSharingTheFileLoseNoWriteAndAKilledOneLeavesItWhole) {
  const bool longRun = std::getenv("VBU_LONG_TESTS") && std::string(std::getenv("VBU_LONG_TESTS")) == "1";
  std::mt19937 random(std::random_device{}());
  for (int processes : {2, 4}) {
    for (int run = 0; run < (longRun ? 10 : 1); ++run) {
      SCOPED_TRACE(std::to_string(processes) + " processes, run " + std::to_string(run));
      RunProcesses(processes, longRun ? 60 : 15, 4, random);
      if (HasFatalFailure()) return;
    }
  }
}
