// Rectangles and the owning list of rectangles.
#include <VantoroBasicUtils/containers/MRect.h>

#include <gtest/gtest.h>

#include <climits>

TEST(MRect, SetTurnsNegativeSizesAroundWhileTheConstructorKeepsThem) {
  MRect r;
  r.Set(10, 20, -4, -6);
  EXPECT_EQ(r, MRect(6, 14, 4, 6));
  MRect raw(10, 20, -4, -6);
  EXPECT_EQ(raw.GetWidth(), -4);
  EXPECT_EQ(raw.GetHeight(), -6);
  EXPECT_TRUE(raw != r);
  r.Set(INT_MIN, 0, INT_MIN, 1);  // no overflow at the end of the range
  EXPECT_EQ(r.GetWidth(), INT_MAX);
}

TEST(MRect, EdgesAndHitTest) {
  MRect r(0, 0, 10, 10);
  EXPECT_EQ(r.GetRight(), 9);
  EXPECT_EQ(r.GetBottom(), 9);
  EXPECT_EQ(r.IsPointed(10, 10), 1);  // one behind the last column and row counts
  EXPECT_EQ(r.IsPointed(11, 10), 0);
  EXPECT_EQ(r.IsPointed(-1, 0), 0);
  MRect far(INT_MAX - 1, 0, 10, 10);  // no wrap near the end of the range
  EXPECT_EQ(far.IsPointed(INT_MAX, 5), 1);
  EXPECT_EQ(far.IsPointed(0, 5), 0);
}

TEST(MRect, MoveAndScale) {
  MRect r(3, 3, 7, 7);
  r.Move(5, 5);
  EXPECT_EQ(r, MRect(5, 5, 7, 7));
  MRect s(3, 3, 5, 5);
  s.Scale(0.5, 0.5);
  EXPECT_EQ(s, MRect(1, 1, 2, 2));
  MRect t(-3, 0, 1, 1);
  t.Scale(1.5, 1.0);
  EXPECT_EQ(t.GetX(), -4);  // toward zero, not downward
  MRect huge(1 << 30, 0, 1, 1);
  huge.Scale(1e6, 1.0);  // saturates instead of overflowing
  EXPECT_EQ(huge.GetX(), INT_MAX);
}

TEST(MRectList, OwnsItsRectanglesAndCountsFromZero) {
  MRectList list;
  EXPECT_EQ(list.GetAt(0), nullptr);
  list.DeleteAll();  // empty: nothing
  list.AddList(1, 2, 3, 4);
  list.AddList(10, 20, 30, 40);
  ASSERT_NE(list.GetAt(0), nullptr);
  EXPECT_EQ(*list.GetAt(0), MRect(1, 2, 3, 4));
  EXPECT_EQ(list.GetAt(static_cast<int>(list.GetCount())), nullptr);
  EXPECT_EQ(list.GetAt(-1), nullptr);
  list.Scale(2.0, 0.5);
  EXPECT_EQ(*list.GetAt(1), MRect(20, 10, 60, 20));

  // Removal hands the rectangle over to the caller.
  MRect* taken = list.GetAt(0);
  list.RemoveItemsAt(1, 1);
  delete taken;
  list.DeleteAll();
  EXPECT_EQ(list.GetCount(), 0u);
  list.AddList(0, 0, 1, 1);  // the destructor frees what is left (ASan checks)
}

TEST(MRectList, LockedListKeepsItsRectangles) {
  MRectList list;
  list.AddList(0, 0, 1, 1);
  list.Lock();
  list.DeleteAll();  // the removal would be refused: nothing is freed
  ASSERT_EQ(list.GetCount(), 1u);
  EXPECT_EQ(list.GetAt(0)->GetWidth(), 1);
}  // destroyed while locked: still freed
