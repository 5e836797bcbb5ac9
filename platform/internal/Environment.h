// Environment.h: what the application's environment asks of the system: the
// running program's own file, the user's home folder, making a folder, and
// modules loaded at run time. Internal; never installed.
//
//   std::u16string exe = vbu::platform::ExecutablePath();   // "/opt/tool/bin/tool"
//   void* module = vbu::platform::LoadModule(u"libplugin.so");
//   void* entry = module ? vbu::platform::FindModuleEntry(module, "Start") : nullptr;
#pragma once

#include <cstdint>
#include <string>

namespace vbu::platform {

// The full path of the running program's file; empty if the system cannot tell.
std::u16string ExecutablePath();
// The calling user's home folder as the password database has it; empty if
// the user has no entry.
std::u16string UserHomeFolder();
// Makes the one folder `path` (its parent must exist); 0 or the error code
// (EEXIST when something is there already).
uint32_t MakeFolder(const char16_t* path);

// Loads the module `name` (a path, or a name the system's loader searches
// for), counting references; null if it cannot be loaded.
void* LoadModule(const char16_t* name);
// The entry `name` of a loaded module, or null.
void* FindModuleEntry(void* module, const char* name);
// Drops one reference taken by LoadModule; null is ignored.
void FreeModule(void* module);

}  // namespace vbu::platform
