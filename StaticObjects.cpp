// The library's static objects, defined in one place so that they come into
// being at load in this order, before any host code runs (a host's own
// static constructors may already report through CMessageAction), and die in
// the reverse order at unload. Each service is reached through a static
// getter that gives its address.
#include "bytes/CAppBits.h"
#include "containers/LArray.h"
#include "environment/CBrevanderProfile.h"
#include "environment/MFileDialog.h"
#include "messaging/CMessageAction.h"
#include "messaging/StGlobalLock.h"
#include "tasks/CIdleProcess.h"
#include "tasks/CThreadAction.h"
#include "tasks/CThreadStatus.h"

// The bit cursor's mask tables are constant-initialised; this records, first
// of all, that they are complete.
bool CAppBits::sByteMasksInitialized = CAppBits::InitializeByteMasks();

// Deferred work of the idle handler. At unload it deletes what is pending.
CIdleProcesses gIdleProcesses;

// The last file chosen in any file dialog.
MFileSpecWin MFileDialog::sLastFile;

// The shared comparators of arrays made without one of their own.
LLongComparator LArray::sLongComparator;
LComparator LArray::sBytesComparator;

// Kept empty: the settings file's path is held by the platform layer.
MString CBrevanderProfile::sProfilePath;

// The host's process-wide lock.
CCriticalSection StGlobalLock::sSafe;

// User messages.
CMessageAction CMessageAction::sMessageAction;

// Progress reports.
CThreadStatus CThreadStatus::sThreadStatus;

// The task list.
CThreadAction CThreadAction::sThreadAction;
