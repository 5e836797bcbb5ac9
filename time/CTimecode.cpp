#include "time/CTimecode.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace {

// The whole frames per second of a frame type (IncreaseFrame's carry point).
unsigned short FramesOfType(frame_type_t type) {
  switch (type) {
    case kFrameType24: return 24;
    case kFrameType25: return 25;
    default: return 30;
  }
}

double RateOfType(frame_type_t type) { return FramesOfType(type); }

// A double truncated to a long, held within the long's range (NaN gives 0).
long Truncate(double value) {
  if (!(value == value)) return 0;
  if (value >= static_cast<double>(std::numeric_limits<long>::max())) return std::numeric_limits<long>::max();
  if (value <= static_cast<double>(std::numeric_limits<long>::min())) return std::numeric_limits<long>::min();
  return static_cast<long>(value);
}

}  // namespace

// ---- construction

CTimecode::CTimecode() : mFrameRate(30.0), mHour(0), mMinute(0), mSecond(0), mFrame(0) {}

CTimecode::CTimecode(double packed) : CTimecode() { *this = packed; }

CTimecode::CTimecode(const CTimecode& other)
    : LBroadcaster(other), LNotifier(other), mFrameRate(30.0), mHour(0), mMinute(0), mSecond(0), mFrame(0) {
  *this = other;
}

CTimecode::CTimecode(unsigned short hour, unsigned short minute, unsigned short second, unsigned short frame,
                     double rate)
    : CTimecode() {
  SetTime(hour, minute, second, frame, rate);
}

CTimecode::CTimecode(unsigned short hour, unsigned short minute, unsigned short second, unsigned short frame,
                     frame_type_t type)
    : CTimecode() {
  SetFrameType(type);
  SetHour(hour);
  SetMinute(minute);
  SetSecond(second);
  SetFrame(frame);
}

CTimecode::~CTimecode() = default;

// ---- setters

template <class T>
bool CTimecode::Store(T CTimecode::*field, T value, T current, void (CTimecode::*hook)()) {
  if (value == current) return false;
  this->*field = value;
  (this->*hook)();
  Notify(kTimecodeChanged, 0, 0);
  return true;
}

bool CTimecode::SetHour(unsigned short hour) {
  return Store(&CTimecode::mHour, ValidateHour(hour), GetHour(), &CTimecode::TrickleDownHourChange);
}

bool CTimecode::SetMinute(unsigned short minute) {
  return Store(&CTimecode::mMinute, ValidateMinute(minute), GetMinute(), &CTimecode::TrickleDownMinuteChange);
}

bool CTimecode::SetSecond(unsigned short second) {
  return Store(&CTimecode::mSecond, ValidateSecond(second), GetSecond(), &CTimecode::TrickleDownSecondChange);
}

bool CTimecode::SetFrame(unsigned short frame) {
  return Store(&CTimecode::mFrame, ValidateFrame(frame), GetFrame(), &CTimecode::TrickleDownFrameChange);
}

bool CTimecode::SetFrameRate(double rate) {
  return Store(&CTimecode::mFrameRate, ValidateFrameRate(rate), GetFrameRate(),
               &CTimecode::TrickleDownFrameRateChange);
}

// ---- validation

unsigned short CTimecode::ValidateHour(unsigned short hour) { return hour; }

unsigned short CTimecode::ValidateMinute(unsigned short minute) { return minute > 59 ? 59 : minute; }

unsigned short CTimecode::ValidateSecond(unsigned short second) { return second > 59 ? 59 : second; }

unsigned short CTimecode::ValidateFrame(unsigned short frame) {
  double rate = GetFrameRate();
  if (frame < rate) return frame;
  return static_cast<unsigned short>(Truncate(rate - 1.0));
}

double CTimecode::ValidateFrameRate(double rate) {
  if (rate < 24.0) return 24.0;
  if (rate > 1200.0) return 1200.0;
  if (!(rate == rate)) return 24.0;  // NaN compares with nothing: take the lowest rate
  return rate;
}

void CTimecode::TrickleDownHourChange() {}
void CTimecode::TrickleDownMinuteChange() {}
void CTimecode::TrickleDownSecondChange() {}
void CTimecode::TrickleDownFrameChange() {}
void CTimecode::TrickleDownFrameRateChange() {}

// ---- getters

unsigned short CTimecode::GetHour() const { return mHour; }
unsigned short CTimecode::GetMinute() const { return mMinute; }
unsigned short CTimecode::GetSecond() const { return mSecond; }
unsigned short CTimecode::GetFrame() const { return mFrame; }
double CTimecode::GetFrameRate() const { return mFrameRate; }

void CTimecode::GetTime(unsigned short& hour, unsigned short& minute, unsigned short& second,
                        unsigned short& frame) const {
  hour = GetHour();
  minute = GetMinute();
  second = GetSecond();
  frame = GetFrame();
}

// ---- whole values

bool CTimecode::SetTime(unsigned short hour, unsigned short minute, unsigned short second, unsigned short frame) {
  // Every setter runs, whatever the others gave.
  bool changed = SetHour(hour);
  changed |= SetMinute(minute);
  changed |= SetSecond(second);
  changed |= SetFrame(frame);
  return changed;
}

