// Progress reports: what each static call puts in its record, and whose
// thread id the record carries.
#include <VantoroBasicUtils/messaging/CMessageAction.h>
#include <VantoroBasicUtils/messaging/LListener.h>
#include <VantoroBasicUtils/platform/MessageQueue.h>
#include <VantoroBasicUtils/tasks/CThreadStatus.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace vbu::literals;

namespace {

struct Seen {
  unsigned int threadId;
  int mask;
  long long position, range;
  std::u16string status, description;
  bool operator==(const Seen&) const = default;
};

class Display : public LListener {
 public:
  Display() { CThreadStatus::GetThreadStatus()->AddListener(this); }
  bool ListenToMessage(long message, void* param) override {
    auto* r = static_cast<ThreadStatusRecord*>(param);
    if (message != kMsgThreadStatus) return false;
    seen.push_back({r->threadId, r->mask, r->position, r->range,
                    reinterpret_cast<const char16_t*>(static_cast<const unsigned short*>(r->status)),
                    reinterpret_cast<const char16_t*>(static_cast<const unsigned short*>(r->description))});
    return true;
  }
  std::vector<Seen> seen;
};

}  // namespace

TEST(ThreadStatus, EachCallFillsTheFieldsItsMaskNamesAndACopyReportsToNobody) {
  Display display;
  CThreadStatus::Status(5, 100, u"Joining"_u16);
  CThreadStatus::SetStatus(u""_u16);
  CThreadStatus::SetRange(100, 5);
  CThreadStatus::SetPosition(40);
  CThreadStatus::AdvancePosition(3);
  CThreadStatus::SetDescription(u"Title 1"_u16);
  CThreadStatus::SetStatus(nullptr);
  // Fields the mask does not name are 0 or empty; an empty text still goes
  // out, and no text reads as empty.
  const auto self = static_cast<unsigned int>(MThreadQueue::CurrentThreadId());
  const std::vector<Seen> expected = {
      {self, 7, 5, 100, u"Joining", u""},  {self, kStatusText, 0, 0, u"", u""},
      {self, kStatusRange, 0, 100, u"", u""}, {self, kStatusPosition, 40, 0, u"", u""},
      {self, kStatusAdvance, 3, 0, u"", u""}, {self, kStatusDescription, 0, 0, u"", u"Title 1"},
      {self, kStatusText, 0, 0, u"", u""}};
  EXPECT_EQ(display.seen, expected);
  CThreadStatus copy(*CThreadStatus::GetThreadStatus());  // reports to nobody: listeners stay with the original
  copy.BroadcastStatus(kStatusText, 0, 0, u"x"_u16, nullptr);
  CThreadStatus::SetStatus(u"y"_u16);
  ASSERT_EQ(display.seen.size(), 8u);
  EXPECT_EQ(display.seen[7].status, u"y");
}

TEST(ThreadStatus, WorkersReportingAtOnceReachEveryListenerWithTheirOwnThreadIds) {
  // Two joins may run side by side: each report reaches the listener on its
  // own thread, carrying that thread's id (not the listener's), none is lost.
  class Counter : public LListener {
   public:
    Counter() { CThreadStatus::GetThreadStatus()->AddListener(this); }
    bool ListenToMessage(long, void* param) override {
      auto* record = static_cast<ThreadStatusRecord*>(param);
      if (record->threadId == static_cast<unsigned int>(MThreadQueue::CurrentThreadId()) && record->threadId != mine)
        total.fetch_add(record->position, std::memory_order_relaxed);
      return true;
    }
    const unsigned int mine = static_cast<unsigned int>(MThreadQueue::CurrentThreadId());
    std::atomic<long long> total{0};
  } counter;
  constexpr int kWorkers = 4, kReports = 20000;
  std::vector<std::thread> workers;
  for (int w = 0; w < kWorkers; ++w) {
    workers.emplace_back([] {
      for (int i = 0; i < kReports; ++i) CThreadStatus::AdvancePosition(1);
    });
  }
  for (std::thread& worker : workers) worker.join();
  EXPECT_EQ(counter.total, kWorkers * kReports);
}

