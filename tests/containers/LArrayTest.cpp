// Storage and item operations of LArray and LList.
#include <VantoroBasicUtils/containers/Handle.h>
#include <VantoroBasicUtils/containers/LArray.h>

#include <gtest/gtest.h>

#include <algorithm>

#include "support/ArrayProbe.h"

using V = std::vector<int32_t>;

// Clamped indices, removals past the end, locks, moves and swaps of int32
// items are checked against a model in LArrayIteratorModelTest; here the
// rest of the item operations.
TEST(LArray, InsertOddCountsAndSizesAndAnUnpairedUnlockDoesNotLock) {
  LArray a(4);
  int32_t x = 7;
  a.Lock();
  a.Unlock();
  a.Unlock();  // must not wrap into a lasting lock
  EXPECT_EQ(a.InsertItemsAt(0, 1, &x, 0), kBadIndex);
  EXPECT_EQ(a.InsertItemsAt(2, 1, &x, 0), 1);
  EXPECT_EQ(a.InsertItemsAt(2, 1, nullptr, 0), 1);  // null item: bytes left as they are
  EXPECT_EQ(a.GetCount(), 4u);
  a.RemoveItemsAt(2, 1);
  int32_t big[4] = {70, 71, 72, 73};  // an oversized item writes one item only
  a.InsertItemsAt(1, 2, big, sizeof big);
  a.AssignItemsAt(1, kLastIndex, big, sizeof big);  // the last item: nothing past the block
  EXPECT_EQ(ItemsOf(a), (V{7, 70, 70}));
}

TEST(LArray, SizesBeyondThirtyTwoBitsAreRefused) {
  LArray bytes(1);
  EXPECT_EQ(bytes.InsertItemsAt(0x7FFFFFFFul, 1, nullptr, 0), kBadIndex);
#if !defined(_WIN32)  // unsigned long has 32 bits there: no larger value can be asked
  EXPECT_EQ(bytes.InsertItemsAt(0x100000001ul, 1, nullptr, 0), kBadIndex);
#endif
  LArray large(16u << 20);  // 16 MiB items: 300 of them pass 4 GiB
  EXPECT_EQ(large.InsertItemsAt(300, 1, nullptr, 0), kBadIndex);
  large.AdjustAllocation(300, 0);  // refused as well, without allocating
  EXPECT_EQ(large.GetItemsHandle(), nullptr);
}

TEST(LArray, RemoveByValueAssignAndFetch) {
  LArray a(4);
  Append(a, {3, 1, 3});
  int32_t x = 3;
  a.Remove(&x);  // the first found only
  x = 42;
  a.Remove(&x);
  EXPECT_EQ(ItemsOf(a), (V{1, 3}));
  a.Sort();
  x = 0;
  a.AssignItemsAt(10, 2, &x, 0);  // stops at the end, and the order is no longer known
  EXPECT_EQ(ItemsOf(a), (V{1, 0}));
  EXPECT_FALSE(a.IsSorted());
  EXPECT_TRUE(a.FetchItemAt(kLastIndex, &x));
  EXPECT_FALSE(a.FetchItemAt(0, &x) || a.FetchItemAt(3, &x));
  unsigned char part[4] = {};
  a.AssignItemsAt(1, 1, "\x11\x22\x33\x44", 0);
  // The size in: what the caller has room for; out: what was written.
  for (auto [index, room, ok, written] : {std::tuple{1L, 2ul, true, 2ul}, {1L, 100ul, true, 4ul}, {5L, 9ul, false, 9ul}}) {
    unsigned long size = room;
    std::fill(part, part + 4, 0);
    EXPECT_EQ(a.FetchItemAt(index, part, size), ok);
    EXPECT_EQ(size, written);
    EXPECT_EQ(part[2], written == 4 ? 0x33 : 0);
  }
  LArray empty(4);
  long last = kLastIndex;
  EXPECT_FALSE(empty.ValidIndex(last));
  EXPECT_EQ(last, 0);
}

TEST(LList, PointerItemsAndSetItemAt) {
  LList list;
  int a = 1, b = 2, c = 3;
  for (auto [index, p] : {std::pair{1L, &a}, {2L, &b}, {1L, &c}}) list.SetItemAt(index, &p);  // append, append, replace
  int* key = &b;
  EXPECT_EQ(list.FetchIndexOf(&key), 2);
  EXPECT_EQ(ItemsOf<int*>(list), (std::vector<int*>{&c, &b}));
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
    if (i == 1) firstAddress = (firstBlock = a.RawHandle())->GetPtr();
    if (!moved && a.RawHandle()->GetPtr() != firstAddress) moved = i;
  }
  EXPECT_EQ(std::vector<uint32_t>(allocated.begin(), allocated.begin() + 6),
            (std::vector<uint32_t>{8, 8, 16, 16, 24, 24}));
  EXPECT_EQ(a.RawHandle(), firstBlock);
  EXPECT_EQ(moved, 63);  // 63 items ask for 256 bytes, which round up to 512

  ProbeArray five(5);
  for (int i = 0; i < 3; ++i) five.InsertItemsAt(1, kLastIndex, "abcde", 0);
  five.RemoveItemsAt(1, 1);
  EXPECT_EQ(five.BytesAllocated(), five.BytesUsed() + 5);  // removal keeps the slack
  five.RemoveItemsAt(2, 1);
  EXPECT_NE(five.RawHandle(), nullptr);  // emptying keeps the block

  EXPECT_EQ(LArray(4).GetItemsHandle(), nullptr);
  EXPECT_EQ(a.GetItemsHandle()->GetSize(), 280u);  // trimmed to the items
  EXPECT_EQ(LList(4, 100).GetItemsHandle()->GetSize(), 0u);
}

TEST(LArrayStorage, ZeroSizeItemsAreHarmless) {
  LArray a(0);
  EXPECT_EQ(a.InsertItemsAt(3, 1, "x", 0), 1);
  char c = 'q';
  EXPECT_TRUE(a.FetchItemAt(2, &c));
  EXPECT_EQ(c, 'q');
  a.SwapItems(1, 2);
  a.MoveItem(1, 3);
  a.Sort();
  a.RemoveItemsAt(2, 1);
  EXPECT_EQ(a.GetCount(), 1u);
}
