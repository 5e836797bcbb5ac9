// Progress reports: what each static call puts in its record, and whose
// thread id the record carries.
#include <VantoroBasicUtils/messaging/LListener.h>
#include <VantoroBasicUtils/platform/MessageQueue.h>
#include <VantoroBasicUtils/tasks/CThreadStatus.h>

#include <gtest/gtest.h>

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

TEST(ThreadStatus, EachCallFillsTheFieldsItsMaskNames) {
  Display display;
  CThreadStatus::Status(5, 100, u"Joining"_u16);
  CThreadStatus::SetStatus(u""_u16);
  CThreadStatus::SetRange(100, 5);
  CThreadStatus::SetPosition(40);
  CThreadStatus::AdvancePosition(3);
  CThreadStatus::SetDescription(u"Title 1"_u16);
  CThreadStatus::SetStatus(nullptr);
  ASSERT_EQ(display.seen.size(), 7u);
  const Seen& status = display.seen[0];
  EXPECT_EQ(status.mask, 7);
  EXPECT_EQ(status.position, 5);
  EXPECT_EQ(status.range, 100);
  EXPECT_EQ(status.status, u"Joining");
  EXPECT_EQ(status.description, u"");
  EXPECT_EQ(display.seen[1].mask, kStatusText) << "an empty text still goes out";
  EXPECT_EQ(display.seen[2].mask, kStatusRange);
  EXPECT_EQ(display.seen[2].range, 100);
  EXPECT_EQ(display.seen[2].position, 0);
  EXPECT_EQ(display.seen[3].mask, kStatusPosition);
  EXPECT_EQ(display.seen[3].position, 40);
  EXPECT_EQ(display.seen[4].mask, kStatusAdvance);
  EXPECT_EQ(display.seen[4].position, 3);
  EXPECT_EQ(display.seen[5].mask, kStatusDescription);
  EXPECT_EQ(display.seen[5].description, u"Title 1");
  EXPECT_EQ(display.seen[5].status, u"");
  EXPECT_EQ(display.seen[6].status, u"") << "no text reads as empty";
  for (const Seen& s : display.seen) EXPECT_EQ(s.threadId, MThreadQueue::CurrentThreadId());
}

TEST(ThreadStatus, TheRecordCarriesTheReportingThread) {
  Display display;  // added on this thread
  unsigned long worker = 0;
  std::thread([&] {
    worker = MThreadQueue::CurrentThreadId();
    CThreadStatus::AdvancePosition(1);
  }).join();
  ASSERT_EQ(display.seen.size(), 1u);
  EXPECT_EQ(display.seen[0].threadId, static_cast<unsigned int>(worker));
  EXPECT_NE(display.seen[0].threadId, static_cast<unsigned int>(MThreadQueue::CurrentThreadId()));
}

TEST(ThreadStatus, WorkersReportingAtOnceReachTheListenerOneAtATime) {
  // Two joins of different kinds may run side by side; the listener is
  // called for one report at a time, so a plain counter stays exact.
  class Counter : public LListener {
   public:
    Counter() { CThreadStatus::GetThreadStatus()->AddListener(this); }
    bool ListenToMessage(long, void* param) override {
      total += static_cast<ThreadStatusRecord*>(param)->position;
      return true;
    }
    long long total = 0;
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

TEST(ThreadStatus, ACopyReportsToNobody) {
  Display display;
  CThreadStatus copy(*CThreadStatus::GetThreadStatus());
  copy.BroadcastStatus(kStatusText, 0, 0, u"x"_u16, nullptr);
  EXPECT_TRUE(display.seen.empty()) << "listeners stay with the original";
  CThreadStatus::SetStatus(u"y"_u16);
  EXPECT_EQ(display.seen.size(), 1u);
}
