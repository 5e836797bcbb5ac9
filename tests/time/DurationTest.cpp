// Ranges: the end and length relation, the user's drop-frame view, the
// range questions, lists and announcements.
#include <VantoroBasicUtils/time/CDuration.h>
#include <VantoroBasicUtils/time/CTimecodeList.h>
#include <VantoroBasicUtils/messaging/LListener.h>

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

namespace {

using Labels = std::tuple<unsigned, unsigned, unsigned, unsigned>;
Labels L(const CTimecode& t) { return {t.GetHour(), t.GetMinute(), t.GetSecond(), t.GetFrame()}; }

CTimecode T(unsigned short h, unsigned short m, unsigned short s, unsigned short f, double rate = 30.0) {
  return CTimecode(h, m, s, f, rate);
}

CDuration Range(CTimecode start, CTimecode end) {
  CDuration d;
  d.SetStartTime(start);
  d.SetEndTime(end);
  return d;
}

class Log : public LListener {
 public:
  bool ListenToMessage(long message, void* param) override {
    if (message == kMsgNotify) ids.push_back(static_cast<NotifyRecord*>(param)->id);
    return true;
  }
  std::vector<long> ids;
};

}  // namespace

TEST(CDuration, EndAndLengthRelation) {
  CDuration d;
  EXPECT_TRUE(d.IsNil() && d.GetTotalFrame() == 0 && d.GetFrameType() == kFrameType30);
  EXPECT_EQ(L(d.GetEndTime()), (Labels{0, 0, 0, 0}));
  CTimecode start = T(0, 0, 10, 0), none;
  d.SetStartTime(start);
  // The end is one frame before start plus length; an end before the start
  // gives the shortest length.
  for (auto [length, end, total] : {std::tuple{T(0, 0, 5, 0), Labels{0, 0, 14, 29}, 150L},
                                    {none, Labels{0, 0, 9, 29}, 0L}}) {
    d.SetDuration(length);
    EXPECT_EQ(L(d.GetEndTime()), end);
    EXPECT_EQ(d.GetTotalFrame(), total);
  }
  CTimecode end = T(0, 0, 14, 29);
  EXPECT_TRUE(d.SetEndTime(end));
  EXPECT_FALSE(d.SetEndTime(end));
  for (CTimecode e : {T(0, 0, 10, 0), T(0, 0, 3, 0)}) {
    d.SetEndTime(e);
    EXPECT_EQ(L(d.GetDuration()), (Labels{0, 0, 0, 1}));
  }
}

TEST(CDuration, RangeQuestions) {
  CDuration five = Range(T(0, 0, 10, 0), T(0, 0, 14, 29));
  for (auto [time, inside] : {std::pair{T(0, 0, 10, 0), true}, {T(0, 0, 14, 29), true},
                              {T(0, 0, 9, 29), false}, {T(0, 0, 15, 0), false}}) {
    EXPECT_EQ(five.IsInclude(time), inside);
  }
  CDuration a = Range(T(0, 0, 10, 0), T(0, 0, 20, 0));
  CDuration b = Range(T(0, 0, 15, 0), T(0, 0, 25, 0));
  CDuration touching = Range(T(0, 0, 20, 0), T(0, 0, 30, 0));
  CDuration head = Range(T(0, 0, 10, 0), T(0, 0, 15, 0));
  // Overlap: each holds a frame the other lacks; sharing a start or the
  // other's start on one's end is not one.
  for (auto [other, overlap, include] : {std::tuple{b, true, false}, {touching, false, false}, {a, false, true},
                                         {head, false, true}}) {
    EXPECT_EQ(a.IsOverlap(other), overlap);
    EXPECT_EQ(a.IsInclude(other), include);
  }
  // The frames both hold, whichever starts first.
  CDuration both, inner = Range(T(0, 0, 12, 0), T(0, 0, 13, 0));
  for (auto [x, y, expect] : {std::tuple{a, b, Range(T(0, 0, 15, 0), T(0, 0, 20, 0))},
                              {b, a, Range(T(0, 0, 15, 0), T(0, 0, 20, 0))}, {inner, a, inner}}) {
    ASSERT_TRUE(x.GetOverlapDuration(y, &both));
    EXPECT_EQ(both, expect);
  }
  // An empty range (its end one frame before its start) starting inside:
  // its start, and the end that SetEndTime makes of its end.
  CTimecode twelve = T(0, 0, 12, 0), nothing = T(0, 0, 0, 0);
  CDuration empty;
  empty.SetStartTime(twelve);
  empty.SetDuration(nothing);
  ASSERT_TRUE(a.GetOverlapDuration(empty, &both));
  CDuration expected;
  CTimecode emptyEnd = empty.GetEndTime();
  expected.SetStartTime(twelve);
  expected.SetEndTime(emptyEnd);
  EXPECT_EQ(both, expected);
  CDuration apart = Range(T(0, 1, 0, 0), T(0, 1, 1, 0));
  CDuration untouched = both;
  EXPECT_FALSE(a.GetOverlapDuration(apart, &both));
  EXPECT_EQ(both, untouched);
}

