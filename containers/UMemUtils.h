// UMemUtils.h: block copy, clear and fill; raw block comparison; conversions
// between decimal text and 64-bit integers.
//
//   char source[300] = "menu", dest[300];
//   UMemUtils::memcpy(dest, source, 300);            // forward copy of 300 bytes
//   long order = BlockCompare("ab", "abc", 2, 3);    // <0: equal up to the shorter, shorter is less
//   long long bytes = 4700000000LL;
//   char* text = ToString10(bytes);                  // "4700000000"
//   ::operator delete(text);
#pragma once

#include <cstdint>

#include <VantoroBasicUtils/platform/Export.h>

// Static block routines. Sizes are in bytes; words are 4 bytes wide.
// Only the low 31 bits of a size count: a size of 2^31 or more honours only
// its low 8 bits, as the 256-byte step is skipped.
class VBU_API UMemUtils {
 public:
  // Copies `size` bytes from `source` to `dest`. Blocks may overlap with
  // `dest` below `source` (a downward move); any other overlap is the caller's
  // business, as a forward copy cannot shift data upward.
  static void memcpy(void* dest, const void* source, unsigned int size);
  // Sets `size` bytes to 0.
  static void zeromem(void* dest, unsigned int size);
  // Sets `size` bytes to the low byte of `value`. Gives `dest`.
  static void* memset(void* dest, int value, unsigned int size);

  // Fixed-size steps: N bytes as N / 4 words, at any alignment; each advances
  // its pointers by N bytes.
  static void memcpy4byte(int32_t*& dest, int32_t*& source);
  static void memcpy8byte(int32_t*& dest, int32_t*& source);
  static void memcpy16byte(int32_t*& dest, int32_t*& source);
  static void memcpy32byte(int32_t*& dest, int32_t*& source);
  static void memcpy64byte(int32_t*& dest, int32_t*& source);
  static void memcpy128byte(int32_t*& dest, int32_t*& source);
  static void memcpy256byte(int32_t*& dest, int32_t*& source);

  static void zeromem4byte(int32_t*& dest);
  static void zeromem8byte(int32_t*& dest);
  static void zeromem16byte(int32_t*& dest);
  static void zeromem32byte(int32_t*& dest);
  static void zeromem64byte(int32_t*& dest);
  static void zeromem128byte(int32_t*& dest);
  static void zeromem256byte(int32_t*& dest);

  static void memset4byte(int32_t*& dest, int32_t value);
  static void memset8byte(int32_t*& dest, int32_t value);
  static void memset16byte(int32_t*& dest, int32_t value);
  static void memset32byte(int32_t*& dest, int32_t value);
  static void memset64byte(int32_t*& dest, int32_t value);
  static void memset128byte(int32_t*& dest, int32_t value);
  static void memset256byte(int32_t*& dest, int32_t value);
};

// True if the first `size` bytes of `a` and `b` agree; true for a size of 0.
VBU_API bool BlocksAreEqual(const void* a, const void* b, unsigned long size);
// 0 if the first `size` bytes agree, else byte of `a` less byte of `b` at the
// first difference, both unsigned: -255 to 255.
VBU_API long BlockCompare(const void* a, const void* b, unsigned long size);
// As above over the smaller size; if those bytes agree, sizeA - sizeB, so the
// shorter block is the lesser.
VBU_API long BlockCompare(const void* a, const void* b, unsigned long sizeA, unsigned long sizeB);

// The digits of a terminated byte text as one number, in 64 bits with
// wrap-around. Every other character is skipped: "1,234" gives 1234, "-5" 5.
VBU_API long long ToCLongLong(unsigned char* text);
// The 64 bits of `value`, read as unsigned, as terminated decimal text in a
// new 21-byte block. The caller frees it with ::operator delete.
VBU_API char* ToString10(long long& value);
