#include "time/CDuration.h"

CDuration::CDuration() : mResolution(kResolutionUnset), mDropType(kNonDrop) {}

CDuration::CDuration(const CDuration& other)
    : LBroadcaster(other), LNotifier(other), mResolution(other.mResolution), mDropType(other.mDropType) {
  mStartTime = other.mStartTime;
  mDuration = other.mDuration;
}

CDuration& CDuration::operator=(const CDuration& other) {
  mResolution = other.mResolution;
  mDropType = other.mDropType;
  mStartTime = other.mStartTime;
  mDuration = other.mDuration;
  return *this;
}

CDuration::~CDuration() = default;

CTimecode CDuration::OneFrame() const { return CTimecode(0, 0, 0, 1, mStartTime.GetFrameType()); }

// ---- setters

template <class T>
bool CDuration::Store(T& field, const T& value, void (CDuration::*hook)(), long message) {
  if (value == field) return false;
  field = value;
  (this->*hook)();
  Notify(message, 0, 0);
  return true;
}

bool CDuration::SetResolution(resolution_t resolution) {
  return Store(mResolution, ValidateResolution(resolution), &CDuration::TrickleDownResolutionChange,
               kDurationResolutionChanged);
}

bool CDuration::SetDropType(drop_nondrop_t dropType) {
  return Store(mDropType, ValidateDropType(dropType), &CDuration::TrickleDownDropTypeChange,
               kDurationDropTypeChanged);
}

bool CDuration::SetStartTime(CTimecode& start) {
  return Store(mStartTime, ValidateStartTime(start), &CDuration::TrickleDownStartTimeChange,
               kDurationStartTimeChanged);
}

bool CDuration::SetDuration(CTimecode& length) {
  return Store(mDuration, ValidateDuration(length), &CDuration::TrickleDownDurationChange, kDurationLengthChanged);
}

bool CDuration::SetEndTime(CTimecode& end) {
  CTimecode one(0, 0, 0, 1, end.GetFrameType());
  mStartTime.SetFrameType(end.GetFrameType());
  CTimecode length = (end - mStartTime) + one;
  return SetDuration(length);
}

bool CDuration::SetStartTimeUI(CTimecode& start) { return SetStartTime(start); }

bool CDuration::SetEndTimeUI(CTimecode& end) {
  if (GetDropType() != kDrop) return SetEndTime(end);
  CTimecode plain(end);
  plain.Drop2Nondrop(mStartTime);
  return SetEndTime(plain);
}

bool CDuration::SetDurationUI(CTimecode& length) {
  if (GetDropType() != kDrop) return SetDuration(length);
  CTimecode end = (length + GetStartTimeUI()) - OneFrame();
  return SetEndTimeUI(end);
}

// ---- validation and hooks

resolution_t CDuration::ValidateResolution(resolution_t resolution) { return resolution; }

drop_nondrop_t CDuration::ValidateDropType(drop_nondrop_t dropType) { return dropType; }

CTimecode CDuration::ValidateStartTime(CTimecode& start) { return start; }

CTimecode CDuration::ValidateDuration(CTimecode& length) {
  if (length.GetTotalFrame() <= 0) length.SetTotalFrame(1, kFrameTypeCurrent);
  return length;
}

void CDuration::TrickleDownResolutionChange() {
  frame_type_t type = GetResolution() == kResolutionNTSC ? kFrameType30 : kFrameType25;
  mStartTime.SetFrameType(type);
  mDuration.SetFrameType(type);
}

void CDuration::TrickleDownDropTypeChange() {}
void CDuration::TrickleDownStartTimeChange() {}
void CDuration::TrickleDownDurationChange() {}

// ---- getters

resolution_t CDuration::GetResolution() const { return mResolution; }
drop_nondrop_t CDuration::GetDropType() const { return mDropType; }
CTimecode CDuration::GetStartTime() const { return mStartTime; }
CTimecode CDuration::GetDuration() const { return mDuration; }

CTimecode CDuration::GetEndTime() const { return (mStartTime + mDuration) - OneFrame(); }

CTimecode CDuration::GetStartTimeUI() const { return GetStartTime(); }

CTimecode CDuration::GetEndTimeUI() const {
  CTimecode end = GetEndTime();
  if (GetDropType() == kDrop) end.Nondrop2Drop(mStartTime);
  return end;
}

CTimecode CDuration::GetDurationUI() const {
  if (GetDropType() != kDrop) return GetDuration();
  return (GetEndTimeUI() + OneFrame()) - GetStartTimeUI();
}

bool CDuration::SetFrameType(frame_type_t type) {
  if (type == kFrameType30) return SetResolution(kResolutionNTSC);
  if (type == kFrameType25) return SetResolution(kResolutionPAL);
  return false;
}

frame_type_t CDuration::GetFrameType() const { return GetResolution() == kResolutionPAL ? kFrameType25 : kFrameType30; }

long CDuration::GetTotalFrame() const { return mDuration.GetTotalFrame() - 1; }

bool CDuration::IsNil() { return mStartTime.GetTotalFrame() == 1 && mDuration.GetTotalFrame() == 1; }

// ---- questions about ranges

bool CDuration::IsInclude(CTimecode& time) {
  if (GetStartTime() > time) return false;
  if (GetEndTime() < time) return false;
  return true;
}

bool CDuration::IsInclude(CDuration& other) {
  CTimecode start = GetStartTime(), end = GetEndTime();
  CTimecode otherStart = other.GetStartTime(), otherEnd = other.GetEndTime();
  if (end < otherStart) return false;
  if (otherEnd < start) return false;
  if (end < otherEnd) return false;
  if (otherStart < start) return false;
  return true;
}

bool CDuration::IsOverlap(CDuration& other) {
  CTimecode start = GetStartTime(), end = GetEndTime();
  CTimecode otherStart = other.GetStartTime(), otherEnd = other.GetEndTime();
  if (otherStart < start && start < otherEnd) return true;
  if (otherStart < end && end < otherEnd) return true;
  return start < otherStart && otherEnd < end;
}

bool CDuration::GetOverlapDuration(const CDuration& other, CDuration* result) {
  // The frames both hold: from the later start to the earlier end. Where the
  // other range starts inside this one, it has its start, and its end if
  // that is earlier, even when it is empty (its end before its start).
  CTimecode a1 = GetStartTime(), a2 = GetEndTime();
  CTimecode b1 = other.GetStartTime(), b2 = other.GetEndTime();
  CTimecode end = b2 < a2 ? b2 : a2;
  const bool startsInside = a1 <= b1 && b1 <= a2;
  if (!result || (!startsInside && (b1 > a2 || a1 > end))) return false;
  result->SetStartTime(startsInside ? b1 : a1);
  result->SetEndTime(end);
  return true;
}

bool CDuration::operator==(const CDuration& other) const {
  return mResolution == other.mResolution && mDropType == other.mDropType && mStartTime == other.mStartTime &&
         mDuration == other.mDuration;
}

bool CDuration::operator!=(const CDuration& other) const { return !(*this == other); }
