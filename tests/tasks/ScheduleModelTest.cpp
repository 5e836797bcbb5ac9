// The task list against a model of the task's lifecycle, under random
// schedules: several threads execute, abort, pause and continue tasks of
// three classes (single-run self-destroying workers, single-run kept
// workers, and free tasks of every kind); listeners start and abort tasks
// inside 29000 and 29001; owners delete their kept tasks once they have
// left the list, some inside 29001 on the worker; in some runs the host
// shuts down (DeleteAll) at a random moment. Every wait is bounded. Short
// here; VBU_LONG_TESTS=1 runs more and longer schedules. Run it under
// ThreadSanitizer too (the tsan preset).
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <random>
#include <set>

#include "TaskProbe.h"

using namespace taskprobe;

namespace {

using Clock = std::chrono::steady_clock;

// The steps of a task as the model knows them, in the only order allowed.
enum Ev { kPrePlay, kAdded, kBegin, kEnd, kPostPlay, kCleanUp, kRemoved, kFinished, kDeleted, kEvents };
const char* const kEvNames[] = {"PrePlay", "29000", "RunSelf", "RunSelf.end", "PostPlay", "58900", "29001", "58901", "delete"};

struct Rec {
  int cls = 0;  // 0: single-run, self-destroying; 1: single-run, kept; 2: free
  bool worker = true, selfDestroy = true, deleteInListener = false, selfPause = false;
  unsigned long executor = 0;  // the thread that called Execute
  long seq[kEvents] = {};      // 0: not seen
  unsigned long thread[kEvents] = {};
  int count[kEvents] = {};
  long queued = 0;  // when the task took its place among those of its class
};

class World;

// Listens to its task's own messages, the last of them included: it notes
// the deletion at 29002, from the base class's destructor, and goes with the
// task (202).
class TaskEar : public LListener {
 public:
  TaskEar(World& world, int id) : mWorld(world), mId(id) {}
  bool ListenToMessage(long message, void* param) override;

 private:
  World& mWorld;
  int mId;
};

class SchedTask : public CBrevanderThread {
 public:
  SchedTask(World& world, int id, const Rec& rec);
  bool PrePlay() override;
  void RunSelf() override;
  void PostPlay() override;
  const int id;

 private:
  World& mWorld;
  bool mSelfPause;
};

template <int Cls>
class Sched : public SchedTask {
 public:
  using SchedTask::SchedTask;
};

class World : public LListener {
 public:
  explicit World(unsigned seed) : mRandom(seed) {}

  // Records step `ev` of task `id` on this thread.
  void Note(int id, Ev ev) {
    std::lock_guard<std::mutex> lock(mMutex);
    Rec& r = mRecs[id];
    r.seq[ev] = ++mSeq;
    r.thread[ev] = Self();
    ++r.count[ev];
  }
  long Now() {
    std::lock_guard<std::mutex> lock(mMutex);
    return ++mSeq;
  }
  int Random(int n) {
    std::lock_guard<std::mutex> lock(mMutex);
    return static_cast<int>(mRandom() % static_cast<unsigned>(n));
  }

  // A new task of a random kind, executed on this thread; kept ones go to `owner`.
  void ExecuteOne(std::vector<SchedTask*>* owner) {
    if (mBudget.fetch_sub(1) <= 0) return;
    Rec rec;
    rec.cls = Random(3);
    rec.worker = rec.cls != 2 || Random(2);
    rec.selfDestroy = rec.cls == 0 || (rec.cls == 2 && (!owner || Random(2)));
    // A kept task started by a listener has no other owner than the listener.
    rec.deleteInListener = !rec.selfDestroy && rec.worker && (!owner || Random(4) == 0);
    rec.selfPause = !rec.selfDestroy && rec.worker && !rec.deleteInListener && Random(3) == 0;
    rec.executor = Self();
    int id;
    {
      std::lock_guard<std::mutex> lock(mMutex);
      id = static_cast<int>(mRecs.size());
      mRecs.push_back(rec);
    }
    SchedTask* task = rec.cls == 0   ? static_cast<SchedTask*>(new Sched<0>(*this, id, rec))
                      : rec.cls == 1 ? static_cast<SchedTask*>(new Sched<1>(*this, id, rec))
                                     : new Sched<2>(*this, id, rec);
    if (!rec.selfDestroy && !rec.deleteInListener) owner->push_back(task);
    task->Execute();
  }

