// CTimecodeParser.h: the text side of a timecode: splits an entered text
// into four number fields (from the right, so a short text fills the frame
// first) and a frame type, and prints four numbers back as timecode text.
// A ';' before the frame means 25 frames per second.
//
//   CTimecodeParser p;  p.Parse(u"01:02:03;04"_u16, false);   // kFrameType25
//   CTimecode t = p.GetTime();                     // 01:02:03:04 at 25
//   MString text = p.GetString();                  // "01:02:03;04"
#pragma once

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/text/MString.h>
#include <VantoroBasicUtils/time/CTimecode.h>

class VBU_API CTimecodeParser {
 public:
  // Empty fields, kFrameType30.
  CTimecodeParser();
  CTimecodeParser(const CTimecodeParser& other) = default;
  CTimecodeParser& operator=(const CTimecodeParser& other) = default;
  virtual ~CTimecodeParser();

  // Splits `text` (not changed) into the fields; sets the frame type from
  // the separators unless `keepFrameType`.
  virtual void Parse(unsigned short* text, bool keepFrameType);
  // The same for text that is only read, such as a u"..."_u16 literal.
  void Parse(const unsigned short* text, bool keepFrameType) { Parse(const_cast<unsigned short*>(text), keepFrameType); }
  // A bare nullptr (no text) would fit both forms.
  void Parse(decltype(nullptr), bool keepFrameType) { Parse(static_cast<unsigned short*>(nullptr), keepFrameType); }
  // A field's number; empty or unreadable text gives 0.
  virtual unsigned short GetHour();
  virtual unsigned short GetMinute();
  virtual unsigned short GetSecond();
  virtual unsigned short GetFrame();
  virtual frame_type_t GetFrameType();
  // A field becomes the decimal text of `value`, at least two digits.
  virtual void SetHour(unsigned short value);
  virtual void SetMinute(unsigned short value);
  virtual void SetSecond(unsigned short value);
  virtual void SetFrame(unsigned short value);
  virtual void SetFrameType(frame_type_t type);
  // The four numbers and the frame type of `time`.
  virtual void SetTime(CTimecode& time);
  // 'hh:mm:ss:ff', with ';' before the frame for kFrameType25; fields as they stand.
  virtual MString GetString();
  // The four fields joined with no separator.
  virtual MString GetRawString();
  // A timecode of the four numbers at the frame type (validated there).
  virtual CTimecode GetTime();

 private:
  static unsigned short Number(const MString& field);
  static void SetNumber(MString& field, unsigned short value);

  MString mHour;
  MString mMinute;
  MString mSecond;
  MString mFrame;
  frame_type_t mFrameType;
};
