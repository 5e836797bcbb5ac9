// MRect.h: an integer rectangle held by origin and size, and an owning list
// of rectangles.
//
//   MRect r(0, 0, 10, 10);              // GetRight() == 9
//   MRectList list;  list.AddList(0, 0, 720, 480);
//   list.Scale(0.5, 0.5);  MRect* first = list.GetAt(0);
#pragma once

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/containers/LArray.h>

class VBU_API MRect {
 public:
  // All fields 0.
  MRect() : mX(0), mY(0), mWidth(0), mHeight(0) {}
  // Stores the values as they are, negative sizes included.
  MRect(int x, int y, int width, int height) : mX(x), mY(y), mWidth(width), mHeight(height) {}
  MRect(const MRect&) = default;
  MRect& operator=(const MRect&) = default;
  ~MRect() {}

  // Stores the values with negative sizes turned around: the same span,
  // origin at the left and top.
  void Set(int x, int y, int width, int height);
  // Moves the origin to (x, y); the size stays.
  void Move(int x, int y) {
    mX = x;
    mY = y;
  }

  int GetX() const { return mX; }
  int GetLeft() const { return mX; }
  int GetY() const { return mY; }
  int GetTop() const { return mY; }
  int GetWidth() const { return mWidth; }
  int GetHeight() const { return mHeight; }
  // The last column inside.
  int GetRight() const { return static_cast<int>(static_cast<long long>(mX) + mWidth - 1); }
  // The last row inside.
  int GetBottom() const { return static_cast<int>(static_cast<long long>(mY) + mHeight - 1); }
  // 1 if mX <= x <= mX + mWidth and mY <= y <= mY + mHeight: the column and
  // row just outside the right and bottom edges count as inside.
  int IsPointed(int x, int y) const;
  // Multiplies origin and size, each truncated toward zero on its own.
  void Scale(double xFactor, double yFactor);

  friend VBU_API int operator==(const MRect& a, const MRect& b);
  friend VBU_API int operator!=(const MRect& a, const MRect& b);

 private:
  int mX;
  int mY;
  int mWidth;
  int mHeight;
};

VBU_API int operator==(const MRect& a, const MRect& b);
VBU_API int operator!=(const MRect& a, const MRect& b);

// A list of MRect pointers that owns the rectangles. RemoveItemsAt does not
// free them: its caller takes the removed rectangles over.
class VBU_API MRectList : public LList {
 public:
  MRectList();
  // Frees every rectangle.
  ~MRectList() override;

  // Appends a new rectangle.
  void AddList(int x, int y, int width, int height);
  // Frees every rectangle and empties the list.
  void DeleteAll();
  // The rectangle at `index`, counted from 0; null if there is none.
  MRect* GetAt(int index);
  // Scales every rectangle.
  void Scale(double xFactor, double yFactor);
};
