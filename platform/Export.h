// Export.h: the one macro that marks a class or function as part of the
// library's exported interface. Everything not marked stays hidden.
//
//   // In a header of the library:
//   //   class VBU_API LArray { ... };
//   //   VBU_API bool BlocksAreEqual(const void* a, const void* b, unsigned long size);
//   static_assert(sizeof(LArray) > 0);   // exported classes are used as plain ones
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