bool CTimecode::SetTime(unsigned short hour, unsigned short minute, unsigned short second, unsigned short frame,
                        double rate) {
  bool changed = SetFrameRate(rate);
  changed |= SetTime(hour, minute, second, frame);
  return changed;
}

bool CTimecode::SetTime(unsigned short hour, unsigned short minute, unsigned short second, unsigned short frame,
                        frame_type_t type) {
  bool changed = SetFrameType(type);
  changed |= SetTime(hour, minute, second, frame);
  return changed;
}

bool CTimecode::SetFrameType(frame_type_t type) {
  return SetFrameRate(type == kFrameType24 || type == kFrameType25 ? RateOfType(type) : 30.0);
}

frame_type_t CTimecode::GetFrameType() const {
  double rate = GetFrameRate();
  if (rate == 30.0) return kFrameType30;
  if (rate == 25.0) return kFrameType25;
  if (rate == 24.0) return kFrameType24;
  return kFrameType30;
}

bool CTimecode::IsZero() const { return GetHour() == 0 && GetMinute() == 0 && GetSecond() == 0 && GetFrame() == 0; }

// ---- counts

long CTimecode::GetTotalFrame() const {
  long seconds = GetSecond() + 60L * (GetMinute() + 60L * GetHour());
  return Truncate(GetFrameRate() * static_cast<double>(seconds) + GetFrame()) + 1;
}

void CTimecode::SetTotalFrame(long total, frame_type_t type) {
  if (total < 1) total = 1;
  long n = total - 1;
  if (type != kFrameTypeCurrent) SetFrameType(type);
  double rate = GetFrameRate();
  long secs = Truncate(static_cast<double>(n) / rate);
  long frames = Truncate(static_cast<double>(n) - rate * static_cast<double>(secs));
  auto mins = static_cast<unsigned short>(secs / 60);
  SetTime(static_cast<unsigned short>(mins / 60), static_cast<unsigned short>(mins % 60),
          static_cast<unsigned short>(secs % 60), static_cast<unsigned short>(frames));
}

double CTimecode::GetTotalSecond() const { return static_cast<double>(GetTotalFrame()) / GetFrameRate(); }

double CTimecode::GetTotalMinute() const { return GetTotalSecond() * (1.0 / 60.0); }

CTimecode::operator unsigned long() const {
  return static_cast<unsigned long>(Truncate(static_cast<double>(GetTotalFrame() - 1) / mFrameRate * 1000.0));
}

CTimecode::operator double() const {
  return static_cast<double>(GetTotalFrame()) * 10000.0 + GetFrameRate() * 100.0;
}

CTimecode& CTimecode::operator=(double packed) {
  long v = Truncate(packed);
  SetFrameRate(static_cast<double>(v % 10000) * 0.01);
  SetTotalFrame(v / 10000, GetFrameType());
  return *this;
}

CTimecode& CTimecode::operator=(const CTimecode& other) {
  AssignValue(other.GetHour(), other.GetMinute(), other.GetSecond(), other.GetFrame(), other.GetFrameRate());
  return *this;
}

void CTimecode::AssignValue(unsigned short hour, unsigned short minute, unsigned short second, unsigned short frame,
                            double rate) {
  if (GetHour() == hour && GetMinute() == minute && GetSecond() == second && GetFrame() == frame &&
      GetFrameRate() == rate) {
    return;
  }
  mHour = hour;
  mMinute = minute;
  mSecond = second;
  mFrame = frame;
  mFrameRate = rate;
  Notify(kTimecodeChanged, 0, 0);
}

bool CTimecode::operator==(const CTimecode& other) const {
  return GetHour() == other.GetHour() && GetMinute() == other.GetMinute() && GetSecond() == other.GetSecond() &&
         GetFrame() == other.GetFrame() && GetFrameRate() == other.GetFrameRate();
}

bool CTimecode::operator!=(const CTimecode& other) const { return !(*this == other); }

// ---- stepping

void CTimecode::IncreaseFrame(long count) {
  mFrame = static_cast<unsigned short>(mFrame + static_cast<unsigned short>(count));
  if (mFrame == FramesOfType(GetFrameType())) {
    ++mSecond;
    mFrame = 0;
  }
  if (mSecond == 60) {
    ++mMinute;
    mSecond = 0;
  }
  if (mMinute == 60) {
    ++mHour;
    mMinute = 0;
  }
}

void CTimecode::DecreaseFrame() {
  if (mFrame != 0) {
    --mFrame;
    return;
  }
  if (mSecond != 0) {
    --mSecond;
  } else {
    mSecond = 59;
    if (mMinute != 0) {
      --mMinute;
    } else {
      mMinute = 59;
      --mHour;  // unsigned 16 bits: 0 becomes 65535
    }
  }
  mFrame = static_cast<unsigned short>(FramesOfType(GetFrameType()) - 1);
}

// ---- drop-frame
//
// Both directions work on label counts at 30 fps (0-based: 00:00:00:00 is 0),
// whatever the value's own rate. Counting from the reference's minute, every
// later minute start that is not a tenth minute skips the labels :00 and :01,
// so the number of skipped labels below a label has a closed form, and so has
// its inverse: no estimate is corrected, nothing is iterated.

