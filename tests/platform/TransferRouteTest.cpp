// The two transfer routes when the ring fails: a refused submit moves the
// transfer on the threads, a failed wait ends the transfers in the ring with
// its error and the next transfer gets a new ring, a refused ring leaves
// everything to the threads. No transfer is lost, none waits forever. And a
// thread that waits while its own transfer is in the ring still wakes for
// everything else.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include <unistd.h>

#include "platform/FaultInjection.h"
#include "platform/internal/File.h"
#include "support/TempFolder.h"

namespace vp = vbu::platform;

namespace {

class TransferRoutes : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!vp::TransfersUseIoUring()) GTEST_SKIP() << "the system refuses io_uring here";
    WriteAll(dir.Bytes("f"), bytes);
    ASSERT_EQ(vp::OpenHandle(dir.Path("f"), vp::HandleAccess::kRead, vp::HandleDisposition::kOpenExisting, {},
                             &handle),
              0u);
    baseline = vp::TransferRequestsInUse();
  }
  void TearDown() override {
    if (handle != -1) vp::CloseHandle(handle);
    std::free(buffer);
  }

  // Reads the first 4096 bytes and waits (at most ten seconds) for the end:
  // the record's error, or -1 if it never came.
  long ReadAndWait() {
    OVERLAPPED record{};
    MEvent done;
    record.hEvent = &done;
    std::memset(buffer, 0, 4096);
    if (vp::StartHandleTransfer(handle, false, buffer, 4096, &record, nullptr) != 0) return -2;
    if (done.Wait(10000) != kWaitObject0) return -1;
    if (record.Internal == 0 && (record.InternalHigh != 4096 || std::memcmp(buffer, bytes.data(), 4096) != 0)) {
      return -3;
    }
    return static_cast<long>(record.Internal);
  }

  // Makes every wait in the ring fail with sWaitError: the reaper's, and a waiting thread's.
  static void FailRingWaits() {
    vp::Sys().io_uring_wait = [](struct ::io_uring*, struct ::__kernel_timespec*) { return -sWaitError; };
  }
  static inline int sWaitError = 0;

  StTransferRoute route{vbu::TransferRoute::kSystemQueue};
  TempFolder dir;
  std::string bytes = Pattern(8192, 9);
  intptr_t handle = -1;
  char* buffer = static_cast<char*>(std::aligned_alloc(4096, 4096));
  std::size_t baseline = 0;
};

}  // namespace

TEST_F(TransferRoutes, ASubmitThatFailsHandsTheTransferToTheThreads) {
  static int submitError;
  for (int error : {EBUSY, EAGAIN, ENOMEM}) {
    submitError = error;
    StSysCallTable saved;
    vp::Sys().io_uring_submit = [](struct ::io_uring*) { return -submitError; };
    vp::Sys().pread = [](int, void*, std::size_t, int64_t) -> long { return errno = EIO, -1; };
    EXPECT_EQ(ReadAndWait(), EIO) << "made on the threads, whose read fails here";
    vp::Sys().pread = vp::DefaultSysCalls().pread;
    EXPECT_EQ(ReadAndWait(), 0) << "and succeeds here";
  }
  EXPECT_EQ(ReadAndWait(), 0) << "the ring takes transfers again";
  EXPECT_TRUE(vp::TransfersUseIoUring());
  EXPECT_EQ(vp::TransferRequestsInUse(), baseline);
}

