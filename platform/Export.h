// Export.h: the one macro that marks a class or function as part of the
// library's exported interface. Everything not marked stays hidden.
//
//   class VBU_API LArray { ... };
//   VBU_API bool BlocksAreEqual(const void* a, const void* b, unsigned long size);
#pragma once

#if defined(_WIN32)
#  if defined(VBU_BUILDING_LIBRARY)
#    define VBU_API __declspec(dllexport)
#  else
#    define VBU_API __declspec(dllimport)
#  endif
#else
#  define VBU_API __attribute__((visibility("default")))
#endif
