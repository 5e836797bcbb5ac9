// The single-run rule under load: hundreds of tasks of three classes,
// started from several threads, some aborted while they wait, some refused
// by ShouldStart. Run under ThreadSanitizer too (the tsan preset).
#include <VantoroBasicUtils/tasks/CThreadAction.h>

#include <gtest/gtest.h>

#include <map>

#include "TaskProbe.h"

using namespace taskprobe;

namespace {

constexpr int kStarters = 4;
constexpr int kTasksPerStarter = 90;
constexpr int kTotal = kStarters * kTasksPerStarter;

enum Kind { kA, kB, kC };  // A: single-run, self-destroying; B: single-run, kept; C: neither

struct Board {
  std::atomic<int> running[3] = {0, 0, 0};
  std::atomic<int> mostRunning[3] = {0, 0, 0};
  std::atomic<int> removed{0};
  std::atomic<int> deleted{0};
  std::mutex mutex;  // guards the rest
  std::vector<int> arrivals[3], starts[3];
  std::map<int, int> removals, deletions, postPlays, runs;
};

class StressTask : public CBrevanderThread {
 public:
  StressTask(Board& board, int serial, Kind kind)
      : CBrevanderThread(kind != kB), serial(serial), kind(kind), mBoard(board) {
    SetWorkerThread(true);
    mSingleRun = kind != kC;
  }
  ~StressTask() override {
    std::lock_guard<std::mutex> lock(mBoard.mutex);
    ++mBoard.deletions[serial];
    ++mBoard.deleted;
  }
  bool ShouldStart() override { return CBrevanderThread::ShouldStart() && !refuse; }
  void RunSelf() override {
    const int now = ++mBoard.running[kind];
    for (int most = mBoard.mostRunning[kind]; now > most && !mBoard.mostRunning[kind].compare_exchange_weak(most, now);) {
    }
    {
      std::lock_guard<std::mutex> lock(mBoard.mutex);
      mBoard.starts[kind].push_back(serial);
      ++mBoard.runs[serial];
    }
    for (int i = 0; i < 20 && CBrevanderThread::ShouldStart(); ++i) std::this_thread::yield();
    --mBoard.running[kind];
  }
  void PostPlay() override {
    std::lock_guard<std::mutex> lock(mBoard.mutex);
    ++mBoard.postPlays[serial];
  }

  const int serial;
  const Kind kind;
  bool refuse = false;

 private:
  Board& mBoard;
};

// A class per kind: the single-run rule holds within a class.
template <Kind K>
class Stress : public StressTask {
 public:
  Stress(Board& board, int serial) : StressTask(board, serial, K) {}
};

class Arrivals : public LListener {
 public:
  explicit Arrivals(Board& board) : mBoard(board) {}
  bool ListenToMessage(long message, void* param) override {
    auto* task = static_cast<StressTask*>(static_cast<CBrevanderThread*>(param));
    std::lock_guard<std::mutex> lock(mBoard.mutex);
    if (message == kMsgThreadAdded) mBoard.arrivals[task->kind].push_back(task->serial);
    if (message == kMsgThreadRemoved) {
      ++mBoard.removals[task->serial];
      ++mBoard.removed;
    }
    return true;
  }

 private:
  Board& mBoard;
};

}  // namespace

TEST(TaskStress, SingleRunClassesNeverRunTwiceAndEveryTaskEndsOnce) {
  SetUpMainThread();
  Board board;
  Arrivals arrivals(board);
  CThreadAction* list = CThreadAction::GetThreadAction();
  list->AddListener(&arrivals);

  std::mutex keptMutex;
  std::vector<StressTask*> kept;
  std::map<int, bool> refused;
  std::vector<std::thread> starters;
  for (int s = 0; s < kStarters; ++s) {
    starters.emplace_back([&, s] {
      for (int i = 0; i < kTasksPerStarter; ++i) {
        const int serial = s * kTasksPerStarter + i;
        const Kind kind = static_cast<Kind>(serial % 3);
        StressTask* task = kind == kA   ? static_cast<StressTask*>(new Stress<kA>(board, serial))
                           : kind == kB ? static_cast<StressTask*>(new Stress<kB>(board, serial))
                                        : new Stress<kC>(board, serial);
        task->refuse = (kind == kB && serial % 5 == 0) || (kind == kC && serial % 4 == 0);
        {
          std::lock_guard<std::mutex> lock(keptMutex);
          refused[serial] = task->refuse;
          if (kind == kB) kept.push_back(task);
        }
        task->Execute();
        if (kind == kB && serial % 2 == 1) task->Abort();  // waiting or running, whichever it is by now
      }
    });
  }
  const int selfDestroying = kTotal - kTotal / 3;
  const bool allEnded = PumpUntil([&] { return board.removed == kTotal && board.deleted == selfDestroying; },
                                  std::chrono::seconds(120));
  // On a time-out the starters may be stuck: leaving them joinable ends the
  // program (a failure) rather than waiting for them.
  ASSERT_TRUE(allEnded) << board.removed << " ended, " << board.deleted << " deleted";
  for (std::thread& starter : starters) starter.join();
  for (StressTask* task : kept) {
    if (task->GetThreadId()) {
      ASSERT_TRUE(PumpUntil([&] { return ThreadEnded(task->GetThreadId()); }));
    }
  }
  list->RemoveListener(&arrivals);

  EXPECT_EQ(board.mostRunning[kA].load(), 1);
  EXPECT_EQ(board.mostRunning[kB].load(), 1);
  EXPECT_EQ(list->GetThreadCount(), 0);
  EXPECT_EQ(list->GetVisibleCount(), 0);
  EXPECT_EQ(list->GetFirstVisibleThread(), nullptr);

  std::unique_lock<std::mutex> lock(board.mutex);
  for (int serial = 0; serial < kTotal; ++serial) {
    SCOPED_TRACE(serial);
    EXPECT_EQ(board.removals[serial], 1) << "every task leaves the list once";
    if (serial % 3 != kB) {
      EXPECT_EQ(board.deletions[serial], 1);
    }
    EXPECT_LE(board.runs[serial], 1);
    EXPECT_LE(board.postPlays[serial], 1);
    if (refused[serial]) {
      EXPECT_EQ(board.runs[serial], 0);
    }
    if (serial % 3 == kA) {
      EXPECT_EQ(board.runs[serial], 1);
    }
  }
  // Single-run tasks of a class start in the order in which they arrived.
  for (Kind kind : {kA, kB}) {
    std::map<int, size_t> rank;
    for (size_t i = 0; i < board.arrivals[kind].size(); ++i) rank[board.arrivals[kind][i]] = i;
    for (size_t i = 1; i < board.starts[kind].size(); ++i)
      EXPECT_LT(rank[board.starts[kind][i - 1]], rank[board.starts[kind][i]]) << "class " << kind;
  }
  lock.unlock();
  for (StressTask* task : kept) delete task;
}
