// example_host: what a DVD authoring application does with VantoroBasicUtils
// when it writes a title set. It joins source files (video objects, say)
// end to end into one destination that spreads itself over segment files,
// on a worker task, while the user-interface thread shows the progress.
//
//   example_host                       a demonstration on generated sources
//   example_host [options] DEST SOURCE...
//
// The parts a host copies:
//   - start-up and shutdown in main(), in the order the library expects;
//   - JoinTask, a self-destroying single-run worker task that runs the
//     concatenation engine into an MFiles destination;
//   - ProgressRelay and MessageRelay, listeners that run on the worker and
//     hand copies of progress reports and user messages to the
//     user-interface thread through WM_THREADBROADCAST;
//   - RunEventLoop, the user-interface thread's loop: it pumps the thread's
//     queue, runs idle work, and turns Ctrl-C into a cancellation.
#include <VantoroBasicUtils/VantoroBasicUtils.h>

#include <signal.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

using namespace vbu::literals;

namespace {

using Clock = std::chrono::steady_clock;
constexpr long long kMiB = 1024 * 1024;
constexpr long kSector = 2048;  // the disc's sector, and the unit of progress reports

// ---- text between the library's 16-bit strings and the terminal's UTF-8

MString Units(const std::string& text) {
  MString units;
  units.ImportASCII(text.c_str(), -1);
  return units;
}

std::string Utf8(const unsigned short* units) {
  if (!units) return {};
  MString text(units);
  std::string bytes(static_cast<std::size_t>(text.GetLength()) * 3 + 1, '\0');
  bytes.resize(static_cast<std::size_t>(text.ExportASCII(bytes.data(), static_cast<int>(bytes.size()) - 1,
                                                         kCharacterSetWindows)));
  return bytes;
}

void Complain(const std::string& text) { CMessageAction::Error(nullptr, Units(text)); }

// ---- what the user asked for

struct Options {
  long long segmentLimit = 100 * kMiB;  // largest segment file
  long bufferMiB = 4;                   // each of the engine's two buffers
  double bitrate = 8.0;                 // Mbit/s of the title, for its running time
  std::string destination;              // empty: the demonstration
  std::vector<std::string> sources;
};

void PrintHelp() {
  std::printf(
      "usage: example_host [options] DEST SOURCE...\n"
      "\n"
      "Joins the SOURCE files end to end into DEST, each padded with zeros to whole\n"
      "2048-byte sectors. Once DEST would pass the segment limit, the next source goes\n"
      "to a new segment file (DEST.cfx.0, DEST.cfx.1, ...) and DEST becomes the info\n"
      "file that lists them. A source larger than the limit gets a segment of its own.\n"
      "Then it reads DEST back and compares it with the sources.\n"
      "\n"
      "Without arguments it makes a few hundred MiB of sample sources in a temporary\n"
      "folder, joins them into two titles (the second job waits for the first), checks\n"
      "them and removes the folder. Ctrl-C cancels: the destination keeps what was\n"
      "written, and its info file lists only segments that exist.\n"
      "\n"
      "options:\n"
      "  --segment-mib=N   largest segment in MiB (default 100)\n"
      "  --buffer-mib=N    size of each of the two transfer buffers in MiB, a multiple\n"
      "                    of 4 (default 4); sources are padded to N/2048 MiB\n"
      "  --bitrate=MBPS    bitrate of the title in Mbit/s, for its running time at\n"
      "                    29.97 drop-frame (default 8)\n"
      "  -h, --help        this text\n");
}

// False, with a message, for arguments that make no sense.
bool ParseArguments(int argc, char** argv, Options& options, bool& help) {
  std::vector<std::string> names;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    auto value = [&](const char* name) -> const char* {
      const std::size_t length = std::strlen(name);
      return arg.compare(0, length, name) == 0 ? arg.c_str() + length : nullptr;
    };
    if (arg == "-h" || arg == "--help") {
      help = true;
    } else if (const char* v = value("--segment-mib=")) {
      options.segmentLimit = std::atoll(v) * kMiB;
      if (options.segmentLimit <= 0) return std::fprintf(stderr, "example_host: bad segment size %s\n", v), false;
    } else if (const char* v = value("--buffer-mib=")) {
      options.bufferMiB = std::atol(v);
      if (options.bufferMiB < 4 || options.bufferMiB % 4 != 0 || options.bufferMiB > 256) {
        return std::fprintf(stderr, "example_host: the buffer size must be 4, 8, ... 256 MiB\n"), false;
      }
    } else if (const char* v = value("--bitrate=")) {
      options.bitrate = std::atof(v);
      if (!(options.bitrate > 0.0)) return std::fprintf(stderr, "example_host: bad bitrate %s\n", v), false;
    } else if (arg.size() > 1 && arg[0] == '-') {
      return std::fprintf(stderr, "example_host: unknown option %s (see --help)\n", arg.c_str()), false;
    } else {
      names.push_back(arg);
    }
  }
  if (names.size() == 1) return std::fprintf(stderr, "example_host: name the sources after DEST\n"), false;
  if (!names.empty()) {
    options.destination = names.front();
    options.sources.assign(names.begin() + 1, names.end());
  }
  return true;
}

