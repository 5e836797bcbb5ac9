// Thread queues, hidden windows, and the broadcast dispatcher on top of them.
#include <VantoroBasicUtils/messaging/CBroadcastDispatcher.h>
#include <VantoroBasicUtils/messaging/LBroadcaster.h>
#include <VantoroBasicUtils/messaging/LListener.h>
#include <VantoroBasicUtils/platform/MessageQueue.h>
#include <VantoroBasicUtils/platform/Sync.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <numeric>
#include <thread>
#include <vector>

namespace {

class Inbox : public MMessageWindow {
 public:
  std::vector<unsigned int> got;
  std::vector<unsigned long> threads;

 protected:
  intptr_t WindowProc(unsigned int message, uintptr_t, intptr_t lParam) override {
    got.push_back(message);
    threads.push_back(MThreadQueue::CurrentThreadId());
    return lParam;
  }
};

// Drains whatever earlier tests left on this thread's queue.
void Drain() {
  for (MMessage m; MThreadQueue::PeekMessage(m);) {
  }
}

}  // namespace

TEST(MessageQueue, PostsFromAnyThreadRunInOrderOnTheOwnerAndDeadWindowsAreDropped) {
  Drain();
  Inbox inbox;
  auto doomed = std::make_unique<Inbox>();
  const unsigned long owner = MThreadQueue::CurrentThreadId();
  EXPECT_EQ(inbox.GetThreadId(), owner);
  std::thread worker([&] {
    for (unsigned int i = 1; i <= 100; ++i) {
      EXPECT_TRUE(inbox.PostMessage(i, 0, 0));
      doomed->PostMessage(i, 0, 0);
    }
  });
  worker.join();
  EXPECT_TRUE(inbox.got.empty());  // nothing runs until the owner pumps
  doomed.reset();
  EXPECT_EQ(MThreadQueue::PumpMessages(), 100);
  std::vector<unsigned int> expect(100);
  std::iota(expect.begin(), expect.end(), 1u);
  EXPECT_EQ(inbox.got, expect);
  EXPECT_EQ(inbox.threads, std::vector<unsigned long>(100, owner));
  EXPECT_EQ(inbox.SendMessage(9, 0, 77), 77);  // runs at once
}

TEST(MessageQueue, ThreadLoopWithThreadMessagesAndQuit) {
  std::atomic<unsigned long> id{0};
  std::atomic<bool> ended{false};
  std::vector<unsigned int> seen;
  std::thread loop([&] {
    id = MThreadQueue::CurrentThreadId();
    for (MMessage m; MThreadQueue::GetMessage(m);) {
      seen.push_back(m.message);
      if (m.message == 3) MThreadQueue::PostQuitMessage(0);
      MThreadQueue::DispatchMessage(m);
    }
    ended = true;
  });
  // Each wait is bounded: ten seconds, then the test fails instead of hanging.
  auto within = [](auto done) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!done()) {
      if (std::chrono::steady_clock::now() > limit) return false;
      std::this_thread::yield();
    }
    return true;
  };
  // Once the loop thread's queue exists, post three messages.
  const bool posted = within([&] { return id != 0 && MThreadQueue::PostThreadMessage(id, 1, 0, 0); });
  EXPECT_TRUE(posted) << "the loop thread's queue never appeared";
  MThreadQueue::PostThreadMessage(id, 2, 0, 0);
  MThreadQueue::PostThreadMessage(id, 3, 0, 0);
  if (!within([&] { return ended.load(); })) {
    ADD_FAILURE() << "the loop did not end at its quit message";
    MThreadQueue::PostThreadMessage(id, kMsgQuit, 0, 0);  // so that the join below returns
  }
  loop.join();
  EXPECT_EQ(seen, (std::vector<unsigned int>{1, 2, 3}));
  EXPECT_FALSE(MThreadQueue::PostThreadMessage(id, 4, 0, 0));  // that thread is gone
  EXPECT_FALSE(MThreadQueue::PostThreadMessage(0xFFFFFFFF, 4, 0, 0));
}

