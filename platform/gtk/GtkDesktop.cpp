// The desktop module on GTK 3: the modal file chooser and message box, and
// the GLib source that pumps the library's queue. Built as a library of its
// own and loaded by the core library only when a dialog or box is first
// shown on a display, so the core never links the toolkit.
#include <gtk/gtk.h>

#include <atomic>
#include <condition_variable>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include <VantoroBasicUtils/messaging/LListener.h>
#include <VantoroBasicUtils/platform/FileChooser.h>
#include <VantoroBasicUtils/platform/MessageQueue.h>
#include <VantoroBasicUtils/platform/Thread.h>
#include <VantoroBasicUtils/tasks/CThreadDispatcher.h>

#include "platform/internal/DesktopModule.h"

namespace {

using Units = std::vector<unsigned short>;  // terminated 16-bit text

std::string ToUtf8(const unsigned short* text) {
  if (!text) return {};
  glong length = 0;
  while (text[length]) ++length;
  gchar* bytes = g_utf16_to_utf8(reinterpret_cast<const gunichar2*>(text), length, nullptr, nullptr, nullptr);
  std::string result = bytes ? bytes : "";
  g_free(bytes);
  return result;
}

Units ToUnits(const char* text) {
  Units units;
  glong length = 0;
  gunichar2* converted = text ? g_utf8_to_utf16(text, -1, nullptr, &length, nullptr) : nullptr;
  for (glong i = 0; converted && i < length; ++i) units.push_back(converted[i]);
  g_free(converted);
  units.push_back(0);
  return units;
}

void SetWhy(char* why, std::size_t size, const char* text) {
  if (why && size) g_strlcpy(why, text, size);
}

// GTK is started once, on the first thread that shows something: the
// user-interface thread. In a GTK host it is running already.
bool StartGtk(char* why, std::size_t size) {
  static int state = 0;  // 0 not tried, 1 running, -1 no display
  if (state == 0) state = gtk_init_check(nullptr, nullptr) ? 1 : -1;
  if (state < 0) SetWhy(why, size, "GTK could not open the display");
  return state > 0;
}

// The window the user works in: a new dialog is made modal to it.
GtkWindow* ActiveWindow() {
  GtkWindow* active = nullptr;
  GList* windows = gtk_window_list_toplevels();
  for (GList* item = windows; item; item = item->next) {
    GtkWindow* window = GTK_WINDOW(item->data);
    if (gtk_window_is_active(window) && gtk_widget_get_visible(GTK_WIDGET(window))) active = window;
  }
  g_list_free(windows);
  return active;
}

// Lets the toolkit take a closed dialog off the screen before the caller goes on.
void Settle() {
  while (gtk_events_pending()) gtk_main_iteration_do(FALSE);
}

// ---- file chooser

// A pattern of the desktop platform, matched there without regard to case:
// each letter becomes a class of both cases ("*.Vob" -> "*.[vV][oO][bB]"),
// and "*.*" means every file, with or without a dot.
std::string CaseBlindPattern(const std::string& pattern) {
  if (pattern == "*.*") return "*";
  std::string result;
  for (char c : pattern) {
    if (g_ascii_isalpha(c)) {
      result += '[';
      result += g_ascii_tolower(c);
      result += g_ascii_toupper(c);
      result += ']';
    } else {
      result += c;
    }
  }
  return result;
}

struct Filter {
  GtkFileFilter* filter;  // owned by the chooser
  Units patterns;
};

class ChooserView : public vbu::FileChooserView {
 public:
  ChooserView(GtkFileChooser* chooser, bool save, vbu::FileChooserClient& client)
      : mChooser(chooser), mSave(save), mClient(client) {}
  ~ChooserView() override {
    for (auto& [id, source] : mTimers) g_source_remove(source);
  }

  const unsigned short* GetFolder() override {
    gchar* folder = gtk_file_chooser_get_current_folder(mChooser);
    std::string text = folder ? folder : "";
    g_free(folder);
    if (text.empty() || text.back() != '/') text += '/';
    mFolder = ToUnits(text.c_str());
    return mFolder.data();
  }