// ---- Ctrl-C

// SIGINT is blocked in every thread (main blocks it before any thread
// starts), so it never interrupts a transfer; the user-interface loop
// collects it between turns.
void BlockInterrupts() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGINT);
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

bool InterruptPending() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGINT);
  const timespec now{0, 0};
  return sigtimedwait(&set, nullptr, &now) == SIGINT;
}

// ---- the job

// What a finished job leaves for the summary.
struct JobResult {
  std::string description;
  std::string destination;
  std::vector<std::string> sources;
  long paddingUnit = kSector;
  long long bytes = 0;       // written, padding included
  int segments = 0;
  double seconds = 0;
  bool ok = false;
  bool cancelled = false;
};

// A worker task that joins its sources into one segmented destination. It
// is single-run: a second JoinTask waits on the task list until the first
// has ended. It deletes itself; PostPlay hands its result to the host.
class JoinTask : public CBrevanderThread {
 public:
  JoinTask(JobResult job, long long segmentLimit, long bufferMiB, std::vector<JobResult>* results)
      : mJob(std::move(job)), mSegmentLimit(segmentLimit), mResults(results) {
    SetWorkerThread(true);
    mSingleRun = true;
    mHasProgress = true;
    mDescription = Units(mJob.description);
    // The engine's buffers are 2048 of its "sectors"; each source is padded to one.
    mJob.paddingUnit = bufferMiB * kMiB / 2048;
  }

  // On the user-interface thread, inside Execute: a job whose sources cannot
  // be read does not reach the task list.
  bool PrePlay() override {
    for (const std::string& source : mJob.sources) {
      MFileUniv file;
      long long size = -1;
      if (file.FOpen(Units(source), MFile::file_read_binary) == 0) size = file.GetSize();
      if (size < 0) {
        Complain("cannot read " + source);
        return false;
      }
      mSizes.push_back(size);
      mTotal += Padded(size);
    }
    return CBrevanderThread::PrePlay();
  }

  // On the worker thread.
  void RunSelf() override {
    const Clock::time_point start = Clock::now();
    CThreadStatus::Status(0, mTotal / kSector, mDescription);

    MFiles destination;
    destination.SetMaxFileSize(mSegmentLimit);
    if (destination.FOpen(Units(mJob.destination), MFile::file_overlapped_create) != 0 ||
        destination.ConcatInitialize(mJob.paddingUnit, 0) != 0) {
      Complain("cannot write " + mJob.destination);
      return;
    }
    long long inSegment = 0;  // bytes in the open segment
    bool ok = true;
    for (std::size_t i = 0; i < mJob.sources.size() && ok && !mStopCopy; ++i) {
      const long long padded = Padded(mSizes[i]);
      if (padded == 0) continue;  // an empty source adds nothing
      if (inSegment > 0 && inSegment + padded > mSegmentLimit) {
        ok = StartNextSegment(destination, inSegment) && destination.ConcatInitialize(mJob.paddingUnit, 0) == 0;
        inSegment = 0;
        if (!ok) {
          Complain("cannot start segment " + std::to_string(destination.GetCount()) + " of " + mJob.destination);
          break;
        }
      }
      // The engine reads mStopCopy once a pass; ProgressRelay sets it.
      MString source = Units(mJob.sources[i]);
      if (destination.ConcatFile(source, 0, mStopCopy) != 0) {
        Complain("joining stopped at " + mJob.sources[i]);  // the engine has said why, if it knew
        ok = false;
      } else if (!mStopCopy) {
        inSegment += padded;
        mJob.bytes += padded;
      }
    }
    mJob.segments = destination.GetCount();
    if (destination.FClose() != 0) ok = false;
    mJob.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    mJob.cancelled = mStopCopy;
    mJob.ok = ok && !mStopCopy;
  }

