// Calendar dates as day counts, checked against the standard library's
// calendar arithmetic.
#include <VantoroBasicUtils/time/CDateTime.h>

#include <gtest/gtest.h>

#include <chrono>
#include <tuple>

TEST(CDateTime, EveryDayFromYearZeroTo3000RoundTrips) {
  using namespace std::chrono;
  const sys_days origin = year_month_day{year{0}, January, day{1}};
  CDateTime date;
  date.SetTime(6, 30, 15);
  for (sys_days d = origin; d <= sys_days{year_month_day{year{3000}, December, day{31}}}; d += days{1}) {
    year_month_day ymd{d};
    int y = static_cast<int>(ymd.year()), m = static_cast<int>(static_cast<unsigned>(ymd.month()));
    int dd = static_cast<int>(static_cast<unsigned>(ymd.day()));
    date.SetDate(y, m, dd);
    ASSERT_EQ(date.GetYear(), y);
    ASSERT_EQ(date.GetMonth(), m);
    ASSERT_EQ(date.GetDay(), dd);
    ASSERT_EQ(static_cast<long>(date.GetDate()), (d - origin).count()) << y << "-" << m << "-" << dd;
  }
  EXPECT_EQ(date.GetHour(), 6);  // the time of day stays through SetDate
  EXPECT_EQ(date.GetMinute(), 30);
  EXPECT_EQ(date.GetSecond(), 15);
}

TEST(CDateTime, FieldsAndTimeOfDay) {
  using YMD = std::tuple<int, int, int>;
  auto ymd = [](CDateTime d) { return YMD{d.GetYear(), d.GetMonth(), d.GetDay()}; };
  CDateTime start;
  EXPECT_EQ(ymd(start), (YMD{0, 1, 1}));
  EXPECT_EQ(ymd(CDateTime(31.0)), (YMD{0, 2, 1}));
  start.SetTime(12, 0, 0);
  EXPECT_EQ(start.GetDate(), 0.5);
  CDateTime later(0.0);
  later.SetTime(12, 0, 1);
  EXPECT_EQ(later != start, 1);
  EXPECT_EQ(CDateTime::GetTotalDayOfMonth(13, 0), 30);  // no such month: 30
  // Before day 0 the day goes below 1 in January of year 0.
  for (auto [date, day] : {std::pair{-1.0, 0}, {-5.0, -4}, {-0.5, 1}, {-1e300, 1}}) {
    CDateTime before = date;  // a plain converting constructor
    EXPECT_EQ(ymd(before), (YMD{0, 1, day})) << date;
  }
}
