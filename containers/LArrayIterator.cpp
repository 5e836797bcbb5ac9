#include "containers/LArrayIterator.h"

LArrayIterator::LArrayIterator(LArray& array, long position)
    : mNextIterator(nullptr), mArray(array), mCurrentIndex(0), mNextIndex(0) {
  mArray.AttachIterator(this);
  ResetTo(position);
}

LArrayIterator::~LArrayIterator() {
  if (mCurrentIndex != kIterDead) mArray.DetachIterator(this);
}

void LArrayIterator::ResetTo(long position) {
  if (mCurrentIndex == kIterDead) return;
  if (position == kIterFromEnd || position > static_cast<long>(mArray.GetCount())) {
    mCurrentIndex = kIterAtEnd;
  } else {
    mCurrentIndex = position <= 0 ? kIterBeforeFirst : static_cast<int32_t>(position);
  }
  CalcNextIndex();
}

bool LArrayIterator::Current(void* dest, unsigned long& size) {
  if (mCurrentIndex == kIterDead) return false;
  return mArray.FetchItemAt(mCurrentIndex, dest, size);
}

bool LArrayIterator::Next(void* dest, unsigned long& size) {
  if (mCurrentIndex == kIterDead) return false;
  mCurrentIndex = mNextIndex;
  CalcNextIndex();
  return Current(dest, size);
}

bool LArrayIterator::Previous(void* dest) { return CalcPreviousIndex() && Current(dest); }

bool LArrayIterator::Previous(void* dest, unsigned long& size) {
  return CalcPreviousIndex() && Current(dest, size);
}

bool LArrayIterator::CalcPreviousIndex() {
  switch (mCurrentIndex) {
    case kIterDead:
      return false;
    case kIterItemRemoved:
      mCurrentIndex = mNextIndex == kIterAtEnd ? static_cast<int32_t>(mArray.GetCount()) : mNextIndex - 1;
      break;
    case kIterAtEnd:
      mCurrentIndex = static_cast<int32_t>(mArray.GetCount());
      break;
    default:
      if (mCurrentIndex > 0) --mCurrentIndex;
  }
  CalcNextIndex();
  return true;
}

void LArrayIterator::ArrayDied() {
  mCurrentIndex = kIterDead;
  mNextIndex = kIterDead;
}

void LArrayIterator::ItemsInserted(unsigned long count, long index) {
  if (mCurrentIndex == kIterDead) return;
  if (mCurrentIndex == kIterItemRemoved) {
    if (index <= mNextIndex) mNextIndex += static_cast<int32_t>(count);
    return;
  }
  if (index <= mCurrentIndex) mCurrentIndex += static_cast<int32_t>(count);
  CalcNextIndex();
}

void LArrayIterator::ItemsRemoved(unsigned long count, long index) {
  if (index > mCurrentIndex) return;
  if (index + static_cast<long>(count) > mCurrentIndex) {
    mNextIndex = index > static_cast<long>(mArray.GetCount()) ? kIterAtEnd : static_cast<int32_t>(index);
    mCurrentIndex = kIterItemRemoved;
    return;
  }
  mCurrentIndex -= static_cast<int32_t>(count);
  CalcNextIndex();
}

LListIterator::LListIterator(LList& list, long position) : LArrayIterator(list, position) {}

LListIterator::~LListIterator() = default;