namespace {

// Runs `scenario` on a thread of its own and waits up to 20 s for it; a
// deadlock ends the test program with a failure instead of hanging it.
void RunOrAbort(const char* name, const std::function<void()>& scenario) {
  std::mutex m;
  std::condition_variable cv;
  bool done = false;
  std::thread runner([&] {
    scenario();
    std::lock_guard<std::mutex> lock(m);
    done = true;
    cv.notify_one();
  });
  std::unique_lock<std::mutex> lock(m);
  if (!cv.wait_for(lock, std::chrono::seconds(20), [&] { return done; })) {
    std::fprintf(stderr, "%s: no progress after 20 s (deadlock)\n", name);
    std::abort();
  }
  lock.unlock();
  runner.join();
}

const unsigned short kWarn[] = {'w', 0};

}  // namespace

TEST(ThreadStatus, AListenerMayWaitForAThreadThatReports) {
  // A worker's message listener hands the message to the user-interface
  // thread and waits until that thread has shown it; meanwhile the
  // user-interface thread reports a message and progress of its own.
  RunOrAbort("hand-over", [] {
    std::mutex m;
    std::condition_variable cv;
    std::deque<int> handedOver;
    int shown = 0;
    std::thread::id ui = std::this_thread::get_id();
    struct HandOver : LListener {
      std::function<void()> onWorker;
      std::thread::id ui;
      bool ListenToMessage(long message, void*) override {
        if (message == 26000 && std::this_thread::get_id() != ui) onWorker();
        return true;
      }
    } handOver;
    handOver.ui = ui;
    handOver.onWorker = [&] {
      std::unique_lock<std::mutex> lock(m);
      handedOver.push_back(1);
      cv.notify_all();
      cv.wait(lock, [&] { return shown > 0; });
    };
    CMessageAction::GetMessageAction()->AddListener(&handOver);
    std::thread worker([] { CMessageAction::Error(nullptr, kWarn, 1); });
    {
      std::unique_lock<std::mutex> lock(m);
      cv.wait(lock, [&] { return !handedOver.empty(); });
    }
    // The worker is inside its broadcast now: these must not wait for it.
    CMessageAction::Inform(nullptr, kWarn, 1);
    CThreadStatus::SetPosition(1);
    {
      std::lock_guard<std::mutex> lock(m);
      ++shown;
      cv.notify_all();
    }
    worker.join();
    CMessageAction::GetMessageAction()->RemoveListener(&handOver);
  });
}

TEST(ThreadStatus, ProgressThatWarnsAndMessagesThatReportProgressRunSideBySide) {
  // One thread's progress listener warns the user while another thread's
  // message listener reports progress: each broadcast calls into the other
  // broadcaster, from two threads at once.
  struct WarnOnPosition : LListener {
    bool ListenToMessage(long, void* param) override {
      if (static_cast<ThreadStatusRecord*>(param)->mask == kStatusPosition) CMessageAction::Warning(nullptr, kWarn, 1);
      return true;
    }
  } warner;
  struct ProgressOnError : LListener {
    std::atomic<int> heard{0};
    bool ListenToMessage(long message, void*) override {
      heard.fetch_add(1, std::memory_order_relaxed);
      if (message == 26000) CThreadStatus::AdvancePosition(1);
      return true;
    }
  } reporter;
  CThreadStatus::GetThreadStatus()->AddListener(&warner);
  CMessageAction::GetMessageAction()->AddListener(&reporter);
  constexpr int kRounds = 2000;
  RunOrAbort("cross reports", [] {
    std::thread a([] {
      for (int i = 0; i < kRounds; ++i) CThreadStatus::SetPosition(i);
    });
    std::thread b([] {
      for (int i = 0; i < kRounds; ++i) CMessageAction::Error(nullptr, kWarn, 1);
    });
    a.join();
    b.join();
  });
  EXPECT_EQ(reporter.heard.load(), 2 * kRounds);  // every error and every warning
}
