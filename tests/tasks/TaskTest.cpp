// The task's lifecycle: which thread runs each step, the order of the end
// messages, and the ways a task ends early.
#include <VantoroBasicUtils/tasks/CBrevanderThread.h>
#include <VantoroBasicUtils/tasks/CThreadAction.h>
#include <VantoroBasicUtils/tasks/CThreadDispatcher.h>
#include <VantoroBasicUtils/tasks/MBrevanderTaskBase.h>

#include <gtest/gtest.h>

#include "TaskProbe.h"

using namespace taskprobe;
using namespace vbu::literals;

namespace {

class Task : public ::testing::Test {
 protected:
  void SetUp() override { SetUpMainThread(); }
  void TearDown() override {
    EXPECT_EQ(CThreadAction::GetThreadAction()->GetThreadCount(), 0) << "a task was left on the list";
  }
};

enum Where { kMain, kWorker };

struct Column {
  const char* name;
  bool worker, selfDestroy;
  std::vector<std::pair<const char*, Where>> steps;  // each step in its order, and the thread that must run it
  std::vector<const char*> absent;
};

}  // namespace

TEST_F(Task, EachStepRunsOnTheThreadOfItsColumn) {
  const Column columns[] = {
      {"worker, self-destroying", true, true,
       {{"T.PrePlay", kMain}, {"T.RunSelf", kWorker}, {"T.PostPlay", kMain}, {"58900", kMain}, {"29001", kMain},
        {"T.delete", kMain}, {"29002", kMain}, {"202", kMain}},
       {"58901"}},
      {"worker, kept", true, false,
       {{"T.PrePlay", kMain}, {"T.RunSelf", kWorker}, {"T.PostPlay", kWorker}, {"58900", kWorker},
        {"29001", kWorker}, {"58901", kWorker}},
       {"T.delete"}},
      {"no worker, self-destroying", false, true,
       {{"T.PrePlay", kMain}, {"T.RunSelf", kMain}, {"T.PostPlay", kMain}, {"58900", kMain}, {"29001", kMain},
        {"T.delete", kMain}},
       {"58901"}},
      {"no worker, kept", false, false,
       {{"T.PrePlay", kMain}, {"T.RunSelf", kMain}, {"T.PostPlay", kMain}, {"58900", kMain}, {"29001", kMain}},
       {"58901", "T.delete"}},
  };
  for (const Column& column : columns) {
    SCOPED_TRACE(column.name);
    Log log;
    Recorder recorder(log);
    auto* task = new Probe(log, "T", column.selfDestroy, column.worker);
    task->AddListener(&recorder);
    CThreadAction::GetThreadAction()->AddListener(&recorder);
    ASSERT_TRUE(task->Execute());
    if (!column.worker && column.selfDestroy) {
      EXPECT_TRUE(log.Has("T.delete")) << "gone when Execute returns";
    }
    if (column.selfDestroy) {
      ASSERT_TRUE(PumpUntil([&] { return log.Has("T.delete"); }));
    } else {
      ASSERT_TRUE(PumpUntil([&] { return log.Has("29001") && (!column.worker || log.Has("58901")); }));
    }
    const unsigned long worker = log.ThreadOf("T.RunSelf");
    long last = 0;
    for (const auto& [step, where] : column.steps) {
      SCOPED_TRACE(step);
      const unsigned long thread = log.ThreadOf(step);
      ASSERT_NE(thread, 0u) << "step missing";
      EXPECT_GE(log.IndexOf(step), last) << "out of order";
      last = log.IndexOf(step);
      EXPECT_EQ(thread, where == kMain ? Self() : worker);
      if (where == kWorker) {
        EXPECT_NE(thread, Self());
      }
    }
    for (const char* step : column.absent) EXPECT_FALSE(log.Has(step)) << step;
    if (!column.selfDestroy) {
      EXPECT_EQ(task->idInRunSelf.load(), worker) << "GetThreadId names the thread that runs the task";
      if (column.worker) {
        ASSERT_TRUE(PumpUntil([&] { return ThreadEnded(worker); }));
      }
      delete task;
    }
    CThreadAction::GetThreadAction()->RemoveListener(&recorder);
  }
}