  // On the user-interface thread, through the dispatcher, after RunSelf.
  void PostPlay() override { mResults->push_back(mJob); }

  // Called by ProgressRelay on this job's worker thread, the thread that
  // runs the engine, after each write: the engine's flag is a plain bool,
  // so only that thread sets it.
  void StopCopyIfAborted() {
    if (!ShouldStart()) mStopCopy = true;
  }

 private:
  long long Padded(long long size) const {
    return (size + mJob.paddingUnit - 1) / mJob.paddingUnit * mJob.paddingUnit;
  }

  // Moves the destination on to a new, empty segment behind the open one.
  // MFiles grows a short last segment to the limit before it adds one, so
  // the limit is lowered to the open segment's size for the move: the new
  // segment starts right behind the data. The engine is started again on it.
  bool StartNextSegment(MFiles& destination, long long inSegment) {
    destination.SetMaxFileSize(inSegment);
    const long long next = mJob.bytes + 1;  // one byte into the new segment; the next write covers it
    const bool moved = destination.FSeek64(next, MFile::file_seek_begin) == next;
    destination.SetMaxFileSize(mSegmentLimit);
    return moved;
  }

  JobResult mJob;
  long long mSegmentLimit;
  std::vector<JobResult>* mResults;
  std::vector<long long> mSizes;
  long long mTotal = 0;
  bool mStopCopy = false;
};

// ---- the display, on the user-interface thread

// Message numbers of the host's own hand-overs (WM_THREADBROADCAST).
constexpr long kMsgProgressNote = 70001;
constexpr long kMsgUserMessageNote = 70002;

// A copy of one progress report; the request that carries it is part of it.
struct ProgressNote {
  ListenerRequest request;
  int mask;
  long long position;
  long long range;
  std::string status;
};

// A copy of one user message.
struct UserMessageNote {
  ListenerRequest request;
  long message;
  MString text;
};

class TerminalDisplay;

// Redraws the bar once when the application is next idle, however many
// reports arrived meanwhile.
class RedrawBar : public CIdleProcess {
 public:
  explicit RedrawBar(TerminalDisplay* display) : mDisplay(display) {}
  void ExecuteSelf() override;

 private:
  TerminalDisplay* mDisplay;
};

// The progress bar and the user messages. On a terminal the bar redraws in
// place; otherwise it prints a line at each tenth of the job.
class TerminalDisplay : public LListener {
 public:
  TerminalDisplay() : mInPlace(isatty(STDOUT_FILENO) == 1) {
    // The console prints what MessageRelay hands over, here on this thread.
    CMessageAction::GetMessageAction()->RemoveListener(&mConsole);
  }

  bool ListenToMessage(long message, void* param) override {
    if (message == kMsgProgressNote) {
      std::unique_ptr<ProgressNote> note(static_cast<ProgressNote*>(param));
      Take(*note);
      return true;
    }
    if (message == kMsgUserMessageNote) {
      std::unique_ptr<UserMessageNote> note(static_cast<UserMessageNote*>(param));
      ShowMessage(note->message, note->text);
      return true;
    }
    return false;
  }

  void ShowMessage(long message, const unsigned short* text) {
    ClearBar();
    InteractionRecord record{nullptr, text};
    mConsole.ListenToMessage(message, &record);
    std::fflush(stdout);
  }

  void Print(const std::string& line) {
    ClearBar();
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
  }

