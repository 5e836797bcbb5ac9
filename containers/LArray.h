// LArray.h: the ordered array of fixed-size items, stored by value in one
// Handle, with 1-based indices, comparators and iterators that survive changes.
//
//   LArray a(sizeof(int32_t));                      // 4-byte items, none yet
//   int32_t x = 7;  a.InsertItemsAt(1, kLastIndex, &x, 0);   // appends
//   if (a.FetchItemAt(1, &x)) std::printf("first: %d\n", x);
#pragma once

#include <atomic>
#include <cstdint>
#include <cstring>

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/containers/Handle.h>
#include <VantoroBasicUtils/containers/LComparator.h>

class LArrayIterator;

// Index values. Items are numbered from 1 to the count.
constexpr long kBadIndex = 0;            // no item
constexpr long kLastIndex = 0x7FFFFFFF;  // the last item; for insertion, behind it

// An ordered array of items of one size. Items are plain bytes: no
// constructor or destructor of an item ever runs, and an array of pointers
// owns nothing they point to. Growth is linear, one item of slack at a time.
// Not thread-safe; Lock is a re-entrancy counter, not a thread lock.
// Sizes are 32-bit: a change that would take the items past 4 GiB or
// 2^31 - 1 items is refused as a bad argument.
class VBU_API LArray {
 public:
  // An empty array of `itemSize`-byte items. A non-null `comparator` comes
  // from new and is owned by the array; null picks a shared built-in one (the
  // 32-bit word order for 4-byte items, else byte order).
  explicit LArray(unsigned long itemSize, LComparator* comparator = nullptr, bool keepSorted = false);
  // Deletes an owned comparator and the items; leaves attached iterators dead.
  virtual ~LArray();

  // Two arrays never share storage.
  LArray(const LArray&) = delete;
  LArray& operator=(const LArray&) = delete;

  // ---- queries
  // Number of items.
  unsigned long GetCount() const { return static_cast<unsigned long>(mItemCount); }
  // Turns kLastIndex into the count, in place; true if 1 <= index <= count.
  bool ValidIndex(long& index) const;
  // The item size, whatever the index.
  virtual unsigned long GetItemSize(long index) const;
  // Copies up to `size` bytes of item `index` to `dest` and stores the number
  // copied in `size`; false (and `size` untouched) for an invalid index.
  virtual bool FetchItemAt(long index, void* dest, unsigned long& size) const;
  // Copies item `index` to `dest`, which holds a whole item; false for an invalid index.
  virtual bool FetchItemAt(long index, void* dest) const;
  // Index of an item equal to `*item` (`size` 0 means the item size), or 0.
  // Binary search when the array counts as sorted, else linear.
  virtual long FetchIndexOf(const void* item, unsigned long size = 0) const;

  // ---- changes
  // Inserts `count` copies of `*item` (`size` 0 means the item size) before
  // `index`, clamped to 1..count+1, or at the sorted place if kept sorted.
  // A null `item` leaves the new bytes indeterminate. Gives the first new
  // index, or 0 if refused (count 0, locked array, size limit).
  virtual long InsertItemsAt(unsigned long count, long index, const void* item, unsigned long size = 0);
  // Removes up to `count` items from `index` on; nothing for an invalid index or a locked array.
  virtual void RemoveItemsAt(unsigned long count, long index);
  // Overwrites items `index`.. with copies of `*item` (a fill). On a kept-sorted
  // array: a removal and a sorted insertion instead.
  virtual void AssignItemsAt(unsigned long count, long index, const void* item, unsigned long size = 0);
  // Exchanges two items; nothing on a kept-sorted array or for an invalid index.
  virtual void SwapItems(long a, long b);
  // Moves item `from` to final index `to`; the items between close up.
  virtual void MoveItem(long from, long to);
  // Removes the one item that FetchIndexOf finds, if any.
  virtual void Remove(const void* item, unsigned long size = 0);
  // Address of item `index` in the block; checks nothing. Valid until the storage changes.
  virtual void* GetItemPtr(long index) const;
  // Sets the allocation to exactly the items present plus `itemCount` more;
  // `bytes` is not read. AdjustAllocation(0, 0) trims the slack.
  virtual void AdjustAllocation(unsigned long itemCount, unsigned long bytes = 0);

  // ---- ordering and search
  // Shell sort into comparator order, unless already counted as sorted.
  virtual void Sort();
  // Index of an item matching `key`, by the comparator's key operations, or 0.
  virtual long FetchIndexOfKey(const void* key) const;
  // Where `*item` belongs in a sorted array (before equal items found), or
  // kLastIndex if the array does not count as sorted.
  virtual long FetchInsertIndexOf(const void* item, unsigned long size = 0) const;
  // Where an item with `key` belongs, as FetchInsertIndexOf.
  virtual long FetchInsertIndexOfKey(const void* key) const;

