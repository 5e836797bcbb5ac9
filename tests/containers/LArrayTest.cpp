// Storage and item operations of LArray and LList.
#include <VantoroBasicUtils/containers/Handle.h>
#include <VantoroBasicUtils/containers/LArray.h>

#include <gtest/gtest.h>

#include <cstring>

#include "support/ArrayProbe.h"

using V = std::vector<int32_t>;

TEST(LArrayInsert, AppendsClampsAndCopies) {
  LArray a(4);
  int32_t x = 10;
  EXPECT_EQ(a.InsertItemsAt(1, kLastIndex, &x, 0), 1);
  x = 20;
  EXPECT_EQ(a.InsertItemsAt(1, kLastIndex, &x, 0), 2);  // gives the new count
  x = 5;
  EXPECT_EQ(a.InsertItemsAt(1, 0, &x, 0), 1);           // 0 and below insert at 1
  x = 4;
  EXPECT_EQ(a.InsertItemsAt(1, -7, &x, 0), 1);
  x = 99;
  EXPECT_EQ(a.InsertItemsAt(1, 4 + 5, &x, 0), 5);       // beyond the end appends
  EXPECT_EQ(ItemsOf(a), (V{4, 5, 10, 20, 99}));

  x = 7;
  EXPECT_EQ(a.InsertItemsAt(3, 2, &x, 0), 2);  // three copies at 2, 3, 4
  EXPECT_EQ(ItemsOf(a), (V{4, 7, 7, 7, 5, 10, 20, 99}));
  EXPECT_EQ(a.InsertItemsAt(0, 1, &x, 0), kBadIndex);
  EXPECT_EQ(a.GetCount(), 8u);
}

TEST(LArrayInsert, InsertInTheMiddleKeepsTheOrderBehind) {
  LArray a(4);
  for (int32_t i = 1; i <= 300; ++i) a.InsertItemsAt(1, kLastIndex, &i, 0);
  int32_t x = -1;
  a.InsertItemsAt(1, 2, &x, 0);
  V items = ItemsOf(a);
  ASSERT_EQ(items.size(), 301u);
  EXPECT_EQ(items[0], 1);
  EXPECT_EQ(items[1], -1);
  for (int32_t i = 2; i <= 300; ++i) ASSERT_EQ(items[i], i);
}

TEST(LArrayInsert, NullItemLeavesBytesAsTheyAre) {
  LArray a(4);
  Append(a, {1, 2});
  EXPECT_EQ(a.InsertItemsAt(2, 1, nullptr, 0), 1);
  EXPECT_EQ(a.GetCount(), 4u);
  int32_t v;
  a.FetchItemAt(3, &v);
  EXPECT_EQ(v, 1);
}

TEST(LArrayInsert, OversizedItemWritesOneItemOnly) {
  LArray a(4);
  Append(a, {1, 2, 3});
  int32_t big[4] = {70, 71, 72, 73};
  a.InsertItemsAt(1, 2, big, sizeof big);
  EXPECT_EQ(ItemsOf(a), (V{1, 70, 2, 3}));
  a.AssignItemsAt(1, 4, big, sizeof big);  // the last item: nothing past the block
  EXPECT_EQ(ItemsOf(a), (V{1, 70, 2, 70}));
}

TEST(LArrayInsert, SizesBeyondThirtyTwoBitsAreRefused) {
  LArray bytes(1);
  EXPECT_EQ(bytes.InsertItemsAt(0x7FFFFFFFul, 1, nullptr, 0), kBadIndex);
  EXPECT_EQ(bytes.InsertItemsAt(0x100000001ul, 1, nullptr, 0), kBadIndex);
  LArray large(16u << 20);  // 16 MiB items: 300 of them pass 4 GiB
  EXPECT_EQ(large.InsertItemsAt(300, 1, nullptr, 0), kBadIndex);
  EXPECT_EQ(large.GetCount(), 0u);
  large.AdjustAllocation(300, 0);  // refused as well, without allocating
  EXPECT_EQ(large.GetItemsHandle(), nullptr);
}