  void Draw() {
    mRedrawQueued = false;
    if (mRange <= 0 || !mInPlace) return;
    constexpr int kWidth = 30;
    const int filled = static_cast<int>(kWidth * Fraction());
    std::string line = "\r" + mLabel + " [" + std::string(filled, '#') + std::string(kWidth - filled, '.') + "] " +
                       Figures() + "\x1b[K";
    std::fputs(line.c_str(), stdout);
    std::fflush(stdout);
    mBarShown = true;
  }

  // Once a turn of the loop: the time left changes while no report comes.
  void Tick() {
    if (mInPlace && mRange > 0 && Clock::now() - mLastDraw > std::chrono::milliseconds(250)) {
      mLastDraw = Clock::now();
      Draw();
    }
  }

  // A finished bar stays on its line; an unfinished one gives way.
  void ClearBar() {
    if (!mBarShown) return;
    std::fputs(mPosition >= mRange ? "\n" : "\r\x1b[K", stdout);
    mBarShown = false;
  }

 private:
  void Take(const ProgressNote& note) {
    if (note.mask & kStatusRange) {  // a new job
      ClearBar();
      mRange = note.range;
      mPosition = 0;
      mStart = Clock::now();
      mTenthsShown = 0;
      mLabel = note.status;
      Print(mLabel + ": started");
    }
    if (note.mask & kStatusPosition) mPosition = note.position;
    if (note.mask & kStatusAdvance) mPosition += note.position;
    if (mInPlace) {
      if (!mRedrawQueued) new RedrawBar(this);  // runs from gIdleProcesses
      mRedrawQueued = true;
    } else {
      const int tenths = static_cast<int>(10 * Fraction());
      if (tenths > mTenthsShown) {
        mTenthsShown = tenths;
        Print(mLabel + ": " + Figures());
      }
    }
  }

  double Fraction() const { return mRange > 0 ? std::min(1.0, double(mPosition) / double(mRange)) : 0.0; }

  // "42%  310.5 MB/s  0:03 left"
  std::string Figures() const {
    const double seconds = std::chrono::duration<double>(Clock::now() - mStart).count();
    const double bytes = double(mPosition) * kSector;
    const double rate = seconds > 0 ? bytes / seconds : 0;
    char text[96];
    if (rate > 0 && mPosition < mRange) {
      const long left = std::lround(double(mRange - mPosition) * kSector / rate);
      std::snprintf(text, sizeof text, "%3d%%  %6.1f MB/s  %ld:%02ld left", int(100 * Fraction()), rate / 1e6,
                    left / 60, left % 60);
    } else {
      std::snprintf(text, sizeof text, "%3d%%  %6.1f MB/s", int(100 * Fraction()), rate / 1e6);
    }
    return text;
  }

  CMessageConsole mConsole;
  const bool mInPlace;
  bool mBarShown = false;
  bool mRedrawQueued = false;
  long long mRange = 0;
  long long mPosition = 0;
  int mTenthsShown = 0;
  std::string mLabel;
  Clock::time_point mStart = Clock::now();
  Clock::time_point mLastDraw = Clock::now();
};

void RedrawBar::ExecuteSelf() { mDisplay->Draw(); }

// Posts a note to the display on the user-interface thread. The note owns
// the request; the display deletes both when it has taken the note.
template <class Note>
void HandOver(Note* note, TerminalDisplay* display, long message) {
  note->request = ListenerRequest{display, message, note};
  CThreadDispatcher::GetThreadDispatcher()->PostMessage(WM_THREADBROADCAST, 0,
                                                        reinterpret_cast<intptr_t>(&note->request));
}

// Hears the progress reports (message 29990) on the thread that sends them:
// a job's worker. It copies each report to the display, and lets a job that
// has been aborted stop its engine.
class ProgressRelay : public LListener {
 public:
  explicit ProgressRelay(TerminalDisplay* display) : mDisplay(display) {}