  // 29000 and 29001, under the list's lock: note them, start or abort tasks
  // now and then, and delete the kept tasks whose owner is this listener.
  bool ListenToMessage(long message, void* param) override {
    auto* task = dynamic_cast<SchedTask*>(static_cast<CBrevanderThread*>(param));
    if (!task || (message != kMsgThreadAdded && message != kMsgThreadRemoved)) return true;
    const int id = task->id;
    if (message == kMsgThreadAdded) Note(id, kAdded);
    if (message == kMsgThreadRemoved) {
      Note(id, kRemoved);
      bool deleteHere;
      {
        std::lock_guard<std::mutex> lock(mMutex);
        deleteHere = mRecs[id].deleteInListener;
      }
      if (deleteHere) delete task;
    }
    Meddle();
    // Its place in the queue of its class is taken after this listener: a
    // task that the listener started comes first, and nothing else can come
    // between here and the task's own start, under the list's lock.
    if (message == kMsgThreadAdded) {
      std::lock_guard<std::mutex> lock(mMutex);
      mRecs[id].queued = ++mSeq;
    }
    return true;
  }

  void Meddle() {
    if (mQuiet) return;
    const int roll = Random(20);
    if (roll == 0) ExecuteOne(nullptr);
    if (roll == 1) {
      // On the list, so alive while the lock is held.
      CThreadAction* list = CThreadAction::GetThreadAction();
      if (CBrevanderThread* victim = list->GetThread(1 + Random(static_cast<int>(list->GetThreadCount()) + 1))) victim->Abort();
    }
  }

  // One timed read of each kind that takes no lock.
  void TimedReads() {
    CThreadAction* list = CThreadAction::GetThreadAction();
    const int position = 1 + Random(8);
    for (int kind = 0; kind < 3; ++kind) {
      const auto start = Clock::now();
      if (kind == 0) list->GetThreadCount();
      if (kind == 1) list->GetVisibleCount();
      if (kind == 2) list->GetThread(position);
      const auto took = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start).count();
      ++mReads;
      if (took >= 1000) ++mSlowReads;
      for (long most = mSlowestRead; took > most && !mSlowestRead.compare_exchange_weak(most, took);) {
      }
    }
  }

  std::mutex mMutex;  // guards what follows up to mSeq
  std::vector<Rec> mRecs;
  std::mt19937 mRandom;
  long mSeq = 0;
  std::set<unsigned long> mWorkers;

  std::atomic<int> mBudget{0};
  std::atomic<bool> mQuiet{false};  // listeners start and abort nothing more
  std::atomic<long> mReads{0}, mSlowReads{0}, mSlowestRead{0};
};

SchedTask::SchedTask(World& world, int id, const Rec& rec)
    : CBrevanderThread(rec.selfDestroy), id(id), mWorld(world), mSelfPause(rec.selfPause) {
  SetWorkerThread(rec.worker);
  mSingleRun = rec.cls != 2;
  AddListener(new TaskEar(world, id));  // one per task: no listener is shared between threads
}


bool SchedTask::PrePlay() {
  mWorld.Note(id, kPrePlay);
  return CBrevanderThread::PrePlay();
}

