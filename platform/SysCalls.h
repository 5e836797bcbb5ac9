// SysCalls.h: every system call the platform layer makes goes through one
// table, so that a test can swap an entry and make the Nth call fail with a
// chosen error. Internal; never installed.
//
//   vbu::platform::SysCalls saved = vbu::platform::Sys();
//   vbu::platform::Sys().calloc = [](std::size_t, std::size_t) -> void* { return nullptr; };
//   ...; vbu::platform::Sys() = saved;
#pragma once

#include <cstddef>

namespace vbu::platform {

struct SysCalls {
  void* (*calloc)(std::size_t count, std::size_t size);
  void (*free)(void* block);
  // Character set conversion; a descriptor is (void*)-1 on failure.
  void* (*iconv_open)(const char* to, const char* from);
  std::size_t (*iconv)(void* cd, char** in, std::size_t* inLeft, char** out, std::size_t* outLeft);
  int (*iconv_close)(void* cd);
};

// The live table: what the layer calls. Tests may change its entries.
SysCalls& Sys();
// The system's own entries, for putting the live table back.
const SysCalls& DefaultSysCalls();

}  // namespace vbu::platform
