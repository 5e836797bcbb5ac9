// The library's services exist before the host's own static objects are
// made, and die in reverse order of their making at exit.
#include <VantoroBasicUtils/messaging/CMessageAction.h>
#include <VantoroBasicUtils/messaging/LListener.h>
#include <VantoroBasicUtils/tasks/CIdleProcess.h>
#include <VantoroBasicUtils/tasks/CThreadAction.h>
#include <VantoroBasicUtils/tasks/CThreadStatus.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace {

bool gHostProcessRan = false;

class HostProcess : public CIdleProcess {
  void ExecuteSelf() override { gHostProcessRan = true; }
};

// A host's static object that queues idle work and reports while it is made:
// the queue must exist already, or its own construction would forget the
// process; the message service must be there to take the report.
const bool gQueuedAtLoad = (new HostProcess, true);
bool ReportAtLoad() {
  const unsigned short text[] = {'e', 'a', 'r', 'l', 'y', 0};
  CMessageAction::Error(nullptr, text, 64);  // no window: nothing shows
  return CMessageAction::GetMessageAction() != nullptr && CMessageAction::GetWindowType(0) == 1;
}
const bool gReportedAtLoad = ReportAtLoad();

// Names each dying service as it hears its last message.
class Witness : public LListener {
 public:
  bool ListenToMessage(long message, void* param) override {
    if (message != kMsgBroadcasterDying) return false;
    if (param == CThreadAction::GetThreadAction()) std::fputs("CThreadAction ", stderr);
    if (param == CThreadStatus::GetThreadStatus()) std::fputs("CThreadStatus ", stderr);
    if (param == CMessageAction::GetMessageAction()) std::fputs("CMessageAction ", stderr);
    return true;
  }
};

class LastIdleWork : public CIdleProcess {
 public:
  ~LastIdleWork() override { std::fputs("gIdleProcesses ", stderr); }
};

Witness* gWitness = nullptr;  // reachable, and alive to the very end

}  // namespace

TEST(StaticObjects, AreReadyBeforeTheHostsStaticObjects) {
  ASSERT_TRUE(gQueuedAtLoad);
  EXPECT_TRUE(gReportedAtLoad);
  gIdleProcesses.ExecuteAll();
  EXPECT_TRUE(gHostProcessRan);
}

TEST(StaticObjectsDeathTest, DieInReverseOrderAtExit) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        gWitness = new Witness;
        CThreadAction::GetThreadAction()->AddListener(gWitness);
        CThreadStatus::GetThreadStatus()->AddListener(gWitness);
        CMessageAction::GetMessageAction()->AddListener(gWitness);
        new LastIdleWork;  // pending at exit: the queue deletes it as it dies
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "^CThreadAction CThreadStatus CMessageAction gIdleProcesses $");
}
