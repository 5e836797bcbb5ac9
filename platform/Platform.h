// Platform.h: the library's view of the operating system. Internal; never
// installed. Portable code calls these; each is implemented once per system,
// in platform/<System>/*.inc, included by the matching platform/*.cpp.
//
//   void* block = vbu::platform::AllocZeroedBlock(4096);
//   if (block) { ...; vbu::platform::FreeBlock(block); }
#pragma once

#include <cstddef>

namespace vbu::platform {

// A zero-filled block of `size` bytes that stays at one address until freed.
// Gives null when the system has no memory for it, and for a size of 0.
void* AllocZeroedBlock(std::size_t size);
// Frees a block from AllocZeroedBlock; null is ignored.
void FreeBlock(void* block);

}  // namespace vbu::platform
