// Helpers of the task tests: bounded waits that pump the test thread's
// queue (the dispatcher lives there), a listener that records what it hears
// and on which thread, and a log of steps by thread.
#pragma once

#include <VantoroBasicUtils/messaging/LListener.h>
#include <VantoroBasicUtils/platform/MessageQueue.h>
#include <VantoroBasicUtils/tasks/CThreadDispatcher.h>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace taskprobe {

// Pumps this thread's queue until `done()` or `limit` has passed; false on time-out.
template <class Done>
bool PumpUntil(Done done, std::chrono::milliseconds limit = std::chrono::seconds(20)) {
  const auto end = std::chrono::steady_clock::now() + limit;
  for (;;) {
    MThreadQueue::PumpMessages();
    if (done()) return true;
    if (std::chrono::steady_clock::now() > end) return false;
    MThreadQueue::WaitMessage(2);
  }
}

// True once thread `id` has ended (its queue is gone).
inline bool ThreadEnded(unsigned long id) { return !MThreadQueue::PostThreadMessage(id, 0x7FFF, 0, 0); }

inline unsigned long Self() { return MThreadQueue::CurrentThreadId(); }

struct Step {
  std::string what;
  unsigned long thread;
};

// A log that several threads write.
class Log {
 public:
  void Note(const std::string& what) {
    std::lock_guard<std::mutex> lock(mMutex);
    mSteps.push_back({what, Self()});
  }
  std::vector<Step> Steps() {
    std::lock_guard<std::mutex> lock(mMutex);
    return mSteps;
  }
  // The thread of the first step named `what`, or 0.
  unsigned long ThreadOf(const std::string& what) {
    std::lock_guard<std::mutex> lock(mMutex);
    for (const Step& s : mSteps)
      if (s.what == what) return s.thread;
    return 0;
  }
  bool Has(const std::string& what) { return ThreadOf(what) != 0; }
  // The place of the first step named `what`, or -1.
  long IndexOf(const std::string& what) {
    const std::vector<std::string> names = Names();
    const auto at = std::find(names.begin(), names.end(), what);
    return at == names.end() ? -1 : static_cast<long>(at - names.begin());
  }
  // The steps taken on thread `id`, in order.
  std::vector<std::string> On(unsigned long id) {
    std::lock_guard<std::mutex> lock(mMutex);
    std::vector<std::string> names;
    for (const Step& s : mSteps)
      if (s.thread == id) names.push_back(s.what);
    return names;
  }
  std::vector<std::string> Names() {
    std::lock_guard<std::mutex> lock(mMutex);
    std::vector<std::string> names;
    for (const Step& s : mSteps) names.push_back(s.what);
    return names;
  }

 private:
  std::mutex mMutex;
  std::vector<Step> mSteps;
};

// Writes every message it hears into a log, as its number.
class Recorder : public LListener {
 public:
  explicit Recorder(Log& log) : mLog(log) {}
  bool ListenToMessage(long message, void*) override {
    mLog.Note(std::to_string(message));
    return true;
  }

 private:
  Log& mLog;
};

}  // namespace taskprobe

#include <VantoroBasicUtils/tasks/CBrevanderThread.h>
#include <VantoroBasicUtils/tasks/CThreadAction.h>

#include <atomic>
#include <condition_variable>

namespace taskprobe {

// A door that RunSelf waits at, for at most ten seconds.
class Gate {
 public:
  void Open() {
    std::lock_guard<std::mutex> lock(mMutex);
    mOpen = true;
    mChanged.notify_all();
  }
  bool WaitOpen() {
    std::unique_lock<std::mutex> lock(mMutex);
    return mChanged.wait_for(lock, std::chrono::seconds(10), [&] { return mOpen; });
  }

 private:
  std::mutex mMutex;
  std::condition_variable mChanged;
  bool mOpen = false;
};

// A task that writes its steps into a log under its name: "A.PrePlay",
// "A.RunSelf", "A.PostPlay", "A.delete", "A.pass>B" (PassInformation).
class Probe : public CBrevanderThread {
 public:
  Probe(Log& log, std::string name, bool selfDestroy, bool worker, bool singleRun = false)
      : CBrevanderThread(selfDestroy), mLog(log), mName(std::move(name)) {
    SetWorkerThread(worker);
    mSingleRun = singleRun;
  }
  ~Probe() override { mLog.Note(mName + ".delete"); }

  bool PrePlay() override {
    mLog.Note(mName + ".PrePlay");
    CBrevanderThread::PrePlay();
    return allowPrePlay;
  }
  bool ShouldStart() override { return CBrevanderThread::ShouldStart() && !refuse; }
  void RunSelf() override {
    idInRunSelf = GetThreadId();
    mLog.Note(mName + ".RunSelf");
    if (gate) gate->WaitOpen();
  }
  void PostPlay() override { mLog.Note(mName + ".PostPlay"); }
  bool KillSelf() override {
    ++killCalls;
    return killResult;
  }
  void PassInformation(CBrevanderThread* next) override {
    auto* probe = dynamic_cast<Probe*>(next);
    mLog.Note(mName + ".pass>" + (probe ? probe->mName : std::string("null")));
  }
  void SetThreadType(long type) { mThreadType = type; }
  void SetVisible(bool visible) { mVisible = visible; }

  const std::string& Name() const { return mName; }

  bool allowPrePlay = true;
  bool refuse = false;
  bool killResult = false;
  int killCalls = 0;
  Gate* gate = nullptr;
  std::atomic<unsigned int> idInRunSelf{0};

 private:
  Log& mLog;
  std::string mName;
};

// Two more classes, so that single-run tasks can be of different classes.
class ProbeB : public Probe {
 public:
  using Probe::Probe;
};
class ProbeC : public Probe {
 public:
  using Probe::Probe;
};

// Makes the dispatcher on the test thread, which thereby is the main thread.
inline void SetUpMainThread() {
  CThreadDispatcher::GetThreadDispatcher();
  MThreadQueue::PumpMessages();
}

}  // namespace taskprobe
