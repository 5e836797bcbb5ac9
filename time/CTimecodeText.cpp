// The text forms of CTimecode.
#include "platform/internal/WideText.h"
#include "text/MString.h"
#include "time/CTimecode.h"
#include "time/CTimecodeParser.h"

namespace wt = vbu::wtext;

namespace {

// The four fields of a timecode text, from the left; missing ones are 0.
struct Fields {
  unsigned short value[4] = {0, 0, 0, 0};
};

Fields ReadFields(const unsigned short* text) {
  // A work area of 32 units, terminator included; longer texts are cut.
  unsigned short work[32] = {};
  for (int i = 0; text && i < 31 && text[i]; ++i) work[i] = text[i];
  const unsigned short separators[] = {':', ';', 0};
  Fields fields;
  int n = 0;
  unsigned short* position = nullptr;
  for (unsigned short* token = wt::Tokenize(work, separators, &position); token && n < 4;
       token = wt::Tokenize(nullptr, separators, &position)) {
    fields.value[n++] = static_cast<unsigned short>(wt::ToInt(token));
  }
  return fields;
}

}  // namespace

void CTimecode::GetTime(MString* text) {
  if (!text) return;
  CTimecodeParser parser;
  parser.SetTime(*this);
  *text = parser.GetString();
}

void CTimecode::GetTime(unsigned short* text) {
  if (!text) return;
  MString s;
  GetTime(&s);
  const unsigned short* units = s;
  int length = s.GetLength();
  for (int i = 0; i <= length; ++i) text[i] = units[i];  // the text and its terminator, no more
}

bool CTimecode::SetTime(unsigned short* text, double rate) {
  Fields f = ReadFields(text);
  return SetTime(f.value[0], f.value[1], f.value[2], f.value[3], rate);
}

bool CTimecode::SetTime(unsigned short* text) {
  Fields f = ReadFields(text);
  return SetTime(f.value[0], f.value[1], f.value[2], f.value[3]);
}

bool CTimecode::SetTimeWithType(unsigned short* text, frame_type_t type) {
  double rate = GetFrameRate();  // other types keep the rate
  if (type == kFrameType24) rate = 24.0;
  if (type == kFrameType25) rate = 25.0;
  if (type == kFrameType30) rate = 30.0;
  return SetTime(text, rate);
}
