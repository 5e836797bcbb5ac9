// Timecodes as text: the parser's right-to-left rules, the tokenising
// setters and round trips through text for every frame type.
#include <VantoroBasicUtils/time/CTimecode.h>
#include <VantoroBasicUtils/time/CTimecodeParser.h>

#include <gtest/gtest.h>

#include <string>

using namespace vbu::literals;

namespace {

std::u16string S(const MString& s) { return std::u16string(reinterpret_cast<const char16_t*>(static_cast<const unsigned short*>(s))); }

std::u16string Text(CTimecode& t) {
  MString s;
  t.GetTime(&s);
  return S(s);
}

}  // namespace

TEST(CTimecodeParser, FieldsFillFromTheRight) {
  struct Row {
    const unsigned short* text;
    bool keep;
    const char16_t* string;
    unsigned hour, minute, second, frame;
    frame_type_t type;
  } rows[] = {
      {u"12"_u16, false, u":::12", 0, 0, 0, 12, kFrameType30},
      {u"1:2"_u16, false, u"::1:2", 0, 0, 1, 2, kFrameType30},
      {u"1:2:3"_u16, false, u":1:2:3", 0, 1, 2, 3, kFrameType30},
      {u"01:02:03:04"_u16, false, u"01:02:03:04", 1, 2, 3, 4, kFrameType30},
      {u"01:02:03;04"_u16, false, u"01:02:03;04", 1, 2, 3, 4, kFrameType25},
      {u"01:02:03;04"_u16, true, u"01:02:03:04", 1, 2, 3, 4, kFrameType30},
      {u""_u16, false, u":::", 0, 0, 0, 0, kFrameType30},
      {u"1;2:3"_u16, false, u"::1;2:3", 0, 0, 1, 2, kFrameType25},  // the ';' wins
      {u"1;2;3"_u16, false, u"::1;2;3", 0, 0, 1, 3, kFrameType25},
      {u"1:2:3:4:5"_u16, false, u"1:2:3:4:5", 1, 3, 4, 5, kFrameType30},
  };
  for (auto& row : rows) {
    CTimecodeParser p;
    p.Parse(row.text, row.keep);
    EXPECT_EQ(S(p.GetString()), row.string);
    EXPECT_EQ(std::tuple(p.GetHour(), p.GetMinute(), p.GetSecond(), p.GetFrame(), p.GetFrameType()),
              std::tuple(row.hour, row.minute, row.second, row.frame, row.type));
  }
  CTimecodeParser p;
  p.Parse(u"01:02:03:04"_u16, false);
  EXPECT_EQ(S(p.GetRawString()), u"01020304");
  p.Parse(u"7"_u16, false);
  EXPECT_EQ(p.GetTime(), CTimecode(0, 0, 0, 7, 30.0));
  p.SetFrameType(kFrameType25);
  p.SetFrame(30);  // validated by the timecode: 24 at 25 fps
  EXPECT_EQ(p.GetTime().GetFrame(), 24);
  p.SetHour(0);
  p.SetMinute(100);
  EXPECT_EQ(S(p.GetString()), u"00:100:;30");
}

TEST(CTimecode, SetTimeFromTextReadsFromTheLeft) {
  CTimecode t;
  for (auto [text, rate, shown] : {std::tuple{u"1:2"_u16, 30.0, u"01:02:00:00"}, {u"1;2;3;4"_u16, 30.0, u"01:02:03:04"},
                                   {u"1::2"_u16, 30.0, u"01:02:00:00"}, {u"x:7:8:9:10:11"_u16, 25.0, u"00:07:08;09"}}) {
    t.SetTime(text, rate);
    EXPECT_EQ(Text(t), shown);
  }
  std::u16string longText(100, u'1');  // a work area of 32 units: no overrun
  t.SetTime(vbu::ToUnits(longText.data()));
  CTimecode other(0, 0, 0, 5, 29.97);
  other.SetTimeWithType(u"0:0:1:2"_u16, kFrameTypeOther);  // keeps the rate
  EXPECT_EQ(other.GetFrameRate(), 29.97);
  other.SetTimeWithType(u"0:0:1:2"_u16, kFrameType24);
  EXPECT_EQ(other.GetFrameRate(), 24.0);
}

TEST(CTimecode, TextRoundTripsForEveryFrameType) {
  for (frame_type_t type : {kFrameType24, kFrameType25, kFrameType30}) {
    for (long total = 1; total < 200000; total += 997) {
      CTimecode t;
      t.SetTotalFrame(total, type);
      MString text;
      t.GetTime(&text);
      CTimecode back;
      back.SetFrameType(type);
      back.SetTime(text);
      ASSERT_EQ(back, t) << std::string(text.GetLength(), ' ');
    }
  }
  CTimecode wide(65535, 59, 59, 1199, 1200.0);
  unsigned short buffer[kTimecodeTextMax];
  wide.GetTime(buffer);
  EXPECT_EQ(std::u16string(reinterpret_cast<char16_t*>(buffer)), u"65535:59:59:1199");
}

TEST(CTimecode, NoTextReadsAsEmptyWhereConstAndMutableFormsMeet) {
  // Both forms stand beside each other; a bare nullptr still means "no text".
  CTimecodeParser p;
  p.Parse(nullptr, false);
  EXPECT_EQ(S(p.GetString()), u":::");
  CTimecode t(1, 2, 3, 4, 25.0);
  t.SetTime(nullptr, 25.0);
  EXPECT_EQ(Text(t), u"00:00:00;00");
}
