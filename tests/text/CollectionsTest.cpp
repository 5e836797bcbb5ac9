// Arrays and lists of strings.
#include <VantoroBasicUtils/text/MStringArray.h>
#include <VantoroBasicUtils/text/MStringList.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace vbu::literals;

namespace {

std::u16string S(const unsigned short* s) { return s ? std::u16string(reinterpret_cast<const char16_t*>(s)) : u"<null>"; }

std::vector<std::u16string> All(const MStringArray& a) {
  std::vector<std::u16string> out;
  for (int i = 0; i < a.GetSize(); ++i) out.push_back(S(a.GetAtConst(i)));
  return out;
}

std::vector<std::u16string> All(MStringList& l) {
  std::vector<std::u16string> out;
  for (MString* s = l.GetHead(); s; s = l.GetNext()) out.push_back(S(*s));
  return out;
}

using V = std::vector<std::u16string>;

void Abcd(MStringArray& a) {
  for (auto t : {u"a"_u16, u"b"_u16, u"c"_u16, u"d"_u16}) a.InsertBefore(a.GetSize(), t);
}

}  // namespace

TEST(MStringArray, InsertDeleteAndBadIndices) {
  MStringArray a;
  a.InsertAfter(0, u"x"_u16);  // empty: nothing after index 0
  EXPECT_EQ(a.GetSize(), 0);
  a.InsertBefore(0, u"b"_u16);
  a.InsertBefore(0, u"a"_u16);
  a.InsertBefore(a.GetSize(), u"d"_u16);
  a.InsertAfter(1, u"c"_u16);
  a.InsertAfter(a.GetSize() - 1, u"e"_u16);
  a.InsertAfter(a.GetSize(), u"never"_u16);
  a.InsertBefore(-1, u"never"_u16);
  EXPECT_EQ(All(a), (V{u"a", u"b", u"c", u"d", u"e"}));
  EXPECT_TRUE(a.GetAt(-1) == nullptr && a.GetAt(a.GetSize()) == nullptr && a.GetAtConst(9) == nullptr);
  a.SetAt(9, u"never"_u16);
  a.GetAt(0)->Format(u"A%d"_u16, 1);  // the string itself
  a.DeleteAt(4);
  a.DeleteAt(4);
  EXPECT_EQ(All(a), (V{u"A1", u"b", u"c", u"d"}));
  MStringArray one(1);
  one.DeleteAt(0);
  one.SetSize(3);
  EXPECT_EQ(All(one), (V{u"", u"", u""}));
}

TEST(MStringArray, ChangeSwapAndAssign) {
  MStringArray a, b;
  Abcd(a);
  Abcd(b);
  a.Change(0, 2);  // moves the item at the second index to the first
  b.Change(2, 0);
  EXPECT_EQ(All(a), (V{u"c", u"a", u"b", u"d"}));
  EXPECT_EQ(All(b), (V{u"b", u"c", u"a", u"d"}));
  b.Swap(0, 3);
  b.Change(1, 1);
  b.SortByName();  // keeps the order
  EXPECT_EQ(All(b), (V{u"d", u"c", u"a", u"b"}));
  MStringArray copy;
  copy = b;
  copy = copy;
  EXPECT_EQ(All(copy), All(b));
}

TEST(MStringList, CursorWalksAndConversions) {
  MStringList l;
  l.DeleteAll();
  l.Add(u"x"_u16);
  unsigned short format[] = {'%', 'd', '-', '%', 's', 0};
  l.AddFormat(format, 7, u"y"_u16);
  l.Add(u"z"_u16);
  l.Add(u"w"_u16);
  EXPECT_EQ(S(*l.GetAt(2)), u"z");
  EXPECT_EQ(S(*l.GetNext()), u"w");  // the cursor stands where GetAt left it
  EXPECT_TRUE(l.GetAt(4) == nullptr && l.GetAt(-1) == nullptr);
  l.DeleteAt(0);
  l.DeleteAt(7);
  EXPECT_EQ(All(l), (V{u"7-y", u"z", u"w"}));

  MStringArray a;
  a = l;
  EXPECT_EQ(All(a), All(l));
  MStringList other;
  other = a;
  other.AddList(&l);
  other.AddList(&other);  // onto itself: doubles it, once
  EXPECT_EQ(other.GetSize(), 12);
  MStringList copy;
  copy = l;
  EXPECT_EQ(All(copy), All(l));
}