void SchedTask::RunSelf() {
  mWorld.Note(id, kBegin);
  if (IsWorkerThread()) {
    std::lock_guard<std::mutex> lock(mWorld.mMutex);
    mWorld.mWorkers.insert(Self());
  }
  const int spins = mWorld.Random(200);
  for (int i = 0; i < spins && ShouldStart(); ++i) {
    if (mSelfPause && i == spins / 2) Pause();  // its owner, or the end of the run, lets it go
    std::this_thread::yield();
  }
  mWorld.TimedReads();
  mWorld.Note(id, kEnd);
}

void SchedTask::PostPlay() { mWorld.Note(id, kPostPlay); }

bool TaskEar::ListenToMessage(long message, void*) {
  if (message == kMsgTaskCleanUp) mWorld.Note(mId, kCleanUp);
  if (message == kMsgTaskFinished) mWorld.Note(mId, kFinished);
  if (message == kMsgTaskDestroyed) mWorld.Note(mId, kDeleted);
  if (message == kMsgBroadcasterDying) delete this;
  return true;
}

// An actor: a thread that executes tasks and works on the kept ones it owns.
void Act(World& world, int steps, std::vector<SchedTask*>& owned) {
  for (int step = 0; step < steps; ++step) {
    const int roll = world.Random(10);
    if (roll < 5) {
      world.ExecuteOne(&owned);
    } else if (!owned.empty()) {
      const size_t pick = static_cast<size_t>(world.Random(static_cast<int>(owned.size())));
      SchedTask* task = owned[pick];
      bool removed;
      {
        std::lock_guard<std::mutex> lock(world.mMutex);
        removed = world.mRecs[task->id].seq[kRemoved] != 0;
      }
      if (removed) {
        delete task;  // the owner's right once the task has left the list
        owned.erase(owned.begin() + static_cast<long>(pick));
      } else if (roll < 7) {
        task->Pause();
        std::this_thread::yield();
        task->Continue();
      } else if (roll < 9) {
        task->Continue();  // a task that paused itself
      } else {
        task->Abort();
      }
    }
    world.TimedReads();
  }
}

struct Figures {
  long tasks = 0, runs = 0, shutdowns = 0, reads = 0, slowReads = 0, slowest = 0;
};