  bool SetFolder(const unsigned short* path) override {
    return gtk_file_chooser_set_current_folder(mChooser, ToUtf8(path).c_str()) != FALSE;
  }

  const unsigned short* GetFileName() override {
    std::string name;
    if (mSave) {
      gchar* current = gtk_file_chooser_get_current_name(mChooser);
      name = current ? current : "";
      g_free(current);
    } else {
      gchar* selected = gtk_file_chooser_get_filename(mChooser);
      if (selected && !g_file_test(selected, G_FILE_TEST_IS_DIR)) name = selected;
      g_free(selected);
    }
    mName = ToUnits(name.c_str());
    return mName.data();
  }

  void SetFileName(const unsigned short* name) override {
    std::string text = ToUtf8(name);
    if (mSave) {
      gtk_file_chooser_set_current_name(mChooser, text.c_str());
    } else if (!text.empty()) {
      // An open chooser has no name to set: it selects the file, if it is there.
      gchar* folder = gtk_file_chooser_get_current_folder(mChooser);
      gchar* path = text[0] == '/' || !folder ? g_strdup(text.c_str()) : g_build_filename(folder, text.c_str(), nullptr);
      if (g_file_test(path, G_FILE_TEST_IS_REGULAR)) gtk_file_chooser_select_filename(mChooser, path);
      g_free(path);
      g_free(folder);
    }
  }

  void SetTimer(unsigned int id, unsigned int milliseconds) override {
    KillTimer(id);
    auto* tick = new Tick{this, id};
    mTimers[id] = g_timeout_add_full(G_PRIORITY_DEFAULT, milliseconds, &ChooserView::OnTick, tick,
                                     [](gpointer data) { delete static_cast<Tick*>(data); });
  }

  void KillTimer(unsigned int id) override {
    auto found = mTimers.find(id);
    if (found == mTimers.end()) return;
    g_source_remove(found->second);
    mTimers.erase(found);
  }

 private:
  struct Tick {
    ChooserView* view;
    unsigned int id;
  };

  static gboolean OnTick(gpointer data) {
    auto* tick = static_cast<Tick*>(data);
    ChooserView* view = tick->view;
    const unsigned int id = tick->id;
    const guint source = view->mTimers.count(id) ? view->mTimers[id] : 0;
    view->mClient.OnTimer(*view, id);  // may kill this timer, and so free `tick`
    auto found = view->mTimers.find(id);
    return found != view->mTimers.end() && found->second == source ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
  }

  GtkFileChooser* mChooser;
  bool mSave;
  vbu::FileChooserClient& mClient;
  Units mFolder, mName;
  std::map<unsigned int, guint> mTimers;
};

// One run of the chooser.
class ChooserRun {
 public:
  ChooserRun(const vbu::FileChooserRequest& request, vbu::FileChooserClient& client)
      : mRequest(request), mClient(client) {}

  int Run(vbu::FileChooserResult& result) {
    const bool save = !mRequest.open;
    GtkWindow* parent = mRequest.parent && GTK_IS_WINDOW(mRequest.parent) ? GTK_WINDOW(mRequest.parent) : ActiveWindow();
    mDialog = gtk_file_chooser_dialog_new(save ? "Save File" : "Open File", parent,
                                          save ? GTK_FILE_CHOOSER_ACTION_SAVE : GTK_FILE_CHOOSER_ACTION_OPEN,
                                          "_Cancel", GTK_RESPONSE_CANCEL, save ? "_Save" : "_Open",
                                          GTK_RESPONSE_ACCEPT, nullptr);
    gtk_window_set_modal(GTK_WINDOW(mDialog), TRUE);
    gtk_dialog_set_default_response(GTK_DIALOG(mDialog), GTK_RESPONSE_ACCEPT);
    mChooser = GTK_FILE_CHOOSER(mDialog);
    gtk_file_chooser_set_local_only(mChooser, TRUE);
    if (!save) gtk_file_chooser_set_select_multiple(mChooser, (mRequest.flags & vbu::kFileChooserAllowMultiSelect) != 0);
    // The overwrite question is asked here, on the completed name.
    gtk_file_chooser_set_do_overwrite_confirmation(mChooser, FALSE);
    AddFilters();
    SetStart();
    ChooserView view(mChooser, save, mClient);
    mView = &view;
    g_signal_connect(mDialog, "map", G_CALLBACK(&ChooserRun::OnMap), this);
    g_signal_connect(mDialog, "notify::filter", G_CALLBACK(&ChooserRun::OnFilter), this);
    g_signal_connect(mDialog, "response", G_CALLBACK(&ChooserRun::OnResponse), this);

    const int response = gtk_dialog_run(GTK_DIALOG(mDialog));
    int outcome = 0;
    if (response == GTK_RESPONSE_ACCEPT && !mChosen.empty()) {
      result.SetPathName(ToUnits(mChosen[0].c_str()).data());
      for (std::size_t i = 1; i < mChosen.size(); ++i) result.AddPathName(ToUnits(mChosen[i].c_str()).data());
      result.filterIndex = CurrentFilter();
      outcome = 1;
    }
    mView = nullptr;
    gtk_widget_destroy(mDialog);
    Settle();
    return outcome;
  }