TEST_F(Task, APrePlayThatRefusesDeletesTheTaskEvenIfItIsKept) {
  Log log;
  Recorder recorder(log);
  CThreadAction::GetThreadAction()->AddListener(&recorder);
  auto* task = new Probe(log, "T", false, true);
  task->allowPrePlay = false;
  EXPECT_FALSE(task->Execute());
  CThreadAction::GetThreadAction()->RemoveListener(&recorder);
  EXPECT_EQ(log.Names(), (std::vector<std::string>{"T.PrePlay", "T.delete"})) << "never on the list";
}

TEST_F(Task, ARefusedStartEndsAtOnceWithPostPlayAndNoWork) {
  Log log;
  Recorder recorder(log);
  auto* task = new Probe(log, "T", false, true);
  task->refuse = true;
  task->AddListener(&recorder);
  ASSERT_TRUE(task->Execute());
  // Finish ran on the main thread: CleanUp on the spot, and no 58901.
  EXPECT_EQ(log.Names(), (std::vector<std::string>{"T.PrePlay", "T.PostPlay", "58900"}));
  EXPECT_EQ(log.ThreadOf("T.PostPlay"), Self());
  EXPECT_FALSE(task->CanKill());
  task->Abort();  // after the end: it runs once only
  EXPECT_EQ(log.Names().size(), 3u);
  delete task;
}

TEST_F(Task, AbortEndsAWaitingTaskAtOnceOrThroughTheDispatcherButOnlyWarnsARunningOne) {
  Log log;
  Recorder recorder(log);
  Gate gate;
  auto* running = new Probe(log, "R", true, true, true);
  running->gate = &gate;
  auto* waiting = new Probe(log, "W", true, true, true);
  auto* remote = new Probe(log, "X", true, true, true);
  waiting->AddListener(&recorder);
  for (Probe* task : {running, waiting, remote}) task->Execute();
  ASSERT_TRUE(PumpUntil([&] { return log.Has("R.RunSelf"); }));
  EXPECT_EQ(CThreadAction::GetThreadAction()->FindWaitingThread(waiting), waiting);

  waiting->Abort();  // on the main thread: ends here, without PostPlay
  EXPECT_TRUE(log.Has("58900"));
  EXPECT_TRUE(log.Has("W.delete"));
  EXPECT_FALSE(log.Has("W.PostPlay"));
  EXPECT_EQ(CThreadAction::GetThreadAction()->GetThreadCount(), 2);

  std::thread([&] { remote->Abort(); }).join();
  EXPECT_FALSE(log.Has("X.delete")) << "from another thread the end waits for the user-interface thread";
  ASSERT_TRUE(PumpUntil([&] { return log.Has("X.delete"); }));
  EXPECT_EQ(log.ThreadOf("X.PostPlay"), Self()) << "the dispatcher always runs PostPlay";

  running->Abort();  // running: only ShouldStart turns false
  running->Abort();
  EXPECT_FALSE(running->ShouldStart());
  EXPECT_TRUE(running->CanKill());
  EXPECT_FALSE(log.Has("R.PostPlay"));
  gate.Open();
  ASSERT_TRUE(PumpUntil([&] { return log.Has("R.delete"); }));
  EXPECT_TRUE(log.Has("R.PostPlay")) << "a started task ends the ordinary way";
  EXPECT_FALSE(log.Has("W.RunSelf") || log.Has("X.RunSelf"));
}

