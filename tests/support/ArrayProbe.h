// Test helpers for LArray: read its items into a vector, fill it from one,
// and look at its protected allocation fields.
#pragma once

#include <VantoroBasicUtils/containers/LArray.h>

#include <cstdint>
#include <initializer_list>
#include <vector>

template <class T = int32_t>
std::vector<T> ItemsOf(const LArray& a) {
  std::vector<T> out;
  for (long i = 1; i <= static_cast<long>(a.GetCount()); ++i) {
    T v{};
    a.FetchItemAt(i, &v);
    out.push_back(v);
  }
  return out;
}

template <class T = int32_t>
void Append(LArray& a, std::initializer_list<T> values) {
  for (T v : values) a.InsertItemsAt(1, kLastIndex, &v, 0);
}

// An LArray that shows its allocation fields.
class ProbeArray : public LArray {
 public:
  using LArray::LArray;
  uint32_t BytesAllocated() const { return mBytesAllocated; }
  uint32_t BytesUsed() const { return mBytesUsed; }
  Handle* RawHandle() const { return mItemsH; }
};
