// CDateTime.h: a calendar date and time of day held as one double: whole
// days since 1 January of year 0, with the time of day as the fraction.
// Gregorian leap years (2000 is one, 1900 is not).
//
//   CDateTime when;  when.SetDate(2026, 11, 23);  when.SetTime(12, 30, 0);
//   when.GetMonth();   // 11
//   when.GetMinute();  // 30
#pragma once

#include <VantoroBasicUtils/platform/Export.h>

class VBU_API CDateTime {
 public:
  // `date` days since 1 January of year 0 (the fraction is the time of day).
  CDateTime(double date = 0.0);
  CDateTime(const CDateTime& other) = default;
  CDateTime& operator=(const CDateTime& other) = default;
  virtual ~CDateTime();

  // 1 if the day counts (fractions included) are exactly equal.
  int operator==(const CDateTime& other);
  int operator!=(const CDateTime& other);

  // Sets the day; the time of day stays.
  virtual void SetDate(int year, int month, int day);
  virtual int GetYear();
  virtual int GetMonth();
  virtual int GetDay();
  // Sets the time of day; the day stays (a day or more of seconds moves the
  // count on without updating year, month and day).
  virtual void SetTime(int hour, int minute, int second);
  // Read from the fraction, truncated.
  virtual int GetHour();
  virtual int GetMinute();
  virtual int GetSecond();

  // 1 for a leap year: divisible by 4, except centuries, except every 400th year.
  static int IsLeapYear(int year);
  static int GetTotalDayOfYear(int year);
  // 31, 30, or 28 + `leap` for February; 30 for any month outside 1..12.
  static int GetTotalDayOfMonth(int month, int leap);

  // The day count as stored.
  double GetDate() const { return mDate; }

 protected:
  // Works year, month and day out of the day count.
  void ParseDate();

 private:
  // Seconds into the day, from the fraction.
  long SecondsOfDay() const;

  double mDate;
  int mYear;
  int mMonth;
  int mDay;
};
