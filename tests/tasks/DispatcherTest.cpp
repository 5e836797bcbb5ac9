// The task dispatcher window, and threads with message loops of their own.
#include <VantoroBasicUtils/messaging/LListener.h>
#include <VantoroBasicUtils/tasks/CBrevanderWinThread.h>
#include <VantoroBasicUtils/tasks/CThreadAction.h>
#include <VantoroBasicUtils/tasks/CThreadDispatcher.h>

#include <gtest/gtest.h>

#include "TaskProbe.h"

using namespace taskprobe;

TEST(Dispatcher, IsMadeOnceOnTheMainThreadAndAfreshAfterDeleteAll) {
  SetUpMainThread();
  CThreadDispatcher* first = CThreadDispatcher::GetThreadDispatcher();
  EXPECT_EQ(CThreadDispatcher::GetThreadDispatcher(), first);
  EXPECT_EQ(first->GetThreadId(), Self());
  EXPECT_EQ(MThread::GetMainThreadId(), Self()) << "the thread that first asked";
  CThreadDispatcher::DeleteAll();
  EXPECT_EQ(CThreadDispatcher::sThreadDispatcher, nullptr);
  CThreadDispatcher::DeleteAll();  // none: nothing
  std::thread([] {
    EXPECT_FALSE(MThread::IsMainThread());
    CThreadDispatcher::GetThreadDispatcher();  // a worker that asks does not become the main thread
    CThreadDispatcher::DeleteAll();
  }).join();
  EXPECT_TRUE(MThread::IsMainThread());
  EXPECT_NE(CThreadDispatcher::GetThreadDispatcher(), nullptr);
}

TEST(Dispatcher, HandsListenerMessagesAndTaskEntriesToItsThread) {
  SetUpMainThread();
  class Window : public LListener {
   public:
    bool ListenToMessage(long message, void* param) override {
      heard.push_back(message);
      params.push_back(param);
      threads.push_back(Self());
      return true;
    }
    std::vector<long> heard;
    std::vector<void*> params;
    std::vector<unsigned long> threads;
  } window;
  window.StopListening();  // the broadcaster's test, not the dispatcher's
  int record = 5;
  ListenerRequest request{&window, 4711, &record};
  ListenerRequest nobody{nullptr, 4712, &record};
  CThreadDispatcher* dispatcher = CThreadDispatcher::GetThreadDispatcher();
  std::thread([&] {
    dispatcher->PostMessage(WM_THREADBROADCAST, 0, reinterpret_cast<intptr_t>(&nobody));
    dispatcher->PostMessage(WM_THREADBROADCAST, 0, reinterpret_cast<intptr_t>(&request));
  }).join();
  EXPECT_TRUE(window.heard.empty()) << "nothing before the pump";
  MThreadQueue::PumpMessages();
  EXPECT_EQ(window.heard, std::vector<long>{4711});
  EXPECT_EQ(window.params, std::vector<void*>{&record});
  EXPECT_EQ(window.threads, std::vector<unsigned long>{Self()});
  EXPECT_EQ(dispatcher->SendMessage(WM_THREADBROADCAST, 0, 0), 0);

  Log log;
  Probe task(log, "T", false, false);
  std::thread([&] {
    dispatcher->PostMessage(WM_THREADSTARTED, 0, reinterpret_cast<intptr_t>(&task));
  }).join();
  MThreadQueue::PumpMessages();
  EXPECT_EQ(CThreadAction::GetThreadAction()->GetThread(1), &task);
  task.CleanUp(false);
  EXPECT_EQ(CThreadAction::GetThreadAction()->GetThreadCount(), 0);
}

namespace {

// Records its thread messages, and quits when told.
class Looper : public CBrevanderWinThread {
 public:
  Looper(Log& log) : mLog(log) {}
  ~Looper() override { mLog.Note("delete"); }

 protected:
  bool OnThreadMessage(unsigned int message, uintptr_t wParam, intptr_t lParam) override {
    if (message >= 100 && message < 200) {
      mLog.Note(std::to_string(message));
      if (message == 101) {
        SelfMessage(150, 0, 0);  // comes after what is queued already
        Quit();
        SelfMessage(151, 0, 0);  // dropped
      }
      return true;
    }
    return CBrevanderWinThread::OnThreadMessage(message, wParam, lParam);
  }
  void OnQuit(unsigned int wParam, long lParam) override {
    mLog.Note("quit");
    CBrevanderWinThread::OnQuit(wParam, lParam);
  }

 private:
  Log& mLog;
};

}  // namespace

TEST(WinThread, RunsItsMessagesInOrderAndQuitsBehindThem) {
  Log log;
  auto* looper = new Looper(log);
  ASSERT_TRUE(looper->CreateThread(true));
  const unsigned long id = looper->GetThreadId();
  ASSERT_NE(id, 0u);
  looper->SelfMessage(100, 0, 0);  // held back, yet its queue takes messages
  looper->SelfMessage(101, 0, 0);
  looper->SelfMessage(102, 0, 0);
  looper->ResumeThread();
  ASSERT_TRUE(PumpUntil([&] { return log.Has("delete"); }));
  EXPECT_EQ(log.Names(), (std::vector<std::string>{"100", "101", "102", "150", "quit", "delete"}));
  for (const Step& step : log.Steps()) EXPECT_EQ(step.thread, id);
  ASSERT_TRUE(PumpUntil([&] { return ThreadEnded(id); }));
}

TEST(WinThread, QuitTwicePostsTwice) {
  class Quitter : public CBrevanderWinThread {
   public:
    explicit Quitter(std::atomic<int>& quits) : mQuits(quits) { SetAutoDelete(false); }

   protected:
    void OnQuit(unsigned int, long) override {
      if (++mQuits == 2) MThreadQueue::PostQuitMessage(0);
    }

   private:
    std::atomic<int>& mQuits;
  };
  std::atomic<int> quits{0};
  Quitter quitter(quits);
  ASSERT_TRUE(quitter.CreateThread(true));
  quitter.Quit();
  quitter.Quit();
  quitter.ResumeThread();
  ASSERT_TRUE(PumpUntil([&] { return quits == 2 && ThreadEnded(quitter.GetThreadId()); }));
}
