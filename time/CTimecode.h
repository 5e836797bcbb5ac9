// CTimecode.h: the frame-accurate time value: an hour, minute, second and
// frame label with a frame rate. Reads and writes as four numbers, as text
// 'hh:mm:ss:ff' (';' before the frame at 25 fps), as a 1-based total frame
// count, as a packed double and as milliseconds. Every change is announced.
//
//   CTimecode t(0, 0, 1, 0, kFrameType30);       // 00:00:01:00, total frame 31
//   CTimecode later = t + 30;                     // 00:00:02:00
//   CTimecode shown;
//   t.Nondrop2Drop(CTimecode(), &shown);          // its drop-frame label
#pragma once

#include <cstdint>

#include <VantoroBasicUtils/messaging/LNotifier.h>
#include <VantoroBasicUtils/platform/Export.h>

class MString;

enum frame_type_t {
  kFrameType24 = 0,       // 24 frames per second
  kFrameType25 = 1,       // 25 frames per second (PAL)
  kFrameTypeOther = 2,    // no rate of its own; never reported
  kFrameType30 = 3,       // 30 frames per second (NTSC labels)
  kFrameTypeCurrent = 4,  // SetTotalFrame only: keep the rate
};

enum resolution_t { kResolutionNTSC = 0, kResolutionPAL = 1, kResolutionUnset = 2 };

enum drop_nondrop_t { kNonDrop = 0, kDrop = 1 };

// Announced (LNotifier::Notify(kTimecodeChanged, 0, 0)) after each change
// of a label or of the rate.
constexpr long kTimecodeChanged = 7130;

// Units that GetTime(unsigned short*) may write, terminator included: the
// longest text is that of hour 65535 with a four-digit frame (rates up to 1200).
constexpr int kTimecodeTextMax = 17;

// A label, not a count: there is no stored frame type and no drop flag. The
// frame type follows from the rate; a label is a drop-frame label only by
// agreement with the conversions. Every setter validates (clamps), stores,
// calls its TrickleDown hook and announces, and does nothing for an
// unchanged value. All internal calls go through the virtual operations,
// so a subclass that overrides a Validate or Get operation changes the
// arithmetic too.
class VBU_API CTimecode : public LNotifier {
 public:
  // 00:00:00:00 at 30.0.
  CTimecode();
  // From the packed form (see operator=(double)).
  CTimecode(double packed);
  // A copy of the value; no listeners.
  CTimecode(const CTimecode& other);
  CTimecode(unsigned short hour, unsigned short minute, unsigned short second, unsigned short frame, double rate);
  // Sets the frame type first, then the four labels.
  CTimecode(unsigned short hour, unsigned short minute, unsigned short second, unsigned short frame,
            frame_type_t type);
  ~CTimecode() override;

  // ---- setters: true if the stored value changed
  virtual bool SetHour(unsigned short hour);
  virtual bool SetMinute(unsigned short minute);
  virtual bool SetSecond(unsigned short second);
  virtual bool SetFrame(unsigned short frame);
  // Leaves the labels alone; the frame is not validated again.
  virtual bool SetFrameRate(double rate);

  // ---- validation: the value to store
  virtual unsigned short ValidateHour(unsigned short hour);      // unchanged
  virtual unsigned short ValidateMinute(unsigned short minute);  // at most 59
  virtual unsigned short ValidateSecond(unsigned short second);  // at most 59
  // Below the rate in force, else the rate minus 1, truncated (28 at 29.97).
  virtual unsigned short ValidateFrame(unsigned short frame);
  // Within 24.0 to 1200.0.
  virtual double ValidateFrameRate(double rate);

  // ---- hooks for subclasses, called after a store, before the announcement
  virtual void TrickleDownHourChange();
  virtual void TrickleDownMinuteChange();
  virtual void TrickleDownSecondChange();
  virtual void TrickleDownFrameChange();
  virtual void TrickleDownFrameRateChange();

  // ---- getters
  virtual unsigned short GetHour() const;
  virtual unsigned short GetMinute() const;
  virtual unsigned short GetSecond() const;
  virtual unsigned short GetFrame() const;
  virtual double GetFrameRate() const;

