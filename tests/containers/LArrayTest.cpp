// Storage and item operations of LArray and LList.
#include <VantoroBasicUtils/containers/Handle.h>
#include <VantoroBasicUtils/containers/LArray.h>

#include <gtest/gtest.h>

#include <string>

#include "support/ArrayProbe.h"

using V = std::vector<int32_t>;

TEST(LArray, InsertClampsItsIndexAndGivesThePlace) {
  LArray a(4);
  for (auto [index, value, place] : {std::tuple{kLastIndex, 10, 1L}, {kLastIndex, 20, 2L}, {0L, 5, 1L},
                                     {-7L, 4, 1L}, {9L, 99, 5L}}) {
    EXPECT_EQ(a.InsertItemsAt(1, index, &value, 0), place) << value;
  }
  int32_t x = 7;
  EXPECT_EQ(a.InsertItemsAt(3, 2, &x, 0), 2);  // three copies
  EXPECT_EQ(a.InsertItemsAt(0, 1, &x, 0), kBadIndex);
  EXPECT_EQ(a.InsertItemsAt(2, 1, nullptr, 0), 1);  // null item: bytes left as they are
  EXPECT_EQ(ItemsOf(a).size(), 10u);
  a.RemoveItemsAt(2, 1);
  EXPECT_EQ(ItemsOf(a), (V{4, 7, 7, 7, 5, 10, 20, 99}));

  int32_t big[4] = {70, 71, 72, 73};  // an oversized item writes one item only
  a.InsertItemsAt(1, 2, big, sizeof big);
  a.AssignItemsAt(1, kLastIndex, big, sizeof big);  // the last item: nothing past the block
  EXPECT_EQ(ItemsOf(a), (V{4, 70, 7, 7, 7, 5, 10, 20, 70}));
}

TEST(LArray, SizesBeyondThirtyTwoBitsAreRefused) {
  LArray bytes(1);
  EXPECT_EQ(bytes.InsertItemsAt(0x7FFFFFFFul, 1, nullptr, 0), kBadIndex);
  EXPECT_EQ(bytes.InsertItemsAt(0x100000001ul, 1, nullptr, 0), kBadIndex);
  LArray large(16u << 20);  // 16 MiB items: 300 of them pass 4 GiB
  EXPECT_EQ(large.InsertItemsAt(300, 1, nullptr, 0), kBadIndex);
  large.AdjustAllocation(300, 0);  // refused as well, without allocating
  EXPECT_EQ(large.GetItemsHandle(), nullptr);
}

TEST(LArray, RemoveAssignAndFetchStopAtTheEnds) {
  LArray a(4);
  Append(a, {3, 1, 3, 4, 5, 6});
  a.RemoveItemsAt(10, 5);
  a.RemoveItemsAt(1, kLastIndex);
  for (long index : {0L, 4L}) a.RemoveItemsAt(1, index);
  a.RemoveItemsAt(0, 1);
  int32_t x = 3;
  a.Remove(&x);  // the first found only
  x = 42;
  a.Remove(&x);
  EXPECT_EQ(ItemsOf(a), (V{1, 3}));
  a.Sort();
  x = 0;
  a.AssignItemsAt(10, 2, &x, 0);
  a.AssignItemsAt(1, 3, &x, 0);
  EXPECT_EQ(ItemsOf(a), (V{1, 0}));
  EXPECT_FALSE(a.IsSorted());

  EXPECT_TRUE(a.FetchItemAt(kLastIndex, &x));
  EXPECT_EQ(x, 0);
  EXPECT_FALSE(a.FetchItemAt(0, &x));
  EXPECT_FALSE(a.FetchItemAt(3, &x));
  unsigned char part[4] = {};
  unsigned long size = 2;
  a.AssignItemsAt(1, 1, "\x11\x22\x33\x44", 0);
  EXPECT_TRUE(a.FetchItemAt(1, part, size));
  EXPECT_EQ(size, 2u);
  EXPECT_EQ(part[2], 0);  // truncated: only two bytes written
  size = 100;
  EXPECT_TRUE(a.FetchItemAt(1, part, size));
  EXPECT_EQ(size, 4u);
  size = 9;
  EXPECT_FALSE(a.FetchItemAt(5, part, size));
  EXPECT_EQ(size, 9u);
  LArray empty(4);
  long last = kLastIndex;
  EXPECT_FALSE(empty.ValidIndex(last));
  EXPECT_EQ(last, 0);
}

TEST(LArray, LockedArrayRefusesInsertAndRemoveButAssigns) {
  LArray a(4);
  Append(a, {1, 2, 3});
  a.Lock();
  a.Lock();
  int32_t x = 9;
  EXPECT_EQ(a.InsertItemsAt(1, 1, &x, 0), kBadIndex);
  a.RemoveItemsAt(1, 1);
  a.AssignItemsAt(1, 2, &x, 0);
  a.Unlock();
  EXPECT_EQ(a.InsertItemsAt(1, 1, &x, 0), kBadIndex);  // still locked once
  EXPECT_EQ(ItemsOf(a), (V{1, 9, 3}));
  a.Unlock();
  a.Unlock();  // unpaired: must not wrap into a lasting lock
  EXPECT_EQ(a.InsertItemsAt(1, 1, &x, 0), 1);
}

TEST(LArray, MoveAndSwap) {
  LArray a(1);
  for (char c : std::string("abcde")) a.InsertItemsAt(1, kLastIndex, &c, 0);
  auto text = [&] {
    auto v = ItemsOf<char>(a);
    return std::string(v.begin(), v.end());
  };
  for (auto [from, to, after] : {std::tuple{2L, 5L, "acdeb"}, {5L, 2L, "abcde"}, {5L, 2L, "aebcd"},
                                 {kLastIndex, 1L, "daebc"}, {1L, 6L, "daebc"}, {3L, 3L, "daebc"}}) {
    a.MoveItem(from, to);
    EXPECT_EQ(text(), after) << from << " to " << to;
  }
  a.SwapItems(1, kLastIndex);
  a.SwapItems(2, 2);
  a.SwapItems(0, 2);
  EXPECT_EQ(text(), "caebd");
}

TEST(LList, PointerItemsAndSetItemAt) {
  LList list;
  EXPECT_EQ(list.GetItemSize(1), sizeof(void*));
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
