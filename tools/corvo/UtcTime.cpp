// Times for readers anywhere: always UTC, always with their date.

#define _TIME_BITS 64  // gmtime_r beyond 2038

#include "tools/corvo/UtcTime.h"

#include <time.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>

#include "tools/corvo/InputError.h"
#include "tools/corvo/Times.h"

namespace corvo {
namespace {

constexpr long long kSecondsFrom1601To1970 = 11'644'473'600;
constexpr long long kLastSecond = 253'402'300'799;  // of the year 9999

long long GivenSeconds(const std::string& text) {
  long long seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  const bool isWhole = error == std::errc() && end == text.data() + text.size();
  if (!isWhole || seconds < 0 || seconds > kLastSecond) {
    throw InputError("SOURCE_DATE_EPOCH is no count of seconds since 1970");
  }
  return seconds;
}

}  // namespace

std::string UtcCalendar(long long seconds) {
  const time_t time = static_cast<time_t>(seconds);
  struct tm utc {};
  char text[64];
  if (::gmtime_r(&time, &utc) == nullptr) return std::to_string(seconds);
  std::snprintf(text, sizeof text, "%04lld-%02d-%02dT%02d:%02d:%02d", utc.tm_year + 1900LL,
                utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec);
  return text;
}

std::string UtcTextOfTicks(long long ticks) {
  if (ticks < 0) return {};
  char decimals[16];
  std::snprintf(decimals, sizeof decimals, ".%07dZ", static_cast<int>(ticks % kTicksPerSecond));
  return UtcCalendar(ticks / kTicksPerSecond - kSecondsFrom1601To1970) + decimals;
}

ReportTime TimeOfReport() {
  const char* const epoch = std::getenv("SOURCE_DATE_EPOCH");
  const bool isGiven = epoch != nullptr && *epoch != '\0';
  return {UtcCalendar(isGiven ? GivenSeconds(epoch) : ::time(nullptr)) + "Z", isGiven};
}

}  // namespace corvo
