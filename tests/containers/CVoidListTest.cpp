// The cursor list: Get moves the cursor, View leaves it, Add puts it on the new node.
#include <VantoroBasicUtils/containers/CVoidList.h>

#include <gtest/gtest.h>

#include <string>

namespace {

char a = 'a', b = 'b', c = 'c', x = 'x', y = 'y';

// The elements from head to tail, read without touching the cursor.
std::string Contents(CVoidList& list) {
  std::string s;
  for (void* e = list.ViewHead(); e; e = list.ViewNext(e)) s += *static_cast<char*>(e);
  return s;
}

char At(void* e) { return e ? *static_cast<char*>(e) : '0'; }

void Abc(CVoidList& list) {
  list.AddList(&a);
  list.AddList(&b);
  list.AddList(&c);
}

}  // namespace

TEST(CVoidList, AddPutsTheCursorOnTheNewNode) {
  CVoidList list;
  EXPECT_EQ(list.AddList(&a), 1);
  EXPECT_EQ(list.AddList(&b), 2);
  EXPECT_EQ(list.AddList(&c), 3);
  EXPECT_EQ(list.GetCount(), 3);
  EXPECT_EQ(list.GetPosition(), 3);
  EXPECT_EQ(list.GetCurrent(), &c);
  EXPECT_EQ(list.AddListToHead(&x), 1);  // the position, not the count
  EXPECT_EQ(Contents(list), "xabc");
  EXPECT_EQ(list.AddList(nullptr), 0);
  EXPECT_EQ(list.AddListToHead(nullptr), 0);
  EXPECT_EQ(list.GetCount(), 4);
}

TEST(CVoidList, WalkingForwardAndBack) {
  CVoidList list;
  Abc(list);
  list.GetHead();
  EXPECT_EQ(At(list.GetNext()), 'b');
  EXPECT_EQ(At(list.GetNext()), 'c');
  EXPECT_EQ(list.GetNext(), nullptr);  // past the tail: no cursor
  EXPECT_EQ(list.GetCurrent(), nullptr);
  EXPECT_EQ(list.GetPosition(), 0);

  list.GetTail();
  EXPECT_EQ(At(list.GetPrev()), 'b');
  EXPECT_EQ(At(list.GetPrev()), 'a');
  EXPECT_EQ(list.GetPrev(), nullptr);  // before the head: stays on the head
  EXPECT_EQ(list.GetCurrent(), &a);
  EXPECT_EQ(list.GetPosition(), 1);
}

TEST(CVoidList, ViewLeavesTheCursor) {
  CVoidList list;
  Abc(list);
  list.GetAt(2);
  EXPECT_EQ(list.ViewNext(), &c);
  EXPECT_EQ(list.ViewPrev(), &a);
  EXPECT_EQ(list.GetCurrent(), &b);
  list.GetTail();
  EXPECT_EQ(list.ViewNext(), nullptr);
  EXPECT_EQ(list.GetPosition(), 0);  // cleared, while the node stays
  EXPECT_EQ(list.GetCurrent(), &c);
  EXPECT_EQ(list.ViewNext(&a), &b);
  EXPECT_EQ(list.ViewPrev(&a), nullptr);
  EXPECT_EQ(list.ViewNext(&x), nullptr);
  EXPECT_EQ(list.ViewHead(), &a);
  EXPECT_EQ(list.ViewTail(), &c);
  CVoidList empty;
  EXPECT_EQ(empty.ViewHead(), nullptr);
  EXPECT_EQ(empty.ViewTail(), nullptr);
}

TEST(CVoidList, AddAroundTheCursor) {
  CVoidList list;
  Abc(list);
  list.GetAt(2);
  EXPECT_EQ(list.AddListAfterCurrent(&x), 3);
  EXPECT_EQ(Contents(list), "abxc");
  EXPECT_EQ(list.GetCurrent(), &x);

  CVoidList other;
  Abc(other);
  other.GetAt(2);
  EXPECT_EQ(other.AddListBeforeCurrent(&x), 2);
  EXPECT_EQ(Contents(other), "axbc");
  EXPECT_EQ(other.GetCurrent(), &x);
  EXPECT_EQ(At(other.GetNext()), 'b');

  other.GetNext();
  other.GetNext();
  other.GetNext();  // no cursor on a list with nodes: refused
  EXPECT_EQ(other.AddListAfterCurrent(&y), -1);
  EXPECT_EQ(other.AddListBeforeCurrent(&y), -1);
  EXPECT_EQ(other.GetCount(), 4);

  CVoidList empty1, empty2;
  EXPECT_EQ(empty1.AddListAfterCurrent(&a), 1);
  EXPECT_EQ(empty2.AddListBeforeCurrent(&a), 0);  // the position stays 0 on an empty list
  EXPECT_EQ(empty2.GetCount(), 1);
  EXPECT_EQ(empty2.GetCurrent(), &a);
}

