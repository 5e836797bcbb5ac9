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

TEST(DropFrame, CountsFromTheReference) {
  struct Row {
    CTimecode reference, plain;
    const char* drop;
  } rows[] = {
      {At30(1, 0, 0, 0), At30(1, 1, 0, 0), "01:01:00:02"},  // the hour before drops nothing
      {At30(0, 59, 0, 0), At30(1, 0, 0, 0), "01:00:00:00"},  // the 60th minute is a tenth
      {At30(0, 59, 0, 0), At30(1, 1, 0, 0), "01:01:00:02"},
      {At30(0, 0, 30, 0), At30(0, 1, 30, 0), "00:01:30:02"},
      {At30(1, 0, 0, 0), At30(0, 30, 0, 0), "00:30:00:00"},  // before the reference
  };
  for (auto& row : rows) {
    CTimecode drop;
    row.plain.Nondrop2Drop(row.reference, &drop);
    EXPECT_EQ(Label(drop), row.drop) << Label(row.reference) << " " << Label(row.plain);
  }
  // Labels that drop-frame forbids read as the next legal one.
  CTimecode zero;
  for (auto [label, plain] : {std::pair{At30(0, 1, 0, 0), "00:01:00:00"}, {At30(0, 1, 0, 1), "00:01:00:00"},
                              {At30(0, 1, 0, 2), "00:01:00:00"}, {At30(0, 10, 0, 0), "00:09:59:12"}}) {
    CTimecode back;
    label.Drop2Nondrop(zero, &back);
    EXPECT_EQ(Label(back), plain) << Label(label);
  }
  // A reference on a forbidden label: its first two plain frames have no
  // label of their own, and read as the next legal one.
  for (unsigned short frame : {0, 1, 2}) {
    CTimecode drop;
    At30(23, 59, 0, frame).Nondrop2Drop(At30(23, 59, 0, 0), &drop);
    EXPECT_EQ(Label(drop), "23:59:00:02") << frame;
  }
  CTimecode self = At30(0, 1, 0, 0);
  self.Nondrop2Drop(zero);  // in place
  EXPECT_EQ(Label(self), "00:01:00:02");
}

TEST(DropFrame, RoundTripsFromOtherReferences) {
  // Every 7th frame of six hours from each of a spread of references (all
  // labels that drop-frame allows).
  for (CTimecode reference : {At30(0, 0, 30, 0), At30(0, 9, 59, 29), At30(1, 0, 0, 0), At30(3, 17, 0, 5),
                              At30(10, 0, 0, 0), At30(23, 59, 0, 2)}) {
    CTimecode plain(reference);
    for (long i = 0; i < 6L * 3600 * 30; i += 7) {
      CTimecode drop, back;
      plain.Nondrop2Drop(reference, &drop);
      ASSERT_FALSE(Forbidden(drop)) << Label(reference) << " " << Label(plain) << " -> " << Label(drop);
      drop.Drop2Nondrop(reference, &back);
      ASSERT_EQ(back.GetTotalFrame(), plain.GetTotalFrame())
          << Label(reference) << " " << Label(plain) << " -> " << Label(drop);
      plain.SetTotalFrame(plain.GetTotalFrame() + 7, kFrameType30);
    }
  }
}