 private:
  // "description|patterns|" pairs, ending in "|".
  void AddFilters() {
    std::vector<Units> parts(1);
    for (const unsigned short* c = mRequest.filter; c && *c; ++c) {
      if (*c == '|') {
        parts.back().push_back(0);
        parts.emplace_back();
      } else {
        parts.back().push_back(*c);
      }
    }
    for (std::size_t i = 0; i + 1 < parts.size(); i += 2) {
      if (parts[i].empty()) break;  // the final "|"
      Units patterns = parts[i + 1];
      if (patterns.empty()) patterns.push_back(0);
      GtkFileFilter* filter = gtk_file_filter_new();
      gtk_file_filter_set_name(filter, ToUtf8(parts[i].data()).c_str());
      gchar** each = g_strsplit(ToUtf8(patterns.data()).c_str(), ";", -1);
      for (gchar** p = each; *p; ++p) {
        if (**p) gtk_file_filter_add_pattern(filter, CaseBlindPattern(*p).c_str());
      }
      g_strfreev(each);
      gtk_file_chooser_add_filter(mChooser, filter);
      mFilters.push_back(Filter{filter, patterns});
    }
    if (mRequest.filterIndex >= 1 && mRequest.filterIndex <= mFilters.size()) {
      gtk_file_chooser_set_filter(mChooser, mFilters[mRequest.filterIndex - 1].filter);
    }
  }

  // The start name: a file, a folder, or patterns in a folder ("/media/*.vob").
  void SetStart() {
    const std::string start = ToUtf8(mRequest.fileName);
    const std::size_t slash = start.rfind('/');
    const std::string folder = slash == std::string::npos ? std::string() : start.substr(0, slash + 1);
    const std::string name = slash == std::string::npos ? start : start.substr(slash + 1);
    if (!start.empty() && g_file_test(start.c_str(), G_FILE_TEST_IS_DIR)) {
      gtk_file_chooser_set_current_folder(mChooser, start.c_str());
      return;
    }
    if (!folder.empty()) {
      gtk_file_chooser_set_current_folder(mChooser, folder.c_str());
    } else {
      // No folder: the process's current one, as the desktop platform's chooser does.
      gchar* current = g_get_current_dir();
      gtk_file_chooser_set_current_folder(mChooser, current);
      g_free(current);
    }
    if (name.empty() || name.find_first_of("*?") != std::string::npos) return;  // only patterns
    if (!mRequest.open) {
      gtk_file_chooser_set_current_name(mChooser, name.c_str());
    } else if (g_file_test(start.c_str(), G_FILE_TEST_IS_REGULAR)) {
      gtk_file_chooser_select_filename(mChooser, start.c_str());
    }
  }

  unsigned long CurrentFilter() const {
    GtkFileFilter* current = gtk_file_chooser_get_filter(mChooser);
    for (std::size_t i = 0; i < mFilters.size(); ++i) {
      if (mFilters[i].filter == current) return static_cast<unsigned long>(i + 1);
    }
    return mRequest.filterIndex;
  }

