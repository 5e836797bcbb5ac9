#include "containers/LArray.h"

#include <cstring>
#include <typeinfo>

#include "containers/Handle.h"
#include "containers/LArrayIterator.h"
#include "containers/MRect.h"

namespace {
// The most items an array can count: indices are signed 32-bit, and
// kLastIndex must stay above every valid index.
constexpr uint64_t kMaxItems = 0x7FFFFFFE;

// Every item copy goes through here; pointer-sized and 4-byte items, the
// most frequent, are one move each. Empty copies are skipped: an array of
// 0-byte items never gets a block, and its item addresses are null.
inline void MoveBytes(void* dest, const void* source, std::size_t size) {
  switch (size) {
    case 0: return;
    case 4: std::memmove(dest, source, 4); return;
    case 8: std::memmove(dest, source, 8); return;
    default: std::memmove(dest, source, size);
  }
}

}  // namespace

// ---- construction

LArray::LArray(unsigned long itemSize, LComparator* comparator, bool keepSorted) {
  InitArray(itemSize, comparator, true, keepSorted);
}

void LArray::InitArray(unsigned long itemSize, LComparator* comparator, bool isSorted, bool keepSorted) {
  mItemSize = static_cast<uint32_t>(itemSize);
  mItemCount = 0;
  mBytesUsed = 0;
  mBytesAllocated = 0;
  mItemsH = nullptr;
  mLockCount = 0;
  mIterators = nullptr;
  mOwnsComparator = comparator != nullptr;
  if (comparator) {
    mComparator = comparator;
  } else if (itemSize == 4) {
    mComparator = &sLongComparator;
  } else {
    mComparator = &sBytesComparator;
  }
  mIsSorted = isSorted;
  mKeepSorted = keepSorted;
}

LArray::~LArray() {
  if (mOwnsComparator) delete mComparator;
  delete mItemsH;
  for (LArrayIterator* it = mIterators; it; it = it->GetNextIterator()) it->ArrayDied();
}

// ---- queries

bool LArray::ValidIndex(long& index) const {
  if (index == kLastIndex) index = mItemCount;
  return index >= 1 && index <= mItemCount;
}

unsigned long LArray::GetItemSize(long) const { return mItemSize; }

unsigned long LArray::GrabItemSize(long) const { return mItemSize; }

unsigned long LArray::GrabItemRangeSize(long start, long end) const {
  return static_cast<unsigned long>(end - start + 1) * mItemSize;
}

bool LArray::FetchItemAt(long index, void* dest, unsigned long& size) const {
  if (!ValidIndex(index)) return false;
  unsigned long itemSize = GrabItemSize(index);
  if (itemSize < size) size = itemSize;
  MoveBytes(dest, GetItemPtr(index), size);
  return true;
}

bool LArray::FetchItemAt(long index, void* dest) const {
  if (!ValidIndex(index)) return false;
  if (HasPlainItemAccess()) {
    CopyItemOut(index, dest);
  } else {
    PeekItem(index, dest);
  }
  return true;
}

bool LArray::LearnItemAccess() const {
  // Asked after construction, when the dynamic type is final.
  const std::type_info& type = typeid(*this);
  bool plain = type == typeid(LArray) || type == typeid(LList) || type == typeid(MRectList);
  mItemAccess.store(plain ? 1 : 2, std::memory_order_relaxed);
  return plain;
}

void* LArray::GetItemPtr(long index) const {
  if (!mItemsH) return nullptr;
  return mItemsH->GetPtr() + (index - 1) * static_cast<long>(mItemSize);
}

Handle* LArray::GetItemsHandle() const {
  // Trimming the slack is no change of content: the array stays logically const.
  const_cast<LArray*>(this)->AdjustAllocation(0, 0);
  return mItemsH;
}

void LArray::Lock() const {
  if (++mLockCount == 1 && mItemsH) mItemsH->Lock();
}

void LArray::Unlock() const {
  if (mLockCount == 0) return;  // unpaired: never wrap into a lasting lock
  if (--mLockCount == 0 && mItemsH) mItemsH->Unlock();
}

// ---- storage

bool LArray::CanGrowBy(unsigned long itemDelta) const {
  uint64_t count = static_cast<uint64_t>(mItemCount) + itemDelta;
  if (itemDelta > kMaxItems || count > kMaxItems) return false;
  // The growth step asks for one item of slack on top.
  return (count + 1) * mItemSize <= Handle::kMaxSize;
}

void LArray::AdjustAllocation(unsigned long itemCount, unsigned long) {
  if (!CanGrowBy(itemCount)) return;
  InternalAdjustAllocation(0, (static_cast<unsigned long>(mItemCount) + itemCount) * mItemSize);
}

void LArray::InternalAdjustAllocation(unsigned long, unsigned long bytes) {
  if (bytes == mBytesAllocated) return;
  if (mItemsH) {
    mItemsH->Resize(bytes);
  } else {
    mItemsH = new Handle(bytes);
  }
  mBytesAllocated = static_cast<uint32_t>(bytes);
}

void LArray::AdjustStorage(long itemDelta, long) {
  int32_t newCount = static_cast<int32_t>(mItemCount + itemDelta);
  uint32_t newBytes = mItemSize * static_cast<uint32_t>(newCount);
  if (newBytes > mBytesAllocated) {
    InternalAdjustAllocation(0, static_cast<unsigned long>(newBytes) + mItemSize);
  } else if (itemDelta < 0) {
    InternalAdjustAllocation(0, static_cast<unsigned long>(mBytesAllocated - mBytesUsed) + newBytes);
  }
  mBytesUsed = newBytes;
  mItemCount = newCount;
}