TEST(MessageQueue, WakeUpHandlerWaitsAndTheQuitMessage) {
  Drain();
  static std::atomic<int> wakes{0};
  MThreadQueue::SetWakeUpHandler([](void* context) { static_cast<std::atomic<int>*>(context)->fetch_add(1); },
                                 &wakes);
  Inbox inbox;
  EXPECT_FALSE(MThreadQueue::WaitMessage(1));
  std::thread([&] { inbox.PostMessage(5, 0, 0); }).join();
  EXPECT_TRUE(wakes == 1 && MThreadQueue::WaitMessage(0));
  MThreadQueue::SetWakeUpHandler(nullptr, nullptr);
  inbox.PostMessage(6, 0, 0);
  EXPECT_EQ(wakes, 1);
  MThreadQueue::PostQuitMessage(0);
  inbox.PostMessage(7, 0, 0);
  EXPECT_EQ(MThreadQueue::PumpMessages(), 2);  // stops at the quit message
  MMessage m;
  EXPECT_FALSE(MThreadQueue::GetMessage(m));   // which the loop then sees
  EXPECT_EQ(MThreadQueue::PumpMessages(), 1);
  EXPECT_EQ(inbox.got, (std::vector<unsigned int>{5, 6, 7}));
}

TEST(CBroadcastDispatcher, RunsBusOperationsOnItsThread) {
  Drain();
  struct : LListener {
    bool ListenToMessage(long message, void*) override {
      heard.push_back(message);
      return true;
    }
    std::vector<long> heard;
  } listener;
  LBroadcaster broadcaster;
  {
    StBroadcasterSetup setup;
    CBroadcastDispatcher* dispatcher = CBroadcastDispatcher::sBroadcastDispatcher;
    ASSERT_NE(dispatcher, nullptr);
    BroadcastRequest request{&broadcaster, nullptr, 77, nullptr};
    auto link = reinterpret_cast<uintptr_t>(&broadcaster);
    auto* l = static_cast<LListener*>(&listener);
    std::thread([&] {
      dispatcher->PostMessage(WM_ADDLISTENER, link, reinterpret_cast<intptr_t>(l));
      dispatcher->PostMessage(WM_BROADCASTMESSAGE, 0, reinterpret_cast<intptr_t>(&request));
      dispatcher->PostMessage(WM_REMOVELISTENER, link, reinterpret_cast<intptr_t>(l));
      dispatcher->PostMessage(WM_BROADCASTMESSAGE, 0, reinterpret_cast<intptr_t>(&request));
      dispatcher->PostMessage(WM_BROADCASTMESSAGE, 0, 0);  // no record: nothing
    }).join();
    EXPECT_TRUE(listener.heard.empty());
    EXPECT_EQ(MThreadQueue::PumpMessages(), 5);
    EXPECT_EQ(listener.heard, (std::vector<long>{77}));
  }
  EXPECT_EQ(CBroadcastDispatcher::sBroadcastDispatcher, nullptr);
}

TEST(CCriticalSection, ReentrantTimedAndOwned) {
  CCriticalSection section;
  EXPECT_FALSE(section.Unlock());  // not held: refused, nothing changes
  EXPECT_TRUE(section.Lock());
  EXPECT_TRUE(section.Lock(0));
  std::thread([&] {
    EXPECT_FALSE(section.Lock(10));  // held elsewhere: times out
    EXPECT_FALSE(section.Unlock());  // not this thread's to give back
  }).join();
  EXPECT_TRUE(section.Unlock());
  EXPECT_TRUE(section.Unlock());
  std::thread([&] { EXPECT_TRUE(section.Lock(0) && section.Unlock()); }).join();

  CSingleLock single(&section), none(nullptr, true);
  EXPECT_FALSE(single.Unlock());
  EXPECT_TRUE(single.Lock() && single.Lock());  // held once by this guard
  EXPECT_TRUE(single.Unlock());
  EXPECT_FALSE(single.IsLocked() || none.IsLocked());
}
