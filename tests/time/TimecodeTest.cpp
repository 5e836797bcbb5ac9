// Timecode values: validation, counts, packed form, arithmetic, stepping and
// change announcements.
#include <VantoroBasicUtils/messaging/LListener.h>
#include <VantoroBasicUtils/time/CTimecode.h>

#include <gtest/gtest.h>

#include <tuple>
#include <utility>

namespace {

using Labels = std::tuple<unsigned, unsigned, unsigned, unsigned>;

Labels L(const CTimecode& t) { return {t.GetHour(), t.GetMinute(), t.GetSecond(), t.GetFrame()}; }

// Counts the change announcements of the timecodes it is added to.
class Counter : public LListener {
 public:
  bool ListenToMessage(long message, void* param) override {
    if (message == kMsgNotify && static_cast<NotifyRecord*>(param)->id == kTimecodeChanged) ++count;
    return true;
  }
  int count = 0;
};

}  // namespace

TEST(CTimecode, ValidationClampsEveryField) {
  CTimecode t;
  EXPECT_TRUE(t.IsZero() && t.GetTotalFrame() == 1);
  t.SetMinute(75);
  t.SetHour(100);
  t.SetSecond(60);
  t.SetFrame(30);
  EXPECT_EQ(L(t), (Labels{100, 59, 59, 29}));
  t.SetFrameRate(25.0);
  EXPECT_EQ(t.GetFrame(), 29);  // a rate change does not revalidate the frame
  // Frames below the rate stay; others become the last whole frame.
  for (auto [rate, frame, kept] : {std::tuple{25.0, 27, 24}, {25.0, 24, 24}, {29.97, 29, 29}, {29.97, 30, 28}}) {
    t.SetFrameRate(rate);
    t.SetFrame(frame);
    EXPECT_EQ(t.GetFrame(), kept) << rate << " " << frame;
  }
  EXPECT_EQ(t.GetFrameType(), kFrameType30);  // any other rate reports 30
  EXPECT_FALSE(t.SetFrameRate(29.97));
  for (auto [rate, held] : {std::pair{10.0, 24.0}, {2000.0, 1200.0}}) {
    t.SetFrameRate(rate);
    EXPECT_EQ(t.GetFrameRate(), held);
  }
  EXPECT_TRUE(t.SetFrameType(kFrameTypeOther));
  EXPECT_EQ(t.GetFrameRate(), 30.0);
}

TEST(CTimecode, TotalFramesMillisecondsAndPackedForm) {
  CTimecode t(0, 0, 1, 0, 30.0);
  EXPECT_EQ(t.GetTotalFrame(), 31);
  for (long total : {-5L, 0L, 1L, 31L, 1800L, 107892L, 2592001L}) {
    CTimecode u;
    u.SetTotalFrame(total, kFrameTypeCurrent);
    EXPECT_EQ(u.GetTotalFrame(), total < 1 ? 1 : total) << total;
  }
  CTimecode pal;
  pal.SetTotalFrame(26, kFrameType25);
  EXPECT_EQ(L(pal), (Labels{0, 0, 1, 0}));
  EXPECT_DOUBLE_EQ(CTimecode().GetTotalSecond(), 1.0 / 30.0);
  EXPECT_EQ(static_cast<unsigned long>(CTimecode(0, 0, 2, 15, 30.0)), 2500ul);  // milliseconds
  // The packed form: a rate code and the labels in one double.
  EXPECT_EQ(static_cast<double>(CTimecode()), 13000.0);
  CTimecode five(0, 0, 0, 5, 30.0), converted = 13000.0;  // a plain converting constructor
  five = 13000.0;
  EXPECT_EQ(five, converted);
  EXPECT_EQ(L(five), (Labels{0, 0, 0, 0}));
  CTimecode labels(1, 2, 3, 4, 25.0), odd(0, 0, 1, 0, 29.97);
  EXPECT_EQ(CTimecode(static_cast<double>(labels)), labels);
  EXPECT_EQ(CTimecode(static_cast<double>(odd)).GetFrameRate(), 30.0);  // only 24, 25 and 30 survive
  CTimecode weird(1e300);  // out of range: held, no crash
  EXPECT_GE(weird.GetFrameRate(), 24.0);
}

