// The C library's calendar and the setting of file times, apart from all that shares time_t with
// hosts.

// The 32-bit C library's plain time_t ends in 2038.
#define _TIME_BITS 64

#include "LarkspurCommon/FileHandlerTimes.h"

#include <fcntl.h>
#include <time.h>

#include <cerrno>
#include <limits>

static_assert(sizeof(time_t) == 8);

namespace {

constexpr int kFirstYear = 1900;  // of a struct tm

WORD Word(int value) {
  return static_cast<WORD>(value);
}

}  // namespace

bool file_layer::ToSystemTime(long long seconds, SYSTEMTIME& utc) {
  const time_t time = seconds;
  tm fields;
  if (::gmtime_r(&time, &fields) == nullptr) return false;
  if (fields.tm_year < -kFirstYear ||
      fields.tm_year > std::numeric_limits<WORD>::max() - kFirstYear) {
    errno = EOVERFLOW;
    return false;
  }
  utc = {Word(fields.tm_year + kFirstYear),
         Word(fields.tm_mon + 1),
         Word(fields.tm_wday),
         Word(fields.tm_mday),
         Word(fields.tm_hour),
         Word(fields.tm_min),
         Word(fields.tm_sec),
         0};
  return true;
}

long long file_layer::FromLocalTime(const SYSTEMTIME& local) {
  tm fields{};
  fields.tm_year = local.wYear - kFirstYear;
  fields.tm_mon = local.wMonth - 1;
  fields.tm_mday = local.wDay;
  fields.tm_hour = local.wHour;
  fields.tm_min = local.wMinute;
  fields.tm_sec = local.wSecond;
  fields.tm_isdst = -1;  // the zone's rules tell
  return ::mktime(&fields);
}

bool file_layer::SetTimes(const char* path, const statx_timestamp& access, long long modification) {
  timespec times[2]{};
  times[0].tv_sec = access.tv_sec;
  times[0].tv_nsec = static_cast<long>(access.tv_nsec);
  times[1].tv_sec = modification;
  return ::utimensat(AT_FDCWD, path, times, 0) == 0;
}
