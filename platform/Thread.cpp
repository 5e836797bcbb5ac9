#include "platform/Thread.h"

#include <atomic>
#include <mutex>

#include "platform/internal/Errors.h"
#include "platform/Overlapped.h"
#include "platform/internal/SysCalls.h"
#include "platform/internal/Thread.h"

// What a thread object and its system thread share. It outlives whichever
// of the two ends first.
struct MThreadControl {
  std::atomic<uint32_t> holds{1};  // the thread waits while this is above 0; 1 is the hold at its start
  std::atomic<uint32_t> heard{0};  // bumped each time the thread takes the hold signal, and at its end
  std::atomic<uint32_t> ready{0};  // 1 once the thread is set up and waits at its start
  std::mutex mutex;                // guards the fields below, and signalling against the thread's end
  MThread* object = nullptr;       // null once deleted, or handed to the thread for deletion
  uint64_t handle = 0;
  unsigned long id = 0;
  bool created = false;
  bool running = false;    // past its start
  bool abandoned = false;  // the object died before the thread ran: it runs nothing
  bool ended = false;
  bool systemHeld = false;  // stopped by the system itself (where it holds threads so), until the last resume
  std::atomic<int> holdOff{0};  // the thread's StHoldOff depth, for a system that holds it from outside
  ~MThreadControl();
};

namespace vbu::platform {
namespace {

std::atomic<unsigned long> gNextThreadId{1};
std::atomic<unsigned long> gMainThreadId{0};
thread_local unsigned long tThreadId = 0;
// The control of the calling thread if an MThread runs it; read by the signal handler.
thread_local MThreadControl* tControl = nullptr;
// Depth of the calling thread's StHoldOff stretches, and whether a hold
// came in one of them; shared with the signal handler.
thread_local volatile int tHoldOff = 0;
thread_local volatile bool tHoldPutOff = false;

// Waits while the calling thread is held, telling the holders that it
// stands still. `announce`: in the hold signal's handler.
void HoldWhileSuspended(bool announce);

}  // namespace
}  // namespace vbu::platform

namespace vbu::platform {
namespace {
// Tells the holders that the thread stands still (or has ended).
void Announce(MThreadControl& control);
}  // namespace
}  // namespace vbu::platform

#if defined(__linux__)
#include "linux/Thread.inc"
#elif defined(_WIN32)
#include "windows/Thread.inc"
#else
#error "The platform layer has no Thread files for this system yet."
#endif

namespace vbu::platform {

unsigned long CurrentThreadId() {
  if (!tThreadId) tThreadId = gNextThreadId.fetch_add(1, std::memory_order_relaxed);
  return tThreadId;
}

unsigned long ReserveThreadId() { return gNextThreadId.fetch_add(1, std::memory_order_relaxed); }

void AdoptThreadId(unsigned long id) { tThreadId = id; }

namespace {

void Announce(MThreadControl& control) {
  control.heard.fetch_add(1, std::memory_order_release);
  WakeAll(control.heard);
}

// Enters and leaves a stretch in which the thread is not held.
void EnterHoldOff() {
  tHoldOff = tHoldOff + 1;
  if (tControl) tControl->holdOff.fetch_add(1, std::memory_order_acq_rel);
}

void LeaveHoldOff() {
  tHoldOff = tHoldOff - 1;
  if (tControl) tControl->holdOff.fetch_sub(1, std::memory_order_acq_rel);
}

void HoldWhileSuspended(bool announce) {
  MThreadControl* control = tControl;
  if (!control) return;  // not one of ours
  auto tell = [&] { Announce(*control); };
  // In the handler, on entry, for a hold that was let go before the signal
  // came in. And before each wait, on any road here, for every hold added
  // up to the load before it: a signal sent meanwhile waits behind this
  // handler, or (where a sanitizer defers signals) behind the wait itself.
  if (announce) tell();
  if (announce && tHoldOff > 0) {
    tHoldPutOff = true;  // kept at the end of the stretch
    return;
  }
  for (;;) {
    const uint32_t holds = control->holds.load(std::memory_order_acquire);
    if (holds == 0) return;
    tell();
    WaitWhile(control->holds, holds);
  }
}

}  // namespace
}  // namespace vbu::platform

