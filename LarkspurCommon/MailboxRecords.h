#ifndef LARKSPURCOMMON_MAILBOXRECORDS_H
#define LARKSPURCOMMON_MAILBOXRECORDS_H

#include <memory>
#include <vector>

#include "LarkspurCommon/tstring.h"
#include "platform/Export.h"
#include "platform/InterfaceCheck.h"
#include "platform/Win32Types.h"

// Small records that the configuration shares with the host, which reads and writes their fields
// directly. Plain values: they copy deeply, and one thread at a time may use an object. Where an
// operation takes another object, that may be the same one or a part of it.

// A time of day; the range isn't checked.
class CORVO_API Hour_Minute {
 public:
  Hour_Minute();

  void Reset();
  void Set(const Hour_Minute& other);
  void Set(int hour, int minute);

  int m_hour = 0;
  int m_minute = 0;
};

// One period of a mailbox's time profile. All but the start is the host's to interpret.
class CORVO_API Time_Period {
 public:
  Time_Period();

  void Reset();
  void Set(const Time_Period& other);

  int m_kind = 0;
  Hour_Minute m_start;
  int m_extra1 = 0;
  int m_extra2 = 0;
};

// A mailbox's time profile: an ordered list of periods, which it owns.
class CORVO_API Time_Profile {
 public:
  using Periods = std::vector<std::unique_ptr<Time_Period>>;

  Time_Profile();
  Time_Profile(const Time_Profile& other);
  Time_Profile& operator=(const Time_Profile& other);
  ~Time_Profile();

  int GetTimePeriodsCount() const;

  // Null when there is none at `index`. The period stays the profile's, and lives until the profile
  // is cleared, reset, set or destroyed.
  Time_Period* GetTimePeriod(int index) const;

  void SetTimePeriod(const Time_Period& period, int index);  // appends where `index` has none
  void SetProfile(const Time_Profile& other);
  void SetDefaultOwnTimes();  // type 4, periods from 09:00, 17:30 and 19:30

  void ClearTimePeriods();  // keeps the type
  void ResetTimePeriods();  // as constructed

  int m_type = 0;
  std::unique_ptr<Periods> m_periods;  // null until needed; holds no null

 private:
  Periods& OwnPeriods();  // made when missing
};

// The settings of embedded-mailbox mode, as the telephone system sends them. What the extra bytes
// and values, the code and the texts mean is the host's business.
class CORVO_API EVMLData {
 public:
  EVMLData();

  void Clear();
  void Copy(const EVMLData& other);

  // Takes over a record of `length` bytes, which may come from anywhere: nothing past them is read.
  // Fields that the record doesn't reach keep their values; one that is null or shorter than
  // RecordLength() sets the record number alone. A record may turn the mode on, never off.
  //
  //   offset  size
  //      0      1   mode: not 0 turns it on
  //      1      3   code
  //      4      1   first extra byte
  //      5      1   first extra value
  //      6      1   minimum PIN length
  //      7      4   maximum recording time in seconds; numbers are big-endian
  //     11      4   second extra value; from here on only in records of 21 bytes and more
  //     15      4   third extra value
  //     19      1   second extra byte
  //     20   rest   up to three UTF-8 texts, each ended by a NUL or the end of the record
  void PopulateFromRecord(unsigned long recordNumber, const unsigned char* data,
                          unsigned short length);

  bool EVMMode() const;
  DWORD MaximimRecordingTime() const;  // seconds; hosts know it by this spelling
  DWORD MinimumPINLength() const;
  int RecordLength() const;  // 11, of the part that every record has

  bool m_mode = false;
  unsigned char m_extraByte1 = 0;
  unsigned char m_extraByte2 = 0;
  DWORD m_maximumRecordingTime = 0;  // seconds
  DWORD m_minimumPINLength = 0;
  DWORD m_recordNumber = 0;
  DWORD m_extraValue1 = 0;
  DWORD m_extraValue2 = 0;
  DWORD m_extraValue3 = 0;
  tstring m_code;  // three bytes, NULs included
  tstring m_text1;
  tstring m_text2;
  tstring m_text3;
};

CORVO_SIZE(8, 8, Hour_Minute);
CORVO_SIZE(20, 20, Time_Period);
CORVO_SIZE(12, 24, Time_Profile::Periods);
CORVO_SIZE(8, 16, Time_Profile);
CORVO_SIZE(124, 160, EVMLData);
CORVO_OFFSET(28, 32, EVMLData, m_code);

#endif
