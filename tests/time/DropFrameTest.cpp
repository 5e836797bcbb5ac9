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

TEST(DropFrame, EveryFrameOfADayFromSeveralReferences) {
  // Every frame of 25 hours from each reference, against a model that walks
  // the labels one by one: a plain frame takes the next label, and a minute
  // after the reference's own that is not a tenth one has no :00 or :01.
  // Each label converts back exactly, but for the frames that a reference on
  // a skipped label leaves with their own labels (00:05:00:00 and :01): they
  // read as :02 on the way back.
  for (CTimecode reference : {At30(0, 0, 0, 0), At30(0, 5, 0, 0), At30(0, 59, 0, 0), At30(3, 17, 0, 5),
                              At30(23, 59, 0, 1)}) {
    const long referenceMinute = (reference.GetTotalFrame() - 1) / 1800;
    const bool onSkipped = Forbidden(reference);
    CTimecode plain(reference);
    long label = plain.GetTotalFrame() - 1;
    for (long i = 0; i < 25L * 3600 * 30; ++i) {
      CTimecode drop, back;
      plain.Nondrop2Drop(reference, &drop);
      ASSERT_EQ(drop.GetTotalFrame() - 1, label) << Label(reference) << " " << Label(plain) << " -> " << Label(drop);
      drop.Drop2Nondrop(reference, &back);
      if (Forbidden(drop)) {
        ASSERT_TRUE(onSkipped && i < 2) << Label(reference) << " " << Label(plain) << " -> " << Label(drop);
        EXPECT_EQ(Label(back), Label(At30(drop.GetHour(), drop.GetMinute(), 0, 2)));
      } else {
        ASSERT_EQ(back.GetTotalFrame(), plain.GetTotalFrame()) << Label(reference) << " " << Label(drop);
      }
      plain.IncreaseFrame(1);
      ++label;
      while (label / 1800 > referenceMinute && label / 1800 % 10 != 0 && label % 1800 < 2) ++label;
    }
  }
}

TEST(DropFrame, PublishedLabelsAndCountsFromTheReference) {
  struct Row {
    CTimecode reference, plain;
    const char* drop;
  } rows[] = {
      // Anchors of the published table, from zero (every frame of a day is
      // checked against the model above).
      {At30(0, 0, 0, 0), At30(0, 1, 0, 0), "00:01:00:02"}, {At30(0, 0, 0, 0), At30(0, 10, 0, 0), "00:10:00:18"},
      {At30(0, 0, 0, 0), At30(10, 0, 0, 0), "10:00:36:00"}, {At30(0, 0, 0, 0), At30(24, 0, 0, 0), "24:01:26:14"},
      // Before the reference a value is its own label, also on :00 and :01.
      {At30(1, 0, 0, 0), At30(0, 31, 0, 0), "00:31:00:00"}, {At30(1, 0, 0, 0), At30(0, 31, 0, 1), "00:31:00:01"},
      // Labels are read at 30 fps whatever the rate: NTSC material held at 29.97.
      {CTimecode(0, 0, 0, 0, 29.97), CTimecode(1, 0, 0, 0, 29.97), "01:00:03:18"},
      {At30(0, 0, 0, 0), CTimecode(1, 0, 0, 0, 25.0), "01:00:03:18"},
  };
  for (auto& row : rows) {
    CTimecode drop;
    row.plain.Nondrop2Drop(row.reference, &drop);
    EXPECT_EQ(Label(drop), row.drop) << Label(row.reference) << " " << Label(row.plain);
    EXPECT_EQ(drop.GetFrameRate(), 30.0);
  }
  // Labels that drop-frame skips read as the next legal one.
  CTimecode zero;
  for (auto [label, plain] : {std::pair{At30(0, 1, 0, 0), "00:01:00:00"}, {At30(0, 1, 0, 1), "00:01:00:00"},
                              {CTimecode(1, 0, 3, 18, 29.97), "01:00:00:00"}}) {
    CTimecode back;
    label.Drop2Nondrop(zero, &back);
    EXPECT_EQ(Label(back), plain) << Label(label);
  }
  CTimecode self = At30(0, 1, 0, 0);
  self.Nondrop2Drop(zero);  // in place
  EXPECT_EQ(Label(self), "00:01:00:02");
  self.Drop2Nondrop(zero);
  EXPECT_EQ(Label(self), "00:01:00:00");
}
