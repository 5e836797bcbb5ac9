// Comparators, the Shell sort, searches and the sorted state of LArray.
#include <VantoroBasicUtils/containers/LArray.h>

#include <gtest/gtest.h>

#include <random>

#include "support/ArrayProbe.h"

using V = std::vector<int32_t>;

namespace {

// Orders records by their key only, and counts its calls.
struct Record {
  int32_t key;
  int32_t tag;
  bool operator==(const Record&) const = default;
};

class ByKey : public LComparator {
 public:
  explicit ByKey(int* calls = nullptr) : mCalls(calls) {}
  long Compare(const void* a, const void* b, unsigned long, unsigned long) const override {
    if (mCalls) ++*mCalls;
    return static_cast<const Record*>(a)->key - static_cast<const Record*>(b)->key;
  }
  long CompareToKey(const void* item, unsigned long, const void* key) const override {
    return static_cast<const Record*>(item)->key - *static_cast<const int32_t*>(key);
  }

 private:
  int* mCalls;
};

struct Descending : LComparator {
  long Compare(const void* a, const void* b, unsigned long, unsigned long) const override {
    return *static_cast<const int32_t*>(b) - *static_cast<const int32_t*>(a);
  }
};

}  // namespace

TEST(Comparators, LongsSubtractAndBytesOrderUnsignedThenShorterFirst) {
  LLongComparator longs;
  int32_t five = 5, three = 3, big = 0x7FFFFFFF, low = -2;
  EXPECT_TRUE(longs.Compare(&five, &three, 0, 0) > 0 && longs.Compare(&three, &five, 0, 0) < 0);
  EXPECT_TRUE(longs.IsEqualTo(&five, &five, 1, 99));  // sizes are not read
  EXPECT_LT(longs.Compare(&big, &low, 4, 4), 0);      // too far apart: the wrapped difference lies
  LComparator bytes;  // as BlockCompare; no keys in the base class
  EXPECT_LT(bytes.Compare("ab", "abc", 2, 3), 0);
  EXPECT_EQ(bytes.CompareToKey("a", 1, "a"), 1);
  EXPECT_FALSE(bytes.IsEqualToKey("a", 1, "a"));
}

TEST(LArraySort, PlacesEqualItemsAsTheShellSortWithGaps1_4_13_40) {
  // Keys with many repeats: the order of equal items shows which gaps ran.
  // Below 18 items there is a single pass with gap 1: an insertion sort.
  auto reference = [](std::vector<Record> r) {
    long n = static_cast<long>(r.size()), gap = 1;
    if (n / 9 > 1) while (gap < n / 9) gap = 3 * gap + 1;
    for (; gap > 0; gap /= 3) {
      for (long i = gap; i < n; ++i) {
        Record held = r[i];
        long j = i - gap;
        for (; j >= 0 && held.key < r[j].key; j -= gap) r[j + gap] = r[j];
        r[j + gap] = held;
      }
    }
    return r;
  };
  std::mt19937 rng(7);
  for (int n : {0, 1, 2, 17, 18, 44, 45, 100, 125, 126, 368, 369, 1000, 3000}) {
    LArray a(sizeof(Record), new ByKey);
    std::vector<Record> records;
    for (int32_t i = 0; i < n; ++i) records.push_back({static_cast<int32_t>(rng() % 7), i});
    for (Record& r : records) a.InsertItemsAt(1, kLastIndex, &r, 0);
    a.Sort();
    EXPECT_EQ(ItemsOf<Record>(a), reference(records)) << n;
    EXPECT_TRUE(a.IsSorted() || n < 2);
  }
}

TEST(LArraySort, SortedStateIsTrustedUntilInvalidated) {
  LArray a(4);
  Append(a, {3, 1, 2});
  a.Sort();
  *static_cast<int32_t*>(a.GetItemPtr(1)) = 9;  // changed behind the array's back
  a.Sort();
  EXPECT_EQ(ItemsOf(a), (V{9, 2, 3}));
  a.InvalidateSort();
  a.Sort();
  EXPECT_EQ(ItemsOf(a), (V{2, 3, 9}));

  LArray one(4), fresh(4);  // fewer than two items: Sort leaves the state as it was
  Append(one, {1});
  one.Sort();
  EXPECT_FALSE(one.IsSorted());
  EXPECT_TRUE(fresh.IsSorted());  // a fresh array counts as sorted, and a new comparator clears it
  Append(fresh, {1, 2});
  fresh.Sort();
  fresh.SetComparator(new Descending);
  EXPECT_FALSE(fresh.IsSorted());
}

TEST(LArraySearch, LinearBinaryAndInsertIndices) {
  LArray a(4);
  int32_t x = 5;
  EXPECT_EQ(a.FetchInsertIndexOf(&x), 1);  // new and empty: counts as sorted
  Append(a, {1, 2, 2, 2, 3});
  EXPECT_EQ(a.FetchInsertIndexOf(&x), kLastIndex);  // unsorted: the caller appends
  for (auto [v, linear, binary, insert] : {std::tuple{2, 2L, 3L, 3L}, {1, 1L, 1L, 1L}, {3, 5L, 5L, 5L},
                                           {4, kBadIndex, kBadIndex, 6L}, {0, kBadIndex, kBadIndex, 1L}}) {
    a.InvalidateSort();
    EXPECT_EQ(a.FetchIndexOf(&v), linear) << v;  // linear: the first
    a.Sort();
    EXPECT_EQ(a.FetchIndexOf(&v), binary) << v;  // binary: the first middle met
    EXPECT_EQ(a.FetchInsertIndexOf(&v), insert) << v;
  }
}

