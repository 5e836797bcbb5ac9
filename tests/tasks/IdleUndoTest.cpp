// Idle processes that make and delete others while they run, and undo and
// redo histories.
#include <VantoroBasicUtils/tasks/CIdleProcess.h>
#include <VantoroBasicUtils/tasks/COperation.h>
#include <VantoroBasicUtils/tasks/COperationList.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

std::vector<std::string> gRan, gDeleted;

class Job : public CIdleProcess {
 public:
  Job(std::string name, std::function<void()> work = {}) : mName(std::move(name)), mWork(std::move(work)) {}
  ~Job() override { gDeleted.push_back(mName); }
  void ExecuteSelf() override {
    gRan.push_back(mName);
    if (mWork) mWork();
  }

 private:
  std::string mName;
  std::function<void()> mWork;
};

class Idle : public ::testing::Test {
 protected:
  void SetUp() override {
    gIdleProcesses.ExecuteAll();  // nothing left over
    gRan.clear();
    gDeleted.clear();
  }
};

}  // namespace

TEST_F(Idle, RunsEachPendingProcessOnceInOrderAndDeletesItButNoCopyOrRemovedOne) {
  new Job("a");
  Job* cancelled = new Job("c");
  Job* removed = new Job("r");
  { Job copy(*cancelled); }  // a copy stays off the list
  new Job("d");
  delete cancelled;
  gIdleProcesses.RemoveProcess(removed);
  gIdleProcesses.RemoveProcess(removed);  // absent: nothing
  gIdleProcesses.ExecuteAll();
  EXPECT_EQ(gRan, (std::vector<std::string>{"a", "d"}));
  EXPECT_EQ(gDeleted, (std::vector<std::string>{"c", "c", "a", "d"}));
  gIdleProcesses.ExecuteAll();
  EXPECT_EQ(gRan.size(), 2u) << "the second call finds nothing";
  delete removed;
}

TEST_F(Idle, ProcessesMadeDuringTheWalkRunInItAndDeletedOnesDoNot) {
  Job* later = nullptr;
  new Job("a", [] { new Job("made by a", [] { new Job("made by made"); }); });
  new Job("b", [&] { delete later; });
  later = new Job("later");
  new Job("c");
  gIdleProcesses.ExecuteAll();
  EXPECT_EQ(gRan, (std::vector<std::string>{"a", "b", "c", "made by a", "made by made"}));
  EXPECT_EQ(gDeleted.size(), 6u);
}

int gDeaths = 0;

TEST_F(Idle, AQueueThatDiesDeletesWhatIsPendingWithoutRunningIt) {
  gDeaths = 0;
  auto* queue = new CIdleProcesses;
  class Pending : public CIdleProcess {
   public:
    Pending(CIdleProcesses* queue, Pending** other) : mQueue(queue), mOther(other) {
      gIdleProcesses.RemoveProcess(this);
      queue->AddProcess(this);
    }
    ~Pending() override {
      mQueue->RemoveProcess(this);
      ++gDeaths;
      if (mOther && *mOther) {
        Pending* other = *mOther;
        *mOther = nullptr;
        delete other;  // takes a later one with it
      }
    }
    void ExecuteSelf() override { gRan.push_back("pending"); }

   private:
    CIdleProcesses* mQueue;
    Pending** mOther;
  };
  Pending* third = nullptr;
  new Pending(queue, &third);
  new Pending(queue, nullptr);
  third = new Pending(queue, nullptr);
  delete queue;
  EXPECT_EQ(gDeaths, 3);
  EXPECT_TRUE(gRan.empty());
}

// ---- undo

namespace {

std::vector<std::string> gActions;

class Op : public COperation {
 public:
  Op(std::string name, bool succeeds = true) : mName(std::move(name)), mSucceeds(succeeds) {}
  ~Op() override { gActions.push_back("~" + mName); }

 protected:
  bool ExecuteSelf() override {
    gActions.push_back("do " + mName);
    return mSucceeds;
  }
  bool UndoSelf() override {
    gActions.push_back("undo " + mName);
    return false;  // a failed undo still counts as undone
  }

 private:
  std::string mName;
  bool mSucceeds;
};

class Undo : public ::testing::Test {
 protected:
  void SetUp() override { gActions.clear(); }
};

}  // namespace

TEST_F(Undo, ANewActionCutsOffTheRedoBranch) {
  struct Case {
    std::vector<std::string> performed;
    int undos;
    std::vector<std::string> expectDeleted;
    unsigned long count, current;
  } cases[] = {
      {{"A", "B", "C"}, 2, {"~C", "~B"}, 2, 2},  // then D: A, D
      {{"A", "B"}, 2, {"~B", "~A"}, 1, 1},       // then D: D alone
  };
  for (const Case& c : cases) {
    gActions.clear();
    COperationList history;
    for (const std::string& name : c.performed) (new Op(name))->Execute();
    for (int i = 0; i < c.undos; ++i) COperationList::Undo();
    EXPECT_TRUE(COperationList::CanRedo());
    gActions.clear();
    (new Op("D"))->Execute();
    std::vector<std::string> deleted;
    for (const std::string& a : gActions)
      if (a[0] == '~') deleted.push_back(a);
    EXPECT_EQ(deleted, c.expectDeleted);
    EXPECT_FALSE(history.canRedo());
    EXPECT_EQ(history.GetCount(), c.count);
    EXPECT_EQ(history.GetCurrent(), c.current);
  }
}

TEST_F(Undo, UndoAndRedoWalkTheCursorAndRedoDoesTheSameObjectAgain) {
  COperationList history;
  history.undo();  // empty: nothing
  (new Op("a"))->Execute();
  EXPECT_FALSE((new Op("failed", false))->Execute());  // deleted, the history as it was
  EXPECT_EQ(history.GetCount(), 1u);
  (new Op("b"))->Execute();
  history.redo();  // at the end: nothing
  history.undo();
  history.undo();
  history.undo();  // nothing left to undo
  EXPECT_FALSE(history.canUndo());
  history.redo();
  EXPECT_EQ(history.GetCurrent(), 1u);
  EXPECT_EQ(gActions, (std::vector<std::string>{"do a", "do failed", "~failed", "do b", "undo b", "undo a", "do a"}));
  history.removeOperationList();
  EXPECT_EQ(history.GetCount(), 0u);
  EXPECT_FALSE(history.canUndo());
  EXPECT_FALSE(history.canRedo());
  EXPECT_EQ(gActions.back(), "~a");
}

TEST_F(Undo, TheLastListMadeIsCurrentAndEitherDeathLeavesNoneWhereNothingIsKept) {
  EXPECT_EQ(COperationList::GetOperationList(), nullptr);
  auto* first = new COperationList;
  auto* second = new COperationList;
  EXPECT_EQ(COperationList::GetOperationList(), second);
  (new Op("x"))->Execute();
  EXPECT_EQ(first->GetCount(), 0u);
  delete first;
  EXPECT_EQ(COperationList::GetOperationList(), nullptr) << "even though the second lives";
  // Without a current history nothing is undone, and an action is deleted once done.
  EXPECT_FALSE(COperationList::CanUndo());
  EXPECT_FALSE(COperationList::CanRedo());
  COperationList::Undo();
  COperationList::Redo();
  EXPECT_TRUE((new Op("a"))->Execute());
  EXPECT_EQ(second->GetCount(), 1u);
  delete second;
  EXPECT_EQ(gActions, (std::vector<std::string>{"do x", "do a", "~a", "~x"}));
}
