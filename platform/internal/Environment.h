// Environment.h: what the application's environment asks of the system: the
// running program's own file, the user's home and base folders, making
// folders, and modules loaded at run time. Internal; never installed.
//
//   std::u16string exe = vbu::platform::ExecutablePath();   // "/opt/tool/bin/tool"
//   std::u16string config = vbu::platform::UserBaseFolder(vbu::platform::UserBase::kConfig);
//   void* module = vbu::platform::LoadModule(u"libplugin.so");
//   void* entry = module ? vbu::platform::FindModuleEntry(module, "Start") : nullptr;
#pragma once

#include <cstdint>
#include <string>

namespace vbu::platform {

// The full path of the running program's file; empty if the system cannot
// tell. A program whose file was replaced while it runs (an upgrade) still
// gets the path it was started from.
std::u16string ExecutablePath();
// The calling user's home folder: the password database's entry, else the
// HOME variable; empty when neither names one.
std::u16string UserHomeFolder();

// The user's base folders of the desktop (the XDG base directories): the
// variable XDG_CONFIG_HOME, XDG_DATA_HOME or XDG_CACHE_HOME when it holds an
// absolute path, else ".config", ".local/share" or ".cache" in the home
// folder. No final separator; empty when there is no home folder either.
enum class UserBase { kConfig, kData, kCache };
std::u16string UserBaseFolder(UserBase base);

// True when the calling user may make and replace files in `folder`.
bool IsWritableFolder(const char16_t* folder);
// True when something stands at `path`.
bool Exists(const char16_t* path);

// Makes the one folder `path` (its parent must exist); 0 or the error code
// (EEXIST when something is there already).
uint32_t MakeFolder(const char16_t* path);
// Makes `path` with every missing folder above it; 0 when it stands
// afterwards, else the error code of the level that could not be made.
uint32_t MakeFolders(const char16_t* path);

// Loads the module `name`, counting references; null if it cannot be
// loaded. A name without a folder is looked for beside the running program
// first, then where the system's loader searches.
void* LoadModule(const char16_t* name);
// The entry `name` of a loaded module, or null.
void* FindModuleEntry(void* module, const char* name);
// Drops one reference taken by LoadModule; null is ignored.
void FreeModule(void* module);

}  // namespace vbu::platform