namespace {

constexpr long kLabelsPerMinute = 1800;       // labels of a minute at 30 fps
constexpr long kLabelsPerDropMinute = 1798;   // a minute that skips :00 and :01
constexpr long kLabelsPerTenMinutes = 17982;  // a tenth minute and nine that skip

// The labels of `t` read at 30 fps.
long LabelCount(const CTimecode& t) {
  return ((t.GetHour() * 60L + t.GetMinute()) * 60L + t.GetSecond()) * 30L + t.GetFrame();
}

// Labels skipped between the reference's minute `from` and the minute `to`:
// two for each minute start after `from`, up to `to`, that is not a tenth one.
long DroppedBetween(long from, long to) {
  if (to <= from) return 0;
  return 2 * ((to - from) - (to / 10 - from / 10));
}

}  // namespace

void CTimecode::AssignLabels(long count, CTimecode* result) {
  const long minutes = count / kLabelsPerMinute;
  const long inMinute = count % kLabelsPerMinute;
  result->AssignValue(static_cast<unsigned short>(minutes / 60), static_cast<unsigned short>(minutes % 60),
                      static_cast<unsigned short>(inMinute / 30), static_cast<unsigned short>(inMinute % 30), 30.0);
}

void CTimecode::Drop2Nondrop(const CTimecode& reference, CTimecode* result) {
  const long label = LabelCount(*this);
  const long minute = label / kLabelsPerMinute;
  // :00 and :01 of a minute that is not a tenth one read as its :02.
  const long legal = minute % 10 != 0 && label % kLabelsPerMinute < 2 ? minute * kLabelsPerMinute + 2 : label;
  const long referenceMinute = LabelCount(reference) / kLabelsPerMinute;
  AssignLabels(legal - DroppedBetween(referenceMinute, minute), result);
}

void CTimecode::Drop2Nondrop(const CTimecode& reference) { Drop2Nondrop(reference, this); }

void CTimecode::Nondrop2Drop(const CTimecode& reference, CTimecode* result) {
  const long plain = LabelCount(*this);
  const long referenceMinute = LabelCount(reference) / kLabelsPerMinute;
  // Up to the end of the reference's minute (and before the reference) no
  // label is skipped: a value is its own label.
  long after = plain - (referenceMinute + 1) * kLabelsPerMinute;
  if (after < 0) return AssignLabels(plain, result);
  // Minutes that skip two labels each, up to the next tenth minute...
  const long tenth = (referenceMinute / 10 + 1) * 10;
  const long leading = (tenth - 1 - referenceMinute) * kLabelsPerDropMinute;
  long label;
  if (after < leading) {
    label = (referenceMinute + 1 + after / kLabelsPerDropMinute) * kLabelsPerMinute + after % kLabelsPerDropMinute + 2;
  } else {
    // ...then whole blocks of ten minutes, each led by a tenth minute that skips nothing.
    after -= leading;
    const long block = tenth + 10 * (after / kLabelsPerTenMinutes);
    const long inBlock = after % kLabelsPerTenMinutes;
    if (inBlock < kLabelsPerMinute) {
      label = block * kLabelsPerMinute + inBlock;
    } else {
      const long rest = inBlock - kLabelsPerMinute;
      label = (block + 1 + rest / kLabelsPerDropMinute) * kLabelsPerMinute + rest % kLabelsPerDropMinute + 2;
    }
  }
  AssignLabels(label, result);
}

void CTimecode::Nondrop2Drop(const CTimecode& reference) { Nondrop2Drop(reference, this); }

// ---- comparison and arithmetic

bool operator<(const CTimecode& a, const CTimecode& b) { return a.GetTotalFrame() < b.GetTotalFrame(); }
bool operator>(const CTimecode& a, const CTimecode& b) { return a.GetTotalFrame() > b.GetTotalFrame(); }
bool operator<=(const CTimecode& a, const CTimecode& b) { return a.GetTotalFrame() <= b.GetTotalFrame(); }
bool operator>=(const CTimecode& a, const CTimecode& b) { return a.GetTotalFrame() >= b.GetTotalFrame(); }

namespace {
// A value at `left`'s rate, filled from a count by `left`'s frame type.
CTimecode FromCount(const CTimecode& left, long count) {
  CTimecode result;
  result.SetFrameRate(left.GetFrameRate());
  result.SetTotalFrame(count, left.GetFrameType());
  return result;
}
}  // namespace

CTimecode operator+(const CTimecode& a, const CTimecode& b) {
  return FromCount(a, a.GetTotalFrame() + b.GetTotalFrame() - 1);
}

CTimecode operator+(const CTimecode& a, long frames) { return FromCount(a, a.GetTotalFrame() + frames); }

CTimecode operator-(const CTimecode& a, const CTimecode& b) {
  return FromCount(a, a.GetTotalFrame() - b.GetTotalFrame() + 1);
}

CTimecode operator-(const CTimecode& a, long frames) { return FromCount(a, a.GetTotalFrame() - frames); }
