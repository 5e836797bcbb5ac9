// Timecode text: CTimecode::SetTime and CTimecodeParser::Parse on any
// units, then every way of reading the value back.
#include "FuzzSupport.h"

#include <VantoroBasicUtils/time/CTimecode.h>
#include <VantoroBasicUtils/time/CTimecodeParser.h>

#include <cmath>
#include <cstdio>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  const int how = in.ConsumeIntegralInRange(0, 3);
  const double rate = in.ConsumeFloatingPoint<double>();
  const auto type = static_cast<frame_type_t>(in.ConsumeIntegralInRange(0, 4));
  const bool keepType = in.ConsumeBool();
  std::vector<unsigned short> text = vbu::fuzz::Units(in, 64);

  CTimecode time;
  switch (how) {
    case 0: time.SetTime(text.data(), rate); break;
    case 1: time.SetTime(text.data()); break;
    default: time.SetTimeWithType(text.data(), type); break;
  }
  // Every stored value is a valid one.
  VBU_FUZZ_CHECK(time.GetMinute() <= 59 && time.GetSecond() <= 59);
  VBU_FUZZ_CHECK(time.GetFrameRate() >= 24.0 && time.GetFrameRate() <= 1200.0);
  VBU_FUZZ_CHECK(time.GetFrame() < std::ceil(time.GetFrameRate()));
  // The text forms, into a block of exactly the documented room.
  auto room = std::make_unique<unsigned short[]>(kTimecodeTextMax);
  time.GetTime(room.get());
  MString shown;
  time.GetTime(&shown);
  VBU_FUZZ_CHECK(shown.GetLength() < kTimecodeTextMax);
  // What was shown reads back as the same labels.
  CTimecode again;
  again.SetTime(shown, time.GetFrameRate());
  VBU_FUZZ_CHECK(again.GetHour() == time.GetHour() && again.GetMinute() == time.GetMinute() &&
                 again.GetSecond() == time.GetSecond() && again.GetFrame() == time.GetFrame());
  (void)time.GetTotalFrame();
  (void)time.GetTotalSecond();

  CTimecodeParser parser;
  parser.Parse(text.data(), keepType);
  (void)parser.GetHour();
  (void)parser.GetMinute();
  (void)parser.GetSecond();
  (void)parser.GetFrame();
  (void)parser.GetFrameType();
  MString fields = parser.GetString();
  MString raw = parser.GetRawString();
  CTimecode parsed = parser.GetTime();
  VBU_FUZZ_CHECK(parsed.GetMinute() <= 59 && parsed.GetSecond() <= 59);
  parser.SetTime(time);
  VBU_FUZZ_CHECK(parser.GetHour() == time.GetHour() && parser.GetFrame() == time.GetFrame());
  return 0;
}
