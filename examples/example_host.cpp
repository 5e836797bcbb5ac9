// example_host: what a DVD authoring application does with VantoroBasicUtils
// when it writes a title set. It joins source files (video objects, say)
// end to end into one destination that spreads itself over segment files,
// on a worker task, reads the result back against the sources, and shows
// the progress of both on the user-interface thread.
//
//   example_host                       a demonstration on generated sources
//   example_host [options] DEST SOURCE...
//
// The parts a host copies:
//   - start-up and shutdown in main(), in the order the library expects;
//   - JoinTask, a self-destroying single-run worker task that checks its
//     files before it starts (no folder or unreadable source, no source
//     written over by the destination or its segments), runs the
//     concatenation engine into an MFiles destination, verifies it and
//     shows its result when it ends;
//   - ProgressRelay and MessageRelay, listeners that run on the worker and
//     hand copies of progress reports and user messages to the
//     user-interface thread through WM_THREADBROADCAST;
//   - RunEventLoop, the user-interface thread's loop: it pumps the thread's
//     queue, runs idle work, and turns Ctrl-C into a cancellation.
// Errors go to standard error with the system's reason; the settings file
// is example_host.ini beside the executable.
#include <VantoroBasicUtils/VantoroBasicUtils.h>
// The build generates Version.h; a tree without it gives no version yet.
#include <VantoroBasicUtils/Version.h>

#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <time.h>
#if defined(_WIN32)
#include <windows.h>
#undef PostMessage  // <windows.h>'s macro would rename the dispatcher's PostMessage
#else
#include <unistd.h>
#endif

#include <atomic>
#include <filesystem>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace vbu::literals;

namespace {

using Clock = std::chrono::steady_clock;
constexpr long long kMiB = 1024 * 1024;
constexpr long kSector = MFileUniv::kSectorSize;  // the disc's sector, and the unit of progress reports

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

// Sends a user message of the kind Error; the display shows it on standard error.
void Complain(const std::string& text) { CMessageAction::Error(nullptr, Units(text)); }

// The same, for a check that fails.
bool Unusable(const std::string& text) {
  Complain(text);
  return false;
}

// The system's reason for a file error code, as the file classes leave it
// in GetLastError(): "Permission denied".
std::string Reason(uint32_t code) {
  switch (code) {
    case 0: return "unknown error";
    case kErrorHandleEof: return "unexpected end of file";
    case kErrorOperationAborted: return "the transfer was cancelled";
    case kErrorNotImplemented: return std::strerror(ENOSYS);
    default: return std::strerror(static_cast<int>(code));
  }
}

// ---- what the user asked for

struct Options {
  long long segmentLimit = 100 * kMiB;  // largest segment file
  long bufferMiB = 4;                   // each of the engine's two buffers
  double bitrate = 8.0;                 // Mbit/s of the title, for its running time
  bool help = false;
  bool version = false;
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
      "Then it reads DEST back and compares it with the sources. DEST must not be one\n"
      "of the sources, under any name; each SOURCE must be a readable file.\n"
      "\n"
      "Without arguments it makes a few hundred MiB of sample sources in a temporary\n"
      "folder, joins them into two titles (the second job waits for the first), checks\n"
      "them and removes the folder. Ctrl-C cancels: the destination keeps what was\n"
      "written, its info file lists only segments that exist, and the summary tells\n"
      "where the copy stopped.\n"
      "\n"
      "options (\"--name=VALUE\" or \"--name VALUE\"):\n"
      "  --segment-mib=N   largest segment in MiB, 1 to 1048576 (default 100)\n"
      "  --buffer-mib=N    size of each of the two transfer buffers in MiB, a multiple\n"
      "                    of 4 up to 256 (default 4); sources are padded to N/2048 MiB\n"
      "  --bitrate=MBPS    bitrate of the title in Mbit/s, above 0 and up to 1000, for\n"
      "                    its running time at 29.97 drop-frame (default 8)\n"
      "  --version         the version of the library in use\n"
      "  -h, --help        this text\n"
      "  --                what follows are file names, even if they begin with -\n"
      "\n"
      "Settings go to example_host.ini beside the executable. Exit status: 0 done and\n"
      "verified, 1 a file could not be used or the check failed, 2 bad arguments,\n"
      "130 cancelled.\n");
}