  bool ListenToMessage(long message, void* param) override {
    if (message != kMsgThreadStatus) return false;
    const auto* record = static_cast<ThreadStatusRecord*>(param);
    if (auto* job = dynamic_cast<JoinTask*>(CThreadAction::GetThreadAction()->FindThread(record->threadId))) {
      job->StopCopyIfAborted();
    }
    HandOver(new ProgressNote{{}, record->mask, record->position, record->range, Utf8(record->status)}, mDisplay,
             kMsgProgressNote);
    return true;
  }

 private:
  TerminalDisplay* mDisplay;
};

// Hears the user messages (26000 and up) on the thread that sends them. On
// the user-interface thread they are shown at once; from a worker they go
// over as copies.
class MessageRelay : public LListener {
 public:
  MessageRelay(TerminalDisplay* display, unsigned long uiThread) : mDisplay(display), mUiThread(uiThread) {}

  bool ListenToMessage(long message, void* param) override {
    if (message < kMsgInteractionBase || message >= kMsgInteractionBase + 6 * kMsgInteractionWindowStep) return false;
    const auto* record = static_cast<InteractionRecord*>(param);
    if (MThreadQueue::CurrentThreadId() == mUiThread) {
      mDisplay->ShowMessage(message, record->text);
    } else {
      HandOver(new UserMessageNote{{}, message, MString(record->text ? record->text : u""_u16)}, mDisplay,
               kMsgUserMessageNote);
    }
    return true;
  }

 private:
  TerminalDisplay* mDisplay;
  unsigned long mUiThread;
};

// Hears the task list (29000, 29001). The list sends from the thread that
// changes it; in this host that is always the user-interface thread.
class TaskListWatcher : public LListener {
 public:
  explicit TaskListWatcher(TerminalDisplay* display) : mDisplay(display) {}

  bool ListenToMessage(long message, void* param) override {
    auto* task = static_cast<CBrevanderThread*>(param);
    if (message == kMsgThreadAdded) mDisplay->Print(Utf8(task->GetDescription()) + ": queued");
    if (message == kMsgThreadRemoved) mDisplay->Print(Utf8(task->GetDescription()) + ": off the task list");
    return message == kMsgThreadAdded || message == kMsgThreadRemoved;
  }

 private:
  TerminalDisplay* mDisplay;
};

// ---- the user-interface thread's loop

// Runs until the task list is empty. Ends of self-destroying tasks and the
// relays' notes arrive through the queue; idle work runs once a turn.
// Gives true if the user cancelled.
bool RunEventLoop(TerminalDisplay& display) {
  CThreadAction* tasks = CThreadAction::GetThreadAction();
  bool cancelled = false;
  while (tasks->GetThreadCount() > 0) {
    MThreadQueue::WaitMessage(100);  // wakes for a message, or to look for Ctrl-C
    MThreadQueue::PumpMessages();
    if (!cancelled && InterruptPending()) {
      cancelled = true;
      display.Print("cancelling...");
      // From the back: an aborted waiting task leaves the list at once.
      for (long i = tasks->GetThreadCount(); i >= 1; --i) {
        if (CBrevanderThread* task = tasks->GetThread(i)) task->Abort();
      }
    }
    gIdleProcesses.ExecuteAll();
    display.Tick();
  }
  MThreadQueue::PumpMessages();
  gIdleProcesses.ExecuteAll();
  display.ClearBar();
  return cancelled;
}

// ---- sources, verification, summary

// A pattern that differs in every 8 bytes and between sources, so that a
// misplaced or missing block shows.
void FillPattern(std::vector<char>& block, long long offset, unsigned seed) {
  auto* words = reinterpret_cast<uint64_t*>(block.data());
  for (std::size_t i = 0; i < block.size() / 8; ++i) {
    words[i] = (uint64_t(seed) << 48) ^ ((uint64_t(offset) / 8 + i) * 0x9E3779B97F4A7C15ull);
  }
}

bool MakeSource(const std::string& path, long long size, unsigned seed) {
  MFileUniv file;
  if (file.FOpen(Units(path), MFile::file_create_binary) != 0) return false;
  std::vector<char> block(4 * kMiB);
  bool ok = true;
  for (long long at = 0; at < size && ok; at += static_cast<long long>(block.size())) {
    FillPattern(block, at, seed);
    const int count = static_cast<int>(std::min<long long>(size - at, static_cast<long long>(block.size())));
    ok = file.FWrite(block.data(), count) == count;
  }
  return file.FClose() == 0 && ok;
}