TEST_F(TransferRoutes, AFailedRingIsReplacedAndARefusedOneOrTheHostsChoiceLeavesEverythingToTheThreads) {
  {
    StTransferRoute threads(vbu::TransferRoute::kThreads);
    EXPECT_FALSE(vp::TransfersUseIoUring());
    StSysCallTable saved;
    vp::Sys().pread = [](int, void*, std::size_t, int64_t) -> long { return errno = ENXIO, -1; };
    EXPECT_EQ(ReadAndWait(), ENXIO) << "the threads read";
  }
  EXPECT_EQ(vbu::GetTransferRoute(), vbu::TransferRoute::kSystemQueue);
  EXPECT_TRUE(vp::TransfersUseIoUring());
  {
    // A ring whose wait fails ends its transfers with that error and is
    // replaced at the next transfer; a refused replacement leaves the
    // transfers to the threads until the host asks for the ring again.
    StSysCallTable saved;
    sWaitError = EIO;
    FailRingWaits();
    // The reaper may be inside a wait that began before the swap: the first
    // read ends either way. Until the reaper comes back to a wait (a busy
    // machine may keep it away), the ring still hands out ends that are
    // there, so the next reads begin once it has failed; from then on every
    // new ring fails at its first wait.
    const long first = ReadAndWait();
    EXPECT_TRUE(first == 0 || first == EIO) << first;
    for (int i = 0; i < 1000 && !vp::TransferRingHasFailed(); ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ASSERT_TRUE(vp::TransferRingHasFailed());
    EXPECT_EQ(ReadAndWait(), EIO);
    EXPECT_EQ(ReadAndWait(), EIO) << "each transfer gets a new ring, whose wait fails again";
    vp::CancelTransfers(vp::HandleDescriptor(handle));  // returns: nothing is left under way
    vp::Sys().io_uring_queue_init = [](unsigned, struct ::io_uring*, unsigned) { return -EPERM; };
    EXPECT_EQ(ReadAndWait(), 0) << "on the threads";
    EXPECT_FALSE(vp::TransfersUseIoUring());
  }
  EXPECT_FALSE(vp::TransfersUseIoUring()) << "refused: not asked again by itself";
  vbu::SetTransferRoute(vbu::TransferRoute::kSystemQueue);
  EXPECT_TRUE(vp::TransfersUseIoUring());
  EXPECT_EQ(ReadAndWait(), 0);
  EXPECT_EQ(vp::TransferRequestsInUse(), baseline);
}

TEST_F(TransferRoutes, AThreadWhoseTransferStaysUnderWayStillWakesForEverythingElse) {
  // A read from an empty pipe stays under way in the ring until bytes come.
  int pipeEnds[2];
  ASSERT_EQ(::pipe(pipeEnds), 0);
  char got[2][8] = {};
  OVERLAPPED pending{};
  MEvent pendingDone;
  pending.hEvent = &pendingDone;
  ASSERT_EQ(vp::StartTransfer(pipeEnds[0], false, got[0], 4, &pending, nullptr), 0u);

  MEvent other;
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(other.Wait(120), kWaitTimeout);
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(120)) << "not before its limit";

  std::thread setter([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    other.Set();
  });
  EXPECT_EQ(other.Wait(10000), kWaitObject0) << "set by another thread";
  setter.join();

  // A second read, with a routine: it runs here, in an alertable wait for something else.
  static std::thread::id ranOn;
  static uint32_t routineBytes;
  OVERLAPPED second{};
  ASSERT_EQ(vp::StartTransfer(pipeEnds[0], false, got[1], 4, &second,
                              [](uint32_t, uint32_t bytes, OVERLAPPED*) {
                                ranOn = std::this_thread::get_id();
                                routineBytes = bytes;
                              }),
            0u);
  std::thread writer([&] { EXPECT_EQ(::write(pipeEnds[1], "abcdefgh", 8), 8); });
  MEvent never;
  uint32_t woke = kWaitObject0;
  for (int i = 0; i < 100 && woke != kWaitIoCompletion; ++i) woke = never.Wait(100, true);
  EXPECT_EQ(woke, kWaitIoCompletion);
  EXPECT_EQ(ranOn, std::this_thread::get_id());
  EXPECT_EQ(routineBytes, 4u);
  writer.join();
  EXPECT_EQ(pendingDone.Wait(10000), kWaitObject0);
  EXPECT_EQ(pending.Internal, 0u);
  std::string both = std::string(got[0]) + got[1];  // the two reads may take the halves in either order
  std::sort(both.begin(), both.end());
  EXPECT_EQ(both, "abcdefgh");
  ::close(pipeEnds[0]);
  ::close(pipeEnds[1]);
  EXPECT_EQ(vp::TransferRequestsInUse(), baseline);
}
