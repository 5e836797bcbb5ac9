// The library's queue pumped by GLib's main loop: a message that a worker
// posts to the task dispatcher (WM_THREADBROADCAST) is handled on the loop's
// thread, in order, within a millisecond, with no polling source.
#include <VantoroBasicUtils/messaging/LListener.h>
#include <VantoroBasicUtils/platform/GLibMainLoop.h>
#include <VantoroBasicUtils/platform/Thread.h>
#include <VantoroBasicUtils/tasks/CThreadDispatcher.h>
#include <glib.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

struct Receiver : LListener {
  std::atomic<long> heard{0};
  std::atomic<bool> onLoopThread{true};
  std::thread::id loopThread = std::this_thread::get_id();
  Clock::time_point postedAt;
  std::vector<double> latencies;  // microseconds, on the loop thread only

  bool ListenToMessage(long message, void*) override {
    latencies.push_back(std::chrono::duration<double, std::micro>(Clock::now() - postedAt).count());
    if (std::this_thread::get_id() != loopThread || message != heard.load() + 1) onLoopThread = false;
    heard.store(message);
    return true;
  }
};

TEST(GLibMainLoop, WorkerMessagesReachTheLoopThreadWithinAMillisecond) {
  ASSERT_TRUE(vbu::AttachToGLibMainLoop());
  ASSERT_TRUE(vbu::AttachToGLibMainLoop());  // again: nothing more
  CThreadDispatcher* dispatcher = CThreadDispatcher::GetThreadDispatcher();
  ASSERT_TRUE(MThread::IsMainThread());

  constexpr long kMessages = 200;
  Receiver receiver;
  std::vector<ListenerRequest> requests(kMessages + 1);
  GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
  std::atomic<bool> stop{false};
  std::thread worker([&] {
    for (long i = 1; i <= kMessages && !stop; ++i) {
      requests[i] = ListenerRequest{&receiver, i, nullptr};
      receiver.postedAt = Clock::now();
      dispatcher->PostMessage(WM_THREADBROADCAST, 0, reinterpret_cast<intptr_t>(&requests[i]));
      // The next one once this one is heard, so each measures the hand-over alone.
      const auto limit = Clock::now() + std::chrono::seconds(5);
      while (receiver.heard.load() < i && Clock::now() < limit) std::this_thread::yield();
      std::this_thread::sleep_for(std::chrono::microseconds(200));  // the loop goes back to sleep
    }
    g_main_context_invoke(nullptr, [](gpointer data) { g_main_loop_quit(static_cast<GMainLoop*>(data)); return G_SOURCE_REMOVE; }, loop);
  });
  // Bounded: the loop ends after 20 s whatever happens.
  guint guard = g_timeout_add_seconds(20, [](gpointer data) { g_main_loop_quit(static_cast<GMainLoop*>(data)); return G_SOURCE_REMOVE; }, loop);
  g_main_loop_run(loop);
  stop = true;
  worker.join();
  g_source_remove(guard);
  g_main_loop_unref(loop);
  vbu::DetachFromGLibMainLoop();

  ASSERT_EQ(receiver.heard.load(), kMessages);
  EXPECT_TRUE(receiver.onLoopThread.load());
  std::vector<double> sorted = receiver.latencies;
  std::sort(sorted.begin(), sorted.end());
  const double median = sorted[sorted.size() / 2], p95 = sorted[sorted.size() * 95 / 100];
  std::printf("hand-over from a worker to the GLib loop: median %.0f us, 95th percentile %.0f us, max %.0f us\n",
              median, p95, sorted.back());
  EXPECT_LT(median, 1000.0);
  CThreadDispatcher::DeleteAll();
}

TEST(GLibMainLoop, NothingPostedNothingRuns) {
  // With the source attached and nothing posted, an iteration of the loop
  // finds nothing to do and does not block on a timer of ours.
  ASSERT_TRUE(vbu::AttachToGLibMainLoop());
  g_main_context_iteration(nullptr, FALSE);  // the pump of what was queued at attach
  EXPECT_FALSE(g_main_context_iteration(nullptr, FALSE));
  vbu::DetachFromGLibMainLoop();
  CThreadDispatcher::DeleteAll();
}

}  // namespace
