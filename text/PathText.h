// PathText.h: case-blind comparison of 16-bit text and splitting a path
// into folder and last name ('/' separates here).
//
// The C library has byte functions named strcasecmp, strncasecmp, dirname
// and basename (and glibc's <libgen.h> makes basename a macro for its
// __xpg_basename). These live in namespace vbu, where the byte basename is
// reached as vbu::basename; the 16-bit forms are also plain overloads, which
// never clash with the C ones. Either way, and whether <libgen.h> comes
// before or after this header, each call reaches its own function:
//
//   int same = strcasecmp(u"ABC"_u16, u"abc"_u16);    // 0
//   MString path(u"/media/disc/title.vob"_u16);
//   MString folder = DirName(path);                     // "/media/disc"
//   unsigned short* leaf = vbu::basename(path);         // "title.vob", in place
#pragma once

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/text/MString.h>

#if defined(basename)
#pragma push_macro("basename")
#undef basename
#define VBU_RESTORE_BASENAME
#endif
#if defined(dirname)
#pragma push_macro("dirname")
#undef dirname
#define VBU_RESTORE_DIRNAME
#endif

// The platform's path separator, as a 16-bit unit and as a byte.
#if defined(_WIN32)
constexpr unsigned short kPathSeparator = '\\';
constexpr char kPathSeparatorChar = '\\';
#else
constexpr unsigned short kPathSeparator = '/';
constexpr char kPathSeparatorChar = '/';
#endif

namespace vbu {

// Up to `count` units through toupper, compared as 16-bit values: -1, 0 or 1.
VBU_API int strncasecmp(const unsigned short* a, const unsigned short* b, int count);
// Units through toupper, compared by their low bytes, signed: -1, 0 or 1.
VBU_API int strcasecmp(const unsigned short* a, const unsigned short* b);
// The folder part of `path`, cut in place; "." or the separator alone as a fixed text.
VBU_API unsigned short* dirname(unsigned short* path);
// The last name of `path` (trailing separators erased in place).
VBU_API unsigned short* basename(unsigned short* path);
VBU_API char* basename(char* path);

#if defined(__GLIBC__)
// Where <libgen.h> has turned `basename` into __xpg_basename, a host's
// vbu::basename(...) arrives here.
inline unsigned short* __xpg_basename(unsigned short* path) { return basename(path); }
inline char* __xpg_basename(char* path) { return basename(path); }
#endif

}  // namespace vbu

inline int strncasecmp(const unsigned short* a, const unsigned short* b, int count) {
  return vbu::strncasecmp(a, b, count);
}
inline int strcasecmp(const unsigned short* a, const unsigned short* b) { return vbu::strcasecmp(a, b); }
inline unsigned short* dirname(unsigned short* path) { return vbu::dirname(path); }
inline unsigned short* basename(unsigned short* path) { return vbu::basename(path); }
#if defined(__GLIBC__)
// Beside <libgen.h>'s byte __xpg_basename, for a plain basename(...) on 16-bit text.
inline unsigned short* __xpg_basename(unsigned short* path) { return vbu::basename(path); }
#endif

// Before the last separator ("." for an empty path, the path for one without).
VBU_API MString DirName(const MString& path);
// After the last separator ("." for an empty path, the path for one without).
VBU_API MString BaseName(const MString& path);

#if defined(VBU_RESTORE_BASENAME)
#pragma pop_macro("basename")
#undef VBU_RESTORE_BASENAME
#endif
#if defined(VBU_RESTORE_DIRNAME)
#pragma pop_macro("dirname")
#undef VBU_RESTORE_DIRNAME
#endif
