// CVoidList.h: a doubly linked list of untyped pointers with one built-in
// cursor. Get operations move the cursor, View operations leave it, Add
// operations put it on the new node.
//
//   int a = 1, b = 2;
//   CVoidList list;  list.AddList(&a);  list.AddList(&b);
//   for (void* e = list.GetHead(); e; e = list.GetNext()) std::printf("%d\n", *static_cast<int*>(e));
//   list.DeleteList(&a);             // the list never frees its elements
#pragma once

#include <VantoroBasicUtils/platform/Export.h>

// A node of CVoidList. Destroying a node links its neighbours to each other.
class VBU_API ListNode {
 public:
  explicit ListNode(void* element) : mPrev(nullptr), mNext(nullptr), mElement(element) {}
  ~ListNode();

  ListNode* GetPrev() const { return mPrev; }
  ListNode* GetNext() const { return mNext; }
  void SetPrev(ListNode* node) { mPrev = node; }
  void SetNext(ListNode* node) { mNext = node; }
  void* GetElement() const { return mElement; }

 private:
  ListNode* mPrev;
  ListNode* mNext;
  void* mElement;
};

// A singly linked node; a building block for hosts.
class VBU_API LinkNode {
 public:
  LinkNode() : mNext(nullptr) {}
  ~LinkNode() {}
  LinkNode* GetNext() const { return mNext; }
  void SetNext(LinkNode* node) { mNext = node; }

 private:
  LinkNode* mNext;
};

// The list owns its nodes, not its elements. A null pointer is never an
// element: 0 is the result of every failed look-up. Elements are found by
// address, from the head. Positions count from 1; 0 means no cursor.
class VBU_API CVoidList {
 public:
  CVoidList();
  ~CVoidList();

  // Copies the five fields: both lists then name the same nodes, and only one
  // of them may go on to be changed or destroyed.
  CVoidList(const CVoidList&) = default;
  CVoidList& operator=(const CVoidList&) = default;

  // Add operations: the new position (cursor on the new node), 0 for a null
  // element (nothing added), -1 for failure.
  int AddList(void* element);              // = AddListToTail
  int AddListToTail(void* element);        // gives the new count
  int AddListToHead(void* element);        // gives 1
  int AddListAfterCurrent(void* element);  // -1 on a non-empty list without cursor
  int AddListBeforeCurrent(void* element); // -1 on a non-empty list without cursor

  // Removes the cursor's node; the new count, or -1 without a cursor. Clears the cursor.
  int DeleteList();
  // Removes the first node holding `element`; the new count, or -1.
  int DeleteList(void* element);
  // Removes all nodes; gives 0.
  int ClearList();

  // Look-ups give the element, or 0.
  void* GetHead();               // cursor to the head
  void* GetTail();               // cursor to the tail
  void* GetAt(int position);     // cursor to `position`, walking from the cursor
  void* GetNext();               // cursor one step forward; none past the tail
  void* GetPrev();               // cursor one step back; stays on the head before it
  void* GetNext(void* element);  // the element behind `element`; cursor there
  void* GetPrev(void* element);  // the element before `element`; cursor there
  void* GetCurrent();            // the cursor's element
  void* ViewNext();              // behind the cursor; cursor stays
  void* ViewPrev();              // before the cursor; cursor stays
  void* ViewNext(void* element);
  void* ViewPrev(void* element);
  void* ViewHead();              // 0 on an empty list
  void* ViewTail();              // 0 on an empty list

  // The cursor's position, or 0.
  int GetPosition() { return mPosition; }
  // The position of the first node holding `element`, which becomes the
  // cursor; 0 (cursor unchanged) if it is not in the list.
  int GetPosition(void* element);
  int GetCount() const { return mCount; }

  // Clears `target` and appends every element to it, in order. Gives 0, or
  // the negative result of a failed add. Leaves this list without cursor.
  int CopyTo(CVoidList* target);

 private:
  // The first node holding `element`, and its position; null if none.
  ListNode* Find(void* element, int* position = nullptr) const;
  // Links `node` in between `prev` and `next` (null: an end), counts it and
  // makes it the cursor's node.
  void LinkBetween(ListNode* node, ListNode* prev, ListNode* next);
  // The two adds around the cursor.
  int AddBesideCurrent(void* element, bool after);
  // Unlinks and destroys `node`, keeping head, tail and count right.
  void Unlink(ListNode* node);
  // Sets the cursor to `node` at `position`, or to none for a null node.
  void* SetCursor(ListNode* node, int position);
  // Restores mPosition where a View operation zeroed it but left the node.
  void SyncPosition();

  ListNode* mHead;
  ListNode* mTail;
  ListNode* mCurrent;
  int mPosition;
  int mCount;
};
