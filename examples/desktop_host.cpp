// desktop_host: the library's main job in a GTK window, the way a DVD
// authoring tool does it. "Add sources…" picks media files in the library's
// open dialog (several at once, the DVD media types), "Join to…" names the
// destination in its save dialog and joins the sources into it on a worker
// task; a bar shows the progress with MB/s and the time left, "Cancel"
// stops the task, and the result is read back against the sources. Errors
// reach the user in a message box.
//
//   desktop_host [--slow]     (--slow: the worker pauses at each report, so that Cancel can be clicked)
//
// The parts a GTK host copies:
//   - main(): gtk_init, then vbu::AttachToGLibMainLoop(), which makes this
//     thread the library's main thread and has gtk_main() pump its queue;
//   - ProgressRelay and MessageRelay: listeners that run on the worker and
//     hand copies of progress reports (29990) and user messages (26000...)
//     to the user-interface thread through WM_THREADBROADCAST;
//   - JoinTask: a self-destroying worker task whose PostPlay, on the
//     user-interface thread, shows the result.
// Each result is also printed on standard output, one line, for scripts.
#include <VantoroBasicUtils/VantoroBasicUtils.h>
#include <VantoroBasicUtils/environment/MFileDialog.h>
#include <gtk/gtk.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
constexpr long long kSector = MFileUniv::kSectorSize;  // the unit of progress reports
constexpr long kBufferSectors = 2048;  // the engine's buffers: 4 MiB
constexpr long kMsgProgressNote = 70001;
constexpr long kMsgUserMessageNote = 70002;

// ---- text between the library's 16-bit strings and GTK's UTF-8, which is
// the system's code page: the library converts both ways itself.

MString Units(const std::string& text) {
  MString result;
  result.ImportASCII(text.c_str(), -1);
  return result;
}

std::string Utf8(const unsigned short* units) {
  MString text(units);
  std::string result(static_cast<std::size_t>(text.GetLength()) * 4 + 1, '\0');  // room for any code point
  result.resize(static_cast<std::size_t>(text.ExportASCII(result.data(), static_cast<int>(result.size()) - 1,
                                                          kCharacterSetWindows)));
  return result;
}

void Complain(const std::string& text) { CMessageAction::Error(nullptr, Units(text), 0); }

// ---- the window

struct Window {
  GtkWidget* window;
  GtkWidget* sources;   // the list of sources, as text
  GtkWidget* add;
  GtkWidget* join;
  GtkWidget* cancel;
  GtkWidget* bar;
  GtkWidget* status;
  std::vector<std::string> paths;
  class JoinTask* running = nullptr;
  bool slow = false;
  bool closed = false;  // the window is gone: nothing more to show
  // The progress of the running job, on the user-interface thread.
  Clock::time_point started;
  long long done = 0, total = 0;
} gWindow;

void ShowSources() {
  if (gWindow.closed) return;
  std::string text;
  for (const std::string& path : gWindow.paths) text += path + "\n";
  gtk_label_set_text(GTK_LABEL(gWindow.sources), text.empty() ? "(no sources)" : text.c_str());
  gtk_widget_set_sensitive(gWindow.join, !gWindow.paths.empty() && !gWindow.running);
}

void SetRunning(JoinTask* task) {
  gWindow.running = task;
  if (gWindow.closed) return;
  gtk_widget_set_sensitive(gWindow.add, task == nullptr);
  gtk_widget_set_sensitive(gWindow.cancel, task != nullptr);
  ShowSources();
}

void ShowStatus(const std::string& text) {
  if (!gWindow.closed) gtk_label_set_text(GTK_LABEL(gWindow.status), text.c_str());
  std::printf("%s\n", text.c_str());
  std::fflush(stdout);
}

// ---- the job

// Joins the sources end to end into a segmented destination, each padded
// with zeros to whole sectors, then reads the destination back against them.
class JoinTask : public CBrevanderThread {
 public:
  JoinTask(std::vector<std::string> sources, std::string destination)
      : mSources(std::move(sources)), mDestination(std::move(destination)) {
    SetWorkerThread(true);
    mSingleRun = true;
    mHasProgress = true;
  }

