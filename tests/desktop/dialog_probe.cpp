// A host that links only the core library and shows its dialogs, for the
// tests in real windows (dialog_test.sh drives it with xdotool):
//   dialog_probe open START [several]       the open dialog with the media filters
//   dialog_probe save START VIDEO AUDIO     a save dialog whose "Video" and "Audio"
//                                           types have folders of their own
//   dialog_probe box-from-worker TEXT       a message box asked for on a worker
//   dialog_probe no-dialog                  the library at work, no dialog: is GTK loaded?
// It prints what the dialog gave: "chosen PATH" lines and "filter N", or
// "cancelled".
#include <VantoroBasicUtils/VantoroBasicUtils.h>
#include <VantoroBasicUtils/environment/MFileDialog.h>
#include <VantoroBasicUtils/tasks/CThreadDispatcher.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>

namespace {

std::u16string Units(const char* text) {
  std::u16string units;
  for (const char* c = text; *c; ++c) units += static_cast<char16_t>(static_cast<unsigned char>(*c));
  return units;
}

const unsigned short* U(const std::u16string& text) { return reinterpret_cast<const unsigned short*>(text.c_str()); }

std::string Bytes(const MString& text) {
  std::string bytes;
  for (int i = 0; i < text.GetLength(); ++i) bytes += static_cast<char>(text[i]);
  return bytes;
}

int Report(MFileDialogWin& dialog, bool ok) {
  if (!ok) {
    std::printf("cancelled\n");
    return 0;
  }
  for (int i = 0; i < dialog.GetFileCount(); ++i) std::printf("chosen %s\n", Bytes(dialog.GetFile(i).GetFilePath()).c_str());
  std::printf("path %s\nfilter %d\n", Bytes(dialog.GetFileSpec().GetFilePath()).c_str(), dialog.GetSelectedFilter());
  return 0;
}

bool GtkLoaded() {
  std::ifstream maps("/proc/self/maps");
  std::string line;
  while (std::getline(maps, line)) {
    if (line.find("libgtk-3") != std::string::npos || line.find("VantoroBasicUtils-gtk") != std::string::npos) return true;
  }
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  const std::string mode = argc > 1 ? argv[1] : "";
  if (mode == "open" && argc >= 3) {
    MFileDialogWin dialog;
    dialog.AddFilters(true, true, true);
    MFileSpecWin start(U(Units(argv[2])));
    dialog.SetFileSpec(start);
    dialog.SetMultipleSelection(argc > 3 && std::strcmp(argv[3], "several") == 0);
    return Report(dialog, dialog.Execute());
  }
  if (mode == "save" && argc >= 5) {
    MFileSaveDialogWin dialog;
    dialog.AddFilter(U(u"All files (*.*)"), U(u"*.*"), nullptr);
    dialog.AddFilter(U(u"Video (mpv)"), U(u"*.mpv;*.mpg"), U(Units(argv[3])));
    dialog.AddFilter(U(u"Audio (ac3)"), U(u"*.ac3"), U(Units(argv[4])));
    MFileSpecWin start(U(Units(argv[2])));
    dialog.SetFileSpec(start);
    return Report(dialog, dialog.Execute());
  }
  if (mode == "box-from-worker" && argc >= 3) {
    // The user-interface thread: its dispatcher, and a loop that pumps the queue.
    CThreadDispatcher::GetThreadDispatcher();
    const unsigned long uiThread = MThreadQueue::CurrentThreadId();
    std::atomic<bool> done{false};
    const std::u16string text = Units(argv[2]);
    std::thread worker([&] {
      vbu::ShowMessageBox(U(text));
      done = true;
      MThreadQueue::PostThreadMessage(uiThread, 0x400, 0, 0);  // wakes the loop
    });
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!done && std::chrono::steady_clock::now() < limit) {
      if (MThreadQueue::WaitMessage(100)) MThreadQueue::PumpMessages();
      MMessage message;
      while (MThreadQueue::PeekMessage(message)) MThreadQueue::DispatchMessage(message);
    }
    if (!done) {
      std::printf("the box never returned\n");
      std::fflush(stdout);
      std::_Exit(1);
    }
    worker.join();
    std::printf("box returned\n");
    CThreadDispatcher::DeleteAll();
    return 0;
  }
  if (mode == "no-dialog") {
    // What a terminal host does: a task dispatcher, messages, a file; no dialog, no box.
    CThreadDispatcher::GetThreadDispatcher();
    MFileDialogWin dialog;  // made, never run
    dialog.AddFilters(true, true, true);
    CMessageAction::Inform(nullptr, U(u"working"), 0);
    MThreadQueue::PumpMessages();
    CThreadDispatcher::DeleteAll();
    const bool loaded = GtkLoaded();
    std::printf("%s\n", loaded ? "GTK loaded" : "GTK not loaded");
    return loaded ? 1 : 0;
  }
  std::fprintf(stderr, "usage: dialog_probe open START [several] | save START VIDEO AUDIO | box-from-worker TEXT | no-dialog\n");
  return 2;
}