// Reads the destination back through MFiles, across its segments, and
// compares it with the sources and their zero padding.
bool Verify(const JobResult& job) {
  MFiles joined;
  MFileUniv source;
  if (joined.FOpen(Units(job.destination), MFile::file_read_binary) != 0) return false;
  std::vector<char> expected(kMiB), actual(kMiB);
  bool same = true;
  long long total = 0;
  for (const std::string& path : job.sources) {
    if (!same || source.FOpen(Units(path), MFile::file_read_binary) != 0) {
      same = false;
      break;
    }
    long long size = 0;
    for (int got; same && (got = source.FRead(expected.data(), static_cast<int>(expected.size()))) > 0;) {
      same = joined.FRead(actual.data(), got) == got && std::memcmp(expected.data(), actual.data(), got) == 0;
      size += got;
    }
    source.FClose();
    const long long padding = (job.paddingUnit - size % job.paddingUnit) % job.paddingUnit;
    std::fill(expected.begin(), expected.end(), 0);
    for (long long left = padding; same && left > 0;) {
      const int count = static_cast<int>(std::min<long long>(left, static_cast<long long>(actual.size())));
      same = joined.FRead(actual.data(), count) == count && std::memcmp(expected.data(), actual.data(), count) == 0;
      left -= count;
    }
    total += size + padding;
  }
  same = same && joined.FRead(actual.data(), 1) == 0 && total == job.bytes;  // nothing behind the last source
  joined.FClose();
  return same;
}

// After a cancellation: every segment that the info file lists is there.
bool ListsOnlyExistingSegments(const std::string& destination, int& listed) {
  MFiles joined;
  if (joined.FOpen(Units(destination), MFile::file_read_binary) != 0) return false;
  listed = joined.GetCount();
  bool ok = true;
  LListIterator segments(*joined.GetFileNames());
  for (MFileSpecWin* spec; segments.Next(&spec);) ok = ok && MFile::FileExist(spec->GetFilePath());
  joined.FClose();
  return ok;
}

// The running time of `bytes` at `mbps`, as a 29.97 drop-frame label.
std::string TitleLength(long long bytes, double mbps) {
  const double seconds = double(bytes) * 8.0 / (mbps * 1e6);
  const long frames = std::lround(seconds * 30000.0 / 1001.0);  // frames at 29.97 per second
  CTimecode plain;
  plain.SetTotalFrame(frames + 1, kFrameType30);  // counted as 30 labels a second; frame 1 is 00:00:00:00
  CTimecode shown;
  plain.Nondrop2Drop(CTimecode(), &shown);  // skip the labels that drop-frame leaves out
  MString text;
  shown.GetTime(&text);
  return Utf8(text);
}

int Summarise(const std::vector<JobResult>& results, const Options& options, bool cancelled) {
  bool allGood = !results.empty();
  for (const JobResult& job : results) {
    const double mb = double(job.bytes) / 1e6;
    std::printf("%s: %s\n", job.description.c_str(), job.ok ? "done" : job.cancelled ? "cancelled" : "failed");
    std::printf("  %s: %d segment%s, %lld bytes in %.2f s (%.1f MB/s)\n", job.destination.c_str(), job.segments,
                job.segments == 1 ? "" : "s", job.bytes, job.seconds, job.seconds > 0 ? mb / job.seconds : 0.0);
    std::printf("  at %.2f Mbit/s the title runs %s (29.97 drop-frame)\n", options.bitrate,
                TitleLength(job.bytes, options.bitrate).c_str());
    if (job.ok) {
      const bool same = Verify(job);
      std::printf("  verified against the sources: %s\n", same ? "identical" : "DIFFERENT");
      allGood = allGood && same;
    } else {
      allGood = false;
    }
    if (job.cancelled) {
      int listed = 0;
      const bool whole = ListsOnlyExistingSegments(job.destination, listed);
      std::printf("  the info file lists %d segment%s, %s\n", listed, listed == 1 ? "" : "s",
                  whole ? "all present" : "SOME MISSING");
    }
  }
  if (cancelled) return 130;
  return allGood ? 0 : 1;
}

