// Memory.h: blocks of memory from the system. Ordinary blocks for the
// library's handles, and page-aligned ones for unbuffered transfers, whose
// buffers must sit on a sector boundary. Internal; never installed.
//
//   void* block = vbu::platform::AllocZeroedBlock(4096);
//   if (block) { ...; vbu::platform::FreeBlock(block); }
//   void* sectors = vbu::platform::AllocPages(64 * 2048);   // on a page boundary
#pragma once

#include <cstddef>

namespace vbu::platform {

// A zero-filled block of `size` bytes that stays at one address until freed.
// Gives null when the system has no memory for it, and for a size of 0.
void* AllocZeroedBlock(std::size_t size);
// Frees a block from AllocZeroedBlock; null is ignored.
void FreeBlock(void* block);

// `size` bytes of zeroed memory on a page boundary, or null (also for 0).
// Blocks of a few MiB (transfer buffers) are on huge pages where the system
// gives them: contiguous memory makes fewer, larger requests to the device.
void* AllocPages(std::size_t size);
// Frees a block of AllocPages; null is ignored.
void FreePages(void* block);

}  // namespace vbu::platform
