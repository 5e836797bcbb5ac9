// Loads the desktop module (platform/gtk) on first use, from the folder this
// library was loaded from, so that a tree installed under any prefix finds
// its own module. The system file (linux/Desktop.inc) knows the loader's flags.
#include "platform/internal/DesktopModule.h"

#include <cstring>
#include <mutex>

#include "platform/GLibMainLoop.h"
#include "platform/internal/Environment.h"
#include "platform/internal/SysCalls.h"
#include "text/PathText.h"

namespace vbu::platform::os {

// The desktop built into the library where the system has one of its own
// (null where it comes as a module).
const DesktopModule* BuiltInDesktop();
// Opens the module file `path`: its handle, or null; why the last open failed, or null.
void* OpenDesktopModule(const char* path);
const char* ModuleError();
// The file of the loaded module that holds `address`, or empty.
std::string ModuleFileOf(const void* address);
// True when there is a display to show windows on.
bool HasDisplay();
// Writes the bytes to standard error; false where they cannot go.
bool WriteStandardError(const char* bytes, std::size_t count);

}  // namespace vbu::platform::os

#if defined(__linux__)
#include "linux/Desktop.inc"
#elif defined(_WIN32)
#include "windows/Desktop.inc"
#else
#error "The platform layer has no Desktop files for this system yet."
#endif

namespace vbu::platform {
namespace {

struct Loader {
  std::mutex mutex;
  bool tried = false;
  const DesktopModule* module = nullptr;
  std::string failure;  // why the module is not there, once tried

  // The module's file: beside the library that holds this function.
  static std::string ModulePath() {
    std::string path = os::ModuleFileOf(reinterpret_cast<const void*>(&Desktop));
    std::size_t slash = path.rfind(kPathSeparatorChar);
    path = slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
    return path + kDesktopModuleFile;
  }

  void Load() {
    tried = true;
    if ((module = os::BuiltInDesktop())) return;
    const std::string path = ModulePath();
    void* handle = os::OpenDesktopModule(path.c_str());
    if (!handle) {
      const char* error = os::ModuleError();
      failure = std::string(kDesktopModuleFile) + " could not be loaded (" + (error ? error : path) + ")";
      return;
    }
    using Entry = const DesktopModule* (*)();
    auto entry = reinterpret_cast<Entry>(FindModuleEntry(handle, kDesktopModuleEntry));
    const DesktopModule* table = entry ? entry() : nullptr;
    if (!table || table->version != kDesktopModuleVersion) {
      failure = path + " is not a desktop module of this version";
      FreeModule(handle);
      return;
    }
    module = table;  // stays loaded until the process ends
  }
};

Loader& TheLoader() {
  static Loader* loader = new Loader;  // never destroyed: boxes may come from exit handlers
  return *loader;
}

}  // namespace

const DesktopModule* Desktop(bool needDisplay, std::string* why) {
  if (needDisplay && !os::HasDisplay()) {
    if (why) *why = "there is no display (neither DISPLAY nor WAYLAND_DISPLAY is set)";
    return nullptr;
  }
  Loader& loader = TheLoader();
  std::lock_guard<std::mutex> guard(loader.mutex);
  if (!loader.tried) loader.Load();
  if (!loader.module && why) *why = loader.failure;
  return loader.module;
}

void WriteErrorLine(const char* line) {
  std::string bytes = std::string(line ? line : "") + "\n";
  os::WriteStandardError(bytes.data(), bytes.size());  // nowhere to show it otherwise
}

}  // namespace vbu::platform

namespace vbu {

bool AttachToGLibMainLoop() {
  std::string why;
  const platform::DesktopModule* desktop = platform::Desktop(false, &why);
  if (!desktop) {
    platform::WriteErrorLine(("VantoroBasicUtils: not attached to the GLib main loop: " + why).c_str());
    return false;
  }
  return desktop->AttachToMainLoop();
}

void DetachFromGLibMainLoop() {
  if (const platform::DesktopModule* desktop = platform::Desktop(false, nullptr)) desktop->DetachFromMainLoop();
}

}  // namespace vbu
