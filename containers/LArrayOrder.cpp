// Ordering and search of LArray: the Shell sort, the linear and binary
// searches, and the sorted state they rest on.
#include "containers/Handle.h"
#include "containers/LArray.h"

namespace {
// Holds an array's Lock for a scope.
class StArrayLock {
 public:
  explicit StArrayLock(const LArray& array) : mArray(array) { mArray.Lock(); }
  ~StArrayLock() { mArray.Unlock(); }

 private:
  const LArray& mArray;
};
}  // namespace

void LArray::Sort() {
  if (mIsSorted || mItemCount < 2) return;

  long limit = mItemCount / 9;
  long gap = 1;
  if (limit > 1) {
    while (gap < limit) gap = 3 * gap + 1;
  }

  StPointerBlock scratch(static_cast<long>(mItemSize));
  if (!scratch && mItemSize != 0) return;  // no scratch memory: stay unsorted
  void* held = scratch;

  for (; gap > 0; gap /= 3) {
    for (long i = gap + 1; i <= mItemCount; ++i) {
      PeekItem(i, held);
      long j = i - gap;
      while (j > 0 && mComparator->Compare(held, GetItemPtr(j), mItemSize, mItemSize) < 0) {
        PokeItem(j + gap, GetItemPtr(j), mItemSize);
        j -= gap;
      }
      PokeItem(j + gap, held, mItemSize);
    }
  }
  mIsSorted = true;
}

void LArray::SetKeepSorted(bool keep) {
  mKeepSorted = keep;
  if (keep) Sort();
}

void LArray::SetComparator(LComparator* comparator) {
  if (!comparator) return;
  if (mOwnsComparator && comparator != mComparator) delete mComparator;
  mComparator = comparator;
  mOwnsComparator = true;
  if (mItemCount > 1) mIsSorted = false;
  if (mKeepSorted) Sort();
}

// ---- search

long LArray::FetchIndexOf(const void* item, unsigned long size) const {
  if (mItemCount == 0) return kBadIndex;
  if (size == 0) size = mItemSize;
  return mIsSorted ? BinarySearch(item, size) : LinearSearch(item, size);
}

long LArray::FetchIndexOfKey(const void* key) const {
  if (mItemCount == 0) return kBadIndex;
  return mIsSorted ? BinarySearchByKey(key) : LinearSearchByKey(key);
}

long LArray::LinearSearch(const void* item, unsigned long size) const {
  StArrayLock lock(*this);
  const char* p = static_cast<const char*>(GetItemPtr(1));
  for (long i = 1; i <= mItemCount; ++i) {
    unsigned long itemSize = GrabItemSize(i);
    if (mComparator->IsEqualTo(item, p, size, itemSize)) return i;
    p += itemSize;
  }
  return kBadIndex;
}

long LArray::LinearSearchByKey(const void* key) const {
  StArrayLock lock(*this);
  const char* p = static_cast<const char*>(GetItemPtr(1));
  for (long i = 1; i <= mItemCount; ++i) {
    unsigned long itemSize = GrabItemSize(i);
    if (mComparator->IsEqualToKey(p, itemSize, key)) return i;
    p += itemSize;
  }
  return kBadIndex;
}

template <class CompareFn>
void LArray::Halve(CompareFn compare, long& middle, long& result) const {
  StArrayLock lock(*this);
  long low = 1;
  long high = mItemCount;
  middle = 1;
  result = 0;
  while (low <= high) {
    middle = (low + high) / 2;
    result = compare(GetItemPtr(middle), GrabItemSize(middle));
    if (result == 0) break;
    if (result > 0) {
      high = middle - 1;
    } else {
      low = middle + 1;
    }
  }
}

long LArray::BinarySearch(const void* item, unsigned long size) const {
  long middle, result;
  Halve([&](const void* p, unsigned long s) { return mComparator->Compare(p, item, s, size); }, middle, result);
  return result == 0 && mItemCount > 0 ? middle : kBadIndex;
}

long LArray::BinarySearchByKey(const void* key) const {
  long middle, result;
  Halve([&](const void* p, unsigned long s) { return mComparator->CompareToKey(p, s, key); }, middle, result);
  return result == 0 && mItemCount > 0 ? middle : kBadIndex;
}

long LArray::FetchInsertIndexOf(const void* item, unsigned long size) const {
  if (size == 0) size = mItemSize;
  if (!mIsSorted) return kLastIndex;
  long middle, result;
  Halve([&](const void* p, unsigned long s) { return mComparator->Compare(p, item, s, size); }, middle, result);
  return result < 0 ? middle + 1 : middle;
}

long LArray::FetchInsertIndexOfKey(const void* key) const {
  if (!mIsSorted) return kLastIndex;
  long middle, result;
  Halve([&](const void* p, unsigned long s) { return mComparator->CompareToKey(p, s, key); }, middle, result);
  return result < 0 ? middle + 1 : middle;
}