  // User-interface thread: sources that cannot be read stop the job here.
  bool PrePlay() override {
    mTotal = 0;
    for (const std::string& source : mSources) {
      MFileUniv file;
      if (file.FOpen(Units(source), MFile::file_read_binary) != 0) {
        Complain("Cannot read " + source + ". Nothing was written.");
        return false;
      }
      mTotal += (file.GetSize() + kSector - 1) / kSector * kSector;
      file.FClose();
    }
    return CBrevanderThread::PrePlay();
  }

  void RunSelf() override {
    const Clock::time_point start = Clock::now();
    CThreadStatus::Status(0, mTotal / kSector, Units("joining"));
    MFiles destination;
    destination.SetMaxFileSize(1LL << 40);
    if (destination.FOpen(Units(mDestination), MFile::file_overlapped_create) != 0) {
      Complain("Cannot write " + mDestination + ".");
      return;
    }
    bool ok = destination.ConcatInitialize(kBufferSectors, 0) == 0;
    for (std::size_t i = 0; ok && i < mSources.size() && !mStop; ++i) {
      MString source = Units(mSources[i]);
      if (destination.ConcatFile(source, 0, mStop) != 0) {
        Complain("Cannot join " + mSources[i] + " into " + mDestination + ".");
        ok = false;
      }
    }
    mSegments = destination.GetCount();
    if (destination.FClose() != 0) ok = false;
    mSeconds = std::chrono::duration<double>(Clock::now() - start).count();
    mOk = ok && !mStop;
    if (mOk) mVerified = Verify();
    if (mStop) mListedPresent = ListedSegmentsExist();
  }

  // User-interface thread, through the dispatcher.
  void PostPlay() override {
    char line[512];
    if (mStop) {
      std::snprintf(line, sizeof line, "Cancelled: %s lists %d segment(s), %s.", mDestination.c_str(), mListed,
                    mListedPresent ? "all of them present" : "SOME MISSING");
    } else if (!mOk) {
      std::snprintf(line, sizeof line, "Failed: %s.", mDestination.c_str());
    } else {
      std::snprintf(line, sizeof line, "Joined %zu source(s), %lld bytes, into %s in %.2f s (%d segment(s)); %s.",
                    mSources.size(), mTotal, mDestination.c_str(), mSeconds, mSegments,
                    mVerified ? "verified: identical" : "VERIFICATION FAILED");
    }
    if (mOk && !gWindow.closed) gtk_progress_bar_set_fraction(GTK_PROGRESS_BAR(gWindow.bar), 1.0);
    if (mStop && !gWindow.closed) gtk_progress_bar_set_text(GTK_PROGRESS_BAR(gWindow.bar), "cancelled");
    ShowStatus(line);
    if (mOk && !mVerified) Complain("The destination " + mDestination + " differs from its sources.");
    SetRunning(nullptr);
  }

  // Worker: each progress report; the engine's flag is a plain bool, so
  // only the worker sets it, when the task has been asked to stop.
  void Heard() {
    if (!ShouldStart()) mStop = true;
  }

 private:
  bool Verify() {
    MFiles joined;
    if (joined.FOpen(Units(mDestination), MFile::file_read_binary) != 0) return false;
    std::vector<char> expected(1 << 20), actual(1 << 20);
    bool same = true;
    for (const std::string& path : mSources) {
      MFileUniv source;
      if (source.FOpen(Units(path), MFile::file_read_binary) != 0) return false;
      long long left = (source.GetSize() + kSector - 1) / kSector * kSector;
      while (same && left > 0) {
        const int count = static_cast<int>(std::min<long long>(left, static_cast<long long>(expected.size())));
        std::memset(expected.data(), 0, static_cast<std::size_t>(count));  // the padding is zeros
        const int read = source.FRead(expected.data(), count);
        same = read >= 0 && joined.FRead(actual.data(), count) == count &&
               std::memcmp(expected.data(), actual.data(), static_cast<std::size_t>(count)) == 0;
        left -= count;
      }
      source.FClose();
    }
    same = same && joined.FRead(actual.data(), 1) == 0;  // nothing behind the last source
    joined.FClose();
    return same;
  }

  bool ListedSegmentsExist() {
    MFiles joined;
    if (joined.FOpen(Units(mDestination), MFile::file_read_binary) != 0) return false;
    mListed = joined.GetCount();
    bool present = true;
    LListIterator segments(*joined.GetFileNames());
    for (MFileSpecWin* spec; segments.Next(&spec);) present = present && MFile::FileExist(spec->GetFilePath());
    joined.FClose();
    return present;
  }