TEST(CTimecode, ComparisonAndArithmetic) {
  CTimecode one(0, 0, 1, 0, 30.0), two(0, 0, 2, 0, 30.0), palOne(0, 0, 1, 0, 25.0);
  // Differences stop at zero; the right operand's frames count at the left rate.
  for (auto [value, labels] : {std::pair{one + two, Labels{0, 0, 3, 0}}, {two - one, {0, 0, 1, 0}},
                               {one - two, {0, 0, 0, 0}}, {CTimecode() + 30, {0, 0, 1, 0}},
                               {two - 31L, {0, 0, 0, 29}}, {palOne + one, {0, 0, 2, 5}}}) {
    EXPECT_EQ(L(value), labels);
  }
  EXPECT_EQ((palOne + one).GetFrameRate(), 25.0);
  EXPECT_NE(palOne, one);
  EXPECT_TRUE(palOne < one);
  EXPECT_TRUE(one <= one && one >= one && two > one);
  CTimecode odd(0, 0, 1, 0, 29.97);
  EXPECT_EQ((odd + 1).GetFrameRate(), 30.0);
}

TEST(CTimecode, SteppingCarriesAndBorrowsWithoutAnnouncing) {
  CTimecode t(0, 59, 59, 29, 30.0), pal(1, 0, 0, 0, 25.0), zero, jump(0, 0, 0, 29, 30.0);
  Counter c;
  for (CTimecode* each : {&t, &pal, &zero, &jump}) each->AddListener(&c);
  t.IncreaseFrame(1);
  pal.DecreaseFrame();
  zero.DecreaseFrame();
  jump.IncreaseFrame(2);  // jumps over the limit: no carry
  EXPECT_EQ(L(t), (Labels{1, 0, 0, 0}));
  EXPECT_EQ(L(pal), (Labels{0, 59, 59, 24}));
  EXPECT_EQ(L(zero), (Labels{65535, 59, 59, 29}));
  EXPECT_EQ(L(jump), (Labels{0, 0, 0, 31}));
  EXPECT_EQ(c.count, 0);
}

TEST(CTimecode, AnnouncesEachChangedFieldOnce) {
  CTimecode t;
  Counter c;
  t.AddListener(&c);
  EXPECT_TRUE(t.SetHour(5));
  EXPECT_FALSE(t.SetHour(5));
  EXPECT_EQ(std::exchange(c.count, 0), 1);
  t.SetTime(1, 2, 3, 4);
  EXPECT_EQ(std::exchange(c.count, 0), 4);
  t.SetTime(1, 0, 3, 4);
  EXPECT_EQ(std::exchange(c.count, 0), 1);
  t.SetFrame(29);
  t.SetFrame(99);  // validates to the stored 29: nothing
  EXPECT_EQ(std::exchange(c.count, 0), 1);
  t = CTimecode(9, 9, 9, 9, 25.0);  // one announcement for the whole value
  t = CTimecode(9, 9, 9, 9, 25.0);
  EXPECT_EQ(c.count, 1);
  CTimecode copy(t);  // a copy has no listeners
  c.count = 0;
  copy.SetHour(1);
  t.StopBroadcasting();
  t.SetHour(2);
  EXPECT_EQ(c.count, 0);
}

namespace {
// A subclass whose frame validation lets everything through: the arithmetic
// must go through its override.
class Unclamped : public CTimecode {
 public:
  using CTimecode::CTimecode;
  unsigned short ValidateFrame(unsigned short frame) override { return frame; }
  int trickles = 0;
  void TrickleDownFrameChange() override { ++trickles; }
};
}  // namespace

TEST(CTimecode, OverridesChangeTheArithmetic) {
  Unclamped t;
  t.SetFrame(45);
  EXPECT_EQ(t.GetFrame(), 45);
  EXPECT_EQ(t.GetTotalFrame(), 46);
  EXPECT_EQ(t.trickles, 1);
}
