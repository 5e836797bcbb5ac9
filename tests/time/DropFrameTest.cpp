// Drop-frame labels: the published table, exact round trips over more than
// a day of frames, and no forbidden label ever produced.
#include <VantoroBasicUtils/time/CTimecode.h>

#include <gtest/gtest.h>

namespace {

CTimecode At30(unsigned short h, unsigned short m, unsigned short s, unsigned short f) {
  return CTimecode(h, m, s, f, 30.0);
}

std::string Label(const CTimecode& t) {
  char text[32];
  std::snprintf(text, sizeof text, "%02u:%02u:%02u:%02u", t.GetHour(), t.GetMinute(), t.GetSecond(), t.GetFrame());
  return text;
}

// The legal label rule, as a reader of drop-frame text knows it.
bool Forbidden(const CTimecode& t) { return t.GetSecond() == 0 && t.GetFrame() < 2 && t.GetMinute() % 10 != 0; }

}  // namespace

TEST(DropFrame, PublishedLabelsFromZero) {
  struct Row {
    CTimecode plain;
    const char* drop;
  } rows[] = {
      {At30(0, 0, 59, 29), "00:00:59:29"}, {At30(0, 1, 0, 0), "00:01:00:02"},
      {At30(0, 1, 59, 28), "00:02:00:02"}, {At30(0, 9, 59, 29), "00:10:00:17"},
      {At30(0, 10, 0, 0), "00:10:00:18"},  {At30(1, 0, 0, 0), "01:00:03:18"},
      {At30(10, 0, 0, 0), "10:00:36:00"},  {At30(23, 59, 59, 29), "24:01:26:13"},
      {At30(24, 0, 0, 0), "24:01:26:14"},
      // Far from the reference a single correction is not enough.
      {At30(16, 40, 59, 28), "16:42:00:02"}, {At30(16, 40, 59, 29), "16:42:00:03"},
  };
  CTimecode zero;
  for (auto& row : rows) {
    CTimecode drop;
    row.plain.Nondrop2Drop(zero, &drop);
    EXPECT_EQ(Label(drop), row.drop) << Label(row.plain);
    CTimecode back;
    drop.Drop2Nondrop(zero, &back);
    EXPECT_EQ(Label(back), Label(row.plain));
  }
}

TEST(DropFrame, RoundTripAndLegalLabelsOverMoreThanADay) {
  // Every frame of 25 hours from 00:00:00:00: the drop-frame label is legal,
  // counts up by exactly one frame at a time, and converts back exactly.
  CTimecode zero;
  CTimecode plain = At30(0, 0, 0, 0);
  long previousDrop = 0;
  const long frames = 25L * 3600 * 30;
  for (long i = 0; i < frames; ++i) {
    CTimecode drop, back;
    plain.Nondrop2Drop(zero, &drop);
    ASSERT_FALSE(Forbidden(drop)) << Label(plain) << " -> " << Label(drop);
    long d = drop.GetTotalFrame();
    if (i > 0) {
      long step = d - previousDrop;
      ASSERT_TRUE(step == 1 || (step == 3 && drop.GetSecond() == 0 && drop.GetFrame() == 2))
          << Label(plain) << " -> " << Label(drop);
    }
    previousDrop = d;
    drop.Drop2Nondrop(zero, &back);
    ASSERT_EQ(back.GetTotalFrame(), plain.GetTotalFrame()) << Label(plain) << " -> " << Label(drop);
    plain.IncreaseFrame(1);
  }
}