TEST(CVoidList, PositionsStayTrueAfterAViewClearedThem) {
  CVoidList list;
  Abc(list);
  list.GetTail();
  list.ViewNext();  // position 0, cursor still on c
  EXPECT_EQ(list.AddListAfterCurrent(&x), 4);  // the true position of the new node
  EXPECT_EQ(Contents(list), "abcx");
  list.GetAt(2);
  list.ViewPrev();
  list.ViewPrev();
  list.GetHead();
  list.ViewPrev();  // position 0, cursor on a
  EXPECT_EQ(list.AddListBeforeCurrent(&y), 1);
  EXPECT_EQ(Contents(list), "yabcx");
  for (int p : {5, 1, 3, 4, 2, 5}) EXPECT_EQ(At(list.GetAt(p)), Contents(list)[p - 1]) << p;
}

TEST(CVoidList, GetAtWalksFromTheCursorAndRefusesOutOfRange) {
  CVoidList list;
  Abc(list);
  EXPECT_EQ(list.GetAt(2), &b);
  EXPECT_EQ(list.GetAt(3), &c);
  EXPECT_EQ(list.GetPosition(), 3);
  EXPECT_EQ(list.GetAt(0), nullptr);
  EXPECT_EQ(list.GetAt(4), nullptr);
  EXPECT_EQ(list.GetPosition(), 3);  // unchanged
  EXPECT_EQ(list.GetAt(1), &a);
  list.GetNext();
  list.GetNext();
  list.GetNext();  // cursor gone
  EXPECT_EQ(list.GetAt(2), &b);
}

TEST(CVoidList, GetByElement) {
  CVoidList list;
  Abc(list);
  EXPECT_EQ(list.GetNext(&a), &b);
  EXPECT_EQ(list.GetPosition(), 2);
  EXPECT_EQ(list.GetNext(&c), nullptr);
  EXPECT_EQ(list.GetCurrent(), nullptr);
  EXPECT_EQ(list.GetPrev(&c), &b);
  EXPECT_EQ(list.GetPosition(), 2);
  EXPECT_EQ(list.GetPrev(&a), nullptr);
  EXPECT_EQ(list.GetCurrent(), &a);
  EXPECT_EQ(list.GetPosition(), 1);
  EXPECT_EQ(list.GetPrev(&x), nullptr);
  EXPECT_EQ(list.GetPosition(), 0);
  EXPECT_EQ(list.GetCurrent(), &a);

  EXPECT_EQ(list.GetPosition(&c), 3);  // the found node becomes the cursor
  EXPECT_EQ(list.GetCurrent(), &c);
  EXPECT_EQ(list.GetPosition(&x), 0);
  EXPECT_EQ(list.GetCurrent(), &c);
}

TEST(CVoidList, Deleting) {
  CVoidList list;
  EXPECT_EQ(list.DeleteList(), -1);
  Abc(list);
  list.GetAt(2);
  EXPECT_EQ(list.DeleteList(), 2);
  EXPECT_EQ(list.GetCurrent(), nullptr);
  EXPECT_EQ(list.DeleteList(), -1);
  EXPECT_EQ(Contents(list), "ac");

  list.GetHead();
  EXPECT_EQ(list.DeleteList(&a), 1);  // the head goes
  EXPECT_EQ(list.GetCurrent(), nullptr);
  EXPECT_EQ(list.ViewHead(), &c);
  EXPECT_EQ(list.DeleteList(&x), -1);
  EXPECT_EQ(list.DeleteList(nullptr), -1);
  list.GetHead();
  EXPECT_EQ(list.DeleteList(), 0);
  EXPECT_EQ(list.ViewHead(), nullptr);
  EXPECT_EQ(list.ViewTail(), nullptr);

  Abc(list);
  list.GetHead();
  EXPECT_EQ(list.DeleteList(&c), 2);  // the tail goes; the cursor elsewhere stays
  EXPECT_EQ(list.ViewTail(), &b);
  EXPECT_EQ(list.GetCurrent(), &a);
  EXPECT_EQ(list.AddList(&y), 3);
  EXPECT_EQ(Contents(list), "aby");
}

TEST(CVoidList, ClearAndCopy) {
  CVoidList list, target;
  target.AddList(&x);
  EXPECT_EQ(list.CopyTo(&target), 0);  // an empty source empties the target
  EXPECT_EQ(target.GetCount(), 0);
  Abc(list);
  EXPECT_EQ(list.CopyTo(&target), 0);
  EXPECT_EQ(Contents(target), "abc");
  EXPECT_EQ(target.GetCurrent(), &c);
  EXPECT_EQ(list.GetCurrent(), nullptr);
  EXPECT_EQ(list.CopyTo(&list), 0);  // onto itself: unchanged
  EXPECT_EQ(Contents(list), "abc");
  EXPECT_EQ(list.ClearList(), 0);
  EXPECT_EQ(list.GetCount(), 0);
  EXPECT_EQ(list.GetHead(), nullptr);
  EXPECT_EQ(a, 'a');  // elements are never touched
}