TEST(LArrayRemove, StopsAtTheLastItem) {
  LArray a(4);
  Append(a, {1, 2, 3, 4, 5});
  a.RemoveItemsAt(10, 3);
  EXPECT_EQ(ItemsOf(a), (V{1, 2}));
  a.RemoveItemsAt(1, kLastIndex);
  EXPECT_EQ(ItemsOf(a), (V{1}));
  a.RemoveItemsAt(1, 0);
  a.RemoveItemsAt(1, 2);
  a.RemoveItemsAt(0, 1);
  EXPECT_EQ(ItemsOf(a), (V{1}));
  a.RemoveItemsAt(1, kLastIndex);
  a.RemoveItemsAt(1, kLastIndex);  // empty: nothing
  EXPECT_EQ(a.GetCount(), 0u);
}

TEST(LArrayRemove, RemoveTakesOnlyTheItemFound) {
  LArray a(4);
  Append(a, {3, 1, 3});
  int32_t x = 3;
  a.Remove(&x);
  EXPECT_EQ(ItemsOf(a), (V{1, 3}));
  x = 42;
  a.Remove(&x);
  EXPECT_EQ(ItemsOf(a), (V{1, 3}));
}

TEST(LArrayFetch, ValidatesTheIndexAndTruncates) {
  LArray empty(4);
  int32_t x = 0;
  EXPECT_FALSE(empty.FetchItemAt(kLastIndex, &x));
  long last = kLastIndex;
  EXPECT_FALSE(empty.ValidIndex(last));
  EXPECT_EQ(last, 0);

  LArray a(4);
  Append(a, {0x11223344, 0x55667788});
  EXPECT_TRUE(a.FetchItemAt(kLastIndex, &x));
  EXPECT_EQ(x, 0x55667788);
  EXPECT_FALSE(a.FetchItemAt(0, &x));
  EXPECT_FALSE(a.FetchItemAt(3, &x));

  unsigned char part[8] = {};
  unsigned long size = 2;
  EXPECT_TRUE(a.FetchItemAt(1, part, size));
  EXPECT_EQ(size, 2u);
  EXPECT_EQ(part[2], 0);  // truncated: only two bytes written
  size = 100;
  EXPECT_TRUE(a.FetchItemAt(1, part, size));
  EXPECT_EQ(size, 4u);
  size = 9;
  EXPECT_FALSE(a.FetchItemAt(5, part, size));
  EXPECT_EQ(size, 9u);
}

TEST(LArrayLock, LockedArrayRefusesInsertAndRemoveButAssigns) {
  LArray a(4);
  Append(a, {1, 2, 3});
  a.Lock();
  a.Lock();
  int32_t x = 9;
  EXPECT_EQ(a.InsertItemsAt(1, 1, &x, 0), kBadIndex);
  a.RemoveItemsAt(1, 1);
  a.AssignItemsAt(1, 2, &x, 0);
  EXPECT_EQ(ItemsOf(a), (V{1, 9, 3}));
  a.Unlock();
  EXPECT_EQ(a.InsertItemsAt(1, 1, &x, 0), kBadIndex);  // still locked once
  a.Unlock();
  a.Unlock();  // unpaired: must not wrap into a lasting lock
  EXPECT_EQ(a.InsertItemsAt(1, 1, &x, 0), 1);
  a.RemoveItemsAt(1, 1);
  EXPECT_EQ(ItemsOf(a), (V{1, 9, 3}));
}

TEST(LArrayAssign, FillsAndClampsToTheEnd) {
  LArray a(4);
  Append(a, {1, 2, 3, 4});
  a.Sort();
  int32_t x = 0;
  a.AssignItemsAt(10, 3, &x, 0);
  EXPECT_EQ(ItemsOf(a), (V{1, 2, 0, 0}));
  EXPECT_FALSE(a.IsSorted());
  a.AssignItemsAt(1, 5, &x, 0);
  a.AssignItemsAt(0, 1, &x, 0);
  EXPECT_EQ(ItemsOf(a), (V{1, 2, 0, 0}));
}

