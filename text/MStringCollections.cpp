#include <cstdarg>

#include "containers/CVoidList.h"
#include "text/FormatInternal.h"
#include "text/MStringArray.h"
#include "text/MStringList.h"

// ---- MStringArray

MStringArray::MStringArray() : mItems(nullptr), mSize(0) {}

MStringArray::MStringArray(int size) : mItems(nullptr), mSize(0) { SetSize(size); }

MStringArray::~MStringArray() { RemoveAll(); }

void MStringArray::SetSize(int size) {
  RemoveAll();
  if (size <= 0) return;
  mItems = new MString[size];
  mSize = size;
}

void MStringArray::RemoveAll() {
  delete[] mItems;
  mItems = nullptr;
  mSize = 0;
}

void MStringArray::SetAt(int index, const MString& text) {
  if (Valid(index)) mItems[index] = text;
}

void MStringArray::SetAt(int index, const unsigned short* text) {
  if (Valid(index)) mItems[index] = text;
}

MString* MStringArray::GetAt(int index) const { return Valid(index) ? &mItems[index] : nullptr; }

const unsigned short* MStringArray::GetAtConst(int index) const {
  return Valid(index) ? static_cast<const unsigned short*>(mItems[index]) : nullptr;
}

void MStringArray::Rebuild(int index, const unsigned short* text) {
  // The new array is complete before the old one goes: a failed allocation
  // leaves the array as it was.
  int size = text ? mSize + 1 : mSize - 1;
  MString* items = size > 0 ? new MString[size] : nullptr;
  int to = 0;
  for (int from = 0; from <= mSize; ++from) {
    if (from == index && text) items[to++] = text;
    if (from == mSize) break;
    if (from == index && !text) continue;  // the one deleted
    items[to++] = mItems[from];
  }
  delete[] mItems;
  mItems = items;
  mSize = size;
}

namespace {
const unsigned short kEmpty[1] = {0};
}  // namespace

void MStringArray::InsertBefore(int index, const unsigned short* text) {
  if (index >= 0 && index <= mSize) Rebuild(index, text ? text : kEmpty);
}

void MStringArray::InsertAfter(int index, const unsigned short* text) {
  if (Valid(index)) Rebuild(index + 1, text ? text : kEmpty);
}

void MStringArray::DeleteAt(int index) {
  if (Valid(index)) Rebuild(index, nullptr);
}

void MStringArray::Swap(int first, int second) {
  if (!Valid(first) || !Valid(second) || first == second) return;
  MString held(mItems[first]);
  mItems[first] = mItems[second];
  mItems[second] = held;
}

void MStringArray::Change(int target, int source) {
  if (!Valid(target) || !Valid(source) || target == source) return;
  MString moving(mItems[source]);
  int step = source < target ? 1 : -1;
  for (int i = source; i != target; i += step) mItems[i] = mItems[i + step];
  mItems[target] = moving;
}

void MStringArray::SortByName() {}

MStringArray& MStringArray::operator=(const MStringArray& other) {
  if (&other == this) return *this;
  SetSize(other.mSize);
  for (int i = 0; i < mSize; ++i) SetAt(i, other.mItems[i]);
  return *this;
}

MStringArray& MStringArray::operator=(MStringList& other) {
  SetSize(other.GetSize());
  int i = 0;
  for (MString* s = other.GetHead(); s && i < mSize; s = other.GetNext()) SetAt(i++, *s);
  return *this;
}

// ---- MStringList

MStringList::MStringList() : mList(new CVoidList) {}

MStringList::~MStringList() {
  DeleteAll();
  delete mList;
}

void MStringList::Add(const unsigned short* text) { mList->AddListToTail(new MString(text)); }

void MStringList::AddFormat(unsigned short* format, ...) {
  va_list args;
  va_start(args, format);
  AddFormatList(format, args);
  va_end(args);
}

void MStringList::AddFormat(const unsigned short* format, ...) {
  va_list args;
  va_start(args, format);
  AddFormatList(format, args);
  va_end(args);
}

void MStringList::AddFormatList(const unsigned short* format, va_list args) {
  unsigned short out[vbu::text::kFormatRoom];
  vbu::text::FormatUnits(out, format, args);
  Add(out);
}

void MStringList::AddList(MStringList* other) {
  if (!other) return;
  if (other == this) {  // walking the list while it grows would never end
    MStringArray copy;
    copy = *this;
    AddArray(copy);
    return;
  }
  for (MString* s = other->GetHead(); s; s = other->GetNext()) Add(*s);
}

void MStringList::AddArray(const MStringArray& other) {
  for (int i = 0; i < other.GetSize(); ++i) Add(other.GetAtConst(i));
}

int MStringList::GetSize() const { return mList->GetCount(); }
MString* MStringList::GetHead() const { return static_cast<MString*>(mList->GetHead()); }
MString* MStringList::GetTail() const { return static_cast<MString*>(mList->GetTail()); }
MString* MStringList::GetNext() const { return static_cast<MString*>(mList->GetNext()); }

MString* MStringList::GetAt(int index) const {
  if (index < 0) return nullptr;
  MString* s = GetHead();
  for (int i = 0; s && i < index; ++i) s = GetNext();
  return s;
}

void MStringList::DeleteAt(int index) {
  MString* s = GetAt(index);
  if (!s) return;
  mList->DeleteList();  // the cursor's entry
  delete s;
}

void MStringList::DeleteAll() {
  while (MString* s = GetHead()) {
    mList->DeleteList();
    delete s;
  }
}

MStringList& MStringList::operator=(MStringList& other) {
  if (&other == this) return *this;
  DeleteAll();
  AddList(&other);
  return *this;
}

MStringList& MStringList::operator=(MStringArray& other) {
  DeleteAll();
  AddArray(other);
  return *this;
}