  static void OnMap(GtkWidget*, ChooserRun* run) {
    if (run->mMapped || !run->mView) return;
    run->mMapped = true;
    run->mClient.OnInitDone(*run->mView, run->CurrentFilter());
  }

  static void OnFilter(GObject*, GParamSpec*, ChooserRun* run) {
    if (run->mMapped && run->mView) run->mClient.OnTypeChange(*run->mView, run->CurrentFilter());
  }

  // OK: takes the files; a save completes a bare name with the extension of
  // the type chosen and asks before replacing a file, staying open on "no".
  static void OnResponse(GtkDialog* dialog, int response, ChooserRun* run) {
    if (response != GTK_RESPONSE_ACCEPT) return;
    run->mChosen.clear();
    if (run->mRequest.open) {
      GSList* files = gtk_file_chooser_get_filenames(run->mChooser);
      for (GSList* f = files; f; f = f->next) run->mChosen.emplace_back(static_cast<char*>(f->data));
      g_slist_free_full(files, g_free);
      return;
    }
    gchar* chosen = gtk_file_chooser_get_filename(run->mChooser);
    if (!chosen) return;
    std::string path = chosen;
    g_free(chosen);
    const std::size_t slash = path.rfind('/');
    if (path.find('.', slash == std::string::npos ? 0 : slash + 1) == std::string::npos) {
      const unsigned long filter = run->CurrentFilter();
      Units extension(256);
      const unsigned short* patterns = filter >= 1 && filter <= run->mFilters.size()
                                           ? run->mFilters[filter - 1].patterns.data()
                                           : run->mRequest.defaultExtension;
      vbu::FileChooserFilterExtension(patterns, extension.data(), static_cast<unsigned long>(extension.size()));
      path += ToUtf8(extension.data());
    }
    if ((run->mRequest.flags & vbu::kFileChooserOverwritePrompt) && g_file_test(path.c_str(), G_FILE_TEST_EXISTS) &&
        !ConfirmReplace(GTK_WINDOW(dialog), path)) {
      g_signal_stop_emission_by_name(dialog, "response");  // the chooser stays up
      return;
    }
    run->mChosen.push_back(path);
  }

  static bool ConfirmReplace(GtkWindow* parent, const std::string& path) {
    gchar* name = g_path_get_basename(path.c_str());
    GtkWidget* question = gtk_message_dialog_new(parent, GTK_DIALOG_MODAL, GTK_MESSAGE_QUESTION, GTK_BUTTONS_NONE,
                                                 "A file named \u201c%s\u201d already exists. Do you want to replace it?",
                                                 name);
    g_free(name);
    gtk_message_dialog_format_secondary_text(GTK_MESSAGE_DIALOG(question),
                                             "Replacing it will overwrite its contents.");
    gtk_dialog_add_buttons(GTK_DIALOG(question), "_Cancel", GTK_RESPONSE_CANCEL, "_Replace", GTK_RESPONSE_ACCEPT,
                           nullptr);
    gtk_dialog_set_default_response(GTK_DIALOG(question), GTK_RESPONSE_CANCEL);
    gtk_window_set_title(GTK_WINDOW(question), "Replace File");
    const bool replace = gtk_dialog_run(GTK_DIALOG(question)) == GTK_RESPONSE_ACCEPT;
    gtk_widget_destroy(question);
    return replace;
  }

