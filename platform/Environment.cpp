// The application's environment: names turn into the system's bytes and
// back here; the system file (linux/Environment.inc) asks the system.
#include "platform/internal/Environment.h"

#include <string>

#include "platform/internal/Errors.h"
#include "platform/internal/PathBytes.h"
#include "platform/internal/SysCalls.h"
#include "platform/internal/SystemText.h"
#include "text/PathText.h"

namespace vbu::platform::os {

// The running program's file, the user's home folder: 0 with `*bytes`, or the error code.
uint32_t ExecutablePath(std::string* bytes);
uint32_t HomeFolder(std::string* bytes);
// The system's own folder of the user's for settings (0), data (1) or
// caches (2): 0 with `*bytes`, or the error code where it has none.
uint32_t BaseFolder(int base, std::string* bytes);
// The variable `name`'s value when it is an absolute path: 0 with `*bytes`, or the error code.
uint32_t AbsoluteVariable(const char* name, std::string* bytes);
bool IsWritableFolder(const char* path);
bool Exists(const char* path);
uint32_t MakeFolder(const char* path);
void* LoadModule(const char* name);
void* FindModuleEntry(void* module, const char* name);
void FreeModule(void* module);

}  // namespace vbu::platform::os

#if defined(__linux__)
#include "linux/Environment.inc"
#elif defined(_WIN32)
#include "windows/Environment.inc"
#else
#error "The platform layer has no Environment files for this system yet."
#endif

namespace vbu::platform {
namespace {

std::u16string FromBytes(const std::string& bytes) { return FromSystemBytes(bytes.data(), bytes.size()); }

std::string HomeBytes() {
  std::string bytes;
  if (os::HomeFolder(&bytes) == 0 && !bytes.empty()) return bytes;
  if (os::AbsoluteVariable("HOME", &bytes) == 0) return bytes;
  return {};
}

}  // namespace

std::u16string ExecutablePath() {
  std::string bytes;
  if (os::ExecutablePath(&bytes) != 0) return {};
  return FromBytes(bytes);
}

std::u16string UserHomeFolder() { return FromBytes(HomeBytes()); }

std::u16string UserBaseFolder(UserBase base) {
  static const struct {
    const char* variable;
    const char* inHome;
  } kBases[] = {{"XDG_CONFIG_HOME", "/.config"}, {"XDG_DATA_HOME", "/.local/share"}, {"XDG_CACHE_HOME", "/.cache"}};
  const auto& which = kBases[static_cast<int>(base)];
  std::string bytes;
  if (os::BaseFolder(static_cast<int>(base), &bytes) == 0) return FromBytes(bytes);
  if (os::AbsoluteVariable(which.variable, &bytes) != 0) {
    bytes = HomeBytes();
    if (bytes.empty()) return {};
    bytes += which.inHome;
  }
  while (bytes.size() > 1 && bytes.back() == kPathSeparatorChar) bytes.pop_back();
  return FromBytes(bytes);
}

bool IsWritableFolder(const char16_t* folder) {
  PathBytes name(folder ? AsUnits(folder) : nullptr);
  return name.Ok() && os::IsWritableFolder(name.Get());
}

bool Exists(const char16_t* path) {
  PathBytes name(path ? AsUnits(path) : nullptr);
  return name.Ok() && os::Exists(name.Get());
}

uint32_t MakeFolder(const char16_t* path) {
  PathBytes name(path ? AsUnits(path) : nullptr);
  if (!name.Ok()) return name.Error();
  return os::MakeFolder(name.Get());
}

uint32_t MakeFolders(const char16_t* path) {
  PathBytes name(path ? AsUnits(path) : nullptr);
  if (!name.Ok()) return name.Error();
  std::string bytes = name.Get();
  // Each level from the top; those that stand already are no failure.
  uint32_t error = 0;
  for (std::size_t end = bytes.find(kPathSeparatorChar, 1);; end = bytes.find(kPathSeparatorChar, end + 1)) {
    std::string level = bytes.substr(0, end);
    if (!level.empty() && level.back() != kPathSeparatorChar) {
      error = os::MakeFolder(level.c_str());
      if (error != 0 && os::Exists(level.c_str())) error = 0;
    }
    if (end == std::string::npos) break;
  }
  return error;
}

void* LoadModule(const char16_t* name) {
  PathBytes bytes(name ? AsUnits(name) : nullptr);
  if (!bytes.Ok()) return nullptr;
  std::string wanted = bytes.Get();
  if (wanted.find(kPathSeparatorChar) == std::string::npos) {
    // A bare name: the program's own folder first, as the desktop platform's loader does.
    std::string exe;
    if (os::ExecutablePath(&exe) == 0 && exe.rfind(kPathSeparatorChar) != std::string::npos) {
      std::string beside = exe.substr(0, exe.rfind(kPathSeparatorChar) + 1) + wanted;
      if (os::Exists(beside.c_str())) {
        if (void* module = os::LoadModule(beside.c_str())) return module;
      }
    }
  }
  return os::LoadModule(wanted.c_str());
}

void* FindModuleEntry(void* module, const char* name) {
  if (!module || !name) return nullptr;
  return os::FindModuleEntry(module, name);
}

void FreeModule(void* module) {
  if (module) os::FreeModule(module);
}

}  // namespace vbu::platform
