#include "containers/UMemUtils.h"

#include <cstring>
#include <new>

namespace {

// Only the low 31 bits of a block size count: the whole-256-byte step is
// taken by a signed shift, so sizes of 2^31 and more keep just their low 8 bits.
inline unsigned int EffectiveSize(unsigned int size) {
  return static_cast<int32_t>(size) < 0 ? (size & 0xFFu) : size;
}

template <unsigned N>
inline void CopyStep(int32_t*& dest, int32_t*& source) {
  std::memcpy(dest, source, N);
  dest = reinterpret_cast<int32_t*>(reinterpret_cast<char*>(dest) + N);
  source = reinterpret_cast<int32_t*>(reinterpret_cast<char*>(source) + N);
}

template <unsigned N>
inline void FillStep(int32_t*& dest, int32_t value) {
  unsigned char* p = reinterpret_cast<unsigned char*>(dest);
  for (unsigned i = 0; i < N; i += 4) std::memcpy(p + i, &value, 4);
  dest = reinterpret_cast<int32_t*>(p + N);
}

}  // namespace

void UMemUtils::memcpy(void* dest, const void* source, unsigned int size) {
  // memmove gives the forward copy's result wherever that is defined, and
  // stays correct for a downward move between overlapping blocks.
  if (unsigned int n = EffectiveSize(size)) std::memmove(dest, source, n);
}

void UMemUtils::zeromem(void* dest, unsigned int size) {
  if (unsigned int n = EffectiveSize(size)) std::memset(dest, 0, n);
}

void* UMemUtils::memset(void* dest, int value, unsigned int size) {
  if (unsigned int n = EffectiveSize(size)) std::memset(dest, value & 0xFF, n);
  return dest;
}

#define VBU_FIXED_SIZE_STEPS(N)                                                    \
  void UMemUtils::memcpy##N##byte(int32_t*& dest, int32_t*& source) {              \
    CopyStep<N>(dest, source);                                                     \
  }                                                                                \
  void UMemUtils::zeromem##N##byte(int32_t*& dest) { FillStep<N>(dest, 0); }       \
  void UMemUtils::memset##N##byte(int32_t*& dest, int32_t value) {                 \
    FillStep<N>(dest, value);                                                      \
  }

VBU_FIXED_SIZE_STEPS(4)
VBU_FIXED_SIZE_STEPS(8)
VBU_FIXED_SIZE_STEPS(16)
VBU_FIXED_SIZE_STEPS(32)
VBU_FIXED_SIZE_STEPS(64)
VBU_FIXED_SIZE_STEPS(128)
VBU_FIXED_SIZE_STEPS(256)
#undef VBU_FIXED_SIZE_STEPS

bool BlocksAreEqual(const void* a, const void* b, unsigned long size) {
  return size == 0 || std::memcmp(a, b, size) == 0;
}

long BlockCompare(const void* a, const void* b, unsigned long size) {
  if (size == 0 || std::memcmp(a, b, size) == 0) return 0;
  const unsigned char* pa = static_cast<const unsigned char*>(a);
  const unsigned char* pb = static_cast<const unsigned char*>(b);
  for (unsigned long i = 0; i < size; ++i) {
    if (pa[i] != pb[i]) return static_cast<long>(pa[i]) - static_cast<long>(pb[i]);
  }
  return 0;
}

long BlockCompare(const void* a, const void* b, unsigned long sizeA, unsigned long sizeB) {
  long result = BlockCompare(a, b, sizeA < sizeB ? sizeA : sizeB);
  if (result != 0) return result;
  return static_cast<long>(sizeA) - static_cast<long>(sizeB);
}

long long ToCLongLong(unsigned char* text) {
  uint64_t value = 0;
  for (; *text; ++text) {
    if (*text >= '0' && *text <= '9') value = value * 10 + (*text - '0');
  }
  return static_cast<long long>(value);
}

char* ToString10(long long& value) {
  char* text = static_cast<char*>(::operator new(21));
  std::memset(text, 0, 21);
  char digits[20];
  int count = 0;
  uint64_t rest = static_cast<uint64_t>(value);
  do {
    digits[count++] = static_cast<char>('0' + rest % 10);
    rest /= 10;
  } while (rest != 0);
  for (int i = 0; i < count; ++i) text[i] = digits[count - 1 - i];
  return text;
}