  std::vector<std::string> mSources;
  std::string mDestination;
  long long mTotal = 0;
  bool mStop = false;
  bool mOk = false, mVerified = false, mListedPresent = false;
  int mSegments = 0, mListed = 0;
  double mSeconds = 0;
};

// ---- hand-overs from the worker to the user-interface thread

struct ProgressNote {
  ListenerRequest request;
  int mask;
  long long position, range;
};

struct UserMessageNote {
  ListenerRequest request;
  std::string text;
};

// Hears 29990 on the worker and posts a copy; hears the copy on the
// user-interface thread and moves the bar.
class ProgressRelay : public LListener {
 public:
  bool ListenToMessage(long message, void* param) override {
    if (message == kMsgThreadStatus) {
      const auto* record = static_cast<const ThreadStatusRecord*>(param);
      if (gWindow.running) gWindow.running->Heard();
      auto* note = new ProgressNote{{this, kMsgProgressNote, nullptr}, record->mask, record->position, record->range};
      note->request.param = note;
      CThreadDispatcher::sThreadDispatcher->PostMessage(WM_THREADBROADCAST, 0, reinterpret_cast<intptr_t>(&note->request));
      if (gWindow.slow) std::this_thread::sleep_for(std::chrono::milliseconds(200));
      return true;
    }
    if (message != kMsgProgressNote) return false;
    auto* note = static_cast<ProgressNote*>(param);
    if (note->mask & kStatusRange) {
      gWindow.total = note->range * kSector;
      gWindow.done = note->position * kSector;
      gWindow.started = Clock::now();
    }
    if (note->mask & kStatusAdvance) gWindow.done += note->position * kSector;
    delete note;
    if (gWindow.closed) return true;
    const double seconds = std::chrono::duration<double>(Clock::now() - gWindow.started).count();
    const double rate = seconds > 0 ? gWindow.done / seconds : 0;
    const double left = rate > 0 ? (gWindow.total - gWindow.done) / rate : 0;
    char text[128];
    std::snprintf(text, sizeof text, "%.1f MB/s, %.0f s left", rate / 1e6, left);
    gtk_progress_bar_set_fraction(GTK_PROGRESS_BAR(gWindow.bar),
                                  gWindow.total > 0 ? static_cast<double>(gWindow.done) / gWindow.total : 0);
    gtk_progress_bar_set_text(GTK_PROGRESS_BAR(gWindow.bar), text);
    return true;
  }
};

// Hears the errors and warnings of the library and of the job, on any
// thread, and shows each in a message box on the user-interface thread.
class MessageRelay : public LListener {
 public:
  bool ListenToMessage(long message, void* param) override {
    if (message == kMsgUserMessageNote) {
      auto* note = static_cast<UserMessageNote*>(param);
      ShowStatus("Error: " + note->text);
      vbu::ShowMessageBox(Units(note->text));
      delete note;
      return true;
    }
    // Errors and warnings, of every window type.
    const long offset = message - kMsgInteractionBase;
    if (offset < 0 || offset >= 6 * kMsgInteractionWindowStep || offset % kMsgInteractionWindowStep > 1) return false;
    const auto* record = static_cast<const InteractionRecord*>(param);
    auto* note = new UserMessageNote{{this, kMsgUserMessageNote, nullptr}, Utf8(record->text)};
    note->request.param = note;
    CThreadDispatcher::sThreadDispatcher->PostMessage(WM_THREADBROADCAST, 0, reinterpret_cast<intptr_t>(&note->request));
    return true;
  }
};

// ---- the buttons

void OnAdd(GtkButton*, gpointer) {
  MFileDialogWin dialog(gWindow.window);
  dialog.AddFilters(false, false, true);
  dialog.AddFilter(Units("DVD Video Objects (vob)"), Units("*.vob"), nullptr);
  dialog.SetMultipleSelection(true);
  if (!dialog.Execute()) return;
  for (int i = 0; i < dialog.GetFileCount(); ++i) gWindow.paths.push_back(Utf8(dialog.GetFile(i).GetFilePath()));
  ShowSources();
}