// The demonstration's two titles: sources of uneven sizes, some not whole
// sectors, so that padding and segment changes show.
std::vector<JobResult> MakeDemoJobs(const std::string& folder, TerminalDisplay& display) {
  const std::vector<std::vector<long long>> titles = {
      {36 * kMiB, 28 * kMiB + 1234, 52 * kMiB, 17 * kMiB + 5000},
      {80 * kMiB, 33 * kMiB + 7, 24 * kMiB},
  };
  std::vector<JobResult> jobs;
  unsigned seed = 1;
  for (std::size_t t = 0; t < titles.size(); ++t) {
    JobResult job;
    job.description = "title " + std::to_string(t + 1);
    job.destination = folder + "/VTS_0" + std::to_string(t + 1) + "_1.VOB";
    for (std::size_t s = 0; s < titles[t].size(); ++s) {
      job.sources.push_back(folder + "/title" + std::to_string(t + 1) + "_part" + std::to_string(s + 1) + ".mpg");
      if (!MakeSource(job.sources.back(), titles[t][s], seed++)) {
        Complain("cannot write the sample " + job.sources.back());
        return {};
      }
    }
    jobs.push_back(job);
  }
  display.Print("made 7 sample sources (270 MiB) in " + folder);
  return jobs;
}

}  // namespace

int main(int argc, char** argv) {
  BlockInterrupts();  // before any thread starts, so that every thread inherits it

  Options options;
  bool help = false;
  if (!ParseArguments(argc, argv, options, help)) return 2;
  if (help) {
    PrintHelp();
    return 0;
  }

  // Start-up, in the library's order: settings, version record, the task
  // dispatcher on this (the user-interface) thread, then the listeners.
  CBrevanderProfile::SetAppProfile();  // example_host.ini beside the executable
  CVersionControl version;
  version.SetMajorVersion(1);
  version.SetEdition(kVantoroStandardID);
  CThreadDispatcher::GetThreadDispatcher();
  const unsigned long uiThread = MThreadQueue::CurrentThreadId();

  TerminalDisplay display;
  MessageRelay messages(&display, uiThread);
  ProgressRelay progress(&display);
  TaskListWatcher taskList(&display);
  CMessageAction::GetMessageAction()->AddListener(&messages);
  CThreadStatus::GetThreadStatus()->AddListener(&progress);
  CThreadAction::GetThreadAction()->AddListener(&taskList);

  // The jobs: the user's, or the demonstration's in a temporary folder.
  std::string sampleFolder;
  std::vector<JobResult> jobs;
  if (options.destination.empty()) {
    std::string pattern = "/tmp/vbu-example-XXXXXX";
    if (mkdtemp(pattern.data())) {
      sampleFolder = pattern;
      jobs = MakeDemoJobs(sampleFolder, display);
    } else {
      Complain("cannot make a temporary folder in /tmp");
    }
  } else {
    JobResult job;
    job.description = "join";
    job.destination = options.destination;
    job.sources = options.sources;
    jobs.push_back(job);
  }

  // Both jobs go on the task list now; the second waits for the first.
  std::vector<JobResult> results;
  for (JobResult& job : jobs) {
    (new JoinTask(job, options.segmentLimit, options.bufferMiB, &results))->Execute();
  }
  const bool cancelled = RunEventLoop(display);
  const int status = jobs.empty() ? 1 : Summarise(results, options, cancelled);

  if (!sampleFolder.empty() && DeleteDirectory(Units(sampleFolder)) == 0) {
    std::printf("removed %s\n", sampleFolder.c_str());
  }

  // Shutdown: listeners off before the objects go, then the dispatcher.
  CThreadAction::GetThreadAction()->RemoveListener(&taskList);
  CThreadStatus::GetThreadStatus()->RemoveListener(&progress);
  CMessageAction::GetMessageAction()->RemoveListener(&messages);
  CThreadDispatcher::DeleteAll();
  return status;
}
