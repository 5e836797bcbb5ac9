// Comparators, the Shell sort, searches and the sorted state of LArray.
#include <VantoroBasicUtils/containers/LArray.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "support/ArrayProbe.h"

using V = std::vector<int32_t>;

namespace {

// Orders records by their key only, and counts its calls.
struct Record {
  int32_t key;
  int32_t tag;
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

std::vector<Record> RecordsOf(const LArray& a) { return ItemsOf<Record>(a); }

}  // namespace

TEST(Comparators, LongComparatorSubtractsThirtyTwoBitWords) {
  LLongComparator c;
  int32_t five = 5, three = 3, minus = -1, one = 1;
  EXPECT_GT(c.Compare(&five, &three, 0, 0), 0);
  EXPECT_LT(c.Compare(&minus, &one, 0, 0), 0);
  EXPECT_TRUE(c.IsEqualTo(&five, &five, 1, 99));  // sizes are not read
  int32_t big = 0x7FFFFFFF, low = -2;
  EXPECT_LT(c.Compare(&big, &low, 4, 4), 0);  // too far apart: the wrapped difference lies
}

TEST(Comparators, BytesComparatorOrdersUnsignedThenShorterFirst) {
  LComparator c;
  unsigned char hi = 0x80, lo = 0x7F;
  EXPECT_GT(c.Compare(&hi, &lo, 1, 1), 0);
  EXPECT_LT(c.Compare("ab", "abc", 2, 3), 0);
  EXPECT_EQ(c.CompareToKey("a", 1, "a"), 1);  // no keys in the base class
  EXPECT_FALSE(c.IsEqualToKey("a", 1, "a"));
}

TEST(LArraySort, SortsInComparatorOrderAtEveryGapSize) {
  std::mt19937 rng(7);
  for (int n : {0, 1, 2, 17, 18, 44, 45, 100, 126, 369, 1000, 5000}) {
    LArray a(4);
    V model;
    for (int i = 0; i < n; ++i) {
      int32_t v = static_cast<int32_t>(rng() % 1000) - 500;
      a.InsertItemsAt(1, kLastIndex, &v, 0);
      model.push_back(v);
    }
    a.Sort();
    std::sort(model.begin(), model.end());
    EXPECT_EQ(ItemsOf(a), model) << n;
    EXPECT_TRUE(a.IsSorted() || n < 2);
  }
}

TEST(LArraySort, FewerThanEighteenItemsSortStably) {
  LArray a(sizeof(Record), new ByKey);
  for (int32_t i = 0; i < 17; ++i) {
    Record r{i % 3, i};
    a.InsertItemsAt(1, kLastIndex, &r, 0);
  }
  a.Sort();
  auto records = RecordsOf(a);
  for (size_t i = 1; i < records.size(); ++i) {
    ASSERT_LE(records[i - 1].key, records[i].key);
    if (records[i - 1].key == records[i].key) {
      ASSERT_LT(records[i - 1].tag, records[i].tag);
    }
  }
}

TEST(LArraySort, AlreadySortedArrayIsLeftAloneUntilInvalidated) {
  LArray a(4);
  Append(a, {3, 1, 2});
  a.Sort();
  *static_cast<int32_t*>(a.GetItemPtr(1)) = 9;  // changed behind the array's back
  a.Sort();
  EXPECT_EQ(ItemsOf(a), (V{9, 2, 3}));
  a.InvalidateSort();
  a.Sort();
  EXPECT_EQ(ItemsOf(a), (V{2, 3, 9}));

  LArray one(4);
  Append(one, {1});
  EXPECT_FALSE(one.IsSorted());
  one.Sort();  // fewer than two items: the state stays as it was
  EXPECT_FALSE(one.IsSorted());
}

TEST(LArraySearch, BinaryAndLinearSearchFindTheSameItems) {
  LArray a(4);
  Append(a, {1, 2, 2, 2, 3});
  int32_t two = 2;
  EXPECT_EQ(a.FetchIndexOf(&two), 1 + 1);  // linear: the first
  a.Sort();
  EXPECT_EQ(a.FetchIndexOf(&two), 3);  // binary: the first middle
  EXPECT_EQ(a.FetchInsertIndexOf(&two), 3);
  int32_t four = 4;
  EXPECT_EQ(a.FetchIndexOf(&four), kBadIndex);
}

TEST(LArraySearch, InsertIndexOfASortedArray) {
  LArray a(4);
  int32_t x = 5;
  EXPECT_EQ(a.FetchInsertIndexOf(&x), 1);  // new and empty: counts as sorted
  Append(a, {10, 20, 30});
  EXPECT_EQ(a.FetchInsertIndexOf(&x), kLastIndex);  // unsorted: the caller appends
  a.Sort();
  for (auto [v, at] : {std::pair{5, 1}, {15, 2}, {25, 3}, {35, 4}, {10, 1}, {30, 3}}) {
    EXPECT_EQ(a.FetchInsertIndexOf(&v), at) << v;
  }
}

TEST(LArraySearch, EmptyArrayDoesNotAskTheComparator) {
  int calls = 0;
  LArray a(sizeof(Record), new ByKey(&calls));
  Record r{1, 1};
  EXPECT_EQ(a.FetchIndexOf(&r), kBadIndex);
  EXPECT_EQ(a.FetchIndexOfKey(&r.key), kBadIndex);
  EXPECT_EQ(calls, 0);
}

TEST(LArraySearch, ByKey) {
  LArray a(sizeof(Record), new ByKey, true);
  for (int32_t k : {30, 10, 20}) {
    Record r{k, k * 10};
    a.InsertItemsAt(1, kLastIndex, &r, 0);
  }
  int32_t key = 20;
  EXPECT_EQ(a.FetchIndexOfKey(&key), 2);
  key = 25;
  EXPECT_EQ(a.FetchIndexOfKey(&key), kBadIndex);
  EXPECT_EQ(a.FetchInsertIndexOfKey(&key), 3);
  a.InvalidateSort();
  key = 10;
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
  auto records = RecordsOf(a);
  ASSERT_EQ(records.size(), 4u);
  EXPECT_EQ(records[0].key, 1);
  EXPECT_EQ(records[1].tag, 4);  // the later equal item lands before the one found
  EXPECT_EQ(records[2].tag, 3);
  EXPECT_EQ(records[3].key, 3);
  EXPECT_TRUE(a.IsSorted());

  a.SwapItems(1, 4);  // refused on a kept-sorted array
  a.MoveItem(1, 4);
  EXPECT_EQ(RecordsOf(a)[0].key, 1);

  Record r{0, 99};
  a.AssignItemsAt(1, 4, &r, 0);  // a removal and a sorted insertion
  records = RecordsOf(a);
  EXPECT_EQ(records[0].tag, 99);
  EXPECT_EQ(records[3].key, 2);
}

TEST(LArrayKeepSorted, SetKeepSortedAndSetComparator) {
  LArray a(4);
  Append(a, {3, 1, 2});
  a.SetKeepSorted(true);
  EXPECT_EQ(ItemsOf(a), (V{1, 2, 3}));

  // Descending order: the array sorts at once, as it keeps itself sorted.
  struct Descending : LComparator {
    long Compare(const void* a, const void* b, unsigned long, unsigned long) const override {
      return *static_cast<const int32_t*>(b) - *static_cast<const int32_t*>(a);
    }
  };
  a.SetComparator(new Descending);
  EXPECT_EQ(ItemsOf(a), (V{3, 2, 1}));
  a.SetComparator(nullptr);  // ignored
  EXPECT_EQ(ItemsOf(a), (V{3, 2, 1}));
  a.SetComparator(a.GetComparator());  // the same object again must not be freed
  int32_t x = 2;
  EXPECT_EQ(a.FetchIndexOf(&x), 2);

  LArray one(4);
  Append(one, {5});
  one.Sort();
  EXPECT_FALSE(one.IsSorted());
  LArray sortedOne(4);  // a fresh array counts as sorted, and one item does not change it
  sortedOne.SetComparator(new Descending);
  EXPECT_TRUE(sortedOne.IsSorted());
  Append(sortedOne, {1, 2});
  sortedOne.Sort();
  sortedOne.SetComparator(new LLongComparator);
  EXPECT_FALSE(sortedOne.IsSorted());
}

TEST(LArrayKeepSorted, KeptButUnsortedArrayAppendsAndThenCountsAsSorted) {
  LArray a(4);
  Append(a, {9});
  a.SetKeepSorted(true);  // one item that counts as unsorted: no sort happens
  EXPECT_FALSE(a.IsSorted());
  int32_t x = 1;
  EXPECT_EQ(a.InsertItemsAt(1, 1, &x, 0), 2);  // appended
  EXPECT_TRUE(a.IsSorted());
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
    size_t n = 1 + rng() % 300;
    V values(n);
    for (auto& v : values) v = static_cast<int32_t>(rng() % 40) - 20;

    LArray builtIn(4);
    OwnAccessArray ownAccess(4);
    LArray ownComparator(4, new OwnLongComparator);
    LArray bytes(4, new OwnBytesComparator);  // byte order, through the virtual route
    LArray builtInBytes(4);
    builtInBytes.SetComparator(new LComparator);
    LArray* arrays[] = {&builtIn, &ownAccess, &ownComparator, &bytes, &builtInBytes};
    for (LArray* a : arrays) {
      for (int32_t v : values) a->InsertItemsAt(1, kLastIndex, &v, 0);
      a->Sort();
    }
    EXPECT_EQ(ItemsOf(builtIn), ItemsOf(ownAccess));
    EXPECT_EQ(ItemsOf(builtIn), ItemsOf(ownComparator));
    EXPECT_EQ(ItemsOf(bytes), ItemsOf(builtInBytes));
    for (int32_t probe = -22; probe <= 22; ++probe) {
      long found = builtIn.FetchIndexOf(&probe);
      long place = builtIn.FetchInsertIndexOf(&probe);
      EXPECT_EQ(found, ownAccess.FetchIndexOf(&probe)) << probe;
      EXPECT_EQ(found, ownComparator.FetchIndexOf(&probe)) << probe;
      EXPECT_EQ(place, ownAccess.FetchInsertIndexOf(&probe)) << probe;
      EXPECT_EQ(bytes.FetchIndexOf(&probe), builtInBytes.FetchIndexOf(&probe)) << probe;
      EXPECT_EQ(bytes.FetchInsertIndexOf(&probe), builtInBytes.FetchInsertIndexOf(&probe)) << probe;
      for (LArray* a : arrays) a->InvalidateSort();  // linear route too
      EXPECT_EQ(builtIn.FetchIndexOf(&probe), ownAccess.FetchIndexOf(&probe)) << probe;
      EXPECT_EQ(bytes.FetchIndexOf(&probe), builtInBytes.FetchIndexOf(&probe)) << probe;
      for (LArray* a : arrays) a->Sort();
    }
  }
}
