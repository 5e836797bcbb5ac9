#include "containers/LComparator.h"

#include <cstdint>
#include <cstring>

#include "containers/UMemUtils.h"

namespace {
inline uint32_t Word(const void* p) {
  uint32_t w;
  std::memcpy(&w, p, 4);
  return w;
}
}  // namespace

LComparator::~LComparator() = default;

long LComparator::Compare(const void* a, const void* b, unsigned long sizeA, unsigned long sizeB) const {
  return BlockCompare(a, b, sizeA, sizeB);
}

bool LComparator::IsEqualTo(const void* a, const void* b, unsigned long sizeA, unsigned long sizeB) const {
  return Compare(a, b, sizeA, sizeB) == 0;
}

long LComparator::CompareToKey(const void*, unsigned long, const void*) const { return 1; }

bool LComparator::IsEqualToKey(const void* item, unsigned long size, const void* key) const {
  return CompareToKey(item, size, key) == 0;
}

long LLongComparator::Compare(const void* a, const void* b, unsigned long, unsigned long) const {
  return static_cast<int32_t>(Word(a) - Word(b));
}

bool LLongComparator::IsEqualTo(const void* a, const void* b, unsigned long, unsigned long) const {
  return Word(a) == Word(b);
}