TEST(LArrayMove, MoveAndSwap) {
  auto letters = [](const char* s) {
    auto* a = new LArray(1);
    for (; *s; ++s) a->InsertItemsAt(1, kLastIndex, s, 0);
    return a;
  };
  auto text = [](LArray& a) {
    std::string s;
    for (char c : ItemsOf<char>(a)) s += c;
    return s;
  };
  std::unique_ptr<LArray> a(letters("abcde"));
  a->MoveItem(2, 5);
  EXPECT_EQ(text(*a), "acdeb");
  a.reset(letters("abcde"));
  a->MoveItem(5, 2);
  EXPECT_EQ(text(*a), "aebcd");
  a->MoveItem(kLastIndex, 1);
  EXPECT_EQ(text(*a), "daebc");
  a->MoveItem(1, 6);
  a->MoveItem(3, 3);
  EXPECT_EQ(text(*a), "daebc");
  a->SwapItems(1, kLastIndex);
  EXPECT_EQ(text(*a), "caebd");
  a->SwapItems(2, 2);
  a->SwapItems(0, 2);
  EXPECT_EQ(text(*a), "caebd");
}

TEST(LList, DefaultItemIsAPointerAndSetItemAtReplacesOrAppends) {
  LList list;
  EXPECT_EQ(list.GetItemSize(1), sizeof(void*));
  int a = 1, b = 2, c = 3;
  int* p = &a;
  list.SetItemAt(1, &p);  // empty: appends
  p = &b;
  list.SetItemAt(2, &p);  // one past the last: appends
  p = &c;
  list.SetItemAt(1, &p);  // valid: replaces
  EXPECT_EQ(list.GetCount(), 2u);
  int* got = nullptr;
  list.FetchItemAt(1, &got);
  EXPECT_EQ(got, &c);
  list.FetchItemAt(2, &got);
  EXPECT_EQ(got, &b);
  int* key = &b;
  EXPECT_EQ(list.FetchIndexOf(&key), 2);
}

TEST(LArrayStorage, GrowthAddsOneItemOfSlack) {
  ProbeArray a(4);
  std::vector<uint32_t> allocated;
  Handle* firstBlock = nullptr;
  char* firstAddress = nullptr;
  int moved = 0;
  for (int32_t i = 1; i <= 70; ++i) {
    a.InsertItemsAt(1, kLastIndex, &i, 0);
    allocated.push_back(a.BytesAllocated());
    if (i == 1) {
      firstBlock = a.RawHandle();
      firstAddress = firstBlock->GetPtr();
    } else if (!moved && a.RawHandle()->GetPtr() != firstAddress) {
      moved = i;
    }
  }
  EXPECT_EQ(std::vector<uint32_t>(allocated.begin(), allocated.begin() + 6),
            (std::vector<uint32_t>{8, 8, 16, 16, 24, 24}));
  EXPECT_EQ(a.RawHandle(), firstBlock);
  EXPECT_EQ(moved, 63);  // 63 items ask for 256 bytes, which round up to 512

  ProbeArray five(5);
  for (int i = 0; i < 3; ++i) five.InsertItemsAt(1, kLastIndex, "abcde", 0);
  EXPECT_EQ(five.BytesAllocated(), five.BytesUsed() + 5);
  five.RemoveItemsAt(1, 1);
  EXPECT_EQ(five.BytesAllocated(), five.BytesUsed() + 5);  // removal keeps the slack
  five.RemoveItemsAt(2, 1);
  EXPECT_NE(five.RawHandle(), nullptr);                    // emptying keeps the block
}

TEST(LArrayStorage, ItemsHandleIsTrimmedAndOwnedByTheArray) {
  LArray never(4);
  EXPECT_EQ(never.GetItemsHandle(), nullptr);
  LArray a(4);
  Append(a, {1, 2, 3});
  Handle* h = a.GetItemsHandle();
  ASSERT_NE(h, nullptr);
  EXPECT_EQ(h->GetSize(), 12u);
  LList reserved(4, 100);  // room for 100 items, none present
  EXPECT_EQ(reserved.GetCount(), 0u);
  EXPECT_EQ(reserved.GetItemsHandle()->GetSize(), 0u);
}

TEST(LArrayStorage, ZeroSizeItemsAreHarmless) {
  LArray a(0);
  EXPECT_EQ(a.InsertItemsAt(3, 1, "x", 0), 1);
  EXPECT_EQ(a.GetCount(), 3u);
  char c = 'q';
  EXPECT_TRUE(a.FetchItemAt(2, &c));
  EXPECT_EQ(c, 'q');
  a.SwapItems(1, 2);
  a.MoveItem(1, 3);
  a.Sort();
  a.RemoveItemsAt(2, 1);
  EXPECT_EQ(a.GetCount(), 1u);
}
