// UByteSwapper.h: reversing the bytes of a value, unconditionally (a
// byte-swap instruction each). "Long" here is 32 bits on every host.
//
//   uint32_t v = UByteSwapper::SwapLong(0x12345678);   // 0x78563412
//   short sample = 0x0102;
//   UByteSwapper::Swap(&sample);                       // 0x0201, in place
#pragma once

#include <cstdint>

#include <VantoroBasicUtils/platform/Export.h>

class VBU_API UByteSwapper {
 public:
  static void Swap(short* p);
  static void Swap(unsigned short* p);
  static void Swap(int32_t* p);
  static void Swap(uint32_t* p);
  static void Swap(float* p);
  static void Swap(int32_t& value);
  static void Swap(uint32_t& value);
  static void Swap(float& value);
  static void Swap(double* p);
  // The ten bytes of an 80-bit extended real, where long double is one
  // (x86); elsewhere the type's own bytes.
  static void Swap(long double* p);
  // The first `size` bytes in reverse order; a size below 2 does nothing.
  static void Swap(char* p, short size);
  // The three value swaps are inline: each is one byte-swap instruction.
  static unsigned short SwapShort(unsigned short value) { return __builtin_bswap16(value); }
  // Every pair of neighbours among the first `size` bytes (an odd last byte stays).
  static void SwapShort(unsigned char* p, short size);
  static uint32_t SwapLong(uint32_t value) { return __builtin_bswap32(value); }
  static long long SwapLongLong(long long value) {
    return static_cast<long long>(__builtin_bswap64(static_cast<uint64_t>(value)));
  }
  // The value at `p`, reversed; memory stays as it is.
  static short SwapSS(char* p);
  static unsigned short SwapUS(char* p);
  static int32_t SwapSL(char* p);
  static uint32_t SwapUL(char* p);
  // Stores `value`'s bytes, reversed, at `p`.
  static void SwapToBuf(short value, char* p);
  static void SwapToBuf(unsigned short value, char* p);
  static void SwapToBuf(int32_t value, char* p);
  static void SwapToBuf(uint32_t value, char* p);

 protected:
  static const short sizeOfShort = 2;
  static const short sizeOfUShort = 2;
  static const short sizeOfLong = 4;
  static const short sizeOfULong = 4;
  static const short sizeOfFloat = 4;
  static const short sizeOfDouble = 8;
  static const short sizeOfLongDouble = 8;
  static const short sizeOfLongLong = 8;
};
