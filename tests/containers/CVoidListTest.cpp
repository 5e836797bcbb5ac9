// The cursor list: Get moves the cursor, View leaves it, Add puts it on the new node.
#include <VantoroBasicUtils/containers/CVoidList.h>

#include <gtest/gtest.h>

#include <string>

namespace {

char a = 'a', b = 'b', c = 'c', x = 'x', y = 'y', z = 'z';

char At(void* e) { return e ? *static_cast<char*>(e) : '0'; }

// The elements from head to tail, read without touching the cursor, then the
// cursor's element and position: "abc b2".
std::string State(CVoidList& list) {
  std::string s;
  for (void* e = list.ViewHead(); e; e = list.ViewNext(e)) s += At(e);
  return s + " " + At(list.GetCurrent()) + std::to_string(list.GetPosition());
}

// Runs cursor steps, one letter each, and gives the elements they return.
std::string Steps(CVoidList& list, const char* steps) {
  std::string s;
  for (; *steps; ++steps) {
    switch (*steps) {
      case 'h': s += At(list.GetHead()); break;
      case 't': s += At(list.GetTail()); break;
      case 'n': s += At(list.GetNext()); break;
      case 'p': s += At(list.GetPrev()); break;
      case 'N': s += At(list.ViewNext()); break;
      case 'P': s += At(list.ViewPrev()); break;
    }
  }
  return s;
}

void Abc(CVoidList& list) {
  for (char* e : {&a, &b, &c}) list.AddList(e);
}

}  // namespace

TEST(CVoidList, AddPutsTheCursorOnTheNewNode) {
  CVoidList list;
  for (char* e : {&a, &b, &c}) EXPECT_EQ(list.AddList(e), *e - 'a' + 1);  // the new count
  EXPECT_EQ(State(list), "abc c3");
  EXPECT_EQ(list.AddListToHead(&x), 1);  // the position, not the count
  EXPECT_EQ(list.AddList(nullptr) + list.AddListToHead(nullptr), 0);
  EXPECT_EQ(State(list), "xabc x1");
  list.GetAt(3);
  EXPECT_EQ(list.AddListAfterCurrent(&y), 4);
  EXPECT_EQ(list.AddListBeforeCurrent(&z), 4);
  EXPECT_EQ(State(list), "xabzyc z4");
  Steps(list, "tn");  // no cursor on a list with nodes: refused
  EXPECT_EQ(list.AddListAfterCurrent(&y), -1);
  EXPECT_EQ(list.AddListBeforeCurrent(&y), -1);

  CVoidList empty1, empty2;
  EXPECT_EQ(empty1.AddListAfterCurrent(&a), 1);
  EXPECT_EQ(empty2.AddListBeforeCurrent(&a), 0);  // the position stays 0 on an empty list
  EXPECT_EQ(State(empty2), "a a0");
}

TEST(CVoidList, GetMovesTheCursorAndViewLeavesIt) {
  CVoidList list;
  Abc(list);
  EXPECT_EQ(Steps(list, "hnnn"), "abc0");
  EXPECT_EQ(State(list), "abc 00");  // past the tail: no cursor
  EXPECT_EQ(Steps(list, "tppp"), "cba0");
  EXPECT_EQ(State(list), "abc a1");  // before the head: stays on the head
  EXPECT_EQ(Steps(list, "nNP"), "bca");
  EXPECT_EQ(State(list), "abc b2");
  EXPECT_EQ(Steps(list, "tN"), "c0");
  EXPECT_EQ(State(list), "abc c0");  // position cleared, while the node stays
  EXPECT_EQ(At(list.ViewNext(&a)), 'b');
  EXPECT_TRUE(list.ViewPrev(&a) == nullptr && list.ViewNext(&x) == nullptr);
  CVoidList empty;
  EXPECT_TRUE(empty.ViewHead() == nullptr && empty.ViewTail() == nullptr);
}

TEST(CVoidList, PositionsStayTrueAfterAViewClearedThem) {
  CVoidList list;
  Abc(list);
  Steps(list, "tN");  // position 0, cursor still on c
  EXPECT_EQ(list.AddListAfterCurrent(&x), 4);  // the true position of the new node
  Steps(list, "hP");  // position 0, cursor on a
  EXPECT_EQ(list.AddListBeforeCurrent(&y), 1);
  EXPECT_EQ(State(list), "yabcx y1");
  for (int p : {5, 1, 3, 4, 2, 5}) EXPECT_EQ(At(list.GetAt(p)), "yabcx"[p - 1]) << p;
  EXPECT_TRUE(list.GetAt(0) == nullptr && list.GetAt(6) == nullptr);
  EXPECT_EQ(State(list), "yabcx x5");  // unchanged
  list.GetNext();  // cursor gone: GetAt starts over
  EXPECT_EQ(At(list.GetAt(2)), 'a');
}

TEST(CVoidList, GetByElement) {
  CVoidList list;
  Abc(list);
  // Past the tail: no cursor; before the head: stays on the head; an
  // element not in the list: position cleared.
  for (auto [next, element, got, state] : {std::tuple{true, &a, 'b', "abc b2"}, {true, &c, '0', "abc 00"},
                                           {false, &c, 'b', "abc b2"}, {false, &a, '0', "abc a1"},
                                           {false, &x, '0', "abc a0"}}) {
    EXPECT_EQ(At(next ? list.GetNext(element) : list.GetPrev(element)), got);
    EXPECT_EQ(State(list), state);
  }
  EXPECT_EQ(list.GetPosition(&c), 3);  // the found node becomes the cursor
  EXPECT_EQ(list.GetPosition(&x), 0);
  EXPECT_EQ(State(list), "abc c3");
}

TEST(CVoidList, DeleteClearAndCopy) {
  CVoidList list, target;
  EXPECT_EQ(list.DeleteList(), -1);
  Abc(list);
  list.GetAt(2);
  EXPECT_EQ(list.DeleteList(), 2);
  EXPECT_EQ(State(list), "ac 00");
  EXPECT_EQ(list.DeleteList(), -1);
  list.GetHead();
  EXPECT_EQ(list.DeleteList(&a), 1);  // the head goes
  EXPECT_EQ(list.DeleteList(&x) + list.DeleteList(nullptr), -2);
  EXPECT_EQ(State(list), "c 00");
  list.GetHead();
  EXPECT_EQ(list.DeleteList(), 0);
  EXPECT_EQ(list.ViewTail(), nullptr);
  Abc(list);
  list.GetHead();
  EXPECT_EQ(list.DeleteList(&c), 2);  // the tail goes; the cursor elsewhere stays
  EXPECT_EQ(list.AddList(&y), 3);
  EXPECT_EQ(State(list), "aby y3");

  target.AddList(&x);
  EXPECT_EQ(CVoidList().CopyTo(&target), 0);  // an empty source empties the target
  EXPECT_EQ(target.GetCount(), 0);
  EXPECT_EQ(list.CopyTo(&target), 0);
  EXPECT_EQ(list.CopyTo(&list), 0);  // onto itself: unchanged
  EXPECT_EQ(State(target), "aby y3");
  EXPECT_EQ(list.ClearList(), 0);
  EXPECT_EQ(State(list), " 00");
  EXPECT_EQ(a, 'a');  // elements are never touched
}
