// CThreadStatus.h: the process-wide progress channel. Any code, on any
// thread, reports how far it has come by a static call; each call is one
// synchronous broadcast of a ThreadStatusRecord, stamped with the id of the
// calling thread, to the listeners (the host's progress display).
//
//   static LListener myProgressBar;
//   CThreadStatus::GetThreadStatus()->AddListener(&myProgressBar);   // before workers start
//   CThreadStatus::Status(0, 100, u"Joining titles"_u16);
//   CThreadStatus::AdvancePosition(3);                               // the listener adds 3
#pragma once

#include <VantoroBasicUtils/messaging/LBroadcaster.h>
#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/text/MString.h>

// The message of every report; its param is a ThreadStatusRecord*.
constexpr long kMsgThreadStatus = 29990;

// Bits of ThreadStatusRecord::mask: which fields mean anything.
constexpr int kStatusText = 1;         // status: new status text
constexpr int kStatusRange = 2;        // range: new total
constexpr int kStatusPosition = 4;     // position: new position, absolute
constexpr int kStatusAdvance = 8;      // position: move the position on by this much
constexpr int kStatusDescription = 16; // description: new description of the work

// One report. It lives for the broadcast; a listener copies what it keeps.
// Fields that the mask does not name are 0 or empty.
struct ThreadStatusRecord {
  unsigned int threadId;  // the reporting thread (MThreadQueue::CurrentThreadId)
  int mask;
  long long position;
  long long range;
  MString status;
  MString description;
};

// Reports may come from several threads at once; each reaches the listeners
// on the reporting thread, with no lock held, so two reports of two threads
// may be heard at the same time. Attach listeners before workers start and
// detach them after they end.
class VBU_API CThreadStatus : public LBroadcaster {
 public:
  CThreadStatus();
  // As a broadcaster copies: the flag only, no listeners.
  CThreadStatus(const CThreadStatus& other);
  CThreadStatus& operator=(const CThreadStatus& other);
  ~CThreadStatus() override;

  // The one instance.
  static CThreadStatus* GetThreadStatus();

  // Position, range and status text at once (mask 7).
  static void Status(long long position, long long range, const unsigned short* status);
  static void SetStatus(const unsigned short* status);
  // The second argument has no effect.
  static void SetRange(long long range, long);
  static void SetPosition(long long position);
  static void AdvancePosition(long long amount);
  static void SetDescription(const unsigned short* description);

  // Broadcasts one record with these fields, from the calling thread.
  void BroadcastStatus(int mask, long long position, long long range, const unsigned short* status,
                       const unsigned short* description);

 private:
  static CThreadStatus sThreadStatus;
};
