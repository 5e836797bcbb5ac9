// Ordering and search of LArray: the Shell sort, the linear and binary
// searches, and the sorted state they rest on.
//
// Each algorithm is written once, over an item-access policy. The virtual
// policy reaches items through the array's virtual operations and compares
// them through its comparator, which is right for every array. When neither
// has been replaced by a subclass (the array has plain item access and the
// comparator is a built-in one), the direct policy reaches the
// raw items and inlines the comparator: the same steps and comparisons, so
// the same results, without a virtual call per item.
#include <cstring>
#include <typeinfo>

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

class LArrayOrdering {
 public:
  struct VirtualItems {
    const LArray& array;
    const LComparator& comparator;

    void* Ptr(long i) const { return array.GetItemPtr(i); }
    unsigned long Size(long i) const { return array.GrabItemSize(i); }
    void Peek(long i, void* dest) const { array.PeekItem(i, dest); }
    void Poke(long i, const void* item) const { const_cast<LArray&>(array).PokeItem(i, item, array.mItemSize); }
    long Compare(const void* a, const void* b, unsigned long sizeA, unsigned long sizeB) const {
      return comparator.Compare(a, b, sizeA, sizeB);
    }
    bool IsEqualTo(const void* a, const void* b, unsigned long sizeA, unsigned long sizeB) const {
      return comparator.IsEqualTo(a, b, sizeA, sizeB);
    }
  };

  // `Comparator` is the comparator's exact type; `FixedSize` the item size
  // when known at compile time, else 0.
  template <class Comparator, unsigned FixedSize>
  struct DirectItems {
    char* base;
    unsigned long itemSize;
    const Comparator& comparator;

    unsigned long Size(long) const { return FixedSize ? FixedSize : itemSize; }
    void* Ptr(long i) const { return base + (i - 1) * static_cast<long>(Size(i)); }
    void Peek(long i, void* dest) const { std::memcpy(dest, Ptr(i), Size(i)); }
    void Poke(long i, const void* item) const { std::memmove(Ptr(i), item, Size(i)); }
    long Compare(const void* a, const void* b, unsigned long sizeA, unsigned long sizeB) const {
      return comparator.Comparator::Compare(a, b, sizeA, sizeB);  // qualified: no virtual call
    }
    // Both built-in comparators define equality as a Compare of 0.
    bool IsEqualTo(const void* a, const void* b, unsigned long sizeA, unsigned long sizeB) const {
      return Compare(a, b, sizeA, sizeB) == 0;
    }
  };

  // Calls `algorithm(items)` with the direct policy where it gives the same
  // results as the virtual one, else with the virtual one.
  template <class Algorithm>
  static auto WithItems(const LArray& array, Algorithm algorithm) {
    const LComparator& comparator = *array.mComparator;
    if (array.HasPlainItemAccess() && array.mItemsH) {
      char* base = array.mItemsH->GetPtr();
      if (typeid(comparator) == typeid(LLongComparator)) {
        const auto& longs = static_cast<const LLongComparator&>(comparator);
        if (array.mItemSize == 4) return algorithm(DirectItems<LLongComparator, 4>{base, 4, longs});
        return algorithm(DirectItems<LLongComparator, 0>{base, array.mItemSize, longs});
      }
      if (typeid(comparator) == typeid(LComparator)) {
        return algorithm(DirectItems<LComparator, 0>{base, array.mItemSize, comparator});
      }
    }
    return algorithm(VirtualItems{array, comparator});
  }

  // Shell sort, gaps 1, 4, 13, 40, ... from the largest below a ninth of the count.
  template <class Items>
  static void ShellSort(const Items& items, long count, unsigned long itemSize, void* held) {
    long limit = count / 9;
    long gap = 1;
    if (limit > 1) {
      while (gap < limit) gap = 3 * gap + 1;
    }
    for (; gap > 0; gap /= 3) {
      for (long i = gap + 1; i <= count; ++i) {
        items.Peek(i, held);
        long j = i - gap;
        while (j > 0 && items.Compare(held, items.Ptr(j), itemSize, itemSize) < 0) {
          items.Poke(j + gap, items.Ptr(j));
          j -= gap;
        }
        items.Poke(j + gap, held);
      }
    }
  }

  // The first index whose item equals `item`, walking a pointer; 0 if none.
  template <class Items>
  static long LinearSearch(const Items& items, long count, const void* item, unsigned long size) {
    const char* p = static_cast<const char*>(items.Ptr(1));
    for (long i = 1; i <= count; ++i) {
      unsigned long itemSize = items.Size(i);
      if (items.IsEqualTo(item, p, size, itemSize)) return i;
      p += itemSize;
    }
    return kBadIndex;
  }

  // The halving of the binary searches: `order(i)` gives how item i stands
  // against the sought one. Leaves the last middle and the last result.
  template <class Order>
  static void Halve(long count, Order order, long& middle, long& result) {
    long low = 1;
    long high = count;
    middle = 1;
    result = 0;
    while (low <= high) {
      middle = (low + high) / 2;
      result = order(middle);
      if (result == 0) break;
      if (result > 0) {
        high = middle - 1;
      } else {
        low = middle + 1;
      }
    }
  }

  // Halving for an item: array item against `item`.
  static void HalveForItem(const LArray& array, const void* item, unsigned long size, long& middle, long& result) {
    StArrayLock lock(array);
    WithItems(array, [&](const auto& items) {
      Halve(array.mItemCount, [&](long i) { return items.Compare(items.Ptr(i), item, items.Size(i), size); },
            middle, result);
      return 0;
    });
  }

  // Halving for a key, always through the comparator's key operations.
  static void HalveForKey(const LArray& array, const void* key, long& middle, long& result) {
    StArrayLock lock(array);
    const LComparator& comparator = *array.mComparator;
    Halve(array.mItemCount,
          [&](long i) { return comparator.CompareToKey(array.GetItemPtr(i), array.GrabItemSize(i), key); },
          middle, result);
  }
};

void LArray::Sort() {
  if (mIsSorted || mItemCount < 2) return;
  StPointerBlock scratch(static_cast<long>(mItemSize));
  if (!scratch && mItemSize != 0) return;  // no scratch memory: stay unsorted
  LArrayOrdering::WithItems(*this, [&](const auto& items) {
    LArrayOrdering::ShellSort(items, mItemCount, mItemSize, static_cast<char*>(scratch));
    return 0;
  });
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
  return LArrayOrdering::WithItems(*this, [&](const auto& items) {
    return LArrayOrdering::LinearSearch(items, mItemCount, item, size);
  });
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

long LArray::BinarySearch(const void* item, unsigned long size) const {
  long middle, result;
  LArrayOrdering::HalveForItem(*this, item, size, middle, result);
  return result == 0 && mItemCount > 0 ? middle : kBadIndex;
}

long LArray::BinarySearchByKey(const void* key) const {
  long middle, result;
  LArrayOrdering::HalveForKey(*this, key, middle, result);
  return result == 0 && mItemCount > 0 ? middle : kBadIndex;
}

long LArray::FetchInsertIndexOf(const void* item, unsigned long size) const {
  if (size == 0) size = mItemSize;
  if (!mIsSorted) return kLastIndex;
  long middle, result;
  LArrayOrdering::HalveForItem(*this, item, size, middle, result);
  return result < 0 ? middle + 1 : middle;
}

long LArray::FetchInsertIndexOfKey(const void* key) const {
  if (!mIsSorted) return kLastIndex;
  long middle, result;
  LArrayOrdering::HalveForKey(*this, key, middle, result);
  return result < 0 ? middle + 1 : middle;
}
