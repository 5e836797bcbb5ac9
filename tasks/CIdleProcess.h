// CIdleProcess.h: deferred one-shot work. Code that wants something done the
// next time the application is idle makes a CIdleProcess on the heap and
// forgets it; the host's idle handler runs every pending one, once.
//
//   class RefreshTitles : public CIdleProcess {
//     void ExecuteSelf() override { std::printf("redraw the title list\n"); }
//   };
//   new RefreshTitles;             // enters gIdleProcesses
//   gIdleProcesses.ExecuteAll();   // in the host's idle handler: runs it, deletes it
//
// Everything here belongs to the user-interface thread: there is no lock.
#pragma once

#include <VantoroBasicUtils/containers/Handle.h>
#include <VantoroBasicUtils/containers/LArray.h>
#include <VantoroBasicUtils/platform/Export.h>

// One piece of deferred work, always made with new: it stands on
// gIdleProcesses from construction until it runs or is deleted, and
// Execute deletes it.
class VBU_API CIdleProcess : public CMemoryCheck {
 public:
  // Enters gIdleProcesses, at the end.
  CIdleProcess();
  // A copy does not enter the list.
  CIdleProcess(const CIdleProcess& other);
  // Leaves gIdleProcesses; deleting a pending process cancels it.
  virtual ~CIdleProcess();

  // The work; the base does nothing.
  virtual void ExecuteSelf();
  // ExecuteSelf, then deletes this object.
  void Execute();
};

// The queue of pending processes, in order of creation.
class VBU_API CIdleProcesses {
 public:
  CIdleProcesses();
  // Deletes the processes still pending, without running them.
  virtual ~CIdleProcesses();
  CIdleProcesses(const CIdleProcesses&) = delete;
  CIdleProcesses& operator=(const CIdleProcesses&) = delete;

  // Appends; no test for a duplicate.
  void AddProcess(CIdleProcess* process);
  // Removes the first entry of `process`; an absent one changes nothing.
  void RemoveProcess(CIdleProcess* process);
  // Runs every pending process once, in order of creation, and deletes it;
  // processes made meanwhile run in the same call, and processes deleted
  // meanwhile do not run. The list ends empty. A process leaves the list as
  // it starts to run, so an ExecuteAll entered again from inside it (a
  // modal loop that calls the idle handler) runs each of the others once
  // and never it.
  void ExecuteAll();

 private:
  LList mProcesses;  // CIdleProcess*
};

// The one queue of the process.
extern VBU_API CIdleProcesses gIdleProcesses;
