// CDuration.h: a range of frames: a start timecode and a length, with an
// inclusive end worked out from them. With a drop-frame range the UI
// operations show and take drop-frame labels, while plain frames are kept.
//
//   CDuration clip;  CTimecode start(0, 0, 10, 0, 30.0), length(0, 0, 5, 0, 30.0);
//   clip.SetStartTime(start);  clip.SetDuration(length);   // end 00:00:14:29
//   clip.IsInclude(start);                                  // true
#pragma once

#include <VantoroBasicUtils/messaging/LNotifier.h>
#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/time/CTimecode.h>

// Announced by the range's own setters.
constexpr long kDurationResolutionChanged = 7200;
constexpr long kDurationDropTypeChanged = 7201;
constexpr long kDurationStartTimeChanged = 7202;
constexpr long kDurationLengthChanged = 7203;

// end = (start + length) - 1 frame; length = (end - start) + 1 frame. A
// length of 00:00:00:00 is legal and puts the end one frame before the start.
// The range holds its timecodes by value; their own announcements don't
// reach the range's listeners.
class VBU_API CDuration : public LNotifier {
 public:
  // Resolution unset, non-drop; start and length 00:00:00:00 at 30.0.
  CDuration();
  // A copy of the value; no listeners.
  CDuration(const CDuration& other);
  // Copies the value (announcing through the timecodes only).
  CDuration& operator=(const CDuration& other);
  ~CDuration() override;

  // ---- setters: true if the stored value changed
  virtual bool SetResolution(resolution_t resolution);
  virtual bool SetDropType(drop_nondrop_t dropType);
  virtual bool SetStartTime(CTimecode& start);
  // Turns `end` into a length; the start takes the end's frame type.
  virtual bool SetEndTime(CTimecode& end);
  virtual bool SetDuration(CTimecode& length);
  // The user's view: drop-frame labels for a drop-frame range.
  virtual bool SetStartTimeUI(CTimecode& start);
  virtual bool SetEndTimeUI(CTimecode& end);
  virtual bool SetDurationUI(CTimecode& length);

  // ---- validation
  virtual resolution_t ValidateResolution(resolution_t resolution);
  virtual drop_nondrop_t ValidateDropType(drop_nondrop_t dropType);
  virtual CTimecode ValidateStartTime(CTimecode& start);
  // A length of no frames (total 0 or less) becomes one frame, on the argument itself.
  virtual CTimecode ValidateDuration(CTimecode& length);

  // ---- hooks for subclasses
  // Gives both timecodes 30 fps for NTSC, 25 fps for every other resolution.
  virtual void TrickleDownResolutionChange();
  virtual void TrickleDownDropTypeChange();
  virtual void TrickleDownStartTimeChange();
  virtual void TrickleDownDurationChange();

  // ---- getters
  virtual resolution_t GetResolution() const;
  virtual drop_nondrop_t GetDropType() const;
  virtual CTimecode GetStartTime() const;
  virtual CTimecode GetEndTime() const;
  virtual CTimecode GetDuration() const;
  virtual CTimecode GetStartTimeUI() const;
  virtual CTimecode GetEndTimeUI() const;
  virtual CTimecode GetDurationUI() const;

  // 30 fps sets NTSC, 25 fps sets PAL; any other type gives false.
  bool SetFrameType(frame_type_t type);
  // 25 fps for PAL, else 30 fps.
  frame_type_t GetFrameType() const;
  // The length in frames: 0 for a length of 00:00:00:00.
  long GetTotalFrame() const;
  // Start and length both 00:00:00:00.
  bool IsNil();
  // `time` lies within the range, both ends included.
  bool IsInclude(CTimecode& time);
  // `other` lies wholly within this range, ends may coincide.
  bool IsInclude(CDuration& other);
  // The ranges overlap, by strict comparisons: a shared end frame, the same
  // start, or identical ranges don't count.
  bool IsOverlap(CDuration& other);
  // The frames both ranges hold, into `result`; false (and `result`
  // untouched) when there are none.
  bool GetOverlapDuration(const CDuration& other, CDuration* result);

  bool operator==(const CDuration& other) const;
  bool operator!=(const CDuration& other) const;

 private:
  // 00:00:00:01 at the start's frame type.
  CTimecode OneFrame() const;
  // The body of the setters: compare with the stored value, store, hook, announce.
  template <class T>
  bool Store(T& field, const T& value, void (CDuration::*hook)(), long message);

  resolution_t mResolution;
  drop_nondrop_t mDropType;
  CTimecode mStartTime;
  CTimecode mDuration;
};