// One schedule. Returns false (with failures recorded) if a bounded wait ran out.
bool RunSchedule(unsigned seed, int actors, int steps, Figures& figures) {
  SCOPED_TRACE("seed " + std::to_string(seed));
  SetUpMainThread();
  CThreadAction* list = CThreadAction::GetThreadAction();
  World world(seed);
  world.mBudget = actors * steps;
  list->AddListener(&world);

  const bool shutDown = world.Random(2) == 0;
  std::vector<std::vector<SchedTask*>> owned(static_cast<size_t>(actors));
  std::atomic<int> done{0};
  std::vector<std::thread> threads;
  for (int a = 0; a < actors; ++a) {
    threads.emplace_back([&, a] {
      Act(world, steps, owned[static_cast<size_t>(a)]);
      ++done;
    });
  }
  bool ok = PumpUntil([&] { return done == actors; }, std::chrono::seconds(60));
  EXPECT_TRUE(ok) << "an actor is stuck";
  if (!ok) std::abort();  // joinable threads that cannot end: fail loudly rather than hang
  for (std::thread& t : threads) t.join();
  std::vector<SchedTask*> kept;
  for (auto& o : owned) kept.insert(kept.end(), o.begin(), o.end());
  world.mQuiet = true;

  long shutdownSeq = 0;
  // Lets go every kept task that may have paused itself, and deletes those that have left the list.
  auto tend = [&] {
    for (size_t i = 0; i < kept.size();) {
      bool removed;
      {
        std::lock_guard<std::mutex> lock(world.mMutex);
        removed = world.mRecs[kept[i]->id].seq[kRemoved] != 0;
      }
      if (removed) {
        delete kept[i];
        kept.erase(kept.begin() + static_cast<long>(i));
      } else {
        kept[i]->Continue();
        ++i;
      }
    }
  };
  auto workersEnded = [&] {
    std::lock_guard<std::mutex> lock(world.mMutex);
    for (unsigned long id : world.mWorkers)
      if (!ThreadEnded(id)) return false;
    return true;
  };
  if (shutDown) {
    const int pumps = world.Random(30);
    for (int i = 0; i < pumps; ++i) {
      tend();
      MThreadQueue::PumpMessages();
      MThreadQueue::WaitMessage(1);
    }
    CThreadDispatcher::DeleteAll();
    shutdownSeq = world.Now();
    ++figures.shutdowns;
    // Nothing is pumped from here on: every worker ends, some of them lost.
    const auto end = Clock::now() + std::chrono::seconds(60);
    while (!workersEnded() && Clock::now() < end) {
      tend();
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    ok = workersEnded();
    EXPECT_TRUE(ok) << "a worker did not end after shutdown";
    // The host starts again; what was left on the list is cleared by hand.
    SetUpMainThread();
    // First those that never started (nothing is promoted then), then the lost ones.
    std::vector<std::pair<SchedTask*, bool>> left;
    tend();
    const long cleanupSeq = world.Now();
    for (long i = 1; i <= list->GetThreadCount(); ++i) {
      auto* task = static_cast<SchedTask*>(list->GetThread(i));
      std::lock_guard<std::mutex> lock(world.mMutex);
      left.emplace_back(task, world.mRecs[task->id].seq[kBegin] != 0);
    }
    for (auto& [task, began] : left)
      if (!began) task->Abort();
    // What is left was lost: ended after the shutdown, or refused to start after it.
    for (long i = list->GetThreadCount(); i > 0; --i) static_cast<SchedTask*>(list->GetThread(i))->CleanUp(false);
    tend();
    EXPECT_TRUE(kept.empty());
    // The model below judges what happened before the clearing by hand.
    std::lock_guard<std::mutex> lock(world.mMutex);
    for (Rec& r : world.mRecs)
      for (int e = 0; e < kEvents; ++e)
        if (r.seq[e] > cleanupSeq) r.seq[e] = 0, r.count[e] = 0;
  } else {
    ok = PumpUntil([&] {
      tend();
      return kept.empty() && list->GetThreadCount() == 0 && workersEnded();
    }, std::chrono::seconds(60));
    EXPECT_TRUE(ok) << "tasks did not end: " << list->GetThreadCount() << " on the list, " << kept.size() << " kept";
  }
  list->RemoveListener(&world);
  EXPECT_EQ(list->GetThreadCount(), 0);

  // ---- the model
  std::lock_guard<std::mutex> lock(world.mMutex);
  const unsigned long main = Self();
  std::vector<std::vector<int>> byClass(2);  // single-run tasks that ran, by class
  for (size_t id = 0; id < world.mRecs.size(); ++id) {
    const Rec& r = world.mRecs[id];
    SCOPED_TRACE("task " + std::to_string(id) + " class " + std::to_string(r.cls) + (r.worker ? " worker" : "") +
                 (r.selfDestroy ? " self-destroying" : " kept"));
    long last = 0;
    for (int e = 0; e < kEvents; ++e) {
      EXPECT_LE(r.count[e], 1) << kEvNames[e] << " more than once";
      if (!r.seq[e]) continue;
      EXPECT_GT(r.seq[e], last) << kEvNames[e] << " out of order";
      last = r.seq[e];
    }
    if (r.cls < 2 && r.seq[kBegin]) byClass[static_cast<size_t>(r.cls)].push_back(static_cast<int>(id));
    const bool lost = shutdownSeq && r.seq[kEnd] > shutdownSeq;
    if (lost) {
      for (int e = kPostPlay; e < kDeleted; ++e) EXPECT_EQ(r.seq[e], 0) << kEvNames[e] << " after shutdown";
      continue;
    }
    if (shutdownSeq && !r.seq[kRemoved]) continue;  // held behind a lost task, or itself lost on its way
    // Every other task went the whole way.
    for (Ev e : {kPrePlay, kAdded, kCleanUp, kRemoved, kDeleted}) EXPECT_NE(r.seq[e], 0) << kEvNames[e] << " missing";
    if (r.seq[kBegin]) {
      ++figures.runs;
      EXPECT_NE(r.seq[kEnd], 0);
      EXPECT_NE(r.seq[kPostPlay], 0) << "ran, so PostPlay";
      if (r.worker) {
        EXPECT_NE(r.thread[kBegin], r.executor) << "on a worker";
        EXPECT_NE(r.thread[kBegin], main);
      } else {
        EXPECT_EQ(r.thread[kBegin], r.executor) << "inside Execute";
      }
    }
    // The threads of the end.
    const unsigned long endThread = r.thread[kCleanUp];
    EXPECT_EQ(r.thread[kRemoved], endThread);
    if (r.worker && r.selfDestroy) {
      EXPECT_EQ(endThread, main) << "a self-destroying worker ends on the user-interface thread";
      EXPECT_EQ(r.thread[kDeleted], main);
    }
    if (!r.worker) {
      EXPECT_EQ(endThread, r.executor);
    }
    if (r.worker && !r.selfDestroy && r.seq[kBegin]) {
      EXPECT_EQ(endThread, r.thread[kBegin]) << "a kept worker ends on its worker";
    }
    if (r.seq[kFinished]) {
      EXPECT_TRUE(r.worker && !r.selfDestroy && endThread != main);
      EXPECT_EQ(r.thread[kFinished], endThread);
    }
    if (r.deleteInListener) {
      EXPECT_EQ(r.seq[kFinished], 0) << "58901 to a deleted task";
    }
  }
  for (auto& ran : byClass) {
    std::sort(ran.begin(), ran.end(),
              [&](int a, int b) { return world.mRecs[static_cast<size_t>(a)].seq[kBegin] < world.mRecs[static_cast<size_t>(b)].seq[kBegin]; });
    for (size_t i = 1; i < ran.size(); ++i) {
      const Rec& before = world.mRecs[static_cast<size_t>(ran[i - 1])];
      const Rec& after = world.mRecs[static_cast<size_t>(ran[i])];
      EXPECT_LT(before.seq[kEnd], after.seq[kBegin]) << "single-run tasks " << ran[i - 1] << " and " << ran[i] << " overlap";
      EXPECT_LT(before.queued, after.queued) << "tasks " << ran[i - 1] << " and " << ran[i] << " out of arrival order";
    }
  }
  figures.tasks += static_cast<long>(world.mRecs.size());
  figures.reads += world.mReads;
  figures.slowReads += world.mSlowReads;
  figures.slowest = std::max(figures.slowest, world.mSlowestRead.load());
  return ok;
}

}  // namespace

TEST(ScheduleModel, TasksKeepTheirLifecycleUnderRandomSchedules) {
  const bool long_ = std::getenv("VBU_LONG_TESTS") != nullptr;
  const int schedules = long_ ? 40 : 8;
  const int steps = long_ ? 300 : 60;
  Figures figures;
  const unsigned seed = std::random_device()();
  for (int s = 0; s < schedules && !HasFailure(); ++s) {
    if (!RunSchedule(seed + static_cast<unsigned>(s), 3, steps, figures)) break;
  }
  // Reads that take no lock answer within a millisecond; a thread that the
  // system preempts mid-read is the only excuse, and a rare one.
  EXPECT_LE(figures.slowReads * 200, figures.reads) << figures.slowReads << " of " << figures.reads
                                                    << " reads took a millisecond or more";
  EXPECT_LT(figures.slowest, 50000) << "a read waited";
  std::printf("[ model    ] %ld tasks, %ld runs, %ld shutdowns, %ld reads (%ld slow, slowest %ld us)\n", figures.tasks,
              figures.runs, figures.shutdowns, figures.reads, figures.slowReads, figures.slowest);
}
