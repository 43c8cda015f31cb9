#ifndef LARKSPURCOMMON_XTTIME_H
#define LARKSPURCOMMON_XTTIME_H

#include "platform/Export.h"
#include "platform/InterfaceCheck.h"
#include "platform/Win32Types.h"

extern "C" {

// Wall-clock milliseconds cut to 32 bits, also where a long is wider. Only the difference of two
// values means anything: taken in 32-bit unsigned arithmetic it survives one wrap (49.7 days).
CORVO_API unsigned long os_clock();

// Whether at least `timeout` milliseconds have passed since os_clock() gave `start`.
CORVO_API bool os_expired(unsigned long start, unsigned long timeout);

}  // extern "C"

// ODBC's record, under ODBC's tag. A source that uses ODBC's own header includes that one first.
#if !defined(__SQLTYPES_H) && !defined(_SQLTYPES_H)
typedef struct tagTIMESTAMP_STRUCT {
  short year;
  UWORD month;
  UWORD day;
  UWORD hour;
  UWORD minute;
  UWORD second;
  SQLUINTEGER fraction;  // nanoseconds
} TIMESTAMP_STRUCT;
#endif
CORVO_SIZE(16, 16, TIMESTAMP_STRUCT);

// A point in time: whole seconds since 1901-01-01 00:00 UTC in 32 bits, so until 2037-02-06. Its
// calendar fields are worked out when asked for, in local time or UTC as the local flag says, by
// the Win32-style time calls alone. Seconds are counted modulo 2^32.
//
// Nothing is reported. A time that one of those calls refuses (a date that doesn't exist, a null
// pointer) becomes the base point; where one fails on the way out, fields read 0. One thread at a
// time per object; the first use of the class may come from several at once. Outputs may not be
// null.
class CORVO_API XTTime {
 public:
  XTTime();                       // now; shown in local time
  XTTime(unsigned long seconds);  // since the base point; shown in local time
  XTTime(SYSTEMTIME const* time, bool local);

  // The time is in the zone that `local` says, which becomes the object's own, a file time too.
  // Hour 24 means hour 0 of the same day, a year below 100 one of the current century; fractions
  // of a second are dropped.
  void Assign(SYSTEMTIME const* time, bool local);
  void Assign(long long const& fileTime, bool local);
  void SetToNow();

  unsigned long Seconds() const;
  void SetSeconds(unsigned long seconds);
  void AddSeconds(unsigned long seconds);
  void SubtractSeconds(unsigned long seconds);

  // In the object's zone. Year() always works the fields out anew; the others use what is kept.
  WORD Year();
  WORD Month();
  WORD DayOfMonth();
  WORD Hour();
  WORD Minute();
  WORD Second();
  WORD WeekDay();  // 0 is Sunday

  // In the zone that this `local` says. Zero: a time call failed.
  int AsSystemTime(SYSTEMTIME* out, bool local) const;
  void GetTime(TIMESTAMP_STRUCT* out);  // in the object's zone

  // Move a record by one day. One that the time calls refuse, before or after, stays as it is.
  static void NextDay(SYSTEMTIME* time);
  static void PrevDay(SYSTEMTIME* time);

  // Whether the object's date, in its own zone, is today's local date. `yesterday`, which may be
  // null, tells whether it is the day before instead.
  bool Today(bool* yesterday);

  // Whether the object's date or time of day, in its own zone, is `from` or, where `to` isn't null,
  // lies from `from` to `to` inclusive. Dates are "day/month" or "day/month/year" with the whole
  // year, times "hour:minute". A year in `from` asks for one in `to`; one in `to` alone is ignored.
  // A range that runs over the end of the year or over midnight is empty, a malformed one too.
  bool InDateRange(char const* from, char const* to);
  bool InTimeRange(char const* from, char const* to);

  static void Basepoint();        // works out `basepoint`, once
  static long long basepoint;     // as a file time; 0 before the first use of the class
  static const long long oneday;  // in file-time units

  DWORD m_seconds = 0;
  WORD m_year = 0;  // 0: the seven fields are not valid
  WORD m_month = 0;
  WORD m_dayOfMonth = 0;
  WORD m_hour = 0;
  WORD m_minute = 0;
  WORD m_second = 0;
  WORD m_weekDay = 0;
  bool m_local = true;

 private:
  XTTime const& Filled();
};
CORVO_SIZE(20, 20, XTTime);

#endif