  const vbu::FileChooserRequest& mRequest;
  vbu::FileChooserClient& mClient;
  GtkWidget* mDialog = nullptr;
  GtkFileChooser* mChooser = nullptr;
  ChooserView* mView = nullptr;
  std::vector<Filter> mFilters;
  std::vector<std::string> mChosen;
  bool mMapped = false;
};

int RunChooser(const vbu::FileChooserRequest& request, vbu::FileChooserClient& client, vbu::FileChooserResult& result,
               char* why, std::size_t size) {
  if (!StartGtk(why, size)) return -1;
  ChooserRun run(request, client);
  return run.Run(result);
}

// ---- message box

bool OnUserInterfaceThread() {
  return MThread::GetMainThreadId() == 0 || MThread::IsMainThread();
}

int ShowHere(const unsigned short* text, char* why, std::size_t size) {
  if (!StartGtk(why, size)) return -1;
  const std::string message = ToUtf8(text);
  GtkWidget* box = gtk_message_dialog_new(ActiveWindow(), GTK_DIALOG_MODAL, GTK_MESSAGE_WARNING, GTK_BUTTONS_OK, "%s",
                                          message.c_str());
  const char* title = g_get_application_name();
  gtk_window_set_title(GTK_WINDOW(box), title ? title : "Message");
  gtk_dialog_run(GTK_DIALOG(box));
  gtk_widget_destroy(box);
  Settle();
  return 1;
}

// A box asked for on a worker: the dispatcher window runs it on the
// user-interface thread while the worker waits for the answer.
struct BoxRequest : LListener {
  const unsigned short* text = nullptr;
  char* why = nullptr;
  std::size_t whySize = 0;
  int shown = 0;
  bool done = false;
  std::mutex mutex;
  std::condition_variable finished;

  bool ListenToMessage(long, void*) override {
    const int result = ShowHere(text, why, whySize);
    std::lock_guard<std::mutex> lock(mutex);
    shown = result;
    done = true;
    finished.notify_one();
    return true;
  }
};

constexpr long kShowBoxMessage = 0x7642;  // what the request's listener hears

int ShowMessage(const unsigned short* text, char* why, std::size_t size) {
  if (OnUserInterfaceThread()) return ShowHere(text, why, size);
  CThreadDispatcher* dispatcher = CThreadDispatcher::sThreadDispatcher;
  BoxRequest box;
  box.text = text;
  box.why = why;
  box.whySize = size;
  ListenerRequest request{&box, kShowBoxMessage, nullptr};
  if (!dispatcher ||
      !dispatcher->PostMessage(WM_THREADBROADCAST, 0, reinterpret_cast<intptr_t>(&request))) {
    SetWhy(why, size, "the user-interface thread has no task dispatcher to show it");
    return -1;
  }
  std::unique_lock<std::mutex> lock(box.mutex);
  box.finished.wait(lock, [&] { return box.done; });
  return box.shown;
}

// ---- the GLib source of the library's queue

// Set by the queue's wake-up on the posting thread; the source runs when it is set.
std::atomic<bool> gPosted{false};
GSource* gSource = nullptr;
GMainContext* gContext = nullptr;

gboolean Prepare(GSource*, gint* timeout) {
  *timeout = -1;  // no polling: only the wake-up brings the loop here
  return gPosted.load();
}

gboolean Check(GSource*) { return gPosted.load(); }

gboolean Dispatch(GSource*, GSourceFunc, gpointer) {
  gPosted.store(false);  // before pumping: a message posted meanwhile sets it again
  MThreadQueue::PumpMessages();
  return G_SOURCE_CONTINUE;
}

GSourceFuncs gQueueFuncs = {Prepare, Check, Dispatch, nullptr, nullptr, nullptr};

void WakeUp(void* context) {
  gPosted.store(true);
  g_main_context_wakeup(static_cast<GMainContext*>(context));
}

bool AttachToMainLoop() {
  if (gSource) return true;
  CThreadDispatcher::GetThreadDispatcher();  // this thread becomes the main thread
  gContext = g_main_context_default();
  gSource = g_source_new(&gQueueFuncs, sizeof(GSource));
  g_source_set_name(gSource, "VantoroBasicUtils queue");
  g_source_attach(gSource, gContext);
  MThreadQueue::SetWakeUpHandler(&WakeUp, gContext);
  WakeUp(gContext);  // for what was queued before
  return true;
}

void DetachFromMainLoop() {
  if (!gSource) return;
  MThreadQueue::SetWakeUpHandler(nullptr, nullptr);
  g_source_destroy(gSource);
  g_source_unref(gSource);
  gSource = nullptr;
}

const vbu::platform::DesktopModule kModule = {vbu::platform::kDesktopModuleVersion, RunChooser, ShowMessage,
                                              AttachToMainLoop, DetachFromMainLoop};

}  // namespace

extern "C" __attribute__((visibility("default"))) const vbu::platform::DesktopModule* VantoroBasicUtilsDesktopModule() {
  return &kModule;
}