TEST(CDuration, ResolutionAndFrameType) {
  CDuration d, n;
  EXPECT_TRUE(d.SetResolution(kResolutionPAL));
  EXPECT_EQ(d.GetStartTime().GetFrameRate() + d.GetDuration().GetFrameRate(), 50.0);
  EXPECT_FALSE(d.SetFrameType(kFrameType24));  // no resolution has it: refused
  EXPECT_TRUE(n.SetFrameType(kFrameType25));
  EXPECT_TRUE(d.GetResolution() == kResolutionPAL && n.GetResolution() == kResolutionPAL);
}

TEST(CDuration, DropFrameView) {
  CDuration d;
  d.SetDropType(kDrop);
  CTimecode length = T(0, 1, 0, 1);
  d.SetDuration(length);
  EXPECT_EQ(L(d.GetEndTime()), (Labels{0, 1, 0, 0}));
  EXPECT_EQ(L(d.GetEndTimeUI()), (Labels{0, 1, 0, 2}));
  EXPECT_EQ(L(d.GetDurationUI()), (Labels{0, 1, 0, 3}));
  CTimecode shownEnd = T(0, 1, 0, 2);
  d.SetEndTimeUI(shownEnd);
  EXPECT_EQ(L(d.GetDuration()), (Labels{0, 1, 0, 1}));

  CDuration later;
  later.SetDropType(kDrop);
  CTimecode start = T(1, 0, 0, 0), len = T(0, 12, 34, 5);
  later.SetStartTimeUI(start);
  later.SetDuration(len);
  CTimecode shown = later.GetDurationUI();
  later.SetDurationUI(shown);
  EXPECT_EQ(L(later.GetDuration()), (Labels{0, 12, 34, 5}));
}

TEST(CDuration, AnnouncesOnItsOwnNumbers) {
  CDuration d;
  Log log;
  d.AddListener(&log);
  d.SetResolution(kResolutionNTSC);
  d.SetDropType(kDrop);
  CTimecode start = T(0, 0, 1, 0);
  CTimecode end = T(0, 0, 2, 0);
  for (int twice = 0; twice < 2; ++twice) d.SetStartTime(start), d.SetEndTime(end);
  EXPECT_EQ(log.ids, (std::vector<long>{kDurationResolutionChanged, kDurationDropTypeChanged,
                                         kDurationStartTimeChanged, kDurationLengthChanged}));
  CDuration copy(d);
  EXPECT_EQ(copy, d);
}

TEST(TimeLists, OwnCopiesAndMoveToPAL) {
  CTimecodeList times;
  times.Change2PAL();  // empty: nothing
  CTimecode source = T(0, 0, 1, 29);
  times.Add(source);
  times.Add(T(1, 2, 3, 10));
  source.SetHour(7);  // the list holds a copy
  times.Change2PAL();  // frames past the new rate are clamped
  EXPECT_EQ(*times.GetHead(), T(0, 0, 1, 24, 25.0));
  EXPECT_EQ(*times.GetNext(), T(1, 2, 3, 10, 25.0));
  EXPECT_EQ(times.GetNext(), nullptr);
  CTimecodeList copy;
  copy = times;
  EXPECT_TRUE(copy.GetSize() == 2 && *copy.GetTail() == *times.GetTail());

  CDurationList ranges;
  CDuration r;
  CTimecode start = T(0, 0, 10, 29), length = T(0, 0, 5, 0);
  r.SetStartTime(start);
  r.SetDuration(length);
  ranges.Add(r);
  Log log;
  ranges.GetHead()->AddListener(&log);
  ranges.Change2PAL();
  CDuration* pal = ranges.GetHead();
  EXPECT_EQ(L(pal->GetStartTime()), (Labels{0, 0, 10, 24}));
  EXPECT_EQ(L(pal->GetDuration()), (Labels{0, 0, 5, 0}));
  EXPECT_TRUE(pal->GetDuration().GetFrameRate() == 25.0 && pal->GetResolution() == kResolutionPAL);
  EXPECT_EQ(log.ids, (std::vector<long>{kDurationResolutionChanged, kDurationStartTimeChanged}));
}
