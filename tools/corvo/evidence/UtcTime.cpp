// Times for readers anywhere: always UTC, always with their date.

#include "tools/corvo/evidence/UtcTime.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include "platform/Win32Compat.h"
#include "tools/corvo/Times.h"

namespace corvo {
namespace {

constexpr LONGLONG kSecondsFrom1601To1970 = 11'644'473'600;

// Up to the seconds, without the "Z".
std::string Calendar(LONGLONG ticks) {
  SYSTEMTIME time{};
  if (ticks < 0 || FileTimeToSystemTime(&ticks, &time) == 0) return {};
  char text[48];
  std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02u", time.wYear, time.wMonth,
                time.wDay, time.wHour, time.wMinute, time.wSecond);
  return text;
}

LONGLONG TicksOf(LONGLONG seconds) {
  return (seconds + kSecondsFrom1601To1970) * kTicksPerSecond;
}

}  // namespace

std::string UtcText(LONGLONG seconds) {
  return Calendar(TicksOf(seconds)) + "Z";
}

std::string UtcTextOfTicks(LONGLONG ticks) {
  const std::string calendar = Calendar(ticks);
  if (calendar.empty()) return {};
  char decimals[16];
  std::snprintf(decimals, sizeof decimals, ".%07dZ", static_cast<int>(ticks % kTicksPerSecond));
  return calendar + decimals;
}

std::string ReportTime() {
  const char* const epoch = std::getenv("SOURCE_DATE_EPOCH");
  if (epoch != nullptr && *epoch != '\0') return UtcText(std::strtoll(epoch, nullptr, 10));
  return UtcText(LONGLONG{std::time(nullptr)});
}

}  // namespace corvo
