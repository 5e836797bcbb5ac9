// Iterators that stay correct while their array changes.
#include <VantoroBasicUtils/containers/LArrayIterator.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "support/ArrayProbe.h"

namespace {

// Arrays of letters make walks easy to read.
void Letters(LArray& a, const char* s) {
  for (; *s; ++s) a.InsertItemsAt(1, kLastIndex, s, 0);
}

long IndexOf(LArray& a, char c) { return a.FetchIndexOf(&c); }

std::string Walk(LArrayIterator& it, int steps, bool forward = true) {
  std::string seen;
  char c;
  for (int i = 0; i < steps; ++i) seen += (forward ? it.Next(&c) : it.Previous(&c)) ? c : '-';
  return seen;
}

}  // namespace

TEST(LArrayIterator, ForwardWalkThatRemovesEachItemSeesEachOnce) {
  LArray a(1);
  Letters(a, "abc");
  LArrayIterator it(a, kIterBeforeFirst);
  std::string seen;
  for (char c; it.Next(&c);) {
    seen += c;
    a.RemoveItemsAt(1, it.GetCurrentIndex());
  }
  EXPECT_EQ(seen, "abc");
  EXPECT_EQ(a.GetCount(), 0u);
  char c;
  EXPECT_FALSE(it.Next(&c));
  EXPECT_FALSE(it.Previous(&c));
}

TEST(LArrayIterator, RemovalsBeforeAndAtTheCurrentItem) {
  LArray a(1);
  Letters(a, "abcd");
  LArrayIterator it(a, 3);  // on c
  char c;
  a.RemoveItemsAt(1, IndexOf(a, 'a'));
  EXPECT_EQ(it.GetCurrentIndex(), 2);
  EXPECT_TRUE(it.Current(&c));
  EXPECT_EQ(c, 'c');
  EXPECT_EQ(Walk(it, 1), "d");

  // Removing the current item: Next goes to the item behind it, Previous
  // to the item before it.
  for (bool forward : {true, false}) {
    LArray b(1);
    Letters(b, "abcd");
    LArrayIterator on(b, 3);
    b.RemoveItemsAt(1, 3);
    EXPECT_EQ(on.GetCurrentIndex(), kIterItemRemoved);
    EXPECT_FALSE(on.Current(&c));
    EXPECT_EQ(Walk(on, 1, forward), forward ? "d" : "b");
  }
}

TEST(LArrayIterator, RemovingTheLastItemWhileOnIt) {
  for (bool forward : {true, false}) {
    LArray a(1);
    Letters(a, "abc");
    LArrayIterator it(a, 3);
    a.RemoveItemsAt(1, 3);
    EXPECT_EQ(Walk(it, 1, forward), forward ? "-" : "b");
  }
}

TEST(LArrayIterator, InsertionsAtAndBehindTheCurrentItem) {
  LArray a(1);
  Letters(a, "abc");
  LArrayIterator it(a, 2);  // on b
  a.InsertItemsAt(1, 2, "x", 0);  // at the current index: the iterator stays on b
  char c;
  EXPECT_TRUE(it.Current(&c));
  EXPECT_EQ(c, 'b');
  a.InsertItemsAt(1, 4, "y", 0);  // directly behind: visited next
  EXPECT_EQ(Walk(it, 3), "yc-");
}

TEST(LArrayIterator, RemovedStateIgnoresLaterRemovalsButFollowsInsertions) {
  LArray a(1);
  Letters(a, "abcde");
  LArrayIterator it(a, 3);
  a.RemoveItemsAt(1, 3);  // c goes: next is d at 3
  a.RemoveItemsAt(1, 1);  // a goes: the iterator does not hear of it
  EXPECT_EQ(Walk(it, 2), "e-");

  LArray b(1);
  Letters(b, "abcde");
  LArrayIterator on(b, 3);
  b.RemoveItemsAt(1, 3);
  b.InsertItemsAt(2, 1, "z", 0);  // before the next index: it moves up
  EXPECT_EQ(Walk(on, 2), "de");
}

TEST(LArrayIterator, EndAndBeforeFirstAgainstAppends) {
  LArray a(1);
  LArrayIterator before(a, kIterBeforeFirst);
  LArrayIterator end(a, kIterFromEnd);
  Letters(a, "ab");
  EXPECT_EQ(Walk(end, 1), "-");    // does not see appended items
  EXPECT_EQ(Walk(before, 1), "a"); // does, on an array that was empty
  end.ResetTo(kIterFromEnd);
  Letters(a, "c");
  EXPECT_EQ(Walk(end, 3), "---");
  EXPECT_EQ(Walk(end, 1, false), "c");  // Previous after the end gives the last
  EXPECT_EQ(Walk(end, 3, false), "ba-");
  EXPECT_EQ(end.GetCurrentIndex(), kIterBeforeFirst);
}

TEST(LArrayIterator, ResetToClampsToTheEnds) {
  LArray a(1);
  Letters(a, "abc");
  LArrayIterator it(a, 5);
  EXPECT_EQ(it.GetCurrentIndex(), kIterAtEnd);
  it.ResetTo(-3);
  EXPECT_EQ(it.GetCurrentIndex(), kIterBeforeFirst);
  it.ResetTo(2);
  EXPECT_EQ(Walk(it, 1), "c");
  it.ResetTo(kIterFromEnd);
  EXPECT_EQ(Walk(it, 1, false), "c");
}

TEST(LArrayIterator, ArrayDeathLeavesIteratorsDead) {
  auto a = std::make_unique<LArray>(1);
  Letters(*a, "abc");
  LArrayIterator first(*a, 1);
  auto second = std::make_unique<LArrayIterator>(*a, kIterBeforeFirst);
  LArrayIterator third(*a, kIterFromEnd);
  second.reset();  // detaches from the middle of the chain
  a.reset();
  char c;
  EXPECT_FALSE(first.Next(&c));
  EXPECT_FALSE(first.Previous(&c));
  EXPECT_FALSE(first.Current(&c));
  first.ResetTo(1);
  EXPECT_EQ(first.GetCurrentIndex(), kIterDead);
  EXPECT_EQ(third.GetCurrentIndex(), kIterDead);
}  // destroying dead iterators does not touch the array (ASan checks)

TEST(LArrayIterator, SortSwapAndAssignLeaveIndicesAlone) {
  LArray a(1);
  Letters(a, "dcba");
  LArrayIterator it(a, 2);
  a.Sort();
  EXPECT_EQ(it.GetCurrentIndex(), 2);
  char c;
  it.Current(&c);
  EXPECT_EQ(c, 'b');
  a.SwapItems(1, 2);
  a.AssignItemsAt(1, 3, "q", 0);
  EXPECT_EQ(it.GetCurrentIndex(), 2);
  EXPECT_EQ(Walk(it, 1), "q");
}

TEST(LListIterator, WalksAList) {
  LList list;
  int values[3] = {1, 2, 3};
  for (int& v : values) {
    int* p = &v;
    list.InsertItemsAt(1, kLastIndex, &p, 0);
  }
  LListIterator it(list);
  int sum = 0;
  unsigned long size = sizeof(int*);
  for (int* p; it.Next(&p, size);) sum += *p;
  EXPECT_EQ(sum, 6);
  int* p;
  size = 2;  // sized forms truncate as FetchItemAt does
  EXPECT_TRUE(it.Previous(&p, size));
  EXPECT_EQ(size, 2u);
}