using namespace vbu::platform;

MThreadControl::~MThreadControl() {
  if (handle != 0) ReleaseSystemThread(handle);
}

struct MThreadRunner {
  static void* Start(void* arg) {
    auto* handed = static_cast<std::shared_ptr<MThreadControl>*>(arg);
    std::shared_ptr<MThreadControl> control = std::move(*handed);
    delete handed;
    AdoptThreadId(control->id);
    tControl = control.get();
    AcceptSuspendSignal();
    MThreadQueue::WaitMessage(0);  // makes the thread's queue: posts reach it from now on
    control->ready.store(1, std::memory_order_release);
    WakeAll(control->ready);

    HoldWhileSuspended(false);  // held back until the first ResumeThread
    MThread* self = nullptr;
    {
      // Never held while it owns the lock that ResumeThread needs.
      MThread::StHoldOff holdOff;
      std::lock_guard<std::mutex> lock(control->mutex);
      if (!control->abandoned) self = control->object;
      control->running = true;
    }
    if (self) {
      if (self->mEntry) {
        self->mEntry(self->mParam);
      } else if (self->InitInstance()) {
        self->Run();
      } else {
        self->ExitInstance();
      }
    }
    // From here on the thread only ends: a hold would gain nothing, and
    // would keep the lock that ResumeThread needs.
    EnterHoldOff();
    if (self) {
      MThread* done = nullptr;
      {
        std::lock_guard<std::mutex> lock(control->mutex);
        if (control->object && control->object->mAutoDelete) std::swap(done, control->object);
      }
      delete done;
    }
    {
      std::lock_guard<std::mutex> lock(control->mutex);
      control->ended = true;
    }
    Announce(*control);
    tControl = nullptr;
    return nullptr;
  }
};

// ---- MThread

MThread::MThread(Entry entry, void* param)
    : mControl(std::make_shared<MThreadControl>()), mEntry(entry), mParam(param), mThreadId(0), mAutoDelete(true) {}

MThread::MThread() : MThread(nullptr, nullptr) {}

MThread::~MThread() {
  std::lock_guard<std::mutex> lock(mControl->mutex);
  if (mControl->object == this) mControl->object = nullptr;
  if (mControl->created && !mControl->running) {
    mControl->abandoned = true;
    mControl->holds.store(0, std::memory_order_release);
    WakeAll(mControl->holds);
  }
}

bool MThread::CreateThread(bool suspended) {
  MThreadControl& control = *mControl;
  {
    std::lock_guard<std::mutex> lock(control.mutex);
    if (control.created) {
      SetLastError(kErrorInvalidArgument);
      return false;
    }
    control.created = true;
    control.object = this;
    control.id = ReserveThreadId();
  }
  auto* handed = new std::shared_ptr<MThreadControl>(mControl);
  uint64_t handle = 0;
  if (uint32_t error = StartSystemThread(&handle, &MThreadRunner::Start, handed)) {
    delete handed;
    std::lock_guard<std::mutex> lock(control.mutex);
    control.created = false;
    control.object = nullptr;
    SetLastError(error);
    return false;
  }
  {
    std::lock_guard<std::mutex> lock(control.mutex);
    control.handle = handle;
  }
  mThreadId = control.id;
  while (control.ready.load(std::memory_order_acquire) == 0) WaitWhile(control.ready, 0);
  if (!suspended) ResumeThread();
  return true;
}

long MThread::SuspendThread() {
  const Hold hold = AddHold();
  hold.Wait();
  return hold.Before();
}

