// The task list: single-run queuing by class, promotion and hand-over, and
// the host's questions. Listeners that start or abort tasks from inside the
// list's own broadcasts, and the single-run rule under load, are the
// schedule model's (ScheduleModelTest.cpp).
#include <VantoroBasicUtils/tasks/CThreadAction.h>

#include <gtest/gtest.h>

#include "TaskProbe.h"

using namespace taskprobe;
using namespace vbu::literals;

namespace {

class TaskList : public ::testing::Test {
 protected:
  void SetUp() override { SetUpMainThread(); }
  void TearDown() override {
    EXPECT_EQ(List()->GetThreadCount(), 0);
    EXPECT_EQ(List()->GetVisibleCount(), 0);
  }
  static CThreadAction* List() { return CThreadAction::GetThreadAction(); }
};

}  // namespace

TEST_F(TaskList, SingleRunTasksOfOneClassRunOneAfterAnotherInOrderOfArrival) {
  Log log;
  Gate gates[3];
  Probe* tasks[3];
  const char* names[] = {"A", "B", "C"};
  for (int i = 0; i < 3; ++i) {
    tasks[i] = new Probe(log, names[i], true, true, true);
    tasks[i]->gate = &gates[i];
    tasks[i]->Execute();
  }
  ASSERT_TRUE(PumpUntil([&] { return log.Has("A.RunSelf"); }));
  EXPECT_EQ(List()->FindRunningThread(tasks[2]), tasks[0]);
  EXPECT_EQ(List()->FindWaitingThread(tasks[0]), tasks[1]) << "the longest-waiting one of the class";
  EXPECT_EQ(List()->FindThread(tasks[0]->GetThreadId()), tasks[0]);
  EXPECT_EQ(List()->GetThreadCount(), 3);
  gates[2].Open();  // C may run through at once, but only in its turn
  gates[1].Open();
  EXPECT_FALSE(log.Has("B.RunSelf"));
  gates[0].Open();
  ASSERT_TRUE(PumpUntil([&] { return log.Has("C.delete"); }));
  // B starts only once A has left the list (the removal step of CleanUp), C after B.
  EXPECT_LT(log.IndexOf("A.pass>B"), log.IndexOf("B.RunSelf"));
  EXPECT_LT(log.IndexOf("A.PostPlay"), log.IndexOf("B.RunSelf"));
  EXPECT_LT(log.IndexOf("B.pass>C"), log.IndexOf("C.RunSelf"));
  EXPECT_GE(log.IndexOf("C.pass>null"), 0);
}

TEST_F(TaskList, AMiddleTaskAbortedWhileWaitingOrRefusingToStartPassesTheTurnOn) {
  struct Case {
    bool abort;  // else it refuses to start when its turn comes
    std::vector<std::string> present, absent;
  } cases[] = {
      {true, {"A.pass>C"}, {"B.RunSelf", "B.pass>null", "B.PostPlay"}},  // a waiting task hands nothing over
      {false, {"A.pass>B", "B.PostPlay", "B.pass>C"}, {"B.RunSelf"}},    // the road of a refused start
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.abort ? "aborted" : "refused");
    Log log;
    Gate gate;
    Probe* first = new Probe(log, "A", true, true, true);
    Probe* middle = new Probe(log, "B", true, true, true);
    Probe* last = new Probe(log, "C", true, true, true);
    first->gate = &gate;
    middle->refuse = !c.abort;
    for (Probe* p : {first, middle, last}) p->Execute();
    ASSERT_TRUE(PumpUntil([&] { return log.Has("A.RunSelf"); }));
    if (c.abort) {
      middle->Abort();
      EXPECT_TRUE(log.Has("B.delete"));
      EXPECT_EQ(List()->FindWaitingThread(first), last);
      EXPECT_FALSE(log.Has("C.RunSelf"));
    }
    gate.Open();
    ASSERT_TRUE(PumpUntil([&] { return log.Has("C.delete"); }));
    for (const std::string& step : c.present) EXPECT_GE(log.IndexOf(step), 0) << step;
    for (const std::string& step : c.absent) EXPECT_EQ(log.IndexOf(step), -1) << step;
  }
}

TEST_F(TaskList, DifferentClassesAndTasksThatAreNotSingleRunRunSideBySideAndTheListAnswersQuestions) {
  EXPECT_EQ(List()->GetFirstVisibleThread(), nullptr);
  EXPECT_EQ(List()->GetThread(1), nullptr);
  Log log;
  Gate gate;
  Probe* hidden = new Probe(log, "H", true, true);
  hidden->SetVisible(false);
  hidden->SetThreadType(3);
  Probe* shown = new Probe(log, "S", true, true);
  shown->SetThreadType(5);
  shown->GetDescription() = u"Burn disc"_u16;
  Probe* a = new Probe(log, "A", true, true, true);
  Probe* b = new ProbeB(log, "B", true, true, true);  // another class, same type number
  Probe* c1 = new ProbeC(log, "C1", true, true, false);
  Probe* c2 = new ProbeC(log, "C2", true, true, false);
  for (Probe* p : {hidden, shown, a, b, c1, c2}) {
    p->gate = &gate;
    if (p != hidden && p != shown) p->SetThreadType(7);
    p->Execute();
  }
  ASSERT_TRUE(PumpUntil([&] {
    return log.Has("A.RunSelf") && log.Has("B.RunSelf") && log.Has("C1.RunSelf") && log.Has("C2.RunSelf");
  }));
  EXPECT_EQ(List()->GetThreadCount(), 6);
  EXPECT_EQ(List()->GetVisibleCount(), 5);
  EXPECT_EQ(List()->GetFirstVisibleThread(), shown);
  EXPECT_EQ(List()->GetThread(2), shown);
  EXPECT_EQ(List()->GetThread(kLastIndex), c2);
  EXPECT_EQ(List()->GetThread(7), nullptr);
  EXPECT_EQ(List()->IsThreadTypeRunning(5), 2) << "a position, not a truth value";
  EXPECT_EQ(List()->IsThreadTypeRunning(7), 3) << "the first of the type";
  EXPECT_EQ(List()->IsThreadTypeRunning(4), 0);
  EXPECT_EQ(List()->FindRunningThread(c1), nullptr) << "not single-run: never on the running list";
  EXPECT_EQ(List()->FindThread(c1->GetThreadId()), nullptr) << "found by id only if single-run";
  EXPECT_EQ(List()->FindThread(b->GetThreadId()), b);
  unsigned short name[] = {'B', 'u', 'r', 'n', ' ', 'd', 'i', 's', 'c', 0};
  EXPECT_EQ(List()->FindThread(name), shown);
  EXPECT_EQ(List()->FindThread(u"Burn disc"_u16), shown) << "a literal passes";
  name[0] = 'b';
  EXPECT_EQ(List()->FindThread(name), nullptr) << "case matters";
  gate.Open();
  ASSERT_TRUE(PumpUntil([&] { return List()->GetThreadCount() == 0; }));
  ASSERT_TRUE(PumpUntil([&] {
    return log.Has("H.delete") && log.Has("S.delete") && log.Has("C1.delete") && log.Has("C2.delete");
  }));
}
