#include "time/CTimecodeParser.h"

#include "platform/internal/WideText.h"

namespace wt = vbu::wtext;

CTimecodeParser::CTimecodeParser() : mFrameType(kFrameType30) {}

CTimecodeParser::~CTimecodeParser() = default;

void CTimecodeParser::Parse(unsigned short* text, bool keepFrameType) {
  mHour = mMinute = mSecond = mFrame = static_cast<const unsigned short*>(nullptr);
  MString work(text ? text : vbu::ToUnits(u""));
  unsigned short* base = work;
  if (!keepFrameType) mFrameType = wt::Find(base, ';') ? kFrameType25 : kFrameType30;

  // The last ';' wins over any ':', wherever it stands; after it, only ':'.
  unsigned short* cut = wt::FindLast(base, ';');
  if (!cut) cut = wt::FindLast(base, ':');
  MString* fields[] = {&mFrame, &mSecond, &mMinute};
  for (MString* field : fields) {
    if (!cut) {
      *field = base;  // all that is left
      return;
    }
    *field = cut + 1;
    *cut = 0;
    cut = wt::FindLast(base, ':');
  }
  mHour = base;
}

unsigned short CTimecodeParser::Number(const MString& field) {
  return static_cast<unsigned short>(wt::ToInt(field));
}

void CTimecodeParser::SetNumber(MString& field, unsigned short value) {
  field.Format(vbu::ToUnits(value < 10 ? u"0%d" : u"%d"), static_cast<int>(value));
}

unsigned short CTimecodeParser::GetHour() { return Number(mHour); }
unsigned short CTimecodeParser::GetMinute() { return Number(mMinute); }
unsigned short CTimecodeParser::GetSecond() { return Number(mSecond); }
unsigned short CTimecodeParser::GetFrame() { return Number(mFrame); }
frame_type_t CTimecodeParser::GetFrameType() { return mFrameType; }

void CTimecodeParser::SetHour(unsigned short value) { SetNumber(mHour, value); }
void CTimecodeParser::SetMinute(unsigned short value) { SetNumber(mMinute, value); }
void CTimecodeParser::SetSecond(unsigned short value) { SetNumber(mSecond, value); }
void CTimecodeParser::SetFrame(unsigned short value) { SetNumber(mFrame, value); }
void CTimecodeParser::SetFrameType(frame_type_t type) { mFrameType = type; }

void CTimecodeParser::SetTime(CTimecode& time) {
  SetHour(time.GetHour());
  SetMinute(time.GetMinute());
  SetSecond(time.GetSecond());
  SetFrame(time.GetFrame());
  SetFrameType(time.GetFrameType());
}

MString CTimecodeParser::GetString() {
  MString text;
  text.Format(vbu::ToUnits(GetFrameType() == kFrameType25 ? u"%s:%s:%s;%s" : u"%s:%s:%s:%s"),
              static_cast<const unsigned short*>(mHour), static_cast<const unsigned short*>(mMinute),
              static_cast<const unsigned short*>(mSecond), static_cast<const unsigned short*>(mFrame));
  return text;
}

MString CTimecodeParser::GetRawString() { return mHour + mMinute + mSecond + mFrame; }

CTimecode CTimecodeParser::GetTime() {
  return CTimecode(GetHour(), GetMinute(), GetSecond(), GetFrame(), GetFrameType());
}
