// DesktopModule.h: the desktop module, a library of its own beside this one
// (VantoroBasicUtils/libVantoroBasicUtils-gtk.so), that shows the file chooser and message
// boxes as real windows. The library loads it at the first dialog or box
// when there is a display, so that a host that shows none never loads the
// toolkit. Internal; never installed.
//
//   std::string why;
//   const vbu::platform::DesktopModule* desktop = vbu::platform::Desktop(true, &why);
//   if (!desktop) vbu::platform::WriteErrorLine(("no dialog: " + why).c_str());
#pragma once

#include <cstddef>
#include <string>

#include "platform/FileChooser.h"

namespace vbu::platform {

// The module's one entry, kDesktopModuleEntry, gives this table.
struct DesktopModule {
  unsigned int version;  // kDesktopModuleVersion
  // Shows the chooser on the calling thread: 1 chosen, 0 cancelled, -1 not
  // shown (then `why`, terminated, says why).
  int (*RunChooser)(const FileChooserRequest& request, FileChooserClient& client, FileChooserResult& result,
                    char* why, std::size_t whySize);
  // Shows a message box (on the user-interface thread, handed over there
  // from any other): 1 once the user has closed it, -1 if it could not be shown.
  int (*ShowMessage)(const unsigned short* text, char* why, std::size_t whySize);
  // Has the calling thread's GLib main loop pump the library's queue.
  bool (*AttachToMainLoop)();
  void (*DetachFromMainLoop)();
};

constexpr unsigned int kDesktopModuleVersion = 1;
constexpr const char* kDesktopModuleEntry = "VantoroBasicUtilsDesktopModule";
// Beside the library, in a folder of its own, as a system keeps its modules.
constexpr const char* kDesktopModuleFile = "VantoroBasicUtils/libVantoroBasicUtils-gtk.so";

// The module, loaded on first use from the folder of this library. With
// `needDisplay`, only when DISPLAY or WAYLAND_DISPLAY is set. Null, with
// `*why` (may be null) saying why, when it is not there.
const DesktopModule* Desktop(bool needDisplay, std::string* why);

// Writes `line` and a line end to standard error.
void WriteErrorLine(const char* line);

}  // namespace vbu::platform
