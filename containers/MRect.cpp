#include "containers/MRect.h"

#include <cstdint>
#include <new>

#include "containers/LArrayIterator.h"

namespace {
// Truncation toward zero of a scaled field. Products beyond int saturate
// rather than overflow.
int ScaleField(int value, double factor) {
  double scaled = static_cast<double>(value) * factor;
  if (!(scaled == scaled)) return 0;  // NaN factor
  if (scaled >= 2147483647.0) return INT32_MAX;
  if (scaled <= -2147483648.0) return INT32_MIN;
  return static_cast<int>(scaled);
}

// One side of Set: a negative size turned around, with its origin moved left.
void Normalise(int origin, int size, int& outOrigin, int& outSize) {
  if (size < 0) {
    outSize = static_cast<int>(-static_cast<int64_t>(size) > INT32_MAX ? INT32_MAX : -static_cast<int64_t>(size));
    outOrigin = static_cast<int>(static_cast<int64_t>(origin) - outSize);
  } else {
    outSize = size;
    outOrigin = origin;
  }
}
}  // namespace

void MRect::Set(int x, int y, int width, int height) {
  Normalise(x, width, mX, mWidth);
  Normalise(y, height, mY, mHeight);
}

int MRect::IsPointed(int x, int y) const {
  // 64-bit sums: a rectangle near the end of the int range must not wrap.
  int64_t right = static_cast<int64_t>(mX) + mWidth;
  int64_t bottom = static_cast<int64_t>(mY) + mHeight;
  return (mX <= x && x <= right && mY <= y && y <= bottom) ? 1 : 0;
}

void MRect::Scale(double xFactor, double yFactor) {
  mX = ScaleField(mX, xFactor);
  mWidth = ScaleField(mWidth, xFactor);
  mY = ScaleField(mY, yFactor);
  mHeight = ScaleField(mHeight, yFactor);
}

int operator==(const MRect& a, const MRect& b) {
  return (a.mX == b.mX && a.mY == b.mY && a.mWidth == b.mWidth && a.mHeight == b.mHeight) ? 1 : 0;
}

int operator!=(const MRect& a, const MRect& b) { return (a == b) ? 0 : 1; }

MRectList::MRectList() : LList() {}

MRectList::~MRectList() {
  mLockCount = 0;  // a dying list is in no search: free the rectangles whatever the count
  DeleteAll();
}

void MRectList::AddList(int x, int y, int width, int height) {
  MRect* rect = new MRect(x, y, width, height);
  if (InsertItemsAt(1, kLastIndex, &rect, 0) == kBadIndex) delete rect;  // refused: don't leak
}

void MRectList::DeleteAll() {
  if (mLockCount != 0) return;  // the removal would be refused: free nothing still listed
  LListIterator it(*this, kIterBeforeFirst);
  MRect* rect = nullptr;
  while (it.Next(&rect)) delete rect;
  RemoveItemsAt(static_cast<unsigned long>(mItemCount), 1);
}

MRect* MRectList::GetAt(int index) {
  MRect* rect = nullptr;
  return FetchItemAt(static_cast<long>(index) + 1, &rect) ? rect : nullptr;
}

void MRectList::Scale(double xFactor, double yFactor) {
  MRect* rect = nullptr;
  for (long i = 1; i <= mItemCount; ++i) {
    if (FetchItemAt(i, &rect) && rect) rect->Scale(xFactor, yFactor);
  }
}
