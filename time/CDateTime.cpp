#include "time/CDateTime.h"

#include <cmath>

namespace {

// Days before 1 January of `year` (years from 0), by whole 400-year cycles
// and then year by year, so that far dates cost no long walk.
long DaysBeforeYear(int year) {
  constexpr long kDaysPer400Years = 146097;
  long days = (year / 400) * kDaysPer400Years;
  for (int y = year / 400 * 400; y < year; ++y) days += CDateTime::GetTotalDayOfYear(y);
  return days;
}

}  // namespace

CDateTime::CDateTime(double date) : mDate(date), mYear(0), mMonth(1), mDay(1) { ParseDate(); }

CDateTime::~CDateTime() = default;

int CDateTime::operator==(const CDateTime& other) { return mDate == other.mDate ? 1 : 0; }

int CDateTime::operator!=(const CDateTime& other) { return mDate != other.mDate ? 1 : 0; }

int CDateTime::IsLeapYear(int year) { return (year % 4 == 0 && (year % 100 != 0 || year % 400 == 0)) ? 1 : 0; }

int CDateTime::GetTotalDayOfYear(int year) { return IsLeapYear(year) ? 366 : 365; }

int CDateTime::GetTotalDayOfMonth(int month, int leap) {
  switch (month) {
    case 1: case 3: case 5: case 7: case 8: case 10: case 12: return 31;
    case 2: return 28 + leap;
    default: return 30;
  }
}

void CDateTime::SetDate(int year, int month, int day) {
  long days = year > 0 ? DaysBeforeYear(year) : 0;
  int leap = IsLeapYear(year);
  for (int m = 1; m < month; ++m) days += GetTotalDayOfMonth(m, leap);
  days += day - 1;
  mDate = static_cast<double>(days) + (mDate - std::trunc(mDate));
  ParseDate();
}

void CDateTime::ParseDate() {
  // Counts beyond some 25 million years after day 0, or 5 million before
  // it, and NaN, read as day 0.
  double whole = std::trunc(mDate);
  long days = (whole > -2e9 && whole < 1e10) ? static_cast<long>(whole) : 0;
  if (days < 0) {
    // Before day 0 no year or month is counted off: the day goes below 1.
    mYear = 0;
    mMonth = 1;
    mDay = static_cast<int>(days + 1);
    return;
  }
  constexpr long kDaysPer400Years = 146097;
  mYear = static_cast<int>(days / kDaysPer400Years * 400);
  days %= kDaysPer400Years;
  while (days >= GetTotalDayOfYear(mYear)) {
    days -= GetTotalDayOfYear(mYear);
    ++mYear;
  }
  mMonth = 1;
  int leap = IsLeapYear(mYear);
  while (days >= GetTotalDayOfMonth(mMonth, leap)) {
    days -= GetTotalDayOfMonth(mMonth, leap);
    ++mMonth;
  }
  mDay = static_cast<int>(days) + 1;
}

int CDateTime::GetYear() { return mYear; }
int CDateTime::GetMonth() { return mMonth; }
int CDateTime::GetDay() { return mDay; }

void CDateTime::SetTime(int hour, int minute, int second) {
  long total = second + 60L * (minute + 60L * hour);
  mDate = std::trunc(mDate) + static_cast<double>(total) / 86400.0;
}

long CDateTime::SecondsOfDay() const {
  return static_cast<long>((mDate - std::trunc(mDate)) * 86400.0);
}

int CDateTime::GetHour() { return static_cast<int>(SecondsOfDay() / 3600); }

int CDateTime::GetMinute() { return static_cast<int>((SecondsOfDay() - 3600L * GetHour()) / 60); }

int CDateTime::GetSecond() { return static_cast<int>(SecondsOfDay() % 60); }