void OnJoin(GtkButton*, gpointer) {
  MFileSaveDialogWin dialog;
  dialog.SetParent(gWindow.window);
  dialog.AddFilter(Units("DVD Video Objects (vob)"), Units("*.vob"), nullptr);
  dialog.AddFilters(false, false, true);
  if (!dialog.Execute()) return;
  auto* task = new JoinTask(gWindow.paths, Utf8(dialog.GetFileSpec().GetFilePath()));
  gtk_progress_bar_set_fraction(GTK_PROGRESS_BAR(gWindow.bar), 0);
  gtk_progress_bar_set_text(GTK_PROGRESS_BAR(gWindow.bar), "starting");
  gtk_label_set_text(GTK_LABEL(gWindow.status), "Joining\u2026");
  SetRunning(task);
  if (!task->Execute()) SetRunning(nullptr);  // refused in PrePlay: the task is gone, the message shown
}

void OnCancel(GtkButton*, gpointer) {
  if (gWindow.running) gWindow.running->Abort();
}

GtkWidget* Button(const char* label, GCallback handler) {
  GtkWidget* button = gtk_button_new_with_mnemonic(label);
  g_signal_connect(button, "clicked", handler, nullptr);
  return button;
}

}  // namespace

int main(int argc, char** argv) {
  gtk_init(&argc, &argv);
  for (int i = 1; i < argc; ++i) gWindow.slow = gWindow.slow || std::strcmp(argv[i], "--slow") == 0;
  g_set_application_name("Desktop Host");
  if (!vbu::AttachToGLibMainLoop()) return 1;  // the desktop module is missing

  ProgressRelay progress;
  MessageRelay messages;
  CThreadStatus::GetThreadStatus()->AddListener(&progress);
  CMessageAction::GetMessageAction()->AddListener(&messages);

  gWindow.window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_window_set_title(GTK_WINDOW(gWindow.window), "Desktop Host: join sources");
  gtk_window_set_default_size(GTK_WINDOW(gWindow.window), 640, 360);
  g_signal_connect(gWindow.window, "destroy", G_CALLBACK(+[](GtkWidget*, gpointer) {
                     gWindow.closed = true;
                     gtk_main_quit();
                   }), nullptr);
  GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 8);
  gtk_container_set_border_width(GTK_CONTAINER(box), 12);
  GtkWidget* buttons = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
  gWindow.add = Button("_Add sources\u2026", G_CALLBACK(OnAdd));
  gWindow.join = Button("_Join to\u2026", G_CALLBACK(OnJoin));
  gWindow.cancel = Button("_Cancel", G_CALLBACK(OnCancel));
  for (GtkWidget* b : {gWindow.add, gWindow.join, gWindow.cancel}) gtk_box_pack_start(GTK_BOX(buttons), b, FALSE, FALSE, 0);
  gWindow.sources = gtk_label_new(nullptr);
  gtk_label_set_xalign(GTK_LABEL(gWindow.sources), 0);
  gtk_label_set_yalign(GTK_LABEL(gWindow.sources), 0);
  gWindow.bar = gtk_progress_bar_new();
  gtk_progress_bar_set_show_text(GTK_PROGRESS_BAR(gWindow.bar), TRUE);
  gWindow.status = gtk_label_new("Add sources, then join them.");
  gtk_label_set_xalign(GTK_LABEL(gWindow.status), 0);
  gtk_label_set_line_wrap(GTK_LABEL(gWindow.status), TRUE);
  gtk_box_pack_start(GTK_BOX(box), buttons, FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(box), gWindow.sources, TRUE, TRUE, 0);
  gtk_box_pack_start(GTK_BOX(box), gWindow.bar, FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(box), gWindow.status, FALSE, FALSE, 0);
  gtk_container_add(GTK_CONTAINER(gWindow.window), box);
  SetRunning(nullptr);
  gtk_widget_show_all(gWindow.window);

  gtk_main();

  // A job still running is stopped, and its end handled, before the library goes.
  if (gWindow.running) gWindow.running->Abort();
  for (int i = 0; i < 500 && gWindow.running; ++i) {
    g_main_context_iteration(nullptr, FALSE);
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  CMessageAction::GetMessageAction()->RemoveListener(&messages);
  CThreadStatus::GetThreadStatus()->RemoveListener(&progress);
  vbu::DetachFromGLibMainLoop();
  CThreadDispatcher::DeleteAll();
  return 0;
}
