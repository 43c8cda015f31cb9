#ifndef LARKSPURCOMMON_FILEHANDLERTIMES_H
#define LARKSPURCOMMON_FILEHANDLERTIMES_H

#include <sys/stat.h>

#include "platform/Win32Types.h"

// Times of files, in seconds since 1970 that are 64 bits wide on every target.
namespace file_layer {

// False with EOVERFLOW where the year doesn't fit.
bool ToSystemTime(long long seconds, SYSTEMTIME& utc);

// Fields beyond their range carry over; the day of the week and milliseconds count for nothing.
long long FromLocalTime(const SYSTEMTIME& local);

// False with errno set.
bool SetTimes(const char* path, const statx_timestamp& access, long long modification);

}  // namespace file_layer

#endif
