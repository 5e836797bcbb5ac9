// PathTails.h: tidying the tail of a path held as text, without touching
// the disk. The separator is the platform's (kPathSeparator, '/' here).
//
//   MString folder = AddDirectorySeparator(u"/media/disc//"_u16, true, 1);   // "/media/disc/"
//   MString bare = DeleteTailDirectorySeparator(u"/media/disc/"_u16);         // "/media/disc"
//   MString name = DeleteTailCharacter(u"title.."_u16, '.');                  // "title"
#pragma once

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/text/MString.h>

// A copy of `path` without any separators at its end; null or empty gives empty.
VBU_API MString DeleteTailDirectorySeparator(const unsigned short* path);
// A copy of `path` without any `character` at its end; null or empty gives empty.
VBU_API MString DeleteTailCharacter(const unsigned short* path, unsigned short character);
// `path` (with its trailing separators removed first if `deleteTail`) and
// then `count` separators; an empty path stays empty, and so does a result
// longer than an MString can hold.
VBU_API MString AddDirectorySeparator(const unsigned short* path, bool deleteTail, unsigned long count);
VBU_API MString AddDirectorySeparator(MString path, bool deleteTail, unsigned long count);
