// The application's environment: names turn into the system's bytes and
// back here; the system file (linux/Environment.inc) asks the system.
#include "platform/internal/Environment.h"

#include <string>

#include "platform/internal/Errors.h"
#include "platform/internal/PathBytes.h"
#include "platform/internal/SysCalls.h"
#include "platform/internal/SystemText.h"

namespace vbu::platform::os {

// The running program's file, the user's home folder: 0 with `*bytes`, or the error code.
uint32_t ExecutablePath(std::string* bytes);
uint32_t HomeFolder(std::string* bytes);
uint32_t MakeFolder(const char* path);
void* LoadModule(const char* name);
void* FindModuleEntry(void* module, const char* name);
void FreeModule(void* module);

}  // namespace vbu::platform::os

#if defined(__linux__)
#include "linux/Environment.inc"
#else
#error "The platform layer has no application environment for this system yet."
#endif

namespace vbu::platform {

std::u16string ExecutablePath() {
  std::string bytes;
  if (os::ExecutablePath(&bytes) != 0) return {};
  return FromSystemBytes(bytes.data(), bytes.size());
}

std::u16string UserHomeFolder() {
  std::string bytes;
  if (os::HomeFolder(&bytes) != 0) return {};
  return FromSystemBytes(bytes.data(), bytes.size());
}

uint32_t MakeFolder(const char16_t* path) {
  PathBytes name(path ? AsUnits(path) : nullptr);
  if (!name.Ok()) return name.Error();
  return os::MakeFolder(name.Get());
}

void* LoadModule(const char16_t* name) {
  PathBytes bytes(name ? AsUnits(name) : nullptr);
  if (!bytes.Ok()) return nullptr;
  return os::LoadModule(bytes.Get());
}

void* FindModuleEntry(void* module, const char* name) {
  if (!module || !name) return nullptr;
  return os::FindModuleEntry(module, name);
}

void FreeModule(void* module) {
  if (module) os::FreeModule(module);
}

}  // namespace vbu::platform
