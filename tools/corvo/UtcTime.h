#ifndef TOOLS_CORVO_UTCTIME_H
#define TOOLS_CORVO_UTCTIME_H

#include <string>

namespace corvo {

// "2024-05-17T09:30:00" for seconds since 1970, for the caller to add decimals and the "Z"; the
// number as it is where it is beyond all calendars.
std::string UtcCalendar(long long seconds);

// "2024-05-17T09:30:00.0000000Z" for a count of 100 ns since 1601; empty when it is no time.
std::string UtcTextOfTicks(long long ticks);

// Now, or the second that SOURCE_DATE_EPOCH gives for output that is to be reproduced: whoever
// reads it must be told which. Throws InputError for what is no count of seconds up to year 9999.
struct ReportTime {
  std::string text;  // "2024-05-17T09:30:00Z"
  bool isGiven = false;
};
ReportTime TimeOfReport();

}  // namespace corvo

#endif