TEST(LArraySearch, ByKeyAndWithoutAskingAnEmptyArray) {
  int calls = 0;
  LArray a(sizeof(Record), new ByKey(&calls), true);
  Record r{1, 1};
  EXPECT_EQ(a.FetchIndexOf(&r), kBadIndex);
  EXPECT_EQ(a.FetchIndexOfKey(&r.key), kBadIndex);
  EXPECT_EQ(calls, 0);
  for (int32_t k : {30, 10, 20}) {
    r = {k, k * 10};
    a.InsertItemsAt(1, kLastIndex, &r, 0);
  }
  for (auto [key, at, insertAt] : {std::tuple{20, 2L, 2L}, {25, kBadIndex, 3L}, {5, kBadIndex, 1L}}) {
    EXPECT_EQ(a.FetchIndexOfKey(&key), at) << key;
    EXPECT_EQ(a.FetchInsertIndexOfKey(&key), insertAt) << key;
  }
  a.InvalidateSort();
  int32_t key = 10;
  EXPECT_EQ(a.FetchIndexOfKey(&key), 1);  // linear by key
  LArray plain(4);  // the base comparator knows no keys
  Append(plain, {1, 2});
  plain.Sort();
  EXPECT_EQ(plain.FetchIndexOfKey(&key), kBadIndex);
  EXPECT_EQ(plain.FetchInsertIndexOfKey(&key), 1);
}

TEST(LArrayKeepSorted, InsertsAtTheSortedPlaceWhateverTheIndex) {
  LArray a(sizeof(Record), new ByKey, true);
  int32_t tag = 0;
  for (int32_t k : {3, 1, 2, 2}) {
    Record r{k, ++tag};
    a.InsertItemsAt(1, k == 2 ? 1 : kLastIndex, &r, 0);
  }
  // The later equal item lands before the one found.
  EXPECT_EQ(ItemsOf<Record>(a), (std::vector<Record>{{1, 2}, {2, 4}, {2, 3}, {3, 1}}));
  a.SwapItems(1, 4);  // refused on a kept-sorted array
  a.MoveItem(1, 4);
  Record r{0, 99};
  a.AssignItemsAt(1, 4, &r, 0);  // a removal and a sorted insertion
  EXPECT_EQ(ItemsOf<Record>(a), (std::vector<Record>{{0, 99}, {1, 2}, {2, 4}, {2, 3}}));
}

TEST(LArrayKeepSorted, SetKeepSortedAndSetComparatorSortAtOnce) {
  LArray a(4);
  Append(a, {3, 1, 2});
  a.SetKeepSorted(true);
  EXPECT_EQ(ItemsOf(a), (V{1, 2, 3}));
  a.SetComparator(new Descending);
  EXPECT_EQ(ItemsOf(a), (V{3, 2, 1}));
  a.SetComparator(nullptr);  // ignored
  a.SetComparator(a.GetComparator());  // the same object again must not be freed
  int32_t x = 2;
  EXPECT_EQ(a.FetchIndexOf(&x), 2);
  EXPECT_EQ(ItemsOf(a), (V{3, 2, 1}));

  LArray b(4);
  Append(b, {9});
  b.SetKeepSorted(true);  // one item that counts as unsorted: no sort happens
  EXPECT_FALSE(b.IsSorted());
  EXPECT_EQ(b.InsertItemsAt(1, 1, &x, 0), 2);  // appended, and then it counts as sorted
  EXPECT_TRUE(b.IsSorted());
}

namespace {
// Same behaviour as the built-in classes, but replaced by subclasses, so the
// array must go through its virtual operations and comparator.
class OwnAccessArray : public LArray {
 public:
  using LArray::LArray;

 protected:
  void PeekItem(long index, void* dest) const override { LArray::PeekItem(index, dest); }
};
class OwnLongComparator : public LLongComparator {};
class OwnBytesComparator : public LComparator {};
}  // namespace

TEST(LArraySearch, BuiltInAndReplacedOperationsGiveTheSameResults) {
  // Searches among runs of equal items show which of them the halving meets,
  // so any difference between the two routes would show in the indices.
  std::mt19937 rng(99);
  for (int round = 0; round < 30; ++round) {
    V values(1 + rng() % 300);
    for (auto& v : values) v = static_cast<int32_t>(rng() % 40) - 20;
    LArray builtIn(4), builtInBytes(4);
    builtInBytes.SetComparator(new LComparator);
    OwnAccessArray ownAccess(4);
    LArray ownComparator(4, new OwnLongComparator), ownBytes(4, new OwnBytesComparator);
    LArray* arrays[] = {&builtIn, &ownAccess, &ownComparator, &builtInBytes, &ownBytes};
    for (LArray* a : arrays) {
      for (int32_t v : values) a->InsertItemsAt(1, kLastIndex, &v, 0);
      a->Sort();
    }
    // Each replaced array against the built-in one with the same order.
    for (auto [own, same] : {std::pair<LArray*, LArray*>{&ownAccess, &builtIn}, {&ownComparator, &builtIn}, {&ownBytes, &builtInBytes}}) {
      EXPECT_EQ(ItemsOf(*own), ItemsOf(*same));
      for (int32_t probe = -22; probe <= 22; ++probe) {
        for (bool sorted : {true, false}) {
          for (LArray* a : {own, same}) sorted ? a->Sort() : a->InvalidateSort();
          EXPECT_EQ(own->FetchIndexOf(&probe), same->FetchIndexOf(&probe)) << probe;
          EXPECT_EQ(own->FetchInsertIndexOf(&probe), same->FetchInsertIndexOf(&probe)) << probe;
        }
      }
    }
  }
}
