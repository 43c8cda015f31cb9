#ifndef TOOLS_CORVO_EVIDENCE_UTCTIME_H
#define TOOLS_CORVO_EVIDENCE_UTCTIME_H

#include <string>

#include "platform/Win32Types.h"

namespace corvo {

// "2024-05-17T09:30:00Z" for seconds since 1970.
std::string UtcText(LONGLONG seconds);

// For a count of 100 ns since 1601, with seven decimals; empty when it is no time.
std::string UtcTextOfTicks(LONGLONG ticks);

// Now, or the second that SOURCE_DATE_EPOCH tells, for output that is to be reproduced.
std::string ReportTime();

}  // namespace corvo

#endif