// False, with the reason on standard error: a usage error.
bool Refuse(const std::string& text) {
  std::fprintf(stderr, "example_host: %s\n", text.c_str());
  return false;
}

// A whole number from `low` to `high`, in decimal digits only: "16", not
// "1.5", "16k", "+16", " 16" or "".
bool ParseWhole(const std::string& text, long long low, long long high, long long& value) {
  if (text.empty() || text.size() > 15 || text.find_first_not_of("0123456789") != std::string::npos) return false;
  value = std::stoll(text);
  return value >= low && value <= high;
}

// A decimal number from above 0 to `high`: digits with at most one point
// among them ("8", "9.8", ".5"), no sign, exponent or other text.
bool ParseRate(const std::string& text, double high, double& value) {
  const std::size_t digits = std::count_if(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
  const std::size_t points = std::count(text.begin(), text.end(), '.');
  if (digits == 0 || points > 1 || digits + points != text.size() || text.size() > 20) return false;
  value = std::strtod(text.c_str(), nullptr);
  return value > 0.0 && value <= high;
}

// False for arguments that make no sense, with the reason on standard error.
bool ParseArguments(int argc, char** argv, Options& options) {
  std::vector<std::string> names;
  bool namesOnly = false;  // after "--"
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (namesOnly || arg.size() < 2 || arg[0] != '-') {
      names.push_back(arg);
      continue;
    }
    if (arg == "--") {
      namesOnly = true;
      continue;
    }
    // "--name=value" or "--name value".
    const std::size_t equals = arg.compare(0, 2, "--") == 0 ? arg.find('=') : std::string::npos;
    const std::string name = arg.substr(0, equals);
    const bool valueGiven = equals != std::string::npos;
    if (name == "-h" || name == "--help" || name == "--version") {
      if (valueGiven) return Refuse(name + " takes no value");
      (name == "--version" ? options.version : options.help) = true;
      continue;
    }
    if (name != "--segment-mib" && name != "--buffer-mib" && name != "--bitrate") {
      return Refuse("unknown option " + arg + " (see --help)");
    }
    if (!valueGiven && i + 1 >= argc) return Refuse(name + " needs a value");
    const std::string value = valueGiven ? arg.substr(equals + 1) : std::string(argv[++i]);
    long long whole = 0;
    if (name == "--segment-mib") {
      if (!ParseWhole(value, 1, 1048576, whole)) {
        return Refuse("--segment-mib takes a whole number of MiB from 1 to 1048576, not \"" + value + "\"");
      }
      options.segmentLimit = whole * kMiB;
    } else if (name == "--buffer-mib") {
      if (!ParseWhole(value, 4, 256, whole) || whole % 4 != 0) {
        return Refuse("--buffer-mib takes 4, 8, 12, ... 256 (MiB), not \"" + value + "\"");
      }
      options.bufferMiB = static_cast<long>(whole);
    } else if (!ParseRate(value, 1000.0, options.bitrate)) {
      return Refuse("--bitrate takes Mbit/s above 0 and up to 1000, such as 8 or 9.8, not \"" + value + "\"");
    }
  }
  if (names.size() == 1) return Refuse("name the sources after DEST (see --help)");
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
#if defined(_WIN32)
// On Windows the console's handler runs on a thread of its own: it only
// notes the press for the loop.
std::atomic<bool> gInterrupted{false};

BOOL WINAPI OnConsoleControl(DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
  gInterrupted = true;
  return TRUE;
}

void BlockInterrupts() { SetConsoleCtrlHandler(&OnConsoleControl, TRUE); }

bool InterruptPending() { return gInterrupted.exchange(false); }
#else
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
#endif

// ---- the job

// What a job leaves for the summary.
struct JobResult {
  std::string description;
  std::string destination;
  std::vector<std::string> sources;
  std::vector<long long> sizes;  // of the sources, as checked before the start
  long paddingUnit = kSector;
  long long bytes = 0;           // written, padding included
  long long onDisk = -1;         // the destination's bytes on disk after the join; -1: none made
  int segments = 0;
  double seconds = 0;
  bool ok = false;               // joined whole
  bool cancelled = false;
  std::size_t stoppedSource = 0;  // after a cancellation: the source being copied
  long long stoppedAt = 0;        // and the bytes of it that were written
  int listed = 0;                 // after a cancellation: segments the info file lists
  bool listedPresent = false;     // and whether all of them exist
  std::string verification;       // "identical", or what differs; empty if not checked
  bool verified = false;
  double verifySeconds = 0;
};

bool SameFile(const struct _stati64& a, const struct _stati64& b) { return a.st_dev == b.st_dev && a.st_ino == b.st_ino; }

class TerminalDisplay;
void PrintResult(const JobResult& job, double bitrate, TerminalDisplay& display);
bool Verify(JobResult& job, const bool& stop);

// A worker task that joins its sources into one segmented destination and
// then reads it back against them. It is single-run: a second JoinTask
// waits on the task list until the first has ended. It deletes itself;
// PostPlay shows its result and hands it to the host.
class JoinTask : public CBrevanderThread {
 public:
  JoinTask(JobResult job, const Options& options, std::vector<JobResult>* results, TerminalDisplay* display)
      : mJob(std::move(job)), mSegmentLimit(options.segmentLimit), mBitrate(options.bitrate), mResults(results),
        mDisplay(display) {
    SetWorkerThread(true);
    mSingleRun = true;
    mHasProgress = true;
    mDescription = Units(mJob.description);
    // The engine's buffers are 2048 of its "sectors"; each source is padded to one.
    mJob.paddingUnit = options.bufferMiB * kMiB / 2048;
  }

  // On the user-interface thread, inside Execute: a job that would read a
  // folder or an unreadable file, or write over one of its sources, does
  // not reach the task list, and nothing is written.
  bool PrePlay() override { return CheckFiles() && CBrevanderThread::PrePlay(); }

  // On the worker thread.
  void RunSelf() override {
    Join();
    if (mJob.ok && !mStopCopy) mJob.verified = Verify(mJob, mStopCopy);
    mJob.cancelled = mStopCopy;
  }

  // On the user-interface thread, through the dispatcher, after RunSelf.
  void PostPlay() override {
    PrintResult(mJob, mBitrate, *mDisplay);
    mResults->push_back(mJob);
  }

  // Called by ProgressRelay for each report of this job's worker thread,
  // the thread that runs the engine: the engine's flag is a plain bool, so
  // only that thread sets it. It also counts what the engine has written
  // of the source in hand (2048-byte units after each write).
  void Heard(const ThreadStatusRecord& record) {
    if (!ShouldStart()) mStopCopy = true;
    if (record.mask & kStatusAdvance) mSourceWritten += record.position * kSector;
  }

 private:
  long long Padded(long long size) const {
    return (size + mJob.paddingUnit - 1) / mJob.paddingUnit * mJob.paddingUnit;
  }

  bool CheckFiles() {
    // The files that the join may write: the destination, the segments that
    // an info file of that name lists (they are emptied), and the segment
    // names that it may make (at most one for each source).
    std::vector<std::pair<std::string, struct _stati64>> written;
    MFileUniv probe;
    struct _stati64 info{};
    MString destination = Units(mJob.destination);
    if (probe.FStat(destination, &info) == 0) {
      if (S_ISDIR(info.st_mode)) return Unusable("cannot write " + mJob.destination + ": " + Reason(EISDIR));
      written.emplace_back("the destination " + mJob.destination, info);
      if (MFiles::IsBrevanderMFiles(destination)) {
        MFiles listed;
        if (listed.FOpen(destination, MFile::file_read_binary) == 0) {
          LListIterator segments(*listed.GetFileNames());
          for (MFileSpecWin* spec; segments.Next(&spec);) {
            if (probe.FStat(spec->GetFilePath(), &info) == 0) {
              written.emplace_back(Utf8(spec->GetFilePath()) + ", a segment of the destination,", info);
            }
          }
          listed.FClose();
        }
      }
    }
    for (std::size_t n = 0; n <= mJob.sources.size(); ++n) {
      const std::string segment = mJob.destination + ".cfx." + std::to_string(n);
      if (probe.FStat(Units(segment), &info) == 0) written.emplace_back(segment + ", which the join may write,", info);
    }

    mJob.sizes.clear();
    mTotal = 0;
    for (const std::string& source : mJob.sources) {
      MFileUniv file;
      if (probe.FStat(Units(source), &info) != 0) {
        return Unusable("cannot read " + source + ": " + Reason(GetLastError()));
      }
      if (S_ISDIR(info.st_mode)) return Unusable("cannot read " + source + ": " + Reason(EISDIR));
      if (!S_ISREG(info.st_mode)) return Unusable("cannot read " + source + ": not a regular file");
      for (const auto& [name, target] : written) {
        if (SameFile(info, target)) {
          return Unusable("refused: " + name + " is the source " + source + "; nothing was written");
        }
      }
      if (file.FOpen(Units(source), MFile::file_read_binary) != 0) {
        return Unusable("cannot read " + source + ": " + Reason(GetLastError()));
      }
      file.FClose();
      mJob.sizes.push_back(info.st_size);
      mTotal += Padded(info.st_size);
    }
    return true;
  }

  void Join() {
    const Clock::time_point start = Clock::now();
    CThreadStatus::Status(0, mTotal / kSector, Units(mJob.description + ": joining"));

    // An earlier join's segments go with it: opened to be written, an info
    // file would keep its list and empty every segment.
    MFiles destination;
    MString path = Units(mJob.destination);
    if (MFiles::IsBrevanderMFiles(path) && destination.FOpen(path, MFile::file_read_binary) == 0) {
      destination.FDelete();
      destination.FClose();
    }
    destination.SetMaxFileSize(mSegmentLimit);
    if (destination.FOpen(path, MFile::file_overlapped_create) != 0) {
      Complain("cannot write " + mJob.destination + ": " + Reason(GetLastError()));
      return;
    }
    bool ok = destination.ConcatInitialize(mJob.paddingUnit, 0) == 0;
    if (!ok) Complain("cannot start joining into " + mJob.destination + ": " + Reason(GetLastError()));
    long long inSegment = 0;  // bytes in the open segment
    std::size_t i = 0;
    for (; i < mJob.sources.size() && ok && !mStopCopy; ++i) {
      const long long padded = Padded(mJob.sizes[i]);
      if (padded == 0) continue;  // an empty source adds nothing
      if (inSegment > 0 && inSegment + padded > mSegmentLimit) {
        ok = StartNextSegment(destination, inSegment) && destination.ConcatInitialize(mJob.paddingUnit, 0) == 0;
        inSegment = 0;
        if (!ok) {
          Complain("cannot start segment " + std::to_string(destination.GetCount()) + " of " + mJob.destination +
                   ": " + Reason(GetLastError()));
          break;
        }
      }
      // The engine reads mStopCopy once a pass; Heard sets it.
      mSourceWritten = 0;
      MString source = Units(mJob.sources[i]);
      const long result = destination.ConcatFile(source, 0, mStopCopy);
      mJob.bytes += std::min(mSourceWritten, padded);
      inSegment += std::min(mSourceWritten, padded);
      if (result != 0) {
        // The engine has shown the system's text already; this says where.
        Complain("cannot join " + mJob.sources[i] + " into " + mJob.destination + ": " +
                 Reason(result > 0 ? static_cast<uint32_t>(result) : GetLastError()));
        ok = false;
      }
      if (mSourceWritten < padded) break;  // stopped inside this source
    }
    mJob.stoppedSource = i;
    mJob.stoppedAt = i < mJob.sources.size() ? std::min(mSourceWritten, mJob.sizes[i]) : 0;
    mJob.segments = destination.GetCount();
    if (destination.FClose() != 0) ok = false;
    mJob.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    mJob.cancelled = mStopCopy;
    mJob.ok = ok && i == mJob.sources.size();

    // What is on disk now, and, after a cancellation, whether every segment
    // that the info file lists is there.
    MFiles joined;
    if (joined.FOpen(Units(mJob.destination), MFile::file_read_binary) == 0) {
      mJob.onDisk = joined.FGetFileSize();
      mJob.listed = joined.GetCount();
      mJob.listedPresent = true;
      LListIterator segments(*joined.GetFileNames());
      for (MFileSpecWin* spec; segments.Next(&spec);) {
        mJob.listedPresent = mJob.listedPresent && MFile::FileExist(spec->GetFilePath());
      }
      joined.FClose();
    }
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
  double mBitrate;
  std::vector<JobResult>* mResults;
  TerminalDisplay* mDisplay;
  long long mTotal = 0;          // bytes to write, padding included
  long long mSourceWritten = 0;  // of the source in hand, padding included
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

  // Errors and warnings go to standard error, as a command's do; the rest
  // through the stock console on standard output.
  void ShowMessage(long message, const unsigned short* text) {
    ClearBar();
    const long kind = (message - kMsgInteractionBase) % kMsgInteractionWindowStep;
    if (kind == kInteractionError || kind == kInteractionWarning) {
      std::fflush(stdout);
      std::fprintf(stderr, "example_host: %s%s\n", kind == kInteractionWarning ? "warning: " : "", Utf8(text).c_str());
      return;
    }
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
      mLabel = note.status;  // "title 1: joining"
      Print(mLabel);
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
        Print(mLabel + " " + Figures());
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
      job->Heard(*record);
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
// compares it with the sources and their zero padding, on the job's worker,
// with progress reports like the join's. True if all is identical;
// job.verification says what was found. Stops when `stop` is set.
bool Verify(JobResult& job, const bool& stop) {
  const Clock::time_point start = Clock::now();
  CThreadStatus::Status(0, job.bytes / kSector, Units(job.description + ": verifying"));
  MFiles joined;
  if (joined.FOpen(Units(job.destination), MFile::file_read_binary) != 0) {
    job.verification = "cannot read " + job.destination + ": " + Reason(GetLastError());
    return false;
  }
  constexpr int kBlock = 4 * kMiB;
  std::vector<char> expected(kBlock), actual(kBlock);
  long long at = 0;  // the destination's bytes compared so far
  std::string difference;
  // The next `count` bytes of the destination against `expected`.
  auto compare = [&](int count) {
    const int got = joined.FRead(actual.data(), count);
    if (got < 0) {
      difference = "cannot read " + job.destination + ": " + Reason(GetLastError());
    } else if (got < count) {
      difference = job.destination + " ends early, at byte " + std::to_string(at + got);
    } else if (std::memcmp(expected.data(), actual.data(), static_cast<std::size_t>(count)) != 0) {
      const auto where = std::mismatch(expected.begin(), expected.begin() + count, actual.begin());
      difference = "they differ at byte " + std::to_string(at + (where.first - expected.begin())) + " of " +
                   job.destination;
    } else {
      at += count;
      CThreadStatus::SetPosition(at / kSector);
      return true;
    }
    return false;
  };
  bool same = true;
  for (std::size_t i = 0; i < job.sources.size() && same && !stop; ++i) {
    MFileUniv source;
    if (source.FOpen(Units(job.sources[i]), MFile::file_read_binary) != 0) {
      difference = "cannot read " + job.sources[i] + ": " + Reason(GetLastError());
      same = false;
      break;
    }
    long long size = 0;
    int got = 0;
    while (same && !stop && (got = source.FRead(expected.data(), kBlock)) > 0) {
      same = compare(got);
      size += got;
    }
    if (got < 0) {
      difference = "cannot read " + job.sources[i] + ": " + Reason(GetLastError());
      same = false;
    }
    source.FClose();
    std::fill(expected.begin(), expected.end(), 0);
    for (long long left = (job.paddingUnit - size % job.paddingUnit) % job.paddingUnit; same && !stop && left > 0;) {
      const int count = static_cast<int>(std::min<long long>(left, kBlock));
      same = compare(count);
      left -= count;
    }
  }
  if (same && !stop && joined.FRead(actual.data(), 1) != 0) {
    difference = job.destination + " holds more than the sources, from byte " + std::to_string(at);
    same = false;
  }
  joined.FClose();
  job.verifySeconds = std::chrono::duration<double>(Clock::now() - start).count();
  if (stop && same) {
    job.verification = "cancelled after " + std::to_string(at) + " of " + std::to_string(job.bytes) + " bytes";
    return false;
  }
  job.verification = same ? "identical" : "DIFFERENT: " + difference;
  return same;
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

std::string Plural(long long count, const char* noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

// A job's result, printed when it ends.
void PrintResult(const JobResult& job, double bitrate, TerminalDisplay& display) {
  const char* outcome = job.verified    ? "done"
                        : job.cancelled ? "cancelled"
                        : !job.ok       ? "failed"
                                        : "DIFFERENT";
  display.Print(job.description + ": " + outcome);
  char line[1024];
  if (job.ok) {
    const double mb = double(job.bytes) / 1e6;
    std::snprintf(line, sizeof line, "  %s: %s, %lld bytes in %.2f s (%.1f MB/s)", job.destination.c_str(),
                  Plural(job.segments, "segment").c_str(), job.bytes, job.seconds,
                  job.seconds > 0 ? mb / job.seconds : 0.0);
    display.Print(line);
    std::snprintf(line, sizeof line, "  at %.2f Mbit/s the title runs %s (29.97 drop-frame)", bitrate,
                  TitleLength(job.bytes, bitrate).c_str());
    display.Print(line);
    if (!job.verification.empty()) {
      std::snprintf(line, sizeof line, "  %s against the sources: %s (%.2f s)",
                    job.cancelled ? "the check" : "verified", job.verification.c_str(), job.verifySeconds);
      display.Print(line);
    }
    return;
  }
  // Where the copy stopped, and what it left.
  if (job.onDisk >= 0 && job.stoppedSource < job.sizes.size()) {
    std::snprintf(line, sizeof line, "  the copy stopped in %s (source %zu of %zu) at byte %lld of %lld",
                  job.sources[job.stoppedSource].c_str(), job.stoppedSource + 1, job.sources.size(), job.stoppedAt,
                  job.sizes[job.stoppedSource]);
    display.Print(line);
  }
  if (job.onDisk < 0) {
    display.Print("  nothing was written to " + job.destination);
    return;
  }
  std::snprintf(line, sizeof line, "  %s: %lld bytes on disk in %s, kept as written", job.destination.c_str(),
                job.onDisk, Plural(job.listed, "segment").c_str());
  display.Print(line);
  if (job.listed > 1) {
    display.Print("  the info file lists " + Plural(job.listed, "segment") + ", " +
                  (job.listedPresent ? "all present" : "SOME MISSING"));
  }
}

// After the loop: the jobs that never ran, and the exit status.
int Summarise(const std::vector<JobResult>& jobs, const std::vector<JobResult>& results, bool cancelled,
              TerminalDisplay& display) {
  std::size_t verified = 0;
  for (const JobResult& result : results) verified += result.verified ? 1 : 0;
  if (cancelled) {
    for (const JobResult& job : jobs) {
      const bool ran = std::any_of(results.begin(), results.end(),
                                   [&](const JobResult& result) { return result.description == job.description; });
      if (!ran) display.Print(job.description + ": cancelled before it started; nothing was written");
    }
    display.Print("cancelled: " + std::to_string(verified) + " of " + Plural(jobs.size(), "title") +
                  " joined and verified");
    return 130;
  }
  return !jobs.empty() && verified == jobs.size() ? 0 : 1;
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
  if (!ParseArguments(argc, argv, options)) return 2;
  if (options.help) {
    PrintHelp();
    return 0;
  }
  if (options.version) {
    // The version of the library that is loaded, which may be newer than
    // the headers this host was built with.
    std::printf("example_host (VantoroBasicUtils) %s\n", vbu::GetLibraryVersion());
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
    std::error_code error;
    std::filesystem::path base = std::filesystem::temp_directory_path(error);
    std::filesystem::path folder;
    for (unsigned attempt = 0; !error && attempt < 100 && folder.empty(); ++attempt) {
      std::filesystem::path candidate = base / ("vbu-example-" + std::to_string(std::random_device{}()));
      if (std::filesystem::create_directory(candidate, error)) folder = candidate;
    }
    if (!folder.empty()) {
      sampleFolder = folder.string();
      jobs = MakeDemoJobs(sampleFolder, display);
    } else {
      Complain("cannot make a temporary folder in " + base.string());
    }
  } else {
    JobResult job;
    job.description = "join";
    job.destination = options.destination;
    job.sources = options.sources;
    jobs.push_back(job);
  }

  // Both jobs go on the task list now; the second waits for the first. A
  // job whose files are refused never gets there.
  std::vector<JobResult> results;
  for (JobResult& job : jobs) (new JoinTask(job, options, &results, &display))->Execute();
  const bool cancelled = RunEventLoop(display);
  const int status = Summarise(jobs, results, cancelled, display);

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
