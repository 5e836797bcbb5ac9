// Timecode values: validation, counts, packed form, arithmetic, stepping and
// change announcements.
#include <VantoroBasicUtils/messaging/LListener.h>
#include <VantoroBasicUtils/time/CTimecode.h>

#include <gtest/gtest.h>

#include <tuple>

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
  EXPECT_EQ(t.GetTotalFrame(), 1);
  EXPECT_TRUE(t.IsZero());
  t.SetMinute(75);
  t.SetHour(100);
  t.SetFrame(30);
  EXPECT_EQ(L(t), (Labels{100, 59, 0, 29}));
  t.SetFrameRate(25.0);
  EXPECT_EQ(t.GetFrame(), 29);  // a rate change does not revalidate the frame
  t.SetFrame(27);
  EXPECT_EQ(t.GetFrame(), 24);
  t.SetFrameRate(29.97);
  t.SetFrame(29);
  EXPECT_EQ(t.GetFrame(), 29);  // below the rate
  t.SetFrame(30);
  EXPECT_EQ(t.GetFrame(), 28);
  EXPECT_EQ(t.GetFrameType(), kFrameType30);  // any other rate reports 30
  EXPECT_FALSE(t.SetFrameRate(29.97));
  t.SetFrameRate(10.0);
  EXPECT_EQ(t.GetFrameRate(), 24.0);
  t.SetFrameRate(2000.0);
  EXPECT_EQ(t.GetFrameRate(), 1200.0);
  EXPECT_TRUE(t.SetFrameType(kFrameTypeOther));
  EXPECT_EQ(t.GetFrameRate(), 30.0);
}

TEST(CTimecode, TotalFramesAndTheirInverse) {
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
  EXPECT_EQ(static_cast<unsigned long>(CTimecode()), 0ul);
  EXPECT_EQ(static_cast<unsigned long>(CTimecode(0, 0, 2, 15, 30.0)), 2500ul);
}

TEST(CTimecode, PackedForm) {
  EXPECT_EQ(static_cast<double>(CTimecode()), 13000.0);
  CTimecode t(0, 0, 0, 5, 30.0);
  t = 13000.0;
  EXPECT_EQ(L(t), (Labels{0, 0, 0, 0}));
  CTimecode converted = 13000.0;  // a plain converting constructor
  EXPECT_EQ(L(converted), (Labels{0, 0, 0, 0}));
  CTimecode pal(1, 2, 3, 4, 25.0);
  CTimecode back(static_cast<double>(pal));
  EXPECT_EQ(back, pal);
  CTimecode odd(0, 0, 1, 0, 29.97);
  CTimecode oddBack(static_cast<double>(odd));
  EXPECT_EQ(oddBack.GetFrameRate(), 30.0);  // only 24, 25 and 30 survive
  CTimecode weird(1e300);                    // out of range: held, no crash
  EXPECT_GE(weird.GetFrameRate(), 24.0);
}

TEST(CTimecode, ComparisonAndArithmetic) {
  CTimecode one(0, 0, 1, 0, 30.0), two(0, 0, 2, 0, 30.0);
  EXPECT_EQ(L(one + two), (Labels{0, 0, 3, 0}));
  EXPECT_EQ(L(two - one), (Labels{0, 0, 1, 0}));
  EXPECT_EQ(L(one - two), (Labels{0, 0, 0, 0}));  // stops at zero
  EXPECT_EQ(L(CTimecode() + 30), (Labels{0, 0, 1, 0}));
  EXPECT_EQ(L(two - 31L), (Labels{0, 0, 0, 29}));
  CTimecode palOne(0, 0, 1, 0, 25.0);
  CTimecode sum = palOne + one;  // the right operand's frames at the left rate
  EXPECT_EQ(L(sum), (Labels{0, 0, 2, 5}));
  EXPECT_EQ(sum.GetFrameRate(), 25.0);
  EXPECT_NE(palOne, one);
  EXPECT_TRUE(palOne < one);
  EXPECT_TRUE(one <= one && one >= one && two > one);
  CTimecode odd(0, 0, 1, 0, 29.97);
  EXPECT_EQ((odd + 1).GetFrameRate(), 30.0);
}

TEST(CTimecode, SteppingCarriesAndBorrowsWithoutAnnouncing) {
  CTimecode t(0, 59, 59, 29, 30.0);
  Counter c;
  t.AddListener(&c);
  t.IncreaseFrame(1);
  EXPECT_EQ(L(t), (Labels{1, 0, 0, 0}));
  CTimecode pal(1, 0, 0, 0, 25.0);
  pal.DecreaseFrame();
  EXPECT_EQ(L(pal), (Labels{0, 59, 59, 24}));
  CTimecode zero;
  zero.DecreaseFrame();
  EXPECT_EQ(L(zero), (Labels{65535, 59, 59, 29}));
  CTimecode jump(0, 0, 0, 29, 30.0);
  jump.IncreaseFrame(2);  // jumps over the limit: no carry
  EXPECT_EQ(L(jump), (Labels{0, 0, 0, 31}));
  EXPECT_EQ(c.count, 0);
}

TEST(CTimecode, AnnouncesEachChangedFieldOnce) {
  CTimecode t;
  Counter c;
  t.AddListener(&c);
  EXPECT_TRUE(t.SetHour(5));
  EXPECT_FALSE(t.SetHour(5));
  EXPECT_EQ(c.count, 1);
  c.count = 0;
  t.SetTime(0, 0, 0, 0);
  c.count = 0;
  t.SetTime(1, 2, 3, 4);
  EXPECT_EQ(c.count, 4);
  c.count = 0;
  t.SetTime(1, 0, 3, 4);
  EXPECT_EQ(c.count, 1);
  c.count = 0;
  t.SetFrame(29);
  t.SetFrame(99);  // validates to the stored 29: nothing
  EXPECT_EQ(c.count, 1);
  c.count = 0;
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