// CanKill is true while the worker runs (the abort case above); it turns
// false at Finish, while the worker is still returning.
TEST_F(Task, CanKillIsFalseFromFinishOn) {
  class Checker : public LListener {
   public:
    explicit Checker(CBrevanderThread* task) : mTask(task) {}
    bool ListenToMessage(long message, void*) override {
      if (message == kMsgTaskCleanUp) canKillAtCleanUp = mTask->CanKill() ? 1 : 0;
      return true;
    }
    std::atomic<int> canKillAtCleanUp{-1};

   private:
    CBrevanderThread* mTask;
  };
  Log log;
  Probe task(log, "T", false, true);
  Checker checker(&task);
  task.AddListener(&checker);
  task.Execute();
  ASSERT_TRUE(PumpUntil([&] { return checker.canKillAtCleanUp >= 0; }));
  EXPECT_EQ(checker.canKillAtCleanUp.load(), 0);
  ASSERT_TRUE(PumpUntil([&] { return ThreadEnded(log.ThreadOf("T.RunSelf")); }));
}

TEST_F(Task, KillAsksKillSelfUntilItSucceedsAndOnlyIfTheTaskMayBeKilled) {
  struct Case {
    bool canKill, result;
    int calls;  // after two Kill calls
    bool canceled;
  } cases[] = {{false, true, 0, false}, {true, true, 1, true}, {true, false, 2, false}};
  for (const Case& c : cases) {
    Log log;
    Probe task(log, "T", false, true);
    task.SetCanKill(c.canKill);
    task.killResult = c.result;
    task.Kill();
    task.Kill();
    EXPECT_EQ(task.killCalls, c.calls);
    EXPECT_EQ(task.IsCanceled(), c.canceled);
  }
}

TEST_F(Task, StatusPositionIsOnAScaleOf1024) {
  struct Case {
    long long range, pos;
    int expect;
  } cases[] = {{0, 0, 0}, {0, 50, 0}, {2048, 1024, 512}, {1000, 1000, 1024}, {3, 1, 341}, {-2048, 1024, -512},
               {0x7FFFFFFFFFFFll, 0x7FFFFFFFFFFFll, 1024}};
  Log log;
  Probe task(log, "T", false, false);
  for (const Case& c : cases) {
    task.SetRange(c.range);
    task.SetPos(c.pos);
    EXPECT_EQ(task.GetStatusPosition(), c.expect) << c.range << " " << c.pos;
  }
}

namespace discs {
class BurnDisc : public CBrevanderThread {};
}  // namespace discs

TEST_F(Task, AnUnnamedTaskIsListedUnderItsClassName) {
  discs::BurnDisc task;
  EXPECT_EQ(MString(task.GetDescription()), MString(u"discs::BurnDisc"_u16));
}

TEST_F(Task, ACopyTakesTheFieldsButNeitherListenersNorThread) {
  Log log;
  Recorder recorder(log);
  CBrevanderThread task(false);
  task.SetWorkerThread(true);
  task.SetRange(10);
  task.SetPos(4);
  task.SetStatus(u"Joining"_u16);
  task.SetLastPosition(77);
  task.AddListener(&recorder);
  CBrevanderThread copy(task);
  EXPECT_EQ(copy.GetRange(), 10);
  EXPECT_EQ(copy.GetPos(), 4);
  EXPECT_EQ(MString(copy.GetStatus()), MString(u"Joining"_u16));
  EXPECT_EQ(copy.GetLastPosition(), 77);
  EXPECT_TRUE(copy.IsWorkerThread());
  EXPECT_FALSE(copy.CanKill());
  copy.BroadcastMessage(1, nullptr);
  EXPECT_TRUE(log.Names().empty());
}

TEST(TaskBase, ReadsFlagsItDoesNotOwnAndCopiesWatchTheSameFlags) {
  MBrevanderTaskBase base;
  EXPECT_FALSE(base.IsStop()) << "no flag";
  bool stop = false, canKill = true;
  base.SetStopFlagPtr(&stop);
  base.SetCanKillPtr(&canKill);
  MBrevanderTaskBase copy(base);
  stop = true;
  EXPECT_TRUE(copy.IsStop());
  EXPECT_EQ(copy.GetStopFlagPtr(), &stop);
  EXPECT_EQ(copy.GetCanKillPtr(), &canKill);
}
