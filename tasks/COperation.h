// COperation.h: one reversible action of the undo history (COperationList).
//
//   class Rename : public COperation {
//    public:
//     Rename(MString* name, const unsigned short* to) : mName(name), mOld(*name), mNew(to) {}
//     bool ExecuteSelf() override { *mName = mNew; return true; }
//     bool UndoSelf() override { *mName = mOld; return true; }
//    private:
//     MString* mName;
//     MString mOld, mNew;
//   };
//   COperationList history;
//   static MString clipName(u"Clip 1"_u16);
//   (new Rename(&clipName, u"Intro"_u16))->Execute();   // done, and on the history
//   COperationList::Undo();                               // "Clip 1" again
#pragma once

#include <VantoroBasicUtils/platform/Export.h>

class VBU_API COperation {
 public:
  COperation() = default;
  COperation(const COperation&) = default;
  virtual ~COperation();

  // Performs the action: ExecuteSelf, then onto the current history. False
  // if ExecuteSelf fails. Either way this object belongs to the library
  // from now on (deleted at once on failure, or when there is no history).
  bool Execute();
  // Performs the action again; gives ExecuteSelf's result.
  bool Redo();
  // Reverses it; gives UndoSelf's result.
  bool Undo();

 protected:
  // "Do"; true if something happened. The base gives false.
  virtual bool ExecuteSelf();
  // "Undo"; the base gives false.
  virtual bool UndoSelf();
};
