// Blocks of memory. Heap blocks never move, and calloc zero-fills; page
// blocks are fresh zeroed mappings with one page in front that keeps the
// mapping's size.
#include "platform/internal/Memory.h"

#include <cstdint>

#include "platform/internal/SysCalls.h"

namespace vbu::platform {
namespace {
constexpr std::size_t kPage = 4096;

// Fresh zeroed pages, or kMapFailed; and their release.
#if defined(_WIN32)
void* MapPages(std::size_t size) { return Sys().VirtualAlloc(size); }
void UnmapPages(void* base, std::size_t) { Sys().VirtualFree(base); }
#else
void* MapPages(std::size_t size) { return Sys().mmap(size); }
void UnmapPages(void* base, std::size_t size) { Sys().munmap(base, size); }
#endif
}  // namespace

void* AllocZeroedBlock(std::size_t size) {
  if (size == 0) return nullptr;
  return Sys().calloc(1, size);
}

void FreeBlock(void* block) {
  if (block) Sys().free(block);
}

void* AllocPages(std::size_t size) {
  if (size == 0 || size > SIZE_MAX - kPage) return nullptr;
  void* base = MapPages(size + kPage);
  if (base == kMapFailed) return nullptr;
  *static_cast<std::size_t*>(base) = size + kPage;
  return static_cast<char*>(base) + kPage;
}

void FreePages(void* block) {
  if (!block) return;
  void* base = static_cast<char*>(block) - kPage;
  UnmapPages(base, *static_cast<std::size_t*>(base));
}

}  // namespace vbu::platform
