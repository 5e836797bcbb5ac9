#include "containers/LComparator.h"

#include "containers/UMemUtils.h"

LComparator::~LComparator() = default;

bool LComparator::IsEqualTo(const void* a, const void* b, unsigned long sizeA, unsigned long sizeB) const {
  return Compare(a, b, sizeA, sizeB) == 0;
}

long LComparator::CompareToKey(const void*, unsigned long, const void*) const { return 1; }

bool LComparator::IsEqualToKey(const void* item, unsigned long size, const void* key) const {
  return CompareToKey(item, size, key) == 0;
}

LLongComparator::~LLongComparator() = default;
