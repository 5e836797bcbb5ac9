// Platform threads: held back at the start with their id known, held and let
// go while running, and refused by the system (through the call table).
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>

#include "FaultInjection.h"
#include "messaging/CMessageAction.h"
#include "messaging/LListener.h"
#include "platform/MessageQueue.h"
#include "platform/Overlapped.h"
#include "platform/Thread.h"
#include "tasks/CBrevanderThread.h"
#include "tasks/CThreadAction.h"
#include "tasks/CThreadDispatcher.h"

namespace {

// Waits at most ten seconds for `done`.
template <class Done>
bool WaitFor(Done done) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!done()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

struct Shared {
  std::atomic<unsigned long> ranAs{0};
  std::atomic<long long> count{0};
  std::atomic<bool> stop{false};
};

unsigned int Note(void* param) {
  static_cast<Shared*>(param)->ranAs = MThreadQueue::CurrentThreadId();
  return 0;
}

unsigned int Count(void* param) {
  auto* shared = static_cast<Shared*>(param);
  while (!shared->stop) {
    ++shared->count;
    std::this_thread::sleep_for(std::chrono::microseconds(100));
  }
  return 0;
}

class StFailThreadCreate : public StSysCallTable {
 public:
  StFailThreadCreate() {
    vbu::platform::Sys().thread_create = [](uint64_t*, void* (*)(void*), void*) { return EAGAIN; };
  }
};

}  // namespace

TEST(PlatformThread, StartsHeldBackWithItsIdKnown) {
  Shared shared;
  MThread* thread = BeginThread(&Note, &shared, true);
  ASSERT_NE(thread, nullptr);
  const unsigned long id = thread->GetThreadId();  // known before it runs: checked against its own below
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(shared.ranAs.load(), 0u) << "nothing runs before it is let go";
  EXPECT_EQ(thread->SuspendThread(), 1) << "held once, at its start";
  EXPECT_EQ(thread->ResumeThread(), 2);
  EXPECT_EQ(thread->ResumeThread(), 1);  // it runs, and deletes itself
  ASSERT_TRUE(WaitFor([&] { return shared.ranAs != 0; }));
  EXPECT_EQ(shared.ranAs.load(), id);
}

TEST(PlatformThread, HoldsARunningThreadAndLetsItGo) {
  Shared shared;
  MThread thread(&Count, &shared);
  thread.SetAutoDelete(false);
  EXPECT_EQ(thread.SuspendThread(), -1) << "not started";
  ASSERT_TRUE(thread.CreateThread());
  EXPECT_EQ(thread.ResumeThread(), 0) << "running: nothing to let go";
  ASSERT_TRUE(WaitFor([&] { return shared.count > 5; }));
  EXPECT_EQ(thread.SuspendThread(), 0);
  EXPECT_EQ(thread.SuspendThread(), 1);
  const long long held = shared.count;
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  EXPECT_EQ(shared.count.load(), held);
  EXPECT_EQ(thread.ResumeThread(), 2);
  std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_EQ(shared.count.load(), held) << "still held once";
  EXPECT_EQ(thread.ResumeThread(), 1);
  ASSERT_TRUE(WaitFor([&] { return shared.count > held; }));
  shared.stop = true;
  const unsigned long id = thread.GetThreadId();
  ASSERT_TRUE(WaitFor([&] { return !MThreadQueue::PostThreadMessage(id, 1, 0, 0); }));
  EXPECT_EQ(thread.SuspendThread(), -1) << "ended";
  EXPECT_FALSE(thread.CreateThread()) << "once only";
}

TEST(PlatformThread, AThreadThatIsNeverLetGoRunsNothing) {
  Shared shared;
  auto* thread = new MThread(&Note, &shared);
  ASSERT_TRUE(thread->CreateThread(true));
  const unsigned long id = thread->GetThreadId();
  delete thread;
  ASSERT_TRUE(WaitFor([&] { return !MThreadQueue::PostThreadMessage(id, 1, 0, 0); }));
  EXPECT_EQ(shared.ranAs.load(), 0u);
}

// A refused thread: null and the system's reason; a task says so, with the
// task list free (a listener may wait for a thread that uses it), and ends
// as a refused start.
TEST(PlatformThread, ARefusedThreadGivesNullAndATaskEndsAsARefusedStart) {
  class Errors : public LListener {
   public:
    bool ListenToMessage(long message, void* param) override {
      if (message != 26000) return true;
      source = static_cast<InteractionRecord*>(param)->source;
      other = std::thread([this] {
        CThreadAction::GetThreadAction()->GetFirstVisibleThread();  // takes the list's lock
        reached = true;
      });
      listFree = WaitFor([this] { return reached.load(); });
      return true;
    }
    void* source = nullptr;
    std::thread other;  // joined once the task has gone: it may wait for the list till then
    std::atomic<bool> reached{false};
    bool listFree = false;
  } errors;
  class Task : public CBrevanderThread {
   public:
    explicit Task(int& steps) : mSteps(steps) { SetWorkerThread(true); }
    ~Task() override { mSteps |= 4; }
    void RunSelf() override { mSteps |= 1; }
    void PostPlay() override { mSteps |= 2; }

   private:
    int& mSteps;
  };
  CThreadDispatcher::GetThreadDispatcher();
  CMessageAction::GetMessageAction()->AddListener(&errors);
  int steps = 0;
  auto* task = new Task(steps);
  {
    StFailThreadCreate fail;
    Shared shared;
    SetLastError(0);
    EXPECT_EQ(BeginThread(&Note, &shared, false), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<uint32_t>(EAGAIN));
    EXPECT_TRUE(task->Execute());
  }
  CMessageAction::GetMessageAction()->RemoveListener(&errors);
  if (errors.other.joinable()) errors.other.join();
  EXPECT_TRUE(errors.listFree) << "the report is made with the task list free";
  EXPECT_EQ(errors.source, task) << "the task reports it";
  EXPECT_EQ(steps, 2 | 4) << "PostPlay and deletion, no work";
  EXPECT_EQ(CThreadAction::GetThreadAction()->GetThreadCount(), 0);
}
