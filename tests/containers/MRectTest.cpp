// Rectangles and the owning list of rectangles.
#include <VantoroBasicUtils/containers/MRect.h>

#include <gtest/gtest.h>

#include <climits>

TEST(MRect, SetNormalisesWhileTheConstructorKeepsNegativeSizes) {
  MRect r, raw(10, 20, -4, -6);
  r.Set(10, 20, -4, -6);
  EXPECT_EQ(r, MRect(6, 14, 4, 6));
  EXPECT_EQ(raw.GetWidth() * 10 + raw.GetHeight(), -46);
  EXPECT_TRUE(raw != r);
  r.Set(INT_MIN, 0, INT_MIN, 1);  // no overflow at the end of the range
  EXPECT_EQ(r.GetWidth(), INT_MAX);
}

TEST(MRect, EdgesAndHitTest) {
  MRect r(0, 0, 10, 10), far(INT_MAX - 1, 0, 10, 10);
  EXPECT_EQ(r.GetRight(), 9);
  EXPECT_EQ(r.GetBottom(), 9);
  // One behind the last column and row counts; no wrap near the end of the range.
  for (auto [rect, px, py, hit] : {std::tuple{r, 10, 10, 1}, {r, 11, 10, 0}, {r, -1, 0, 0}, {r, 0, 11, 0},
                                   {far, INT_MAX, 5, 1}, {far, 0, 5, 0}}) {
    EXPECT_EQ(rect.IsPointed(px, py), hit) << px << "," << py;
  }
}

TEST(MRect, MoveAndScale) {
  MRect r(3, 3, 7, 7);
  r.Move(5, 5);
  EXPECT_EQ(r, MRect(5, 5, 7, 7));
  // Toward zero, not downward; saturated instead of overflowing.
  for (auto [rect, sx, sy, scaled] : {std::tuple{MRect(3, 3, 5, 5), 0.5, 0.5, MRect(1, 1, 2, 2)},
                                      {MRect(-3, 0, 1, 1), 1.5, 1.0, MRect(-4, 0, 1, 1)},
                                      {MRect(1 << 30, 0, 1, 1), 1e6, 1.0, MRect(INT_MAX, 0, 1000000, 1)}}) {
    rect.Scale(sx, sy);
    EXPECT_EQ(rect, scaled);
  }
}

TEST(MRectList, OwnsItsRectanglesAndCountsFromZero) {
  MRectList list;
  EXPECT_EQ(list.GetAt(0), nullptr);
  list.AddList(1, 2, 3, 4);
  list.AddList(10, 20, 30, 40);
  EXPECT_EQ(*list.GetAt(0), MRect(1, 2, 3, 4));
  EXPECT_TRUE(list.GetAt(2) == nullptr && list.GetAt(-1) == nullptr);
  list.Scale(2.0, 0.5);
  EXPECT_EQ(*list.GetAt(1), MRect(20, 10, 60, 20));
  MRect* taken = list.GetAt(0);  // removal hands the rectangle over to the caller
  list.RemoveItemsAt(1, 1);
  delete taken;
  list.Lock();
  list.DeleteAll();  // the removal would be refused: nothing is freed
  EXPECT_EQ(list.GetAt(0)->GetWidth(), 60);
  list.Unlock();
  list.DeleteAll();
  EXPECT_EQ(list.GetCount(), 0u);
  list.AddList(0, 0, 1, 1);
  list.Lock();
}  // destroyed while locked: still freed (ASan checks)
