// Thread.h: a thread of the platform. It runs a function, or a message loop
// of its own (derive, and override InitInstance, OnThreadMessage, OnIdle,
// ExitInstance). It can start held back before its first instruction, with
// its id known at once, and be held and let go again from outside.
//
//   static int job = 0;
//   auto work = [](void* data) -> unsigned int { return static_cast<unsigned int>(++*static_cast<int*>(data)); };
//   MThread* worker = BeginThread(work, &job, true);   // held back; id known
//   unsigned long id = worker->GetThreadId();
//   worker->ResumeThread();                             // work(&job) runs now
//
// By default the thread object deletes itself when its function (or loop)
// returns, so a caller must not touch it after that.
#pragma once

#include <cstdint>
#include <memory>

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/platform/MessageQueue.h>

struct MThreadControl;

class VBU_API MThread {
 public:
  // The function form: the thread runs `entry(param)`, and its result is the exit code.
  using Entry = unsigned int (*)(void* param);
  MThread(Entry entry, void* param);
  // If the thread never ran, it is let go without running anything. A
  // thread that runs goes on; it no longer deletes this object.
  virtual ~MThread();
  MThread(const MThread&) = delete;
  MThread& operator=(const MThread&) = delete;

  // Starts the system thread, held back before its first instruction if
  // `suspended` (ResumeThread lets it go). When it returns, the thread's id
  // is known and its message queue exists, so PostThreadMessage reaches it.
  // False if the thread cannot be made, or was made already; GetLastError says why.
  bool CreateThread(bool suspended = false);
  // The id of the thread (MThreadQueue::CurrentThreadId on that thread); 0 before CreateThread.
  unsigned long GetThreadId() const { return mThreadId; }

  // Holds the thread wherever it is; it stays held until as many
  // ResumeThread calls as SuspendThread calls have come. Gives the count of
  // holds before this one, or -1 (the thread has ended, or never started).
  //
  // The hold is a signal (SIGRTMIN + 3 on Linux) whose handler waits until
  // the thread is let go; SuspendThread returns once it waits. Its risks are
  // those of holding a thread at an arbitrary point: a thread held inside
  // the allocator, a stream or any lock keeps that lock, and every other
  // thread that needs it waits too, the caller of SuspendThread included.
  // A system call of the held thread may end early with EINTR where the
  // system does not restart it. A thread that blocks the signal is not held
  // until it unblocks it.
  long SuspendThread();
  // SuspendThread in two steps, for a caller that keeps state of its own in
  // step with the hold under a lock of its own, and must not wait under it.
  // AddHold takes the hold at once and gives what SuspendThread gives; the
  // thread stops soon after. The caller drops its lock and then calls
  // Wait on the result, which returns once the thread has stopped (or
  // ended, or has been let go again). On the held thread itself, AddHold
  // does not stop it: Wait is where it stops, until it is let go, and a
  // ResumeThread that comes between the two cancels the stop. The result
  // outlives the thread object.
  class VBU_API Hold {
   public:
    long Before() const { return mBefore; }
    void Wait() const;

   private:
    friend class MThread;
    std::shared_ptr<MThreadControl> mControl;
    long mBefore = -1;
    uint32_t mHeard = 0;  // the thread's count of taken signals when the hold was added
    bool mSelf = false;
  };
  Hold AddHold();

  // A stretch of the calling thread in which holds are put off: a hold that
  // comes meanwhile counts at once (SuspendThread returns), but the thread
  // stops only at the end of the outermost one. For a thread that must not
  // be held while it owns a lock that the one who lets it go needs. The
  // thread's own lock sections here are such stretches, and so is the end
  // of the thread, from the return of its function.
  class VBU_API StHoldOff {
   public:
    StHoldOff();
    ~StHoldOff();
    StHoldOff(const StHoldOff&) = delete;
    StHoldOff& operator=(const StHoldOff&) = delete;
  };
  // Takes one hold away; at 0 the thread runs on. Gives the count of holds
  // before this call (0: the thread was running, and nothing changes), or -1.
  long ResumeThread();

  // Whether the object deletes itself when the thread returns (true at first).
  bool IsAutoDelete() const { return mAutoDelete; }
  void SetAutoDelete(bool autoDelete) { mAutoDelete = autoDelete; }

  // The application's main thread (its user-interface thread): the one the
  // host names, or else the first thread that asks to be it (as the task
  // dispatcher does when it is made). 0 while there is none.
  static unsigned long GetMainThreadId();
  static void SetMainThreadId(unsigned long threadId);
  // Makes the calling thread the main thread, unless there is one; gives the main thread's id.
  static unsigned long ClaimMainThread();
  // True on the main thread.
  static bool IsMainThread();

 protected:
  // The loop form: the thread runs InitInstance and, if that gives true,
  // Run; then ExitInstance.
  MThread();

  // Set-up on the thread itself; false skips the loop. The base gives true.
  virtual bool InitInstance();
  // The message loop: dispatches window messages, hands thread messages to
  // OnThreadMessage and calls OnIdle while the queue is empty and it asks
  // for more. Ends at a quit message (MThreadQueue::PostQuitMessage) and
  // gives ExitInstance's result.
  virtual int Run();
  // A thread message (no window) taken from the queue; true if handled. The base handles none.
  virtual bool OnThreadMessage(unsigned int message, uintptr_t wParam, intptr_t lParam);
  // Idle work, `count` counting the calls since the last message; true asks
  // for another call. The base does nothing and gives false.
  virtual bool OnIdle(long count);
  // Clean-up on the thread itself; gives the exit code. The base gives 0.
  virtual int ExitInstance();

 private:
  friend struct MThreadRunner;

  std::shared_ptr<MThreadControl> mControl;
  Entry mEntry;
  void* mParam;
  unsigned long mThreadId;
  bool mAutoDelete;
};

// A self-deleting thread object for `entry(param)`, started, held back if
// `suspended`; null if the system refuses the thread (GetLastError says why).
VBU_API MThread* BeginThread(MThread::Entry entry, void* param, bool suspended = false);
