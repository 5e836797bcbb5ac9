#include "tasks/CIdleProcess.h"

#include "containers/LArrayIterator.h"

// ---- CIdleProcess

CIdleProcess::CIdleProcess() { gIdleProcesses.AddProcess(this); }

CIdleProcess::CIdleProcess(const CIdleProcess& other) : CMemoryCheck(other) {}

CIdleProcess::~CIdleProcess() { gIdleProcesses.RemoveProcess(this); }

void CIdleProcess::ExecuteSelf() {}

void CIdleProcess::Execute() {
  ExecuteSelf();
  delete this;
}

// ---- CIdleProcesses

CIdleProcesses::CIdleProcesses() = default;

CIdleProcesses::~CIdleProcesses() {
  // Each destructor takes its process off the list; the walk follows.
  LListIterator it(mProcesses);
  for (CIdleProcess* process; it.Next(&process);) delete process;
}

void CIdleProcesses::AddProcess(CIdleProcess* process) { mProcesses.InsertItemsAt(1, kLastIndex, &process, 0); }

void CIdleProcesses::RemoveProcess(CIdleProcess* process) {
  // A plain scan, not FetchIndexOf: at unload this list outlives the
  // arrays' shared comparators.
  for (long i = 1; i <= static_cast<long>(mProcesses.GetCount()); ++i) {
    if (*static_cast<CIdleProcess**>(mProcesses.GetItemPtr(i)) == process) {
      mProcesses.RemoveItemsAt(1, i);
      return;
    }
  }
}

void CIdleProcesses::ExecuteAll() {
  // Always the oldest pending one, taken off the list before it runs: an
  // ExecuteAll entered again from inside it (a modal loop that idles) must
  // not run it a second time, and processes made meanwhile stand behind.
  CIdleProcess* process = nullptr;
  while (mProcesses.FetchItemAt(1, &process)) {
    mProcesses.RemoveItemsAt(1, 1);
    if (process) process->Execute();
  }
}