  // The items are counted as being in comparator order.
  bool IsSorted() const { return mIsSorted; }
  // The array keeps itself in comparator order.
  bool IsKeptSorted() const { return mKeepSorted; }
  // Forget the sorted state, after items were changed through GetItemPtr.
  void InvalidateSort() { mIsSorted = false; }
  // Keep sorted from now on (sorting at once), or stop doing so.
  void SetKeepSorted(bool keep);
  // Replaces the comparator (the array owns the new one); null is ignored.
  void SetComparator(LComparator* comparator);
  LComparator* GetComparator() const { return mComparator; }

  // The storage, trimmed to the items present; null if the array never held
  // an item. The array stays the owner.
  Handle* GetItemsHandle() const;
  // Nesting count: while above 0, insertion and removal are refused.
  void Lock() const;
  // Undoes one Lock; does nothing on an unlocked array.
  void Unlock() const;

 protected:
  friend class LArrayIterator;

  // Copies item `index` to `dest`.
  virtual void PeekItem(long index, void* dest) const;
  // Copies `size` bytes (at most one item) from `item` into item `index`.
  virtual void PokeItem(long index, const void* item, unsigned long size);
  // Asks the Handle for exactly `bytes`; `itemCount` is not read.
  virtual void InternalAdjustAllocation(unsigned long itemCount, unsigned long bytes);
  // The growth policy: room for the count changed by `itemDelta`.
  virtual void AdjustStorage(long itemDelta, long byteDelta);
  // Moves items `start`..`end` by `itemDelta` places; ranges may overlap.
  virtual void ShiftItems(long start, long end, long itemDelta, long byteDelta);
  // Writes `*item` into `count` items from `index` on; nothing for a null item.
  virtual void StoreNewItems(unsigned long count, long index, const void* item, unsigned long size);
  virtual void InternalSwapItems(long a, long b, void* buffer);
  virtual void InternalMoveItem(long from, long to, void* buffer);
  virtual void InternalCopyItem(long source, long dest);
  virtual unsigned long GrabItemSize(long index) const;
  virtual unsigned long GrabItemRangeSize(long start, long end) const;

  long LinearSearch(const void* item, unsigned long size) const;
  long LinearSearchByKey(const void* key) const;
  long BinarySearch(const void* item, unsigned long size) const;
  long BinarySearchByKey(const void* key) const;

  void AttachIterator(LArrayIterator* iterator) const;
  void DetachIterator(LArrayIterator* iterator) const;
  void ItemsInserted(unsigned long count, long index);
  void ItemsRemoved(unsigned long count, long index);

  uint32_t mItemSize;
  int32_t mItemCount;
  uint32_t mBytesUsed;
  uint32_t mBytesAllocated;
  Handle* mItemsH;
  mutable uint32_t mLockCount;
  mutable LArrayIterator* mIterators;
  LComparator* mComparator;
  bool mOwnsComparator;
  bool mIsSorted;
  bool mKeepSorted;

  static LLongComparator sLongComparator;
  static LComparator sBytesComparator;

 private:
  void InitArray(unsigned long itemSize, LComparator* comparator, bool isSorted, bool keepSorted);
  // True if the array may grow by `itemDelta` items and stay within its 32-bit sizes.
  bool CanGrowBy(unsigned long itemDelta) const;
  // True if this array reaches its items as LArray itself does: its class is
  // one of the library's own, which leave FetchItemAt, PeekItem, PokeItem,
  // GetItemPtr and GrabItemSize alone. Copies, walks, sorts and searches then
  // skip those virtual calls, with the same results. Inline, as iterators
  // ask it for every item.
  bool HasPlainItemAccess() const {
    uint8_t access = mItemAccess.load(std::memory_order_relaxed);
    return access == 1 || (access == 0 && LearnItemAccess());
  }
  bool LearnItemAccess() const;
  // Copies item `index` (valid) out of the block, for plain item access.
  // Pointer-sized and 4-byte items, the most frequent, are one move each. An
  // array of 0-byte items never gets a block. (The compiler may not see that
  // a branch for another size never runs with the caller's item: hence the
  // pragmas, which keep hosts' builds quiet.)
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Warray-bounds"
#pragma GCC diagnostic ignored "-Wstringop-overflow"
#endif
  void CopyItemOut(long index, void* dest) const {
    if (mItemSize == 0) return;
    const char* source = mItemsH->Handle::GetPtr() + (index - 1) * static_cast<long>(mItemSize);
    switch (mItemSize) {
      case 4: std::memcpy(dest, source, 4); break;
      case 8: std::memcpy(dest, source, 8); break;
      default: std::memcpy(dest, source, mItemSize);
    }
  }
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
  // The sort and search algorithms, over the items as this class reaches them.
  friend class LArrayOrdering;

  // 0 until first asked (the class is known only after construction), then
  // 1 for plain item access, 2 for a subclass's own.
  mutable std::atomic<uint8_t> mItemAccess{0};
};

// LArray of pointer-sized items by default, with SetItemAt to replace or append.
class VBU_API LList : public LArray {
 public:
  // Pointer-sized items.
  LList();
  // Items of `itemSize` bytes, with room for `itemCount` of them.
  LList(unsigned long itemSize, unsigned long itemCount);
  ~LList() override;

  // Replaces item `index` if it exists, else inserts (appends) at `index`.
  virtual void SetItemAt(long index, const void* item);
};
