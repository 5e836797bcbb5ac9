#include "tasks/CThreadStatus.h"

#include "platform/MessageQueue.h"

CThreadStatus::CThreadStatus() = default;

CThreadStatus::CThreadStatus(const CThreadStatus& other) : LBroadcaster(other) {}

CThreadStatus& CThreadStatus::operator=(const CThreadStatus& other) {
  LBroadcaster::operator=(other);
  return *this;
}

CThreadStatus::~CThreadStatus() = default;

CThreadStatus* CThreadStatus::GetThreadStatus() { return &sThreadStatus; }

void CThreadStatus::Status(long long position, long long range, const unsigned short* status) {
  GetThreadStatus()->BroadcastStatus(kStatusText | kStatusRange | kStatusPosition, position, range, status, nullptr);
}

void CThreadStatus::SetStatus(const unsigned short* status) {
  GetThreadStatus()->BroadcastStatus(kStatusText, 0, 0, status, nullptr);
}

void CThreadStatus::SetRange(long long range, long) {
  GetThreadStatus()->BroadcastStatus(kStatusRange, 0, range, nullptr, nullptr);
}

void CThreadStatus::SetPosition(long long position) {
  GetThreadStatus()->BroadcastStatus(kStatusPosition, position, 0, nullptr, nullptr);
}

void CThreadStatus::AdvancePosition(long long amount) {
  GetThreadStatus()->BroadcastStatus(kStatusAdvance, amount, 0, nullptr, nullptr);
}

void CThreadStatus::SetDescription(const unsigned short* description) {
  GetThreadStatus()->BroadcastStatus(kStatusDescription, 0, 0, nullptr, description);
}

void CThreadStatus::BroadcastStatus(int mask, long long position, long long range, const unsigned short* status,
                                    const unsigned short* description) {
  ThreadStatusRecord record{static_cast<unsigned int>(MThreadQueue::CurrentThreadId()), mask, position, range,
                            MString(), MString()};
  if (status) record.status = status;
  if (description) record.description = description;
  BroadcastMessage(kMsgThreadStatus, &record);
}