MThread::Hold MThread::AddHold() {
  MThreadControl& control = *mControl;
  StHoldOff holdOff;  // on the thread itself, not held while it owns the lock
  Hold hold;
  hold.mControl = mControl;
  hold.mSelf = tControl == &control;
  std::lock_guard<std::mutex> lock(control.mutex);
  if (!control.created || control.ended) {
    SetLastError(kErrorNoThread);
    return hold;
  }
  hold.mHeard = control.heard.load(std::memory_order_acquire);
  const uint32_t before = control.holds.fetch_add(1, std::memory_order_acq_rel);
  // A thread at its start, or held already, needs no signal, nor one that
  // holds itself: it stops in Wait. The signal goes under the lock, so the
  // thread cannot have ended meanwhile.
  if (before == 0 && !hold.mSelf) {
    if (uint32_t error = SignalThread(control)) {
      control.holds.fetch_sub(1, std::memory_order_acq_rel);
      SetLastError(error);
      return hold;
    }
  }
  hold.mBefore = static_cast<long>(before);
  return hold;
}

MThread::StHoldOff::StHoldOff() { EnterHoldOff(); }

MThread::StHoldOff::~StHoldOff() {
  LeaveHoldOff();
  if (tHoldOff == 0 && tHoldPutOff) {  // a hold came meanwhile
    tHoldPutOff = false;
    HoldWhileSuspended(false);
  }
}

void MThread::Hold::Wait() const {
  if (mBefore != 0) return;  // refused, or the thread stood still already
  MThreadControl& control = *mControl;
  if (mSelf) {
    HoldWhileSuspended(false);
    return;
  }
  // The signal's handler counts itself in `heard` (so does the thread's end).
  while (control.heard.load(std::memory_order_acquire) == mHeard) WaitWhile(control.heard, mHeard);
}

long MThread::ResumeThread() {
  MThreadControl& control = *mControl;
  StHoldOff holdOff;
  std::lock_guard<std::mutex> lock(control.mutex);
  if (!control.created || control.ended) {
    SetLastError(kErrorNoThread);
    return -1;
  }
  const uint32_t before = control.holds.load(std::memory_order_acquire);
  if (before == 0) return 0;
  control.holds.store(before - 1, std::memory_order_release);
  if (before == 1) {
    WakeAll(control.holds);
    if (control.systemHeld) {
      control.systemHeld = false;
      ReleaseSystemHold(control);
    }
  }
  return static_cast<long>(before);
}

unsigned long MThread::GetMainThreadId() { return gMainThreadId.load(std::memory_order_acquire); }

void MThread::SetMainThreadId(unsigned long threadId) { gMainThreadId.store(threadId, std::memory_order_release); }

unsigned long MThread::ClaimMainThread() {
  unsigned long main = 0;
  const unsigned long self = CurrentThreadId();
  return gMainThreadId.compare_exchange_strong(main, self, std::memory_order_acq_rel) ? self : main;
}

bool MThread::IsMainThread() {
  const unsigned long main = GetMainThreadId();
  return main != 0 && main == CurrentThreadId();
}

bool MThread::InitInstance() { return true; }

int MThread::Run() {
  long idleCount = 0;
  bool idle = true;
  for (;;) {
    while (idle && !MThreadQueue::WaitMessage(0)) idle = OnIdle(idleCount++);
    MMessage message;
    if (!MThreadQueue::GetMessage(message)) break;
    if (message.window) {
      MThreadQueue::DispatchMessage(message);
    } else {
      OnThreadMessage(message.message, message.wParam, message.lParam);
    }
    idle = true;
    idleCount = 0;
  }
  return ExitInstance();
}

bool MThread::OnThreadMessage(unsigned int, uintptr_t, intptr_t) { return false; }

bool MThread::OnIdle(long) { return false; }

int MThread::ExitInstance() { return 0; }

MThread* BeginThread(MThread::Entry entry, void* param, bool suspended) {
  auto* thread = new MThread(entry, param);
  if (!thread->CreateThread(suspended)) {
    const uint32_t error = GetLastError();
    delete thread;
    SetLastError(error);
    return nullptr;
  }
  return thread;
}