void LArray::ShiftItems(long start, long end, long itemDelta, long) {
  MoveBytes(GetItemPtr(start + itemDelta), GetItemPtr(start), GrabItemRangeSize(start, end));
}

void LArray::PeekItem(long index, void* dest) const {
  MoveBytes(dest, GetItemPtr(index), GrabItemSize(index));
}

void LArray::PokeItem(long index, const void* item, unsigned long size) {
  // An item has room for mItemSize bytes: a larger size would run into the
  // next item or past the block.
  if (size > mItemSize) size = mItemSize;
  MoveBytes(GetItemPtr(index), item, size);
}

void LArray::StoreNewItems(unsigned long count, long index, const void* item, unsigned long size) {
  if (!item) return;
  for (long i = index; i < index + static_cast<long>(count); ++i) PokeItem(i, item, size);
}

// ---- changes

long LArray::InsertItemsAt(unsigned long count, long index, const void* item, unsigned long size) {
  if (count == 0 || mLockCount != 0 || !CanGrowBy(count)) return kBadIndex;
  if (size == 0) size = mItemSize;
  if (mKeepSorted) index = FetchInsertIndexOf(item, size);
  if (index > mItemCount) index = mItemCount + 1;
  if (index < 1) index = 1;

  long oldCount = mItemCount;
  AdjustStorage(static_cast<long>(count), static_cast<long>(count * size));
  if (index <= oldCount) ShiftItems(index, oldCount, static_cast<long>(count), static_cast<long>(count * size));
  mIsSorted = mKeepSorted;
  StoreNewItems(count, index, item, size);
  ItemsInserted(count, index);
  return index;
}

void LArray::RemoveItemsAt(unsigned long count, long index) {
  if (count == 0 || mLockCount != 0 || !ValidIndex(index)) return;
  if (count > static_cast<unsigned long>(mItemCount - index + 1)) count = mItemCount - index + 1;
  long n = static_cast<long>(count);
  long bytes = static_cast<long>(GrabItemRangeSize(index, index + n - 1));
  if (index + n <= mItemCount) ShiftItems(index + n, mItemCount, -n, -bytes);
  AdjustStorage(-n, -bytes);
  ItemsRemoved(count, index);
}

void LArray::AssignItemsAt(unsigned long count, long index, const void* item, unsigned long size) {
  if (!ValidIndex(index) || count == 0) return;
  if (mKeepSorted) {
    RemoveItemsAt(count, index);
    InsertItemsAt(count, index, item, size);
    return;
  }
  long last = mItemCount;
  if (count < static_cast<unsigned long>(mItemCount - index + 1)) last = index + static_cast<long>(count) - 1;
  if (size == 0) size = mItemSize;
  for (long i = index; i <= last; ++i) PokeItem(i, item, size);
  mIsSorted = false;
}

void LArray::Remove(const void* item, unsigned long size) {
  long index = FetchIndexOf(item, size);
  if (index != kBadIndex) RemoveItemsAt(1, index);
}

void LArray::SwapItems(long a, long b) {
  if (mKeepSorted || !ValidIndex(a) || !ValidIndex(b)) return;
  StPointerBlock scratch(static_cast<long>(GrabItemSize(a)));
  if (!scratch) return;  // no scratch memory: leave the items as they are
  InternalSwapItems(a, b, scratch);
  mIsSorted = false;
}

void LArray::MoveItem(long from, long to) {
  if (mKeepSorted || !ValidIndex(from) || !ValidIndex(to) || from == to) return;
  StPointerBlock scratch(static_cast<long>(GrabItemSize(from)));
  if (!scratch) return;
  InternalMoveItem(from, to, scratch);
  mIsSorted = false;
}

void LArray::InternalSwapItems(long a, long b, void* buffer) {
  PeekItem(a, buffer);
  InternalCopyItem(b, a);
  PokeItem(b, buffer, GrabItemSize(a));
}

void LArray::InternalCopyItem(long source, long dest) { PokeItem(dest, GetItemPtr(source), mItemSize); }

void LArray::InternalMoveItem(long from, long to, void* buffer) {
  PeekItem(from, buffer);
  unsigned long size = GrabItemSize(from);
  if (from < to) {
    ShiftItems(from + 1, to, -1, -static_cast<long>(size));
  } else {
    ShiftItems(to, from - 1, 1, static_cast<long>(size));
  }
  PokeItem(to, buffer, size);
}

// ---- iterators

void LArray::AttachIterator(LArrayIterator* iterator) const {
  iterator->SetNextIterator(mIterators);
  mIterators = iterator;
}

void LArray::DetachIterator(LArrayIterator* iterator) const {
  LArrayIterator** link = &mIterators;
  while (*link && *link != iterator) link = &(*link)->mNextIterator;
  if (*link) *link = iterator->GetNextIterator();
}

void LArray::ItemsInserted(unsigned long count, long index) {
  for (LArrayIterator* it = mIterators; it; it = it->GetNextIterator()) it->ItemsInserted(count, index);
}

void LArray::ItemsRemoved(unsigned long count, long index) {
  for (LArrayIterator* it = mIterators; it; it = it->GetNextIterator()) it->ItemsRemoved(count, index);
}

// ---- LList

LList::LList() : LArray(sizeof(void*), nullptr, false) {}

LList::LList(unsigned long itemSize, unsigned long itemCount) : LArray(itemSize, nullptr, false) {
  AdjustAllocation(itemCount, 0);
}

LList::~LList() = default;

void LList::SetItemAt(long index, const void* item) {
  if (ValidIndex(index)) {
    AssignItemsAt(1, index, item, 0);
  } else {
    InsertItemsAt(1, index, item, 0);
  }
}
