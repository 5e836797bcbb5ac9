// Where the desktop module cannot be had, a dialog answers "cancelled" and a
// message box goes to standard error, each with no window and no wait; the
// dialog says why on standard error, in one line.
#include <VantoroBasicUtils/environment/MFileDialog.h>
#include <VantoroBasicUtils/platform/FileChooser.h>
#include <VantoroBasicUtils/platform/GLibMainLoop.h>
#include <VantoroBasicUtils/platform/MessageBox.h>

#include <gtest/gtest.h>

#include <string>

#include "platform/FaultInjection.h"
#include "platform/internal/DesktopModule.h"

namespace vp = vbu::platform;
using namespace vbu::literals;

namespace {

// A display is there (or not), the module cannot be loaded, and standard
// error is kept.
class StDesktopWithoutModule : public StSysCallTable {
 public:
  explicit StDesktopWithoutModule(const char* display) {
    sDisplay = display;
    sError.clear();
    vp::Sys().getenv = [](const char* name) -> const char* {
      return std::string(name) == "DISPLAY" ? sDisplay : nullptr;
    };
    vp::Sys().dlopen = [](const char*, int) -> void* { return nullptr; };
    vp::Sys().dlerror = []() -> const char* { return "no such module here"; };
    vp::Sys().write = [](int fd, const void* buffer, std::size_t count) -> long {
      if (fd != 2) return vp::DefaultSysCalls().write(fd, buffer, count);
      sError.append(static_cast<const char*>(buffer), count);
      return static_cast<long>(count);
    };
  }
  static inline const char* sDisplay = nullptr;
  static inline std::string sError;
};

TEST(DesktopModule, WithoutItDialogsCancelAndSayWhy) {
  struct Case {
    const char* display;
    const char* why;
  };
  const Case cases[] = {
      {nullptr, "VantoroBasicUtils: no file dialog shown, cancelled: there is no display (neither DISPLAY nor "
                "WAYLAND_DISPLAY is set)\n"},
      {"", "VantoroBasicUtils: no file dialog shown, cancelled: there is no display (neither DISPLAY nor "
           "WAYLAND_DISPLAY is set)\n"},
      {":0", "VantoroBasicUtils: no file dialog shown, cancelled: VantoroBasicUtils/libVantoroBasicUtils-gtk.so "
             "could not be loaded (no such module here)\n"},
  };
  for (const Case& c : cases) {
    StDesktopWithoutModule desktop(c.display);
    MFileDialogWin open;
    open.AddFilters(true, true, true);
    EXPECT_FALSE(open.Execute());
    MFileSaveDialogWin save;
    EXPECT_FALSE(save.Execute());
    EXPECT_EQ(desktop.sError, std::string(c.why) + c.why) << (c.display ? c.display : "no DISPLAY");
  }
}

TEST(DesktopModule, WithoutItBoxesGoToStandardError) {
  for (const char* display : {static_cast<const char*>(nullptr), ":0"}) {
    StDesktopWithoutModule desktop(display);
    vbu::ShowMessageBox(u"Folder( /media/cdrom ) is a read-only drive. please use other drive."_u16);
    EXPECT_EQ(desktop.sError, "Folder( /media/cdrom ) is a read-only drive. please use other drive.\n");
  }
}

TEST(DesktopModule, WithoutItNoMainLoopIsAttached) {
  StDesktopWithoutModule desktop(":0");
  EXPECT_FALSE(vbu::AttachToGLibMainLoop());
  vbu::DetachFromGLibMainLoop();  // nothing attached: nothing happens
  EXPECT_NE(desktop.sError.find("not attached to the GLib main loop"), std::string::npos);
}

}  // namespace
