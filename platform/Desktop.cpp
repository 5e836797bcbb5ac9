// Loads the desktop module (platform/gtk) on first use, from the folder this
// library was loaded from, so that a tree installed under any prefix finds
// its own module. The system file (linux/Desktop.inc) knows the loader's flags.
#include "platform/internal/DesktopModule.h"

#include <cstring>
#include <mutex>

#include "platform/GLibMainLoop.h"
#include "platform/internal/SysCalls.h"

namespace vbu::platform::os {

// Opens the module file `path`: its handle, or null.
void* OpenDesktopModule(const char* path);

}  // namespace vbu::platform::os

#if defined(__linux__)
#include "linux/Desktop.inc"
#else
#error "The platform layer has no desktop module loader for this system yet."
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
    const char* self = Sys().module_file(reinterpret_cast<const void*>(&Desktop));
    std::string path = self ? self : "";
    std::size_t slash = path.rfind('/');
    path = slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
    return path + kDesktopModuleFile;
  }

  void Load() {
    tried = true;
    const std::string path = ModulePath();
    void* handle = os::OpenDesktopModule(path.c_str());
    if (!handle) {
      const char* error = Sys().dlerror();
      failure = std::string(kDesktopModuleFile) + " could not be loaded (" + (error ? error : path) + ")";
      return;
    }
    using Entry = const DesktopModule* (*)();
    auto entry = reinterpret_cast<Entry>(Sys().dlsym(handle, kDesktopModuleEntry));
    const DesktopModule* table = entry ? entry() : nullptr;
    if (!table || table->version != kDesktopModuleVersion) {
      failure = path + " is not a desktop module of this version";
      Sys().dlclose(handle);
      return;
    }
    module = table;  // stays loaded until the process ends
  }
};

Loader& TheLoader() {
  static Loader* loader = new Loader;  // never destroyed: boxes may come from exit handlers
  return *loader;
}

bool HasDisplay() {
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY"}) {
    const char* value = Sys().getenv(name);
    if (value && *value) return true;
  }
  return false;
}

}  // namespace

const DesktopModule* Desktop(bool needDisplay, std::string* why) {
  if (needDisplay && !HasDisplay()) {
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
  for (std::size_t done = 0; done < bytes.size();) {
    long wrote = Sys().write(2, bytes.data() + done, bytes.size() - done);
    if (wrote <= 0) return;  // nowhere to show it
    done += static_cast<std::size_t>(wrote);
  }
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
