#include "containers/CVoidList.h"

#include <new>

ListNode::~ListNode() {
  if (mPrev) mPrev->mNext = mNext;
  if (mNext) mNext->mPrev = mPrev;
  mPrev = nullptr;
  mNext = nullptr;
}

CVoidList::CVoidList() : mHead(nullptr), mTail(nullptr), mCurrent(nullptr), mPosition(0), mCount(0) {}

CVoidList::~CVoidList() { ClearList(); }

// ---- private helpers

ListNode* CVoidList::Find(void* element, int* position) const {
  int index = 1;
  for (ListNode* node = mHead; node; node = node->GetNext(), ++index) {
    if (node->GetElement() == element) {
      if (position) *position = index;
      return node;
    }
  }
  return nullptr;
}

void CVoidList::Unlink(ListNode* node) {
  if (node == mHead) mHead = node->GetNext();
  if (node == mTail) mTail = node->GetPrev();
  delete node;
  --mCount;
}

void* CVoidList::SetCursor(ListNode* node, int position) {
  mCurrent = node;
  mPosition = node ? position : 0;
  return node ? node->GetElement() : nullptr;
}

void CVoidList::SyncPosition() {
  // A View operation that finds nothing zeroes the position but keeps the
  // node; walks and insertions need the true position back.
  if (!mCurrent || mPosition != 0) return;
  int index = 1;
  for (ListNode* node = mHead; node && node != mCurrent; node = node->GetNext()) ++index;
  mPosition = index;
}

// ---- adding

int CVoidList::AddList(void* element) { return AddListToTail(element); }

void CVoidList::LinkBetween(ListNode* node, ListNode* prev, ListNode* next) {
  node->SetPrev(prev);
  node->SetNext(next);
  if (prev) prev->SetNext(node); else mHead = node;
  if (next) next->SetPrev(node); else mTail = node;
  ++mCount;
  mCurrent = node;
}

int CVoidList::AddListToTail(void* element) {
  if (!element) return 0;
  ListNode* node = new (std::nothrow) ListNode(element);
  if (!node) return -1;
  LinkBetween(node, mTail, nullptr);
  mPosition = mCount;
  return mCount;
}

int CVoidList::AddListToHead(void* element) {
  if (!element) return 0;
  ListNode* node = new (std::nothrow) ListNode(element);
  if (!node) return -1;
  LinkBetween(node, nullptr, mHead);
  mPosition = 1;
  return 1;
}

int CVoidList::AddBesideCurrent(void* element, bool after) {
  if (!element) return 0;
  if (!mCurrent && mCount > 0) return -1;
  ListNode* node = new (std::nothrow) ListNode(element);
  if (!node) return -1;
  SyncPosition();
  if (!mCurrent) {
    LinkBetween(node, nullptr, nullptr);  // the empty list's first node
  } else if (after) {
    LinkBetween(node, mCurrent, mCurrent->GetNext());
  } else {
    LinkBetween(node, mCurrent->GetPrev(), mCurrent);
  }
  // After: one place on. Before: the new node takes over the position (on an
  // empty list it stays 0, and so does the result).
  if (after) ++mPosition;
  return mPosition;
}

int CVoidList::AddListAfterCurrent(void* element) { return AddBesideCurrent(element, true); }

int CVoidList::AddListBeforeCurrent(void* element) { return AddBesideCurrent(element, false); }

// ---- removing

int CVoidList::DeleteList() {
  if (!mCurrent) return -1;
  Unlink(mCurrent);
  SetCursor(nullptr, 0);
  return mCount;
}

int CVoidList::DeleteList(void* element) {
  if (!element) return -1;
  ListNode* node = Find(element);
  if (!node) return -1;
  if (node == mCurrent) mCurrent = nullptr;
  mPosition = 0;
  Unlink(node);
  return mCount;
}

int CVoidList::ClearList() {
  while (mHead) {
    ListNode* next = mHead->GetNext();
    delete mHead;
    mHead = next;
  }
  mTail = nullptr;
  mCurrent = nullptr;
  mPosition = 0;
  mCount = 0;
  return 0;
}

// ---- moving the cursor

void* CVoidList::GetHead() { return SetCursor(mHead, 1); }

void* CVoidList::GetTail() { return SetCursor(mTail, mCount); }

void* CVoidList::GetAt(int position) {
  if (position < 1 || position > mCount) return nullptr;
  SyncPosition();
  if (mPosition < 1 || mPosition > mCount) GetHead();
  if (position == mPosition) return GetCurrent();
  void* element = nullptr;
  // The position is true here, so each step reaches the goal; the cursor
  // check only guards the loop's end.
  while (mCurrent && mPosition != position) element = position > mPosition ? GetNext() : GetPrev();
  return element;
}

void* CVoidList::GetNext() {
  if (!mCurrent) return SetCursor(nullptr, 0);
  SyncPosition();
  return SetCursor(mCurrent->GetNext(), mPosition + 1);
}

void* CVoidList::GetPrev() {
  if (!mCurrent) return SetCursor(nullptr, 0);
  SyncPosition();
  if (!mCurrent->GetPrev()) {
    mPosition = 1;
    return nullptr;
  }
  return SetCursor(mCurrent->GetPrev(), mPosition - 1);
}

void* CVoidList::GetNext(void* element) {
  int position = 0;
  ListNode* node = Find(element, &position);
  return SetCursor(node ? node->GetNext() : nullptr, position + 1);
}

void* CVoidList::GetPrev(void* element) {
  int position = 0;
  ListNode* node = Find(element, &position);
  if (!node) {
    mPosition = 0;
    return nullptr;
  }
  if (!node->GetPrev()) {
    SetCursor(node, 1);
    return nullptr;
  }
  return SetCursor(node->GetPrev(), position - 1);
}

void* CVoidList::GetCurrent() { return mCurrent ? mCurrent->GetElement() : nullptr; }

// ---- looking without moving

void* CVoidList::ViewNext() {
  if (mCurrent && mCurrent->GetNext()) return mCurrent->GetNext()->GetElement();
  mPosition = 0;
  return nullptr;
}

void* CVoidList::ViewPrev() {
  if (mCurrent && mCurrent->GetPrev()) return mCurrent->GetPrev()->GetElement();
  mPosition = 0;
  return nullptr;
}

void* CVoidList::ViewNext(void* element) {
  ListNode* node = Find(element);
  return node && node->GetNext() ? node->GetNext()->GetElement() : nullptr;
}

void* CVoidList::ViewPrev(void* element) {
  ListNode* node = Find(element);
  return node && node->GetPrev() ? node->GetPrev()->GetElement() : nullptr;
}

void* CVoidList::ViewHead() { return mHead ? mHead->GetElement() : nullptr; }

void* CVoidList::ViewTail() { return mTail ? mTail->GetElement() : nullptr; }

int CVoidList::GetPosition(void* element) {
  int position = 0;
  ListNode* node = Find(element, &position);
  if (!node) return 0;
  SetCursor(node, position);
  return position;
}

int CVoidList::CopyTo(CVoidList* target) {
  if (!target || target == this) return 0;  // a list copied onto itself stays as it is
  target->ClearList();
  for (void* element = GetHead(); element; element = GetNext()) {
    int result = target->AddList(element);
    if (result < 0) return result;
  }
  return 0;
}
