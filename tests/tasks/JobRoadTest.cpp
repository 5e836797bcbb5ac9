// The road of a typical job, as a host runs it: self-destroying single-run
// worker tasks join sources into a segmented destination with the
// concatenation engine; the second task waits for the first; the ends come
// back through the dispatcher in order; a cancelled join leaves an info file
// that lists only segments that exist.
#include <VantoroBasicUtils/VantoroBasicUtils.h>

#include <gtest/gtest.h>

#include "support/LogicalFile.h"
#include "support/TempFolder.h"
#include "TaskProbe.h"

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace {

using taskprobe::Gate;
using taskprobe::PumpUntil;
using taskprobe::Self;

// Steps of every thread, in the order they happened, and progress by reporting thread.
struct Road : taskprobe::Log {
  std::mutex mutex;  // guards the progress
  std::map<unsigned long, long long> sectors;
};

// A worker task that joins whole sources into an MFiles destination; a
// source that does not fit in the open segment starts a new one.
class JoinJob : public CBrevanderThread {
 public:
  JoinJob(Road& road, std::string name, MString destination, std::vector<MString> sources, long long limit,
          Gate* gate = nullptr)
      : mRoad(road), mName(std::move(name)), mDestination(destination), mSources(std::move(sources)),
        mLimit(limit), mGate(gate) {
    SetWorkerThread(true);
    mSingleRun = true;
    mDescription.ImportASCII(mName.c_str(), -1);
  }
  ~JoinJob() override { mRoad.Note(mName + ".delete"); }

  void RunSelf() override {
    mRoad.Note(mName + ".RunSelf");
    if (mGate && !mGate->WaitOpen()) return;
    MFiles destination;
    destination.SetMaxFileSize(mLimit);
    if (destination.FOpen(mDestination, MFile::file_overlapped_create) != 0 ||
        destination.ConcatInitialize(2048, 0) != 0) {
      return;
    }
    long long inSegment = 0, written = 0;
    for (MString& source : mSources) {
      if (mStop) break;
      MFileUniv file;
      const long long size = file.FOpen(source, MFile::file_read_binary) == 0 ? file.GetSize() : -1;
      file.FClose();
      const long long padded = (size + 2047) / 2048 * 2048;
      if (inSegment > 0 && inSegment + padded > mLimit) {
        // The limit drops to the open segment's size for the move, so the
        // new segment starts right behind the data.
        destination.SetMaxFileSize(inSegment);
        const bool moved = destination.FSeek64(written + 1, MFile::file_seek_begin) == written + 1;
        destination.SetMaxFileSize(mLimit);
        if (!moved || destination.ConcatInitialize(2048, 0) != 0) return;
        inSegment = 0;
      }
      if (destination.ConcatFile(source, 0, mStop) != 0) return;
      inSegment += padded;
      written += padded;
    }
    mRoad.Note(mName + ".RunSelf.end");
    destination.FClose();
  }
  void PostPlay() override { mRoad.Note(mName + ".PostPlay"); }

  // On the worker, from the progress listener: the engine's flag belongs to this thread.
  void StopIfAborted() {
    if (!ShouldStart()) mStop = true;
  }

 private:
  Road& mRoad;
  std::string mName;
  MString mDestination;
  std::vector<MString> mSources;
  long long mLimit;
  Gate* mGate;
  bool mStop = false;
};

// Hears a task's own messages (58900, 29002, 202) and the task list's
// (29000, 29001), naming the task.
class TaskEar : public LListener {
 public:
  explicit TaskEar(Road& road) : mRoad(road) {}
  bool ListenToMessage(long message, void* param) override {
    if (message == 202) {  // the dying broadcaster is the task itself
      mRoad.Note(mLastTask + ".202");
      return true;
    }
    auto* task = static_cast<CBrevanderThread*>(param);
    mLastTask = UStringUtils::TtoA(task->GetDescription());
    mRoad.Note(mLastTask + "." + std::to_string(message));
    return true;
  }

 private:
  Road& mRoad;
  std::string mLastTask;
};

// Hears progress on the worker: counts sectors by thread and lets an
// aborted job stop its engine. With `abortAt`, aborts the job itself once
// that many sectors are through.
class ProgressEar : public LListener {
 public:
  explicit ProgressEar(Road& road, long long abortAt = -1) : mRoad(road), mAbortAt(abortAt) {}
  bool ListenToMessage(long message, void* param) override {
    if (message != kMsgThreadStatus) return false;
    auto* record = static_cast<ThreadStatusRecord*>(param);
    long long total = 0;
    {
      std::lock_guard<std::mutex> lock(mRoad.mutex);
      if (record->mask & kStatusAdvance) mRoad.sectors[record->threadId] += record->position;
      total = mRoad.sectors[record->threadId];
    }
    if (auto* job = dynamic_cast<JoinJob*>(CThreadAction::GetThreadAction()->FindThread(record->threadId))) {
      if (mAbortAt >= 0 && total >= mAbortAt) job->Abort();
      job->StopIfAborted();
    }
    return true;
  }

 private:
  Road& mRoad;
  long long mAbortAt;
};

std::string Padded(const std::string& bytes) {
  return bytes + std::string((2048 - bytes.size() % 2048) % 2048, '\0');
}

class JobRoadTest : public ::testing::Test {
 protected:
  void SetUp() override {
    CThreadDispatcher::GetThreadDispatcher();
    CThreadStatus::GetThreadStatus()->AddListener(&progress);
    CThreadAction::GetThreadAction()->AddListener(&ear);
  }
  void TearDown() override {
    CThreadAction::GetThreadAction()->RemoveListener(&ear);
    CThreadStatus::GetThreadStatus()->RemoveListener(&progress);
  }

  // Writes the sources; gives their paths and the expected joined content.
  std::vector<MString> Sources(const std::string& prefix, const std::vector<std::size_t>& sizes, std::string& joined) {
    std::vector<MString> paths;
    unsigned seed = 1;
    for (std::size_t size : sizes) {
      const std::string name = prefix + std::to_string(paths.size());
      const std::string bytes = Pattern(size, seed++);
      WriteAll(folder.Bytes(name), bytes);
      if (size > 0) joined += Padded(bytes);
      paths.push_back(folder.Path(name));
    }
    return paths;
  }

  TempFolder folder;
  Road road;
  TaskEar ear{road};
  ProgressEar progress{road};
};

TEST_F(JobRoadTest, SecondJobWaitsAndEndsComeBackInOrder) {
  std::string joinedA, joinedB;
  // A: 6144 + 4196352 bytes fill the first segment to its limit, the last source needs a second.
  auto sourcesA = Sources("a", {5000, 4194305, 7000}, joinedA);
  // B: an empty source adds nothing; the last source is larger than the limit and gets a segment of its own.
  auto sourcesB = Sources("b", {0, 3000, 9000}, joinedB);
  Gate gate;
  auto* a = new JoinJob(road, "A", folder.Path("A.vob"), sourcesA, 6144 + 4196352, &gate);
  auto* b = new JoinJob(road, "B", folder.Path("B.vob"), sourcesB, 8192);
  a->AddListener(&ear);
  b->AddListener(&ear);

  ASSERT_TRUE(a->Execute());
  ASSERT_TRUE(b->Execute());
  ASSERT_TRUE(PumpUntil([&] { return road.Has("A.RunSelf"); }));
  gate.Open();
  ASSERT_TRUE(PumpUntil([&] { return road.Has("B.delete"); }));

  // Everything but RunSelf happened on this (the user-interface) thread, in
  // this order: B, single-run behind A, ends only after A has left the list.
  const std::vector<std::string> expected = {
      "A.29000", "B.29000", "A.PostPlay", "A.58900", "A.29001", "A.delete", "A.29002", "A.202",
      "B.PostPlay", "B.58900", "B.29001", "B.delete", "B.29002", "B.202"};
  EXPECT_EQ(road.On(Self()), expected);
  EXPECT_EQ(CThreadAction::GetThreadAction()->GetThreadCount(), 0);

  // Content, segments, and the progress of each worker in 2048-byte units.
  EXPECT_EQ(ReadLogical(folder.Path("A.vob")), joinedA);
  EXPECT_EQ(ListedSegments(folder.Path("A.vob")).size(), 2u);
  EXPECT_EQ(ReadAll(folder.Bytes("A.vob.cfx.0")).size(), 6144u + 4196352u);
  EXPECT_EQ(ReadLogical(folder.Path("B.vob")), joinedB);
  EXPECT_EQ(ListedSegments(folder.Path("B.vob")).size(), 2u);
  EXPECT_EQ(ReadAll(folder.Bytes("B.vob.cfx.1")).size(), 10240u);
  std::lock_guard<std::mutex> lock(road.mutex);
  long long sectors = 0;
  for (auto& [thread, count] : road.sectors) sectors += count;
  EXPECT_EQ(sectors * 2048, static_cast<long long>(joinedA.size() + joinedB.size()));
}

TEST_F(JobRoadTest, CancelledJoinListsOnlySegmentsThatExist) {
  CThreadStatus::GetThreadStatus()->RemoveListener(&progress);
  ProgressEar aborter(road, 7);  // aborts inside the big source, after the two small ones (3 sectors each)
  CThreadStatus::GetThreadStatus()->AddListener(&aborter);
  std::string joined;
  auto sources = Sources("s", {5000, 5000, 12 << 20, 5000}, joined);
  auto* job = new JoinJob(road, "C", folder.Path("C.vob"), sources, 8192);
  ASSERT_TRUE(job->Execute());
  ASSERT_TRUE(PumpUntil([&] { return road.Has("C.delete"); }));
  CThreadStatus::GetThreadStatus()->RemoveListener(&aborter);

  // Two small segments, then the big source, stopped after a buffer or two
  // of its three; the last small source never started.
  const std::string content = ReadLogical(folder.Path("C.vob"));
  const std::vector<MString> listed = ListedSegments(folder.Path("C.vob"));
  EXPECT_EQ(listed.size(), 3u);
  EXPECT_GE(content.size(), 6144u + 6144u + (4u << 20));
  EXPECT_LE(content.size(), 6144u + 6144u + (8u << 20));
  EXPECT_TRUE(content == joined.substr(0, content.size()));
  EXPECT_FALSE(std::filesystem::exists(folder.Bytes("C.vob.cfx.3")));
  for (const MString& segment : listed) EXPECT_TRUE(MFile::FileExist(segment));
}

}  // namespace
