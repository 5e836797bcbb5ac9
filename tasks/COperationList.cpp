#include "tasks/COperationList.h"

#include "tasks/COperation.h"

// ---- COperation

COperation::~COperation() = default;

bool COperation::Execute() {
  if (!ExecuteSelf()) {
    delete this;
    return false;
  }
  COperationList::AddOperation(this);
  return true;
}

bool COperation::Redo() { return ExecuteSelf(); }

bool COperation::Undo() { return UndoSelf(); }

bool COperation::ExecuteSelf() { return false; }

bool COperation::UndoSelf() { return false; }

// ---- COperationList

std::atomic<COperationList*> COperationList::sOperationList{nullptr};

COperationList::COperationList() : mCurrent(0), mCount(0) { sOperationList = this; }

COperationList::~COperationList() {
  removeOperationList();
  sOperationList = nullptr;
}

COperationList* COperationList::GetOperationList() { return sOperationList; }

void COperationList::AddOperation(COperation* op) {
  if (COperationList* list = sOperationList) {
    list->addOperation(op);
  } else {
    delete op;
  }
}

bool COperationList::CanUndo() {
  COperationList* list = sOperationList;
  return list && list->canUndo();
}

bool COperationList::CanRedo() {
  COperationList* list = sOperationList;
  return list && list->canRedo();
}

void COperationList::Undo() {
  if (COperationList* list = sOperationList) list->undo();
}

void COperationList::Redo() {
  if (COperationList* list = sOperationList) list->redo();
}

void COperationList::addOperation(COperation* op) {
  CSingleLock lock(&mSafe, true);
  removeAfterCurrent();
  mOperations.InsertItemsAt(1, kLastIndex, &op, 0);
  mCount = mOperations.GetCount();
  mCurrent = mCount.load();
}

bool COperationList::canUndo() { return mCurrent > 0; }

bool COperationList::canRedo() { return mCurrent < mCount; }

void COperationList::undo() {
  CSingleLock lock(&mSafe, true);
  if (!canUndo()) return;
  COperation* op = nullptr;
  mOperations.FetchItemAt(static_cast<long>(mCurrent), &op);
  if (op) op->Undo();
  --mCurrent;
}

void COperationList::redo() {
  CSingleLock lock(&mSafe, true);
  if (!canRedo()) return;
  COperation* op = nullptr;
  mOperations.FetchItemAt(static_cast<long>(mCurrent + 1), &op);
  if (op) op->Redo();
  ++mCurrent;
}

void COperationList::removeAfterCurrent() {
  CSingleLock lock(&mSafe, true);
  const long count = static_cast<long>(mOperations.GetCount());
  const long current = static_cast<long>(mCurrent);
  for (long i = count; i > current; --i) {
    COperation* op = nullptr;
    mOperations.FetchItemAt(i, &op);
    delete op;
  }
  if (count > current) mOperations.RemoveItemsAt(static_cast<unsigned long>(count - current), current + 1);
  mCount = mOperations.GetCount();
}

void COperationList::removeOperationList() {
  CSingleLock lock(&mSafe, true);
  mCurrent = 0;
  removeAfterCurrent();
}
