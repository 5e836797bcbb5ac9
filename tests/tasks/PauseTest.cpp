// Pause and Continue of a worker that counts.
#include <VantoroBasicUtils/tasks/CBrevanderThread.h>

#include <gtest/gtest.h>

#include "TaskProbe.h"

using namespace taskprobe;

namespace {

class Counter : public CBrevanderThread {
 public:
  Counter() : CBrevanderThread(false) { SetWorkerThread(true); }
  void RunSelf() override {
    while (ShouldStart()) {
      SetPos(GetPos() + 1);
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
  }
  void PostPlay() override { ended = true; }
  std::atomic<bool> ended{false};
};

// The count, once it has moved on from `from`; -1 if it did not within the limit.
long long MovedOn(Counter& counter, long long from) {
  return PumpUntil([&] { return counter.GetPos() > from; }) ? counter.GetPos() : -1;
}

}  // namespace

TEST(Pause, HoldsACountingWorkerUntilContinue) {
  SetUpMainThread();
  CBrevanderThread plain(false);  // no worker: nothing to hold
  plain.Pause();
  plain.Continue();
  EXPECT_FALSE(plain.IsPaused());
  Counter counter;
  counter.Execute();
  ASSERT_GT(MovedOn(counter, 10), 0);

  counter.Pause();
  counter.Pause();  // once is enough: one Continue lets it go
  ASSERT_TRUE(counter.IsPaused());
  const long long held = counter.GetPos();
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(counter.GetPos(), held) << "the worker is held";

  counter.Continue();
  EXPECT_FALSE(counter.IsPaused());
  EXPECT_GT(MovedOn(counter, held), held);
  counter.Continue();  // without Pause: nothing
  EXPECT_FALSE(counter.IsPaused());

  counter.SetCanKill(false);  // the gate of Pause and Continue too
  counter.Pause();
  EXPECT_FALSE(counter.IsPaused());
  counter.SetCanKill(true);

  counter.Abort();
  ASSERT_TRUE(PumpUntil([&] { return counter.ended.load(); }));
  counter.Pause();  // no worker attached any more
  EXPECT_FALSE(counter.IsPaused());
  ASSERT_TRUE(PumpUntil([&] { return ThreadEnded(counter.GetThreadId()); }));
}
