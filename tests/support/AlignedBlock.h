// Memory on a chosen alignment for the tests' transfer buffers: the C
// library's aligned_alloc, or the runtime's _aligned_malloc where it has no
// aligned_alloc (Windows). A block is given back with AlignedFree.
#pragma once

#include <cstddef>
#include <cstdlib>
#if defined(_WIN32)
#include <malloc.h>
#endif

namespace vbu_test {

inline void* AlignedAlloc(std::size_t alignment, std::size_t size) {
#if defined(_WIN32)
  return ::_aligned_malloc(size, alignment);
#else
  return std::aligned_alloc(alignment, size);
#endif
}

inline void AlignedFree(void* block) {
#if defined(_WIN32)
  ::_aligned_free(block);
#else
  std::free(block);
#endif
}

}  // namespace vbu_test
