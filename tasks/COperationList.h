// COperationList.h: the undo history: performed operations, oldest first,
// with a cursor between what is done and what has been undone. The host
// makes one if it wants undo; the last one made is the current one.
//
//   COperationList history;                  // becomes current
//   // (new Rename(clip, u"Intro"_u16))->Execute();   see COperation.h
//   if (COperationList::CanUndo()) COperationList::Undo();
//   COperationList::Redo();
#pragma once

#include <atomic>

#include <VantoroBasicUtils/containers/LArray.h>
#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/platform/Sync.h>

class COperation;

// The changes hold mSafe, which the holding thread may take again, from
// entry to exit; operations undo and redo, and cut-off operations die,
// under it. CanUndo, CanRedo, GetCurrent and GetCount read without it, so
// a menu update never waits behind an undo on another thread (whose
// UndoSelf may be waiting for the menu's thread).
class VBU_API COperationList {
 public:
  // An empty history; becomes the current one.
  COperationList();
  // Deletes the whole history and leaves no current list (even if another one lives).
  virtual ~COperationList();
  COperationList(const COperationList&) = delete;
  COperationList& operator=(const COperationList&) = delete;

  // The current list, or null.
  static COperationList* GetOperationList();
  // On the current list; without one, AddOperation deletes `op`, the
  // questions give false and Undo and Redo do nothing.
  static void AddOperation(COperation* op);
  static bool CanUndo();
  static bool CanRedo();
  static void Undo();
  static void Redo();

  // Cuts off the undone operations (a new action ends the redo branch), appends `op`, and counts it done.
  void addOperation(COperation* op);
  bool canUndo();
  bool canRedo();
  // Undoes the last done operation; the cursor moves back whatever it gives.
  void undo();
  // Redoes the first undone operation; the cursor moves on whatever it gives.
  void redo();
  // Deletes the operations after the cursor.
  void removeAfterCurrent();
  // Deletes the whole history.
  void removeOperationList();

  // The number of operations counted as done (the cursor), and on the list.
  unsigned long GetCurrent() const { return mCurrent; }
  unsigned long GetCount() const { return mCount; }

 private:
  // mSafe guards mOperations, and orders the changes of the two words
  // below, which readers take without it.
  CCriticalSection mSafe;
  LList mOperations;                    // COperation*, owned; oldest first
  std::atomic<unsigned long> mCurrent;  // operations 1 to mCurrent are done
  std::atomic<unsigned long> mCount;    // mOperations' count, kept with it

  static std::atomic<COperationList*> sOperationList;
};
