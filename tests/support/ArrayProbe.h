// Test helpers for LArray: read its items into a vector, fill it from a list,
// and look at its protected allocation fields.
#pragma once

#include <VantoroBasicUtils/containers/LArray.h>

#include <cstdint>
#include <initializer_list>
#include <vector>

template <class T = int32_t>
std::vector<T> ItemsOf(const LArray& a) {
  std::vector<T> out(a.GetCount());
  for (long i = 1; i <= static_cast<long>(out.size()); ++i) a.FetchItemAt(i, &out[i - 1]);
  return out;
}

template <class T = int32_t>
void Append(LArray& a, std::initializer_list<T> values) {
  for (T v : values) a.InsertItemsAt(1, kLastIndex, &v, 0);
}

class ProbeArray : public LArray {
 public:
  using LArray::LArray;
  uint32_t BytesAllocated() const { return mBytesAllocated; }
  uint32_t BytesUsed() const { return mBytesUsed; }
  Handle* RawHandle() const { return mItemsH; }
};