  // ---- text and numbers
  // 'hh:mm:ss:ff' (';' before the frame at 25 fps), two digits at least each.
  virtual void GetTime(MString* text);
  // The same into `text`, which has room for kTimecodeTextMax units.
  virtual void GetTime(unsigned short* text);
  virtual void GetTime(unsigned short& hour, unsigned short& minute, unsigned short& second,
                       unsigned short& frame) const;
  // Reads 'h:m:s:f' (':' or ';' anywhere; up to 31 units): fields from the
  // left, missing ones 0; then sets them at `rate`.
  virtual bool SetTime(unsigned short* text, double rate);
  virtual bool SetTime(unsigned short* text);
  // The same for text that is only read, such as a u"..."_u16 literal.
  bool SetTime(const unsigned short* text, double rate) { return SetTime(const_cast<unsigned short*>(text), rate); }
  bool SetTime(const unsigned short* text) { return SetTime(const_cast<unsigned short*>(text)); }
  // A bare nullptr (no text) would fit both forms.
  bool SetTime(decltype(nullptr), double rate) { return SetTime(static_cast<unsigned short*>(nullptr), rate); }
  bool SetTime(decltype(nullptr)) { return SetTime(static_cast<unsigned short*>(nullptr)); }
  // The four labels after the frame type (every type but 0, 1, 3 gives 30.0).
  virtual bool SetTime(unsigned short hour, unsigned short minute, unsigned short second, unsigned short frame,
                       frame_type_t type);
  // The four labels after the rate.
  virtual bool SetTime(unsigned short hour, unsigned short minute, unsigned short second, unsigned short frame,
                       double rate);
  virtual bool SetTime(unsigned short hour, unsigned short minute, unsigned short second, unsigned short frame);
  // As SetTime(text, rate) with the rate of `type`; other types keep the rate.
  virtual bool SetTimeWithType(unsigned short* text, frame_type_t type);
  bool SetTimeWithType(const unsigned short* text, frame_type_t type) {
    return SetTimeWithType(const_cast<unsigned short*>(text), type);
  }
  bool SetTimeWithType(decltype(nullptr), frame_type_t type) {
    return SetTimeWithType(static_cast<unsigned short*>(nullptr), type);
  }
  // From a 1-based frame count (below 1 counts as 1), after SetFrameType(type)
  // unless `type` is kFrameTypeCurrent.
  virtual void SetTotalFrame(long total, frame_type_t type);
  // 1-based: 00:00:00:00 is frame 1.
  virtual long GetTotalFrame() const;
  // GetTotalFrame() / rate: 00:00:00:00 at 30.0 gives 1/30.
  virtual double GetTotalSecond() const;
  virtual double GetTotalMinute() const;

  // ---- frame type: 24.0, 25.0 or 30.0 (every other type gives 30.0)
  bool SetFrameType(frame_type_t type);
  // 30.0 -> 3, 25.0 -> 1, 24.0 -> 0, any other rate -> 3.
  frame_type_t GetFrameType() const;

  // All four labels are 0.
  bool IsZero() const;
  // Adds `count` (16 bits) to the frame with one carry up the labels; no
  // validation, no announcement.
  void IncreaseFrame(long count);
  // One frame back, borrowing down the labels; no announcement.
  void DecreaseFrame();

  // ---- drop-frame labels at 30 fps, counted from `reference`
  // Both read the labels of this value and of `reference` as 30 fps labels,
  // whatever their rates; the result is at 30.0, assigned once.
  // The drop-frame label of this plain label. Up to the end of the
  // reference's minute, and before the reference, a value is its own label.
  void Nondrop2Drop(const CTimecode& reference, CTimecode* result);
  void Nondrop2Drop(const CTimecode& reference);
  // The plain label of this drop-frame label; :00 and :01 of a minute that
  // is not a tenth one read as its :02.
  void Drop2Nondrop(const CTimecode& reference, CTimecode* result);
  void Drop2Nondrop(const CTimecode& reference);

  // Milliseconds from 00:00:00:00, truncated.
  operator unsigned long() const;
  // Packed: GetTotalFrame() * 10000 + rate * 100.
  operator double() const;
  // From the packed form: the rate (two decimals, below 100), then the count.
  CTimecode& operator=(double packed);
  // Copies labels and rate with one announcement, if they differ.
  CTimecode& operator=(const CTimecode& other);
  // Labels equal and rates exactly equal.
  bool operator==(const CTimecode& other) const;
  bool operator!=(const CTimecode& other) const;

 private:
  // `result` becomes the 30 fps value of `count` labels (0-based), as operator= assigns.
  static void AssignLabels(long count, CTimecode* result);
  // Stores the labels and the rate with one announcement, if they differ.
  void AssignValue(unsigned short hour, unsigned short minute, unsigned short second, unsigned short frame,
                   double rate);
  // The shared body of the four-label setters: validate, compare, store, hook, announce.
  template <class T>
  bool Store(T CTimecode::*field, T value, T current, void (CTimecode::*hook)());

  double mFrameRate;
  unsigned short mHour;
  unsigned short mMinute;
  unsigned short mSecond;
  unsigned short mFrame;
};

// By total frames; the rates don't enter.
VBU_API bool operator<(const CTimecode& a, const CTimecode& b);
VBU_API bool operator>(const CTimecode& a, const CTimecode& b);
VBU_API bool operator<=(const CTimecode& a, const CTimecode& b);
VBU_API bool operator>=(const CTimecode& a, const CTimecode& b);
// Label arithmetic at the left operand's rate (its frame type's, in fact).
VBU_API CTimecode operator+(const CTimecode& a, const CTimecode& b);
VBU_API CTimecode operator+(const CTimecode& a, long frames);
VBU_API CTimecode operator-(const CTimecode& a, const CTimecode& b);
VBU_API CTimecode operator-(const CTimecode& a, long frames);
// For plain int counts such as `t + 30`, which would otherwise also match the
// built-in arithmetic on the value's conversion to double.
inline CTimecode operator+(const CTimecode& a, int frames) { return a + static_cast<long>(frames); }
inline CTimecode operator-(const CTimecode& a, int frames) { return a - static_cast<long>(frames); }
