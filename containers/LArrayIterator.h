// LArrayIterator.h: walks an LArray forward or backward and stays correct
// while items are inserted or removed, also from inside the walk.
//
//   LArray array(sizeof(int32_t));
//   for (int32_t v : {3, -1, 4}) array.InsertItemsAt(1, kLastIndex, &v, 0);
//   LArrayIterator it(array, kIterBeforeFirst);
//   int32_t x;
//   while (it.Next(&x)) { if (x < 0) array.RemoveItemsAt(1, it.GetCurrentIndex()); }
#pragma once

#include <cstdint>

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/containers/LArray.h>

// Positions and states of an iterator; valid item indices start at 1.
constexpr long kIterBeforeFirst = 0;   // before the first item
constexpr long kIterFromEnd = -1;      // argument only: start at the end
constexpr long kIterAtEnd = -2;        // behind the last item
constexpr long kIterItemRemoved = -4;  // the current item was removed
constexpr long kIterDead = -6;         // the array has been destroyed

// An iterator chained into its array, which tells it of every insertion and
// removal. Only those are told: Sort, SwapItems, MoveItem and a plain
// AssignItemsAt leave the iterator on its index, with another item there.
// An array that dies first leaves its iterators dead: they give false.
class VBU_API LArrayIterator {
 public:
  // Attaches to `array` and goes to `position` (see ResetTo).
  LArrayIterator(LArray& array, long position = kIterBeforeFirst);
  // Detaches from the array, unless the array is gone.
  virtual ~LArrayIterator();

  // A copy would not be in the array's chain: iterators are not copied.
  LArrayIterator(const LArrayIterator&) = delete;
  LArrayIterator& operator=(const LArrayIterator&) = delete;

  // Puts the iterator on item `position`; -1 or beyond the count puts it at
  // the end, 0 or below before the first item.
  void ResetTo(long position);
  // The current index, or a state value (0, -2, -4, -6).
  long GetCurrentIndex() const { return mCurrentIndex; }
  // Copies the current item; false where there is none.
  bool Current(void* dest) {
    if (mCurrentIndex == kIterDead) return false;
    if (!mArray.HasPlainItemAccess()) return mArray.FetchItemAt(mCurrentIndex, dest);
    // FetchItemAt as the library's own arrays do it, inline: walks are hot.
    if (mCurrentIndex < 1 || mCurrentIndex > mArray.mItemCount) return false;
    mArray.CopyItemOut(mCurrentIndex, dest);
    return true;
  }
  bool Current(void* dest, unsigned long& size);
  // Steps forward and copies the item there; false at the end.
  bool Next(void* dest) {
    if (mCurrentIndex == kIterDead) return false;
    mCurrentIndex = mNextIndex;
    CalcNextIndex();
    return Current(dest);
  }
  bool Next(void* dest, unsigned long& size);
  // Steps back and copies the item there; false before the first item.
  bool Previous(void* dest);
  bool Previous(void* dest, unsigned long& size);

 protected:
  friend class LArray;

  LArrayIterator* GetNextIterator() const { return mNextIterator; }
  void SetNextIterator(LArrayIterator* iterator) { mNextIterator = iterator; }
  void ArrayDied();
  void ItemsInserted(unsigned long count, long index);
  void ItemsRemoved(unsigned long count, long index);
  void CalcNextIndex() {
    if (mCurrentIndex == kIterAtEnd) {
      mNextIndex = kIterAtEnd;
    } else {
      mNextIndex = mCurrentIndex + 1 > mArray.mItemCount ? static_cast<int32_t>(kIterAtEnd) : mCurrentIndex + 1;
    }
  }
  bool CalcPreviousIndex();

  LArrayIterator* mNextIterator;
  LArray& mArray;
  int32_t mCurrentIndex;
  int32_t mNextIndex;
};

// LArrayIterator over an LList.
class VBU_API LListIterator : public LArrayIterator {
 public:
  LListIterator(LList& list, long position = kIterBeforeFirst);
  ~LListIterator() override;
};
