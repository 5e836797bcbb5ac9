// Iterators that stay correct while their array changes: a few walks spelled
// out by hand, beside the random runs checked against the model (which also
// covers iterators left behind by a dying array).
#include <VantoroBasicUtils/containers/LArrayIterator.h>

#include <gtest/gtest.h>

#include <string>

TEST(LArrayIterator, WalksAfterChanges) {
  // Changes are pairs: 'r' removes the item at the digit's index, 'i' inserts
  // an 'x' there (9 appends), 'w' steps the iterator forward and removes the
  // item it reached. The walk then takes three steps.
  struct Case {
    const char* items;
    long start;
    const char* changes;
    bool forward;
    const char* walk;
  } cases[] = {
      {"abcd", 3, "r1", true, "d--"},   {"abcd", 3, "r3", true, "d--"},   // removed: Next goes behind it,
      {"abcd", 3, "r3", false, "ba-"},  {"abc", 3, "r3", true, "---"},    // Previous before it
      {"abc", 3, "r3", false, "ba-"},   {"abc", 2, "i2", false, "xa-"},   // insert at the current item: stays on it
      {"abc", 2, "i3", true, "xc-"},    {"abcde", 3, "r3r1", true, "e--"},  // removed: later removals unheard,
      {"abcde", 3, "r3i1", true, "de-"}, {"", 0, "i9i9", true, "xx-"},       // insertions followed
      {"", kIterFromEnd, "i9", true, "---"}, {"", kIterFromEnd, "i9", false, "x--"},
      {"abc", 5, "", false, "cba"},     {"abc", -3, "", true, "abc"},     {"abc", 0, "w0w0w0", false, "---"},
      {"abc", 0, "w0w0", true, "c--"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.items) + " " + std::to_string(c.start) + " " + c.changes);
    LArray a(1);
    for (const char* p = c.items; *p; ++p) a.InsertItemsAt(1, kLastIndex, p, 0);
    LArrayIterator it(a, c.start);
    char item;
    for (const char* op = c.changes; *op; op += 2) {
      if (*op == 'r') a.RemoveItemsAt(1, op[1] - '0');
      if (*op == 'i') a.InsertItemsAt(1, op[1] - '0', "x", 0);
      if (*op == 'w' && it.Next(&item)) a.RemoveItemsAt(1, it.GetCurrentIndex());
    }
    std::string seen;
    for (int i = 0; i < 3; ++i) seen += (c.forward ? it.Next(&item) : it.Previous(&item)) ? item : '-';
    EXPECT_EQ(seen, c.walk);
  }
}
